"""What assistive technology sees of the programs of the desktop: to be imported inside of it, since the library looks
at the bus of its process once for all."""
import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from processes import Missing, wait_until  # noqa: E402

Atspi.set_timeout(5000, 5000)
DEPTH = 24
BUTTONS = ("push button", "link", "menu item", "check box", "page tab")


class Node:
    """One of the things on the screen, as it is at the moment of asking."""

    def __init__(self, accessible):
        accessible.clear_cache()
        self._accessible = accessible

    @property
    def name(self):
        return self._accessible.get_name() or ""

    @property
    def description(self):
        return self._accessible.get_description() or ""

    @property
    def role(self):
        return self._accessible.get_role_name()

    @property
    def text(self):
        """Its name, or what is written in it."""
        return self.name or self.written

    @property
    def written(self):
        """What stands in a field, whatever it is called."""
        if "Text" not in self._accessible.get_interfaces():
            return ""
        return Atspi.Text.get_text(self._accessible, 0, -1)

    @property
    def box(self):
        """Left, top, width and height on the screen."""
        extents = self._accessible.get_extents(Atspi.CoordType.SCREEN)
        return extents.x, extents.y, extents.width, extents.height

    @property
    def is_showing(self):
        return self._has(Atspi.StateType.SHOWING)

    @property
    def is_enabled(self):
        return self._has(Atspi.StateType.ENABLED)

    @property
    def is_focused(self):
        return self._has(Atspi.StateType.FOCUSED)

    def children(self):
        for number in range(self._accessible.get_child_count()):
            child = self._accessible.get_child_at_index(number)
            if child is not None:
                yield Node(child)

    def below(self, depth=DEPTH):
        """Itself and everything in it that is showing, as a reader comes upon it."""
        yield self
        if depth:
            for child in self.children():
                if child.is_showing:
                    yield from child.below(depth - 1)

    def find(self, name, roles=None):
        for node in self.below():
            if node.name == name and (roles is None or node.role in roles):
                return node
        return None

    def focused(self):
        return next((node for node in self.below() if node.is_focused), None)

    def focus(self):
        if not Atspi.Component.grab_focus(self._accessible):
            raise Missing(f"{self.name} does not take the focus")

    def texts(self):
        return [text for node in self.below() if (text := node.text)]

    def press(self, name, roles=BUTTONS):
        """The button of that name, once it is there."""
        button = wait_until(lambda: quietly(lambda: self.find(name, roles)), f"the button {name}")
        if not Atspi.Action.do_action(button._accessible, 0):
            raise Missing(f"{name} cannot be pressed")

    def _has(self, state):
        return self._accessible.get_state_set().contains(state)


def quietly(ask):
    """Nothing where what is asked has gone away meanwhile."""
    try:
        return ask()
    except GLib.Error:
        return None


def programs(name):
    """The programs of that name that are on the desktop's list."""
    root = Atspi.get_desktop(0)
    root.clear_cache()
    found = []
    for number in range(root.get_child_count()):
        program = quietly(lambda number=number: root.get_child_at_index(number))
        if program is not None and quietly(program.get_name) == name:
            found.append(Node(program))
    return found


def windows(program):
    """The visible ones of the program of that name."""
    return [window for node in programs(program) for window in quietly(lambda node=node: list(node.children())) or []
            if quietly(lambda window=window: window.is_showing)]


def window(program, name):
    return next((node for node in windows(program) if quietly(lambda node=node: node.name) == name), None)


def outline(node, indent=0):
    """For messages and for those who look into a window."""
    lines = [f"{'  ' * indent}{node.role} {node.text!r} {node.box}{' focused' if node.is_focused else ''}"]
    for child in node.children():
        if child.is_showing:
            lines.extend(outline(child, indent + 1))
    return lines
