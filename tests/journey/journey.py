"""A journey through the program: opens the camera, changes it in every way that there is, takes it
all back and leaves. After each step the picture and the widgets must agree."""

import re
import statistics
import sys

from desk import OLD_KERNEL, PROBED, WaylandDesk, XDesk, extents, has, is_named, kind_of, numbers_of

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


def walk_and_speak(desk):
    """Without a mouse: everything says what it is, each number whose it is, and Tab goes around and
    leaves nothing out but the radio buttons that are off, which the arrows reach."""
    for page, slider in (("Vendor", "Red gain"), ("Standard", "Brightness")):
        turn_to(desk, page, slider)
        controls = desk.controls()
        assert all(map(is_named, controls))
        assert all(numbers_of(widget) for widget in controls if kind_of(widget) == "slider")
        stops = [widget for widget in controls
                 if kind_of(widget) != "radio button" or has(widget, "CHECKED")]
        stops[1].get_component_iface().grab_focus()
        desk.until(lambda: has(stops[1], "FOCUSED"))
        desk.hand("key", *["Tab"] * (len(stops) - 1))
        desk.until(lambda: has(stops[0], "FOCUSED"))


def drag_and_type(desk):
    plain = Picture(desk)
    desk.drag(desk.find("slider", "Brightness"), 0.1)
    desk.until(lambda: Picture(desk).light < plain.light - 30)
    desk.hand("key", "End", "Left", "Left")
    desk.wait_number("Brightness", 253)
    desk.until(lambda: Picture(desk).light > plain.light + 30)
    # What the window shows is what the camera has.
    desk.press("button", "Open camera")
    desk.wait_number("Brightness", 253)
    desk.press("button", "Set standard defaults")
    desk.wait_number("Brightness", 7)
    desk.until(lambda: Picture(desk).is_like(plain))


def choose(desk):
    turn_to(desk, "Vendor", "Red gain")
    plain = Picture(desk)
    desk.choose("Red gain", "10")
    desk.wait_number("Red gain", 10)
    desk.until(lambda: Picture(desk).warmth > plain.warmth + 5)


def change(desk):
    turn_to(desk, "Standard", "Brightness")
    plain = Picture(desk)
    desk.find("slider", "Brightness").get_value_iface().set_current_value(200)
    desk.wait_number("Brightness", 200)
    desk.until(lambda: Picture(desk).light > plain.light + 30)
    turn_to(desk, "Vendor", "Red gain")


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
    desk.wait_number("Red gain", 0)


def leave(desk):
    status, log = desk.end()
    strange = [line for line in log if not LOG.fullmatch(line)]
    assert (status, strange) == (0, RIGHTS), f"ended with {status}: {''.join(strange)}"


PARTS = {
    XDesk: (open_camera, walk_and_speak, drag_and_type, choose, flip, restore, leave),
    WaylandDesk: (open_camera, change, flip, restore, leave),
}
its_kind = {"x": XDesk, "wayland": WaylandDesk}[sys.argv[1]]
its_desk = its_kind(sys.argv[2])
for part in PARTS[its_kind]:
    part(its_desk)
for program in sys.argv[3:]:
    leave(its_kind(program))
