# SPDX-License-Identifier: GPL-3.0-or-later
"""Saving a smaller copy of a movie: its size and look, and the time it takes beside ffmpeg with the same settings."""

import os
import re
import statistics
import subprocess
import time

from program_run import table

RATE = 15
WIDTH, HEIGHT, SMALL = 1920, 1080, 1280
STEPS = {"high": 17, "medium": 23, "small": 26}  # x264's constant rate factors


def make_movie(folder, seconds):
    """As a camera records it: full range, 4:2:2, with the fine noise of a sensor."""
    movie = folder / "movie.mov"
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
                    f"mandelbrot=size={WIDTH}x{HEIGHT}:rate={RATE},noise=alls=6:allf=t", "-t", str(seconds), "-c:v", "mjpeg",
                    "-pix_fmt", "yuvj422p", "-q:v", "3", movie], check=True)
    return movie


def seconds_of(command):
    os.sync()
    begin = time.monotonic()
    subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, check=True)
    return time.monotonic() - begin


def likeness(copy, movie):
    """SSIM of all planes, at the size of the original; 1 for equal pictures."""
    scaled = f"scale={WIDTH}:{HEIGHT}:flags=bicubic:out_range=tv,format=yuv420p"
    report = subprocess.run(["ffmpeg", "-hide_banner", "-i", copy, "-i", movie, "-lavfi",
                             f"[0:v]{scaled}[a];[1:v]{scaled}[b];[a][b]ssim", "-f", "null", "-"],
                            capture_output=True, text=True, check=True).stderr
    return float(re.search(r"All:([0-9.]+)", report)[1])


def measure_smaller_movie(stage):
    folder = stage.desktop.folder
    movie = make_movie(folder, 4 if stage.quick else 20)
    rounds = 1 if stage.quick else 3
    size, threads = movie.stat().st_size, max(1, (os.cpu_count() or 1) - 1)
    rows = []
    for number, (name, factor) in enumerate(STEPS.items()):
        ours, theirs = folder / f"{name}.mp4", folder / f"{name}-ffmpeg.mp4"
        smaller = ["-vf", f"scale={SMALL}:-2:flags=bicubic"] if name == "small" else []
        commands = {ours: [stage.build / "tests/export/export_run", ours, "smaller", str(number), movie],
                    theirs: ["ffmpeg", "-v", "error", "-y", "-i", movie, *smaller, "-c:v", "libx264", "-preset", "faster",
                             "-crf", str(factor), "-g", str(5 * RATE), "-threads", str(threads), "-pix_fmt", "yuv420p",
                             "-movflags", "faststart", theirs]}
        taken = {file: [] for file in commands}
        for _ in range(rounds):
            for file, command in commands.items():
                taken[file].append(seconds_of(command))
        ratio = statistics.median(taken[ours]) / statistics.median(taken[theirs])
        stage.results.add("smaller movie, time to ffmpeg's", ratio)
        rows.append([name, f"{ours.stat().st_size / size:.1%}", f"{theirs.stat().st_size / size:.1%}",
                     f"{likeness(ours, movie):.4f}", f"{likeness(theirs, movie):.4f}", f"{ratio:.2f}"])
    stage.head("Saving a smaller movie",
               f"{size / 1e6:.0f} MB of {WIDTH}x{HEIGHT} MJPEG with noise; beside ffmpeg with the same settings and "
               f"{threads} threads of the encoder; {rounds} rounds in turn.")
    stage.table(table(["", "size, of the original's", "ffmpeg's", "SSIM", "ffmpeg's", "time to ffmpeg's"], rows))
