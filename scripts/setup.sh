#!/bin/sh
# setup.sh [build|sanitize|test|bench|site|packages|windows|aarch64|wasm]
#
# Installs what is missing on Debian 12 to build the vrx tool, to build it and its tests under the sanitizers, to run the tests,
# or to run the benchmarks; each level holds the one before. Beside build, the levels site and packages hold what makes the site and the Debian packages, and
# windows, aarch64 and wasm what builds and runs the programs for Windows, for 64-bit ARM and for WebAssembly. Quiet and quick when nothing is missing; then it needs neither apt-get nor rights.
set -eu
level=${1:-build}
missing=

# need PACKAGE PROBE...: the package is missing when no probe is the path of a file or the name of a command.
need() {
  package=$1
  shift
  for probe in "$@"; do
    case $probe in
      */*) if [ -e "$probe" ]; then return 0; fi ;;
      *) if command -v "$probe" > /dev/null 2>&1; then return 0; fi ;;
    esac
  done
  missing="$missing $package"
}
# Where a header may be installed.
header() { need "$1" "/usr/include/$2" "/usr/local/include/$2"; }

case $level in
  build | sanitize | test | bench | site | packages | windows | aarch64 | wasm) ;;
  *) echo "usage: setup.sh [build|sanitize|test|bench|site|packages|windows|aarch64|wasm]" >&2; exit 2 ;;
esac

need g++ g++
need cmake cmake
need ninja-build ninja
header libcli11-dev CLI/CLI.hpp
header nlohmann-json3-dev nlohmann/json.hpp
header libcairo2-dev cairo/cairo.h
header nettle-dev nettle/sha2.h
header libsqlite3-dev sqlite3.h
header libpq-dev postgresql/libpq-fe.h

if [ "$level" = windows ]; then
  need g++-mingw-w64-i686-posix i686-w64-mingw32-g++-posix
  need g++-mingw-w64-x86-64-posix x86_64-w64-mingw32-g++-posix
  need googletest /usr/src/googletest/googletest/CMakeLists.txt
  # Tests that run vrx.exe by a shell are programs of the building machine.
  header libgtest-dev gtest/gtest.h
  need python3 python3
  need pkg-config pkg-config
  need wine64 /usr/lib/wine/wine64
  need xvfb Xvfb
elif [ "$level" = aarch64 ]; then
  need g++-aarch64-linux-gnu aarch64-linux-gnu-g++
  need qemu-user qemu-aarch64
  need googletest /usr/src/googletest/googletest/CMakeLists.txt
  need python3 python3
elif [ "$level" = wasm ]; then
  need emscripten /usr/share/emscripten/em++.py
  need googletest /usr/src/googletest/googletest/CMakeLists.txt
  need python3 python3
  need nodejs node
  need npm npm
  need chromium chromium
elif [ "$level" = packages ]; then
  need debhelper dh
  need dh-python dh_python3
  need dpkg-dev dpkg-buildpackage
  need lintian lintian
  need abigail-tools abidiff
  need python3-pip /usr/lib/python3/dist-packages/pip/__init__.py
  need python3-venv /usr/share/doc/python3.11-venv
  need python3 python3
  header python3-dev python3.11/Python.h
  need python3-numpy /usr/lib/python3/dist-packages/numpy/__init__.py
  need pybind11-dev /usr/lib/cmake/pybind11/pybind11Config.cmake /usr/share/cmake/pybind11/pybind11Config.cmake
elif [ "$level" != build ] && [ "$level" != site ]; then
  need clang clang++
  need libclang-rt-14-dev /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer*.a
  # Names in the sanitizers' reports, and with them the suppressions of leaks, come from llvm-symbolizer.
  need llvm llvm-symbolizer
  need lld ld.lld
  need clang-format clang-format
  need python3 python3
  need pkg-config pkg-config
  header libgtest-dev gtest/gtest.h
  header libpng-dev png.h
  need postgresql-server-dev-15 /usr/include/postgresql/*/server/postgres.h
fi

if [ "$level" = test ] || [ "$level" = bench ]; then
  need clang-tidy clang-tidy
  # A check of ours, which clang-tidy loads, is compiled.
  need libclang-14-dev /usr/lib/llvm-*/include/clang-tidy/ClangTidyCheck.h
  need llvm-14-dev /usr/lib/llvm-*/include/llvm/ADT/StringRef.h
  need doxygen doxygen
  need python3-mpmath /usr/lib/python3/dist-packages/mpmath/__init__.py
  # An example of the pages asks a job by SQL.
  need sqlite3 sqlite3
  # Tests of jobs on a server start one of their own.
  need postgresql /usr/lib/postgresql/*/bin/initdb
  # Readers by others of the files that vrx writes: CxF against the schema, and a reader of CxF and CGATS.
  need libxml2-utils xmllint
  need argyll cxf2ti3
  need chromium chromium
  need poppler-utils pdftotext
  need nodejs node
  need npm npm
  # The Python module, for Debian's own interpreter.
  header python3-dev python3.11/Python.h
  need pybind11-dev /usr/lib/cmake/pybind11/pybind11Config.cmake /usr/share/cmake/pybind11/pybind11Config.cmake
  python_module() { need "$1" "/usr/lib/python3/dist-packages/$2"; }
  python_module python3-numpy numpy/__init__.py
  python_module python3-pandas pandas/__init__.py
  python_module python3-matplotlib matplotlib/__init__.py
  python_module python3-dask dask/__init__.py
  python_module python3-distributed distributed/__init__.py
  python_module python3-pytest pytest/__init__.py
  python_module mypy mypy/__init__.py
  python_module python3-pip pip/__init__.py
  need python3-venv /usr/share/doc/python3.11-venv
fi

# The site of the documents, and the module whose docstrings it shows.
if [ "$level" = site ]; then
  need doxygen doxygen
  need python3 python3
  header python3-dev python3.11/Python.h
  need pybind11-dev /usr/lib/cmake/pybind11/pybind11Config.cmake /usr/share/cmake/pybind11/pybind11Config.cmake
  need python3-numpy /usr/lib/python3/dist-packages/numpy/__init__.py
  need sqlite3 sqlite3
  need mkdocs /usr/bin/mkdocs
  need mkdocs-material /usr/share/mkdocs/themes/material/mkdocs_theme.yml
  need python3-pymdownx /usr/lib/python3/dist-packages/pymdownx/__init__.py
  need python3-numpydoc /usr/lib/python3/dist-packages/numpydoc/__init__.py
fi

if [ "$level" = bench ]; then
  header liblcms2-dev lcms2.h
  need libopenblas-dev /usr/lib/*/libopenblas.so /usr/lib/libopenblas.so /usr/local/lib/libopenblas.so
  header libmpfr-dev mpfr.h
  header libeigen3-dev eigen3/Eigen/Core
  header libpugixml-dev pugixml.hpp
  header libexpat1-dev expat.h
  python_module python3-scipy scipy/__init__.py
fi

# 32-bit wine, by its package where the machine takes i386 packages and they fit, otherwise unpacked into a folder.
wine32() {
  if [ "$level" != windows ] || [ -x /usr/lib/wine/wine ]; then return 0; fi
  if dpkg --print-foreign-architectures | grep -qx i386 &&
    ${as_root:-} apt-get -qq install -y --no-install-recommends wine32:i386 > /dev/null 2>&1; then return 0; fi
  bash "$(dirname "$0")/windows/wine32.sh" install
}

if [ -z "$missing" ]; then
  wine32
  exit
fi
echo "Installing:$missing"
if ! command -v apt-get > /dev/null 2>&1; then
  echo "setup.sh: there is no apt-get here; install the above by other means" >&2
  exit 1
fi
as_root=
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo > /dev/null 2>&1; then
    echo "setup.sh: run this as root: apt-get install$missing" >&2
    exit 1
  fi
  as_root=sudo
fi
$as_root apt-get -qq update || echo "setup.sh: the package lists could not be renewed; trying with the old ones" >&2
# shellcheck disable=SC2086 # the packages are separate words
$as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq install --no-install-recommends $missing > /dev/null || {
  echo "setup.sh: these could not be installed, see apt's reasons above:$missing" >&2
  exit 1
}
wine32
