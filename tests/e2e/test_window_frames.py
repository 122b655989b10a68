#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The windows of the real program come back where they were, unless the user has switched that off.

usage: test_window_frames.py PROGRAM
"""

import contextlib
import re
import time

from desktop import PATIENCE, wait_until
from program import Area, ProgramTest

SCREEN = (1600, 1600)  # there is room below the camera window, and beside it
TITLE = 40  # the part of the settings that the later panel leaves visible
OPENED = {"Settings": "ctrl+comma", "Advanced settings": "F8", "Albums": "F9"}
SIZE = (977, 550)


class WindowFrames(ProgramTest):
    def setUp(self):
        self.screen_size = tuple(map(int, re.findall(r"\d+", self.id()))) or SCREEN
        super().setUp()
        self.store('bwp2x_product_for_camera="{\\"wired_high\\":\\"mx50_40\\"}"')  # its question would be in the way

    def start_with_panels(self, opened=tuple(OPENED)):
        self.start("--simulate", "high")
        self.program.wait_for(None, "Live streaming with: Digital Microscope MX50/MX40")
        self.toggle(*opened)

    def toggle(self, *names):
        for name in names:
            shown = self.program.window("frame", name)
            self.program.activate(self.program.wait_for("frame", "BrimwellPro"))
            self.desktop.key(OPENED[name])
            wait_until(f"{name} comes or goes", lambda: bool(self.program.window("frame", name)) != bool(shown))

    def window(self, name):
        found = self.desktop.output(["xdotool", "search", "--onlyvisible", "--name", f"^{name}$"]).split()
        return found[-1].decode()

    def content(self, name):
        lines = self.desktop.output(["xwininfo", "-id", self.window(name)]).decode()
        keys = ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
        return Area(*(int(re.search(rf"{key}: +(-?\d+)", lines)[1]) for key in keys))

    def frame(self, name):
        extents = self.desktop.output(["xprop", "-id", self.window(name), "_NET_FRAME_EXTENTS"]).decode()
        left, right, top, bottom = map(int, re.findall(r"\d+", extents.split("=")[1]))
        area = self.content(name)
        return Area(area.x - left, area.y - top, area.width + left + right, area.height + top + bottom)

    def frames(self):
        return {name: self.frame(name) for name in ("BrimwellPro", *OPENED)}

    def place(self, name, x, y, width=None, height=None):
        window = self.window(name)
        if width:
            self.desktop.input("windowsize", "--sync", window, width, height)
        self.desktop.input("windowmove", "--sync", window, x, y)

    def leave_apart(self):
        """Each at a place, and where possible in a size, that only a user would choose."""
        self.place("BrimwellPro", 31, 47, 903, 601)
        self.place("Settings", 1010, 60)
        self.place("Advanced settings", 90, 800, 700, 420)
        self.place("Albums", 1100, 520, 333, 444)
        return self.frames()

    def assert_put_back(self):
        """To their default places."""
        main = self.content("BrimwellPro")
        self.assertEqual(main.width, SIZE[0])
        menu = main.height - SIZE[1]
        self.assertTrue(0 < menu < 40, main)
        self.assertEqual(self.frame("BrimwellPro")[:2],
                         (SCREEN[0] // 2 - main.width // 2, SCREEN[1] // 2 - main.height // 2))
        main = self.frame("BrimwellPro")
        for name, lower in (("Settings", 0), ("Advanced settings", TITLE)):
            frame = self.frame(name)
            self.assertAlmostEqual(frame.x + frame.width / 2, main.x + main.width / 2, delta=1, msg=name)
            self.assertEqual(frame.y, main.y + main.height + lower, name)
        albums = self.frame("Albums")
        self.assertEqual(self.content("Albums")[2:], (287, 550))
        self.assertEqual((albums.x, albums.y + albums.height), (main.x + main.width, main.y + main.height))

    def wait_until_put_back(self):
        last = time.monotonic() + 5 * PATIENCE
        while time.monotonic() < last:
            with contextlib.suppress(AssertionError):
                return self.assert_put_back()
        return self.assert_put_back()

    def test_remembered(self):
        self.start_with_panels()
        left = self.leave_apart()
        self.program.activate(self.program.wait_for("frame", "BrimwellPro"))
        self.desktop.key("F11")
        wait_until("it fills the screen", lambda: self.content("BrimwellPro") == (0, 0, *SCREEN))
        time.sleep(1)  # a place is stored half a second later
        self.program.quit()
        stored = self.settings.read_text()
        for name in ("main", "settings", "advanced_settings", "albums"):
            self.assertIn(f"bwp2x_frame_{name}=", stored)
        self.start_with_panels()
        self.assertEqual(self.frames(), left)
        self.program.activate(self.program.wait_for("frame", "Settings"))
        self.program.click("push button", "Restore layout")
        self.wait_until_put_back()
        self.program.quit()

    def test_on_1280x800(self):
        self.start_with_panels(opened=("Albums", "Settings", "Advanced settings"))
        main, albums, screen = self.frame("BrimwellPro"), self.frame("Albums"), Area(0, 0, *self.screen_size)
        self.program.activate(self.program.wait_for("frame", "BrimwellPro"))
        self.desktop.key("F1")
        self.program.wait_for("frame", "Help")
        for name, frame in {**self.frames(), "Help": self.frame("Help")}.items():
            self.assertTrue(frame.x >= 0 and frame.y >= 0 and frame.x + frame.width <= screen.width
                            and frame.y + frame.height <= screen.height, (name, frame))
        self.assertEqual(albums.x, main.x + main.width)
        settings = self.frame("Settings")
        self.assertAlmostEqual(settings.x + settings.width / 2, main.x + main.width / 2, delta=1)
        self.assertNotEqual(settings.x, self.frame("Advanced settings").x)
        self.desktop.key("Escape")  # the help lies over the title of the camera window
        self.program.quit()

    test_on_1024x600 = test_on_1280x800

    def test_not_remembered(self):
        self.start_with_panels()
        self.leave_apart()
        self.program.click("combo box", "Remember window layout")
        for key in ("End", "Return"):
            self.desktop.key(key)
        wait_until("that is stored", lambda: "bwp2x_remember_layout=no" in self.settings.read_text())
        self.program.quit()
        self.start_with_panels()
        self.wait_until_put_back()
        self.program.quit()


if __name__ == "__main__":
    WindowFrames.main()
