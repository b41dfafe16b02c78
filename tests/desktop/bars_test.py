#!/usr/bin/env python3
"""The examples of docs/bars.md: waybar with the module beside the tray's item, tmux with its status line, and a prompt."""
import json
import os
import pathlib
import re
import shutil
import subprocess
import unittest

from case import BUILD, DesktopTest, fresh, wait_until
from hosts import Waybar
from pictures import Camera

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/bars.md"
# Where to leave what is shown, for a person to look at.
PICTURES = os.environ.get("VELLUMOR_PICTURES")
FRONT = BUILD.resolve() / "src/cli/vellumor"


def example(language):
    """The first one in it on the page."""
    return re.search(f"```{language}\n(.*?)```", PAGE.read_text(), re.S).group(1)


class BarWithModule(Waybar):
    """Its module calls a copy of the program, since its user may not look into the build folder."""

    STYLE = Waybar.STYLE + example("css").replace("{", "{{").replace("}", "}}")

    def start_compositor(self):
        super().start_compositor()
        copy = shutil.copy(FRONT, self.run_folder / "vellumor")
        module = example("json").replace("vellumor status", f"{copy} status")
        self.BAR = json.dumps({**json.loads(Waybar.BAR), **json.loads(module),
                               "modules-right": ["custom/vellumor", "tray", "clock"]})


class Bars(DesktopTest):
    desktop_options = {"host": "waybar"}
    accounts = (fresh("home", "Home", 47), fresh("work", "Work", 93))

    @classmethod
    def setUpClass(cls):
        import hosts
        hosts.HOSTS["waybar"] = BarWithModule
        super().setUpClass()
        cls.camera = Camera(cls.desktop, cls.desktop.folder)
        before = cls.photograph("before")
        cls.program.start_with_item(DISPLAY=None)
        wait_until(lambda: cls.program.title() == "Home 47%, Work 93%", "the title of the item")
        cls.pictures = [before, cls.photograph("module", before)]

    @classmethod
    def photograph(cls, name, unlike=None):
        """By the compositor itself, until it differs from the last one, and twice the same."""
        file, again = (cls.desktop.folder / f"{name}{end}.png" for end in ("", "-again"))

        def take():
            cls.desktop.run("grim", file)
            cls.desktop.run("grim", again)
            return file.read_bytes() == again.read_bytes() != (unlike.read_bytes() if unlike else None)
        wait_until(take, f"a change on the screen: {name}")
        return file

    def test_waybar_shows_the_module_beside_the_item(self):
        def module_width():
            return self.camera.changed_box(self.pictures[0], self.photograph("whole", self.pictures[0]))[2]
        item = 40  # pixels; the module's text is much wider
        wait_until(lambda: module_width() > 3 * item, "the module in the bar")
        if PICTURES:
            shutil.copy(self.desktop.folder / "whole.png", pathlib.Path(PICTURES) / "status-waybar.png")

    def test_tmux_shows_the_line_and_follows_the_readings(self):
        self.assertIn("Work 93%, week 41%", self.in_tmux(lambda text: "93%" in text))

    def test_the_prompt_has_the_figure(self):
        environment = {**os.environ, "PATH": f"{FRONT.parent}:{os.environ['PATH']}"}
        shell = subprocess.run(["bash", "--norc", "-i", "-c", example("bash") + 'printf "%s" "${PS1@P}"'], text=True,
                               env=environment, capture_output=True, timeout=20, stdin=subprocess.DEVNULL)
        self.assertIn("[93%] ", shell.stdout)

    def in_tmux(self, is_shown):
        """What a terminal shows in which tmux runs; one tmux is the terminal of another."""
        folder = self.desktop.folder
        (folder / "tmux.conf").write_text(example("tmux"))
        environment = {**os.environ, "PATH": f"{FRONT.parent}:{os.environ['PATH']}", "TERM": "screen", "LC_ALL": "C.UTF-8",
                       "TMUX_TMPDIR": str(folder), "SHELL": "/bin/sh"}
        environment.pop("TMUX", None)

        def outer(*words):
            return subprocess.run(["tmux", "-L", "outer", "-f", "/dev/null", *words], env=environment, check=True,
                                  capture_output=True, text=True, timeout=20).stdout
        outer("new-session", "-d", "-x", "100", "-y", "8", f"env -u TMUX tmux -L inner -f {folder}/tmux.conf new-session cat")
        try:
            wait_until(lambda: is_shown(outer("capture-pane", "-p")), "the figures in the status line of tmux")
            text = outer("capture-pane", "-p")
        finally:
            for name in ("inner", "outer"):
                subprocess.run(["tmux", "-L", name, "kill-server"], env=environment, capture_output=True)
        if PICTURES:
            pathlib.Path(PICTURES, "status-tmux.txt").write_text(text)
        return text


if __name__ == "__main__":
    unittest.main(verbosity=2)
