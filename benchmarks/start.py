# SPDX-License-Identifier: GPL-3.0-or-later
"""How long it takes from the start of a process to its first picture on the screen."""

import statistics

from media import KINDS, title
from program_run import table
from stage import US

STARTS = 9  # warm: one more comes before, uncounted
PICTURES_AFTERWARDS = 10  # seconds of movie that a player has left, so that it is still there to be ended


def measure_start(stage):
    stage.head("From the start of the process to the first picture on the screen",
               f"The programs take turns. Milliseconds, median of {STARTS}.")
    kinds = [kind for kind in KINDS if not stage.quick or kind.format == "MJPEG" and kind.width != 1920]
    columns = [measure_column(stage, kind) for kind in kinds]
    rows = [[name, *(f"{column[name]:.0f}" for column in columns)] for name in columns[0]]
    stage.results.add("start to the first picture, the slowest", max(column[US] for column in columns))
    if stage.players:
        stage.results.add("start to the first picture, to the slowest player",
                          max(column.pop(US) / max(column.values()) for column in columns))
    stage.table(table(["", *map(title, kinds)], rows))


def measure_column(stage, kind):
    """Medians of each program, which take turns, so that other load affects all of them."""
    programs = {US: lambda: stage.start_ours(kind)}
    for player in stage.players:
        programs[player.name] = lambda player=player: start_player(stage, player, kind)
    times = {name: [] for name in programs}
    for _ in range(STARTS + 1):
        for name, start in programs.items():
            run = start()
            times[name].append(1000 * run.first_picture)
            stage.end(run)
    medians = {name: statistics.median(each[1:]) for name, each in times.items()}
    stage.progress(title(kind), *(f"{name} {time:.0f}" for name, time in medians.items()))
    return medians


def start_player(stage, player, kind):
    run = stage.run_player(player, kind, PICTURES_AFTERWARDS * kind.rate)
    run.wait_for_picture()
    return run
