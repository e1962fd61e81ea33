#!/bin/sh
# ./test.sh [PRESET ...]: installs what is missing, builds and runs every test, once as released and
# once under the address and undefined-behavior sanitizers; or only in the presets named.
set -eu
cd "$(dirname "$0")"
scripts/install-packages test
scripts/check-includes
[ $# -gt 0 ] || set -- release asan
for preset in "$@"; do
  echo "== $preset =="
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" -j "$(nproc)" --no-tests=error
done
