#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""While the program records, takes a series of pictures or saves files elsewhere, it asks the desktop on a real session bus
to stay awake: the screen saver, the power manager and the portal, or without them the login manager, all of which are made
up here. Afterwards, or once it is killed, it does so no more.

usage: test_staying_awake.py PROGRAM
"""

import os
import signal
import sys

from desktop import PATIENCE, wait_until
from program import ProgramTest, answer_product_question, wait_for_picture

PORTAL = "org.freedesktop.portal.Desktop"
# By the name of the service: its interface, where that is, and what Inhibit takes and gives.
SERVICES = {"org.freedesktop.ScreenSaver": ("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "ss", "u", 7),
            "org.freedesktop.PowerManagement.Inhibit":
                ("org.freedesktop.PowerManagement.Inhibit", "/org/freedesktop/PowerManagement/Inhibit", "ss", "u", 8),
            PORTAL: ("org.freedesktop.portal.Inhibit", "/org/freedesktop/portal/desktop", ["s", "u", "a{sv}"], "o", "/r")}

LOGIN = {"org.freedesktop.login1": ("org.freedesktop.login1.Manager", "/org/freedesktop/login1", "ssss", "h", None)}


def serve(options):
    """In a process of its own: prints the interfaces that keep the computer awake, at each change."""
    sys.path.append("/usr/lib/python3/dist-packages")
    from gi.repository import Gio, GLib
    awake = set()
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)

    def offer(interface, path, takes, gives, answer):
        def called(bus, sender, path, interface, method, arguments, invocation):
            if "--silent" in options:
                return
            if gives == "h":
                ours, theirs = os.pipe()
                awake.add(("lock", ours))
                GLib.unix_fd_add_full(0, ours, GLib.IOCondition.HUP, lambda *_: (awake.clear(), print(flush=True)))
                invocation.return_value_with_unix_fd_list(GLib.Variant("(h)", (0,)),
                                                          Gio.UnixFDList.new_from_array([theirs]))
                print(*awake, flush=True)
                return
            begins = method == "Inhibit"
            assert "portal" not in interface or arguments[1] & 12 == 12
            (awake.add if begins else awake.discard)((interface, sender))
            invocation.return_value(GLib.Variant(f"({gives})", (answer,)) if begins else None)
            print(*awake, flush=True)

        given = "".join(f'<arg type="{kind}" direction="in"/>' for kind in takes)
        bus.register_object(path, Gio.DBusNodeInfo.new_for_xml(
            f'<node><interface name="{interface}"><method name="Inhibit">{given}<arg type="{gives}" direction="out"/>'
            '</method><method name="UnInhibit"><arg type="u" direction="in"/></method></interface></node>').interfaces[0],
            called)

    def gone(bus, sender, path, interface, signal_name, arguments):
        awake.difference_update([entry for entry in awake if entry[1] == arguments[0] and not arguments[2]])
        print(*awake, flush=True)

    for name, service in LOGIN.items() if "--login" in options else SERVICES.items():
        offer(*service)
        Gio.bus_own_name_on_connection(bus, name, 0)
    bus.signal_subscribe("org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged", None, None, 0, gone)
    print(flush=True)
    GLib.MainLoop().run()


class StayingAwake(ProgramTest):
    def begin(self, *options):
        self.make_pictures("640x480")
        os.truncate(self.album / "20240607_image_003.jpg", int((800 << 20) / PATIENCE))  # which takes a while
        self.desktop.spawn(["/usr/bin/python3", __file__, "--serve", *options], log="awake.log")
        wait_until("the desktop's services are there", lambda: (self.desktop.folder / "awake.log").read_text())
        self.start("--simulate", "high")
        answer_product_question(self.program)
        wait_for_picture(self.program)

    def said(self):
        return [line.count("(") for line in (self.desktop.folder / "awake.log").read_text().splitlines()]

    def wait_until_awake(self):
        wait_until("all keep the computer awake", lambda: self.said()[-1] == len(SERVICES))

    def wait_until_asleep(self):
        wait_until("nothing keeps it awake", lambda: not self.said()[-1])

    def record(self):
        self.desktop.key("ctrl+shift+s")

    def take_series(self):
        self.desktop.key("ctrl+i")
        self.program.wait_for_active("dialog", "Pictures at intervals")
        self.desktop.key("Return")

    def save(self):
        self.desktop.key("F9")
        self.program.click("table cell", "20240607_image_002, image")
        self.desktop.key("ctrl+a")
        self.desktop.key("ctrl+e")
        self.program.wait_for_active("dialog", "Saving images as ZIP file")
        self.desktop.key("Return")

    def test_while_it_works(self):
        self.begin()
        self.assertFalse(any(self.said()))
        for start, stop in ((self.record, "ctrl+shift+s"), (self.take_series, "ctrl+i")):
            start()
            self.wait_until_awake()
            self.desktop.key(stop)
            self.wait_until_asleep()
        changes = len(self.said())
        self.save()
        wait_until("saving keeps it awake, too", lambda: any(self.said()[changes:]))
        self.wait_until_asleep()
        self.program.quit()

    def killed_while(self, working):
        self.begin()
        working()
        wait_until("it keeps the computer awake", lambda: self.said()[-1])
        os.kill(self.program.pid, signal.SIGKILL)
        self.wait_until_asleep()
        self.assertFalse(list(self.desktop.home.rglob("*.zip")))

    def test_killed_recording(self):
        self.killed_while(self.record)

    def test_killed_in_a_series(self):
        self.killed_while(self.take_series)

    def test_killed_saving(self):
        self.killed_while(self.save)

    def test_login_manager(self):
        self.desktop.environment["DBUS_SYSTEM_BUS_ADDRESS"] = self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"]
        self.begin("--login")
        for end in (lambda: self.desktop.key("ctrl+shift+s"), lambda: os.kill(self.program.pid, signal.SIGKILL)):
            self.desktop.key("ctrl+shift+s")
            wait_until("the login manager keeps it awake", lambda: self.said()[-1] == 1)
            end()
            self.wait_until_asleep()

    def test_nobody_answers(self):
        self.begin("--silent")
        self.desktop.key("ctrl+shift+s")
        wait_until("it records", lambda: self.program.find("push button", "Stop"))
        self.program.quit()
        self.assertEqual(len(list(self.album.glob("*_video_*.mov"))), 1)


if __name__ == "__main__":
    if sys.argv[1] == "--serve":
        serve(sys.argv)
    else:
        StayingAwake.main()
