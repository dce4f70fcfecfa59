"""servers.py NUMBER COMMAND...: runs COMMAND beside NUMBER real Python web servers."""

import subprocess
import sys

servers = [
    subprocess.Popen([sys.executable, "-u", "-m", "http.server", "--bind", "127.0.0.1", "0"],
                     stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    for _ in range(int(sys.argv[1]))]
try:
    for server in servers:
        server.stdout.readline()
    status = subprocess.run(sys.argv[2:], check=False).returncode
finally:
    for server in servers:
        server.kill()
        server.wait()
sys.exit(status)
