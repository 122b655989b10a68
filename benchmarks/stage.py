# SPDX-License-Identifier: GPL-3.0-or-later
"""What every part of the benchmark works with: a desktop, the movies, the program, and the results."""

import signal
import statistics
import subprocess
import sys
import time

from desktop import Failure
from media import Media
from players import PLAYER_ENVIRONMENT, PLAYERS, OurProgram, numbers
from program_run import Run, cpu_seconds

US = "brimwellpro"
LOOP_FRAMES = 60  # of the movies that our program repeats


class Stage:
    def __init__(self, desktop, options, results):
        self.desktop = desktop
        self.build = options.build
        self.quick = options.quick
        self.players = [] if options.ours else PLAYERS
        self.results = results
        self.media = Media()
        self.ours = OurProgram(options.build / "brimwellpro", desktop.home)

    def start_ours(self, kind, **options):
        """Our program with a simulated camera that repeats a movie, from the first picture on."""
        command = self.ours.command(self.media.movie(kind, LOOP_FRAMES), kind, **options)
        run = Run(self.desktop, command, self.ours.ENVIRONMENT)
        run.wait_for_picture()
        return run

    def run_player(self, player, kind, frames, loop=False):
        """None if it cannot repeat a movie."""
        command = (player.loop_command if loop else player.command)(self.media.movie(kind, frames), kind)
        return command and Run(self.desktop, command, PLAYER_ENVIRONMENT)

    def end(self, run):
        run.process.send_signal(signal.SIGTERM)
        try:
            run.wait_for_end(10)
        except Failure:
            if run.process.returncode is None:
                raise  # ending by the signal is fine, surviving it is not

    def cpu_while(self, run, seconds):
        """CPU seconds of the program and of the display, and how long that was."""
        def now():
            return cpu_seconds(run.process.pid), cpu_seconds(self.desktop.display.pid), time.monotonic()
        before = now()
        time.sleep(seconds)
        return [after - earlier for after, earlier in zip(now(), before)]

    def decode_alone(self, kind):
        """CPU milliseconds for each frame of an MJPEG movie, one after the other without a pause."""
        return self._alone(3, "decode", self.media.pictures(kind), 20, 0)

    def decode_at_rate(self, kind, seconds):
        """CPU milliseconds for each frame of an MJPEG movie, at its rate: after a pause, a processor takes longer."""
        return self._alone(1, "decode", self.media.pictures(kind), seconds * kind.rate, kind.rate)

    def encode_alone(self, kind, seconds):
        """CPU milliseconds for each frame of a YUYV movie, at its rate: after a pause, a processor takes longer."""
        return self._alone(1, "encode", self.media.raw_frames(kind), kind.width, kind.height, seconds * kind.rate, kind.rate)

    def _alone(self, times, what, *arguments):
        """The median of so many runs."""
        command = [self.build / f"benchmarks/bw_bench_{what}", *map(str, arguments)]
        runs = [subprocess.run(command, capture_output=True, text=True, check=True).stdout for _ in range(times)]
        return statistics.median(found["cpu_ms"] / found["frames"] for found in map(numbers, runs))

    def head(self, heading, text):
        print(f"## {heading}\n\n{text}\n")

    def table(self, text):
        print(text + "\n", flush=True)

    def progress(self, *what):
        print(*what, file=sys.stderr, flush=True)
