#!/usr/bin/python3
"""Every control of a camera, set by us and read by another program, and the other way round; and every size.

Usage: test_controls.py CONTROL_CAMERA TABLE FRAMES
"""

import re
import subprocess
import sys
import time
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE.parents[1] / "e2e"), str(HERE.parent / "usbcamera")]
from client import UsbCameras  # noqa: E402
from desktop import wait_until  # noqa: E402

PROGRAM, TABLE, FRAMES = sys.argv[1:4]
NAMES = {0: "hue", 1: "contrast", 2: "saturation", 3: "brightness", 4: "sharpness", 5: "gamma",
         7: "white_balance_temperature", 8: "white_balance_automatic", 9: "gain", 10: "backlight_compensation",
         11: "auto_exposure", 12: "exposure_time_absolute"}


class Controls(unittest.TestCase):
    def start_program(self):
        self.process = subprocess.Popen([PROGRAM, TABLE], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                        bufsize=1)
        self.assertEqual(self.process.stdout.readline().strip(), "ready")

    def end_program(self):
        self.process.stdin.close()
        self.assertEqual(self.process.wait(30), 0)

    def ask(self, line):
        self.process.stdin.write(line + "\n")
        return self.process.stdout.readline().strip()

    def ctl(self, *arguments):
        return subprocess.run(["v4l2-ctl", "-d", self.node, *arguments], capture_output=True, text=True).stdout

    def outside(self, name):
        return int(re.search(r": (-?\d+)", self.ctl("-C", name))[1])

    def try_all(self, node, expected_codes):
        self.node = node
        self.start_program()
        ranges = {int(code): (int(low), int(high)) for code, low, high in
                  (entry.split(":") for entry in self.ask("codes").split())}
        self.assertLessEqual(expected_codes, set(ranges))
        for master in {8, 11} & set(ranges):  # what they move can be set then
            self.ask(f"set {master} 0")
        for code in sorted(expected_codes - {8, 11}) + sorted(expected_codes & {8, 11}):
            low, high = ranges[code]
            name = NAMES[code]
            for value in sorted({low, (low + high) // 2, high}):
                with self.subTest(node=node, name=name, value=value):
                    taken = int(self.ask(f"set {code} {value}"))
                    self.assertEqual(taken, value)
                    meant = exposure_mode(self.ctl, value) if code == 11 else value
                    self.assertEqual(self.outside(name), meant)
            if code in (8, 11):
                self.ask(f"set {code} 0")
                continue
            with self.subTest(node=node, name=name, moved="by another program"):
                self.ctl("-c", f"{name}={low}")
                wait_until("we are told", lambda: int(self.ask(f"get {code}")) == low)
        for size in self.ask("sizes").split():
            with self.subTest(node=node, size=size):
                self.assertEqual(self.ask(f"size {size}"), size)
                self.assertIn(size.replace("x", "/"), self.ctl("--get-fmt-video"))
        self.end_program()

    def test_usb_camera(self):
        with UsbCameras() as cameras:
            cameras("add scope uvc serial=scope rate=10")
            cameras(f"source scope {FRAMES}")
            cameras("plug scope")
            node = wait_until("a node", lambda: next(
                (str(link.resolve()) for link in Path("/dev/v4l/by-id").glob("*_scope-video-index0")), None), 60)
            self.try_all(node, set(NAMES))
        time.sleep(1)

    def test_two_at_once(self):
        with UsbCameras() as cameras:
            for name in ("one", "two"):
                cameras(f"add {name} uvc serial={name} rate=10")
                cameras(f"source {name} {FRAMES}")
                cameras(f"plug {name}")
            for name in ("one", "two"):
                wait_until("a node", lambda: list(Path("/dev/v4l/by-id").glob(f"*_{name}-video-index0")), 60)
            self.start_program()
            counts = wait_until("both deliver", lambda: min(found := [int(word) for word in self.ask("frames").split()])
                                > 10 and found, 60)
            self.assertEqual(len(counts), 2)
            self.end_program()
        time.sleep(1)

    def start_vivid(self):
        driver = Path("/sys/bus/platform/drivers/vivid")
        (driver / "bind").write_text("vivid.0")
        self.addCleanup((driver / "unbind").write_text, "vivid.0")
        return wait_until("a node", lambda: next(
            (f"/dev/{node.name}" for node in Path("/sys/class/video4linux").iterdir()
             if "vivid" in (node / "name").read_text() and Path("/dev", node.name).exists()), None), 60)

    def test_vivid(self):
        self.try_all(self.start_vivid(), {0, 1, 2, 3, 9})


class Norms(Controls):
    """On a machine whose virtual device is a receiver."""

    def test_vivid(self):
        self.node = self.start_vivid()
        self.start_program()
        for norm, name in ((1, "PAL"), (2, "SECAM"), (0, "NTSC"), (1, "PAL")):
            with self.subTest(name):
                self.assertEqual(self.ask(f"set 13 {norm}"), str(norm))
                self.assertIn(name, self.ctl("--get-standard"))
                before = int(self.ask("frames"))
                wait_until("it streams on", lambda: int(self.ask("frames")) > before + 3, 30)
        self.end_program()


def exposure_mode(ctl, value):
    """Manual is 1; automatic is what the camera's menu offers beside it."""
    entries = re.findall(r"^\s+(\d): ", ctl("-L").partition("auto_exposure")[2].partition("(int)")[0], re.M)
    return 1 if value == 0 else next(int(entry) for entry in ("3", "0", "2") if entry in entries)


if __name__ == "__main__":
    Path("/sys/bus/platform/drivers/vivid/unbind").write_text("vivid.0")
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2)
