#!/bin/sh
# examples/hosts/desktop/run.sh [EVENT]: installs what is missing, builds the desktop host and starts
# it. With --test it runs the host's tests instead, without a screen.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
project=$(cd "$here/../../.." && pwd)
"$project/scripts/install-packages" desktop
build=$project/build/desktop
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$build"
if [ "${1:-}" = --test ]; then
  exec ctest --test-dir "$build" --output-on-failure --no-tests=error
fi
exec "$build/keltrun2-desktop" "$@"
