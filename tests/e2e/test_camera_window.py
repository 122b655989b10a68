#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The camera window when cameras come, go, have their button pressed and are in use elsewhere: the real program, used
through its window and the window of simulated cameras.

usage: test_camera_window.py PROGRAM HANGING_DISK
"""

import os
import re
import signal
import subprocess
import sys

sys.path.append(os.path.join(os.path.dirname(__file__), "..", "capture"))
import numbered_movie
from desktop import PATIENCE, wait_until
from live_image import colours
from program import ProgramTest, answer_product_question, frames_of, wait_for_picture

HANGING_DISK = None


def picture_in(file):
    """The camera's own bytes, without what the snapshot says about itself."""
    stored = file.read_bytes()
    tags = stored.index(b"\xff\xe1")
    return stored[:tags] + stored[tags + 2 + int.from_bytes(stored[tags + 2:tags + 4], "big"):]


class CameraWindow(ProgramTest):
    def start_with_picture(self, *arguments):
        self.start("--simulate", "high", *arguments)
        answer_product_question(self.program)
        self.live = wait_for_picture(self.program)

    def captures(self, pattern):
        return sorted(self.album.glob(pattern))

    def left_over(self):
        """Captures that are not in the album."""
        return [file.name for file in self.desktop.folder.rglob("brimwellpro-*.*")]

    def wait_until_recorded(self, frames=11):
        """The movie can be read while it grows."""
        def recorded():
            growing = next((self.desktop.folder / "tmp").rglob("*.mov"), None)
            return growing and growing.stat().st_size > 0 and frames_of(growing) >= frames

        wait_until(f"{frames} frames are recorded", recorded, step=0.2)

    def record(self):
        self.program.click("push button", "Record")
        self.program.wait_for("push button", "Stop")

    def test_click_that_only_activates(self):
        self.start_with_picture()
        frame = self.program.wait_for("frame")
        self.place(self.other_program(), 0, 0, 200, 200)
        wait_until("another program has the keyboard", lambda: not frame.has_state("active"))
        self.click_image()
        wait_until("the click has brought the program to the front", lambda: frame.has_state("active"))
        wait_until("a later click takes a snapshot", lambda: self.captures("*_image_*.jpg") or self.click_image(),
                   step=PATIENCE)  # before another one is tried
        counted = len(self.captures("*_image_*.jpg"))
        self.desktop.key("ctrl+s")
        wait_until("the key takes another", lambda: len(self.captures("*_image_*.jpg")) > counted)
        self.assertEqual((counted, len(self.captures("*_image_*.jpg"))), (1, 2))

    def other_program(self):
        self.desktop.spawn(["pcmanfm", "--no-desktop", str(self.desktop.home)], log="pcmanfm.log")
        return wait_until("another program is there", lambda: self.shown("home"))[0]

    def shown(self, title):
        """Windows of the X server."""
        return self.desktop.output(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"]).decode().split()

    def place(self, window, x, y, width, height):
        self.desktop.input("windowsize", "--sync", window, width, height, "windowmove", "--sync", window, x, y)

    def test_left_button_pans_without_snapshot_on_click(self):
        self.store("bwp2x_snapshot_click=no")
        self.start_with_picture()
        for _ in range(10):
            self.desktop.key("ctrl+plus")
        bars = wait_until("the image is larger than the window", lambda: [
            bar for bar in self.program.window("frame").descendants() if bar.role == "scroll bar" and bar.showing])
        before = [bar.value for bar in bars]
        area = self.program.wait_for(None, "Live image").area
        self.desktop.input("mousemove", area.x + 400, area.y + 300, "mousedown", 1, "mousemove", area.x + 350,
                           area.y + 280, "mouseup", 1)
        wait_until("the image has moved", lambda: [bar.value for bar in bars] == [value + moved for value, moved in
                                                                                  zip(before, (50, 20))])
        self.program.quit()
        self.assertEqual(self.captures("*"), [])

    def click_image(self):
        area = self.program.wait_for(None, "Live image").area
        self.desktop.click(area.x + area.width // 2, area.y + area.height // 2)

    def test_snapshot_of_first_picture(self):
        self.store('bwp2x_product_for_camera="{\\"wired_high\\":\\"mx50_40\\"}"')  # its question would block the key
        self.start("--simulate", "high")
        wait_until("there is a picture", lambda: colours(self.desktop.picture(), step=23) > 60, step=0.002)
        self.desktop.key("ctrl+s")
        wait_until("the snapshot is in the album", lambda: len(self.captures("*_image_*.jpg")) == 1)
        self.program.quit()

    def test_captures_in_a_hurry(self):
        self.store("bwp2x_video_button=yes")
        self.start_with_picture()
        live = self.program.wait_for(None, "Live image").area
        self.hand("Press Button")
        self.program.wait_for("push button", "Stop")
        self.double_click(live)
        self.desktop.input("key", "--delay", 20, "space", "space")
        wait_until("each snapshot is a file", lambda: len(self.captures("*_image_*.jpg")) == 4)
        self.program.wait_for("push button", "Stop")  # the recording goes on
        self.hand("Press Button")
        wait_until("the movie is in the album", lambda: len(self.captures("*_video_*.mov")) == 1)

        self.desktop.input("key", "--delay", 20, "ctrl+shift+s", "ctrl+shift+s")
        self.program.wait_for("push button", "Record")
        wait_until("what was recorded is in the album", lambda: not self.left_over())
        before = len(self.captures("*_video_*.mov"))
        self.double_click(self.program.wait_for("push button", "Record").area)  # out of habit: one click is meant
        self.program.wait_for("push button", "Stop")
        resolution = self.program.wait_for("combo box", "Resolution").area
        self.desktop.input("mousemove", resolution.x + 20, resolution.y + 10, "click", 5)  # the wheel, by accident
        self.wait_until_recorded()
        self.program.wait_for("push button", "Stop")
        self.program.quit()
        movies = self.captures("*_video_*.mov")
        self.assertEqual(len(movies), before + 1)
        self.assertGreater(frames_of(movies[-1]), 10)
        self.assertEqual(self.left_over(), [])

    def double_click(self, area):
        self.desktop.input("mousemove", area.x + area.width // 2, area.y + area.height // 2,
                           "click", "--repeat", 2, "--delay", 20, 1)

    def test_killed_while_recording(self):
        self.start_with_picture()
        self.record()
        self.wait_until_recorded()
        os.kill(self.program.pid, signal.SIGKILL)
        self.program.wait_for_end()
        self.start("--simulate", "high")
        self.program.wait_for(None, "Captures were recovered")
        self.desktop.key("Return")
        wait_until("the message is gone", lambda: "Captures were recovered" not in self.program.outline())
        movie, = self.captures("*_video_*.mov")
        self.assertGreater(frames_of(movie), 10)
        self.assertEqual(self.left_over(), [])
        self.program.quit()

    def test_asked_to_end_while_recording(self):
        self.start_with_picture()
        self.record()
        self.wait_until_recorded()
        os.kill(self.program.pid, signal.SIGINT)
        self.assertEqual(self.program.wait_for_end(), 0)
        movie, = self.captures("*_video_*.mov")
        self.assertGreater(frames_of(movie), 10)

    def test_second_start(self):
        self.start_with_picture()
        self.program.activate(self.program.wait_for("frame", "Simulated cameras"))
        second = subprocess.run([self.executable, "--simulate", "ultra"], env=self.desktop.environment,
                                capture_output=True, text=True, timeout=60, check=False)
        self.assertEqual(second.returncode, 0, second.stderr)
        self.assertIn("Without effect, as the program was running: --simulate", second.stderr)
        main = self.program.wait_for("frame", "BrimwellPro")
        wait_until("the first one's window has the keyboard", lambda: main.has_state("active"))
        listing = subprocess.run([self.executable, "--list-cameras", "--simulate", "ultra"],
                                 env=self.desktop.environment, capture_output=True, text=True, timeout=60, check=True)
        self.assertIn("wired_ultra", listing.stdout)  # needs no running program
        self.program.quit()

    def test_unplug_and_plug(self):
        self.start_with_picture()
        self.desktop.key("F9")
        self.program.wait_for("frame", "Albums")
        self.hand("Unplug")
        self.program.wait_for("push button", "Quit")
        self.program.wait_for(None, "No camera detected")
        self.assertIsNone(self.program.window("frame", "Albums"))
        self.desktop.input("key", "space", "Return")  # as for a snapshot, a moment too late
        self.desktop.key("F1")  # the sheet blocks the menu, but not the help
        shown = self.program.wait_for("frame", "Help")
        wait_until("the help has the keyboard", lambda: shown.has_state("active"))
        self.desktop.key("Escape")
        wait_until("the help is closed", lambda: not self.program.window("frame", "Help"))
        self.hand("Plug In")
        wait_for_picture(self.program)
        wait_until("the sheet is gone", lambda: not self.program.window("dialog"))
        self.program.wait_for("frame", "Albums")
        self.program.quit()

    def test_camera_hangs(self):
        photo = self.desktop.folder / "hanging" / "photo.jpg"
        photo.parent.mkdir()
        photo.write_bytes(b"")
        cameras = ("--simulate", f"high={photo}", "--simulate", "wireless")
        preloaded = {"LD_PRELOAD": HANGING_DISK}
        self.desktop.environment.update(preloaded)
        self.start(*cameras)
        wait_until("the camera is being started", lambda: "Camera session: starting" in self.program.log)
        self.program.quit()  # although its start never returns
        self.start(*cameras)
        self.program.click("push button", "Use Wireless Microscope")
        answer_product_question(self.program)
        self.live = wait_for_picture(self.program)
        os.kill(self.program.pid, signal.SIGTERM)
        self.assertEqual(self.program.wait_for_end(), 0)

    def test_quit_waits_for_captures(self):
        self.store(f'bwp2x_albums="[\\"{self.desktop.folder}/hanging/Album\\"]"')
        self.desktop.environment["LD_PRELOAD"] = HANGING_DISK
        self.start_with_picture()
        self.program.click("push button", "Snapshot")
        wait_until("the picture is taken", self.left_over)  # of which the flash tells too briefly for a slow computer
        self.desktop.key("ctrl+q")
        self.program.wait_for(
            None, "Waiting for a capture on its way into the album. Quit again to leave it to the next start.")
        self.desktop.key("ctrl+q")
        self.program.wait_for("label", "Quit at once?")
        self.program.click("push button", "OK")
        self.assertEqual(self.program.wait_for_end(30), 0)

    def test_quit_while_saving(self):
        folder = self.desktop.folder / "hanging"
        folder.mkdir()
        self.desktop.environment["LD_PRELOAD"] = HANGING_DISK
        self.make_pictures("320x240")
        self.start_with_picture()
        self.program.click("push button", "Albums")
        self.program.click("table cell", "20240607_image_001, image")
        self.program.wait_for("label", "Selected: 1 of 3")
        self.program.click("push button", "Save the selection as...")
        self.program.wait_for_active("dialog", "Saving image as JPG file")
        self.desktop.input("type", str(folder / "copy.jpg"))
        self.desktop.key("Return")  # which never ends
        self.program.activate(self.program.wait_for("frame", "BrimwellPro"))
        self.desktop.key("ctrl+q")
        self.program.wait_for("label", "Quit and stop saving?")
        self.program.click("push button", "OK")
        self.assertEqual(self.program.wait_for_end(), 0)

    def work_unseen(self, hide, show):
        """Captures go on while nobody can see the picture, of which none is made; afterwards it is back."""
        self.store("bwp2x_video_button=yes")
        self.desktop.environment["BW_STATISTICS"] = "1"
        self.start_with_picture()
        hide()
        button = self.program.wait_for("push button", "High Resolution Microscope 1: Press Button")
        button.do("Press")
        self.wait_until_recorded(45)
        self.program.wait_for("push button", "Snapshot").do("Press")
        wait_until("the snapshot is in the album", lambda: self.captures("*_image_*.jpg"))
        button.do("Press")
        movie, = wait_until("the movie is in the album", lambda: self.captures("*_video_*.mov"))
        show()
        wait_for_picture(self.program)
        self.wait_until_moving()
        self.program.quit()
        counted = dict(re.findall(r"(\w+)=(\d+)", self.program.log.partition("statistics: ")[2]))
        unseen = int(counted["received"]) - int(counted["decoded"]) - int(counted["dropped"])
        self.assertGreaterEqual(unseen, frames_of(movie))

    def wait_until_moving(self):
        shown = set()
        wait_until("the picture moves", lambda: shown.add(str(self.live.brightness())) or len(shown) > 5)

    def test_minimised(self):
        def minimise():
            self.desktop.input("windowminimize", self.shown("BrimwellPro")[0])
            wait_until("it is minimised", lambda: not self.shown("BrimwellPro"))

        def attach_again():
            self.hand("Unplug")
            wait_until("the camera is gone", lambda: "Camera session: waiting" in self.program.log)
            self.hand("Plug In")
            wait_until("the camera brings it up", lambda: self.shown("BrimwellPro"))

        self.work_unseen(minimise, attach_again)

    def test_covered_by_another_program(self):
        def cover():
            self.cover = self.other_program()
            self.place(self.cover, 0, 0, *self.desktop.size)
            wait_until("it is covered", lambda: colours(self.live.picture()) < 200)

        self.work_unseen(cover, lambda: self.desktop.input("windowclose", self.cover))

    def test_covered_by_album(self):
        def cover():
            self.desktop.key("F9")
            self.cover = wait_until("the album is there", lambda: self.shown("Albums"))[0]
            area = self.program.wait_for("frame", "BrimwellPro").area  # it has made room
            self.live = wait_for_picture(self.program)
            self.place(self.cover, area.x + area.width // 2, area.y, area.width, area.height)
            self.wait_until_moving()
            self.place(self.cover, area.x, area.y - 10, area.width, area.height)  # its title bar adds to its height
            wait_until("it is covered", lambda: colours(self.live.picture()) < 200)

        self.work_unseen(cover, lambda: self.desktop.key("F9"))

    def test_on_another_desktop(self):
        self.work_unseen(lambda: self.desktop.input("set_desktop", 1), lambda: self.desktop.input("set_desktop", 0))

    def test_on_another_desktop_but_mapped(self):
        def show_desktop(number):
            self.desktop.output(["xprop", "-root", "-format", "_NET_CURRENT_DESKTOP", "32c", "-set",
                                 "_NET_CURRENT_DESKTOP", number])

        self.work_unseen(lambda: show_desktop("1"), lambda: show_desktop("0"))

    def test_full_screen(self):
        self.desktop.bind_keys({"W-m": "ToggleMaximize", "W-f": "ToggleFullscreen"})
        self.start_with_picture()
        window = self.shown("BrimwellPro")[0]
        button = self.program.wait_for("push button", "Snapshot")
        screen = (0, 0, *self.screen_size)
        x, y = 60, 700  # beside the picture, and far from the bar

        def state():
            return (self.desktop.output(["xprop", "-id", window, "_NET_WM_STATE", "_NET_FRAME_EXTENTS"]),
                    self.program.wait_for(None, "Live image").area, button.area)

        def wait_for_bar(shown):
            wait_until(f"the bar has come: {shown}", lambda: (button.area.y > 0, button.area.y < -20)[not shown])

        for maximised in (False, True):
            if maximised:
                self.desktop.key("super+m")
                wait_until("it is maximised", lambda: self.program.wait_for(None, "Live image").area.width == screen[2])
            before, taken = state(), len(self.captures("*_image_*.jpg"))
            self.desktop.input("mousemove", x, y)
            self.desktop.key("F11")
            wait_until("the picture has the screen", lambda: self.program.wait_for(None, "Live image").area == screen)
            wait_for_bar(False)
            wait_until("nothing else is on it", lambda: colours(self.desktop.picture(0, 0, 300, 60), step=1) == 1)
            self.desktop.key("ctrl+s")
            wait_until("the key takes a snapshot", lambda: len(self.captures("*_image_*.jpg")) == taken + 1)
            wait_until("the pointer goes", lambda: colours(self.desktop.picture(x - 9, y - 9, 30, 30), step=1) == 1)
            self.desktop.input("mousemove", x, 0)
            wait_for_bar(True)
            self.program.click("push button", "Snapshot")
            wait_until("the bar takes another", lambda: len(self.captures("*_image_*.jpg")) == taken + 2)
            self.desktop.input("mousemove", x, y)
            wait_for_bar(False)
            self.desktop.key("Tab")
            wait_for_bar(True)
            self.desktop.key("alt+f")
            self.program.wait_for("menu item", "Quit")
            for _ in ("the menu", "its title", "the bar"):
                self.desktop.key("Escape")
            wait_for_bar(False)
            if maximised:
                self.desktop.key("Escape")
            else:
                self.desktop.key("super+f")
            wait_until("the window is as before", lambda: state() == before)
        self.program.quit()

    def choose_resolution(self, *keys):
        self.program.click("combo box", "Resolution")
        for key in (*keys, "Return"):
            self.desktop.key(key)

    def test_other_resolution_and_camera(self):
        self.start_with_picture("--simulate", "wireless")
        before = self.live.width()
        self.choose_resolution("Down")
        wait_until("the picture is wider than the window", lambda: self.live.width() > before * 1.4)
        self.desktop.key("alt+c")
        for key in ("Down", "Down", "Down", "Down", "Return"):  # past snapshot, record, series and the first camera
            self.desktop.key(key)
        answer_product_question(self.program)
        self.program.wait_for(None, "Live streaming with: Wireless Dermatoscope DX12")
        wait_for_picture(self.program)
        self.program.quit()

    def test_grid_caption_names_its_zoom(self):
        self.store('bwp2x_product_for_camera="{\\"wireless\\":\\"dx12\\"}"')
        self.start("--simulate", "wireless")
        wait_for_picture(self.program)
        caption = "Grid represents 5x5mm when scope is resting on a flat target. Will vary on curved surfaces."
        for keys, text in (("ctrl+g", caption), ("ctrl+minus", f"{caption} Applies at 100%."), ("ctrl+0", caption)):
            self.desktop.key(keys)
            self.program.wait_for(None, text)
        self.program.quit()

    def test_frozen_picture(self):
        movie = self.desktop.folder / "numbered.mov"
        numbered_movie.make(movie, 640, 480, 1800, 15)
        subprocess.run(["ffmpeg", "-v", "error", "-i", movie, "-c", "copy", "-f", "image2",
                        self.desktop.folder / "%04d.jpg"], check=True)
        delivered = [file.read_bytes() for file in sorted(self.desktop.folder.glob("*.jpg"))]
        # A product with a known scale would put its resolution into the pictures' heads.
        self.store('bwp2x_product_for_camera="{\\"wired_high\\":\\"mx50_40\\"}"')
        self.start("--simulate", f"high={movie}")
        self.program.activate(self.program.wait_for("frame", "BrimwellPro"))
        self.live = wait_for_picture(self.program)
        self.record()
        self.wait_until_recorded()
        self.desktop.input("key", "--delay", 20, "ctrl+f", "ctrl+s")  # the second while the first is being carried out
        self.program.wait_for("notification", "Frozen")
        self.desktop.key("ctrl+plus")
        wait_until("the picture is larger", lambda: self.live.width() > 650)
        before = self.lower_half()
        self.desktop.input("key", "--delay", 20, "ctrl+s", "ctrl+s")
        self.hand("Press Button")
        wait_until("each press is a file", lambda: len(self.captures("*_image_*.jpg")) == 4)
        self.wait_until_recorded(40)
        self.assertEqual(self.lower_half(), before)
        self.program.click("push button", "Stop")
        recorded, = wait_until("the movie is in the album", lambda: self.captures("*_video_*.mov"))

        self.hand("Unplug")
        self.program.wait_for(None, "No camera detected")
        self.program.click("push button", "Snapshot")  # nothing is in its way
        wait_until("another press is another file", lambda: len(self.captures("*_image_*.jpg")) == 5)
        frozen = {picture_in(file) for file in self.captures("*_image_*.jpg")}
        self.assertEqual(len(frozen), 1)
        number = delivered.index(frozen.pop())
        numbers = numbered_movie.numbers(recorded)
        self.assertEqual(numbers, list(range(numbers[0], numbers[0] + len(numbers))))
        self.assertLess(numbers[0], number)
        self.assertGreater(numbers[-1], number + 20)

        self.program.click("check box", "Freeze")
        self.program.wait_for("dialog", "The camera was unplugged")
        self.hand("Plug In")
        wait_for_picture(self.program)
        self.program.activate(self.program.wait_for("frame", "BrimwellPro"))
        self.desktop.key("ctrl+s")
        wait_until("a live picture is saved", lambda: len(self.captures("*_image_*.jpg")) == 6)
        self.assertNotEqual(delivered.index(picture_in(self.captures("*_image_*.jpg")[-1])), number)
        self.program.quit()

    def lower_half(self):
        """Of the picture, where no text lies over it."""
        rows = self.live.brightness()
        return rows[len(rows) // 2:]

    def test_settings_that_cannot_be_stored(self):
        self.settings.mkdir(parents=True)  # where the file should be
        self.start("--simulate", "high")
        self.program.wait_for_active("dialog", "Which camera is this?")
        self.program.confirm_question()  # which there is something to store of; at once, as it shows for eight seconds
        self.program.wait_for("notification", "Settings could not be saved. Your choices apply until you quit.")
        self.program.wait_for(None, "Live streaming with: Digital Dermatoscope DX10", seconds=30)
        self.program.quit()


if __name__ == "__main__":
    HANGING_DISK = sys.argv.pop(2)
    CameraWindow.main()
