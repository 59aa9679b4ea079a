#!/bin/sh
# make_screenshots.sh [VRX]: the pictures of the example's report in docs/, with an installed Chromium.
set -eu
cd "$(dirname "$0")/.."
vrx=${1:-build/release/tools/vrx/vrx}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# The day on which the example's figures were brought together, so that only a change of the report changes the pictures.
SOURCE_DATE_EPOCH=1760000000
export SOURCE_DATE_EPOCH
# shot NAME WIDTH,HEIGHT STANDARD TRIALS: the top of the report of two files.
shot() {
  "$vrx" judge "$3" "$4" --pairs --report "$folder/report.html" --report-title "Chart, lot against master" > /dev/null
  "${VRX_CHROMIUM:-chromium}" --headless --no-sandbox --disable-gpu --hide-scrollbars --user-data-dir="$folder/profile" \
    --window-size="$2" --screenshot="$PWD/docs/$1.png" "file://$folder/report.html" > /dev/null 2>&1
}
shot report 1240,960 examples/chart_ohta.csv examples/chart_average.csv
# One pair alone, so that its pictures are in reach.
for file in chart_ohta chart_average; do
  sed -n '1p;13p' "examples/$file.csv" > "$folder/$file.csv"
done
shot report_pair 1240,1940 "$folder/chart_ohta.csv" "$folder/chart_average.csv"
