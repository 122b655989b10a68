# SPDX-License-Identifier: GPL-3.0-or-later
"""Saving pictures as a ZIP archive, beside `zip -6 -j` on the same files in the same run."""

import os
import shutil
import statistics
import subprocess
import time

from program_run import table

ORIGINALS = 25


def make_pictures(folder, count):
    """Pictures of 5 megapixels with the fine noise of a camera, about 1 MB each; every original several times."""
    folder.mkdir()
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


def measure_zip_export(stage):
    files = make_pictures(stage.desktop.folder / "pictures", 100 if stage.quick else 1000)
    rounds = 1 if stage.quick else 3
    out = stage.desktop.folder / "out.zip"
    size = sum(file.stat().st_size for file in files)
    for file in files:
        file.read_bytes()  # so that both programs read from memory
    commands = {"brimwellpro": ([stage.build / "tests/export/export_run", out], b"\0"),
                "zip -6 -j": (["zip", "-6jq@", out], b"\n")}
    runs = {name: [] for name in commands}
    archives, memory = {}, 0
    for _ in range(rounds):
        for name, (command, separator) in commands.items():
            out.unlink(missing_ok=True)
            seconds, cpu, output = measured(command, files, separator)
            runs[name].append((seconds, cpu))
            archives[name] = out.stat().st_size
            if name == "brimwellpro":
                before, most = map(int, output.split()[2:4])
                memory = max(memory, (most - before) / 1024)
    medians = {name: [statistics.median(values) for values in zip(*results)] for name, results in runs.items()}
    stage.results.add("ZIP export, time to zip's", medians["brimwellpro"][0] / medians["zip -6 -j"][0])
    stage.results.add("ZIP export, memory", memory)

    stage.head("Saving pictures as a ZIP archive",
               f"{len(files)} pictures, {size / 1e6:.0f} MB; {rounds} rounds in turn; medians. Ours is on the disk at its "
               "end, that of zip is not yet.")
    rows = [[name, f"{seconds:.1f}", f"{cpu:.1f}", f"{size / 1e6 / seconds:.0f}", f"{archives[name] / size:.2%}"]
            for name, (seconds, cpu) in medians.items()]
    stage.table(table(["", "seconds", "of CPU", "MB/s", "archive, of the files' size"], rows)
                + f"\n\nMemory of ours above idle: at most {memory:.0f} MiB.")
