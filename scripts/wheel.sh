#!/bin/sh
# Builds the wheel of the Python module for Debian's interpreter, with the library inside, into build/wheel, installs it in a new
# virtual environment that has numpy and nothing else, without a network, and says what it needs of a machine. The wheel's name says
# so too (python/build_backend/wheel_platform.py). Installs what is missing first.
set -eu
cd "$(dirname "$0")/.."
sh scripts/setup.sh packages

work=$PWD/build/wheel
rm -rf "$work"
mkdir -p "$work"
PIP_NO_INDEX=1 /usr/bin/python3 -m pip wheel --quiet --no-deps --config-settings build-dir="$work/cmake" \
  --config-settings cmake-options=-DVRX_UNITY=ON --wheel-dir "$work" ./python > "$work/build.log" 2>&1 ||
  { tail -n 60 "$work/build.log"; exit 1; }
wheel=$(echo "$work"/vrxmath-*.whl)

# numpy is the system's, found in the environment as if it were installed there.
/usr/bin/python3 -m venv "$work/venv"
site=$(echo "$work"/venv/lib/python3*/site-packages)
ln -s /usr/lib/python3/dist-packages/numpy /usr/lib/python3/dist-packages/numpy-*-info "$site/"
PIP_NO_INDEX=1 "$work/venv/bin/pip" install --quiet "$wheel"
"$work/venv/bin/pip" check
(cd "$work" && venv/bin/python -c '
import numpy, vrxmath as vrx
white = vrx.tristimulus(numpy.full((1, 40), 100.0), ["D65"])
assert abs(white[0, 0, 1] - 100.0) < 1e-3, white
print("vrxmath", vrx.__version__, "computes in a new environment")')

/usr/bin/python3 python/build_backend/wheel_platform.py "$site"/vrxmath/_core*.so
(cd "$work" && sha256sum ./*.whl > SHA256SUMS && cat SHA256SUMS)
