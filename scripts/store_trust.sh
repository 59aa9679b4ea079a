#!/bin/sh
# store_trust.sh VRX [ROUNDS]: what was committed to a job is there, what was not is absent, whatever happens to the process.
#
# ROUNDS (300) times an import is killed (kill -9) at a random moment, then looked at and repeated; so is a watched folder. Four processes
# judge into one file at the same time. Ends with status 1 at the first fault. Prints how many kills hit before the commit, and
# after it.
set -eu
. "$(dirname "$0")/trust_parts.sh"
vrx=$(realpath "$1")
rounds=${2:-300}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
unset VRX_JOB

judge() { "$vrx" judge --job "$1" "$2" --standard-id s0 --summary > judged 2>&1; }

# start_and_kill MOST COMMAND...: kills the command after up to MOST seconds of a random time.
start_and_kill() {
  most=$1
  shift
  "$@" > /dev/null 2>&1 &
  pid=$!
  sleep "$(awk -v most="$most" -v seed="$pid$round" 'BEGIN { srand(seed); printf "%.4f", most * rand() }')"
  kill -9 "$pid" 2> /dev/null || true
  wait "$pid" 2> /dev/null || true
}

curves standards.csv 1 1 s
batch=400
make_job() {
  "$vrx" job create "$1" 2> /dev/null
  "$vrx" job add-standard standards.csv --job "$1" --system cmc --tolerance 1 --illuminants D65,A,CWF 2> /dev/null
}

# How long an import takes decides how long one waits for it.
make_job timed
curves timed.csv $batch 0 t
begun=$(date +%s%N)
judge timed timed.csv
most=$(awk -v ns="$(($(date +%s%N) - begun))" 'BEGIN { printf "%.4f", 1.3 * ns / 1e9 }')

make_job job
before=0 after=0 round=1
while [ "$round" -le "$rounds" ]; do
  curves lot.csv $batch "$round" "r${round}t"
  had=$(trials job)
  start_and_kill "$most" "$vrx" judge --job job lot.csv --standard-id s0 --summary
  has=$(trials job)
  if [ "$has" -eq "$had" ]; then
    before=$((before + 1))
  elif [ "$has" -eq $((had + batch)) ]; then
    after=$((after + 1))
  else
    fail "round $round: $had trials became $has"
  fi
  judge job lot.csv || { cat judged >&2; fail "round $round: the run cannot be repeated"; }
  [ "$(trials job)" -eq $((had + batch)) ] || fail "round $round: the repeated run did not make it whole"
  if [ $((round % 50)) -eq 0 ]; then verify job; fi
  round=$((round + 1))
done
verify job
echo "imports: $rounds killed, $before before the commit and $after after it; each was whole after it was repeated"

make_job shared
for worker in 1 2 3 4; do
  (
    for lot in 1 2 3 4 5; do
      curves "shared$worker-$lot.csv" 200 "$worker$lot" "w${worker}l${lot}t"
      "$vrx" judge --job shared "shared$worker-$lot.csv" --standard-id s0 --summary > /dev/null 2> "shared$worker-$lot.err" ||
        { cat "shared$worker-$lot.err" >&2; exit 1; }
    done
  ) &
  workers="${workers:-} $!"
done
for worker in $workers; do wait "$worker" || fail "a process of four was refused"; done
[ "$(trials shared)" -eq 4000 ] || fail "four processes stored $(trials shared) trials of 4000"
verify shared
echo "four processes at once: 20 batches, 4000 trials, nothing lost and nothing doubled"

make_job watched
mkdir in
round=1
files=$((rounds < 60 ? rounds : 60))
for file in $(seq "$files"); do curves "in/lot$file.csv" 50 "9$file" "f${file}t"; done
while [ "$round" -le "$files" ]; do
  start_and_kill "$most" "$vrx" watch in --job watched --standard-id s0 --settle 0 --every 0.05
  round=$((round + 1))
done
"$vrx" watch in --job watched --standard-id s0 --settle 0 --once > /dev/null 2>&1
[ "$(trials watched)" -eq $((files * 50)) ] || fail "the watched folder stored $(trials watched) trials of $((files * 50))"
[ "$(find in/done -name '*.csv' | wc -l)" -eq "$files" ] || fail "not every file went to done"
[ ! -e in/refused ] || fail "a file was refused"
verify watched
echo "watched folder: $files files over $files kills, each stored once"
