#!/bin/sh
# postgres_functions_test.sh VRX MODULE SOURCE_DIR: the functions of the extension give what the tool prints, to the bit.
#
# scripts/with_postgres.sh runs this beside a server. Ends with status 1 at the first difference.
set -eu
vrx=$1 module=$2 source=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
unset VRX_JOB
job=$VRX_TEST_POSTGRES
curves=$source/examples/chart_average.csv

"$vrx" job create "$job" 2> /dev/null
"$vrx" job add-standard "$source/examples/chart_ohta.csv" --job "$job" 2> /dev/null
judge() { "$vrx" judge --job "$job" "$curves" --id-column id --pairs "$@" --format csv 2> /dev/null || [ $? -eq 1 ]; }
judge --illuminants D65,A --observer 2 --system cmc --parameters 2:1 --tolerance 1.2 |
  awk -F, 'NR > 1 {
    words = ""
    for (k = 13; k <= 15; ++k) if ($k !~ /^ *$/) words = words (words == "" ? "" : ", ") $k
    print $2 "," $4 "," $12 "," $18 ",\"" words "\""
  }' > judged.csv
"$vrx" color "$curves" --illuminants D65,A --format csv | cut -d, -f1,2,4-6,9-11 | tail -n +2 > colors.csv

# The server reads the module from its own folder.
module_copy=$(dirname "$VRX_TEST_POSTGRES_CONTROL")/vrx_postgres.so
cp "$module" "$module_copy"
chmod 644 "$module_copy"
sed "s|MODULE_PATHNAME|$module_copy|" "$source/sql/postgres/vrx--1.sql" > functions.sql
ask() { psql -X -q -t -A "$job" "$@" 2>&1; }
ask -v ON_ERROR_STOP=1 -f functions.sql
is() {
  found=$(ask -c "$1" || true)
  [ "$found" = "$2" ] || { echo "postgres_functions_test: $1: $found, not $2" >&2; exit 1; }
}
ask -c 'CREATE TABLE judged(name text, lamp text, delta float8, verdict text, words text)' \
  -c 'CREATE TABLE color(name text, lamp text, x float8, y float8, z float8, l float8, a float8, b float8)' \
  -c '\copy judged from judged.csv csv' -c '\copy color from colors.csv csv'
is "SELECT count(*), count(*) FILTER (WHERE vrx_tristimulus(samples, lamp) <> ARRAY[x, y, z]),
    count(*) FILTER (WHERE vrx_lab(samples, lamp, 10) <> ARRAY[l, a, b]) FROM color JOIN trial USING (name)" '48|0|0'
is "SELECT count(*), count(*) FILTER (WHERE vrx_delta(c.samples, t.samples, 'cmc', lamp, 2, '2:1') <> delta),
    count(*) FILTER (WHERE vrx_words(c.samples, t.samples, 'cmc', lamp, 2, '2:1') <> words),
    count(*) FILTER (WHERE vrx_judge(c.samples, t.samples, 'cmc', 1.2, lamp, 2, '2:1') <> o.verdict)
  FROM judged o JOIN trial t USING (name) JOIN judgement j ON j.trial = t.id JOIN curve c ON c.id = j.curve" '48|0|0|0'
is "SELECT vrx_lab(NULL, 'D65') IS NULL, vrx_lab(array_fill(1e-5::float8, ARRAY[40]), 'D65') IS NULL,
    vrx_judge(array_fill(1e-5::float8, ARRAY[40]), array_fill(50::float8, ARRAY[40]), 'lab', 1, 'A')" 't|t|fail'
is "SELECT vrx_lab(ARRAY[1.0, 2.0], 'D65')" 'ERROR:  vrx_lab: a curve is an array of 40 numbers, from 360 to 750 nm'
is "SELECT left(vrx_lab(array_fill(50::float8, ARRAY[40]), 'D99')::text, 1)" "$("$vrx" color "$curves" --illuminants D99 2>&1 |
  sed 's/^vrx: /ERROR:  vrx_lab: /; s/--illuminants: //')"
is "SELECT vrx_judge(samples, samples, 'lab', 0, 'A') FROM curve LIMIT 1" \
  'ERROR:  vrx_judge: the tolerance must be a number above 0'
is "CREATE INDEX light ON trial(((vrx_lab(samples, 'D65'))[1])); SELECT count(*) FROM trial" '24'
echo "48 colours and 48 judgements of the server are the tool's, to the bit"
