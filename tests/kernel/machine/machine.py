# SPDX-License-Identifier: GPL-3.0-or-later
"""The running machine: started, listened to and ended."""

import os
import selectors
import shlex
import socket
import subprocess
import sys
import time

import initramfs
import qemu

CONSOLE_LINES = 80  # of its end are shown when the machine fails; a panic alone takes some sixty


class MachineFailure(Exception):
    """The machine itself failed, not the command in it: a panic, a hang, an end without an answer."""


class Machine:
    """Boots `kernel`, runs one command and is gone.

    `modules` maps names of modules to their parameters. `environment` is all that the command gets. Whatever it writes
    is lost.
    """

    def __init__(self, kernel, modules, environment, directory):
        self._kernel = kernel
        self._modules = modules
        self._environment = environment
        self._directory = directory
        self.console = bytearray()
        self._status = bytearray()

    def run(self, command, seconds):
        """Runs it with its output in ours; returns its exit code."""
        given = {
            "settings": f"modules={shlex.quote(str(self._kernel.modules))}\n",
            "command": self._script(command),
        }
        with os.fdopen(os.memfd_create("initramfs"), "wb") as file:
            file.write(initramfs.archive(initramfs.entries(self._kernel, self._modules, given)))
            file.flush()
            self._start(file, time.monotonic() + seconds)
        return self._exit_code()

    def _script(self, command):
        lines = [f"export {name}={shlex.quote(value)}" for name, value in self._environment.items()]
        return "\n".join([*lines, f"cd {shlex.quote(str(self._directory))} || exit",
                          "exec " + shlex.join(command), ""])

    def _start(self, initramfs_file, deadline):
        sockets = {name: socket.socketpair() for name in qemu.ENDS}
        ours = {name: pair[0] for name, pair in sockets.items()}
        theirs = {name: pair[1] for name, pair in sockets.items()}
        arguments = qemu.command(self._kernel, f"/proc/self/fd/{initramfs_file.fileno()}",
                                 {name: end.fileno() for name, end in theirs.items()})
        handed_on = [file.fileno() for file in (initramfs_file, *theirs.values())]
        with subprocess.Popen(arguments, stdin=subprocess.DEVNULL, stdout=theirs["console"], stderr=theirs["console"],
                              pass_fds=handed_on) as process:
            try:
                for end in theirs.values():
                    end.close()
                self._listen(ours, process, deadline)
            finally:
                process.kill()

    def _listen(self, ends, process, deadline):
        """Until the machine has closed all its ends, by itself or because it is switched off once its exit code has arrived."""
        receivers = {"console": self.console.extend, "status": self._status.extend,
                     "output": self._writer(sys.stdout.buffer), "errors": self._writer(sys.stderr.buffer)}
        with selectors.DefaultSelector() as selector:
            for name, end in ends.items():
                selector.register(end, selectors.EVENT_READ, receivers[name])
            while selector.get_map():
                left = deadline - time.monotonic()
                if left <= 0:
                    raise MachineFailure("the command has not ended in time" if self.reported("up") else
                                         "the machine has not come up in time")
                for key, _ in selector.select(left):
                    data = key.fileobj.recv(1 << 16)
                    if data:
                        key.data(data)
                        if self.reported("exit"):
                            process.kill()
                    else:
                        selector.unregister(key.fileobj)
                        key.fileobj.close()

    @staticmethod
    def _writer(stream):
        def write(data):
            stream.write(data)
            stream.flush()
        return write

    def reported(self, word):
        """What the guest has reported after that word, "up" (the seconds that took) or "exit"; None until it has."""
        for line in self._status.decode().split("\n")[:-1]:
            if line.startswith(word + " "):
                return line.removeprefix(word + " ")
        return None

    def _exit_code(self):
        code = self.reported("exit")
        if code is None:
            raise MachineFailure("the kernel panicked" if b"Kernel panic" in self.console else
                                 "the machine ended before the command did")
        return int(code)

    def console_end(self):
        """The last lines of what the kernel, and the guest before the command, have said."""
        return "\n".join(self.console.decode(errors="replace").splitlines()[-CONSOLE_LINES:])
