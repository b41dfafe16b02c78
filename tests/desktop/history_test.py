#!/usr/bin/env python3
"""An account's history: what is shown of it, and what can be taken away."""
import csv
import json
import re
import unittest

from history_case import HistoryTest, known, wait_until
from histories import Week, by_day_alone, receipt
from world import DAY, reading, session, weekly


class History(HistoryTest):
    week = Week(["session", "weekly_all", "weekly_scoped"], is_watched=by_day_alone)
    receipts = (receipt(9.6 * DAY, 64.0, {"session": 71.0, "weekly_all": 55.0}),
                receipt(2.6 * DAY, 58.0, {"session": 97.0, "weekly_all": 70.0}, resets=9))
    accounts = (known("ana", "Ana", week.answer("Opus"), samples=week.samples, receipts=receipts),
                known("new", "New", reading(session(4), weekly(2))))

    def setUp(self):
        super().setUp()
        self.open_history("Ana")

    # What is shown.

    def test_its_button_shows_it_in_the_place_of_the_list(self):
        texts = self.popover.texts()
        for text in ("Ana", "History", "Weekly", "Weekly (scoped)", "Seven-day history chart",
                     "Coverage: watched versus dark time", "Session:", "Weekly:", "Copy summary", "Export CSV",
                     "Export JSON", "Watched ~58% of the week", "Weekly peak 70% vs 55% the week before"):
            self.assertIn(text, texts)
        self.assertNotIn("New", texts)
        together = "\n".join(texts)
        for form in (r"^Watched ~5\d% of the last 7 days$", r"^Peak \d+% · \w{3} \d\d:\d\d · At least 1 reset seen$",
                     r"^Last week · \w{3} \d+ – \w{3} \d+$", r"^Peak 97% · \w{3} \d\d:\d\d · At least 9 resets seen$"):
            self.assertRegex(together, re.compile(form, re.M))

    def test_of_a_new_account_it_says_that_there_is_nothing_yet(self):
        self.open_history("New")
        texts = self.popover.texts()
        self.assertIn("Not enough history yet — collecting", texts)
        self.assertIn("Watched ~0% of the last 7 days", texts)
        self.assertIn("No weekly receipt yet — the first one is archived when a week rolls over.", texts)
        for absent in ("Copy summary", "Session:", "Seven-day history chart"):
            self.assertNotIn(absent, texts)
        self.popover.press("Back")
        wait_until(lambda: self.popover.find("History for Ana"), "the list")

    def test_back_shows_the_list_again_and_escape_closes(self):
        self.popover.press("Back")
        wait_until(lambda: self.popover.find("History for New"), "the list")
        self.assertNotIn("History", self.popover.texts())
        self.popover.press("History for New")
        self.wait_for_text("Not enough history yet — collecting")
        self.key("Escape")
        self.wait_for_no_popover()

    def test_tab_goes_through_its_buttons_in_their_order(self):
        popover, seen = self.popover, []
        for number in range(4):
            self.key("Tab")
            wait_until(lambda: (node := popover.focused()) and (number == 0 or node.name != seen[-1])
                       and node.name != "Vellumor" and not seen.append(node.name), "the next button")
        self.assertEqual(seen, ["Back", "Copy summary", "Export CSV", "Export JSON"])

    # What is taken away.

    def test_copying_puts_the_summary_on_the_clipboard(self):
        self.popover.press("Copy summary")
        text = wait_until(self.clipboard, "a text on the clipboard")
        self.close_popover()
        self.assertEqual(self.clipboard(), text, "it goes with the popover")
        lines = text.split("\n")
        self.assertRegex(lines[0], r"^Ana — week \w{3} \d+ – \w{3} \d+$")
        self.assertEqual(lines[1], "Watched ~58% of the week")
        self.assertRegex(lines[2], r"^Session: Peak 97% · \w{3} \d\d:\d\d · At least 9 resets seen$")
        self.assertRegex(lines[3], r"^Weekly: Peak 70% · \w{3} \d\d:\d\d$")
        self.assertEqual(len(lines), 4)

    def test_the_csv_has_every_value_of_every_sample(self):
        file = self.documents / "week.csv"
        name = self.export("Export CSV", file)
        self.assertRegex(name, r"^vellumor-history-ana-\d{4}-\d\d-\d\d\.csv$")
        with open(file, encoding="utf-8", newline="") as text:
            rows = list(csv.reader(text))
        self.assertEqual(rows[0], ["at", "kind", "percent"])
        expected = [(sample["at"], kind, percent) for sample in self.week.samples
                    for kind, percent in sorted(sample["percents"].items())]
        self.assertEqual([(at, kind, float(percent)) for at, kind, percent in rows[1:]], expected)
        self.assertTrue(file.read_bytes().endswith(b"\n"))

    def test_the_json_reads_back_to_the_same_records(self):
        file = self.documents / "week.json"
        name = self.export("Export JSON", file)
        self.assertRegex(name, r"^vellumor-history-ana-\d{4}-\d\d-\d\d\.json$")
        package = json.loads(file.read_text())
        self.assertEqual(sorted(package), ["account", "app", "exportedAt", "receipts", "samples"])
        self.assertEqual((package["app"], package["account"]), ("Vellumor", "Ana"))
        self.assertEqual(package["samples"], self.week.samples)
        self.assertEqual(package["receipts"], list(self.receipts))

    def test_a_cancelled_export_leaves_nothing(self):
        before = self.world.files(), sorted(self.documents.iterdir())
        self.popover.press("Export CSV")
        self.wait_for_dialog()
        self.key("Escape")
        wait_until(lambda: not self.dialog_box(), "the end of the dialog")
        self.assertEqual((self.world.files(), sorted(self.documents.iterdir())), before)
        self.assertFalse((self.desktop.home / ".config/QtProject.conf").exists(), "the dialog keeps a file of its own")

    def test_what_cannot_be_written_is_told_above_the_history(self):
        self.popover.press("Export CSV")
        self.type_path(self.desktop.home / "nowhere" / "week.csv")
        self.wait_for_text("The export could not be written: No such file or directory")
        self.assertIn("Seven-day history chart", self.popover.texts())
        self.popover.press("Dismiss")
        wait_until(lambda: "The export could not be written" not in "\n".join(self.popover.texts()), "its dismissal")
        self.assertIn("the export could not be written", self.program.log)


if __name__ == "__main__":
    unittest.main(verbosity=2)
