#!/usr/bin/env bash
# Builds Release and runs the benchmarks: the Google Benchmark programs (extra arguments go to each
# of them), then the render benchmark against FFmpeg, the count of a frame's allocations and the
# 3D text benchmarks.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DLUMIVANE_BUILD_BENCH=ON >/dev/null
cmake --build build/release --target lumivane lumivane_bench_core lumivane_bench_text lumivane_bench_show lumivane_bench_mesh lumivane_bench_layers
build/release/bench/lumivane_bench_core "$@"
build/release/bench/lumivane_bench_text "$@"
build/release/bench/lumivane_bench_show "$@"
build/release/bench/lumivane_bench_mesh "$@"
build/release/bench/lumivane_bench_layers "$@"
bash bench/render_vs_ffmpeg.sh build/release/src/app/lumivane 600 5
bash bench/frame_allocations.sh build/release/src/app/lumivane 300
bash bench/textboxes.sh build/release/src/app/lumivane 300 3
bash bench/textboxes.sh build/release/src/app/lumivane 300 3 1920x1080 extruded
bash bench/frame_layers.sh build/release/src/app/lumivane 300 3
