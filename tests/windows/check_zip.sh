#!/bin/sh
# check_zip.sh SOURCE_DIR BUILD_DIR CC CXX [vrx.exe]
#
# Makes the zip of BUILD_DIR, unpacks it and builds two hosts with what is in it alone: the example in C over the C
# interface, and the consumer in C++ over the DLL, which sends exceptions across the border both ways. They run in the
# folder of the DLLs, as they would be shipped, and so does vrx.exe where the build has it.
set -eu
source=$1 build=$2 cc=$3 cxx=$4 tool=${5:+bin/$5}
work=$build/zip_check
rm -rf "$work"
mkdir -p "$work"
cd "$work"
cpack --config "$build/CPackConfig.cmake" -B "$work" > cpack.log || { cat cpack.log; exit 1; }
cmake -E tar xf vrxmath-*.zip
cd vrxmath-*/
for file in README.md docs/abi.md docs/vrxmath.txt $tool bin/vrxmath.dll bin/vrxmath_c.dll lib/libvrxmath.dll.a \
  licenses/gcc-mingw-w64-base.txt licenses/GPL-3.txt licenses/mingw-w64-common.txt licenses/libcli11-dev.txt \
  licenses/nlohmann-json3-dev.txt; do
  [ -s "$file" ] || { echo "$file is missing"; exit 1; }
done
# What the documents point to is there.
for document in README.md docs/*.md; do
  grep -o '](\([^):#]*\)[)#]' "$document" | sed 's/^](//; s/[)#]$//' | while read -r link; do
    [ -e "$(dirname "$document")/$link" ] || { echo "$document points to $link, which is missing"; exit 1; }
  done
done
# Nothing of the compiler's symbols is shipped.
size=$(cat bin/lib*.dll | wc -c)
[ "$size" -lt 4000000 ] || { echo "the compiler's runtime has $size bytes"; exit 1; }

# The unwinder is the one in bin, beside the DLLs: -shared-libgcc.
flags=$(PKG_CONFIG_PATH=$PWD/lib/pkgconfig pkg-config --define-prefix --cflags --libs vrxmath)
"$cc" -std=c11 -O1 -D__USE_MINGW_ANSI_STDIO=1 "$source/examples/c/judge.c" -Iinclude -Llib -lvrxmath_c -o bin/judge.exe
# shellcheck disable=SC2086 # the flags are separate words
"$cxx" -std=c++20 -O1 -shared-libgcc "$source/tests/consumer/main.cpp" $flags -o bin/consumer.exe
run() { sh "$source/scripts/windows/run.sh" "$@"; }
run bin/judge.exe | tr -d '\r' > said
printf 'D65  dE 0.49  warning\nA    dE 0.49  warning\n' | diff said -
run bin/consumer.exe
# A host by the linker of another tool chain, without a C library: it asks for the number of the interface and ends with it.
if command -v clang > /dev/null && command -v lld-link > /dev/null; then
  case $cc in *x86_64*) target=x86_64-pc-windows-msvc machine=x64 ;; *) target=i686-pc-windows-msvc machine=x86 ;; esac
  cat > other.c << 'END'
#include <vrxmath/c_api.h>
int start(void) {
  int32_t version = 0;
  return vrx_abi_version(&version) == VRX_OK ? 40 + version : 1;
}
END
  clang -target "$target" -ffreestanding -O1 -Iinclude -c other.c -o other.obj
  lld-link /nologo /machine:"$machine" /subsystem:console /entry:start /nodefaultlib /safeseh:no /out:bin/other.exe other.obj \
    lib/libvrxmath_c.dll.a
  status=0
  run bin/other.exe || status=$?
  [ "$status" -eq 41 ] || { echo "the host by lld-link ended with $status"; exit 1; }
  if [ "$machine" = x64 ]; then
    llvm-dlltool -m i386:x86-64 -d lib/vrxmath_c.def -l vrxmath_c.lib
    lld-link /nologo /machine:x64 /subsystem:console /entry:start /nodefaultlib /out:bin/other.exe other.obj vrxmath_c.lib
    status=0
    run bin/other.exe || status=$?
    [ "$status" -eq 41 ] || { echo "the host by vrxmath_c.def ended with $status"; exit 1; }
  fi
fi
[ -n "$tool" ] || exit 0
printf 'id,L,a,b\nfirst,50,1,2\n' > lot_1.csv
cp lot_1.csv lot_2.csv
run "$tool" judge lot_1.csv 'lot_2*.csv' --system lab --illuminants D65 > judged
[ -s judged ]
run "$tool" tables D65 2 --format csv | grep -x 'white,95.047,100,108.883'
