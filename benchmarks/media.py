# SPDX-License-Identifier: GPL-3.0-or-later
"""The movies that all programs show: made once, kept in a cache folder."""

import os
import shutil
import subprocess
from collections import namedtuple
from pathlib import Path

FORMATS = {
    "YUYV": ["-c:v", "rawvideo", "-pix_fmt", "yuyv422"],
    "MJPEG": ["-c:v", "mjpeg", "-pix_fmt", "yuvj422p", "-q:v", "4"],
}
DIFFERENT_FRAMES = 15

CAMERA_GRAIN = 7

Kind = namedtuple("Kind", "width height rate format grain", defaults=[CAMERA_GRAIN])
KINDS = [Kind(width, height, rate, name) for name in FORMATS
         for width, height, rate in ((640, 480, 30), (1920, 1080, 30), (2592, 1944, 15))]

# The sizes at which the measuring grid is calibrated.
GRID_KINDS = [Kind(width, height, 30, name) for name in FORMATS for width, height in ((640, 480), (1600, 1200))]


def title(kind):
    return f"{kind.width}x{kind.height} {kind.format}" + ("" if kind.grain else " without grain")


class Media:
    def __init__(self):
        self.folder = Path(os.environ.get("TMPDIR") or "/var/tmp") / f"brimwellpro-benchmark-media-{os.getuid()}"
        self.folder.mkdir(parents=True, exist_ok=True)

    def movie(self, kind, frames):
        """A movie of that many frames."""
        path = self.folder / f"{self._stem(kind)}-{frames}.avi"
        if not path.exists():
            self._make(path, ["-stream_loop", "-1", "-i", self._loop(kind), "-frames:v", frames, "-c", "copy"])
        self._read_into_memory(path)
        return path

    def pictures(self, kind):
        """A folder with the frames of an MJPEG movie, one file each, unchanged."""
        folder = self.folder / self._stem(kind)
        if not folder.exists():
            part = self._part_of(folder)
            part.mkdir()
            self._ffmpeg(["-i", self._loop(kind), "-c", "copy", "-f", "image2", part / "%03d.jpg"])
            part.rename(folder)
        return folder

    def raw_frames(self, kind):
        """A file with the pixels of a YUYV movie, one frame after the other."""
        path = self.folder / f"{self._stem(kind)}.yuyv"
        if not path.exists():
            self._make(path, ["-i", self._loop(kind), "-c", "copy"], "rawvideo")
        return path

    def _read_into_memory(self, path):
        """Reading a raw movie from the disk costs a program more CPU than showing it."""
        with path.open("rb") as movie, open(os.devnull, "wb") as nowhere:
            shutil.copyfileobj(movie, nowhere, 1 << 20)

    def _stem(self, kind):
        grain = {CAMERA_GRAIN: "", 0: "-smooth"}.get(kind.grain, f"-grain{kind.grain}")
        return f"{kind.width}x{kind.height}-{kind.rate}-{kind.format.lower()}{grain}"

    def _loop(self, kind):
        """A test chart with a moving part and the grain of a camera."""
        path = self.folder / f"{self._stem(kind)}.avi"
        if not path.exists():
            source = f"testsrc2=size={kind.width}x{kind.height}:rate={kind.rate},noise=alls={kind.grain}:allf=t"
            self._make(path, ["-f", "lavfi", "-i", source, "-frames:v", DIFFERENT_FRAMES, *FORMATS[kind.format]])
        return path

    def _make(self, path, arguments, container="avi"):
        part = self._part_of(path)
        self._ffmpeg([*arguments, "-f", container, part])
        part.rename(path)

    @staticmethod
    def _part_of(path):
        return path.with_name(f"{path.name}.{os.getpid()}")

    def _ffmpeg(self, arguments):
        subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", *map(str, arguments)], check=True)
