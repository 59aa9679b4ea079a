#!/bin/sh
# Builds the Debian packages into build/packages, looks at them with lintian, and writes their SHA-256 sums.
# Installs what is missing first. scripts/check_packages.sh installs and uses them on a bare Debian.
set -eu
cd "$(dirname "$0")/.."
sh scripts/setup.sh packages

version=$(sed -n 's/^project(vrxmath VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
packaged=$(dpkg-parsechangelog -l debian/changelog -S Version)
if [ "$version" != "$packaged" ]; then
  echo "debian/changelog names version $packaged and CMakeLists.txt $version" >&2
  exit 1
fi
work=build/packages
source=$work/vrxmath-$version
rm -rf "$work"
mkdir -p "$source"
if [ -e .git ]; then
  git ls-files -z | tar --null -T - -cf -
else
  tar --exclude=./build -cf - .
fi | tar xf - -C "$source"
(cd "$source" && dpkg-buildpackage -b -us -uc -j"$(nproc)") > "$work/build.log" 2>&1 || { tail -n 60 "$work/build.log"; exit 1; }
# Without a bug in Debian's own list to close, and without a licence that the owner has not stated.
(cd "$work" && lintian --fail-on error --suppress-tags initial-upload-closes-no-bugs ./*.changes)
(cd "$work" && sha256sum ./*.deb > SHA256SUMS && cat SHA256SUMS)
