# SPDX-License-Identifier: GPL-3.0-or-later
"""Descriptors, as the USB and USB Video Class 1.1 standards lay them out."""

import struct

import controls
from formats import INTERVALS, SIZES, frame_bytes

VIDEO_CONTROL, VIDEO_STREAMING = 0, 1
STATUS_ENDPOINT, STREAM_ENDPOINT = 1, 2
OUTPUT_TERMINAL = 3
INWARD = 0x80
BULK, INTERRUPT = 2, 3
STATUS_BYTES = 16
BULK_PACKET = 512

INTERFACE_ASSOCIATION, CLASS_INTERFACE, CLASS_ENDPOINT = 0x0b, 0x24, 0x25
VIDEO, VENDOR_SPECIFIC = 0x0e, 0xff


def descriptor(kind, layout, *values):
    body = struct.pack("<" + layout, *values)
    return bytes([len(body) + 2, kind]) + body


def device(identity, classes):
    """`identity` is (vendor, product); strings 1 to 3 name maker, product and serial number."""
    return descriptor(0x01, "HBBBB HHH BBBB", 0x0200, *classes, 64, *identity, 0x0100, 1, 2, 3, 1)


def configuration(interfaces, *parts):
    body = b"".join(parts)
    return descriptor(0x02, "HBBBBB", 9 + len(body), interfaces, 1, 0, 0x80, 250) + body


def interface(number, alternate, endpoints, classes):
    return descriptor(0x04, "BBBBBBB", number, alternate, endpoints, *classes, 0)


def endpoint(number, kind, packet, interval=0):
    return descriptor(0x05, "BBHB", INWARD | number, kind, packet, interval)


def chip_configuration():
    return configuration(1, interface(0, 0, 0, (VENDOR_SPECIFIC, 0, 0)))


def camera_configuration():
    return configuration(
        2,
        descriptor(INTERFACE_ASSOCIATION, "BBBBBB", VIDEO_CONTROL, 2, VIDEO, 3, 0, 0),
        interface(VIDEO_CONTROL, 0, 1, (VIDEO, 1, 0)),
        _units(),
        endpoint(STATUS_ENDPOINT, INTERRUPT, STATUS_BYTES, 6),
        descriptor(CLASS_ENDPOINT, "BH", 3, STATUS_BYTES),
        interface(VIDEO_STREAMING, 0, 1, (VIDEO, 2, 0)),
        _stream_format(),
        endpoint(STREAM_ENDPOINT, BULK, BULK_PACKET))


def _units():
    camera = controls.bit_map(controls.CAMERA_TERMINAL).to_bytes(3, "little")
    units = descriptor(CLASS_INTERFACE, "BBHBBHHHB3s", 2, controls.CAMERA_TERMINAL, 0x0201, 0, 0, 0, 0, 0, 3, camera)
    units += descriptor(CLASS_INTERFACE, "BBBHBHBB", 5, controls.PROCESSING_UNIT, controls.CAMERA_TERMINAL, 0, 2,
                        controls.bit_map(controls.PROCESSING_UNIT), 0, 0)
    units += descriptor(CLASS_INTERFACE, "BBHBBB", 3, OUTPUT_TERMINAL, 0x0101, 0, controls.PROCESSING_UNIT, 0)
    return descriptor(CLASS_INTERFACE, "BHHIBB", 1, 0x0110, 13 + len(units), 48000000, 1, VIDEO_STREAMING) + units


def _stream_format():
    body = descriptor(CLASS_INTERFACE, "BBBBBBBBB", 6, 1, len(SIZES), 1, 1, 0, 0, 0, 0)
    for number, size in enumerate(SIZES, 1):
        most = frame_bytes(*size)
        rates = [most * 8 * 10000000 // interval for interval in INTERVALS]
        body += descriptor(CLASS_INTERFACE, f"BBBHHIIIIB{len(INTERVALS)}I", 7, number, 0, *size, min(rates),
                           min(max(rates), 0xffffffff), most, INTERVALS[0], len(INTERVALS), *sorted(INTERVALS))
    body += descriptor(CLASS_INTERFACE, "BBBB", 0x0d, 1, 1, 4)
    # One button, for any use: the trigger fields. The stream itself has no controls.
    return descriptor(CLASS_INTERFACE, "BBHBBBBBBBB", 1, 1, 14 + len(body), INWARD | STREAM_ENDPOINT, 0, OUTPUT_TERMINAL,
                      0, 1, 1, 1, 0) + body
