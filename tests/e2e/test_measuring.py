#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measuring in the real program: as exactly as a pointer can point, by keyboard alone, and as a screen reader tells it.

A simulated camera shows a picture with marks at known places. A test finds them on the screen by their colours, clicks on
them and compares what the program says, and where it draws, with what is known of the picture.

usage: test_measuring.py PROGRAM

BW_EVERY_LOOK=1/1 tries every turn, mirroring and zoom, and prints the largest errors; 2/4 the second quarter of them.
"""

import math
import os
import re
import subprocess
from collections import defaultdict, namedtuple
from pathlib import Path

from desktop import PATIENCE, wait_until
from keyboard_walk import KeyboardWalk
from program import ProgramTest, probed_measurements

IMPORT = Path(__file__).resolve().parent.parent / "import"
SIZE = (640, 480)
GROUND = (150, 150, 150)
# In the middle of squares with even edges, as two pixels share their colour.
MARKS = {"A": (156, 80), "B": (476, 120), "C": (440, 400), "D": (160, 380), "E": (300, 220)}
PAINT = {"A": (220, 30, 30), "B": (20, 180, 40), "C": (40, 50, 230), "D": (210, 30, 210), "E": (20, 190, 200)}
HOW_MUCH = {"A": lambda r, g, b: r - max(g, b), "B": lambda r, g, b: g - max(r, b), "C": lambda r, g, b: b - max(r, g),
            "D": lambda r, g, b: min(r, b) - g, "E": lambda r, g, b: min(g, b) - r,
            "drawn": lambda r, g, b: min(r, g) - b}
HALF_MARK = 6
ZOOMS = [*range(50, 201, 10), "fit"]

Look = namedtuple("Look", "turn flip zoom")  # flip: 1 sideways, 2 upside down, 3 both


def length(points):
    return sum(math.dist(*pair) for pair in zip(points, points[1:]))


def angle(points):
    one, other = (math.atan2(end[1] - points[1][1], end[0] - points[1][0]) for end in (points[0], points[2]))
    return math.degrees(abs(math.remainder(one - other, 2 * math.pi)))


def area(points):
    return abs(sum(a[0] * b[1] - b[0] * a[1] for a, b in zip(points, points[1:] + points[:1]))) / 2


def through(points):
    """The diameter of the circle through them."""
    return math.prod(math.dist(points[i], points[i - 1]) for i in range(3)) / (2 * area(points))


def disc(diameter):
    return lambda points: math.pi * diameter(points) ** 2 / 4


# Key, marks, whether Return ends it, and what it tells. The first is looked for on the screen later.
TOOLS = [("2", "AC", True, {"Path": length}), ("1", "BD", False, {"Length": length}),
         ("7", "EABCD", True, {"Count": len}), ("3", "ABC", False, {"Angle": angle}),
         ("4", "DEA", False, {"Through": through, "Disc": disc(through)}),
         ("5", "CE", False, {"Radius": lambda p: 2 * length(p), "Round": disc(lambda p: 2 * length(p))}),
         ("6", "ABCD", True, {"Polygon": area, "Around": lambda p: length(p + p[:1])})]


def in_the_worst_case(measure, points, step=0.01):
    """By how much a result changes for each pixel by which all coordinates are off, each the way that matters most."""
    moved = ([*points[:i], (x + dx, y + dy), *points[i + 1:]]
             for i, (x, y) in enumerate(points) for dx, dy in ((step, 0), (0, step)))
    return sum(abs(measure(other) - measure(points)) for other in moved) / step


def number(text):
    """With the half of its last digit that is known."""
    digits = re.match(r"[\d.]+", text.replace("\u202f", ""))[0]
    known = 10 ** -len(digits.partition(".")[2]) if "." in digits else 10 ** (len(digits) - len(digits.rstrip("0")))
    return float(digits), known / 2


class Measuring(ProgramTest):
    def setUp(self):
        named = re.search(r"at_scale_([\d_]+)", self.id())
        self.scale = float(named[1].replace("_", ".")) if named else 1
        self.screen_size = (int(1600 * self.scale), int(1000 * self.scale))
        super().setUp()
        self.look, self.in_view = Look(0, 0, 100), "ABCDE"

    def start_measuring(self, product="mx50_40", camera="high"):
        self.photo, self.camera = self.desktop.folder / "photo.ppm", camera
        rows = [[GROUND] * SIZE[0] for _ in range(SIZE[1])]
        for name, (x, y) in MARKS.items():
            for row in rows[y - HALF_MARK:y + HALF_MARK]:
                row[x - HALF_MARK:x + HALF_MARK] = [PAINT[name]] * 2 * HALF_MARK
        self.photo.write_bytes(b"P6 %d %d 255\n" % SIZE + bytes(part for row in rows for pixel in row for part in pixel))
        self.store(f'bwp2x_product_for_camera="{{\\"wired_{camera}\\":\\"{product}\\"}}"')
        self.open_tools()

    def open_tools(self):
        self.start("--simulate", f"{self.camera}={self.photo}", environment={"QT_SCALE_FACTOR": str(self.scale)})
        self.program.wait_for("push button", "Snapshot")
        self.put("Simulated cameras", 1150, 600)
        self.window = self.put("BrimwellPro", 0, 0, 1100, 940)
        self.desktop.input("windowactivate", "--sync", self.window, "mousemove", 30, 5)
        self.desktop.key("ctrl+m")
        self.program.wait_for("tool bar", "Measuring tools")

    def put(self, name, x, y, *size):
        window = wait_until(f"{name} is there", lambda: self.desktop.output(
            ["xdotool", "search", "--onlyvisible", "--name", f"^{name}$"]).decode().split())[-1]
        if size:
            self.desktop.input("windowsize", "--sync", window, *(int(side * self.scale) for side in size))
        self.desktop.input("windowmove", window, int(x * self.scale), int(y * self.scale))
        return window

    def turn_to(self, look):
        quarters = (look.turn - self.look.turn) // 90 % 4
        steps = 0 if look.zoom == "fit" else (look.zoom - 100) // 10
        keys = ["ctrl+h"] * ((look.flip ^ self.look.flip) & 1)
        keys += ["ctrl+j"] * ((look.flip ^ self.look.flip) >> 1) + ["ctrl+0"]
        keys += ["ctrl+9"] if look.zoom == "fit" else ["ctrl+plus"] * steps + ["ctrl+minus"] * -steps
        # With a pause, or a busy display may make a key that is held down of them, which turns once.
        self.desktop.input("mousemove", 30, 5, *["key", "ctrl+r", "sleep", 0.1] * quarters, "key", *keys)
        self.look = look

    def turned(self, x, y):
        x, y = (-x if self.look.flip & 1 else x), (-y if self.look.flip & 2 else y)
        for _ in range(self.look.turn // 90):
            x, y = y, -x  # against the clock
        return x, y

    def shot(self):
        """Of what is surely the picture's, and where that begins."""
        left, top = int(20 * self.scale), int(140 * self.scale)
        return self.desktop.picture(left, top, int(1060 * self.scale), int(740 * self.scale)), left, top

    def marks(self):
        """Where each mark's middle is on the screen, which begins with 0 at the left edge of its first pixel."""
        picture, left, top = self.shot()
        step, found = int(3 * self.scale), defaultdict(list)
        for y in range(0, picture.height, step):
            for x, pixel in zip(range(0, picture.width, step), picture.row(y, step)):
                if max(pixel) - min(pixel) > 60:
                    for name, how_much in HOW_MUCH.items():
                        if how_much(*pixel) > 60:
                            found[name].append((x, y))
        middles = {}
        for name, hits in found.items():
            (first_x, last_x), (first_y, last_y) = ((min(side) - step - 2, max(side) + step + 3) for side in zip(*hits))
            weights = [(HOW_MUCH[name](*picture.pixel(x, y)), x + 0.5, y + 0.5)
                       for y in range(max(0, first_y), min(last_y, picture.height))
                       for x in range(max(0, first_x), min(last_x, picture.width))]
            weights = [(max(0, weight - 15), x, y) for weight, x, y in weights]
            total = sum(weight for weight, _, _ in weights)
            middles[name] = (left + sum(weight * x for weight, x, _ in weights) / total,
                             top + sum(weight * y for weight, _, y in weights) / total)
        return middles

    def seen(self, drawn=False):
        """The marks, once they lie as this look has it, with nothing drawn over them unless that is said, and pixels of
        the screen for one of the picture."""
        last = {}

        def settled():
            nonlocal last
            before, last = last, self.marks()
            if last.pop("drawn", None) and not drawn:
                return False
            return before == last and {*last} == {*self.in_view} and self.as_told(last)

        wait_until(f"the picture lies as in {self.look}", settled)
        return last, self.zoom(last)

    def zoom(self, seen):
        one, other = self.in_view[0], self.in_view[2]
        return math.dist(seen[one], seen[other]) / math.dist(MARKS[one], MARKS[other])

    def as_told(self, seen):
        zoom = self.look.zoom / 100 * self.scale if self.look.zoom != "fit" else self.zoom(seen)
        first = self.in_view[-1]
        wanted = ([zoom * part for part in self.turned(MARKS[name][0] - MARKS[first][0], MARKS[name][1] - MARKS[first][1])]
                  for name in seen)
        return all(math.dist((x - seen[first][0], y - seen[first][1]), want) < 2
                   for (x, y), want in zip(seen.values(), wanted))

    def clicks(self, seen, names):
        return [part for name in names for part in self.desktop.clicking(*map(int, seen[name]))]

    def results(self):
        tree = self.program.find("tree", "Results")
        cells = [cell.name for cell in tree.children()] if tree else []
        return [text.replace("\xa0", " ") for text in cells[5::3]]

    def line_off(self, seen, names="AC"):
        """How a line through them is drawn once it is done again: how many pixels of the screen each end lies beside its
        mark, and how far it ends from there."""
        reach = int(14 * self.scale)

        def yellow(end, other):
            """What is drawn around that end: how yellow, how far along the line, how far beside it."""
            picture, left, top = self.shot()
            whole = math.dist(end, other)
            along, down = ((b - a) / whole for a, b in zip(end, other))
            first_x, first_y = int(end[0]) - left - reach, int(end[1]) - top - reach
            pixels = [(i + 0.5 + left - end[0], j + 0.5 + top - end[1], picture.pixel(i, j))
                      for i in range(first_x, first_x + 2 * reach) for j in range(first_y, first_y + 2 * reach)]
            return [(min(red, green) - blue, x * along + y * down, y * along - x * down)
                    for x, y, (red, green, blue) in pixels if min(red, green) - blue > 60]

        last = None

        def drawn(end, other):
            """Once it looks the same twice, with a pause: a display that was interrupted has drawn a part of it."""
            nonlocal last
            before, last = last, yellow(end, other)
            return last if last == before and any(far > reach * 0.8 for _, far, _ in last) else None

        seen = [seen[name] for name in names]
        ends = seen[:2], seen[:-3:-1]
        wait_until("nothing is drawn there yet", lambda: not any(yellow(*end) for end in ends))
        self.desktop.key("ctrl+shift+z")
        for end in ends:
            line = wait_until("it is drawn", lambda one=end: drawn(*one), step=0.05 * PATIENCE)
            sides = [(weight, aside) for weight, far, aside in line if far > 4 * self.scale]
            yield (abs(sum(weight * aside for weight, aside in sides) / sum(weight for weight, _ in sides)),
                   abs(min(far for _, far, _ in line) + 0.75 * self.scale - 0.5))  # it has a round end of that size

    def off_by(self, measure, marks, text):
        """By how many pixels of the picture each coordinate must be off at least for that to be told."""
        points = [MARKS[mark] for mark in marks]
        value, unknown = number(text)
        off = max(0, abs(value - measure(points)) - unknown)
        return off and off / (in_the_worst_case(measure, points) or 1e-9)

    def check_drawn(self, seen, names="AC"):
        """That a line which is done again begins and ends in the middle of the pixels that were clicked."""
        clicked = {name: [int(part) + 0.5 for part in place] for name, place in seen.items()}
        aside, far = map(max, zip(*self.line_off(clicked, names)))
        self.assertTrue(aside < 0.2 and far < 0.5, (self.look, aside, far))

    def check_looks(self):
        if part := os.environ.get("BW_EVERY_LOOK"):
            looks = [Look(i % 4 * 90, i // 4, zoom) for zoom in ZOOMS for i in range(16)]
            part, parts = map(int, part.split("/"))
            looks = looks[len(looks) * (part - 1) // parts:len(looks) * part // parts]
        else:
            looks = [Look(i % 4 * 90, i // 4, ZOOMS[(5 * i + int(2 * self.scale)) % len(ZOOMS)]) for i in range(16)]
        self.start_measuring()
        self.desktop.key("ctrl+shift+m")
        self.put("Results", 1150, 100)
        self.desktop.input("windowactivate", "--sync", self.window)
        worst, before = defaultdict(float), None
        for look in looks:
            self.turn_to(look)
            if before:
                self.press("ctrl+z")  # to see the marks
            seen, zoom = self.seen()
            if before:  # the line that was placed in the look before this lies between the marks
                off = max(map(max, self.line_off(seen))) / zoom
                worst["Drawn", look.zoom] = max(worst["Drawn", look.zoom], off)
                self.assertLess(off, 0.75 / before + 0.5 / zoom, look)  # on a slant
                self.press("ctrl+z")
            for key, marks, ends, _ in TOOLS:
                self.desktop.input("key", f"ctrl+{key}", *self.clicks(seen, marks), *(["key", "Return"] if ends else []))
            self.desktop.input("key", "ctrl+8", *self.clicks(seen, "AC"), "key", "e", "d", "g", "e", "Return", "mousemove",
                               30, 5)
            told = [(name, marks, measure) for _, marks, _, tells in TOOLS for name, measure in tells.items()]
            values = wait_until("all is measured", lambda: (
                texts if len(texts := self.results()) == len(told) else None))
            # A pointer means the middle of a pixel of the screen: each coordinate is off by half of one at most. Where the
            # picture is enlarged, that is less than half a pixel of the picture. The rest is for finding the marks.
            allowed = 0.5 / zoom + 0.05
            for (name, marks, measure), text in zip(told, values):
                pixels = self.off_by(measure, marks, text)
                worst[name, look.zoom] = max(worst[name, look.zoom], pixels)
                self.assertLessEqual(pixels, allowed, (look, name, text))
            before = zoom
            self.press(*["ctrl+z"] * (len(TOOLS) + 1))
            wait_until("all is undone", lambda: not self.results() or self.press("ctrl+z"))
            self.check_drawn(seen)
        for name in dict.fromkeys(name for name, _ in worst):
            print(name, *(f"{zoom}:{worst[name, zoom]:.3f}" for zoom in ZOOMS if (name, zoom) in worst), flush=True)

    def test_at_scale_1(self):
        self.check_looks()

    test_at_scale_1_5 = test_at_scale_2 = test_at_scale_1

    def test_measurements_stay_with_the_picture(self):
        def pan():
            self.desktop.input("mousemove", 500, 500, "mousedown", 2, "mousemove", 470, 460, "mouseup", 2, "mousemove",
                               30, 5)

        def resolution():
            self.turn_to(Look(0, 0, "fit"))
            self.program.click("combo box", "Resolution")
            self.desktop.key("End")  # of the same shape, which sees the same
            self.desktop.key("Return")
            self.desktop.input("mousemove", 30, 5)
            wait_until("it has more pixels", lambda: self.press("ctrl+z", "ctrl+shift+z") or (
                float(self.said(r"Path 1: ([\d.]+) px")[1]) > 500), step=0.5)

        self.start_measuring("mx51", "ultra")
        seen, _ = self.seen()
        self.desktop.input("key", "ctrl+2", *self.clicks(seen, "AC"), "key", "Return")
        for what in (lambda: self.turn_to(Look(0, 0, 170)), pan, lambda: self.turn_to(Look(90, 1, 70)),
                     lambda: self.desktop.key("ctrl+f"), lambda: self.turn_to(Look(270, 2, 130)),
                     lambda: self.desktop.key("ctrl+f"), resolution):
            what()
            self.desktop.key("ctrl+z")  # to see the marks
            seen, zoom = self.seen()
            self.assertLess(max(map(max, self.line_off(seen))), 0.75 * zoom + 0.5, self.look)  # it was placed at 100 %
        self.program.quit()

    def test_comparing(self):
        """Points belong to the camera's picture, whatever shows beside it, over it or in its place."""
        self.album.mkdir(parents=True)
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "color=0x969696:s=640x480", "-frames:v", "1",
                        self.album / "20240607_image_001.jpg"], check=True)
        self.start_measuring()
        self.press("ctrl+b")
        self.program.wait_for("tool bar", "Comparison")
        self.turn_to(Look(90, 1, 80))
        for alone in ([], ["ctrl+f", "ctrl+k", "ctrl+r", "ctrl+plus"]):  # frozen; the rest is for the other picture
            if alone:
                self.press(*alone)
            for key, mode in ("1", "Side by side"), ("2", "Overlay"), ("3", "Dividing line"):
                self.press(key)
                wait_until(mode, lambda name=mode: self.program.wait_for("check box", name).has_state("checked"))
                self.in_view = names = "ABE" if key == "3" else "ABCDE"  # the line covers the rest
                seen, zoom = self.seen()
                beside = [] if key == "2" else ["mousemove", 1000, 500, "click", 1]  # sets no point
                self.desktop.input("key", "ctrl+2", *self.clicks(seen, names[0]), *beside,
                                   *self.clicks(seen, names[1:]), "key", "Return", "mousemove", 30, 5)
                text = self.said(r"Path 1: ([\d.]+) px")[1]
                self.assertLess(self.off_by(length, names, text), 0.5 / zoom + 0.05, mode)
                self.press("ctrl+z")
                self.check_drawn(seen, names)
                self.press("ctrl+z")
        self.assertFalse(self.program.wait_for("check box", "Linked").has_state("checked"))
        self.press("ctrl+b")
        self.in_view = "ABCDE"
        seen, zoom = self.seen()
        self.assertLess(max(map(max, self.line_off(seen, names))), 0.75 * zoom + 0.5)
        self.program.quit()

    def press(self, *keys):
        """As a person does, who looks at what a key has done before the next one."""
        self.desktop.input("key", "--clearmodifiers", *keys)

    def said(self, pattern):
        """What a screen reader has been told last by the measuring tools."""
        def notice():
            strip = self.program.wait_for("tool bar", "Measuring tools")
            texts = [one.name.replace("\xa0", " ") for one in strip.children() if one.role == "notification"]
            return next((match for text in texts if (match := re.fullmatch(pattern, text, re.DOTALL))), None)

        return wait_until(f'it says "{pattern}"', notice)

    def line(self, told):
        """By keys, ten wide steps to the right."""
        self.press("ctrl+1", "space", *["shift+Right"] * 10, "space")
        self.said(told)
        self.press(*["shift+Left"] * 10)  # where the next one begins

    def calibrate(self, name):
        """With the last line, which is two millimetres long."""
        self.press("alt+m", "c")
        dialog = self.program.wait_for_active("dialog", "Calibrate")
        self.desktop.input("type", "2 mm")
        self.press("Tab")
        self.desktop.input("type", name)
        self.shows("label", r"The whole width of the picture shows 1\.\d+ cm\. Expected error: [\d.]+ %\.")
        self.assertEqual(KeyboardWalk(self.desktop, dialog).run(), [])
        self.press("alt+s")
        self.program.wait_for("combo box", name)
        self.program.wait_for_active("frame", "BrimwellPro")

    def shows(self, role, pattern):
        def shown():
            texts = (one.name.replace("\xa0", " ") for window in self.program.windows() for one in window.descendants()
                     if one.role == role and one.showing)
            return any(re.match(pattern, text, re.DOTALL) for text in texts)

        wait_until(f'{role} "{pattern}" shows', shown)

    def test_by_keyboard(self):
        self.start_measuring("dx10")  # of which 71 pixels are a millimetre
        window = self.program.wait_for_active("frame", "BrimwellPro")
        self.assertEqual(KeyboardWalk(self.desktop, window).run(), [])
        right, down, left, up = (["shift+" + arrow] * 10 for arrow in ("Right", "Down", "Left", "Up"))
        point = ["space"]
        for key, name, keys, told in (
                (1, "Length", point + right + point, r"Length 1: 1\.4[01]\d* mm"),
                (2, "Path", point + down + point + left + point + ["Return"], r"Path 1: 2\.8\d* mm"),
                (3, "Angle", point + right + point + up + point, r"Angle 1: 90\.0°"),
                (4, "Circle through three points", point + right + down + point + left + down + point,
                 r"Circle through three points 1: 2\.8\d* mm, 6\.\d+ mm²"),
                (5, "Circle by its radius", point + up + point, r"Circle by its radius 1: 2\.8\d* mm, 6\.\d+ mm²"),
                (6, "Polygon", point + right + point + down + point + ["Return"],
                 r"Polygon 1: (0\.99|1\.0)\d* mm², 4\.8\d* mm"),
                (7, "Count", point + left + point + ["Return"], "Count 1: 2"),
                (8, "Arrow", point + up + point + ["e", "d", "g", "e", "Return"], "Arrow 1: edge")):
            self.press(f"ctrl+{key}")
            self.said(name)
            self.assertTrue(self.program.wait_for("check box", name).has_state("checked"))
            self.press(*keys)
            self.said(told)

        self.press("ctrl+1")
        for keys, told in ((["shift+Left"], r"Position: \d+, \d+"), (point, "Length, points: 1"),
                           (right, r"Length: 1\.4[01]\d* mm, points: 1"), (["Escape"], r"Position: \d+, \d+")):
            self.press(*keys)
            self.said(told)
        self.press("Escape")
        self.said("Select and move")
        for keys, told in ((["Tab"], r"Length 1: 1\.4[01]\d* mm, point 1 of 2"), (["Right"], r"Length 1: 1\.39\d* mm, .*"),
                           (["shift+Left"], r"Length 1: 1\.5[34]\d* mm, .*"), (["ctrl+z"], r"Length 1: 1\.39\d* mm, .*"),
                           (["Delete"], "Removed. Measurements left: 7"), (["ctrl+z"], r"Length 1: 1\.39\d* mm"),
                           (["ctrl+shift+z"], "Removed. Measurements left: 7")):
            self.press(*keys)
            self.said(told)

        self.press("Escape")
        scale = self.program.wait_for("combo box", "Scale")
        wait_until("the scale has the keyboard", lambda: scale.has_state("focused") or self.press("Tab"), step=0.2)
        self.press("Up")
        self.program.wait_for("combo box", "No scale: pixels")
        self.press("ctrl+1", *point, *down, *point)  # the arrow keys are for the picture again
        self.said(r"Length 1: 100\.0 px")
        self.program.wait_for("combo box", "No scale: pixels")
        self.press("ctrl+l")
        wait_until("there is a scale bar", lambda: self.program.wait_for("check box", "Scale bar").has_state("checked"))
        self.press("ctrl+shift+m")
        self.program.wait_for("frame", "Results")
        panel = wait_until("the results have the keyboard", lambda: self.press("F6") or next(
            (one for one in self.program.windows() if one.name == "Results" and one.has_state("active")), None), step=0.5)
        self.assertEqual(KeyboardWalk(self.desktop, panel).run(), [])
        of = "Length 1"
        self.assertIn([("Measurement", of, "Length 100.0 px"), ("Quantity", "Length", of), ("Value", "100.0 px", of)],
                      self.program.find("tree", "Results").rows())
        file = self.desktop.home / "results.csv"
        self.press("ctrl+c", "alt+s")
        self.program.wait_for_active("dialog", "Save the results")
        self.desktop.input("type", str(file))
        self.press("Return")
        wait_until("they are saved", file.is_file)
        self.assertIn("Length 1,Length,100.0,px,", file.read_text())
        self.program.wait_for_active("frame", "Results")
        self.press("Escape")
        self.program.wait_for_active("frame", "BrimwellPro")
        self.press("ctrl+8", *point, *left, *point, "ctrl+v", "Return")  # what was copied
        self.said(r"Arrow 2: Measurement.*Length 1\W+Length\W+100\.0\W+px.*")

        self.calibrate("lens")
        self.shows("notification", "The scale is now “lens”; existing measurements follow it")
        self.press("alt+m", "i")
        dialog = self.program.wait_for_active("dialog", "Calibrations")
        self.assertEqual(KeyboardWalk(self.desktop, dialog).run(), [])
        told = ("Width of the picture", "1.280 cm"), ("Expected error", "0.71 %"), ("Lines measured", "1")
        self.assertEqual(self.program.find("tree", "Calibrations").rows()[1], [
            ("Name", "lens, in use", ", ".join(map(" ".join, told))), *((*cell, "lens") for cell in told)])
        self.press("Escape")
        self.program.wait_for_active("frame", "BrimwellPro")
        self.press("ctrl+s")
        picture, = wait_until("a picture is in the album", lambda: list(self.album.glob("*.jpg")))
        self.assertEqual(len(probed_measurements(picture)), 9)
        copy = self.desktop.home / "copy.png"
        self.press("ctrl+e")
        self.program.wait_for_active("dialog", "Save with measurements")
        self.desktop.input("type", str(copy))
        self.press("Return")
        wait_until("a copy is saved", copy.is_file)
        self.program.wait_for_active("frame", "BrimwellPro")
        self.press("F7")
        self.program.wait_for("image", f"{picture.name}, 1 of 1")
        before = picture.read_bytes()
        self.line(r"Length 2: 2\.00\d* mm")
        wait_until("it is in the file, too", lambda: len(probed_measurements(picture)) == 10)
        now = picture.read_bytes()
        self.assertEqual(now[now.index(b"\xff\xda"):], before[before.index(b"\xff\xda"):])
        self.press("ctrl+m")
        wait_until("the tools are gone", lambda: not self.program.find("tool bar", "Measuring tools"))
        self.program.quit()

    def test_calibrations_last(self):
        """Through other resolutions, a restart, an import and other products; and none is used where it may be wrong."""
        def choose(resolution, *keys):
            self.program.click("combo box", "Resolution")
            self.press(*keys, "Return")
            self.program.wait_for("combo box", resolution)
            self.desktop.input("windowactivate", "--sync", self.window, "mousemove", 30, 5)

        def use_product(key):
            self.press("alt+c", "p", key, "Return")

        self.start_measuring("mx51", "ultra")  # whose resolutions of one shape see the same
        self.line(r"Length 1: 100\.0 px")
        self.calibrate("lens")
        self.line(r"Length 2: 2\.00\d* mm")
        choose("2592x1944", "End")
        self.line(r"Length 3: 0\.49\d* mm")
        choose("1280x1024", "1", "2")
        self.shows("notification", "“lens” was made in pictures of another size or shape: lengths are in pixels")
        self.line(r"Length 1: 100\.0 px")
        self.program.quit()

        subprocess.run([IMPORT / "make_archives.py", self.desktop.folder, self.desktop.home], check=True)
        subprocess.run([self.executable, "--import-settings", self.desktop.folder / "defaults.xml"],
                       env=self.desktop.environment, check=True)
        self.open_tools()
        choose("640x480", "Home")
        self.line(r"Length 1: 2\.00\d* mm")
        use_product("Up")
        self.shows("notification", "No scale is chosen: lengths are now in pixels")
        self.line(r"Length 2: 100\.0 px")
        use_product("Down")
        self.shows("notification", "The scale is now “lens”; existing measurements follow it")
        self.line(r"Length 3: 2\.00\d* mm")
        self.program.quit()

    def fills_screen(self):
        return self.program.wait_for("image", "Live image").area[:3] == (0, 0, self.screen_size[0])

    def test_odd_orders(self):
        self.start_measuring()
        seen, _ = self.seen()
        self.desktop.input("key", "ctrl+2", *self.clicks(seen, "AB"))
        self.hand("Unplug")
        self.program.wait_for("dialog", "The camera was unplugged")
        self.desktop.input("windowactivate", "--sync", self.window, "key", "Return", "space", "mousemove", 30, 5)
        self.hand("Plug In")
        self.seen(drawn=True)
        self.desktop.input("windowactivate", "--sync", self.window, *self.clicks(seen, "C"))
        self.program.click("check box", "Scale bar")
        self.press("Return")  # which is still for the path
        path = self.said(r"Path 1: ([\d.]+) px")
        self.assertAlmostEqual(float(path[1]), length([MARKS[name] for name in "ABC"]), delta=2)
        self.desktop.input("key", "ctrl+8", *self.clicks(seen, "AE"), "key", "x", "Escape", "ctrl+1",
                           *self.clicks(seen, "D"), "key", "ctrl+f", *self.clicks(seen, "C"))
        self.said(r"Length 1: .*")  # frozen in the middle of it; and the arrow without a text is none
        self.desktop.input("mousemove", 30, 900, "key", "F11")
        wait_until("it fills the screen", self.fills_screen)
        self.desktop.input("key", "ctrl+1", *self.clicks(self.seen(drawn=True)[0], "A"))
        self.said("Length, points: 1")
        self.press("Escape", "Escape")  # ends the line just begun, then the tool
        self.said("Select and move")
        for leaves in (False, True):  # from the tools to the strip, then from the full screen
            self.press("Escape")
            wait_until(f"Escape ends it: {leaves}", lambda end=leaves: self.fills_screen() != end)
        self.press("ctrl+f", "ctrl+s")
        picture, = wait_until("a picture is in the album", lambda: list(self.album.glob("*.jpg")))
        self.program.wait_for("push button", f"Last capture: {picture.name}")
        self.press("F7")
        self.program.wait_for("image", f"{picture.name}, 1 of 1")
        self.desktop.input("key", "ctrl+1", *self.clicks(seen, "AB"))
        self.said(r"Length 2: .*")  # the snapshot came with the first two
        self.press("Escape", "Tab", "Delete")
        self.said("Removed. Measurements left: 2")
        self.assertTrue(picture.exists())


if __name__ == "__main__":
    Measuring.main()
