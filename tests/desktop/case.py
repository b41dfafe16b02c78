"""What the tests on a desktop share: one desktop with one world for a whole class, and the program in it. Each file has
one class, since a process has one desktop, and is called with the folder of the desktop's modules and that of the
build."""
import pathlib
import sys
import unittest

sys.path.insert(0, sys.argv.pop(1))
BUILD = pathlib.Path(sys.argv.pop(1))

from desktop import Desktop  # noqa: E402
from processes import Missing, end_by_signals, stays, wait_until  # noqa: E402
from program import Program  # noqa: E402
from world import HOUR, Account, World, reading, session, weekly  # noqa: E402

NAME = "vellumor"  # of the program among those that can be read out
SETTLED = 0.4  # seconds in which something that should not happen would have


def fresh(folder, name, percent):
    """An account of which so much is known that nobody has to ask for it."""
    limits = (session(percent), weekly(41))
    return Account(folder, name, reading(*limits), known=limits, age=5.0)


class DesktopTest(unittest.TestCase):
    """`desktop_options`, `accounts` and `preferences` are for its classes to set."""

    desktop_options = {}
    accounts = ()
    preferences = {"userInterval": 1800}

    @classmethod
    def setUpClass(cls):
        end_by_signals()
        cls.desktop = cls.enterClassContext(Desktop(**cls.desktop_options))
        cls.world = World(cls.desktop.home, cls.accounts, cls.preferences)
        cls.program = Program(cls.desktop, cls.world, BUILD)
        # The library looks at the bus of its process once for all, so it comes when there is one.
        global accessible
        import accessible

    # What is to be seen.

    @property
    def popover(self):
        return accessible.window(NAME, "Vellumor")

    def window(self, title):
        return accessible.window(NAME, title)

    def popover_box(self):
        """In pixels; nothing while it is closed."""
        return next((box for name, box in self.desktop.windows(NAME) if name == "Vellumor"), None)

    def wait_for_popover(self):
        return wait_until(lambda: self.popover, "the popover")

    def wait_for_no_popover(self):
        wait_until(lambda: not self.popover_box(), "the end of the popover", 5)

    def wait_for_text(self, text):
        def is_there():
            popover = self.popover
            return popover and text in "\n".join(accessible.quietly(popover.texts) or [])
        wait_until(is_there, f"“{text}” in the popover")

    def assertStaysOpen(self):
        self.assertTrue(stays(self.popover_box, SETTLED), "the popover has closed")

    def assertInsideTheScreen(self, box):
        left, top, width, height = box
        self.assertGreaterEqual(min(left, top), 0, box)
        self.assertLessEqual(left + width, self.desktop.screen[0], box)
        self.assertLessEqual(top + height, self.desktop.screen[1], box)

    # What is done.

    def key(self, *names):
        self.desktop.run("xdotool", "key", *names)

    def open_popover(self):
        """By a click, as a user does; it has the focus then."""
        self.desktop.click_item()
        return self.wait_for_popover()

    def close_popover(self):
        if self.popover_box():
            self.key("Escape")
            self.wait_for_no_popover()
