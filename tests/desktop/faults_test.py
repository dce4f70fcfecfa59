"""What happens to the real program while it runs: a suspended machine, no descriptor left, a tray
that dies, a session without a bus. After each the program goes on and tells the truth."""

import os
import shutil
import signal
import subprocess
import time
import unittest

import desktop

PANEL = os.path.join(os.environ["TIDEWICK_DESKTOP"], "xfce4-panel.pid")
INTERVAL = 5  # seconds from one scan to the next
# Notes each list that it is asked for, and each process that it is asked about.
NOTING_LSOF = """#!/bin/sh
for argument; do
    case $argument in
    -i) echo list >>"${0%/*}/notes" ;;
    [0-9]*) echo "$argument" >>"${0%/*}/notes" ;;
    esac
done
exec "${0%/*}/real-lsof" "$@"
"""


class FaultsTest(unittest.TestCase):
    def setUp(self):
        desktop.move_pointer(200, 400)
        self.directory = desktop.copy_with_lsof(NOTING_LSOF)
        self.addCleanup(shutil.rmtree, self.directory)
        tools = os.path.join(self.directory, "libexec/tidewick")
        shutil.copy(os.path.join(os.path.dirname(desktop.PROGRAM), "../libexec/tidewick/lsof"),
                    os.path.join(tools, "real-lsof"))
        self.notes_file = os.path.join(tools, "notes")

    def launch(self, **environment):
        self.program = desktop.Program([os.path.join(self.directory, "bin/tidewick")],
                                       env={**os.environ, **environment},
                                       stdout=subprocess.DEVNULL, start_new_session=True)
        self.addCleanup(desktop.end, self.program)

    def serve(self):
        server = desktop.start_server()
        self.addCleanup(desktop.end, server)
        return server

    def notes(self):
        """What the scans asked for so far."""
        if not os.path.exists(self.notes_file):
            return []
        with open(self.notes_file, encoding="utf-8") as file:
            return file.read().split()

    def scans(self):
        return self.notes().count("list")

    def wait_for_the_truth(self, item, count):
        desktop.wait_until(lambda: item.count() == count, INTERVAL + 1, f"{count} listeners")

    def wait_until_at_rest(self):
        """Until the panel has been made ready, 0.3 s after the first list."""
        def processor_time():
            with open(f"/proc/{self.program.pid}/stat", encoding="utf-8") as stat:
                return stat.read().rpartition(")")[2].split()[11:13]
        desktop.wait_until_still(processor_time, 10, "rest", 0.8)

    def test_suspended_program_catches_up_with_one_scan(self):
        self.launch()
        item = desktop.StatusItem()
        self.wait_for_the_truth(item, 0)
        os.killpg(self.program.pid, signal.SIGSTOP)
        before = self.scans()
        self.serve()
        time.sleep(2 * INTERVAL + 1)
        resumed = time.monotonic()
        os.killpg(self.program.pid, signal.SIGCONT)
        self.wait_for_the_truth(item, 1)
        time.sleep(1)  # a burst would be over
        ticks = int((time.monotonic() - resumed) / INTERVAL)
        self.assertLessEqual(self.scans() - before, 2 + ticks)

    def test_program_without_descriptors_keeps_its_list_and_catches_up(self):
        server = self.serve()
        self.launch()
        item = desktop.StatusItem()
        self.wait_for_the_truth(item, 1)
        self.wait_until_at_rest()
        with open(f"/proc/{self.program.pid}/maps", encoding="utf-8") as maps:
            if "libasan" in maps.read():
                self.skipTest("the sanitizer takes a pointer for wrong where it may open no pipe")
        highest = max(int(name) for name in os.listdir(f"/proc/{self.program.pid}/fd"))
        limit = subprocess.run(["prlimit", "--pid", str(self.program.pid), "--nofile",
                                "--output", "SOFT", "--noheadings", "--raw"],
                               capture_output=True, text=True, check=True).stdout.strip()
        self.limit_descriptors(4)
        before = self.scans()
        desktop.end(server)
        time.sleep(INTERVAL + 1)
        self.assertEqual(self.scans(), before, "no scan can start its tool")
        self.assertEqual(item.count(), 1, "the last good list stays")
        self.limit_descriptors(limit)
        self.wait_for_the_truth(item, 0)
        self.assertLess(max(int(name) for name in os.listdir(f"/proc/{self.program.pid}/fd")),
                        highest + 8)

    def limit_descriptors(self, soft):
        subprocess.run(["prlimit", "--pid", str(self.program.pid), f"--nofile={soft}:"],
                       check=True)

    def test_tray_that_dies_and_comes_back_shows_what_changed_meanwhile(self):
        self.launch()
        item = desktop.StatusItem()
        self.wait_for_the_truth(item, 0)
        self.program.may_print(desktop.NO_TRAY)
        with open(PANEL, encoding="utf-8") as file:
            os.kill(int(file.read()), signal.SIGKILL)
        desktop.wait_until(lambda: not desktop.owner("org.kde.StatusNotifierWatcher"), 5,
                           "the end of the tray")
        server = self.serve()
        desktop.wait_until(lambda: str(server.pid) in self.notes(), INTERVAL + 1,
                           "a scan without a tray")
        panel = subprocess.Popen(["xfce4-panel"], stderr=subprocess.DEVNULL)
        self.addCleanup(desktop.end, panel)
        desktop.wait_until(desktop.registered_items, 10, "the item in the new tray")
        self.wait_for_the_truth(desktop.StatusItem(), 1)
        desktop.place_of_icon()

    def test_program_without_a_session_bus_goes_on_scanning(self):
        self.launch(DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere/bus")
        self.program.may_print(desktop.NO_BUS)
        desktop.wait_until(desktop.place_of_icon, 5, "the icon in the X11 tray")
        server = self.serve()
        desktop.wait_until(lambda: str(server.pid) in self.notes(), INTERVAL + 1,
                           "a scan that lists the server")
        self.assertIsNone(self.program.poll())


if __name__ == "__main__":
    unittest.main()
