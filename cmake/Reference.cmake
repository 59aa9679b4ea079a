# vrx_add_reference()
#
# Target vrx_reference makes the API reference from the docstrings of the public headers, in <build>/reference/html. It
# fails when a class, function, enumeration or type of the library has no docstring, or one has a fault. Members whose
# group has a comment need none of their own.
function(vrx_add_reference)
  find_program(DOXYGEN_EXECUTABLE doxygen)
  if(NOT DOXYGEN_EXECUTABLE)
    return()
  endif()
  get_property(headers GLOBAL PROPERTY VRX_HEADERS)
  list(TRANSFORM headers PREPEND ${PROJECT_SOURCE_DIR}/)
  list(APPEND headers ${PROJECT_SOURCE_DIR}/docs/namespace.dox)
  list(JOIN headers " " input)
  set(folder ${PROJECT_BINARY_DIR}/reference)
  file(MAKE_DIRECTORY ${folder})
  add_custom_target(vrx_reference
    COMMAND ${CMAKE_COMMAND} -E env
      VRX_VERSION=${PROJECT_VERSION} VRX_REFERENCE_DIR=${folder} VRX_SOURCE_DIR=${PROJECT_SOURCE_DIR}
      "VRX_REFERENCE_INPUT=${input}"
      ${CMAKE_COMMAND} -DDOXYGEN=${DOXYGEN_EXECUTABLE} -DDOXYFILE=${PROJECT_SOURCE_DIR}/docs/Doxyfile
      -P ${PROJECT_SOURCE_DIR}/cmake/make_reference.cmake
    COMMENT "API reference in ${folder}/html" VERBATIM)
endfunction()
