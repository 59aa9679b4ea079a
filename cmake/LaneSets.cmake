# Sources that are compiled once for each instruction set that the library chooses from at run time.
#
# VRX_LANE_SETS   their names, narrowest first; `all` that are known (the default), or some, for a build that has to be there
#                 soon. The base is always there and needs no more than every processor of the platform has. `plain` in its place is
#                 the base with one number at a time, as compilers without vectors have it: it is compiled in less than half the
#                 time.
#
# vrx_add_lane_objects(<name> <result> SOURCES <file>...) declares an object library <name>_<set> per set and puts their
# names into <result>. The sources see VRX_LANES, the lanes of a pack (1: plain numbers), and are written so that all
# they define is local or a specialisation for that count (vrxmath/numeric/lane_kernels.h). With VRX_UNITY those of one
# UNITY_GROUP are compiled together.

set(VRX_LANE_SETS all CACHE STRING "Instruction sets that kernels are compiled for: all, or a list such as base;avx2")
set(VRX_LANE_FLAGS_base "")
set(VRX_LANE_COUNT_base 2)
set(VRX_LANE_FLAGS_plain "")
set(VRX_LANE_COUNT_plain 1)
set(known base)
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  set(VRX_LANE_COUNT_base 1)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "x86|i[3-6]86|AMD64|amd64")
  list(APPEND known avx2 avx512)
  set(VRX_LANE_FLAGS_avx2 -mavx2 -mfma)
  set(VRX_LANE_COUNT_avx2 4)
  set(VRX_LANE_FLAGS_avx512 -mavx512f -mfma -mavx512dq -mavx512vl)
  set(VRX_LANE_COUNT_avx512 8)
  if(WIN32)
    # The compiler does not align the stack of 64-bit Windows beyond 16 bytes but moves wide packs as if it did.
    foreach(set avx2 avx512)
      list(APPEND VRX_LANE_FLAGS_${set} -Wa,-muse-unaligned-vector-move)
    endforeach()
  endif()
endif()

# WebAssembly has vectors of 128 bits and nothing to choose from at run time: the base, with the flags of the build.

if(VRX_LANE_SETS STREQUAL "all")
  set(lane_sets ${known})
else()
  set(lane_sets ${VRX_LANE_SETS})
endif()
foreach(set IN LISTS lane_sets)
  if(NOT set IN_LIST known AND NOT set STREQUAL "plain")
    message(FATAL_ERROR "VRX_LANE_SETS: ${set} is not among ${known}, or plain in place of the base")
  endif()
endforeach()
list(GET lane_sets 0 first)
if(first STREQUAL "plain")
  target_compile_definitions(vrx_build_flags INTERFACE VRX_PLAIN_LANES)
elseif(NOT first STREQUAL "base" OR "plain" IN_LIST lane_sets)
  message(FATAL_ERROR "VRX_LANE_SETS begins with base or plain, and has one of them: ${lane_sets}")
endif()
foreach(set avx2 avx512)
  if(NOT set IN_LIST lane_sets)
    string(TOUPPER ${set} name)
    target_compile_definitions(vrx_build_flags INTERFACE VRX_WITHOUT_${name})
  endif()
endforeach()

# Linked last, since of two options that contradict each other the later one holds.
add_library(vrx_lane_checks INTERFACE)
if(first STREQUAL "plain" AND CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 14)
  target_compile_options(vrx_lane_checks INTERFACE -Wno-bitwise-instead-of-logical)  # masks are combined so
endif()
if(VRX_SANITIZE MATCHES "undefined")
  # What of undefined behaviour a kernel of sums and products can show at all. The checks of pointers, which the address
  # sanitizer sees fail as well, and the others take two thirds of its compiling.
  target_compile_options(vrx_lane_checks INTERFACE -fno-sanitize=undefined
    -fsanitize=signed-integer-overflow,shift,float-cast-overflow)
endif()

function(vrx_add_lane_objects name result)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "SOURCES")
  set(targets "")
  foreach(set IN LISTS lane_sets)
    add_library(${name}_${set} OBJECT ${arg_SOURCES})
    set_target_properties(${name}_${set} PROPERTIES POSITION_INDEPENDENT_CODE ON VRX_NOT_FUZZED ON)
    target_include_directories(${name}_${set} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name}_${set} PRIVATE vrx_numeric_flags vrx_build_flags vrx_lane_checks)
    target_compile_options(${name}_${set} PRIVATE ${VRX_LANE_FLAGS_${set}})
    target_compile_definitions(${name}_${set} PRIVATE VRX_LANES=${VRX_LANE_COUNT_${set}} VRX_BUILDING)
    if(NOT BUILD_SHARED_LIBS)
      target_compile_definitions(${name}_${set} PRIVATE VRX_STATIC)
    endif()
    if(VRX_UNITY)
      set_target_properties(${name}_${set} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    endif()
    list(APPEND targets ${name}_${set})
    set_property(GLOBAL APPEND PROPERTY VRX_LANE_OBJECTS ${name}_${set})
  endforeach()
  set(${result} ${targets} PARENT_SCOPE)
endfunction()
