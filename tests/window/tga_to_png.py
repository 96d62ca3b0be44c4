#!/usr/bin/env python3
"""usage: tga_to_png.py SCREENSHOT PICTURE

Turns a screenshot of Quib (uncompressed, 24 bits, from the bottom) into a PNG."""
import struct
import sys
import zlib


def main(source, target):
    data = open(source, "rb").read()
    width, height = struct.unpack_from("<HH", data, 12)
    rows = bytearray()
    for y in range(height - 1, -1, -1):
        row = bytearray(data[18 + y * width * 3:18 + (y + 1) * width * 3])
        row[0::3], row[2::3] = row[2::3], row[0::3]
        rows += b"\0" + row

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    with open(target, "wb") as out:
        out.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
                  chunk(b"IDAT", zlib.compress(bytes(rows), 9)) + chunk(b"IEND", b""))


if len(sys.argv) != 3:
    sys.exit(__doc__)
main(sys.argv[1], sys.argv[2])
