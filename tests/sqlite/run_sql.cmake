# Runs one SQL script through the real sqlite3 shell with the extension
# loaded and compares what it prints (results and errors, in order) with
# the script's .expected file.
#   cmake -DSQLITE3=... -DEXTENSION=... -DSCRIPT=x.sql -DOUT=x.out -P run_sql.cmake
# -DPRELOAD=lib puts a sanitizer runtime in front of the shell.
# With -DUPDATE=1 the output is written over the expected file instead;
# read the difference before committing it.
get_filename_component(dir ${SCRIPT} DIRECTORY)
get_filename_component(name ${SCRIPT} NAME_WE)
set(expected ${dir}/${name}.expected)
# One file for both streams keeps errors in their place among the rows.
set(launch "")
if(PRELOAD)
  # The shell's own allocations at exit are not ours to answer for.
  set(launch ${CMAKE_COMMAND} -E env LD_PRELOAD=${PRELOAD} ASAN_OPTIONS=detect_leaks=0)
endif()
execute_process(
  COMMAND ${launch} ${SQLITE3} -batch -cmd ".load ${EXTENSION}" :memory:
  INPUT_FILE ${SCRIPT}
  OUTPUT_FILE ${OUT}
  ERROR_FILE ${OUT}
  RESULT_VARIABLE rc)
if(UPDATE)
  file(COPY_FILE ${OUT} ${expected})
  return()
endif()
file(READ ${OUT} got)
file(READ ${expected} want)
if(NOT got STREQUAL want)
  execute_process(COMMAND diff -u ${expected} ${OUT})
  message(FATAL_ERROR "${name}: the output differs from ${expected} (sqlite3 exit ${rc})")
endif()
