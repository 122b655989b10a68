#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""What is measured in pictures of an album, in the real program that is killed; exiftool reads the files.

usage: test_measurements_in_file.py PROGRAM
"""

import os
import signal
import time

from desktop import wait_until
from program import ProgramTest, answer_product_question, probed_measurements, wait_for_picture


class MeasurementsInFile(ProgramTest):
    def test_killed_around_saving(self):
        self.make_pictures("640x480")
        self.picture = max(self.album.iterdir())
        before = self.scan()
        count = 0
        for wait in (None, 0.97, 1.0, 1.03):
            self.measure()
            if wait:
                time.sleep(wait)  # it is saved a second after the last key
            else:
                wait_until("the measurement is in the file", lambda: self.measured() == 1)
            os.kill(self.program.pid, signal.SIGKILL)
            self.program.wait_for_end()
            self.assertEqual(self.scan(), before)
            self.assertIn(self.measured(), (max(count, 1), count + 1))
            count = self.measured()
        self.measure()
        self.program.quit()  # before it is saved by itself
        self.assertEqual((self.scan(), self.measured()), (before, count + 1))

    def measure(self):
        is_first = not self.settings.exists()
        self.start("--simulate", "high")
        if is_first:
            answer_product_question(self.program)
        wait_for_picture(self.program)
        self.program.click("push button", f"Last capture: {self.picture.stem}.jpg")
        self.program.wait_for("image", f"{self.picture.name}, 1 of 3")
        for key in ("ctrl+m", "ctrl+1", "space", "shift+Down", "space"):
            self.desktop.key(key)

    def scan(self):
        """The picture itself."""
        file = self.picture.read_bytes()
        return file[file.index(b"\xff\xda"):]

    def measured(self):
        return len(probed_measurements(self.picture))


if __name__ == "__main__":
    MeasurementsInFile.main()
