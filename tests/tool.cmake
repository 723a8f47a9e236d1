# The command-line tool's tests run the built binary as a subprocess.
if(TARGET vxjson_cli AND TARGET test_tool)
  target_compile_definitions(test_tool PRIVATE VXJSON_TOOL_PATH="$<TARGET_FILE:vxjson_cli>")
  add_dependencies(test_tool vxjson_cli)
endif()
