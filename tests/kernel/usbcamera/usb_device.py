# SPDX-License-Identifier: GPL-3.0-or-later
"""What every USB device does: it is plugged and unplugged, and answers the standard requests on endpoint 0."""

import select
import struct
import threading
from collections import defaultdict, deque

from usbip import STALL, Cable

GET_STATUS, CLEAR_FEATURE, SET_FEATURE = 0, 1, 3
GET_DESCRIPTOR, SET_CONFIGURATION, SET_INTERFACE = 6, 9, 11
DEVICE, CONFIGURATION, STRING = 1, 2, 3
INWARD, NOT_STANDARD, RECIPIENT, TO_ENDPOINT = 0x80, 0x60, 0x1f, 0x02  # in the type of a request
SETUP = struct.Struct("<BBHHH")


class Stall(Exception):
    """The device refuses a control request."""


class UsbDevice:
    """A device with its thread, which lives as long as the device is plugged in.

    Its state is shared with that thread: methods are called within `with device:`.
    """

    def __init__(self, descriptor, configuration, strings):
        self._lock = threading.Lock()
        self.cable = None
        self.log = []
        self.requests_left = None  # to endpoint 0, until it is unplugged at one more
        self._descriptor, self._configuration = descriptor, configuration
        self._strings = [b"\x09\x04"] + [text.encode("utf-16-le") for text in strings]
        self._thread = None

    def __enter__(self):
        self._lock.acquire()

    def __exit__(self, *_):
        if self.cable:
            self.cable.flush()
        self._lock.release()

    def plug(self):
        self.waiting = defaultdict(deque)  # the host's requests to an endpoint, oldest first
        self.cable = Cable()
        self._thread = threading.Thread(target=self._serve, args=(self.cable,), daemon=True)
        self._thread.start()

    def unplug(self):
        self.cable.unplug()
        self.cable = None
        self.unplugged()

    # What a kind of device adds.

    def control(self, kind, request, value, index, length, data):
        """Answers a class or vendor request: the bytes that it brings, or a Stall."""
        raise Stall

    def requested(self, endpoint):
        """The host has one more request waiting for an endpoint."""

    def endpoint_reset(self, endpoint):
        """The host cleared the halt of an endpoint."""

    def unplugged(self):
        """It has lost its power."""

    def go_on(self):
        """Answers what can be answered by now; returns in how many milliseconds to call it again, or None."""
        return None

    # The thread.

    def _serve(self, cable):
        poll = select.poll()
        poll.register(cable, select.POLLIN)
        wake = None
        while True:
            requests = cable.receive() if poll.poll(wake) else ()
            with self:
                if cable is not self.cable:
                    break
                if requests is None:
                    self.unplug()
                    break
                for request in requests:
                    self._take(request)
                    if not self.cable:
                        break
                else:
                    wake = self.go_on()
        cable.close()

    def _take(self, request):
        if request.unlinks is not None:
            self._unlink(request)
        elif request.endpoint:
            self.waiting[request.endpoint].append(request)
            self.requested(request.endpoint)
        else:
            self._answer_control(request)

    def _unlink(self, request):
        """The host takes a request back."""
        found = [(waiting, each) for waiting in self.waiting.values() for each in waiting
                 if each.number == request.unlinks]
        for waiting, each in found:
            waiting.remove(each)
        self.cable.answer_unlink(request, was_waiting=bool(found))

    def _answer_control(self, request):
        if self.requests_left is not None:
            self.requests_left -= 1
            if self.requests_left < 0:
                self.requests_left = None
                self.unplug()
                return
        kind, what, value, index, length = SETUP.unpack(request.setup)
        try:
            if kind & NOT_STANDARD:
                answer = self.control(kind, what, value, index, length, request.data)
            else:
                answer = self._standard(kind & RECIPIENT, what, value, index)
        except Stall:
            self.cable.answer(request, status=STALL)
            return
        if kind & INWARD:
            answer = answer[:length]
            self.cable.answer(request, [answer], len(answer))
        else:
            self.cable.answer(request, length=length)

    def _standard(self, recipient, what, value, index):
        if what == GET_DESCRIPTOR:
            return self._descriptor_of(value >> 8, value & 0xff)
        if what == GET_STATUS:
            return b"\0\0"
        if what == CLEAR_FEATURE and recipient == TO_ENDPOINT:
            self.endpoint_reset(index & 0x0f)
        elif what not in (SET_INTERFACE, SET_CONFIGURATION, SET_FEATURE, CLEAR_FEATURE):
            raise Stall
        return b""

    def _descriptor_of(self, kind, index):
        if kind == DEVICE:
            return self._descriptor
        if kind == CONFIGURATION:
            return self._configuration
        if kind == STRING and index < len(self._strings):
            text = self._strings[index]
            return bytes([len(text) + 2, STRING]) + text
        raise Stall
