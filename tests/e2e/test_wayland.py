#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The real program in a Wayland session: Weston in a window of the virtual display. No program knows there where its
windows are, so they are used by keyboard and by their accessible actions; those that the mouse has to meet are
maximised.

usage: test_wayland.py PROGRAM
"""

import re
import subprocess

from desktop import wait_until
from live_image import colours
from program import ProgramTest, probed

SOCKET = "brimwellpro-test"
SETTINGS = """
[core]
idle-time=0
[shell]
panel-position=none
locking=false
[input-method]
path=
[output]
name=X1
mode=1200x720
"""
HELD = 0.7  # seconds; a release within less would count as a click, and a drag begins after half a second
TITLE_BAR = 30  # of a maximised window, drawn by Qt
# Qt's player in Debian 13 greets, and tries what NVIDIA's cards would have; there, too, Qt says so if what serves screen
# readers starts just as it asks for it.
EXPECTED_LOG = re.compile(r"bw\.|PulseAudioService: pa_context_connect\(\) failed|qt\.multimedia\.ffmpeg: (Using|Available) |"
                          r"Failed to open VDPAU backend|qt\.dbus\.integration: .* 'org\.a11y\.Bus' had owner '' but")


class Wayland(ProgramTest):
    def start_session(self):
        settings = self.desktop.folder / "weston.ini"
        settings.write_text(SETTINGS)
        self.desktop.spawn(["weston", "--backend=x11-backend.so", "--use-pixman", f"--socket={SOCKET}",
                            f"--config={settings}"], log="weston.log")
        wait_until("the session is there", (self.desktop.folder / "run" / SOCKET).exists)
        wait_until("its window is there", lambda: self.session)
        self.start("--simulate", "high", environment={"QT_QPA_PLATFORM": "wayland", "WAYLAND_DISPLAY": SOCKET})

    @property
    def session(self):
        """The place of its window on the screen, where the window manager may have put it a moment ago."""
        report = self.desktop.output(["xwininfo", "-name", "Weston Compositor - X1"]).decode()
        return tuple(map(int, re.findall(r"(?:Absolute upper-left .|Width|Height):\s+(-?\d+)", report)))

    def maximise(self, role, name):
        """The active window; afterwards it is known where it is."""
        self.desktop.key("super+shift+m")
        wait_until(f"{name} is maximised", lambda: self.program.window(role, name).area.width >= self.session[2] - 20)

    def point_at(self, x, y):
        """From outside of the session, which learns for certain where the mouse is only when it comes in."""
        self.desktop.input("mousemove", 0, 0, "sleep", 0.1, "mousemove", x, y, "sleep", HELD)

    def middle(self, element):
        """Of an element of the maximised window, on the screen."""
        area = element.area
        left, top, *_ = self.session
        return left + area.x + area.width // 2, top + TITLE_BAR + area.y + area.height // 2

    def test_session(self):
        self.start_session()
        self.answer_question()
        wait_until("the camera's picture shows", lambda: colours(self.desktop.picture(*self.session)) > 300)
        self.use_popups()
        self.take_snapshot()
        self.drag_from_album()
        self.start_again()
        self.desktop.key("ctrl+q")
        self.assertEqual(self.program.wait_for_end(), 0)
        self.assertEqual([line for line in self.program.log.splitlines() if line and not EXPECTED_LOG.match(line)], [])
        # The places stored in other sessions stay as they are.
        frames = re.findall(r"^bwp2x_frame_(wayland)?", self.settings.read_text(), re.M)
        self.assertEqual(set(frames), {"wayland"})

    def answer_question(self):
        self.program.wait_for_active(None, "Which camera is this?")
        self.program.confirm_question()
        self.program.wait_for_active(None, "Simulated cameras")
        self.desktop.key("super+Tab")
        self.program.wait_for_active(None, "BrimwellPro")
        self.maximise("frame", "BrimwellPro")

    def use_popups(self):
        # Held until they open: the session refuses a popup for a key or button that is released already.
        self.desktop.input("keydown", "alt", "keydown", "f")
        wait_until("the menu is open", lambda: self.program.find(None, "Quit"))
        self.desktop.input("keyup", "f", "keyup", "alt")
        self.desktop.key("Escape")
        wait_until("the menu is closed", lambda: not self.program.find(None, "Quit"))
        choice = self.program.wait_for("combo box", "Resolution")
        self.point_at(*self.middle(choice))
        self.desktop.input("mousedown", 1)
        wait_until("the choices are open", lambda: choice.has_state("expanded"))
        self.desktop.input("sleep", HELD, "mousemove", *self.middle(self.program.wait_for("list item", "1280x1024")),
                           "sleep", HELD, "mouseup", 1)
        wait_until("another resolution is chosen", lambda: self.program.find("combo box", "1280x1024"))

    def take_snapshot(self):
        self.program.wait_for("push button", "Snapshot").do("Press")
        snapshot, = wait_until("the snapshot is in the album", lambda: list(self.album.glob("*_image_001.jpg")))
        self.assertEqual(probed(snapshot, "-show_entries", "stream=codec_name,width,height"), "mjpeg,1280,1024")

    def drag_from_album(self):
        self.desktop.key("F9")
        self.program.wait_for_active(None, "Albums")
        self.maximise("frame", "Albums")
        x, y = self.middle(self.program.wait_for("table cell"))
        self.point_at(x, y)
        self.desktop.input("mousedown", 1, "sleep", HELD, "mousemove", x + 40, y + 200,
                           "sleep", 0.3, "mousemove", x + 80, y + 300, "sleep", 0.3)
        wait_until("its picture goes with the mouse",
                   lambda: colours(self.desktop.picture(x + 60, y + 290, 40, 20), step=2) > 20)
        self.desktop.input("mouseup", 1, "sleep", HELD, "click", 1)  # after a drag no window has the keyboard in Weston
        self.program.wait_for_active(None, "Albums")
        left, top, width, _ = self.session
        self.point_at(left + width - 18, top + TITLE_BAR // 2)
        self.desktop.input("click", 1)
        wait_until("the button in its title bar has closed the window", lambda: not self.program.window("frame", "Albums"))
        self.program.wait_for_active(None, "BrimwellPro")

    def start_again(self):
        """The window with the keyboard is another one until then."""
        self.desktop.key("F8")
        self.program.wait_for_active(None, "Advanced settings")
        token = "not one of this session"
        done = subprocess.run([self.executable], env={**self.desktop.environment, "XDG_ACTIVATION_TOKEN": token}, timeout=60,
                              capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (0, 1))


if __name__ == "__main__":
    Wayland.main()
