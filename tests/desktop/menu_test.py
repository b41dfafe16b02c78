#!/usr/bin/env python3
"""The status item's menu, as the panel shows it."""
import unittest

from case import DesktopTest, fresh, wait_until

ENTRIES = ["Refresh", "Scan for Accounts", None, "Settings…", "About Vellumor", None, "Quit Vellumor"]


class Menu(DesktopTest):
    accounts = (fresh("ana", "Ana", 47), fresh("work", "Work", 93))

    def setUp(self):
        self.program.start_with_item()

    def tearDown(self):
        if self.program.process.poll() is None:
            self.program.end()

    def choose(self, name):
        self.desktop.click_item(button=3)
        self.desktop.host.choose([entry for entry in ENTRIES if entry].index(name))

    def test_it_has_six_entries(self):
        item = self.desktop.items()[0]
        path = self.desktop.item_property(item, "Menu")
        _, (_, _, children) = self.desktop.call(item, path, "com.canonical.dbusmenu", "GetLayout", "(iias)",
                                                (0, -1, []))
        self.assertEqual([None if properties.get("type") == "separator" else properties["label"]
                          for _, properties, _ in children], ENTRIES)

    def test_refresh_asks_for_every_account(self):
        before = len(self.program.endpoint.tokens())
        self.choose("Refresh")
        wait_until(lambda: sorted(self.program.endpoint.tokens()[before:])
                   == ["demonstration-token-ana", "demonstration-token-work"], "a request for each account")

    def test_scan_for_accounts_finds_a_new_one(self):
        self.open_popover()
        self.wait_for_text("Work")
        self.world.add(fresh("new", "new", 12))
        self.choose("Scan for Accounts")
        self.open_popover()
        self.wait_for_popover().press("Dismiss")
        wait_until(lambda: not self.popover.find("Dismiss"), "the end of the notice")
        self.wait_for_text("new")

    def test_settings_opens_its_window(self):
        self.choose("Settings…")
        wait_until(lambda: self.window("Vellumor Settings"), "the settings")

    def test_about_opens_the_same_window_with_the_version(self):
        self.choose("About Vellumor")
        settings = wait_until(lambda: self.window("Vellumor Settings"), "the settings")
        wait_until(lambda: any(text.startswith("Version ") for text in settings.texts()), "the version")

    def test_quit_ends_the_program_and_takes_the_item_away(self):
        self.choose("Quit Vellumor")
        self.assertEqual(self.program.process.wait(15), 0)
        wait_until(lambda: not self.desktop.items(), "the end of the status item")


if __name__ == "__main__":
    unittest.main(verbosity=2)
