# SPDX-License-Identifier: GPL-3.0-or-later
"""Where a camera's frames come from, and what goes wrong with them on their way."""

from collections import deque, namedtuple
from pathlib import Path

# A frame to send. `error` sets the error bit in its payload headers.
Frame = namedtuple("Frame", "data error")


FAULTS = {
    "truncate": lambda frame: frame._replace(data=frame.data[:len(frame.data) // 2]),
    "error": lambda frame: frame._replace(error=True),
}


class Frames:
    """The files of a folder in the order of their names, over and over.

    A file is named WIDTHxHEIGHT-NUMBER.jpg; those of the streamed size are sent as they are.
    """

    def __init__(self):
        self._files = {}
        self._next = 0
        self._faults = deque()

    def load(self, folder):
        files = {}
        for path in sorted(Path(folder).glob("*.jpg")):
            files.setdefault(path.name.partition("-")[0], []).append(path.read_bytes())
        self._files = files

    def restart(self):
        self._next = 0

    def add_fault(self, fault):
        """For the next frame, or the one after those of earlier faults."""
        self._faults.append(fault)

    def take(self, choice):
        """The next frame."""
        files = self._files["{}x{}".format(*choice.size)]
        frame = Frame(files[self._next % len(files)], False)
        self._next += 1
        return FAULTS[self._faults.popleft()](frame) if self._faults else frame
