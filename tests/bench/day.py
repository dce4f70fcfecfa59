"""day.py: what the program costs somebody's working day: its share of a processor, all that it
starts included, and its memory, beside the demo's servers on a virtual desktop. Called by
scripts/bench, in a network of its own."""

import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "desktop"))
import desktop  # noqa: E402
from showcase import demo  # noqa: E402

TICKS = os.sysconf("SC_CLK_TCK")


def processor_seconds(pid):
    """Its own and those of all children that ended, proc(5)."""
    with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
        return sum(map(int, file.read().rpartition(")")[2].split()[11:15])) / TICKS


def megabytes(pid, field):
    with open(f"/proc/{pid}/status", encoding="utf-8", errors="replace") as file:
        return next(int(line.split()[1]) for line in file if line.startswith(field)) / 1024


def report(state, pid, seconds):
    before = processor_seconds(pid)
    time.sleep(seconds)
    share = (processor_seconds(pid) - before) / seconds
    print(f"  {state:<20} {share:6.2%} of a core, {megabytes(pid, 'VmRSS'):3.0f} MB resident, "
          f"{megabytes(pid, 'RssAnon'):3.0f} of them its own")


with demo() as count:
    program = desktop.start_program()
    item = desktop.StatusItem()
    desktop.wait_until(lambda: item.count() == count, 60, f"{count} listeners")
    time.sleep(5)
    print(f"the whole program beside {count} servers:")
    report("never opened", program.pid, 60)
    desktop.open_panel()
    time.sleep(5)
    report("panel open", program.pid, 30)
    desktop.press_key("Escape")
    desktop.wait_for_no_panel()
    report("panel closed again", program.pid, 60)
    desktop.end(program)
