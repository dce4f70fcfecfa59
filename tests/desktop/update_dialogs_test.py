"""The dialogs of the updates beside another program's window, with real keys."""

import os
import select
import subprocess
import time
import unittest

import desktop

DIALOGS = os.environ["UPDATE_DIALOGS"]
INSTALL, REMIND_LATER = "1", "2"


def xdotool(*arguments):
    return subprocess.run(["xdotool", *arguments], capture_output=True, text=True,
                          check=False).stdout.strip()


def active_window():
    """The title of the window that is active and gets the keys; none while they differ."""
    active = xdotool("getactivewindow")
    return xdotool("getwindowname", active) if active == xdotool("getwindowfocus") else ""


def picture(name):
    os.makedirs(desktop.SCREENSHOTS, exist_ok=True)
    subprocess.run(["import", "-window", "root",
                    os.path.join(desktop.SCREENSHOTS, f"update_{name}.png")], check=True)


class UpdateDialogs(unittest.TestCase):
    def setUp(self):
        self.editor = desktop.Program([DIALOGS, "editor"])
        self.addCleanup(desktop.end, self.editor)
        desktop.wait_until(lambda: active_window() == "Editor", 10, "the editor has the focus")
        self.dialogs = desktop.Program([DIALOGS], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(self.dialogs.stdin.close)
        self.addCleanup(desktop.end, self.dialogs)

    def order(self, what):
        self.dialogs.stdin.write(what + "\n")
        self.dialogs.stdin.flush()

    def show_asked(self, what):
        self.order(what)
        desktop.wait_until(lambda: active_window() == "Tidewick", 10, "the dialog has the focus")

    def answer(self):
        """The answer, once the dialog has gone."""
        self.assertTrue(select.select([self.dialogs.stdout], [], [], 40)[0], "there is no answer")
        answer = self.dialogs.stdout.readline().strip()
        desktop.wait_until(lambda: active_window() == "Editor", 10, "the editor has the focus again")
        return answer

    def test_a_scheduled_one_leaves_the_focus_where_it_is(self):
        self.order("scheduled")
        desktop.wait_until(lambda: xdotool("search", "--onlyvisible", "--name", "^Tidewick$"), 10,
                           "the dialog is there")
        picture("scheduled")
        time.sleep(0.3)  # for a focus that comes late
        self.assertEqual(active_window(), "Editor")
        self.show_asked("asked")

    def test_one_that_was_asked_for_takes_keys(self):
        self.show_asked("asked")
        xdotool("key", "Return")
        self.assertEqual(self.answer(), INSTALL)
        self.show_asked("asked")
        xdotool("key", "Escape")
        self.assertEqual(self.answer(), REMIND_LATER)
        self.show_asked("asked")
        xdotool("key", "Tab", "space")
        self.assertEqual(self.answer(), REMIND_LATER)

    def test_pictures(self):
        self.show_asked("progress")
        picture("progress")
        self.show_asked("failed")
        xdotool("key", "shift+Tab", "space")
        picture("failed")


if __name__ == "__main__":
    unittest.main()
