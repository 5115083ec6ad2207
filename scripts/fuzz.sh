#!/usr/bin/env bash
# Builds the show file reader's libFuzzer harness with clang and runs it for SECONDS (default 60)
# over a copy of the seed corpus. Usage: scripts/fuzz.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
out=build/fuzz
mkdir -p "$out"
clang++ -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
  -Isrc fuzz/show_reader_fuzz.cpp src/persistence/XmlDocument.cpp src/persistence/TextBlock.cpp \
  src/core/Numbers.cpp -lpugixml -o "$out/show_reader_fuzz"
# New inputs the run finds go to a scratch corpus; the seeds in the tree stay as they are.
rm -rf "$out/corpus" && mkdir -p "$out/corpus"
"$out/show_reader_fuzz" -max_total_time="$seconds" -max_len=65536 -timeout=10 -rss_limit_mb=2048 \
  -print_final_stats=1 "$out/corpus" fuzz/corpus/show 2>&1 | tail -n 12
