# vrx_embed_resources(<out-variable> STRINGS <tsv> TABLES <file>... OBSERVERS <file> ILLUMINANTS <file>)
#
# Makes the module's resources from their reviewable text: the numbered string table, the published spectra and the weighting tables, as a
# C++ source, or for Windows as a resource script. The generator is a small program of the building machine.
function(vrx_embed_resources out)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "STRINGS;OBSERVERS;ILLUMINANTS" "TABLES")
  set(source ${PROJECT_SOURCE_DIR}/cmake/embed_resources.cpp)
  if(CMAKE_CROSSCOMPILING)
    find_program(VRX_HOST_CXX NAMES c++ g++ clang++ REQUIRED DOC "C++ compiler for programs that the build runs")
    set(embed ${CMAKE_CURRENT_BINARY_DIR}/vrx_embed_host)
    add_custom_command(OUTPUT ${embed} COMMAND ${VRX_HOST_CXX} -std=c++20 -O1 -o ${embed} ${source}
      DEPENDS ${source} COMMENT "Building vrx_embed for this machine" VERBATIM)
  else()
    add_executable(vrx_embed ${source})
    target_link_libraries(vrx_embed PRIVATE vrx_build_flags vrx_numeric_flags)
    set(embed vrx_embed)
  endif()
  if(WIN32)
    set(generated ${CMAKE_CURRENT_BINARY_DIR}/embedded_resources.rc)
  else()
    set(generated ${CMAKE_CURRENT_BINARY_DIR}/embedded_resources.cpp)
  endif()
  add_custom_command(OUTPUT ${generated}
    COMMAND ${embed} ${generated} ${arg_STRINGS} ${arg_OBSERVERS} ${arg_ILLUMINANTS} ${arg_TABLES}
    DEPENDS ${embed} ${arg_STRINGS} ${arg_OBSERVERS} ${arg_ILLUMINANTS} ${arg_TABLES}
    COMMENT "Embedding the string table and the weighting tables" VERBATIM)
  set(${out} ${generated} PARENT_SCOPE)
endfunction()
