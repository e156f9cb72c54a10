# vx3_color_maps(TARGET): adds the colour tables, which a small program makes at build time from compact
# definitions. When cross-compiling, CMAKE_CROSSCOMPILING_EMULATOR runs that program.
function(vx3_color_maps target)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/processing/colormaps/*.cpp)
  add_executable(vx3_colormaps ${sources})
  target_link_libraries(vx3_colormaps PRIVATE vx3_options)
  set(tables ${PROJECT_BINARY_DIR}/generated/ColorTables.cpp)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/generated)
  add_custom_command(OUTPUT ${tables} COMMAND vx3_colormaps ${tables} DEPENDS vx3_colormaps
                     COMMENT "Sampling the colour maps" VERBATIM)
  target_sources(${target} PRIVATE ${tables})
endfunction()
