#!/usr/bin/env bash
# The render benchmark: a show of 32 counters changing every frame, played headless at 1920x1080
# with every frame read back to memory (--out -), against FFmpeg's drawtext filter drawing the same
# 32 strings on RGBA frames of the same size. Both run here, one after the other, REPEAT times
# (default 3); the medians are printed.
#   Usage: bench/render_vs_ffmpeg.sh LUMIVANE [FRAMES] [REPEAT] [WxH]
set -euo pipefail
lumivane=$1
frames=${2:-600}
repeat=${3:-3}
size=${4:-1920x1080}
width=${size%x*}
height=${size#*x}
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bash "$here/make_counter_show.sh" "$work/counters.xml" 32

# The same strings in the same places: four columns of eight rows, integer counters stepping by
# their index every frame, DejaVu Sans Mono at the size the show uses (18 points at 720 lines).
font=/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf
pixels=$(( 18 * 96 * height / (72 * 720) ))
filters=""
for i in $(seq 0 31); do
  col=$(( i % 4 )); row=$(( i / 4 ))
  cx=$(( col * width / 4 + width / 8 )); cy=$(( row * height / 8 + height / 16 ))
  step=$(( i + 1 )); start=$(( (i + 1) * 1000 + i + 1 ))
  filters+="drawtext=fontfile=$font:fontsize=$pixels:fontcolor=white:x=$cx-tw/2:y=$cy-th/2:text='%{eif\\:n*$step+$start\\:d}',"
done
filters+="format=rgba"

. "$here/timing.sh"
ours_run() { "$lumivane" --headless "$work/counters.xml" --frames "$1" --size "$size" --out - --stats; }
ffmpeg_run() {
  ffmpeg -hide_banner -loglevel error -f lavfi -i "color=c=0x202020:s=${size}:r=60" -frames:v "$1" -vf "$filters" -f null -
}
# Rates over the whole process (start-up included), and the marginal rate: the frames a run of
# twice as many frames adds, over the time they add, which leaves start-up out for both alike.
ours=(); ours_marginal=(); theirs=(); theirs_marginal=(); p99=()
for r in $(seq 1 "$repeat"); do
  a=$(seconds ours_run "$frames"); b=$(seconds ours_run $((2 * frames)))
  ours+=("$(awk -v t="$a" -v n="$frames" 'BEGIN {printf "%.1f", n / t}')")
  ours_marginal+=("$(awk -v a="$a" -v b="$b" -v n="$frames" 'BEGIN {printf "%.1f", n / (b - a)}')")
  p99+=("$(ours_run "$frames" 2>/dev/null | awk '/^frame_ms_p99 /{print $2}')")
  a=$(seconds ffmpeg_run "$frames"); b=$(seconds ffmpeg_run $((2 * frames)))
  theirs+=("$(awk -v t="$a" -v n="$frames" 'BEGIN {printf "%.1f", n / t}')")
  theirs_marginal+=("$(awk -v a="$a" -v b="$b" -v n="$frames" 'BEGIN {printf "%.1f", n / (b - a)}')")
done
echo "frames $frames at $size, $repeat runs each, medians"
echo "lumivane whole process fps: ${ours[*]} (median $(m "${ours[@]}"))"
echo "ffmpeg whole process fps: ${theirs[*]} (median $(m "${theirs[@]}"))"
echo "lumivane marginal fps: ${ours_marginal[*]} (median $(m "${ours_marginal[@]}"); p99 frame ms ${p99[*]})"
echo "ffmpeg marginal fps: ${theirs_marginal[*]} (median $(m "${theirs_marginal[@]}"))"
awk -v a="$(m "${ours_marginal[@]}")" -v b="$(m "${theirs_marginal[@]}")" -v c="$(m "${ours[@]}")" -v d="$(m "${theirs[@]}")" \
  'BEGIN {printf "ratio marginal: %.2f, whole process: %.2f\n", a / b, c / d}'
