# SPDX-License-Identifier: GPL-3.0-or-later
"""The programs that are compared: how to make each show a movie in a window of the same size, frame by frame."""

import re

WINDOW = (977, 550)


class Player:
    """Shows a finite movie from start to end without dropping a frame, then ends by itself."""

    def __init__(self, name, command, loop=None):
        self.name = name
        self._command = command
        self._loop = loop

    def command(self, movie, kind):
        return self._command(str(movie), kind)

    def loop_command(self, movie, kind):
        """Shows it over and over; None for a player that cannot."""
        return self._loop and self._loop(str(movie), kind)


def mpv(*options):
    return lambda movie, kind: [
        "mpv", "--no-config", "--vo=x11", "--hwdec=no", "--no-audio", "--no-osc", "--framedrop=no", "--really-quiet",
        "--no-keepaspect-window", "--geometry=%dx%d" % WINDOW, *options, movie]


def ffplay(*options):
    return lambda movie, kind: [
        "ffplay", "-loglevel", "error", "-nostats", "-an", "-noframedrop", "-x", str(WINDOW[0]), "-y", str(WINDOW[1]),
        *options, movie]


def gstreamer(movie, kind):
    decoder = ["jpegdec", "!"] if kind.format == "MJPEG" else []
    return ["gst-launch-1.0", "-q", "filesrc", f"location={movie}", "!", "avidemux", "!", *decoder, "videoconvert", "!",
            "videoscale", "!", "video/x-raw,width=%d,height=%d,pixel-aspect-ratio=1/1" % WINDOW, "!",
            "ximagesink", "qos=false", "max-lateness=-1"]


PLAYERS = [Player("mpv", mpv(), mpv("--loop=inf")), Player("ffplay", ffplay("-autoexit"), ffplay("-loop", "0")),
           Player("GStreamer", gstreamer)]

# Without a graphics card SDL would go through OpenGL in software, at more than twice the cost.
PLAYER_ENVIRONMENT = {"SDL_RENDER_DRIVER": "software", "SDL_FRAMEBUFFER_ACCELERATION": "0", "SDL_AUDIODRIVER": "dummy"}


def numbers(text):
    """What a text says in the form name=number."""
    return {name: float(value) for name, value in re.findall(r"(\w+)=([\d.]+)", text)}


class OurProgram:
    """Shows a simulated camera that repeats the movie, until asked to quit."""

    ENVIRONMENT = {"BW_STATISTICS": "1"}

    def __init__(self, program, home):
        self._program = program
        self._settings = home / ".config" / "BrimwellPro" / "BrimwellPro.conf"

    def command(self, movie, kind, camera="ultra", product="mx62"):
        """Also stores the settings that make the camera run at the movie's size and leave no question."""
        self._settings.parent.mkdir(parents=True, exist_ok=True)
        self._settings.write_text(
            "[General]\n"
            "bwp2x_first_time=no\nbwp2x_remember_layout=no\nbwp2x_old_settings_imported=yes\n"
            f'bwp2x_product_for_camera="{{\\"wired_{camera}\\":\\"{product}\\"}}"\n'
            f'bwp2x_product_{product}="{{\\"resolution\\":\\"{kind.width}x{kind.height}\\"}}"\n')
        return [str(self._program), "--simulate", f"{camera}={movie}"]

    def statistics(self, log):
        """What it reports at its end: shown, bad and dropped frames, cpu_ms, first_frame_ms."""
        return numbers("".join(line for line in log.splitlines() if "statistics:" in line))
