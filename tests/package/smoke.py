#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""COMMAND... at work on a virtual display: a camera is chosen, a snapshot taken, and the program ended."""

import os
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "e2e"))
from desktop import Desktop, Failure, wait_until  # noqa: E402
from live_image import colours  # noqa: E402
from program import probed  # noqa: E402


def use(desktop, command, home, pictures):  # the user's home, and where screenshots go
    program = desktop.spawn([*command, "--simulate", "high"], log="program.log")
    try:
        wait_until("the program asks which product it is", lambda: title(desktop) == "Which camera is this?")
        wait_until("the camera window is at work", lambda: answered(desktop), step=0.5)
        wait_until("a picture shows", lambda: colours(desktop.picture()) > 300)
        desktop.picture().save_png(pictures / "installed.png")
        desktop.key("ctrl+s")
        snapshot = wait_until("the snapshot is in the album",
                              lambda: next((home / "BrimwellPro/Default Album").glob("*_image_001.jpg"), None))
        if (size := probed(snapshot, "-show_entries", "stream=codec_name,width,height")) != "mjpeg,640,480":
            raise Failure(f"the snapshot is {size}")
        subprocess.run(["ffmpeg", "-v", "error", "-xerror", "-i", snapshot, "-f", "null", "-"], check=True)
        desktop.key("ctrl+q")
        if status := program.wait(timeout=20):
            raise Failure(f"the program has ended with {status}")
    except BaseException:
        desktop.picture().save_png(pictures / "failed.png")
        print(Path(desktop.folder, "program.log").read_text(), flush=True)
        raise


def title(desktop):  # of the window that has the keyboard
    return desktop.output(["xdotool", "getactivewindow", "getwindowname"]).decode().strip()


def answered(desktop):  # by a key, which counts only once the question has been open for a moment
    if title(desktop) == "BrimwellPro":
        return True
    desktop.key("Return")
    return False


if __name__ == "__main__":
    with Desktop(accessibility=False) as own_desktop:
        use(own_desktop, sys.argv[1:], own_desktop.home, Path(os.environ.get("AUTOPKGTEST_ARTIFACTS", own_desktop.folder)))
