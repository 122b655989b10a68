#!/usr/bin/python3
"""Cameras of the real kernel come and go, and the driver tells of them. Runs in the machine, as root.

Usage: test_discovery.py WATCH_CAMERAS BRIMWELLPRO [TEST...]
"""

import os
import subprocess
import sys
import threading
import time
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "usbcamera"))
from client import UsbCameras  # noqa: E402

WATCH_CAMERAS, PROGRAM = sys.argv.pop(1), sys.argv.pop(1)
TABLE = Path(__file__).resolve().parents[3] / "resources" / "cameras.json"
VIVID = Path("/sys/bus/platform/drivers/vivid")
BOTH_VIVID = ["vivid vivid.0 vivid-000-vid-cap", "vivid vivid.0 vivid-001-vid-cap"]
NOBODY = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"]


class Watcher:
    """The program watch_cameras, as root or as `prefix` makes it; what it prints, and what it logs."""

    def __init__(self, prefix=()):
        self.lines, self.log = [], []
        self._changed = threading.Condition()
        self._process = subprocess.Popen([*prefix, WATCH_CAMERAS, TABLE], text=True, stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self._readers = [threading.Thread(target=self._read, args=each) for each in
                         ((self._process.stdout, self.lines), (self._process.stderr, self.log))]
        for reader in self._readers:
            reader.start()

    def _read(self, stream, lines):
        with stream:
            for line in stream:
                with self._changed:
                    lines.append(line.strip())
                    self._changed.notify_all()

    def close(self):
        self._process.stdin.close()
        self._process.wait(20)
        for reader in self._readers:
            reader.join()
        if self._process.returncode != 0:
            raise AssertionError(f"watch_cameras ended with {self._process.returncode}: {self.log}")

    def events(self):
        return [line for line in self.lines if line.startswith(("found", "removed"))]

    def wait_for(self, condition, seconds=60):
        with self._changed:
            if not self._changed.wait_for(lambda: condition(self), seconds):
                raise AssertionError(f"not within {seconds} s; reported: {self.lines}, logged: {self.log}")

    def wait_for_events(self, *expected):
        """These in any order, then quiet: what comes in pairs is not ordered among itself."""
        self.wait_for(lambda watcher: len(watcher.events()) >= len(expected) and watcher.lines[-1] != "pending")
        time.sleep(0.5)
        events = self.events()
        if sorted(events) != sorted(expected):
            raise AssertionError(f"expected {expected}, reported: {self.lines}, logged: {self.log}")
        self.lines.clear()


def vivid(*actions):
    """Does these, "bind" and "unbind", if there is anything to do."""
    for action in actions:
        if (action == "bind") != (VIVID / "vivid.0").exists():
            (VIVID / action).write_text("vivid.0")


def vivid_nodes():
    return [Path("/dev", node.name) for node in Path("/sys/class/video4linux").iterdir()
            if (node / "name").read_text().endswith("vid-cap\n")]


class DiscoveryTest(unittest.TestCase):
    def watch(self, prefix=()):
        watcher = Watcher(prefix)
        self.addCleanup(watcher.close)
        return watcher

    def test_driver_is_unbound_and_bound(self):
        vivid("bind")
        watcher = self.watch()
        watcher.wait_for_events(*(f"found {each}" for each in BOTH_VIVID))
        vivid("unbind", "bind", "unbind", "bind")
        # The driver has gone so fast that its second coming may be the first that is found again.
        watcher.wait_for(lambda self: all(f"found {each}" in self.events()[-2:] for each in BOTH_VIVID))
        time.sleep(1)
        events = watcher.events()
        for camera in BOTH_VIVID:
            own = [event.split()[0] for event in events if event.endswith(camera)]
            self.assertEqual(own, ["removed", "found"] * (len(own) // 2), events)
            self.assertGreater(len(own), 0)
        self.assertTrue(any("it came back" in line for line in watcher.log), watcher.log)

    def test_camera_is_found_when_its_permissions_come(self):
        vivid("unbind", "bind")
        subprocess.run(["udevadm", "settle"], check=True)
        for node in vivid_nodes():
            os.chmod(node, 0o600)
        watcher = self.watch(NOBODY)
        watcher.wait_for(lambda self: "pending" in self.lines)
        listing = subprocess.run([*NOBODY, PROGRAM, "--list-cameras"], text=True, capture_output=True)
        self.assertIn("may not open /dev/video", listing.stdout)
        self.assertEqual(watcher.events(), [])
        for node in vivid_nodes():
            os.chmod(node, 0o666)
        watcher.wait_for_events(*(f"found {each}" for each in BOTH_VIVID))

    def test_usb_cameras_are_told_apart_however_they_are_plugged(self):
        vivid("unbind")
        cameras = self.enterContext(UsbCameras())
        for name in "left", "right":
            cameras(f"add {name} uvc serial={name} title=Scope")
        watcher = self.watch()
        nodes = {}
        for turn, order in enumerate((("left", "right"), ("right", "left"))):
            for name in order:
                cameras(f"plug {name}")
                watcher.wait_for(lambda self: "pending" in self.lines)
                watcher.wait_for_events(f"found 1209:0001 {name}")
                nodes[turn, name] = [line for line in watcher.log if "is used as" in line][-1].split()[1]
            if turn == 0:
                self.check_listing(nodes[turn, "left"], "left")
            for name in order:
                cameras(f"unplug {name}")
                watcher.wait_for_events(f"removed 1209:0001 {name}")
        self.assertEqual(nodes[0, "left"], nodes[1, "right"], nodes)
        self.assertEqual(nodes[0, "right"], nodes[1, "left"], nodes)

    def check_listing(self, node, serial):
        with subprocess.Popen(["sh", "-c", f"exec sleep 60 < {node}"]) as holder:
            while Path(f"/proc/{holder.pid}/comm").read_text() != "sleep\n":
                time.sleep(0.05)
            listing = subprocess.run([PROGRAM, "--list-cameras"], text=True, capture_output=True, check=True).stdout
            holder.kill()
        text = next(part for part in listing.split("\n\n") if part.startswith(node))
        for expected in (f"{node}  Scope\n", "Ultra Resolution Microscope, because its largest picture is 2592x1944",
                         "open in   sleep", f"1209:0001, serial number {serial}", "button    /dev/input/event",
                         "MJPEG 640x480 (30/s)", "Brightness               0x00980900       0        0  -64 to 64"):
            self.assertIn(expected, text)
        self.assertLessEqual(max(map(len, listing.splitlines())), 96)
        self.assertIn("not used  it is a further node", listing)


if __name__ == "__main__":
    unittest.main(verbosity=2)
