# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop of one's own: a virtual display with a window manager and a session bus, in a throw-away folder."""

import mmap
import os
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
from pathlib import Path

WIDTH, HEIGHT = 1280, 800
PATIENCE = float(os.environ.get("BW_PATIENCE", "1"))  # a factor for all waiting, on slow computers
KEPT = {name: value for name, value in os.environ.items() if name == "PATH" or name.endswith("SAN_OPTIONS")}
REPORT = re.compile(rb"(?:ERROR|WARNING): \w+Sanitizer:|: runtime error: ")
MISSING = "{} is missing; install the packages that tools/packages.txt lists"


class Failure(Exception):
    """Something expected did not happen. The text says what."""


def wait_until(what, condition, seconds=20.0, step=0.05):
    """The first true answer of `condition`, which is called again and again; fails after `seconds`."""
    seconds *= PATIENCE
    end = time.monotonic() + seconds
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise Failure(f"not within {seconds:g} s: {what}")
        time.sleep(step)


class Picture:
    """Pixels of the screen, as (red, green, blue)."""

    def __init__(self, width, height, rows):
        self.width, self.height = width, height
        self._rows = rows  # four bytes a pixel: blue, green, red, unused

    def pixel(self, x, y):
        row = self._rows[y]
        return row[4 * x + 2], row[4 * x + 1], row[4 * x]

    def row(self, y, step=1):
        """One pixel in `step` of it."""
        return zip(*(self._rows[y][part::4 * step] for part in (2, 1, 0)))

    def save_png(self, path):
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "rawvideo", "-pixel_format", "bgr0", "-video_size",
                        f"{self.width}x{self.height}", "-i", "-", "-pix_fmt", "rgb24", path],
                       input=b"".join(self._rows), check=True)


class Desktop:
    """Used with `with`: started on entry; all that it started is ended and its folder removed on exit.

    `environment` is what a program needs to run on it. Home and settings are below `folder`, so nothing of the
    person who runs it is read or written.
    """

    def __init__(self, keep=False, accessibility=True, size=(WIDTH, HEIGHT)):
        self.keep = keep
        self.size = size
        self.accessibility = accessibility
        self._processes = []
        self._screen = None

    def __enter__(self):
        self.folder = Path(tempfile.mkdtemp(prefix="brimwellpro-", dir=os.environ.get("TMPDIR") or "/var/tmp"))
        try:
            self._start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self._processes):
            self._end(process)
        reports = [log for file in self.folder.glob("*.log") if REPORT.search(log := file.read_bytes())]
        if self.keep:
            print(f"kept: {self.folder}", flush=True)
        else:
            shutil.rmtree(self.folder, ignore_errors=True)
        if reports:  # perhaps of a program whose end nobody waited for
            raise Failure(b"\n".join(reports).decode(errors="replace"))

    def _start(self):
        self.home = self.folder / "home"
        places = {"HOME": self.home, "XDG_CONFIG_HOME": self.home / ".config",
                  "XDG_DATA_HOME": self.home / ".local/share",
                  "XDG_STATE_HOME": self.home / ".local/state", "XDG_CACHE_HOME": self.home / ".cache",
                  "XDG_RUNTIME_DIR": self.folder / "run", "TMPDIR": self.folder / "tmp"}
        for place in places.values():
            place.mkdir(parents=True, exist_ok=True)
        places["XDG_RUNTIME_DIR"].chmod(0o700)
        self.environment = {**KEPT, **{name: str(place) for name, place in places.items()},
                            "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nowhere", "LC_ALL": "C.UTF-8", "TZ": "Europe/Berlin", "QT_QPA_PLATFORM": "xcb"}

        self._start_display()
        if self.accessibility:
            with open(self.folder / "bus.log", "wb") as log:
                bus = self.spawn(["dbus-daemon", "--session", "--nofork", "--print-address=1"],
                                 stdout=subprocess.PIPE, stderr=log)
            self.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()
            self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        self._start_window_manager()

    def _start_window_manager(self):
        self.spawn(["openbox"], log="openbox.log")
        wait_until("the window manager is there",
                   lambda: b"window id" in self.output(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"]))

    def bind_keys(self, actions):
        """Actions of the window manager, in its own words."""
        settings = self.home / ".config/openbox/rc.xml"
        settings.parent.mkdir(parents=True)
        keys = "".join(f'<keybind key="{key}"><action name="{name}"/></keybind>' for key, name in actions.items())
        settings.write_text(Path("/etc/xdg/openbox/rc.xml").read_text().replace("<keyboard>", "<keyboard>" + keys))
        self.output(["openbox", "--reconfigure"])

    def _start_display(self):
        reading, writing = os.pipe()
        # Without a reset: one at the end of the last program would throw out a window manager that is just starting.
        command = ["Xvfb", "-displayfd", str(writing), "-screen", "0", "{}x{}x24".format(*self.size), "-noreset",
                   "-nolisten", "tcp", "-fbdir", str(self.folder)]
        self.display = self.spawn(command, log="xvfb.log", pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            raise Failure("the virtual display does not start: " + (self.folder / "xvfb.log").read_text())
        self.environment["DISPLAY"] = ":" + number
        with open(self.folder / "Xvfb_screen0", "rb") as screen:
            self._screen = mmap.mmap(screen.fileno(), 0, prot=mmap.PROT_READ)

    def spawn(self, command, log=None, **options):
        """Starts a process of this desktop. Its output goes to the file `log` in the folder, if given."""
        if not shutil.which(command[0]):
            raise Failure(MISSING.format(command[0]))
        if log:
            options["stdout"] = open(self.folder / log, "wb")
            options["stderr"] = subprocess.STDOUT
        process = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL, start_new_session=True,
                                   **options)
        if log:
            options["stdout"].close()
        self._processes.append(process)
        return process

    def _end(self, process):
        for signum in (signal.SIGTERM, signal.SIGKILL):
            if process.poll() is None:
                process.send_signal(signum)
                try:
                    process.wait(timeout=5)
                except subprocess.TimeoutExpired:
                    pass

    def output(self, command):
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, check=False).stdout

    def input(self, *arguments):
        """Moves the mouse, presses buttons and keys: the arguments of xdotool."""
        subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, stdin=subprocess.DEVNULL, check=True)

    def click(self, x, y):
        self.input(*self.clicking(x, y))

    @staticmethod
    def clicking(x, y):
        """A click of which the program hears before any key that follows. The window manager looks at each click first, and
        keys do not wait for that; the pointer does, which is why it moves a little afterwards."""
        return "mousemove", x, y, "click", 1, "mousemove", "--sync", x + 1, y

    def key(self, keys):
        self.input("key", "--clearmodifiers", keys)

    def picture(self, x=0, y=0, width=sys.maxsize, height=sys.maxsize):
        """What the screen shows now. The part that lies outside of it is cut off."""
        right, bottom = min(x + width, self.size[0]), min(y + height, self.size[1])
        x, y = max(0, x), max(0, y)
        width, height = right - x, bottom - y
        header = struct.unpack(">25I", self._screen[:100])
        offset, line = header[0] + 12 * header[19], header[12]
        rows = [self._screen[offset + row * line + 4 * x:offset + row * line + 4 * (x + width)]
                for row in range(y, y + height)]
        return Picture(width, height, rows)
