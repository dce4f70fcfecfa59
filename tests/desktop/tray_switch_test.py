"""A desktop with an old X11 tray, to which bars with status notifier items come and go."""

import os
import signal
import subprocess
import time
import unittest

import desktop

PANELS = os.path.join(desktop.SCRIPTS, "panels")
SERVICE = "/usr/libexec/ayatana-indicator-application/ayatana-indicator-application-service"
# A panel's own file starts it as scripts/virtual-desktop does. What it needs runs already.
START_PANEL = f"""edge=top size=1280x800
start() {{ [[ $1 == {SERVICE} ]] || exec "$@"; }}
wait_for() {{ :; }}
source '{PANELS}/'"$0"
start_panel"""


def bars_with_icon():
    """At which edges of the screen the program's colour stands."""
    ink = desktop.Picture().ink()
    return {edge for edge, is_there in (("top", any(y < 40 for _, y in ink)),
                                        ("bottom", any(y >= 760 for _, y in ink))) if is_there}


class TraySwitchTest(unittest.TestCase):
    def setUp(self):
        self.program = desktop.start_program()
        self.addCleanup(desktop.end, self.program)
        self.wait_for_icon("bottom")

    def wait_for_icon(self, edge):
        """Until the icon is in the bar at this edge and in no other."""
        desktop.wait_until(lambda: bars_with_icon() == {edge}, 20, f"the icon at the {edge}")

    def start(self, *command):
        process = subprocess.Popen(command, stderr=subprocess.DEVNULL)
        self.addCleanup(desktop.end, process)
        return process

    def follows(self, panel):
        """The icon is in the old tray, but in the panel as long as that is there."""
        for _ in range(2):
            bar = self.start("bash", "-c", START_PANEL, panel)
            self.wait_for_icon("top")
            desktop.screenshot(f"tray-switched-{panel}")
            bar.send_signal(signal.SIGKILL)
            self.wait_for_icon("bottom")
        self.assertIsNone(self.program.poll())

    def test_one_icon_is_in_the_better_tray(self):
        self.follows("lxqt")

    def test_indicator_service_takes_the_icon_only_for_a_bar(self):
        self.start(SERVICE)
        desktop.wait_until(desktop.registered_items, 10, "an item in the service's list")
        time.sleep(1)
        self.wait_for_icon("bottom")
        self.follows("ayatana")


if __name__ == "__main__":
    unittest.main()
