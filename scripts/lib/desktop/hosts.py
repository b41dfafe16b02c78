"""The panels in which a status item can stand."""
import os
import pathlib
import pwd
import shutil

from processes import wait_until

WATCHER = ("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher")
PANEL = pathlib.Path(__file__).with_name("panel.xml")


class Host:
    """`name` is that of its process here, and of its program."""

    name = ""
    needs_window_manager = True

    def __init__(self, desktop):
        self.desktop = desktop

    def prepare(self):
        """Before the bus starts, which starts the keeper of the settings."""

    def start(self):
        raise NotImplementedError

    def end(self):
        self.desktop.processes.end(self.name)

    def set_dark(self, is_dark):
        """Changes its colours, where that is of use."""

    def tray(self):
        """Left, top, width and height of the room for items, in pixels."""
        raise NotImplementedError


class NotifierHost(Host):
    """One for items on the bus."""

    def wait_for_host(self):
        def is_there():
            return WATCHER[0] in self.desktop.names() and self.desktop.call(
                *WATCHER, "org.freedesktop.DBus.Properties", "Get", "(ss)",
                (WATCHER[0], "IsStatusNotifierHostRegistered"))[0]
        wait_until(is_there, "a panel with room for status items")

    def end(self):
        super().end()
        wait_until(lambda: WATCHER[0] not in self.desktop.names(), "the end of the panel")


class XfcePanel(NotifierHost):
    name = "xfce4-panel"
    EDGES = {"top": 6, "bottom": 8}
    HIGHEST = 60  # of a panel; a menu is higher

    def prepare(self):
        file = self.desktop.home / ".config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml"
        file.parent.mkdir(parents=True)
        file.write_text(PANEL.read_text().replace("@dark@", "true" if self.desktop.is_dark else "false")
                        .replace("@edge@", str(self.EDGES[self.desktop.edge])))

    def start(self):
        self.desktop.processes.start(self.name, ["xfce4-panel", "--disable-wm-check"], os.environ)
        self.wait_for_host()

    def tray(self):
        return next((box for box in self._windows()
                     if box[3] < self.HIGHEST * self.desktop.scale and self._is_at_edge(box)), None)

    def _is_at_edge(self, box):
        """As the panel is, unlike the words about what is under the pointer."""
        _, top, _, height = box
        distance = top if self.desktop.edge == "top" else self.desktop.screen[1] - top - height
        return distance < height / 2

    def choose(self, number):
        """That entry of the menu which has just been asked for."""
        wait_until(lambda: any(box[3] > self.HIGHEST * self.desktop.scale for box in self._windows()), "the menu")
        self.desktop.run("xdotool", "key", *["Down"] * (number + 1), "Return")

    def _windows(self):
        return [box for _, box in self.desktop.windows("Wrapper-2.0")]

    def set_dark(self, is_dark):
        """It tells the items its colour at its start, and then no more."""
        self.desktop.run("xfconf-query", "-c", "xfce4-panel", "-p", "/panels/dark-mode", "-s",
                         "true" if is_dark else "false")
        count = len(self.desktop.items())
        self.end()
        self.start()
        wait_until(lambda: len(self.desktop.items()) == count, "the items in a new panel")


class Waybar(NotifierHost):
    """In sway, which has its screen in a window of ours, so that it has a pointer. Since sway refuses to be root, both
    are somebody else then."""

    name = "waybar"
    needs_window_manager = False
    STYLE = """* {{ font-family: sans-serif; font-size: 13px; }}
window, menu {{ background: {back}; color: {front}; }} #clock {{ padding: 0 8px; }}
"""
    BAR = '{"layer":"top","height":28,"modules-right":["tray","clock"],"tray":{"icon-size":20}}'
    CONFIGURATION = """xwayland disable
output X11-1 resolution {width}x{height} position 0 0
default_border none
focus_follows_mouse no
for_window [app_id=".*"] floating enable
"""

    def start(self):
        self.start_compositor()
        desktop = self.desktop
        back, front = ("#20242b", "#eeeeec") if desktop.is_dark else ("#f0f0ef", "#2e3436")
        folder = self.run_folder
        (folder / "config").write_text(self.BAR)
        (folder / "style.css").write_text(self.STYLE.format(back=back, front=front))
        desktop.processes.start(self.name, [*self._user(), "waybar", "-c", str(folder / "config"), "-s",
                                            str(folder / "style.css")], self._environment())
        self.wait_for_host()

    def start_compositor(self):
        desktop = self.desktop
        self.run_folder = desktop.folder / "wayland"
        self.run_folder.mkdir(mode=0o700)
        configuration = desktop.folder / "sway.conf"
        configuration.write_text(self.CONFIGURATION.format(width=desktop.screen[0], height=desktop.screen[1]))
        if os.geteuid() == 0:
            nobody = pwd.getpwnam("nobody")
            shutil.chown(self.run_folder, nobody.pw_uid, nobody.pw_gid)
        desktop.processes.start("sway", [*self._user(), "sway", "-c", str(configuration)], {
            **self._environment(), "WLR_BACKENDS": "x11", "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1"})
        wait_until(lambda: list(self.run_folder.glob("wayland-?")), "a Wayland display")
        display = next(self.run_folder.glob("wayland-?"))
        os.environ.update({"WAYLAND_DISPLAY": str(display), "XDG_SESSION_TYPE": "wayland"})

    def _environment(self):
        return {**os.environ, "XDG_RUNTIME_DIR": str(self.run_folder), "GDK_BACKEND": "wayland",
                "XDG_CACHE_HOME": str(self.run_folder), "NO_AT_BRIDGE": "1"}

    @staticmethod
    def _user():
        return ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups", "--pdeathsig", "KILL"] \
            if os.geteuid() == 0 else []


class Trayer(Host):
    """One for windows alone, of the older kind."""

    name = "trayer"

    def start(self):
        tint = "0x20242b" if self.desktop.is_dark else "0xf0f0ef"
        self.desktop.processes.start(self.name, [
            "trayer", "--edge", "top", "--align", "right", "--widthtype", "request", "--height", "28", "--transparent",
            "true", "--alpha", "0", "--tint", tint], os.environ)
        wait_until(self.tray, "a tray")

    def tray(self):
        boxes = [box for _, box in self.desktop.windows("trayer")]
        return boxes[0] if boxes else None


HOSTS = {host.name: host for host in (XfcePanel, Waybar, Trayer)}
