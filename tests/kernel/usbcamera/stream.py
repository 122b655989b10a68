# SPDX-License-Identifier: GPL-3.0-or-later
"""The streaming interface: when frames begin, and how they are cut into payloads for the host's requests."""

import time

from descriptors import BULK_PACKET, STREAM_ENDPOINT
from formats import Choice
from frames import Frames

# The kernel's requests to a bulk endpoint are that large, so a payload is one request.
BULK_PAYLOAD = 32 * BULK_PACKET
HEADER_BYTES = 2
TOGGLE, END_OF_FRAME, ERROR, END_OF_HEADER = 0x01, 0x02, 0x40, 0x80


class Stream:
    """Runs from the first request for data until reset(). `paced`: a frame begins at each tick of the camera's clock
    and is left out while the last one is still on its way. Otherwise: as many as were pushed, one after the other.
    """

    def __init__(self, device, paced, rate):
        self._device, self._paced, self._rate = device, paced, rate
        self.frames = Frames()
        self.power_up()

    def power_up(self):
        self.running = self._stalled = False
        self.pushed = self.sent = 0
        self.bytes_left = None
        self.probed = self.choice = self.choose()
        self._toggle = 0
        self._frame = None

    def choose(self, block=b""):
        return Choice(BULK_PAYLOAD, block)

    def reset(self):
        """The host has ended the stream, or is about to begin it."""
        self.running = self._stalled = False
        self._frame = None
        self.frames.restart()

    def stall(self):
        """Nothing more until the host resets the stream."""
        self._stalled = True

    def push(self, count):
        self.pushed += count
        self._serve()

    def requested(self):
        if not self.running:
            self.running = True
            self._due = time.monotonic()
            self._device.log.append("start")

    def go_on(self):
        """Sends what there is to send; milliseconds until the next frame is due, or None."""
        self._serve()
        if not (self._paced and self.running):
            return None
        now = time.monotonic()
        if now >= self._due:
            interval = 1 / self._rate if self._rate else self.choice.seconds
            missed = int((now - self._due) / interval)
            self._due += (missed + 1) * interval
            if not self._frame:
                self.pushed = 1
                self._serve()
        return max(0, int((self._due - now) * 1000) + 1)

    def _serve(self):
        waiting = self._device.waiting[STREAM_ENDPOINT]
        while waiting and self.running and not self._stalled and (self._frame or self.pushed):
            if not self._frame:
                self.pushed -= 1
                self._begin()
            self._answer(waiting.popleft())
            if self.bytes_left is not None and self.bytes_left <= 0:
                self._device.unplug()

    def _begin(self):
        self._frame = self.frames.take(self.choice)
        self._data, self._sent = memoryview(self._frame.data), 0
        self._toggle ^= TOGGLE

    def _payload(self, length):
        """The next of the frame, header and data, in at most `length` bytes."""
        data = self._data[self._sent:self._sent + length - HEADER_BYTES]
        self._sent += len(data)
        flags = END_OF_HEADER | self._toggle | (ERROR if self._frame.error else 0)
        if self._sent == len(self._data):
            flags |= END_OF_FRAME
            self.sent += 1
            self._frame = None
        if self.bytes_left is not None:
            self.bytes_left -= len(data)
        return bytes((HEADER_BYTES, flags)), data

    def _answer(self, request):
        # A payload ends where it has the agreed size or a request is not filled.
        whole = request.length >= BULK_PAYLOAD
        header, data = self._payload(BULK_PAYLOAD if whole else request.length - 1)
        self._device.cable.answer(request, (header, data), len(header) + len(data))
