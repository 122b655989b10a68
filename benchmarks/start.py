"""How long it takes from the start of a process to its first picture on the screen."""

import statistics

from media import KINDS, title
from program_run import table
from stage import US

STARTS = 9  # warm: one more comes before, uncounted
PICTURES_AFTERWARDS = 10  # seconds of movie that a player has left, so that it is still there to be ended


def measure_start(stage):
    stage.head("From the start of the process to the first picture on the screen", f"Milliseconds, median of {STARTS}.")
    kinds = [kind for kind in KINDS if not stage.quick or kind.format == "MJPEG" and kind.width != 1920]
    ours = [median_of(stage, lambda k=kind: stage.start_ours(k), STARTS) for kind in kinds]
    stage.progress(US, *map(round, ours))
    rows = [[US, *(f"{time:.0f}" for time in ours)]]
    stage.results.add("start to the first picture, the slowest", max(ours))
    slowest = [0] * len(kinds)
    for player in stage.players:
        times = [median_of(stage, lambda k=kind: start_player(stage, player, k), 3 if stage.quick else STARTS)
                 for kind in kinds]
        rows.append([player.name, *(f"{time:.0f}" for time in times)])
        slowest = list(map(max, slowest, times))
        stage.progress(player.name, *map(round, times))
    if stage.players:
        stage.results.add("start to the first picture, to the slowest player",
                          max(one / other for one, other in zip(ours, slowest)))
    stage.table(table(["", *map(title, kinds)], rows))


def start_player(stage, player, kind):
    run = stage.run_player(player, kind, PICTURES_AFTERWARDS * kind.rate)
    run.wait_for_picture()
    return run


def median_of(stage, start, count):
    times = []
    for _ in range(count + 1):
        run = start()
        times.append(1000 * run.first_picture)
        stage.end(run)
    return statistics.median(times[1:])
