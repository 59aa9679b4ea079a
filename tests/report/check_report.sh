#!/bin/sh
# check_report.sh VRX SOURCE_DIR BUILD_DIR: looks at reports of the tool in a headless Chromium. What npm brings goes to the
# build folder.
set -eu
mkdir -p "$3"
for file in package.json package-lock.json .npmrc report_test.mjs; do
  cp "$2/tests/report/$file" "$3"
done
cd "$3"
npm ci --loglevel=error > npm.log 2>&1 || { cat npm.log; exit 1; }
exec node report_test.mjs "$1" "$2/examples"
