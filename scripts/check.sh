#!/bin/sh
# check.sh FOLDER...: builds the tests of a folder (colorimetry, batch, vrxio, tools ...) and what they need, and runs them.
# The short loop while one works on it; scripts/test.sh has everything.
#
# VRX_PRESET names another preset than `release`.
set -eu
cd "$(dirname "$0")/.."
preset=${VRX_PRESET:-release}
build=build/$preset
if [ "$#" -eq 0 ]; then
  echo "usage: check.sh FOLDER..., where FOLDER is one of" $(cd tests && dirname */CMakeLists.txt) >&2
  exit 2
fi
if [ ! -f "$build/build.ninja" ]; then
  sh scripts/setup.sh test
  cmake --preset "$preset" -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" > /dev/null
fi
# Target `all` of a folder of the build tree: its programs and what they are linked from.
for folder in "$@"; do
  set -- "$@" "tests/$folder/all"
  shift
done
cmake --build --preset "$preset" -- --quiet "$@"
for target in "$@"; do
  ctest --test-dir "$build/${target%/all}" --output-on-failure --no-tests=error -j "$(nproc)"
done
