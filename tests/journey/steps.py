"""What every journey does, by whatever means its desk has to click on something."""

import re
import statistics

from desk import OLD_KERNEL, PROBED, extents, has

# What the program may write on its way, and nothing else. The last is what the toolkit of Debian 13
# says of its own labels whose text can be selected.
LOG = re.compile(
    r"quelvo: (kkk:\d+|g_length2?:\d+|bmRequestType2:\d+ get_data_for:-?\d+|set:length:8 , -?\d+|"
    r"intval:-?\d+|zoomEnable:0|slider:-?\d+|spin:-?\d+|viewLayer = <CALayer: 0x[0-9a-f]+>)\n|"
    r"qt\.accessibility\.atspi: Received text event for invalid interface\.\n")

# The rights that it keeps on an old kernel, and those that it has at its end.
RIGHTS = [f"quelvo: The rights to {what} can't be given up: {reason}\n" for what, reason in
          (("files", "Function not implemented"), ("system calls", "Operation canceled"))
          ] if OLD_KERNEL else []
if PROBED["LD_PRELOAD"]:
    RIGHTS.append(f"probe: could do {'everything' if OLD_KERNEL else 'nothing'}\n")


class Picture:
    """What the preview shows."""

    def __init__(self, desk):
        pixels = desk.look(desk.find("filler", "Preview"))
        self.columns = [sum(pixel) / 3 for pixel in pixels]
        self.light = statistics.mean(self.columns)
        self.warmth = statistics.mean(red - blue for red, _, blue in pixels)

    def is_like(self, other):
        """The colours too: on its way back a picture may be as light as it was, but pale."""
        return abs(self.light - other.light) < 8 and abs(self.warmth - other.warmth) < 3

    def mirrors(self, other):
        """Whatever the light is by now: only where it is bright and where dark counts."""
        same, turned = (statistics.correlation(self.columns, columns)
                        for columns in (other.columns, other.columns[::-1]))
        return turned > 0.8 > 0.4 > same


def turn_to(desk, page, slider):
    desk.press("page tab", page)
    desk.until(lambda: has(desk.find("slider", slider), "SHOWING"))


def open_camera(desk):
    screen = extents(desk.window)
    assert screen.x + screen.width <= 1200 and screen.y + screen.height <= 760
    nothing = Picture(desk)
    assert max(nothing.columns) - min(nothing.columns) < 8
    desk.press("button", "Open camera")
    desk.find("label", "v3 V9.2.4")
    assert "v3 V9.2.4" in desk.told
    desk.until(lambda: not Picture(desk).is_like(nothing))


def flip(desk):
    plain = Picture(desk)
    desk.press("check box", "Flip horizontally")
    desk.wait_checked("Flip horizontally")
    desk.until(lambda: Picture(desk).mirrors(plain))


def restore(desk):
    flipped = Picture(desk)
    for agreed in (False, True):
        desk.press("button", "Restore vendor defaults")
        desk.answer("Restore to default settings?", agreed)
        desk.wait_checked("Flip horizontally", not agreed)
    desk.until(lambda: Picture(desk).mirrors(flipped))


def leave(desk):
    status, log = desk.end()
    strange = [line for line in log if not LOG.fullmatch(line)]
    assert (status, strange) == (0, RIGHTS), f"ended with {status}: {''.join(strange)}"
