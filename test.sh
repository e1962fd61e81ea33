#!/bin/sh
# ./test.sh [PRESET ...]: installs what is missing, builds and runs every test, once as released and
# once under the address and undefined-behavior sanitizers; or only in the presets named. The preset
# web builds and tests the page for browsers.
set -eu
cd "$(dirname "$0")"
scripts/install-packages test
scripts/check-includes
[ $# -gt 0 ] || set -- release asan
for preset in "$@"; do
  echo "== $preset =="
  if [ "$preset" = web ]; then
    tests/web/run.sh
    continue
  fi
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" -j "$(nproc)" --no-tests=error
done
