#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""An hour of all that a busy day brings, at once: the live image of 5 megapixels at 30 frames a second, a snapshot every 5
seconds, twelve recordings that take a fifth of the time, a series of a picture each second, and the album window open. A
sixth of the time is a row of the table; the last one must be like the first, and every capture in the album.

A shorter run has shorter recordings, still two in each row.
"""

import argparse
import collections
import json
import os
import re
import shutil
import statistics
import sys
import time
import traceback
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "e2e"))
from desktop import Desktop, Failure, wait_until  # noqa: E402
from media import Kind, title  # noqa: E402
from players import numbers  # noqa: E402
from program_run import cpu_seconds, memory_mib, table  # noqa: E402
from recording import album, press_record  # noqa: E402
from soak_captures import Captures  # noqa: E402
from stage import Stage  # noqa: E402
from wanted import Results, machine  # noqa: E402

KIND = Kind(2592, 1944, 30, "MJPEG", 5)  # with less grain a frame has 0.4 MB, and the hour's captures 10 GB
ROWS, RECORDINGS = 6, 12
SNAPSHOT_EVERY, MEMORY_EVERY, REPORT_EVERY = 5, 5, 30  # seconds
OLD_PICTURES = 1600  # more than the window keeps thumbnails of
PAGE, LOOKS = 8, 8  # of these, and at all of them
HEAD = ["minutes", "private MiB", "resident MiB", "display's MiB", "open files", "threads", "CPU, %",
        "frames not shown, ‰", "latency, ms", "its 99th percentile", "longest hold-up, ms"]

Sample = collections.namedtuple("Sample", "files threads cpu")


class Soak:
    def __init__(self, stage, minutes):
        self.stage, self.desktop = stage, stage.desktop
        self.seconds = 60 * minutes
        self.report_every = min(REPORT_EVERY, max(5, self.seconds // (3 * ROWS)))
        self.desktop.environment["BW_STATISTICS_EVERY"] = str(self.report_every)
        self.samples, self.memory = [], []  # with the seconds since the beginning
        self.snapshots, self.recording, self.recordings = 0, None, []
        self.series, self.missed = self.desktop.home / ".config/BrimwellPro/series.json", 0

    def run(self):
        frames = self.stage.media.pictures(KIND)
        self._make_room(frames)
        for number, source in zip(range(OLD_PICTURES), sorted(frames.iterdir()) * OLD_PICTURES):
            os.link(source, album(self.stage) / f"20240607_image_{number + 1:06d}.jpg")
        before = set(album(self.stage).iterdir())
        self.program = self.stage.start_ours(KIND)
        self._look_through_album()
        self._start_series()
        self._use()
        wait_until("the series has ended", lambda: not self.series.exists(), seconds=60)
        self.program.quit()
        captures = Captures(set(album(self.stage).iterdir()) - before, self.program.log, frames, KIND.rate)
        captures.expect(self.snapshots + self.seconds, self.recordings)
        captures.faults += [f"left over: {path.name}" for path in (self.desktop.folder / "tmp").rglob("*.*")]
        return captures

    def _make_room(self, frames):
        folder = album(self.stage)
        folder.mkdir(parents=True)
        size = sum(path.stat().st_size for path in frames.iterdir()) / len(list(frames.iterdir()))
        needed = 1.2 * size * self.seconds * (KIND.rate / 5 + 1 + 1 / SNAPSHOT_EVERY)
        if shutil.disk_usage(folder).free < needed + (2 << 30):
            raise Failure(f"there must be {needed / 1e9 + 2:.0f} GB free in {self.desktop.folder.parent}; see TMPDIR")

    def _look_through_album(self):
        """Until the window has all the thumbnails that it keeps: more of them later would look like a leak."""
        self.desktop.key("F9")
        window = wait_until("the album window is there", lambda: self.desktop.output(
            ["xdotool", "search", "--onlyvisible", "--name", "^Albums$"]).split())[0].decode()
        time.sleep(2)
        self.desktop.input("mousemove", "--window", window, 72, 120, "click", 1)
        cache = Path(self.desktop.environment["XDG_CACHE_HOME"])
        for attempt in range(LOOKS):  # on a busy computer, a page is past before all its thumbnails are made
            self.desktop.input("sleep", 1, "key", "--delay", 250, "--repeat", OLD_PICTURES // PAGE, "Next")
            self.desktop.input("sleep", 2, "key", "Home")
            made = len(list(cache.rglob("thumbnails/*/*.png")))
            self.stage.progress(f"{made} of {OLD_PICTURES} thumbnails were made before")
            if made >= OLD_PICTURES:
                break
        else:
            raise Failure("the computer is too busy to make the thumbnails first")
        self.desktop.input("key", "Escape", "F6")  # back to the camera's window

    def _start_series(self):
        self.desktop.input("sleep", 1, "key", "ctrl+i", "sleep", 1, "key", "--delay", 50, "ctrl+a", 1, "alt+n", "Tab",
                           "ctrl+a", *str(self.seconds), "Return")
        wait_until("the series runs", self.series.exists)

    def _use(self):
        self.begin = time.monotonic()
        every = self.seconds / RECORDINGS
        deeds = [(second + 0.8, self._sample) for second in range(self.seconds)]  # between the pictures of the series
        deeds += [(second + 0.3, self._measure_memory) for second in range(0, self.seconds, MEMORY_EVERY)]
        deeds += [(second + 2.5, self._take_snapshot) for second in range(0, self.seconds - 2, SNAPSHOT_EVERY)]
        for number in range(RECORDINGS):
            deeds += [((number + part) * every + 0.7, self._press_record) for part in (0.2, 0.4)]
        for second, deed in sorted(deeds, key=lambda entry: entry[0]):
            time.sleep(max(0, self.begin + second - time.monotonic()))
            deed()

    def _now(self):
        return time.monotonic() - self.begin

    def _sample(self):
        pid = self.program.process.pid
        files, threads = (len(os.listdir(f"/proc/{pid}/{folder}")) for folder in ("fd", "task"))
        self.samples.append((self._now(), Sample(files, threads, cpu_seconds(pid))))
        try:
            self.missed = json.loads(self.series.read_text())["missed"]
        except FileNotFoundError:  # it has ended
            pass

    def _measure_memory(self):
        rollup = Path(f"/proc/{self.program.process.pid}/smaps_rollup").read_text()
        # Pages of libraries count as private, too, while no other program has them, so only what was written does here.
        private, resident = (int(re.search(rf"^{name}:\s+(\d+)", rollup, re.M)[1]) / 1024
                             for name in ("Private_Dirty", "Rss"))
        self.memory.append((self._now(), (private, resident, memory_mib(self.desktop.display.pid)[0])))

    def _take_snapshot(self):
        self.desktop.key("ctrl+s")
        self.snapshots += 1

    def _press_record(self):
        press_record(self.stage)
        if self.recording:
            self.recordings.append(self._now() - self.recording)
        self.recording = None if self.recording else self._now()

    def rows(self):
        """Of each part of the time, what it takes to compare it with others, by the names in HEAD."""
        reports = [(line["time_ms"] / 1000 - self.begin, line) for line in map(
            numbers, re.findall(r"^statistics:.*time_ms=.*", self.program.log, re.M))]
        held = [(float(ended) / 1000 - self.begin, float(blocked)) for blocked, ended in re.findall(
            r"blocked_ms=([\d.]+).* ended_ms=([\d.]+)", self.program.log)]
        length = self.seconds / ROWS
        return [self._row(part * length, (part + 1) * length, reports, held) for part in range(ROWS)]

    def _row(self, begin, end, reports, held):
        def within(values):
            return [value for when, value in values if begin <= when < end]
        samples, reports = within(self.samples), within(reports)
        first, last = reports[0], reports[-1]
        due = (last["time_ms"] - first["time_ms"]) / 1000 * KIND.rate
        values = [*map(statistics.median, zip(*within(self.memory))), *(
            min(getattr(sample, name) for sample in samples) for name in ("files", "threads")),
            100 * (samples[-1].cpu - samples[0].cpu) / (len(samples) - 1),
            max(0, 1000 * (1 - (last["shown"] - first["shown"]) / due)),
            *(statistics.median(report[name] for report in reports) for name in ("latency_ms", "latency_p99_ms")),
            max(within(held), default=0)]
        return dict(zip(HEAD, [f"{begin / 60:.3g}-{end / 60:.3g}", *values]))


def report(soak, captures, minutes, results):
    rows = soak.rows()
    first, last = rows[0], rows[-1]
    soak.stage.head(f"Soak: {minutes} minutes", f"{title(KIND)} {KIND.rate}/s with {soak.snapshots} snapshots, "
                    f"{RECORDINGS} recordings of {statistics.mean(soak.recordings):.0f} s and a series of {soak.seconds:,}. "
                    f"Medians; of files and threads the least, as a capture has some of its own for a moment; latencies are "
                    f"those of each {soak.report_every} s.")
    soak.stage.table(table(HEAD, [[row["minutes"], *(f"{row[name]:.1f}" for name in HEAD[1:])] for row in rows]))
    print(f"In the album: {len(captures.pictures):,} pictures and {len(captures.movies)} recordings with "
          f"{captures.frames:,} frames, of which {captures.missing} are missing; {captures.bytes() / 1e9:.1f} GB. The series "
          f"missed {soak.missed}.\n")
    for fault in captures.faults[:20]:
        print(f"- {fault}")
    for name, column in (("private memory", "private MiB"), ("open files", "open files"), ("threads", "threads")):
        results.add(f"soak, {name}, more at the end", last[column] - first[column])
    for name, column in (("latency", "latency, ms"), ("99th percentile of latency", "its 99th percentile")):
        results.add(f"soak, {name}, end to beginning", last[column] / first[column])
    results.add("soak, frames not shown, the worst part", max(row["frames not shown, ‰"] for row in rows))
    results.add("soak, frames missing in recordings", 1000 * captures.missing / max(1, captures.frames))
    results.add("soak, pictures missed by the series", soak.missed)
    results.add("soak, captures lost, damaged or double", len(captures.faults))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("minutes", type=int, nargs="?", default=60, help="3 at least")
    parser.add_argument("--build", type=Path, default=ROOT / "build/release", help="where the program is built")
    options = parser.parse_args()
    if options.minutes < 3:
        parser.error("3 minutes at least: else a recording is over before it has begun")
    stage_options = argparse.Namespace(build=options.build.resolve(), quick=False, ours=True)
    print(machine() + "\n", flush=True)
    results = Results()
    with Desktop(accessibility=False) as desktop:
        soak = Soak(Stage(desktop, stage_options, results), options.minutes)
        try:
            captures = soak.run()
        except Exception:
            traceback.print_exc()
            desktop.picture().save_png(ROOT / "build" / "soak.png")
            print((desktop.folder / "program.log").read_text(errors="replace")[-3000:])
            sys.exit(1)
        report(soak, captures, options.minutes, results)
    results.print()
    sys.exit(1 if captures.faults else 0)


if __name__ == "__main__":
    main()
