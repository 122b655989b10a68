# SPDX-License-Identifier: GPL-3.0-or-later
"""A USB Video Class camera: its units, its stream, and the endpoint on which it reports its button."""

from collections import deque

import controls
import descriptors
from descriptors import STATUS_ENDPOINT, STREAM_ENDPOINT, VIDEO_STREAMING
from stream import Stream
from usb_device import UsbDevice

PROBE = 1


class UvcCamera(UsbDevice):
    def __init__(self, title="Test Camera", serial="1", mode="paced", rate=None):
        super().__init__(descriptors.device((0x1209, 0x0001), (0xef, 2, 1)), descriptors.camera_configuration(),
                         ("Brimwell", title, serial))
        self.controls = controls.Controls()
        self.stream = Stream(self, mode == "paced", rate)
        self._status = deque()

    def unplugged(self):
        self.controls.reset()
        self.stream.power_up()
        self._status.clear()

    def press(self):
        self._status += (bytes((2, VIDEO_STREAMING, 0, value)) for value in (1, 0))
        self._answer_status()

    def _answer_status(self):
        waiting = self.waiting[STATUS_ENDPOINT]
        while waiting and self._status:
            status = self._status.popleft()
            self.cable.answer(waiting.popleft(), [status], len(status))

    def requested(self, endpoint):
        if endpoint == STREAM_ENDPOINT:
            self.stream.requested()
        else:
            self._answer_status()

    def endpoint_reset(self, endpoint):
        if endpoint == STREAM_ENDPOINT:
            self.stream.reset()

    def go_on(self):
        return self.stream.go_on()

    def control(self, kind, request, value, index, length, data):
        selector, unit, interface = value >> 8, index >> 8, index & 0xff
        if interface != VIDEO_STREAMING:
            return self.controls.request(unit, selector, request, data)
        stream = self.stream
        if request != controls.SET_CURRENT:  # least, most and default are what was agreed on last
            return stream.probed.pack()
        if selector == PROBE:
            stream.probed = stream.choose(data)
        else:
            stream.reset()
            stream.choice = stream.choose(data)
        return b""
