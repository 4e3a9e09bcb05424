#!/usr/bin/env python3
"""Compile the example house, make its page and open it in a headless browser: it draws, and the console stays empty.

  view_in_browser.py K2K KLVTOOL BROWSER EXAMPLES [SCREENSHOT.png]
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--use-gl=angle", "--use-angle=swiftshader",
         "--enable-unsafe-swiftshader", "--disable-background-networking", "--enable-logging=stderr",
         "--window-size=1280,800", "--virtual-time-budget=15000"]
PLACE = "-200,-30,60,60,-5"  # in a lit room
TRIES = 6  # the browser's own clock runs ahead of its image decoder, now and then


def browse(browser, folder, address, *wanted):
    command = [browser, *FLAGS, f"--user-data-dir={folder / 'profile'}", *wanted, address]
    return subprocess.run(command, capture_output=True, text=True, timeout=240)


def check_mode(browser, folder, address):
    for _ in range(TRIES):
        shown = browse(browser, folder, address, "--dump-dom")
        # The software renderer tells of slow reads when the browser itself takes its picture.
        said = [line for line in shown.stderr.splitlines() if "CONSOLE" in line and "GL Driver Message" not in line]
        assert not said, f"{address}: {said}"
        frames = re.search(r'data-frames="(\d+)"', shown.stdout)
        triangles = re.search(r'data-triangles="(\d+)"', shown.stdout)
        if frames and int(frames[1]) > 0:
            break
    assert frames and int(frames[1]) > 0, f"{address}: nothing was drawn"
    assert int(triangles[1]) > 500, f"{address}: {triangles[1]} triangles"
    assert shown.stdout.count("<li title=") == 16, f"{address}: objects in the list"


def take_picture(browser, folder, address, picture):
    for _ in range(TRIES):
        browse(browser, folder, address, f"--screenshot={picture}")
        if picture.stat().st_size > 200_000:
            return
    raise AssertionError(f"{picture.stat().st_size} bytes: only a picture of the list alone is so small")


def main():
    k2k, klvtool, browser, examples = sys.argv[1:5]
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for path in [pathlib.Path(examples, "71", "house.$$M"), *pathlib.Path(examples).glob("*.$$w"),
                     pathlib.Path(examples, "palette.pcx")]:
            shutil.copy(path, folder)
        subprocess.run([k2k, "house.$$M", "-pal", "palette.pcx", "-solidsky"], cwd=folder, check=True, capture_output=True)
        subprocess.run([klvtool, "view", "house.klv", "house.html"], cwd=folder, check=True)
        page = (folder / "house.html").as_uri()
        for mode in ("lit", "textures", "lightmap", "regions"):
            check_mode(browser, folder, f"{page}#mode={mode}")
        picture = pathlib.Path(sys.argv[5] if len(sys.argv) > 5 else folder / "view.png").resolve()
        take_picture(browser, folder, f"{page}#at={PLACE}", picture)


main()
