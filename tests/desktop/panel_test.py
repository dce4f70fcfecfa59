"""The panel on a real desktop, read and pressed through the accessibility bus."""

import os
import signal
import subprocess
import unittest

import accessible
import desktop
import held_lister
from panel_case import PanelCase


class PanelTest(PanelCase):
    def test_cards_tell_what_runs(self):
        shop = self.serve("shop")
        docs = self.serve("docs")
        panel = self.launch(2)
        for server, project in ((shop, "shop"), (docs, "docs")):
            card = self.card(panel, server)
            self.assertEqual(card.texts()[:3], [project, "Live on port", str(server.port)])
            self.assertTrue(any(text.endswith(" MB") for text in card.texts()), card.texts())
            self.assertTrue(card.name().startswith(f"{project}, live on port {server.port}"),
                            card.name())
            self.assert_whole(panel, card)
        self.assertEqual(panel.texts()[:3], ["Tidewick", "—", "Let me kill your LocalHost"])
        self.assertEqual(panel.texts()[-2:], ["2 live", "2 running"])
        ports = [int(card.texts()[2]) for card in accessible.cards(panel)]
        self.assertEqual(ports, sorted(ports))
        desktop.screenshot("panel-list")

    def test_fixed_font_has_the_medium_weight_of_the_details(self):
        font = subprocess.run(["fc-match", "monospace:medium"], check=True, capture_output=True,
                              text=True).stdout
        self.assertIn('"Medium"', font)

    def test_everything_shown_has_a_role_and_a_name(self):
        self.serve("shop")
        panel = self.launch(1)
        card = accessible.cards(panel)[0]
        self.press(card, "Show details")
        accessible.find(card, "push button", "Show in Finder")
        self.press(card, "Stop service")
        accessible.find(card, "push button", "Kill port")
        for element in panel.shown():
            self.assertNotEqual(element.name(), "")
            self.assertIn(element.role(),
                          ("label", "push button", "list", "list item", "scroll bar"),
                          element.name())

    def test_opening_and_closing_prints_nothing(self):
        self.serve("shop")
        self.launch(1)
        for _ in range(2):
            desktop.click(200, 700)
            desktop.wait_for_no_panel()
            self.open_panel()
        desktop.end(self.program)

    def test_loading_then_empty(self):
        lister = held_lister.HeldLister()
        self.addCleanup(lister.remove)
        lister.hold()
        self.addCleanup(desktop.end, desktop.start_program(lister.program,
                                                           **accessible.ENVIRONMENT))
        panel = self.open_panel()
        accessible.find(panel, "label", "Scanning for local services...")
        lister.let_go()
        accessible.find(panel, "label", "No active services")
        self.assertEqual(panel.texts()[3:], ["No active services",
                                             "Your local servers will appear here", "0 running"])
        desktop.screenshot("panel-empty")

    def test_press_expands_one_card_at_a_time(self):
        shop = self.serve("shop")
        docs = self.serve("docs")
        panel = self.launch(2)
        self.press(self.card(panel, shop), "Show details")
        accessible.find(self.card(panel, shop), "label", "PID")
        accessible.find(self.card(panel, shop), "label", str(shop.pid))
        accessible.find(self.card(panel, shop), "push button", "Hide details")
        self.press(self.card(panel, docs), "Show details")
        accessible.find(self.card(panel, docs), "label", str(docs.pid))
        accessible.wait_until(lambda: not self.card(panel, shop).find("label", "PID"), 3,
                              "the first card's collapse")
        self.press(self.card(panel, docs), "Hide details")
        accessible.wait_until(lambda: not panel.find("label", "PID"), 3, "both collapsed")

    def test_click_on_a_card_expands_it(self):
        shop = self.serve("shop")
        panel = self.launch(1)
        x, y, width, height = self.card(panel, shop).box()
        desktop.click(x + width // 2, y + height - 5)
        accessible.find(panel, "label", "PID")
        desktop.screenshot("panel-expanded")

    def test_presses_on_the_bus_ask_the_desktop(self):
        shop = self.serve("shop")
        tools = self.directory("tools")
        asked = os.path.join(tools, "asked")
        with open(os.path.join(tools, "xdg-open"), "w", encoding="utf-8") as script:
            script.write(f'#!/bin/sh\necho "$1" >>{asked}\n')
        os.chmod(script.name, 0o755)

        def was_asked(url):
            if not os.path.exists(asked):
                return False
            with open(asked, encoding="utf-8") as file:
                return url in file.read().split()

        panel = self.launch(1, PATH=f"{tools}:{os.environ['PATH']}")
        card = self.card(panel, shop)
        self.press(card, "View in browser")
        desktop.wait_until(lambda: was_asked(f"http://localhost:{shop.port}"), 5, "the browser")
        self.reopen_if_closed()
        card = self.card(accessible.panel(), shop)
        self.press(card, "Show details")
        self.press(card, "Show in Finder")
        directory = os.readlink(f"/proc/{shop.pid}/cwd")
        # Whichever file manager the desktop has: one that is asked, or one that shows its window.
        desktop.wait_until(lambda: was_asked(f"file://{directory}") or desktop.windows_called(
            os.path.basename(directory)), 10, "the file manager")

    def reopen_if_closed(self):
        if not desktop.visible_panels():
            desktop.open_panel()

    def test_quit_pressed_on_the_bus_ends_the_program(self):
        panel = self.launch(0)
        self.press(panel, "Quit")
        self.assertEqual(self.program.wait(timeout=10), 0)

    def test_one_press_kills_nothing_and_withdraws_itself(self):
        shop = self.serve("shop")
        panel = self.launch(1)
        self.press(self.card(panel, shop), "Stop service")
        accessible.find(panel, "push button", "Kill port")
        accessible.wait_until(lambda: not panel.find("push button", "View in browser"), 1,
                              "Open's leave")
        desktop.screenshot("panel-confirming")
        accessible.wait_until(lambda: not panel.find("push button", "Kill port"), 6,
                              "the withdrawal")
        accessible.find(panel, "push button", "Stop service")
        self.assertIsNone(shop.poll())

    def test_click_sequence_kills_nothing(self):
        shop = self.serve("shop")
        panel = self.launch(1)
        for clicks, milliseconds in ((2, 150), (3, 80), (8, 150)):
            stop = accessible.find(panel, "push button", "Stop service")
            accessible.wait_until_still(stop)
            x, y, width, height = stop.box()
            desktop.click_sequence(x + width // 2, y + height // 2, clicks, milliseconds)
            accessible.find(panel, "push button", "Kill port")
            accessible.wait_until(lambda: panel.find("push button", "Stop service"), 6,
                                  "the withdrawal")
            self.assertIsNone(shop.poll(), f"{clicks} clicks")

    def test_confirmed_kill_ends_the_process_and_takes_all_its_rows(self):
        shop = self.serve("shop")
        doomed = desktop.start_server_on_ports(2)
        self.addCleanup(desktop.end, doomed)
        panel = self.launch_held(3)
        # No scan has a part in what follows.
        self.lister.hold()
        card = next(one for one in accessible.cards(panel) if str(shop.port) not in one.texts())
        self.confirm_kill(card)
        self.assertEqual(doomed.wait(timeout=10), -signal.SIGKILL)
        self.wait_for_count(panel, 1)
        self.card(panel, shop)
        self.assertIsNone(shop.poll())
        self.lister.let_go()

    def test_refused_kill_brings_the_row_back(self):
        if subprocess.run([*desktop.NO_RIGHT_TO_KILL, *desktop.ANOTHER_USER, "true"], check=False,
                          capture_output=True).returncode != 0:
            self.skipTest("needs root, to start a server as another user")
        foreign = self.serve("foreign", desktop.ANOTHER_USER)
        look = ["readlink", f"/proc/{foreign.pid}/cwd"]
        if subprocess.run([*desktop.NO_RIGHT_TO_KILL, *look], check=False,
                          capture_output=True).returncode != 0:
            self.skipTest("needs the right to look into another user's processes")
        panel = self.launch_held(1, desktop.NO_RIGHT_TO_KILL)
        card = self.card(panel, foreign)
        self.lister.hold()
        self.confirm_kill(card)
        self.wait_for_count(panel, 0)
        desktop.wait_until(self.lister.held, 3, "the scan after the failure")
        self.assertIsNone(foreign.poll())
        self.lister.let_go()
        self.wait_for_count(panel, 1)
        self.card(panel, foreign)
        self.assertIsNone(foreign.poll())
        accessible.wait_until(lambda: panel.find("push button", "Stop service"), 3,
                              "a card that can be asked again")


if __name__ == "__main__":
    unittest.main()
