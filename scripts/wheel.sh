#!/bin/sh
# Builds the wheel of the Python module for Debian's interpreter, with the library inside, into build/wheel, installs it in a new
# virtual environment without a network, and says what it needs of a machine. Installs what is missing first.
set -eu
cd "$(dirname "$0")/.."
sh scripts/setup.sh packages

work=build/wheel
rm -rf "$work"
mkdir -p "$work"
PIP_NO_INDEX=1 /usr/bin/python3 -m pip wheel --quiet --no-deps --config-settings build-dir=build/wheel-build \
  --config-settings cmake-options=-DVRX_UNITY=ON --wheel-dir "$work" ./python > "$work/build.log" 2>&1 ||
  { tail -n 60 "$work/build.log"; exit 1; }
wheel=$(echo "$work"/vrxmath-*.whl)

# numpy is the system's.
/usr/bin/python3 -m venv --system-site-packages "$work/venv"
PIP_NO_INDEX=1 "$work/venv/bin/pip" install --quiet --no-deps "$wheel"
(cd "$work" && venv/bin/python -c '
import numpy, vrxmath as vrx
white = vrx.tristimulus(numpy.full((1, 40), 100.0), ["D65"])
assert abs(white[0, 0, 1] - 100.0) < 1e-3, white
print("vrxmath", vrx.__version__, "computes in a new environment")')

# The newest symbols that the module takes from the system's libraries, as tags of wheels go by them.
module=$(find "$work/venv" -name '_core*.so')
newest() { objdump -T "$module" | grep -o "$1_[0-9.]*" | sort -uV | tail -n 1; }
echo "needs $(newest GLIBC), $(newest GLIBCXX) and $(newest CXXABI)"
(cd "$work" && sha256sum ./*.whl > SHA256SUMS && cat SHA256SUMS)
