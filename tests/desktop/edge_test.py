"""The panel's edge where the window manager composes the screen, and where it does not."""

import os
import subprocess
import unittest

import desktop

IS_COMPOSED = os.environ["TIDEWICK_COMPOSITOR"] == "on"
FILL = (0x1E, 0x1E, 0x20)
HAIRLINE = tuple(round(part + 0.1 * (255 - part)) for part in FILL)


def is_near(color, other):
    return max(abs(one - two) for one, two in zip(color, other)) <= 8


class EdgeTest(unittest.TestCase):
    def setUp(self):
        self.addCleanup(desktop.end, desktop.start_program())
        _, (self.left, self.top, self.width, self.height) = desktop.open_panel()
        desktop.wait_until(lambda: is_near(self.color(30, 5), FILL), 5, "the panel's fill")

    def color(self, x, y):
        """The colour on the screen at a place in the panel."""
        return desktop.Picture().color(self.left + x, self.top + y)

    def test_has_a_hairline_and_round_corners_only_if_composed(self):
        right, bottom = self.width - 1, self.height - 1
        self.assertTrue(is_near(self.color(240, 0), HAIRLINE), self.color(240, 0))
        self.assertTrue(is_near(self.color(0, 270), HAIRLINE), self.color(0, 270))
        for x, y, inward in ((0, 0, 1), (right, 0, -1), (0, bottom, 1), (right, bottom, -1)):
            with self.subTest(x=x, y=y):
                outside = desktop.Picture().color(self.left + x - inward, self.top + y)
                expected = outside if IS_COMPOSED else HAIRLINE
                self.assertTrue(is_near(self.color(x, y), expected), self.color(x, y))
                # A corner of 12 points covers the diagonal from 4 points on.
                self.assertTrue(is_near(self.color(abs(x - 5), abs(y - 5)), FILL))

    def test_is_six_points_from_the_screens_side(self):
        self.assertEqual(self.left + self.width, 1280 - 6)


class FontScaleTest(unittest.TestCase):
    """Desktops tell X clients the scale of their fonts as a resolution: 96 is one."""

    def test_enlarges_the_whole_panel(self):
        set_resources = ["xprop", "-root", "-f", "RESOURCE_MANAGER", "8s", "-set", "RESOURCE_MANAGER"]
        self.addCleanup(subprocess.run, [*set_resources, ""], check=True)
        subprocess.run([*set_resources, "Xft.dpi:\t120"], check=True)
        self.addCleanup(desktop.end, desktop.start_program())
        _, (left, _, width, height) = desktop.open_panel()
        self.assertEqual((width, height), (600, 675))
        self.assertAlmostEqual(left + width, 1280 - 6 * 1.25, delta=1)


if __name__ == "__main__":
    unittest.main()
