#!/bin/sh
# compare.sh [BUILD]: how many times as long WebAssembly in node takes as the native library with SSE2 on one thread, for tristimulus
# values, CIEDE2000 and rows of csv. Results are compared first. BUILD is a native build with the C interface, build/release otherwise.
set -eu
cd "$(dirname "$0")/../.."
native=${1:-build/release}
out=build/bench_wasm
mkdir -p "$out"
cmake --build "$native" --target vrxmath_c > "$out/build.log"
cmake --preset wasm > "$out/build.log"
cmake --build --preset wasm --target bench_rates > "$out/build.log"
cc -O2 -std=c11 -I. bench/wasm/rates.c -o "$out/rates" -L"$native/c_api" -lvrxmath_c -Wl,-rpath,"$PWD/$native/c_api"

# 20,000 curves at 10 nm.
awk 'BEGIN {
  printf "id"; for (nm = 360; nm <= 750; nm += 10) printf ",%d", nm; print ""
  srand(1)
  for (i = 1; i <= 20000; ++i) { printf "S%d", i; for (k = 0; k < 40; ++k) printf ",%.2f", 2 + 90 * rand(); print "" }
}' > "$out/curves.csv"

for run in 1 2 3; do
  VRX_INSTRUCTION_SET=sse2 "$out/rates" "$out/curves.csv" | sed "s/^/native /"
  node --no-experimental-fetch build/wasm/web/bench_rates.js "$out/curves.csv" | sed "s/^/wasm /"
done | awk '
  { if (!($2 in hash)) hash[$2] = $3; if (hash[$2] != $3) { print $2 ": other results"; bad = 1 }
    if ($4 > best[$1, $2]) best[$1, $2] = $4 }
  END { for (name in hash) printf "%-12s native %12.0f/s  wasm %12.0f/s  ratio %.2f\n", name, best["native", name], best["wasm", name],
          best["native", name] / best["wasm", name]; exit bad }'
