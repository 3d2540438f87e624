"""A person at the desk: finds widgets by what they are called, works them with the mouse and the
keyboard of the X display, and looks at them and at the screen."""

import collections
import contextlib
import os
import struct
import subprocess
import sys
import threading
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

WORKED = ("combo box", "push button", "check box", "radio button", "slider", "page tab list")
SECONDS = 10  # until what must happen counts as not happening


def require(holds, what):
    """Ends the journey as failed unless the condition holds."""
    if not holds:
        subprocess.run(["import", "-silent", "-window", "root", "journey-failure.png"], check=False)
        sys.exit(f"FAILED: {what}")


class Desk:
    def __init__(self, program):
        Atspi.set_timeout(SECONDS * 1000, SECONDS * 1000)
        Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)
        # Nothing is done with the events but waking up: what they tell of is looked at again.
        self._awake = False
        self._listener = Atspi.EventListener.new(self._wake)
        for event in ("object", "window", "focus"):
            self._listener.register(event)
        self.log = []
        self._known = {}
        self._hands = subprocess.Popen(["xdotool", "-"], stdin=subprocess.PIPE, text=True)
        self._process = subprocess.Popen([program], stderr=subprocess.PIPE, text=True)
        self._reader = threading.Thread(target=lambda: self.log.extend(self._process.stderr))
        self._reader.start()
        self.window = self.until("the window is active", self._active_window)

    def until(self, what, condition):
        """Returns the first value of `condition` that counts as true. The pixels of the screen
        tell nobody when they change, so it is looked at again after a while in any case."""
        deadline = time.monotonic() + SECONDS
        pulse = GLib.timeout_add(50, self._wake)
        try:
            while time.monotonic() < deadline:
                self._awake = False
                # What is asked may be gone before it answers.
                with contextlib.suppress(GLib.Error):
                    if value := condition():
                        return value
                while not self._awake:
                    GLib.MainContext.default().iteration(True)
        finally:
            GLib.source_remove(pulse)
        return require(False, f"not within {SECONDS} seconds: {what}")

    def _wake(self, *_):
        self._awake = True
        return GLib.SOURCE_CONTINUE

    def _active_window(self):
        return next((window for window in self.windows() if has(window, "ACTIVE")), None)

    def windows(self):
        return [window for program in children(Atspi.get_desktop(0))
                if program.get_process_id() == self._process.pid for window in children(program)]

    def find(self, role, name):
        """Returns the one widget of this kind and name. All but texts keep their names and stay
        where they are, so one look around finds them for later too."""

        def search():
            if role == "label" or (role, name) not in self._known:
                self._known = self._look_around()
            found = self._known.get((role, name), [])
            return found[0] if len(found) == 1 else None

        return self.until(f"there is one {role} “{name}”", search)

    def _look_around(self):
        known = collections.defaultdict(list)
        for window in self.windows():
            for widget in descendants(window):
                known[widget.get_role_name(), widget.get_name()].append(widget)
        return known

    def controls(self):
        """The widgets that can be worked now, in the order of the window."""
        return [widget for widget in descendants(self.window)
                if widget.get_role_name() in WORKED
                and all(has(widget, state) for state in ("FOCUSABLE", "SHOWING", "ENABLED"))]

    def walk(self, count):
        """Goes on by Tab so many times, and yields the widget that has the focus then."""
        controls = collections.deque(self.controls())
        focused = next((widget for widget in controls if has(widget, "FOCUSED")), None)
        for _ in range(count):
            self.keys("Tab")
            focused = self.until("the focus moves", lambda: next(
                (widget for widget in controls if widget != focused and has(widget, "FOCUSED")),
                None))
            yield focused
            controls.rotate(-controls.index(focused))  # the next one is asked first

    def number(self, name):
        return int(self.find("slider", name).get_value_iface().get_current_value())

    def wait_number(self, name, number):
        """Waits until the slider shows the number, and the text or list beside it too."""
        slider = self.find("slider", name)
        self.until(f"“{name}” is {number}", lambda: self.number(name) == number
                   and str(number) in [widget.get_name() for widget in self._beside(slider)])

    @staticmethod
    def _beside(slider):
        """The widgets in the slider's row: a text or a list, which have no names of their own."""
        area = extents(slider)
        middles = ((widget, extents(widget).y + extents(widget).height // 2)
                   for widget in children(slider.get_parent()))
        return [widget for widget, middle in middles if area.y <= middle <= area.y + area.height]

    def choose(self, name, item):
        """Picks an item in the list beside a slider."""
        row = self._beside(self.find("slider", name))
        box = next(widget for widget in row if widget.get_role_name() == "combo box")
        self.click(box)
        choices = children(box)[0]
        self.until("the list is open", lambda: has(choices, "SHOWING"))
        self.click(next(choice for choice in children(choices) if choice.get_name() == item))

    def answer(self, question, key):
        """Answers a box by a key, and waits until it is gone."""
        self.find("label", question)
        self.until("the box is active", lambda: self._active_window() != self.window)
        self.keys(key)
        self.until("the box is gone", lambda: self._active_window() == self.window)

    def wait_checked(self, name, wanted=True):
        box = self.find("check box", name)
        self.until(f"“{name}” is {'on' if wanted else 'off'}",
                   lambda: has(box, "CHECKED") == wanted)

    def click(self, widget):
        area = extents(widget)
        self._hand("mousemove", area.x + area.width // 2, area.y + area.height // 2, "click", 1)

    def drag(self, name, fraction):
        """Drags a slider's handle to this part of the slider's length."""
        slider = self.find("slider", name)
        value, area = slider.get_value_iface(), extents(slider)
        low, high = value.get_minimum_value(), value.get_maximum_value()
        here = (value.get_current_value() - low) / (high - low)
        middle = area.y + area.height // 2
        handle = 14  # the middle of it stays this far within the slider's ends, both together
        for step in range(11):
            place = here + (fraction - here) * step / 10
            self._hand("mousemove", area.x + handle // 2 + round((area.width - handle) * place), middle)
            if step == 0:
                self._hand("mousedown", 1)
        self._hand("mouseup", 1)

    def keys(self, *names):
        self._hand("key", *names)

    def _hand(self, *words):
        print(*words, file=self._hands.stdin, flush=True)

    @staticmethod
    def look(area, width, height):
        """Returns what the screen shows there as rows of (red, green, blue), each of them the mean
        of a patch. The display keeps its pixels in a file, behind a header and a table of colours."""
        with open(os.environ["JOURNEY_SCREEN"], "rb") as file:
            screen = file.read()
        header = struct.unpack_from(">20I", screen)
        start, line = header[0] + 12 * header[19], header[12]

        def patch(column, row):
            left, right = (area.x + area.width * edge // width for edge in (column, column + 1))
            top, bottom = (area.y + area.height * edge // height for edge in (row, row + 1))
            sides = [(start + y * line + left * 4, start + y * line + right * 4)
                     for y in range(top, bottom, (bottom - top + 3) // 4)]  # four lines will do
            return tuple(sum(sum(screen[first + channel:last:4]) for first, last in sides)
                         / (len(sides) * (right - left)) for channel in (2, 1, 0))

        return [[patch(column, row) for column in range(width)] for row in range(height)]

    def end(self):
        """Closes the window, and returns the program's exit status; then the log is complete. Alt
        stays down: the toolkit loses the memory of a release that comes as the program ends."""
        self._hand("keydown", "alt", "key", "F4")
        self._reader.join()
        return self._process.wait(SECONDS)

    def abandon(self):
        for process in (self._process, self._hands):
            process.kill()
        self._reader.join()


def children(widget):
    count = range(widget.get_child_count())
    return [child for child in map(widget.get_child_at_index, count) if child]


def descendants(widget):
    for child in children(widget):
        yield child
        if child.get_role_name() != "combo box":  # many items, and not to be told apart
            yield from descendants(child)


def is_named(widget):
    """A list's name is what is chosen; what it is called tells the label that it relates to."""
    labels = [relation.get_target(0).get_name() for relation in widget.get_relation_set()
              if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY]
    return any(labels) if widget.get_role_name() == "combo box" else bool(widget.get_name())


def extents(widget):
    return widget.get_component_iface().get_extents(Atspi.CoordType.SCREEN)


def has(widget, state):
    return widget.get_state_set().contains(getattr(Atspi.StateType, state))
