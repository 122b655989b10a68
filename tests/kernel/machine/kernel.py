# SPDX-License-Identifier: GPL-3.0-or-later
"""The kernel that the machine boots: Debian's own, unpacked below the build folder and installed nowhere."""

import lzma
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[3]
UNPACKED = ROOT / "build" / "unpacked" / "linux-image-amd64"


class Kernel:
    """`image` is what boots, `release` its version, `modules` the folder that is /lib/modules to it."""

    def __init__(self, folder=UNPACKED):
        packed = max(folder.glob("boot/vmlinuz-*"), default=None)
        if packed is None:
            raise FileNotFoundError(f"no kernel in {folder}; ./test unpacks linux-image-amd64 there")
        self.release = packed.name.removeprefix("vmlinuz-")
        if not (folder / "lib").exists():  # since Debian 13 the package counts on a /lib that leads there
            (folder / "lib").symlink_to("usr/lib")
        self.modules = folder / "lib" / "modules"
        self.image = packed.with_name(f"vmlinux-{self.release}")
        if not self.image.exists():
            part = self.image.with_suffix(".part")
            part.write_bytes(without_wrapping(packed.read_bytes()))
            part.rename(self.image)
        index = self.modules / self.release / "modules.dep"
        if not index.exists():
            subprocess.run(["/sbin/depmod", "-b", folder, self.release], check=True)
        builtin = index.with_name("modules.builtin").read_text().splitlines()
        self._files = {module_name(module): [] for module in builtin}  # name of a module: its file and those that it needs
        for line in index.read_text().splitlines():
            module, needed = line.split(":")
            self._files[module_name(module)] = [module, *needed.split()]

    def module_files(self, names):
        """The files of these modules and of all that they need, in an order in which they can be loaded."""
        files = []
        for name in names:
            # in the index, what is needed first comes last
            for path in reversed(self._files[module_name(name)]):
                file = self.modules / self.release / path
                if file not in files:
                    files.append(file)
        return files


def module_name(path):
    return Path(path).name.partition(".")[0].replace("-", "_")


def without_wrapping(image):
    """The kernel proper out of a bzImage, which would unpack itself, but takes five seconds for that in software. One that
    is packed otherwise than by xz is quicker and stays as it is."""
    setup_sectors = image[0x1F1]
    offset, length = (int.from_bytes(image[at:at + 4], "little") for at in (0x248, 0x24C))
    begin = (setup_sectors + 1) * 512 + offset
    # behind the packed data stands their unpacked length
    data = image[begin:begin + length]
    return lzma.LZMADecompressor().decompress(data) if data.startswith(b"\xfd7zXZ") else image
