#!/usr/bin/env python3
"""Notifications on a desktop that shows them, on one that does not, and on one that hangs."""
import unittest

import case
from case import SETTLED, DesktopTest, fresh, reading, session, stays, wait_until, weekly
from desktop import NOTIFICATIONS

NOTIFIER = "xfce4-notifyd"
AT_ONCE = 3.0  # seconds, for a machine that has much to do
NAME = "<b>R&D</b> &amp;"
# Owns the name and is stopped then, so that it never answers.
HANGING = f"""
import os, signal
from gi.repository import Gio, GLib
bus = Gio.bus_get_sync(Gio.BusType.SESSION, None)
bus.call_sync(
    "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
    GLib.Variant("(su)", ("{NOTIFICATIONS}", 0)), None, Gio.DBusCallFlags.NONE, -1, None)
os.kill(os.getpid(), signal.SIGSTOP)
"""


class Notifications(DesktopTest):
    accounts = (fresh("work", NAME, 70),)
    preferences = {"userInterval": 1800, "notificationsEnabled": True}

    def setUp(self):
        # The first reading after a start is only what the next one is compared with.
        self.program.start_with_item()
        self.addCleanup(self.program.end)
        self.read(80)

    def read(self, percent):
        """Lets the program ask for a reading, which says so much of the session."""
        self.world.answer(self.world.accounts[0], reading(session(percent), weekly(41)))
        before = len(self.program.endpoint.tokens())
        self.program.choose("Refresh")
        wait_until(lambda: len(self.program.endpoint.tokens()) > before, "a request")
        wait_until(lambda: f" {percent}%" in self.program.title(), f"a reading of {percent} percent")

    def notification(self):
        """What is to be seen of it; nothing while there is none."""
        return next((window for window in case.accessible.windows(NOTIFIER) if window.texts()), None)

    def wait_for_notification(self, percent):
        window = wait_until(lambda: case.accessible.quietly(self.notification), "a notification")
        wait_until(lambda: self.desktop.windows(NOTIFIER), "its window")
        wait_until(lambda: f"{NAME} · Session usage crossed 90% (now {percent}%)" in window.texts(), window.texts())
        return window

    def assertNoNotification(self):
        self.assertTrue(stays(lambda: not self.desktop.windows(NOTIFIER), SETTLED), "there is a notification")

    def test_a_limit_that_is_near_is_told_once_and_leads_to_the_popover(self):
        self.assertNoNotification()
        self.read(95)
        notification = self.wait_for_notification(95)
        self.assertIn("Vellumor", notification.texts())
        notification.press("Open")
        self.wait_for_popover()
        wait_until(lambda: not self.desktop.windows(NOTIFIER), "the end of the notification")
        self.close_popover()
        self.read(96)
        self.assertNoNotification()

    def test_a_popover_that_is_open_stays_open_when_the_notification_is_followed(self):
        self.open_popover()
        self.read(95)
        left, top, width, height = self.wait_for_notification(95).find("Open").box
        self.desktop.click(left + width // 2, top + height // 2)
        wait_until(lambda: not self.desktop.windows(NOTIFIER), "the end of the notification")
        self.assertStaysOpen()

    def test_without_a_server_the_program_goes_on(self):
        self.end_server()
        self.read(95)
        self.read(96)
        self.assertNotIn(NOTIFICATIONS, self.desktop.names())
        self.open_popover()

    def test_a_server_that_hangs_holds_nobody_up(self):
        self.end_server()
        self.desktop.processes.start("hanging", ["/usr/bin/python3", "-c", HANGING], self.program.environment())
        self.addCleanup(self.desktop.processes.end, "hanging")
        self.desktop.wait_for_name(NOTIFICATIONS)
        self.read(95)
        self.desktop.click_item()
        wait_until(self.popover_box, "the popover", AT_ONCE)

    def end_server(self):
        self.desktop.end_notifier()
        self.addCleanup(self.desktop.start_notifier)


if __name__ == "__main__":
    unittest.main(verbosity=2)
