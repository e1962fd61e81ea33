#!/bin/sh
# ./run.sh COMMAND ...: installs what is missing, builds the program and runs it with the arguments.
# ./run.sh --python: the same with the Python module; says how to use it.
#
#     ./run.sh site examples/hoshinomori/event.lxm out/
#     ./run.sh --help
set -eu
home=$(cd "$(dirname "$0")" && pwd)
packages=run with_python=
if [ "${1:-}" = --python ]; then
  packages=python with_python=-DKELTRUN2_BUILD_PYTHON=ON
fi
"$home/scripts/install-packages" $packages
build=$home/build/user
log=$home/build/user.log
mkdir -p "$home/build"
[ -x "$build/bin/keltrun2" ] || echo "building, this once" >&2
if ! (cd "$home" && cmake --preset user $with_python && cmake --build --preset user) >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
if [ -n "$with_python" ]; then
  echo "PYTHONPATH=$build/python /usr/bin/python3 -c 'import keltrun2'"
  exit
fi
exec "$build/bin/keltrun2" "$@"
