"""The program and the usage endpoint, in a desktop of their own."""
import os
import pathlib

from gi.repository import GLib

from processes import Missing, wait_until

MENU = ("/MenuBar", "com.canonical.dbusmenu")


class Endpoint:
    """Answers as the world tells."""

    def __init__(self, desktop, world, server):
        self._log = desktop.folder / "requests"
        with open(self._log, "wb") as log:
            desktop.processes.start("endpoint", [server, str(world.answers_file)], os.environ, stdout=log)
        self.port = int(wait_until(lambda: self._lines()[:1], "the endpoint")[0])

    def tokens(self):
        """Of the requests so far, in their order."""
        return self._lines()[1:]

    def _lines(self):
        return self._log.read_text().splitlines()


class Program:
    """The program itself. `binary` and `server` lie in a build folder."""

    def __init__(self, desktop, world, build):
        build = pathlib.Path(build).resolve()
        self.desktop = desktop
        self.binary = str(build / "src/app/vellumor")
        self.endpoint = Endpoint(desktop, world, str(build / "tests/demo/vellumor-usage-server"))
        self.process = None
        self._starts = 0

    @property
    def name(self):
        return f"program-{self._starts}"

    def environment(self, **changed):
        """Nothing as a value takes the variable away."""
        environment = {**os.environ, "VELLUMOR_API_BASE": f"http://127.0.0.1:{self.endpoint.port}",
                       "VELLUMOR_ONBOARDING": "skip", **changed}
        return {name: value for name, value in environment.items() if value is not None}

    def start(self, **changed):
        self._starts += 1
        self.process = self.desktop.processes.start(self.name, [self.binary], self.environment(**changed))

    def start_with_item(self, **changed):
        self.start(**changed)
        self.wait_for_item()

    def start_again(self, name="again", **changed):
        """A second copy; gives its status and what it wrote."""
        other = self.desktop.processes.start(name, [self.binary], self.environment(**changed))
        return other.wait(20), self.desktop.processes.log(name)

    def end(self):
        self.desktop.processes.end(self.name)
        wait_until(lambda: not self.desktop.items(), "the end of the status item")

    @property
    def log(self):
        return self.desktop.processes.log(self.name)

    def wait_for_item(self):
        def has_item():
            if self.process.poll() is not None:
                raise Missing(f"the program has ended with {self.process.returncode}: {self.log}")
            return self.desktop.items()
        wait_until(has_item, "a status item")

    def title(self):
        """What the status item says of itself."""
        return self.desktop.item_property(self.desktop.items()[0], "Title")

    def choose(self, name):
        """That entry of the status item's menu, as a panel does that shows it."""
        item = self.desktop.items()[0]
        _, (_, _, entries) = self.desktop.call(item, *MENU, "GetLayout", "(iias)", (0, 1, ["label"]))
        number = next(number for number, properties, _ in entries if properties.get("label") == name)
        self.desktop.call(item, *MENU, "Event", "(isvu)", (number, "clicked", GLib.Variant("i", 0), 0))
