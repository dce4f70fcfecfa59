"""The status item on a real tray: real servers, a real pointer, the picture, and the bus."""

import os
import shutil
import signal
import stat
import subprocess
import tempfile
import time
import unittest

import desktop


class StatusItemTest(unittest.TestCase):
    def setUp(self):
        # Where the pointer rests, no tooltip may cover the tray.
        subprocess.run(["xdotool", "mousemove", "200", "400"], check=True)

    def launch(self, path=desktop.PROGRAM):
        program = desktop.start_program(path)
        self.addCleanup(desktop.end, program)
        return program

    def serve(self):
        server = desktop.start_server()
        self.addCleanup(desktop.end, server)
        return server

    def place_of_icon(self):
        places = desktop.wait_until(lambda: desktop.Picture().ink(), 10, "the icon in the picture")
        return places[len(places) // 2]

    def test_number_follows_the_servers(self):
        self.launch()
        item = desktop.StatusItem()
        before = item.count_after_a_scan()
        servers = [self.serve() for _ in range(3)]
        desktop.wait_until(lambda: item.count() == before + 3, 6, "three more listeners")
        self.assertEqual(item.tool_tip()[0], "Tidewick")
        desktop.screenshot("three-servers")
        three = desktop.Picture().ink()
        desktop.end(servers[0])
        desktop.wait_until(lambda: item.count() == before + 2, 6, "one listener less")
        desktop.wait_until(lambda: desktop.Picture().ink() != three, 2, "another picture")
        desktop.screenshot("two-servers")

    def test_shows_only_the_icon_and_no_label_on_this_host(self):
        self.launch()
        item = desktop.StatusItem()
        self.assertEqual(item.icon_sizes(), [22, 24, 32, 48, 64])
        self.assertEqual(item.property("IconName"), "(<''>,)")
        self.assertIsNone(item.property("XAyatanaLabel"))
        self.assertEqual(item.property("ItemIsMenu"), "(<false>,)")
        self.assertEqual(item.property("Id"), "(<'tidewick'>,)")
        self.assertEqual(item.path, "/StatusNotifierItem")

    def test_icon_stands_in_the_tray(self):
        self.launch()
        x, y = self.place_of_icon()
        self.assertGreater(x, 1100)
        self.assertLess(y, 30)

    def test_menu_quits(self):
        program = self.launch()
        item = desktop.StatusItem()
        self.assertEqual(list(item.menu_labels()),
                         ["Check for Updates...", "Settings...", "Quit Tidewick"])
        item.choose(item.menu_labels()["Quit Tidewick"])
        self.assertEqual(program.wait(timeout=2), 0)

    def test_menu_answers_with_an_error_where_it_has_no_such_entry(self):
        self.launch()
        item = desktop.StatusItem()
        item.menu_labels()
        for method, *arguments in (("GetProperty", "99", "label"), ("AboutToShow", "99"),
                                   ("GetLayout", "99", "-1", "[]"),
                                   ("Event", "99", "clicked", "<0>", "0")):
            self.assertIsNone(desktop.call(item.name, item.menu_path(),
                                           f"com.canonical.dbusmenu.{method}", *arguments), method)

    def test_right_click_offers_quit(self):
        program = self.launch()
        x, y = self.place_of_icon()
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "3"], check=True)
        time.sleep(0.5)  # the menu grabs the keyboard a moment after it is drawn
        desktop.screenshot("menu")
        subprocess.run(["xdotool", "key", "Up", "Return"], check=True)
        self.assertEqual(program.wait(timeout=3), 0)

    def visible_panels(self):
        """The X windows called Tidewick that are on the screen."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Tidewick$"],
                               capture_output=True, text=True, check=False)
        return found.stdout.split()

    def click(self, x, y):
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True)

    def open_panel(self):
        x, y = self.place_of_icon()
        self.click(x, y)
        desktop.wait_until(self.visible_panels, 3, "the panel")
        geometry = subprocess.run(
            ["xdotool", "getwindowgeometry", "--shell", self.visible_panels()[0]],
            capture_output=True, text=True, check=True).stdout
        values = dict(line.split("=") for line in geometry.split())
        self.assertEqual((values["WIDTH"], values["HEIGHT"]), ("480", "540"))
        return int(values["X"]), int(values["Y"])

    def test_click_drops_the_panel_below_the_icon_and_escape_closes_it(self):
        self.launch()
        x, y = self.open_panel()
        self.assertTrue(30 <= y <= 60, y)
        self.assertEqual(x + 480, 1280)
        desktop.screenshot("panel-empty")
        subprocess.run(["xdotool", "key", "Escape"], check=True)
        desktop.wait_until(lambda: not self.visible_panels(), 3, "the end of the panel")

    def test_second_click_on_the_icon_closes_the_panel(self):
        self.launch()
        icon = self.place_of_icon()
        self.open_panel()
        self.click(*icon)
        desktop.wait_until(lambda: not self.visible_panels(), 3, "the end of the panel")

    def test_kill_pressed_twice_ends_the_real_process(self):
        server = self.serve()
        self.launch()
        item = desktop.StatusItem()
        desktop.wait_until(lambda: item.count() == 1, 6, "the listener")
        left, top = self.open_panel()
        desktop.screenshot("panel-list")
        stop = (left + 480 - 37, top + 45 + 12 + 16 + 16)
        self.click(*stop)
        desktop.screenshot("panel-confirming")
        self.assertIsNone(server.poll())
        subprocess.run(["xdotool", "key", "Return"], check=True)  # the focus is on "Kill port"
        self.assertEqual(server.wait(timeout=3), -signal.SIGKILL)
        desktop.wait_until(lambda: item.count() == 0, 1, "the row's end")

    def test_second_start_makes_no_second_icon(self):
        first = self.launch()
        item = desktop.StatusItem()
        second = self.launch()
        self.assertEqual(second.wait(timeout=5), 0)
        self.assertEqual(second.stderr.read(), "")
        self.assertEqual(desktop.registered_items(), [(item.name, item.path)])
        self.assertIsNone(first.poll())

    def test_icon_comes_back_with_a_restarted_tray(self):
        self.launch()
        desktop.StatusItem()
        watcher = desktop.owner("org.kde.StatusNotifierWatcher")
        subprocess.run(["xfce4-panel", "--restart"], check=True)
        desktop.wait_until(
            lambda: desktop.owner("org.kde.StatusNotifierWatcher") not in (None, watcher), 10,
            "another tray")
        desktop.wait_until(desktop.registered_items, 5, "the item in it")
        self.place_of_icon()

    def test_signals_end_it_cleanly(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            program = self.launch()
            desktop.StatusItem()
            program.send_signal(number)
            self.assertEqual(program.wait(timeout=2), 0)
            self.assertEqual(program.stderr.read(), "")
            desktop.wait_until(lambda: not desktop.registered_items(), 2, "an empty tray")

    def test_silent_listeners_starve_nothing(self):
        silent = desktop.start_silent_listeners(10)
        self.addCleanup(desktop.end, silent)
        program = self.launch()
        item = desktop.StatusItem()
        time.sleep(11)  # three scans under way, none of them near its end
        self.assertLess(len(os.listdir(f"/proc/{program.pid}/task")), 16)
        start = time.monotonic()
        self.assertEqual(item.count(), 0)
        item.choose(item.menu_labels()["Quit Tidewick"])
        self.assertEqual(program.wait(timeout=10), 0)
        self.assertLess(time.monotonic() - start, 1)

    def launch_with_hanging_lsof(self):
        """A copy of the program whose lsof never ends; returns it and lsof's process id."""
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        for name in ("bin", "libexec/tidewick"):
            os.makedirs(os.path.join(folder, name))
        program = shutil.copy(desktop.PROGRAM, os.path.join(folder, "bin"))
        lsof = os.path.join(folder, "libexec/tidewick/lsof")
        pid_file = os.path.join(folder, "pid")
        with open(lsof, "w", encoding="utf-8") as script:
            script.write(f"#!/bin/sh\necho $$ > {pid_file}.new\nmv {pid_file}.new {pid_file}\n"
                         "trap '' TERM INT HUP\nexec sleep 1000\n")
        os.chmod(lsof, stat.S_IRWXU)
        process = self.launch(program)
        desktop.wait_until(lambda: os.path.exists(pid_file), 10, "the hanging lsof")
        with open(pid_file, encoding="utf-8") as file:
            return process, int(file.read())

    def assert_ends_at_once(self, program, lsof, seconds_so_far):
        start = time.monotonic()
        self.assertEqual(program.wait(timeout=10), 0)
        self.assertLess(seconds_so_far + time.monotonic() - start, 0.5)
        desktop.wait_until(lambda: not desktop.is_alive(lsof), 0.2, "the end of lsof")

    def test_signal_during_a_hanging_scan_ends_all_at_once(self):
        program, lsof = self.launch_with_hanging_lsof()
        self.assertTrue(desktop.is_alive(lsof))
        program.send_signal(signal.SIGTERM)
        self.assert_ends_at_once(program, lsof, 0)

    def test_quit_during_a_hanging_scan_ends_all_at_once(self):
        program, lsof = self.launch_with_hanging_lsof()
        item = desktop.StatusItem()
        quit_entry = item.menu_labels()["Quit Tidewick"]
        start = time.monotonic()
        item.choose(quit_entry)
        self.assert_ends_at_once(program, lsof, time.monotonic() - start)

    def test_sudden_death_takes_the_tool_along(self):
        program, lsof = self.launch_with_hanging_lsof()
        program.kill()
        program.wait()
        desktop.wait_until(lambda: not desktop.is_alive(lsof), 1, "the end of lsof")


if __name__ == "__main__":
    unittest.main()
