#!/usr/bin/python3
"""Measures how fast thumbnails of 5 megapixel JPEG files are made, beside other programs, on the same files.

Every program runs with the low priority that our workers have by themselves.
"""

import argparse
import os
import resource
import shutil
import subprocess
import sys
import time
from pathlib import Path

from media import KINDS, Media
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
    def __init__(self, build, count, peer_count):
        self.program = build / "benchmarks/bw_bench_thumbnails"
        media = Media()
        kind = next(kind for kind in KINDS if kind.format == "MJPEG" and kind.width == 2592)
        originals = sorted(media.pictures(kind).glob("*.jpg"))
        self.folder = media.folder / "thumbnails"
        shutil.rmtree(self.folder, ignore_errors=True)
        self.album, self.target = self.folder / "album", self.folder / "target"
        self.album.mkdir(parents=True)
        self.files = [self.album / f"20240607_image_{i + 1:03}.jpg" for i in range(count)]
        for i, file in enumerate(self.files):
            os.link(originals[i % len(originals)], file)
        self.peer_files = self.files[:peer_count]

    def run(self):
        print(f"On {os.cpu_count()} cores, load {os.getloadavg()[0]:.1f} before; {len(self.files)} files, "
              f"{len(self.peer_files)} for the others.\n")
        for pixels in (256, 500):
            rows = [*self.ours(pixels)]
            for name, command in PEERS.items():
                for at_once in (1, 2):
                    rows.append([f"{name}, {at_once} at a time", *self.peer(command, pixels, at_once)])
            print(f"## {pixels} pixels\n")
            print(table(["", "thumbnails per second", "CPU ms for each"], rows) + "\n", flush=True)
        shutil.rmtree(self.folder)

    def ours(self, pixels):
        shutil.rmtree(self.target, ignore_errors=True)
        command = [self.program, self.album, str(pixels), self.target]
        first, again = (numbers(subprocess.run(command, capture_output=True, text=True, check=True).stdout)
                        for _ in range(2))
        count = len(self.files)

        def row(name, result, key):
            return [name, f"{1000 * count / result[key]:.0f}", f"{result['cpu_ms'] / count:.1f}"]
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
            sys.exit(f"{words} made {made} of {count} thumbnails")
        return f"{count / seconds:.0f}", f"{1000 * used / count:.1f}"

    @staticmethod
    def cpu():
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        return used.ru_utime + used.ru_stime


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, required=True, help="the folder of the build")
    parser.add_argument("--files", type=int, default=500, help="how many files we are given")
    parser.add_argument("--peer-files", type=int, default=100, help="how many the others are given")
    options = parser.parse_args()
    Bench(options.build.resolve(), options.files, min(options.peer_files, options.files)).run()


if __name__ == "__main__":
    main()
