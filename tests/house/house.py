#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks what the compiler does not: who may use whom, that files stay small, and that documents lead somewhere.

Usage: house.py ROOT QT_WIDGETS_HEADERS
Prints one line for each fault, "file:line: what", and exits 1 if there is one.
"""

import re
import sys
from pathlib import Path
from statistics import median

# Who may use whom. The order of keys is that of the dependency arrow, from its end.
ALLOWED = {
    "Utils": set(),
    "driver": set(),
    "Model": {"Utils", "driver"},
    "Views": {"Utils", "driver", "Model"},
    "app": {"Utils", "driver", "Model", "Views"},
    "main": {"Utils", "driver", "Model", "Views", "app"},
}
WITHOUT_WIDGETS = {"Utils", "driver", "Model"}
LAYER_OF_TARGET = {
    "BWACUDriver": "driver", "bw_utils": "Utils", "bw_model": "Model", "bw_views": "Views", "bw_app": "app",
    "brimwellpro": "main",
}
LAYER_OF_FOLDER = {"Utils": "Utils", "Model": "Model", "Views": "Views"}

LICENCE = "SPDX-License-Identifier: GPL-3.0-or-later"
MAX_LINES = 700  # the licence's line not counted
MAX_HEADER_LINES = 150
MAX_MEDIAN_LINES = 180
CODE_SUFFIXES = {".c", ".cmake", ".cpp", ".h", ".py", ".sh"}

INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]')
COMMENT_OR_TEXT = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(?P<mark>[^()\s\\]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'', re.DOTALL)
UNFINISHED = re.compile(r"\b(?:TODO|FIXME|XXX|QSKIP)\b")
LINK = re.compile(r"\]\(([^()\s]+)\)")
HEADING = re.compile(r"^#+ (.+)$", re.MULTILINE)
VERSION = r"(\d+\.\d+\.\d+)"
VERSIONS = {  # where the newest one is the first
    "CHANGELOG.md": rf"^## {VERSION}", "debian/changelog": rf"^\w+ \({VERSION}\)",
    "packaging/man/brimwellpro.1": rf"^\.TH .*{VERSION}",
    "packaging/example.brimwellpro.brimwellpro.metainfo.xml": rf'<release version="{VERSION}"',
}
CMAKE_LINK = re.compile(r"\b(bw_library|bw_executable|target_link_libraries|target_include_directories)\s*\(([^()]*)\)")


def layer_of(path):
    """The layer of a file, given relative to the root; None for one outside the program (a test, say)."""
    parts = path.parts
    if parts[0] == "driver":
        return "driver"
    if parts[0] != "src":
        return None
    return "main" if parts[1] == "main.cpp" else LAYER_OF_FOLDER.get(parts[1], "app")


class House:
    def __init__(self, root, widget_names):
        self.root = Path(root).resolve()
        self.widget_name = re.compile(r"\b(?:%s)\b" % "|".join(sorted(widget_names)))
        self.widget_headers = widget_names | {name.lower() + ".h" for name in widget_names}
        self.faults = []

    def check(self):
        sources = [path for folder in ("driver", "src", "tests", "benchmarks", "fuzz")
                   for path in sorted((self.root / folder).rglob("*")) if path.suffix in (".h", ".cpp")]
        for path in sources:
            self.check_source(path)
        self.check_licences()
        self.check_documents()
        self.check_versions()
        lengths = [len(path.read_text().splitlines()) for path in sources
                   if path.suffix == ".cpp" and layer_of(path.relative_to(self.root))]
        if lengths and median(lengths) >= MAX_MEDIAN_LINES:
            self.fault(self.root / "src", 0, f"half of the .cpp files have {median(lengths):g} lines or more")
        for folder in ("driver", "src"):
            for path in sorted((self.root / folder).rglob("CMakeLists.txt")):
                self.check_cmake(path)
        return self.faults

    def fault(self, path, line, text):
        self.faults.append(f"{path.relative_to(self.root)}:{line}: {text}")

    def check_licences(self):
        """Every file that is compiled or run names its licence at the top, below the line that says what runs it."""
        for folder in ("benchmarks", "cmake", "debian", "driver", "fuzz", "packaging", "src", "tests", "tools"):
            for path in sorted((self.root / folder).rglob("*")):
                if not path.is_file() or "__pycache__" in path.parts:
                    continue
                with path.open("rb") as file:
                    top = file.readline() + file.readline()
                if (path.suffix in CODE_SUFFIXES or path.name == "CMakeLists.txt" or top.startswith(b"#!")) \
                        and LICENCE.encode() not in top:
                    self.fault(path, 1, f"begins with {LICENCE}")

    def check_documents(self):
        """What they link to is there, headings included, and every picture is shown."""
        shown = set()
        for path in sorted(self.root.rglob("*.md")):
            if path.is_relative_to(self.root / "build"):
                continue
            for number, line in enumerate(path.read_text().splitlines(), 1):
                for link in (link for link in LINK.findall(line) if ":" not in link):
                    name, _, heading = link.partition("#")
                    target = (path.parent / name).resolve() if name else path
                    shown.add(target)
                    if not target.exists() or heading and heading not in headings(target):
                        self.fault(path, number, f"{link} is not there")
        for picture in sorted(set((self.root / "docs/images").glob("*")) - shown):
            self.fault(picture, 1, "no document shows it")

    def check_versions(self):
        """All name that of CMakeLists.txt."""
        version = re.search(f"VERSION {VERSION}", (self.root / "CMakeLists.txt").read_text())[1]
        for name, pattern in VERSIONS.items():
            found = re.search(pattern, (self.root / name).read_text(), re.MULTILINE)
            if not found or found[1] != version:
                self.fault(self.root / name, 1, f"not of version {version}")

    def check_source(self, path):
        text = path.read_text()
        lines = text.splitlines()
        most = MAX_HEADER_LINES if path.suffix == ".h" else MAX_LINES
        length = len(lines) - (LICENCE in text)
        if length > most:
            self.fault(path, most + 1, f"{length} lines; {most} is the most")
        if path.suffix == ".h" and "#pragma once" not in lines:
            self.fault(path, 1, "a header begins with #pragma once")
        for number, line in enumerate(lines, 1):
            if UNFINISHED.search(line):
                self.fault(path, number, "unfinished work")

        layer = layer_of(path.relative_to(self.root))
        if layer is None:
            return
        self.check_includes(path, layer, lines)
        for number, line in enumerate(lines, 1):
            if "QUrl::fromLocalFile(" in line and path.stem != "BWFilePath":
                self.fault(path, number, "BWFilePath::fromLocal() also knows a path that begins with two slashes")
        if layer in WITHOUT_WIDGETS:
            code = COMMENT_OR_TEXT.sub(lambda found: "\n" * found.group().count("\n"), text)
            for number, line in enumerate(code.splitlines(), 1):
                name = None if INCLUDE.match(line) else self.widget_name.search(line)
                if name:
                    self.fault(path, number, f"{name.group()} is of Qt Widgets, which {layer} does without")

    def check_includes(self, path, layer, lines):
        first = True
        for number, line in enumerate(lines, 1):
            found = INCLUDE.match(line)
            if not found:
                continue
            target = self.resolve(path, found.group(1))
            own = path.with_suffix(".h")
            if first and path.suffix == ".cpp" and own.exists() and target != own:
                self.fault(path, number, f"{own.name} comes first")
            first = False
            if target is None:
                if layer in WITHOUT_WIDGETS and self.is_of_widgets(found.group(1)):
                    self.fault(path, number, f"{found.group(1)} is of Qt Widgets, which {layer} does without")
                continue
            relative = target.relative_to(self.root)
            target_layer = layer_of(relative)
            if target_layer is None:
                self.fault(path, number, f"{relative} is no part of the program")
            elif target_layer == "driver" != layer and relative.parts[:2] != ("driver", "include"):
                self.fault(path, number, f"{relative} is the driver's own; use what driver/include has")
            elif target_layer != layer and target_layer not in ALLOWED[layer]:
                self.fault(path, number, f"{layer} may not use {target_layer} ({relative})")

    def is_of_widgets(self, header):
        return header.startswith("QtWidgets") or header in self.widget_headers

    def resolve(self, path, header):
        """The file of ours that an include means, or None."""
        for folder in (path.parent, self.root / "src", self.root / "driver/include", self.root / "driver/src",
                       self.root):
            target = (folder / header).resolve()
            if target.is_file() and target.is_relative_to(self.root):
                return target
        return None

    def check_cmake(self, path):
        text = re.sub(r"#[^\n]*", "", path.read_text())
        for found in CMAKE_LINK.finditer(text):
            words = found.group(2).split()
            layer = LAYER_OF_TARGET.get(words[0]) if words else None
            if layer is None:
                continue
            line = text.count("\n", 0, found.start()) + 1
            for word in words[1:]:
                linked = LAYER_OF_TARGET.get(word)
                if linked and linked not in ALLOWED[layer]:
                    self.fault(path, line, f"{words[0]} may not link {word}")
                if layer in WITHOUT_WIDGETS and word == "Qt6::Widgets":
                    self.fault(path, line, f"{words[0]} may not link {word}")
                if layer != "driver" and "driver/src" in word:
                    self.fault(path, line, f"{words[0]} may not see {word}")


def headings(path):
    """As links name them."""
    return {re.sub(r"[^\w -]", "", heading).lower().replace(" ", "-") for heading in HEADING.findall(path.read_text())}


def widget_class_names(folder):
    """The classes that Qt Widgets declares, from its headers; some only forward to Qt Gui and do not count."""
    folder = Path(folder)
    names = {path.name for path in folder.iterdir() if re.fullmatch(r"Q[A-Z]\w+", path.name)}
    if "QWidget" not in names:
        sys.exit(f"{folder} does not hold the headers of Qt Widgets")
    return {name for name in names if not (folder.parent / "QtGui" / name).exists()}


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    faults = House(sys.argv[1], widget_class_names(sys.argv[2])).check()
    print("\n".join(faults) if faults else "The house is in order.")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
