#!/usr/bin/python3
"""Measures saving a thousand pictures as a ZIP archive, beside `zip -6 -j` on the same files in the same run.

Usage: zip_export.py EXPORT_RUN [--files N] [--rounds N] [--folder FOLDER]
"""

import argparse
import os
import shutil
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

ORIGINALS = 50


def make_pictures(folder, count):
    """Pictures of 5 megapixels with the fine noise of a camera, about 1 MB each; every original several times."""
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i",
                    "mandelbrot=size=2592x1944:rate=5,noise=alls=9:allf=t", "-frames:v", str(min(ORIGINALS, count)),
                    "-q:v", "3", folder / "picture_%04d.jpg"], check=True)
    originals = sorted(folder.iterdir())
    for number in range(len(originals), count):
        shutil.copy2(originals[number % len(originals)], folder / f"picture_{number + 1:04d}.jpg")
    return sorted(folder.iterdir())


def measured(command, files, separator):
    """Seconds by the clock and of the processors, and what was printed. Earlier writes are flushed first."""
    os.sync()
    before, begin = os.times(), time.monotonic()
    run = subprocess.run(command, input=separator.join(map(os.fsencode, files)), stdout=subprocess.PIPE, check=True)
    end, after = time.monotonic(), os.times()
    cpu = after.children_user + after.children_system - before.children_user - before.children_system
    return end - begin, cpu, run.stdout.decode()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("export_run")
    parser.add_argument("--files", type=int, default=1000)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--folder", default="/var/tmp", help="where the files are made (%(default)s)")
    options = parser.parse_args()

    with tempfile.TemporaryDirectory(dir=options.folder) as holder:
        album, out = Path(holder) / "album", Path(holder) / "out.zip"
        album.mkdir()
        files = make_pictures(album, options.files)
        size = sum(file.stat().st_size for file in files)
        for file in files:
            file.read_bytes()  # so that both programs read from memory
        commands = {"brimwellpro": ([options.export_run, out], b"\0"), "zip -6 -j": (["zip", "-6jq@", out], b"\n")}
        runs = {name: [] for name in commands}
        archives, memory = {}, 0
        for _ in range(options.rounds):
            for name, (command, separator) in commands.items():
                out.unlink(missing_ok=True)
                seconds, cpu, output = measured(command, files, separator)
                runs[name].append((seconds, cpu))
                archives[name] = out.stat().st_size
                if name == "brimwellpro":
                    before, most = map(int, output.split()[2:4])
                    memory = max(memory, most - before)

        print(f"{len(files)} pictures, {size / 1e6:.0f} MB; {options.rounds} rounds in turn; medians. Ours is on the disk "
              "at its end, that of zip is not yet.\n")
        print("| | seconds | of CPU | MB/s | archive, of the files' size |\n| --- | --- | --- | --- | --- |")
        for name, results in runs.items():
            seconds, cpu = (statistics.median(values) for values in zip(*results))
            print(f"| {name} | {seconds:.1f} | {cpu:.1f} | {size / 1e6 / seconds:.0f} | {archives[name] / size:.2%} |")
        print(f"\nMemory of ours above idle: at most {memory / 1024:.0f} MiB")


if __name__ == "__main__":
    main()
