"""A person at the desk: finds widgets by what they are called, works them and looks at them and at
the screen. With what they are worked, and how the screen is seen, is each display's own matter:
under X there are a mouse and a keyboard; into Wayland no hand reaches in from outside, so that all
is done by assistive technology there, and the compositor is asked to close the window."""

import atexit
import contextlib
import functools
import os
import subprocess
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

SECONDS = 10  # until what must happen counts as not happening
OLD_KERNEL = os.environ.get("QUELVO_OLD_KERNEL", "").split()  # what makes the program think so
# The search for leaks needs rights that the program gives up, if it can.
PROBED = {"LD_PRELOAD": os.environ.get("QUELVO_PROBE", ""), "ASAN_OPTIONS":
          "verify_asan_link_order=0" + ("" if OLD_KERNEL else ":detect_leaks=0")}


class Desk:
    def __init__(self, program):
        Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)
        # Events wake up: what they tell of is looked at again. New names are kept besides.
        self.told = set()
        self._listener = Atspi.EventListener.new(self._hear)
        for event in ("object", "window", "focus"):
            self._listener.register(event)
        self._log = tempfile.TemporaryFile("w+")
        self._process = subprocess.Popen([*OLD_KERNEL, program], stderr=self._log,
                                         env={**os.environ, **PROBED})
        atexit.register(self._process.kill)
        self.window = self.until(self._active_window)

    def _hear(self, event):
        if event.type == "object:property-change:accessible-name":
            with contextlib.suppress(GLib.Error):  # it may be gone
                self.told.add(event.source.get_name())

    def until(self, condition):
        """Returns the first value of `condition` that counts as true. The pixels of the screen
        tell nobody when they change, so it is looked at again after a while in any case."""
        deadline = time.monotonic() + SECONDS
        pulse = GLib.timeout_add(50, lambda: GLib.SOURCE_CONTINUE)
        try:
            while time.monotonic() < deadline:
                # What is asked may be gone before it answers.
                with contextlib.suppress(GLib.Error):
                    if value := condition():
                        return value
                GLib.MainContext.default().iteration(True)
        finally:
            GLib.source_remove(pulse)
        with open("journey-failure.ppm", "wb") as picture:
            picture.write(self.photograph())
        raise TimeoutError

    def _active_window(self):
        return next((window for window in self._windows() if has(window, "ACTIVE")), None)

    def _windows(self):
        return [window for program in children(Atspi.get_desktop(0))
                if program.get_process_id() == self._process.pid for window in children(program)]

    @functools.cache  # the widgets stay
    def find(self, kind, name):
        """Returns the widget of this kind and name, and waits for it."""
        return self.until(lambda: next(
            (widget for window in self._windows() for widget in descendants(window)
             if kind_of(widget) == kind and widget.get_name() == name), None))

    def press(self, kind, name):
        self.click(self.find(kind, name))

    def answer(self, question, agreed):
        """Answers a box by one of its buttons, and waits until it is gone."""
        self.find("label", question)
        box = self.until(lambda: next(
            (window for window in self._windows()
             if window != self.window and has(window, "ACTIVE")), None))
        button = "OK" if agreed else "Cancel"
        self.click(next(widget for widget in descendants(box)
                        if kind_of(widget) == "button" and widget.get_name() == button))
        self.until(lambda: has(self.window, "ACTIVE"))

    def wait_number(self, name, number):
        """Waits until the slider shows the number, and the text or list beside it too."""
        slider = self.find("slider", name)
        self.until(lambda: slider.get_value_iface().get_current_value() == number
                   and str(number) in [widget.get_name() for widget in numbers_of(slider)])

    def wait_checked(self, name, wanted=True):
        box = self.find("check box", name)
        self.until(lambda: has(box, "CHECKED") == wanted)

    def look(self, widget):
        """Returns what the screen shows there, as the means (red, green, blue) of its columns."""
        area = extents(widget)
        means = subprocess.check_output(
            ["convert", "ppm:-", "-crop", f"{area.width}x{area.height}+{area.x}+{area.y}",
             "-scale", f"{area.width}x1!", "-depth", "8", "rgb:-"], input=self.photograph())
        return list(zip(means[0::3], means[1::3], means[2::3]))

    def end(self):
        """Closes the window, and returns the program's exit status and its log."""
        self.close_window()
        status = self._process.wait(SECONDS)
        self._log.seek(0)
        return status, self._log.readlines()


class XDesk(Desk):
    WORKED = ("combo box", "button", "check box", "radio button", "slider", "page tab list",
              "label")

    def controls(self):
        """The widgets that can be worked now, in the order of the window."""
        return [widget for widget in descendants(self.window)
                if kind_of(widget) in self.WORKED
                and all(has(widget, state) for state in ("FOCUSABLE", "SHOWING", "ENABLED"))]

    def choose(self, name, item):
        """Picks an item in the list beside a slider."""
        box = next(widget for widget in beside(self.find("slider", name))
                   if kind_of(widget) == "combo box")
        self.click(box)
        choices = children(box)[0]
        self.until(lambda: has(choices, "SHOWING"))
        self.click(next(choice for choice in children(choices) if choice.get_name() == item))

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
    def photograph():
        """Returns a picture of the screen."""
        return subprocess.check_output(
            ["import", "-silent", "-window", "root", "-depth", "8", "ppm:-"])

    def close_window(self):
        area = extents(self.window)
        self.hand("mousemove", area.x + area.width - 8, area.y - 10, "click", 1)


class WaylandDesk(Desk):
    @staticmethod
    def click(widget):
        widget.get_action_iface().do_action(0)

    @staticmethod
    def photograph():
        return subprocess.check_output(["grim", "-t", "ppm", "-"])

    @staticmethod
    def close_window():
        subprocess.run(["swaymsg", "--quiet", "[title=Quelvo] kill"], check=True)


def children(widget):
    count = range(widget.get_child_count())
    return [child for child in map(widget.get_child_at_index, count) if child]


def descendants(widget):
    for child in children(widget):
        yield child
        if kind_of(child) != "combo box":  # many items, and not to be told apart
            yield from descendants(child)


def beside(slider):
    """The widgets in a slider's row: a text or a list, which have no names of their own."""
    area = extents(slider)
    return [widget for widget in children(slider.get_parent())
            if area.y <= middle(widget)[1] <= area.y + area.height]


def is_named(widget):
    """What a list or the version is called tells a label; its name is what it shows."""
    return (labels_of if kind_of(widget) in ("combo box", "label") else Atspi.Accessible.get_name)(
        widget)


def numbers_of(slider):
    """What says that it is the slider's number: a text in its description, a list by its label."""
    name = slider.get_name()
    return [number for number in beside(slider)
            if number.get_description() == name or f"{name} value" in labels_of(number)]


def labels_of(widget):
    return [relation.get_target(0).get_name() for relation in widget.get_relation_set()
            if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY]


def kind_of(widget):
    """What kind of widget it is; older releases say "push button" for a button."""
    return widget.get_role_name().removeprefix("push ")


def extents(widget):
    return widget.get_component_iface().get_extents(Atspi.CoordType.SCREEN)


def middle(widget):
    area = extents(widget)
    return area.x + area.width // 2, area.y + area.height // 2


def has(widget, state):
    return widget.get_state_set().contains(getattr(Atspi.StateType, state))
