# Every library the build calls; docs/dependencies.md says why each one is there.
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(OpenCV REQUIRED COMPONENTS core imgproc imgcodecs)
pkg_check_modules(log4cpp REQUIRED IMPORTED_TARGET log4cpp)
pkg_check_modules(pugixml REQUIRED IMPORTED_TARGET pugixml)
pkg_check_modules(libzip REQUIRED IMPORTED_TARGET libzip)
pkg_check_modules(libhwy REQUIRED IMPORTED_TARGET libhwy)

# OpenCV's own targets drag their whole interface in; we need three libraries and one include path.
add_library(vx3_opencv INTERFACE)
target_include_directories(vx3_opencv SYSTEM INTERFACE ${OpenCV_INCLUDE_DIRS})
target_link_libraries(vx3_opencv INTERFACE opencv_core opencv_imgproc opencv_imgcodecs)

# Without this latitude ccache refuses every file that has a precompiled header.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(launcher ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE_PROGRAM})
  set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()
