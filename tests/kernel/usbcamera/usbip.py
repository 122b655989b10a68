"""The cable: USB/IP, spoken with the kernel's virtual host controller over a socket pair.

The protocol is that of Documentation/usb/usbip_protocol in the kernel's tree: headers of 48 bytes, big-endian but for
the eight setup bytes of a control request.
"""

import re
import socket
import struct
from pathlib import Path

CONTROLLER = Path("/sys/devices/platform/vhci_hcd.0")
HIGH_SPEED = 3
FREE = "004"

COMMAND_SUBMIT, COMMAND_UNLINK, RETURN_SUBMIT, RETURN_UNLINK = 1, 2, 3, 4
HEADER = struct.Struct(">IIIII IIIII 8s")
ANSWER = struct.Struct(">IIIII iIIII 8x")
PACKET = struct.Struct(">IIIi")
PACKET_SIZE = struct.Struct(">4xI8x")
NO_PACKETS = 0xffffffff

STALL = -32
UNLINKED = -104


class Request:
    """One transfer that the host asks for, or (`unlinks` is set) its wish to have an earlier one back."""

    __slots__ = ("number", "inward", "endpoint", "length", "packets", "setup", "data", "unlinks")


class Cable:
    """Plugged into a port of the host from its making until close()."""

    def __init__(self, port=None):
        self.port = free_port() if port is None else port
        self._socket, theirs = socket.socketpair()
        with theirs:
            try:
                (CONTROLLER / "attach").write_text(f"{self.port} {theirs.fileno()} {self.port + 1} {HIGH_SPEED}")
            except OSError:
                self._socket.close()
                raise
        self._received = bytearray()

    def fileno(self):
        return self._socket.fileno()

    def unplug(self):
        """At once, from any thread; who reads is told that the host has gone."""
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
        self._received += arrived
        requests = []
        while (request := self._next_request()) is not None:
            requests.append(request)
        return requests

    def _next_request(self):
        received = self._received
        if len(received) < HEADER.size:
            return None
        (command, number, _, direction, endpoint, word, length, _, packets, _, setup) = HEADER.unpack_from(received)
        request = Request()
        request.number, request.inward, request.endpoint = number, direction == 1, endpoint
        request.unlinks, request.length, request.setup = None, length, setup
        end = HEADER.size
        if command == COMMAND_UNLINK:
            request.unlinks = word
            packets = length = 0
        if packets == NO_PACKETS:
            packets = 0
        if not request.inward:
            end += length
        whole = end + packets * PACKET.size
        if len(received) < whole:
            return None
        request.data = bytes(received[HEADER.size:end])
        request.packets = [size for (size,) in PACKET_SIZE.iter_unpack(received[end:whole])]
        del received[:whole]
        return request

    def answer(self, request, buffers=(), length=0, status=0):
        """Ends a transfer: with the data that an inward one brings, or the length that an outward one took."""
        header = ANSWER.pack(RETURN_SUBMIT, request.number, 0, 0, 0, status, length, 0, 0, 0)
        self._send([header, *buffers])

    def answer_packets(self, request, buffers, lengths):
        """Ends an isochronous transfer; `lengths` tells how much of each packet was used, the rest stayed empty."""
        sizes = request.packets
        lengths = lengths + [0] * (len(sizes) - len(lengths))
        table = bytearray()
        offset = 0
        for size, length in zip(sizes, lengths):
            table += PACKET.pack(offset, size, length, 0)
            offset += size
        header = ANSWER.pack(RETURN_SUBMIT, request.number, 0, 0, 0, 0, sum(lengths), 0, len(sizes), 0)
        self._send([header, *buffers, table])

    def answer_unlink(self, request, was_waiting):
        status = UNLINKED if was_waiting else 0
        self._send([ANSWER.pack(RETURN_UNLINK, request.number, 0, 0, 0, status, 0, 0, 0, 0)])

    def _send(self, buffers):
        try:
            sent = self._socket.sendmsg(buffers)
            if sent < sum(map(len, buffers)):
                self._socket.sendall(b"".join(buffers)[sent:])
        except ConnectionError:
            pass  # the host has gone, as receive() will tell


def free_port():
    """The lowest high-speed port with nothing in it."""
    for line in (CONTROLLER / "status").read_text().splitlines():
        found = re.match(r"hs\s+(\d+)\s+(\d+)", line)
        if found and found.group(2) == FREE:
            return int(found.group(1))
    raise OSError("every port is taken")
