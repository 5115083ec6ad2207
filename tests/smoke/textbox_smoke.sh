#!/usr/bin/env bash
# Plays the text box demo in the real program under a virtual display and checks a screenshot of
# the output: the wave's text across the top, the circle's on the left, the spiral's on the right
# and the plain box at the bottom, each in its colour. Quits with a terminate signal.
set -euo pipefail
program=$1
here=$(cd "$(dirname "$0")" && pwd)
smoke_name="text box smoke"
. "$here/smoke_lib.sh"

play_and_check "Demo Text Boxes.xml" 1280x720 check_textboxes.py "the output does not show the text boxes"
echo "text box smoke: the four shapes are on the output"
