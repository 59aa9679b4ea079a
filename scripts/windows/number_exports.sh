#!/bin/sh
# Gives every public function that has no export number the next one: builds the library's objects for both widths of
# Windows and compares their symbols with exports/vrxmath.txt.
set -eu
cd "$(dirname "$0")/../.."
for width in i686 x86_64; do
  mkdir -p build
  log=build/windows-$width.log
  cmake --preset "windows-$width" -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" > "$log" 2>&1 &&
    cmake --build --preset "windows-$width" --target vrx_objects > "$log" 2>&1 || { tail -n 50 "$log"; exit 1; }
done
exec python3 scripts/exports.py add exports/vrxmath.txt \
  build/windows-i686/vrx_objects.txt build/windows-x86_64/vrx_objects.txt
