#!/usr/bin/env python3
"""Uses the desktop program as a user does, with keys on a virtual screen: on_a_screen.py K2K_DESKTOP K2K EXAMPLES.
Ends with 77 (a skipped test) where Xvfb or xdotool is missing; scripts/install-deps test installs both."""
import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

PATIENCE = 90  # seconds, far above what a loaded machine needs
SCREEN = (1024, 768)
MAIN = "Map Compiler"
QUESTION = "Quit map compiler"


def wait_for(what, condition):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        if found := condition():
            return found
        time.sleep(0.05)
    sys.exit(f"never came: {what}")


@contextlib.contextmanager
def virtual_screen():
    reader, writer = os.pipe()
    screen = f"{SCREEN[0]}x{SCREEN[1]}x24"
    # -noreset: a server that starts anew when its last client leaves would refuse the next one for a moment; -r: a key
    # that is held does not repeat.
    command = ["Xvfb", "-displayfd", str(writer), "-screen", "0", screen, "-nolisten", "tcp", "-noreset", "-r"]
    server = subprocess.Popen(command, pass_fds=[writer], stderr=subprocess.DEVNULL)
    os.close(writer)
    try:
        number = os.read(reader, 32).decode().strip()
        if not number:
            sys.exit("Xvfb did not start")
        os.environ["DISPLAY"] = f":{number}"
        yield
    finally:
        server.terminate()
        server.wait()


def xdotool_run(*words):
    return subprocess.run(["timeout", "10", "xdotool", *map(str, words)], capture_output=True, text=True)


def xdotool(*words):
    return xdotool_run(*words).stdout.split()


def window_of(title):
    """The window with this title, or None."""
    return (xdotool("search", "--onlyvisible", "--name", f"^{title}$") or [None])[0]


def asks():
    return window_of(QUESTION) is not None


class Program:
    """The program in a folder of its own, with the example house and its palette."""

    def __init__(self, programs, *arguments, environment=None):
        self.desktop, self.console, self.examples = programs
        self.folder = pathlib.Path(tempfile.mkdtemp())
        for name in ["71/house.$$M", "textures.$$w", "textures7.$$w", "palette.pcx"]:
            shutil.copy(self.examples / name, self.folder)
        self.arguments = list(arguments)
        self.environment = {**os.environ, "XDG_CONFIG_HOME": str(self.folder / "config"), "QT_QPA_PLATFORM": "xcb",
                            **(environment or {})}

    def __enter__(self):
        command = [self.desktop, *self.arguments]
        self.process = subprocess.Popen(command, cwd=self.folder, env=self.environment, stderr=subprocess.DEVNULL)
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        shutil.rmtree(self.folder)

    def window(self):
        return wait_for("the window", lambda: window_of(MAIN))

    def press(self, key, title=MAIN):
        """Without a window manager nobody else gives a window the keys. It may be gone meanwhile; xdotool then stops where
        it is, which must not be between pressing a key and letting it go."""
        window = window_of(title)
        if window and xdotool_run("windowfocus", window).returncode == 0:
            xdotool("key", key)

    def press_until(self, key, what, condition, title=MAIN):
        """A key can come before a window is ready for it, so it is pressed until it works."""
        def attempt():
            if not condition():
                self.press(key, title)
                time.sleep(0.3)
            return condition()
        wait_for(what, attempt)

    def abort(self):
        """Escape, and yes to the question."""
        def attempt():
            if asks():
                self.press("alt+y", QUESTION)
            elif not self.ended():
                self.press("Escape")
            time.sleep(0.3)
            return self.ended()
        wait_for("the end", attempt)

    def ended(self):
        return self.process.poll() is not None

    def status(self):
        return wait_for("the program's end", lambda: [self.process.poll()] if self.ended() else None)[0]

    def log(self):
        path = self.folder / "buildlog.txt"
        return path.read_text() if path.exists() else ""

    def settings(self):
        path = self.folder / "K2K.ini"
        return path.read_text() if path.exists() else ""


def expect(condition, what):
    if not condition:
        sys.exit(f"not so: {what}")


def expect_equal(found, wanted, what):
    if found != wanted:
        sys.exit(f"not so: {what}, but with {found}")


def builds_and_closes_by_itself(programs):
    with Program(programs, "house.$$M", "-pal", "palette.pcx", "-solidsky", "-close") as program:
        expect_equal(program.status(), 0, "a finished build ends with 0")
        level = program.folder / "house.klv"
        made = level.read_bytes()
        command = [program.console, "house.$$M", "-pal", "palette.pcx", "-solidsky"]
        subprocess.run(command, cwd=program.folder, check=True, stdout=subprocess.DEVNULL)
        expect(made == level.read_bytes(), "the level is the one that the console program makes")


def is_watched_and_closed(programs):
    with Program(programs, "house.$$M", "-pal", "palette.pcx", "-solidsky", "-writelog") as program:
        program.window()
        wait_for("the end of the build", lambda: "\nTime:" in program.log())
        program.press_until("Return", "the end", program.ended)
        expect_equal(program.status(), 0, "Ok ends with 0")


def cancels_the_dialog(programs):
    with Program(programs, "house.$$M", "-pal", "palette.pcx", "-dialog") as program:
        program.press_until("Escape", "the end", program.ended)
        expect_equal(program.status(), 0, "Cancel ends with 0")
        expect(not (program.folder / "house.klv").exists(), "nothing was built")


def builds_with_the_dialogs_options(programs):
    """Alt+W reaches the slider of the warnings, End moves it to "all"; the text of a run follows the dialog."""
    with Program(programs, "house.$$M", "-pal", "palette.pcx", "-dialog") as program:
        program.window()
        # The window has its keys once a slider moves: Alt+M shows the lower half.
        small = height_of(program.window())
        program.press_until("alt+m", "the lower half", lambda: height_of(program.window()) > small)
        program.press("alt+w")
        program.press("End")
        program.press_until("Return", "the run", lambda: "-verbose" in program.settings())
        wait_for("the level", (program.folder / "house.klv").exists)


def height_of(window):
    lines = xdotool("getwindowgeometry", "--shell", window)
    return int(dict(line.split("=") for line in lines)["HEIGHT"])


def shows_a_fatal_error(programs):
    with Program(programs, "missing", "-pal", "palette.pcx", "-writelog", "-close") as program:
        wait_for("the error", lambda: "CRITICAL ERROR" in program.log())
        program.press_until("Escape", "the question", asks)
        program.press_until("Escape", "the question's end", lambda: not asks(), QUESTION)
        expect(not program.ended(), "No leaves the window")
        program.abort()
        expect_equal(program.status(), 1, "a fatal error ends with 1")


def aborts_a_build(programs):
    program = Program(programs, "endless.$$M", "-pal", "palette.pcx")
    os.mkfifo(program.folder / "endless.$$M")  # a map that nobody writes
    with program:
        program.abort()
        expect_equal(program.status(), 0, "an abort ends with 0")


def asks_for_files(programs):
    program = Program(programs, "house.$$M")
    config = program.folder / "config" / "k2k"
    config.mkdir(parents=True)
    (config / "k2k-desktop.ini").write_text(f"[files]\nmap=/gone.$$M\npalette={program.folder}/palette.pcx\n")
    (program.folder / "K2K.ini").write_text("[Map Compiler]\nCommandline=-close -solidsky\n")
    with program:
        # Return takes the files, then the options of the settings.
        program.press_until("Return", "the end", program.ended)
        expect_equal(program.status(), 0, "the build ends with 0")
        expect((program.folder / "house.klv").exists(), "the level is there")
        expect("-close -solidsky" in program.settings(), "the settings are kept")


def writes_numbers_in_any_language(programs):
    """In a language with a decimal comma the numbers of the command string keep their point."""
    program = Program(programs, "house.$$M", "-pal", "palette.pcx", "-dialog")
    (program.folder / "source").write_text('LC_NUMERIC\ndecimal_point ","\nthousands_sep ""\ngrouping -1\nEND LC_NUMERIC\n')
    if not shutil.which("localedef"):
        print("left out: localedef is missing")
        return
    subprocess.run(["localedef", "-c", "-i", "source", "./comma"], cwd=program.folder, capture_output=True)
    program.environment |= {"LOCPATH": str(program.folder), "LC_ALL": "", "LC_NUMERIC": "comma"}
    with program:
        program.press_until("Return", "the run", lambda: "Commandline=" in program.settings())
        expect("-gamma 1.50 " in program.settings(), "the point of 1.50")


def fits_the_screen_at_200_percent(programs):
    arguments = ["house.$$M", "-pal", "palette.pcx", "-dialog"]
    with Program(programs, *arguments, environment={"QT_SCALE_FACTOR": "2"}) as program:
        window = program.window()
        small = height_of(window)
        program.press_until("alt+m", "the lower half", lambda: height_of(window) > small)

        def inside():
            place = dict(line.split("=") for line in xdotool("getwindowgeometry", "--shell", window))
            x, y, width, height = (int(place[key]) for key in ["X", "Y", "WIDTH", "HEIGHT"])
            return x >= 0 and y >= 0 and x + width <= SCREEN[0] and y + height <= SCREEN[1]
        wait_for("a dialog inside of the screen", inside)
        program.press_until("Escape", "the end", program.ended)


def main():
    for tool in ["Xvfb", "xdotool"]:
        if shutil.which(tool) is None:
            print(f"skipped: {tool} is missing (scripts/install-deps test)")
            return 77
    programs = [pathlib.Path(path).resolve() for path in sys.argv[1:4]]
    for use in [builds_and_closes_by_itself, is_watched_and_closed, cancels_the_dialog, builds_with_the_dialogs_options,
                shows_a_fatal_error, aborts_a_build, asks_for_files, writes_numbers_in_any_language,
                fits_the_screen_at_200_percent]:
        print(use.__name__, flush=True)
        with virtual_screen():
            use(programs)
    return 0


sys.exit(main())
