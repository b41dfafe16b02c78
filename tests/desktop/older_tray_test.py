#!/usr/bin/env python3
"""A tray that takes windows alone."""
import unittest

from case import NAME, DesktopTest, Missing, fresh, wait_until


class OlderTray(DesktopTest):
    desktop_options = {"host": "trayer"}
    accounts = (fresh("ana", "Ana", 47), fresh("work", "Work", 93))

    def icon(self):
        """Its box in pixels once the tray has taken it."""
        left, top, width, height = self.desktop.host.tray() or (0, 0, 0, 0)
        return (left, top, width, height) if width > 10 else None

    def click(self, button=1):
        left, top, width, height = wait_until(self.icon, "the icon in the tray", 20)
        self.desktop.click(left + width // 2, top + height // 2, button)

    def click_until(self, is_so, what, button=1):
        """As a person does: a tray that is still moving the window about loses a click."""
        for _ in range(3):
            self.click(button)
            try:
                return wait_until(is_so, what, 5)
            except Missing:
                continue
        raise Missing(what)

    def menu(self):
        return next((box for _, box in self.desktop.windows(NAME) if box[2] > 100), None)

    def test_it_has_a_place_there_with_the_popover_and_the_menu(self):
        self.program.start()
        self.click_until(self.popover_box, "the popover")
        self.wait_for_text("Work")
        self.assertInsideTheScreen(self.popover_box())
        self.close_popover()
        self.desktop.host.end()
        self.desktop.host.start()
        self.assertInsideTheScreen(self.click_until(self.menu, "the menu", 3))
        self.key("Up", "Return")
        self.assertEqual(self.program.process.wait(15), 0, "the last entry ends the program")


if __name__ == "__main__":
    unittest.main(verbosity=2)
