"""Where a camera's frames come from, and what befalls them on their way."""

from collections import deque, namedtuple
from pathlib import Path

SUFFIXES = {"mjpeg": "jpg", "yuyv": "yuyv"}
INVERTED = bytes(range(255, -1, -1))

# A frame to send. `error` sets the error bit in its payload headers.
Frame = namedtuple("Frame", "name data error")


def torn(data):
    """As long as it was, with an eighth in its middle inverted."""
    start, end = len(data) * 7 // 16, len(data) * 9 // 16
    return data[:start] + data[start:end].translate(INVERTED) + data[end:]


FAULTS = {
    "tear": lambda frame: frame._replace(data=torn(frame.data)),
    "truncate": lambda frame: frame._replace(data=frame.data[:len(frame.data) // 2]),
    "short": lambda frame: frame._replace(data=frame.data[:16]),
    "error": lambda frame: frame._replace(error=True),
    "lose": lambda frame: None,
}


class Frames:
    """The files of a folder in the order of their names, over and over.

    A file is named WIDTHxHEIGHT-NUMBER.jpg or .yuyv; those of the streamed format and size are sent as they are.
    """

    def __init__(self):
        self._files = {}
        self._next = 0
        self._faults = deque()

    def load(self, folder):
        files = {}
        for path in sorted(Path(folder).iterdir()):
            files.setdefault((path.suffix[1:], path.name.partition("-")[0]), []).append((path.name, path.read_bytes()))
        if not files:
            raise ValueError("the folder is empty")
        self._files = files

    def restart(self):
        self._next = 0

    def add_fault(self, fault, count):
        """The fault befalls as many frames, once those before it have had theirs."""
        self._faults.extend([fault] * count)

    def take(self, choice):
        """The next frame, or None if it was lost."""
        files = self._files.get((SUFFIXES[choice.format.name], "{}x{}".format(*choice.size)))
        if not files:
            raise LookupError(f"no file of {choice}")
        name, data = files[self._next % len(files)]
        self._next += 1
        frame = Frame(name, data, False)
        return FAULTS[self._faults.popleft()](frame) if self._faults else frame
