#!/usr/bin/env python3
"""Exporting where the desktop has a portal with a panel of its own."""
import os
import pathlib
import unittest

from case import stays
from history_case import HistoryTest, known, wait_until
from histories import Week, by_day_alone

PORTAL = "org.freedesktop.portal.Desktop"
BACKEND = "org.freedesktop.impl.portal.desktop.gtk"
LIBRARIES = pathlib.Path("/usr/libexec")
PANEL = "xdg-desktop-portal-gtk"
NO_OTHER = 0.5  # seconds in which a second panel would have come


class Portal(HistoryTest):
    week = Week(["session", "weekly_all"], is_watched=by_day_alone)
    accounts = (known("ana", "Ana", week.answer(), samples=week.samples),)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop.processes.end("portal")  # the stand-in, which knows the colours alone
        wait_until(lambda: PORTAL not in cls.desktop.names(), "the end of the other portal")
        for name, program in ((BACKEND, "xdg-desktop-portal-gtk"), (PORTAL, "xdg-desktop-portal")):
            cls.desktop.processes.start(program, [str(LIBRARIES / program)], os.environ)
            cls.desktop.wait_for_name(name)

    def setUp(self):
        super().setUp()
        self.open_history("Ana")
        self.popover.press("Export CSV")
        wait_until(self.panel_box, "the portal's panel")
        self.wait_for_no_popover()

    def panel_box(self):
        return next((box for _, box in self.desktop.windows(PANEL)), None)

    def test_the_file_goes_where_the_portals_panel_says(self):
        file = self.desktop.home / "chosen here.csv"
        self.key("ctrl+a")
        self.desktop.run("xdotool", "type", "--delay", "10", str(file))
        self.key("Return")
        wait_until(file.exists, "the file")
        self.assertEqual(file.read_text().count("\n"), 1 + 2 * len(self.week.samples))
        wait_until(lambda: not self.panel_box(), "the end of the panel")

    def test_cancelling_does_nothing(self):
        before = self.world.files()
        self.key("Escape")
        wait_until(lambda: not self.panel_box(), "the end of the panel")
        self.assertTrue(stays(lambda: not self.desktop.windows("vellumor"), NO_OTHER), "another panel has opened")
        self.assertEqual(self.world.files(), before)
        self.assertEqual(list(self.desktop.home.glob("*.csv")), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
