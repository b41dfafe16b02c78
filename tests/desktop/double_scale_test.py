#!/usr/bin/env python3
"""A desktop on which everything is twice as large."""
import unittest

from case import DesktopTest, fresh


class DoubleScale(DesktopTest):
    desktop_options = {"scale": 2, "screen": (2560, 1600)}
    accounts = (fresh("ana", "Ana", 47), fresh("work", "Work", 93))

    def test_the_popover_opens_beside_the_item(self):
        self.program.start_with_item()
        self.open_popover()
        left, top, width, height = self.desktop.host.tray()
        box = self.popover_box()
        self.assertInsideTheScreen(box)
        self.assertGreaterEqual(box[1], top + height, "it covers the panel")
        self.assertLess(box[0], left + width, "it is far to the right")
        self.assertGreater(box[0] + box[2], left, "it is far to the left")


if __name__ == "__main__":
    unittest.main(verbosity=2)
