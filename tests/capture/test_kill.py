"""Kills recordings at random moments and counts what is missing after the next start."""

import os
import random
import sys
import tempfile
import time
from pathlib import Path

import capture_run
import numbered_movie

CASES = [("mjpeg", "640x480", 30), ("yuyv", "640x480", 30), ("mjpeg", "2592x1944", 15), ("yuyv", "2592x1944", 8)]
KILLS = int(os.environ.get("BW_KILLS", 4))  # of each case
LENGTH = 60  # pictures in the movie that the camera shows over and over


def kill_once(program, folder, movie, pixel_format, size, seconds):
    """The run, which knows how many frames were in the file, and the numbers that were read from it afterwards."""
    run = capture_run.CaptureRun(program, folder)
    run.record(movie, pixel_format, size)
    assert run.read_until("recording"), "the recording did not begin"
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        run.read_until("frame ")
    time.sleep(random.random() / 15)  # not always right after a frame
    run.kill()
    recovered = run.recover()
    assert not run.left_files(), f"left behind: {run.left_files()}"
    return run, numbered_movie.numbers(recovered) if recovered else []


def main(program):
    capture_run.seed()
    print(f"{'':20}  kills  frames written  lost at most in one kill  lost in all")
    failures = 0
    with tempfile.TemporaryDirectory(prefix="kill-") as folder:
        for pixel_format, size, rate in CASES:
            width, height = map(int, size.split("x"))
            movie = Path(folder) / f"{size}.mov"
            if not movie.exists():
                numbered_movie.make(movie, width, height, LENGTH, rate)
            written = 0
            losses = []
            for kill in range(KILLS):
                run, numbers = kill_once(program, f"{folder}/{pixel_format}-{size}-{kill}", movie, pixel_format, size,
                                         random.uniform(0.1, 0.9))
                losses.append(run.written - len(numbers))
                written += run.written
                if losses[-1] > 1 or not numbers or not run.has_in_order(numbers, LENGTH):
                    failures += 1
                    print(f"kill {kill}: frames {run.delivered}, {run.written} written, recovered {numbers}")
            print(f"{pixel_format:6} {size:>12}  {KILLS:6}  {written:14}  {max(losses):24}  {sum(losses):11}")
    return failures > 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
