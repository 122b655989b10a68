#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures the program beside others that do the same, and compares the figures with what is wanted.

All parts show the same movies on a virtual display of their own.
"""

import argparse
import sys
import time
import traceback
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "e2e"))
from desktop import Desktop  # noqa: E402
from albums import measure_albums  # noqa: E402
from frame_cost import measure_cpu, measure_grid, measure_latency, measure_measurements  # noqa: E402
from recording import measure_long_recording, measure_recording, measure_snapshot  # noqa: E402
from resting import measure_idle, measure_memory  # noqa: E402
from series import measure_series  # noqa: E402
from smaller_movie import measure_saving_view, measure_smaller_movie  # noqa: E402
from stage import Stage  # noqa: E402
from start import measure_start  # noqa: E402
from thumbnails import measure_thumbnails  # noqa: E402
from wanted import Results, machine  # noqa: E402
from zip_export import measure_zip_export  # noqa: E402

PARTS = {
    "cpu": measure_cpu,
    "grid": measure_grid,
    "measurements": measure_measurements,
    "latency": measure_latency,
    "start": measure_start,
    "idle": measure_idle,
    "memory": measure_memory,
    "recording": measure_recording,
    "snapshot": measure_snapshot,
    "long-recording": measure_long_recording,
    "albums": measure_albums,
    "thumbnails": measure_thumbnails,
    "zip-export": measure_zip_export,
    "smaller-movie": measure_smaller_movie,
    "saving-view": measure_saving_view,
    "series": measure_series,
}


def run_part(name, options, results):
    """False if it has failed; the others can still be measured."""
    begin = time.monotonic()
    try:
        with Desktop(accessibility=False) as desktop:
            PARTS[name](Stage(desktop, options, results))
        print(f"{name}: {time.monotonic() - begin:.0f} s", file=sys.stderr, flush=True)
        return True
    except Exception:
        print(f"The part {name} has failed:\n{traceback.format_exc()}", flush=True)
        return False


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, default=ROOT / "build/release", help="where the programs are built")
    parser.add_argument("--quick", action="store_true", help="shorter runs, less exact: under five minutes")
    parser.add_argument("--ours", action="store_true", help="leave the players out")
    parser.add_argument("--only", action="append", choices=PARTS, metavar="PART",
                        help=f"may be given several times; of {', '.join(PARTS)}")
    options = parser.parse_args()
    options.build = options.build.resolve()
    print(machine() + "\n", flush=True)
    results = Results()
    whole = all([run_part(name, options, results) for name in options.only or PARTS])
    results.print()
    sys.exit(0 if whole else 1)


if __name__ == "__main__":
    main()
