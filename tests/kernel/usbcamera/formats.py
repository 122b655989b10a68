# SPDX-License-Identifier: GPL-3.0-or-later
"""The pictures a camera offers, and the negotiation about them (probe and commit)."""

import struct

SIZES = ((640, 480), (2592, 1944))  # of the one format, MJPEG
INTERVALS = (666666, 333333, 2000000)  # in units of 100 ns, the default first

PROBE = struct.Struct("<HBBI 10x II IBBBB")


def frame_bytes(width, height):
    """The most that a frame takes."""
    return width * height * 2


class Choice:
    """What host and camera have agreed on: one of the sizes, and an interval."""

    def __init__(self, payload_bytes, block=b""):
        """From the host's block of any length; what it leaves open or requests wrongly becomes the nearest we have."""
        self.payload_bytes = payload_bytes
        self.hint, _, size_index, interval = PROBE.unpack(block[:PROBE.size].ljust(PROBE.size, b"\0"))[:4]
        self.size_index = min(max(size_index, 1), len(SIZES))
        self.size = SIZES[self.size_index - 1]
        wanted = interval or INTERVALS[0]
        self.interval = min(INTERVALS, key=lambda offered: abs(offered - wanted))

    @property
    def seconds(self):
        return self.interval / 1e7

    def pack(self):
        return PROBE.pack(self.hint, 1, self.size_index, self.interval, frame_bytes(*self.size),
                          self.payload_bytes, 48000000, 0, 0, 0, 0)
