# SPDX-License-Identifier: GPL-3.0-or-later
"""How recordings end when no one presses stop, and what becomes of them after a kill or on a slow or full disk."""

import os
import random
import re
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import numbered_movie

LENGTH = 60  # pictures in the movie that the camera shows over and over
KILLS = int(os.environ.get("BW_KILLS", 4))  # of each kind of recording
ASKED, CAMERA_CHANGED, CAMERA_GONE, DISK_FULL = 1, 2, 3, 4


class CaptureRun:
    """Runs capture_run in a home and a temporary folder of its own."""

    def __init__(self, folder, temporary, home, surroundings, arguments):
        self.home = home or folder / "home"
        self.temporary = temporary or folder / "tmp"
        self.home.mkdir(parents=True, exist_ok=True)
        self.temporary.mkdir(parents=True, exist_ok=True)
        self.environment = {**os.environ, "HOME": str(self.home), "TMPDIR": str(self.temporary),
                            "XDG_CONFIG_HOME": str(self.home / "config")}
        self.delivered = []  # the sequence numbers of the frames
        self.written = 0
        self.lines = []
        self.process = subprocess.Popen([PROGRAM, "record", *arguments], env={**self.environment, **surroundings},
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1)

    def read_until(self, word):
        """Reads lines up to the first that begins with the word; None at the end of the output."""
        for line in self.process.stdout:
            self.lines.append(line.strip())
            if line.startswith("frame "):
                sequence, self.written = map(int, line.split()[1:])
                self.delivered.append(sequence)
            if line.startswith(word):
                return line.strip()
        return None

    def read_frames(self, count):
        for _ in range(count):
            self.read_until("frame ")

    def say(self, word):
        self.process.stdin.write(word + "\n")
        self.process.stdin.flush()

    def kill(self):
        self.process.kill()
        self.end()

    def end(self):
        """With its exit code."""
        self.read_until("nothing: what was printed before the end")
        self.process.stdin.close()
        self.process.stdout.close()
        return self.process.wait()

    def recover(self):
        """The file in the album; None if there was nothing to recover."""
        result = subprocess.run([PROGRAM, "recover"], env=self.environment, stdout=subprocess.PIPE, text=True,
                                timeout=60, check=True)
        words = result.stdout.split(maxsplit=2)
        return Path(words[2].strip()) if words[:2] == ["recovered", "1"] else None

    def has_in_order(self, numbers):
        """Whether they are numbers of frames that followed each other."""
        expected = [sequence % LENGTH for sequence in self.delivered]
        return any(expected[at:at + len(numbers)] == numbers for at in range(len(expected) - len(numbers) + 1))

    def left_files(self):
        return sorted(path for path in self.temporary.rglob("*") if not path.is_dir())


class Recordings(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="endings-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def record(self, size="640x480", rate=30, temporary=None, name="run", pixel_format="mjpeg", home=None, **surroundings):
        movie = Path(os.environ.get("BW_MOVIES", self.folder), f"{size}.mov")
        if not movie.exists():
            numbered_movie.make(movie, *map(int, size.split("x")), LENGTH, rate)
        run = CaptureRun(self.folder / name, temporary, home, surroundings, [str(movie), pixel_format, size])
        self.assertTrue(run.read_until("recording"))
        return run

    def saved(self, run, end):
        """The numbers in the movie that was saved."""
        line = run.read_until("end")
        self.assertEqual(line.split()[1], str(end), line)
        self.left_out = int(line.split()[3])
        line = run.read_until("saved")
        self.assertTrue(line, "not saved")
        self.assertEqual(run.end(), 0)
        path = Path(line.split(maxsplit=1)[1])
        self.assertEqual(run.left_files(), [])
        self.path = path
        return numbered_movie.numbers(path)

    def assert_players_agree(self, path):
        """Other players can read the length and seek."""
        found = subprocess.run(["gst-discoverer-1.0", str(path)], capture_output=True, text=True).stdout
        self.assertIn("Quicktime", found)
        self.assertIn("Seekable: yes", found)
        hours, minutes, seconds = re.search(r"Duration: (\d+):(\d+):([\d.]+)", found).groups()
        probed = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0",
                                 str(path)], capture_output=True, text=True).stdout
        self.assertAlmostEqual(int(hours) * 3600 + int(minutes) * 60 + float(seconds), float(probed), delta=0.01)


class Endings(Recordings):
    def test_unplugged_or_changed_at_any_moment(self):
        for attempt in range(10):
            word, end = random.choice([("unplug", CAMERA_GONE), ("smaller", CAMERA_CHANGED)])
            with self.subTest(attempt=attempt, word=word):
                run = self.record("1280x1024" if word == "smaller" else "640x480", name=str(attempt))
                run.read_frames(random.randrange(20))
                run.say(word)
                numbers = self.saved(run, end)
                self.assertTrue(numbers)
                self.assertTrue(run.has_in_order(numbers), f"{run.delivered}: {numbers}")
        self.assert_players_agree(self.path)

    def test_slow_disk(self):
        """Frames are left out and counted, the others are whole, and the camera is not held up."""
        run = self.record("1600x1200", 15, LD_PRELOAD=FAILING_CALLS, pixel_format="yuyv",
                          FAULT="1 0 1 1 150000 0 .mov")  # each write takes a while
        run.read_frames(55)
        run.say("stop")
        numbers = self.saved(run, ASKED)
        self.assertGreater(self.left_out, 0)
        self.assertGreater(len(numbers), 5)
        delivered = len(run.delivered)
        print(f"slow disk: {delivered} frames came, {len(numbers)} in the movie, {self.left_out} left out")
        self.assertLessEqual(abs(delivered - len(numbers) - self.left_out), 2)
        # The camera's own numbers show what it lost because its buffers were held.
        lost = run.delivered[-1] - run.delivered[0] + 1 - delivered
        self.assertLessEqual(lost, delivered // 4)

    def test_album_on_a_slow_disk_of_its_own(self):
        """The copy reports its progress, and the temporary file goes only once the copy is complete."""
        album = tempfile.TemporaryDirectory(dir="/dev/shm")
        self.addCleanup(album.cleanup)
        self.assertNotEqual(os.stat(album.name).st_dev, self.folder.stat().st_dev)
        run = self.record("1600x1200", 15, home=Path(album.name), LD_PRELOAD=FAILING_CALLS,
                          FAULT="1 0 1 1 700000 1 part")
        run.read_frames(55)
        run.say("stop")
        self.assertTrue(run.has_in_order(self.saved(run, ASKED)))
        self.assertTrue(str(self.path).startswith(album.name))
        reported = [float(line.split()[1]) for line in run.lines if line.startswith("copying")]
        self.assertTrue(reported)
        self.assertEqual(reported, sorted(reported))
        self.assertLessEqual(reported[-1], 1)


class Kills(Recordings):
    def test_killed_at_random_moments(self):
        """No kill costs more than the frame that was being written."""
        print("             kills  frames written  lost at most in one kill  lost in all")
        for pixel_format, size, rate in (("mjpeg", "640x480", 30), ("yuyv", "640x480", 30), ("mjpeg", "2592x1944", 15),
                                         ("yuyv", "2592x1944", 8)):
            written = 0
            losses = []
            for kill in range(KILLS):
                run = self.record(size, rate, name=f"{pixel_format}-{size}-{kill}", pixel_format=pixel_format)
                end = time.monotonic() + random.uniform(0.1, 0.9)
                while time.monotonic() < end:
                    run.read_until("frame ")
                time.sleep(random.random() / 15)  # not always right after a frame
                run.kill()
                recovered = run.recover()
                self.assertEqual(run.left_files(), [])
                numbers = numbered_movie.numbers(recovered) if recovered else []
                written += run.written
                losses.append(run.written - len(numbers))
                with self.subTest(pixel_format=pixel_format, size=size, kill=kill):
                    self.assertLessEqual(losses[-1], 1)
                    self.assertTrue(numbers)
                    self.assertTrue(run.has_in_order(numbers), f"{run.delivered}: {numbers}")
            print(f"{pixel_format:6} {size:>12}  {KILLS:6}  {written:14}  {max(losses):24}  {sum(losses):11}")


class SmallDisk(Recordings):
    """Runs in the virtual machine, where it may mount."""

    def test_full_disk(self):
        for name, taken in (("nearly full", 11), ("only the album's", 0)):
            with self.subTest(name):
                disk = self.folder / f"disk {name}"
                disk.mkdir()
                subprocess.run(["mount", "-t", "tmpfs", "-o", "size=20m", "none", str(disk)], check=True)
                self.addCleanup(subprocess.run, ["umount", str(disk)])
                (disk / "earlier.jpg").write_bytes(b"x" * (taken << 20))
                of_album = name.startswith("only")
                run = self.record("1280x1024", 15, None if of_album else disk / "tmp", name=name.replace(" ", "-"),
                                  home=disk if of_album else None)
                numbers = self.saved(run, DISK_FULL)
                self.assertTrue(run.has_in_order(numbers), f"{run.delivered}: {numbers}")
                self.assertGreater(len(numbers), 3)
                self.assertEqual((disk / "earlier.jpg").read_bytes(), b"x" * (taken << 20))
                print(f"full disk, {taken} of 20 MiB taken before: {len(numbers)} frames saved, left out {self.left_out}")


if __name__ == "__main__":
    PROGRAM, FAILING_CALLS = sys.argv[1:3]
    seed = int(os.environ.get("BW_SEED") or random.randrange(1 << 30))  # set it to repeat a run
    random.seed(seed)
    print(f"BW_SEED={seed}", flush=True)
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
