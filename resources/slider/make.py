#!/usr/bin/env python3
"""Draws the bitmaps of sliders for Windows: two scales and a thumb.

usage: resources/slider/make.py      writes IDB_SLIDER_*.bmp beside itself

The first pixel's colour stands for nothing. Greys in the middle read on light and dark ground.
"""
import pathlib
import struct

NOTHING = (255, 0, 255)
SCALE = (150, 150, 150)
FACE = (53, 132, 228)
EDGE = (27, 91, 169)


def write(name, width, height, pixel):
    """pixel(x, y) gives red, green, blue; y counts from the top."""
    stride = (3 * width + 3) // 4 * 4
    rows = b""
    for y in reversed(range(height)):
        row = b"".join(bytes(reversed(pixel(x, y))) for x in range(width))
        rows += row.ljust(stride, b"\0")
    head = struct.pack("<2sIHHI", b"BM", 54 + len(rows), 0, 0, 54)
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(rows), 2835, 2835, 0, 0)
    folder = pathlib.Path(__file__).resolve().parent
    (folder / f"{name}.bmp").write_bytes(head + info + rows)


def wedge(share):
    """A bar of ten rows, at each column as high as share(x) of it and one row at least."""
    def pixel(x, y):
        rows = max(1, round(8 * share(x)))
        return SCALE if 9 - rows <= y < 9 else NOTHING
    return pixel


def thumb(x, y):
    corner = x in (0, 10) and y in (0, 19)
    if corner:
        return NOTHING
    return EDGE if x in (0, 10) or y in (0, 19) else FACE


write("IDB_SLIDER_HD", 201, 10, wedge(lambda x: x / 200))
write("IDB_SLIDER_CC", 201, 10, wedge(lambda x: abs(x - 100) / 100))
write("IDB_SLIDER_TMB", 11, 20, thumb)
