# cmake -DDOXYGEN=PROGRAM -DDOXYFILE=FILE -P make_reference.cmake
#
# Runs doxygen and fails for every warning that concerns a public declaration. Members of a class, and
# functions of the namespace, may share the comment of their group, which doxygen does not see, so that one without a docstring of
# its own is not a fault.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${DOXYGEN} ${DOXYFILE} ERROR_VARIABLE warnings OUTPUT_QUIET RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "doxygen ended with ${status}:\n${warnings}")
endif()
string(REPLACE ";" "," warnings "${warnings}")
string(REPLACE "\n" ";" warnings "${warnings}")
list(FILTER warnings EXCLUDE REGEX "^$|^ |Member .* of (class|struct|namespace) .* is not documented")
if(warnings)
  list(JOIN warnings "\n" text)
  message(FATAL_ERROR "docstrings:\n${text}")
endif()
