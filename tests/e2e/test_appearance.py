#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The program looks as the user has told the desktop, whose portal is made up here: from the start, and after each change.
It does not wait for an answer.

usage: test_appearance.py PROGRAM
"""

import json
import sys
from pathlib import Path

from desktop import wait_until
from program import ProgramTest, answer_product_question, wait_for_picture

SETTINGS, GROUP, PLACE = "org.freedesktop.portal.Settings", "org.freedesktop.appearance", "/org/freedesktop/portal/desktop"


def serve(file):
    """In a process of its own: what is wanted stands in that file. Without anything in it there is no answer."""
    sys.path.append("/usr/lib/python3/dist-packages")
    from gi.repository import Gio, GLib
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    told = {}

    def wanted():
        return {key: GLib.Variant("u", value) for key, value in json.loads(file.read_text()).items()}

    def called(bus, sender, path, interface, method, arguments, invocation):
        assert arguments.unpack() == ([GROUP],)
        if wanted():
            invocation.return_value(GLib.Variant("(a{sa{sv}})", ({GROUP: wanted()},)))

    def tell_changes():
        for key, value in wanted().items():
            if told.get(key) != value:
                told[key] = value
                bus.emit_signal(None, PLACE, SETTINGS, "SettingChanged", GLib.Variant("(ssv)", (GROUP, key, value)))
        return True

    bus.register_object(PLACE, Gio.DBusNodeInfo.new_for_xml(
        f'<node><interface name="{SETTINGS}"><method name="ReadAll"><arg type="as" direction="in"/>'
        '<arg type="a{sa{sv}}" direction="out"/></method></interface></node>').interfaces[0], called)
    Gio.bus_own_name_on_connection(bus, "org.freedesktop.portal.Desktop", 0)
    told.update(wanted())
    GLib.timeout_add(50, tell_changes)
    print(flush=True)
    GLib.MainLoop().run()


class Appearance(ProgramTest):
    def want(self, **settings):
        replacement = self.desktop.folder / "next.json"
        replacement.write_text(json.dumps({name.replace("_", "-"): value for name, value in settings.items()}))
        replacement.rename(self.desktop.folder / "wanted.json")

    def begin(self, **settings):
        self.want(**settings)
        self.desktop.spawn(["/usr/bin/python3", __file__, "--serve", self.desktop.folder / "wanted.json"], log="portal.log")
        wait_until("the portal is there", (self.desktop.folder / "portal.log").read_text)
        self.start("--simulate", "high")
        answer_product_question(self.program)
        wait_for_picture(self.program)

    def wait_for_bar(self, red):
        area = self.program.wait_for("push button", "Snapshot").area
        wait_until(f"the bar is as bright as {red}",
                   lambda: self.desktop.picture(area.x, area.y - 2, 1, 1).pixel(0, 0)[0] in red)

    def test_followed(self):
        self.begin(color_scheme=1)
        self.wait_for_bar(range(30, 60))
        for scheme, contrast, red in ((1, 1, [0]), (2, 1, [255]), (2, 0, range(230, 250)), (0, 1, [255])):
            self.want(color_scheme=scheme, contrast=contrast)
            self.wait_for_bar(red)
        self.program.quit()

    def test_not_answered(self):
        self.begin()
        self.wait_for_bar(range(230, 250))
        self.want(contrast=1)
        self.wait_for_bar([255])
        self.program.quit()


if __name__ == "__main__":
    if sys.argv[1] == "--serve":
        serve(Path(sys.argv[2]))
    else:
        Appearance.main()
