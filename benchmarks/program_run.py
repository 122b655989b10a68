# SPDX-License-Identifier: GPL-3.0-or-later
"""One run of a program on the virtual display, and what it uses."""

import os
import re
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests" / "e2e"))
from desktop import Failure, wait_until  # noqa: E402
from players import WINDOW  # noqa: E402

MANY_COLOURS = 60  # in a row; no window without a picture has so many


def cpu_seconds(pid):
    """Of all threads of a process, those that have ended included."""
    return time.clock_gettime((~pid << 3) | 2)  # as clock_getcpuclockid(3) computes it


def wake_ups(pid):
    """How often the threads of a process have waited for something so far."""
    tasks = Path(f"/proc/{pid}/task").iterdir()
    return sum(int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", (task / "status").read_text(), re.M).group(1))
               for task in tasks)


def memory_mib(pid):
    """Resident and proportional set size in MiB, and what is held besides files: their pages, such as those of libraries,
    come and go as the kernel likes."""
    text = Path(f"/proc/{pid}/smaps_rollup").read_text()
    resident, proportional, *held = (int(re.search(rf"^{name}:\s+(\d+)", text, re.M).group(1)) / 1024
                                     for name in ("Rss", "Pss", "Anonymous", "Pss_Shmem"))
    return resident, proportional, sum(held)


def memory_text(memory):
    return "%.0f (%.0f, %.1f)" % memory


def table(head, rows):
    lines = [head, ["---"] * len(head), *rows]
    return "\n".join("| " + " | ".join(map(str, line)) + " |" for line in lines)


class Run:
    """One run of one program: when it showed the first picture, and what it had used by its end."""

    def __init__(self, desktop, command, environment):
        self._desktop = desktop
        desktop.environment.update(environment)
        self._display_before = cpu_seconds(desktop.display.pid)
        self._begin = time.monotonic()
        self.process = desktop.spawn(command, log="program.log")
        self.first_picture = None

    def wait_for_picture(self):
        wait_until("the movie is to be seen", lambda: self._ended() or self._picture_there(), seconds=30, step=0.001)
        if self.process.returncode is not None:
            raise Failure(f"{self.process.args} has shown no picture, and ended with {self.process.returncode}:\n"
                          + self.log)
        self.first_picture = time.monotonic() - self._begin

    def _picture_there(self):
        """In one row of pixels that every window of a benchmark covers: looking must cost little."""
        (width, height), window = self._desktop.size, WINDOW[0]
        row = self._desktop.picture(width - window, height // 2, 2 * window - width, 1)
        return len({row.pixel(x, 0) for x in range(row.width)}) > MANY_COLOURS

    def quit(self):
        """Asks the program to quit by its key, and waits."""
        self._desktop.key("ctrl+q")
        self.wait_for_end()

    def wait_for_end(self, seconds=120):
        wait_until(f"{self.process.args[0]} ends", self._ended, seconds)
        if self.process.returncode != 0:
            raise Failure(f"{self.process.args} has ended with {self.process.returncode}:\n{self.log}")

    def _ended(self):
        if self.process.returncode is None:
            pid, status, usage = os.wait4(self.process.pid, os.WNOHANG)
            if pid:
                self.process.returncode = os.waitstatus_to_exitcode(status)
                self.cpu = usage.ru_utime + usage.ru_stime
                self.display_cpu = cpu_seconds(self._desktop.display.pid) - self._display_before
        return self.process.returncode is not None

    @property
    def log(self):
        return (self._desktop.folder / "program.log").read_text(errors="replace")
