"""One journey through the program with mouse and keyboard on an X display: opens the camera,
changes it, takes it all back and leaves. After each step picture and widgets must agree."""

import subprocess
import sys

from desk import Desk, descendants, extents, has, kind_of, middle
from steps import Picture, flip, open_camera, switch_stream, turn_to

WORKED = ("combo box", "button", "check box", "radio button", "slider")


class XDesk(Desk):
    def answer(self, question, key):
        """Answers a box by a key, which comes up when the box is gone: of one that assistive
        technology has not answered for by then, the toolkit loses the memory."""
        self.find("label", question)
        self.until(lambda: not has(self.window, "ACTIVE"))
        self.hand("keydown", key)
        self.until(lambda: has(self.window, "ACTIVE"))
        self.hand("keyup", key)

    def click(self, widget):
        self.hand("mousemove", *middle(widget), "click", 1)

    @staticmethod
    def hand(*words):
        subprocess.run(["xdotool", *map(str, words)], check=True)

    @staticmethod
    def photograph(kind, area=None):
        crop = ["-crop", f"{area.width}x{area.height}+{area.x}+{area.y}"] if area else []
        return subprocess.check_output(
            ["import", "-silent", "-window", "root", *crop, "-depth", "8", f"{kind}:-"])

    def close_window(self):
        """By the title bar, as no key may be under way (see `answer`)."""
        area = extents(self.window)
        self.hand("mousemove", area.x + area.width - 8, area.y - 10, "click", 1)


def listen(desk):
    """Everything says what it is: a list by its label, as its name is what is chosen."""
    for page, slider in (("Vendor", "Red gain"), ("Standard", "Brightness")):
        turn_to(desk, page, slider)
        assert all(widget.get_relation_set() if kind_of(widget) == "combo box"
                   else widget.get_name() for widget in descendants(desk.window)
                   if kind_of(widget) in WORKED and has(widget, "SHOWING"))


def change_brightness(desk):
    plain = Picture(desk)
    x, y = middle(desk.find("slider", "Brightness"))
    desk.hand("mousemove", x, y, "mousedown", 1, "mousemove", x + 60, y, "mouseup", 1)
    desk.until(lambda: Picture(desk).light > plain.light + 30)
    desk.hand("key", "Home", "Right", "Right", "Right")
    desk.wait_number("Brightness", -252)
    desk.until(lambda: Picture(desk).light < plain.light - 30)
    desk.find("button", "Set standard defaults").get_action_iface().do_action(0)
    desk.wait_number("Brightness", 7)
    desk.until(lambda: abs(Picture(desk).light - plain.light) < 8)


def redden(desk):
    """As assistive technology does it."""
    turn_to(desk, "Vendor", "Red gain")
    plain = Picture(desk)
    desk.find("slider", "Red gain").get_value_iface().set_current_value(10)
    desk.until(lambda: Picture(desk).warmth > plain.warmth + 5)


def restore(desk):
    flipped = Picture(desk)
    for answer, number in (("Escape", 10), ("Return", 0)):
        desk.press("button", "Restore vendor defaults")
        desk.answer("Restore to default settings?", answer)
        desk.wait_number("Red gain", number)
    desk.wait_checked("Flip horizontally", False)
    desk.until(lambda: Picture(desk).mirrors(flipped))


desk = XDesk(sys.argv[1])
open_camera(desk)
listen(desk)
change_brightness(desk)
redden(desk)
flip(desk)
switch_stream(desk, ("Escape", False), ("Return", True))
restore(desk)
desk.leave()
