"""A USB Video Class camera: its units, its stream, and the endpoint on which it reports its button."""

from collections import deque

import controls
import descriptors
from descriptors import STATUS_ENDPOINT, STREAM_ENDPOINT, VIDEO_CONTROL, VIDEO_STREAMING
from stream import Stream
from usb_device import Stall, UsbDevice

PROBE, COMMIT = 1, 2
LAST_ERROR = 2
OUT_OF_RANGE, UNKNOWN_CONTROL = 4, 6
TO_INTERFACE = 0x21


class UvcCamera(UsbDevice):
    def __init__(self, title="Test Camera", serial="1", mode="paced", rate=None):
        if mode not in ("paced", "pushed"):
            raise ValueError("mode is paced or pushed")
        super().__init__(descriptors.device((0x1209, 0x0001), (0xef, 2, 1)), descriptors.camera_configuration(),
                         ("Brimwell", title, serial))
        self.controls = controls.Controls(self.log)
        self.stream = Stream(self, mode == "paced", rate)
        self._last_error = 0
        self._status = deque()
        self._listening = False

    def unplugged(self):
        self.controls.reset()
        self.stream.power_up()
        self._status.clear()
        self._listening = False

    def press(self):
        if not self._listening:
            raise ValueError("no program has the camera open")
        self._status += (bytes((2, VIDEO_STREAMING, 0, value)) for value in (1, 0))
        self._answer_status()

    def _answer_status(self):
        waiting = self.waiting[STATUS_ENDPOINT]
        while waiting and self._status:
            status = self._status.popleft()
            self.cable.answer(waiting.popleft(), [status], len(status))

    def asked(self, endpoint):
        if endpoint == STREAM_ENDPOINT:
            self.stream.asked()
        else:
            self._listening = True
            self._answer_status()

    def unlinked(self, endpoint):
        if endpoint == STATUS_ENDPOINT:
            self._listening = False
            self._status.clear()

    def endpoint_reset(self, endpoint):
        if endpoint == STREAM_ENDPOINT:
            self.stream.reset()

    def go_on(self):
        return self.stream.go_on()

    def control(self, kind, request, value, index, length, data):
        if kind & 0x7f != TO_INTERFACE:
            raise Stall
        selector, unit, interface = value >> 8, index >> 8, index & 0xff
        if interface == VIDEO_STREAMING:
            return self._stream_control(selector, request, data)
        if interface == VIDEO_CONTROL and unit == 0 and selector == LAST_ERROR:
            return bytes([self._last_error])
        try:
            return self.controls.request(unit, selector, request, data)
        except Stall:
            self._last_error = OUT_OF_RANGE if request == controls.SET_CURRENT else UNKNOWN_CONTROL
            raise

    def _stream_control(self, selector, request, data):
        stream = self.stream
        if selector not in (PROBE, COMMIT):
            raise Stall
        if request == controls.GET_INFORMATION:
            return bytes([controls.READ_AND_SET])
        if request == controls.GET_LENGTH:
            return len(stream.probed.pack()).to_bytes(2, "little")
        if request in (controls.GET_MINIMUM, controls.GET_MAXIMUM):
            return stream.probed.pack()
        if request == controls.GET_DEFAULT:
            return stream.choose().pack()
        if request == controls.GET_CURRENT:
            return (stream.probed if selector == PROBE else stream.choice).pack()
        if request != controls.SET_CURRENT:
            raise Stall
        if selector == PROBE:
            stream.probed = stream.choose(data)
            self.log.append(f"probe {stream.probed}")
        else:
            stream.reset()
            stream.choice = stream.choose(data)
            self.log.append(f"commit {stream.choice}")
        return b""
