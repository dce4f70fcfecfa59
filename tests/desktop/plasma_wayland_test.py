"""Plasma under Wayland. Its compositor draws into an X server, whose pointer and keyboard the test
uses; the X server knows nothing of Plasma's windows, so the panel is what changes in the picture."""

import os
import time
import unittest

from PIL import ImageChops, ImageGrab

import desktop

EDGE = os.environ.get("TIDEWICK_PANEL_EDGE", "top")
WIDTH, HEIGHT = 1280, 800
BAR, GAP = 32, 6
PANEL = (480, 540)


def picture():
    return ImageGrab.grab(xdisplay=os.environ["DISPLAY"]).convert("RGB")


class PlasmaTest(unittest.TestCase):
    def setUp(self):
        self.rest()
        self.addCleanup(desktop.wait_until, lambda: not desktop.Picture().ink(), 10,
                        "the end of the icon")
        self.program = desktop.start_program()
        self.addCleanup(desktop.end, self.program)
        self.icon = self.place_of_icon()
        self.closed = self.without_bar()

    def rest(self):
        desktop.move_pointer(200, 400)

    def place_of_icon(self):
        ink = desktop.wait_until_still(lambda: desktop.Picture().ink(), 20, "the icon")
        return ink[len(ink) // 2]

    def without_bar(self):
        """The picture of what the bar leaves free."""
        top = BAR if EDGE == "top" else 0
        return picture().crop((0, top, WIDTH, top + HEIGHT - BAR))

    def panel(self):
        """Left, top, width and height of what is drawn since the start; None for less than half of
        a panel, such as a tooltip."""
        box = ImageChops.difference(self.closed, self.without_bar()).getbbox()
        if not box or box[2] - box[0] < PANEL[0] / 2:
            return None
        top = box[1] + (BAR if EDGE == "top" else 0)
        return box[0], top, box[2] - box[0], box[3] - box[1]

    def open_panel(self):
        desktop.click(*self.icon)
        return desktop.wait_until_still(self.panel, 5, "the panel")

    def assert_stays_closed(self):
        desktop.wait_until(lambda: not self.panel(), 5, "the end of the panel")
        time.sleep(0.6)
        self.assertIsNone(self.panel())

    def test_icon_and_number_are_seen(self):
        alone = desktop.Picture().ink()
        for _ in range(12):
            self.addCleanup(desktop.end, desktop.start_server())
        desktop.wait_until(lambda: desktop.Picture().ink() not in ([], alone), 15, "the number")
        desktop.screenshot(f"host-plasma-wayland-{EDGE}-number")

    def test_click_opens_the_panel_beside_the_icon_and_another_closes_it(self):
        left, top, *size = self.open_panel()
        desktop.screenshot(f"host-plasma-wayland-{EDGE}-open")
        self.assertEqual(tuple(size), PANEL)
        self.assertEqual(top, BAR + GAP if EDGE == "top" else HEIGHT - BAR - GAP - PANEL[1])
        self.assertTrue(left <= self.icon[0] < left + PANEL[0], (left, self.icon))
        desktop.click(*self.icon)
        self.assert_stays_closed()

    def test_click_outside_closes(self):
        self.open_panel()
        desktop.click(200, 400)
        self.assert_stays_closed()

    def test_escape_closes_because_the_panel_has_the_keyboard(self):
        for _ in range(2):
            self.open_panel()
            desktop.press_key("Escape")
            self.assert_stays_closed()

    def test_second_start_opens_the_panel(self):
        desktop.start_again()
        desktop.wait_until(self.panel, 5, "the panel")


if __name__ == "__main__":
    unittest.main()
