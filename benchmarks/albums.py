#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures the album window with ten thousand snapshots of 5 megapixels: from the window being up to the thumbnails of
all visible cells, how long the GUI thread is held up while it is scrolled from end to end, and memory after that. Or, with
--growth, how all of that grows with the number of files.
"""

import argparse
import os
import re
import shutil
import statistics
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "e2e"))
from desktop import Desktop, Failure, wait_until  # noqa: E402
from media import Kind, Media  # noqa: E402
from players import OurProgram  # noqa: E402
from program_run import Run, memory_mib, table  # noqa: E402

KIND = Kind(640, 480, 30, "MJPEG")  # what the camera delivers meanwhile
ORIGINALS = 20
GRID_TOP, GRID_BOTTOM = 70, 517  # of the window's 550 points: between the tabs and the lower edge
ROWS = 4  # fully visible
GREY = 12  # red, green and blue of a grey differ by less
GROWTH = 1_000, 10_000, 100_000  # files
NOT_BLOCKED = 8  # milliseconds: the program does not report shorter hold-ups


class AlbumBench:
    def __init__(self, desktop, options):
        self.desktop = desktop
        self.files = options.files
        self.rounds = options.rounds
        self.ways = options.ways
        self.ours = OurProgram(options.build / "brimwellpro", desktop.home)
        self.movie = Media().movie(KIND, 300)
        self.originals = desktop.folder / "originals"
        self.make_originals(self.originals)
        self.make_album(self.files)

    def make_originals(self, originals):
        """Few pictures with the fine noise of a camera, in full colours."""
        originals.mkdir()
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i",
                        "color=c=0xc02040:size=2592x1944:rate=5,hue=H=0.3*t,noise=alls=8:allf=t", "-frames:v",
                        str(ORIGINALS), "-q:v", "3", originals / "%02d.jpg"], check=True)
        self.size = sum(file.stat().st_size for file in originals.iterdir()) / ORIGINALS

    def make_album(self, files):
        """Many names for each of the originals."""
        album = self.desktop.home / "BrimwellPro" / "Default Album"
        shutil.rmtree(album, ignore_errors=True)
        album.mkdir(parents=True)
        sources = sorted(self.originals.iterdir())
        for number in range(files):
            os.link(sources[number % len(sources)], album / f"20240607_image_{number + 1:06d}.jpg")

    def run(self):
        print(f"{self.files} pictures of 5 megapixels, {self.size / 1e6:.1f} MB each; load {os.getloadavg()[0]:.1f} "
              "before.\n")
        thumbnails = Path(self.desktop.environment["XDG_CACHE_HOME"]) / "thumbnails"
        self.find_window()
        cold, warm = [], []
        for _ in range(self.rounds):
            shutil.rmtree(thumbnails, ignore_errors=True)
            for times in (cold, warm):
                run = self.start()
                times.append(self.open_window())
                wait_until("thumbnails are stored", lambda: len(list(thumbnails.rglob("*.png"))) >= 2 * ROWS)
                self.end(run)
        self.made = 1000 * statistics.median(all_there for _, all_there in cold)
        print("Milliseconds, median of", self.rounds, "(and the longest)\n")
        print(table(["", "from F9 to the window", "from the window to all its thumbnails"],
                    [self.times_row("thumbnails to be made", cold), self.times_row("thumbnails stored before", warm)]))
        self.scroll_table()

    # Growth

    def growth_table(self):
        """Each round opens the window once and takes a snapshot, which makes the program list the album again."""
        self.find_window()
        rows = []
        for files in GROWTH:
            self.make_album(files)
            results = [self.growth_round() for _ in range(self.rounds)]
            window, thumbnails, memory, opening, snapshot = zip(*results)
            rows.append([f"{files:,}", *(f"{1000 * statistics.median(times):.0f}" for times in (window, thumbnails)),
                         f"{statistics.median(memory):.1f}",
                         *("{} ({} ms computed)".format(*max(longest, key=lambda one: float(one[0].split()[-1])))
                           for longest in (opening, snapshot))])
            print(rows[-1], file=sys.stderr, flush=True)
        print(table(["files", "from F9 to the window, ms", "from there to its thumbnails, ms", "MiB more than before F9",
                     "longest hold-up of the GUI thread when opened, ms", "and for a snapshot, ms"], rows))

    def growth_round(self):
        run = self.start()
        before = memory_mib(run.process.pid)[0]
        begin = time.monotonic()
        window, thumbnails = self.open_window()
        time.sleep(2)
        opened = time.monotonic()
        memory = memory_mib(run.process.pid)[0] - before
        self.desktop.key("ctrl+s")
        time.sleep(3)
        holdups = [self.blocked(run, *times) for times in ((begin, opened), (opened, time.monotonic()))]
        self.end(run)
        return window, thumbnails, memory, *((longest, computed) for longest, _, computed in holdups)

    def times_row(self, name, times):
        return [name, *(f"{1000 * statistics.median(column):.0f} ({1000 * max(column):.0f})" for column in zip(*times))]

    def start(self):
        run = Run(self.desktop, self.ours.command(self.movie, KIND), self.ours.ENVIRONMENT)
        run.wait_for_picture()
        time.sleep(1)
        return run

    def end(self, run):
        run.quit()

    def open_window(self):
        """Seconds from the key to the window being painted, and from there to all its thumbnails."""
        begin = time.monotonic()
        self.desktop.key("F9")
        wait_until("the window is painted", lambda: self.pixel(200, 540) != (0, 0, 0), step=0.002)
        painted = time.monotonic()
        wait_until("all thumbnails are to be seen", self.thumbnails_there, step=0.002)
        return painted - begin, time.monotonic() - painted

    def find_window(self):
        """Its position, the same at every start."""
        run = self.start()
        self.desktop.key("F9")
        number = wait_until("the window is there", lambda: self.desktop.output(
            ["xdotool", "search", "--onlyvisible", "--name", "^Albums$"]).split())[0]
        place = self.desktop.output(["xwininfo", "-id", number]).decode()
        self.left, self.top = (int(re.search(rf"Absolute upper-left {name}:\s+(\d+)", place).group(1)) for name in "XY")
        wait_until("all thumbnails are to be seen", self.thumbnails_there)
        self.end(run)

    def pixel(self, x, y):
        return self.desktop.picture(self.left + x, self.top + y, 1, 1).pixel(0, 0)

    def thumbnails_there(self):
        """Placeholders have no colour. Of a row, a fifth is between the pictures."""
        def part_with_colour(x):
            picture = self.desktop.picture(self.left + x, self.top + GRID_TOP, 1, GRID_BOTTOM - GRID_TOP)
            pixels = [picture.pixel(0, y) for y in range(0, picture.height, 4)]
            return sum(max(pixel) - min(pixel) > GREY for pixel in pixels) / len(pixels)
        return all(part_with_colour(x) > 0.7 for x in (72, 208))

    # Scrolling

    def scroll_table(self):
        run = self.start()
        self.open_window()
        time.sleep(2)
        before = memory_mib(run.process.pid)[0]
        right, top, bottom = self.left + 287 - 7, self.top + GRID_TOP, self.top + GRID_BOTTOM
        ways = {
            "scroll bar to the end": lambda: self.drag(right, range(top + 22, bottom + 10)),
            "scroll bar back": lambda: self.drag(right, range(bottom - 22, top - 10, -1)),
            "mouse wheel, a hundred screens": lambda: self.desktop.input(
                "mousemove", self.left + 140, self.top + 300, "click", "--repeat", 800, "--delay", 10, 5),
            "page keys to the end": lambda: self.desktop.input(
                "mousemove", self.left + 72, self.top + 120, "click", 1, "sleep", 1,
                "key", "--delay", 8, "--repeat", self.files // (2 * ROWS) + 20, "Next"),
        }
        rows = []
        for name, scroll in list(ways.items())[:self.ways]:
            picture = self.scroll_bar()
            begin = time.monotonic()
            scroll()
            wait_until("the end has thumbnails", self.thumbnails_there)
            rows.append([name, f"{time.monotonic() - begin:.0f}", *self.blocked(run, begin, time.monotonic())])
            if self.scroll_bar() == picture:
                raise Failure(f"{name}: nothing has moved")
        after = memory_mib(run.process.pid)[0]
        self.end(run)
        self.memory, self.hold_ups = after, sum(row[3] for row in rows)
        print("\nHow long the GUI thread was held up at most, in milliseconds, and how often for longer than 16. What it computed "
              "meanwhile is less where other programs had the processors.\n")
        print(table(["scrolled by", "seconds", "longest", "above 16", "longest computed"], rows))
        print(f"\nResident set: {before:.0f} MiB with the window open, {after:.0f} MiB after scrolling.")

    def scroll_bar(self):
        picture = self.desktop.picture(self.left + 280, self.top + GRID_TOP, 1, GRID_BOTTOM - GRID_TOP)
        return [picture.pixel(0, y) for y in range(picture.height)]

    def drag(self, x, ys):
        steps = [part for y in ys for part in ("mousemove", x, y, "sleep", 0.02)]
        self.desktop.input("mousemove", x, ys[0], "mousedown", 1, *steps, "mouseup", 1)

    def blocked(self, run, begin, end):
        events = [(blocked, computed) for blocked, computed, ended in
                  (map(float, fields) for fields in
                   re.findall(r"blocked_ms=([\d.]+) computed_ms=([\d.]+) ended_ms=([\d.]+)", run.log))
                  if 1000 * begin <= ended <= 1000 * end]

        def longest(times):
            return f"{max(times):.1f}" if times and max(times) > NOT_BLOCKED else f"below {NOT_BLOCKED}"
        return [longest([blocked for blocked, _ in events]), sum(blocked > 16 for blocked, _ in events),
                longest([computed for _, computed in events])]


def measure_albums(stage):
    bench = AlbumBench(stage.desktop, argparse.Namespace(build=stage.build, files=10000,
                                                         rounds=1 if stage.quick else 5,
                                                         ways=1 if stage.quick else None))
    print("## An album\n")
    bench.run()
    print(flush=True)
    stage.results.add("album, window to its thumbnails, made", bench.made)
    stage.results.add("album, hold-ups above 16 ms", bench.hold_ups)
    stage.results.add("album, memory after scrolling", bench.memory)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=Path, default=ROOT / "build/release", help="where the program is built")
    parser.add_argument("--files", type=int, default=10000)
    parser.add_argument("--growth", action="store_true", help="how it grows with the number of files")
    parser.add_argument("--rounds", type=int, default=5, help="starts of each kind")
    parser.add_argument("--ways", type=int, help="how many ways of scrolling")
    parser.add_argument("--log", type=Path, help="keep the program's output of the scrolling in this file")
    options = parser.parse_args()
    try:
        with Desktop(accessibility=False) as desktop:
            bench = AlbumBench(desktop, options)
            bench.growth_table() if options.growth else bench.run()
            if options.log:
                shutil.copy(desktop.folder / "program.log", options.log)
    except Failure as failure:
        sys.exit(f"The benchmark has failed: {failure}")


if __name__ == "__main__":
    main()
