"""Plasma under Wayland, where Tidewick is a Wayland program or, without LayerShellQt, one of X11. The
compositor draws into an X server, whose pointer and keyboard the test uses; the X server knows
nothing of Plasma's windows, so the panel is what changes in the picture."""

import os
import signal
import subprocess
import time
import unittest

from PIL import ImageChops, ImageGrab

import desktop
from wayland_input import BlackWindow

EDGE = os.environ.get("TIDEWICK_PANEL_EDGE", "top")
WIDTH, HEIGHT = 1280, 800
BAR, GAP = 32, 6
PANEL = (480, 540)
ENTRIES = {"Settings": 0.5, "Quit": 0.87}  # where they are in the menu: 0 is its upper end
IS_X11 = "TIDEWICK_X11_DISPLAY" in os.environ
# The compositor's own X server, where it has one, is not the one that the test uses.
X_SERVER = {"DISPLAY": os.environ["TIDEWICK_X11_DISPLAY"],
            "XAUTHORITY": os.environ["TIDEWICK_X11_AUTHORITY"]} if IS_X11 else {}
PID_FILE = os.path.join(os.environ["TIDEWICK_DESKTOP"], "plasmashell.pid")


def picture():
    return ImageGrab.grab(xdisplay=os.environ["DISPLAY"]).convert("RGB")


def x11_panels():
    """The panel among the windows of the compositor's X server."""
    return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Tidewick$"],
                          env={**os.environ, **X_SERVER}, capture_output=True, text=True,
                          check=False).stdout.split()


class PlasmaTest(unittest.TestCase):
    shells = []  # that were started again; they stay for the tests that follow

    def setUp(self):
        self.rest()
        self.addCleanup(desktop.wait_until, lambda: not desktop.Picture().ink(), 10,
                        "the end of the icon")
        self.program = desktop.start_program(**X_SERVER)
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

    def drawn(self):
        """Left, top, width and height of what is drawn since the start, or None."""
        box = ImageChops.difference(self.closed, self.without_bar()).getbbox()
        if not box:
            return None
        top = box[1] + (BAR if EDGE == "top" else 0)
        return box[0], top, box[2] - box[0], box[3] - box[1]

    def panel(self):
        """The same for what may be a panel; None for less than half of one, such as a tooltip."""
        drawn = self.drawn()
        return drawn if drawn and drawn[2] >= PANEL[0] / 2 else None

    def open_panel(self):
        desktop.click(*self.icon)
        return desktop.wait_until_still(self.panel, 5, "the panel")

    def assert_stays_closed(self):
        desktop.wait_until(lambda: not self.panel(), 5, "the end of the panel")
        time.sleep(0.6)
        self.assertIsNone(self.panel())

    def test_icon_and_number_are_seen(self):
        desktop.see_numbers(
            self, lambda: desktop.Picture().ink(),
            lambda name: desktop.screenshot(f"host-plasma-wayland-{EDGE}-{name}"))

    def test_click_opens_the_panel_beside_the_icon_and_another_closes_it(self):
        left, top, *size = self.open_panel()
        desktop.screenshot(f"host-plasma-wayland-{EDGE}-open")
        self.assertEqual(tuple(size), PANEL)
        self.assertEqual(bool(x11_panels()), IS_X11)
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

    def test_another_program_with_the_keyboard_closes(self):
        other = BlackWindow(400, 300)
        self.addCleanup(other.close)
        left, top, width, height = desktop.wait_until_still(self.drawn, 5, "another window")
        self.closed = self.without_bar()
        self.open_panel()
        desktop.click(left + width // 2, top + height // 2)
        self.assert_stays_closed()

    def test_tool_tip_is_seen(self):
        desktop.move_pointer(*self.icon)
        left, _, width, height = desktop.wait_until_still(self.drawn, 5, "the tooltip")
        desktop.screenshot(f"host-plasma-wayland-{EDGE}-tooltip")
        self.assertTrue(width < 300 and height < 120, (width, height))
        self.assertLess(left, self.icon[0] + width)

    def choose(self, entry):
        """Opens the menu and clicks an entry of it."""
        subprocess.run(["xdotool", "mousemove", *map(str, self.icon), "click", "3"], check=True)

        def menu():
            drawn = self.drawn()
            return drawn if drawn and drawn[2] > 80 else None
        left, top, width, height = desktop.wait_until_still(menu, 5, "the menu")
        desktop.screenshot(f"host-plasma-wayland-{EDGE}-menu")
        desktop.click(left + width // 3, top + int(height * ENTRIES[entry]))

    def test_menu_shows_settings(self):
        self.choose("Settings")

        def is_in_the_middle():
            drawn = self.drawn()
            return (drawn and drawn[0] < WIDTH / 2 < drawn[0] + drawn[2]
                    and drawn[1] < HEIGHT / 2 < drawn[1] + drawn[3])
        desktop.wait_until(is_in_the_middle, 5, "the settings")
        desktop.screenshot(f"host-plasma-wayland-{EDGE}-settings")

    def test_menu_quits(self):
        self.choose("Quit")
        self.assertEqual(self.program.wait(timeout=10), 0)

    def test_icon_is_back_in_a_restarted_shell(self):
        self.program.may_print(desktop.NO_TRAY)
        with open(PID_FILE, encoding="utf-8") as file:
            os.kill(int(file.read()), signal.SIGKILL)
        desktop.wait_until(lambda: not desktop.Picture().ink(), 5, "a desktop without a bar")
        self.shells.append(subprocess.Popen(
            ["plasmashell"], env={**os.environ, "QT_QPA_PLATFORM": "wayland"},
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True))
        with open(PID_FILE, "w", encoding="utf-8") as file:
            print(self.shells[-1].pid, file=file)
        self.icon = self.place_of_icon()
        self.rest()
        self.closed = desktop.wait_until_still(self.without_bar, 20, "a whole desktop", 2)
        self.open_panel()

    def test_second_start_opens_the_panel(self):
        desktop.start_again(**X_SERVER)
        desktop.wait_until(self.panel, 5, "the panel")


if __name__ == "__main__":
    unittest.main()
