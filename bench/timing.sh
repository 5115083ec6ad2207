# Sourced by the frame-rate benchmark scripts. median reads numbers, one a line, and prints their
# median; seconds COMMAND... runs a command quietly and prints how long it took; marginal_fps
# FRAMES A B prints the rate of the frames a run of 2 x FRAMES adds to a run of FRAMES (start-up
# left out), from their times A and B.
median() { sort -n | awk '{a[NR]=$1} END {print (NR % 2) ? a[(NR + 1) / 2] : (a[NR / 2] + a[NR / 2 + 1]) / 2}'; }
seconds() { local start end; start=$(date +%s.%N); "$@" >/dev/null 2>&1; end=$(date +%s.%N); awk -v s="$start" -v e="$end" 'BEGIN {print e - s}'; }
marginal_fps() { awk -v n="$1" -v a="$2" -v b="$3" 'BEGIN {printf "%.1f", n / (b - a)}'; }
m() { printf '%s\n' "$@" | median; }
