"""Convex blocks as point sets with faces, and the few shapes that the example levels are made of."""
from dataclasses import dataclass, field


@dataclass
class Face:
    ring: list  # corner numbers, clockwise as seen from outside
    texture: str = "BRICK"
    flags: int = 0  # texture flags of the face's tail, 0 for none
    axes: tuple = None  # texture axes ((s, t) vectors), None for those of the face's main direction


@dataclass
class Block:
    points: list
    faces: list
    flags: int = 0  # block flags: 2 passable, 4 invisible, 16 detail, 32 mesh
    material: str = "ndef"


@dataclass
class Level:
    wad: str = "textures.$$w"
    palette: str = "palette.raw"
    blocks: list = field(default_factory=list)
    entities: list = field(default_factory=list)  # lists of text lines, the type number first


def subtract(a, b):
    return tuple(x - y for x, y in zip(a, b))


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def normal_of(points):
    """Outward normal (not normalised) of a ring that runs clockwise as seen from outside."""
    return cross(subtract(points[0], points[1]), subtract(points[2], points[1]))


def box(x0, y0, z0, x1, y1, z1, texture="BRICK", flags=0, face_flags=0, **sides):
    """An axis-aligned block. sides: texture by side, of top, bottom, north, south, east, west."""
    points = [(x, y, z) for z in (z0, z1) for y in (y0, y1) for x in (x0, x1)]
    rings = {
        "bottom": [0, 1, 3, 2],
        "top": [4, 6, 7, 5],
        "south": [0, 4, 5, 1],
        "north": [2, 3, 7, 6],
        "west": [0, 2, 6, 4],
        "east": [1, 5, 7, 3],
    }
    faces = [Face(ring, sides.get(side, texture), face_flags) for side, ring in rings.items()]
    return Block(points, faces, flags)


def prism(outline, z0, z1, texture="STONE", flags=0, side_flags=0, cap="STONE"):
    """A block over a convex outline that runs counter-clockwise as seen from above."""
    n = len(outline)
    points = [(x, y, z0) for x, y in outline] + [(x, y, z1) for x, y in outline]
    faces = [Face(list(range(n)), cap), Face(list(range(2 * n - 1, n - 1, -1)), cap)]
    for i in range(n):
        j = (i + 1) % n
        faces.append(Face([i, i + n, j + n, j], texture, side_flags))
    return Block(points, faces, flags)


def octagon(x, y, radius, corner):
    """Whole-number corners of an eight-sided column: radius to the sides, corner along them."""
    r, c = radius, corner
    return [(x + r, y - c), (x + r, y + c), (x + c, y + r), (x - c, y + r),
            (x - r, y + c), (x - r, y - c), (x - c, y - r), (x + c, y - r)]


def plate(axis, x0, y0, z0, x1, y1, z1, holes, texture="BRICK", **kw):
    """A flat box with rectangular holes through it along axis 0, 1 or 2, as a list of boxes. A hole is (u0, v0, u1, v1)
    in the two other axes, in their order."""
    low, high = [x0, y0, z0], [x1, y1, z1]
    u, v = [a for a in range(3) if a != axis]
    cuts = sorted({low[v], high[v], *(h[1] for h in holes), *(h[3] for h in holes)})
    cuts = [c for c in cuts if low[v] <= c <= high[v]]
    out = []
    for v0, v1 in zip(cuts, cuts[1:]):
        start = low[u]
        for hole in sorted(h for h in holes if h[1] <= v0 and v1 <= h[3]):
            if hole[0] > start:
                out.append((start, v0, hole[0], v1))
            start = max(start, hole[2])
        if start < high[u]:
            out.append((start, v0, high[u], v1))
    blocks = []
    for u0, v0, u1, v1 in out:
        a, b = list(low), list(high)
        a[u], a[v], b[u], b[v] = u0, v0, u1, v1
        blocks.append(box(*a, *b, texture=texture, **kw))
    return blocks
