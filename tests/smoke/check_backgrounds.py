#!/usr/bin/env python3
"""Checks a window dump (xwd) of the output playing "Demo Backgrounds.xml" in its first seconds:
the dusk picture fills the upper part of the frame (warm: more red than blue, not dark) and the
white title (grey under the output's fade) stands in it.
Usage: check_backgrounds.py DUMP.xwd"""
import sys

import xwd

width, height, rgb = xwd.read(sys.argv[1], "check_backgrounds")
warm = white = samples = 0
for y in range(0, height // 2, 3):
    for x in range(0, width, 3):
        r, g, b = rgb(x, y)
        samples += 1
        if min(r, g, b) > 160 and max(r, g, b) - min(r, g, b) < 40:  # the title, dimmed by the fade
            white += 1
        elif r > 80 and r > b + 20:
            warm += 1
print(f"check_backgrounds: {width}x{height}, warm {warm}, white {white} of {samples}")
if warm < samples * 0.6:
    sys.exit("check_backgrounds: no picture behind the texts")
if white < samples * 0.005:
    sys.exit("check_backgrounds: no title")
