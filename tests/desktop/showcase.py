"""What the pictures of the panel show: real servers."""

import contextlib
import os
import subprocess
import tempfile

import desktop


@contextlib.contextmanager
def demo():
    """The demo's servers, and one that does not speak HTTP; how many they are."""
    servers = subprocess.Popen(
        [os.path.join(desktop.SCRIPTS, "demo"), "sh", "-c", "echo; exec sleep infinity"],
        stdout=subprocess.PIPE, text=True)
    try:
        count = len(list(iter(servers.stdout.readline, "\n")))
        with tempfile.TemporaryDirectory() as parent:
            directory = os.path.join(parent, "jobs")
            os.mkdir(directory)
            closing = desktop.start_closing_server(directory)
            yield count + 1
            desktop.end(closing)
    finally:
        servers.terminate()
        servers.communicate()
