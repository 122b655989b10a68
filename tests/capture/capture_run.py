"""Runs capture_run in a home and a temporary folder of its own."""

import os
import random
import subprocess
from pathlib import Path


def seed():
    """Set BW_SEED to see one run again."""
    used = int(os.environ.get("BW_SEED") or random.randrange(1 << 30))
    random.seed(used)
    print(f"BW_SEED={used}", flush=True)


class CaptureRun:
    def __init__(self, program, folder, temporary=None, home=None):
        self.program = program
        self.home = Path(home or Path(folder) / "home")
        self.temporary = Path(temporary) if temporary else Path(folder) / "tmp"
        self.home.mkdir(parents=True, exist_ok=True)
        self.temporary.mkdir(parents=True, exist_ok=True)
        self.environment = {**os.environ, "HOME": str(self.home), "TMPDIR": str(self.temporary),
                            "XDG_CONFIG_HOME": str(self.home / "config")}
        self.delivered = []  # the sequence numbers of the frames
        self.written = 0
        self.lines = []

    def record(self, movie, pixel_format, size):
        self.process = subprocess.Popen([self.program, "record", str(movie), pixel_format, size], env=self.environment,
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
        self.read_until("nothing: what was printed before the kill")
        self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()

    def recover(self):
        """The file in the album; None if there was nothing to recover."""
        result = subprocess.run([self.program, "recover"], env=self.environment, capture_output=True, text=True,
                                timeout=60)
        words = result.stdout.split(maxsplit=2)
        return Path(words[2].strip()) if words[:2] == ["recovered", "1"] else None

    def has_in_order(self, numbers, length):
        """Whether the pictures of a movie of that length, shown over and over, are frames that followed each other."""
        expected = [sequence % length for sequence in self.delivered]
        return any(expected[at:at + len(numbers)] == numbers for at in range(len(expected) - len(numbers) + 1))

    def left_files(self):
        return sorted(path for path in self.temporary.rglob("*") if not path.is_dir())
