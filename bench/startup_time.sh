#!/usr/bin/env bash
# Times the windowed program from process start to Idle (the splash window gone after "Ready..."),
# under a virtual display, over several runs. Usage: bench/startup_time.sh PROGRAM [RUNS]
set -euo pipefail
program=$1
runs=${2:-5}
work=$(mktemp -d)
xvfb_pid=""
cleanup() {
  pkill -KILL -f "$program --app-folder $work" 2>/dev/null || true
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
exec 3<> <(:)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
xvfb_pid=$!
read -r -t 10 display <&3
export DISPLAY=":$display" XDG_RUNTIME_DIR="$work/runtime"
mkdir -m 700 "$XDG_RUNTIME_DIR"

for i in $(seq "$runs"); do
  start=$(date +%s%N)
  "$program" --app-folder "$work/app" >/dev/null 2>&1 &
  pid=$!
  # The splash appears first; Idle is when it has gone again.
  until xdotool search --onlyvisible --name '^Lumivane Splash$' >/dev/null 2>&1; do sleep 0.005; done
  while xdotool search --onlyvisible --name '^Lumivane Splash$' >/dev/null 2>&1; do sleep 0.005; done
  end=$(date +%s%N)
  echo "run $i: $(( (end - start) / 1000000 )) ms to Idle"
  kill -TERM "$pid"
  wait "$pid" || true
done
