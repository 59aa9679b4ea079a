#!/bin/sh
# check_install.sh SOURCE_DIR BUILD_DIR static|shared
#
# Installs the library of BUILD_DIR, which is of the kind named, and lets the consumer in this folder use it: by
# find_package and by pkg-config.
set -eu
source=$1 build=$2 kind=$3
work=$build/install_check
cxx=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$build/CMakeCache.txt")
mkdir -p "$work"

# The tree is moved after it was installed: nothing in it may know where it was.
rm -rf "$work/installed" "$work/moved" "$work/consumer"
cmake --install "$build" --prefix "$work/moved" > /dev/null
mv "$work/moved" "$work/installed"

if [ "$kind" = shared ]; then
  library=$(find "$work/installed" -name 'libvrxmath.so')
  foreign=$(nm -DC --defined-only "$library" | cut -c20- | grep -vE '^((vtable|typeinfo|typeinfo name) for )?vrx::' || true)
  if [ -n "$foreign" ]; then
    printf 'exported beside vrx:::\n%s\n' "$foreign"
    exit 1
  fi
fi

echo "== $kind, by find_package"
cmake -S "$source/tests/consumer" -B "$work/consumer" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$work/installed" > /dev/null
cmake --build "$work/consumer" > "$work/build.log" || { cat "$work/build.log"; exit 1; }
"$work/consumer/consumer"

echo "== $kind, by pkg-config"
pc=$(dirname "$(find "$work/installed" -name vrxmath.pc)")
flags=$(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs vrxio)
# shellcheck disable=SC2086 # the flags are separate words
"$cxx" -std=c++2b -O1 "$source/tests/consumer/main.cpp" $flags -o "$work/consumer/by_pkg_config"
LD_LIBRARY_PATH=$(dirname "$pc") "$work/consumer/by_pkg_config"
