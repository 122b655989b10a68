# SPDX-License-Identifier: GPL-3.0-or-later
"""What must hold of the program whatever anybody does: it answers, it keeps within bounds, it keeps every capture."""

import collections
import hashlib
import re
import subprocess
import time
from pathlib import Path

from desktop import PATIENCE, Failure

ANSWER = 2  # seconds
BOUNDS = {"handles": 160, "threads": 80, "MiB": 900}
MOST_SEGMENTS = 100
REACHABLE = 60  # pixels of a window
REPORTED = re.compile(r"Capture in the album: (/.*)")


def picture_bytes(path):
    """What identifies a capture: a picture without the metadata that may be written into it later; another file whole."""
    data = path.read_bytes()
    at = 2
    if data[:2] != b"\xff\xd8":
        return hashlib.sha1(data).digest()
    for _ in range(MOST_SEGMENTS):
        if data[at:at + 1] != b"\xff" or data[at + 1] == 0xda:
            break
        length = int.from_bytes(data[at + 2:at + 4], "big")
        if data[at + 1] in range(0xe0, 0xf0):  # metadata
            data = data[:at] + data[at + 2 + length:]
        else:
            at += 2 + length
    return hashlib.sha1(data).digest()


class Watch:
    def __init__(self, desktop, sanitized=False):
        self.desktop = desktop
        self.sanitized = sanitized
        self.reported = collections.Counter()  # captures by their bytes
        self.names = {}
        self._known = {}  # bytes of files by identity, size and time
        self._read = {}  # how far a log was read
        self.peak = collections.Counter()

    def after_step(self, program):
        """While it runs."""
        began = time.monotonic()
        self._deadline = began + 10 * PATIENCE
        self._look(program)
        if (took := time.monotonic() - began) > ANSWER * PATIENCE:
            raise Failure(f"the windows have answered after {took:.1f} s")
        for name, value in self._used(program.pid).items():
            self.peak[name] = max(self.peak[name], value)
            if value > BOUNDS[name] and not (self.sanitized and name == "MiB"):
                raise Failure(f"{value} {name}; {BOUNDS[name]} is the most")
        self.read_reports(program)

    def _look(self, program):
        from gi.repository import GLib  # which looks at the environment
        while program.running:
            try:
                for window in program.windows():
                    self._on_screen(window)
                return
            except GLib.Error as error:  # a window is gone meanwhile, or the program is about to end
                if time.monotonic() > self._deadline:
                    raise Failure(f"the windows do not answer: {error.message}") from None
                time.sleep(0.1)

    def _on_screen(self, window):
        area, (width, height) = window.area, self.desktop.size
        if area.width <= 0 or area.height <= 0 or window.has_state("iconified"):
            return
        # The mouse may have dragged it, but not so far that it cannot be taken hold of.
        if not (REACHABLE - area.width <= area.x <= width - REACHABLE and -8 <= area.y <= height - REACHABLE // 2):
            raise Failure(f'{window.role} "{window.name}" is outside the screen: {area}')

    @staticmethod
    def _used(pid):
        folder = Path(f"/proc/{pid}")
        try:
            status = (folder / "status").read_text()
            return {"handles": len(list((folder / "fd").iterdir())),
                    "threads": int(re.search(r"Threads:\s+(\d+)", status)[1]),
                    "MiB": int(re.search(r"VmRSS:\s+(\d+)", status)[1]) // 1024}
        except (OSError, TypeError):
            return {}  # it has just ended

    def read_reports(self, program):
        """Takes in what the program has said about captures since the last time."""
        with open(program.log_file, errors="replace") as log:
            log.seek(self._read.get(program.log_file, 0))
            lines = log.read()
            complete = lines.rfind("\n") + 1
            self._read[program.log_file] = self._read.get(program.log_file, 0) + len(lines[:complete].encode())
        for path in REPORTED.findall(lines[:complete]):
            self._take(Path(path))

    def _take(self, path):
        try:
            identity = picture_bytes(path)
        except FileNotFoundError:  # moved on already; the files are counted in all places
            return
        self.reported[identity] += 1
        self.names[identity] = path.name
        result = subprocess.run(["ffmpeg", "-v", "error", "-xerror", "-i", path, "-f", "null", "-"], capture_output=True,
                                text=True, check=False)
        if (result.returncode or result.stderr) and path.exists():
            raise Failure(f"{path} was reported and is not whole: {result.stderr.strip()[:300]}")

    def count_captures(self):
        """Each one that was reported is in an album or in the Trash, exactly as often as reported."""
        def wrong():
            found = collections.Counter(self._identities())
            return [f"{self.names[identity]}: reported {times} times, found {found[identity]} times"
                    for identity, times in self.reported.items() if found[identity] != times]

        faults = wrong()
        for _ in range(20):  # a file may be on its way from one place to another
            if not faults:
                return
            time.sleep(0.2 * PATIENCE)
            faults = wrong()
        if faults:
            raise Failure("; ".join(faults[:5]))

    def _identities(self):
        places = [self.desktop.home / "BrimwellPro", self.desktop.home / ".local/share/Trash/files"]
        for place in places:
            for path in place.rglob("*"):
                try:
                    about = path.stat()
                    if not path.is_file():
                        continue
                    key = about.st_ino, about.st_size, about.st_mtime_ns
                    if key not in self._known:
                        self._known[key] = picture_bytes(path)
                    yield self._known[key]
                except FileNotFoundError:
                    continue

    def nothing_left_over(self):
        """Once the program has ended by itself."""
        left = [path for path in (self.desktop.folder / "tmp").rglob("*.*") if path.suffix in (".jpg", ".mov", ".part")]
        if left:
            raise Failure(f"left over: {left[:5]}")
