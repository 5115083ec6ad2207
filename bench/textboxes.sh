#!/usr/bin/env bash
# The 3D text benchmarks, played headless with every frame read back to memory (--out -):
#   boxes (the default): 64 3D texts of 32 characters, each drawn into its texture anew in every
#     frame and shown on its box;
#   extruded: 32 extruded texts of 12 characters turning about two axes.
# Prints the frame rate over the run (start-up left out: the marginal rate of a run twice as long)
# and the frame times the runner reports, REPEAT times (default 3), with medians.
#   Usage: bench/textboxes.sh LUMIVANE [FRAMES] [REPEAT] [WxH] [boxes|extruded]
set -euo pipefail
lumivane=$1
frames=${2:-600}
repeat=${3:-3}
size=${4:-1920x1080}
kind=${5:-boxes}
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
case $kind in
  boxes) bash "$here/make_textbox_show.sh" "$work/show.xml" 64
         title="64 text boxes x 32 characters, changing every frame" ;;
  extruded) bash "$here/make_extruded_show.sh" "$work/show.xml" 32
            title="32 extruded texts x 12 characters, turning" ;;
  *) echo "unknown kind $kind" >&2; exit 2 ;;
esac
. "$here/timing.sh"
run() { "$lumivane" --headless "$work/show.xml" --frames "$1" --size "$size" --out - --stats; }
marginal=(); median_ms=(); p99=()
for r in $(seq 1 "$repeat"); do
  a=$(seconds run "$frames"); b=$(seconds run $((2 * frames)))
  marginal+=("$(marginal_fps "$frames" "$a" "$b")")
  stats=$(run "$frames" 2>/dev/null)
  median_ms+=("$(awk '/^frame_ms_median /{print $2}' <<<"$stats")")
  p99+=("$(awk '/^frame_ms_p99 /{print $2}' <<<"$stats")")
done
echo "$title, $frames frames at $size, $repeat runs"
echo "marginal fps: ${marginal[*]} (median $(m "${marginal[@]}"))"
echo "frame ms median: ${median_ms[*]} (median $(m "${median_ms[@]}")); p99: ${p99[*]}"
