#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The package in a new Debian, of this one's release: it installs, the program runs there for an ordinary user, and once
purged it leaves nothing behind but what is the user's own.

The system is made by mmdebstrap in a throw-away folder, from the mirrors that this machine's apt uses, and looked at
while it exists: this script starts mmdebstrap, which starts it again with the system's folder.

usage: test_installed.py FOLDER_OF_DEB [ROOT FOLDER_FOR_PICTURES]
"""

import os
import platform
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import smoke
from desktop import Desktop  # found by smoke

SCRIPT = Path(__file__).resolve()
VISITOR = "visitor"
KERNELS_OWN = ("proc", "sys", "dev")
USERS_OWN = (f"home/{VISITOR}/", f"run/{VISITOR}/")
DEB = ROOT = PICTURES = None


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def make_system():
    """Runs the tests below in a new system; the exit code is theirs."""
    mirrors = output("apt-get", "indextargets", "--format", "deb $(REPO_URI) $(RELEASE) $(COMPONENT)",
                     "Created-By: Packages", "Origin: Debian").splitlines()
    with tempfile.TemporaryDirectory(prefix="brimwellpro-", dir=os.environ.get("TMPDIR") or "/var/tmp") as folder:
        Path(folder).chmod(0o1777)  # without root mmdebstrap works as other users
        settings = Path(folder) / "apt.conf"  # proxies, certificates, clocks that are off
        settings.write_text(output("apt-config", "dump", "--no-empty", "--format", '%F "%v";%n', "Acquire"))
        again = f'--customize-hook="{sys.executable}" "{SCRIPT}" "{Path(DEB).parent}" "$1" "{folder}"'
        command = ["mmdebstrap", "--variant=minbase", "--format=null", "--skip=essential/unlink", "--quiet",
                   f"--aptopt={settings}", "--dpkgopt=force-unsafe-io",
                   again, platform.freedesktop_os_release()["VERSION_CODENAME"], "-", *mirrors]
        unshare = ["unshare", "--mount"]  # what it mounts goes away even if it is killed; not to be had in a chroot
        if os.geteuid() == 0 and subprocess.call([*unshare, "true"], stderr=subprocess.DEVNULL) == 0:
            command = [*unshare, *command]
        status = subprocess.run(command, env={**os.environ, "TMPDIR": folder}, check=False).returncode
        for picture in Path(folder).glob("*.png"):
            shutil.copyfile(picture, Path(DEB).with_name(picture.name))
        return status


def apt(*arguments):
    """The machine's own apt, at work on the new system."""
    command = ["apt-get", "--yes", "--quiet", "--quiet", "--no-install-recommends",
               "--option", f"DPkg::Chroot-Directory={ROOT}", *arguments]
    environment = {**os.environ, "APT_CONFIG": os.environ["MMDEBSTRAP_APT_CONFIG"]}
    done = subprocess.run(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(command)}:\n{done.stdout}")
    return done.stdout


def inside(*command):
    """As the command line of a user of the new system."""
    return ["env", "--ignore-environment", f"HOME=/home/{VISITOR}", "PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8",
            f"XDG_RUNTIME_DIR=/run/{VISITOR}", f"DISPLAY={os.environ.get('DISPLAY', '')}",
            "/usr/sbin/chroot", f"--userspec={VISITOR}", ROOT, *command]


def files():
    found = set()
    for folder, folders, names in os.walk(ROOT):
        if folder == ROOT:
            folders[:] = [name for name in folders if name not in KERNELS_OWN]
        found.update(os.path.relpath(os.path.join(folder, name), ROOT) for name in folders + names)
    return found


class Installed(unittest.TestCase):
    def test_from_installation_to_purge(self):
        subprocess.run(["chroot", ROOT, "useradd", "--create-home", VISITOR], check=True)
        subprocess.run(["chroot", ROOT, "install", "-d", "-o", VISITOR, "-m", "700", f"/run/{VISITOR}"], check=True)
        apt("satisfy", output("dpkg-deb", "--field", DEB, "Depends").strip())
        before = files()
        packages = self.packages()

        own = Path(ROOT, "home", Path(DEB).name)
        own.write_bytes(Path(DEB).read_bytes())
        apt("install", str(own))
        own.unlink()
        self.assertEqual(self.packages() - packages, {"brimwellpro"}, "the dependencies were not all it needs")
        version = output(*inside("brimwellpro", "--version"))
        self.assertEqual(version.split()[:2], ["BrimwellPro", output("dpkg-deb", "--field", DEB, "Version").strip()])
        self.use()

        apt("purge", "brimwellpro")
        left = {path for path in files() - before if not path.startswith("var/lib/dpkg/")}
        self.assertEqual({path for path in left if not path.startswith(USERS_OWN)}, set(), "left behind")
        self.assertEqual(before - files(), set(), "taken away")
        self.assertIn(f"home/{VISITOR}/.config/BrimwellPro/BrimwellPro.conf", left)
        self.assertEqual(len([path for path in left if path.endswith(".jpg")]), 1)

    @staticmethod
    def packages():
        return set(output("chroot", ROOT, "dpkg-query", "--show", "--showformat=${Package}\n").split())

    @staticmethod
    def use():
        with Desktop(accessibility=False) as desktop:
            os.environ["DISPLAY"] = desktop.environment["DISPLAY"]
            smoke.use(desktop, inside("brimwellpro"), Path(ROOT, "home", VISITOR), PICTURES)


if __name__ == "__main__":
    DEB, = map(str, Path(sys.argv[1]).resolve().glob("brimwellpro_*.deb"))
    if len(sys.argv) == 2:
        sys.exit(make_system())
    ROOT = sys.argv[2]
    PICTURES = Path(sys.argv[3])
    unittest.main(argv=sys.argv[:1], verbosity=2)
