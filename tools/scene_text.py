"""Writes scene files: the text is that of Quib's own writer, to the byte."""

import math
import struct

AMBER = (0xF2, 0xA3, 0x3C)
VERMILION = (0xE4, 0x57, 0x2E)
SEA = (0x2E, 0x86, 0xAB)
LEAF = (0x6B, 0xBF, 0x59)
SAND = (0xF6, 0xE7, 0xCB)
PLUM = (0x5B, 0x4B, 0x8A)
STEEL = (0xC8, 0xC8, 0xD0)
TOYS = [AMBER, VERMILION, SEA, SAND, PLUM]


def f32(x):
    return struct.unpack("f", struct.pack("f", x))[0]


def next_f32(x, direction):
    bits = struct.unpack("i", struct.pack("f", x))[0]
    return struct.unpack("f", struct.pack("i", bits + (direction if x > 0 else -direction)))[0] if x else x


def number(x):
    """A float as the language prints it."""
    text = "%.16g" % f32(x)
    return text if "." in text else text + ".0"


def code(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, int):
        return str(value)
    if isinstance(value, float):
        return number(value)
    if isinstance(value, str):
        return '"' + value.replace("\n", "\\n").replace('"', '\\"') + '"'
    return "[" + ", ".join(code(v) for v in value) + "]"


def bucket(key):
    """Where the key stands in the writer's hash table, which is the order of a block."""
    h = 0
    for c in key.encode():
        h = (c + (h << 6) + (h << 16) - h) & 0xFFFFFFFF
    return h % 23


def block(values):
    if len(values) == 1:
        return "({%s = %s})" % next((key, code(value)) for key, value in values.items())
    lines = ["    %s = %s" % (key, code(values[key])) for key in sorted(values, key=bucket)]
    return "({\n" + ";\n".join(lines) + "\n})"


def kept_angle(angle):
    """The angle that the writer tells of a rotation by this one; several may have its sine and cosine."""
    rotation = lambda a: (f32(math.cos(a)), f32(math.sin(a)))
    angle = f32(angle)
    for _ in range(2):
        wanted = rotation(angle)
        angle = below = above = f32(math.atan2(wanted[1], wanted[0]))
        for _ in range(4):
            for a in (below, above):
                if rotation(a) == wanted:
                    return a + 0.0
            below, above = next_f32(below, -1), next_f32(above, 1)
    return angle


# What is not written, because it goes without saying.
DEFAULTS = {
    "airFrictionMult": 1.0,
    "collideSet": 1,
    "collideWater": True,
    "density": 2.0,
    "friction": 0.5,
    "restitution": 0.5,
    "motor": False,
    "ccw": False,
    "motorTorque": 100.0,
    "strengthFactor": 0.05,
    "dampingFactor": 0.1,
}


def take_attributes(values, names):
    """Takes those of the names out of the values, and gives back what is not a default."""
    taken = {name: values.pop(name) for name in names if name in values}
    return {name: value for name, value in taken.items() if value != DEFAULTS.get(name)}


class Part:
    """A geometry of a scene, for joints to be fastened to."""

    def __init__(self, geom, pos, angle):
        self.geom = geom
        self.pos = pos
        self.angle = angle

    def local(self, point):
        """A point of the world in the geometry's own frame."""
        dx, dy = point[0] - self.pos[0], point[1] - self.pos[1]
        c, s = math.cos(self.angle), math.sin(self.angle)
        return (c * dx + s * dy, c * dy - s * dx)


WORLD = Part(0, (0.0, 0.0), 0.0)


class Scene:
    def __init__(self, title, description, pan, zoom, **settings):
        """Settings are those of Sim, by name."""
        self.statements = [
            "FileInfo.title = " + code(title),
            "FileInfo.author = " + code("The Quib team"),
            "FileInfo.description = " + code(description),
            "FileInfo.version = 2",
        ]
        sim = {
            "gravity": (0.0, -9.8),
            "gravitySwitch": True,
            "airSwitch": True,
            "airFrictionLinear": 0.01,
            "airFrictionQuadratic": 0.0,
            "rotFrictionLinear": 0.01,
            "airDensity": 0.01,
            "timeFactor": 1.0,
        }
        unknown = set(settings) - set(sim)
        if unknown:
            raise ValueError("scene files have no setting " + ", ".join(sorted(unknown)))
        sim.update(settings)
        all_settings = [("Sim." + name, value) for name, value in sim.items()] + [
            ("App.borders", True),
            ("App.waterColor", (0.1, 0.1, 1.0, 0.7)),
            ("Scene.Camera.pan", pan),
            ("Scene.Camera.zoom", zoom),
            ("App.Background.cloudOpacity", 0.9),
            ("App.Background.drawClouds", True),
            ("App.Background.skyColor", (0.3, 0.4, 1.0, 1.0)),
            ("App.fadeColor", (0.0, 0.0, 0.0)),
        ]
        self.statements += ["%s = %s" % (name, code(value)) for name, value in all_settings]
        self.count = 0
        self.geoms = 0
        self.chains = 0
        self.drops = []

    def entity(self, command, color, first, last, chain=None):
        """One statement. The order in which the keys come counts where two share a bucket."""
        entity = dict(first)
        self.count += 1
        entity["color"] = tuple(c / 255 for c in color) + (1.0,)
        entity["entityID"] = self.count
        entity["zDepth"] = float(self.count - 1)
        entity.update(last)
        if chain:
            entity["chain"], entity["chainNr"] = chain
        self.statements.append("Scene." + command + block(entity))

    def add(self, command, color, pos, angle=0.0, chain=None, **values):
        if self.geoms != self.count:
            raise ValueError("geometries come before joints")
        attributes = ("airFrictionMult", "collideSet", "collideWater", "density", "friction", "restitution")
        first = take_attributes(values, attributes)
        pos = (float(pos[0]), float(pos[1]))
        angle = kept_angle(angle)
        self.geoms += 1
        last = {"geomID": self.geoms, "pos": pos, "angle": angle}
        last.update(values)
        self.entity(command, color, first, last, chain)
        return Part(self.geoms, pos, angle)

    def plane(self, color, point, angle, **values):
        """Solid below the line through the point; angle 0 is level ground."""
        return self.add("addPlane", color, point, angle + math.pi / 2, **values)

    def box(self, color, pos, size, angle=0.0, **values):
        return self.add("addBox", color, pos, angle, size=size, **values)

    def bar(self, color, p0, p1, width, **values):
        """A box from point to point."""
        dx, dy = p1[0] - p0[0], p1[1] - p0[1]
        middle = ((p0[0] + p1[0]) / 2, (p0[1] + p1[1]) / 2)
        size = (math.hypot(dx, dy), width)
        return self.box(color, middle, size, math.atan2(dy, dx), **values)

    def circle(self, color, pos, radius, **values):
        return self.add("addCircle", color, pos, 0.0, radius=radius, **values)

    def polygon(self, color, points, pos=None, angle=0.0, **values):
        """Points in any place and direction; pos is where their centroid goes, if not where it is."""
        points = counter_clockwise(points)
        cx, cy = centroid(points)
        local = [(f32(x - cx), f32(y - cy)) for x, y in points]
        return self.add("addPolygon", color, pos or (cx, cy), angle, vecs=local, **values)

    def joint(self, command, color, size, ends, points, **values):
        attributes = ("motor", "ccw", "motorSpeed", "motorTorque", "impulseLimit", "distanceLimit",
                      "strengthFactor", "dampingFactor")
        first = {}
        for i, (part, point) in enumerate(zip(ends, points)):
            first["geom%d" % i] = part.geom
            first["geom%dpos" % i] = part.local(point)
        first.update(take_attributes(values, attributes))
        last = {"size": size}
        chain = values.pop("chain", None)
        last.update(values)
        self.entity(command, color, first, last, chain)

    def hinge(self, part, other, point, size=0.2, **values):
        self.joint("addHinge", STEEL, size, (part, other), (point, point), **values)

    def weld(self, part, other, point, size=0.3):
        self.joint("addFixjoint", STEEL, size, (part, other), (point, point))

    def spring(self, part, p0, other, p1, size=0.3, **values):
        """At rest at the length that it has now, unless told another one."""
        values.setdefault("length", math.hypot(p1[0] - p0[0], p1[1] - p0[1]))
        self.joint("addSpring", STEEL, size, (part, other), (p0, p1), **values)

    def chain(self):
        """The id of a new chain."""
        self.chains += 1
        return self.chains

    def water(self, points):
        self.drops += points

    def write(self, path):
        last = []
        if self.drops:
            last.append("Scene.addWater" + block({"vecs": self.drops}))
        last.append("Scene.addGroup" + block({"name": "selected", "entityIDs": []}))
        text = "// Quib scene created by Quib beta 4.0\n\n"
        text += ";\n".join(self.statements + last)
        with open(path, "w") as file:
            file.write(text)
        water = ", %d drops of water" % len(self.drops) if self.drops else ""
        print("%s: %d entities%s" % (path, self.count, water))


def area2(points):
    return sum(
        x0 * y1 - x1 * y0 for (x0, y0), (x1, y1) in zip(points, points[1:] + points[:1])
    )


def counter_clockwise(points):
    return points if area2(points) > 0 else points[::-1]


def centroid(points):
    a = area2(points)
    cx = cy = 0
    for (x0, y0), (x1, y1) in zip(points, points[1:] + points[:1]):
        cross = x0 * y1 - x1 * y0
        cx += (x0 + x1) * cross
        cy += (y0 + y1) * cross
    return cx / (3 * a), cy / (3 * a)


def arc(center, radius, start, end, steps):
    """Points on a circle, angles in degrees, both ends included."""
    return [
        (
            center[0] + radius * math.cos(math.radians(start + (end - start) * i / steps)),
            center[1] + radius * math.sin(math.radians(start + (end - start) * i / steps)),
        )
        for i in range(steps + 1)
    ]


def star(radius, points, inner=0.5):
    return [
        (r * math.sin(math.pi * i / points), r * math.cos(math.pi * i / points))
        for i, r in ((i, radius * (inner if i % 2 else 1)) for i in range(2 * points))
    ]


def flower(radius, petals):
    return [
        (r * math.cos(angle), r * math.sin(angle))
        for angle in (2 * math.pi * i / 60 for i in range(60))
        for r in [radius * (1 + 0.18 * math.cos(petals * angle))]
    ]


def crescent(outer, thickness):
    """A bowl, open at the top."""
    return arc((0, 0), outer, 190, 350, 32) + arc((0, 0), outer - thickness, 350, 190, 32)


def drops(x0, y0, x1, y1, spacing):
    """Water at rest: a block from corner to corner, each row shifted by half a drop."""
    points = []
    rows = int((y1 - y0) / (spacing * math.sqrt(0.75)))
    for row in range(rows):
        shift = 0.5 * spacing * (row % 2)
        for i in range(int((x1 - x0 - shift) / spacing)):
            points.append((x0 + shift + spacing * (i + 0.5), y0 + spacing * (0.5 + row * math.sqrt(0.75))))
    return points
