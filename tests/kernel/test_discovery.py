#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Cameras of the real kernel come and go, and the driver reports them. Runs in the machine, as root.

Usage: test_discovery.py DRIVE_CAMERAS BRIMWELLPRO [TEST...]
"""

import os
import subprocess
import sys
import unittest
from pathlib import Path

from devices import NOBODY, CameraDriver, UsbCameras, vivid, vivid_nodes, wait_until

DRIVE_CAMERAS, PROGRAM = sys.argv.pop(1), sys.argv.pop(1)
MEMBER = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--groups=video"]
MOST_RECEIVED = Path("/proc/sys/net/core/rmem_max")  # bytes that wait at a socket which a user makes from now on
BOTH_VIVID = ["vivid vivid.0 vivid-000-vid-cap", "vivid vivid.0 vivid-001-vid-cap"]


class DiscoveryTest(unittest.TestCase):
    def watch(self, prefix=()):
        watcher = CameraDriver(DRIVE_CAMERAS, prefix)
        self.addCleanup(watcher.close)
        return watcher

    def test_driver_is_unbound_and_bound(self):
        vivid("bind")
        watcher = CameraDriver(DRIVE_CAMERAS)
        both = [f"found {each}" for each in BOTH_VIVID]
        watcher.wait_for(lambda: sorted(watcher.events()) == both)
        vivid("unbind", "bind", "unbind", "bind")
        # The first return may be too short to be noticed.
        watcher.wait_for(lambda: len(watcher.events()) > 2 and sorted(watcher.events()[-2:]) == both
                         and watcher.lines[-1] != "pending")
        watcher.close()
        for camera in BOTH_VIVID:
            own = [event.split()[0] for event in watcher.events() if event.endswith(camera)]
            self.assertEqual(own, ["found"] + ["removed", "found"] * (len(own) // 2), watcher.events())
            self.assertGreater(len(own), 1)
        self.assertTrue(any("it came back" in line for line in watcher.log), watcher.log)

    def test_more_events_than_the_kernel_keeps(self):
        # What it does keep is the oldest: that the cameras went.
        vivid("bind")
        usual = MOST_RECEIVED.read_text()
        self.addCleanup(MOST_RECEIVED.write_text, usual)
        MOST_RECEIVED.write_text("2304")  # has room for a removal or two
        watcher = self.watch(MEMBER)
        watcher.wait_for(lambda: sorted(watcher.events()) == [f"found {each}" for each in BOTH_VIVID])
        MOST_RECEIVED.write_text(usual)
        with watcher.stopped():
            vivid("unbind")
            for _ in range(30):
                Path("/sys/bus/usb/devices/1-0:1.0/uevent").write_text("change")
            vivid("bind")
            subprocess.run(["udevadm", "settle"], check=True)

        def last(camera):
            return [event.split()[0] for event in watcher.events() if event.endswith(camera)][-1]
        watcher.wait_for(lambda: len(watcher.events()) > 2 and all(last(each) == "found" for each in BOTH_VIVID))
        watcher.wait_for(lambda: any("were lost" in line for line in watcher.log))

    def test_camera_is_found_when_its_permissions_come(self):
        vivid("unbind", "bind")
        subprocess.run(["udevadm", "settle"], check=True)
        for node in vivid_nodes():
            os.chmod(node, 0o600)
        watcher = self.watch(NOBODY)
        watcher.wait_for(lambda: "pending" in watcher.lines)
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

        def used():
            return [line.split()[1] for line in watcher.log if "is used as" in line]
        nodes = {}
        for turn, order in enumerate((("left", "right"), ("right", "left"))):
            for name in order:
                begin, known = len(watcher.lines), len(used())
                cameras(f"plug {name}")
                watcher.wait_for(lambda begin=begin: "pending" in watcher.lines[begin:])
                watcher.wait_for_events(f"found 1209:0001 {name}")
                watcher.wait_for(lambda known=known: len(used()) > known)  # the log has a pipe of its own
                nodes[turn, name] = used()[-1]
            if turn == 0:
                self.check_listing(nodes[turn, "left"], "left")
            for name in order:
                cameras(f"unplug {name}")
                watcher.wait_for_events(f"removed 1209:0001 {name}")
        self.assertEqual(nodes[0, "left"], nodes[1, "right"], nodes)
        self.assertEqual(nodes[0, "right"], nodes[1, "left"], nodes)

    def test_usb_camera_is_pulled_while_the_kernel_sets_it_up(self):
        vivid("unbind")
        cameras = self.enterContext(UsbCameras())
        cameras("add scope uvc serial=scope")
        watcher = self.watch()
        for answered in 0, 8, 12:  # then the kernel wants its descriptor, sets its configuration, reads its controls
            cameras(f"unplug scope after-requests={answered}")
            cameras("plug scope")
            wait_until("it is pulled", lambda: "plugged" not in cameras("status scope"))
            cameras("plug scope")
            watcher.wait_for_events("found 1209:0001 scope")
            cameras("unplug scope")
            watcher.wait_for_events("removed 1209:0001 scope")

    def check_listing(self, node, serial):
        with subprocess.Popen(["sh", "-c", f"exec sleep 60 < {node}"]) as holder:
            wait_until("the node is open", lambda: Path(f"/proc/{holder.pid}/comm").read_text() == "sleep\n")
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
