# SPDX-License-Identifier: GPL-3.0-or-later
"""Movies whose pictures carry their own number: sixteen black or white squares along the top, lowest bit first."""

import subprocess
import sys

BITS = 16
FFMPEG = ["ffmpeg", "-nostdin", "-loglevel", "error", "-y"]


def make(path, width, height, frames, rate):
    """Writes an MJPEG movie of a moving test picture."""
    side = width // BITS
    squares = [f"drawbox=x={bit * side}:y=0:w={side}:h={side}:color=white:t=fill:enable='mod(floor(n/{1 << bit})\\,2)'"
               for bit in range(BITS)]
    black = f"drawbox=x=0:y=0:w={width}:h={side}:color=black:t=fill"
    subprocess.run(FFMPEG + ["-f", "lavfi", "-i", f"testsrc2=s={width}x{height}:r={rate}:d={frames / rate}",
                             "-vf", ",".join([black] + squares), "-pix_fmt", "yuvj422p", "-c:v", "mjpeg", "-q:v", "4",
                             str(path)], check=True)


def numbers(path):
    """The numbers of all pictures in a movie, in order; they are decoded, so a damaged picture raises an error."""
    strip = f"crop=iw:iw/{BITS}:0:0,scale={BITS}:1:flags=area,format=gray"
    out = subprocess.run(FFMPEG + ["-xerror", "-i", str(path), "-vf", strip, "-fps_mode", "passthrough",
                                   "-f", "rawvideo", "-"], check=True, capture_output=True).stdout
    return [sum((out[at + bit] > 127) << bit for bit in range(BITS)) for at in range(0, len(out), BITS)]


if __name__ == "__main__":  # PATH WIDTH HEIGHT FRAMES RATE
    make(sys.argv[1], *map(int, sys.argv[2:]))
