#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Shows that house.py finds each fault it is there for: every case is a small tree with one fault in it."""

import tempfile
import unittest
from pathlib import Path

from house import LICENCE, VERSIONS, House

WIDGETS = {"QWidget", "QLabel"}
BARE = ["int a;\n", "#!/bin/sh\n"]  # written without the licence's line
GOOD = {
    "driver/include/BWACUDriver/BWCamera.h": "#pragma once\n",
    "driver/src/Usb.h": "#pragma once\n#include \"BWACUDriver/BWCamera.h\"\n",
    "driver/src/Usb.cpp": "#include \"Usb.h\"\n#include <vector>\n",
    "driver/CMakeLists.txt": "bw_library(BWACUDriver DIRS src LINK Qt6::Core)\n",
    "src/Utils/Paths.h": "#pragma once\n#include <QString>\n",
    "src/Model/Album.h": "#pragma once\n#include \"Utils/Paths.h\"\n",
    "src/Model/Album.cpp": "#include \"Model/Album.h\"\n#include <BWACUDriver/BWCamera.h>\n// a QWidget shows it\n"
                           "const char *text = \"QLabel\";\n",
    "src/Views/AlbumView.h": "#pragma once\n#include <QWidget>\n#include \"Model/Album.h\"\n",
    "src/AppDelegate.h": "#pragma once\n#include \"Views/AlbumView.h\"\n",
    "src/main.cpp": "#include \"AppDelegate.h\"\n",
    "src/CMakeLists.txt": "bw_library(bw_utils DIRS Utils LINK Qt6::Core)\n"
                          "bw_library(bw_model DIRS Model LINK bw_utils BWACUDriver Qt6::Gui) # never Qt6::Widgets\n"
                          "bw_library(bw_views DIRS Views LINK bw_model Qt6::Widgets)\n",
    "CMakeLists.txt": "project(BrimwellPro VERSION 1.2.3)\n", "CHANGELOG.md": "## 1.2.3 - soon\n## 1.2.2\n",
    "debian/changelog": "brimwellpro (1.2.3) bookworm\n", "packaging/man/brimwellpro.1": ".TH A 1 B 1.2.3\n",
    list(VERSIONS)[3]: '<release version="1.2.3"/>\n<release version="1.2.2"/>\n',
    "docs/A.md": "[up](../src) ![](images/a.png)\n", "docs/images/a.png": "",
    "docs/B.md": "[there](A.md) [here](#why-x-is-2) [web](https://a.example/)\n## Why `x` is 2\n",
    "tests/model/tst_album.cpp": "#include \"Usb.h\"\n#include <QWidget>\n",
}


def faults_of(changes):
    with tempfile.TemporaryDirectory() as root:
        for name, text in {**GOOD, **changes}.items():
            path = Path(root, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            comment = "//" if path.suffix in (".cpp", ".h") else "#"
            path.write_text(text if text in BARE else f"{comment} {LICENCE}\n{text}")
        return House(root, WIDGETS).check()


class HouseTest(unittest.TestCase):
    def test_good_tree(self):
        self.assertEqual(faults_of({}), [])

    def test_faults(self):
        for path, text, expected in [
            ("driver/src/A.cpp", '#include "Utils/Paths.h"\n', "driver may not use Utils"),
            ("src/Utils/A.cpp", '#include "Model/Album.h"\n', "Utils may not use Model"),
            ("src/Model/A.cpp", '#include "Views/AlbumView.h"\n', "Model may not use Views"),
            ("src/Model/A.cpp", '#include "../Views/AlbumView.h"\n', "Model may not use Views"),
            ("src/Views/A.cpp", '#include "AppDelegate.h"\n', "Views may not use app"),
            ("src/Views/A.cpp", '#include "Usb.h"\n', "the driver's own"),
            ("src/Views/A.cpp", '#include "tests/model/tst_album.cpp"\n', "no part of"),
            ("src/Model/A.cpp", "#include <QLabel>\n", "QLabel is of Qt Widgets"),
            ("src/Utils/A.cpp", "#include <QtWidgets/QtWidgets>\n", "is of Qt Widgets"),
            ("driver/src/A.cpp", "#include <qlabel.h>\n", "is of Qt Widgets"),
            ("src/Model/A.h", "#pragma once\nclass QWidget;\n", "QWidget is of Qt Widgets"),
            ("driver/src/Usb.cpp", '#include <vector>\n#include "Usb.h"\n', "Usb.h comes first"),
            ("src/Views/A.h", "class A;\n", "#pragma once"),
            ("src/Views/A.cpp", BARE[0], "begins with SPDX"),
            ("tools/check", BARE[1], "begins with SPDX"),
            ("src/Views/A.h", "#pragma once\n" + "\n" * 150, "151 lines; 150 is the most"),
            ("tests/model/tst_a.cpp", "\n" * 701, "701 lines; 700 is the most"),
            ("src/Model/A.cpp", "QUrl url = QUrl::fromLocalFile(path);\n", "BWFilePath::fromLocal()"),
            ("docs/C.md", "[gone](images/b.png)\n", "images/b.png is not there"),
            ("docs/C.md", "[gone](A.md#b)\n", "A.md#b is not there"),
            ("docs/images/b.png", "", "no document shows it"),
            ("CHANGELOG.md", "## 1.2.2\n## 1.2.3\n", "not of version 1.2.3"),
            ("packaging/man/brimwellpro.1", ".TH A 1 B\n", "not of version 1.2.3"),
            ("src/Views/A.cpp", "// TODO\n", "unfinished"),
            ("tests/model/tst_a.cpp", 'QSKIP("later");\n', "unfinished"),
            ("src/Model/CMakeLists.txt", "target_link_libraries(bw_model PUBLIC bw_views)\n", "may not link bw_views"),
            ("driver/CMakeLists.txt", "bw_library(BWACUDriver DIRS src\n LINK bw_utils)\n", "may not link bw_utils"),
            ("src/CMakeLists.txt", "bw_library(bw_model DIRS a PRIVATE_LINK Qt6::Widgets)\n", "may not link Qt6"),
            ("src/CMakeLists.txt", "target_include_directories(bw_views PRIVATE ../driver/src)\n", "may not see"),
        ]:
            with self.subTest(path=path, text=text):
                faults = faults_of({path: text})
                self.assertEqual(len(faults), 1, faults)
                self.assertIn(expected, faults[0])

    def test_files_that_are_long_on_the_whole(self):
        files = {f"src/Views/A{number}.cpp": "\n" * 200 for number in range(9)}
        self.assertIn("half of the .cpp files", " ".join(faults_of(files)))


if __name__ == "__main__":
    unittest.main()
