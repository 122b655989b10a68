#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures, in the machine of tests/kernel, what it costs to show a camera of the kernel: by us and by other viewers.

usage: real_cameras.py PROGRAM FRAMES; FRAMES is a folder made by tests/kernel/usbcamera/make_frames

CPU time is that of the program's process while the camera delivered a number of frames, slowly enough that every viewer
can show each of them. The display server's own time stands beside it.
"""

import json
import os
import re
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "tests" / "e2e"), str(ROOT / "tests" / "kernel" / "usbcamera")]
from client import UsbCameras  # noqa: E402
from desktop import Desktop, wait_until  # noqa: E402

PROGRAM, FRAMES = sys.argv[1], sys.argv[2]
TICK = os.sysconf("SC_CLK_TCK")
WARM_UP = 5  # seconds from the first picture on


def cpu_milliseconds(pid):
    fields = Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return 1000 * (int(fields[11]) + int(fields[12])) / TICK


class Viewer:
    """One program on a desktop of its own, showing one device."""

    def __init__(self, desktop, command, title, keys=None):
        self.desktop = desktop
        self.process = desktop.spawn(command, log="viewer.log")
        window = wait_until(f"{command[0]} has a window", lambda: desktop.output(
            ["xdotool", "search", "--onlyvisible", "--name", title]).split(), 90, step=0.3)[-1].decode()
        desktop.input("windowactivate", "--sync", window)
        if keys:
            time.sleep(2)
            desktop.key(keys)

    def measure(self, frames_so_far, wanted):
        """Milliseconds per frame of the viewer and of the display."""
        begin = frames_so_far()
        wait_until("frames come", lambda: frames_so_far() > begin + 1, 90, step=0.3)
        time.sleep(WARM_UP)
        first, own, display = frames_so_far(), cpu_milliseconds(self.process.pid), self._display()
        wait_until("all frames", lambda: frames_so_far() >= first + wanted, 200, step=0.05)
        count = frames_so_far() - first
        return (cpu_milliseconds(self.process.pid) - own) / count, (self._display() - display) / count

    def _display(self):
        return cpu_milliseconds(self.desktop.display.pid)


def our_settings(desktop, resolution):
    folder = desktop.home / ".config" / "BrimwellPro"
    folder.mkdir(parents=True)

    def quoted(value):
        return json.dumps(value, separators=(",", ":")).replace('"', '\\"')

    (folder / "BrimwellPro.conf").write_text(
        "[General]\n"
        f'bwp2x_product_for_camera="{quoted({"wired_ultra": "mx62"})}"\n'
        f'bwp2x_product_mx62="{quoted({"resolution": resolution})}"\n')
    entry = {"driver": "vivid", "type": "ultra_resolution_microscope"}
    (folder / "cameras.json").write_text(json.dumps({"cameras": [entry]}))


def viewers(device, width, height, fourcc):
    size = f"{width}x{height}"
    return {
        "BrimwellPro": ([PROGRAM], "^BrimwellPro", None),
        "qv4l2": (["qv4l2", "-d", device], "qv4l2|V4L2", "ctrl+v"),
        "guvcview": (["guvcview", "-d", device, "-x", size, "-f", fourcc, "-a", "none"], "[Gg]uvc", None),
    }


def compare(what, device, mode, frames_so_far, wanted):
    width, height, fourcc, v4l2_format = mode
    results = {}
    for name, (command, title, keys) in viewers(device, width, height, fourcc).items():
        with Desktop(accessibility=False) as desktop:
            our_settings(desktop, f"{width}x{height}")
            if name != "BrimwellPro":
                subprocess.run(["v4l2-ctl", "-d", device, "--set-fmt-video",
                                f"width={width},height={height},pixelformat={v4l2_format}"], check=True)
            try:
                results[name] = Viewer(desktop, command, title, keys).measure(frames_so_far, wanted)
            except Exception as problem:  # the report names a viewer that does not work here
                desktop.picture().save_png(f"/tmp/{name}.png")
                print(f"{name} with {what}: {problem}\n{(desktop.folder / 'viewer.log').read_text()[-800:]}", flush=True)
    print(f"\n{what}, {wanted} frames\n\n| viewer | CPU ms a frame | display server |\n| --- | --- | --- |")
    for name, (own, display) in results.items():
        print(f"| {name} | {own:.1f} | {display:.1f} |")
    others = [own for name, (own, _) in results.items() if name != "BrimwellPro"]
    if others and "BrimwellPro" in results:
        print(f"\nratio to the better of the others: {results['BrimwellPro'][0] / min(others):.2f}", flush=True)


def vivid_frames(device):
    """Frames that the device has delivered, by the clock: its rate does not depend on the viewer."""
    begin = time.monotonic()
    return lambda: int((time.monotonic() - begin) * 10)


def main():
    vivid = next(f"/dev/{node.name}" for node in sorted(Path("/sys/class/video4linux").iterdir())
                 if "vivid" in (node / "name").read_text())
    compare("vivid, 1280x720 YUYV at 10/s", vivid, (1280, 720, "YUYV", "YUYV"), vivid_frames(vivid), 300)
    subprocess.run(["sh", "-c", "echo vivid.0 > /sys/bus/platform/drivers/vivid/unbind"], check=True)
    with UsbCameras() as cameras:
        cameras("add scope uvc serial=scope rate=2")
        cameras(f"source scope {FRAMES}")
        cameras("plug scope")
        node = wait_until("the camera's node", lambda: next(
            (str(link.resolve()) for link in Path("/dev/v4l/by-id").glob("*_scope-video-index0")), None), 60)
        compare("USB camera, 2592x1944 MJPEG at 2/s", node, (2592, 1944, "MJPG", "MJPG"),
                lambda: int(re.search(r"sent=(\d+)", cameras("status scope"))[1]), 100)


main()
