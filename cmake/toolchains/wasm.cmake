# WebAssembly by Debian's emscripten; node runs what it builds. Relaxed vectors, whose results differ from machine to machine, are
# never asked for.
set(EMSCRIPTEN_SYSTEM_PROCESSOR wasm32)
# emscripten of that age takes a node that has fetch for a browser.
find_program(VRX_NODE node REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${VRX_NODE} --no-experimental-fetch)
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
set(CMAKE_CXX_FLAGS_INIT "-fwasm-exceptions -msimd128")
set(CMAKE_C_FLAGS_INIT "-fwasm-exceptions -msimd128")
# What emscripten's own scripts need of Debian's node packages, for a node that is not Debian's.
foreach(language C CXX)
  set(CMAKE_${language}_LINKER_LAUNCHER ${CMAKE_COMMAND} -E env NODE_PATH=/usr/share/nodejs)
endforeach()
# Programs read the files of the machine, grow as they need to, and have a stack like elsewhere.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fwasm-exceptions -sALLOW_MEMORY_GROWTH -sTOTAL_STACK=4MB")
