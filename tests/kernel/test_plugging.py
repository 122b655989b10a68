#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A USB camera is unplugged and plugged in again and again at random moments, while the program streams, takes
snapshots and records. Nothing of a camera may be left when it is gone, and no capture be lost. Runs in the machine.

BW_TIMES: how often (6); BW_SEED: repeats the moments of the run that printed it; BW_SECONDS: when it is enough.
"""

import contextlib
import hashlib
import os
import re
import subprocess
import time
import unittest
from collections import Counter
from pathlib import Path
from random import Random, SystemRandom

from devices import usb_node
from program_test import FRAMES, PATIENCE, START_OF_PICTURE, CameraProgramTest, pictures_in
from desktop import Failure  # where devices.py looks

TIMES, SECONDS = int(os.environ.get("BW_TIMES") or 6), float(os.environ.get("BW_SECONDS") or "inf")
SEED = os.environ.get("BW_SEED") or SystemRandom().randrange(10**6)
MOST_MORE = {"handles": 6, "threads": 6, "MiB": 60, "kernel MiB": 64, "its objects KiB": 8192}  # than at first
FOR_OTHERS = "MemFree Buffers Cached SwapCached AnonPages SReclaimable".split()  # what the kernel does not keep itself
KERNEL_FAULT = re.compile(r"WARNING:|BUG:|Oops|Call Trace|refcount_t|hung task|blocked for more")


class PluggingTest(CameraProgramTest):
    def test_plugging(self):
        print(f"seed {SEED}", flush=True)
        self.checked, self.done, self.used = {}, Counter(), {}
        self.configure(wired_ultra="mx62")
        self.cameras.plug("scope", "rate=5", FRAMES)
        self.cameras("add other uvc serial=other rate=5")
        self.cameras(f"source other {FRAMES}")
        self.start()
        self.addCleanup(lambda: print(self.program.log[-20000:]))
        self.wait_for_session("scope")
        for each in "/dev/video0", "/dev/media0", "/dev/input/event", "vb2_":
            self.assertIn(each, " ".join(self.left()))
        began = time.monotonic()
        while self.done["rounds"] < TIMES and time.monotonic() < began + SECONDS:
            self.round()
        print(f"{dict(self.done)} in {time.monotonic() - began:.0f} s; at first {self.first}, at last {self.used}")
        self.press_keys("ctrl+q")
        self.assertEqual(self.program.wait_for_end(PATIENCE), 0)
        self.check_captures()
        for path, digest in self.checked.items():
            self.assertEqual(hashlib.sha1(path.read_bytes()).digest(), digest, path)

    def round(self):
        began = time.monotonic()
        moments = (self.at_any_time, self.while_opening, self.at_snapshots, self.at_presses, self.as_recording_starts,
                   self.while_recording, self.as_recording_ends, self.flickering, self.with_another)
        turn, number = divmod(self.done["rounds"], len(moments))
        moment = Random(f"{SEED} {turn}").sample(moments, len(moments))[number]
        self.random = Random(f"{SEED} {self.done['rounds']}")
        self.done["rounds"] += 1
        print(f"{self.done['rounds']:4} {moment.__name__:20}", end="", flush=True)
        self.movies, self.least = range(1), 0  # how many this round may make, and the pictures that each has at least
        moment()
        self.nothing_is_left()
        self.cameras("plug scope")
        self.take_one("scope")
        self.check_captures()
        self.measure()
        self.done["left behind"] = self.program.log.count("does not stop and is left behind")
        print(f"{time.monotonic() - began:5.1f} s  {self.used}", flush=True)

    # The moments. The camera streams before and is gone after each.

    def at_any_time(self):
        self.pause(1.5)
        self.unplug()

    def while_opening(self):
        self.unplug()
        self.pause(1)
        self.cameras("plug scope")
        self.pause(2.5)
        self.unplug()

    def at_snapshots(self, take=None):
        for _ in range(self.random.randint(1, 3)):
            (take or self.snapshot)()
            self.pause(0.2)
        self.unplug(streams=True)

    def at_presses(self):
        self.at_snapshots(lambda: self.press("scope"))

    def as_recording_starts(self):
        self.press_keys("ctrl+shift+s")
        self.movies, self.least = range(2), 1
        self.pause(0.8)
        self.unplug()

    def while_recording(self):
        self.record()
        self.pause(1.5)
        self.snapshot()
        self.unplug(streams=True)

    def as_recording_ends(self):
        self.record()
        self.press_keys("ctrl+shift+s")
        self.pause(0.5)
        self.unplug()

    def flickering(self):
        for _ in range(self.random.randint(1, 3)):
            self.unplug()
            self.pause(0.08)
            self.cameras("plug scope")
            self.pause(1.8)
        self.unplug()

    def with_another(self):
        self.record()
        self.cameras("plug other")
        self.pause(3)
        self.unplug(streams=True)
        self.take_one("other")
        self.cameras("unplug other")

    def pause(self, most):
        """Makes the moment a random one: the same one with the same seed, as far as the processor does."""
        time.sleep(most * self.random.random())

    def unplug(self, streams=False):
        """If it streams for sure, also in the middle of a frame."""
        self.done["unplugged"] += 1
        if streams and self.random.random() < 0.7:
            self.cameras(f"unplug scope after-bytes={self.random.randrange(1, 60000)}")
            self.wait("it is unplugged", lambda: not usb_node("scope"))
        else:
            self.cameras("unplug scope")

    def snapshot(self):
        self.done["requested"] += 1
        self.press_keys("ctrl+s")

    def press(self, name):
        self.done["requested"] += 1
        self.cameras(f"press {name}")

    def record(self):
        self.press_keys("ctrl+shift+s")
        wanted = self.random.randint(1, 12)
        self.least = self.wait("a recording grows", lambda: next((count for movie in self.temporary(".mov") if (
            count := movie.read_bytes().count(START_OF_PICTURE)) >= wanted), 0))
        self.movies = range(1, 2)

    def wait_for_session(self, name):
        """Before that, keys do nothing."""
        self.wait_for_stream(name)
        self.wait("the session streams",
                  lambda: re.findall("Camera session: (.*)", self.program.log)[-1:] == ["streaming"])

    def take_one(self, name):
        """It streams again, for the user as well, who is asked nothing any more."""
        self.wait_for_session(name)
        self.wait("there is no question", lambda: self.windows() == [self.window])
        self.wait("there are its nodes only", lambda: len(list(Path("/dev").glob("video*"))) == 2)
        count = len(self.reported())
        self.random.choice([self.snapshot, lambda: self.press(name)])()
        self.wait("a snapshot is in the album", lambda: len(self.reported()) > count)

    # What must hold.

    def reported(self):
        return [Path(path) for path in re.findall("Capture in the album: (.*)\n", self.program.log)]

    def temporary(self, *suffixes):
        return [path for path in (self.desktop.folder / "tmp").rglob("*.*") if path.suffix in suffixes]

    def left(self):
        """What there still is of cameras, while none is plugged in."""
        process = Path(f"/proc/{self.program.pid}")
        held = (process / "maps").read_text() + subprocess.run(["ls", "-l", process / "fd"], capture_output=True,
                                                               text=True, check=False).stdout
        nodes = [str(node) for each in ("video*", "media*", "input/event*") for node in Path("/dev").glob(each)]
        buffers = re.findall(".* vb2_.*", Path("/proc/vmallocinfo").read_text())
        return nodes + buffers + re.findall(r"/dev/(?:video|media|input/|bus/usb/)\S+", held)

    def nothing_is_left(self):
        with contextlib.suppress(Failure):
            self.wait("nothing is left of the camera", lambda: not self.left(), 10)
        self.assertEqual(self.left(), [])
        kernel = subprocess.run(["dmesg", "--read-clear"], capture_output=True, text=True, check=True).stdout
        self.assertIsNone(KERNEL_FAULT.search(kernel), kernel)

    def measure(self):
        process = Path(f"/proc/{self.program.pid}")
        lines = (process / "status").read_text() + Path("/proc/meminfo").read_text()
        numbers = {name: int(number) for name, number in re.findall(r"(\w+):\s+(\d+)", lines)}
        kept = numbers["MemTotal"] - sum(map(numbers.get, FOR_OTHERS))
        self.used = {"handles": len(list((process / "fd").iterdir())), "threads": numbers["Threads"],
                     "MiB": numbers["VmRSS"] // 1024, "kernel MiB": kept // 1024,
                     "its objects KiB": numbers["SUnreclaim"] + numbers["VmallocUsed"]}
        if self.done["rounds"] <= 3:  # by then everything was in use once
            self.first = self.used
        for name, most in MOST_MORE.items():
            self.assertLessEqual(self.used[name], self.first[name] + most, f"{name}; first {self.first}")

    def check_captures(self):
        """All that were reported are in the album, once and whole, and nothing else; nothing is on its way for ever."""
        self.wait("nothing is on its way", lambda: not self.temporary(".jpg", ".mov", ".part"))
        self.wait("the album has what was reported", lambda: sorted(self.album.glob("*.*")) == sorted(self.reported()))
        new = [path for path in self.reported() if path not in self.checked]
        self.checked |= {path: hashlib.sha1(path.read_bytes()).digest() for path in new}
        movies = [path for path in new if path.suffix == ".mov"]
        self.done += Counter(movies=len(movies), snapshots=len(new) - len(movies))
        self.assertLessEqual(self.done["snapshots"], self.done["requested"])
        self.assertIn(len(movies), self.movies)
        self.movies = range(1)
        for path in new:
            pictures = pictures_in(path) if path in movies else [path.read_bytes()]
            self.assertGreaterEqual(len(pictures), self.least if path in movies else 1)
            for picture in pictures:
                self.assert_sent(picture)


if __name__ == "__main__":
    unittest.main(verbosity=2)
