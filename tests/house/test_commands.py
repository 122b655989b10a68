#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""./run and ./test where something is missing. Package manager, CMake and the like are scripts of a line here."""

import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
# What every system has. Whatever else a script calls is missing, unless a test provides it.
BASIC = ("bash", "env", "dirname", "awk", "sed", "grep", "comm", "sort", "tail", "tee", "cat", "mkdir")
NOTHING_INSTALLED = {"dpkg-query": "exit 1", "id": "echo 0"}
OFFLINE = "echo 'E: Failed to fetch http://deb.example/InRelease  Could not resolve deb.example'; exit 100"
DEBIAN_NAMES = {"cmake", "g++", "qt6-base-dev", "libyuv-dev", "breeze-icon-theme"}


class Commands(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.path = self.folder / "bin"
        self.path.mkdir()
        self.root = self.folder / "checkout"
        for name in ("run", "test", "tools/setup.sh", "tools/packages.txt", "CMakeLists.txt"):
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, self.root / name)
        for name in BASIC:
            (self.path / name).symlink_to(shutil.which(name))

    def start(self, *command, environment=None, **programs):  # which are there besides the basic ones
        for name, text in programs.items():
            path = self.path / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(f"#!/bin/sh\n{text}\n")
            path.chmod(0o755)
        done = subprocess.run(command, cwd=self.root, env={"PATH": str(self.path), **(environment or {"DISPLAY": ":0"})},
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              check=False)
        return done.returncode, done.stdout

    def assertEndsWith(self, sentence, named, *command, **programs):
        status, printed = self.start(*command, **programs)
        last = printed.splitlines()[-1]
        self.assertNotEqual(status, 0)
        self.assertRegex(last, sentence)
        self.assertLessEqual(set(named), set(re.findall(r"[\w+.-]+", last)), last)

    def test_help_needs_nothing(self):
        for command, option, says in (("./run", "--help", "\n  --demo "), ("./test", "-h", "-R album")):
            status, printed = self.start(command, option)
            self.assertEqual((status, (self.root / "build").exists()), (0, False), printed)
            self.assertIn(says, printed)

    def test_packages_that_cannot_be_installed(self):
        user = {**NOTHING_INSTALLED, "id": "echo 1000", "apt-get": "exit 1"}
        unknown = "echo 'E: Unable to locate package cmake'; exit 100"
        for name, sentence, programs in (
                ("no network", "connect this computer to the network and start", {"apt-get": OFFLINE}),
                ("no network, no lists", "connect this computer to the network",
                 {"apt-get": f'case "$*" in update*) {OFFLINE} ;; *) {unknown} ;; esac'}),
                ("unknown", "Unable to locate package cmake.*start .* again",
                 {"apt-get": f'[ "$1" = update ] || {{ {unknown}; }}'}),
                ("no sudo", "there is no sudo; as root, please run: apt-get install ", user),
                ("not allowed", "sudo refuses; as root, please run: apt-get install ", {**user, "sudo": "exit 1"})):
            for command in ("./run", "./test"):
                with self.subTest(name, command=command):
                    self.assertEndsWith(sentence, DEBIAN_NAMES, command, **{**NOTHING_INSTALLED, **programs})

    def test_another_distribution(self):
        missing = {"cmake", "ninja", "c++", "pkg-config", "Qt6Core", "Qt6Multimedia", "libavcodec", "exempi-2.0", "libyuv"}
        for command in ("./run", "./test"):
            self.assertEndsWith("please install with its own tools what is missing", missing, command)
        present = {"ninja": "", "c++": "", "pkg-config": '[ "$2" != libexif ]'}
        _, printed = self.start("./run", **present)
        self.assertEqual(printed.splitlines()[-1].rpartition(": ")[2], "cmake libexif")

    def built(self, *command, **options):  # with everything installed; whatever is called prints its arguments
        programs = {"cmake": "cmake", f"{self.root}/build/release/brimwellpro": "program",
                    f"{self.root}/tests/e2e/demo": "demo"}
        status, printed = self.start(*command, **{"apt-get": "exit 1", "dpkg-query": r'shift 2; printf "%s installed\n" "$@"'},
                                     **options, **{path: f'echo "{name}: $*"' for path, name in programs.items()})
        self.assertEqual(status, 0, printed)
        return printed

    def test_verbose_shows_what_is_called(self):
        self.assertNotIn("cmake: --preset release", self.built("./run"))
        self.assertRegex(self.built("./run", "-v", "--technician"),
                         "cmake: --preset release(.|\n)*cmake: --build .*--verbose\nprogram: --technician\n$")

    def test_without_a_display_it_operates_itself(self):
        two = "--simulate high --simulate wireless"
        for arguments, given in (((), two), (("--demo",), two), (("--simulate", "ultra"), "--simulate ultra")):
            self.assertRegex(self.built("./run", *arguments, environment={"HOME": "/"}),
                             f"ssh -X(.|\n)*\ndemo: --output .*/demo-output .*/brimwellpro {given}\n$")


if __name__ == "__main__":
    unittest.main(verbosity=2)
