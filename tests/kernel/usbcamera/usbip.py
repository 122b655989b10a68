# SPDX-License-Identifier: GPL-3.0-or-later
"""The cable: USB/IP, spoken with the kernel's virtual host controller over a socket pair.

The protocol is that of Documentation/usb/usbip_protocol in the kernel's tree: headers of 48 bytes, big-endian but for
the eight setup bytes of a control request.
"""

import errno
import re
import socket
import struct
import time
from collections import namedtuple
from pathlib import Path

CONTROLLER = Path("/sys/devices/platform/vhci_hcd.0")
HIGH_SPEED = 3
FREE = "004"

COMMAND_SUBMIT, COMMAND_UNLINK, RETURN_SUBMIT, RETURN_UNLINK = 1, 2, 3, 4
HEADER = struct.Struct(">II4xIIII4x4x4x8s")
ANSWER = struct.Struct(">IIIII iIIII 8x")
MOST_BUFFERS = 1000  # a little less than the system takes in one call

STALL = -32
UNLINKED = -104


# A transfer that the host requests, or the cancelling of an earlier one, whose number is `unlinks`.
Request = namedtuple("Request", "number endpoint length setup data unlinks")


class Cable:
    """Plugged into a port of the host from its making until close(). Answers leave with flush()."""

    def __init__(self):
        self.port = free_port()
        wait_until_forgotten(self.port)
        self._socket, theirs = socket.socketpair()
        with theirs:
            attach(self.port, theirs)
        self._received = b""
        self._outgoing = []

    def fileno(self):
        return self._socket.fileno()

    def unplug(self):
        """At once, from any thread; the reader finds that the host has gone."""
        self.flush()
        self._socket.shutdown(socket.SHUT_RDWR)

    def close(self):
        self._socket.close()

    def receive(self):
        """The whole requests that have arrived, or None when the host has gone."""
        try:
            arrived = self._socket.recv(1 << 16)
        except ConnectionError:
            return None
        if not arrived:
            return None
        received = self._received + arrived
        requests = []
        begin = 0
        while len(received) - begin >= HEADER.size:
            command, number, inward, endpoint, word, length, setup = HEADER.unpack_from(received, begin)
            data = begin + HEADER.size
            end = data if inward or command == COMMAND_UNLINK else data + length
            if end > len(received):
                break
            unlinks = word if command == COMMAND_UNLINK else None
            requests.append(Request(number, endpoint, length, setup, received[data:end], unlinks))
            begin = end
        self._received = received[begin:]
        return requests

    def answer(self, request, buffers=(), length=0, status=0):
        """Ends a transfer: with the data that an inward one brings, or the length that an outward one took."""
        self._outgoing.append(ANSWER.pack(RETURN_SUBMIT, request.number, 0, 0, 0, status, length, 0, 0, 0))
        self._outgoing += buffers

    def answer_unlink(self, request, was_waiting):
        status = UNLINKED if was_waiting else 0
        self._outgoing.append(ANSWER.pack(RETURN_UNLINK, request.number, 0, 0, 0, status, 0, 0, 0, 0))

    def flush(self):
        """In one go: the host takes few large writes more quickly than many small ones."""
        outgoing, self._outgoing = self._outgoing, []
        try:
            while outgoing:
                part, outgoing = outgoing[:MOST_BUFFERS], outgoing[MOST_BUFFERS:]
                sent = self._socket.sendmsg(part)
                if sent < sum(map(len, part)):
                    self._socket.sendall(b"".join(part)[sent:])
        except ConnectionError:
            pass  # the host has gone, as receive() will find


def attach(port, plug):
    """Waits a while for a port that has just been left."""
    end = time.monotonic() + 3
    while True:
        try:
            (CONTROLLER / "attach").write_text(f"{port} {plug.fileno()} {port + 1} {HIGH_SPEED}")
            return
        except OSError as error:
            if error.errno != errno.EBUSY or time.monotonic() > end:
                raise
            time.sleep(0.02)


def wait_until_forgotten(port):
    """Until the kernel has removed the device that was in that port before. A real hub disables a port when its
    device goes; this one does not, so the kernel would take the next device for the old one, even if it has failed to
    set that up. A request that the old one left unanswered keeps it for five seconds.
    """
    end = time.monotonic() + 60
    while any(CONTROLLER.glob(f"usb*/*-{port + 1}")):
        if time.monotonic() > end:
            raise OSError(errno.EBUSY, f"the kernel keeps what was in port {port + 1}")
        time.sleep(0.005)


def free_port():
    """The lowest high-speed port with nothing in it."""
    for line in (CONTROLLER / "status").read_text().splitlines():
        found = re.match(r"hs\s+(\d+)\s+(\d+)", line)
        if found and found.group(2) == FREE:
            return int(found.group(1))
    raise OSError("every port is taken")
