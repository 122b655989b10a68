#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The album window of the real program, used by mouse and keyboard, beside other programs: a file manager takes what is
dragged, the desktop's own tool lists the Trash, unzip reads the archive.

usage: test_albums.py PROGRAM FAILING_CALLS
"""

import subprocess
import sys
import tempfile
from pathlib import Path

from desktop import PATIENCE, wait_until
from live_image import alike, colours
from program import ProgramTest, answer_product_question

NAMES = [f"20240607_image_{number:03d}" for number in (1, 2, 3)]
HELD = 0.7  # seconds; a drag begins after half a second


def serve():
    """In a process of its own: a file manager that prints what it is to show."""
    sys.path.append("/usr/lib/python3/dist-packages")
    from gi.repository import Gio, GLib

    def called(bus, sender, path, interface, method, arguments, invocation):
        print(*arguments[0], flush=True)
        invocation.return_value(None)

    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    bus.register_object("/org/freedesktop/FileManager1", Gio.DBusNodeInfo.new_for_xml(
        '<node><interface name="org.freedesktop.FileManager1"><method name="ShowItems"><arg type="as" direction="in"/>'
        '<arg type="s" direction="in"/></method></interface></node>').interfaces[0], called)
    Gio.bus_own_name_on_connection(bus, "org.freedesktop.FileManager1", 0, lambda *_: print(flush=True), None)
    GLib.MainLoop().run()


class Albums(ProgramTest):
    def setUp(self):
        super().setUp()
        self.make_pictures("640x480")
        self.pictures = {file.name: file.read_bytes() for file in self.album.iterdir()}
        self.start("--simulate", "high")
        answer_product_question(self.program)
        self.desktop.key("F9")
        for name in NAMES:
            area = self.cell(name).area
            wait_until(f"the picture of {name} shows", lambda: colours(self.desktop.picture(*area)) > 20)

    def cell(self, name):
        return self.program.wait_for("table cell", f"{name}, image")

    def cells(self):
        """The visible cells from the first to the last, each with whether it is selected."""
        return [(cell.name, cell.has_state("selected")) for cell in self.grid().descendants()
                if cell.role == "table cell" and cell.name]

    def grid(self):
        return self.program.wait_for("table", "Images")

    def focus_grid(self):
        self.desktop.key("F6")
        wait_until("the grid has the focus", lambda: self.in_use() and self.grid().has_state("focused"))

    def in_use(self):
        return self.program.window("frame", "Albums").has_state("active")

    def test_drag_into_file_manager(self):
        folder = self.desktop.folder / "drop here"
        folder.mkdir()
        self.desktop.spawn(["pcmanfm", "--no-desktop", str(folder)], log="pcmanfm.log")
        window = wait_until("the file manager is there", lambda: self.desktop.output(
            ["xdotool", "search", "--onlyvisible", "--name", "drop here"]).split()).pop()
        self.desktop.input("windowmove", "--sync", window.decode(), 20, 160)  # the program's title stays free
        x, y = 400, 450
        wait_until("the file manager shows the empty folder",
                   lambda: self.desktop.picture(x, y, 1, 1).pixel(0, 0) == (255, 255, 255))
        area = self.cell(NAMES[1]).area
        self.desktop.input("mousemove", area.x + area.width // 2, area.y + area.height // 2, "mousedown", 1,
                           "sleep", HELD)
        for step in reversed(range(8)):  # the file manager decides while the pointer moves
            self.desktop.input("mousemove", x + 10 * step, y + 5 * step, "sleep", 0.15)
        self.desktop.input("mouseup", 1)
        name = NAMES[1] + ".jpg"
        wait_until("the file is in the other folder", (folder / name).is_file)
        wait_until("it is whole", lambda: (folder / name).read_bytes() == self.pictures[name])
        self.assertEqual([file.name for file in folder.iterdir()], [name])
        self.assertEqual({file.name: file.read_bytes() for file in self.album.iterdir()}, self.pictures)
        self.program.quit()

    def test_copied_and_shown_in_file_manager(self):
        def clipboard(kind):
            return self.desktop.output(["xclip", "-o", "-selection", "clipboard", "-t", kind])

        def wait_for_copy(kind, what):
            wait_until(f"{what} is on the clipboard", lambda: what.encode() in clipboard(kind))

        self.desktop.spawn(["/usr/bin/python3", __file__, "--serve"], log="shown.log")
        log = self.desktop.folder / "shown.log"
        wait_until("there is a file manager to ask", log.read_text)
        self.focus_grid()
        self.desktop.key("Home")
        self.desktop.key("ctrl+c")
        first = NAMES[2] + ".jpg"
        wait_for_copy("text/uri-list", first)
        file = self.album / first
        self.assertEqual(clipboard("text/uri-list").decode().split(), [file.as_uri()])
        self.assertEqual(clipboard("x-special/gnome-copied-files").decode(), f"copy\n{file.as_uri()}")
        self.assertEqual(clipboard("UTF8_STRING").decode(), str(file))
        self.assertEqual(clipboard("image/jpeg"), self.pictures[first])
        self.assertEqual(clipboard("image/png")[:8], b"\x89PNG\r\n\x1a\n")
        self.desktop.key("ctrl+shift+o")
        wait_until("the file manager was asked", lambda: file.as_uri() in log.read_text())
        self.desktop.key("ctrl+a")
        self.desktop.key("ctrl+c")
        wait_for_copy("text/uri-list", NAMES[0] + ".jpg")
        self.assertNotIn(b"image", clipboard("TARGETS"))

        folder = self.desktop.folder / "paste here"
        folder.mkdir()
        self.desktop.spawn(["pcmanfm", "--no-desktop", str(folder)], log="pcmanfm.log")
        window = wait_until("the file manager is there", lambda: self.desktop.output(
            ["xdotool", "search", "--onlyvisible", "--name", "paste here"]).split()).pop().decode()
        self.desktop.input("windowactivate", "--sync", window)

        def pasted():
            self.desktop.key("ctrl+v")  # it takes its time until it listens
            return len(list(folder.iterdir())) >= len(NAMES)

        wait_until("the files are pasted", pasted, step=1)
        wait_until("they are whole", lambda: (folder / first).read_bytes() == self.pictures[first])

        self.program.activate(self.program.window("frame", "BrimwellPro"))
        self.desktop.key("ctrl+c")
        wait_for_copy("TARGETS", "image/jpeg")
        self.assertEqual(clipboard("image/jpeg")[:2], b"\xff\xd8")  # of the live image, which is in no file
        self.assertNotIn(b"uri-list", clipboard("TARGETS"))
        self.assertEqual(len(list(self.album.iterdir())), len(NAMES))
        self.program.quit()

    def test_save_all_as_archive(self):
        self.focus_grid()
        self.desktop.key("ctrl+a")
        self.desktop.key("ctrl+e")
        self.program.wait_for_active("dialog", "Saving images as ZIP file")
        archive = self.desktop.home / "my pictures.zip"
        self.desktop.input("type", str(archive.with_suffix("")))  # replaces the suggested name
        self.desktop.key("Return")
        wait_until("the archive is there", archive.is_file)
        self.program.wait_for("label", "Saved: my pictures.zip")
        wait_until("the album window has the keyboard again", self.in_use)
        tested = subprocess.run(["unzip", "-t", archive], capture_output=True, text=True)
        self.assertEqual(tested.returncode, 0, tested.stdout)
        for name, bytes_ in self.pictures.items():
            self.assertEqual(subprocess.run(["unzip", "-p", archive, name], capture_output=True).stdout, bytes_)
        self.program.quit()

    def test_snapshot_key_in_every_window(self):
        def take_snapshot(where):
            known = set(self.album.iterdir())
            self.desktop.key("ctrl+s")
            new = wait_until(f"a snapshot is taken from {where}",
                             lambda: [file for file in self.album.glob("*.jpg") if file not in known])[0]
            self.assertIsNone(self.program.window("dialog"))
            return new

        def tab_to(role, name):
            def focused():
                self.desktop.key("Tab")
                return self.program.wait_for(role, name).has_state("focused")

            wait_until(f"{name} has the focus", focused, step=0.2)

        self.focus_grid()
        self.desktop.key("Home")
        self.cell(take_snapshot("a full grid").stem)
        self.desktop.key("ctrl+a")
        self.program.wait_for("label", "Selected: 4 of 4")
        tab_to("push button", "Save the selection as...")
        self.cell(take_snapshot("below the grid").stem)
        tab_to("combo box", "Album")
        self.cell(take_snapshot("the pop-up").stem)
        self.program.click("page tab", "Videos")
        grid = self.program.wait_for("table", "Videos").area
        self.desktop.click(grid.x + grid.width // 2, grid.y + grid.height // 2)
        take_snapshot("an empty grid")
        for key, name in ("ctrl+comma", "Settings"), ("F8", "Advanced settings"), ("F1", "Help"):
            self.desktop.key(key)
            self.program.activate(self.program.wait_for("frame", name))
            take_snapshot(name)
        self.desktop.key("Escape")  # the help lies over the title of the camera window
        self.program.quit()

    def test_look_back(self):
        def shows(file, place):
            return self.program.wait_for("image", f"{file}, {place}")

        def new_file(what):
            new = wait_until(what, lambda: set(self.album.glob("*.jpg")) - known).pop()
            known.add(new)
            self.program.wait_for("image", "Live image")
            self.program.wait_for("push button", f"Last capture: {new.name}")
            return new.name

        known = set(self.album.iterdir())
        first, second, third = (f"{name}.jpg" for name in NAMES)
        self.program.wait_for("push button", f"Last capture: {third}")
        self.focus_grid()
        self.desktop.key("Home")
        self.desktop.key("ctrl+Return")
        area = shows(third, "1 of 3").area
        self.program.wait_for_active("frame", "BrimwellPro")
        red = (area.x + area.width // 2 - 280, area.y + area.height // 2)  # as ffmpeg draws it, at the left
        wait_until("the picture shows", lambda: alike(self.desktop.picture(*red, 1, 1).pixel(0, 0), (254, 0, 0)))

        for key, file, place in (("Right", second, "2 of 3"), ("Right", first, "3 of 3"), ("Right", first, "3 of 3"),
                                 ("Left", second, "2 of 3")):
            self.desktop.key(key)
            shows(file, place)
        self.program.click("push button", "Previous")
        shows(third, "1 of 3")
        self.program.click("push button", "Next")
        shows(second, "2 of 3")
        self.desktop.key("Delete")
        self.program.click("push button", "OK")
        shows(first, "2 of 2")
        self.assertFalse((self.album / second).exists())
        self.desktop.key("ctrl+z")
        shows(second, "2 of 3")
        self.assertEqual((self.album / second).read_bytes(), self.pictures[second])

        self.desktop.key("space")
        earlier = new_file("a snapshot is taken while looking back")
        self.program.click("push button", f"Last capture: {earlier}")
        shows(earlier, "1 of 4")
        self.hand("Press Button")
        new = new_file("the camera's own button takes one, too")
        self.program.click("push button", f"Last capture: {new}")
        shows(new, "1 of 5")
        self.desktop.key("Escape")
        self.program.wait_for("image", "Live image")
        self.desktop.key("F7")
        shows(new, "1 of 5")
        self.hand("Unplug")
        wait_until("the camera is gone", lambda: "Camera gone:" in self.program.log)
        self.program.click("push button", "Next")
        shows(earlier, "2 of 5")
        self.hand("Plug In")
        wait_until("the camera is back", lambda: self.program.log.count("Camera session: streaming") == 2)
        shows(earlier, "2 of 5")
        self.program.quit()

    def test_comparison_by_keyboard(self):
        def pressed(name):
            return self.program.wait_for("check box", name).has_state("checked")

        known = set(self.album.iterdir())
        self.program.activate(self.program.window("frame", "BrimwellPro"))
        self.desktop.key("ctrl+b")
        self.program.wait_for("tool bar", "Comparison")
        wait_until("side by side", lambda: pressed("Side by side"))
        for key, mode in (("2", "Overlay"), ("3", "Dividing line"), ("1", "Side by side"), ("2", "Overlay")):
            self.desktop.key(key)
            wait_until(f"{key} chooses {mode}", lambda: pressed(mode))
        slider = self.program.wait_for("slider", "How much of the album picture shows")
        before = slider.value
        self.desktop.key("period")
        wait_until("more of the album's picture shows", lambda: slider.value > before)
        self.assertTrue(pressed("Linked"))
        self.desktop.key("ctrl+k")
        wait_until("they are not linked", lambda: not pressed("Linked"))
        self.desktop.key("Right")
        self.desktop.key("ctrl+r")
        self.desktop.key("ctrl+k")
        wait_until("they are linked again", lambda: pressed("Linked"))
        self.desktop.key("ctrl+s")
        new = wait_until("a snapshot is taken", lambda: set(self.album.glob("*.jpg")) - known).pop()
        self.assertNotIn(new.read_bytes(), self.pictures.values())
        self.assertTrue(pressed("Overlay"))  # comparing goes on
        self.desktop.key("Escape")
        wait_until("it ends", lambda: not self.program.find("tool bar", "Comparison"))
        self.program.quit()


class TwoDisks(ProgramTest):
    """Another album, on a disk of its own that takes its time."""

    def test_move(self):
        def move():
            self.program.wait_for("image", f"{picture.name}, 1 of 1")
            # Not with the mouse: Qt 6.8 takes no click in a menu that a key opened, if the mouse has never moved before.
            for key, opened in (("alt+f", "Move to album"), ("m", other.name)):
                self.desktop.key(key)
                self.program.wait_for("menu item", opened)
            self.desktop.key("Return")
            dialog = self.program.wait_for("dialog", "Move to album")
            progress, cancel = (next(part for part in dialog.descendants() if part.role == role)
                                for role in ("progress bar", "push button"))
            wait_until("some of it is there", lambda: any(part.stat().st_size for part in other.iterdir()))
            wait_until("one sees how far it has come", lambda: progress.value > 0)
            return cancel

        other = Path(self.enterContext(tempfile.TemporaryDirectory(dir="/dev/shm")))
        self.make_pictures("640x480")
        for too_many in list(self.album.iterdir())[1:]:
            too_many.unlink()
        picture, = self.album.iterdir()
        with picture.open("ab") as file:
            file.truncate(20 << 20)
        pixels = picture.read_bytes()
        albums = f'[\\"{self.album}\\",\\"{other}\\"]'
        self.store(f'bwp2x_albums="{albums}"')
        slow = f"1 0 1 1 {700000 * PATIENCE:.0f} 1 part"
        self.start("--simulate", "high", environment={"LD_PRELOAD": FAILING_CALLS, "FAULT": slow})
        answer_product_question(self.program)
        self.program.wait_for("push button", f"Last capture: {picture.name}")
        self.desktop.key("F7")
        move().do("Press")
        wait_until("nothing of it is left", lambda: not any(other.iterdir()))
        wait_until("the dialog is gone", lambda: not self.program.window("dialog"))
        self.assertEqual(picture.read_bytes(), pixels)
        move()
        wait_until("it is there", (other / picture.name).exists)
        wait_until("the dialog is gone", lambda: not self.program.window("dialog"))
        self.assertEqual((other / picture.name).read_bytes(), pixels)
        self.assertFalse(picture.exists())
        self.program.quit()


if __name__ == "__main__":
    if sys.argv[1] == "--serve":
        serve()
    else:
        FAILING_CALLS = sys.argv.pop(2)
        ProgramTest.main()
