"""The scenes that ship in which things are joined, and those with water."""

import math

from scene_text import (AMBER, LEAF, PLUM, SAND, SEA, TOYS, VERMILION, WORLD, Scene, drops)

GHOST = 0  # in no layer: seen and never touched
EARTH = (0x8B, 0x6B, 0x4A)


def smooth(t):
    """From 0 to 1 without a kink."""
    t = min(max(t, 0.0), 1.0)
    return t * t * (3 - 2 * t)


def samples(f, x0, x1, step):
    count = int(round((x1 - x0) / step))
    return [(x, f(x)) for x in (x0 + (x1 - x0) * i / count for i in range(count + 1))]


def calm(pace):
    """Settings that show the same motion in smaller steps.

    The world runs that many times as fast, under a gravity so much weaker that it looks the same.
    """
    return {"gravity": (0.0, -9.8 / pace ** 2), "timeFactor": pace}


# The suspension bridge.


def bridge(path):
    scene = Scene(
        "Suspension bridge",
        "Balls roll over a deck that hangs by chains. Cut a hanger, or drop something heavy.",
        (0.0, 0.6),
        27.0,
    )
    half, top, low = 9, 5.4, 1.7
    deck_thick, deck_density = 0.22, 2.0
    link_thick, hanger_thick, iron = 0.14, 0.09, 5.0

    def deck(x):
        return 0.3 * (1 - (x / half) ** 2)

    def bank_height(x):
        return 0.5 * deck_thick + 4.2 * smooth((abs(x) - half - 1.2) / 7.0)

    scene.plane(SEA, (0.0, -7.5), 0.0)
    banks = []
    for side in (-1, 1):
        xs = [side * (half + 0.25 * i) for i in range(45)]
        outline = [(x, bank_height(x)) for x in xs] + [(xs[-1], -7.5), (xs[0], -7.5)]
        banks.append(scene.polygon(LEAF, outline, friction=0.8))
    towers = [scene.box(SAND, (side * half, (top - 7.25) / 2), (0.6, top + 7.75), collideSet=GHOST)
              for side in (-1, 1)]

    welds = [(part, part.pos) for part in banks]
    welds += [(part, (part.pos[0], -2.5)) for part in towers]
    hinges = []

    # The deck.
    chain = scene.chain()
    joints = [(float(x), deck(x)) for x in range(-half, half + 1)]
    planks = [
        scene.bar(AMBER if i % 2 else VERMILION, p0, p1, deck_thick, density=deck_density, friction=0.8,
                  restitution=0.0, chain=(chain, i))
        for i, (p0, p1) in enumerate(zip(joints, joints[1:]))
    ]
    hinges.append((banks[0], planks[0], joints[0], 0.2))
    hinges += [(a, b, p, 0.2) for a, b, p in zip(planks, planks[1:], joints[1:])]
    hinges.append((planks[-1], banks[1], joints[-1], 0.2))

    # The cable, from tower to tower, in the shape in which it is at rest.
    def hanger_weight(x, y):
        return deck_density * deck_thick + iron * hanger_thick * (y - deck(x))

    count = 4 * half
    heights = [low] * (count + 1)
    link_weight = iron * link_thick * 0.55
    for _ in range(20):
        loads = [
            link_weight + (hanger_weight(i / 2 - half, heights[i]) if i % 2 == 0 else 0)
            for i in range(count + 1)
        ]
        middle = count // 2
        carried, drop, offsets = loads[middle] / 2, 0.0, [0.0]
        for i in range(middle, count):
            drop += carried
            offsets.append(drop)
            carried += loads[i + 1]
        heights = [low + (top - low) * offsets[abs(i - middle)] / drop for i in range(count + 1)]
    nodes = [(i / 2 - half, heights[i]) for i in range(count + 1)]

    def chain_along(color, points, thick):
        chain = scene.chain()
        return [
            scene.bar(color, p0, p1, thick, density=iron, collideSet=GHOST, chain=(chain, i))
            for i, (p0, p1) in enumerate(zip(points, points[1:]))
        ]

    cable = chain_along(PLUM, nodes, link_thick)
    hinges.append((towers[0], cable[0], nodes[0], 0.22))
    hinges += [(a, b, p, 0.12) for a, b, p in zip(cable, cable[1:], nodes[1:])]
    hinges.append((cable[-1], towers[1], nodes[-1], 0.22))

    # Its hangers.
    for k in range(1, 2 * half):
        x, y0, y1 = float(k - half), nodes[2 * k][1], joints[k][1]
        links = max(2, int(round((y0 - y1) / 0.5)))
        points = [(x, y0 + (y1 - y0) * i / links) for i in range(links + 1)]
        hanger = chain_along(SEA, points, hanger_thick)
        hinges.append((cable[2 * k], hanger[0], points[0], 0.12))
        hinges += [(a, b, p, 0.1) for a, b, p in zip(hanger, hanger[1:], points[1:])]
        hinges.append((hanger[-1], planks[k], points[-1], 0.12))

    # What holds the towers back.
    for side, tower, bank_part in ((-1, towers[0], banks[0]), (1, towers[1], banks[1])):
        p0, p1 = (side * half, top), (side * (half + 6.0), 0.8)
        points = []
        for i in range(13):
            t = i / 12
            points.append((p0[0] + (p1[0] - p0[0]) * t, p0[1] + (p1[1] - p0[1]) * t - 0.8 * t * (1 - t)))
        stay = chain_along(PLUM, points, link_thick)
        hinges.append((tower, stay[0], points[0], 0.22))
        hinges += [(a, b, p, 0.12) for a, b, p in zip(stay, stay[1:], points[1:])]
        hinges.append((stay[-1], bank_part, points[-1], 0.22))

    # What rolls.
    for color, x, radius in ((AMBER, -14.4, 0.5), (SAND, -15.5, 0.4), (VERMILION, -16.7, 0.6)):
        scene.circle(color, (x, bank_height(x) + radius + 0.14), radius, density=1.5, friction=0.8,
                     restitution=0.1)

    for part, point in welds:
        scene.weld(part, WORLD, point, 0.5)
    for a, b, point, size in hinges:
        scene.hinge(a, b, point, size)
    scene.write(path)


# The car.


def car(path):
    scene = Scene(
        "Hill climber",
        "A car with a motor in each wheel and springs over both. Left and right drive it, down brakes.",
        (0.0, 2.6),
        27.0,
    )

    def road(x):
        hills = 1.1 * math.sin(0.36 * x + 0.4) + 0.3 * math.sin(1.1 * x)
        return hills * smooth((x + 12.5) / 4.0) * smooth((13.5 - x) / 4.0)

    scene.plane(EARTH, (0.0, -3.0), 0.0)
    # The body is in a layer apart from the wheels, which it overlaps.
    wheel_layer, body_layer, both = 1, 2, 3
    # Short pieces make a smooth road. What is seen is one piece in front of them, without their seams.
    pieces = []
    for i in range(9):
        x0, x1 = max(-18 + 4 * i, -17.6), min(-14 + 4 * i, 17.6)
        outline = samples(road, x0, x1, 0.2) + [(x1, -2.6), (x0, -2.6)]
        pieces.append(scene.polygon(LEAF, outline, friction=1.0, restitution=0.0, collideSet=both))
    hills = scene.polygon(LEAF, samples(road, -18, 18, 0.2) + [(18, -3.0), (-18, -3.0)], collideSet=GHOST)
    # Where the road ends.
    stops = [scene.box(SAND, (x, 1.0), (0.8, 3.0), restitution=0.1, collideSet=both)
             for x in (-17.2, 17.2)]

    # What stands at the end, to be driven into.
    for row in range(5):
        scene.box(TOYS[row % 5], (15.0, 0.25 + 0.5 * row), (0.9, 0.5), density=0.2, friction=0.6,
                  restitution=0.1, collideSet=both)

    x = -14.0
    axles, radius = (x - 1.25, x + 1.25), 0.5
    y = radius + 0.01
    # Each wheel is at the end of an arm that swings about the middle of the car.
    arms = [scene.bar(PLUM, (x + s * 0.2, y + 0.35), (a, y), 0.16, density=6.0, collideSet=GHOST)
            for s, a in ((-1, axles[0]), (1, axles[1]))]
    wheels = [scene.circle(SEA, (a, y), radius, density=1.5, friction=1.6, restitution=0.0,
                           collideSet=wheel_layer) for a in axles]
    body = scene.polygon(
        VERMILION,
        [(x - 1.8, y + 0.5), (x - 1.7, y + 0.25), (x + 1.7, y + 0.25), (x + 1.85, y + 0.5),
         (x + 1.8, y + 0.8), (x + 1.0, y + 0.95), (x + 0.45, y + 1.55), (x - 0.85, y + 1.55),
         (x - 1.3, y + 0.95), (x - 1.8, y + 0.9)],
        density=1.0, restitution=0.1, collideSet=body_layer)
    windows = [
        scene.polygon(SAND, [(x - 1.0, y + 0.95), (x - 0.3, y + 0.95), (x - 0.3, y + 1.4),
                             (x - 0.75, y + 1.4)], density=0.2, collideSet=GHOST),
        scene.polygon(SAND, [(x - 0.15, y + 0.95), (x + 0.7, y + 0.95), (x + 0.35, y + 1.4),
                             (x - 0.15, y + 1.4)], density=0.2, collideSet=GHOST),
    ]

    for part in pieces:
        scene.weld(part, WORLD, (part.pos[0], -2.2), 0.3)
    scene.weld(hills, WORLD, (2.0, -2.2), 0.3)
    for part in stops:
        scene.weld(part, WORLD, part.pos, 0.4)
    for part in windows:
        scene.weld(part, body, part.pos, 0.15)
    for s, a, arm, wheel in zip((-1, 1), axles, arms, wheels):
        scene.hinge(arm, body, (x + s * 0.2, y + 0.35), 0.2)
        scene.hinge(wheel, arm, (a, y), 0.3, motor=True, motorSpeed=2.9, motorTorque=300.0,
                    buttonForward="right", buttonBack="left", buttonBreak="down")
        # The wheel and not the arm carries it: a spring is as strong as what it holds is heavy.
        scene.spring(wheel, (a, y), body, (a - s * 0.15, y + 0.85), 0.3, strengthFactor=0.5,
                     dampingFactor=0.25)
    scene.write(path)


# The water mill.


def mill(path):
    scene = Scene(
        "Water mill",
        "No motor: what runs out of the tank turns the wheel. Hold it, and let it go again.",
        (0.6, 0.7),
        42.0,
        **calm(2.0),
    )
    ground = -6.8
    scene.plane(LEAF, (0.0, ground), 0.0, friction=0.3)
    walls = []

    def wall(color, points, **values):
        walls.append(scene.polygon(color, points, friction=0.1, restitution=0.0, **values))

    # The basin.
    for x in (-9.9, 11.1):
        wall(EARTH, [(x - 0.3, ground), (x + 0.3, ground), (x + 0.3, -2.6), (x - 0.3, -2.6)])
    # What the tank stands on.
    for x in (-8.4, -4.4):
        wall(SEA, [(x - 0.35, ground), (x + 0.35, ground), (x + 0.2, 1.2), (x - 0.2, 1.2)],
             collideSet=GHOST, collideWater=False)
    # The tank: its floor goes on as the trough that leads to the wheel, through the slit in its wall.
    floor = lambda x: 0.75 - 0.14 * (x + 2.7)
    wall(SAND, [(-9.4, floor(-9.4) - 0.4), (-2.7, floor(-2.7) - 0.3), (-2.7, floor(-2.7)),
                (-9.4, floor(-9.4))])
    wall(SAND, [(-9.4, floor(-9.4) - 0.1), (-8.9, floor(-8.9) - 0.1), (-8.9, 8.7), (-9.4, 8.7)])
    slit = floor(-4.1) + 0.36
    wall(SAND, [(-4.1, slit), (-3.6, slit), (-3.6, 8.7), (-4.1, 8.7)])

    # The wheel: blades around a hub.
    hub, outer, inner, blades = (-1.2, -1.9), 2.4, 1.0, 12
    points = []
    for i in range(blades):
        a = 2 * math.pi * i / blades
        at = lambda r, da: (hub[0] + r * math.cos(a + da), hub[1] + r * math.sin(a + da))
        points += [at(inner, -0.1), at(outer, -0.03), at(outer, 0.03), at(inner, 0.1)]
    wheel = scene.polygon(AMBER, points, density=1.0, friction=0.1, restitution=0.0)
    post = [(hub[0] - 1.0, ground), (hub[0] + 1.0, ground), (hub[0] + 0.25, hub[1] + 0.4),
            (hub[0] - 0.25, hub[1] + 0.4)]
    wall(PLUM, post, collideSet=GHOST, collideWater=False)
    for part in walls:
        scene.weld(part, WORLD, part.pos, 0.4)
    scene.hinge(wheel, WORLD, hub, 0.5)
    scene.water([(x, y) for x, y in drops(-8.85, 0.9, -4.15, 8.5, 0.094) if y > floor(x) + 0.05])
    scene.write(path)


# Newton's cradle.


def cradle(path):
    scene = Scene(
        "Newton's cradle",
        "What comes in on one side goes out on the other. Pull out two balls, or three.",
        (0.0, 2.2),
        70.0,
        airSwitch=False,
        # Slow balls in quick time: what a ball goes in one step is how far it pushes the next one out of
        # place when it meets it, and in the end that would have all of them swing.
        **calm(8.0),
    )
    radius, length, gap, count, lift = 0.5, 4.0, 0.005, 5, math.radians(35)
    top = 4.6
    scene.plane(LEAF, (0.0, -1.6), 0.0)
    reach = 3.6
    beam = scene.box(PLUM, (0.0, top + 0.05), (2 * reach + 0.6, 0.3), collideSet=GHOST)
    legs = [scene.bar(PLUM, (s * reach, top), (s * (reach + 0.7), -1.6), 0.3, collideSet=GHOST)
            for s in (-1, 1)]
    rods, balls = [], []
    for i in range(count):
        x = (i - (count - 1) / 2) * (2 * radius + gap)
        angle = -lift if i == 0 else 0.0
        pos = (x + length * math.sin(angle), top - length * math.cos(angle))
        rods.append((scene.bar(SAND, (x, top), pos, 0.06, density=0.05, collideSet=GHOST), (x, top)))
        balls.append(scene.circle(TOYS[i], pos, radius, density=2.0, friction=0.0, restitution=1.0))
    for part in [beam] + legs:
        scene.weld(part, WORLD, part.pos, 0.3)
    for (rod, pivot), ball in zip(rods, balls):
        scene.weld(rod, ball, ball.pos, 0.15)
        scene.hinge(rod, WORLD, pivot, 0.2)
    scene.write(path)


# The catapult.


def catapult(path):
    scene = Scene(
        "Catapult",
        "The winch stretches the spring until the pin that holds the arm to its latch breaks.",
        (0.6, 4.6),
        36.0,
    )
    scene.plane(LEAF, (0.0, 0.0), 0.0)
    pivot = (-5.0, 3.4)
    tilt = math.radians(21)
    c, s = math.cos(tilt), math.sin(tilt)
    at = lambda along, up: (pivot[0] + c * along - s * up, pivot[1] + s * along + c * up)

    # What stands behind.
    hold = at(-4.5, 0.0)
    latch = scene.box(SEA, (hold[0], hold[1] / 2 + 0.1), (0.35, hold[1] + 0.2), collideSet=GHOST)
    post = scene.polygon(SAND, [(pivot[0] - 1.0, 0.0), (pivot[0] + 1.0, 0.0),
                                (pivot[0] + 0.2, pivot[1] + 0.25), (pivot[0] - 0.2, pivot[1] + 0.25)],
                         collideSet=GHOST)
    # The stop that the arm hits.
    stop = scene.box(PLUM, (pivot[0] + 0.22, pivot[1] - 1.33), (0.9, 0.5), math.radians(-65),
                     restitution=0.0)

    arm = scene.bar(AMBER, at(-5.4, 0.0), at(2.0, 0.0), 0.22, density=1.0, friction=0.8, restitution=0.0)
    cup = scene.polygon(AMBER, [at(-5.55, 0.09), at(-4.1, 0.09), at(-4.1, 0.4), at(-4.25, 0.4),
                                at(-4.35, 0.2), at(-5.3, 0.2), at(-5.4, 0.6), at(-5.55, 0.6)],
                        density=1.0, friction=0.8, restitution=0.0)
    for i, color in enumerate((VERMILION, PLUM)):
        scene.circle(color, at(-4.62 - 0.46 * i, 0.45), 0.22, density=4.0, friction=0.8, restitution=0.1)

    # The winch: a wheel that a motor turns, with the spring on its rim.
    axle, crank = (-3.9, 1.4), 0.9
    winch = scene.circle(VERMILION, axle, crank + 0.2, density=8.0, collideSet=GHOST)
    block = scene.polygon(SAND, [(axle[0] - 0.7, 0.0), (axle[0] + 0.7, 0.0), (axle[0] + 0.2, axle[1] + 0.2),
                                 (axle[0] - 0.2, axle[1] + 0.2)], collideSet=GHOST)

    # What the load is thrown at.
    for column, height in ((8.0, 3), (9.2, 5), (10.4, 4)):
        for row in range(height):
            scene.box(TOYS[(row + int(column)) % 5], (column, 0.45 + 0.9 * row), (0.9, 0.9), density=0.3,
                      friction=0.6, restitution=0.0)

    for part in (latch, post, stop, block):
        scene.weld(part, WORLD, part.pos, 0.35)
    scene.weld(cup, arm, at(-4.85, 0.14), 0.2)
    scene.hinge(arm, WORLD, pivot, 0.4)
    scene.hinge(arm, latch, hold, 0.35, impulseLimit=0.8)
    scene.hinge(winch, WORLD, axle, 0.4, motor=True, motorSpeed=0.5)
    scene.spring(arm, at(1.9, 0.0), winch, (axle[0], axle[1] + crank), 0.4, length=0.9,
                 strengthFactor=0.22, dampingFactor=0.02)
    scene.write(path)


# The dam.


def dam(path):
    scene = Scene(
        "Dam break",
        "5,000 drops of water, and some things that float on them. Throw in more.",
        (0.0, 3.6),
        46.0,
        **calm(2.0),
    )
    left, right, beach = -9.6, 9.6, 3.0
    scene.plane(SAND, (beach, 0.0), math.radians(22), friction=0.1)
    scene.plane(SAND, (0.0, 0.0), 0.0, friction=0.3)
    for x, side in ((left, -1), (right, 1)):
        scene.plane(SEA, (x, 0.0), side * math.pi / 2, friction=0.1, restitution=0.0)

    ark = scene.polygon(
        VERMILION,
        [(-1.4, 0.9), (-1.0, 0.05), (1.0, 0.05), (1.4, 0.9), (1.2, 0.9), (0.88, 0.22), (-0.88, 0.22),
         (-1.2, 0.9)],
        density=0.35, friction=0.3, restitution=0.0)
    cabin = scene.box(AMBER, (-0.2, 0.62), (0.8, 0.8), density=0.15, friction=0.3, restitution=0.0)
    scene.circle(PLUM, (3.0, 0.41), 0.4, density=0.3, friction=0.1, restitution=0.0)
    # Upon the water.
    for color, x, size in ((AMBER, -8.4, 0.7), (LEAF, -6.2, 0.9), (VERMILION, -4.2, 0.6)):
        scene.box(color, (x, 6.1 + size / 2), (size, size), density=0.3, friction=0.1, restitution=0.0)
    scene.circle(SAND, (-7.4, 6.5), 0.35, density=0.3, friction=0.1, restitution=0.0)
    scene.weld(cabin, ark, (-0.2, 0.22), 0.2)
    scene.water(drops(left + 0.05, 0.05, -3.0, 9.0, 0.094)[:5000])
    scene.write(path)
