# Layers: writes what each folder's archive links, and has ctest check includes and links against the one table.
get_property(folders GLOBAL PROPERTY VX3_FOLDERS)
set(lines)
foreach(folder IN LISTS folders)
  get_target_property(path ${folder} VX3_PATH)
  get_target_property(links ${folder} LINK_LIBRARIES)
  list(JOIN links " " links)
  string(APPEND lines "${folder} ${path} ${links}\n")
endforeach()
file(WRITE ${CMAKE_BINARY_DIR}/links.txt "${lines}")

# The check reads every program too, so it needs a build that has them.
find_package(Python3 COMPONENTS Interpreter QUIET)
if(VX3_BUILD_TESTS AND VX3_BUILD_TOOLS AND VX3_BUILD_EXAMPLES AND Python3_FOUND)
  add_test(NAME house.layers
           COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/check_layers.py
                   --commands ${CMAKE_BINARY_DIR}/compile_commands.json --links ${CMAKE_BINARY_DIR}/links.txt
                   --cache ${CMAKE_BINARY_DIR}/layers.json)
  add_test(NAME house.layers_refuses
           COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tests/house/layers_test.py ${CMAKE_BINARY_DIR})
  # The second test reads only what it plants once the first has left its readings behind.
  set_tests_properties(house.layers_refuses PROPERTIES DEPENDS house.layers)
  set_tests_properties(house.layers house.layers_refuses PROPERTIES LABELS house TIMEOUT 600)
endif()
