"""The panel's window: what the window manager knows of it, and its place on a screen that changes.
i3 leaves a window's states as the window asks for them; other window managers add theirs."""

import os
import re
import subprocess
import unittest

import desktop

# Of the panel on a screen 768 pixels high: above the bar of lxqt, or at the top, because i3 does not
# tell what its bar takes.
LOWER_END = {"lxqt": 768 - 30 - 6, "i3": 6 + 540}[os.environ["TIDEWICK_PANEL"]]


def window_property(window, name):
    """The values of a window's property that holds atoms or texts."""
    text = subprocess.run(["xprop", "-id", window, name], capture_output=True, text=True,
                          check=True).stdout
    return re.findall(r'[A-Z_]{4,}|"[^"]*"', text.partition("=")[2])


class PopoverTest(unittest.TestCase):
    def setUp(self):
        desktop.move_pointer(200, 700)
        self.program = desktop.start_program()
        self.addCleanup(desktop.end, self.program)
        desktop.place_of_icon()

    def open_panel(self):
        """Opens it without a click; returns its X window."""
        desktop.start_again()
        return desktop.wait_until(desktop.visible_panels, 5, "the panel")[0]

    def close_panel(self):
        desktop.press_key("Escape")
        desktop.wait_until(lambda: not desktop.visible_panels(), 5, "the end of the panel")

    def test_no_task_bar_and_no_pager_shows_it(self):
        for _ in range(2):  # a window manager forgets the states of a hidden window
            panel = self.open_panel()
            desktop.wait_until(
                lambda: {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER",
                         "_NET_WM_STATE_ABOVE"} <= set(window_property(panel, "_NET_WM_STATE")),
                3, "the states of the panel")
            self.assertIn("_NET_WM_WINDOW_TYPE_UTILITY",
                          window_property(panel, "_NET_WM_WINDOW_TYPE"))
            self.close_panel()

    def test_desktop_entry_names_its_class(self):
        entry = os.path.join(desktop.SCRIPTS, "..", "packaging", "org.tidewick.Tidewick.desktop")
        with open(entry, encoding="utf-8") as file:
            named = re.findall("^StartupWMClass=(.*)$", file.read(), re.MULTILINE)
        classes = window_property(self.open_panel(), "WM_CLASS")
        self.assertEqual([f'"{name}"' for name in named], classes[1:])

    def test_stays_in_its_corner_when_the_screen_shrinks(self):
        panel = self.open_panel()
        self.addCleanup(self.use_mode, "1280x800")
        for command in ("--newmode 1024x768 63.5 1024 1072 1176 1328 768 771 775 798",
                        "--addmode screen 1024x768"):
            subprocess.run(["xrandr", *command.split()], check=True)
        self.use_mode("1024x768")
        desktop.wait_until(lambda: self.corner(panel) == (1024 - 6, LOWER_END), 5,
                           "the panel in the smaller screen's corner")

    def use_mode(self, mode):
        subprocess.run(["xrandr", "--output", "screen", "--mode", mode], check=True)

    def corner(self, window):
        """The lower right corner of a window."""
        text = subprocess.run(["xdotool", "getwindowgeometry", "--shell", window],
                              capture_output=True, text=True, check=True).stdout
        values = dict(line.split("=") for line in text.split())
        return tuple(int(values[at]) + int(values[length])
                     for at, length in (("X", "WIDTH"), ("Y", "HEIGHT")))


if __name__ == "__main__":
    unittest.main()
