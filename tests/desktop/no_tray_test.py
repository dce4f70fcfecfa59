"""A desktop without any tray, a session without a bus, and the end of a session."""

import os
import re
import signal
import subprocess
import sys
import time
import unittest

import desktop


# Has the name of the list of status items, and refuses whatever it is asked.
WATCHER = """
from gi.repository import Gio, GLib
Gio.bus_own_name(Gio.BusType.SESSION, "org.kde.StatusNotifierWatcher", 0, None, None, None)
GLib.MainLoop().run()
"""


def xdotool(*arguments):
    return subprocess.run(["xdotool", *map(str, arguments)], capture_output=True, text=True,
                          check=False).stdout.split()


def panels():
    """The windows called Tidewick that are on the screen."""
    return xdotool("search", "--onlyvisible", "--name", "^Tidewick$")


def properties(window):
    return subprocess.run(["xprop", "-id", window], capture_output=True, text=True,
                          check=True).stdout


class NoTrayTest(unittest.TestCase):
    def launch(self, **environment):
        program = desktop.start_program(**environment)
        program.may_print(desktop.NO_TRAY, desktop.NO_BUS)
        self.addCleanup(desktop.end, program)
        return program

    def wait_for_panel(self):
        return desktop.wait_until(panels, 5, "the panel")[0]

    def wait_until_resident(self):
        desktop.wait_until(lambda: desktop.owner("org.tidewick.Tidewick"), 5, "the program")

    def assert_only_prints(self, program, *lines):
        """Until its end, which is as quick as ever."""
        printed = []

        def has_printed_all():
            printed.extend(program.read_errors())
            return set(lines) <= set(printed)
        desktop.wait_until(has_printed_all, 8, "its lines on standard error")
        time.sleep(1)
        self.assertIsNone(program.poll())
        status, seconds = desktop.terminate(program)
        self.assertEqual(status, 0)
        self.assertLess(seconds, 3)
        self.assertEqual((*printed, *program.read_errors()), lines)

    def test_missing_tray_is_one_line_and_no_crash(self):
        self.assert_only_prints(self.launch(), desktop.NO_TRAY)

    def test_without_a_session_bus_the_panel_is_a_window(self):
        program = self.launch(DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere/bus")
        self.wait_for_panel()
        self.assert_only_prints(program, desktop.NO_BUS, desktop.NO_TRAY)

    def test_start_by_hand_shows_the_panel_as_a_window_like_any_other(self):
        program = self.launch()
        window = self.wait_for_panel()
        desktop.screenshot("panel-without-tray")
        frame = re.search(r"_NET_FRAME_EXTENTS.* = \d+, \d+, (\d+), \d+", properties(window))
        self.assertGreater(int(frame[1]), 10)
        self.assertIn("_NET_WM_WINDOW_TYPE_NORMAL", properties(window))
        subprocess.run(["xdotool", "mousemove", "100", "700", "click", "1"], check=True)
        time.sleep(0.6)
        self.assertEqual(panels(), [window])
        subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", "alt+F4"], check=True)
        desktop.wait_until(lambda: not panels(), 5, "the end of the window")
        self.assertIsNone(program.poll())
        self.assertEqual(self.launch().wait(timeout=40), 0)
        self.wait_for_panel()

    def start_beside_a_busy_tray(self):
        """The process that keeps the list, stopped, and does not answer the program."""
        watcher = subprocess.Popen([sys.executable, "-c", WATCHER])
        self.addCleanup(desktop.end, watcher)
        desktop.wait_until(lambda: desktop.owner("org.kde.StatusNotifierWatcher"), 5, "a watcher")
        watcher.send_signal(signal.SIGSTOP)
        self.launch()
        return watcher

    def test_panel_is_no_window_before_a_busy_tray_has_answered(self):
        watcher = self.start_beside_a_busy_tray()
        time.sleep(3)
        self.assertEqual(panels(), [])
        watcher.send_signal(signal.SIGCONT)
        self.wait_for_panel()

    def test_panel_that_was_seen_and_closed_does_not_open_by_itself(self):
        watcher = self.start_beside_a_busy_tray()
        self.wait_until_resident()
        self.assertEqual(self.launch().wait(timeout=40), 0)
        window = self.wait_for_panel()
        subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", "Escape"], check=True)
        desktop.wait_until(lambda: not panels(), 5, "the end of the window")
        watcher.send_signal(signal.SIGCONT)
        time.sleep(2.5)
        self.assertEqual(panels(), [])

    def test_second_start_shows_the_panel_again(self):
        self.launch()
        window = self.wait_for_panel()
        subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", "Escape"], check=True)
        desktop.wait_until(lambda: not panels(), 5, "the end of the window")
        for _ in range(2):
            self.assertEqual(self.launch().wait(timeout=40), 0)
            self.wait_for_panel()

    def test_start_by_the_session_stays_unseen_until_it_is_asked_for(self):
        program = self.launch(TIDEWICK_AUTOSTARTED="1")
        self.wait_until_resident()
        self.assertEqual(self.launch(TIDEWICK_AUTOSTARTED="1").wait(timeout=40), 0)
        time.sleep(2.5)
        self.assertEqual(panels(), [])
        self.assertIsNone(program.poll())
        self.assertEqual(self.launch().wait(timeout=40), 0)
        self.wait_for_panel()

    def test_desktop_activates_it_over_the_bus(self):
        self.launch(TIDEWICK_AUTOSTARTED="1")
        self.wait_until_resident()
        self.assertEqual(desktop.call("org.tidewick.Tidewick", "/org/tidewick/Tidewick",
                                      "org.freedesktop.Application.Activate",
                                      "{'activation-token': <'token'>}"), "()")
        self.wait_for_panel()

    def test_end_of_the_session_bus_ends_it(self):
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"],
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(desktop.end, bus)
        program = self.launch(DBUS_SESSION_BUS_ADDRESS=bus.stdout.readline().strip())
        self.wait_for_panel()
        bus.send_signal(signal.SIGKILL)
        self.assertEqual(program.wait(timeout=10), 0)

    def test_end_of_the_x_server_ends_it(self):
        read, write = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-nolisten", "tcp"],
                                  pass_fds=[write], stderr=subprocess.DEVNULL)
        self.addCleanup(desktop.end, server)
        os.close(write)
        with os.fdopen(read) as display:
            number = display.readline().strip()
        # Xlib ends the program in the middle of whatever it does, so the sanitizer may find leaks.
        program = self.launch(DISPLAY=f":{number}", ASAN_OPTIONS="detect_leaks=0")
        self.wait_until_resident()
        server.send_signal(signal.SIGKILL)
        self.assertEqual(program.wait(timeout=10), 1)  # an exit, not a crash
        self.assertIn("The X11 connection broke", "\n".join(program.read_errors()))


if __name__ == "__main__":
    unittest.main()
