# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests in the machine share: virtual video devices, USB cameras, and the driver that uses them."""

import contextlib
import signal
import subprocess
import sys
import threading
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE.parent / "e2e"), str(HERE / "usbcamera")]
from client import UsbCameras  # noqa: E402, F401
from desktop import wait_until  # noqa: E402

TABLE = HERE.parents[1] / "resources" / "cameras.json"
NODES = Path("/sys/class/video4linux")
VIVID = Path("/sys/bus/platform/drivers/vivid")
NOBODY = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"]


def vivid(*actions):
    """Carries out each of these, "bind" or "unbind", that changes anything."""
    for action in actions:
        if (action == "bind") != (VIVID / "vivid.0").exists():
            (VIVID / action).write_text("vivid.0")


def vivid_nodes():
    return [Path("/dev", node.name) for node in NODES.iterdir() if (node / "name").read_text().endswith("vid-cap\n")]


def usb_node(serial):
    """The node of the USB camera with that serial number; None while there is none."""
    links = Path("/dev/v4l/by-id").glob(f"*_{serial}-video-index0")
    return next((link.resolve() for link in links if link.exists()), None)


class CameraDriver:
    """The program drive_cameras, as root or as `prefix` makes it; its events, its answers and its log."""

    def __init__(self, program, prefix=()):
        self.lines, self.answers, self.log = [], [], []
        self._expected = []
        self._changed = threading.Condition()
        self._process = subprocess.Popen([*prefix, program, TABLE], text=True, bufsize=1, stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self._readers = [threading.Thread(target=self._read, args=each) for each in
                         ((self._process.stdout, self._sort), (self._process.stderr, self.log.append))]
        for reader in self._readers:
            reader.start()

    def _sort(self, line):
        is_event = line.startswith(("found ", "removed ")) or line in ("pending", "settled")
        (self.lines if is_event else self.answers).append(line)

    def _read(self, stream, take):
        with stream:
            for line in stream:
                with self._changed:
                    take(line.strip())
                    self._changed.notify_all()

    def close(self):
        self._process.stdin.close()
        self._process.wait(60)
        for reader in self._readers:
            reader.join()
        if self._process.returncode != 0 or self._expected and len(self.events()) != len(self._expected):
            raise AssertionError(f"ended with {self._process.returncode}; reported: {self.lines}, logged: {self.log}")

    @contextlib.contextmanager
    def stopped(self):
        """Meanwhile it does nothing."""
        self._process.send_signal(signal.SIGSTOP)
        try:
            yield
        finally:
            self._process.send_signal(signal.SIGCONT)

    def ask(self, line):
        count = len(self.answers)
        self._process.stdin.write(line + "\n")
        self.wait_for(lambda: len(self.answers) > count)
        return self.answers[-1]

    def events(self):
        return [line for line in self.lines if line.startswith(("found", "removed"))]

    def wait_for(self, condition, seconds=60):
        with self._changed:
            if not self._changed.wait_for(condition, seconds):
                raise AssertionError(f"not within {seconds} s; reported: {self.lines}, logged: {self.log}")

    def wait_for_events(self, *expected):
        """These next, in any order, as pairs have none; close() fails if others follow in the end."""
        begin = len(self._expected)
        self._expected += expected
        self.wait_for(lambda: len(self.events()) >= len(self._expected) and self.lines[-1] != "pending")
        if sorted(self.events()[begin:]) != sorted(expected):
            raise AssertionError(f"expected {expected}, reported: {self.lines}, logged: {self.log}")
