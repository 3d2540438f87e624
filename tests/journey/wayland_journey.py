"""A shorter journey, under a Wayland compositor. No hand reaches in from outside there: everything
is done by assistive technology, and the compositor is asked to close the window."""

import subprocess
import sys

from desk import Desk, descendants, has, kind_of
from steps import Picture, flip, leave, open_camera, restore, turn_to


class WaylandDesk(Desk):
    @staticmethod
    def click(widget):
        widget.get_action_iface().do_action(0)

    def _box(self):
        active = self._active_window()
        return active if active != self.window else None

    def answer(self, question, agreed):
        """Answers a box by one of its buttons, and waits until it is gone."""
        self.find("label", question)
        box = self.until(self._box)
        button = "OK" if agreed else "Cancel"
        self.click(next(widget for widget in descendants(box)
                        if kind_of(widget) == "button" and widget.get_name() == button))
        self.until(lambda: has(self.window, "ACTIVE"))

    @staticmethod
    def photograph(kind, area=None):
        """Returns a picture of an area of the screen, or of all of it."""
        crop = ["-g", f"{area.x},{area.y} {area.width}x{area.height}"] if area else []
        return subprocess.check_output(["grim", "-t", kind, *crop, "-"])

    @staticmethod
    def close_window():
        subprocess.run(["swaymsg", "--quiet", "[title=Quelvo] kill"], check=True)


def change(desk):
    turn_to(desk, "Standard", "Brightness")
    plain = Picture(desk)
    desk.find("slider", "Brightness").get_value_iface().set_current_value(200)
    desk.wait_number("Brightness", 200)
    desk.until(lambda: Picture(desk).light > plain.light + 30)
    turn_to(desk, "Vendor", "Red gain")


desk_of_journey = WaylandDesk(sys.argv[1])
for part in (open_camera, change, flip, restore, leave):
    part(desk_of_journey)
