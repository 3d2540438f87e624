"""A desk with the mouse and the keyboard of an X display."""

import subprocess

from desk import Desk, beside, children, descendants, extents, has, kind_of, middle

WORKED = ("combo box", "button", "check box", "radio button", "slider", "page tab list", "label")


class XDesk(Desk):
    def controls(self):
        """The widgets that can be worked now, in the order of the window."""
        return [widget for widget in descendants(self.window)
                if kind_of(widget) in WORKED
                and all(has(widget, state) for state in ("FOCUSABLE", "SHOWING", "ENABLED"))]

    def choose(self, name, item):
        """Picks an item in the list beside a slider."""
        box = next(widget for widget in beside(self.find("slider", name))
                   if kind_of(widget) == "combo box")
        self.click(box)
        choices = children(box)[0]
        self.until(lambda: has(choices, "SHOWING"))
        self.click(next(choice for choice in children(choices) if choice.get_name() == item))

    def answer(self, question, agreed):
        """Answers a box by Return or Escape, and waits until it is gone. Only then does the key
        come up: of one that assistive technology has not answered for when its window goes, the
        toolkit loses the memory."""
        key = "Return" if agreed else "Escape"
        self.find("label", question)
        self.until(lambda: not has(self.window, "ACTIVE"))
        self.hand("keydown", key)
        self.until(lambda: has(self.window, "ACTIVE"))
        self.hand("keyup", key)

    def click(self, widget):
        self.hand("mousemove", *middle(widget), "click", 1)

    def drag(self, slider, fraction):
        """Drags a slider's handle from the middle to this part of the slider's length."""
        x, y = middle(slider)
        there = extents(slider).x + extents(slider).width * fraction
        self.hand("mousemove", x, y, "mousedown", 1, "mousemove", int(there), y, "mouseup", 1)

    @staticmethod
    def hand(*words):
        subprocess.run(["xdotool", *map(str, words)], check=True)

    @staticmethod
    def photograph(kind, area=None):
        """Returns a picture of an area of the screen, or of all of it."""
        crop = ["-crop", f"{area.width}x{area.height}+{area.x}+{area.y}"] if area else []
        return subprocess.check_output(
            ["import", "-silent", "-window", "root", *crop, "-depth", "8", f"{kind}:-"])

    def close_window(self):
        """By the title bar, as no key may be under way (see `answer`)."""
        area = extents(self.window)
        self.hand("mousemove", area.x + area.width - 8, area.y - 10, "click", 1)
