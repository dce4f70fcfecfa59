"""The whole panel from the keyboard, with the focus read on the accessibility bus."""

import signal
import subprocess
import unittest

import accessible
import desktop
from panel_case import PanelCase


class PanelKeyboardTest(PanelCase):
    def tab(self, panel):
        """Presses Tab; returns what has the focus then."""
        def place():
            focused = accessible.focused(panel)
            return focused and (focused.role(), focused.name(), focused.box())
        before = place()
        desktop.press_key("Tab")
        return accessible.wait_until(lambda: place() not in (None, before) and place(), 3,
                                     f"the focus elsewhere than on {before}")

    def tab_to(self, panel, name):
        for _ in range(20):
            if self.tab(panel)[1] == name:
                return
        self.fail(f"Tab doesn't reach {name}")

    def test_tab_goes_through_all_buttons_as_they_read(self):
        self.serve("shop")
        panel = self.launch(1)
        buttons = ["Refresh", "View in browser", "Show details", "Stop service", "Quit"]
        self.assertEqual([one.name() for one in panel.shown() if one.role() == "push button"],
                         buttons)

        def round_trip():
            self.tab_to(panel, "Quit")
            names = [self.tab(panel)]
            while names[-1][1] != "Quit":
                names.append(self.tab(panel))
            return [name for role, name, _ in names if role == "push button"]
        # Refresh can't be reached while a scan is under way.
        desktop.wait_until(lambda: round_trip() == buttons, 20, "the whole round")

    def test_arrows_move_between_cards(self):
        self.serve("shop")
        self.serve("docs")
        panel = self.launch(2)
        boxes = [card.box() for card in accessible.cards(panel)]

        def wait_for_focus_in(box):
            def is_inside():
                focused = accessible.focused(panel)
                return focused and box[1] <= focused.box()[1] < box[1] + box[3]
            accessible.wait_until(is_inside, 3, f"the focus in the card at {box}")

        self.tab_to(panel, "Show details")
        wait_for_focus_in(boxes[0])
        desktop.press_key("Down")
        wait_for_focus_in(boxes[1])
        desktop.press_key("Up")
        wait_for_focus_in(boxes[0])

    def test_space_and_enter_press(self):
        self.serve("shop")
        panel = self.launch(1)
        self.tab_to(panel, "Show details")
        desktop.press_key("space")
        accessible.find(panel, "label", "PID")
        desktop.press_key("Return")
        accessible.wait_until(lambda: not panel.find("label", "PID"), 3, "the collapse")

    def test_keyboard_alone_kills(self):
        shop = self.serve("shop")
        panel = self.launch(1)

        def ask_and_confirm():
            self.tab_to(panel, "Stop service")
            desktop.press_key("Return")
            accessible.find(panel, "push button", "Kill port")
            self.assertIsNone(shop.poll())
            if accessible.focused(panel).name() != "Kill port":
                self.tab_to(panel, "Kill port")
            desktop.outlast_click_sequence()
            desktop.press_key("Return")
            return shop.wait(timeout=40)

        try:
            status = ask_and_confirm()
        except (AssertionError, subprocess.TimeoutExpired):
            # On a busy machine the question can be withdrawn, after 3 seconds, before the answer.
            accessible.wait_until(lambda: not panel.find("push button", "Kill port"), 10,
                                  "the withdrawal")
            status = ask_and_confirm()
        self.assertEqual(status, -signal.SIGKILL)
        self.wait_for_count(panel, 0)

    def test_escape_withdraws_then_closes(self):
        shop = self.serve("shop")
        panel = self.launch(1)
        self.tab_to(panel, "Stop service")
        desktop.press_key("Return")
        accessible.find(panel, "push button", "Kill port")
        desktop.press_key("Escape")
        accessible.wait_until(lambda: not panel.find("push button", "Kill port"), 2,
                              "the withdrawal")
        self.assertTrue(desktop.visible_panels())
        desktop.press_key("Escape")
        desktop.wait_for_no_panel()
        self.assertIsNone(shop.poll())


if __name__ == "__main__":
    unittest.main()
