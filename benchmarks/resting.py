# SPDX-License-Identifier: GPL-3.0-or-later
"""What the program uses where nothing of it is to be seen or done, and whether its memory grows."""

import time

from media import KINDS, title
from program_run import Run, memory_mib, memory_text, table, wake_ups
from stage import US

LARGEST = next(kind for kind in reversed(KINDS) if kind.format == "MJPEG")


def measure_idle(stage):
    seconds = 3 if stage.quick else 20
    decode = stage.decode_alone(LARGEST)
    stage.head(f"Nothing to see, {title(LARGEST)}", "CPU milliseconds of the program per frame of the camera, the "
               "simulated camera's own included.")
    run = stage.start_ours(LARGEST)
    window = stage.desktop.output(["xdotool", "getactivewindow"]).decode().strip()
    row = [f"{cost_of_frame(stage, run, seconds):.2f}"]
    stage.desktop.input("windowminimize", window)
    minimised = cost_of_frame(stage, run, seconds)
    stage.desktop.input("windowmap", window, "windowactivate", "--sync", window)
    cover = stage.desktop.spawn(["ffplay", "-loglevel", "error", "-noborder", "-x", str(stage.desktop.size[0]), "-y",
                                 str(stage.desktop.size[1]), "-left", "0", "-top", "0", "-f", "lavfi", "-i",
                                 "color=c=gray:size=320x200:rate=1"])
    covered = cost_of_frame(stage, run, seconds)
    cover.terminate()
    cover.wait()
    stage.desktop.input("windowactivate", "--sync", window)
    run.quit()
    stage.results.add("CPU of a frame, minimised, to decode", minimised / decode)
    stage.results.add("CPU of a frame, covered, to decode", covered / decode)
    row += [f"{minimised:.2f}", f"{covered:.2f}", f"{decode:.2f}"]
    stage.table(table(["visible", "minimised", "covered", "TurboJPEG alone"], [row]))

    run = Run(stage.desktop, [str(stage.build / "brimwellpro")], {})
    time.sleep(5)  # the window that says so has opened by then
    seconds = 6 if stage.quick else 20
    before = wake_ups(run.process.pid)
    time.sleep(seconds)
    rate = (wake_ups(run.process.pid) - before) / seconds
    stage.end(run)
    stage.results.add("wake-ups a second without a camera", rate)
    stage.table(f"Without a camera, the threads of the program wake {rate:.1f} times a second.")


def cost_of_frame(stage, run, seconds):
    time.sleep(1)
    cpu, _, passed = stage.cpu_while(run, seconds)
    return 1000 * cpu / (passed * LARGEST.rate)


def measure_memory(stage):
    first, last = (5, 12) if stage.quick else (10, 120)
    stage.head(f"Memory in MiB, {title(LARGEST)}", "Resident set and, in brackets, proportional set and what is not from files.")
    run = stage.start_ours(LARGEST)
    early, late = memory_at(run, first, last)
    stage.results.add("memory growth, live image", late[2] - early[2])
    stage.end(run)
    rows = [[US, memory_text(early), memory_text(late)]]
    for player in stage.players if not stage.quick else []:
        run = stage.run_player(player, LARGEST, 10 * LARGEST.rate, loop=True)
        if run:
            run.wait_for_picture()
            rows.append([player.name, *map(memory_text, memory_at(run, first, last))])
            stage.end(run)
    stage.table(table(["", f"after {first} s", f"after {last} s"], rows))


def memory_at(run, first, last):
    time.sleep(first)
    early = memory_mib(run.process.pid)
    time.sleep(last - first)
    return early, memory_mib(run.process.pid)
