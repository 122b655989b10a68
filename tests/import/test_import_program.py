#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The real program takes over old settings: from the command line without a display, and by its menu.

usage: test_import_program.py PROGRAM [CASE]
"""

import configparser
import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "e2e"))
from desktop import KEPT, Desktop, wait_until  # noqa: E402
from program import Program  # noqa: E402

PROGRAM = None
PARTS = "cameras (3), products (4), albums (1)"
LEFT_OUT = "unknown cameras (2), unknown products (1), albums whose folders are not on this computer (2)"


def make_files(folder, home):
    (home / "Pictures").mkdir(parents=True)
    subprocess.run([HERE / "make_archives.py", folder, home], check=True)


def stored(home):
    """The settings file, which must be there."""
    settings = configparser.RawConfigParser()
    settings.read(home / ".config/BrimwellPro/BrimwellPro.conf")
    return {key: json.loads(text) if text.startswith('"') else text for key, text in settings["General"].items()}


class CommandLine(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.home = self.folder / "home"
        make_files(self.folder, self.home)
        (self.folder / "%1\n").touch()
        os.truncate(self.folder / "%1\n", 17_000_000)

    def run_program(self, *arguments, output=subprocess.PIPE):
        environment = {**KEPT, "HOME": str(self.home), "XDG_CONFIG_HOME": str(self.home / ".config"), "LC_ALL": "C.UTF-8"}
        return subprocess.run([PROGRAM, *map(str, arguments)], env=environment, stdout=output, stderr=subprocess.PIPE,
                              text=True, timeout=20, check=False)

    def test_command_line(self):
        # A picture among the settings of a damaged file, whose last line has no end: Qt makes it as soon as it reads any.
        own = self.home / ".config/BrimwellPro/BrimwellPro.conf"
        own.parent.mkdir(parents=True)
        own.write_text("[General]\nbwp2x_movie_rate=20\nbitmap=@Variant(\\0\\0\\0I\\0\\0\\0\\0)")
        file = self.folder / "defaults.xml"
        before = file.read_bytes()
        done = self.run_program("--import-settings", file)
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (0, f"Taken over from “defaults.xml”: {PARTS}; left out: {LEFT_OUT}.\n", ""))
        self.assertEqual(file.read_bytes(), before)
        settings = stored(self.home)
        self.assertEqual(settings["bwp2x_movie_rate"], "20")
        self.assertEqual(json.loads(settings["bwp2x_product_for_camera"]),
                         {"wired_high": "mx50_40", "wired_regular": "dx14", "wireless": "dx17_18"})
        self.assertEqual(set(json.loads(settings["bwp2x_albums"])),
                         {f"{self.home}/{name}" for name in ("Pictures", "BrimwellPro/Default Album")})

        # Once more, from a file of another kind, when one more of the folders is there.
        (self.home / "BrimwellPro/Standardalbum").mkdir()
        done = self.run_program("--import-settings", self.folder / "defaults.all-xml")
        self.assertIn("albums (1)", done.stdout)  # the one in the list already does not count
        settings = stored(self.home)
        self.assertEqual(sorted(map(os.path.basename, json.loads(settings["bwp2x_albums"]))),
                         ["Default Album", "Pictures", "Standardalbum"])
        self.assertEqual(settings["bwp2x_default_album_name"], "Standardalbum")
        self.assertFalse((self.home / "gone").exists())

        # A refused file changes nothing, and the reason is one sentence.
        settings_file = self.home / ".config/BrimwellPro/BrimwellPro.conf"
        before = settings_file.read_bytes()
        for name, arguments, reason in [
                ("hostile/damaged-laughs", [], "The old settings in “damaged-laughs” are damaged; nothing was taken "
                                               "over."),
                ("hostile/nothing-at-all", ["--language", "de_AT"],
                 "„nothing-at-all“ enthält keine Einstellungen der vorigen Generation von BrimwellPro."),
                ("nowhere", [], "There is no file “nowhere”."),
                ("%1\n", ["--language=ja"], "「%1\ufffd」は 16\u00a0MB を超えており、設定ファイルとしては大きすぎます。")]:
            done = self.run_program(*arguments, "--import-settings", self.folder / name)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", f"brimwellpro: {reason}\n"))
        self.assertEqual(settings_file.read_bytes(), before)

        for arguments in (["--language", "tlh"], ["--language=english"], ["--language"]):
            done = self.run_program(*arguments, "--list-cameras")
            self.assertEqual((done.returncode, done.stdout, done.stderr.count("\n")), (2, "", 1))
            self.assertIn("en, de, es, fr, ja", done.stderr)

    def test_output_that_cannot_be_written(self):
        with open("/dev/full", "wb") as full:
            for arguments in (["--help"], ["--version"], ["--list-cameras"], ["--import-settings", self.folder / "defaults.xml"]):
                done = self.run_program(*arguments, output=full)
                self.assertEqual((done.returncode, done.stderr),
                                 (1, "brimwellpro: The output could not be written: No space left on device\n"), arguments)


class Menu(unittest.TestCase):
    def setUp(self):
        self.desktop = self.enterContext(Desktop())
        make_files(self.desktop.folder, self.desktop.home)
        self.program = Program(self.desktop, [PROGRAM, "--simulate", "ultra", "--language", "en_GB"])
        self.program.wait_for("dialog")
        self.program.confirm_question()  # the product is the first one, an MX62
        self.program.activate(self.program.wait_for("frame"))

    def accept(self, role, name=None, text=None):
        """Answers a dialog with Return, after typing a text."""
        dialog = self.program.wait_for(role, name)
        wait_until("the question has the keyboard", lambda: dialog.has_state("active"))
        if text:
            self.desktop.input("type", text)
        self.desktop.key("Return")
        wait_until("the question is answered", lambda: not self.program.window(role, name))

    def snapshot_has_old_size(self):
        self.desktop.key("ctrl+s")
        pictures = sorted((self.desktop.home / "BrimwellPro/Default Album").glob("*.jpg"))
        return pictures and b"width=800\nheight=600" in subprocess.run(
            ["ffprobe", "-v", "error", "-show_entries", "stream=width,height", pictures[-1]],
            capture_output=True, check=False).stdout

    def test_menu(self):
        self.desktop.key("F8")
        self.assertEqual(self.program.wait_for("spin button", "Hue").value, 0)
        file = self.desktop.folder / "defaults.binary"

        # The settings of a program that is open cannot be changed from outside.
        done = subprocess.run([PROGRAM, "--import-settings", file], env=self.desktop.environment, capture_output=True,
                              text=True, check=False)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("BrimwellPro is open", done.stderr)

        self.program.activate(self.program.wait_for("frame"))
        self.desktop.key("alt+f")
        self.desktop.key("i")
        self.accept("dialog", "Import old settings", text=str(file))
        self.program.wait_for("label", f"Taken over from “defaults.binary”: {PARTS}; left out: {LEFT_OUT}.")
        self.accept("alert")

        # In effect at once: the values of the camera in use and the size of its picture, and the albums.
        wait_until("the old hue is shown", lambda: self.program.wait_for("spin button", "Hue").value != 0)
        self.program.wait_for("combo box", "800x600")
        self.program.activate(self.program.wait_for("frame"))
        wait_until("a snapshot has that size", self.snapshot_has_old_size, step=1)
        self.desktop.key("F9")
        albums = self.program.wait_for("combo box", "Default Album")  # the one that is current, as before
        self.assertEqual([item.name for item in albums.descendants() if item.role == "list item"],
                         ["Default Album", "Pictures"])
        self.assertIn("mx62", "".join(stored(self.desktop.home)))


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main()
