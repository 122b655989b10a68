# SPDX-License-Identifier: GPL-3.0-or-later
"""Whether all that was captured is in the album: as often as reported, and to the byte what the camera delivered."""

import collections
import hashlib
import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests" / "monkey"))
from watch import REPORTED, picture_bytes  # noqa: E402

DECODED_EVERY = 100  # pictures, besides those of the camera
AMISS = 1.0  # seconds by which a recording may be shorter or longer than the time between its two keys


class Captures:
    """Of one run that has ended. `faults` says in words what is wrong, and is empty if nothing is."""

    def __init__(self, files, log, frames, rate):
        self.faults = []
        self._rate = rate
        self._files = sorted(files)
        self._count_reports(REPORTED.findall(log))
        originals = sorted(frames.iterdir())
        self._pictures = {picture_bytes(path) for path in originals}
        self._packets = {hashlib.md5(path.read_bytes()).hexdigest() for path in originals}
        self.pictures = [path for path in self._files if path.suffix == ".jpg"]
        self.movies = [path for path in self._files if path.suffix == ".mov"]
        self._look_at_pictures(originals)
        recordings = [self._recording(path) for path in self.movies]
        self.lengths = [length for length, *_ in recordings]
        self.frames, self.missing = (sum(column) for column in list(zip(*recordings))[1:] or ([], []))

    def bytes(self):
        return sum(path.stat().st_size for path in self._files)

    def expect(self, pictures, seconds_of_recordings):
        """The recordings in the order in which they were made, which is that of their names."""
        if len(self.pictures) != pictures:
            self.faults.append(f"{len(self.pictures)} pictures in place of {pictures}")
        if len(self.movies) != len(seconds_of_recordings):
            self.faults.append(f"{len(self.movies)} recordings in place of {len(seconds_of_recordings)}")
        for path, length, wanted in zip(self.movies, self.lengths, seconds_of_recordings):
            if abs(length - wanted) > AMISS:
                self.faults.append(f"{path.name} has {length:.1f} s in place of {wanted:.1f}")

    def _count_reports(self, reported):
        found = {str(path): path.name for path in self._files}
        for path, times in collections.Counter(reported).items():
            if path not in found:
                self.faults.append(f"{path} was reported and is not there")
            elif times > 1:
                self.faults.append(f"{found[path]} was reported {times} times")
        self.faults += [f"{name} was not reported" for path, name in found.items() if path not in reported]

    def _look_at_pictures(self, originals):
        """Each is one of the camera's frames, but for the metadata; each of those can be decoded, and so can a sample."""
        for path in self.pictures:
            if picture_bytes(path) not in self._pictures:
                self.faults.append(f"{path.name} is none of the camera's pictures")
        for path in [*originals, *self.pictures[::DECODED_EVERY]]:
            self._output(path, "ffmpeg", "-xerror", "-i", path, "-f", "null", "-")

    def _recording(self, path):
        """Seconds, frames, and how many are missing by the times of the others."""
        output = self._output(path, "ffprobe", "-show_entries", "packet=pts_time,data_hash", "-show_data_hash", "md5",
                              "-of", "csv=p=0", path)
        packets = re.findall(r"^([\d.]+),MD5:(\w+)", output, re.M)
        if not packets:
            self.faults.append(f"{path.name} has no pictures")
            return 0, 0, 0
        if strange := sum(md5 not in self._packets for _, md5 in packets):
            self.faults.append(f"{path.name}: {strange} of its frames are none of the camera's")
        length = float(packets[-1][0]) - float(packets[0][0])
        return length + 1 / self._rate, len(packets), round(length * self._rate) + 1 - len(packets)

    def _output(self, path, program, *arguments):
        result = subprocess.run([program, "-v", "error", *arguments], capture_output=True, text=True, check=False)
        if result.returncode or result.stderr:
            self.faults.append(f"{path.name}: {result.stderr.strip()[:200] or result.returncode}")
        return result.stdout
