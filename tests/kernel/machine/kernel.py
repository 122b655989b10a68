"""The kernel that the machine boots: Debian's own, unpacked below the build folder and installed nowhere."""

import subprocess
from pathlib import Path

from faults import MissingPackage

ROOT = Path(__file__).resolve().parents[3]
UNPACKED = ROOT / "build" / "unpacked" / "linux-image-amd64"
PACKAGE = "linux-image-amd64, which ./test unpacks"
DEPMOD = Path("/sbin/depmod")


class Kernel:
    """`image` is what boots, `release` its version, `modules` the folder that is /lib/modules to it."""

    def __init__(self, folder=UNPACKED):
        images = sorted(folder.glob("boot/vmlinuz-*"))
        if not images:
            raise MissingPackage("the machine's kernel", PACKAGE)
        self.image = images[-1]
        self.release = self.image.name.removeprefix("vmlinuz-")
        self.modules = folder / "lib" / "modules"
        self._files = {}  # name of a module: its file and those that it needs, itself first
        index = self.modules / self.release / "modules.dep"
        if not index.exists():
            if not DEPMOD.exists():
                raise MissingPackage(str(DEPMOD), "kmod")
            subprocess.run([DEPMOD, "-b", folder, self.release], check=True)
        for line in index.read_text().splitlines():
            module, needed = line.split(":")
            self._files[self._name(module)] = [module, *needed.split()]

    @staticmethod
    def _name(path):
        return Path(path).name.partition(".")[0].replace("-", "_")

    def module_files(self, names):
        """The files of these modules and of all that they need, in an order in which they can be loaded."""
        files = []
        for name in names:
            # the index names what comes first last
            for path in reversed(self._files[self._name(name)]):
                file = self.modules / self.release / path
                if file not in files:
                    files.append(file)
        return files
