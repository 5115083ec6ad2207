#!/usr/bin/env bash
# Plays the text box demo in the real program under a virtual display and checks a screenshot of
# the output: the wave's text across the top, the circle's on the left, the spiral's on the right
# and the plain box at the bottom, each in its colour. Quits with a terminate signal.
set -euo pipefail
program=$1
here=$(cd "$(dirname "$0")" && pwd)
smoke_name="text box smoke"
. "$here/smoke_lib.sh"

mkdir -p "$work/app"
cp "$resources/Demo Text Boxes.xml" "$work/app/Reset.xml"
"$program" --app-folder "$work/app" ";;1;1280x720" >"$work/app.log" 2>&1 &
app_pid=$!
wait_for 20 output_open || fail "no output window"
wait_for 20 playing || fail "playback did not start (no frame rate in the caption)"
sleep 1  # a few frames
output=$(xdotool search --name '^Lumivane Output$' | head -n 1)
xwd -id "$output" -silent -out "$work/output.xwd" || fail "no screenshot of the output window"
if [ -n "${SMOKE_SCREENSHOT:-}" ]; then cp "$work/output.xwd" "$SMOKE_SCREENSHOT"; fi
python3 "$here/check_textboxes.py" "$work/output.xwd" || fail "the output does not show the text boxes"
kill -TERM "$app_pid"
status=0
wait "$app_pid" || status=$?
app_pid=""
[ "$status" -eq 0 ] || fail "the program quit with exit code $status"
echo "text box smoke: the four shapes are on the output"
