"""A desktop without any tray, and a session without a bus."""

import os
import subprocess
import time
import unittest

import desktop


class NoTrayTest(unittest.TestCase):
    def end_and_read_errors(self, program):
        time.sleep(1)
        self.assertIsNone(program.poll())
        status, seconds = desktop.terminate(program)
        self.assertEqual(status, 0)
        self.assertLess(seconds, 0.5)
        return program.stderr.read().splitlines()

    def test_missing_tray_is_one_line_and_no_crash(self):
        program = desktop.start_program()
        self.addCleanup(desktop.end, program)
        self.assertEqual(self.end_and_read_errors(program),
                         ["tidewick: this desktop shows no status items; waiting for a tray"])

    def test_missing_session_bus_is_no_crash(self):
        environment = dict(os.environ, DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere/bus")
        program = subprocess.Popen([desktop.PROGRAM], env=environment, stderr=subprocess.PIPE,
                                   text=True)
        self.addCleanup(desktop.end, program)
        self.assertIn("tidewick: no session bus, hence no status item",
                      self.end_and_read_errors(program))


if __name__ == "__main__":
    unittest.main()
