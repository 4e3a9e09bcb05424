#!/usr/bin/env python3
"""Make the seeds of the fuzz targets' corpora from the shapes and formats of the examples.

  make_seeds.py K2K [OUTDIR]     K2K is the compiler, which makes the levels and portal files; OUTDIR is fuzz/corpus

Seeds are written as seed-NAME; findings of the fuzzers stand beside them under names of their own, and stay.
"""
import argparse
import pathlib
import struct
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "examples"))

import concave  # noqa: E402
import images  # noqa: E402
import maps  # noqa: E402
from levels import extended, light, model, path, shell, sound, start, sun  # noqa: E402
from shapes import Level, box, octagon, plate, prism  # noqa: E402

PASSABLE, INVISIBLE, DETAIL, MESH = 2, 4, 16, 32
PHONG = 0x4000


def room(lights=True):
    """A closed room that stays within 99 units of the origin."""
    level = Level()
    level.blocks += shell(-40, -40, -32, 40, 40, 32, "BRICK", "TILES", thick=8)
    level.entities += [start(0, 0, 0, 90)]
    if lights: level.entities += [light(0, 0, 20, 90, 80, 70, 90, "00000001"), sun(45, 60)]
    return level


def two_rooms(lights=True):
    """A wall with a door and a window between two rooms."""
    level = room(lights)
    level.blocks += plate(0, -4, -40, -32, 4, 40, 32, [(-12, -32, 12, 8), (20, -8, 32, 16)], "PLASTER")
    return level


def furnished(lights=True):
    """A room with one of everything: detail, water, sky, a prism, what cannot be seen, and each kind of entity."""
    level = room(lights)
    level.blocks += [
        box(-20, -20, -32, -8, -8, -20, "WOOD", DETAIL),
        box(8, -30, -32, 30, -8, -24, "*WATER", PASSABLE),
        box(-40, -40, 24, 40, 40, 32, "SKY1"),
        prism(octagon(16, 16, 8, 3), -32, 8, "STONE", 0, PHONG),
        box(-30, 10, -32, -20, 30, -10, "CLIP", INVISIBLE),
        box(-4, -4, 10, 4, 4, 14, "LAMP_OUT"),
    ]
    if lights: level.entities.append(light(-20, 20, 10, 40, 50, 60, 0))
    level.entities += [
        model(0, 10, -20, "door.mdl", "door", "swing", "00000010"),
        extended(10, 0, -20, "stove.mdl", "stove"),
        sound(5, 5, 5, "water.wav", 60),
        path("walk", [(0, 0, 0), (10, 0, 0), (10, 10, 0)]),
    ]
    return level


def leaking():
    level = room()
    del level.blocks[2]
    return level


def one_block(block):
    level = Level()
    level.blocks.append(block)
    return level


def small_wad(version, names=("BRICK", "*WATER")):
    lump = struct.pack("<16sII4I", b"", 8, 8, 40, 104, 120, 124) + bytes(range(85))
    lumps = [(name, lump) for name in names]
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "wad"
        images.write_wad(file, lumps, version)
        return file.read_bytes()


class Corpus:
    def __init__(self, out):
        self.out = out

    def add(self, target, name, data):
        folder = self.out / target
        folder.mkdir(parents=True, exist_ok=True)
        (folder / f"seed-{name}").write_bytes(data if isinstance(data, bytes) else data.encode("latin-1"))


def add_commands(corpus):
    for name, text in {
        "plain": "level -pal game.pcx",
        "blanks": 'my map.$$M -pal "my palette.bmp" -verbose',
        "modes": "level -pal p -lightsonly -entsonly -mesh -nobsp -litv2",
        "numbers": "l -pal p -threads 4 -bound 1e4 -eps 0.01 -zoomlevel 2 -jitter -3 -sizeshaded 15 -litmax 300",
        "triples": "l -pal p -fat 64 48 8 -narrow 32 32 0 -sunrgb 10 20 30 -fog1 1 2 3 -fog4 9 9 9 -sethulls 2 1 0",
        "ranges": "l -pal p -r 0,256 -r 12,3 -r 255,1",
        "quotes": 'l -pal p "-light rgb" "-shade hsv" ""',
        "dialog": "level -pal p -dialog -writelog",
        "unknown": "level -pal p -unknown",
        "missing": "level -pal",
        "open-quote": 'level -pal "p',
        "comment": "level -pal p // rest\n -quiet",
        "names": "l -pal p -colormap c -mixtab m -outpal o.pal -colormap d",
    }.items():
        corpus.add("command", name, text)


def add_settings(corpus):
    section = "[Map Compiler]\nCommandline="
    for name, text in {
        "plain": section + "-mesh -solidsky -quiet\n",
        "quoted": section + '"level -pal game.pcx"\n',
        "others": "; of another\n[Editor]\nGrid=8\n" + section + "-litv2 -gamma 2\n[Last]\nx=y\n",
        "windows": section.replace("\n", "\r\n") + "-nh -sethulls 0 1 2\r\n",
        "no-key": "[Map Compiler]\n",
        "no-section": "Commandline=-mesh\n",
        "sliders": section + "-litres 0.5 -litcomp 1 -litscale 6 -radsubdiv 255 -sizeshaded 996 -lmambient 100\n",
        "empty": "",
    }.items():
        corpus.add("settings", name, text)


def add_maps(corpus):
    levels = {"box": one_block(box(0, 0, 0, 64, 64, 64)), "room": room(), "furnished": furnished()}
    for dialect in ("50", "51", "71"):
        for name, level in levels.items():
            corpus.add(f"map{dialect}", name, maps.write(level, dialect))
    blocks = [block for level in concave.everything().values() for block in level.blocks if block.flags & MESH]
    corpus.add("map71", "concave", maps.write(one_block(min(blocks, key=lambda block: len(block.points))), "71"))
    plain = maps.write(levels["box"], "51").replace("version 511", "version 510")
    for vector in ("( 1 0 0 0 ) ( 0 -1 0 0 )", "( 1 0 0 0 ) ( 0 0 -1 0 )", "( 0 1 0 0 ) ( 0 0 -1 0 )"):
        plain = plain.replace(vector, "0 0 45 1 0.5")
    corpus.add("map51", "plain-mapping", plain)
    box71 = maps.write(levels["box"], "71")
    corpus.add("map71", "pairs", box71.replace("BRICK (", "BRICK [ 0 0 1 0 1 1 0 1 ] ("))
    corpus.add("map71", "material", box71.replace("{ 00000000 ndef", "{ 00010110 stone"))
    box50 = maps.write(levels["box"], "50")
    corpus.add("map50", "tails", box50.replace("BRICK 0 0 0 1 1", "SKY1 8 -8 45 0.5 0 : 1010 20 50 0 1 2 11"))
    corpus.add("map50", "halves", box50.replace("64", "64.5").replace(" 0 ", " 0.4 "))


def add_textures(corpus):
    for version in (2, 7):
        corpus.add("textures", f"version-{version}", small_wad(version))
    corpus.add("textures", "none", b"WAD2" + struct.pack("<ii", 0, 12))
    corpus.add("textures", "names", small_wad(2, ("brick", "sixteen-letters-", "", "\u00e4\u00f6")[:3]))
    corpus.add("textures", "cut", small_wad(7)[:-20])


def add_palettes(corpus):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        images.write_palettes(folder, images.make_palette())
        for file in folder.iterdir():
            target = "palette_" + file.suffix[1:]
            corpus.add(target, "whole", file.read_bytes())
            corpus.add(target, "cut", file.read_bytes()[:100])


class Builder:
    """A folder in which levels are built."""

    def __init__(self, k2k, folder):
        self.k2k = k2k
        self.folder = pathlib.Path(folder)
        (self.folder / "textures.$$w").write_bytes(small_wad(2))
        (self.folder / "palette.raw").write_bytes(bytes(i % 251 for i in range(768)))

    def run(self, level, *options):
        (self.folder / "level.$$M").write_text(maps.write(level, "71"), encoding="ascii")
        command = [self.k2k, "level", "-pal", "palette.raw", "-threads", "1", *options]
        subprocess.run(command, cwd=self.folder, check=True, stdout=subprocess.DEVNULL)

    def level(self, make, *options):
        """Lights come last, so that the level is one that waits for its lighting."""
        (self.folder / "level.klv").unlink(missing_ok=True)
        self.run(make(lights=False), *options)
        self.run(make(), "-entsonly", *options)
        return (self.folder / "level.klv").read_bytes()

    def portals(self, make):
        self.run(make(), "-keepportal")
        return (self.folder / "level.$$p").read_bytes()


def add_built(corpus, builder):
    for target in ("level", "level_light"):
        corpus.add(target, "room", builder.level(room))
        corpus.add(target, "furnished", builder.level(furnished))
        corpus.add(target, "mesh", builder.level(room, "-mesh"))
        corpus.add(target, "mesh-alone", builder.level(furnished, "-mesh", "-nobsp"))
        corpus.add(target, "version-5", builder.level(room, "-nod3dlmaps"))
    corpus.add("level", "two-rooms", builder.level(two_rooms))
    for make in (room, two_rooms, furnished):
        corpus.add("portals", make.__name__.replace("_", "-"), builder.portals(make))


def add_builds(corpus):
    for name, letters, level, dialect in [
        ("room-50", "", room(), "50"),
        ("two-rooms-51", "sv", two_rooms(), "51"),
        ("two-rooms-zoomed", "zk", two_rooms(), "71"),
        ("furnished-71", "so", furnished(), "71"),
        ("furnished-merged", "ach", furnished(), "71"),
        ("mesh", "mt", furnished(), "71"),
        ("mesh-alone", "mbg", furnished(), "71"),
        ("radiosity", "r", two_rooms(), "71"),
        ("leaking", "w", leaking(), "71"),
        ("preview", "pundf", furnished(), "71"),
    ]:
        head = f"//{letters}\n" if letters else ""
        corpus.add("build", name, head + maps.write(level, dialect))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("k2k", type=pathlib.Path)
    parser.add_argument("out", type=pathlib.Path, nargs="?", default=HERE / "corpus")
    args = parser.parse_args()
    corpus = Corpus(args.out)
    add_commands(corpus)
    add_settings(corpus)
    add_maps(corpus)
    add_textures(corpus)
    add_palettes(corpus)
    add_builds(corpus)
    with tempfile.TemporaryDirectory() as folder:
        add_built(corpus, Builder(args.k2k.resolve(), folder))


if __name__ == "__main__":
    main()
