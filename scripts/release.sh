#!/bin/sh
# Makes everything that a release consists of in build/release-VERSION, with SHA-256 sums: Debian packages, the Python wheel, the
# zips for Windows of both widths, the npm package and the page for browsers. First it looks whether those who name the
# version agree: CMakeLists.txt, CHANGELOG.md, debian/changelog, the sealed list of export numbers, and the C interface's list; and
# whether all name the libraries by the numbers of their binary interfaces. The documents' examples are run by the packaged tool, and
# the packaged libraries compared with those of the last release (scripts/abi.sh).
#
# release.sh check: only looks whether they agree.
set -eu
cd "$(dirname "$0")/.."
version=$(sed -n 's/^project(vrxmath VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)

faults=0
# agrees WHAT COMMAND...: the command says whether.
agrees() {
  what=$1
  shift
  "$@" > /dev/null 2>&1 || { echo "$what" >&2; faults=$((faults + 1)); }
}
first_heading() { [ "$(grep -m 1 '^## ' CHANGELOG.md | cut -d ' ' -f 2)" = "$version" ]; }
# The highest number that has a meaning is sealed for this version.
all_sealed() {
  [ "$(grep "^# sealed $version " exports/vrxmath.txt | cut -d ' ' -f 4)" = "$(grep -v '^#' exports/vrxmath.txt | cut -f 1 | sort -n | tail -n 1)" ]
}
# The entry of this version is younger than the one before it, as lintian wants it.
date_of_entry() { date -d "$(grep '^ -- ' debian/changelog | sed -n "$1s/.*>  //p")" +%s; }
is_dated() { [ "$(grep -c '^ -- ' debian/changelog)" -lt 2 ] || [ "$(date_of_entry 1)" -gt "$(date_of_entry 2)" ]; }
agrees "CHANGELOG.md does not begin with the heading \"## $version\"" first_heading
agrees "debian/changelog does not begin with version $version" grep -q -m 1 "^vrxmath ($version)" debian/changelog
agrees "debian/changelog: the date of version $version is not later than that of the version before" is_dated
agrees "exports/vrxmath.txt is not sealed for $version: python3 scripts/exports.py seal exports/vrxmath.txt $version" all_sealed
# The number of the C interface, in the header, its list, the library's name, and all that name the libraries' packages.
abi=$(sed -n 's/^#define VRX_ABI_VERSION \([0-9]*\).*/\1/p' vrxmath/c_api.h)
packages_named() {
  named=$(grep -rhoE 'libvrxmath(-c)?[0-9]+' README.md HACKING.md docs debian --include='*.md' --include=control | sort -u | tr '\n' ' ')
  [ "$named" = "libvrxmath-c$abi libvrxmath${version%%.*} " ] || { echo "$named"; return 1; }
}
agrees "exports/vrxmath_c.txt is not for interface number $abi" grep -q -m 1 "^# .*Interface number $abi\.$" exports/vrxmath_c.txt
agrees "c_api/CMakeLists.txt does not name the library by interface number $abi" grep -q "SOVERSION $abi\$" c_api/CMakeLists.txt
agrees "examples/python/judge_ctypes.py does not load libvrxmath_c.so.$abi" grep -q "libvrxmath_c.so.$abi\"" examples/python/judge_ctypes.py
agrees "documents or debian/control name other packages than libvrxmath${version%%.*} and libvrxmath-c$abi" packages_named
agrees "the C interface's header and its list differ" python3 scripts/c_interface.py check vrxmath/c_api.h exports/vrxmath_c.txt
agrees "there are changes that are not committed" git diff --quiet HEAD
[ "$faults" -eq 0 ] || { echo "no release: $faults faults" >&2; exit 1; }
[ "${1:-}" != check ] || exit 0

out=build/release-$version
rm -rf "$out"
mkdir -p "$out"
sh scripts/packages.sh
cp build/packages/*.deb "$out/"
built=$(echo build/packages/vrxmath-"$version"/obj-*)
python3 scripts/docs_examples.py --check "$built/tools/vrx/vrx"
sh scripts/abi.sh "$built"
sh scripts/wheel.sh
cp build/wheel/*.whl "$out/"
sh scripts/setup.sh windows
for width in i686 x86_64; do
  cmake --preset "windows-$width" -DVRX_BUILD_TESTS=OFF -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" \
    > "$out/windows-$width.log"
  cmake --build --preset "windows-$width" >> "$out/windows-$width.log"
  cpack --config "build/windows-$width/CPackConfig.cmake" -B "$out" >> "$out/windows-$width.log"
done
rm -rf "$out"/_CPack_Packages "$out"/windows-*.log
sh scripts/web.sh
cp build/web/vrx.html build/web/*.tgz "$out/"
(cd "$out" && sha256sum ./* > SHA256SUMS && cat SHA256SUMS)
