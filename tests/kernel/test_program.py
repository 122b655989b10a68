#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The program itself on real device nodes: a USB camera whose button is pressed, whose frames are damaged, which is
unplugged and held by others; what a camera is set to when the user saves values. Runs in the machine.

Usage: test_program.py PROGRAM FRAMES [TEST...]; FRAMES is a folder made by make_frames.
"""

import json
import re
import subprocess
import unittest

from devices import usb_node
from program_test import FRAMES, PATIENCE, START_OF_PICTURE, CameraProgramTest, pictures_in


class ProgramTest(CameraProgramTest):
    def captures(self, pattern, count):
        """The files of the album once there are that many; never more."""
        found = self.wait(f"{count} {pattern}",
                          lambda: len(files := sorted(self.album.glob(pattern))) >= count and files)
        self.wait("they are whole", lambda: all(file.stat().st_size for file in found))
        self.assertEqual(len(found), count)
        return found

    def test_one_day(self):
        """All in one run of the program, as starting it takes long here."""
        self.configure(wired_ultra="mx62")
        self.cameras.plug("scope", "rate=5", FRAMES)
        self.held_by_another_program()
        self.button()
        self.faults()
        self.pulled_out_while_recording()
        self.press_keys("ctrl+q")
        self.assertEqual(self.program.wait_for_end(PATIENCE), 0)
        self.captures("*.jpg", 3)
        self.captures("*.mov", 1)
        print(self.program.log)

    def test_saved_values(self):
        """A value changed with the keys and saved is there at the next start; the factory values come back on request,
        as far as the device can go."""
        self.configure([{"usb": "1209:0001", "type": "regular_microscope"}], wired_regular="dx70")
        self.cameras.plug("scope", "rate=1", FRAMES)
        self.start_streaming()
        self.wait_for_controls(brightness=64)
        self.press_in_advanced_settings(*["Tab"] * 10, *["Left"] * 3)
        self.wait_for_controls(brightness=61)
        self.press_in_advanced_settings(*["shift+Tab"] * 11, "space")
        self.wait("it is saved", lambda: self.stored("bwp2x_product_dx70").get("3") == 61)
        self.press_keys("ctrl+q")
        self.assertEqual(self.program.wait_for_end(PATIENCE), 0)

        self.v4l2("--set-ctrl", "brightness=5")
        self.start_streaming()
        self.wait_for_controls(brightness=61)
        self.press_in_advanced_settings("shift+Tab", "shift+Tab", "space")
        self.wait_for_controls(hue=0, contrast=13, saturation=15, brightness=64, sharpness=6, gamma=75,
                               white_balance_automatic=0, white_balance_temperature=2800)
        self.assertEqual(self.stored("bwp2x_product_dx70"), {
            "resolution": "640x480", "0": 0, "1": 13, "2": 15, "3": 167, "4": 15, "5": 75, "7": 90, "8": 0})

    def start_streaming(self):
        self.start()
        self.wait_for_stream("scope")
        # Until then the window ignores the key.
        self.wait("the session streams", lambda: "Camera session: streaming" in self.program.log)
        self.press_keys("F8")
        self.advanced = self.wait("the advanced settings", lambda: self.windows("--name", "^Advanced settings$"))[0]

    def press_in_advanced_settings(self, *keys):
        self.desktop.input("windowactivate", "--sync", self.advanced)
        for key in keys:
            self.desktop.key(key)

    def v4l2(self, *arguments):
        node = self.wait("a node", lambda: usb_node("scope"))
        return subprocess.run(["v4l2-ctl", "-d", str(node), *arguments], check=True, capture_output=True,
                              text=True).stdout

    def wait_for_controls(self, **wanted):
        """In the device, as another program reads them."""
        def values():
            return {name: int(value) for name, value in
                    re.findall(r"(\w+): (-?\d+)", self.v4l2("--get-ctrl", ",".join(wanted)))}

        self.wait(f"the device has {wanted}", lambda: values() == wanted)

    def stored(self, key):
        line = next((line for line in self.settings.read_text().splitlines() if line.startswith(key + "=")), "={}")
        return json.loads(line.partition("=")[2].replace('\\"', '"').strip('"'))

    def held_by_another_program(self):
        node = self.wait("a node", lambda: usb_node("scope"))
        holder = self.desktop.spawn(["v4l2-ctl", "-d", str(node), "--stream-mmap"], log="holder.log")
        self.wait("another program streams", lambda: "streaming" in self.cameras("status scope"))
        self.start()
        self.wait("the holder is named", lambda: "v4l2-ctl holds it" in self.program.log)
        holder.terminate()
        holder.wait()
        alert = self.wait("the alert", lambda: [window for window in self.windows() if window != self.window])
        self.desktop.input("windowactivate", "--sync", alert[-1])
        self.desktop.key("Return")
        self.wait_for_stream("scope")

    def button(self):
        """While another window has the keyboard; then while ours has it, which must not count twice."""
        other = self.desktop.spawn(["xev"], log="xev.log")
        xev = self.wait("another window", lambda: self.windows("--name", "Event Tester"))[0]
        self.desktop.input("windowactivate", "--sync", xev)
        self.cameras("press scope")
        self.assert_sent(self.captures("*.jpg", 1)[0].read_bytes())
        other.terminate()
        self.desktop.input("windowactivate", "--sync", self.window)
        self.cameras("press scope")
        self.captures("*.jpg", 2)

    def faults(self):
        """Damaged frames are skipped; a stall is over after a restart."""
        for fault in ("truncate", "error", "truncate"):
            self.cameras(f"{fault} scope")
        self.wait("they are over", lambda: "was skipped" in self.program.log)
        self.cameras("forget scope")
        self.cameras("stall scope")
        self.wait("the stream is restarted", lambda: "start" in self.cameras("log scope").split("; "))
        self.wait_for_stream("scope")
        self.press_keys("ctrl+s")
        self.assert_sent(self.captures("*.jpg", 3)[2].read_bytes())

    def pulled_out_while_recording(self):
        """In the middle of a frame; then it is back, with another node."""
        self.press_keys("ctrl+shift+s")
        self.wait("a recording grows", lambda: any(movie.read_bytes().count(START_OF_PICTURE) > 6 for movie in
                                                   (self.desktop.folder / "tmp").rglob("*.mov")))
        node = usb_node("scope")
        self.cameras("unplug scope after-bytes=20000")
        pictures = pictures_in(self.captures("*.mov", 1)[0])
        self.assertGreater(len(pictures), 3)
        for picture in pictures:
            self.assert_sent(picture)
        self.cameras("add other uvc serial=other mode=pushed")
        self.cameras("plug other")  # takes the numbers that are free
        self.wait("the other camera is there", lambda: usb_node("other"))
        self.cameras("plug scope")
        self.assertNotEqual(self.wait("its node", lambda: usb_node("scope")), node)
        self.wait("the scope is known again", lambda: "came back" in self.program.log)
        # The other came first, so the program shows it; the scope follows when it goes.
        self.cameras("unplug other")
        self.wait_for_stream("scope")


if __name__ == "__main__":
    unittest.main(verbosity=2)
