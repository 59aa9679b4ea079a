# The flags that every target of the project is built with.
#
# vrx_numeric_flags  what the results depend on, plain flags that vrxmath.pc repeats. It travels with the library, because templates and inline
#                    functions are compiled by whoever includes them.
# vrx_build_flags    language level, warnings and sanitizers; private to this build.

add_library(vrx_numeric_flags INTERFACE)
add_library(vrx_build_flags INTERFACE)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  # One rounding per operation, on every processor: no fused multiply-add, and no 80-bit registers on 32-bit x86.
  target_compile_options(vrx_numeric_flags INTERFACE -ffp-contract=off)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86|i[3-6]86|AMD64")
    target_compile_options(vrx_numeric_flags INTERFACE -msse2 -mfpmath=sse)
    if(WIN32)
      # Hosts of other compilers call with a stack that is aligned to 4 bytes; SSE needs 16.
      target_compile_options(vrx_numeric_flags INTERFACE -mstackrealign)
    endif()
  endif()
  if(EMSCRIPTEN)
    set(CMAKE_CXX_COMPILE_OPTIONS_PIC "")  # a module is loaded whole: code that may lie anywhere would only be slower
    # WebAssembly rounds each operation once by its definition; its relaxed vectors do not and are not used. What the standard library
    # there lacks of C++20 comes from one header.
    target_compile_options(vrx_numeric_flags INTERFACE -fwasm-exceptions -msimd128 -fno-math-errno)
    target_compile_options(vrx_build_flags INTERFACE
      "$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include ${PROJECT_SOURCE_DIR}/vrxmath/platform/wasm/missing_standard.h>")
  endif()
  if(WIN32)
    # The processor's square root, which rounds once, in place of the C library's, which rounds twice.
    target_compile_options(vrx_numeric_flags INTERFACE -fno-math-errno)
  endif()
  target_compile_options(vrx_build_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-qual -Wformat=2 -Wimplicit-fallthrough
    $<$<BOOL:${VRX_WARNINGS_AS_ERRORS}>:-Werror>)
  if(CMAKE_SIZEOF_VOID_P GREATER 4)
    # An index of 32 bits loses its sign in no wider type; with 32-bit pointers every one of them would be flagged.
    target_compile_options(vrx_build_flags INTERFACE -Wsign-conversion)
  elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(vrx_build_flags INTERFACE -Wno-sign-conversion)
  endif()
elseif(MSVC)
  target_compile_options(vrx_numeric_flags INTERFACE /fp:precise)
  target_compile_options(vrx_build_flags INTERFACE /W4 /utf-8 $<$<BOOL:${VRX_WARNINGS_AS_ERRORS}>:/WX>)
endif()

target_compile_features(vrx_build_flags INTERFACE cxx_std_20)
if(WIN32)
  target_compile_definitions(vrx_build_flags INTERFACE UNICODE _UNICODE _WIN32_WINNT=0x0601)  # Windows 7
  # Programs carry the compiler's runtime with them. The DLLs share it with their hosts, see DefineLibrary.
  target_link_options(vrx_build_flags INTERFACE $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-static>)
endif()

# Faults that are hard to use: addresses that differ from run to run, relocations that are read-only and bound at the start,
# guarded stacks, calls that know the sizes of their buffers. Test `hardening` looks for them in release builds.
if(WIN32 AND CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_link_options(vrx_build_flags INTERFACE LINKER:--dynamicbase,--nxcompat)
elseif(VRX_HARDEN AND NOT VRX_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" AND NOT APPLE AND NOT EMSCRIPTEN)
  include(CheckPIESupported)
  check_pie_supported()
  target_compile_options(vrx_build_flags INTERFACE $<$<NOT:$<CONFIG:Debug>>:-fstack-protector-strong>)
  target_compile_options(vrx_build_flags INTERFACE "$<$<NOT:$<CONFIG:Debug>>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>")
  target_link_options(vrx_build_flags INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)
endif()

if(VRX_SANITIZE)
  target_compile_options(vrx_build_flags INTERFACE
    -fsanitize=${VRX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vrx_build_flags INTERFACE -fsanitize=${VRX_SANITIZE})
  if(VRX_SANITIZE MATCHES "undefined")
    # Whether an object is of the class that its pointer says: nothing here casts from a base to what derives from it (clang-tidy
    # refuses that), and to look at it is a quarter of the compiling.
    target_compile_options(vrx_build_flags INTERFACE -fno-sanitize=vptr)
  endif()
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    # A program of fixed addresses has no half a million of them to relocate each time that a test starts it.
    target_link_options(vrx_build_flags INTERFACE $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
  endif()
endif()
if(VRX_BUILD_FUZZERS)
  # Everything a target reaches is instrumented, so that libFuzzer learns from the branches that an input takes; kernels over
  # lanes and tests (VRX_NOT_FUZZED) are not worth the time that it takes.
  target_compile_options(vrx_build_flags INTERFACE
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:VRX_NOT_FUZZED>>>:-fsanitize=fuzzer-no-link>)
endif()

# What nearly every source includes of the standard library is read once and for all of them: everywhere, or around vrxmath/ alone
# (OUTER). All code is then independent of its position, as the shared headers have to be.
set(VRX_SHARED_HEADERS OFF CACHE STRING
  "Precompile the headers of the standard library, for a build from nothing: OFF, ON, or OUTER for what is around vrxmath/")
if(VRX_SHARED_HEADERS)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # What was made of the same headers is the same, whenever: a compiler's cache can then keep what was compiled with it.
    target_compile_options(vrx_build_flags INTERFACE "SHELL:-Xclang -fno-pch-timestamp")
  endif()
endif()

# vrx_share_headers(<target>)
#
# From here on, in this folder and below, sources are compiled with the headers that <target> precompiles by the flags that hold here.
macro(vrx_share_headers target)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 sees strings overflow that do not when their headers were read beforehand. Builds without such headers look for that.
    add_compile_options(-Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread -Wno-restrict)
  endif()
  set(vrx_shared_headers ${target})
  file(WRITE ${CMAKE_BINARY_DIR}/${target}.cpp "")
  add_library(${target} OBJECT ${CMAKE_BINARY_DIR}/${target}.cpp)
  target_link_libraries(${target} PRIVATE vrx_numeric_flags vrx_build_flags)
  target_precompile_headers(${target} PRIVATE <algorithm> <array> <charconv> <cmath> <cstdint> <cstring> <filesystem>
    <functional> <limits> <map> <memory> <optional> <span> <string> <string_view> <utility> <vector>)
endmacro()

# vrx_compile_together(<target> [BY_FOLDER])
#
# With VRX_UNITY, the sources of a target are compiled several at a time, so that what they include is read once. Names in their
# anonymous namespaces have to differ then. BY_FOLDER: only those of one folder.
function(vrx_compile_together target)
  if(vrx_shared_headers)
    target_precompile_headers(${target} REUSE_FROM ${vrx_shared_headers})
  endif()
  if(NOT VRX_UNITY)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 12)
  get_target_property(sources ${target} SOURCES)
  if(WIN32)
    # The system's headers define names such as DeleteFile as macros, which is not for other sources to see.
    foreach(source IN LISTS sources)
      cmake_path(ABSOLUTE_PATH source OUTPUT_VARIABLE file)
      if(EXISTS ${file})
        file(STRINGS ${file} system REGEX "#include <(windows|vrxmath/platform/win32/win32)[.]h>")
        if(system)
          set_source_files_properties(${source} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
        endif()
      endif()
    endforeach()
  endif()
  if("BY_FOLDER" IN_LIST ARGN)
    set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
    foreach(source IN LISTS sources)
      cmake_path(GET source PARENT_PATH folder)
      set_source_files_properties(${source} PROPERTIES UNITY_GROUP "${folder}")
    endforeach()
  endif()
endfunction()
