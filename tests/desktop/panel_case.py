"""What the tests of the panel share: a machine with real servers, the program, its open panel."""

import os
import shutil
import tempfile
import unittest

import accessible
import desktop
import held_lister


class PanelCase(unittest.TestCase):
    def setUp(self):
        desktop.move_pointer(200, 700)

    def directory(self, name):
        """A new project directory of this name."""
        parent = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, parent)
        os.chmod(parent, 0o755)
        path = os.path.join(parent, name)
        os.mkdir(path)
        return path

    def serve(self, project, wrapper=()):
        server = desktop.start_server(self.directory(project), wrapper=wrapper)
        self.addCleanup(desktop.end, server)
        return server

    def launch(self, count, path=desktop.PROGRAM, wrapper=(), **environment):
        """Starts the program and opens its panel once it knows of `count` listeners."""
        self.program = desktop.start_program(path, wrapper, **accessible.ENVIRONMENT,
                                             **environment)
        self.addCleanup(desktop.end, self.program)
        self.item = desktop.StatusItem()
        desktop.wait_until(lambda: self.item.count() == count, 8, f"{count} listeners")
        return self.open_panel()

    def launch_held(self, count, wrapper=()):
        """The same with scans that can be held."""
        self.lister = held_lister.HeldLister()
        self.addCleanup(self.lister.remove)
        return self.launch(count, self.lister.program, wrapper)

    def open_panel(self):
        desktop.open_panel()
        return accessible.panel()

    def card(self, panel, server, seconds=3):
        """The server's card."""
        def with_port():
            return next((one for one in accessible.cards(panel)
                         if str(server.port) in one.texts()), None)
        return accessible.wait_until(with_port, seconds, f"the card of port {server.port}")

    def assert_whole(self, panel, card):
        """Checks that the card of a server that answers stands in its place, with its buttons."""
        (left, *_), (card_left, _, width, _) = panel.box(), card.box()
        self.assertEqual((card_left - left, width), (12, 456))
        for button in ("View in browser", "Show details", "Stop service"):
            self.assertTrue(card.find("push button", button), button)

    def press(self, within, name):
        accessible.find(within, "push button", name).press()

    def confirm_kill(self, card):
        """Presses twice, as somebody does who has read the question."""
        self.press(card, "Stop service")
        desktop.outlast_click_sequence()
        self.press(card, "Kill port")

    def wait_for_count(self, panel, count, seconds=3):
        """Until the status item and the panel show the same, `count`."""
        desktop.wait_until(lambda: self.item.count() == count, seconds, f"{count} on the icon")
        accessible.wait_until(lambda: panel.find("label", f"{count} running"), 3, "the footer")
        accessible.wait_until(lambda: len(accessible.cards(panel)) == count, 3, "the cards")
