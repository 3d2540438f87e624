"""One journey through the program: opens the camera, changes it in every way that there is, takes
it all back and leaves. After each step the picture and the widgets must agree."""

import re
import statistics
import sys

from desk import Desk, extents, has, is_named, kind_of

# What the program may write on its way, and nothing else. The last is what the toolkit of Debian 13
# says of its own labels whose text can be selected.
LOG = re.compile(
    r"quelvo: (kkk:3|g_length2?:\d+|bmRequestType2:\d+ get_data_for:-?\d+|set:length:8 , -?\d+|"
    r"intval:-?\d+|zoomEnable:0|slider:-?\d+|spin:-?\d+|viewLayer = <CALayer: 0x[0-9a-f]+>)\n|"
    r"qt\.accessibility\.atspi: Received text event for invalid interface\.\n")


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


def press(desk, name):
    desk.click(desk.find("button", name))


def turn_to(desk, page, slider):
    desk.click(desk.find("page tab", page))
    desk.until(lambda: has(desk.find("slider", slider), "SHOWING"))


def open_camera(desk):
    screen = extents(desk.window)
    assert screen.x + screen.width <= 1200 and screen.y + screen.height <= 760
    nothing = Picture(desk)
    assert max(nothing.columns) - min(nothing.columns) < 8
    press(desk, "Open camera")
    desk.find("label", "v3 V9.2.4")
    desk.until(lambda: not Picture(desk).is_like(nothing))


def walk_and_speak(desk):
    """Without a mouse: everything says what it is, and Tab goes around and leaves nothing out but
    the radio buttons that are off, which the arrows reach."""
    for page, slider in (("Vendor", "Red gain"), ("Standard", "Brightness")):
        turn_to(desk, page, slider)
        controls = desk.controls()
        assert all(map(is_named, controls))
        stops = [widget for widget in controls
                 if kind_of(widget) != "radio button" or has(widget, "CHECKED")]
        stops[1].get_component_iface().grab_focus()
        desk.until(lambda: has(stops[1], "FOCUSED"))
        desk.hand("key", *["Tab"] * (len(stops) - 1))
        desk.until(lambda: has(stops[0], "FOCUSED"))
    plain = Picture(desk)
    desk.find("slider", "Brightness").get_value_iface().set_current_value(200)
    desk.wait_number("Brightness", 200)
    desk.until(lambda: Picture(desk).light > plain.light + 30)
    desk.find("button", "Set standard defaults").get_action_iface().do_action(0)
    desk.wait_number("Brightness", 7)
    desk.until(lambda: Picture(desk).is_like(plain))


def drag_and_type(desk):
    plain = Picture(desk)
    desk.drag(desk.find("slider", "Brightness"), 0.9)
    desk.until(lambda: Picture(desk).light > plain.light + 30)
    desk.hand("key", "Home", "Right", "Right", "Right")
    desk.wait_number("Brightness", -252)
    desk.until(lambda: Picture(desk).light < plain.light - 30)
    desk.hand("key", "End", "Left", "Left")
    desk.wait_number("Brightness", 253)
    # What the window shows is what the camera has.
    press(desk, "Open camera")
    desk.wait_number("Brightness", 253)
    press(desk, "Set standard defaults")
    desk.wait_number("Brightness", 7)
    desk.until(lambda: Picture(desk).is_like(plain))


def choose_and_flip(desk):
    turn_to(desk, "Vendor", "Red gain")
    plain = Picture(desk)
    desk.choose("Red gain", "10")
    desk.wait_number("Red gain", 10)
    desk.until(lambda: Picture(desk).warmth > plain.warmth + 5)
    plain = Picture(desk)
    desk.click(desk.find("check box", "Flip horizontally"))
    desk.wait_checked("Flip horizontally")
    desk.until(lambda: Picture(desk).mirrors(plain))


def answer_boxes(desk):
    for answer, checked in (("Escape", False), ("Return", True), ("Return", False)):
        desk.click(desk.find("check box", "H.264 stream"))
        desk.answer("Reboot to Switch H264?", answer)
        desk.wait_checked("H.264 stream", checked)


def restore(desk):
    flipped = Picture(desk)
    for answer, number in (("Escape", 10), ("Return", 0)):
        press(desk, "Restore vendor defaults")
        desk.answer("Restore to default settings?", answer)
        desk.wait_number("Red gain", number)
    desk.wait_checked("Flip horizontally", False)
    desk.wait_checked("H.264 stream")
    desk.until(lambda: Picture(desk).mirrors(flipped))
    desk.until(lambda: Picture(desk).warmth < flipped.warmth - 5)


def leave(desk):
    status, log = desk.end()
    strange = [line for line in log if not LOG.fullmatch(line)]
    assert (status, strange) == (0, []), f"ended with {status}: {''.join(strange)}"


desk_of_journey = Desk(sys.argv[1])
for part in (open_camera, walk_and_speak, drag_and_type, choose_and_flip, answer_boxes, restore,
             leave):
    part(desk_of_journey)
