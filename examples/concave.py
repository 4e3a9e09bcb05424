"""Levels with blocks that are not convex: an arch, a vase, a patch of terrain, a ribbon, a gear."""
import math

import levels
from shapes import Block, Face, Level

CONCAVE = 32
MOST_CORNERS = 40  # of a side


def extrusion(outline, y0, y1, texture, cap):
    """A block over an outline in x and z, counter-clockwise as seen from the south, from y0 to y1."""
    n = len(outline)
    points = [(x, y0, z) for x, z in outline] + [(x, y1, z) for x, z in outline]
    faces = [Face(list(range(n - 1, -1, -1)), cap), Face(list(range(n, 2 * n)), cap)]
    for i in range(n):
        j = (i + 1) % n
        faces.append(Face([i, j, j + n, i + n], texture))
    return Block(points, faces, CONCAVE)


def arch(x, y, width, height, steps=12):
    """A wall with a round opening."""
    radius = width * 3 / 8
    spring = height / 2
    outline = [(x + width / 2, 0), (x + width / 2, height), (x - width / 2, height), (x - width / 2, 0)]
    opening = [(x - radius, 0)]
    for i in range(steps + 1):
        angle = math.pi * (1 - i / steps)
        opening.append((x + radius * math.cos(angle), spring + radius * math.sin(angle)))
    opening.append((x + radius, 0))
    return extrusion(outline + opening, y, y + 32, "STONE", "BRICK")


def ribbon(x, y, z, size):
    """An hourglass on its side in one stroke: its sides cross in the middle, and its left end has a notch."""
    outline = [(-size, -size), (size, size), (size, -size), (-size, size), (-size / 2, 0)]
    return extrusion([(x + u, z + v) for u, v in outline], y, y + 16, "WOOD", "PLASTER")


def gear(x, y, z, radius, corners):
    """A wheel with a tooth for every two corners; an odd corner makes one flank broken."""
    outline = []
    for i in range(corners):
        angle = 2 * math.pi * i / corners
        reach = radius if i % 2 == 0 else radius * 0.7
        outline.append((x + reach * math.cos(angle), z + reach * math.sin(angle)))
    return extrusion(outline, y, y + 16, "WOOD", "STONE")


PROFILE = [(20, 0), (36, 16), (40, 40), (24, 72), (16, 88), (28, 104), (24, 104), (12, 88), (20, 72), (34, 40), (16, 8)]


def vase(x, y, z, segments=12):
    """A body of revolution: up the outside, over the rim and down the inside."""
    points = []
    for radius, height in PROFILE:
        for i in range(segments):
            angle = 2 * math.pi * i / segments
            points.append((x + radius * math.cos(angle), y + radius * math.sin(angle), z + height))
    faces = [Face(list(range(segments)), "PLASTER")]
    for ring in range(len(PROFILE) - 1):
        for i in range(segments):
            a, b = ring * segments + i, ring * segments + (i + 1) % segments
            faces.append(Face([a, a + segments, b + segments, b], "PLASTER"))
    last = (len(PROFILE) - 1) * segments
    faces.append(Face([last + segments - 1 - i for i in range(segments)], "STONE"))
    return Block(points, faces, CONCAVE)


def terrain(x0, y0, cells, size, base):
    """Hills of cells x cells quads, most of which are not flat, closed by walls and a floor."""
    def height(i, j):
        return base + 48 + round(28 * math.sin(i * 0.45) * math.cos(j * 0.37) + 12 * math.sin(0.9 * i + 0.5 * j))

    row = cells + 1
    points = [(x0 + i * size, y0 + j * size, height(i, j)) for j in range(row) for i in range(row)]
    faces = []
    for j in range(cells):
        for i in range(cells):
            a = j * row + i
            faces.append(Face([a, a + row, a + row + 1, a + 1], "GRASS"))
    edge = ([(i, 0) for i in range(cells)] + [(cells, j) for j in range(cells)] +
            [(cells - i, cells) for i in range(cells)] + [(0, cells - j) for j in range(cells)])
    floor = len(points)
    points += [(x0 + i * size, y0 + j * size, base) for i, j in edge]
    for k, (i, j) in enumerate(edge):
        m = (k + 1) % len(edge)
        top, next_top = j * row + i, edge[m][1] * row + edge[m][0]
        faces.append(Face([floor + k, top, next_top, floor + m], "STONE"))
    corners = [floor + k * cells for k in range(4)]
    faces.append(Face(corners, "STONE"))
    return Block(points, faces, CONCAVE)


def room(blocks, sun=True):
    level = Level()
    level.blocks += levels.shell(-512, -512, 0, 512, 512, 384, "BRICK", "TILES")
    level.blocks += blocks
    level.entities += [
        levels.start(-400, -400, 40, 45),
        levels.light(-200, -200, 300, 255, 240, 200, 700, "00000001"),
        levels.light(250, 200, 250, 160, 190, 255, 600),
        levels.light(-300, 300, 160, 200, 160, 120, 400),
    ]
    if sun: level.entities.append(levels.sun(40, 60))
    return level


def gallery(sun=True):
    """One of each, in a room."""
    return room([arch(-256, -64, 256, 192), ribbon(0, -256, 128, 80), gear(256, -256, 128, 80, MOST_CORNERS),
                 vase(-64, -384, 0), terrain(-64, 0, 32, 16, 0)], sun)


def too_wide():
    return room([gear(0, 0, 128, 80, MOST_CORNERS + 1)])


def everything():
    """Level by name."""
    return {"gallery": gallery(), "nosun": gallery(sun=False), "toowide": too_wide()}
