# The SQLite extension's tests: every tests/sqlite/*.sql runs through the
# real sqlite3 shell with the built extension loaded, and its output must
# equal the .expected file beside it.
find_program(SQLITE3_SHELL sqlite3)
if(TARGET vxjson_sqlite AND SQLITE3_SHELL)
  file(GLOB VXJSON_SQL_TESTS CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/sqlite/*.sql)
  set(preload "")
  if(VXJSON_SANITIZE)
    # The shell is not instrumented: the sanitizer runtime must come first.
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libasan.so
                    OUTPUT_VARIABLE preload OUTPUT_STRIP_TRAILING_WHITESPACE)
  endif()
  foreach(script IN LISTS VXJSON_SQL_TESTS)
    get_filename_component(name ${script} NAME_WE)
    add_test(NAME sqlite.${name}
             COMMAND ${CMAKE_COMMAND} -DSQLITE3=${SQLITE3_SHELL}
                     -DEXTENSION=$<TARGET_FILE_DIR:vxjson_sqlite>/vxjson_sqlite
                     -DPRELOAD=${preload} -DSCRIPT=${script} -DOUT=${CMAKE_CURRENT_BINARY_DIR}/sqlite_${name}.out
                     -P ${CMAKE_CURRENT_SOURCE_DIR}/sqlite/run_sql.cmake)
    # rows.sql runs 100,000 rows through every function.
    if(name STREQUAL "rows")
      set_tests_properties(sqlite.${name} PROPERTIES LABELS "data;slow")
    else()
      set_tests_properties(sqlite.${name} PROPERTIES LABELS data)
    endif()
  endforeach()
endif()
