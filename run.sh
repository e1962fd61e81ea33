#!/bin/sh
# ./run.sh COMMAND ...: installs what is missing, builds the program and runs it with the arguments.
#
#     ./run.sh site examples/hoshinomori/event.lxm out/
#     ./run.sh --help
set -eu
home=$(cd "$(dirname "$0")" && pwd)
"$home/scripts/install-packages" run
build=$home/build/user
log=$home/build/user.log
mkdir -p "$home/build"
[ -x "$build/bin/keltrun2" ] || echo "building, this once" >&2
if ! (cd "$home" && cmake --preset user && cmake --build --preset user) >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
exec "$build/bin/keltrun2" "$@"
