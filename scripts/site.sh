#!/bin/sh
# Builds the site of the documents into build/site: the pages of docs/, the reference of the C++ headers under reference/cpp, and pages
# made from the help of the tool and from the docstrings of the Python module. Nothing is fetched from elsewhere, and what is wrong
# (a link, a page that nothing leads to, an example that prints something else) fails the build.
#
# site.sh [BUILD]: BUILD is a build folder with the tool, the Python module and the target vrx_reference, made when it is not there.
set -eu
cd "$(dirname "$0")/.."
sh scripts/setup.sh site
build=${1:-build/site-build}
mkdir -p build
if [ $# -eq 0 ]; then
  launcher=$(command -v ccache || true)
  {
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVRX_BUILD_TESTS=OFF -DVRX_BUILD_PYTHON=ON \
      -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher"
    cmake --build "$build" --target vrx vrx_python
  } > build/site.log 2>&1 || { cat build/site.log >&2; exit 1; }
fi
cmake --build "$build" --target vrx_reference > build/site.log 2>&1 || { cat build/site.log >&2; exit 1; }
python3 scripts/docs_examples.py --check "$build/tools/vrx/vrx"

source=build/site-source
rm -rf "$source"
mkdir -p "$source"
cp -R docs mkdocs.yml "$source"
/usr/bin/python3 scripts/reference_pages.py "$build/tools/vrx/vrx" "$build/python" "$source/docs/reference"
/usr/bin/mkdocs --quiet build --config-file "$source/mkdocs.yml" --site-dir "$PWD/build/site"
mkdir -p build/site/reference
cp -R "$build/reference/html" build/site/reference/cpp
echo "The site: $PWD/build/site/index.html"
