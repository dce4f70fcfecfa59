"""pictures.py DIRECTORY SCALE: takes pictures of the panel in every state into DIRECTORY, from the
program and real servers. Called by scripts/screenshots on a virtual desktop, in a network of its
own."""

import contextlib
import os
import subprocess
import sys
import tempfile

import accessible
import desktop
import held_lister
from showcase import demo

DIRECTORY = sys.argv[1]
SCALE = int(sys.argv[2])
REST = (200, 700)  # where the pointer is on nothing, in points
BADGES = 75  # what pulses stands left of this, in points
HEADER = 44  # what turns while a scan is under way stands above this, in points


def point(x, y):
    desktop.move_pointer(x * SCALE, y * SCALE)


class Panel:
    """The program and its open panel."""

    def __init__(self, program, wrapper=(), count=None):
        point(*REST)
        self._program = desktop.start_program(program, wrapper, QT_SCALE_FACTOR=str(SCALE),
                                              **accessible.ENVIRONMENT)
        item = desktop.StatusItem()
        if count is not None:
            desktop.wait_until(lambda: item.count() == count, 60, f"{count} listeners")
        self.window, (_, _, self._width, self._height) = desktop.open_panel()
        point(*REST)
        self.root = accessible.panel()

    def end(self):
        desktop.end(self._program)

    def card(self, text):
        """The card that shows `text`."""
        return accessible.wait_until(
            lambda: next((one for one in accessible.cards(self.root) if text in one.texts()), None),
            10, text)

    def press(self, card, button):
        accessible.find(self.card(card), "push button", button, 10).press()

    def pixels(self, top):
        """What the panel shows below `top`, without the pulsing badges."""
        x, y = BADGES * SCALE, top * SCALE
        return subprocess.run(
            ["import", "-silent", "-window", self.window, "-crop",
             f"{self._width - x}x{self._height - y}+{x}+{y}", "-depth", "8", "rgb:-"],
            capture_output=True, check=True).stdout

    def wait_until_still(self, top=0):
        last = []

        def is_still():
            last.append(self.pixels(top))
            return len(last) > 2 and last[-1] == last[-2] == last[-3]
        desktop.wait_until(is_still, 10, "the end of a movement")

    def save(self, name):
        scale = "" if SCALE == 1 else f"@{SCALE}x"
        subprocess.run(
            ["import", "-silent", "-window", self.window, "-strip", "-depth", "8",
             "-define", "png:compression-level=9", "-define", "png:exclude-chunks=all",
             os.path.join(DIRECTORY, f"{name}{scale}.png")], check=True)

    def save_still(self, name, top=0):
        self.wait_until_still(top)
        self.save(name)


@contextlib.contextmanager
def shown(*arguments, **options):
    panel = Panel(*arguments, **options)
    try:
        yield panel
    finally:
        panel.end()


@contextlib.contextmanager
def held():
    """A copy of the program whose scans can be held."""
    lister = held_lister.HeldLister()
    try:
        yield lister
    finally:
        lister.remove()


@contextlib.contextmanager
def projects(names, wrapper=()):
    """A server in a directory of each name."""
    with tempfile.TemporaryDirectory() as parent, contextlib.ExitStack() as stack:
        os.chmod(parent, 0o755)
        for number, name in enumerate(names):
            directory = os.path.join(parent, name)
            os.mkdir(directory)
            server = desktop.start_server(directory, 4000 + number, wrapper)
            stack.callback(desktop.end, server)
        yield


def loading_and_empty():
    with held() as lister:
        lister.hold()
        with shown(lister.program) as panel:
            accessible.find(panel.root, "label", "Scanning for local services...")
            panel.save("loading")
            lister.let_go()
            accessible.find(panel.root, "label", "No active services")
            panel.save_still("empty")


def list_and_cards():
    with demo() as count, shown(desktop.PROGRAM, count=count) as panel:
        # The work of starting up is behind them.
        accessible.wait_until(
            lambda: all("CPU" not in text or len(text) == len("5% CPU")
                        for text in panel.root.texts()), 60, "idle servers")
        panel.save_still("list")

        x, y, width, height = panel.card("docs").box()
        point(x + width // 2, y + height - 8)
        panel.save_still("hover")
        point(*REST)

        def confirming():
            panel.press("api", "Stop service")
            accessible.find(panel.card("api"), "push button", "Kill port")
            panel.save_still("confirming", HEADER)
            return panel.card("api").find("push button", "Kill port")  # not withdrawn meanwhile
        accessible.wait_until(confirming, 60, "a picture of the question")
        accessible.wait_until(lambda: not panel.root.find("push button", "Kill port"), 10,
                              "the withdrawal")

        panel.press("api", "Show details")
        accessible.find(panel.card("api"), "push button", "Hide details")
        panel.save_still("expanded")


def killing():
    """A kill that is refused holds on until a scan has shown what still runs; meanwhile an older
    one brings the card back."""
    with projects(["forum"], desktop.ANOTHER_USER), demo() as count, held() as lister:
        with shown(lister.program, desktop.NO_RIGHT_TO_KILL, count=count + 1) as panel:
            lister.hold()
            panel.card("forum")
            desktop.wait_until(lambda: len(lister.held()) == 1, 10, "a scan")
            panel.press("forum", "Stop service")
            desktop.outlast_click_sequence()
            panel.press("forum", "Kill port")
            desktop.wait_until(lambda: len(lister.held()) == 2, 10, "the scan after the failure")
            os.remove(lister.held()[0])
            if not panel.card("forum").find("push button", "Kill port"):
                panel.press("forum", "Stop service")
            accessible.wait_until_still(panel.card("forum"))
            panel.save("killing")
            lister.let_go()


def forty_cards():
    names = [f"service-{number:02}" for number in range(1, 41)]
    with projects(names), shown(desktop.PROGRAM, count=40) as panel:
        x, y, width, _ = panel.card("service-01").box()
        point(x + width // 2, y + 10)

        def scroll():
            subprocess.run(["xdotool", "click", "5"], check=True)
            panel.wait_until_still(HEADER)
            return panel.root.find("label", "service-20")
        accessible.wait_until(scroll, 60, "the middle of the list")
        point(*REST)
        # A scan of so many takes seconds: it is under way more often than not.
        panel.save_still("forty-cards-scrolled", HEADER)


os.makedirs(DIRECTORY, exist_ok=True)
loading_and_empty()
list_and_cards()
killing()
forty_cards()
