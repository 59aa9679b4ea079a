# vrx_check_headers()
#
# Target vrx_check_headers compiles public headers alone, twice in one file, so that a header that leans on its includer or
# lacks its guard fails the build. A header with a source of its own is the first that this includes, which the builds for daily
# work compile alone as well, and is left out. Test include_order holds each folder to those that it depends on, as
# vrx_declare_folder has them, and finds files that include each other in a circle; test std_includes holds each file to the
# headers of what it uses of the standard library, which builds that compile a folder together do not show.
function(vrx_check_headers)
  get_property(headers GLOBAL PROPERTY VRX_HEADERS)
  set(sources "")
  foreach(header IN LISTS headers ITEMS vrxmath/export.h vrxmath/arrow_c_data.h)
    string(REGEX REPLACE "[.]h$" ".cpp" own ${PROJECT_SOURCE_DIR}/${header})
    if(EXISTS ${own})
      file(STRINGS ${own} first REGEX "^#include" LIMIT_COUNT 1)
      if(first STREQUAL "#include <${header}>")
        continue()
      endif()
    endif()
    string(REPLACE "/" "_" name ${header})
    set(source ${CMAKE_CURRENT_BINARY_DIR}/check_headers/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include <${header}>\n#include <${header}>  // guarded\n")
    list(APPEND sources ${source})
  endforeach()
  add_library(vrx_check_headers OBJECT EXCLUDE_FROM_ALL ${sources})
  target_include_directories(vrx_check_headers PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(vrx_check_headers PRIVATE vrx_numeric_flags vrx_build_flags)

  if(NOT VRX_BUILD_TOOLS)  # whose folders are not declared then
    return()
  endif()
  get_property(folders GLOBAL PROPERTY VRX_FOLDERS)
  list(JOIN folders "\n" order)
  file(CONFIGURE OUTPUT include_order.txt CONTENT "${order}\n")
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  foreach(check include_order std_includes)
    add_test(NAME ${check}
      COMMAND ${Python3_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/cmake/check_${check}.py
              ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_BINARY_DIR}/include_order.txt)
    set_tests_properties(${check} PROPERTIES LABELS unit)
  endforeach()
endfunction()
