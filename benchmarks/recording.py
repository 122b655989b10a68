#!/usr/bin/python3
"""Measures what recording costs while the live image is shown, beside ffmpeg that records the same frames and shows
nothing; how fast a snapshot is in its album; and whether memory stays flat over a long recording.
"""

import argparse
import statistics
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "e2e"))
from desktop import Desktop, Failure, wait_until  # noqa: E402
from media import Kind, Media, title  # noqa: E402
from players import OurProgram  # noqa: E402
from program_run import Run, cpu_seconds, memory_mib, table  # noqa: E402

KINDS = [Kind(2592, 1944, 30, "MJPEG"), Kind(1920, 1080, 30, "YUYV")]
LONG_KIND = Kind(1920, 1080, 30, "MJPEG")
LOOP_FRAMES = 60
PARTS = ["recording", "snapshot", "memory"]


class RecordingBench:
    def __init__(self, desktop, options):
        self.desktop = desktop
        self.media = Media()
        self.ours = OurProgram(options.build / "brimwellpro", desktop.home)
        self.seconds = 10 if options.quick else 60
        self.snapshots = 5 if options.quick else 30
        self.minutes = 1 if options.quick else 10
        self.album = desktop.home / "BrimwellPro" / "Default Album"

    def run(self, parts):
        for part in parts:
            {"recording": self.recording_table, "snapshot": self.snapshot_table, "memory": self.memory_table}[part]()

    def recording_table(self):
        print(f"## Recording for {self.seconds} s while the image is shown\n\nCPU milliseconds for each frame of the "
              "camera.\n")
        rows = []
        for kind in KINDS:
            shown = self.cpu_of_ours(kind)
            recorded = self.cpu_of_ours(kind, self.record)
            frames, missing = self.frames_of(self.movie, kind.rate)
            rows.append([title(kind) + f" {kind.rate}/s", f"{shown:.1f}", f"{recorded:.1f}", f"{recorded - shown:+.1f}",
                         frames, missing, f"{self.cpu_of_ffmpeg(kind):.1f}"])
            print(rows[-1], file=sys.stderr, flush=True)
        print(table(["", "shown", "shown and recorded", "recording adds", "frames recorded", "missing",
                     "ffmpeg, only recording"], rows) + "\n", flush=True)

    def start(self, kind):
        run = Run(self.desktop, self.ours.command(self.media.movie(kind, LOOP_FRAMES), kind), self.ours.ENVIRONMENT)
        run.wait_for_picture()
        time.sleep(1)
        return run

    def cpu_of_ours(self, kind, record=None):
        run = self.start(kind)
        if record:
            self.desktop.key("ctrl+shift+s")
            time.sleep(1)
        before = cpu_seconds(run.process.pid)
        time.sleep(self.seconds)
        used = cpu_seconds(run.process.pid) - before
        if record:
            record()
        run.quit()
        run.wait_for_end()
        return 1000 * used / (self.seconds * kind.rate)

    def record(self):
        """Ends the recording; `movie` is then where it is."""
        self.desktop.key("ctrl+shift+s")
        self.movie = wait_until("the movie is in the album", lambda: next(self.album.glob("*.mov"), None), seconds=60)

    @staticmethod
    def frames_of(movie, rate):
        """How many frames a movie has, and how many are missing by their times. The movie is removed."""
        found = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "packet=pts_time", "-of", "csv=p=0",
                                str(movie)], capture_output=True, text=True, check=True).stdout
        times = [float(line.strip(",")) for line in found.split()]
        movie.unlink()
        expected = round((times[-1] - times[0]) * rate) + 1
        return len(times), expected - len(times)

    def cpu_of_ffmpeg(self, kind):
        codec = ["-c", "copy"] if kind.format == "MJPEG" else ["-c:v", "mjpeg", "-pix_fmt", "yuvj422p", "-q:v", "2"]
        output = self.desktop.folder / "ffmpeg.mov"
        run = Run(self.desktop, ["ffmpeg", "-nostdin", "-loglevel", "error", "-re", "-stream_loop", "-1", "-i",
                                 str(self.media.movie(kind, LOOP_FRAMES)), "-frames:v", str(self.seconds * kind.rate),
                                 *codec, str(output)], {})
        run.wait_for_end(self.seconds + 60)
        output.unlink()
        return 1000 * run.cpu / (self.seconds * kind.rate)

    def snapshot_table(self):
        kind = KINDS[0]
        run = self.start(kind)
        keys = subprocess.Popen(["xdotool", "-"], env=self.desktop.environment, stdin=subprocess.PIPE, text=True)
        times = []
        for count in range(1, self.snapshots + 1):
            time.sleep(0.5 + 0.033 * (count % 7) / 7)  # at different moments of a frame
            pressed = time.monotonic()
            keys.stdin.write("key space\n")
            keys.stdin.flush()
            wait_until("the snapshot is in the album",
                       lambda n=count: len(list(self.album.glob("*.jpg"))) >= n, seconds=10, step=0.001)
            times.append(1000 * (time.monotonic() - pressed))
        keys.stdin.close()
        keys.wait()
        run.quit()
        run.wait_for_end()
        print(f"## From the key's press to the file in the album, {title(kind)} {kind.rate}/s\n\nMilliseconds, of "
              f"{self.snapshots} snapshots.\n")
        print(table(["median", "shortest", "longest"],
                    [[f"{value:.0f}" for value in (statistics.median(times), min(times), max(times))]]) + "\n",
              flush=True)

    def memory_table(self):
        run = self.start(LONG_KIND)
        self.desktop.key("ctrl+shift+s")
        time.sleep(10)
        marks, cells = [10], ["%.0f (%.0f)" % memory_mib(run.process.pid)]
        for part in range(1, 6):
            time.sleep(self.minutes * 60 / 5)
            marks.append(round(10 + self.minutes * 60 * part / 5))
            cells.append("%.0f (%.0f)" % memory_mib(run.process.pid))
        size = sum(path.stat().st_size for path in (self.desktop.folder / "tmp").glob("*.mov"))
        self.record()
        frames, missing = self.frames_of(self.movie, LONG_KIND.rate)
        run.quit()
        run.wait_for_end()
        print(f"## Memory in MiB during a recording of {title(LONG_KIND)} {LONG_KIND.rate}/s\n\nResident set, and in "
              "brackets proportional set.\n")
        print(table([f"after {mark} s" for mark in marks], [cells]))
        print(f"\n{frames} frames recorded, {missing} missing, {size / 1e9:.1f} GB.\n", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, default=ROOT / "build/release", help="where the programs are built")
    parser.add_argument("--quick", action="store_true", help="shorter runs, less exact")
    parser.add_argument("--part", action="append", choices=PARTS, help="only that; may be given several times")
    options = parser.parse_args()
    try:
        with Desktop(accessibility=False) as desktop:
            RecordingBench(desktop, options).run(options.part or PARTS)
    except Failure as failure:
        sys.exit(f"The benchmark has failed: {failure}")


if __name__ == "__main__":
    main()
