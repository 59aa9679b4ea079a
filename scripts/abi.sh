#!/bin/sh
# abi.sh BUILD         compares the shared libraries in a build folder with those of the last release (exports/abi)
# abi.sh save BUILD    keeps those of a build folder as the last release's
#
# By abidiff (Debian's abigail-tools), which reads what hosts rely on from the debug information: functions and variables, and sizes,
# layouts and virtual tables of all types that they reach. What docs/abi.md lets a release change passes: anything that is new; of
# the C interface all else only under another interface number, of the C++ classes only in another minor version. Build with
# BUILD_SHARED_LIBS and -g, as scripts/packages.sh does.
set -eu
cd "$(dirname "$0")/.."
command -v abidiff > /dev/null || sh scripts/setup.sh packages
kept=exports/abi
version=$(sed -n 's/^project(vrxmath VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)

# Two libraries of a build, by the names of their files and of their folders.
library() { readlink -f "$2/$([ "$1" = vrxmath ] && echo vrxmath || echo c_api)/lib$1.so"; }

if [ "$1" = save ]; then
  mkdir -p $kept
  for name in vrxmath vrxmath_c; do
    abidw --no-corpus-path --no-comp-dir-path --no-architecture --no-show-locs --no-elf-needed --no-parameter-names \
      "$(library $name "$2")" --out-file "$kept/$name.abi"
    rm -f $kept/$name-*.abi.xz
    xz -9e < $kept/$name.abi > "$kept/$name-$version.abi.xz"
    rm $kept/$name.abi
  done
  ls -l $kept
  exit
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# compare NAME: what changed goes to a file; abidiff's status says of what kind it is: 1 and 2 errors, 4 a change.
compare() {
  old=$(echo $kept/"$1"-*.abi.xz)
  released=${old##*-}
  released=${released%.abi.xz}
  xz -dc "$old" > "$work/$1.abi"
  status=0
  abidiff --no-added-syms --fail-no-debug-info --no-architecture --no-show-locs "$work/$1.abi" "$(library "$1" "$build")" > "$work/$1.txt" ||
    status=$?
  [ $((status & 3)) -eq 0 ] || { cat "$work/$1.txt"; echo "abidiff failed with status $status" >&2; exit 1; }
}

build=$1
faults=0
compare vrxmath_c
if [ "$status" -eq 0 ]; then
  echo "C interface: serves the hosts of $released"
elif grep -q "^SONAME changed" "$work/vrxmath_c.txt"; then
  echo "C interface: another number than that of $released"
else
  cat "$work/vrxmath_c.txt"
  echo "C interface: hosts of $released no longer find what they rely on, under the same number" >&2
  faults=1
fi
compare vrxmath
if [ "$status" -eq 0 ]; then
  echo "C++ classes: serve the hosts of $released"
elif [ "${version%.*}" != "${released%.*}" ]; then
  echo "C++ classes: hosts of $released have to be built again, as the minor version says"
  head -n 4 "$work/vrxmath.txt"
else
  cat "$work/vrxmath.txt"
  echo "C++ classes: hosts of $released would have to be built again, and $version has the same minor version" >&2
  faults=1
fi
exit $faults
