#!/bin/sh
# run_on_screen.sh PROGRAM.exe ARGS...: runs a Windows program as run.sh does, on an X server of its own, and ends with its
# status. A program whose windows are to be seen makes a desktop of its own: wine keeps the one that is there to the screen
# of the program that was first on it, or to none.
set -eu
command -v Xvfb > /dev/null || { echo "run_on_screen.sh: needs Xvfb (sh scripts/setup.sh windows)" >&2; exit 125; }
number=$(mktemp)
Xvfb -displayfd 3 -screen 0 2400x1800x24 -nolisten tcp 3> "$number" > /dev/null 2>&1 &
server=$!
# Only what was started here is ended.
trap 'kill "$server" 2> /dev/null || true; rm -f "$number"' EXIT INT TERM
until [ -s "$number" ]; do
  kill -0 "$server" 2> /dev/null || { echo "run_on_screen.sh: the X server did not start" >&2; exit 125; }
done
status=0
DISPLAY=:$(cat "$number") sh "$(dirname "$0")/run.sh" "$@" || status=$?
exit "$status"
