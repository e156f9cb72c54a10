# How folders become targets. Each folder of src/ is one static archive, vx3_<folder>; libvx3.so is made of
# all their objects; each folder of tests/ is one executable that links only the archives below it, so a
# folder can be built and tested without those above it.

add_library(vx3_options INTERFACE)
target_compile_features(vx3_options INTERFACE cxx_std_17)
target_compile_options(vx3_options INTERFACE -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wformat=2 -Wvla)
target_include_directories(vx3_options INTERFACE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(vx3_options INTERFACE Threads::Threads)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(vx3_options INTERFACE -Wthread-safety -Werror=thread-safety)
endif()
if(VX3_WERROR)
  target_compile_options(vx3_options INTERFACE -Werror)
endif()
if(VX3_SANITIZE)
  add_compile_options(-fsanitize=${VX3_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VX3_SANITIZE})
endif()
if(VX3_BUILD_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "The fuzz targets need clang: cmake --preset fuzz")
  endif()
  # The library too, not the targets alone: the engine steers by what it sees of the code under test.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# vx3_folder(NAME PATH LINKS...): the archive vx3_NAME over every source in src/PATH.
function(vx3_folder name path)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${path}/*.cpp)
  if(NOT sources)
    # A folder that has only headers so far still is an archive to link.
    set(sources ${CMAKE_BINARY_DIR}/empty.cpp)
    file(WRITE ${sources} "")
  endif()
  add_library(vx3_${name} STATIC ${sources})
  target_link_libraries(vx3_${name} PUBLIC vx3_options ${ARGN})
  set_property(GLOBAL APPEND PROPERTY VX3_FOLDERS vx3_${name})
  set_property(TARGET vx3_${name} PROPERTY VX3_PATH ${path})
endfunction()

# vx3_tests(NAME LINKS...): the executable NAME_tests over tests/NAME/*_test.cpp.
function(vx3_tests name)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/${name}/*_test.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name}_tests ${sources})
  target_include_directories(${name}_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${name}_tests PRIVATE VX3_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name}_tests PRIVATE ${ARGN} GTest::gtest GTest::gtest_main)
  gtest_discover_tests(${name}_tests PROPERTIES LABELS ${name} TIMEOUT 300 DISCOVERY_TIMEOUT 60)
endfunction()
