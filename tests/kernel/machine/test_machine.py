#!/usr/bin/python3
"""What run_in_machine promises to those who use it."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOL = Path(__file__).resolve().parent / "run_in_machine"


class MachineTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory(prefix="with, comma ")))

    def run_tool(self, *arguments, **environment):
        return subprocess.run([sys.executable, TOOL, *arguments], cwd=self.folder, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, env=os.environ | environment)

    def test_a_command_is_at_home(self):
        """It finds its files, writes what it likes, and only results come back."""
        (self.folder / "given").write_text("from outside\n")
        results = self.folder / "results"
        script = ("cat given && echo gone >given && cat given >results/kept && id -u && uname -n && echo '  two  words' "
                  "&& echo $BW_OWN && head -c 3000000 /dev/zero | tr '\\0' . && echo trouble >&2 && (sleep 999 &) && exit 7")
        done = self.run_tool("--results", results, "--", "sh", "-c", script, BW_OWN="ours")
        self.assertEqual(done.returncode, 7, done.stderr)
        self.assertEqual(done.stdout, "from outside\n0\nmachine\n  two  words\nours\n" + 3000000 * ".")
        self.assertIn("trouble\nrun_in_machine: up after", done.stderr)
        self.assertEqual((results / "kept").read_text(), "gone\n")
        self.assertEqual((self.folder / "given").read_text(), "from outside\n")

    def test_a_panic_is_told_apart(self):
        done = self.run_tool("--", "sh", "-c", "echo c >/proc/sysrq-trigger")
        self.assertEqual(done.returncode, 125)
        self.assertIn("sysrq triggered crash", done.stderr)
        self.assertEqual(done.stderr.splitlines()[-1], "run_in_machine: the kernel panicked")

    def test_time_is_up(self):
        done = self.run_tool("--timeout", "0.5", "--", "true")
        self.assertEqual(done.returncode, 124)
        self.assertEqual(done.stderr.splitlines()[-1], "run_in_machine: the machine has not come up in time")

    def test_a_missing_part_is_named(self):
        empty = self.folder / "empty"
        empty.mkdir()
        done = self.run_tool("--", "true", PATH=str(empty))
        self.assertEqual((done.returncode, done.stderr.count("\n")), (2, 1), done.stderr)
        self.assertIn("Debian package qemu-system-x86", done.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
