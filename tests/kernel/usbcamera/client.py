"""A test's side of usb_cameras: starts it, and sends it commands."""

import socket
import subprocess
import sys
import tempfile
from pathlib import Path


class UsbCameras:
    """The program usb_cameras, until the end of the `with`; then every camera is unplugged."""

    def __enter__(self):
        self._folder = tempfile.TemporaryDirectory()
        self.socket_path = str(Path(self._folder.name, "socket"))
        self._process = subprocess.Popen([sys.executable, Path(__file__).with_name("usb_cameras"), self.socket_path],
                                         stdout=subprocess.PIPE)
        if not self._process.stdout.readline():
            raise RuntimeError("usb_cameras does not start")
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.connect(self.socket_path)
        self._answers = self._socket.makefile()
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.communicate()
        self._answers.close()
        self._socket.close()
        self._folder.cleanup()

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
