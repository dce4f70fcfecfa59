"""The status item on a real tray: real servers, a real pointer, the picture, and the bus."""

import os
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

import desktop


def connections():
    """How many connections to listeners of this network are open."""
    with open("/proc/net/tcp", encoding="utf-8") as file:
        rows = [line.split()[1:4] for line in list(file)[1:]]
    listening = {local.split(":")[1] for local, _, state in rows if state == "0A"}
    return sum(state == "01" and remote.split(":")[1] in listening for _, remote, state in rows)


class StatusItemTest(unittest.TestCase):
    def setUp(self):
        # Where the pointer rests, no tooltip may cover the tray.
        desktop.move_pointer(200, 400)

    def launch(self, path=desktop.PROGRAM):
        program = desktop.start_program(path)
        self.addCleanup(desktop.end, program)
        return program

    def serve(self):
        server = desktop.start_server()
        self.addCleanup(desktop.end, server)
        return server

    def test_number_follows_the_servers(self):
        self.launch()
        item = desktop.StatusItem()
        before = item.count_after_a_scan()
        servers = [self.serve() for _ in range(3)]
        desktop.wait_until(lambda: item.count() == before + 3, 10, "three more listeners")
        self.assertEqual(item.tool_tip()[0], "Tidewick")
        desktop.screenshot("three-servers")
        three = desktop.Picture().ink()
        desktop.end(servers[0])
        desktop.wait_until(lambda: item.count() == before + 2, 10, "one listener less")
        desktop.wait_until(lambda: desktop.Picture().ink() != three, 2, "another picture")
        desktop.screenshot("two-servers")

    def test_shows_only_the_icon_and_no_label_on_this_host(self):
        self.launch()
        item = desktop.StatusItem()
        self.assertEqual(item.icon_sizes(), [16, 22, 24, 32, 48, 64])
        self.assertEqual(item.property("IconName"), "(<''>,)")
        self.assertIsNone(item.property("XAyatanaLabel"))
        self.assertEqual(item.property("ItemIsMenu"), "(<false>,)")
        self.assertEqual(item.property("Id"), "(<'tidewick'>,)")
        self.assertEqual(item.path, "/StatusNotifierItem")

    def test_icon_stands_in_the_tray(self):
        self.launch()
        x, y = desktop.place_of_icon()
        self.assertGreater(x, 1100)
        self.assertLess(y, 30)

    def activate(self, item):
        """Clicks the item as the tray tells of a click."""
        desktop.call(item.name, item.path, "org.kde.StatusNotifierItem.Activate", "0", "0")

    def test_double_click_that_the_tray_tells_once_closes(self):
        self.launch()
        item = desktop.StatusItem()
        for _ in range(2):
            desktop.start_again()
            desktop.wait_until(desktop.visible_panels, 5, "the panel")
            desktop.click_sequence(200, 15, 2, 60)  # the bar, as far as this program knows its icon
            self.activate(item)
            desktop.wait_until(lambda: not desktop.visible_panels(), 5, "the end of the panel")
            time.sleep(0.5)
            self.assertEqual(desktop.visible_panels(), [])
        desktop.click_sequence(200, 15, 2, 60)
        self.activate(item)
        desktop.wait_until(desktop.visible_panels, 5, "the panel after another double click")

    def test_click_ends_the_busy_pointer(self):
        self.launch()
        item = desktop.StatusItem()
        with tempfile.TemporaryFile("w+") as events:
            spy = subprocess.Popen(["xev", "-root", "-event", "property"], stdout=events)
            self.addCleanup(desktop.end, spy)

            def ends():
                events.seek(0)
                return events.read().count("_NET_STARTUP_INFO_BEGIN")
            self.activate(item)
            desktop.wait_until(desktop.visible_panels, 5, "the panel")
            self.assertEqual(ends(), 0)
            desktop.call(item.name, item.path,
                         "org.kde.StatusNotifierItem.ProvideXdgActivationToken",
                         "shell/tidewick/1_TIME123456")
            self.activate(item)
            desktop.wait_until(lambda: ends() == 1, 5, "the end of the start")
            subprocess.run([desktop.PROGRAM], check=True, timeout=40,
                           env={**os.environ, "DESKTOP_STARTUP_ID": "shell/tidewick/2_TIME123457"})
            desktop.wait_until(lambda: ends() == 2, 5, "the end of the second start")

    def test_menu_quits(self):
        program = self.launch()
        item = desktop.StatusItem()
        self.assertEqual(list(item.menu_labels()),
                         ["Check for Updates...", "Settings...", "Quit Tidewick"])
        item.choose(item.menu_labels()["Quit Tidewick"])
        self.assertEqual(program.wait(timeout=10), 0)

    def test_log_tells_what_it_saw_where_it_is_switched_on(self):
        program = desktop.start_program(QT_LOGGING_RULES="tidewick.*=true")
        self.addCleanup(desktop.end, program)
        desktop.StatusItem().count_after_a_scan()
        desktop.start_again()
        desktop.wait_until(desktop.visible_panels, 5, "the panel")
        program.terminate()
        self.assertEqual(program.wait(timeout=10), 0)
        log = program.read_errors()
        for start in ("tidewick.app: Tidewick", "tidewick.platform: status notifier items",
                      "tidewick.scan: scan of", "tidewick.platform: panel at",
                      "tidewick.app: ends"):
            self.assertTrue([line for line in log if line.startswith(start)], (start, log))

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
        x, y = desktop.place_of_icon()
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "3"], check=True)
        time.sleep(0.5)  # the menu grabs the keyboard a moment after it is drawn
        desktop.screenshot("menu")

        def takes_keys():
            subprocess.run(["xdotool", "key", "Up", "Return"], check=True)
            return desktop.comes(lambda: program.poll() is not None, 1)
        desktop.wait_until(takes_keys, 5, "the end of the program")
        self.assertEqual(program.returncode, 0)

    def test_click_drops_the_panel_below_the_icon_and_escape_closes_it(self):
        self.launch()
        x, y, *size = desktop.open_panel()[1]
        self.assertEqual(size, [480, 540])
        self.assertTrue(30 <= y <= 60, y)
        self.assertEqual(x + 480, 1280 - 6)
        desktop.press_key("Escape")
        desktop.wait_for_no_panel()

    def test_second_click_on_the_icon_closes_the_panel(self):
        self.launch()
        icon = desktop.place_of_icon()
        desktop.open_panel()
        desktop.click(*icon)
        desktop.wait_for_no_panel()

    def test_second_start_makes_no_second_icon(self):
        first = self.launch()
        item = desktop.StatusItem()
        desktop.start_again()
        self.assertEqual(desktop.registered_items(), [(item.name, item.path)])
        self.assertIsNone(first.poll())

    def test_icon_comes_back_with_a_restarted_tray(self):
        self.launch().may_print(desktop.NO_TRAY)
        desktop.StatusItem()
        watcher = desktop.owner("org.kde.StatusNotifierWatcher")
        subprocess.run(["xfce4-panel", "--restart"], check=True)
        desktop.wait_until(
            lambda: desktop.owner("org.kde.StatusNotifierWatcher") not in (None, watcher), 10,
            "another tray")
        desktop.wait_until(desktop.registered_items, 5, "the item in it")
        desktop.place_of_icon()

    def test_signals_end_it_cleanly(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            program = self.launch()
            desktop.StatusItem()
            program.send_signal(number)
            self.assertEqual(program.wait(timeout=10), 0)
            self.assertEqual(program.read_errors(), [])
            desktop.wait_until(lambda: not desktop.registered_items(), 2, "an empty tray")

    def test_silent_listeners_starve_nothing(self):
        silent = desktop.start_silent_listeners(10)
        self.addCleanup(desktop.end, silent)
        program = self.launch()
        item = desktop.StatusItem()
        # Each scan has one at a time, and none of them is near its end.
        desktop.wait_until(lambda: connections() >= 3, 12, "three scans under way")
        # Eight threads for scans, two for kills, and those of D-Bus, X11, QML and the program itself.
        # Qt also draws in threads of its own, in as many as there are processors.
        threads = len(os.listdir(f"/proc/{program.pid}/task"))
        self.assertLessEqual(threads, 14 + len(os.sched_getaffinity(0)))
        start = time.monotonic()
        self.assertEqual(item.count(), 0)
        item.choose(item.menu_labels()["Quit Tidewick"])
        self.assertEqual(program.wait(timeout=10), 0)
        self.assertLess(time.monotonic() - start, 5)  # the scans would go on for a minute

    def launch_with_hanging_lsof(self):
        """A copy of the program whose lsof never ends; returns it and lsof's process id."""
        directory = desktop.copy_with_lsof(
            '#!/bin/sh\npid="${0%/*}/pid"\necho $$ >"$pid.new"\nmv "$pid.new" "$pid"\n'
            "trap '' TERM INT HUP\nexec sleep 1000\n")
        self.addCleanup(shutil.rmtree, directory)
        pid_file = os.path.join(directory, "libexec/tidewick/pid")
        process = self.launch(os.path.join(directory, "bin/tidewick"))
        desktop.wait_until(lambda: os.path.exists(pid_file), 10, "the hanging lsof")
        with open(pid_file, encoding="utf-8") as file:
            return process, int(file.read())

    def assert_ends_at_once(self, program, lsof, seconds_so_far):
        start = time.monotonic()
        self.assertEqual(program.wait(timeout=10), 0)
        self.assertLess(seconds_so_far + time.monotonic() - start, 3)
        desktop.wait_until(lambda: not desktop.is_alive(lsof), 2, "the end of lsof")

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
