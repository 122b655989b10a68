#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Fingers on a touch screen of the kernel's, in the real program: from the device by way of Qt's plugin for such devices to
what they do with the picture and in the album. Runs in the machine.

Usage: test_touch.py PROGRAM [TEST...]
"""

import fcntl
import json
import struct
import sys
import time
import unittest
from pathlib import Path

from devices import wait_until
from desktop import HEIGHT, WIDTH, Desktop  # where devices.py looks
from program import Program

PROGRAM = sys.argv.pop(1)
PATIENCE = 12  # seconds; the processor is emulated
SPOTS = {"red": (250, 190), "blue": (390, 290)}  # in a picture of 640x480, the middle of each
SIDE = 24
KEY, ABSOLUTE, SYNC = 1, 3, 0  # types of events
TOUCH, SLOT, X, Y, TRACKING = 0x14a, 0x2f, 0x35, 0x36, 0x39


class TouchScreen:
    """As large as the desktop; `path` is its event device. Fingers 0 and 1 go to places of the desktop."""

    def __init__(self):
        self._file = open("/dev/uinput", "wb", buffering=0)
        for request, argument in ((0x40045564, KEY), (0x40045564, ABSOLUTE), (0x40045565, TOUCH),  # UI_SET_..BIT
                                  (0x4004556e, 1)):  # UI_SET_PROPBIT: one touches what one sees
            fcntl.ioctl(self._file, request, argument)
        for axis, most in ((SLOT, 1), (X, WIDTH - 1), (Y, HEIGHT - 1), (TRACKING, 65535)):
            fcntl.ioctl(self._file, 0x401c5504, struct.pack("H2x6i", axis, 0, 0, most, 0, 0, 0))  # UI_ABS_SETUP
        fcntl.ioctl(self._file, 0x405c5503, struct.pack("4H80sI", 3, 1, 2, 1, b"Touch screen", 0))  # UI_DEV_SETUP
        fcntl.ioctl(self._file, 0x5501)  # UI_DEV_CREATE
        name = wait_until("the touch screen", lambda: next(
            (file for file in Path("/sys/class/input").glob("event*/device/name")
             if file.read_text() == "Touch screen\n"), None))
        self.path = Path("/dev/input", name.parents[1].name)
        wait_until("its node", self.path.exists)
        self._down = {}
        self._count = 0

    def close(self):
        self._file.close()

    def fingers(self, *places):
        """One report: where each finger is now; None for one that is not down."""
        for finger, place in enumerate(places):
            if place is None and finger not in self._down:
                continue
            self._send(ABSOLUTE, SLOT, finger)
            if place is None:
                del self._down[finger]
                self._send(ABSOLUTE, TRACKING, -1)
                continue
            if finger not in self._down:
                self._count += 1
                self._send(ABSOLUTE, TRACKING, self._count)
            self._down[finger] = place
            for axis, at in zip((X, Y), place):
                self._send(ABSOLUTE, axis, round(at))
        self._send(KEY, TOUCH, bool(self._down))
        self._send(SYNC, 0, 0)

    def _send(self, kind, code, value):
        self._file.write(struct.pack("llHHi", 0, 0, kind, code, value))

    def tap(self, at):
        self.fingers(at)
        self.fingers(None)

    def slide(self, begin, end, steps=10):
        """Two fingers, each from a place to another, in steps as a device reports them."""
        self.fingers(begin[0])
        for step in range(steps + 1):
            self.fingers(*((a + (c - a) * step / steps, b + (d - b) * step / steps)
                           for (a, b), (c, d) in zip(begin, end)))
            time.sleep(0.02)
        self.fingers(None, end[1])
        self.fingers(None, None)


def draw_spots(path):
    """Squares on grey."""
    rows = [bytearray(b"\x80\x80\x80" * 640) for _ in range(480)]
    for name, (x, y) in SPOTS.items():
        colour = b"\xe0\x10\x10" if name == "red" else b"\x10\x10\xe0"
        for row in rows[y - SIDE // 2:y + SIDE // 2]:
            row[3 * (x - SIDE // 2):3 * (x + SIDE // 2)] = colour * SIDE
    path.write_bytes(b"P6 640 480 255\n" + b"".join(rows))


class TouchTest(unittest.TestCase):
    def setUp(self):
        self.desktop = self.enterContext(Desktop(accessibility=False))
        self.screen = TouchScreen()
        self.addCleanup(self.screen.close)
        self.album = self.desktop.home / "BrimwellPro" / "Default Album"
        settings = self.desktop.home / ".config" / "BrimwellPro" / "BrimwellPro.conf"
        settings.parent.mkdir(parents=True)
        text = json.dumps({"wired_regular": "dx70"}).replace('"', '\\"')
        settings.write_text(f'[General]\nbwp2x_product_for_camera="{text}"\n')
        photo = self.desktop.folder / "spots.ppm"
        draw_spots(photo)
        self.program = Program(self.desktop, [PROGRAM, "--simulate", f"regular={photo}"],
                               {"QT_QPA_GENERIC_PLUGINS": f"evdevtouch:{self.screen.path}"})
        self.window = self.wait("the window", lambda: self.windows("--name", "^BrimwellPro"))[0]

    def windows(self, *pattern):
        pattern = pattern or ("--class", "brimwellpro")
        found = self.desktop.output(["xdotool", "search", "--onlyvisible", *pattern]).split()
        return [window.decode() for window in found]

    def wait(self, what, condition, step=0.3):
        try:
            return wait_until(what, condition, PATIENCE, step=step)
        except Exception:
            print(self.program.log)
            self.desktop.picture().save_png("/tmp/failed.png")
            raise

    def spots(self):
        """The middle of each on the screen, and of both; nothing unless both are whole squares."""
        picture, found = self.desktop.picture(), {name: [] for name in SPOTS}
        for y in range(0, picture.height, 2):
            for x, (red, green, blue) in enumerate(picture.row(y, 2)):
                if green < 60 and abs(red - blue) > 120:
                    found["red" if red > blue else "blue"].append((2 * x, y))
        middles = []
        for places in found.values():
            if len(places) < 60:
                return None
            middles.append(tuple((min(axis) + max(axis)) / 2 for axis in zip(*places)))
        return middles

    def wait_for_spots(self, what, expected, within=5):
        def off():
            return max(abs(a - b) for one, other in zip(self.now, expected) for a, b in zip(one, other))

        def there():
            self.now = self.spots()
            return self.now and off() <= within

        try:
            self.wait(what, there)
        except Exception:
            print(f"expected {expected}, not {self.now}")
            raise
        return self.now

    def snapshots(self):
        return len(list(self.album.glob("*.jpg")))

    def holds(self, at):
        """A finger stays there until a menu is open, which stands when the finger has gone."""
        before = len(self.windows())
        self.screen.fingers(at)
        self.wait("a menu", lambda: len(self.windows()) > before)
        self.screen.fingers((at[0] + 1, at[1]))
        self.screen.fingers(None)
        time.sleep(1)  # it would have closed at once
        self.assertGreater(len(self.windows()), before)
        self.desktop.key("Escape")
        self.wait("the menu is closed", lambda: len(self.windows()) == before)

    def test_fingers(self):
        self.desktop.input("windowactivate", "--sync", self.window)
        self.wait("the session streams", lambda: "Camera session: streaming" in self.program.log)
        red, blue = self.wait("the picture", self.spots)
        x, y = middle = (red[0] + blue[0]) / 2, (red[1] + blue[1]) / 2

        # to 200 %, so that the window does not keep the picture in its middle; then about another place than that
        self.screen.slide([(x - 50, y), (x + 50, y)], [(x - 110, y), (x + 110, y)])
        double = self.wait("twice as large", lambda: (now := self.spots()) and (
            now[1][0] - now[0][0] >= 2 * (blue[0] - red[0]) - 3) and now)
        x, y = x + 60, y + 40
        self.screen.slide([(x - 90, y), (x + 90, y)], [(x - 76, y), (x + 76, y)])
        smaller = self.wait_for_spots("smaller", [(x + (a - x) * 76 / 90, y + (b - y) * 76 / 90) for a, b in double])

        self.screen.slide([(x - 60, y), (x + 60, y)], [(x - 80, y - 50), (x + 40, y - 50)])
        moved = self.wait_for_spots("moved", [(a - 20, b - 50) for a, b in smaller])
        self.holds(middle)
        self.wait_for_spots("still there", moved, within=1)
        self.assertEqual(self.snapshots(), 0)

        self.screen.tap(middle)
        self.wait("a snapshot", self.snapshots)
        self.in_album()
        self.assertEqual(self.snapshots(), 1)
        self.desktop.input("windowactivate", "--sync", self.window)
        self.desktop.key("ctrl+q")
        self.assertEqual(self.program.wait_for_end(PATIENCE), 0)

    def in_album(self):
        self.desktop.key("F9")
        album = self.wait("the album", lambda: self.windows("--name", "^Albums$"))[0]
        place = dict(line.split("=") for line in self.desktop.output(
            ["xdotool", "getwindowgeometry", "--shell", album]).decode().split())
        self.holds((int(place["X"]) + int(place["WIDTH"]) // 4, int(place["Y"]) + 130))


if __name__ == "__main__":
    unittest.main(verbosity=2)
