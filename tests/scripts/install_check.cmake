cmake_minimum_required(VERSION 3.25)
# Script mode: install BUILD_DIR into WORK_DIR/prefix, then configure, build
# and run the consumer project with both discovery methods.
file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
                RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "install failed: ${rc}")
endif()
set(ENV{PKG_CONFIG_PATH} ${WORK_DIR}/prefix/lib/pkgconfig:${WORK_DIR}/prefix/lib/x86_64-linux-gnu/pkgconfig)
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
foreach(exe consumer_cmake consumer_pkgconfig)
  execute_process(COMMAND ${WORK_DIR}/build/${exe} RESULT_VARIABLE rc OUTPUT_VARIABLE out)
  if(rc OR NOT out MATCHES "length 1 depth 3")
    message(FATAL_ERROR "${exe}: exit ${rc}, output '${out}'")
  endif()
endforeach()
