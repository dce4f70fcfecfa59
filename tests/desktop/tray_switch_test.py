"""A desktop with an old X11 tray, to which a panel with status notifier items comes and goes."""

import os
import signal
import subprocess
import unittest

import desktop

PANELS = os.path.join(desktop.SCRIPTS, "panels")
# A panel's own file starts it as scripts/virtual-desktop does.
START_PANEL = f"edge=top; start() {{ exec \"$@\"; }}; source '{PANELS}/lxqt'; start_panel"


def bars_with_icon():
    """At which edges of the screen the program's colour stands."""
    ink = desktop.Picture().ink()
    return {edge for edge, is_there in (("top", any(y < 40 for _, y in ink)),
                                        ("bottom", any(y >= 760 for _, y in ink))) if is_there}


class TraySwitchTest(unittest.TestCase):
    def test_one_icon_is_in_the_better_tray(self):
        program = desktop.start_program()
        self.addCleanup(desktop.end, program)
        desktop.wait_until(lambda: bars_with_icon() == {"bottom"}, 20, "the icon in the old tray")
        for _ in range(2):
            panel = subprocess.Popen(["bash", "-c", START_PANEL], stderr=subprocess.DEVNULL)
            self.addCleanup(desktop.end, panel)
            desktop.wait_until(lambda: bars_with_icon() == {"top"}, 20, "it in the new one only")
            desktop.screenshot("tray-switched")
            panel.send_signal(signal.SIGKILL)
            desktop.wait_until(lambda: bars_with_icon() == {"bottom"}, 20, "it in the old again")
        self.assertIsNone(program.poll())


if __name__ == "__main__":
    unittest.main()
