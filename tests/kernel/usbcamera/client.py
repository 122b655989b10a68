# SPDX-License-Identifier: GPL-3.0-or-later
"""A test's side of usb_cameras: starts it, and sends it commands."""

import socket
import subprocess
import sys
import tempfile
from contextlib import ExitStack
from pathlib import Path


class UsbCameras(ExitStack):
    """The program usb_cameras, until the end of the `with`; then every camera is unplugged."""

    def __init__(self):
        super().__init__()
        place = str(Path(self.enter_context(tempfile.TemporaryDirectory()), "socket"))
        process = self.enter_context(subprocess.Popen(
            [sys.executable, Path(__file__).with_name("usb_cameras"), place], stdout=subprocess.PIPE))
        self.callback(process.terminate)
        process.stdout.readline()  # it is ready
        self._socket = self.enter_context(socket.socket(socket.AF_UNIX))
        self._socket.connect(place)
        self._answers = self.enter_context(self._socket.makefile())

    def __call__(self, command):
        """What follows the "ok"; an error is raised."""
        self._socket.sendall(command.encode() + b"\n")
        state, _, answer = self._answers.readline().strip().partition(" ")
        if state != "ok":
            raise RuntimeError(f"{command}: {answer}")
        return answer

    def plug(self, name, options="", frames=None, kind="uvc"):
        """A new camera with its name as serial number; `frames` is the folder of what it sends."""
        self(f"add {name} {kind} serial={name} {options}")
        if frames:
            self(f"source {name} {frames}")
        self(f"plug {name}")
