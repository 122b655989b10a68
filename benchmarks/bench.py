#!/usr/bin/python3
"""Measures what the live image costs, beside other programs that show the same pictures on the same virtual display.

CPU per shown frame comes from two runs of different length each, so that starting does not count.
"""

import argparse
import os
import re
import signal
import statistics
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "e2e"))
from desktop import Desktop, Failure  # noqa: E402
from media import GRID_KINDS, KINDS, Media, title  # noqa: E402
from players import PLAYERS, PLAYER_ENVIRONMENT, WINDOW, OurProgram, numbers  # noqa: E402
from program_run import Run, cpu_seconds, memory_mib, table  # noqa: E402

US = "brimwellpro"


class Bench:
    def __init__(self, desktop, options):
        self.desktop = desktop
        self.media = Media()
        self.build = options.build
        self.players = [player for player in PLAYERS if not options.ours]
        self.ours = OurProgram(options.build / "brimwellpro", desktop.home)
        self.short, self.long = (1, 3) if options.quick else (2, 10)  # seconds
        self.starts = 1 if options.quick else 5
        self.memory_seconds = 20 if options.quick else 120
        self.kinds = [kind for kind in KINDS if re.search(options.only, title(kind))]
        self.grid_kinds = [kind for kind in GRID_KINDS if re.search(options.only, title(kind))]
        self.grid_rounds = 1 if options.quick else 5

    def run(self):
        print(f"On {os.cpu_count()} cores, load {os.getloadavg()[0]:.1f} before; window {WINDOW[0]}x{WINDOW[1]}.\n")
        if self.players:  # the first run of GStreamer scans its plugins
            self.desktop.output(["gst-inspect-1.0", "ximagesink"])
        self.cpu_table()
        self.grid_table()
        self.start_table()
        self.memory_table()

    # CPU

    def cpu_table(self):
        print("## CPU per shown frame\n\nMilliseconds of the program, and in brackets of the display server for it.\n")
        rows = [[f"{US}, 100 %"], [f"{US}, 50 %"], *([player.name] for player in self.players), ["TurboJPEG alone"]]
        for kind in self.kinds:
            cells = [self.cpu_of_ours(kind, zoom_out=0), self.cpu_of_ours(kind, zoom_out=5),
                     *(self.cpu_of_player(player, kind) for player in self.players), self.cpu_of_decoder(kind)]
            for row, cell in zip(rows, cells):
                row.append(cell)
                self.progress(f"{title(kind)}: {row[0]}: {cell}")
        print(table(["", *map(title, self.kinds)], rows))
        print("\nThe players fit the whole picture into the window; our program shows it at 100 % or 50 % and cuts off "
              "what does not fit.\n", flush=True)

    def cpu_of_ours(self, kind, zoom_out):
        def measure(seconds):
            run = self.start_ours(kind)
            for _ in range(zoom_out):
                self.desktop.key("ctrl+minus")
            time.sleep(seconds)
            run.quit()
            run.wait_for_end()
            return run, self.ours.statistics(run.log)["shown"]
        return self.cpu_between(measure)

    def grid_table(self):
        """Off and on alternate, so that other load affects both."""
        print("## The measuring grid\n\nCPU milliseconds of the program per shown frame at 100 %, median of "
              f"{self.grid_rounds}.\n")
        rows = [["off"], ["on"], ["more"]]
        for kind in self.grid_kinds:
            rounds = [[self.cpu_with_grid(kind, on) for on in (False, True)] for _ in range(self.grid_rounds)]
            off, on = (statistics.median(column) for column in zip(*rounds))
            for row, cell in zip(rows, (f"{off:.2f}", f"{on:.2f}", f"{100 * (on / off - 1):+.1f} %")):
                row.append(cell)
            self.progress(f"{title(kind)}: grid: {off:.2f} {on:.2f}")
        print(table(["", *map(title, self.grid_kinds)], rows) + "\n", flush=True)

    def cpu_with_grid(self, kind, on):
        """Between two moments of one run: the start is the same with and without it."""
        run = self.start_ours(kind, camera="high", product="dx10")
        first_picture = time.monotonic()
        if on:
            self.desktop.key("ctrl+g")
        time.sleep(1)
        cpu_before, begin = cpu_seconds(run.process.pid), time.monotonic()
        time.sleep(self.long)
        cpu, end = cpu_seconds(run.process.pid) - cpu_before, time.monotonic()
        run.quit()
        run.wait_for_end()
        frames = self.ours.statistics(run.log)["shown"] * (end - begin) / (end - first_picture)
        return 1000 * cpu / frames

    def start_ours(self, kind, **options):
        movie = self.media.movie(kind, self.frames(kind, self.long))
        run = Run(self.desktop, self.ours.command(movie, kind, **options), self.ours.ENVIRONMENT)
        run.wait_for_picture()
        return run

    def cpu_of_player(self, player, kind):
        def measure(seconds):
            frames = self.frames(kind, seconds)
            run = Run(self.desktop, player.command(self.media.movie(kind, frames), kind), PLAYER_ENVIRONMENT)
            run.wait_for_end()
            return run, frames
        return self.cpu_between(measure)

    def cpu_between(self, measure):
        (run_a, shown_a), (run_b, shown_b) = measure(self.short), measure(self.long)
        frames = shown_b - shown_a
        if frames < 1:
            return "no frames"
        program, display = (1000 * (b - a) / frames for a, b in
                            ((run_a.cpu, run_b.cpu), (run_a.display_cpu, run_b.display_cpu)))
        return f"{program:.1f} ({display:.1f})"

    def cpu_of_decoder(self, kind):
        if kind.format != "MJPEG":
            return ""
        frames = self.frames(kind, self.long)
        output = subprocess.run([self.build / "benchmarks/bw_bench_decode", self.media.pictures(kind), str(frames)],
                                capture_output=True, text=True, check=True).stdout
        return f"{numbers(output)['cpu_ms'] / frames:.1f}"

    def frames(self, kind, seconds):
        return seconds * kind.rate

    # Start

    def start_table(self):
        print("## From the start of the process to the first picture on the screen\n\nMilliseconds, median of "
              f"{self.starts}.\n")
        rows = [[US, *(self.start_of(lambda k=kind: self.start_ours(k)) for kind in self.kinds)]]
        for player in self.players:
            rows.append([player.name, *(self.start_of(lambda k=kind: self.start_player(player, k))
                                        for kind in self.kinds)])
        print(table(["", *map(title, self.kinds)], rows) + "\n", flush=True)

    def start_player(self, player, kind):
        movie = self.media.movie(kind, self.frames(kind, self.long))
        run = Run(self.desktop, player.command(movie, kind), PLAYER_ENVIRONMENT)
        run.wait_for_picture()
        return run

    def start_of(self, start):
        times = []
        for _ in range(self.starts):
            run = start()
            times.append(1000 * run.first_picture)
            self.end(run)
        return f"{statistics.median(times):.0f}"

    def end(self, run):
        run.process.send_signal(signal.SIGTERM)
        try:
            run.wait_for_end(10)
        except Failure:
            if run.process.returncode is None:
                raise  # ending by the signal is fine, surviving it is not

    # Memory

    def memory_table(self):
        kind = next((kind for kind in reversed(self.kinds) if kind.format == "MJPEG"), None)
        if not kind:
            return
        print(f"## Memory in MiB, {title(kind)}\n\nResident set, and in brackets proportional set.\n")
        rows = [self.memory_of(US, self.start_ours(kind))]
        for player in self.players:
            command = player.loop_command(self.media.movie(kind, self.frames(kind, self.long)), kind)
            if command:
                run = Run(self.desktop, command, PLAYER_ENVIRONMENT)
                run.wait_for_picture()
                rows.append(self.memory_of(player.name, run))
        print(table(["", "after 10 s", f"after {self.memory_seconds} s"], rows) + "\n", flush=True)

    def memory_of(self, name, run):
        cells = []
        for seconds in (10, self.memory_seconds - 10):
            time.sleep(seconds)
            cells.append("%.0f (%.0f)" % memory_mib(run.process.pid))
        self.end(run)
        return [name, *cells]

    def progress(self, text):
        print(text, file=sys.stderr, flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, default=ROOT / "build/release", help="where the programs are built")
    parser.add_argument("--quick", action="store_true", help="shorter runs, less exact")
    parser.add_argument("--ours", action="store_true", help="leave the other programs out")
    parser.add_argument("--only", default="", metavar="REGEX", help='only those pictures, e.g. "2592.*MJPEG"')
    options = parser.parse_args()
    try:
        with Desktop(accessibility=False) as desktop:
            Bench(desktop, options).run()
    except Failure as failure:
        sys.exit(f"The benchmark has failed: {failure}")


if __name__ == "__main__":
    main()
