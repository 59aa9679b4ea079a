#!/bin/sh
# check_zip.sh SOURCE_DIR BUILD_DIR CC CXX
#
# Makes the zip of BUILD_DIR, unpacks it and builds two hosts with what is in it alone: the example in C over the C
# interface, and the consumer in C++ over the DLL, which sends exceptions across the border both ways. They run in the
# folder of the DLLs, as they would be shipped, and so does vrx.exe.
set -eu
source=$1 build=$2 cc=$3 cxx=$4
work=$build/zip_check
rm -rf "$work"
mkdir -p "$work"
cd "$work"
cpack --config "$build/CPackConfig.cmake" -B "$work" > cpack.log || { cat cpack.log; exit 1; }
cmake -E tar xf vrxmath-*.zip
cd vrxmath-*/
for file in README.md docs/abi.md docs/vrxmath.txt bin/vrx.exe bin/vrxmath.dll bin/vrxmath_c.dll lib/libvrxmath.dll.a; do
  [ -s "$file" ] || { echo "$file is missing"; exit 1; }
done

# The unwinder is the one in bin, beside the DLLs: -shared-libgcc.
flags=$(PKG_CONFIG_PATH=$PWD/lib/pkgconfig pkg-config --define-prefix --cflags --libs vrxmath)
"$cc" -std=c11 -O1 -D__USE_MINGW_ANSI_STDIO=1 "$source/examples/c/judge.c" -Iinclude -Llib -lvrxmath_c -o bin/judge.exe
# shellcheck disable=SC2086 # the flags are separate words
"$cxx" -std=c++20 -O1 -shared-libgcc "$source/tests/consumer/main.cpp" $flags -o bin/consumer.exe
run() { sh "$source/scripts/windows/run.sh" "$@"; }
run bin/judge.exe | tr -d '\r' > said
printf 'D65  dE 0.49  warning\nA    dE 0.49  warning\n' | diff said -
run bin/consumer.exe
run bin/vrx.exe tables D65 2 --format csv | grep -x 'white,95.047,100,108.883'
