#!/bin/sh
# web.sh [test]: makes build/web/vrx.html, the page that works without a network, and the package of npm beside it. Installs what is
# missing first. With `test` it runs the tests of the library by node and looks at both: VRX_TOOL names the vrx of this machine to
# compare with, which is built otherwise. VRX_WASM_PRESET names another preset than `wasm`.
set -eu
cd "$(dirname "$0")/.."
source=$PWD
sh scripts/setup.sh wasm
jobs=$(nproc)
out=$source/build/web
work=$out/work
mkdir -p "$work"
run() {
  "$@" > "$out/web.log" 2>&1 || { tail -n 60 "$out/web.log" >&2; exit 1; }
}
launcher=$(command -v ccache || true)
preset=${VRX_WASM_PRESET:-wasm}
run cmake --preset "$preset" -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher"
run cmake --build --preset "$preset" -j "$jobs" --target vrx_engine vrx_core ${1:+c_api_test numeric_test batch_test vrxio_test}

# What npm brings goes to the build folder.
for file in package.json package-lock.json .npmrc tsconfig.json build.mjs page core; do
  rm -rf "${work:?}/$file"
  cp -r "web/$file" "$work"
done
cd "$work"
[ -d node_modules ] && cmp -s package-lock.json node_modules/.made-for || {
  run npm ci --loglevel=error
  cp package-lock.json node_modules/.made-for
}
run npx tsc --noEmit -p .
node build.mjs "$source/build/$preset/web" "$source/examples" "$source/tools/vrx/report/assets/report.js" "$out/vrx.html"

cp "$source/build/$preset/web/vrx_core.mjs" "$source/build/$preset/web/vrx_core.wasm" core
run npx tsc --target es2022 --module es2022 --moduleResolution bundler --strict --declaration --stripInternal --types node \
  --lib ES2022,DOM core/index.ts
version=$(sed -n 's/^project(vrxmath VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
(cd core && run npm pkg set version="$version" && run npm pack --pack-destination "$out")
package=$(ls "$out"/vrxmath-core-*.tgz)
echo "$package"

if [ "${1:-}" = test ]; then
  (cd "$source" && ctest --preset "$preset" -j "$jobs")
  tool=${VRX_TOOL:-}
  if [ -z "$tool" ]; then
    cd "$source"
    run sh scripts/demo.sh
    tool=$source/build/demo/tools/vrx/vrx
  fi
  sh "$source/web/test/check_package.sh" "$package" "$tool" "$source" "$work"
  sh "$source/web/test/check_page.sh" "$out/vrx.html" "$tool" "$source" "$work" ${2:+"$2"}
fi
