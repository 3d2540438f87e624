"""One journey through the program: opens the camera, changes it in every way that there is, takes
it all back and leaves. After each step the picture and the widgets must agree."""

import sys

from desk import has, is_named, kind_of, numbers_of
from steps import Picture, flip, leave, open_camera, restore, turn_to
from x_desk import XDesk


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


def answer_boxes(desk):
    for agreed, checked in ((False, False), (True, True), (True, False)):
        desk.press("check box", "H.264 stream")
        desk.answer("Reboot to Switch H264?", agreed)
        desk.wait_checked("H.264 stream", checked)


def look_at_what_is_restored(desk):
    desk.wait_number("Red gain", 0)
    desk.wait_checked("H.264 stream")


desk_of_journey = XDesk(sys.argv[1])
for part in (open_camera, walk_and_speak, drag_and_type, choose, flip, answer_boxes, restore,
             look_at_what_is_restored, leave):
    part(desk_of_journey)
for program in sys.argv[2:]:
    leave(XDesk(program))
