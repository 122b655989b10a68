# SPDX-License-Identifier: GPL-3.0-or-later
"""A monkey at the program: what it does, one random step after another, as mouse, keyboard, camera and fate can do."""

import collections
import itertools
import os
import signal
import sys
import time
from pathlib import Path
from random import Random

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "e2e"))
from desktop import PATIENCE, Failure  # noqa: E402
from program import Program  # noqa: E402

# How often a key is pressed, compared with the others.
KEYS = {
    "ctrl+s": 12, "ctrl+shift+s": 6, "ctrl+i": 2, "ctrl+f": 5, "F7": 4, "ctrl+b": 4, "ctrl+m": 4, "F9": 4, "F11": 2,
    "ctrl+plus": 3, "ctrl+minus": 3, "ctrl+0": 1, "ctrl+9": 2, "ctrl+r": 3, "ctrl+h": 2, "ctrl+j": 2, "ctrl+g": 2,
    "ctrl+k": 2, "ctrl+l": 2, "ctrl+shift+i": 1, "ctrl+shift+m": 2, "ctrl+e": 2, "ctrl+shift+e": 1, "ctrl+z": 4,
    "ctrl+shift+z": 2, "ctrl+c": 2, "ctrl+a": 2, "ctrl+comma": 2, "F8": 2, "F6": 2, "F1": 1, "F10": 2, "F2": 1,
    "ctrl+alt+shift+t": 1, "ctrl+shift+v": 1, "ctrl+Return": 2, "Delete": 2, "Return": 8, "Escape": 10, "space": 4,
    "Tab": 6, "shift+Tab": 2, "Left": 4, "Right": 4, "Up": 3, "Down": 3, "shift+Right": 2, "Home": 1, "End": 1,
    "Page_Down": 1, "1": 1, "2": 1, "3": 1, "period": 1, "comma": 1, "ctrl+1": 2, "ctrl+3": 1, "ctrl+5": 1, "ctrl+8": 1,
    "alt+F4": 1, "shift+F10": 2,
}
TEXTS = ["", "a", "12.5", "-1", "0", "99999999999", "1e400", ".hidden", "..", "lesion/left", "photo.jpg", "Grüße", "%n%s",
         "x" * 300, "  ", "con", "10 mm", "2"]
STREAM_FAULTS = ["Stall the stream", "Damage the next frames", "Lose the next frames"]
STARTS = 6  # can be started, and the problems that a start may have
MOST_ELEMENTS = 200
DIALOG = 2  # seconds for one to appear; on slow computers it misses some
MAIN, ALBUMS = "BrimwellPro", "Albums"
# What takes more than one key, so that chance would seldom come to its end.
DEEDS = {
    "resolution": lambda monkey: monkey.pick("Resolution", 6),
    "rotation": lambda monkey: monkey.pick("Rotate", 4),
    "flip": lambda monkey: monkey.pick("Flip", 4),
    "product": lambda monkey: monkey.keys(MAIN, "alt+c", "p", *monkey.some("Down", 5), "Return"),
    "grid": lambda monkey: monkey.keys(MAIN, "alt+c", "p", "Home", "Return", "ctrl+g"),
    "camera": lambda monkey: monkey.keys(MAIN, "alt+c", "Up", *monkey.some("Up", 2), "Return"),
    "measurement": lambda monkey: monkey.measure(),
    "copy with measurements": lambda monkey: monkey.keys(MAIN, "ctrl+e") and monkey.answer(monkey.copy()),
    "comparison": lambda monkey: monkey.keys(MAIN, "ctrl+b", monkey.one_of("1", "2", "3"), "ctrl+shift+e")
    and monkey.answer(monkey.copy()),
    "series": lambda monkey: monkey.keys(MAIN, "ctrl+i") and monkey.answer("1"),
    "album added": lambda monkey: monkey.press(ALBUMS, "Add album")
    and monkey.answer(monkey.one_of("left", "right", "other")),
    "album deleted": lambda monkey: monkey.press(ALBUMS, "Delete album") and monkey.answer(),
    "album switched": lambda monkey: monkey.keys(ALBUMS) and monkey.pick("Album", 4),
    "trash": lambda monkey: monkey.keys(ALBUMS, monkey.one_of("Home", "End", "ctrl+a"), "Delete"),
    "trash and undo": lambda monkey: monkey.keys(ALBUMS, monkey.one_of("Home", "End", "ctrl+a"), "Delete", "ctrl+z"),
    "export": lambda monkey: monkey.keys(ALBUMS, monkey.one_of("Home", "End", "ctrl+a"), "ctrl+e")
    and monkey.answer(monkey.copy()),
    "movie": lambda monkey: monkey.keys(ALBUMS, "ctrl+a", "ctrl+shift+v") and monkey.answer(monkey.copy()),
}
PRESSED = {"push button", "toggle button", "check box", "radio button", "menu item", "check menu item", "radio menu item",
           "combo box", "slider", "spin button", "table cell", "list item", "page tab", "text", "button"}


class Monkey:
    """Its answers to step() say what it has done. The number it was given and that of the step alone decide, and what is
    there to be pressed: a step that found less than the last time changes none of those after it."""

    def __init__(self, desktop, command, seed):
        self.desktop, self.command, self.seed = desktop, command, seed
        self.random = None
        self.outside = desktop.folder / "outside"  # where it saves copies
        self.outside.mkdir()
        self.program = None
        self.starts = 0
        self.started = None
        self.is_killed = False
        self.counted = collections.Counter()  # what it has done, by kind
        self._acts = {self._key: 46, self._mouse: 16, self._element: 14, self._deed: 20, self._camera: 12, self._text: 4,
                      self._window: 3, self._wait: 3, self._quit: 1, self._kill: 1, self._second_start: 1,
                      self._foreign_file: 1}

    def start(self):
        self.starts += 1
        self.is_killed = False
        self.started = time.time()
        self.program = Program(self.desktop, self.command, log=f"program-{self.starts}.log")
        self.program.wait_for("frame", "BrimwellPro")

    def step(self, number):
        self.random = Random(f"{self.seed} {number}")
        act = self.random.choices(list(self._acts), list(self._acts.values()))[0]
        from gi.repository import GLib  # which looks at the environment
        try:
            said = act()
            self.counted[act.__name__[1:].replace("_", " ")] += 1
            return said
        except (GLib.Error, IndexError, ValueError):
            # What it looked for went away, or is busy with a menu. Whether the program answers is watched elsewhere.
            return f"{act.__name__}, too late"

    def _key(self):
        key = self.random.choices(list(KEYS), list(KEYS.values()))[0]
        times = self.random.choice([1, 1, 1, 1, 2, 3])
        self.desktop.input("key", "--clearmodifiers", *[key] * times)
        return f"key {key}" + f" {times} times" * (times > 1)

    def _text(self):
        text = self.random.choice(TEXTS)
        self.desktop.input("type", "--delay", 1, "--", text)
        return f'text "{text[:20]}"'

    def _place(self):
        """A point in one of the program's windows."""
        windows = self.program.windows()
        if not windows:
            return self.random.randrange(self.desktop.size[0]), self.random.randrange(self.desktop.size[1])
        area = self.random.choice(windows).area
        return area.x + int(self.random.random() * area.width), area.y + int(self.random.random() * area.height)

    def _mouse(self):
        x, y = self._place()
        kind = self.random.choice(["click", "click", "click", "double", "right", "drag", "wheel", "zoom"])
        if kind == "drag":
            to = self._place()
            self.desktop.input("mousemove", x, y, "mousedown", 1, "mousemove", *to, "mouseup", 1)
            return f"drag {x},{y} to {to}"
        more = {"click": ["click", 1], "double": ["click", "--repeat", 2, "--delay", 40, 1], "right": ["click", 3],
                "wheel": ["click", "--repeat", 3, self.random.choice([4, 5])],
                "zoom": ["keydown", "ctrl", "click", self.random.choice([4, 5]), "keyup", "ctrl"]}[kind]
        self.desktop.input("mousemove", x, y, *more)
        return f"{kind} at {x},{y}"

    def _element(self):
        """As a screen reader would: whatever can be pressed, in the window that has the keyboard."""
        windows = self.program.windows()
        window = next((each for each in windows if each.has_state("active")), windows[0] if windows else None)
        found = (element for element in window.descendants() if element.role in PRESSED and element.showing
                 and element.has_state("enabled") and element.actions) if window else ()
        elements = list(itertools.islice(found, MOST_ELEMENTS))
        if not elements:
            return "nothing to press"
        element = self.random.choice(elements)
        action = self.random.choice(element.actions)
        said = f'{action} {element.role} "{element.name[:40]}"'
        element.do(action)
        return said

    def one_of(self, *choices):
        return self.random.choice(choices)

    def some(self, key, most):
        return [key] * self.random.randrange(most + 1)

    def copy(self):
        """Where a copy is to be saved; often it is there already."""
        return str(self.outside / self.one_of("copy", "copy.jpg", "copy.png", "nowhere/copy", "movie"))

    def _deed(self):
        name = self.one_of(*DEEDS)
        if not DEEDS[name](self):
            return f"{name}, but nobody listens"
        self.counted[name] += 1
        return name

    def keys(self, window, *keys):
        """Into that window, which gets the keyboard, and is opened if need be."""
        search = ["xdotool", "search", "--onlyvisible", "--name", f"^{window}$"]
        if window == ALBUMS and not self.desktop.output(search):
            self.desktop.input("key", "F9")
        search[2:2] = ["--sync"]
        self.desktop.output(["timeout", str(DIALOG), *search, "windowactivate", "--sync"])
        if keys:
            self.desktop.input("key", "--clearmodifiers", *keys)
        return True

    def answer(self, text=""):
        """To a dialog, if there is one."""
        end = time.monotonic() + DIALOG
        while not any(each.role in ("dialog", "alert") and each.has_state("active") for each in self.program.windows()):
            if time.monotonic() > end:
                return False
            time.sleep(0.05)
        self.desktop.input("type", "--delay", 1, "--", text)
        self.desktop.input("key", "Return")
        return True

    def press(self, window, name):
        self.keys(window)
        return self._hand(name)

    def pick(self, name, count):
        """One of the choices of a box."""
        box = self.program.find("combo box", name)
        if box:
            self.desktop.click(box.area.x + box.area.width // 2, box.area.y + box.area.height // 2)
            self.desktop.input("key", "Home", *self.some("Down", count - 1), "Return")
        return bool(box)

    def measure(self):
        image = self.program.find(None, "Live image")
        if not image:
            return False
        self.keys(MAIN, "ctrl+m", f"ctrl+{self.one_of(1, 2, 3, 4, 5, 6, 7, 8)}")
        for _ in range(4):
            self.desktop.click(image.area.x + int(self.random.random() * image.area.width),
                               image.area.y + int(self.random.random() * image.area.height))
        return self.keys(MAIN, "Return", self.one_of("Escape", "ctrl+z", "ctrl+m"))

    def _hand(self, name):
        element = self.program.find(None, name)
        if not element or not element.actions:
            return False
        element.do(element.actions[0])
        return True

    def _camera(self):
        camera = self.one_of("High Resolution Microscope 1", "Regular Microscope 1")
        deed = self.one_of("Plug", "Plug", "Plug", "Plug", "Press Button", "Press Button", "Press Button", "Start", "Fault")
        if deed == "Plug":
            deed = next((name for name in ("Unplug", "Plug In") if self._hand(f"{camera}: {name}")), "nothing")
        elif deed == "Press Button":
            self._hand(f"{camera}: Press Button")
        elif deed == "Start":
            self.pick(f"{camera}: Start", self.one_of(1, STARTS))
        else:
            fault = self.random.randrange(len(STREAM_FAULTS))
            deed = STREAM_FAULTS[fault]
            if button := self.program.find(None, f"{camera}: Fault"):
                self.desktop.click(button.area.x + 5, button.area.y + 5)
                self.desktop.input("key", *["Down"] * (fault + 1), "Return")
        self.counted[deed] += 1
        return f"{camera}: {deed}"

    def _window(self):
        main = self.desktop.output(["xdotool", "search", "--onlyvisible", "--name", "^BrimwellPro$"]).split()
        if not main:
            return "no main window"
        window = main[0].decode()
        kind = self.random.choice(["size", "activate", "activate", "minimise"])
        if kind == "size":
            size = self.random.randrange(300, 1240), self.random.randrange(200, 740)
            self.desktop.output(["xdotool", "windowsize", window, str(size[0]), str(size[1])])
            return f"size {size}"
        if kind == "minimise":
            self.desktop.output(["xdotool", "windowminimize", window])
            self._wait()
        self.desktop.output(["xdotool", "windowmap", window, "windowactivate", window])
        return kind

    def _wait(self):
        seconds = self.random.choice([0.2, 0.5, 1, 2.5])
        time.sleep(seconds)
        return f"wait {seconds} s"

    def _quit(self):
        signum = self.random.choice([None, signal.SIGTERM])
        if signum:
            os.kill(self.program.pid, signum)
        else:
            self._window()
            self.desktop.input("key", "--clearmodifiers", "Escape", "Escape", "ctrl+q")
        return "SIGTERM" if signum else "key ctrl+q"

    def _kill(self):
        self.is_killed = True
        os.kill(self.program.pid, signal.SIGKILL)
        return "SIGKILL"

    def _second_start(self):
        second = self.desktop.spawn(self.command, log="second.log")
        end = time.monotonic() + 20 * PATIENCE
        while second.poll() is None and self.program.running:
            if time.monotonic() > end:
                raise Failure("the second start has not ended")
            time.sleep(0.1)
        if second.poll() is None:  # it has waited for the end of the first one
            second.send_signal(signal.SIGTERM)
            second.wait(timeout=20 * PATIENCE)
        elif second.returncode:
            raise Failure(f"the second start has ended with {second.returncode}")
        return "second start"

    def _foreign_file(self):
        """What others put into an album or take away from there."""
        albums = sorted((self.desktop.home / "BrimwellPro").glob("*/"))
        if not albums:
            return "no album"
        album = self.random.choice(albums)
        name = self.random.choice(["foreign.jpg", "20990101_image_001.jpg", "notes.txt", "20240101_video_001.mov"])
        (album / name).write_bytes(self.random.choice([b"", b"\xff\xd8\xff\xe0", bytes(5000)]))
        return f"foreign file {album.name}/{name}"
