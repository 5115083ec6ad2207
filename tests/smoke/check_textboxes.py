#!/usr/bin/env python3
"""Checks a window dump (xwd) of the output playing "Demo Text Boxes.xml": cyan text (the wave) in
the upper half, yellow (the circle) on the lower left, light green (the spiral) on the lower right
and the blue box at the bottom centre.
Usage: check_textboxes.py DUMP.xwd"""
import sys

import xwd

width, height, rgb = xwd.read(sys.argv[1], "check_textboxes")
counts = {"wave": 0, "circle": 0, "spiral": 0, "box": 0, "elsewhere": 0}
for y in range(0, height, 2):
    for x in range(0, width, 2):
        r, g, b = rgb(x, y)
        lower, left, right = y > height * 0.45, x < width * 0.4, x > width * 0.6
        if r < 90 and g > 180 and b > 180:
            counts["wave" if y < height * 0.5 else "elsewhere"] += 1
        elif r > 180 and g > 180 and b < 90:
            counts["circle" if lower and left else "elsewhere"] += 1
        elif 90 < r < 180 and g > 180 and b < 180:
            counts["spiral" if lower and right else "elsewhere"] += 1
        elif r < 40 and g < 40 and b > 100:
            counts["box" if y > height * 0.6 and width * 0.25 < x < width * 0.75 else "elsewhere"] += 1
print(f"check_textboxes: {width}x{height}, {counts}")
least = 20 * width * height // (640 * 360)  # counts grow with the window's area
if min(counts["wave"], counts["circle"], counts["spiral"], counts["box"]) < least or counts["elsewhere"] > least:
    sys.exit("check_textboxes: the shapes are not where the show puts them")
