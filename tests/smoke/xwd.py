"""Reads a window dump (xwd, 32 bits a pixel) for the smoke tests' pixel checks."""
import struct
import sys


def read(path, tool):
    """Answers (width, height, rgb), rgb(x, y) giving the pixel's (r, g, b)."""
    data = open(path, "rb").read()
    fields = struct.unpack(">25I", data[:100])
    header_size, width, height = fields[0], fields[4], fields[5]
    byte_order, bits_per_pixel, bytes_per_line, ncolors = fields[7], fields[11], fields[12], fields[19]
    if bits_per_pixel != 32:
        sys.exit(f"{tool}: {bits_per_pixel} bits a pixel, expected 32")
    pixels = data[header_size + ncolors * 12:]

    def rgb(x, y):
        at = y * bytes_per_line + x * 4
        b0, b1, b2, b3 = pixels[at:at + 4]
        return (b2, b1, b0) if byte_order == 0 else (b1, b2, b3)

    return width, height, rgb
