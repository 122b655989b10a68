#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Every control of a camera, set by us and read by another program, and the other way round; and every size.

Usage: test_controls.py DRIVE_CAMERAS FRAMES [TEST...]
"""

import re
import subprocess
import sys
import unittest

from devices import NODES, CameraDriver, UsbCameras, usb_node, vivid, vivid_nodes, wait_until

PROGRAM, FRAMES = sys.argv.pop(1), sys.argv.pop(1)
NAMES = {0: "hue", 1: "contrast", 2: "saturation", 3: "brightness", 4: "sharpness", 5: "gamma",
         7: "white_balance_temperature", 8: "white_balance_automatic", 9: "gain", 10: "backlight_compensation",
         11: "auto_exposure", 12: "exposure_time_absolute"}
MODES = {8, 11}  # controls that automatic modes stand behind


class ControlsTest(unittest.TestCase):
    def setUp(self):
        vivid("unbind")
        wait_until("earlier cameras are gone", lambda: not any(NODES.iterdir()))
        self.cameras = self.enterContext(UsbCameras())

    def start(self):
        self.driver = CameraDriver(PROGRAM)
        self.addCleanup(self.driver.close)
        self.driver.wait_for(self.driver.events)
        self.ask = self.driver.ask
        self.assertEqual(self.ask("start"), "started")

    def start_vivid(self):
        vivid("bind")
        self.start()
        self.node = vivid_nodes()[0]

    def frames(self):
        return int(self.ask("frames"))

    def ctl(self, *arguments):
        return subprocess.run(["v4l2-ctl", "-d", self.node, *arguments], capture_output=True, text=True).stdout

    def outside(self, name):
        return int(re.search(r": (-?\d+)", self.ctl("-C", name))[1])

    def exposure_mode(self, value):
        """Manual is 1; automatic is what the camera's menu offers beside it."""
        entries = re.findall(r"^\s+(\d): ", self.ctl("-L").partition("auto_exposure")[2].partition("(int)")[0], re.M)
        return 1 if value == 0 else next(int(entry) for entry in ("3", "0", "2") if entry in entries)

    def try_all(self, expected_codes):
        ranges = {int(code): (int(low), int(high)) for code, low, high in
                  (entry.split(":") for entry in self.ask("codes").split())}
        self.assertLessEqual(expected_codes, set(ranges))
        for mode in MODES & set(ranges):  # the controls they hold can be set then
            self.ask(f"set {mode} 0")
        for code in sorted(expected_codes - MODES) + sorted(expected_codes & MODES):
            low, high = ranges[code]
            name = NAMES[code]
            for value in sorted({low, (low + high) // 2, high}):
                with self.subTest(name=name, value=value):
                    self.assertEqual(int(self.ask(f"set {code} {value}")), value)
                    self.assertEqual(self.outside(name), self.exposure_mode(value) if code == 11 else value)
            with self.subTest(name=name, set_by="another program"):
                self.ctl("-c", f"{name}={self.exposure_mode(low) if code == 11 else low}")
                wait_until("the change is reported", lambda: int(self.ask(f"get {code}")) == low)
        for size in self.ask("sizes").split():
            with self.subTest(size=size):
                self.assertEqual(self.ask(f"size {size}"), size)
                self.assertIn(size.replace("x", "/"), self.ctl("--get-fmt-video"))

    def test_usb_camera(self):
        self.cameras.plug("scope", "rate=10", FRAMES)
        self.start()
        self.node = usb_node("scope")
        self.try_all(set(NAMES))

    def test_webcam_of_vivid(self):
        self.start_vivid()
        self.try_all({0, 1, 2, 3, 9})

    def test_norms_of_vivid(self):
        """Where the virtual device is a receiver."""
        self.start_vivid()
        for norm, name in ((1, "PAL"), (2, "SECAM"), (0, "NTSC"), (1, "PAL")):
            with self.subTest(name):
                self.assertEqual(self.ask(f"set 13 {norm}"), str(norm))
                self.assertIn(name, self.ctl("--get-standard"))
                before = self.frames()
                wait_until("it streams on", lambda: self.frames() > before + 3)


if __name__ == "__main__":
    unittest.main(verbosity=2)
