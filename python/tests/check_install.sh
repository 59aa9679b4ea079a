#!/bin/sh
# check_install.sh PYTHON SOURCE_DIR MODULE_DIR WORK_DIR
#
# Installs the package from the source tree into a new virtual environment that sees the system's packages, without a
# network, and runs the example with it. CMake is asked to make the build that pip would; the module itself is the one in
# MODULE_DIR, which the same build rules made a moment ago.
set -eu
python=$1 source=$2 module=$3 work=$4
rm -rf "$work/venv" "$work/pictures" "$work/wheels"
"$python" -m venv --system-site-packages "$work/venv"
PIP_NO_INDEX=1 "$work/venv/bin/pip" install --quiet --config-settings build-dir="$work/build" \
  --config-settings module-dir="$module" "$source/python"
# The wheel by itself: its dependencies are the system's.
PIP_NO_INDEX=1 "$work/venv/bin/pip" wheel --quiet --no-deps --config-settings build-dir="$work/build" \
  --config-settings module-dir="$module" --wheel-dir "$work/wheels" "$source/python"
ls "$work"/wheels/vrxmath-*.whl > /dev/null
cd "$work"
"$work/venv/bin/python" "$source/examples/judge_chart.py" "$work/pictures" > "$work/judge_chart.txt"
tail -n 1 "$work/judge_chart.txt"
for picture in judgement swatches; do
  [ "$(head -c 4 "$work/pictures/$picture.png" | tail -c 3)" = PNG ]
done
