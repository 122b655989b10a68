#!/usr/bin/python3
"""Shows that the kernel takes our USB cameras for real ones. Runs where they can be plugged in: in the machine.

Usage: test_usb_camera.py FRAMES [TEST...]; FRAMES is a folder made by make_frames.
"""

import ctypes
import re
import select
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from client import UsbCameras
from frames import torn

FRAMES = Path(sys.argv.pop(1)) if len(sys.argv) > 1 else None
SMALL, LARGE = "width=640,height=480,pixelformat=MJPG", "width=2592,height=1944,pixelformat=MJPG"
RAW = "pixelformat=YUYV"
KEY_EVENT, KEY_CAMERA = 1, 212
INPUT_EVENT = struct.Struct("llHHi")


def wait_until(what, condition, seconds=20):
    end = time.monotonic() + seconds
    while not (answer := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.02)
    return answer


def files(pattern, count):
    """The bytes of the first frames, as often as they are sent."""
    paths = sorted(FRAMES.glob(pattern))
    return [paths[number % len(paths)].read_bytes() for number in range(count)]


class UsbCameraTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.cameras = cls.enterClassContext(UsbCameras())
        cls.plug("micro", "mode=pushed title='Ultra Resolution Microscope'")

    def setUp(self):
        self.cameras("forget micro")
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    @classmethod
    def plug(cls, name, options):
        """A camera whose serial number is its name; its capture node."""
        cls.cameras(f"add {name} uvc serial={name} {options}")
        cls.cameras(f"source {name} {FRAMES}")
        cls.cameras(f"plug {name}")
        return cls.node(name)

    @staticmethod
    def node(serial):
        def there():
            links = Path("/dev/v4l/by-id").glob(f"*_{serial}-video-index0")
            return next((link.resolve() for link in links if link.exists()), None)

        return wait_until(f"a node of {serial}", there)

    def capture(self, node, shape, count):
        """The process that captures, and the file it writes. It has a buffer for each frame that is pushed."""
        target = self.folder / f"{node.name}.frames"
        target.unlink(missing_ok=True)
        command = ["v4l2-ctl", "-d", node, "--set-fmt-video", shape, "--stream-mmap=8", "--stream-count", str(count),
                   "--stream-to", target, "--verbose"]
        with open(target.with_suffix(".log"), "w") as log:
            return subprocess.Popen(command, stdout=log, stderr=log), target

    def finish(self, capture):
        process, target = capture
        self.assertEqual(process.wait(30), 0)
        return target.read_bytes()

    @staticmethod
    def control(node, *arguments):
        return subprocess.run(["v4l2-ctl", "-d", node, *arguments], capture_output=True, text=True)

    def test_frames_arrive_as_they_were_sent(self):
        bulk, isochronous = self.node("micro"), self.plug("iso", "mode=pushed endpoint=iso")
        for name, node, shape, pattern in (("micro", bulk, SMALL, "640x480-*.jpg"),
                                           ("micro", bulk, LARGE, "2592x1944-*.jpg"),
                                           ("micro", bulk, RAW, "640x480-*.yuyv"),
                                           ("iso", isochronous, LARGE, "2592x1944-*.jpg")):
            with self.subTest(name=name, shape=shape):
                self.cameras(f"push {name} 4")
                self.assertEqual(self.finish(self.capture(node, shape, 4)), b"".join(files(pattern, 4)))
        log = self.cameras("log micro").split("; ")
        self.assertEqual([line for line in log if not line.startswith("probe")],
                         ["commit mjpeg 640x480 666666", "start", "stop", "commit mjpeg 2592x1944 666666", "start",
                          "stop", "commit yuyv 640x480 2000000", "start", "stop"])

    def test_two_cameras_keep_their_own_time(self):
        frames = 30
        captures = {name: self.capture(self.plug(name, "rate=15"), shape, frames)
                    for name, shape in (("one", SMALL), ("two", LARGE))}
        for name, pattern in (("one", "640x480-*.jpg"), ("two", "2592x1944-*.jpg")):
            self.assertEqual(self.finish(captures[name]), b"".join(files(pattern, frames)))
            print(self.cameras(f"status {name}"), flush=True)  # a machine that is slow enough skips frames
            log = captures[name][1].with_suffix(".log").read_text()
            times = [float(text) for text in re.findall(r" ts: (\S+)", log)]
            self.assertGreater(times[frames - 1] - times[0], 0.8 * (frames - 1) / 15)

    def test_what_befalls_frames(self):
        node = self.node("micro")
        sent = files("640x480-*.jpg", 8)
        for fault in ("tear", "truncate", "error 2", "lose", "short"):
            name, _, count = fault.partition(" ")
            self.cameras(f"{name} micro {count}")
        self.cameras("push micro 8")
        self.assertEqual(self.finish(self.capture(node, SMALL, 5)),
                         torn(sent[0]) + sent[1][:len(sent[1]) // 2] + sent[5][:16] + sent[6] + sent[7])

        capture = self.capture(node, SMALL, 2)
        wait_until("a stream", lambda: "streaming" in self.cameras("status micro"))
        self.cameras("stall micro")
        self.cameras("push micro 2")
        with self.assertRaises(subprocess.TimeoutExpired):
            capture[0].wait(0.5)
        capture[0].kill()
        capture[0].wait()
        wait_until("its end", lambda: "streaming" not in self.cameras("status micro"))
        self.assertEqual(self.finish(self.capture(node, SMALL, 2)), sent[0] + sent[1])

    def test_controls(self):
        node = self.node("micro")
        self.assertRegex(self.control(node, "--list-devices").stdout, r"Ultra Resolution Microscope \(usb-vhci")
        listed = self.control(node, "--list-ctrls-menus").stdout
        self.assertEqual(len(re.findall(r"value=", listed)), 13)
        self.assertRegex(listed, r"brightness .*min=-64 max=64 step=1 default=0 value=0")
        self.assertRegex(listed, r"auto_exposure .*value=3 .*\n\s+1: Manual Mode\n\s+3: Aperture Priority Mode\n")

        refused = self.control(node, "--set-ctrl", "exposure_time_absolute=100")
        self.assertIn("Permission denied", refused.stderr)
        for wish in ("brightness=-20", "auto_exposure=1", "exposure_time_absolute=100"):
            self.control(node, "--set-ctrl", wish)
        self.assertEqual(self.cameras("log micro"), "set brightness -20; set exposure_mode 1; set exposure 100")
        self.assertEqual(self.cameras("get micro brightness"), "-20")

        # What moves by itself is told to those who wait for it; who asks gets what the kernel remembers.
        with open(node, "rb"):
            event = subprocess.Popen(["v4l2-ctl", "-d", node, "--wait-for-event=ctrl=brightness"],
                                     stdout=subprocess.PIPE, text=True)
            self.addCleanup(event.kill)
            wait_until("a listener", lambda: "listening" in self.cameras("status micro"))
            wait_until("the news", lambda: (self.cameras("set micro brightness 34 tell"), event.poll())[1] is not None)
        self.assertIn("value: 34 ", event.communicate()[0])
        self.assertIn("-20", self.control(node, "--get-ctrl", "brightness").stdout)

    def test_button(self):
        node = self.node("micro")
        buttons = wait_until("the button", lambda: list(
            Path(f"/sys/class/video4linux/{node.name}/device").glob("../*/input/input*/event*")))
        with self.assertRaisesRegex(RuntimeError, "nobody has the camera open"):
            self.cameras("press micro")
        with open(node, "rb"), open(f"/dev/input/{buttons[0].name}", "rb", buffering=0) as events:
            wait_until("a listener", lambda: "listening" in self.cameras("status micro"))
            self.cameras("press micro")
            self.cameras("press micro")
            keys = []
            while len(keys) < 4 and select.select([events], [], [], 5)[0]:
                _, _, kind, code, value = INPUT_EVENT.unpack(events.read(INPUT_EVENT.size))
                keys += [(code, value)] * (kind == KEY_EVENT)
        self.assertEqual(keys, [(KEY_CAMERA, 1), (KEY_CAMERA, 0)] * 2)

    def test_unplug_in_a_frame_and_plug_again(self):
        monitor = subprocess.Popen(["udevadm", "monitor", "--udev", "--subsystem-match=video4linux"],
                                   stdout=subprocess.PIPE, text=True)
        self.addCleanup(monitor.kill)
        for line in monitor.stdout:
            if line.startswith("UDEV"):
                break  # it listens
        node = self.node("micro")
        sent = files("2592x1944-*.jpg", 1)[0]
        port = self.cameras("status micro").split()[0]
        self.cameras("set micro brightness 20")
        self.cameras(f"unplug micro after-bytes={len(sent) + 100000}")
        with open(node, "rb"):  # so that its number stays taken
            capture, target = self.capture(node, LARGE, 3)
            self.cameras("push micro 3")
            capture.wait(30)
            wait_until("that the node goes", lambda: not node.exists())
            self.assertEqual(target.read_bytes()[:len(sent)], sent)
            self.assertEqual(self.cameras("status micro").split()[0], "unplugged")
            self.assertEqual(self.cameras("get micro brightness"), "0")
            self.cameras(f"plug micro {port}")
            again = self.node("micro")
            self.assertNotEqual(again, node)
        self.cameras("push micro")
        self.assertEqual(self.finish(self.capture(again, LARGE, 1)), sent)
        monitor.terminate()
        device = f"1-{int(port[len('port='):]) + 1}"
        happened = re.findall(rf"^UDEV .* (\w+) .*/{device}/.*/video\d+ ", monitor.communicate()[0], re.MULTILINE)
        self.assertEqual(happened, ["remove", "remove", "add", "add"])

    def test_bridge_chip(self):
        self.cameras("add chip em28xx")
        self.cameras("plug chip")
        library = ctypes.CDLL("libusb-1.0.so.0")
        library.libusb_open_device_with_vid_pid.restype = ctypes.c_void_p
        library.libusb_init(None)
        handle = ctypes.c_void_p(wait_until(
            "the chip", lambda: library.libusb_open_device_with_vid_pid(None, 0xeb1a, 0x2890)))

        def transfer(kind, request, register, data):
            data = ctypes.create_string_buffer(data, len(data))
            count = library.libusb_control_transfer(handle, kind, request, 0, register, data, len(data), 1000)
            return data.raw[:count] if count >= 0 else count

        for register, value, held in ((0x28, 0x5a, 0x5a), (0x1e, 0xff, 0xfc)):
            self.assertEqual(transfer(0x40, 0, register, bytes([value])), bytes([value]))
            self.assertEqual(transfer(0xc0, 0, register, b"\0"), bytes([held]))
            self.assertEqual(self.cameras(f"register chip {register:#x}"), str(held))
        self.assertNotIsInstance(transfer(0xc0, 5, 0x28, b"\0"), bytes)
        self.cameras("register chip 0x0c 0x20")
        self.assertEqual(transfer(0xc0, 0, 0x0c, b"\0"), b"\x20")
        self.assertEqual(self.cameras("log chip"), "write 0x28 90; write 0x1e 255")
        library.libusb_close(handle)


if __name__ == "__main__":
    unittest.main(verbosity=2, warnings="ignore")
