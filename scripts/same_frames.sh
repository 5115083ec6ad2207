#!/usr/bin/env bash
# Plays every show in resources/ headless with two builds of the program and checks that each
# writes byte for byte the same PNG frames: a change meant to leave the picture alone (a refactor,
# a speed-up) proves it did.
#
#   bash scripts/same_frames.sh OLD_LUMIVANE NEW_LUMIVANE [FRAMES] [SIZE]
#
# Example, against the last commit:
#   git worktree add /tmp/before HEAD && cmake -S /tmp/before -B /tmp/before/build -G Ninja \
#     -DCMAKE_BUILD_TYPE=Release -DLUMIVANE_BUILD_TESTS=OFF -DLUMIVANE_BUILD_BENCH=OFF &&
#   cmake --build /tmp/before/build --target lumivane &&
#   bash scripts/same_frames.sh /tmp/before/build/src/app/lumivane build/release/src/app/lumivane
set -euo pipefail
cd "$(dirname "$0")/.."
old=$(realpath "$1")
new=$(realpath "$2")
frames=${3:-60}
size=${4:-1280x720}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

failed=0
for show in resources/*.xml; do
  name=$(basename "$show" .xml)
  for which in old new; do
    bin=$old
    [ "$which" = new ] && bin=$new
    mkdir -p "$work/$which/$name"
    # Each run gets a data folder of its own, so neither sees what the other wrote.
    "$bin" --headless "$show" --app-folder "$work/$which/folder" --frames "$frames" --fps 30 --seed 7 \
      --size "$size" --out "$work/$which/$name/frame_%05d.png" >/dev/null
  done
  count=$(find "$work/old/$name" -name '*.png' | wc -l)
  if diff -r -q "$work/old/$name" "$work/new/$name" >/dev/null; then
    echo "same: $name ($count frames)"
  else
    echo "DIFFERENT: $name"
    diff -r -q "$work/old/$name" "$work/new/$name" | head -5
    failed=1
  fi
done
exit $failed
