#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Other programs read back from our ZIP archives what went into them.

Usage: test_archives.py EXPORT_RUN [CLASS...]
"""

import os
import random
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile
from pathlib import Path

MIB = 1 << 20
UTF8 = 1 << 11
HEADER_64 = 45  # the version of the format that a program must know to read zip64
TIME_ZONE = "Europe/Berlin"
IDLE_LIMIT = 64 * 1024  # KiB above what the program takes without an export


class Archives(unittest.TestCase):
    def setUp(self):
        folder = self.enterContext(tempfile.TemporaryDirectory(dir="/var/tmp"))
        self.album = os.path.join(os.fsencode(folder), b"album")
        os.mkdir(self.album)
        self.target = Path(folder) / "out.zip"
        self.environment = {**os.environ, "TZ": TIME_ZONE, "TMPDIR": folder}

    def file(self, name, content, modified=None):
        path = os.path.join(self.album, name)
        with open(path, "wb") as file:
            file.write(content)
        if modified is not None:
            os.utime(path, (0, modified))
        return path

    def export(self, paths):
        run = subprocess.run([PROGRAM, self.target], input=b"\0".join(paths), stdout=subprocess.PIPE, check=False,
                             env=self.environment)
        _, _, before, most, reason = run.stdout.decode().split(" ", 4)
        self.assertEqual(run.returncode, 0, reason)
        self.assertLess(int(most) - int(before), IDLE_LIMIT)
        self.assertEqual(list(self.target.parent.glob("*.part")), [])
        return int(most) - int(before)

    def assert_tools_agree(self):
        for command in (["unzip", "-tqq"], ["7z", "t", "-bso0"]):
            run = subprocess.run([*command, self.target], capture_output=True, check=False)
            self.assertEqual((run.returncode, run.stdout, run.stderr), (0, b"", b""), command)

    def test_names_contents_and_dates(self):
        noise = random.Random(1)
        summer, winter = 1720000001, 1704067201
        files = {
            "plain.jpg".encode(): (b"pixels" * 1000, summer),
            "Häutchen ß 日本 🔬.jpg".encode(): (noise.randbytes(3 * MIB + 1), winter),
            b"a b'c%20&$`[x].jpg": (b"", summer),
            b"one block.jpg": (noise.randbytes(512 * 1024), summer),  # one whole block
            b"caf\xe9.mov": (noise.randbytes(512 * 1024 + 1), summer),
            b"-x.jpg": (b"x", -1),  # before 1980
            b"later.mov": (bytes(5 * MIB), 4_000_000_000),  # after 2038
            b"n" * 251 + b".jpg": (b"long", summer),
        }
        self.export([self.file(name, *rest) for name, rest in files.items()])
        self.assert_tools_agree()
        os.environ["TZ"] = TIME_ZONE
        time.tzset()
        with zipfile.ZipFile(self.target) as archive:
            self.assertEqual(len(archive.infolist()), len(files))
            for entry, (name, (content, modified)) in zip(archive.infolist(), files.items()):
                with self.subTest(name):
                    self.assertEqual(entry.filename.encode("utf-8" if entry.flag_bits & UTF8 else "cp437"), name)
                    self.assertEqual(bool(entry.flag_bits & UTF8), b"\xe9" not in name)
                    self.assertEqual(archive.read(entry), content)
                    local = time.localtime(modified)[:5] + (time.localtime(modified)[5] & ~1,)
                    self.assertEqual(entry.date_time, max(local, (1980, 1, 1, 0, 0, 0)))
                    self.assertEqual(entry.external_attr >> 16, 0o100644)
                    self.assertLess(entry.extract_version, HEADER_64)
        unpacked = self.target.parent / "unpacked"
        subprocess.run(["unzip", "-qq", self.target, "-d", unpacked], check=True)
        for name in (b"plain.jpg", "Häutchen ß 日本 🔬.jpg".encode(), b"caf\xe9.mov"):
            path = os.path.join(os.fsencode(unpacked), name)
            self.assertEqual((Path(os.fsdecode(path)).read_bytes(), os.stat(path).st_mtime), files[name])

    def test_names_that_occur_twice_or_that_other_systems_misunderstand(self):
        os.mkdir(os.path.join(self.album, b"other"))
        names = {
            b"b.jpg": "b.jpg", b"other/b.jpg": "b (2).jpg", b"b (2).jpg": "b (2) (2).jpg", b".jpg": ".jpg",
            b"other/.jpg": ".jpg (2)",
            b"..\\..\\evil.jpg": ".._.._evil.jpg", b"C:x.jpg": "C_x.jpg", b"a*?\"<>|.jpg": "a______.jpg",
            b"two\nlines\t\x7f.jpg": "two_lines__.jpg", "\u0085.jpg".encode(): "_.jpg", b"con.jpg": "_con.jpg",
            b"LPT9 .x.jpg": "_LPT9 .x.jpg", b"NUL": "_NUL", b"console.jpg": "console.jpg", b"dots. .": "dots___",
            b"A.jpg": "A.jpg", b"a.jpg": "a (2).jpg", b"C_x.jpg": "C_x (2).jpg",
            "\u00e4.jpg".encode(): "\u00e4.jpg", "a\u0308.jpg".encode(): "a\u0308 (2).jpg",
            b"\x83\x5c.jpg": "\u00e2_.jpg",  # a backslash within a letter, as the archive's readers see it
        }
        self.export([self.file(name, name) for name in names])
        self.assert_tools_agree()
        with zipfile.ZipFile(self.target) as archive:
            self.assertEqual({name: archive.read(name) for name in archive.namelist()},
                             {entry: name for name, entry in names.items()})

    def test_more_entries_than_16_bits_can_count(self):
        for count in (65535, 65536):
            with self.subTest(count):
                first = self.file(b"0.jpg", b"pixels")
                paths = [first] + [os.path.join(self.album, b"%d.jpg" % number) for number in range(1, count)]
                for path in paths[1:]:
                    if not os.path.exists(path):
                        os.link(first, path) if os.stat(first).st_nlink < 60000 else self.file(path, b"pixels")
                self.export(paths)
                self.assert_tools_agree()
                with zipfile.ZipFile(self.target) as archive:
                    self.assertEqual(len(archive.namelist()), count)
                    self.assertEqual(archive.read("%d.jpg" % (count - 1)), b"pixels")


    def test_killed(self):
        """The next export removes the leftover, but not another program's file or one still being written."""
        large = self.file(b"large.mov", b"")
        os.truncate(large, 4 << 30)
        small = self.file(b"small.jpg", b"pixels")
        runs = {}
        for name in ("killed", "taken", "running"):
            run = subprocess.Popen([PROGRAM, self.part(name)[:-5]], stdin=subprocess.PIPE, env=self.environment)
            runs[name] = run
            self.addCleanup(lambda run=run: (run.kill(), run.wait()))
            run.stdin.write(large + b"\0" + small)
            run.stdin.close()
            while not os.path.exists(self.part(name)) or os.path.getsize(self.part(name)) < 6:
                self.assertIsNone(run.poll())
            run.send_signal(signal.SIGSTOP)
            with open(self.part(name), "rb") as part:
                self.assertEqual(struct.unpack("<4xH", part.read(6)), (HEADER_64,))  # for a file of 4 GiB
        for name in ("killed", "taken"):
            runs[name].kill()
            runs[name].wait()
        os.unlink(self.part("taken"))
        for name in ("taken", "foreign"):
            Path(self.part(name)).write_bytes(b"another program's")

        begun = ["begun", "begun and taken"]

        def export(target):
            subprocess.run([PROGRAM, target], input=small, stdout=subprocess.DEVNULL, env=self.environment, check=True)
            return [name for name in ("killed", "taken", "foreign", "running", *begun) if os.path.exists(self.part(name))]

        self.assertEqual(export(os.path.join(self.album, b"out.jpg")), ["killed", "taken", "foreign", "running"])
        self.assertEqual(export(self.target), ["taken", "foreign", "running"])
        runs["running"].kill()
        runs["running"].wait()
        self.assertEqual(export(self.target), ["taken", "foreign"])
        self.assertEqual(Path(self.part("taken")).read_bytes(), b"another program's")

        for name in begun:  # killed before the note of the part could say which file it is
            part = self.part(name)
            run = subprocess.run(["prlimit", f"--fsize={len(part) + 1}", PROGRAM, part[:-5]], input=large + b"\0" + small,
                                 env=self.environment, check=False)
            self.assertEqual((run.returncode, os.path.getsize(part)), (-signal.SIGXFSZ, 0))
            if name.endswith("taken"):
                Path(part).write_bytes(b"another program's")
            self.assertEqual(export(self.target), ["taken", "foreign", *begun[1:begun.index(name) + 1]])
        self.assertEqual(list(self.target.parent.rglob("export-*")), [])

    def part(self, name):
        return str(self.target.with_name(f"{name}.zip.part"))


if __name__ == "__main__":
    PROGRAM = sys.argv[1]
    unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
