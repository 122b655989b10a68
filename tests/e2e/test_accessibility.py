#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Every window of the real program, for those who use the keyboard alone or a screen reader: all that can be used has a
name and is reached by keys, in an order that makes sense; Escape closes what may be closed and leads back.

usage: test_accessibility.py PROGRAM
"""

from desktop import wait_until
from keyboard_walk import KeyboardWalk
from program import ProgramTest

CAMERA = "High Resolution Microscope 1"
MAIN = ("frame", "BrimwellPro")


class Accessibility(ProgramTest):
    def walk(self, role, name=None):
        window = self.program.wait_for_active(role, name)
        self.assertEqual(KeyboardWalk(self.desktop, window).run(), [], window.name)

    def turn_to(self, role, name):
        """As one does without a mouse."""
        def there():
            if any(window.name == name and window.has_state("active") for window in self.program.windows()):
                return True
            self.switches += 1
            keys = ["keydown", "alt", *["key", "Tab"] * self.switches, "keyup", "alt"]
            self.desktop.input(*keys)
            return False

        self.switches = 0
        wait_until(f'"{name}" has the keyboard', there, step=0.5)

    def escape(self, name):
        """Closes the window, which leads back to the camera window."""
        self.desktop.key("Escape")
        wait_until(f'"{name}" is gone', lambda: all(window.name != name for window in self.program.windows()))
        self.program.wait_for_active(*MAIN)

    def test_with_a_camera(self):
        self.make_pictures("320x240")
        self.start("--simulate", "high", "--technician")
        self.walk("dialog", "Which camera is this?")
        self.program.confirm_question()

        self.walk(*MAIN)
        for name, *keys in (("Settings", "ctrl+comma"), ("Advanced settings", "F8"), ("Albums", "F9"), ("Help", "F1"),
                            ("Grid debugger", "alt+t", "g"), ("Register debugger", "alt+t", "r"),
                            ("About BrimwellPro", "alt", "Left", "Down", "Down", "Return")):
            for key in keys:
                self.desktop.key(key)
            role = "dialog" if name.startswith("About") else "frame"
            self.program.wait_for(role, name)
            if name == "Albums":
                self.program.click("table cell", "20240607_image_001, image")  # there is more to do with one selected
                self.program.wait_for("label", "Selected: 1 of 3")
            self.turn_to(role, name)
            self.walk(role, name)
            if name == "Advanced settings":
                self.program.click("push button", "Save as defaults")
                self.program.wait_for("notification", "Saved")
            if name == "Albums":
                self.desktop.key("F2")
                self.walk("dialog", "Rename")
                self.desktop.key("Escape")
                self.program.wait_for_active(role, name)
                self.desktop.key("Escape")  # the first one is for what is selected
                self.program.wait_for("label", "Total: 3")
            self.escape(name)

        self.turn_to("frame", "Simulated cameras")
        self.walk("frame", "Simulated cameras")
        self.program.click("combo box", f"{CAMERA}: Start")
        for key in ("Home", "Down", "Return"):
            self.desktop.key(key)
        self.hand("Unplug")
        self.turn_to("dialog", "The camera was unplugged")
        self.walk("dialog", "The camera was unplugged")
        self.hand("Plug In")
        self.walk("alert")

    def test_without_a_camera(self):
        self.start()
        self.walk("dialog", "Welcome to BrimwellPro")
        self.desktop.key("Escape")  # nothing is behind it
        self.desktop.key("Tab")
        self.walk("dialog", "Welcome to BrimwellPro")
        self.desktop.key("space")
        self.assertEqual(self.program.wait_for_end(), 0)


if __name__ == "__main__":
    Accessibility.main()
