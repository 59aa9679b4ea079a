# vrx_embed_resources(<out-variable> STRINGS <tsv> TABLES <file>... OBSERVERS <file>)
#
# Makes the module's resources from their reviewable text: the numbered string table and the weighting tables. The
# generator is a small program of this build (a cross build runs it through CMAKE_CROSSCOMPILING_EMULATOR).
function(vrx_embed_resources out)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "STRINGS;OBSERVERS" "TABLES")
  add_executable(vrx_embed ${PROJECT_SOURCE_DIR}/cmake/embed_resources.cpp)
  target_link_libraries(vrx_embed PRIVATE vrx_build_flags vrx_numeric_flags)
  set(generated ${CMAKE_CURRENT_BINARY_DIR}/embedded_resources.cpp)
  add_custom_command(OUTPUT ${generated}
    COMMAND vrx_embed ${generated} ${arg_STRINGS} ${arg_OBSERVERS} ${arg_TABLES}
    DEPENDS vrx_embed ${arg_STRINGS} ${arg_OBSERVERS} ${arg_TABLES}
    COMMENT "Embedding the string table and the weighting tables" VERBATIM)
  set(${out} ${generated} PARENT_SCOPE)
endfunction()
