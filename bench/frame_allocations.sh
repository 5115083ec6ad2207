#!/usr/bin/env bash
# Allocations a frame makes in steady state: heaptrack counts every allocation of two runs of the
# 32-counter show, one twice as long as the other; the difference over the extra frames is what a
# frame allocates, and the sites of those allocations are listed by library.
#   Usage: bench/frame_allocations.sh LUMIVANE [FRAMES]
set -euo pipefail
lumivane=$1
frames=${2:-300}
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bash "$here/make_counter_show.sh" "$work/counters.xml" 32
calls() {
  heaptrack -o "$work/run$1" "$lumivane" --headless "$work/counters.xml" --frames "$1" --size 1920x1080 --out - \
    >/dev/null 2>&1
  heaptrack_print "$work/run$1.zst" 2>/dev/null | awk '/^calls to allocation functions:/ {print $5}'
}
short=$(calls "$frames")
long=$(calls $((2 * frames)))
awk -v a="$short" -v b="$long" -v n="$frames" 'BEGIN {printf "allocations a frame: %.2f (%d over %d extra frames)\n", (b - a) / n, b - a, n}'
# Where a frame's allocations come from: the growth of each library's count between the runs.
by_library() {
  heaptrack_print -n 200 --print-peaks=0 --print-leaks=0 --print-temporary=0 "$work/run$1.zst" 2>/dev/null |
    awk '/^[0-9]+ calls to allocation functions/ {count = $1; next}
         count && /^  in / {sum[$2] += count; count = 0}
         END {for (l in sum) print l, sum[l]}'
}
by_library "$frames" >"$work/short.txt"
by_library $((2 * frames)) >"$work/long.txt"
awk -v n="$frames" 'NR == FNR {short[$1] = $2; next}
     {d = $2 - short[$1]; if (d >= n / 10) printf "  %.2f a frame in %s\n", d / n, $1}' "$work/short.txt" "$work/long.txt"
