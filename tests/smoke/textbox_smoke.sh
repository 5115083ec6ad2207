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
screenshot_when_playing
python3 "$here/check_textboxes.py" "$work/output.xwd" || fail "the output does not show the text boxes"
quit_cleanly
echo "text box smoke: the four shapes are on the output"
