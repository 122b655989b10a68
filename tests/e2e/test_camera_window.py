#!/usr/bin/python3
"""What becomes of the camera window when cameras come, go, are pressed and are held by others: the real program, used
through its window and the window of simulated cameras.

usage: test_camera_window.py PROGRAM LATE_CAMERA HANGING_DISK
"""

import json
import os
import signal
import subprocess
import sys
import time
import unittest

from desktop import Desktop, wait_until
from live_image import LiveImage, colours
from program import Program

PROGRAM = LATE_CAMERA = HANGING_DISK = None
CAMERA = "High Resolution Microscope 1"


class CameraWindow(unittest.TestCase):
    def setUp(self):
        self.desktop = self.enterContext(Desktop())
        self.settings = self.desktop.home / ".config" / "BrimwellPro" / "BrimwellPro.conf"

    def store(self, setting):
        self.settings.parent.mkdir(parents=True)
        self.settings.write_text(f"[General]\n{setting}\n")

    def start(self, *arguments, program=None):
        self.program = Program(self.desktop, [program or PROGRAM, *arguments])
        self.live = LiveImage(self.desktop, self.program.wait_for(None, "Live image").area)

    def start_with_picture(self, *arguments):
        self.start("--simulate", "high", *arguments)
        self.confirm_product()
        self.wait_for_picture()

    def confirm_product(self):
        self.program.wait_for_active("dialog", "Which camera is this?")
        self.program.confirm_question()
        self.program.activate(self.program.wait_for("frame"))  # a click would be lost until then

    def wait_for_picture(self):
        wait_until("the camera's picture is to be seen",
                   lambda: self.live.width() > 100 and colours(self.live.picture()) > 300)

    def captures(self, pattern):
        return sorted((self.desktop.home / "BrimwellPro" / "Default Album").glob(pattern))

    def hand(self, action):
        """Does something to the simulated camera."""
        self.program.click("push button", f"{CAMERA}: {action}")

    def record(self):
        self.program.click("push button", "Record")
        self.program.wait_for("push button", "Stop")

    def let_start(self, meet):
        """Decides what the next starts of the simulated camera meet."""
        choices = ("nothing", "a program", "a named program", "too little bandwidth")
        self.program.click("combo box", f"{CAMERA}: Start")
        for key in ("Home", *["Down"] * choices.index(meet), "Return"):
            self.desktop.key(key)

    def test_captures(self):
        self.start_with_picture()
        self.click_image()
        wait_until("a click on the image takes a snapshot", lambda: len(self.captures("*_image_*.jpg")) == 1)
        self.hand("Press Button")
        wait_until("the button on the camera takes a snapshot", lambda: len(self.captures("*_image_*.jpg")) == 2)
        self.record()
        self.program.wait_for(None, "Recording...")
        self.hand("Unplug")  # in the middle of the recording
        wait_until("the movie is in the album", lambda: len(self.captures("*_video_*.mov")) == 1)
        codec = self.probed(self.captures("*_video_*.mov")[0], "-show_entries", "stream=codec_name,width")
        self.assertEqual(codec, "mjpeg,640")
        self.assertEqual([file.name for file in self.desktop.folder.rglob("brimwellpro-*.*")], [])

    def test_click_that_only_brings_to_front(self):
        self.start_with_picture()
        frame = self.program.wait_for("frame")
        self.desktop.spawn(["pcmanfm", "--no-desktop", str(self.desktop.home)], log="pcmanfm.log")
        other = wait_until("another program is there", lambda: self.desktop.output(
            ["xdotool", "search", "--onlyvisible", "--name", "^home$"]).split()).pop().decode()
        self.desktop.input("windowsize", "--sync", other, 200, 200, "windowmove", "--sync", other, 0, 0)
        wait_until("another program has the keyboard", lambda: not frame.has_state("active"))
        self.click_image()
        wait_until("the click has brought the program to the front", lambda: frame.has_state("active"))
        wait_until("a later click takes a snapshot", lambda: self.click_image() or self.captures("*_image_*.jpg"))
        counted = len(self.captures("*_image_*.jpg"))
        self.desktop.key("ctrl+s")
        wait_until("the key takes another", lambda: len(self.captures("*_image_*.jpg")) > counted)
        self.assertEqual((counted, len(self.captures("*_image_*.jpg"))), (1, 2))

    def test_left_button_moves_image_where_it_takes_no_snapshot(self):
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
        time.sleep(1)
        before = len(self.captures("*_video_*.mov"))
        self.double_click(self.program.wait_for("push button", "Record").area)  # out of habit: one click is meant
        self.program.wait_for("push button", "Stop")
        resolution = self.program.wait_for("combo box", "Resolution").area
        self.desktop.input("mousemove", resolution.x + 20, resolution.y + 10, "click", 5)  # the wheel, by accident
        time.sleep(1)
        self.program.wait_for("push button", "Stop")
        self.program.quit()
        movies = self.captures("*_video_*.mov")
        self.assertEqual(len(movies), before + 1)
        self.assertGreater(self.frames_of(movies[-1]), 10)
        self.assertEqual([file.name for file in self.desktop.folder.rglob("brimwellpro-*.*")], [])

    def double_click(self, area):
        self.desktop.input("mousemove", area.x + area.width // 2, area.y + area.height // 2,
                           "click", "--repeat", 2, "--delay", 20, 1)

    @staticmethod
    def probed(movie, *options):
        return subprocess.run(["ffprobe", "-v", "error", *options, "-of", "csv=p=0", movie], capture_output=True,
                              text=True, check=True).stdout.strip()

    def frames_of(self, movie):
        return int(self.probed(movie, "-count_frames", "-show_entries", "stream=nb_read_frames"))

    def test_killed_while_recording(self):
        self.start_with_picture()
        self.record()
        time.sleep(1.5)
        os.kill(self.program.pid, signal.SIGKILL)
        self.program.wait_for_end()
        self.start("--simulate", "high")
        self.program.wait_for(None, "Captures were recovered")
        self.desktop.key("Return")
        wait_until("the message is gone", lambda: "Captures were recovered" not in self.program.outline())
        movie, = self.captures("*_video_*.mov")
        self.assertGreater(self.frames_of(movie), 10)
        self.assertEqual([file.name for file in self.desktop.folder.rglob("brimwellpro-*.*")], [])
        self.program.quit()

    def test_asked_to_end_while_recording(self):
        for number, sent in enumerate((signal.SIGTERM, signal.SIGINT), 1):
            self.start("--simulate", "high")
            if number == 1:
                self.confirm_product()
            self.wait_for_picture()
            self.record()
            time.sleep(1)
            os.kill(self.program.pid, sent)
            self.assertEqual(self.program.wait_for_end(), 0)
            movies = self.captures("*_video_*.mov")
            self.assertEqual(len(movies), number)
            self.assertGreater(self.frames_of(movies[-1]), 10)

    def test_second_start(self):
        self.start_with_picture()
        self.program.activate(self.program.wait_for("frame", "Simulated cameras"))
        second = subprocess.run([PROGRAM, "--simulate", "ultra"], env=self.desktop.environment, capture_output=True,
                                text=True, timeout=60, check=False)
        self.assertEqual(second.returncode, 0, second.stderr)
        self.assertIn("Without effect, as the program was running: --simulate", second.stderr)
        main = self.program.wait_for("frame", "BrimwellPro")
        wait_until("the first one's window has the keyboard", lambda: main.has_state("active"))
        listing = subprocess.run([PROGRAM, "--list-cameras", "--simulate", "ultra"], env=self.desktop.environment,
                                 capture_output=True, text=True, timeout=60, check=True)
        self.assertIn("wired_ultra", listing.stdout)  # nobody else's business
        os.kill(self.program.pid, signal.SIGKILL)
        self.program.wait_for_end()
        self.start("--simulate", "high")
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
        self.program.wait_for("frame", "Help")
        self.desktop.key("Escape")
        wait_until("the help is closed", lambda: not self.program.window("frame", "Help"))
        self.hand("Plug In")
        self.wait_for_picture()
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
        time.sleep(1)
        self.program.quit()  # though its start never comes back
        self.start(*cameras)
        self.program.click("push button", "Use Wireless Microscope")
        self.confirm_product()
        self.wait_for_picture()
        os.kill(self.program.pid, signal.SIGTERM)
        self.assertEqual(self.program.wait_for_end(), 0)

    def test_quit_waits_for_captures(self):
        self.settings.parent.mkdir(parents=True)
        self.settings.write_text(f'[General]\nbwp2x_albums="[\\"{self.desktop.folder}/hanging/Album\\"]"\n')
        self.desktop.environment["LD_PRELOAD"] = HANGING_DISK
        self.start_with_picture()
        self.program.click("push button", "Snapshot")
        self.program.wait_for(None, "Snapshot saved")
        self.desktop.key("ctrl+q")
        self.program.wait_for(
            None, "Waiting for a capture on its way into the album. Quit again to leave it to the next start.")
        self.desktop.key("ctrl+q")
        self.program.wait_for("label", "Quit at once?")
        self.program.click("push button", "OK")
        self.assertEqual(self.program.wait_for_end(30), 0)

    def test_quit_called_off(self):
        folder = self.desktop.folder / "hanging"
        folder.mkdir()
        self.desktop.environment["LD_PRELOAD"] = HANGING_DISK
        self.start_with_picture()
        self.program.click("push button", "Snapshot")
        wait_until("there is a snapshot", lambda: self.captures("*.jpg"))
        self.program.click("push button", "Albums")
        self.program.click("table cell", self.captures("*.jpg")[0].stem + ", image")
        self.program.wait_for("label", "Selected: 1 of 1")
        self.program.click("push button", "Save the selection as...")
        self.program.wait_for_active("dialog", "Saving image as JPG file")
        self.desktop.input("type", str(folder / "copy.jpg"))
        self.desktop.key("Return")  # which never ends

        def quit_with(answer):
            self.program.click("push button", "Quit")
            self.program.wait_for("label", "Quit and stop saving?")
            self.program.click("push button", answer)

        def asks(text):
            self.program.wait_for("label", text)
            self.assertIsNone(self.program.find("label", "Quit and stop saving?"))

        self.let_start("a named program")
        self.hand("Unplug")
        self.hand("Plug In")
        self.program.click("push button", "OK")  # it asks again as long as the camera is held
        quit_with("Cancel")
        asks("Cannot access camera at this time")
        self.assertIn("In use by: guvcview", self.program.outline())
        self.hand("Unplug")
        self.program.wait_for("label", "The camera was unplugged")
        quit_with("Cancel")
        asks("The camera was unplugged")
        quit_with("OK")
        self.assertEqual(self.program.wait_for_end(), 0)  # though it still saves

    def test_minimised(self):
        self.start_with_picture()

        def windows(*which):
            return self.desktop.output(["xdotool", "search", *which, "--name", "^BrimwellPro$"]).split()

        window = windows("--onlyvisible")[0].decode()
        self.desktop.input("windowminimize", window)
        wait_until("it is minimised", lambda: not windows("--onlyvisible"))
        self.hand("Unplug")
        wait_until("the camera is gone", lambda: "Camera session: waiting" in self.program.log)
        self.hand("Plug In")
        wait_until("the camera brings it up", lambda: windows("--onlyvisible"))
        self.wait_for_picture()
        self.program.quit()

    def test_too_little_bandwidth(self):
        self.start_with_picture()
        self.let_start("too little bandwidth")
        self.choose_resolution("Down")
        wait_until("the status line tells", lambda: "not enough USB bandwidth" in self.program.outline())
        self.hand("Unplug")
        self.program.wait_for("push button", "Quit")
        self.hand("Plug In")
        self.program.click("push button", "Use 640x480")
        self.wait_for_picture()
        self.assertNotIn("bandwidth for", self.program.outline())
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
        for key in ("Down", "Down", "Down", "Return"):  # past snapshot, record and the first camera
            self.desktop.key(key)
        self.confirm_product()
        self.program.wait_for(None, "Live streaming with: Wireless Dermatoscope DX12")
        self.wait_for_picture()
        self.program.quit()

    def stored_products(self):
        key = "bwp2x_product_for_camera="
        line = next(line for line in self.settings.read_text().splitlines() if line.startswith(key))
        return json.loads(line.removeprefix(key).replace('\\"', '"').strip('"'))

    def test_product_is_asked_for_until_it_is_known(self):
        self.start("--simulate", "high")
        self.program.click("push button", "Ask Me Later")
        wait_until("the question is gone", lambda: not self.program.window("dialog"))
        self.wait_for_picture()
        self.assertEqual(self.stored_products(), {})
        self.program.quit()
        self.start("--simulate", "high")
        self.program.click("combo box", "Which camera is this?")
        self.desktop.key("Down")
        self.desktop.key("Return")
        self.confirm_product()
        self.assertEqual(self.stored_products(), {"wired_high": "mx50_40"})
        self.program.quit()
        self.start("--simulate", "high")
        self.program.wait_for(None, "Live streaming with: Digital Microscope MX50/MX40")
        self.wait_for_picture()
        time.sleep(1)
        self.assertIsNone(self.program.window("dialog"))
        self.program.quit()

    def test_grid_tells_at_which_zoom_it_holds(self):
        self.store('bwp2x_product_for_camera="{\\"wireless\\":\\"dx12\\"}"')
        self.start("--simulate", "wireless")
        self.wait_for_picture()
        tells = "Grid represents 5x5mm when scope is resting on a flat target. Will vary on curved surfaces."
        for keys, text in (("ctrl+g", tells), ("ctrl+minus", f"{tells} Applies at 100%."), ("ctrl+0", tells)):
            self.desktop.key(keys)
            self.program.wait_for(None, text)
        self.program.quit()

    def test_settings_that_cannot_be_stored(self):
        self.settings.mkdir(parents=True)  # where the file should be
        self.start_with_picture()
        self.program.wait_for("notification", "Settings could not be saved. Your choices apply until you quit.")
        self.program.wait_for(None, "Live streaming with: Digital Dermatoscope DX10", seconds=30)
        self.program.quit()

    def choose_camera(self, name):
        """In the settings window."""
        self.program.click("combo box", "Camera")
        item = next(item for item in self.program.wait_for("combo box", "Camera").descendants() if item.name == name)
        wait_until("the list is open", lambda: item.area.height > 0)
        self.desktop.key("Home" if name == self.cameras()[0] else "End")
        self.desktop.key("Return")

    def cameras(self):
        """What the settings window offers."""
        box = self.program.wait_for("combo box", "Camera")
        return [item.name for item in box.descendants() if item.role == "list item"]

    def test_two_cameras_of_one_name(self):
        name, second = "High Resolution Microscope", "High Resolution Microscope (2)"
        self.start_with_picture("--simulate", "high")
        self.desktop.key("ctrl+comma")
        self.program.wait_for("frame", "Settings")  # lies over the picture and what else there is to click on
        self.desktop.input("search", "--name", "^Settings$", "windowmove", "--sync", 900, 20)
        self.assertEqual(self.cameras(), [name, second])
        self.choose_camera(second)
        wait_until("the second one streams", lambda: self.program.log.count("Camera session: streaming") == 2)
        self.assertEqual(self.program.wait_for("combo box", "Camera").name, second)
        self.wait_for_picture()
        self.hand("Unplug")  # the first
        wait_until("one is left", lambda: self.cameras() == [name])
        self.hand("Plug In")
        wait_until("it has its old place again", lambda: self.cameras() == [name, second])
        self.assertEqual(self.program.wait_for("combo box", "Camera").name, second)
        self.choose_camera(name)
        wait_until("that one streams", lambda: self.program.log.count("Camera session: streaming") == 3)
        self.hand("Unplug")  # of two cameras, the one in use
        wait_until("the other takes over", lambda: self.program.log.count("Camera session: streaming") == 4)
        self.assertEqual(self.cameras(), [name])
        self.assertIsNone(self.program.window("dialog"))
        self.wait_for_picture()
        self.program.quit()

    def test_camera_comes_late(self):
        self.start("3", "2", program=LATE_CAMERA)
        welcome = self.program.wait_for("dialog", "Welcome to BrimwellPro")
        self.assertNotIn("getting it ready", self.program.outline())
        self.program.wait_for(None, "Camera found, getting it ready...")
        self.confirm_product()
        wait_until("the welcome is over", lambda: not welcome.showing)
        self.wait_for_picture()
        self.program.quit()


if __name__ == "__main__":
    PROGRAM, LATE_CAMERA, HANGING_DISK = sys.argv.pop(1), sys.argv.pop(1), sys.argv.pop(1)
    unittest.main(verbosity=2)
