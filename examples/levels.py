"""The example levels."""
import math

from shapes import Level, box, octagon, plate, prism

PHONG = 0x4000
PASSABLE, INVISIBLE, DETAIL = 2, 4, 16


def light(x, y, z, r, g, b, reach, flags=None):
    return [f"2 {x} {y} {z} 0 0 0 {r} {g} {b} {reach}"] + ([flags] if flags else [])


def start(x, y, z, angle, name="player"):
    return [f"1 {x} {y} {z} {angle} 0 0", name]


def model(x, y, z, file, name, action="ndef", flags="00000000"):
    return [f"3 {x} {y} {z}", "0 0 0", "1 1 1", file, name, action, "0 0 0 0 0 0 0 0", flags]


def extended(x, y, z, file, name):
    return [f"7 {x} {y} {z}", "90 0 0", "1 1 1", file, name, "ndef", " ".join(["0"] * 20), "00000000", "0", "50",
            "0", "0", "ndef", "ndef", "ndef", "ndef"]


def sound(x, y, z, file, volume):
    return [f"4 {x} {y} {z} 0 0 0", file, "00000000", f"{volume} 0 0 0"]


def path(name, points):
    return [f"6 {name}", "0", str(len(points))] + [f"{x} {y} {z}" for x, y, z in points]


def sun(azimuth, elevation):
    return [f"5 {azimuth} {elevation}"]


def shell(x0, y0, z0, x1, y1, z1, wall, floor, thick=16):
    """Six solid boxes around a space."""
    t = thick
    return [
        box(x0 - t, y0 - t, z0 - t, x1 + t, y1 + t, z0, floor),
        box(x0 - t, y0 - t, z1, x1 + t, y1 + t, z1 + t, wall),
        box(x0 - t, y0 - t, z0, x0, y1 + t, z1, wall),
        box(x1, y0 - t, z0, x1 + t, y1 + t, z1, wall),
        box(x0, y0 - t, z0, x1, y0, z1, wall),
        box(x0, y1, z0, x1, y1 + t, z1, wall),
    ]


def sky_lining(x0, y0, x1, y1, low, high, thick=16):
    """Sky blocks inside a shell: a ceiling, and a band along each side from low up."""
    t = thick
    return [
        box(x0, y0, high - t, x1, y1, high, "SKY1"),
        box(x0, y0, low, x0 + t, y1, high - t, "SKY1"),
        box(x1 - t, y0, low, x1, y1, high - t, "SKY1"),
        box(x0 + t, y0, low, x1 - t, y0 + t, high - t, "SKY1"),
        box(x0 + t, y1 - t, low, x1 - t, y1, high - t, "SKY1"),
    ]


def table(x, y, z):
    legs = [box(x + dx, y + dy, z, x + dx + 4, y + dy + 4, z + 24, "WOOD", DETAIL) for dx in (0, 44) for dy in (0, 28)]
    return legs + [box(x - 4, y - 4, z + 24, x + 52, y + 36, z + 28, "WOOD", DETAIL)]


def stairs(x, y, z, steps, rise, run, width):
    """Solid steps that climb along +x."""
    return [box(x + i * run, y, z, x + (i + 1) * run, y + width, z + (i + 1) * rise, "STONE", top="WOOD")
            for i in range(steps)]


def pool(x0, y0, x1, y1, z):
    rim = 8
    return [
        box(x0, y0, z, x1, y0 + rim, z + 24, "STONE"),
        box(x0, y1 - rim, z, x1, y1, z + 24, "STONE"),
        box(x0, y0 + rim, z, x0 + rim, y1 - rim, z + 24, "STONE"),
        box(x1 - rim, y0 + rim, z, x1, y1 - rim, z + 24, "STONE"),
        box(x0 + rim, y0 + rim, z, x1 - rim, y1 - rim, z + 20, "*WATER", PASSABLE),
    ]


def house():
    """A garden under the sky with a house of two storeys in it."""
    level = Level()
    add = level.blocks.extend
    add(shell(-512, -512, 0, 512, 512, 448, "STONE", "GRASS"))
    add(sky_lining(-512, -512, 512, 512, 192, 448))
    # Outer walls of both storeys: a door to the south, windows to the other sides.
    add(plate(1, -256, -160, 0, 256, -144, 272, [(-32, 0, 32, 96), (96, 40, 160, 96), (-160, 184, -96, 240)], "BRICK"))
    add(plate(1, -256, 304, 0, 256, 320, 272, [(-160, 40, -96, 96), (64, 184, 128, 240)], "BRICK"))
    add(plate(0, -256, -144, 0, -240, 304, 272, [(40, 40, 104, 96), (40, 184, 104, 240)], "BRICK"))
    add(plate(0, 240, -144, 0, 256, 304, 272, [(-40, 40, 24, 96), (168, 184, 232, 240)], "BRICK"))
    # Ground floor, the slab with the stairwell, and the roof.
    add(plate(2, -240, -144, 0, 240, 304, 4, [], "TILES"))
    add(plate(2, -240, -144, 128, 240, 304, 144, [(64, 224, 240, 304)], "PLASTER", top="WOOD"))
    add([box(-272, -176, 272, 272, 336, 288, "ROOF")])
    # Inner walls: two doors below, one above.
    add(plate(0, -8, -144, 4, 8, 304, 128, [(-80, 4, -32, 100), (160, 4, 208, 100)], "PLASTER"))
    add(plate(1, -240, 72, 144, 240, 80, 272, [(-24, 144, 24, 240)], "PLASTER"))
    add(stairs(64, 232, 4, 9, 14, 16, 64))
    # Furniture, window bars and lamps are detail: they must not cut the rooms.
    add(table(-160, 0, 4))
    add([box(-130, -158, 184, -126, -146, 240, "WOOD", DETAIL), box(126, -158, 40, 130, -146, 96, "WOOD", DETAIL)])
    add([box(-136, 132, 120, -120, 148, 128, "LAMP_OUT", DETAIL), box(112, 32, 120, 128, 48, 128, "LAMP_OUT", DETAIL)])
    # Round columns in front of the door, shaded smoothly.
    for x in (-72, 72):
        add([prism(octagon(x, -232, 20, 8), 0, 192, "PLASTER", 0, PHONG)])
    add([box(-112, -272, 192, 112, -192, 208, "ROOF")])
    add(pool(288, -400, 448, -240, 0))
    # A hedge that walkers cannot cross: seen by the collision hulls alone.
    add([box(-480, -480, 0, -448, -300, 64, "CLIP", INVISIBLE)])

    level.entities += [
        start(0, -360, 40, 90),
        start(-120, 200, 40, 0, "visitor"),
        light(-128, 140, 104, 200, 190, 160, 340, "00000001"),
        light(120, 40, 104, 200, 200, 200, 300),
        light(0, 180, 230, 220, 200, 150, 380, "00000001"),
        light(0, -60, 230, 160, 180, 220, 320),
        light(0, -300, 150, 255, 220, 170, 420, "00000001"),
        light(368, -320, 90, 90, 140, 255, 300),
        light(-360, 380, 120, 160, 220, 160, 400),
        light(380, 380, 160, 200, 160, 120, 0),
        model(-130, 16, 40, "vase.mdl", "vase"),
        model(0, -152, 4, "door.mdl", "door", "swing", "00000010"),
        extended(160, 120, 4, "stove.mdl", "stove"),
        sound(368, -320, 24, "water.wav", 60),
        path("walk", [(0, -360, 40), (-380, -360, 40), (-380, 400, 40), (380, 400, 40), (380, -160, 40)]),
        sun(325, 55),
    ]
    return level


def court():
    """A sealed court with an arcade of columns: whole-number corners throughout, the same in every dialect."""
    level = Level()
    add = level.blocks.extend
    add(shell(0, 0, 0, 640, 640, 256, "BRICK", "TILES"))
    for i in range(1, 5):
        for x, y in ((i * 128, 96), (i * 128, 544), (96, i * 128), (544, i * 128)):
            add([box(x - 12, y - 12, 0, x + 12, y + 12, 160, "STONE")])
    add(plate(2, 0, 0, 160, 640, 640, 176, [(128, 128, 512, 512)], "PLASTER"))
    add([box(288, 288, 0, 352, 352, 32, "STONE", top="TILES"), box(304, 304, 32, 336, 336, 96, "STONE")])
    level.entities += [
        start(320, 200, 40, 90),
        light(320, 320, 200, 255, 240, 200, 500, "00000001"),
        light(64, 64, 120, 120, 150, 255, 260),
        light(576, 576, 120, 255, 150, 120, 260),
        sun(30, 60),
    ]
    return level


class Sequence:
    """A fixed sequence of numbers that look random (a linear congruential generator)."""

    def __init__(self, seed):
        self.state = seed

    def below(self, limit):
        self.state = (self.state * 1103515245 + 12345) & 0x7FFFFFFF
        return (self.state >> 8) % limit


def grid(blocks):
    """A square of rooms with doors between them: ten blocks a room."""
    level = Level()
    side = max(1, round(math.sqrt(blocks / 10)))
    room, wall, height = 192, 16, 128
    extent = side * room
    # A sun or a path without a position stands at the world's origin: it must lie in a room, or the level leaks there.
    ox, oy, oz = -120, -130, -60
    numbers = Sequence(blocks)
    add = level.blocks.extend
    for row in range(side):
        for column in range(side):
            x, y = column * room, row * room
            add([box(x, y, -wall, x + room, y + room, 0, "TILES"),
                 box(x, y, height, x + room, y + room, height + wall, "PLASTER")])
            add(west_wall(x, y, room, wall, height, column > 0, 40 + 8 * numbers.below(9)))
            add(south_wall(x, y, room, wall, height, row > 0, 40 + 8 * numbers.below(9)))
            px, py = x + 40 + 8 * numbers.below(10), y + 40 + 8 * numbers.below(10)
            add([box(px, py, 0, px + 24, py + 24, 32 + 8 * numbers.below(12), "STONE"),
                 box(x + 144, y + 144, 96, x + 176, y + 176, height, "WOOD")])
            if (row + column) % 2 == 0:
                shade = 120 + 10 * numbers.below(13)
                level.entities.append(light(ox + x + 100, oy + y + 60, oz + 100, shade, 180, 300 - shade, 240))
    add([box(extent, 0, -wall, extent + wall, extent, height + wall, "BRICK"),
         box(0, extent, -wall, extent + wall, extent + wall, height + wall, "BRICK")])
    level.entities += [start(ox + 100, oy + 100, oz + 40, 0), sun(45, 60)]
    for block in level.blocks:
        block.points = [(px + ox, py + oy, pz + oz) for px, py, pz in block.points]
    return level


def west_wall(x, y, room, wall, height, door, at):
    holes = [(y + at, 0, y + at + 48, 96)] if door else []
    return plate(0, x, y, 0, x + wall, y + room, height, holes, "BRICK")


def south_wall(x, y, room, wall, height, door, at):
    holes = [(x + at, 0, x + at + 48, 96)] if door else []
    return plate(1, x + wall, y, 0, x + room, y + wall, height, holes, "BRICK")
