#!/usr/bin/env python3
"""A desktop without a panel, a home without an account, and no desktop at all."""
import pathlib
import subprocess
import tempfile
import unittest

from case import DesktopTest, wait_until


class NoPanel(DesktopTest):
    desktop_options = {"host": None}

    def test_it_says_so_once_and_a_second_start_opens_the_popover(self):
        self.program.start()
        line = "[main] no tray — start the program again to open its window\n"
        wait_until(lambda: line in self.program.log, "a word about the missing panel", 20)
        status, log = self.program.start_again()
        self.assertEqual(status, 0, log)
        self.wait_for_text("Run Claude Code to sign in, then scan for accounts.")
        self.assertIsNotNone(self.popover.find("How to sign in to Claude Code", ("link", "push button")))
        self.assertInsideTheScreen(self.popover_box())
        self.assertEqual(self.program.log.count(line), 1, self.program.log)

    def test_without_a_display_it_ends_and_writes_nothing(self):
        with tempfile.TemporaryDirectory() as home:
            environment = self.program.environment(
                HOME=home, XDG_DATA_HOME=None, XDG_CONFIG_HOME=None, XDG_CACHE_HOME=None, DISPLAY=None,
                WAYLAND_DISPLAY=None, DBUS_SESSION_BUS_ADDRESS="disabled:")
            ended = subprocess.run([self.program.binary], env=environment, capture_output=True, text=True, check=False,
                                   timeout=20)
            self.assertEqual((ended.returncode, ended.stdout), (1, ""))
            self.assertEqual(ended.stderr, "[main] no display — cannot start\n")
            self.assertEqual(list(pathlib.Path(home).iterdir()), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
