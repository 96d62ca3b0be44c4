#!/usr/bin/env python3
"""Makes the scenes that ship.

usage: tools/make_scenes.py [DIR]        (without DIR: scenes/ beside tools/)

The text is that of Quib's own writer, to the byte: loading such a scene and saving it without a step
gives the same file. Random choices have fixed seeds.
"""

import math
import os
import random
import sys

sys.dont_write_bytecode = True  # leave no folder in the tree

from machines import bridge, car, catapult, cradle, dam, mill
from scene_text import (AMBER, LEAF, PLUM, SAND, SEA, TOYS, VERMILION, Scene, arc, crescent, flower,
                        star)

# Layers keep what stands behind apart from what runs in front. The lowest is everybody's.
FRONT, BEHIND_1, BEHIND_2, BEHIND_3, BEHIND_4 = 1, 2, 4, 8, 16
ALL_LAYERS = 31


def shelf(x0, y0, x1, y1, lip):
    """A slope from (x0, y0) down to (x1, y1), a hand thick, with a lip at its upper end."""
    length = math.hypot(x1 - x0, y1 - y0)
    ux, uy = (x1 - x0) / length, (y1 - y0) / length
    nx, ny = (-uy, ux) if ux > 0 else (uy, -ux)
    at = lambda along, up: (x0 + ux * along + nx * up, y0 + uy * along + ny * up)
    w = 0.18
    return [at(0, -w), at(length, -w), at(length, 0), at(w, 0), at(w, lip), at(0, lip)]


def welcome(path):
    scene = Scene(
        "Welcome",
        "Marbles run down the shelves and start the dominoes. Move with the arrow keys.",
        (0.0, 0.0),
        44.0,
    )
    ground = -6.0
    scene.plane(LEAF, (0.0, ground), 0.0, collideSet=ALL_LAYERS, friction=0.7)

    # Pillars first: they stand behind everything. Marbles run in front of them.
    shelves = [(-9.8, 4.6, -5.0, 4.3), (-3.2, 2.7, -7.9, 2.35), (-10.0, 0.9, -5.2, 0.55)]
    layers = [BEHIND_1, BEHIND_2, BEHIND_3]
    for (x0, y0, x1, y1), layer in zip(shelves, layers):
        for t in (0.15, 0.85):
            x = x0 + (x1 - x0) * t
            # The shelf's underside at the pillar's two edges.
            under = lambda px: y0 + (y1 - y0) * (px - x0) / (x1 - x0) - 0.181
            l, r = x - 0.2, x + 0.2
            points = [(l - 0.15, ground), (r + 0.15, ground), (r, under(r)), (l, under(l))]
            scene.polygon(SAND, points, collideSet=layer, friction=1.0, restitution=0.0)
    for (x0, y0, x1, y1), layer, color in zip(shelves, layers, (VERMILION, SEA, PLUM)):
        scene.polygon(color, shelf(x0, y0, x1, y1, 0.7), collideSet=layer | FRONT, friction=1.0,
                      restitution=0.2)

    # A bowl that rocks, with a marble of its own.
    scene.polygon(AMBER, crescent(1.3, 0.22), (-8.0, ground + 0.75), -0.5, density=3.0)
    scene.circle(LEAF, (-8.6, ground + 1.2), 0.3, restitution=0.3)

    # The slide that turns the marbles towards the dominoes.
    slide = [(-6.0, ground), (-1.4, ground), (-1.4, ground + 0.06)]
    slide += arc((-1.4, ground + 4.5), 4.44, 269, 222, 24)[1:]
    slide += [(-6.0, slide[-1][1])]
    scene.polygon(LEAF, slide, density=8.0, friction=0.8, restitution=0.1)

    for i, color in enumerate((AMBER, SEA, SAND, PLUM, VERMILION, LEAF)):
        scene.circle(color, (-9.2 + 0.62 * i, 5.0 + 0.6 * (i % 2)), 0.24 + 0.02 * (i % 3),
                     density=4.0, friction=0.8, restitution=0.3)

    # A table in the middle, to bounce on, behind the dominoes.
    table = ground + 4.6
    for x in (1.7, 5.3):
        scene.box(SAND, (x, (ground + table - 0.2) / 2), (0.35, table - 0.2 - ground),
                  collideSet=BEHIND_4, friction=1.0, restitution=0.0)
    l, r, rim = 1.0, 6.0, 0.5
    top = [(l, table - 0.2), (r, table - 0.2), (r, table + rim), (r - 0.2, table + rim)]
    top += [(r - 0.2, table), (l + 0.2, table), (l + 0.2, table + rim), (l, table + rim)]
    scene.polygon(SEA, top, collideSet=BEHIND_4 | FRONT, density=8.0, friction=0.8)
    # Dominoes, each a little larger than the one before.
    x, height = -0.6, 0.62
    for i in range(12):
        scene.box(TOYS[i % 5], (x, ground + height / 2), (height * 0.18, height), friction=0.35,
                  restitution=0.1)
        x += height * 0.6
        height *= 1.1

    # What the last of them finds.
    for row in range(4):
        for i in range(4 - row):
            scene.box(TOYS[(row + i) % 5], (7.9 + 0.62 * (i + row / 2), ground + 0.3 + 0.6 * row),
                      (0.6, 0.6))
    top = ground + 2.4
    scene.polygon(AMBER, star(0.55, 5), (8.83, top + 0.445), density=1.0)

    # More than the table loses, nearly.
    scene.circle(AMBER, (2.0, table + 4.2), 0.42, restitution=1.8)
    scene.circle(PLUM, (3.4, table + 3.0), 0.34, restitution=1.7)
    scene.polygon(VERMILION, flower(0.5, 5), (5.1, table + 1.2), 0.2, restitution=0.2)

    scene.write(path)


def pyramid(path):
    rows = 40
    scene = Scene(
        "Pyramid",
        "820 boxes that stand. Throw something at them.",
        (0.0, 19.0),
        16.0,
    )
    scene.plane(LEAF, (0.0, 0.0), 0.0)
    for row in range(rows):
        for i in range(rows - row):
            x = 1.1 * (i - (rows - row - 1) / 2)
            scene.box(TOYS[row % 5], (x, row + 0.5), (1.0, 1.0))
    scene.write(path)


def rubble(path):
    chance = random.Random(7)
    scene = Scene(
        "Rubble",
        "300 stones, a third of them hollow ones, fall into a basin.",
        (0.0, 12.0),
        28.0,
    )
    scene.plane(LEAF, (0.0, 0.0), 0.0)
    scene.plane(LEAF, (-9.0, 0.0), math.radians(-60))
    scene.plane(LEAF, (9.0, 0.0), math.radians(60))
    for i in range(300):
        corners = chance.randint(5, 9)
        radius = chance.uniform(0.35, 0.55)
        points = []
        for k in range(corners):
            angle = 2 * math.pi * (k + chance.uniform(-0.25, 0.25)) / corners
            points.append((angle, radius * chance.uniform(0.92, 1.0)))
        if i % 3 == 0:
            # Every second corner pulled in makes it concave.
            points = [
                (angle, r * (0.5 if k % 2 and k + 1 < corners else 1))
                for k, (angle, r) in enumerate(points)
            ]
        outline = [(r * math.cos(angle), r * math.sin(angle)) for angle, r in points]
        column, row = i % 15, i // 15
        pos = (1.2 * (column - 7) + chance.uniform(-0.04, 0.04), 1.5 + 1.2 * row)
        scene.polygon(chance.choice(TOYS), outline, pos, round(chance.uniform(-3.1, 3.1), 1) + 0.0)
    scene.write(path)


def main():
    if sys.argv[1:2] in (["-h"], ["--help"]):
        print(__doc__.strip())
        return
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "../scenes")
    os.makedirs(folder, exist_ok=True)
    for make in (welcome, pyramid, rubble, bridge, car, mill, cradle, catapult, dam):
        make(os.path.join(folder, make.__name__ + ".qib"))


if __name__ == "__main__":
    main()
