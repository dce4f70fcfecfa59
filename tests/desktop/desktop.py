"""What the desktop tests share: the program under test, the status item as the session bus shows
it, the panel's window, real servers, and waiting for a condition with a deadline."""

import ast
import os
import re
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import time

from PIL import ImageGrab

PROGRAM = os.environ["TIDEWICK"]
SCREENSHOTS = os.environ["SCREENSHOTS"]
SCRIPTS = os.path.join(os.path.dirname(__file__), "..", "..", "scripts")
ANOTHER_USER = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
NO_RIGHT_TO_KILL = ["setpriv", "--bounding-set=-kill", "--inh-caps=-kill"]
DOUBLE_CLICK_INTERVAL = 0.4  # the toolkit's own, which none of these desktops sets
NO_TRAY = "tidewick: this desktop shows no status items; waiting for a tray"
NO_BUS = "tidewick: no session bus, so only an X11 tray can show the icon"
INK = bytes((0x1F, 0x8A, 0x9E))  # the colour of the icon and of the number's badge


def wait_until(condition, seconds, what):
    """Returns the condition's first true value, which comes within `seconds` on a quiet machine.
    Fails the test after four times that without one: other tests run beside it."""
    deadline = time.monotonic() + 4 * seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {4 * seconds} s: {what}")
        time.sleep(0.02)


def comes(condition, seconds):
    """Whether the condition becomes true, which takes at most `seconds` on a quiet machine."""
    try:
        return wait_until(condition, seconds, "")
    except AssertionError:
        return False


def wait_until_still(look, seconds, what, moment=0.3):
    """Returns what `look` sees once it has seen the same for a moment; fails as `wait_until`."""
    seen = []

    def is_still():
        seen.append((time.monotonic(), look()))
        while seen[0][1] != seen[-1][1]:
            seen.pop(0)
        return seen[-1][1] and seen[-1][0] - seen[0][0] > moment
    wait_until(is_still, seconds, what)
    return seen[-1][1]


def is_alive(pid):
    """Whether the process exists and is no zombie."""
    try:
        with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as stat:
            return stat.read().rpartition(")")[2].split()[0] != "Z"
    except FileNotFoundError:
        return False


class Program(subprocess.Popen):
    """The program under test. A line on standard error fails the test when the program is ended
    with `end`, unless the test allowed the line or has read it."""

    def __init__(self, command, **options):
        self._allowed = []
        self._read = 0
        self.is_finished = False
        with tempfile.TemporaryFile() as errors:
            super().__init__(command, stderr=errors, text=True, **options)
            self._errors = os.dup(errors.fileno())

    def may_print(self, *lines):
        """Allows these lines on standard error."""
        self._allowed += lines

    def read_errors(self):
        """The lines that it printed on standard error since the last call."""
        text = os.pread(self._errors, 1 << 20, self._read)
        self._read += len(text)
        return text.decode(errors="replace").splitlines()

    def finish(self):
        """Ends it as the session does, or by force where that takes too long."""
        if self.is_finished:
            return
        self.is_finished = True
        self.terminate()
        try:
            self.wait(timeout=3)
        except subprocess.TimeoutExpired:
            self.kill()
            self.wait()
        unexpected = [line for line in self.read_errors() if line not in self._allowed]
        os.close(self._errors)
        assert not unexpected, f"printed on standard error: {unexpected}"


def start_program(path=PROGRAM, wrapper=(), **environment):
    """Starts the program, by way of the command `wrapper` where one is given."""
    return Program([*wrapper, path], env={**os.environ, **environment})


def start_again(**environment):
    """Starts the program beside the one that runs; it ends at once and prints nothing."""
    second = subprocess.run([PROGRAM], env={**os.environ, **environment}, stderr=subprocess.PIPE,
                            text=True, check=False, timeout=40)
    assert (second.returncode, second.stderr) == (0, ""), second


def copy_with_lsof(script):
    """A copy of the program in a directory of its own, beside which `script` is its lsof."""
    directory = tempfile.mkdtemp()
    supplied = os.path.join(os.path.dirname(PROGRAM), "../libexec")
    if os.path.isdir(supplied):
        shutil.copytree(supplied, os.path.join(directory, "libexec"))
    for name in ("bin", "libexec/tidewick"):
        os.makedirs(os.path.join(directory, name), exist_ok=True)
    shutil.copy(PROGRAM, os.path.join(directory, "bin/tidewick"))
    lsof = os.path.join(directory, "libexec/tidewick/lsof")
    with open(lsof, "w", encoding="utf-8") as file:
        file.write(script)
    os.chmod(lsof, stat.S_IRWXU)
    return directory


def end(process):
    """Ends a child of the test, whatever state it is in."""
    try:
        if isinstance(process, Program):
            process.finish()
    finally:
        process.kill()
        process.wait()
        for stream in (process.stdout, process.stderr):
            if stream:
                stream.close()


def start_server(directory=None, port=0, wrapper=()):
    """A real development server on a loopback port, any free one for 0, in `directory`. It accepts
    connections when this returns."""
    server = subprocess.Popen(
        [*wrapper, sys.executable, "-u", "-m", "http.server", "--bind", "127.0.0.1", str(port)],
        cwd=directory, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    server.port = int(re.match(r"Serving HTTP on \S+ port (\d+)", server.stdout.readline())[1])
    return server


MANY_PORT_SERVER = """
import http.server, sys, threading
for _ in range(int(sys.argv[1])):
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), http.server.SimpleHTTPRequestHandler)
    threading.Thread(target=server.serve_forever).start()
print("listening", flush=True)
"""


def start_server_on_ports(number):
    """One process that answers HTTP on so many ports."""
    server = subprocess.Popen([sys.executable, "-c", MANY_PORT_SERVER, str(number)],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    assert server.stdout.readline() == "listening\n"
    return server


def see_numbers(test, ink, keep_picture):
    """Sees that the icon has the numbers 1 and 12 and is alone again. `ink` tells where its colour
    stands, and `keep_picture` keeps a picture under a name."""
    alone = ink()
    seen = [[], alone]
    servers = []
    for more, number in ((1, 1), (11, 12)):
        servers.append(start_server_on_ports(more))
        test.addCleanup(end, servers[-1])
        wait_until(lambda: ink() not in seen, 12, f"the number {number}")
        seen.append(wait_until_still(ink, 12, "a picture that stays"))
        keep_picture(f"number-{number}")
    for server in servers:
        end(server)
    wait_until(lambda: ink() == alone, 12, "the icon alone again")


CLOSING_SERVER = """
import socket
listener = socket.create_server(("127.0.0.1", 0))
print("listening", flush=True)
while True:
    listener.accept()[0].close()
"""


def start_closing_server(directory):
    """A server that hangs up on whoever speaks HTTP, as databases do."""
    server = subprocess.Popen([sys.executable, "-c", CLOSING_SERVER], cwd=directory,
                              stdout=subprocess.PIPE, text=True)
    assert server.stdout.readline() == "listening\n"
    return server


SILENT_SERVER = """
import socket, sys, time
listeners = [socket.create_server(("127.0.0.1", 0)) for _ in range(int(sys.argv[1]))]
print("listening", flush=True)
time.sleep(1000)
"""


def start_silent_listeners(number):
    """Listeners whose connections are accepted by the kernel and never answered."""
    server = subprocess.Popen([sys.executable, "-c", SILENT_SERVER, str(number)],
                              stdout=subprocess.PIPE, text=True)
    assert server.stdout.readline() == "listening\n"
    return server


def call(destination, path, method, *arguments):
    """Calls a method on the session bus; returns gdbus's text, or None where it fails."""
    result = subprocess.run(
        ["gdbus", "call", "--session", "--timeout", "2", "--dest", destination,
         "--object-path", path, "--method", method, "--", *arguments],
        capture_output=True, text=True, check=False)
    return result.stdout.strip() if result.returncode == 0 else None


def owner(name):
    """The unique name of who owns `name` on the session bus; None where nobody does."""
    text = call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                "org.freedesktop.DBus.GetNameOwner", name)
    return text and text.split("'")[1]


def registered_items():
    """The status items of living programs that the tray knows, each as (bus name, object path). A
    tray that is told of an item while it starts may keep it when its program has gone."""
    text = call("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                "org.freedesktop.DBus.Properties.Get", "org.kde.StatusNotifierWatcher",
                "RegisteredStatusNotifierItems")
    items = re.findall(r"'(:[\d.]+)(/[^']*)'", text or "")
    return [item for item in items if owner(item[0])]


class StatusItem:
    """Tidewick's status item, read from the bus as a tray does."""

    def __init__(self):
        items = wait_until(registered_items, 10, "a status item in the tray")
        assert len(items) == 1, items
        self.name, self.path = items[0]

    def property(self, name):
        return call(self.name, self.path, "org.freedesktop.DBus.Properties.Get",
                    "org.kde.StatusNotifierItem", name)

    def tool_tip(self):
        """The tooltip's title and text."""
        match = re.fullmatch(r"\(<\('', @a\(iiay\) \[\], '(.*)', '(.*)'\)>,\)",
                             self.property("ToolTip") or "")
        return match.groups() if match else None

    def count(self):
        """The number of listeners that the item tells; None while it cannot be read."""
        tip = self.tool_tip()
        if tip is None:
            return None
        running = re.match(r"(\d+) running", tip[1])
        return int(running[1]) if running else 0

    def count_after_a_scan(self):
        """The number once it has held still for longer than a refresh of nothing takes."""
        last, since = self.count(), time.monotonic()
        while time.monotonic() - since < 1.5:
            time.sleep(0.05)
            if self.count() != last:
                last, since = self.count(), time.monotonic()
        return last

    def menu_labels(self):
        """The menu's entries in order, as {title: id}."""
        layout = call(self.name, self.menu_path(), "com.canonical.dbusmenu.GetLayout",
                      "0", "-1", "[]")
        return {title: int(number)
                for number, title in re.findall(r"<\((\d+), {[^}]*'label': <'([^']*)'>", layout)}

    def choose(self, entry):
        """Chooses a menu entry as a tray does, without a pointer."""
        assert call(self.name, self.menu_path(), "com.canonical.dbusmenu.Event",
                    str(entry), "clicked", "<0>", "0") is not None

    def menu_path(self):
        return re.search(r"'(/.*)'", self.property("Menu"))[1]

    def icon_sizes(self):
        return [ast.literal_eval(size)
                for size in re.findall(r"\((\d+), \d+, \[", self.property("IconPixmap"))]


class Picture:
    """The desktop as it looks now."""

    def __init__(self):
        picture = ImageGrab.grab(xdisplay="").convert("RGB")
        self.width = picture.width
        self.pixels = picture.tobytes()

    def color(self, x, y):
        """Red, green and blue at a place."""
        at = 3 * (y * self.width + x)
        return tuple(self.pixels[at:at + 3])

    def places_of(self, color):
        """Where this colour stands, as (x, y)."""
        at = self.pixels.find(color)
        places = []
        while at >= 0:
            if at % 3 == 0:
                places.append((at // 3 % self.width, at // 3 // self.width))
            at = self.pixels.find(color, at + 1)
        return places

    def ink(self):
        """Where the program's own colour stands, as (x, y)."""
        return self.places_of(INK)


def place_of_icon():
    """Where the status item can be clicked."""
    places = wait_until(lambda: Picture().ink(), 10, "the icon in the picture")
    return places[len(places) // 2]


def move_pointer(x, y):
    subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)


def click(x, y):
    subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True)


def click_sequence(x, y, clicks, milliseconds):
    """Clicks so many times, each so long after the one before."""
    subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "--repeat", str(clicks),
                    "--delay", str(milliseconds), "1"], check=True)


def outlast_click_sequence():
    """Waits until a press doesn't belong to the one before: longer than the double-click interval."""
    time.sleep(DOUBLE_CLICK_INTERVAL + 0.1)


def press_key(key):
    subprocess.run(["xdotool", "key", key], check=True)


def windows_called(name):
    """The X windows on the screen whose title begins with `name`."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{name}"],
                           capture_output=True, text=True, check=False)
    return found.stdout.split()


def visible_panels():
    """The X windows called Tidewick that are on the screen."""
    return windows_called("Tidewick$")


def open_panel():
    """Clicks the icon; returns the panel's X window and its place and size in pixels."""
    click(*place_of_icon())
    window = wait_until(visible_panels, 3, "the panel")[0]
    geometry = subprocess.run(["xdotool", "getwindowgeometry", "--shell", window],
                              capture_output=True, text=True, check=True).stdout
    values = dict(line.split("=") for line in geometry.split())
    return window, tuple(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))


def wait_for_no_panel():
    wait_until(lambda: not visible_panels(), 3, "the end of the panel")


def screenshot(name):
    """Keeps a picture of the desktop among the test's results."""
    subprocess.run([os.path.join(SCRIPTS, "screenshot"),
                    os.path.join(SCREENSHOTS, name + ".png")], check=True)


def terminate(process):
    """Sends SIGTERM; returns the exit status and how many seconds the end took."""
    start = time.monotonic()
    process.send_signal(signal.SIGTERM)
    status = process.wait(timeout=10)
    return status, time.monotonic() - start
