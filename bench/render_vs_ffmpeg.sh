#!/usr/bin/env bash
# The render benchmark: a show of 32 counters changing every frame, played headless at 1920x1080
# with every frame read back to memory (--out -), against FFmpeg's drawtext filter drawing the same
# 32 strings on RGBA frames of the same size. Both run here, one after the other, REPEAT times
# (default 3); the medians are printed. Both rates are frames over the whole process's wall time,
# start-up included; the runner's own figure for its frame loop alone is printed beside it.
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

median() { sort -n | awk '{a[NR]=$1} END {print (NR % 2) ? a[(NR + 1) / 2] : (a[NR / 2] + a[NR / 2 + 1]) / 2}'; }
rate() { awk -v s="$1" -v e="$2" -v n="$frames" 'BEGIN {printf "%.1f", n / (e - s)}'; }
ours=(); loop=(); theirs=(); p99=()
for r in $(seq 1 "$repeat"); do
  start=$(date +%s.%N)
  stats=$("$lumivane" --headless "$work/counters.xml" --frames "$frames" --size "$size" --out - --stats 2>/dev/null)
  end=$(date +%s.%N)
  ours+=("$(rate "$start" "$end")")
  loop+=("$(awk '/^fps /{print $2}' <<<"$stats")")
  p99+=("$(awk '/^frame_ms_p99 /{print $2}' <<<"$stats")")
  start=$(date +%s.%N)
  ffmpeg -hide_banner -loglevel error -f lavfi -i "color=c=0x202020:s=${size}:r=60" -frames:v "$frames" \
    -vf "$filters" -f null -
  end=$(date +%s.%N)
  theirs+=("$(rate "$start" "$end")")
done
ours_median=$(printf '%s\n' "${ours[@]}" | median)
theirs_median=$(printf '%s\n' "${theirs[@]}" | median)
echo "lumivane fps: ${ours[*]} (median $ours_median; frame loop alone ${loop[*]}; p99 frame ms ${p99[*]})"
echo "ffmpeg drawtext fps: ${theirs[*]} (median $theirs_median)"
awk -v a="$ours_median" -v b="$theirs_median" 'BEGIN {printf "ratio: %.2f\n", a / b}'
