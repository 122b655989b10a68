"""The pictures a camera offers, and the negotiation about them (probe and commit)."""

import struct
from collections import namedtuple

# Names are those of the log and of the files' endings; intervals are in units of 100 ns, the default first.
Format = namedtuple("Format", "name sizes intervals")
FORMATS = (
    Format("mjpeg", ((640, 480), (2592, 1944)), (666666, 333333, 2000000)),
    Format("yuyv", ((640, 480),), (2000000,)),
)

PROBE = struct.Struct("<HBBI 10x II IBBBB")


def frame_bytes(width, height):
    """The most that a frame takes, in either format."""
    return width * height * 2


class Choice:
    """What host and camera agreed upon: one of the formats, one of its sizes, and an interval."""

    def __init__(self, payload_bytes, block=b""):
        """From the host's block of any length; what it leaves open or asks wrongly becomes the nearest we have."""
        self.payload_bytes = payload_bytes
        hint, format_index, size_index, interval = PROBE.unpack(block[:PROBE.size].ljust(PROBE.size, b"\0"))[:4]
        self.format_index = min(max(format_index, 1), len(FORMATS))
        self.format = FORMATS[self.format_index - 1]
        self.size_index = min(max(size_index, 1), len(self.format.sizes))
        self.size = self.format.sizes[self.size_index - 1]
        wished = interval or self.format.intervals[0]
        self.interval = min(self.format.intervals, key=lambda offered: abs(offered - wished))
        self.hint = hint

    @property
    def seconds(self):
        return self.interval / 1e7

    def pack(self):
        return PROBE.pack(self.hint, self.format_index, self.size_index, self.interval, frame_bytes(*self.size),
                          self.payload_bytes, 48000000, 0, 0, 0, 0)

    def __str__(self):
        return "{} {}x{} {}".format(self.format.name, *self.size, self.interval)
