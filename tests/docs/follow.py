"""follow.py [--all]: checks the links of the project's pages and the names of tests in them, and
runs the commands of README.md and CONTRIBUTING.md as they are written. Commands that take long or
change this machine run elsewhere, as the tables below say; --all also runs the long ones here.
Prints each failure and exits 1 if there is one. Called by scripts/check-docs."""

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

# Commands that run until Ctrl-C, and a text that they print when everything is running.
GO_ON = {
    "scripts/run": "Look at ",
    "scripts/run --demo": "Look at ",
    "scripts/demo": "blog",
    "make run": "Look at ",
    "make demo": "Look at ",
}
# Commands that change the source files. They run in a clone and must leave it unchanged.
IN_A_CLONE = ["make fmt"]
# Commands that .ci/run runs, with the command of its stage.
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
# Commands that a test runs in its own way, with the file of the test.
IN_A_TEST = {
    "sudo apt install ./build/release/packages/tidewick_*.deb": "tests/package/installed_test.py",
    "sudo apt purge tidewick": "tests/package/installed_test.py",
    "make soak": "tests/soak/CMakeLists.txt",
    "make load": "tests/load/CMakeLists.txt",
    "scripts/mutants": "tests/mutants/mutants_test.py",
    "scripts/mutants FILE...": "tests/mutants/mutants_test.py",
}
# Commands that take many minutes; they run only with --all.
LONG = ["make bench", "scripts/coverage", "make screenshots", "scripts/try-servers",
        "scripts/newer-qt", "scripts/desktops", "scripts/check-fresh", "scripts/check-package --twice",
        "scripts/check-package --all"]
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


def check_test_names(page):
    """The tables name tests as `Suite.name`, then `.name` of the same suite, or `test_name`."""
    tests = subprocess.run(["git", "grep", "--no-line-number", "-h", "", "--", "tests"], check=True,
                           capture_output=True, text=True, errors="replace").stdout
    rows = "".join(re.findall(r"^\|.*\n", read(page), flags=re.MULTILINE))
    for name in re.findall(r"`((?:[A-Z]\w+)?\.[a-z]\w+|[A-Z]\w+\.[\w.*]+|test_\w+)`", rows):
        for part in name.rstrip(".*").split("."):
            check(part in tests, f"{page}: no test {name}")


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
    """Runs the command in a shell, and returns whether it succeeded. Prints its output if not."""
    result = subprocess.run(["bash", "-c", command], stdin=subprocess.DEVNULL, text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                            **options)
    if result.returncode != 0:
        print(result.stdout[-4000:], file=sys.stderr)
    return result.returncode == 0


def goes_on(command, line):
    """Starts the command, waits for `line` in its output, checks that it keeps running, and ends it
    with Ctrl-C."""
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
    # After Ctrl-C a shell exits with 130, and make with a status of its own.
    return seen and is_running and (status in (0, 130) or command.startswith("make "))


def leaves_a_clone_as_it_is(command):
    with tempfile.TemporaryDirectory() as directory:
        return (run(f"git clone --quiet . {directory}/clone") and
                run(f"{command} && git diff --exit-code", cwd=f"{directory}/clone"))


def try_command(command, is_all):
    """Tries the command and returns how; None if the command is in no table."""
    if command in GO_ON:
        check(goes_on(command, GO_ON[command]), command)
        return "run until Ctrl-C"
    if command in IN_A_CLONE:
        check(leaves_a_clone_as_it_is(command), command)
        return "run in a clone"
    if command in IN_CI:
        stages = re.findall(r"^stage \w+ (?:all_tests \w+ )?(?:env )?(.*)$", read(".ci/run"),
                            flags=re.MULTILINE)
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
    """Checks that the change at the beginning of CONTRIBUTING.md applies."""
    change = re.search(r"```diff\n(.*?)```", read("CONTRIBUTING.md"), flags=re.DOTALL)[1]
    result = subprocess.run(["git", "apply", "--check", "-"], input=change, text=True, check=False)
    check(result.returncode == 0, "CONTRIBUTING.md: the change does not apply")


def main():
    for page in PAGES:
        follow_links(page)
    for page in ["docs/faults.md", "docs/security.md"]:
        check_test_names(page)
    print("ok: links and names" if not failures else "links and names: see above")
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
