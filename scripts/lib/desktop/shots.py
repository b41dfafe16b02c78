"""The pictures of one world: the popover in both colour schemes, and the panel with each form of the label."""
from desktop import Desktop
from pictures import Camera, around
from processes import Missing, wait_until
from program import Program
from world import World
from worlds import WORLDS

LABELS = {
    "bars": {"menuBarMode": "bars", "menuBarDualBars": False},
    "two-bars": {"menuBarMode": "bars", "menuBarDualBars": True},
    "numbers": {"menuBarMode": "numbers", "menuBarDualBars": False},
    "two-numbers": {"menuBarMode": "numbers", "menuBarDualBars": True},
}
SCHEMES = {"dark": True, "light": False}
HEIGHTS = {"notes": 2000, "histories": 1600}  # of the screen, so that all of it is to be seen
FIRST_ROUND = 60.0  # seconds: two for each account, and what they take
PROGRAM = "vellumor"


class Shots:
    """`font` is how many times as large as usual the letters are."""

    def __init__(self, folder, build, world, scale=1, font=1):
        self.folder, self.build, self.world, self.scale, self.font = folder, build, world, scale, font

    @property
    def kind(self):
        return f"{self.scale}x" if self.font == 1 else f"{self.scale}x-font-{self.font:g}"

    def take(self, with_labels):
        screen = (1280 * self.scale, HEIGHTS.get(self.world, 800) * self.scale)
        with Desktop(screen=screen, scale=self.scale) as desktop:
            self.desktop = desktop
            self.camera = Camera(desktop, self.folder)
            try:
                self._take_all(with_labels)
            except Missing as missing:
                self.camera.take(f"failed-{self.world}-{self.kind}", (0, 0, *screen))
                raise Missing(f"{missing}\n{self.program.log}") from None

    def _take_all(self, with_labels):
        world = World(self.desktop.home, WORLDS[self.world](), LABELS["two-bars"])
        self.program = program = Program(self.desktop, world, self.build)
        self.desktop.set_online(self.world != "offline")
        program.start_with_item(QT_FONT_DPI=f"{96 * self.font:g}")
        self._popover(world)
        for scheme, is_dark in reversed(SCHEMES.items()) if with_labels else ():
            self.desktop.set_dark(is_dark)
            for label, preferences in LABELS.items():
                program.end()
                world.set_preferences(**preferences)
                program.start_with_item()
                wait_until(lambda: "%" in program.title() and "loading" not in program.title(), "the whole label")
                self._panel(f"panel-{label}-{scheme}-{self.kind}")

    def _popover(self, world):
        import accessible  # only inside of a desktop
        wait_until(lambda: self._has_been_looked_after(world.accounts), "the first round", FIRST_ROUND)
        self.desktop.click_item()
        self.desktop.move_pointer_away()
        wait_until(self._popover_box, "the popover")

        def missing():
            popover = accessible.window(PROGRAM, "Vellumor")
            return [account.name for account in world.accounts
                    if not (section := popover and popover.find(" ".join(account.name.split()), ("panel",)))
                    or account.shows not in "\n".join(section.texts())]
        try:
            wait_until(lambda: accessible.quietly(lambda: not missing()), "the popover's content")
        except Missing:
            raise Missing(f"not what is to be seen of {missing()}") from None
        if self.world != "histories":
            self._in_both_schemes(f"popover-{self.world}")
            return
        for account in world.accounts:
            accessible.window(PROGRAM, "Vellumor").press(f"History for {account.name}")
            wait_until(lambda: "History" in accessible.window(PROGRAM, "Vellumor").texts(), "a history")
            self._in_both_schemes(f"history-{account.folder}")
            accessible.window(PROGRAM, "Vellumor").press("Back")

    def _in_both_schemes(self, name):
        for scheme, is_dark in SCHEMES.items():
            self.desktop.set_dark(is_dark)
            wait_until(lambda is_dark=is_dark: self._is_popover_dark() == is_dark, f"a {scheme} popover")
            self.camera.take(f"{name}-{scheme}-{self.kind}", self._popover_and_panel())

    def _has_been_looked_after(self, accounts):
        """Each once; the last of them are those whose sign-in must be renewed."""
        expected = [account for account in accounts if account.signed_in == "yes" and not account.waits]
        tokens, log = self.program.endpoint.tokens(), self.program.log
        return all(account.token in tokens for account in expected) and all(
            f"[revive] {account.name}: running" in log for account in accounts if account.signed_in == "expired")

    def _popover_box(self):
        return next((box for name, box in self.desktop.windows(PROGRAM) if name == "Vellumor"), None)

    def _is_popover_dark(self):
        box = self._popover_box()
        return box and self.camera.brightness(box) < 0.5

    def _popover_and_panel(self):
        box = wait_until(self._popover_box, "the popover")
        left, top, width, height = around(box, 16 * self.scale, self.desktop.screen)
        return left, 0, width, top + height

    def _panel(self, name):
        left, _, _, height = wait_until(self.desktop.tray_at_rest, "the status items in their places")
        left -= 24 * self.scale
        self.camera.take(name, (left, 0, self.desktop.screen[0] - left, height))
