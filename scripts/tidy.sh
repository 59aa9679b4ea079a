#!/bin/sh
# tidy.sh [PATTERN]
#
# clang-tidy over the sources of the libraries, the tool, the C interface and the controls, or over those whose path in the
# project the pattern (of Python's re) fits from its beginning, tests among them: sh scripts/tidy.sh tests/vrxio. VRX_JOBS
# processes at a time, as many as there are processors unless it is set.
#
# Sources are compiled by the commands of build/ci-asan-ubsan, which must be built: a source once even where it is compiled
# several times, as the lane kernels are, of which the wide ones are looked at. That build compiles the sources of a folder
# together, and so they are looked at: most of the time goes into the headers that they share. What was found is shown at the end.
set -eu
cd "$(dirname "$0")/.."
pattern=${1:-(vrxmath|vrxio|vrxstore|sql|pictures|c_api|controls|tools)/}
mkdir -p build/tidy
llvm=$(dirname "$(dirname "$(readlink -f "$(command -v clang-tidy)")")")
plugin=build/tidy/own_declarations.so
if ! [ "$plugin" -nt cmake/clang_tidy/own_declarations.cpp ]; then
  "$llvm/bin/clang++" -std=c++17 -O1 -fno-rtti -fPIC -shared -isystem "$llvm/include" cmake/clang_tidy/own_declarations.cpp -o "$plugin"
fi
python3 - "$pattern" > build/tidy/sources.txt << 'END'
import json
import os
import re
import sys

build = "build/ci-asan-ubsan"
commands = {command["file"]: command for command in json.load(open(f"{build}/compile_commands.json"))}
commands = {file: command for file, command in commands.items() if "_lanes_plain" not in file and "/check_headers/" not in file}
json.dump(list(commands.values()), open("build/tidy/compile_commands.json", "w"))
for file in commands:
    # What is compiled together has its source in the build folder, at the same place.
    if re.match(sys.argv[1], os.path.relpath(file).removeprefix(f"{build}/")):
        print(file)
END
[ -s build/tidy/sources.txt ] || { echo "tidy.sh: $pattern fits no source" >&2; exit 2; }
log=build/tidy/clang-tidy.log
xargs -d '\n' -n 1 -P "${VRX_JOBS:-$(nproc)}" clang-tidy --load="$plugin" --checks=vrx-own-declarations -p build/tidy -quiet \
  < build/tidy/sources.txt > "$log" 2>&1 || { grep -vE '^$|warnings? generated' "$log" | head -n 100; exit 1; }
