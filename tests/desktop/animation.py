"""animation.py FILE.gif SCALE: films a panel that is opened, a card that is expanded, a server that
is killed, with real clicks beside real servers. Called by scripts/screenshots on a virtual desktop,
in a network of its own."""

import subprocess
import sys
import threading
import time
import zlib

from PIL import Image

import accessible
import desktop
from showcase import demo

FILE = sys.argv[1]
SCALE = int(sys.argv[2])  # pixels in a point, each way; places are in points
START = (40, 480)  # where the pointer comes from
STEP = 8            # points that the pointer moves in a fiftieth of a second, about
FRAME = 1 / 15      # seconds between two frames, at least
LAST = 2.5          # seconds that the last frame stays
COLOURS = 128

# The screen's picture comes without its pointer: X is its edge, "." its inside.
POINTER = """
X
XX
X.X
X..X
X...X
X....X
X.....X
X......X
X.......X
X........X
X.....XXXXX
X..X..X
X.X X..X
XX  X..X
X    X..X
     X..X
      XX
""".split("\n")[1:-1]


def move_pointer(place):
    desktop.move_pointer(place[0] * SCALE, place[1] * SCALE)


class Film:
    """Takes frames from its start to its end."""

    def __init__(self):
        self._frames = []  # what is seen, and when
        self._pointer = START
        self._size = tuple(int(part) for part in subprocess.run(
            ["xdotool", "getdisplaygeometry"], capture_output=True, text=True,
            check=True).stdout.split())
        self._is_over = threading.Event()
        self._camera = threading.Thread(target=self._film)

    def __enter__(self):
        move_pointer(START)
        self._camera.start()
        return self

    def __exit__(self, *_):
        self._is_over.set()
        self._camera.join()

    def _film(self):
        while not self._is_over.is_set():
            since = time.monotonic()
            seen = (zlib.compress(desktop.Picture().pixels, 1), self._pointer)
            if not self._frames or self._frames[-1][0] != seen:
                self._frames.append((seen, since))
            time.sleep(max(0, since + FRAME - time.monotonic()))

    def point(self, x, y):
        """Moves the pointer there as a hand does: visibly."""
        from_x, from_y = self._pointer
        steps = max(1, int(max(abs(x - from_x), abs(y - from_y)) / STEP))
        for step in range(1, steps + 1):
            self._pointer = (from_x + (x - from_x) * step // steps,
                             from_y + (y - from_y) * step // steps)
            move_pointer(self._pointer)
            time.sleep(0.02)

    def click(self, x, y):
        self.point(x, y)
        time.sleep(0.3)
        desktop.click(x * SCALE, y * SCALE)

    def press(self, card, name):
        button = accessible.find(card(), "push button", name)
        accessible.wait_until_still(button)
        x, y, width, height = button.box()
        self.click(x + width // 2, y + height // 2)

    def save(self, path):
        frames = [self._drawn(*seen) for seen, _ in self._frames]
        # One set of colours for all, so that what stands still stays the same.
        some = frames[::len(frames) // 12]
        sheet = Image.new("RGB", (self._size[0], self._size[1] * len(some)))
        for number, frame in enumerate(some):
            sheet.paste(frame, (0, self._size[1] * number))
        colours = sheet.quantize(COLOURS, method=Image.Quantize.FASTOCTREE)
        ends = [since for _, since in self._frames[1:]] + [self._frames[-1][1] + LAST]
        first, *others = [frame.quantize(palette=colours, dither=Image.Dither.NONE)
                          for frame in frames]
        first.save(path, save_all=True, append_images=others, loop=0, duration=[
            round((end - since) * 1000) for (_, since), end in zip(self._frames, ends)])

    def _drawn(self, pixels, pointer):
        frame = Image.frombytes("RGB", self._size, zlib.decompress(pixels))
        for y, line in enumerate(POINTER, pointer[1]):
            for x, mark in enumerate(line, pointer[0]):
                if mark != " ":
                    frame.paste((255, 255, 255) if mark == "." else (0, 0, 0),
                                (x * SCALE, y * SCALE, (x + 1) * SCALE, (y + 1) * SCALE))
        return frame


def card(panel, text):
    """The card that shows `text`; waits for it."""
    return accessible.wait_until(
        lambda: next((one for one in accessible.cards(panel) if text in one.texts()), None),
        10, text)


with demo() as count:
    program = desktop.start_program(**accessible.ENVIRONMENT)
    item = desktop.StatusItem()
    desktop.wait_until(lambda: item.count() == count, 60, f"{count} listeners")
    with Film() as film:
        time.sleep(0.7)
        film.click(*[pixels // SCALE for pixels in desktop.place_of_icon()])
        panel = accessible.panel()
        time.sleep(1.5)
        film.press(lambda: card(panel, "api"), "Show details")
        time.sleep(2)
        film.press(lambda: card(panel, "api"), "Hide details")
        time.sleep(1)
        film.press(lambda: card(panel, "docs"), "Stop service")
        desktop.outlast_click_sequence()
        film.press(lambda: card(panel, "docs"), "Kill port")
        desktop.wait_until(lambda: item.count() == count - 1, 10, "the end of the server")
        film.point(*START)
        time.sleep(0.5)
    desktop.end(program)
    film.save(FILE)
