#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The registers of a bridge chip on a real USB, and which devices the udev rules give to the person at the screen. Runs
where USB cameras can be plugged in: in the machine.

Usage: test_registers.py CHIP_REGISTERS RULES [TEST...]
"""

import fcntl
import struct
import subprocess
import sys
import unittest
from pathlib import Path

from devices import NOBODY, UsbCameras, wait_until

CHIP_REGISTERS, RULES = sys.argv.pop(1), Path(sys.argv.pop(1))


def usb_device(serial):
    """The sysfs folder of the device with that serial number."""
    def there():
        for file in Path("/sys/bus/usb/devices").glob("*/serial"):
            if file.read_text().strip() == serial:
                return file.parent
        return None

    return wait_until(f"a USB device {serial}", there)


def udevadm(*arguments):
    return subprocess.run(["udevadm", *arguments], capture_output=True, text=True, check=True)


def keyboard():
    """A keyboard with a camera key, as an open file that keeps it there and its event device."""
    def there():
        return next((path for path in Path("/sys/class/input").glob("event*/device/name")
                     if path.read_text() == "Keys\n"), None)

    file = open("/dev/uinput", "wb", buffering=0)
    for request, argument in ((0x40045564, 1), (0x40045565, 212),  # UI_SET_EVBIT EV_KEY, UI_SET_KEYBIT KEY_CAMERA
                              (0x405c5503, struct.pack("4H80sI", 3, 1, 1, 1, b"Keys", 0)), (0x5501, 0)):
        fcntl.ioctl(file, request, argument)
    return file, wait_until("the keyboard", there).parents[1]


class RegistersTest(unittest.TestCase):
    def setUp(self):
        self.cameras = self.enterContext(UsbCameras())

    @staticmethod
    def registers(place, *orders, by=()):
        return subprocess.run([*by, CHIP_REGISTERS, "/dev/video-none", *place, *orders], capture_output=True, text=True,
                              check=True).stdout.splitlines()

    def test_registers(self):
        self.cameras.plug("chip", kind="em28xx")
        device = usb_device("chip")
        place = [(device / name).read_text().strip() for name in ("busnum", "devnum")]
        self.cameras("register chip 0x28 171")
        # one holds fewer bits, one is written more than a byte, one does not exist
        self.assertEqual(self.registers(place, "0x28", "0x1e=255", "0x1e", "0x1b=300", "0x1b", "0x100", "0x28"),
                         ["171", "written", "252", "written", "44", "The chip refuses register 0x100.", "171"])
        self.assertEqual(self.cameras("log chip"), "write 0x1e 255; write 0x1b 44")
        self.assertRegex(self.registers(place, "0x28", by=NOBODY)[0],
                         r"^You may not open /dev/bus/usb/\d{3}/\d{3}\. .*70-brimwellpro\.rules")

        self.cameras("unplug chip")
        wait_until("the device is gone", lambda: not device.exists())
        self.assertRegex(self.registers(place, "0x28")[0], "^The camera is not attached any more")

    def test_rules(self):
        self.assertLess(RULES.name, "73-seat-late.rules")
        rules = Path("/run/udev/rules.d")
        rules.mkdir(parents=True, exist_ok=True)
        (rules / "70-uaccess.rules").symlink_to("/dev/null")  # the system's own, which give cameras away as well
        udevadm("control", "--reload")
        self.cameras.plug("camera")
        self.cameras.plug("chip", kind="em28xx")
        camera, chip = usb_device("camera"), usb_device("chip")
        node, button = (wait_until(pattern, lambda pattern=pattern: next(camera.glob(pattern), None))
                        for pattern in ("*/video4linux/video*", "*/input/input*/event*"))
        file, keys = keyboard()
        self.enterContext(file)
        udevadm("settle")
        devices = {"camera": node, "button": button, "chip": chip, "camera's USB device": camera, "keyboard": keys}

        # without the rules; with them, which do not list this chip, as no driver knows it; with the chip among them
        for text, expected in (("", []), (RULES.read_text(), ["camera", "button"]),
                               (RULES.read_text().replace("2860", "2890"), ["camera", "button", "chip"])):
            (rules / RULES.name).write_text(text)
            udevadm("control", "--reload")
            udevadm("trigger", "--action=add", "--settle", *devices.values())
            given_away = [name for name, path in devices.items() if ":uaccess:" in
                          udevadm("info", "--query=property", "--property=CURRENT_TAGS", path).stdout]
            self.assertEqual(given_away, expected)
        self.assertNotIn(f"{RULES.name}:", udevadm("test", node).stderr)  # lists mistakes in them


if __name__ == "__main__":
    unittest.main(verbosity=2)
