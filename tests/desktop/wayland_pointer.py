"""A pointer for a compositor that has none, by the protocol wlr-virtual-pointer-unstable-v1, spoken
over the compositor's socket as https://wayland.freedesktop.org/docs/html/ch04.html has it."""

import os
import socket
import struct
import time

# The objects, numbered in the order in which they are made.
DISPLAY, REGISTRY, MANAGER, POINTER, CALLBACK = range(1, 6)
BUTTONS = {1: 0x110, 3: 0x111}  # linux/input-event-codes.h


def now():
    """The time of an event, in milliseconds: two clicks shall be as far apart as they are."""
    return int(time.monotonic() * 1000) & 0xFFFFFFFF


def text(value):
    """A string argument: its length with the final zero, then both, padded to whole words."""
    data = value.encode() + b"\0"
    return struct.pack("=I", len(data)) + data + b"\0" * (-len(data) % 4)


class VirtualPointer:
    """Is there until it is closed. Places are pixels of a screen of `width` times `height`."""

    def __init__(self, width, height):
        self.size = (width, height)
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(os.path.join(os.environ["XDG_RUNTIME_DIR"],
                                         os.environ["WAYLAND_DISPLAY"]))
        self.send(DISPLAY, 1, struct.pack("=I", REGISTRY))
        name = self.number_of("zwlr_virtual_pointer_manager_v1")
        self.send(REGISTRY, 0, struct.pack("=I", name) + text("zwlr_virtual_pointer_manager_v1")
                  + struct.pack("=II", 1, MANAGER))
        self.send(MANAGER, 0, struct.pack("=II", 0, POINTER))
        self.sync()

    def close(self):
        self.socket.close()

    def send(self, target, request, arguments=b""):
        self.socket.sendall(struct.pack("=II", target, (8 + len(arguments)) << 16 | request)
                            + arguments)

    def read(self, size):
        data = b""
        while len(data) < size:
            more = self.socket.recv(size - len(data))
            assert more, "the compositor hung up"
            data += more
        return data

    def event(self):
        sender, head = struct.unpack("=II", self.read(8))
        assert sender != DISPLAY or head & 0xFFFF != 0, "the compositor reports an error"
        return sender, head & 0xFFFF, self.read((head >> 16) - 8)

    def number_of(self, interface):
        """The registry's number of the global object with this interface."""
        while True:
            sender, kind, arguments = self.event()
            if (sender, kind) == (REGISTRY, 0) and text(interface) in arguments:
                return struct.unpack_from("=I", arguments)[0]

    def sync(self):
        """Returns when the compositor has done all that it was asked."""
        self.send(DISPLAY, 0, struct.pack("=I", CALLBACK))
        while self.event()[0] != CALLBACK:
            pass

    def move(self, x, y):
        self.send(POINTER, 1, struct.pack("=5I", now(), x, y, *self.size))
        self.send(POINTER, 4)
        self.sync()

    def click(self, x, y, button=1):
        self.move(x, y)
        for state in (1, 0):
            self.send(POINTER, 2, struct.pack("=3I", now(), BUTTONS[button], state))
            self.send(POINTER, 4)
            self.sync()
