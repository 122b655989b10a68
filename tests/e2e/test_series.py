#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Series of pictures with the real program: its dialog, the status line, a camera that is pulled and plugged in again, the
program killed and started again.

usage: test_series.py PROGRAM
"""

import os
import re
import signal
import time

from desktop import wait_until
from program import ProgramTest, frames_of, probed, wait_for_picture


class Series(ProgramTest):
    def setUp(self):
        super().setUp()
        self.store('bwp2x_product_for_camera="{\\"wired_high\\":\\"mx50_40\\"}"')
        self.start("--simulate", "high")
        wait_for_picture(self.program)

    def pictures(self, album="Series"):
        return sorted((self.album.parent / album).glob("*_image_*.jpg"))

    def wait_for_more(self, count=2, album="Series"):
        """That many pictures more than there are."""
        wanted = len(self.pictures(album)) + count
        wait_until(f"there are {wanted} pictures", lambda: len(self.pictures(album)) >= wanted)

    def begin(self, seconds, album=None):
        """A series without end, with the keyboard alone."""
        self.program.activate(self.program.wait_for("frame", "BrimwellPro"))
        self.desktop.key("ctrl+i")
        self.program.wait_for_active("dialog", "Pictures at intervals")
        self.desktop.input("key", "ctrl+a", *str(seconds), "alt+s", *([] if album else ["Return"]))
        if album:
            self.desktop.input("key", "alt+a", "End", "alt+m", "ctrl+a")
            self.desktop.input("type", album)
            self.desktop.key("Return")

    def status(self, pattern):
        return wait_until(f'the status line says "{pattern}"', lambda: re.search(
            rf'notification "{pattern}"', self.program.outline()))

    def test_unplugged_and_killed(self):
        self.begin(1, ".hidden")
        self.program.wait_for("label", "An album cannot be called “.hidden”. Please choose a shorter name, or one that "
                              "does not begin with a dot.")
        self.desktop.input("type", "Series")
        self.desktop.key("Return")
        self.wait_for_more()
        self.status(r"Series: \d+")
        self.desktop.key("ctrl+s")  # goes into the other album
        wait_until("there is a snapshot", lambda: self.pictures("Default Album"))
        self.hand("Unplug")
        self.status(r"(.*\n)?Series: \d+, waiting for the camera")
        counted, unplugged = len(self.pictures()), time.monotonic()
        wait_until("the gap is long enough to be told", lambda: time.monotonic() > unplugged + 6)
        self.hand("Plug In")
        self.status(r"(.*\n)?The series goes on\. Missed pictures: \d+, in \d:\d\d(\n.*)?")
        wait_for_picture(self.program)
        wait_until("it goes on", lambda: len(self.pictures()) > counted)
        os.kill(self.program.pid, signal.SIGKILL)
        self.program.wait_for_end()
        before = len(self.pictures())

        self.start("--simulate", "high")
        self.program.wait_for("label", "Go on with the series?")
        self.program.click("push button", "Go on")
        wait_until("it goes on", lambda: len(self.pictures()) > before + 2)
        self.program.activate(self.program.wait_for("frame", "BrimwellPro"))
        self.desktop.key("ctrl+q")
        self.program.wait_for("label", "Quit and stop the series?")
        self.program.click("push button", "Cancel")
        self.wait_for_more()
        self.program.activate(self.program.wait_for("frame", "BrimwellPro"))
        self.desktop.key("ctrl+i")
        self.status(r"The series was stopped\. .*(\n.*)?")
        self.program.quit()
        self.assertEqual(len(self.pictures("Default Album")), 1)
        names = [int(file.stem[-3:]) for file in self.pictures()]
        self.assertEqual(names, list(range(1, len(names) + 1)))
        for file in self.pictures():
            self.assertEqual(probed(file, "-show_entries", "stream=codec_name"), "mjpeg")
        self.start("--simulate", "high")
        wait_for_picture(self.program)
        self.assertNotIn("Go on with the series?", self.program.outline())

    def test_stopped_without_a_camera(self):
        """By the same key; afterwards its pictures, and no other, become a movie."""
        self.begin(1)
        self.wait_for_more(album="Default Album")
        self.desktop.key("ctrl+s")
        self.wait_for_more(3, "Default Album")
        self.hand("Unplug")
        sheet = self.program.wait_for("dialog", "The camera was unplugged")
        self.program.activate(sheet)
        self.status(r"(.*\n)?Series: \d+( of \d+)?, waiting for the camera")
        pill = next(element for element in self.program.window("frame", "BrimwellPro").descendants()
                    if element.role == "notification" and "Series" in element.name).area
        self.assertGreaterEqual(pill.y, sheet.area.y + sheet.area.height)
        self.program.wait_for("push button", "Stop series")
        self.desktop.key("ctrl+i")
        saved = int(self.status(r"The series was stopped\. Pictures in “Default Album”: (\d+)(\n.*)?")[1])
        self.assertIsNone(self.program.find("push button", "Make a movie of the series..."))
        self.hand("Plug In")
        wait_for_picture(self.program)
        self.program.click("push button", "Make a movie of the series...")
        self.program.wait_for_active("dialog", "Make a Movie of the Pictures")
        self.desktop.key("Return")
        self.program.wait_for("text", "File name:")
        self.program.wait_for_active("dialog", "Make a Movie of the Pictures")
        self.desktop.key("Return")
        wait_until("the movie is there", lambda: list(self.album.glob("*.mov")))
        movie, = self.album.glob("*.mov")
        self.assertGreaterEqual(frames_of(movie), saved)
        self.assertLess(frames_of(movie), len(self.pictures("Default Album")))
        self.program.quit()

    def test_session_ends(self):
        self.begin(1)
        self.wait_for_more(album="Default Album")
        os.kill(self.program.pid, signal.SIGTERM)
        self.assertEqual(self.program.wait_for_end(), 0)
        self.start("--simulate", "high")
        self.program.wait_for("label", "Go on with the series?")
        self.program.click("push button", "End series")
        self.program.quit()
        self.assertFalse((self.settings.parent / "series.json").exists())


if __name__ == "__main__":
    Series.main()
