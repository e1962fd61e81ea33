#!/bin/sh
# run.sh: builds the page and tests it: its scripts, the library as WebAssembly against the native one, and
# the page in a browser (skipped without one).
set -eu
cd "$(dirname "$0")/../.."
native=build/release/bin
cmake --preset release >/dev/null
cmake --build --preset release --target keltrun2_cli keltrun2_c_export_all
scripts/make-web
node --test web/tests/
node tests/web/equal_test.mjs build/web/bin/keltrun2_engine.js $native/keltrun2_c_export_all \
  examples tests/data/foreign tests/data/hoshinomori tests/data/midorigaoka
status=0
PYTHONPATH=tests/browser python3 -B tests/web/page_test.py build/web/keltrun.html examples tests/data \
  $native/keltrun2 || status=$?
[ $status -eq 77 ] && echo "skipped: there is no Chromium" || exit $status
