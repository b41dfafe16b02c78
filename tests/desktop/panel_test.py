#!/usr/bin/env python3
"""The status item in a panel, and the popover that it opens."""
import time
import unittest

from gi.repository import GLib

from case import SETTLED, DesktopTest, Missing, fresh, stays, wait_until

SAME_CLICK = 0.25  # seconds, somewhat less than the program allows
NEAR = 16  # pixels between the panel and the popover, at most
ITEM = ("/StatusNotifierItem", "org.kde.StatusNotifierItem")
MENU = ("/MenuBar", "com.canonical.dbusmenu")


class Panel(DesktopTest):
    accounts = (fresh("ana", "Ana", 47), fresh("work", "Work", 93))

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.program.start_with_item()

    def setUp(self):
        try:
            self.close_popover()
        except Missing:  # what is wrong with that has a test of its own
            self.program.end()
            self.program.start_with_item()

    def test_the_item_tells_what_it_shows(self):
        wait_until(lambda: self.program.title() == "Ana 47%, Work 93%", "the title of the item")

    def test_a_click_opens_the_popover_beside_the_item_and_inside_the_screen(self):
        left, top, width, height = self.desktop.host.tray()
        self.open_popover()
        box = self.popover_box()
        self.assertInsideTheScreen(box)
        self.assertGreaterEqual(box[1], top + height, "it covers the panel")
        self.assertLessEqual(box[1], top + height + NEAR, "it is far from the panel")
        self.assertLess(box[0], left + width)
        self.assertGreater(box[0] + box[2], left)

    def test_a_second_click_closes_it_and_a_third_opens_it(self):
        self.open_popover()
        self.desktop.click_item()
        self.wait_for_no_popover()
        self.assertTrue(stays(lambda: not self.popover_box(), SETTLED), "it has opened again")
        self.open_popover()

    def test_escape_closes_it(self):
        self.open_popover()
        self.key("Escape")
        self.wait_for_no_popover()

    def test_a_click_into_another_window_closes_it(self):
        self.open_other_window()
        self.open_popover()
        self.desktop.click(200, 500)
        self.wait_for_no_popover()

    def test_a_click_on_a_panel_that_takes_the_focus_first_closes_it_too(self):
        self.open_other_window()
        for _ in range(10):
            self.close_popover()
            self.open_popover()
            begin = time.monotonic()
            self.desktop.click(200, 500)
            self.item_call("Activate", "(ii)", (1210, 14))
            if time.monotonic() - begin < SAME_CLICK:
                self.assertTrue(stays(lambda: not self.popover_box(), SETTLED), "it has opened again")
                return
        self.fail("this machine is too slow to click")

    def test_no_control_has_the_focus_and_tab_goes_through_them_in_their_order(self):
        popover = self.open_popover()
        self.assertStaysOpen()
        focused = popover.focused()
        self.assertTrue(focused is None or focused.name == "Vellumor", focused and focused.name)
        seen = []
        for number in range(5):
            self.key("Tab")
            wait_until(lambda: (node := popover.focused()) and (number == 0 or node.name != seen[-1])
                       and node.name != "Vellumor" and not seen.append(node.name), "the next control")
        self.assertEqual(seen, ["History for Ana", "History for Work", "Refresh now", "Settings", "History for Ana"])

    def test_its_buttons_do_what_they_say(self):
        before = len(self.program.endpoint.tokens())
        self.open_popover().press("Refresh now")
        wait_until(lambda: sorted(self.program.endpoint.tokens()[before:])
                   == ["demonstration-token-ana", "demonstration-token-work"], "a request for each account")
        self.popover.press("Settings")
        self.wait_for_no_popover()
        wait_until(lambda: self.window("Vellumor Settings"), "the settings")
        self.key("alt+F4")
        wait_until(lambda: not self.window("Vellumor Settings"), "the end of the settings")

    def test_a_panel_that_starts_again_has_the_item_again(self):
        self.desktop.host.end()
        self.desktop.host.start()
        self.program.wait_for_item()
        self.open_popover()

    def test_a_second_start_opens_the_popover_and_a_third_leaves_it_open(self):
        for _ in range(2):
            status, log = self.program.start_again()
            self.assertEqual(status, 0, log)
            self.assertIn("is already running — handing over", log)
            self.wait_for_popover()
            self.assertStaysOpen()

    def test_places_that_no_screen_has_leave_the_popover_on_the_screen(self):
        for x, y in ((999999, -5), (-2**31, 2**31 - 1), (0, 0), (1279, 799)):
            with self.subTest(x=x, y=y):
                self.close_popover()
                self.item_call("Activate", "(ii)", (x, y))
                self.assertInsideTheScreen(wait_until(self.popover_box, "the popover"))

    def test_calls_that_make_no_sense_do_no_harm(self):
        nonsense = [
            (*ITEM, "Activate", "(s)", ("here",)), (*ITEM, "Activate", "()", ()), (*ITEM, "Destroy", "()", ()),
            (*ITEM, "Scroll", "(is)", (2**31 - 1, "sideways")), (*ITEM, "ContextMenu", "(ii)", (-1, -1)),
            (*ITEM, "ProvideXdgActivationToken", "(s)", ("x" * 100_000,)),
            (*MENU, "Event", "(isvu)", (-7, "clicked", GLib.Variant("i", 0), 0)),
            (*MENU, "Event", "(isvu)", (1, "melted", GLib.Variant("as", ["x"]), 2**32 - 1)),
            (*MENU, "EventGroup", "(a(isvu))", ([(n, "hovered", GLib.Variant("i", 0), 0) for n in range(2000)],)),
            (*MENU, "GetLayout", "(iias)", (4711, -1, ["label"])), (*MENU, "GetLayout", "(iias)", (0, -2**31, [])),
            (*MENU, "GetProperty", "(is)", (0, "")), (*MENU, "GetGroupProperties", "(aias)", ([-1] * 5000, ["?"])),
            (*MENU, "AboutToShowGroup", "(ai)", (list(range(5000)),)), (*MENU, "AboutToShow", "(i)", (99,)),
            ("/", ITEM[1], "Activate", "(ii)", (0, 0)), (*ITEM, "Activate", "(ai)", (list(range(10_000)),)),
        ]
        for path, interface, method, types, values in nonsense:
            try:
                self.desktop.call(self.desktop.items()[0], path, interface, method, types, values)
            except GLib.Error as error:
                self.assertNotIn("Timeout", error.message, method)
                self.assertNotIn("NoReply", error.message, method)
        self.assertIsNone(self.program.process.poll(), "the program has ended")
        self.assertEqual(self.program.title(), "Ana 47%, Work 93%")
        self.close_popover()
        self.open_popover()

    def open_other_window(self):
        """Around the place that is clicked then."""
        self.desktop.processes.start("other", ["xev", "-geometry", "300x200+60+400"], self.program.environment())
        self.addCleanup(self.desktop.processes.end, "other")
        wait_until(lambda: "Event Tester" in self.desktop.run("xwininfo", "-root", "-tree"), "another window")

    def item_call(self, method, types, values):
        self.desktop.call(self.desktop.items()[0], *ITEM, method, types, values)


if __name__ == "__main__":
    unittest.main(verbosity=2)
