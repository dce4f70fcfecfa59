"""GNOME Shell as the tests see and use it, on X11 and under Wayland."""

import os
import subprocess
import tempfile

from gi.repository import Gio, GLib
from PIL import Image, ImageGrab

import desktop

BUTTONS = {1: 0x110, 2: 0x112, 3: 0x111}  # linux/input-event-codes.h
KEYS = {"Escape": 0xFF1B, "Shift": 0xFFE1}  # X11/keysymdef.h
SCALE = int(os.environ.get("TIDEWICK_SCALE", "1"))
WIDTH, HEIGHT = 1280 * SCALE, 800 * SCALE


def seat():
    """The pointer, the keyboard and the picture of the desktop that the test runs on."""
    return X11Seat() if os.environ["XDG_SESSION_TYPE"] == "x11" else WaylandSeat()


class Bus:
    """A connection to the session bus; what the shell makes for it is there until it is closed."""

    def __init__(self):
        address = Gio.dbus_address_get_for_bus_sync(Gio.BusType.SESSION)
        self.connection = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)

    def call(self, name, path, method, signature="()", *arguments):
        """The values that the method returns."""
        interface, _, member = method.rpartition(".")
        return self.connection.call_sync(
            name, path, interface, member, GLib.Variant(signature, arguments), None,
            Gio.DBusCallFlags.NONE, 10000).unpack()

    def evaluate(self, script):
        """What a script returns inside the shell, as JSON."""
        is_done, value = self.call("org.gnome.Shell", "/org/gnome/Shell", "org.gnome.Shell.Eval",
                                   "(s)", script)
        assert is_done, value
        return value

    def close(self):
        self.connection.close_sync()


class X11Seat:
    """The X server's."""

    def move(self, x, y):
        desktop.move_pointer(x, y)

    def click(self, x, y, button=1, times=1):
        self.move(x, y)
        subprocess.run(["xdotool", "click", "--repeat", str(times), "--delay", "50", str(button)],
                       check=True)

    def press(self, key):
        desktop.press_key(key)

    def picture(self):
        return ImageGrab.grab(xdisplay="").convert("RGB")

    def close(self):
        pass


class WaylandSeat:
    """The compositor's own, which it offers to remote desktops. An absolute place of the pointer
    takes a recording of the screen, so the pointer goes relative ways from a corner."""

    def __init__(self):
        self.bus = Bus()
        self.session, = self.bus.call(
            "org.gnome.Mutter.RemoteDesktop", "/org/gnome/Mutter/RemoteDesktop",
            "org.gnome.Mutter.RemoteDesktop.CreateSession")
        self.send("Start")
        self.send("NotifyPointerMotionRelative", "(dd)", 2 * WIDTH, 2 * HEIGHT)
        self.place = (WIDTH - SCALE, HEIGHT - SCALE)
        self.press("Shift")  # the first key makes the keyboard, and reaches no program

    def send(self, member, signature="()", *arguments):
        self.bus.call("org.gnome.Mutter.RemoteDesktop", self.session,
                      "org.gnome.Mutter.RemoteDesktop.Session." + member, signature, *arguments)

    def send_button(self, button, is_down):
        """Does not wait for an answer: a busy shell would make one click of two."""
        self.bus.connection.call(
            "org.gnome.Mutter.RemoteDesktop", self.session,
            "org.gnome.Mutter.RemoteDesktop.Session", "NotifyPointerButton",
            GLib.Variant("(ib)", (BUTTONS[button], is_down)), None, Gio.DBusCallFlags.NONE, 10000,
            None, None)

    def move(self, x, y):
        # Whether the shell lays the desktop out in points or in pixels, ways are in points.
        self.send("NotifyPointerMotionRelative", "(dd)",
                  *((to - at) / SCALE for to, at in zip((x, y), self.place)))
        self.place = (x, y)

    def click(self, x, y, button=1, times=1):
        self.move(x, y)
        for _ in range(times):
            for is_down in (True, False):
                self.send_button(button, is_down)

    def press(self, key):
        for is_down in (True, False):
            self.send("NotifyKeyboardKeysym", "(ub)", KEYS[key], is_down)

    def picture(self):
        with tempfile.NamedTemporaryFile(suffix=".png") as file:
            is_taken, _ = self.bus.call(
                "org.gnome.Shell.Screenshot", "/org/gnome/Shell/Screenshot",
                "org.gnome.Shell.Screenshot.Screenshot", "(bbs)", False, False, file.name)
            assert is_taken
            with Image.open(file.name) as picture:
                return picture.convert("RGB")

    def close(self):
        self.bus.close()
