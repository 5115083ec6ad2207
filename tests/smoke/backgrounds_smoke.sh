#!/usr/bin/env bash
# Plays the background demo in the real program under a virtual display and checks a screenshot
# of the output: the first picture (a warm dusk sky) behind the white title. Quits with a
# terminate signal.
set -euo pipefail
program=$1
here=$(cd "$(dirname "$0")" && pwd)
smoke_name="backgrounds smoke"
. "$here/smoke_lib.sh"

play_and_check "Demo Backgrounds.xml" 1280x720 check_backgrounds.py "the output does not show the picture and the title"
echo "backgrounds smoke: the picture and the title are on the output"
