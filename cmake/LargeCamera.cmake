# lanvane_large_camera(target): gives the sources of a target LARGE_CAMERA_XML, the path of the synthetic camera
# description that tests/genicam/make_large_camera.py writes.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
function(lanvane_large_camera target)
  set(script ${PROJECT_SOURCE_DIR}/tests/genicam/make_large_camera.py)
  set(xml ${CMAKE_CURRENT_BINARY_DIR}/large_camera.xml)
  add_custom_command(OUTPUT ${xml} COMMAND Python3::Interpreter ${script} ${xml} DEPENDS ${script} VERBATIM)
  target_sources(${target} PRIVATE ${xml})
  target_compile_definitions(${target} PRIVATE LARGE_CAMERA_XML="${xml}")
endfunction()
