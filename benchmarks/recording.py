# SPDX-License-Identifier: GPL-3.0-or-later
"""What recording costs while the live image is shown, beside ffmpeg that records the same frames and shows nothing; how
fast a snapshot is in its album; and whether memory stays flat over a long recording.
"""

import statistics
import subprocess
import time

from desktop import wait_until
from media import Kind, title
from program_run import Run, memory_mib, memory_text, table
from stage import LOOP_FRAMES

COPIED = Kind(2592, 1944, 30, "MJPEG")
KINDS = [COPIED, Kind(1920, 1080, 30, "YUYV"), Kind(1920, 1080, 30, "YUYV", grain=0)]
LONG_KIND = Kind(1920, 1080, 30, "MJPEG")


def measure_recording(stage):
    """All take turns and the medians count, so that other load affects them alike."""
    rounds, seconds = (1, 3) if stage.quick else (3, 10)
    stage.head(f"Recording for {seconds} s while the image is shown",
               f"CPU milliseconds for each frame of the camera, median of {rounds}.")
    rows = []
    for kind in KINDS:
        ours, encodes = [], []
        for _ in range(rounds):
            ours.append(cost_of_ours(stage, kind, seconds))
            if kind.format == "YUYV":
                encodes.append(stage.encode_alone(kind, seconds))
        adds = statistics.median(recorded - shown for shown, recorded, _ in ours)
        missing = sum(missing for *_, missing in ours)
        if encodes:
            ratios = [(recorded - shown) / encode for (shown, recorded, _), encode in zip(ours, encodes)]
            stage.results.add(f"recording adds, {title(kind)}, to encode", statistics.median(ratios))
        else:
            stage.results.add(f"recording adds, {title(kind)}", adds)
        stage.results.add("frames missing in a movie", missing)
        shown, recorded, _ = map(statistics.median, zip(*ours))
        rows.append([title(kind), f"{shown:.1f}", f"{recorded:.1f}", f"{adds:+.1f}", missing,
                     f"{statistics.median(encodes):.1f}" if encodes else "",
                     "" if stage.quick else f"{cost_of_ffmpeg(stage, kind, seconds):.1f}"])
        stage.progress(*rows[-1])
    stage.table(table(["30 frames a second", "shown", "shown and recorded", "recording adds", "frames missing",
                       "TurboJPEG alone", "ffmpeg, only recording"], rows))


def cost_of_ours(stage, kind, seconds):
    """Of a frame that is only shown, and of one that is recorded, too; and how many frames the movie misses."""
    run = stage.start_ours(kind)
    time.sleep(1)
    shown, _, shown_for = stage.cpu_while(run, seconds)
    press_record(stage)
    time.sleep(1)
    recorded, _, recorded_for = stage.cpu_while(run, seconds)
    movie = end_recording(stage)
    run.quit()
    return 1000 * shown / (shown_for * kind.rate), 1000 * recorded / (recorded_for * kind.rate), missing_in(movie, kind)


def press_record(stage):
    stage.desktop.key("ctrl+shift+s")


def end_recording(stage):
    press_record(stage)
    return wait_until("the movie is in the album", lambda: next(album(stage).glob("*.mov"), None), seconds=60)


def album(stage):
    return stage.desktop.home / "BrimwellPro" / "Default Album"


def missing_in(movie, kind):
    """How many frames are missing by the times of the others. The movie is removed."""
    found = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "packet=pts_time", "-of", "csv=p=0", str(movie)],
                           capture_output=True, text=True, check=True).stdout
    times = [float(line.strip(",")) for line in found.split()]
    movie.unlink()
    return round((times[-1] - times[0]) * kind.rate) + 1 - len(times)


def cost_of_ffmpeg(stage, kind, seconds):
    codec = ["-c", "copy"] if kind.format == "MJPEG" else ["-c:v", "mjpeg", "-pix_fmt", "yuvj422p", "-q:v", "2"]
    output = stage.desktop.folder / "ffmpeg.mov"
    frames = seconds * kind.rate
    run = Run(stage.desktop, ["ffmpeg", "-nostdin", "-loglevel", "error", "-re", "-stream_loop", "-1", "-i",
                              str(stage.media.movie(kind, LOOP_FRAMES)), "-frames:v", str(frames), *codec, str(output)],
              {})
    run.wait_for_end(seconds + 60)
    output.unlink()
    return 1000 * run.cpu / frames


def measure_snapshot(stage):
    run = stage.start_ours(COPIED)
    time.sleep(1)
    keys = subprocess.Popen(["xdotool", "-"], env=stage.desktop.environment, stdin=subprocess.PIPE, text=True)
    times = []
    for count in range(1, (7 if stage.quick else 30) + 1):
        time.sleep(0.5 + 0.033 * (count % 7) / 7)  # at different moments of a frame
        pressed = time.monotonic()
        keys.stdin.write("key space\n")
        keys.stdin.flush()
        wait_until("the snapshot is in the album", lambda n=count: len(list(album(stage).glob("*.jpg"))) >= n, seconds=10,
                   step=0.001)
        times.append(1000 * (time.monotonic() - pressed))
    keys.stdin.close()
    keys.wait()
    run.quit()
    median = statistics.median(times)
    stage.results.add("snapshot, key to file, median", median)
    stage.head(f"From the key's press to the file in the album, {title(COPIED)} {COPIED.rate}/s",
               f"Milliseconds, of {len(times)} snapshots.")
    stage.table(table(["median", "shortest", "longest"], [[f"{value:.0f}" for value in (median, min(times), max(times))]]))


def measure_long_recording(stage):
    first, last = (5, 15) if stage.quick else (10, 310)
    run = stage.start_ours(LONG_KIND)
    press_record(stage)
    time.sleep(first)
    marks, memory = [first], [memory_mib(run.process.pid)]
    for part in range(1, 6):
        time.sleep((last - first) / 5)
        marks.append(round(first + (last - first) * part / 5))
        memory.append(memory_mib(run.process.pid))
    missing = missing_in(end_recording(stage), LONG_KIND)
    run.quit()
    stage.results.add("memory growth, recording", memory[-1][2] - memory[0][2])
    stage.results.add("frames missing in a movie", missing)
    stage.head(f"Memory in MiB during a recording of {title(LONG_KIND)} {LONG_KIND.rate}/s",
               "Resident set and, in brackets, proportional set and what is not from files.")
    stage.table(table([f"after {mark} s" for mark in marks], [list(map(memory_text, memory))]))
