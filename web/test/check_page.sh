#!/bin/sh
# check_page.sh PAGE VRX SOURCE_DIR WORK_DIR [PICTURES]: looks at the page in a headless Chromium, with the npm packages that made it.
set -eu
cp "$3/web/test/page_test.mjs" "$4"
cd "$4"
exec node page_test.mjs "$1" "$2" "$3/examples" ${5:+"$5"}
