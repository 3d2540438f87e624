"""A person at the desk: finds widgets by what they are called, works them and looks at them and at
the screen. With what they are worked, and how the screen is seen, is each display's own matter."""

import atexit
import contextlib
import functools
import re
import subprocess
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

# What the program may write on its way, and nothing else. The last is what the toolkit of Debian 13
# says of its own labels whose text can be selected.
LOG = re.compile(
    r"quelvo: (kkk:3|g_length2?:\d+|bmRequestType2:\d+ get_data_for:-?\d+|set:length:8 , -?\d+|"
    r"intval:-?\d+|zoomEnable:0|slider:-?\d+|spin:-?\d+|viewLayer = <CALayer: 0x[0-9a-f]+>)\n|"
    r"qt\.accessibility\.atspi: Received text event for invalid interface\.\n")
SECONDS = 10  # until what must happen counts as not happening


class Desk:
    def __init__(self, program):
        Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)
        # Nothing is done with the events but waking up: what they tell of is looked at again.
        self._listener = Atspi.EventListener.new(lambda _: None)
        for event in ("object", "window", "focus"):
            self._listener.register(event)
        # The pixels of the screen tell nobody when they change: they are looked at all the time.
        GLib.timeout_add(50, lambda: GLib.SOURCE_CONTINUE)
        self._log = tempfile.TemporaryFile("w+")
        self._process = subprocess.Popen([program], stderr=self._log)
        atexit.register(self._process.kill)
        self.window = self.until(self._active_window)

    def until(self, condition):
        """Returns the first value of `condition` that counts as true."""
        deadline = time.monotonic() + SECONDS
        while time.monotonic() < deadline:
            # What is asked may be gone before it answers.
            with contextlib.suppress(GLib.Error):
                if value := condition():
                    return value
            GLib.MainContext.default().iteration(True)
        with open("journey-failure.png", "wb") as picture:
            picture.write(self.photograph("png"))
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

    def wait_number(self, name, number):
        value = self.find("slider", name).get_value_iface()
        self.until(lambda: value.get_current_value() == number)

    def wait_checked(self, name, wanted=True):
        box = self.find("check box", name)
        self.until(lambda: has(box, "CHECKED") == wanted)

    def look(self, widget):
        """Returns what the screen shows there, as the means (red, green, blue) of its columns."""
        area = extents(widget)
        row = 3 * area.width
        values = self.photograph("ppm", area)[-row * area.height:]  # after the header
        means = [sum(values[i::row]) / area.height for i in range(row)]
        return list(zip(means[0::3], means[1::3], means[2::3]))

    def leave(self):
        """Closes the window. The program ends well then, and has said nothing strange."""
        self.close_window()
        status = self._process.wait(SECONDS)
        self._log.seek(0)
        strange = [line for line in self._log if not LOG.fullmatch(line)]
        assert (status, strange) == (0, []), f"ended with {status}: {''.join(strange)}"


def children(widget):
    count = range(widget.get_child_count())
    return [child for child in map(widget.get_child_at_index, count) if child]


def descendants(widget):
    for child in children(widget):
        yield child
        if kind_of(child) != "combo box":  # many items, and not to be told apart
            yield from descendants(child)


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
