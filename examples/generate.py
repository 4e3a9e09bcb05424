#!/usr/bin/env python3
"""Make the example levels: texture files, a palette in every format, and maps in every dialect.

  generate.py OUTDIR                       everything except the large grids
  generate.py OUTDIR --grid 4000           a grid of rooms of about 4,000 blocks (grid4000.$$M)

The levels are made of a few shapes (box, prism, plate with holes), kept as convex point sets, and written out in the
dialects 5.0, 5.1 and 7.1 by the writers in maps.py. Everything is made from numbers in these files; two runs give the
same bytes.
"""
import argparse
import pathlib
import shutil

import concave
import images
import levels
import maps

HERE = pathlib.Path(__file__).resolve().parent


def write_textures(out):
    palette = images.make_palette()
    images.write_palettes(out, palette)
    textures = images.make_textures(palette)
    images.write_wad(out / "textures.$$w", textures, version=2)
    images.write_wad(out / "textures7.$$w", textures, version=7)


def write_level(out, name, level, dialects):
    for dialect in dialects:
        folder = out / dialect
        folder.mkdir(exist_ok=True)
        for path in out.glob("*.$$w"):
            shutil.copyfile(path, folder / path.name)
        text = maps.write(level, dialect)
        (folder / f"{name}.$$M").write_text(text, encoding="ascii")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("out", type=pathlib.Path)
    parser.add_argument("--grid", type=int, action="append", default=[], metavar="BLOCKS")
    args = parser.parse_args()
    args.out.mkdir(parents=True, exist_ok=True)
    write_textures(args.out)
    if args.grid:
        for blocks in args.grid:
            write_level(args.out, f"grid{blocks}", levels.grid(blocks), ["71"])
        return
    shutil.copyfile(HERE / "room.$$M", args.out / "room.$$M")
    write_level(args.out, "house", levels.house(), ["50", "51", "71"])
    write_level(args.out, "court", levels.court(), ["50", "51", "71"])
    write_level(args.out, "grid200", levels.grid(200), ["50", "51", "71"])
    for name, level in concave.everything().items():
        write_level(args.out, name, level, ["71"])


if __name__ == "__main__":
    main()
