"""scripts/run of the clone that $TIDEWICK is built in, where there is no display: it builds the whole
product, opens the panel on a virtual desktop, and its picture shows that. Called by
scripts/check-run, in a new process for each test."""

import os
import re
import signal
import subprocess
import threading
import unittest

from PIL import Image

import desktop

RUN = desktop.PROGRAM.replace("build/dev/bin/tidewick", "scripts/run")
DISPLAYS = ("DISPLAY", "WAYLAND_DISPLAY")
BUILD_SECONDS = 1200  # without a compiler's cache
BACKGROUND = (0x3A, 0x50, 0x68)
PANEL = (0x1E, 0x1E, 0x20)
BLUE = (0x0A, 0x84, 0xFF)  # an Open button has about 2,000 pixels of it
ALWAYS_THERE = {"shop", "docs", "api", "blog"}  # scripts/setup installs what they run on


def process_of(program):
    """The id of the process that runs `program`."""
    for pid in filter(str.isdecimal, os.listdir("/proc")):
        try:
            if os.readlink(f"/proc/{pid}/exe") == program:
                return pid
        except OSError:
            continue
    return None


def environment_of(pid):
    with open(f"/proc/{pid}/environ", "rb") as file:
        return dict(entry.split("=", 1) for entry in os.fsdecode(file.read()).split("\0") if entry)


class Run(unittest.TestCase):
    def start(self, *arguments):
        """Starts scripts/run; returns {name: port} of the demo's servers and the picture's path,
        once it has printed them."""
        environment = {name: value for name, value in os.environ.items() if name not in DISPLAYS}
        self.script = subprocess.Popen([RUN, *arguments], stdout=subprocess.PIPE, text=True,
                                    stderr=subprocess.PIPE, start_new_session=True,
                                    env={**environment, "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"})
        self.addCleanup(desktop.end, self.script)
        deadline = threading.Timer(BUILD_SECONDS, os.killpg, (self.script.pid, signal.SIGTERM))
        deadline.start()
        self.addCleanup(deadline.cancel)
        servers = {}
        for line in self.script.stdout:
            server = re.fullmatch(r"(\w+) +(\d+)\n", line)
            if server:
                servers[server[1]] = server[2]
            picture = re.match(r"Look at (.*\.png):", line)
            if picture:
                return servers, picture[1]
        self.fail("no picture: " + self.script.stderr.read())

    def check(self, *arguments):
        servers, picture = self.start(*arguments)
        self.assertLessEqual(ALWAYS_THERE, servers.keys())

        # This process joins that desktop, before it looks for its accessibility bus.
        os.environ.update(environment_of(process_of(desktop.PROGRAM)))
        import accessible
        panel = accessible.panel()

        def cards():
            found = [card.texts() for card in accessible.cards(panel)]
            return found if len(found) == len(servers) else None
        found = accessible.wait_until(cards, 20, f"{len(servers)} cards")
        for name, port in servers.items():
            self.assertTrue([texts for texts in found if name in texts and port in texts],
                            f"{name} on {port} is not in {found}")

        with Image.open(picture) as image:
            colours = dict((colour, count) for count, colour in
                           image.convert("RGB").getcolors(image.width * image.height))
        self.assertGreater(colours.get(BACKGROUND, 0), 100_000, "the background")
        self.assertGreater(colours.get(tuple(desktop.INK), 0), 10, "the icon")
        self.assertGreater(colours.get(PANEL, 0), 100_000, "the panel")
        self.assertGreater(colours.get(BLUE, 0), 3 * 1_500, "the cards of servers that answer")

        self.script.send_signal(signal.SIGINT)
        self.script.wait(timeout=60)
        self.assertEqual(self.script.stderr.read(), "")
        self.assertIsNone(process_of(desktop.PROGRAM))

    def test_demo(self):
        self.check("--demo")

    def test_nothing_to_list(self):
        self.check()


if __name__ == "__main__":
    unittest.main()
