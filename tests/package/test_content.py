#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""What is in the Debian package, by Debian's own tools, and whether its parts agree with each other.

usage: test_content.py FOLDER_OF_DEB
"""

import configparser
import gzip
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
SOURCES = HERE.parents[1]
OPTION = re.compile(r"--[a-z][a-z-]+")
DEB = None


def run(*command, **options):
    """What it prints on both outputs; a failure is one of the test."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}:\n{done.stdout}")
    return done.stdout


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        run("dpkg-deb", "--extract", DEB, cls.folder)
        cls.share = cls.folder / "usr/share"
        cls.program = cls.folder / "usr/bin/brimwellpro"

    def test_content(self):
        listed = [line.split() for line in run("dpkg-deb", "--contents", DEB).splitlines()]
        content = sorted(f"{mode} {owner} {path[1:]}" for mode, owner, _, _, _, path in listed
                         if not mode.startswith("d"))
        self.assertEqual(content, (HERE / "content.txt").read_text().splitlines())
        self.assertEqual({(mode, owner) for mode, owner, *_ in listed if mode.startswith("d")},
                         {("drwxr-xr-x", "root/root")})

    def test_remarks_of_debian_tools(self):  # docs/PACKAGING.md says why some stay
        self.assertRemarks(": (appstream-metadata-validation-failed|out-of-date-standards-version) ", "lintian",
                           "--allow-root", "--display-info", "--pedantic", *DEB.parent.glob("*.changes"))
        # The tool of Debian 12 does not know a key that its desktops do.
        self.assertRemarks('key "SingleMainWindow"', "desktop-file-validate",
                           self.share / "applications/brimwellpro.desktop")
        self.assertRemarks("^I: |: url-homepage-missing$|^(✔|✘) |^$", "appstreamcli", "validate", "--pedantic",
                           *(self.share / "metainfo").iterdir())
        self.assertEqual(run("sh", "-c", 'man --warnings -Tutf8 -Z -l "$1" >/dev/null', "sh",
                             self.share / "man/man1/brimwellpro.1.gz"), "")

    def assertRemarks(self, expected, *command):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        self.assertEqual([line for line in done.stdout.splitlines() if not re.search(expected, line)], [])
        self.assertIn(done.returncode, range(4), command)

    def test_symbols_are_in_their_own_package(self):
        symbols = run("dpkg-deb", "--contents", *DEB.parent.glob("brimwellpro-dbgsym_*.deb"))
        for file in (self.program, *self.folder.rglob("*.so")):
            build, = re.findall(r"Build ID: (..)(\w+)", run("readelf", "--notes", file))
            self.assertIn(f"/usr/lib/debug/.build-id/{build[0]}/{build[1]}.debug\n", symbols)

    def test_one_list_of_what_is_needed_to_build(self):
        listed = (SOURCES / "tools/packages.txt").read_text().partition("[build]")[2].partition("[")[0]
        listed = {line.partition("#")[0].strip() for line in listed.splitlines()} - {"", "ccache", "g++"}
        needed = re.search(r"\nBuild-Depends:((?:.+\n)+)\n", (SOURCES / "debian/control").read_text())[1]
        self.assertEqual({name.strip() for name in needed.split(",")} - {"", "debhelper-compat (= 13)"}, listed)

    def test_guides_lead_to_what_is_installed(self):
        documents = self.share / "doc/brimwellpro"
        links = [(guide.name, link) for guide in documents.glob("*.md") if guide.name != "CHANGELOG.md"
                 for link in re.findall(r"\]\(((?:images/)?[\w-]+\.\w+)[)#]", guide.read_text())]
        self.assertGreater(len(links), 20)
        self.assertEqual([link for link in links if not (documents / link[1]).exists()], [])

    def test_menu_finds_program_and_icon(self):
        entry = configparser.RawConfigParser()
        entry.read(self.share / "applications/brimwellpro.desktop")
        entry = entry["Desktop Entry"]
        self.assertEqual({entry["Exec"], entry["TryExec"]}, {self.program.name})
        self.assertTrue((self.share / f"icons/hicolor/scalable/apps/{entry['Icon']}.svg").exists())

    def test_software_centres_know_the_cameras(self):
        rules = (self.folder / "usr/lib/udev/rules.d/70-brimwellpro.rules").read_text()
        self.assertEqual(re.findall(r":vEB1Ap(\w+)d\*<", next((self.share / "metainfo").iterdir()).read_text()),
                         re.search(r'idProduct\}=="([^"]+)"', rules)[1].split("|"))

    def test_one_version(self):
        version = run("dpkg-deb", "--field", DEB, "Version").strip()
        changelog = gzip.open(self.share / "doc/brimwellpro/changelog.gz", "rt").readline()
        metainfo = next((self.share / "metainfo").iterdir()).read_text()
        self.assertEqual(run(self.program, "--version").splitlines()[0], f"BrimwellPro {version}")
        self.assertTrue(changelog.startswith(f"brimwellpro ({version}) "), changelog)
        self.assertEqual(re.search(r'<release version="([^"]+)"', metainfo).group(1), version)

    def test_options_are_documented_everywhere(self):
        help_text = run(self.program, "--help")
        options = set(OPTION.findall(help_text))
        languages = re.search("in that language: (.+)", help_text)[1].replace(",", "")
        manual = gzip.open(self.share / "man/man1/brimwellpro.1.gz", "rt").read().replace("\\-", "-")
        texts = {"man page": manual}
        for path in ("bash-completion/completions/brimwellpro", "fish/vendor_completions.d/brimwellpro.fish",
                     "zsh/vendor-completions/_brimwellpro"):
            # fish names long options after -l
            texts[path] = re.sub(r" -l ([a-z])", r" --\1", (self.share / path).read_text())
        for name, text in texts.items():
            with self.subTest(name):
                self.assertEqual(set(OPTION.findall(text)), options)
                self.assertTrue(name == "man page" or languages in text, languages)

    def test_completion_in_bash(self):
        script = ('. "$1"; COMP_WORDS=("${@:2}"); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); compopt() { :; }; '
                  '_brimwellpro; printf "%s\\n" "${COMPREPLY[@]}"')
        for words, expected in ((["--l"], {"--language", "--list-cameras"}), (["--language", "e"], {"en", "es"}),
                                (["--import-settings", "conte"], {"content.txt"}), (["--simulate", ""], TYPES),
                                (["--simulate", "h"], {"high"}), (["--simulate", "="], TYPES),
                                (["--simulate", "=", "u"], {"ultra"}),
                                (["--simulate", "high", "=", "conte"], {"content.txt"})):
            with self.subTest(words):
                answer = run("bash", "-c", script, "bash", self.share / "bash-completion/completions/brimwellpro",
                             "brimwellpro", *words, cwd=HERE)
                self.assertTrue(expected <= set(answer.split()), answer)
                self.assertEqual(len(answer.split()), len(expected))

    def test_knows_no_folder_of_its_making(self):
        self.assertNotIn(bytes(SOURCES), self.program.read_bytes())


TYPES = {"dx20", "regular", "high", "ultra", "wireless"}

if __name__ == "__main__":
    DEB, = Path(sys.argv.pop(1)).glob("brimwellpro_*.deb")
    unittest.main(verbosity=2)
