#!/usr/bin/env python3
"""make_icon.py ICON PNG...: gathers square PNG pictures into one Windows icon (.ico)."""

import struct
import sys


def main(icon_path, picture_paths):
    pictures = []
    for path in picture_paths:
        with open(path, "rb") as file:
            data = file.read()
        if data[:8] != b"\x89PNG\r\n\x1a\n":
            sys.exit(f"make_icon: {path} is no PNG picture")
        width, height = struct.unpack(">II", data[16:24])
        if width != height or width > 256:
            sys.exit(f"make_icon: {path} is no square of up to 256 pixels")
        pictures.append((width, data))
    # ICONDIR and ICONDIRENTRYs; a side of 256 is written as 0. Windows has read PNG entries of any
    # size since Vista.
    offset = 6 + 16 * len(pictures)
    head = struct.pack("<HHH", 0, 1, len(pictures))
    for side, data in pictures:
        head += struct.pack("<BBBBHHII", side % 256, side % 256, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    with open(icon_path, "wb") as file:
        file.write(head + b"".join(data for _, data in pictures))


main(sys.argv[1], sys.argv[2:])
