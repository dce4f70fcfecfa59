"""day.py: what the program costs somebody's working day: how soon its icon is in the tray, its share
of a processor, all that it starts included, and its memory, beside seven web servers on a virtual
desktop. Called by scripts/bench, in a network of its own."""

import os
import statistics
import subprocess
import sys
import time

from gi.repository import Gio, GLib

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "desktop"))
import desktop  # noqa: E402

TICKS = os.sysconf("SC_CLK_TCK")
SERVERS = 7
STARTS = 11
SETTLING = 3  # seconds after which a start, or an opening, has nothing left to do


def processor_seconds(pid):
    """Its own and those of all children that ended, proc(5)."""
    with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
        return sum(map(int, file.read().rpartition(")")[2].split()[11:15])) / TICKS


def own_milliseconds(pid):
    """The processor time of its threads, more exactly than proc(5) gives it."""
    total = 0
    for task in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{task}/schedstat", encoding="ascii") as file:
            total += int(file.read().split()[0])
    return total / 1e6


def megabytes(pid, field):
    with open(f"/proc/{pid}/status", encoding="utf-8", errors="replace") as file:
        return next(int(line.split()[1]) for line in file if line.startswith(field)) / 1024


class Starts:
    """Starts programs and hears when the tray has their icon."""

    def __init__(self):
        self.loop = GLib.MainLoop()
        self.program = None
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.bus.signal_subscribe(None, "org.kde.StatusNotifierWatcher",
                                  "StatusNotifierItemRegistered", None, None, 0, self.heard)

    def heard(self, *_arguments):
        if self.program:
            self.took = (1000 * (time.monotonic() - self.began),
                         own_milliseconds(self.program.pid))
            self.loop.quit()

    def once(self):
        """A new program, once its icon is there."""
        self.began = time.monotonic()
        self.program = desktop.start_program()
        self.loop.run()
        program, self.program = self.program, None
        return program

    def measure(self):
        """Beside it, the start of another program with as many libraries, which opens nothing."""
        ours, others = [], []
        for _ in range(STARTS):
            desktop.end(self.once())
            ours.append(self.took)
            began = time.monotonic()
            subprocess.run(["xfce4-panel", "--version"], stdout=subprocess.DEVNULL, check=True)
            others.append(1000 * (time.monotonic() - began))
        wall, used = map(statistics.median, zip(*ours))
        print(f"from the start of the program to its icon: {wall:.0f} ms, {used:.0f} ms of "
              f"processor time; \"xfce4-panel --version\": {statistics.median(others):.0f} ms "
              f"(medians of {STARTS} in turns)")


def report(state, pid, seconds):
    before = processor_seconds(pid)
    time.sleep(seconds)
    share = (processor_seconds(pid) - before) / seconds
    print(f"  {state:<20} {share:6.2%} of a core, {megabytes(pid, 'VmRSS'):3.0f} MB resident, "
          f"{megabytes(pid, 'RssAnon'):3.0f} of them its own", flush=True)
    return share


starts = Starts()
starts.measure()
servers = [desktop.start_server() for _ in range(SERVERS)]
program = starts.once()
item = desktop.StatusItem()
desktop.wait_until(lambda: item.tool_tip()[1] == f"{SERVERS} running, {SERVERS} live", 60,
                   f"{SERVERS} live servers")
time.sleep(SETTLING)
print(f"the whole program beside {SERVERS} live servers:")
closed = report("never opened", program.pid, 60)
desktop.open_panel()
time.sleep(SETTLING)
opened = report("panel open", program.pid, 60)
desktop.press_key("Escape")
desktop.wait_for_no_panel()
report("panel closed again", program.pid, 60)
print(f"  open / never opened: {opened / closed:.1f}")
for process in [program, *servers]:
    desktop.end(process)
