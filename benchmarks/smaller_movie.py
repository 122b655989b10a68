# SPDX-License-Identifier: GPL-3.0-or-later
"""Saving a smaller copy of a movie: its size and look, and the time it takes beside ffmpeg with the same settings. What the
live view shows meanwhile, and while pictures become a movie."""

import itertools
import os
import re
import statistics
import subprocess
import time

from desktop import Desktop, wait_until
from media import Kind, title
from players import OurProgram
from program import Program, wait_for_picture
from program_run import table
from stage import LOOP_FRAMES

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


VIEWED = Kind(1920, 1080, 30, "MJPEG")
LARGER = Kind(2592, 1944, 15, "MJPEG")  # between them, so that pictures of the other size must be encoded
FILES = 400


class SavingView:
    """The program with the window of an album that has a movie and pictures, and the statistics over the live view."""

    FIGURES = re.compile(r"Camera (\d+) fps, Screen (\d+) fps, Dropped ([\d,]+), Latency (\d+) ms")

    def __init__(self, stage, desktop):
        self.desktop = desktop
        self.album = desktop.home / "BrimwellPro" / "Default Album"
        self.album.mkdir(parents=True)
        movie = stage.media.movie(VIEWED, LOOP_FRAMES)
        subprocess.run(["ffmpeg", "-v", "error", "-stream_loop", "2" if stage.quick else "11", "-i", movie, "-c", "copy",
                        self.album / "v.mov"], check=True)
        sources = itertools.cycle(zip(*(sorted(stage.media.pictures(kind).iterdir()) for kind in (VIEWED, LARGER))))
        files = FILES // 4 if stage.quick else FILES
        for number, source in zip(range(1, files + 1), itertools.chain.from_iterable(sources)):
            os.link(source, self.album / f"{number:04d}.jpg")
        self.newest = f"{files:04d}, image"
        ours = OurProgram(stage.build / "brimwellpro", desktop.home)
        self.program = Program(desktop, ours.command(movie, VIEWED), ours.ENVIRONMENT)
        wait_for_picture(self.program)
        desktop.key("ctrl+shift+i")
        self.panel = self.program.wait_for(None, "Statistics")
        desktop.key("F9")
        self.program.wait_for("frame", "Albums")

    def begin(self, tab, cell, dialog):
        self.program.activate(self.program.wait_for("frame", "Albums"))
        self.program.click("page tab", tab)
        self.program.click("table cell", cell)
        self.desktop.key("ctrl+a")
        self.desktop.key("ctrl+shift+v")
        self.program.wait_for_active("dialog", dialog)
        self.desktop.key("Return")
        self.program.wait_for("text", "File name:")
        self.program.wait_for_active("dialog", dialog)
        self.desktop.key("Return")

    def figures(self):
        """Frames per second of camera and screen, frames dropped so far, latency."""
        return [float(figure.replace(",", "")) for figure in self.FIGURES.match(self.panel.description).groups()]

    def watch(self, seconds, made=None):
        """Each second, at most until a movie is there."""
        known, end, seen = set(self.album.iterdir()), time.monotonic() + seconds, [self.figures()]
        while time.monotonic() < end and not (made and self.finished(made, known)):
            time.sleep(1)
            seen.append(self.figures())
        if made:
            wait_until("the movie is there", lambda: self.finished(made, known), seconds=300).unlink()
        camera, screen, dropped, latency = zip(*seen)
        return (statistics.mean(camera[1:]), statistics.mean(screen[1:]), (dropped[-1] - dropped[0]) / (len(seen) - 1),
                statistics.mean(latency[1:]))

    def finished(self, ending, known):
        return next((file for file in self.album.glob(f"*.{ending}") if file not in known), None)


def measure_saving_view(stage):
    seconds, rounds = (4, 1) if stage.quick else (15, 3)
    with Desktop() as desktop:
        view = SavingView(stage, desktop)
        works = {"nothing else": None, "a smaller movie": ("mp4", "Videos", "v, video", "Save as Smaller Movie"),
                 "a movie of pictures, half of them encoded":
                     ("mov", "Images", view.newest, "Make a Movie of the Pictures")}
        taken = {name: [] for name in works}
        for name, work in rounds * list(works.items()):  # in turn, so that other load affects all
            if work:
                view.begin(*work[1:])
            taken[name].append(view.watch(seconds, work and work[0]))
            stage.progress(name, taken[name][-1])
        view.program.quit()
    means = {name: [statistics.mean(figures) for figures in zip(*all_rounds)] for name, all_rounds in taken.items()}
    alone = means["nothing else"][1]
    for _, screen, _, _ in means.values():
        stage.results.add("live view, frames lost to an encoder", 100 * (1 - screen / alone))
    stage.head("The live view while a movie is made",
               f"{title(VIEWED)} at {VIEWED.rate} a second, on {os.cpu_count()} processors; means of {rounds} times "
               f"{seconds} s in turn.")
    stage.table(table(["", "camera, frames a second", "screen", "dropped a second", "latency, ms"],
                      [[name, *(f"{figure:.1f}" for figure in figures)] for name, figures in means.items()]))
