"""What every journey does, by whatever means its desk has to click on something."""

import statistics

from desk import extents, has


class Picture:
    """What the preview shows."""

    def __init__(self, desk):
        pixels = desk.look(desk.find("filler", "Preview"))
        self.columns = [sum(pixel) / 3 for pixel in pixels]
        self.light = statistics.mean(self.columns)
        self.warmth = statistics.mean(red - blue for red, _, blue in pixels)

    def has_contrast(self):
        return max(self.columns) - min(self.columns) > 8

    def mirrors(self, other):
        """Whatever the light is by now: only where it is bright and where dark counts. A picture
        that lies some pixels off the middle is not quite its own mirror."""
        same, turned = (statistics.correlation(self.columns, columns)
                        for columns in (other.columns, other.columns[::-1]))
        return turned > same + 0.4


def turn_to(desk, page, slider):
    desk.press("page tab", page)
    desk.until(lambda: has(desk.find("slider", slider), "SHOWING"))


def open_camera(desk):
    screen = extents(desk.window)
    assert screen.x + screen.width <= 1200 and screen.y + screen.height <= 760
    assert not Picture(desk).has_contrast()
    desk.press("button", "Open camera")
    desk.find("label", "v3 V9.2.4")
    desk.until(lambda: Picture(desk).has_contrast())


def flip(desk):
    turn_to(desk, "Vendor", "Red gain")
    plain = Picture(desk)
    desk.press("check box", "Flip horizontally")
    desk.wait_checked("Flip horizontally")
    desk.until(lambda: Picture(desk).mirrors(plain))


def switch_stream(desk, *answers):
    for answer, checked in answers:
        desk.press("check box", "H.264 stream")
        desk.answer("Reboot to Switch H264?", answer)
        desk.wait_checked("H.264 stream", checked)
