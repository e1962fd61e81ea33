#!/bin/sh
# ./run.sh COMMAND ...: installs what is missing, builds the program and runs it with the arguments.
# ./run.sh --python: the same with the Python module; says how to use it.
# ./run.sh --web: builds build/web/keltrun.html, which opens result files in a browser.
#
#     ./run.sh site examples/hoshinomori/event.lxm out/
#     ./run.sh --help
set -eu
home=$(cd "$(dirname "$0")" && pwd)
if [ "${1:-}" = --web ]; then
  exec "$home/scripts/make-web"
fi
packages=run with_python=
if [ "${1:-}" = --python ]; then
  packages=python with_python=-DKELTRUN2_BUILD_PYTHON=ON
fi
"$home/scripts/install-packages" $packages
build=$home/build/user
log=$home/build/user.log
mkdir -p "$home/build"

# Shows how far a build is on standard error: in one line of a terminal, else at every tenth.
show_progress() {
  shown=
  while IFS= read -r line; do
    case $line in "[0/"*) continue ;; "["[0-9]*/[0-9]*"] "*) ;; *) continue ;; esac
    step=${line#"["} total=${line#*/}
    percent=$((${step%%/*} * 100 / ${total%%]*}))
    if [ -t 2 ]; then
      printf '\rbuilding: %3d %%' "$percent" >&2
      shown=yes
    elif [ "$((percent / 10))" != "$shown" ]; then
      shown=$((percent / 10))
      echo "building: $percent %" >&2
    fi
  done
  [ ! -t 2 ] || [ -z "$shown" ] || echo >&2
}

if ! (cd "$home" && cmake --preset user $with_python) >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
{ (cd "$home" && cmake --build --preset user) 2>&1 && echo "built" || echo "failed"; } |
  tee -a "$log" | show_progress
if [ "$(tail -n 1 "$log")" != built ]; then
  cat "$log" >&2
  exit 1
fi
if [ -n "$with_python" ]; then
  echo "PYTHONPATH=$build/python /usr/bin/python3 -c 'import keltrun2'"
  exit
fi
exec "$build/bin/keltrun2" "$@"
