"""A card's two ways out: a real browser on a real server's page, a real file manager in the server's
directory."""

import os
import shutil
import subprocess
import tempfile
import time
import unittest

import desktop

BROWSER = "netsurf-gtk"
BLUE = bytes((10, 132, 255))  # of the button Open
SERVER = """
import http.server, sys
class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        page = b"<title>Seen</title><p>A real page."
        self.send_response(200)
        self.send_header("Content-Type", "text/html")
        self.send_header("Content-Length", str(len(page)))
        self.end_headers()
        self.wfile.write(page)
    def log_message(self, *arguments):
        print(self.command, self.path, self.headers.get("User-Agent"), flush=True)
http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler).serve_forever()
"""


def xdotool(*arguments):
    return subprocess.run(["xdotool", *map(str, arguments)], capture_output=True, text=True,
                          check=False).stdout.split()


def windows(name):
    return xdotool("search", "--onlyvisible", "--name", name)


def blue_text():
    """Where the blue of a text stands, however thin."""
    picture = desktop.Picture()
    found = []
    for at in range(0, len(picture.pixels), 3):
        red, green, blue = picture.pixels[at:at + 3]
        if blue > red + 90 > green:
            found.append((at // 3 % picture.width, at // 3 // picture.width))
    return found


class OpenAndRevealTest(unittest.TestCase):
    def setUp(self):
        with open(os.path.join(os.environ["XDG_CONFIG_HOME"], "mimeapps.list"), "w",
                  encoding="utf-8") as file:
            file.write(f"[Default Applications]\nx-scheme-handler/http={BROWSER}.desktop\n"
                       "inode/directory=thunar.desktop\n")
        self.directory = tempfile.mkdtemp(prefix="tidewick-site-")
        self.addCleanup(shutil.rmtree, self.directory, ignore_errors=True)
        self.log = open(os.path.join(self.directory, "requests"), "w+", encoding="utf-8")
        self.addCleanup(self.log.close)
        self.server = subprocess.Popen(["/usr/bin/python3", "-c", SERVER], cwd=self.directory,
                                       stdout=self.log, stderr=subprocess.DEVNULL)
        self.addCleanup(desktop.end, self.server)
        xdotool("mousemove", 200, 400)  # a button below the pointer has another blue
        self.program = desktop.start_program()
        self.addCleanup(desktop.end, self.program)
        item = desktop.StatusItem()
        desktop.wait_until(lambda: item.tool_tip() == ("Tidewick", "1 running, 1 live"), 10,
                           "the server")
        desktop.start_again()  # opens the panel
        desktop.wait_until(lambda: windows("^Tidewick$"), 5, "the panel")

    def test_open_shows_the_page_in_the_default_browser(self):
        button = desktop.wait_until(lambda: desktop.Picture().places_of(BLUE), 5, "the button Open")
        xdotool("mousemove", *button[len(button) // 2], "click", 1)
        desktop.wait_until(lambda: any(line.startswith("GET / ") and "NetSurf" in line
                                       for line in self.requests()), 20, "the browser's request")
        desktop.wait_until(lambda: windows("Seen - NetSurf"), 20, "the page")
        desktop.screenshot("open-in-browser")

    def test_reveal_shows_the_directory_in_the_file_manager(self):
        link = self.link_to_directory()
        desktop.screenshot("reveal")
        xdotool("mousemove", *link, "click", 1)
        desktop.wait_until(lambda: windows(os.path.basename(self.directory)), 20, "the directory")
        desktop.screenshot("reveal-in-file-manager")

    def test_directory_that_is_gone_opens_nothing(self):
        link = self.link_to_directory()
        shutil.rmtree(self.directory)
        before = xdotool("search", "--onlyvisible", "--class", "")
        xdotool("mousemove", *link, "click", 1)
        time.sleep(1)
        self.assertEqual(xdotool("search", "--onlyvisible", "--class", ""), before)
        self.assertIsNone(self.program.poll())

    def link_to_directory(self):
        """Opens the card; returns a place on the directory's name."""
        button = desktop.wait_until(lambda: desktop.Picture().places_of(BLUE), 5, "the button Open")
        below = max(y for _, y in button) + 20
        xdotool("mousemove", button[0][0] - 100, button[0][1], "click", 1)
        link = desktop.wait_until(self.still(
            lambda: [place for place in blue_text() if place[1] > below]), 5,
            "the directory's name")
        return link[len(link) // 2]

    def still(self, condition):
        """The condition's value once it is the same twice."""
        last = []

        def value():
            last.append(condition())
            return last[-1] if last[-2:] == [last[-1]] * 2 else None
        return value

    def requests(self):
        self.log.seek(0)
        return self.log.readlines()


if __name__ == "__main__":
    unittest.main()
