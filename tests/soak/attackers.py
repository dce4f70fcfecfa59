"""attackers.py VICTIM DIRECTORY - attacks the list of the user with the id VICTIM until killed, as
another person; started by root. DIRECTORY holds odd_process and hung_process, where every user can
run them. Prints one line once everything is under way.

- a process whose memory is locked, so that whoever reads its command line waits
- 200 listeners that accept connections and answer nothing
- a listener on [::1] beside each listener that the victim has on 127.0.0.1
- a client for each of them that names the port in its arguments
- a listener made in the victim's cgroup and taken out of it, if there is a cgroup to make one in
"""

import atexit
import ctypes
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

ATTACKER = 54399
LOCKED_SECONDS = 40  # hung_process answers again after a minute
CGROUPS = ("/sys/fs/cgroup", "/sys/fs/cgroup/unified")


def die_with_parent():
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)


def start(program, script, *arguments, user=ATTACKER):
    """odd_process or hung_process as `program`; returns it once it has printed an empty line."""
    process = subprocess.Popen([program, *arguments], user=user, group=user, extra_groups=[],
                               env={"ODD": script}, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, preexec_fn=die_with_parent)
    for line in process.stdout:
        if line == b"\n":
            return process
    raise SystemExit(f"attackers: {program} {' '.join(arguments)} ended")


class LockedMemory:
    """A process whose memory is always locked: a new one before the last one is let go."""

    def __init__(self, directory):
        self.program = os.path.join(directory, "mongod")
        shutil.copy(os.path.join(directory, "hung_process"), self.program)
        self.processes = []
        self.renew()

    def renew(self):
        mount = tempfile.mkdtemp()
        os.chmod(mount, 0o755)
        # It changes to the user itself, after the mount.
        self.processes.append(start(self.program, "", "memory", str(ATTACKER), mount, "none",
                                    user=0))
        self.since = time.monotonic()
        if len(self.processes) > 1:
            end(self.processes.pop(0))

    def keep(self):
        if time.monotonic() - self.since > LOCKED_SECONDS:
            self.renew()


def ports_of(user):
    """The user's listeners on 127.0.0.1."""
    with open("/proc/net/tcp", encoding="ascii") as file:
        rows = [line.split() for line in file.readlines()[1:]]
    return {int(row[1].split(":")[1], 16) for row in rows
            if row[3] == "0A" and row[1].startswith("0100007F") and int(row[7]) == user}


class Shadows:
    """What stands beside each of the victim's servers, for as long as that runs."""

    def __init__(self, victim, node):
        self.victim = victim
        self.node = node
        self.processes = {}
        self.made = 0

    def follow(self):
        ports = ports_of(self.victim)
        for port in set(self.processes) - ports:
            for process in self.processes.pop(port):
                end(process)
        for port in ports - set(self.processes):
            self.processes[port] = [
                start(self.node, f"port {port}|listen ::1"),
                start(self.node, "", "server.js", "--port", str(port), f":{port}"),
            ]
            self.made += 1


def listen_in_cgroup(victim, node):
    """Makes a listener in a new cgroup where the victim's process is, and takes its maker out."""
    root = next((root for root in CGROUPS if os.path.exists(f"{root}/cgroup.procs")), None)
    if root is None:
        return []
    group = os.path.join(root, "tidewick-soak")
    os.makedirs(group, exist_ok=True)
    atexit.register(os.rmdir, group)
    idle = start(node, "shut", user=victim)
    write(f"{group}/cgroup.procs", idle.pid)
    maker = start("/bin/sh", "", "-c",
                  f"echo $$ > {group}/cgroup.procs; exec setpriv --reuid {ATTACKER} "
                  f"--clear-groups env 'ODD=listen 127.0.0.1' {node}", user=0)
    write(f"{root}/cgroup.procs", maker.pid)
    atexit.register(end, idle)  # before the cgroup goes
    return [idle, maker]


def end(process):
    process.kill()
    process.wait()


def write(path, value):
    with open(path, "w", encoding="ascii") as file:
        file.write(str(value))


def main():
    victim, directory = int(sys.argv[1]), sys.argv[2]
    node = os.path.join(directory, "node")
    shutil.copy(os.path.join(directory, "odd_process"), node)
    locked = LockedMemory(directory)
    silent = start(node, "servers 200")
    in_cgroup = listen_in_cgroup(victim, node)
    shadows = Shadows(victim, node)
    print("attackers: locked memory, 200 silent listeners, shadows",
          "and a cgroup" if in_cgroup else "(no cgroup can be made here)", flush=True)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(print(f"attackers: {shadows.made} shadows")))
    while silent.poll() is None:
        locked.keep()
        shadows.follow()
        time.sleep(0.02)


if __name__ == "__main__":
    main()
