"""Draws the clouds: soft discs in layers, from the back to the front, cut off flat at the base."""

import math
import random

WIDTH, HEIGHT = 512, 256
RIM = 2  # transparent pixels along the edge
BASE = 196  # where the flat base lies, in pixels from the top
LIT = (1.0, 1.0, 1.0)
SHADED = (0.72, 0.80, 0.94)  # of a disc's lower side


def smoothstep(low, high, value):
    t = min(max((value - low) / (high - low), 0.0), 1.0)
    return t * t * (3 - 2 * t)


def discs_of(dice, heaps):
    """(x, y, radius) of each disc. A heap is (middle, half its width, height): its outline is a dome."""
    discs = []
    for middle, half, height in heaps:
        count = max(14, int(half / 4))
        for i in range(count):
            # Spread evenly, so that no disc floats alone.
            across = 2 * (i + dice.uniform(0.1, 0.9)) / count - 1
            dome = math.sqrt(1 - across * across)
            radius = height * dice.uniform(0.24, 0.4) * (0.4 + 0.6 * dome)
            top = max(height * dome * dice.uniform(0.25, 1), radius)
            discs.append((middle + across * (half - radius), BASE + 0.3 * radius - (top - radius), radius))
    # What is high is at the back.
    return sorted(discs, key=lambda disc: disc[1])


def draw(seed, heaps):
    """A picture as in images.py."""
    dice = random.Random(seed)
    # Premultiplied red, green and blue, and alpha.
    canvas = [[[0.0, 0.0, 0.0, 0.0] for _ in range(WIDTH)] for _ in range(HEIGHT)]
    for cx, cy, radius in discs_of(dice, heaps):
        reach = 1.25 * radius
        for y in range(max(0, int(cy - reach)), min(HEIGHT, int(cy + reach) + 2)):
            for x in range(max(0, int(cx - reach)), min(WIDTH, int(cx + reach) + 2)):
                distance = math.hypot(x - cx, y - cy) / radius
                cover = 0.8 * smoothstep(1.25, 0.55, distance)
                if cover == 0:
                    continue
                shade = smoothstep(-0.5, 1.3, (y - cy) / radius)
                pixel = canvas[y][x]
                for i in range(3):
                    color = LIT[i] + (SHADED[i] - LIT[i]) * shade
                    pixel[i] += (color - pixel[i]) * cover
                pixel[3] += (1 - pixel[3]) * cover
    rows = []
    for y in range(HEIGHT):
        row = bytearray()
        for x in range(WIDTH):
            red, green, blue, alpha = canvas[y][x]
            colors = [value / alpha if alpha > 0 else 1.0 for value in (red, green, blue)]
            edge = min(x, y, WIDTH - 1 - x, HEIGHT - 1 - y) - RIM
            alpha *= smoothstep(BASE + 12, BASE - 26, y) * smoothstep(-1, 14, edge)
            row += bytes(int(min(value, 1.0) * 255 + 0.5) for value in (*colors, 0.95 * alpha))
        rows.append(row)
    return WIDTH, HEIGHT, rows


# Seed and heaps of each.
CLOUDS = (
    (11, ((256, 225, 62), (215, 145, 120), (330, 100, 92))),
    (12, ((256, 230, 56), (150, 95, 88), (315, 135, 140))),
    (13, ((256, 220, 50), (250, 130, 98))),
    (14, ((256, 230, 52), (150, 100, 90), (275, 95, 128), (385, 85, 72))),
    (15, ((256, 215, 58), (300, 120, 146), (190, 100, 96))),
)
