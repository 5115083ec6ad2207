#!/usr/bin/env python3
"""Writes the demo show's pictures (resources/Backgrounds, Effects and Masks) as PNG files.

They are drawn from formulas, so the repository holds nothing made elsewhere:
    python3 scripts/make_demo_pictures.py
"""
import math
import os
import struct
import zlib

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "resources")


def write_png(path, width, height, pixel):
    rows = bytearray()
    previous = None
    for y in range(height):
        row = bytearray()
        for x in range(width):
            row.extend(pixel(x / (width - 1), y / (height - 1)))
        # The "up" filter: smooth pictures compress to a fraction.
        if previous is None:
            rows.append(0)
            rows.extend(row)
        else:
            rows.append(2)
            rows.extend((a - b) & 0xFF for a, b in zip(row, previous))
        previous = row

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    with open(path, "wb") as f:
        f.write(b"\x89PNG\r\n\x1a\n")
        f.write(chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)))
        f.write(chunk(b"IDAT", zlib.compress(bytes(rows), 9)))
        f.write(chunk(b"IEND", b""))


def clamp(v):
    return max(0, min(255, int(v)))


def dusk(u, v):
    # A warm sky over a dark horizon with a low sun.
    d = math.hypot(u - 0.7, (v - 0.62) * 0.56)
    glow = math.exp(-d * 9) * 255
    return (clamp(40 + 200 * (1 - v) ** 0.5 * 0.7 + glow), clamp(20 + 90 * (1 - v) + glow * 0.8),
            clamp(70 * v + 60 + glow * 0.4) if v < 0.7 else clamp(25))


def tide(u, v):
    # Blue diagonal waves.
    w = math.sin((u * 3 + v * 2) * math.pi * 2 + math.sin(v * 9) * 0.8)
    return (clamp(10 + 30 * w), clamp(80 + 60 * w + 60 * v), clamp(150 + 90 * w))


def rings(u, v):
    # Concentric rings in green and violet.
    r = math.hypot(u - 0.5, (v - 0.5) * 0.56) * 28
    w = 0.5 + 0.5 * math.cos(r)
    return (clamp(120 * (1 - w) + 40), clamp(200 * w), clamp(160 * (1 - w) + 60 * w))


def light(u, v):
    # A soft warm glow for the effect layer, black well inside every edge: blended as a screen
    # (ONE over INV_SRC_COLOR) it only adds light, and wherever the layer lands it shows no edge.
    d = math.hypot(u - 0.5, (v - 0.5) * 0.9)
    g = max(0.0, 1.0 - d / 0.45) ** 2
    return (clamp(255 * g), clamp(190 * g), clamp(120 * g))


def vignette(u, v):
    # An output mask: white in the middle, falling off to black at the edges.
    d = math.hypot((u - 0.5) * 1.6, v - 0.5)
    g = clamp(255 * min(1.0, max(0.0, (0.75 - d) / 0.35)))
    return (g, g, g)


if __name__ == "__main__":
    os.makedirs(os.path.join(ROOT, "Masks"), exist_ok=True)
    write_png(os.path.join(ROOT, "Masks", "Vignette.png"), 320, 180, vignette)
    write_png(os.path.join(ROOT, "Backgrounds", "Dusk.png"), 640, 360, dusk)
    write_png(os.path.join(ROOT, "Backgrounds", "Tide.png"), 640, 360, tide)
    write_png(os.path.join(ROOT, "Backgrounds", "Rings.png"), 640, 360, rings)
    write_png(os.path.join(ROOT, "Effects", "Light Leak.png"), 320, 180, light)
