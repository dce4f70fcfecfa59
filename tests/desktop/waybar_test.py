"""The shell under Wayland without X11: sway and waybar, clicked with a pointer of the test's own."""

import os
import signal
import subprocess
import time
import unittest

import desktop
import sway
from wayland_input import BlackWindow, VirtualKeyboard, VirtualPointer

WIDTH, HEIGHT = 1280, 800
PID_FILE = os.path.join(os.environ["TIDEWICK_DESKTOP"], "waybar.pid")


def sees_menu():
    """Menus are white here, and nothing else is."""
    return sway.pixels(f"0,0 {WIDTH}x120").count(b"\xff\xff\xff") > 5000


def ink():
    """Where the program's colour stands in the bar."""
    return sway.ink(0, 0, WIDTH, 40)


def panel_sizes():
    """The size of the panel: it is a window, or drawn on the layer shell. It is below the bar, and
    the pointer with its picture is above."""
    if not sway.has_layer_shell():
        return [(window["rect"]["width"], window["rect"]["height"])
                for window in sway.windows("Tidewick")]
    drawn = sway.drawing(0, 60, WIDTH, HEIGHT - 60)
    return [(drawn[2], drawn[1] + drawn[3] - 36)] if drawn else []


class WaybarTest(unittest.TestCase):
    panels = []  # that were started again; they stay for the tests that follow

    def setUp(self):
        os.makedirs(desktop.SCREENSHOTS, exist_ok=True)
        self.keyboard = VirtualKeyboard()
        self.addCleanup(self.keyboard.close)
        self.pointer = VirtualPointer(WIDTH, HEIGHT)
        self.addCleanup(self.pointer.close)
        self.pointer.move(200, 400)
        self.addCleanup(desktop.wait_until, lambda: not ink(), 5, "the end of the icon")
        self.program = desktop.start_program()
        self.addCleanup(desktop.end, self.program)
        self.icon = self.place_of_icon()

    def place_of_icon(self):
        places = desktop.wait_until(ink, 10, "the icon in the picture")
        return places[len(places) // 2]

    def open_panel(self):
        self.pointer.click(*self.icon)
        # An open panel asks for the keyboard, and a click elsewhere before that would not count.
        return desktop.wait_until_still(panel_sizes, 5, "the panel")[0]

    def assert_stays_closed(self):
        desktop.wait_until(lambda: not panel_sizes(), 5, "the end of the panel")
        time.sleep(0.6)
        self.assertEqual(panel_sizes(), [])

    def test_icon_and_number_are_seen(self):
        desktop.see_numbers(self, ink, lambda name: sway.screenshot("host-waybar-" + name))

    def test_escape_closes_because_the_panel_has_the_keyboard(self):
        self.open_panel()

        def closes():
            self.keyboard.press("Escape")
            return not panel_sizes()
        desktop.wait_until(closes, 5, "the keyboard")

    def test_click_opens_the_panel_and_another_closes_it(self):
        for _ in range(2):
            self.assertEqual(self.open_panel(), (480, 540))
            sway.screenshot("host-waybar-open")
            self.pointer.click(*self.icon)
            self.assert_stays_closed()

    def test_click_outside_closes(self):
        self.open_panel()
        self.pointer.click(100, 700)
        self.assert_stays_closed()
        self.open_panel()

    def test_tool_tip_is_seen(self):
        self.pointer.move(*self.icon)
        desktop.wait_until(lambda: sway.drawing(0, 40, WIDTH, 100, least=80), 5, "the tooltip")
        sway.screenshot("host-waybar-tooltip")

    def test_another_program_with_the_keyboard_closes(self):
        self.open_panel()
        other = BlackWindow(400, 300)  # takes the keyboard
        self.addCleanup(other.close)
        self.assert_stays_closed()

    def choose(self, entry):
        """Opens the menu with a right click, and clicks `entry` pixels below the screen's edge."""
        def is_open():
            # The bar's first menu is empty where it has not read the entries yet.
            self.pointer.click(*self.icon, button=3)
            return desktop.comes(sees_menu, 1)
        desktop.wait_until(is_open, 5, "the menu")
        sway.screenshot("host-waybar-menu")
        self.pointer.click(self.icon[0] - 60, entry)

    def test_menu_shows_settings(self):
        self.choose(57)
        desktop.wait_until(lambda: sway.windows("Tidewick Settings"), 5, "the settings")

    def test_menu_quits(self):
        self.choose(84)
        self.assertEqual(self.program.wait(timeout=10), 0)

    def test_second_start_opens_the_panel(self):
        for _ in range(2):
            desktop.start_again()
            desktop.wait_until(panel_sizes, 5, "the panel")

    def test_icon_is_back_in_a_restarted_bar(self):
        self.program.may_print(desktop.NO_TRAY)
        with open(PID_FILE, encoding="utf-8") as file:
            os.kill(int(file.read()), signal.SIGKILL)
        desktop.wait_until(lambda: not ink(), 5, "a desktop without a bar")
        self.panels.append(subprocess.Popen(["waybar"], stdout=subprocess.DEVNULL,
                                            stderr=subprocess.DEVNULL, start_new_session=True))
        with open(PID_FILE, "w", encoding="utf-8") as file:
            print(self.panels[-1].pid, file=file)
        self.icon = self.place_of_icon()
        desktop.wait_until(self.opens, 15, "the panel")

    def opens(self):
        """Whether a click opens the panel; a bar that has just started can miss it."""
        self.pointer.click(*self.icon)
        return desktop.comes(panel_sizes, 3)


if __name__ == "__main__":
    unittest.main()
