# libvx3, its headers, its data, a CMake package (vx3::vx3) and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS vx3 EXPORT vx3Targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vx3 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vx3)
install(EXPORT vx3Targets NAMESPACE vx3:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vx3)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vx3Config.cmake.in ${CMAKE_BINARY_DIR}/vx3Config.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vx3)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/vx3ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/vx3Config.cmake ${CMAKE_BINARY_DIR}/vx3ConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vx3)

# The prefix is found from where the file lies, so that an installed tree can be moved.
file(RELATIVE_PATH VX3_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(${PROJECT_SOURCE_DIR}/cmake/vx3.pc.in ${CMAKE_BINARY_DIR}/vx3.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/vx3.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
