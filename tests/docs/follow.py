"""follow.py [--all]: follows the links of the project's pages, and runs the commands of README.md
and CONTRIBUTING.md as they are written. Those that take long, or change this machine, are run by
what the tables below name; --all runs here what can be run here. Prints each failure; exits 1
where there is one. Called by scripts/check-docs."""

import glob
import os
import re
import signal
import subprocess
import sys
import tempfile
import threading
import time

PAGES = subprocess.run(["git", "ls-files", "*.md"], capture_output=True, text=True,
                       check=True).stdout.split()
WITH_COMMANDS = ["README.md", "CONTRIBUTING.md"]
COMMAND = re.compile(r"(?:[A-Z]+=\S+ )?(?:scripts/|make |\.ci/)\S.*")

# What goes on until Ctrl-C, and a line that it prints when all of it is there.
GO_ON = {
    "scripts/run": "Look at ",
    "scripts/run --demo": "Look at ",
    "scripts/demo": "blog",
    "make run": "Look at ",
    "make demo": "Look at ",
}
# What changes the files that it works on: run in a clone, which it must leave as it is.
IN_A_CLONE = ["make fmt"]
# What .ci/run runs, by the command of its stage.
IN_CI = {
    "scripts/test": "scripts/test",
    "make test": "scripts/test",
    "PRESET=asan scripts/test": "PRESET=asan scripts/test",
    "PRESET=tsan scripts/test": "PRESET=tsan scripts/test",
    "make lint": "scripts/lint",
    "make fuzz": "scripts/fuzz",
    "make package": "scripts/check-package",
    "scripts/check-package": "scripts/check-package",
    "scripts/check-docs": "scripts/check-docs",
    "scripts/check-run": "scripts/check-run",
}
# What a test runs in its own way, by its file.
IN_A_TEST = {
    "sudo apt install ./build/release/packages/tidewick_*.deb": "tests/package/installed_test.py",
    "sudo apt purge tidewick": "tests/package/installed_test.py",
    "make soak": "tests/soak/CMakeLists.txt",
    "make load": "tests/load/CMakeLists.txt",
}
# Minutes of work: with --all.
LONG = ["make bench", "make screenshots", "scripts/try-servers", "scripts/newer-qt",
        "scripts/check-package --twice"]
SELF = [".ci/run", "scripts/check-docs --all"]
PLACEHOLDERS = ["scripts/test -R Name", "scripts/virtual-desktop COMMAND"]

failures = []


def check(is_good, what):
    if not is_good:
        failures.append(what)
        print("FAILED:", what, file=sys.stderr)


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def without_code(text):
    return re.sub(r"```.*?```|`[^`\n]*`", "", text, flags=re.DOTALL)


def anchors(path):
    """The anchors of a page's headings, as Markdown pages are shown."""
    return [re.sub(r"[^\w\- ]", "", heading.lower()).strip().replace(" ", "-")
            for heading in re.findall(r"^#+ (.*)$", read(path), flags=re.MULTILINE)]


def follow_links(page):
    text = without_code(read(page))
    for target in re.findall(r"\]\(([^)\s]+)\)|src=\"([^\"]+)\"", text):
        target = "".join(target)
        if re.match(r"[a-z]+:", target):
            check(target.startswith("https://"), f"{page}: {target} is no https link")
            continue
        path, _, anchor = target.partition("#")
        path = os.path.join(os.path.dirname(page), path) if path else page
        check(os.path.exists(path), f"{page}: no {target}")
        check(not anchor or anchor in anchors(path), f"{page}: no heading {target}")


def commands(page):
    """The commands of a page, in order: the lines of its shell blocks, and those in its text."""
    found = []
    for block, inline in re.findall(r"```sh\n(.*?)```|`([^`\n]+)`", read(page), flags=re.DOTALL):
        if block:
            found += block.splitlines()
        elif COMMAND.fullmatch(inline) and not os.path.isdir(inline):
            found.append(inline)
    return list(dict.fromkeys(found))


def run(command, **options):
    """Runs it as a shell does; returns whether it succeeded, and shows what it printed if not."""
    result = subprocess.run(["bash", "-c", command], stdin=subprocess.DEVNULL, text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                            **options)
    if result.returncode != 0:
        print(result.stdout[-4000:], file=sys.stderr)
    return result.returncode == 0


def goes_on(command, line):
    """Starts it, waits until it printed `line` and then stays, and ends it with Ctrl-C."""
    environment = {name: value for name, value in os.environ.items()
                   if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
    process = subprocess.Popen(["bash", "-c", command], stdin=subprocess.DEVNULL, text=True,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               start_new_session=True, env=environment)
    watchdog = threading.Timer(300, os.killpg, [process.pid, signal.SIGKILL])
    watchdog.start()
    seen = any(line in printed for printed in process.stdout)
    time.sleep(3)
    is_running = process.poll() is None
    os.killpg(process.pid, signal.SIGINT)
    process.stdout.read()
    status = process.wait()
    watchdog.cancel()
    # Those that mark the end by Ctrl-C say so: make in its own way, shells with 130.
    return seen and is_running and (status in (0, 130) or command.startswith("make "))


def leaves_a_clone_as_it_is(command):
    with tempfile.TemporaryDirectory() as folder:
        return (run(f"git clone --quiet . {folder}/clone") and
                run(f"{command} && git diff --exit-code", cwd=f"{folder}/clone"))


def try_command(command, is_all):
    """How the command was tried; None where nothing here knows it."""
    if command in GO_ON:
        check(goes_on(command, GO_ON[command]), command)
        return "run until Ctrl-C"
    if command in IN_A_CLONE:
        check(leaves_a_clone_as_it_is(command), command)
        return "run in a clone"
    if command in IN_CI:
        stages = re.findall(r"^stage \w+ (?:env )?(.*)$", read(".ci/run"), flags=re.MULTILINE)
        check(any(f"{stage} ".startswith(IN_CI[command] + " ") for stage in stages),
              f".ci/run does not run {command}")
        return "run by .ci/run"
    if command in IN_A_TEST:
        check(os.path.exists(IN_A_TEST[command]), f"{command}: no {IN_A_TEST[command]}")
        return "run by " + IN_A_TEST[command]
    if command in LONG and not is_all:
        program = command.split()[0]
        check(program == "make" or os.access(program, os.X_OK), f"no {program}")
        return "left to --all"
    if command in SELF + PLACEHOLDERS:
        return "known"
    if command in LONG or re.match(
            r"(scripts/setup|scripts/test (--unit|-R)|make unit|cmake)\b", command):
        with tempfile.TemporaryDirectory() as home:
            # The caches are in the real home.
            environment = {**os.environ, "HOME": home} if "~" in command else None
            check(run(command, env=environment), command)
            for service in glob.glob(f"{home}/.local/share/dbus-1/services/*"):
                program = re.search("^Exec=(.*)$", read(service), flags=re.MULTILINE)[1]
                check(os.access(program, os.X_OK), f"{command}: the menu starts {program}")
        return "run"
    return None


def check_first_change():
    """The change that CONTRIBUTING.md begins with still applies."""
    change = re.search(r"```diff\n(.*?)```", read("CONTRIBUTING.md"), flags=re.DOTALL)[1]
    result = subprocess.run(["git", "apply", "--check", "-"], input=change, text=True, check=False)
    check(result.returncode == 0, "CONTRIBUTING.md: the change does not apply")


def main():
    for page in PAGES:
        follow_links(page)
    print("ok: links" if not failures else "links: see above")
    check_first_change()
    for page in WITH_COMMANDS:
        for command in commands(page):
            if command.startswith("make "):
                check(run(f"{command} --dry-run"), f"{page}: make does not know {command}")
            how = try_command(command, "--all" in sys.argv)
            check(how is not None, f"{page}: nothing runs {command}")
            print(f"{command}: {how}")
    return 1 if failures else 0


sys.exit(main())
