#!/bin/sh
# check_package.sh PACKAGE VRX SOURCE_DIR WORK_DIR: installs the packed @vrxmath/core as a program would and runs its test, types and all.
set -eu
folder=$4/package_check
rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"
printf '{"type": "module", "private": true}\n' > package.json
npm install --offline --no-audit --no-fund --loglevel=error "$1"
cp "$3/web/core/test/core_test.ts" .
"$4/node_modules/.bin/tsc" --target es2022 --module nodenext --strict --lib ES2022,DOM --typeRoots "$4/node_modules/@types" --types node core_test.ts
# The three lines that its README begins with.
sed -n '/^```js$/,/^```$/p' node_modules/@vrxmath/core/README.md | sed '/^```/d' | sed '4,$d' > readme.mjs
node readme.mjs | grep -q Float64Array
exec env VRX_TOOL="$2" VRX_EXAMPLES="$3/examples" node --test core_test.js
