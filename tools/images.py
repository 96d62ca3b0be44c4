"""Reads and writes the few kinds of picture that make_textures needs.

A picture is (width, height, rows); a row is a bytearray of red, green, blue and alpha, not premultiplied.
"""

import struct
import zlib

PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"


def paeth(left, above, corner):
    """The predictor of PNG's filter 4."""
    guess = left + above - corner
    distances = [(abs(guess - value), value) for value in (left, above, corner)]
    return min(distances, key=lambda pair: pair[0])[1]


def read_png(data):
    """Decodes a PNG of 8 bits a channel, with or without alpha, not interlaced."""
    assert data[:8] == PNG_SIGNATURE
    at, packed = 8, b""
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        if kind == b"IHDR":
            width, height, *form = struct.unpack(">IIBBBBB", body)
            assert form in ([8, 2, 0, 0, 0], [8, 6, 0, 0, 0]), form
            channels = 3 if form[1] == 2 else 4
        elif kind == b"IDAT":
            packed += body
        at += 12 + length
    raw = zlib.decompress(packed)
    stride = channels * width
    above, rows = bytearray(stride), []
    for y in range(height):
        start = y * (stride + 1)
        kind, row = raw[start], bytearray(raw[start + 1:start + 1 + stride])
        for i in range(stride):
            left = row[i - channels] if i >= channels else 0
            corner = above[i - channels] if i >= channels else 0
            row[i] = (row[i] + (0, left, above[i], (left + above[i]) // 2,
                                paeth(left, above[i], corner))[kind]) & 255
        rows.append(row)
        above = row
    if channels == 3:
        rows = [bytearray(b"".join(row[3 * x:3 * x + 3] + b"\xff" for x in range(width)))
                for row in rows]
    return width, height, rows


def png(picture):
    """Encodes as PNG, without a time or any other note, so that the same picture gives the same bytes."""
    width, height, rows = picture

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    raw, above = bytearray(), bytes(4 * width)
    for row in rows:
        left = bytes(4) + bytes(row[:-4])
        tries = [bytes((value - other) & 255 for value, other in zip(row, others))
                 for others in (bytes(4 * width), left, above)]
        cost = [sum(min(value, 256 - value) for value in line) for line in tries]
        best = cost.index(min(cost))
        raw.append(best)
        raw += tries[best]
        above = row
    head = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    return (PNG_SIGNATURE + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(bytes(raw), 9)) +
            chunk(b"IEND", b""))


def bmp(picture):
    """Encodes as BMP of 24 bits: alpha is left out."""
    width, height, rows = picture
    padding = bytes(-3 * width % 4)
    body = b"".join(
        b"".join(bytes((row[4 * x + 2], row[4 * x + 1], row[4 * x])) for x in range(width)) + padding
        for row in reversed(rows))
    head = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(body), 2835, 2835, 0, 0)
    return b"BM" + struct.pack("<IHHI", 54 + len(body), 0, 0, 54) + head + body


def alpha_at(picture, x, y):
    return picture[2][y][4 * x + 3]


def has_transparent_rim(picture, rim):
    width, height, _ = picture
    return all(alpha_at(picture, x, y) == 0 for y in range(height) for x in range(width)
               if min(x, y, width - 1 - x, height - 1 - y) < rim)


def bleed(picture):
    """Gives what is transparent the colour of what is beside it, outwards from there.

    A texture's filter mixes the colours of neighbors whatever their alpha: black in the transparent part
    would show as a dark seam.
    """
    width, height, rows = picture
    known = {(x, y) for y in range(height) for x in range(width) if alpha_at(picture, x, y) != 0}
    edge = known
    if not known:
        for row in rows:
            row[:] = bytes((255, 255, 255, 0)) * width
    while edge:
        sums = {}
        for x, y in sorted(edge):
            color = rows[y][4 * x:4 * x + 3]
            for place in ((x - 1, y), (x + 1, y), (x, y - 1), (x, y + 1)):
                if place not in known and 0 <= place[0] < width and 0 <= place[1] < height:
                    sums.setdefault(place, []).append(color)
        for (x, y), colors in sums.items():
            rows[y][4 * x:4 * x + 3] = bytes(sum(parts) // len(parts) for parts in zip(*colors))
        edge = set(sums)
        known = known | edge
