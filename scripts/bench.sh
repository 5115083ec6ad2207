#!/usr/bin/env bash
# Builds Release and runs the benchmarks; extra arguments go to every benchmark binary.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DLUMIVANE_BUILD_BENCH=ON >/dev/null
cmake --build build/release --target lumivane_bench_core lumivane_bench_text lumivane_bench_show
build/release/bench/lumivane_bench_core "$@"
build/release/bench/lumivane_bench_text "$@"
build/release/bench/lumivane_bench_show "$@"
