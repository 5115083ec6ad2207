#!/usr/bin/env bash
# Measures two Release builds back to back on this machine, so a change to a measured path can be
# judged by one table: each Google Benchmark program of the one build, then of the other, then the
# frame benchmarks alternating between them.
#   bash scripts/bench_compare.sh BEFORE_BUILD AFTER_BUILD [REPETITIONS]
# Each build is a build/release folder made by scripts/bench.sh (or its cmake lines) in its own
# checkout, e.g. `git worktree add ../before <commit>` for the earlier one.
set -euo pipefail
before=$(realpath "$1")
after=$(realpath "$2")
repetitions=${3:-5}
here=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for program in "$after"/bench/lumivane_bench_*; do
  name=$(basename "$program")
  [[ -x "$before/bench/$name" ]] || continue
  for side in before after; do
    build=${!side}
    "$build/bench/$name" --benchmark_repetitions="$repetitions" --benchmark_report_aggregates_only=true \
      --benchmark_format=json --benchmark_out_format=json --benchmark_out="$work/$side-$name.json" >/dev/null
  done
done

python3 - "$work" <<'PY'
import json, pathlib, sys
work = pathlib.Path(sys.argv[1])
def medians(side):
    out = {}
    for f in sorted(work.glob(side + "-*.json")):
        for b in json.loads(f.read_text())["benchmarks"]:
            if b.get("aggregate_name") == "median":
                out[b["run_name"]] = (b["real_time"], b["time_unit"])
    return out
before, after = medians("before"), medians("after")
print("| Benchmark | before | after | change |")
print("|---|---|---|---|")
for name, (a, unit) in after.items():
    if name not in before:
        print(f"| `{name}` | | {a:.3g} {unit} | new |")
        continue
    b, _ = before[name]
    print(f"| `{name}` | {b:.3g} {unit} | {a:.3g} {unit} | {100 * (a - b) / b:+.1f}% |")
PY

# The frame benchmarks take the executable; the scripts are this checkout's for both builds, and
# each is run for one build and then the other, so a change in the machine's load hits both.
frame_benchmarks=(
  "bench/render_vs_ffmpeg.sh LUMIVANE 600 3|^lumivane"
  "bench/textboxes.sh LUMIVANE 300 3|fps|ms"
  "bench/textboxes.sh LUMIVANE 300 3 1920x1080 extruded|fps|ms"
  "bench/frame_layers.sh LUMIVANE 300 3|fps|ms|Demo|same"
  "bench/frame_allocations.sh LUMIVANE 300|^allocations"
)
for entry in "${frame_benchmarks[@]}"; do
  command=${entry%%|*}
  keep=${entry#*|}
  echo
  echo "== $command"
  for side in before after; do
    build=${!side}
    echo "-- $side"
    # shellcheck disable=SC2086 # the command's words are split on purpose
    bash "$here"/${command/LUMIVANE/$build/src/app/lumivane} | grep -E "$keep" || true
  done
done
