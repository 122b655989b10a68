# SPDX-License-Identifier: GPL-3.0-or-later
"""The controls of a camera: their ranges, their values, and the requests by which the host reads and moves them."""

from collections import namedtuple

from usb_device import Stall

CAMERA_TERMINAL, PROCESSING_UNIT = 1, 2
SET_CURRENT, GET_CURRENT, GET_MINIMUM, GET_MAXIMUM, GET_RESOLUTION = 0x01, 0x81, 0x82, 0x83, 0x84
GET_INFORMATION, GET_DEFAULT = 0x86, 0x87

# What a control can: be read and set; move by itself, when an automatic mode has it.
READ_AND_SET, MOVES = 0x03, 0x08

# `bit` is that of the descriptor's bit map of controls. The step of the exposure mode is, by the standard, the set of
# modes there are: manual and aperture priority.
Control = namedtuple("Control", "name unit selector bit size minimum maximum step default information")
CONTROLS = (
    Control("exposure_mode", CAMERA_TERMINAL, 0x02, 1, 1, 1, 8, 9, 8, READ_AND_SET),
    Control("exposure", CAMERA_TERMINAL, 0x04, 3, 4, 1, 5000, 1, 157, READ_AND_SET | MOVES),
    Control("backlight", PROCESSING_UNIT, 0x01, 8, 2, 0, 2, 1, 1, READ_AND_SET),
    Control("brightness", PROCESSING_UNIT, 0x02, 0, 2, -64, 64, 1, 0, READ_AND_SET),
    Control("contrast", PROCESSING_UNIT, 0x03, 1, 2, 0, 64, 1, 32, READ_AND_SET),
    Control("gain", PROCESSING_UNIT, 0x04, 9, 2, 0, 100, 1, 0, READ_AND_SET),
    Control("hue", PROCESSING_UNIT, 0x06, 2, 2, -40, 40, 1, 0, READ_AND_SET | MOVES),
    Control("saturation", PROCESSING_UNIT, 0x07, 3, 2, 0, 128, 1, 64, READ_AND_SET),
    Control("sharpness", PROCESSING_UNIT, 0x08, 4, 2, 0, 6, 1, 3, READ_AND_SET),
    Control("gamma", PROCESSING_UNIT, 0x09, 5, 2, 72, 500, 1, 100, READ_AND_SET),
    Control("white_balance", PROCESSING_UNIT, 0x0a, 6, 2, 2800, 6500, 10, 4600, READ_AND_SET | MOVES),
    Control("white_balance_auto", PROCESSING_UNIT, 0x0b, 12, 1, 0, 1, 1, 1, READ_AND_SET),
    Control("hue_auto", PROCESSING_UNIT, 0x10, 11, 1, 0, 1, 1, 0, READ_AND_SET),
)
BY_ADDRESS = {(control.unit, control.selector): control for control in CONTROLS}


def bit_map(unit):
    """The controls of a unit as its descriptor lists them."""
    return sum(1 << control.bit for control in CONTROLS if control.unit == unit)


class Controls:
    """The values, by name."""

    def __init__(self):
        self.reset()

    def reset(self):
        self.values = {control.name: control.default for control in CONTROLS}

    def request(self, unit, selector, what, data):
        control = BY_ADDRESS.get((unit, selector))
        if not control:
            raise Stall
        if what == SET_CURRENT:
            self.values[control.name] = int.from_bytes(data, "little", signed=control.minimum < 0)
            return b""
        if what == GET_INFORMATION:
            return bytes([control.information])
        answers = {GET_CURRENT: self.values[control.name], GET_MINIMUM: control.minimum, GET_DEFAULT: control.default,
                   GET_MAXIMUM: control.maximum, GET_RESOLUTION: control.step}
        if what not in answers:
            raise Stall
        return (answers[what] & ((1 << 8 * control.size) - 1)).to_bytes(control.size, "little")
