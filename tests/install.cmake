# Installs the build into a scratch prefix and builds a consumer project
# against it through find_package(vxjson) and pkg-config.
if(NOT VXJSON_SANITIZE AND NOT VXJSON_TSAN)
  add_test(NAME install_consumer
    COMMAND ${CMAKE_COMMAND}
      -DBUILD_DIR=${PROJECT_BINARY_DIR}
      -DSOURCE_DIR=${CMAKE_CURRENT_SOURCE_DIR}/install_consumer
      -DWORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/install_check
      -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/install_check.cmake)
  set_tests_properties(install_consumer PROPERTIES LABELS "unit" TIMEOUT 300)
endif()

# The public header must compile as plain C11 with pedantic errors.
add_library(vxjson_header_c_check OBJECT ${CMAKE_CURRENT_SOURCE_DIR}/header_check.c)
target_include_directories(vxjson_header_c_check PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_compile_options(vxjson_header_c_check PRIVATE -std=c11 -pedantic-errors -Wall -Wextra)

# Only the interface's names leave the shared library.
add_test(NAME exported_symbols
  COMMAND ${CMAKE_COMMAND} -DLIB=$<TARGET_FILE:vxjson> -DINCLUDE_DIR=${PROJECT_SOURCE_DIR}/include
          -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/exported_symbols.cmake)
set_tests_properties(exported_symbols PROPERTIES LABELS "unit")
