"""The shell on one real panel: real clicks on the icon that the panel draws, on the panel's empty
part, on the desktop and in the menu, and what is seen of them. Which panel, at which edge and at
which scale, scripts/virtual-desktop says."""

import os
import signal
import subprocess
import time
import unittest

from PIL import ImageChops, ImageGrab

import desktop

PANEL = os.environ["TIDEWICK_PANEL"]
EDGE = os.environ.get("TIDEWICK_PANEL_EDGE", "top")
SCALE = int(os.environ.get("TIDEWICK_SCALE", "1"))
PROGRAM_OF_PANEL = {"xfce": "xfce4-panel", "lxqt": "lxqt-panel", "mate": "mate-panel",
                    "tint2": "tint2", "trayer": "trayer", "polybar": "polybar",
                    "i3": "i3bar", "i3-indicator": "i3bar", "ayatana": "xfce4-panel",
                    "cinnamon": "cinnamon", "plasma-x11": "plasmashell", "budgie": "budgie-panel",
                    "budgie-indicator": "budgie-panel"}[PANEL]
PID_FILE = os.path.join(os.environ["TIDEWICK_DESKTOP"], PROGRAM_OF_PANEL + ".pid")
WIDTH, HEIGHT = 1280 * SCALE, 800 * SCALE
GAP = 6 * SCALE
# Else it opens the menu, which has an entry more.
CLICK_OPENS = PANEL not in ("ayatana", "budgie-indicator")
# Where the entries are in the menu: 0 is its upper end, 1 its lower one. Budgie's has a margin.
ENTRIES = {"budgie-indicator": {"Show": 0.21, "Settings": 0.56, "Quit": 0.75},
           "ayatana": {"Show": 0.12, "Settings": 0.54, "Quit": 0.9}}.get(
               PANEL, {"Settings": 0.5, "Quit": 0.87})
STRIP = 40 * SCALE  # no bar is higher


def xdotool(*arguments):
    return subprocess.run(["xdotool", *map(str, arguments)], capture_output=True, text=True,
                          check=False).stdout.split()


def windows(name):
    """The windows of this name that are on the screen."""
    return xdotool("search", "--onlyvisible", "--name", f"^{name}$")


def visible_windows():
    return set(xdotool("search", "--onlyvisible", "--class", ""))


def geometry(window):
    """Left, top, width and height in pixels."""
    values = dict(line.split("=") for line in xdotool("getwindowgeometry", "--shell", window))
    return tuple(int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))


def place_of(window):
    """Its geometry once the window manager has put it there; i3 moves it while it maps it."""
    return desktop.wait_until_still(lambda: geometry(window), 5, "a window that stays")


def ink_in_bar():
    """Where the program's colour stands in the strip at the panel's edge."""
    return [(x, y) for x, y in desktop.Picture().ink()
            if (y < STRIP if EDGE == "top" else y >= HEIGHT - STRIP)]


def without_bar():
    """The picture of what no bar covers."""
    top = STRIP if EDGE == "top" else 0
    picture = ImageGrab.grab(xdisplay="").convert("RGB")
    return picture.crop((0, top, WIDTH, top + HEIGHT - STRIP))


def click(x, y, button=1):
    xdotool("mousemove", x, y, "click", button)


class HostTest(unittest.TestCase):
    panels = []  # that were started again; they stay for the tests that follow

    def setUp(self):
        self.rest()
        self.addCleanup(desktop.wait_until, lambda: not ink_in_bar(), 5, "the end of the icon")
        self.program = desktop.start_program()
        self.addCleanup(desktop.end, self.program)
        self.icon = self.place_of_icon()

    def rest(self):
        """Puts the pointer where no tooltip covers anything."""
        xdotool("mousemove", 200 * SCALE, 400 * SCALE)

    def place_of_icon(self):
        ink = desktop.wait_until_still(ink_in_bar, 20, "the icon in the picture")
        return ink[len(ink) // 2]

    def wait_for_panel(self):
        return desktop.wait_until(lambda: windows("Tidewick"), 5, "the panel")[0]

    def wait_for_keyboard(self):
        desktop.wait_until(lambda: xdotool("getwindowfocus") == windows("Tidewick"), 3,
                           "the keyboard")

    def wait_for_its_end(self):
        desktop.wait_until(lambda: not windows("Tidewick"), 5, "the end of the panel")

    def assert_stays_closed(self):
        self.wait_for_its_end()
        time.sleep(0.6)
        self.assertEqual(windows("Tidewick"), [])

    def ask_for_panel(self):
        if CLICK_OPENS:
            click(*self.icon)
        else:
            self.choose("Show")

    def open_panel(self):
        self.ask_for_panel()
        return self.wait_for_panel()

    def test_icon_and_number_are_seen(self):
        desktop.see_numbers(
            self, ink_in_bar,
            lambda name: desktop.screenshot(f"host-{PANEL}-{EDGE}-{SCALE}-{name}"))

    @unittest.skipUnless(CLICK_OPENS, "has none")
    def test_tool_tip_is_seen(self):
        windows_before, picture_before = visible_windows(), without_bar()

        def size():
            if PANEL == "cinnamon":  # draws it itself
                box = ImageChops.difference(picture_before, without_bar()).getbbox()
                return box and (box[2] - box[0], box[3] - box[1])
            return next((geometry(new)[2:] for new in visible_windows() - windows_before), None)
        xdotool("mousemove", *self.icon)
        xdotool("mousemove_relative", 1, 1)  # some bars wait for a move on the icon
        width, height = desktop.wait_until_still(size, 5, "the tooltip")
        desktop.screenshot(f"host-{PANEL}-{EDGE}-{SCALE}-tooltip")
        self.assertTrue(width < 300 * SCALE and height < 80 * SCALE, (width, height))

    def test_click_opens_the_panel_beside_the_icon_and_another_closes_it(self):
        left, top, width, height = place_of(self.open_panel())
        desktop.screenshot(f"host-{PANEL}-{EDGE}-{SCALE}-open")
        self.assertEqual((width, height), (480 * SCALE, 540 * SCALE))
        # An icon in the screen's corner is beside the panel's end, which keeps its distance.
        self.assertTrue(left <= self.icon[0] < left + width + GAP, (left, self.icon))
        self.assertLessEqual(left + width, WIDTH)
        gap = top - self.icon[1] if EDGE == "top" else self.icon[1] - (top + height)
        self.assertTrue(GAP <= gap <= STRIP, gap)
        for _ in range(2):
            click(*self.icon)
            self.assert_stays_closed()
            if not CLICK_OPENS:
                xdotool("key", "Escape")  # closes the menu
            self.open_panel()

    def test_click_outside_closes(self):
        for place in ((200 * SCALE, 400 * SCALE), (200 * SCALE, self.icon[1])):
            self.open_panel()
            click(*place)
            self.assert_stays_closed()

    def test_escape_closes_because_the_panel_has_the_keyboard(self):
        for _ in range(2):
            self.open_panel()
            self.wait_for_keyboard()
            xdotool("key", "Escape")
            self.wait_for_its_end()

    def test_another_program_with_the_keyboard_closes(self):
        self.open_panel()
        other = subprocess.Popen(["xev", "-name", "another program"], stdout=subprocess.DEVNULL)
        self.addCleanup(desktop.end, other)
        window = desktop.wait_until(lambda: windows("another program"), 5, "another window")[0]
        xdotool("windowactivate", window)
        self.wait_for_its_end()

    def test_signal_ends_it_cleanly_while_the_panel_is_open(self):
        self.open_panel()
        self.wait_for_keyboard()
        self.assertEqual(desktop.terminate(self.program)[0], 0)

    def choose(self, entry):
        """Opens the menu and clicks an entry of it."""
        before = visible_windows()
        click(*self.icon, button=3 if CLICK_OPENS else 1)
        menu = desktop.wait_until(
            lambda: [window for window in visible_windows() - before
                     if geometry(window)[2] > 80 * SCALE], 5, "the menu")[0]
        left, top, width, height = geometry(menu)
        time.sleep(0.3)  # a menu takes no click in its first moment
        desktop.screenshot(f"host-{PANEL}-{EDGE}-{SCALE}-menu")

        def takes_click():
            click(left + width // 3, top + int(height * ENTRIES[entry]))
            return desktop.comes(lambda: menu not in visible_windows(), 0.5)
        desktop.wait_until(takes_click, 5, "the end of the menu")

    def test_menu_shows_settings_and_no_panel(self):
        self.open_panel()
        self.wait_for_keyboard()
        self.choose("Settings")
        desktop.wait_until(lambda: windows("Tidewick Settings"), 5, "the settings")
        self.assert_stays_closed()
        self.open_panel()

    def test_menu_quits(self):
        self.choose("Quit")
        self.assertEqual(self.program.wait(timeout=20), 0)

    def test_second_start_opens_the_panel_beside_the_icon(self):
        place = place_of(self.open_panel())
        self.wait_for_keyboard()
        xdotool("key", "Escape")
        self.wait_for_its_end()
        for _ in range(2):
            desktop.start_again()
            self.assertEqual(place_of(self.wait_for_panel()), place)

    def test_icon_is_back_in_a_restarted_panel(self):
        self.program.may_print(desktop.NO_TRAY)
        with open(PID_FILE, encoding="utf-8") as file:
            panel = int(file.read())
        with open(f"/proc/{panel}/cmdline", encoding="utf-8") as file:
            command = file.read().split("\0")[:-1]
        with open(f"/proc/{panel}/environ", encoding="utf-8") as file:
            environment = dict(line.split("=", 1) for line in file.read().split("\0")[:-1])
        os.kill(panel, signal.SIGKILL)
        desktop.wait_until(lambda: not ink_in_bar(), 5, "a desktop without a panel")
        with open(PID_FILE, "w", encoding="utf-8") as file:
            self.panels.append(subprocess.Popen(
                command, env=environment, start_new_session=True, stderr=subprocess.DEVNULL))
            print(self.panels[-1].pid, file=file)
        self.icon = self.place_of_icon()
        desktop.wait_until(self.opens, 15, "the panel")

    def opens(self):
        """Whether a click opens the panel; one that has just started can miss it."""
        self.ask_for_panel()
        return desktop.comes(lambda: windows("Tidewick"), 3)


if __name__ == "__main__":
    unittest.main()
