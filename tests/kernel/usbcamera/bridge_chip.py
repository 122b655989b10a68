# SPDX-License-Identifier: GPL-3.0-or-later
"""A video bridge chip with nothing but its registers, read and written by vendor requests on endpoint 0."""

import descriptors
from usb_device import Stall, UsbDevice

READ, WRITE = 0xc0, 0x40
REGISTERS = 0
# The bits that a register holds, where it does not hold all.
HELD_BITS = {0x1e: 0xfc}


class BridgeChip(UsbDevice):
    """The stock driver of such chips does not claim this product number."""

    def __init__(self, title="Test Receiver", serial="1"):
        super().__init__(descriptors.device((0xeb1a, 0x2890), (0, 0, 0)), descriptors.chip_configuration(),
                         ("Brimwell", title, serial))
        self.unplugged()

    def unplugged(self):
        self._registers = bytearray(256)

    def read(self, number):
        return self._registers[number]

    def write(self, number, value):
        self._registers[number] = value & HELD_BITS.get(number, 0xff)

    def control(self, kind, request, value, index, length, data):
        count = length if kind == READ else len(data)
        if request != REGISTERS or kind not in (READ, WRITE) or not count or index + count > len(self._registers):
            raise Stall
        if kind == READ:
            return bytes(self._registers[index:index + count])
        for number, byte in enumerate(data, index):
            self.write(number, byte)
            self.log.append(f"write {number:#04x} {byte}")
        return b""
