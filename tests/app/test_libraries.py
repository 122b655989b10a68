#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The program lists every library that it is linked with, and no other.

usage: test_libraries.py PROGRAM LIBRARY_OF_ITS_OWN...
"""

import re
import subprocess
import sys

FAMILIES = {r"libQt6": "Qt", r"lib(av|sw)": "FFmpeg", r"lib(turbo)?jpeg": "libjpeg-turbo", r"lib(gio|gobject|glib)-": "GLib",
            r"libz\.": "zlib", r"lib(c|m|gcc_s|stdc\+\+)\.|ld-": None}


def listed_as(library):
    for pattern, name in FAMILIES.items():
        if re.match(pattern, library):
            return name
    return re.match(r"lib[a-z]+", library)[0].replace("libminizip", "minizip")


program = sys.argv[1]
dynamic = subprocess.run(["readelf", "--dynamic", *sys.argv[1:]], capture_output=True, text=True, check=True).stdout
linked = {listed_as(library) for library in re.findall(r"\(NEEDED\).*\[(.+)\]", dynamic)} - {None}
listed = sorted(re.findall(r"^  (\S+) (.+), .+$",
                       subprocess.run([program, "--version"], capture_output=True, text=True, check=True).stdout, re.M))
print("linked:", *sorted(linked), "\nlisted:", listed)
sys.exit([name for name, _ in listed] != sorted(linked) or any(not re.search(r"\d", version) for _, version in listed))
