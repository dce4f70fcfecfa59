"""The panel as a surface of the layer shell: sway with two outputs, of scale 1 and of 1.5, and
waybar on both."""

import os
import re
import time
import unittest

import desktop
import sway
from wayland_input import BlackWindow, VirtualKeyboard, VirtualPointer

EDGE = os.environ.get("TIDEWICK_PANEL_EDGE", "top")
WIDTH, HEIGHT = 1280, 800  # of either output, in points
PANEL = (480, 540)
BAR, GAP = 30, 6
SCALES = {0: 1, WIDTH: 1.5}  # of the output that begins there


def add_output():
    """Puts a second output to the right of the first."""
    sway.message("output", "HEADLESS-1", "position", "0", "0")
    sway.message("create_output")
    name = next(output["name"] for output in sway.outputs() if output["name"] != "HEADLESS-1")
    sway.message("output", name, "resolution", "1920x1200", "scale", "1.5", "position",
                 str(WIDTH), "0")


def icon_at(left):
    """A place on the icon in the bar of the output that begins there, or None."""
    top = 0 if EDGE == "top" else HEIGHT - BAR
    places = sway.ink(left, top, WIDTH, BAR)
    return places[len(places) // 2] if places else None


def panel(left=0):
    """The place and size of the panel on the output that begins there, or None. No ordinary window
    is open then."""
    return sway.drawing(left, BAR if EDGE == "top" else 0, WIDTH, HEIGHT - BAR,
                        SCALES[left])


def is_open():
    return any(panel(left) for left in SCALES)


class Case(unittest.TestCase):
    """The program, with a pointer and a keyboard to use it."""
    wrapper = ()

    def setUp(self):
        if not sway.has_layer_shell():
            self.skipTest("this program was built without LayerShellQt")
        os.makedirs(desktop.SCREENSHOTS, exist_ok=True)
        if len(sway.outputs()) == 1:
            add_output()
        self.keyboard = VirtualKeyboard()
        self.addCleanup(self.keyboard.close)
        self.pointer = VirtualPointer(2 * WIDTH, HEIGHT)
        self.addCleanup(lambda: self.pointer.close())
        self.rest()
        self.addCleanup(desktop.wait_until, lambda: not icon_at(0), 5, "the end of the icon")
        self.program = desktop.start_program(wrapper=self.wrapper)
        self.addCleanup(desktop.end, self.program)
        self.place_of_icon()

    def rest(self, left=0):
        """Puts the pointer on the bar, away from the icon."""
        self.pointer.move(left + 5, 3 if EDGE == "top" else HEIGHT - BAR + 3)

    def place_of_icon(self, left=0):
        return desktop.wait_until_still(lambda: icon_at(left), 10, "the icon in the picture")

    def open_panel(self, left=0):
        """Clicks the icon of the output that begins there; returns the panel's place and size."""
        try:
            return self.click_icon(left)
        except AssertionError:  # a bar that has just started can miss a click
            return self.click_icon(left)

    def click_icon(self, left):
        self.pointer.click(*self.place_of_icon(left))
        self.rest(left)
        return desktop.wait_until_still(lambda: panel(left), 1, "the panel")

    def wait_for_its_end(self):
        desktop.wait_until(lambda: not is_open(), 5, "the end of the panel")

    def assert_stays_closed(self):
        self.wait_for_its_end()
        time.sleep(0.6)
        self.assertFalse(is_open())

    def closes_on_escape(self):
        self.keyboard.press("Escape")
        return not is_open()


class LayerShellTest(Case):
    def test_panel_is_at_the_bar_beside_the_icon_that_was_clicked(self):
        for left in SCALES:
            x, y, *size = self.open_panel(left)
            sway.screenshot(f"layer-{EDGE}-{left}")
            self.assertEqual(tuple(size), PANEL)
            self.assertEqual(y, BAR + GAP if EDGE == "top" else HEIGHT - BAR - GAP - PANEL[1])
            self.assertTrue(x <= icon_at(left)[0] < x + PANEL[0], (x, icon_at(left)))
            self.assertTrue(left + GAP <= x <= left + WIDTH - GAP - PANEL[0], x)
            desktop.wait_until(self.closes_on_escape, 5, "the keyboard")

    def test_place_in_pixels_is_understood_at_a_fractional_scale(self):
        item = desktop.StatusItem()
        below = "20" if EDGE == "top" else "1180"
        desktop.call(item.name, item.path, "org.kde.StatusNotifierItem.Activate",
                     str(WIDTH + 1900), below)
        x, y, *_ = desktop.wait_until_still(lambda: panel(WIDTH), 5, "the panel")
        self.assertEqual(x, 2 * WIDTH - GAP - PANEL[0])
        self.assertEqual(y, BAR + GAP if EDGE == "top" else HEIGHT - BAR - GAP - PANEL[1])

    def test_panel_is_an_ordinary_window_nowhere(self):
        self.open_panel()
        self.assertEqual(sway.windows("Tidewick"), [])

    def test_escape_closes_because_the_panel_has_the_keyboard(self):
        for _ in range(3):
            self.open_panel()
            desktop.wait_until(self.closes_on_escape, 5, "the keyboard")

    def test_another_click_on_the_icon_closes(self):
        for _ in range(2):
            self.open_panel()
            self.pointer.click(*self.place_of_icon())
            self.assert_stays_closed()

    def test_click_on_the_desktop_closes(self):
        self.assert_that_a_click_closes()

    def test_click_on_another_window_closes(self):
        other = BlackWindow(WIDTH, HEIGHT)
        self.addCleanup(other.close)
        self.assert_that_a_click_closes()

    def assert_that_a_click_closes(self):
        for left in SCALES:
            self.open_panel()
            time.sleep(0.3)  # it has had the keyboard by then
            self.pointer.click(left + 100, HEIGHT // 2)
            self.assert_stays_closed()

    def test_pointer_may_rest_on_the_panel(self):
        x, y, *_ = self.open_panel()
        self.pointer.move(x + PANEL[0] // 2, y + PANEL[1] // 2)
        time.sleep(1)
        self.assertTrue(is_open())

    def test_second_start_opens_the_panel_in_a_corner(self):
        desktop.start_again()
        desktop.wait_until(is_open, 5, "the panel")
        place = desktop.wait_until_still(lambda: panel(0) or panel(WIDTH), 5, "the panel")
        bar_above = BAR if EDGE == "top" else 0
        self.assertEqual((place[0] % WIDTH, *place[1:]),
                         (WIDTH - GAP - PANEL[0], bar_above + GAP, *PANEL))
        desktop.wait_until(self.closes_on_escape, 5, "the keyboard")

    def open_settings(self):
        item = desktop.StatusItem()
        desktop.call(item.name, item.menu_path(), "com.canonical.dbusmenu.AboutToShow", "0")
        item.choose(item.menu_labels()["Settings..."])
        return desktop.wait_until(lambda: sway.windows("Tidewick Settings"), 5, "the settings")

    def test_settings_are_a_window(self):
        self.open_settings()

    def test_panel_stays_open_if_the_settings_had_the_keyboard(self):
        self.open_settings()
        # Most of it is beyond the first output, and none of it where the panel comes.
        sway.message('[title="Tidewick Settings"]', "floating", "enable,", "move", "absolute",
                     "position", str(WIDTH - 100), "620," if EDGE == "top" else "20,", "focus")
        desktop.wait_until(lambda: sway.windows("Tidewick Settings")[0]["focused"], 5,
                           "the keyboard on the settings")
        self.click_icon(0)
        time.sleep(0.6)
        self.assertTrue(panel())
        self.pointer.click(100, HEIGHT // 2)
        self.assert_stays_closed()

    def test_panel_is_back_on_the_other_output_when_its_own_is_gone(self):
        self.open_panel(WIDTH)
        second = next(output["name"] for output in sway.outputs() if output["scale"] != 1)
        sway.message("output", second, "unplug")
        desktop.wait_until(lambda: len(sway.outputs()) == 1, 5, "the end of the output")
        self.pointer.close()
        self.pointer = VirtualPointer(WIDTH, HEIGHT)
        self.rest()
        time.sleep(0.6)  # after the end of the panel, which nobody sees
        self.open_panel()


class SharpnessTest(Case):
    log = os.path.join(os.environ["TIDEWICK_DESKTOP"], "wayland-debug.log")
    wrapper = ("sh", "-c", 'WAYLAND_DEBUG=client exec "$1" 2>"$0"', log)

    def test_panel_has_all_pixels_of_its_screen(self):
        for left, scale in SCALES.items():
            self.open_panel(left)
            size = ", ".join(str(round(points * scale)) for points in PANEL)
            desktop.wait_until(lambda: self.says(f"create_buffer.* {size}, "), 5, size + " pixels")
            desktop.wait_until(self.closes_on_escape, 5, "the keyboard")

    def says(self, request):
        """Whether the program has made this request of the compositor."""
        with open(self.log, encoding="utf-8", errors="replace") as file:
            return re.search(request, file.read())


if __name__ == "__main__":
    unittest.main()
