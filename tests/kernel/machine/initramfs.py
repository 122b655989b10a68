# SPDX-License-Identifier: GPL-3.0-or-later
"""The machine's first file system: busybox, the modules and the guest's scripts."""

import lzma
from pathlib import Path

BUSYBOX = Path("/bin/busybox")  # of busybox-static: there is nothing to link it with
GUEST = Path(__file__).resolve().parent / "guest"
MODULES = ("virtio_pci", "virtio_console", "9pnet_virtio", "9p", "overlay")  # lead to us and to the host's files

DIRECTORY, FILE, PROGRAM = 0o040755, 0o100644, 0o100755


def entries(kernel, modules, given):
    """What lies in it: path, mode and content, folders before what is in them. `modules` maps names of more modules to
    their parameters, `given` those of files in /machine to their texts. Small enough to be made anew each time."""
    for folder in ("bin", "modules", "proc", "host", "memory", "new", "machine"):
        yield folder, DIRECTORY, b""
    yield "bin/busybox", PROGRAM, BUSYBOX.read_bytes()
    yield "init", PROGRAM, (GUEST / "init").read_bytes()
    yield "machine/start", FILE, (GUEST / "start").read_bytes()
    for name, text in given.items():
        yield f"machine/{name}", FILE, text.encode()
    order = []
    for file in kernel.module_files([*MODULES, *modules]):
        name = file.name.removesuffix(".xz")  # busybox loads no packed ones
        yield f"modules/{name}", FILE, file.read_bytes() if name == file.name else lzma.decompress(file.read_bytes())
        order.append(f"{name} {modules.get(name.removesuffix('.ko'), '')}\n")
    yield "modules/order", FILE, "".join(order).encode()


def archive(contents):
    """The cpio archive of such entries, as the kernel unpacks it."""
    data = bytearray()
    for number, (name, mode, content) in enumerate([*contents, ("TRAILER!!!", 0, b"")], 1):
        name = name.encode() + b"\0"
        fields = [number, mode, 0, 0, 1, 0, len(content), 0, 0, 0, 0, len(name), 0]
        data += b"070701" + b"".join(b"%08X" % field for field in fields) + name
        data += bytes(-len(data) % 4) + content
        data += bytes(-len(data) % 4)
    return bytes(data)
