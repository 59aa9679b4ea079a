#!/bin/sh
# store_bench.sh VRX [TRIALS]: what a job costs, as ratios in one run. TRIALS (1,000,000) of 10,000 standards are judged under three
# illuminants, once into a job and once into csv, which sqlite3 imports; then a standard is looked up. Needs sqlite3.
set -eu
vrx=$(realpath "$1")
trials=${2:-1000000}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
unset VRX_JOB

# seconds NAME COMMAND...: runs the command, and keeps how long it took and how much memory, in MB, it had.
seconds() {
  name=$1
  shift
  /usr/bin/env python3 - "$name" "$@" <<'PYTHON'
import resource, subprocess, sys, time
begun = time.monotonic()
done = subprocess.run(sys.argv[2:], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
if done.returncode: sys.exit(done.stderr.decode())
took = time.monotonic() - begun
memory = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024
open(sys.argv[1] + ".seconds", "w").write(f"{took:.4f}")
print(f"{sys.argv[1]:12} {took:9.3f} s {memory:8.0f} MB")
PYTHON
}
ratio() { awk -v a="$(cat "$1.seconds")" -v b="$(cat "$2.seconds")" -v text="$3" 'BEGIN { printf "%s %.2f\n", text, a / b }'; }

curves() {  # FILE COUNT HEADING: with a standard for each hundred trials
  awk -v count="$2" -v heading="$3" 'BEGIN {
    srand(7); printf "%s", heading; for (nm = 400; nm <= 700; nm += 10) printf ",%d", nm; print ""
    for (i = 0; i < count; ++i) {
      if (heading == "id") printf "s%d", i; else printf "t%d,s%d", i, i % 10000
      level = 30 + (i % 10000) / 250 + rand()
      for (nm = 400; nm <= 700; nm += 10) printf ",%.3f", level + rand(); print ""
    }
  }' > "$1"
}
curves standards.csv 10000 id
curves trials.csv "$trials" id,standard
"$vrx" job create job
"$vrx" job add-standard standards.csv --job job --system cmc --tolerance 1 --illuminants D65,A,CWF

seconds csv sh -c "\"$vrx\" judge standards.csv trials.csv --system cmc --tolerance 1 --illuminants D65,A,CWF --format csv > judged.csv"
seconds import sqlite3 -cmd '.mode csv' imported '.import judged.csv judged'
seconds job "$vrx" judge --job job trials.csv --summary
ratio job import "storing $trials judged trials, over sqlite3's .import of the same as csv (with the judging; at most 2):"
seconds history "$vrx" job history s77 --job job --format csv
seconds trend "$vrx" job trend s77 --job job --format csv
seconds nothing "$vrx" --version
ratio history nothing "history of one standard, over a run that does nothing:"
ratio trend nothing "trend of one standard, over a run that does nothing:"
seconds search-file "$vrx" search trials.csv standards.csv --count 1 --illuminants D65 --within 0.001 --format csv
seconds search-job "$vrx" search trials.csv --job job --count 1 --illuminants D65 --within 0.001 --format csv
ratio search-job search-file "search of all trials among 10,000 standards of the job, over the same among those of a file:"
