"""The panel as a screen reader has it: read, searched and pressed through the accessibility bus.

The program shows itself there when it was started with `ENVIRONMENT`. Nothing is remembered
between two questions, and what has vanished in the meantime raises GLib.Error, which `wait_until`
here takes for "not yet"."""

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402 - the version has to be chosen first

import desktop  # noqa: E402

ENVIRONMENT = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}


def wait_until(condition, seconds, what):
    def on_the_bus():
        try:
            return condition()
        except GLib.Error:
            return None
    return desktop.wait_until(on_the_bus, seconds, what)


class Element:
    """One thing that the bus tells of."""

    def __init__(self, accessible):
        self._it = accessible

    def name(self):
        return self._it.get_name()

    def role(self):
        role = self._it.get_role_name()
        return "push button" if role == "button" else role  # newer libraries call it "button"

    def is_(self, state):
        """Whether it is "showing", "enabled", "focused"..."""
        return state in [one.value_nick for one in self._it.get_state_set().get_states()]

    def box(self):
        """Its x, y, width and height on the screen, in points."""
        box = self._it.get_extents(Atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def children(self):
        found = [self._it.get_child_at_index(index)
                 for index in range(self._it.get_child_count())]
        return [Element(one) for one in found if one]  # none for what went meanwhile

    def shown(self):
        """All that it shows, parents before their children, else in reading order."""
        found = []
        for child in self.children():
            if child.is_("showing"):
                found += [child, *child.shown()]
        return found

    def find(self, role, name):
        """The first shown element of this role whose name holds `name`; None for none."""
        return next((one for one in self.shown() if one.role() == role and name in one.name()),
                    None)

    def texts(self):
        """All texts that it shows, but for those on its buttons."""
        if self.role() == "label":
            return [self.name()]
        return [text for child in self.children()
                if child.is_("showing") and child.role() != "push button"
                for text in child.texts()]

    def press(self):
        """Presses it as a screen reader does: a button's first action is the press."""
        assert self._it.do_action(0), self.name()


def windows(title="Tidewick"):
    """The program's windows of this title that are on the screen."""
    root = Atspi.get_desktop(0)
    for index in range(root.get_child_count()):
        program = root.get_child_at_index(index)
        if program and program.get_name().lower() == "tidewick":
            program.set_cache_mask(Atspi.Cache.NONE)
            return [one for one in Element(program).children()
                    if one.name() == title and one.is_("showing")]
    return []


def panel():
    """The open panel; waits for it."""
    return wait_until(windows, 10, "the panel on the accessibility bus")[0]


def find(within, role, name, seconds=3):
    """`within.find(...)`, waited for."""
    return wait_until(lambda: within.find(role, name), seconds, f"{role} {name!r}")


def cards(window):
    """The shown cards, from top to bottom."""
    return [one for one in window.shown() if one.role() == "list item"]


def focused(window):
    """What has the keyboard; None for nothing. What it is in calls itself focused too."""
    return next((one for one in reversed(window.shown()) if one.is_("focused")), None)


def wait_until_still(element):
    """Until it has stopped moving and growing."""
    boxes = []

    def is_still():
        boxes.append(element.box())
        return len(boxes) > 8 and len(set(boxes[-8:])) == 1
    wait_until(is_still, 5, "the end of a movement")
