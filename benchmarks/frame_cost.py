# SPDX-License-Identifier: GPL-3.0-or-later
"""What a frame costs: CPU beside other programs and beside a decoder alone, the share of what
lies over the picture, the latency."""

import os
import re
import statistics
import subprocess
import time

from media import GRID_KINDS, KINDS, title
from program_run import table
from stage import US
from wanted import WANTED

ZOOMS = {"100 %": ["ctrl+0"], "200 %": 10 * ["ctrl+plus"], "50 %": ["ctrl+0"] + 5 * ["ctrl+minus"]}  # how to get there
SCREEN_INTERVAL = 1000 / 60  # milliseconds
ROUNDS = 3
ALONE, IN_A_LOOP = "TurboJPEG alone", "TurboJPEG alone, without pauses"


def measure_cpu(stage):
    """CPU per shown frame. The players' comes from two runs of different length each, so that starting does not count."""
    stage.head("CPU per shown frame", "Milliseconds of the program and, in brackets, of the display server for it.")
    zooms = {zoom: f"{US}, {zoom}" for zoom in ZOOMS}
    rows = {name: [name] for name in (*zooms.values(), *(player.name for player in stage.players),
                                     ALONE, IN_A_LOOP)}
    kinds = [kind for kind in KINDS if not stage.quick or is_wanted(kind, "to ")]
    for kind in kinds:
        wanted_zooms = [zoom for zoom in ZOOMS if not stage.quick or is_wanted(kind, f"at {zoom}")]
        ours, decodes, loops = [], [], []
        for _ in range(1 if stage.quick else ROUNDS):  # taking turns, so that other load affects both
            ours.append(costs_of_ours(stage, kind, wanted_zooms))
            if kind.format == "MJPEG":
                decodes.append(stage.decode_at_rate(kind, 2 if stage.quick else 4))
                loops.append(stage.decode_alone(kind))
        costs = {zooms[zoom]: tuple(map(statistics.median, zip(*(costs[zoom] for costs in ours)))) for zoom in wanted_zooms}
        for player in stage.players:
            if not stage.quick or is_wanted(kind, "to the best player"):
                costs[player.name] = cost_of_player(stage, player, kind)
        best = min((costs[player.name][0] for player in stage.players if player.name in costs), default=None)
        cells = {name: "%.1f (%.1f)" % cost for name, cost in costs.items()}
        decode = statistics.median(decodes) if decodes else None
        if decode:
            cells |= {ALONE: f"{decode:.1f}", IN_A_LOOP: f"{statistics.median(loops):.1f}"}
        for zoom in wanted_zooms:
            for other, name in ((decode, "decode"), (best, "the best player")):
                if other:
                    stage.results.add_if_wanted(f"CPU of a frame, {title(kind)} at {zoom}, to {name}",
                                                costs[zooms[zoom]][0] / other)
        for name, row in rows.items():
            row.append(cells.get(name, ""))
        stage.progress(title(kind), cells)
    stage.table(table(["", *map(title, kinds)], rows.values()))
    print("The players fit the whole picture into the window; our program shows it at 100 %, 200 % or 50 % and crops it "
          "to the window.\n", flush=True)


def is_wanted(kind, what):
    return any(name.startswith(f"CPU of a frame, {title(kind)} ") and what in name for name in WANTED)


def costs_of_ours(stage, kind, zooms):
    """At each zoom, in milliseconds: of the program, of the display."""
    run = stage.start_ours(kind)
    begin, parts = time.monotonic(), {}
    for zoom in zooms:
        stage.desktop.input("key", "--clearmodifiers", *ZOOMS[zoom])
        time.sleep(0.7)
        parts[zoom] = stage.cpu_while(run, 2 if stage.quick else 4)
    end = time.monotonic()
    run.quit()
    shown = stage.ours.statistics(run.log)["shown"] / (end - begin)  # a second
    if shown < 0.95 * kind.rate:
        stage.progress(f"{title(kind)}: only {shown:.1f} frames a second were shown; this computer has other work to do")
    return {zoom: tuple(1000 * used / (seconds * shown) for used in cpu) for zoom, (*cpu, seconds) in parts.items()}


def cost_of_player(stage, player, kind):
    def run_for(seconds):
        run = stage.run_player(player, kind, kind.rate * seconds)
        run.wait_for_end()
        return run
    short, long = (1, 3) if stage.quick else (2, 10)
    run_for(short)  # so that the counted runs find all its files in memory
    one, other = run_for(short), run_for(long)
    frames = (long - short) * kind.rate
    return tuple(1000 * (b - a) / frames for a, b in ((one.cpu, other.cpu), (one.display_cpu, other.display_cpu)))


def measure_grid(stage):
    """Off and on alternate in one run, and each is compared with its neighbours, so that other load affects both."""
    rounds, seconds = (3, 1.5) if stage.quick else (15, 1.5)
    kinds = [kind for kind in GRID_KINDS if not stage.quick or kind.format == "YUYV"]
    stage.head("The measuring grid", f"CPU milliseconds of the program per frame at 100 %, median of {rounds}.")
    rows = [["off"], ["on"], ["more"]]
    for kind in kinds:
        run = stage.start_ours(kind, camera="high", product="dx10")
        costs = []
        for _ in range(2 * rounds):
            time.sleep(0.3)
            cpu, _, passed = stage.cpu_while(run, seconds)
            costs.append(1000 * cpu / (passed * kind.rate))
            stage.desktop.key("ctrl+g")
        run.quit()
        neighbours = [(costs[i - 1] + costs[i + 1]) / 2 for i in range(1, len(costs) - 1)]
        differences = [(cost - beside) * (1 if i % 2 == 0 else -1) for i, (cost, beside) in
                       enumerate(zip(costs[1:-1], neighbours))]
        off, on = statistics.median(costs[::2]), statistics.median(costs[1::2])
        more = 100 * statistics.median(differences) / off
        stage.results.add("the measuring grid, more CPU", more)
        for row, cell in zip(rows, (f"{off:.2f}", f"{on:.2f}", f"{more:+.1f} %")):
            row.append(cell)
        stage.progress(f"{title(kind)}: grid: {off:.2f} {on:.2f}")
    stage.table(table(["", *map(title, kinds)], rows))


def measure_latency(stage):
    stage.head("Latency", "Milliseconds from the camera's time stamp until the picture is in the window.")
    rows = []
    for kind in KINDS:
        if kind.format != "MJPEG":
            continue
        run = stage.start_ours(kind)
        time.sleep(3 if stage.quick else 20)
        run.quit()
        figures, decode = stage.ours.statistics(run.log), stage.decode_alone(kind)
        median, highest = figures["latency_ms"], figures["latency_p99_ms"]
        stage.results.add(f"latency, {title(kind)}, to decode and a screen interval", median / (decode + SCREEN_INTERVAL))
        rows.append([title(kind), f"{median:.1f}", f"{highest:.1f}", f"{decode + SCREEN_INTERVAL:.1f}"])
        stage.progress(*rows[-1])
    stage.table(table(["", "median", "99th percentile", "decode and a screen interval"], rows))


def measure_measurements(stage):
    program = [stage.build / "benchmarks/bw_bench_measurements", "1000"]
    runs = [subprocess.run(program, env={**os.environ, "QT_QPA_PLATFORM": "offscreen"}, check=True,
                           stdout=subprocess.PIPE).stdout.decode() for _ in range(3)]
    names = {"first_ms": "when they are drawn first", "moved_ms": "when the picture has moved",
             "enlarged_ms": "at ten times the size, most of them out of sight"}
    stage.head("A thousand measurements", "CPU milliseconds to draw them, each with its result; the least of three runs.")
    stage.table(table(["", "ms"], [[words, f"{min(float(re.search(rf'{key}=([0-9.]+)', run)[1]) for run in runs):.1f}"]
                                   for key, words in names.items()]))
