#!/usr/bin/env python3
"""Checks a window dump (xwd) of the output playing "Demo Counters.xml": white text inside the first
text's box, yellow inside the second's, and no white anywhere else. With "mirror-y", the boxes are
expected upside down, as a clone mirrored on Y shows them.
Usage: check_output.py DUMP.xwd [mirror-y]"""
import sys

import xwd

width, height, rgb = xwd.read(sys.argv[1], "check_output")


# The boxes of the show, in the 480x270 pane, scaled to the window.
sx, sy = width / 480.0, height / 270.0
mirror_y = len(sys.argv) > 2 and sys.argv[2] == "mirror-y"
def box(left, top, right, bottom):
    if mirror_y:
        top, bottom = 270 - bottom, 270 - top
    return (left * sx, top * sy, right * sx, bottom * sy)
white_box, yellow_box = box(80, 40, 400, 120), box(80, 140, 400, 200)


def inside(b, x, y):
    return b[0] <= x < b[2] and b[1] <= y < b[3]


white_in = white_out = yellow_in = 0
for y in range(height):
    for x in range(width):
        r, g, b = rgb(x, y)
        if r > 200 and g > 200 and b > 200:
            if inside(white_box, x, y):
                white_in += 1
            else:
                white_out += 1
        elif r > 200 and g > 200 and b < 60 and inside(yellow_box, x, y):
            yellow_in += 1
print(f"check_output: {width}x{height}, white inside {white_in}, outside {white_out}, yellow inside {yellow_in}")
least = 100 * width * height // (640 * 480)  # the show's glyphs scale with the window
if white_in < least or yellow_in < least // 3 or white_out > 0:  # the yellow hex counter starts at one digit
    sys.exit("check_output: the texts are not where the show puts them")
