#!/bin/sh
# fuzz.sh TARGET [SECONDS]: fuzzes one target for an hour, or as long as is said, from its seeds in fuzz/corpus/TARGET, and keeps
# there, minimised, what reached new code: every build replays these files as a test. The name of a target is a line of
# build/asan-ubsan/fuzz/targets.txt; without a name those are printed.
#
# An input that ends a run badly stays in build/asan-ubsan/fuzz/found/ and its replay is printed; mend the fault and add the
# input to the seeds under a name that says what it is.
set -eu
cd "$(dirname "$0")/.."
folder=build/asan-ubsan/fuzz
if [ ! -f "$folder/targets.txt" ]; then
  sh scripts/setup.sh test
  cmake --preset asan-ubsan -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" > /dev/null
fi
target=${1:-}
if ! grep -qx -e "$target" "$folder/targets.txt"; then
  echo "usage: fuzz.sh TARGET [SECONDS], where TARGET is one of" $(cat "$folder/targets.txt") >&2
  exit 2
fi
cmake --build --preset asan-ubsan --target "fuzz_$target" -- --quiet

program=$PWD/$folder/fuzz_$target
seeds=fuzz/corpus/$target
found=$folder/found/$target
mkdir -p "$found"
# What whole commands print on standard error is not kept.
close=
if [ "$target" = tool ]; then close=-close_fd_mask=2; fi
limits="-max_len=4096 -timeout=10 -rss_limit_mb=1024"
export LSAN_OPTIONS="print_suppressions=0:suppressions=$PWD/tests/lsan_suppressions.txt"
status=0
# shellcheck disable=SC2086 # the options are separate words
"$program" $close $limits -max_total_time="${2:-3600}" -print_final_stats=1 -artifact_prefix="$found-" "$found" "$seeds" \
  > "$folder/$target.log" 2>&1 || status=$?
tail -n 12 "$folder/$target.log"

# The fewest of the new inputs that reach what the seeds do not; seeds stay as they are, since people named them.
# shellcheck disable=SC2086
"$program" $close $limits -merge=1 "$seeds" "$found" >> "$folder/$target.log" 2>&1
rm -rf "$found"
echo "$seeds: $(find "$seeds" -type f | wc -l) files, $(du -sk "$seeds" | cut -f 1) KiB"
if [ "$status" -ne 0 ]; then
  echo "fuzz_$target found something; replay it with $folder/replay_$target FILE:" >&2
  ls "$found"-* >&2
fi
exit "$status"
