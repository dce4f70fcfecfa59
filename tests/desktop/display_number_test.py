"""A virtual desktop takes another number if a file of an X server is in its way."""

import os
import pathlib
import subprocess
import unittest

DESKTOP = pathlib.Path(__file__).parents[2] / "scripts/virtual-desktop"
SOCKETS = "/tmp/.X11-unix"

# The desktop's number comes from its process id, which "exec" keeps. A directory is in the way of
# any user's server, as another user's file is.
TAKE = """
number=$((100 + $$ % 50000))
mkdir "${1//NUMBER/$number}"
echo $number
exec "${@:2}"
"""


class DisplayNumberTest(unittest.TestCase):
    def check(self, path):
        desktop = subprocess.run(["bash", "-c", TAKE, "bash", path, DESKTOP, "printenv", "DISPLAY"],
                                 env={**os.environ, "TIDEWICK_PANEL": "none"},
                                 capture_output=True, text=True, check=False)
        number, *display = desktop.stdout.split()
        os.rmdir(path.replace("NUMBER", number))
        self.assertTrue(display, desktop.stderr)
        self.assertGreater(int(display[0].removeprefix(":")), int(number))

    def test_socket(self):
        try:
            os.mkdir(SOCKETS)
            os.chmod(SOCKETS, 0o1777)
        except FileExistsError:
            pass
        self.check(SOCKETS + "/XNUMBER")

    def test_lock(self):
        self.check("/tmp/.XNUMBER-lock")


if __name__ == "__main__":
    unittest.main()
