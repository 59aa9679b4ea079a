#!/bin/sh
# The checks that a change must pass: formatting, builds and tests with g++ and clang++ and under the sanitizers, the headers alone and
# their docstrings, the installed library in the hands of a host, and some seconds of each fuzz target.
# Installs what is missing first.
#
# VRX_FUZZ_SECONDS sets the time of each fuzz target; scripts/fuzz.sh fuzzes one for an hour.
# Windows programs are built and run where mingw-w64 and wine are installed; VRX_WINDOWS=1 installs them, VRX_WINDOWS=0
# leaves this out. So are modules of WebAssembly where emscripten is installed, and VRX_WASM=1 and VRX_WASM=0 say so.
#
# Two stages run side by side, each on half of the processors: a stage does not use them all at its beginning and its end, nor
# while it waits for a browser. What a stage prints comes when it has ended.
set -eu
cd "$(dirname "$0")/.."
lanes=2
jobs=$((($(nproc) + lanes - 1) / lanes))
launcher=$(command -v ccache || true)
# What ccache has to know of precompiled headers.
export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros}"
stages=build/stages

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

# Tests of this machine's programs wait for disks, browsers and servers that they start: there is one more of them at a time.
run_tests() {
  ctest --preset "$1" -j "$((jobs + 1))"
}

build_and_test() {
  build "$@"
  run_tests "$1"
}

# Its tests hold files against programs of other makers, which its build does not need.
sanitizers() {
  build ci-asan-ubsan
  after packages run_tests ci-asan-ubsan
}

# Runs the fuzz targets from their corpus, as many at a time as there are processors, and always with the same random numbers: that
# a change passes must not be luck, and scripts/fuzz.sh looks further. New inputs go to the build folder. What the target of whole
# commands prints on standard error is not kept.
fuzz() {
  folder=build/ci-asan-ubsan/fuzz
  mkdir -p "$folder/found"
  xargs -P "$(nproc)" -I NAME sh -c "
    mkdir -p $folder/found/NAME
    if [ NAME = tool ]; then close=-close_fd_mask=2; fi
    $folder/fuzz_NAME \${close:-} -seed=1 -max_total_time=${VRX_FUZZ_SECONDS:-5} -max_len=4096 -timeout=10 -rss_limit_mb=1024 \
      -artifact_prefix=$folder/found/NAME- $folder/found/NAME fuzz/corpus/NAME > $folder/NAME.log 2>&1 ||
      { tail -n 60 $folder/NAME.log; exit 1; }
    echo \"fuzz_NAME: \$(tail -n 1 $folder/NAME.log)\"
  " < "$folder/targets.txt"
}

has_windows_packages() {
  command -v i686-w64-mingw32-g++-posix > /dev/null && command -v x86_64-w64-mingw32-g++-posix > /dev/null &&
    [ -x /usr/lib/wine/wine64 ]
}
has_wasm_packages() {
  command -v emcc > /dev/null
}
# What the first builds do not need, in the order in which it is asked for: half of this time is the network's.
other_packages() {
  stage packages "packages of the other builds and of the tests" sh scripts/setup.sh bench
  stage more-packages "packages of Windows and WebAssembly" more_packages
}
more_packages() {
  if [ "$windows" = 1 ]; then sh scripts/setup.sh windows || has_windows_packages; fi
  if [ "$wasm" = 1 ]; then sh scripts/setup.sh wasm; fi
}

# Whether Windows programs of one width run here: not every kernel runs 32-bit programs, nor does wine start everywhere.
runs_windows() {
  printf 'int main(void) { return 7; }' | "$1-w64-mingw32-gcc-posix" -x c - -o "build/probe-$1.exe"
  status=0
  sh scripts/windows/run.sh "build/probe-$1.exe" > /dev/null 2>&1 || status=$?
  [ "$status" -eq 7 ]
}

# windows WIDTH: the library, its tests and the tool, cross-built and run by wine. A width whose programs do not
# run here is built all the same, which holds the exports against their list. On a machine with much to do wine at times ends a
# program without its output; by the presets a test that fails runs up to twice more, and what our code does wrong it does again.
windows() {
  build "ci-windows-$1"
  if runs_windows "$1"; then
    ctest --preset "ci-windows-$1" -j "$jobs"
  else
    echo "windows-$1: built only, its programs do not run on this machine"
  fi
}

# The engine as WebAssembly: the tests that pin results and those of numbers and readers by node, the package of npm, the page in
# Chromium. Results are held against those of the native tool.
webassembly() {
  VRX_WASM_PRESET=ci-wasm VRX_TOOL=$PWD/build/ci-gcc/tools/vrx/vrx sh scripts/web.sh test
}

# stage NAME TITLE COMMAND...: runs the command unless the other lane has taken this stage. Its output is shown when it has ended.
stage() {
  if [ -e "$stages/failed" ]; then exit 1; fi
  name=$1 title=$2
  mkdir "$stages/$name" 2> /dev/null || return 0
  shift 2
  echo "--- $title ..."
  started=$(date +%s)
  status=0
  # A shell of its own: one that is asked for its status ignores the commands that fail in it.
  (
    trap 'times > "$stages/$name/times"' EXIT
    "$@"
  ) > "$stages/$name/log" 2>&1 &
  wait $! || status=$?
  {
    flock 9
    echo "=== $title"
    cat "$stages/$name/log"
    spent="$(($(date +%s) - started)) s, of processor time (user, system) $(tail -n 1 "$stages/$name/times")"
    if [ "$status" -ne 0 ]; then
      touch "$stages/failed"
      echo "=== failed after $spent"
    else
      touch "$stages/$name/done"
      echo "=== done in $spent"
    fi
  } 9> "$stages/lock"
  if [ "$status" -ne 0 ]; then exit 1; fi
}

# after NAME COMMAND...: runs the command when that stage is done.
after() {
  until [ -e "$stages/$1/done" ]; do
    if [ -e "$stages/failed" ]; then exit 1; fi
    sleep 1
  done
  shift
  "$@"
}

# What needs few packages first, then the longest; what needs another stage comes well after it. The last ones use all processors,
# since a lane that finds no stage any more leaves its own idle.
lane() {
  stage sanitizers "address and undefined-behaviour sanitizers: build, tests" sanitizers
  stage clang "clang++: build of the shared library, tests that pin results, installed" build_and_test ci-clang
  stage gcc "g++: build, headers alone, tests, static library installed" after packages build_and_test ci-gcc \
    vrx_check_headers vrx_reference
  if [ "$windows" = 1 ]; then
    stage windows-x86_64 "Windows, 64 bits: build, tests under wine" after more-packages windows x86_64
    stage windows-i686 "Windows, 32 bits: build, tests under wine" after more-packages windows i686
  fi
  if [ "$wasm" = 1 ]; then
    stage wasm "WebAssembly: tests by node, the page in a browser" after more-packages after gcc webassembly
  fi
  stage tidy "clang-tidy" after sanitizers sh scripts/tidy.sh
  stage fuzz "fuzz targets" after sanitizers fuzz
}

# wanted CHOICE COMMAND: 1 where the choice says so, or where it says nothing and the command finds its packages.
wanted() {
  case $1 in
    0 | 1) echo "$1" ;;
    *) if $2; then echo 1; else echo 0; fi ;;
  esac
}
windows=$(wanted "${VRX_WINDOWS:-}" has_windows_packages)
wasm=$(wanted "${VRX_WASM:-}" has_wasm_packages)
[ "$windows" = 1 ] || echo "=== Windows: left out; VRX_WINDOWS=1 installs what it needs"
[ "$wasm" = 1 ] || echo "=== WebAssembly: left out; VRX_WASM=1 installs what it needs"

rm -rf "$stages"
mkdir -p "$stages"
stage first-packages "packages of the first builds" sh scripts/setup.sh sanitize
stage format "clang-format" check_format
trap 'kill 0' INT  # which a lane, being in the background, does not hear
other_packages &
others=$!
lane &
first=$!
lane &
second=$!
status=0
for each in $others $first $second; do
  wait "$each" || status=$?
done
[ "$status" -eq 0 ] || exit 1
echo "=== everything passed"
