cmake_minimum_required(VERSION 3.25)
# Script mode: install BUILD_DIR into WORK_DIR/prefix; configure, build and
# run the consumer project (C, shared and static, find_package and
# pkg-config); then move the installed tree and run its vxjson.
file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
                RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "install failed: ${rc}")
endif()
set(ENV{PKG_CONFIG_PATH} ${WORK_DIR}/prefix/lib/pkgconfig:${WORK_DIR}/prefix/lib/x86_64-linux-gnu/pkgconfig)
unset(ENV{LD_LIBRARY_PATH})
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G Ninja
                        -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix
                RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "consumer configure failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "consumer build failed: ${rc}")
endif()

# The dynamic section of a program: what it needs and where it looks.
function(dynamic_section exe out)
  execute_process(COMMAND readelf -d ${exe} OUTPUT_VARIABLE text RESULT_VARIABLE rc)
  if(rc)
    message(FATAL_ERROR "readelf -d ${exe} failed: ${rc}")
  endif()
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

foreach(exe consumer_cmake consumer_pkgconfig consumer_cmake_static consumer_pkgconfig_static)
  execute_process(COMMAND ${WORK_DIR}/build/${exe} RESULT_VARIABLE rc OUTPUT_VARIABLE out)
  if(rc OR NOT out MATCHES "length 1 depth 3")
    message(FATAL_ERROR "${exe}: exit ${rc}, output '${out}'")
  endif()
  dynamic_section(${WORK_DIR}/build/${exe} dyn)
  if(exe MATCHES "_static$" AND dyn MATCHES "libvx")
    message(FATAL_ERROR "${exe} needs a shared vx library:\n${dyn}")
  elseif(NOT exe MATCHES "_static$" AND NOT dyn MATCHES "libvxjson\\.so")
    message(FATAL_ERROR "${exe} does not use the shared library:\n${dyn}")
  endif()
endforeach()

# The installed tool runs from wherever its tree lies: it finds its
# libraries through a RUNPATH relative to itself.
file(RENAME ${WORK_DIR}/prefix ${WORK_DIR}/moved)
dynamic_section(${WORK_DIR}/moved/bin/vxjson dyn)
if(NOT dyn MATCHES "RUNPATH\\)[^\n]*\\[\\$ORIGIN/")
  message(FATAL_ERROR "the installed vxjson has no RUNPATH relative to itself:\n${dyn}")
endif()
execute_process(COMMAND ${WORK_DIR}/moved/bin/vxjson format -e "{\"b\":[1, 2]}"
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(rc OR NOT out STREQUAL "{\"b\":[1,2]}\n")
  message(FATAL_ERROR "installed vxjson: exit ${rc}, output '${out}', errors '${err}'")
endif()
