# vrx_check_headers()
#
# Target vrx_check_headers compiles every public header alone, twice in one file, so that a header that leans on its
# includer or lacks its guard fails the build. Test include_order holds each folder to the folders that it depends on.
function(vrx_check_headers)
  get_property(headers GLOBAL PROPERTY VRX_HEADERS)
  set(sources "")
  foreach(header IN LISTS headers ITEMS vrxmath/export.h)
    string(REPLACE "/" "_" name ${header})
    set(source ${CMAKE_CURRENT_BINARY_DIR}/check_headers/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include <${header}>\n#include <${header}>  // guarded\n")
    list(APPEND sources ${source})
  endforeach()
  add_library(vrx_check_headers OBJECT EXCLUDE_FROM_ALL ${sources})
  target_include_directories(vrx_check_headers PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(vrx_check_headers PRIVATE vrx_numeric_flags vrx_build_flags)

  get_property(units GLOBAL PROPERTY VRX_UNITS)
  set(rules "")
  foreach(unit IN LISTS units)
    # Units are declared in the order of the data's flow, so those below have their closure already.
    get_property(depends GLOBAL PROPERTY VRX_DEPENDS_${unit})
    set(allowed_${unit} ${unit})
    foreach(dependency IN LISTS depends)
      list(APPEND allowed_${unit} ${allowed_${dependency}})
    endforeach()
    list(REMOVE_DUPLICATES allowed_${unit})
    string(APPEND rules "set(allowed_${unit} ${allowed_${unit}})\n")
  endforeach()
  file(CONFIGURE OUTPUT include_rules.cmake CONTENT "set(units ${units})\n${rules}")
  add_test(NAME include_order
    COMMAND ${CMAKE_COMMAND} -P ${PROJECT_SOURCE_DIR}/cmake/check_include_order.cmake
            ${CMAKE_CURRENT_BINARY_DIR}/include_rules.cmake ${PROJECT_SOURCE_DIR})
  set_tests_properties(include_order PROPERTIES LABELS unit)
endfunction()
