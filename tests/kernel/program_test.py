# SPDX-License-Identifier: GPL-3.0-or-later
"""The program itself on a desktop in the machine, with USB cameras to plug and unplug. A test that uses this is started
with PROGRAM FRAMES [TEST...]; FRAMES is a folder made by make_frames.
"""

import json
import re
import sys
import unittest
from pathlib import Path

from devices import UsbCameras, wait_until
from desktop import Desktop  # where devices.py looks
from program import Program, probed

PROGRAM, FRAMES = sys.argv.pop(1), Path(sys.argv.pop(1))
SENT = {path.read_bytes() for path in FRAMES.glob("640x480-*.jpg")}
TITLE = "BrimwellPro"
PATIENCE = 60  # seconds; the processor is emulated
START_OF_PICTURE = b"\xff\xd8\xff"


def without_tags(jpeg):
    """The image without the tags of a snapshot."""
    at = jpeg.find(b"\xff\xe1")
    if at < 0:
        return jpeg
    return jpeg[:at] + jpeg[at + 2 + int.from_bytes(jpeg[at + 2:at + 4], "big"):]


def pictures_in(movie):
    """The stored pictures, byte for byte."""
    data = movie.read_bytes()
    packets = (map(int, line.split(",")[:2]) for line in probed(movie, "-show_entries", "packet=size,pos").split())
    return [data[position:position + size] for size, position in packets]


class CameraProgramTest(unittest.TestCase):
    def setUp(self):
        self.desktop = self.enterContext(Desktop(accessibility=False))
        self.cameras = self.enterContext(UsbCameras())
        self.album = self.desktop.home / "BrimwellPro" / "Default Album"

    def configure(self, table=(), **products):
        """What the user has chosen before: the product of each type of camera, and entries of cameras.json."""
        folder = self.desktop.home / ".config" / "BrimwellPro"
        folder.mkdir(parents=True)
        text = json.dumps(products, separators=(",", ":")).replace('"', '\\"')
        self.settings = folder / "BrimwellPro.conf"
        self.settings.write_text(f'[General]\nbwp2x_product_for_camera="{text}"\n')
        (folder / "cameras.json").write_text(json.dumps({"cameras": list(table)}))

    def start(self):
        self.program = Program(self.desktop, [PROGRAM])
        self.window = self.wait("the window", lambda: self.windows("--name", f"^{TITLE}"))[0]

    def windows(self, *pattern):
        pattern = pattern or ("--class", "brimwellpro")
        found = self.desktop.output(["xdotool", "search", "--onlyvisible", *pattern]).split()
        return [window.decode() for window in found]

    def wait(self, what, condition, seconds=PATIENCE):
        try:
            return wait_until(what, condition, seconds, step=0.2)
        except Exception:
            print(self.state_of_things())
            raise

    def state_of_things(self):
        """What the kernel has said, what there is of cameras, where each thread waits, and the program's log."""
        return self.desktop.output(["sh", "-c", f"""
            dmesg | tail -n 40
            ls -d /dev/video* /sys/bus/usb/devices/*-[1-9]*
            for task in /proc/{self.program.pid}/task/*; do
                echo "$(cat "$task/comm"): $(head -n 4 "$task/stack" | tr '\\n' ' ')"
            done
            """]).decode() + self.program.log

    def wait_for_stream(self, name):
        self.wait(f"{name} streams", lambda: "streaming" in self.cameras(f"status {name}"))
        sent = self.sent(name)
        self.wait(f"{name} sends", lambda: self.sent(name) > sent + 1)

    def sent(self, name):
        return int(re.search(r"sent=(\d+)", self.cameras(f"status {name}"))[1])

    def press_keys(self, keys):
        self.desktop.input("windowactivate", "--sync", self.window, "key", "--clearmodifiers", keys)

    def assert_sent(self, jpeg):
        self.assertIn(without_tags(jpeg), SENT)
