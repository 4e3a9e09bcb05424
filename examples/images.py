"""The palette in five formats, and the texture images in both forms of the texture file."""
import colorsys
import struct

SIZE = 64
IMAGE_LUMP = {2: 68, 7: 4}  # lump type of an image with four sizes, by the file's version


def make_palette():
    """256 colours: 16 ramps of 16, grey first, from dark to light."""
    colours = []
    for ramp in range(16):
        for step in range(16):
            value = (step + 1) / 16
            if ramp == 0:
                rgb = (value, value, value)
            else:
                rgb = colorsys.hsv_to_rgb((ramp - 1) / 15, 0.55, value)
            colours.append(tuple(round(255 * c) for c in rgb))
    return colours


def write_palettes(out, palette):
    raw = bytes(c for rgb in palette for c in rgb)
    (out / "palette.raw").write_bytes(raw)
    (out / "palette.lmp").write_bytes(raw)
    (out / "palette.pcx").write_bytes(pcx(raw))
    (out / "palette.bmp").write_bytes(bmp(palette))
    (out / "palette.lbm").write_bytes(lbm(raw))


def pcx(raw):
    """A 16 x 16 image, one pixel a colour."""
    head = struct.pack("<BBBBHHHHHH48xBBHH58x", 10, 5, 1, 8, 0, 0, 15, 15, 72, 72, 0, 1, 16, 1)
    body = bytearray()
    for index in range(256):
        body += bytes([0xC1, index])  # runs of one keep values above 191 apart from counts
    return head + bytes(body) + b"\x0c" + raw


def bmp(palette):
    table = b"".join(bytes([b, g, r, 0]) for r, g, b in palette)
    pixels = bytes(range(256))
    offset = 14 + 40 + len(table)
    head = struct.pack("<2sIHHI", b"BM", offset + len(pixels), 0, 0, offset)
    info = struct.pack("<IiiHHIIiiII", 40, 16, 16, 1, 8, 0, len(pixels), 2835, 2835, 256, 256)
    return head + info + table + pixels


def lbm(raw):
    def chunk(tag, data):
        return tag + struct.pack(">I", len(data)) + data + b"\0" * (len(data) % 2)

    head = struct.pack(">HHhhBBBBHBBhh", 16, 16, 0, 0, 8, 0, 0, 0, 0, 1, 1, 16, 16)
    note = chunk(b"NAME", b"k2k")  # of odd length: a reader must skip the padding
    body = b"PBM " + chunk(b"BMHD", head) + note + chunk(b"CMAP", raw) + chunk(b"BODY", bytes(range(256)))
    return b"FORM" + struct.pack(">I", len(body)) + body


def noise(x, y, seed):
    value = (x * 374761393 + y * 668265263 + seed * 2246822519) & 0xFFFFFFFF
    value = ((value ^ (value >> 13)) * 1274126177) & 0xFFFFFFFF
    return (value ^ (value >> 16)) / 0x100000000


def shade(ramp, value):
    return ramp * 16 + max(0, min(15, int(value * 16)))


def brick(x, y):
    row = y // 16
    joint = y % 16 == 0 or (x + (row % 2) * 16) % 32 == 0
    return shade(0, 0.35) if joint else shade(1, 0.5 + 0.25 * noise(x, y, 1) + 0.1 * noise(x // 32, row, 2))


def plain(ramp, light, seed):
    return lambda x, y: shade(ramp, light + 0.18 * (noise(x, y, seed) - 0.5))


def tiles(x, y):
    if x % 32 == 0 or y % 32 == 0: return shade(0, 0.3)
    return shade(0, 0.6 + 0.1 * noise(x, y, 5)) if (x // 32 + y // 32) % 2 else shade(10, 0.55 + 0.1 * noise(x, y, 6))


def wood(x, y):
    return shade(2, 0.25 if x % 16 == 0 else 0.45 + 0.12 * noise(x // 2, y // 16, 7))


def sky(x, y):
    return shade(10, 0.85 + 0.1 * noise(x // 8, y // 4, 8))


def water(x, y):
    return shade(9, 0.5 + 0.2 * noise((x + y) // 6, (x - y) // 6, 9))


PATTERNS = {
    "BRICK": brick, "TILES": tiles, "WOOD": wood, "SKY1": sky, "*WATER": water,
    "PLASTER": plain(3, 0.8, 11), "STONE": plain(0, 0.55, 12), "GRASS": plain(5, 0.45, 13), "ROOF": plain(15, 0.5, 14),
    "LAMP_OUT": plain(3, 0.95, 15), "CLIP": plain(12, 0.5, 16),
}


def make_textures(palette):
    """Name, and an image of four sizes: 40 bytes of head, then the pixels of each size."""
    lumps = []
    for name, pattern in PATTERNS.items():
        sizes = [SIZE >> level for level in range(4)]
        pixels = [bytes(pattern(x << level, y << level) for y in range(size) for x in range(size))
                  for level, size in enumerate(sizes)]
        offsets, position = [], 40
        for data in pixels:
            offsets.append(position)
            position += len(data)
        head = struct.pack("<16sII4I", name.encode(), SIZE, SIZE, *offsets)
        lumps.append((name, head + b"".join(pixels)))
    return lumps


def write_wad(path, lumps, version):
    data, directory = bytearray(12), bytearray()
    for name, lump in lumps:
        directory += struct.pack("<iiibxxx16s", len(data), len(lump), len(lump), IMAGE_LUMP[version], name.lower().encode())
        data += lump
    struct.pack_into("<3s1sii", data, 0, b"WAD", str(version).encode(), len(lumps), len(data))
    path.write_bytes(bytes(data + directory))
