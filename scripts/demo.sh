#!/bin/sh
# Builds the vrx tool, installing what is missing first, and lets it judge one measured set of the 24-patch chart
# against another and write the report of that. It is built to be there soon: kernels for one number at a time, less
# optimisation, several sources at a time, the headers that they share read once. What it computes is the same to the last bit; preset `release` makes the fast one.
set -eu
cd "$(dirname "$0")/.."
sh scripts/setup.sh build

mkdir -p build
launcher=$(command -v ccache || true)
{
  cmake -S . -B build/demo -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-Og -DNDEBUG" \
    -DVRX_BUILD_TESTS=OFF -DVRX_UNITY=ON -DVRX_SHARED_HEADERS=ON -DVRX_LANE_SETS=plain -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher"
  cmake --build build/demo --target vrx
} > build/demo.log 2>&1 || { cat build/demo.log >&2; exit 1; }

report=build/demo/report.html
set -- judge examples/chart_ohta.csv examples/chart_average.csv --pairs --report "$report"
echo "vrx $*"
build/demo/tools/vrx/vrx "$@"
echo
echo "The report, for a browser: $PWD/$report"
