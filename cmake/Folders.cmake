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

# vx3_test_options(TARGET): what every test program is compiled with.
function(vx3_test_options target)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${target} PRIVATE VX3_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  # Tests are compiled more often than they run. An expectation under an if stands unbraced; GoogleTest's macros keep
  # their own else to themselves.
  target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O1> $<$<COMPILE_LANGUAGE:CXX>:-Wno-dangling-else>)
  target_link_libraries(${target} PRIVATE GTest::gtest GTest::gtest_main)
endfunction()

# GoogleTest's header, which every test includes anyway, is a third of what a small test takes to compile. All test
# programs share one precompiled form of it; clang wants the same definitions everywhere for that and goes without.
function(vx3_precompiled_gtest target)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    return()
  endif()
  if(NOT TARGET vx3_gtest_header)
    file(WRITE ${CMAKE_BINARY_DIR}/gtest_header.cpp "")
    add_library(vx3_gtest_header OBJECT ${CMAKE_BINARY_DIR}/gtest_header.cpp)
    # As programs are compiled, not as libraries: the compiler refuses a header made otherwise.
    set_target_properties(vx3_gtest_header PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(vx3_gtest_header PRIVATE -fPIE)
    target_link_libraries(vx3_gtest_header PRIVATE vx3_options)
    vx3_test_options(vx3_gtest_header)
    target_precompile_headers(vx3_gtest_header PRIVATE <gtest/gtest.h>)
  endif()
  target_precompile_headers(${target} REUSE_FROM vx3_gtest_header)
endfunction()

# vx3_tests(NAME LINKS... [LOCK RESOURCE]): the executable NAME_tests over tests/NAME/*_test.cpp. Tests that lock the
# same resource do not run at the same time.
function(vx3_tests name)
  cmake_parse_arguments(PARSE_ARGV 1 tests "" "LOCK" "")
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/${name}/*_test.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name}_tests ${sources})
  vx3_test_options(${name}_tests)
  vx3_precompiled_gtest(${name}_tests)
  target_link_libraries(${name}_tests PRIVATE ${tests_UNPARSED_ARGUMENTS})
  gtest_discover_tests(${name}_tests PROPERTIES LABELS ${name} TIMEOUT 300 RESOURCE_LOCK "${tests_LOCK}"
                       DISCOVERY_TIMEOUT 60)
endfunction()
