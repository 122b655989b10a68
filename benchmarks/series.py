# SPDX-License-Identifier: GPL-3.0-or-later
"""What pictures that keep arriving cost while the window of a long album is open: those of a series, as fast as one can be,
and those of another program, faster than that."""

import argparse
import itertools
import os
import shutil
import time

from albums import AlbumBench
from desktop import wait_until
from program_run import cpu_seconds, memory_mib, table

FILES = 50_000  # of today, so that the next free number is beyond all of them
OTHERS_PACE = 20  # a second


class SeriesBench(AlbumBench):
    def make_album(self, files):
        self.album = self.desktop.home / "BrimwellPro" / "Default Album"
        shutil.rmtree(self.album, ignore_errors=True)
        self.album.mkdir(parents=True)
        sources = itertools.cycle(sorted(self.originals.iterdir()))
        self.names = (self.album / f"{time.strftime('%Y%m%d')}_image_{number:03d}.jpg" for number in itertools.count(1))
        self.links = zip(sources, self.names)
        for _ in range(files):
            self.add_file()

    def add_file(self):
        os.link(*next(self.links))

    def count(self):
        return sum(1 for _ in os.scandir(self.album))

    def measure(self, seconds):
        """Rows: what happens, pictures, CPU milliseconds more for each, longest hold-up, memory added."""
        run = self.start()
        self.desktop.key("F9")
        time.sleep(8)  # until its thumbnails are made
        resting = self.cost(run, seconds, lambda: time.sleep(seconds))
        self.desktop.key("F6")  # back to the camera's window
        rows = [self.row("another program's, %d a second" % OTHERS_PACE, resting,
                         self.cost(run, seconds, lambda: self.others_files(seconds)))]
        open_before = self.windows()
        self.desktop.key("ctrl+i")
        wait_until("its dialog is open", lambda: self.windows() > open_before)
        before = self.count()
        self.desktop.input("key", "--delay", 50, "ctrl+a", 1, "alt+s", "Return")
        wait_until("the series runs", lambda: self.count() > before)
        rows.append(self.row("a series, one a second", resting, self.cost(run, seconds, lambda: time.sleep(seconds))))
        self.desktop.key("ctrl+i")
        self.end(run)
        return rows

    def windows(self):
        return len(self.desktop.output(["xdotool", "search", "--onlyvisible", "--class", "brimwellpro"]).split())

    def others_files(self, seconds):
        for _ in range(OTHERS_PACE * seconds):
            self.add_file()
            time.sleep(1 / OTHERS_PACE)

    def cost(self, run, seconds, work):
        """Pictures, CPU seconds of the program, how long that took, hold-ups, memory added."""
        pictures, cpu, begin, memory = self.count(), cpu_seconds(run.process.pid), time.monotonic(), memory_mib(
            run.process.pid)[0]
        work()
        return (self.count() - pictures, cpu_seconds(run.process.pid) - cpu, time.monotonic() - begin,
                self.blocked(run, begin, time.monotonic()), memory_mib(run.process.pid)[0] - memory)

    @staticmethod
    def row(name, resting, cost):
        pictures, cpu, took, (longest, above, computed), memory = cost
        more = cpu - resting[1] * took / resting[2]
        return [name, pictures, f"{1000 * more / max(1, pictures):.1f}", longest, above, computed, f"{memory:.1f}"]


def measure_series(stage):
    bench = SeriesBench(stage.desktop, argparse.Namespace(build=stage.build, files=2_000 if stage.quick else FILES,
                                                          rounds=1, ways=1))
    rows = bench.measure(5 if stage.quick else 30)
    stage.head("Pictures that keep arriving", f"In an album of {bench.files:,} pictures of today, with its window open. CPU "
               "milliseconds of the program beyond those of the live image, for each picture; milliseconds for which the GUI "
               "thread was held up.")
    stage.table(table(["", "pictures", "CPU ms for each", "longest hold-up", "above 16", "longest computed", "MiB more"],
                      rows))
    stage.results.add("series, CPU of a picture", float(rows[1][2]))
    stage.results.add("series, hold-ups above 16 ms", sum(row[4] for row in rows))
