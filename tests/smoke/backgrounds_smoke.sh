#!/usr/bin/env bash
# Plays the background demo in the real program under a virtual display and checks a screenshot
# of the output: the first picture (a warm dusk sky) behind the white title. Quits with a
# terminate signal.
set -euo pipefail
program=$1
here=$(cd "$(dirname "$0")" && pwd)
smoke_name="backgrounds smoke"
. "$here/smoke_lib.sh"

mkdir -p "$work/app"
cp "$resources/Demo Backgrounds.xml" "$work/app/Reset.xml"
"$program" --app-folder "$work/app" ";;1;1280x720" >"$work/app.log" 2>&1 &
app_pid=$!
screenshot_when_playing
python3 "$here/check_backgrounds.py" "$work/output.xwd" || fail "the output does not show the picture and the title"
quit_cleanly
echo "backgrounds smoke: the picture and the title are on the output"
