"""Scans that wait for the test, so that what shows while one is under way can be looked at."""

import os
import shutil

import desktop


class HeldLister:
    """A copy of the program whose scans wait for the test: each can be held before it looks for
    listeners. What it then finds is real."""

    SCRIPT = """#!/bin/sh
if [ "$1" = -i ]; then
    held="${0%/*}/held.$$"
    ! [ -e "${0%/*}/hold" ] || : >"$held"
    while [ -e "${0%/*}/hold" ] && [ -e "$held" ]; do sleep 0.02; done
fi
exec "LSOF" "$@"
"""

    def __init__(self):
        supplied = os.path.join(os.path.dirname(desktop.PROGRAM), "../libexec/tidewick")
        lsof = shutil.which("lsof", path=f"{supplied}:/usr/sbin:/usr/bin")
        self.directory = desktop.copy_with_lsof(self.SCRIPT.replace("LSOF", lsof))
        self.program = os.path.join(self.directory, "bin/tidewick")
        self._tools = os.path.join(self.directory, "libexec/tidewick")

    def hold(self):
        """Holds the scans that begin from now on."""
        with open(os.path.join(self._tools, "hold"), "w", encoding="utf-8"):
            pass

    def held(self):
        """The scans that wait, longest first."""
        waiting = [os.path.join(self._tools, name) for name in os.listdir(self._tools)
                   if name.startswith("held.")]
        return sorted(waiting, key=lambda path: os.stat(path).st_mtime_ns)

    def let_go(self):
        """Lets all go on, those to come too."""
        for path in [os.path.join(self._tools, "hold"), *self.held()]:
            os.remove(path)

    def remove(self):
        shutil.rmtree(self.directory)
