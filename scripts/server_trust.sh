#!/bin/sh
# server_trust.sh VRX: a job on a PostgreSQL server and a job in a file are the same job, and a server's keeps what it was given.
#
# scripts/with_postgres.sh runs this beside a server. Judgements of a job in a file come out the same from the server; eight
# processes judge into one job; the server stops in the middle of a run and comes back. Ends with status 1 at the first fault.
set -eu
. "$(dirname "$0")/trust_parts.sh"
vrx=$(realpath "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
unset VRX_JOB
# The server asks for no password; that of the URL must be seen nowhere.
server=$(echo "$VRX_TEST_POSTGRES" | sed 's/postgres@/postgres:geheim@/')

judge() { "$vrx" judge --job "$server" --standard-id s0 --summary "$@"; }

curves standards.csv 2 1 s
curves lot.csv 700 7 t
for job in file "$server"; do
  "$vrx" job create "$job" --name works 2> /dev/null
  "$vrx" job add-standard standards.csv --job "$job" --system cmc --tolerance 1 --illuminants D65,A 2> /dev/null
  "$vrx" judge --job "$job" lot.csv --standard-id s0 --format csv 2> /dev/null
  "$vrx" job accept "#3" --job "$job" --by "J. Doe" 2> /dev/null
done > judged.csv
times='s/20[0-9-]*T[0-9:]*Z/when/g'
same() {
  "$vrx" "$@" --job file | sed "$times" > file.out
  "$vrx" "$@" --job "$server" | sed "$times" > server.out
  cmp file.out server.out || fail "vrx $* is not the same on a server"
}
same job export - --to csv
same job export - --to csv --trials
same job history --format json
same job statistics --format csv
same search standards.csv --format csv
[ "$(trials "$server")" -eq 700 ] || fail "the server has $(trials "$server") trials of 700"
verify "$server"

workers=
for worker in 1 2 3 4 5 6 7 8; do
  (
    for lot in 1 2; do
      curves "lot$worker-$lot.csv" 200 "$worker$lot" "w${worker}l${lot}t"
      judge "lot$worker-$lot.csv" > /dev/null 2> "err$worker" || { cat "err$worker" >&2; exit 1; }
    done
  ) &
  workers="$workers $!"
done
for worker in $workers; do wait "$worker" || fail "a process of eight was refused"; done
[ "$(trials "$server")" -eq 3900 ] || fail "eight processes left $(trials "$server") trials of 3900"
verify "$server"

# The server goes away while a run has the job's lock; the rest of the trials comes after that.
curves slow.csv 400 99 x
mkfifo pipe
writers() { psql -X -A -t "$VRX_TEST_POSTGRES" -c "SELECT count(*) FROM pg_locks WHERE locktype = 'advisory'"; }
await() { for _ in $(seq 600); do "$@" && return; sleep 0.1; done; }
is_writing() { [ "$(writers)" -gt 0 ]; }
{ head -n 200 slow.csv; await test -e stopped; tail -n +201 slow.csv; } > pipe &
{ await is_writing; sh "$VRX_TEST_POSTGRES_CONTROL" stop; touch stopped; } &
"$vrx" judge --job "$server" - --standard-id s0 --summary < pipe > out 2> err && fail "a run without its server passed"
grep -q 'connection to the server was lost' err || { cat err >&2; fail "the lost connection is not told"; }
wait
rm pipe
judge slow.csv > out 2> err && fail "a run without a server passed"
grep -q 'server cannot be reached' err || { cat err >&2; fail "the missing server is not told"; }
sh "$VRX_TEST_POSTGRES_CONTROL" start
judge slow.csv > out 2> err || [ $? -eq 1 ] || { cat err >&2; fail "the run cannot be repeated"; }
judge slow.csv > out 2> err || [ $? -eq 1 ] || { cat err >&2; fail "the run cannot be repeated twice"; }
[ "$(trials "$server")" -eq 4300 ] || fail "the repeated run left $(trials "$server") trials of 4300"
verify "$server"
judge slow.csv --again --report report.html > out 2> err || [ $? -eq 1 ] || { cat err >&2; fail "no report"; }
"$vrx" job trail --job "$server" > trail.out
grep -l geheim -- * && fail "the password is in what was written"
grep -q 'postgres:\*\*\*@' err || fail "the messages do not name the job"
echo "the same judgements from a file and a server; 8 processes, 3200 trials, nothing lost and nothing doubled; a lost server told"
