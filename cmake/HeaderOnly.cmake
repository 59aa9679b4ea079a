# vrx_find_header_only(<package> <target> <header>)
#
# Finds a library that is nothing but headers. A cross build may use those of the building machine, but must see only
# them and not the other headers beside them.
function(vrx_find_header_only package target header)
  if(NOT CMAKE_CROSSCOMPILING)
    find_package(${package} REQUIRED GLOBAL)
    return()
  endif()
  find_path(${package}_INCLUDE_DIR ${header} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  get_filename_component(folder ${header} DIRECTORY)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/header_only)
  file(CREATE_LINK ${${package}_INCLUDE_DIR}/${folder} ${CMAKE_BINARY_DIR}/header_only/${folder} SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} INTERFACE ${CMAKE_BINARY_DIR}/header_only)
endfunction()
