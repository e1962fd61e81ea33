#!/bin/sh
# run.sh BUILD SOURCE EVENT: installs the library from BUILD into an empty prefix, builds the project
# in SOURCE against it and runs that on EVENT.
set -eu
build=$1 source=$2 event=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >"$work/log" || { cat "$work/log"; exit 1; }
flags=$(sed -n 's/^CMAKE_CXX_FLAGS:STRING=//p' "$build/CMakeCache.txt")
cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_FLAGS="$flags" >"$work/log" || { cat "$work/log"; exit 1; }
cmake --build "$work/build" >"$work/log" || { cat "$work/log"; exit 1; }
"$work/build/consumer" "$event"
