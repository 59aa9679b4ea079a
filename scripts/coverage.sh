#!/bin/sh
# Builds with the coverage preset, runs the tests, and prints how many lines and branches of the project they reach, by
# folder and in all. build/coverage/coverage.txt has it by file.
set -eu
cd "$(dirname "$0")/.."
sh scripts/setup.sh test
build=build/coverage
mkdir -p "$build"
launcher=$(command -v ccache || true)
rm -rf "$build/profiles"
{
  cmake --preset coverage -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher"
  cmake --build --preset coverage -j "$(nproc)"
  ctest --preset coverage -j "$(nproc)"
} > "$build/build.log" 2>&1 || { tail -n 60 "$build/build.log"; exit 1; }

profdata=$(ls /usr/bin/llvm-profdata* | head -n 1)
cov=$(ls /usr/bin/llvm-cov* | head -n 1)
"$profdata" merge -sparse "$build"/profiles/*.profraw -o "$build/tests.profdata"
# Every test program and the tool are objects whose counters are looked at.
objects=$(find "$build/tests" "$build/tools" "$build/fuzz" -type f -perm -u+x ! -name '*.so*' -exec sh -c '
  head -c 4 "$1" | grep -q ELF && printf " -object %s" "$1"' sh {} \;)
# shellcheck disable=SC2086 # the objects are separate words
"$cov" report $objects -instr-profile="$build/tests.profdata" \
  -ignore-filename-regex='/(build|tests|fuzz|bench)/|^/usr/' > "$build/coverage.txt"
awk '
  /^(vrx|tools|c_api|controls)/ && $(NF - 5) > 0 {
    split($1, part, "/"); folder = part[2] ~ /[.]/ ? part[1] : part[1] "/" part[2]
    lines[folder] += $(NF - 5); missed[folder] += $(NF - 4)
  }
  /^TOTAL/ { total = $0; n = NF }
  END {
    for (folder in lines) printf "%-24s %6.2f %% of %d lines\n", folder, 100 * (1 - missed[folder] / lines[folder]), lines[folder] | "sort"
    close("sort")
    split(total, t); printf "in all: %s of %d lines, %s of branches\n", t[n - 3], t[n - 5], t[n]
  }' "$build/coverage.txt"
