# SPDX-License-Identifier: GPL-3.0-or-later
"""How fast thumbnails of 5 megapixel JPEG files are made, beside other programs, on the same files.

Every program runs with the low priority that our workers have by themselves.
"""

import os
import resource
import shutil
import subprocess
import time

from desktop import Failure
from media import KINDS
from players import numbers
from program_run import table

PRIORITY = ["nice", "-n", "10"]


def one_by_one(*command):
    """One file to a process, as desktops call thumbnailers; `at_once` processes at a time."""
    def run(files, pixels, target, at_once):
        words = [word.format(pixels=pixels, target=target) for word in command]
        return ["xargs", "-0", "-P", str(at_once), "-I", "FILE", *words], "\0".join(file.name for file in files)
    return run


def many(*command):
    """Many files to a process."""
    def run(files, pixels, target, at_once):
        words = [word.format(pixels=pixels, target=target) for word in command]
        each = -(-len(files) // at_once)
        return ["xargs", "-0", "-P", str(at_once), "-n", str(each), *words], "\0".join(file.name for file in files)
    return run


PEERS = {
    "gdk-pixbuf-thumbnailer": one_by_one("gdk-pixbuf-thumbnailer", "-s", "{pixels}", "FILE", "{target}/FILE.png"),
    "ffmpegthumbnailer": one_by_one("ffmpegthumbnailer", "-s", "{pixels}", "-i", "FILE", "-o", "{target}/FILE.png"),
    "vipsthumbnail, to JPEG": many("vipsthumbnail", "-s", "{pixels}", "-o", "{target}/%s.jpg"),
    "vipsthumbnail, to PNG": many("vipsthumbnail", "-s", "{pixels}", "-o", "{target}/%s.png"),
}


class Bench:
    def __init__(self, stage, count, peer_count):
        self.program = stage.build / "benchmarks/bw_bench_thumbnails"
        kind = next(kind for kind in KINDS if kind.format == "MJPEG" and kind.width == 2592)
        originals = sorted(stage.media.pictures(kind).glob("*.jpg"))
        self.folder = stage.desktop.folder / "thumbnails"
        self.album, self.target = self.folder / "album", self.folder / "target"
        self.album.mkdir(parents=True)
        self.files = [self.album / f"20240607_image_{i + 1:03}.jpg" for i in range(count)]
        for i, file in enumerate(self.files):
            os.link(originals[i % len(originals)], file)
        self.peer_files = self.files[:peer_count]

    def run(self, pixels, at_once):
        """Rows of a table: name, thumbnails per second, CPU milliseconds for each."""
        rows = [*self.ours(pixels)]
        for name, command in PEERS.items():
            for count in at_once:
                rows.append([f"{name}, {count} at a time", *self.peer(command, pixels, count)])
        return rows

    def ours(self, pixels):
        shutil.rmtree(self.target, ignore_errors=True)
        command = [self.program, self.album, str(pixels), self.target]
        first, again = (numbers(subprocess.run(command, capture_output=True, text=True, check=True).stdout)
                        for _ in range(2))
        count = len(self.files)

        def row(name, result, key):
            return [name, 1000 * count / result[key], result["cpu_ms"] / count]
        return [row("brimwellpro, until shown", first, "shown_ms"), row("brimwellpro, until stored", first, "stored_ms"),
                row("brimwellpro, its next start", again, "shown_ms")]

    def peer(self, command, pixels, at_once):
        shutil.rmtree(self.target, ignore_errors=True)
        self.target.mkdir()
        words, names = command(self.peer_files, pixels, self.target, at_once)
        used, begin = self.cpu(), time.monotonic()
        subprocess.run([*PRIORITY, *words], input=names, text=True, cwd=self.album, check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        seconds, used = time.monotonic() - begin, self.cpu() - used
        made, count = len(list(self.target.iterdir())), len(self.peer_files)
        if made != count:
            raise Failure(f"{words} made {made} of {count} thumbnails")
        return count / seconds, 1000 * used / count

    @staticmethod
    def cpu():
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        return used.ru_utime + used.ru_stime


def measure_thumbnails(stage):
    bench = Bench(stage, *((100, 20) if stage.quick else (500, 100)))
    for pixels in (256, 500):
        rows = bench.run(pixels, (2,) if stage.quick else (1, 2))
        ours, others = rows[0], rows[3:]
        stage.results.add(f"thumbnails of {pixels} pixels, best other to ours", max(row[1] for row in others) / ours[1])
        stage.head(f"Thumbnails of {pixels} pixels", "The same 5-megapixel JPEGs for all, on both processors, at the same "
                   "low priority.")
        stage.table(table(["", "thumbnails per second", "CPU ms for each"],
                          [[name, f"{rate:.0f}", f"{cpu:.1f}"] for name, rate, cpu in rows]))
