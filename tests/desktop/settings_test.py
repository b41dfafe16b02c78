#!/usr/bin/env python3
"""The settings as a user has them: each control changes what it says, while the program runs."""
import json
import shutil

from case import SETTLED, DesktopTest, fresh, stays, wait_until

TOGGLES = ("check box", "radio button")
SPARE = fresh("spare", "Spare", 5)


class Settings(DesktopTest):
    accounts = (fresh("ana", "Ana", 47), fresh("work", "Work", 93), fresh("side", "Side", 12))

    def setUp(self):
        self.program.start_with_item()
        self.desktop.click_item(button=3)
        self.desktop.host.choose(2)
        self.settings = wait_until(lambda: self.window("Vellumor Settings"), "the settings")

    def tearDown(self):
        if self.program.process.poll() is None:
            self.program.end()

    # What is kept.

    def kept(self, name, folder="Vellumor"):
        path = self.world.data / folder / name
        return json.loads(path.read_text()) if path.exists() else {}

    def wait_for_preference(self, name, value):
        wait_until(lambda: self.kept("preferences.json").get(name) == value, f"{name} to be {value}")

    def record(self, folder):
        return self.kept("accounts.json")["accounts"][f"{self.home}/.claude-{folder}"]

    @property
    def home(self):
        return self.desktop.home

    # What is done.

    def tab(self, name):
        self.settings.press(name)
        return self.settings

    def toggle(self, name):
        wait_until(lambda: (node := self.settings.find(name, TOGGLES)) and node.is_enabled, f"{name} to be enabled")
        self.settings.press(name, TOGGLES)

    def click_on(self, node):
        left, top, width, height = node.box
        self.desktop.click(left + width // 2, top + height // 2)
        self.assertTrue(stays(lambda: True, SETTLED))  # until what it opens has the keyboard

    def row(self, name):
        """The account's row, by its name."""
        return wait_until(lambda: self.settings.find(name, ("grouping", "panel", "filler")), f"the row of {name}")

    def write(self, field, text):
        field.focus()
        self.key("ctrl+a")
        self.desktop.run("xdotool", "type", text)
        self.key("Return")

    # The tabs.

    def test_usage(self):
        self.tab("Usage")
        self.toggle("Use local cache only")
        self.wait_for_preference("localCacheOnly", True)
        self.toggle("Use local cache only")
        self.wait_for_preference("localCacheOnly", False)
        self.toggle("Revive expired sign-ins automatically")
        self.wait_for_preference("tokenRevivalEnabled", False)
        self.click_on(wait_until(lambda: self.settings.find("~30 minutes", ("combo box",)), "the list"))
        self.key("Home", "Return")
        self.wait_for_preference("userInterval", 60)
        wait_until(lambda: any("refreshes every" in text for text in self.settings.texts()), "the note")

    def test_menu_bar(self):
        self.tab("Menu Bar")
        for title, mode, is_dual in (("Session %", "numbers", False), ("Session & weekly %", "numbers", True),
                                     ("Session & weekly bars", "bars", True), ("Session bars", "bars", False)):
            self.toggle(title)
            self.wait_for_preference("menuBarMode", mode)
            self.wait_for_preference("menuBarDualBars", is_dual)
            wait_until(lambda is_dual=is_dual: ("Weekly" in self.program.title()) == is_dual, "the label")

    def test_notifications(self):
        self.tab("Notifications")
        self.toggle("Enable notifications")
        self.wait_for_preference("notificationsEnabled", True)
        for name, field, value in (("Session: At 50%", "notifySession50", True),
                                   ("Weekly: Limit reached", "notifyWeeklyLimit", False),
                                   ("Usage window resets", "notifyQuotaReset", True),
                                   ("Session window closes soon", "notifySessionClosing", True)):
            self.toggle(name)
            self.wait_for_preference(field, value)
        self.toggle("Ana")
        wait_until(lambda: list(self.kept("preferences.json")["customThresholds"].values()) == [75], "a threshold")
        self.write(self.settings.find("Threshold of Ana"), "60")
        wait_until(lambda: list(self.kept("preferences.json")["customThresholds"].values()) == [60], "its change")
        self.toggle("Enable notifications")
        self.wait_for_preference("notificationsEnabled", False)

    def test_privacy(self):
        self.tab("Privacy")
        identity = self.kept("telemetry.json")["installID"]
        wait_until(lambda: identity in self.settings.texts(), "the identity")
        self.toggle("Send anonymous diagnostics")
        wait_until(lambda: self.kept("telemetry.json")["diagnosticsEnabled"] is False, "the switch")
        self.toggle("Send anonymous product analytics")
        wait_until(lambda: self.kept("telemetry.json")["productAnalyticsEnabled"] is False, "the other switch")
        self.settings.press("Reset analytics ID")
        wait_until(lambda: self.kept("telemetry.json")["installID"] != identity, "a new identity")
        self.assertIs(self.kept("telemetry.json")["diagnosticsEnabled"], False)
        wait_until(lambda: self.kept("telemetry.json")["installID"] in self.settings.texts(), "it in the window")

    def test_general(self):
        self.tab("General")
        autostart = self.home / ".config/autostart/dev.quorle.vellumor.desktop"
        self.toggle("Launch Vellumor at login")
        wait_until(autostart.exists, "the autostart file")
        self.assertIn("Exec=", autostart.read_text())
        self.toggle("Launch Vellumor at login")
        wait_until(lambda: not autostart.exists(), "its end")
        wait_until(lambda: "Updates are not set up in this build." in self.settings.texts(), "the word on updates")

    def test_about_copies_the_details(self):
        self.tab("About")
        self.assertIn("Vellumor reported no recent issues.",
                      wait_until(lambda: [t for t in self.settings.texts() if "recent" in t], "the status"))
        self.settings.press("Copy Details")
        wait_until(lambda: self.settings.find("Copied"), "the word that it is copied")
        self.assertIn("- What happened?", self.desktop.run("xclip", "-o", "-selection", "clipboard"))

    # The accounts.

    def test_renaming_shows_at_once(self):
        self.write(self.row("Work").find("Name"), "Office")
        wait_until(lambda: self.record("work")["name"] == "Office", "the new name in the file")
        self.open_popover()
        self.wait_for_text("Office")
        self.close_popover()
        self.write(self.row("Office").find("Name"), "Work")
        wait_until(lambda: self.record("work")["name"] == "Work", "the old name")

    def test_an_untracked_account_leaves_the_popover(self):
        self.row("Side").press("Tracked — polled and shown")
        wait_until(lambda: self.record("side")["tracked"] is False, "the record")
        popover = self.open_popover()
        self.wait_for_text("Ana")
        self.assertNotIn("Side", popover.texts())
        self.close_popover()
        self.row("Side").press("Not tracked — never polled")
        wait_until(lambda: self.record("side")["tracked"] is True, "the record")

    def test_unpinning_takes_it_from_the_label(self):
        before = self.program.title()
        self.row("Side").press("Shown in the menu bar — click to hide")
        wait_until(lambda: self.program.title() != before, "another label")
        self.row("Side").press("Hidden from the menu bar — click to show")
        wait_until(lambda: self.program.title() == before, "the label of before")

    def test_the_arrow_keys_move_an_account(self):
        self.row("Side").find("Move").focus()
        self.key("Up")
        wait_until(lambda: self.record("side")["order"] < self.record("work")["order"], "another order")
        self.key("Down")
        wait_until(lambda: self.record("side")["order"] > self.record("work")["order"], "the order of before")

    def test_dragging_moves_an_account(self):
        left, top, width, height = self.row("Side").find("Move").box
        target = self.row("Ana").box
        self.desktop.run("xdotool", "mousemove", str(left + width // 2), str(top + height // 2), "mousedown", "1",
                         "mousemove", str(left + width // 2), str(target[1] + 30), "mousemove",
                         str(left + width // 2), str(target[1] + 2), "mouseup", "1")
        wait_until(lambda: self.record("side")["order"] == 0, "the first place")
        for _ in range(2):
            self.row("Side").find("Move").focus()
            self.key("Down")
        wait_until(lambda: self.record("side")["order"] == 2, "the last place")

    def remove(self, name):
        self.row(name).press("More actions")
        self.assertTrue(stays(lambda: True, SETTLED))  # until the menu has the keyboard
        self.key("Down", "Return")
        question = wait_until(lambda: self.window("Remove from Vellumor"), "the question")
        question.press("Remove")

    def test_a_removed_account_comes_back_as_it_was(self):
        before = self.record("work")
        self.remove("Work")
        wait_until(lambda: "removal" in self.record("work"), "the removal")
        wait_until(lambda: self.settings.find("1 account hidden", ("label",)), "the section of the hidden ones")
        self.settings.press("Add back")
        wait_until(lambda: "removal" not in self.record("work"), "its return")
        self.assertEqual(self.record("work"), before)

    def test_a_folder_outside_of_the_home_is_added_by_hand(self):
        elsewhere = self.desktop.folder / "elsewhere"
        self.world.add(SPARE)
        shutil.move(f"{self.home}/.claude-spare", elsewhere)
        self.click_on(self.settings.find("Add Account Manually"))
        self.key("Down", "Return")
        sheet = wait_until(lambda: self.window("Add an existing account"), "the sheet")
        field = sheet.find("Config directory (e.g. ~/.claude-work)")
        self.write(field, f"{elsewhere}-not")
        wait_until(lambda: "There is no such folder." in sheet.texts(), "the objection")
        self.write(field, str(elsewhere))
        wait_until(lambda: str(elsewhere) in self.kept("accounts.json")["accounts"], "the record")
        wait_until(lambda: not self.window("Add an existing account"), "the end of the sheet")

    # Leaving.

    def test_when_everything_is_deleted_a_fetch_brings_nothing_back(self):
        account = self.accounts[0]
        self.world.answer(account, {"silent": True})
        asked = len(self.program.endpoint.tokens())
        self.desktop.click_item(button=3)
        self.desktop.host.choose(0)  # refresh
        wait_until(lambda: len(self.program.endpoint.tokens()) > asked, "a request")
        self.tab("General")
        self.toggle("Launch Vellumor at login")
        autostart = self.home / ".config/autostart/dev.quorle.vellumor.desktop"
        wait_until(autostart.exists, "the autostart file")
        self.settings.press("Delete All Data…")
        question = wait_until(lambda: self.window("Delete all Quorle data?"), "the question")
        question.press("Cancel")
        wait_until(lambda: not self.window("Delete all Quorle data?"), "the end of the question")
        self.assertTrue((self.world.data / "Vellumor").exists())
        self.settings.press("Delete All Data…")
        wait_until(lambda: self.window("Delete all Quorle data?"), "the question").press("Delete and Quit")
        self.assertEqual(self.program.process.wait(15), 0)
        self.assertEqual(self.world.files(), [])
        self.assertFalse((self.world.data / "Vellumor").exists())
        self.assertFalse((self.world.data / "Quorle").exists())
        self.assertFalse(autostart.exists())


if __name__ == "__main__":
    import unittest

    unittest.main(verbosity=2)
