#!/usr/bin/python3
"""What the other tests in the machine rely on: cameras of vivid, the links and groups of udev, keys of our own making.

Runs in the machine, with two devices of vivid.
"""

import fcntl
import os
import re
import struct
import subprocess
import time
import unittest
from pathlib import Path

EV_KEY, KEY_CAMERA = 1, 212
UI_SET_EVBIT, UI_SET_KEYBIT, UI_DEV_CREATE = 0x40045564, 0x40045565, 0x5501
BUS_VIRTUAL = 6


def v4l2(*arguments):
    done = subprocess.run(["v4l2-ctl", *arguments], stdin=subprocess.DEVNULL, capture_output=True, text=True)
    if done.returncode != 0:
        raise AssertionError(f"v4l2-ctl {arguments}: {done.stderr}")
    return done.stdout + done.stderr


def wait_until(what, condition, seconds=20):
    end = time.monotonic() + seconds
    while not (answer := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.02)
    return answer


def keyboard(name):
    """A keyboard with one key, there until the file is closed."""
    device = open("/dev/uinput", "wb", buffering=0)
    fcntl.ioctl(device, UI_SET_EVBIT, EV_KEY)
    fcntl.ioctl(device, UI_SET_KEYBIT, KEY_CAMERA)
    device.write(struct.pack("80sHHHHi", name.encode(), BUS_VIRTUAL, 1, 1, 1, 0) + bytes(4 * 4 * 64))
    fcntl.ioctl(device, UI_DEV_CREATE)
    return device


def event_nodes(name):
    return [Path("/dev/input", folder.parent.parent.name) for folder in Path("/sys/class/input").glob("event*/device/name")
            if folder.read_text().strip() == name]


class Devices(unittest.TestCase):
    def setUp(self):
        listing = v4l2("--list-devices")
        self.cameras = re.findall(r"^vivid .*:\n\t(/dev/video\d+)$", listing, re.MULTILINE)
        self.assertEqual(len(self.cameras), 2, listing)

    def test_a_control_keeps_what_it_was_set_to(self):
        for camera, value in zip(self.cameras, (17, 203)):
            v4l2("-d", camera, f"--set-ctrl=brightness={value}")
        for camera, value in zip(self.cameras, (17, 203)):
            self.assertEqual(v4l2("-d", camera, "--get-ctrl=brightness"), f"brightness: {value}\n")

    def test_frames_arrive_and_differ(self):
        width, height, count = 320, 180, 30
        frames = v4l2("-d", self.cameras[0], f"--set-fmt-video=width={width},height={height},pixelformat=YUYV",
                      "--stream-mmap", f"--stream-count={count}", "--stream-to=/dev/shm/frames")
        self.assertEqual(frames.count("<"), count)
        data = Path("/dev/shm/frames").read_bytes()
        size = width * height * 2
        self.assertEqual(len(data), count * size)
        self.assertGreater(len({data[at:at + size] for at in range(0, len(data), size)}), 1)

    def test_links_and_groups(self):
        links = {os.path.realpath(link) for link in Path("/dev/v4l/by-path").iterdir()}
        self.assertTrue(links & set(self.cameras), links)
        for camera in self.cameras:
            self.assertEqual((Path(camera).group(), Path(camera).stat().st_mode & 0o777), ("video", 0o660))

    def test_a_keyboard_of_ours_comes_and_goes(self):
        with keyboard("Button of the test"):
            node = wait_until("there is a node", lambda: event_nodes("Button of the test"))[0]
            wait_until("udev has given it to its group", lambda: node.exists() and node.group() == "input")
        wait_until("it is gone", lambda: not node.exists())


if __name__ == "__main__":
    unittest.main(verbosity=2)
