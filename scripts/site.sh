#!/bin/sh
# Builds the site of the documents into build/site: the pages of docs/, the reference of the C++ headers under reference/cpp, and pages
# made from the help of the tool and from the docstrings of the Python module. Nothing is fetched from elsewhere. A broken link, a
# missing picture, a page that nothing leads to, or an example that prints something else fails the build.
#
# site.sh [BUILD]: BUILD is a build folder in which the tool and the Python module are built; without it one is made.
set -eu
cd "$(dirname "$0")/.."
sh scripts/setup.sh site
build=${1:-build/site-build}
mkdir -p build
if [ $# -eq 0 ]; then
  launcher=$(command -v ccache || true)
  {
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O1 -DNDEBUG" \
      -DVRX_BUILD_TESTS=OFF -DVRX_BUILD_PYTHON=ON -DVRX_UNITY=ON -DVRX_LANE_SETS=base \
      -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher"
    cmake --build "$build" --target vrx vrx_sqlite vrx_python
  } > build/site.log 2>&1 || { cat build/site.log >&2; exit 1; }
fi
cmake --build "$build" --target vrx_reference > build/site.log 2>&1 || { cat build/site.log >&2; exit 1; }
python3 scripts/docs_examples.py --check "$build/tools/vrx/vrx"

source=build/site-source
rm -rf "$source"
mkdir -p "$source"
cp -R docs mkdocs.yml "$source"
rm "$source/docs/Doxyfile" "$source/docs/namespace.dox"
mkdir -p "$source/docs/reference"
cp -R "$build/reference/html" "$source/docs/reference/cpp"
/usr/bin/python3 scripts/reference_pages.py "$build/tools/vrx/vrx" "$build/python" "$source/docs/reference"
/usr/bin/mkdocs --quiet build --config-file "$source/mkdocs.yml" --site-dir "$PWD/build/site"
/usr/bin/python3 scripts/site_links.py build/site
echo "The site: $PWD/build/site/index.html"
