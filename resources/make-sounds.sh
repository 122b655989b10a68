#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
# Makes the shutter sound: two short clicks of filtered noise, as of a mirror that goes up and a shutter that closes.
# The same bytes each time. Needs python3, and ffmpeg with libmp3lame.
set -eu
cd "$(dirname "$0")"

python3 - <<'END' | ffmpeg -loglevel error -y -f s16le -ar 44100 -ac 1 -i - -codec:a libmp3lame -b:a 96k \
    -map_metadata -1 -fflags +bitexact -flags:a +bitexact sounds/snapshot.mp3
import math
import random
import struct
import sys

RATE = 44100
LENGTH = 0.150  # seconds
PEAK = 0.35  # of full scale; heard, and nobody starts at it

# When it begins, how loud it is, how fast it fades (seconds), the band of the noise and the pitch of the body (Hz).
CLICKS = [
    (0.001, 0.75, 0.0075, (1800, 7000), 310),
    (0.068, 1.00, 0.0130, (1100, 5200), 190),
]


def low_pass(samples, frequency):
    share = 1 - math.exp(-2 * math.pi * frequency / RATE)
    level = 0.0
    for sample in samples:
        level += share * (sample - level)
        yield level


def band_pass(samples, band):
    low, high = band
    bright = list(low_pass(low_pass(samples, high), high))
    return [sample - dark for sample, dark in zip(bright, low_pass(bright, low))]


def click(noise, fade, band, pitch):
    filtered = band_pass([noise.uniform(-1, 1) for _ in range(int(RATE * fade * 7))], band)
    for index, sample in enumerate(filtered):
        time = index / RATE
        attack = 1 - math.exp(-time / 0.0004)
        body = 0.12 * math.sin(2 * math.pi * pitch * time)
        yield attack * math.exp(-time / fade) * (sample + body)


noise = random.Random(1)
sound = [0.0] * int(RATE * LENGTH)
for start, loudness, fade, band, pitch in CLICKS:
    for index, sample in enumerate(click(noise, fade, band, pitch), int(start * RATE)):
        if index < len(sound):
            sound[index] += loudness * sample

# No step at the end.
tail = int(RATE * 0.01)
for index in range(tail):
    sound[-1 - index] *= index / tail

scale = PEAK * 32767 / max(map(abs, sound))
sys.stdout.buffer.write(struct.pack(f"<{len(sound)}h", *(round(sample * scale) for sample in sound)))
END
