#!/bin/sh
# The checks that a change must pass: formatting, builds and tests with g++ and clang++ and under the sanitizers, the headers alone and
# their docstrings, the installed library in the hands of a host, and some seconds of each fuzz target.
# Installs what is missing first.
#
# VRX_FUZZ_SECONDS sets the time of each fuzz target; scripts/fuzz.sh fuzzes one for an hour.
# Windows programs are built and run where mingw-w64 and wine are installed; VRX_WINDOWS=1 installs them, VRX_WINDOWS=0
# leaves this out. So are modules of WebAssembly where emscripten is installed, and VRX_WASM=1 and VRX_WASM=0 say so.
set -eu
cd "$(dirname "$0")/.."
jobs=$(nproc)
launcher=$(command -v ccache || true)
# What ccache has to know of precompiled headers.
export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"

# stage NAME COMMAND...: runs the command and tells how long it took.
stage() {
  echo "=== $1"
  shift
  started=$(date +%s)
  "$@"
  echo "=== done in $(($(date +%s) - started)) s"
}

check_format() {
  find vrxmath vrxio vrxstore sql pictures c_api controls tools web tests fuzz bench cmake python \( -name '*.h' -o -name '*.cpp' \) -print0 |
    xargs -0 clang-format --dry-run -Werror
}

# build PRESET [TARGET...]: the targets are built beside everything else.
build() {
  preset=$1
  shift
  log=build/$preset.log
  cmake --preset "$preset" -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher" > "$log" 2>&1 || { cat "$log"; return 1; }
  cmake --build --preset "$preset" -j "$jobs" --target all "$@" > "$log" 2>&1 || { tail -n 100 "$log"; return 1; }
}

build_and_test() {
  build "$@"
  ctest --preset "$1" -j "$jobs"
}

# clang-tidy by the commands of the sanitizers' build, a source once even where it is compiled several times, as the lane
# kernels are, of which the wide ones are looked at. That build compiles the sources of a folder together, and so they are looked
# at: most of the time goes into the headers that they share. Its log is shown when something was found.
check_tidy() {
  mkdir -p build/tidy
  python3 -c '
import json
commands = {command["file"]: command for command in json.load(open("build/ci-asan-ubsan/compile_commands.json"))}
commands = [command for file, command in commands.items() if "_lanes_plain" not in file]
json.dump(commands, open("build/tidy/compile_commands.json", "w"))'
  log=build/tidy/clang-tidy.log
  run-clang-tidy -p build/tidy -quiet -j "$jobs" \
    "^$PWD/(build/ci-asan-ubsan/)?(vrxmath|vrxio|vrxstore|sql|pictures|c_api|controls|tools)/.*\\.(cpp|cxx)\$" > "$log" 2>&1 ||
    { grep -vE '^$|warnings? generated|^clang-tidy' "$log" | head -n 100; return 1; }
}

# Runs the fuzz targets from their corpus, as many at a time as there are cores, always with the same random numbers: that a
# change passes must not be luck, and scripts/fuzz.sh looks further. New inputs go to the build folder. What the
# target of whole commands prints on standard error is not kept.
fuzz() {
  folder=build/ci-asan-ubsan/fuzz
  mkdir -p "$folder/found"
  xargs -P "$jobs" -I NAME sh -c "
    mkdir -p $folder/found/NAME
    if [ NAME = tool ]; then close=-close_fd_mask=2; fi
    $folder/fuzz_NAME \${close:-} -seed=1 -max_total_time=${VRX_FUZZ_SECONDS:-8} -max_len=4096 -timeout=10 -rss_limit_mb=1024 \
      -artifact_prefix=$folder/found/NAME- $folder/found/NAME fuzz/corpus/NAME > $folder/NAME.log 2>&1 ||
      { tail -n 60 $folder/NAME.log; exit 1; }
    echo \"fuzz_NAME: \$(tail -n 1 $folder/NAME.log)\"
  " < "$folder/targets.txt"
}

has_windows_packages() {
  command -v i686-w64-mingw32-g++-posix > /dev/null && command -v x86_64-w64-mingw32-g++-posix > /dev/null &&
    [ -x /usr/lib/wine/wine64 ]
}

# Whether Windows programs of one width run here: not every kernel runs 32-bit programs, nor does wine start everywhere.
runs_windows() {
  printf 'int main(void) { return 7; }' | "$1-w64-mingw32-gcc-posix" -x c - -o "build/probe-$1.exe"
  status=0
  sh scripts/windows/run.sh "build/probe-$1.exe" > /dev/null 2>&1 || status=$?
  [ "$status" -eq 7 ]
}

# Both widths of Windows: the library, its tests and the tool, cross-built and run by wine. A width whose programs do not
# run here is built all the same, which holds the exports against their list. On a machine with much to do wine at times ends a
# program without its output; by the presets a test that fails runs once more, and what our code does wrong it does again.
windows() {
  sh scripts/setup.sh windows || has_windows_packages
  for width in i686 x86_64; do
    if runs_windows "$width"; then
      build_and_test "ci-windows-$width"
    else
      echo "=== windows-$width: built only, its programs do not run on this machine"
      build "ci-windows-$width"
    fi
  done
}

# The engine as WebAssembly: the tests that pin results and those of numbers and readers by node, the package of npm, the page in
# Chromium. Results are held against those of the native tool.
webassembly() {
  VRX_WASM_PRESET=ci-wasm VRX_TOOL=$PWD/build/ci-gcc/tools/vrx/vrx sh scripts/web.sh test
}

stage "packages" sh scripts/setup.sh bench
mkdir -p build
stage "clang-format" check_format
stage "g++: build, headers alone, tests, static library installed" build_and_test ci-gcc vrx_check_headers vrx_reference
stage "clang++: build of the shared library, tests that pin results, installed" build_and_test ci-clang
# This build is clang++'s of the tool, too.
stage "address and undefined-behaviour sanitizers: build, tests" build_and_test ci-asan-ubsan
stage "clang-tidy" check_tidy
stage "fuzz targets" fuzz
if [ "${VRX_WINDOWS:-}" = 1 ] || { [ "${VRX_WINDOWS:-}" != 0 ] && has_windows_packages; }; then
  stage "Windows, 32 and 64 bits: build, tests under wine" windows
else
  echo "=== Windows: left out; VRX_WINDOWS=1 installs what it needs"
fi
if [ "${VRX_WASM:-}" = 1 ] || { [ "${VRX_WASM:-}" != 0 ] && command -v emcc > /dev/null; }; then
  stage "WebAssembly: tests by node, the page in a browser" webassembly
else
  echo "=== WebAssembly: left out; VRX_WASM=1 installs what it needs"
fi
echo "=== everything passed"
