"""The installed package from the first start to the purge, in the tree TREE: an older version than
PACKAGE, which its package source offers, is installed there. The desktop and the servers are outside."""

import os
import re
import shutil
import subprocess
import unittest

import accessible
import desktop
import panel_case
import settings_test

TREE = os.environ["TREE"]
README = os.path.join(os.path.dirname(__file__), "../../README.md")
# What apt and dpkg keep of themselves, and what is no part of the tree.
OTHERS = ("/proc", "/dev", "/run", "/tmp", "/var/cache/apt", "/var/cache/debconf", "/var/lib/apt",
          "/var/log")


def in_tree(*command):
    subprocess.run(["chroot", TREE, *command], check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.STDOUT,
                   env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin",
                        "DEBIAN_FRONTEND": "noninteractive"})


def apt(*arguments):
    in_tree("apt-get", *arguments)


def as_the_readme_says(verb):
    """Runs the README's line for that verb of apt, in a directory where the package was built."""
    packages = TREE + "/tmp/checkout/build/release/packages"
    os.makedirs(packages, exist_ok=True)
    shutil.copy(os.environ["PACKAGE"], packages)
    with open(README, encoding="utf-8") as readme:
        line = re.search(rf"^sudo (apt {verb} .*)$", readme.read(), flags=re.MULTILINE)[1]
    in_tree("sh", "-c", "cd /tmp/checkout && " + line)


def share(directory):
    """Shows a directory of this machine in the tree, at the same place."""
    os.makedirs(TREE + directory, exist_ok=True)
    subprocess.run(["mount", "--bind", directory, TREE + directory], check=True)


def files():
    """The paths in the tree."""
    found = set()
    for directory, directories, names in os.walk(TREE):
        place = directory[len(TREE):]
        directories[:] = [name for name in directories if f"{place}/{name}" not in OTHERS]
        found.update(f"{place}/{name}" for name in directories + names)
    return found


class InstalledTest(panel_case.PanelCase):
    @classmethod
    def setUpClass(cls):
        share(os.environ["TIDEWICK_DESKTOP"])
        share("/tmp/.X11-unix")

    def runs_installed(self):
        """Whether the running program is the one that is installed now."""
        return not os.readlink(f"/proc/{self.program.pid}/exe").endswith(" (deleted)")

    def choose(self, title):
        self.item.choose(self.item.menu_labels()[title])

    def quit(self):
        self.choose("Quit Tidewick")
        self.assertEqual(self.program.wait(timeout=40), 0)

    def switch_launch_at_login(self):
        self.choose("Settings...")
        window = desktop.wait_until(lambda: desktop.windows_called("Tidewick Settings$"), 5,
                                    "the settings")[0]
        subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", "space"], check=True)
        desktop.wait_until(lambda: os.path.exists(self.login_item), 10, "the login item")
        subprocess.run(["xdotool", "key", "Escape"], check=True)

    def wait_for_failed_check(self):
        """Until the update check tells that it failed: this tree has no package service."""
        accessible.wait_until(
            lambda: any(window.find("label", "Updates could not be checked")
                        for window in accessible.windows()), 10, "what the check found")

    def test_from_the_first_start_to_the_purge(self):
        config = os.environ["XDG_CONFIG_HOME"]
        self.login_item = os.path.join(config, settings_test.ENTRY)

        servers = [self.serve("shop"), self.serve("blog")]
        panel = self.launch(2)
        for server, project in zip(servers, ("shop", "blog")):
            card = self.card(panel, server, 10)
            self.assertIn(project, card.texts())
            self.assert_whole(panel, card)
        desktop.screenshot("package-cards")
        self.switch_launch_at_login()

        apt("install", "tidewick")
        self.assertFalse(self.runs_installed())
        servers.append(self.serve("wiki"))
        desktop.wait_until(lambda: self.item.count() == 3, 8, "a card more after the upgrade")
        self.choose("Check for Updates...")
        self.wait_for_failed_check()
        self.quit()

        self.launch(3)
        self.assertTrue(self.runs_installed())
        with_package = files()

        apt("remove", "tidewick")
        self.assertFalse(self.runs_installed())
        desktop.end(servers.pop())
        desktop.wait_until(lambda: self.item.count() == 2, 8, "a card less after the removal")
        self.quit()
        after_removal = files()

        as_the_readme_says("install")
        self.assertEqual(files(), with_package)
        as_the_readme_says("purge")
        self.assertEqual(files(), after_removal)
        apt("purge", "--autoremove", "lsof")
        with open(TREE + "/tmp/fresh", encoding="utf-8") as fresh:
            before = {line.rstrip("\n")[len(TREE):] for line in fresh}
        left = {path for path in files() - before if not path.startswith(OTHERS)}
        self.assertEqual(left, set())
        self.assertEqual(os.listdir(os.path.dirname(self.login_item)),
                         [os.path.basename(self.login_item)])
        self.assertIsNone(settings_test.autostarted_command(config), "it starts nothing")


if __name__ == "__main__":
    unittest.main()
