"""A pointer and a keyboard for a compositor that has none, by the protocols
wlr-virtual-pointer-unstable-v1 and virtual-keyboard-unstable-v1, and a window that takes clicks. All
are spoken over the compositor's socket as https://wayland.freedesktop.org/docs/html/ch04.html has
it."""

import array
import os
import socket
import struct
import tempfile
import time

DISPLAY, REGISTRY, CALLBACK = range(1, 4)  # the objects of every client
BUTTONS = {1: 0x110, 3: 0x111}  # linux/input-event-codes.h
KEYS = {"Escape": 1, "Tab": 15, "space": 57}

KEYMAP = """xkb_keymap {
xkb_keycodes { minimum = 8; maximum = 255; <ESC> = 9; <TAB> = 23; <SPCE> = 65; };
xkb_types { include "complete" };
xkb_compatibility { include "complete" };
xkb_symbols { key <ESC> { [ Escape ] }; key <TAB> { [ Tab ] }; key <SPCE> { [ space ] }; };
};
"""


def now():
    """The time of an event, in milliseconds: two clicks shall be as far apart as they are."""
    return int(time.monotonic() * 1000) & 0xFFFFFFFF


def text(value):
    """A string argument: its length with the final zero, then both, padded to whole words."""
    data = value.encode() + b"\0"
    return struct.pack("=I", len(data)) + data + b"\0" * (-len(data) % 4)


class Client:
    """A connection to the compositor; what it makes there is there until it is closed."""

    def __init__(self):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(os.path.join(os.environ["XDG_RUNTIME_DIR"],
                                         os.environ["WAYLAND_DISPLAY"]))
        self.last_object = CALLBACK
        self.globals = {}  # the registry's numbers of the interfaces
        self.send(DISPLAY, 1, struct.pack("=I", REGISTRY))
        self.sync()

    def close(self):
        self.socket.close()

    def send(self, target, request, arguments=b"", descriptors=()):
        message = struct.pack("=II", target, (8 + len(arguments)) << 16 | request) + arguments
        ancillary = [(socket.SOL_SOCKET, socket.SCM_RIGHTS, array.array("i", descriptors))]
        self.socket.sendmsg([message], ancillary if descriptors else [])

    def read(self, size):
        data = b""
        while len(data) < size:
            more = self.socket.recv(size - len(data))
            assert more, "the compositor hung up"
            data += more
        return data

    def event(self):
        sender, head = struct.unpack("=II", self.read(8))
        arguments = self.read((head >> 16) - 8)
        assert (sender, head & 0xFFFF) != (DISPLAY, 0), arguments
        return sender, head & 0xFFFF, arguments

    def new_object(self):
        """The next number: the compositor accepts no other."""
        self.last_object += 1
        return self.last_object

    def bind(self, interface):
        """The global object with this interface."""
        bound = self.new_object()
        self.send(REGISTRY, 0, struct.pack("=I", self.globals[interface]) + text(interface)
                  + struct.pack("=II", 1, bound))
        return bound

    def sync(self):
        """Returns when the compositor has done all that it was asked."""
        self.send(DISPLAY, 0, struct.pack("=I", CALLBACK))
        sender = None
        while sender != CALLBACK:
            sender, kind, arguments = self.event()
            if (sender, kind) == (REGISTRY, 0):
                number, size = struct.unpack_from("=II", arguments)
                self.globals[arguments[8:8 + size - 1].decode()] = number
            else:
                self.handle(sender, kind, arguments)

    def handle(self, sender, kind, arguments):
        """Answers an event that `sync` has met."""


class VirtualPointer(Client):
    """Places are points of a desktop of `width` times `height`."""

    def __init__(self, width, height):
        super().__init__()
        self.size = (width, height)
        manager = self.bind("zwlr_virtual_pointer_manager_v1")
        self.device = self.new_object()
        self.send(manager, 0, struct.pack("=II", 0, self.device))
        self.sync()

    def move(self, x, y):
        self.send(self.device, 1, struct.pack("=5I", now(), int(x), int(y), *self.size))
        self.send(self.device, 4)
        self.sync()

    def click(self, x, y, button=1):
        self.move(x, y)
        for state in (1, 0):
            self.send(self.device, 2, struct.pack("=3I", now(), BUTTONS[button], state))
            self.send(self.device, 4)
            self.sync()


class VirtualKeyboard(Client):
    """Has only the keys that the tests press."""

    def __init__(self):
        super().__init__()
        manager = self.bind("zwp_virtual_keyboard_manager_v1")
        seat = self.bind("wl_seat")
        self.device = self.new_object()
        self.send(manager, 0, struct.pack("=II", seat, self.device))
        keymap = KEYMAP.encode() + b"\0"
        with tempfile.TemporaryFile() as file:
            file.write(keymap)
            file.flush()
            self.send(self.device, 0, struct.pack("=II", 1, len(keymap)), [file.fileno()])
        self.sync()

    def press(self, key):
        for state in (1, 0):
            self.send(self.device, 1, struct.pack("=3I", now(), KEYS[key], state))
            self.sync()


class BlackWindow(Client):
    """A window of another program, black as the bare desktop."""

    def __init__(self, width, height):
        self.xdg_surface = None
        self.is_configured = False
        super().__init__()
        surface = self.make(self.bind("wl_compositor"), 0)
        self.xdg_surface = self.make(self.bind("xdg_wm_base"), 2, surface)
        self.make(self.xdg_surface, 1)  # an ordinary window
        shm = self.bind("wl_shm")
        with tempfile.TemporaryFile() as file:
            file.truncate(4 * width * height)
            pool = self.new_object()
            self.send(shm, 0, struct.pack("=Ii", pool, 4 * width * height), [file.fileno()])
        buffer = self.new_object()
        self.send(pool, 0, struct.pack("=I4iI", buffer, 0, width, height, 4 * width, 1))
        self.send(surface, 6)  # asks for the window's configuration
        while not self.is_configured:
            self.sync()
        self.send(surface, 1, struct.pack("=Iii", buffer, 0, 0))
        self.send(surface, 6)
        self.sync()

    def make(self, factory, request, *arguments):
        """A new object."""
        made = self.new_object()
        self.send(factory, request, struct.pack(f"={1 + len(arguments)}I", made, *arguments))
        return made

    def handle(self, sender, kind, arguments):
        if (sender, kind) == (self.xdg_surface, 0):
            self.send(sender, 4, arguments)  # acknowledges the configuration
            self.is_configured = True
