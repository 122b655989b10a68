# SPDX-License-Identifier: GPL-3.0-or-later
"""What is wanted of the program, in one place, and the table that compares it with what was measured."""

import os
import re
from collections import namedtuple
from pathlib import Path

from program_run import table


class Limit(namedtuple("Limit", "words value strict unit", defaults=[""])):
    def is_kept_by(self, measured):
        return measured < self.value if self.strict else measured <= self.value

    def __str__(self):
        return f"{self.words} {self.value:g}{self.unit}"


def at_most(value, unit=""):
    return Limit("at most", value, False, unit)


def below(value, unit=""):
    return Limit("below", value, True, unit)


# "Decode" and "encode": what TurboJPEG alone takes, between JPEG and planes; to encode, at the camera's rate.
# "Player": mpv, ffplay or GStreamer.
WANTED = {
    "CPU of a frame, 2592x1944 MJPEG at 100 %, to decode": at_most(0.55),
    "CPU of a frame, 2592x1944 MJPEG at 200 %, to decode": at_most(0.45),
    "CPU of a frame, 2592x1944 MJPEG at 50 %, to decode": at_most(0.7),
    "CPU of a frame, 1920x1080 MJPEG at 100 %, to decode": at_most(0.85),
    "CPU of a frame, 640x480 MJPEG at 100 %, to decode": at_most(2),
    "CPU of a frame, 640x480 MJPEG at 100 %, to the best player": below(1),
    "CPU of a frame, 1920x1080 YUYV at 100 %, to the best player": at_most(0.3),
    "CPU of a frame, 1920x1080 YUYV at 50 %, to the best player": at_most(0.3),
    "the measuring grid, more CPU": at_most(5, " %"),
    "latency, 640x480 MJPEG, to decode and a screen interval": at_most(1),
    "latency, 1920x1080 MJPEG, to decode and a screen interval": at_most(1),
    "latency, 2592x1944 MJPEG, to decode and a screen interval": at_most(1),
    "start to the first picture, the slowest": at_most(130, " ms"),
    "start to the first picture, to the slowest player": at_most(1),
    "CPU of a frame, minimised, to decode": at_most(0.1),
    "CPU of a frame, covered, to decode": at_most(0.1),
    "wake-ups a second without a camera": below(2),
    "memory growth, live image": at_most(1, " MiB"),
    "recording adds, 2592x1944 MJPEG": below(1, " ms"),
    "recording adds, 1920x1080 YUYV, to encode": at_most(1.15),
    "recording adds, 1920x1080 YUYV without grain, to encode": at_most(1.15),
    "frames missing in a movie": at_most(0),
    "snapshot, key to file, median": below(50, " ms"),
    "memory growth, recording": at_most(1, " MiB"),
    "album, window to its thumbnails, made": at_most(150, " ms"),
    "album, hold-ups above 16 ms": at_most(0),
    "album, memory after scrolling": below(300, " MiB"),
    "thumbnails of 256 pixels, best other to ours": below(1),
    "thumbnails of 500 pixels, best other to ours": below(1),
    "ZIP export, time to zip's": at_most(1),
    "ZIP export, memory": below(64, " MiB"),
    "smaller movie, time to ffmpeg's": at_most(1.25),
    "live view, frames lost to an encoder": at_most(3, " %"),
    "series, CPU of a picture": below(50, " ms"),
    "series, hold-ups above 16 ms": at_most(0),
    "soak, private memory, more at the end": at_most(5, " MiB"),
    "soak, open files, more at the end": at_most(0),
    "soak, threads, more at the end": at_most(0),
    "soak, latency, end to beginning": at_most(1.1),
    "soak, 99th percentile of latency, end to beginning": at_most(1.25),
    "soak, frames not shown, the worst part": at_most(2, " per mille"),
    "soak, frames missing in recordings": at_most(1, " per mille"),
    "soak, pictures missed by the series": at_most(0),
    "soak, captures lost, damaged or double": at_most(0),
}


class Results:
    """Collects what the parts measure."""

    def __init__(self):
        self._measured = {}

    def add(self, name, value):
        """A name of WANTED. Of several values, the largest counts."""
        assert name in WANTED, name
        self.add_if_wanted(name, value)

    def add_if_wanted(self, name, value):
        if name in WANTED:
            self._measured[name] = max(value, self._measured.get(name, value))

    def print(self):
        rows = []
        for name, wanted in WANTED.items():
            if name in self._measured:
                measured = self._measured[name]
                rows.append([name, wanted, f"{measured:.2f}".rstrip("0").rstrip(".") + wanted.unit,
                             "ok" if wanted.is_kept_by(measured) else "FALLS SHORT"])
        if not rows:
            return
        short = sum(row[-1] != "ok" for row in rows)
        print(f"## Wanted and measured\n\n{machine()}\n")
        print(table(["", "wanted", "measured", ""], rows))
        print(f"\n{short} of {len(rows)} fall short." if short else f"\nAll {len(rows)} are kept.", flush=True)


def machine():
    cores = re.findall(r"^model name\s*:\s*(.*)", Path("/proc/cpuinfo").read_text(), re.M)
    speeds = [float(mhz) for mhz in re.findall(r"^cpu MHz\s*:\s*([\d.]+)", Path("/proc/cpuinfo").read_text(), re.M)]
    names = ", ".join(sorted(set(cores))) or "unknown"
    usable, count = len(os.sched_getaffinity(0)), os.cpu_count()
    number = f"{count}" if usable == count else f"{usable} of {count}"
    return f"On {number} cores ({names}, {max(speeds, default=0):.0f} MHz), load {os.getloadavg()[0]:.1f}."
