#!/bin/sh
# packages.sh [check]: builds the Debian packages into build/packages, looks at them with lintian, and writes their SHA-256 sums.
# Installs what is missing first. scripts/check_packages.sh installs and uses them on a bare Debian.
#
# With `check` it then builds them once more, in a folder of another name, in another time zone and without a compiler cache, and
# fails unless every package has the same bytes.
set -eu
cd "$(dirname "$0")/.."
sh scripts/setup.sh packages

version=$(sed -n 's/^project(vrxmath VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
packaged=$(dpkg-parsechangelog -l debian/changelog -S Version)
if [ "$version" != "$packaged" ]; then
  echo "debian/changelog names version $packaged and CMakeLists.txt $version" >&2
  exit 1
fi
launcher=$(command -v ccache || true)

# build_in WORK FOLDER: copies the sources into WORK/FOLDER and leaves the packages in WORK.
build_in() {
  rm -rf "$1"
  mkdir -p "$1/$2"
  if [ -e .git ]; then
    git ls-files -z | tar --null -T - -cf -
  else
    tar --exclude=./build -cf - .
  fi | tar xf - -C "$1/$2"
  (cd "$1/$2" && CMAKE_CXX_COMPILER_LAUNCHER=$launcher dpkg-buildpackage -b -us -uc -j"$(nproc)") > "$1/build.log" 2>&1 ||
    { tail -n 60 "$1/build.log"; exit 1; }
}

work=build/packages
build_in $work "vrxmath-$version"
# Without a bug in Debian's own list to close, and without a licence that the owner has not stated.
(cd $work && lintian --fail-on error --suppress-tags initial-upload-closes-no-bugs ./*.changes)
(cd $work && sha256sum ./*.deb > SHA256SUMS && cat SHA256SUMS)

[ "${1:-}" = check ] || exit 0
launcher=
export CCACHE_DISABLE=1 TZ=Pacific/Kiritimati
build_in build/packages-again built-elsewhere
(cd build/packages-again && sha256sum -c --quiet ../packages/SHA256SUMS) || {
  echo "a package depends on where or when it is built: compare build/packages and build/packages-again" >&2
  exit 1
}
rm -rf build/packages-again
echo "built twice, the same bytes"
