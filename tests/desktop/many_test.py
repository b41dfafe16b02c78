#!/usr/bin/env python3
"""A thousand accounts, and a panel at the bottom."""
import unittest

from case import DesktopTest, wait_until
from pictures import Camera
from worlds import many


class Many(DesktopTest):
    desktop_options = {"edge": "bottom"}
    accounts = many(1000)

    def test_the_popover_opens_within_the_screen_and_scrolls(self):
        self.program.start_with_item()
        wait_until(lambda: "%" in self.program.title(), "a reading in the label", 30)
        self.desktop.click_item()
        box = wait_until(self.popover_box, "the popover")
        self.assertInsideTheScreen(box)
        self.assertLessEqual(box[1] + box[3], self.desktop.host.tray()[1], "it covers the panel")
        camera = Camera(self.desktop, self.desktop.folder)
        left, top, width, height = box
        names = (left, top, width // 3, height // 2)  # without the countdowns
        pictures = [camera.bytes_at_rest(names)]
        self.desktop.run("xdotool", "mousemove", left + width // 2, top + height // 2)
        for button, direction in ((5, "down"), (4, "up")):
            self.desktop.run("xdotool", "click", "--repeat", "3", button)
            wait_until(lambda: camera.bytes_at_rest(names) != pictures[-1], f"a list that moves {direction}")
            pictures.append(camera.bytes_at_rest(names))
        self.assertEqual(pictures[0], pictures[2], "it does not come back to its beginning")
        self.assertEqual(self.popover_box(), box)


if __name__ == "__main__":
    unittest.main(verbosity=2)
