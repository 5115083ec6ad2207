#!/usr/bin/env bash
# The background demo show played headless at 1920x1080 with every frame read back to memory
# (--out -), as it stands and with every pass on (feedback, effect capture, mask and invert added;
# its pictures change every 400 ms). Prints the frame rate over the run (start-up left out: the
# marginal rate of a run twice as long) and the frame times the runner reports, REPEAT times
# (default 3), with medians.
#   Usage: bench/frame_layers.sh LUMIVANE [FRAMES] [REPEAT] [WxH]
set -euo pipefail
lumivane=$1
frames=${2:-600}
repeat=${3:-3}
size=${4:-1920x1080}
here=$(cd "$(dirname "$0")" && pwd)
resources="$here/../resources"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$resources/Backgrounds" "$resources/Effects" "$resources/Masks" "$work/"
cp "$resources/Demo Backgrounds.xml" "$work/demo.xml"
sed -e 's|<BackGroundCapture>0<|<BackGroundCapture>1<|; s|<EnableMask>0<|<EnableMask>1<|' \
    -e 's|<InvertOutput>0<|<InvertOutput>1<|; s|<CaptureEffect>0<|<CaptureEffect>1<|' \
    -e 's|<BackGroundTimer>[0-9]*<|<BackGroundTimer>400<|' "$work/demo.xml" >"$work/every.xml"
. "$here/timing.sh"
for show in demo every; do
  run() { "$lumivane" --headless "$work/$show.xml" --frames "$1" --size "$size" --out - --stats; }
  marginal=(); median_ms=(); max_ms=()
  for r in $(seq 1 "$repeat"); do
    a=$(seconds run "$frames"); b=$(seconds run $((2 * frames)))
    marginal+=("$(marginal_fps "$frames" "$a" "$b")")
    stats=$(run "$frames" 2>/dev/null)
    median_ms+=("$(awk '/^frame_ms_median /{print $2}' <<<"$stats")")
    max_ms+=("$(awk '/^frame_ms_max /{print $2}' <<<"$stats")")
  done
  case $show in
    demo) echo "Demo Backgrounds.xml, $frames frames at $size, $repeat runs" ;;
    every) echo "The same with feedback, effect capture, mask and invert on, pictures every 400 ms" ;;
  esac
  echo "marginal fps: ${marginal[*]} (median $(m "${marginal[@]}"))"
  echo "frame ms median: ${median_ms[*]} (median $(m "${median_ms[@]}")); max: ${max_ms[*]}"
done
