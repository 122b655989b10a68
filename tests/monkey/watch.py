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
SANITIZED = 4  # times the memory
BEGUN = 10  # seconds, during which somebody may still begin a capture
MOST_SEGMENTS = 100
REACHABLE = 60  # pixels of a window
REPORTED = re.compile(r"Capture in the album: (/.*)")
SAVED = re.compile(r"Saved: (/.*)")
SESSION = re.compile(r"Camera session: (.*)")
# The state in which each question may be on the screen, if the program does not quit.
QUESTIONS = {"Welcome to BrimwellPro": "no camera", "The camera was unplugged": "no camera",
             "Which camera is this?": "streaming"}
PASSING = {"waiting": 15, "starting": 30, "switching": 60, "stopping": 60, "quitting": 60}  # seconds


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
        self.elsewhere = set()  # folders outside the home that were made albums
        self.sanitized = sanitized
        self.reported = collections.Counter()  # captures by their bytes
        self.names = {}
        self._paths = {}  # bytes of files by where they were reported
        self._known = {}  # bytes of files by identity, size and time
        self._read = {}  # how far a log was read
        self._session = None, 0.0  # the state of the camera session as the program told it, and since when
        self.slowest = 0.0  # answer of the windows, in seconds
        self.peak = collections.Counter()

    def after_step(self, program):
        """While it runs."""
        began = time.monotonic()
        windows = self._look(program)
        self.slowest = max(self.slowest, took := time.monotonic() - began)
        if took > ANSWER * PATIENCE:
            raise Failure(f"the windows have answered after {took:.1f} s")
        for name, value in self._used(program.pid).items():
            self.peak[name] = max(self.peak[name], value)
            if value > BOUNDS[name] * (SANITIZED if self.sanitized and name == "MiB" else 1):
                raise Failure(f"{value} {name}; {BOUNDS[name]} is the most")
        self._wait_for_legal_state(program, windows)

    def _look(self, program):
        """Role and name of each window."""
        from gi.repository import GLib  # which looks at the environment
        deadline = time.monotonic() + 10 * PATIENCE
        while program.running:
            try:
                windows = program.windows()
                for window in windows:
                    self._on_screen(window)
                return [(window.role, window.name) for window in windows]
            except GLib.Error as error:  # a window is gone meanwhile, or the program is about to end
                if time.monotonic() > deadline:
                    raise Failure(f"the windows do not answer: {error.message}") from None
                time.sleep(0.1)
        return []

    def _wait_for_legal_state(self, program, windows):
        """What must not follow what ends the program by itself. Here: the windows say the same, and nothing is stuck."""
        deadline = time.monotonic() + ANSWER * PATIENCE
        self.read_reports(program)
        while (wrong := self._illegal(windows)) and program.running:
            if time.monotonic() > deadline:
                raise Failure(wrong)
            time.sleep(0.1)
            windows = self._look(program)
            self.read_reports(program)

    def _illegal(self, windows):
        state, since = self._session
        for _, name in windows:
            if state != "quitting" and QUESTIONS.get(name, state) != state:
                return f'"{name}" is shown while the camera session is {state}'
        asked = state == "starting" and any(role in ("dialog", "alert") for role, _ in windows)
        if state in PASSING and not asked and time.monotonic() - since > PASSING[state] * PATIENCE:
            return f"the camera session has been {state} for {time.monotonic() - since:.0f} s"
        return None

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
        if program.log_file not in self._read:
            self._session = None, 0.0
        with open(program.log_file, errors="replace") as log:
            log.seek(self._read.get(program.log_file, 0))
            lines = log.read()
            complete = lines.rfind("\n") + 1
            self._read[program.log_file] = self._read.get(program.log_file, 0) + len(lines[:complete].encode())
        for state in SESSION.findall(lines[:complete])[-1:]:
            self._session = state, time.monotonic()
        for path in REPORTED.findall(lines[:complete]):
            self._take(Path(path))
        for path in SAVED.findall(lines[:complete]):
            self._take_copy(Path(path))

    def _take(self, path):
        if not path.is_relative_to(self.desktop.home):
            self.elsewhere.add(path.parent)
        try:
            identity = picture_bytes(path)
        except FileNotFoundError:  # renamed or moved already: date and number stay
            if not any(file.name.startswith(path.stem) for file in self._files()):
                raise Failure(f"{path} was reported and is nowhere") from None
            return
        self._keep(path, identity)
        if self.reported[identity] > 1:
            return  # it decodes as the first one did
        result = subprocess.run(["ffmpeg", "-v", "error", "-xerror", "-i", path, "-f", "null", "-"], capture_output=True,
                                text=True, check=False)
        if (result.returncode or result.stderr) and path.exists():
            raise Failure(f"{path} was reported and is not whole: {result.stderr.strip()[:300]}")

    def _take_copy(self, path):
        """What was there may have been replaced."""
        if not path.is_relative_to(self.desktop.home) and path.parent not in self.elsewhere:
            return
        try:
            identity = picture_bytes(path)
        except FileNotFoundError:
            return
        if path in self._paths:
            self.reported[self._paths[path]] -= 1
        self._keep(path, identity)

    def _keep(self, path, identity):
        self.reported[identity] += 1
        self.names[identity] = path.name
        self._paths[path] = identity

    def count_captures(self, program):
        """Each one that was reported is in an album or in the Trash, exactly as often as reported and saved there."""
        def wrong():
            found = collections.Counter(self._identities())
            return [f"{self.names[identity]}: reported {times} times, found {found[identity]} times"
                    for identity, times in self.reported.items() if found[identity] != times]

        faults = wrong()
        # A file may be on its way from one place to another; or a series goes on, in which pictures are alike.
        for _ in range(50):
            if not faults:
                return
            time.sleep(0.2 * PATIENCE)
            self.read_reports(program)
            faults = wrong()
        if faults:
            raise Failure("; ".join(faults[:5]))

    def _files(self):
        """An album may be anywhere, as the file dialog may be led anywhere."""
        yield from self.desktop.home.rglob("*")
        for folder in self.elsewhere:
            yield from folder.glob("*")

    def _identities(self):
        for path in self._files():
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

    def nothing_left_over(self, started):
        """Once the program has ended by itself, which started at that time."""
        left = {path: path.stat() for path in (self.desktop.folder / "tmp").rglob("*.*")
                if path.suffix in (".jpg", ".mov", ".part")}
        if left := [f"{path} ({about.st_size} bytes)" for path, about in left.items()
                    if not self._is_left_to_another(path, about, started)]:
            raise Failure(f"left over: {left[:5]}")

    @staticmethod
    def _is_left_to_another(path, about, started):
        """What an earlier program had just begun, such as an empty movie, it leaves to the next start; and what that one
        noted of an export, to the next export into the same folder."""
        if path.name.startswith("export"):
            return about.st_mtime < started
        return 0 <= started - about.st_mtime < BEGUN and not (path.suffix == ".mov" and about.st_size)
