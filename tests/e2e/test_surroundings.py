#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The program copes with the process it is started in: closed outputs, a home with an odd name.

usage: test_surroundings.py PROGRAM
"""

import os
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from desktop import KEPT, PATIENCE, wait_until

PROGRAM = None


class Surroundings(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory(prefix="brimwellpro-")))
        self.home = self.folder / "home"
        self.home.mkdir()

    def start(self, *arguments, home=None, shell='exec "$0" "$@"', **options):
        """Without a display."""
        home = os.fsencode(home or self.home)
        environment = {**KEPT, "LC_ALL": "C.UTF-8", "QT_QPA_PLATFORM": "offscreen", "HOME": home,
                       "XDG_CONFIG_HOME": home + b"/.config", "XDG_RUNTIME_DIR": self.folder, "TMPDIR": self.folder}
        process = subprocess.Popen(["/bin/sh", "-c", shell, PROGRAM, *arguments], env=environment, **options)
        self.addCleanup(lambda: (process.kill(), process.wait()))
        return process

    def assert_ends_as_asked(self, process):
        def listens():
            status = Path(f"/proc/{process.pid}/status").read_text()
            return int(status.split("SigCgt:")[1].split()[0], 16) & 1 << signal.SIGTERM - 1

        wait_until("the program listens", listens)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(timeout=20 * PATIENCE), 0)

    def test_log_reader_goes_away(self):
        process = self.start("--simulate", "high", stderr=subprocess.PIPE)
        with process.stderr as log:
            self.assertTrue(any(b"Camera attached" in line for line in log))
        self.assert_ends_as_asked(process)

    def test_no_input_and_output_at_all(self):
        process = self.start("--simulate", "high", shell='exec "$0" "$@" <&- >&- 2>&-')
        wait_until("the program has begun", lambda: (self.home / "BrimwellPro" / "Default Album").exists())
        for descriptor in range(3):
            self.assertEqual(os.readlink(f"/proc/{process.pid}/fd/{descriptor}"), "/dev/null")
        self.assert_ends_as_asked(process)

    def test_home_that_is_not_utf8(self):
        home = os.fsencode(self.folder) + b"/caf\xe9"
        os.mkdir(home)
        for arguments in (["--simulate", "high"], ["--import-settings", "x.plist"]):
            with self.subTest(arguments):
                log = self.folder / "log"
                with open(log, "wb") as stderr:
                    process = self.start(*arguments, home=home, stderr=stderr)
                wait_until("the program says why", lambda: b"not UTF-8" in log.read_bytes())
                if "--import-settings" in arguments:
                    self.assertEqual(process.wait(timeout=20 * PATIENCE), 1)
                process.kill()
                process.wait()
                log.unlink()
                folders = [name for name in os.listdir(os.fsencode(self.folder)) if name.startswith(b"caf")]
                self.assertEqual(folders, [b"caf\xe9"])
                self.assertEqual(os.listdir(home), [])


if __name__ == "__main__":
    PROGRAM = sys.argv[1]
    unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
