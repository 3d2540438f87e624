"""A shorter journey, under a Wayland compositor. No hand reaches in from outside there: everything
is done by assistive technology, and the compositor is asked to close the window."""

import subprocess
import sys

from desk import Desk, descendants, has, kind_of
from steps import flip, open_camera, switch_stream


class WaylandDesk(Desk):
    @staticmethod
    def click(widget):
        widget.get_action_iface().do_action(0)

    def answer(self, question, button):
        """Answers a box by one of its buttons, and waits until it is gone."""
        self.find("label", question)
        self.until(lambda: self._active_window() not in (None, self.window))
        self.click(next(widget for widget in descendants(self._active_window())
                        if kind_of(widget) == "button" and widget.get_name() == button))
        self.until(lambda: has(self.window, "ACTIVE"))

    @staticmethod
    def photograph(kind, area=None):
        crop = ["-g", f"{area.x},{area.y} {area.width}x{area.height}"] if area else []
        return subprocess.check_output(["grim", "-t", kind, *crop, "-"])

    @staticmethod
    def close_window():
        subprocess.run(["swaymsg", "--quiet", "[title=Quelvo] kill"], check=True)


desk = WaylandDesk(sys.argv[1])
open_camera(desk)
flip(desk)
switch_stream(desk, ("Cancel", False), ("OK", True))
desk.leave()
