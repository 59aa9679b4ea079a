#!/bin/sh
# check_duckdb.sh PYTHON SOURCE_DIR BUILD_DIR: columns to DuckDB and back. What npm brings goes to the build folder.
set -eu
mkdir -p "$3"
for file in package.json package-lock.json .npmrc; do
  cp "$2/python/tests/duckdb/$file" "$3"
done
(cd "$3" && npm ci --loglevel=error > npm.log 2>&1) || { cat "$3/npm.log"; exit 1; }
export VRX_DUCKDB="$3/node_modules/@duckdb/node-bindings-linux-x64/libduckdb.so"
exec "$1" -m pytest -q -p no:cacheprovider --confcutdir="$2/python/tests" "$2/python/tests/duckdb/check_duckdb.py"
