#!/bin/sh
# Builds the benchmarks, makes the synthetic events and texts once, measures, and prints the table of figures.
#   bench/run.sh [--against COMMIT] [rounds]
# With a commit, its library and benchmarks are built as well, in build/against, and measured in turn with
# these: figures of a shared machine can be compared within one run only.
set -eu
cd "$(dirname "$0")/.."
against=
if [ "${1:-}" = --against ]; then
  against=$(git rev-parse --short "$2^{commit}")
  shift 2
fi
rounds=${1:-7}
data=build/release/bench-data

make_event() {  # file, classes, runners in each
  [ -s "$data/$1" ] && return
  python3 scripts/make_event.py --classes "$2" --runners-per-class "$3" --controls 24 --seed 1 \
    --out "$data/$1.part"
  mv "$data/$1.part" "$data/$1"
}

build() {  # folder of the sources
  [ -f "$1/build/release/build.ninja" ] || (cd "$1" && cmake --preset release)
  cmake --build "$1/build/release" --target keltrun2_bench keltrun2_cli -j2
}

build . >&2
if [ -n "$against" ]; then
  old=build/against/$against
  [ -d "$old" ] || git worktree add --detach "$old" "$against"
  build "$old" >&2
fi
mkdir -p "$data"
for runners in 2000 6000 20000; do
  make_event "classes$runners.lxm" $((runners / 50)) 50
done
for runners in 125 250 400 500 1000 2000 4000 8000; do
  make_event "class$runners.lxm" 1 "$runners"
done
make_event report400.lxm 16 25
[ -s "$data/iof3.xml" ] || python3 bench/make_texts.py "$data/classes2000.lxm" "$data"
export KELTRUN2_BENCH_DATA=$data
set -- build/release/bin/keltrun2_bench "$rounds"
[ -z "$against" ] || set -- "$@" "$old/build/release/bin/keltrun2_bench" "$against"
exec python3 bench/table.py "$@"
