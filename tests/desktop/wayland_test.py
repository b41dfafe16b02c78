#!/usr/bin/env python3
"""A Wayland session with waybar."""
import unittest

from case import DesktopTest, fresh, wait_until
from pictures import Camera


class Wayland(DesktopTest):
    desktop_options = {"host": "waybar"}
    accounts = (fresh("ana", "Ana", 47), fresh("work", "Work", 93))

    def test_the_item_and_the_popover_are_on_the_screen(self):
        camera = Camera(self.desktop, self.desktop.folder)
        pictures = [self.photograph("before")]
        self.program.start_with_item(DISPLAY=None)
        wait_until(lambda: self.program.title() == "Ana 47%, Work 93%", "the title of the item")
        pictures.append(self.photograph("item", pictures[-1]))
        left, top, width, height = camera.changed_box(*pictures)
        self.desktop.click(left + width // 2, top + height // 2)
        self.wait_for_text("Work")
        pictures.append(self.photograph("popover", pictures[-1]))
        _, _, width, height = camera.changed_box(*pictures[1:])
        self.assertGreater(width, 300)
        self.assertGreater(height, 100)
        status, log = self.program.start_again(DISPLAY=None)
        self.assertEqual(status, 0, log)
        self.wait_for_text("Work")

    def photograph(self, name, unlike=None):
        """By the compositor itself, until it differs from the last one."""
        file = self.desktop.folder / f"{name}.png"

        def take():
            self.desktop.run("grim", file)
            return unlike is None or file.read_bytes() != unlike.read_bytes()
        wait_until(take, f"a change on the screen: {name}")
        return file


if __name__ == "__main__":
    unittest.main(verbosity=2)
