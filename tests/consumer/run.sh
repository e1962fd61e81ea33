#!/bin/sh
# run.sh BUILD SOURCE EVENT: installs the library from BUILD into an empty prefix, builds the project
# in SOURCE, a host in C++ and one in C, against it, once with CMake and once with pkg-config, and runs
# all of them on EVENT.
set -eu
build=$1 source=$2 event=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >"$work/log" || { cat "$work/log"; exit 1; }
flags=$(sed -n 's/^CMAKE_CXX_FLAGS:STRING=//p' "$build/CMakeCache.txt")
cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_C_FLAGS=-Werror >"$work/log" || { cat "$work/log"; exit 1; }
cmake --build "$work/build" >"$work/log" || { cat "$work/log"; exit 1; }
"$work/build/consumer" "$event"
"$work/build/c_consumer" "$event"

PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name keltrun2.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046,SC2086 # lists of words
${CXX:-g++} -std=c++20 $flags "$source/main.cpp" -o "$work/consumer" \
  -DKELTRUN2_DATA="\"$(pkg-config --variable=data_folder keltrun2)\"" \
  $(pkg-config --cflags --libs keltrun2)
"$work/consumer" "$event"

${CC:-gcc} -std=c99 -Wall -Wextra -Wpedantic -Werror -c "$source/main.c" -o "$work/c_consumer.o" \
  $(pkg-config --cflags keltrun2)
${CC:-gcc} $flags "$work/c_consumer.o" -o "$work/c_consumer" $(pkg-config --libs keltrun2)
"$work/c_consumer" "$event"
