"""The settings window on a real desktop, and the login item as the session reads it."""

import os
import re
import subprocess
import tempfile
import unittest

import accessible
import desktop
import portal

ENTRY = "autostart/org.tidewick.Tidewick.desktop"
GENERATOR = "/usr/lib/systemd/user-generators/systemd-xdg-autostart-generator"


def autostarted_command(config):
    """What systemd would start at the next login, None for nothing."""
    with tempfile.TemporaryDirectory() as units:
        subprocess.run([GENERATOR, units, units, units], check=True,
                       env={"HOME": "/nonexistent", "XDG_CONFIG_HOME": config,
                            "XDG_CONFIG_DIRS": "/nonexistent", "PATH": os.environ["PATH"]})
        unit = os.path.join(units, "app-org.tidewick.Tidewick@autostart.service")
        if not os.path.exists(unit):
            return None
        with open(unit, encoding="utf-8") as file:
            return [line.split("=", 1)[1].strip() for line in file
                    if line.startswith("ExecStart=")][0]


def place(window):
    """Its left and upper edge on the screen, its width and its height."""
    text = subprocess.run(["xwininfo", "-id", window], capture_output=True, text=True,
                          check=True).stdout
    numbers = re.findall(r"(?:Absolute upper-left .|Width|Height): +(\d+)", text)
    return tuple(int(number) for number in numbers)


class SettingsTest(unittest.TestCase):
    def setUp(self):
        self.config = os.environ["XDG_CONFIG_HOME"]

    def launch(self, *wrapper, **environment):
        """Starts the program, by way of `wrapper` where one is given."""
        self.program = desktop.Program([*wrapper, desktop.PROGRAM], stdout=subprocess.PIPE,
                                       env={**os.environ, **environment})
        self.addCleanup(desktop.end, self.program)
        self.item = desktop.StatusItem()

    def show_settings(self):
        """Chooses "Settings..."; returns the window's X id."""
        self.item.choose(self.item.menu_labels()["Settings..."])
        return desktop.wait_until(self.windows, 5, "the settings window")[0]

    def windows(self):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name",
                                "^Tidewick Settings$"],
                               capture_output=True, text=True, check=False)
        return found.stdout.split()

    def toggle(self):
        """The settings window's toggle on the accessibility bus."""
        def shown():
            windows = accessible.windows("Tidewick Settings")
            return windows[0].find("check box", "Launch at Login") if windows else None
        return accessible.wait_until(shown, 5, "the toggle")

    def ground(self, window):
        """The colour of the window's ground on the screen."""
        x, y, *_ = place(window)
        return desktop.Picture().color(x + 10, y + 140)

    def press(self, key):
        """Presses `key` with the keyboard on the settings window, and so on its toggle."""
        subprocess.run(["xdotool", "windowfocus", "--sync", self.windows()[0]], check=True)
        subprocess.run(["xdotool", "key", key], check=True)

    def test_toggle_is_what_the_session_starts(self):
        self.launch()
        self.assertIsNone(autostarted_command(self.config))
        self.show_settings()
        desktop.screenshot("settings-off")
        self.press("space")
        desktop.wait_until(lambda: autostarted_command(self.config), 3, "the login item")
        self.assertIn(os.path.realpath(desktop.PROGRAM), autostarted_command(self.config))
        desktop.screenshot("settings-on")
        self.press("space")
        desktop.wait_until(lambda: not autostarted_command(self.config), 3, "its end")
        self.assertFalse(os.path.exists(os.path.join(self.config, ENTRY)))

    def test_read_only_home_is_one_line_and_the_toggle_stays(self):
        own_mounts = ["unshare", "--mount"]
        if os.geteuid() != 0:
            own_mounts += ["--map-current-user", "--keep-caps"]
        if subprocess.run([*own_mounts, "true"], check=False, capture_output=True).returncode != 0:
            self.skipTest("the kernel lets this user mount nothing")
        self.launch(*own_mounts, "sh", "-c",
                    'mount --bind "$1" "$1" && mount -o remount,ro,bind "$1" && exec "$2"',
                    "sh", self.config)
        self.show_settings()
        self.press("space")
        self.assertEqual(self.program.stdout.readline(),
                         "Failed to enable launch at login: Read-only file system\n")
        desktop.screenshot("settings-failed")
        self.assertIsNone(autostarted_command(self.config))

    def test_reopened_window_shows_what_the_user_chose(self):
        self.launch(**accessible.ENVIRONMENT)
        self.show_settings()
        self.press("space")
        desktop.wait_until(lambda: autostarted_command(self.config), 3, "the login item")
        os.remove(os.path.join(self.config, ENTRY))
        self.press("alt+F4")
        desktop.wait_until(lambda: not self.windows(), 3, "the window's end")
        self.show_settings()
        self.assertTrue(self.toggle().is_("checked"))

    def test_is_dark_or_light_as_the_desktop_asks(self):
        desktops = portal.Portal(portal.DARK)
        self.addCleanup(desktops.remove)
        self.launch()
        window = self.show_settings()
        desktop.wait_until(lambda: max(self.ground(window)) < 80, 5, "the dark window")
        desktop.screenshot("settings-dark")
        desktops.change(portal.LIGHT)
        desktop.wait_until(lambda: min(self.ground(window)) > 200, 5, "the light window")
        desktop.screenshot("settings-light")

    def test_window_is_one_and_has_its_size_in_the_middle(self):
        self.launch()
        window = self.show_settings()
        self.assertEqual(self.show_settings(), window)
        x, y, width, height = place(window)
        self.assertEqual((width, height), (320, 150))
        self.assertAlmostEqual(x + 160, 640, delta=20)
        self.assertAlmostEqual(y + 75, 415, delta=30)  # a bar stands at the top
        self.press("alt+F4")
        desktop.wait_until(lambda: not self.windows(), 3, "the window's end")
        self.assertIsNone(self.program.poll())
        self.show_settings()
        self.assertEqual(len(self.windows()), 1)


if __name__ == "__main__":
    unittest.main()
