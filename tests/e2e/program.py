# SPDX-License-Identifier: GPL-3.0-or-later
"""The program on a desktop of its own, read like a screen reader does and used like a person does."""

import json
import os
import subprocess
import sys
import unittest
from collections import namedtuple

from desktop import HEIGHT, PATIENCE, WIDTH, Desktop, Failure, wait_until
from live_image import LiveImage, colours

Area = namedtuple("Area", "x y width height")


class Element:
    """One element of a window: what it is, what it is called, where it is on the screen."""

    def __init__(self, accessible, atspi):
        self._accessible = accessible
        self._atspi = atspi

    @property
    def role(self):
        name = self._accessible.get_role_name()
        return "push button" if name == "button" else name  # the new name in Debian 13

    @property
    def name(self):
        return self._accessible.get_name() or ""

    def is_called(self, name):
        """By its own name or by that of its label. A combo box is named after its choice, so only the label counts."""
        return self.name == name or self.label == name

    @property
    def area(self):
        component = self._accessible.get_component_iface()
        if not component:  # the corner of a table
            return Area(0, 0, 0, 0)
        extents = component.get_extents(self._atspi.CoordType.SCREEN)
        return Area(extents.x, extents.y, extents.width, extents.height)

    @property
    def description(self):
        return self._accessible.get_description() or ""

    @property
    def value(self):
        """Of a slider or a field for numbers."""
        return self._accessible.get_value_iface().get_current_value()

    def has_state(self, name):
        return self._accessible.get_state_set().contains(getattr(self._atspi.StateType, name.upper()))

    @property
    def actions(self):
        """What a screen reader can do to it, but for giving it the focus."""
        return [name for name in self._actions() if name != "SetFocus"]

    def _actions(self):
        actions = self._accessible.get_action_iface()
        return [actions.get_action_name(index) for index in range(actions.get_n_actions())] if actions else []

    def do(self, action):
        self._accessible.get_action_iface().do_action(self._actions().index(action))

    @property
    def label(self):
        """The name of the element that labels it, or nothing."""
        return next((relation.get_target(0).get_name() for relation in self._accessible.get_relation_set() or []
                     if relation.get_relation_type() == self._atspi.RelationType.LABELLED_BY), "")

    @property
    def showing(self):
        return self.has_state("showing")

    def rows(self):
        """Of a table, as a screen reader goes through it: each cell's column header, text and description."""
        table = self._accessible.get_table_iface()
        cells = ([(column, table.get_accessible_at(row, column)) for column in range(table.get_n_columns())]
                 for row in range(table.get_n_rows()))
        return [[(table.get_column_description(column), *(text.replace("\xa0", " ") for text in (
            cell.get_name(), cell.get_description()))) for column, cell in row] for row in cells]

    def children(self):
        for index in range(self._accessible.get_child_count()):
            child = self._accessible.get_child_at_index(index)
            if child:
                yield Element(child, self._atspi)

    def descendants(self):
        for child in self.children():
            yield child
            yield from child.descendants()


class Program:
    """Started at once, with its output in a file of the desktop's folder."""

    def __init__(self, desktop, command, environment=None, log="program.log"):
        self.desktop = desktop
        desktop.environment.update(environment or {})
        self.log_file = desktop.folder / log
        self._process = desktop.spawn(command, log=self.log_file.name)
        self._atspi = None

    @property
    def pid(self):
        return self._process.pid

    @property
    def log(self):
        return self.log_file.read_text(errors="replace")

    @property
    def running(self):
        return self._process.poll() is None

    def wait_for_end(self, seconds=20):
        try:
            return self._process.wait(timeout=seconds * PATIENCE)
        except subprocess.TimeoutExpired:
            raise Failure(f"the program has not ended within {seconds:g} s") from None

    def _accessibility(self):
        if self._atspi is None:
            for name in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"):
                os.environ[name] = self.desktop.environment[name]
            if "/usr/lib/python3/dist-packages" not in sys.path:
                sys.path.append("/usr/lib/python3/dist-packages")
            import gi  # only here: it looks at the environment
            gi.require_version("Atspi", "2.0")
            from gi.repository import Atspi
            Atspi.init()
            answer_within = int(5000 * PATIENCE)  # of which it takes 800 by itself
            Atspi.set_timeout(answer_within, 3 * answer_within)
            self._atspi = Atspi
        return self._atspi

    def windows(self):
        """The visible windows, dialogs included."""
        return wait_until("the program tells which windows it has", self._windows)[0]

    def _windows(self):
        """In a tuple; nothing if one closed meanwhile, or the program was too busy to answer."""
        if not self.running:
            raise Failure(f"the program has ended with {self._process.returncode}")
        atspi = self._accessibility()
        from gi.repository import GLib
        try:
            desktop = atspi.get_desktop(0)
            desktop.clear_cache()
            for index in range(desktop.get_child_count()):
                application = desktop.get_child_at_index(index)
                if application and application.get_process_id() == self.pid:
                    return ([window for window in Element(application, atspi).children() if window.showing],)
        except GLib.Error:
            return None
        return ([],)

    def window(self, role, name=None):
        """The first visible window of that role ("frame" or "dialog") and name, or None."""
        return self._first(self.windows(), role, name)

    def find(self, role, name):
        """The first visible element of that role and name in any window, or None. No role means any."""
        return self._first((element for window in self.windows() for element in window.descendants()), role, name)

    @staticmethod
    def _first(elements, role, name):
        from gi.repository import GLib  # which looks at the environment, too
        try:
            return next((element for element in elements
                         if role in (None, element.role) and (name is None or element.is_called(name))
                         and element.showing), None)
        except GLib.Error:
            return None  # a window closed meanwhile

    def wait_for(self, role, name=None, seconds=20):
        """The element or window of that role and name, as soon as it shows."""
        return wait_until(f'there is a {role or "thing"} "{name or ""}" on the screen',
                          lambda: self.window(role, name) or self.find(role, name), seconds)

    def wait_for_active(self, role, name=None):
        """The window of that role and name once it has the keyboard."""
        return wait_until(f'{role or "window"} "{name or ""}" has the keyboard', lambda: self._first(
            (window for window in self.windows() if window.has_state("active")), role, name))

    def activate(self, window):
        """Gives the window the keyboard, with a click on its title."""
        def active():
            if window.has_state("active"):
                return True
            area = window.area
            self.desktop.click(area.x + area.width // 10, area.y - 8)  # dialogs cover the middle
            return False

        wait_until(f'"{window.name}" has the keyboard', active, step=1)  # quicker would be a double click

    def confirm_question(self):
        """With a key, which counts when the question has been there for a moment."""
        def answered():
            if not self.window("dialog"):
                return True
            self.desktop.key("Return")
            return False

        wait_until("the question is answered", answered, step=0.5)

    def quit(self):
        self.activate(self.wait_for("frame", "BrimwellPro"))
        self.desktop.key("ctrl+q")
        if status := self.wait_for_end():
            raise Failure(f"the program has ended with {status}")

    def outline(self):
        """Everything on the screen, one line for each element, for the report of a failure."""
        lines = []
        for window in self.windows():
            for element in (window, *window.descendants()):
                if element.showing and (element.name or element is window):
                    lines.append(f'{element.role} "{element.name}" {element.area}')
        return "\n".join(lines)

    def click(self, role, name):
        area = self.wait_for(role, name).area
        self.desktop.click(area.x + area.width // 2, area.y + area.height // 2)


def probed(file, *options):
    """What ffprobe, which is none of ours, says about a picture or movie."""
    return subprocess.run(["ffprobe", "-v", "error", *options, "-of", "csv=p=0", file], capture_output=True, text=True,
                          check=True).stdout.strip()


def probed_measurements(picture):
    """As exiftool, which is none of ours either, reads them."""
    tags = subprocess.run(["exiftool", "-j", "-struct", "-XMP-bwm:all", picture], capture_output=True, text=True,
                          check=True).stdout
    return json.loads(tags)[0].get("Measurements", [])


def frames_of(movie):
    return int(probed(movie, "-count_frames", "-show_entries", "stream=nb_read_frames") or 0)


def wait_for_picture(program):
    """The live image, once the camera's picture is in it."""
    live = LiveImage(program.desktop, program.wait_for(None, "Live image").area)
    wait_until("the camera's picture shows", lambda: live.width() > 100 and colours(live.picture()) > 300)
    return live


def answer_product_question(program):
    """With the product that is marked."""
    program.wait_for_active("dialog", "Which camera is this?")
    program.confirm_question()
    program.activate(program.wait_for("frame"))  # a click would be lost until then


class ProgramTest(unittest.TestCase):
    """Tests of the program that the command line names first, each on a desktop of its own."""

    executable = None
    screen_size = (WIDTH, HEIGHT)

    def setUp(self):
        self.desktop = self.enterContext(Desktop(size=self.screen_size))
        self.album = self.desktop.home / "BrimwellPro" / "Default Album"
        self.settings = self.desktop.home / ".config" / "BrimwellPro" / "BrimwellPro.conf"

    def start(self, *arguments, environment=None):
        self.program = Program(self.desktop, [self.executable, *arguments], environment)

    def store(self, setting):
        self.settings.parent.mkdir(parents=True)
        self.settings.write_text(f"[General]\n{setting}\n")

    def make_pictures(self, size):
        """Three snapshots in the album."""
        self.album.mkdir(parents=True)
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"testsrc2=s={size}", "-frames:v", "3",
                        self.album / "20240607_image_%03d.jpg"], check=True)

    def hand(self, action):
        """Does something to the first simulated camera."""
        self.program.click("push button", f"High Resolution Microscope 1: {action}")

    @classmethod
    def main(cls):
        cls.executable = sys.argv.pop(1)
        unittest.main(verbosity=2)
