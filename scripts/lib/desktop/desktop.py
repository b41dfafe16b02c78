"""A desktop of its own: an X server that shows nothing, a bus, a window manager, a panel and a notification server, all
in a folder that goes away with it."""
import ctypes
import os
import pathlib
import shutil
import subprocess
import tempfile

from gi.repository import Gio, GLib

import hosts
from processes import Missing, Processes, end_undisturbed, stays, wait_until

DISPLAYS = range(91, 191)
BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>{address}</listen><auth>EXTERNAL</auth><servicedir>{services}</servicedir>
<policy context="default"><allow user="*"/><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/>
<allow own="*"/></policy></busconfig>
"""
# What the bus may start: whatever else is installed stays out.
SERVICES = ("org.a11y.Bus.service", "org.xfce.Xfconf.service")
NOTIFIER = next(pathlib.Path("/usr/lib").glob("*/xfce4/notifyd/xfce4-notifyd"), None)
NOTIFICATIONS = "org.freedesktop.Notifications"
PORTAL = ("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings")
NETWORK = ("org.freedesktop.NetworkManager", "/org/freedesktop/NetworkManager", "org.freedesktop.DBus.Mock")
ARRIVAL = 0.3  # seconds in which the next item would have come
ONLINE, OFFLINE = 70, 20  # as NetworkManager counts


class Desktop:
    """`host` is one of hosts.HOSTS, or nothing for a desktop without a panel. Set as this process's own while it lasts,
    so that its accessibility libraries look at it: a process has one desktop only."""

    def __init__(self, host="xfce4-panel", screen=(1280, 800), scale=1, is_dark=True, edge="top"):
        self.screen, self.scale, self.is_dark, self.edge = screen, scale, is_dark, edge
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vellumor-desktop-"))
        self.home = self.folder / "home"
        self.run_folder = self.folder / "run"
        self.processes = Processes(self.folder)
        self.host = hosts.HOSTS[host](self) if host else None
        self.bus = None
        self._own_environment = dict(os.environ)

    def __enter__(self):
        try:
            self._make_folders()
            if self.host:
                self.host.prepare()
            self._start_screen()
            self._start_bus()
            self._start_services()
            if self.host:
                self.host.start()
        except BaseException as error:
            logs = "\n".join(f"{path.name}: {path.read_text(errors='replace')[-400:]}"
                             for path in sorted(self.folder.glob("*.log")))
            self._end()
            if isinstance(error, Missing):
                raise Missing(f"{error}\n{logs}") from None
            raise
        return self

    def __exit__(self, *_):
        self._end()

    def set_dark(self, is_dark):
        """The desktop's colour scheme, as programs learn it, and the panel's."""
        if is_dark == self.is_dark:
            return
        self.is_dark = is_dark
        self.call(*PORTAL[:2], "org.freedesktop.DBus.Mock", "AddMethods", "(sa(ssss))", (PORTAL[2], self._answers()))
        setting = [GLib.Variant("s", "org.freedesktop.appearance"), GLib.Variant("s", "color-scheme"),
                   GLib.Variant("v", GLib.Variant("u", 1 if is_dark else 2))]
        self.call(*PORTAL[:2], "org.freedesktop.DBus.Mock", "EmitSignal", "(sssav)",
                  (PORTAL[2], "SettingChanged", "ssv", setting))
        if self.host:
            self.host.set_dark(is_dark)

    def set_online(self, is_online):
        self.call(*NETWORK, "SetGlobalConnectionState", "(u)", (ONLINE if is_online else OFFLINE,))

    def call(self, name, path, interface, method, types="()", values=()):
        """Calls a method on the bus; gives what it answers, and raises GLib.Error."""
        return self.bus.call_sync(name, path, interface, method, GLib.Variant(types, values), None,
                                  Gio.DBusCallFlags.NONE, 10_000, None).unpack()

    def names(self):
        """Every name on the bus."""
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames")[0]

    def items(self):
        """The status items that have a place in a panel, by what they are called on the bus."""
        if hosts.WATCHER[0] not in self.names():
            return []
        entries = self.call(*hosts.WATCHER, "org.freedesktop.DBus.Properties", "Get", "(ss)",
                            (hosts.WATCHER[0], "RegisteredStatusNotifierItems"))[0]
        return sorted(entry.partition("/")[0] for entry in entries)

    def item_property(self, item, name):
        return self.call(item, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get", "(ss)",
                         ("org.kde.StatusNotifierItem", name))[0]

    def click_item(self, button=1, place=0):
        """The status item in that place of the panel, counted from the left."""
        left, top, width, height = wait_until(self.tray_at_rest, "the status items in their places")
        count = len(self.items())
        self.click(left + width * (2 * place + 1) // (2 * count), top + height // 2, button)

    def tray_at_rest(self):
        """The room for items; nothing while they come, one by one, and move each other."""
        box = self.host.tray()
        return box if stays(lambda: self.host.tray() == box, ARRIVAL) else None

    def click(self, x, y, button=1):
        self.run("xdotool", "mousemove", x, y, "click", button)

    def move_pointer_away(self):
        """To where it points at nothing."""
        self.run("xdotool", "mousemove", 1, self.screen[1] - 1)

    def windows(self, pattern):
        """The visible ones whose class is like that: their names and boxes, in pixels."""
        found = []
        for number in self._ask("search", "--onlyvisible", "--class", pattern).split():
            name = self._ask("getwindowname", number).strip()
            geometry = self._ask("getwindowgeometry", "--shell", number).splitlines()
            values = dict(line.split("=", 1) for line in geometry if "=" in line)
            if values:
                found.append((name, tuple(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))))
        return found

    @staticmethod
    def _ask(*words):
        """Nothing about a window that is not there, or no longer."""
        return subprocess.run(["timeout", "10", "xdotool", *words], text=True, env=os.environ, check=False,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout

    def run(self, *command, **more):
        """What a tool of the desktop prints."""
        return subprocess.run(["timeout", "20", *map(str, command)], env=os.environ, check=True, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              **more).stdout

    def _make_folders(self):
        self.folder.chmod(0o711)
        self.home.mkdir()
        self.run_folder.mkdir(mode=0o700)
        services = self.folder / "services"
        services.mkdir()
        for name in SERVICES:
            shutil.copy(f"/usr/share/dbus-1/services/{name}", services)
        # Before the bus starts, since what the bus starts has the environment of the bus.
        os.environ.clear()
        os.environ.update({
            "PATH": "/usr/bin:/bin:/usr/sbin:/sbin", "LANG": "C.UTF-8", "HOME": str(self.home), "SHELL": "/bin/sh",
            "XDG_RUNTIME_DIR": str(self.run_folder), "XDG_CONFIG_HOME": f"{self.home}/.config",
            "XDG_DATA_HOME": f"{self.home}/.local/share", "XDG_CACHE_HOME": f"{self.home}/.cache",
            "XDG_SESSION_TYPE": "x11", "GDK_BACKEND": "x11", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "XDG_CURRENT_DESKTOP": "XFCE",
        })
        if "TZ" in self._own_environment:
            os.environ["TZ"] = self._own_environment["TZ"]
        if self.scale != 1:
            os.environ.update({"GDK_SCALE": str(self.scale), "QT_SCALE_FACTOR": str(self.scale)})

    def _start_screen(self):
        width, height = self.screen
        for number in DISPLAYS:
            ours, theirs = os.pipe()
            self.processes.start("screen", ["Xvfb", f":{number}", "-displayfd", str(theirs), "-screen", "0",
                                            f"{width}x{height}x24", "-dpi", "96", "-nolisten", "tcp", "-noreset"],
                                 os.environ, pass_fds=[theirs])
            os.close(theirs)
            with open(ours, encoding="ascii") as answer:
                if answer.readline():  # nothing where another server has the number
                    os.environ["DISPLAY"] = f":{number}"
                    return
        raise Missing("a free number for the screen")

    @staticmethod
    def _paint_background(colour):
        x11 = ctypes.CDLL("libX11.so.6")
        x11.XOpenDisplay.restype = ctypes.c_void_p
        x11.XDefaultRootWindow.restype = ctypes.c_ulong
        display = ctypes.c_void_p(x11.XOpenDisplay(None))
        root = ctypes.c_ulong(x11.XDefaultRootWindow(display))
        x11.XSetWindowBackground(display, root, ctypes.c_ulong(colour))
        x11.XClearWindow(display, root)
        x11.XCloseDisplay(display)

    def _start_bus(self):
        path = self.folder / "bus"
        address = f"unix:path={path}"
        configuration = self.folder / "bus.conf"
        configuration.write_text(BUS.format(address=address, services=self.folder / "services"))
        os.environ.update({"DBUS_SESSION_BUS_ADDRESS": address, "DBUS_SYSTEM_BUS_ADDRESS": address})
        self.processes.start("bus", ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile",
                                     "--nosyslog"], os.environ)
        wait_until(path.exists, "a bus")
        path.chmod(0o777)
        self.bus = wait_until(lambda: self._connected(address), "an answer of the bus")

    @staticmethod
    def _connected(address):
        flags = Gio.DBusConnectionFlags
        try:
            return Gio.DBusConnection.new_for_address_sync(
                address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)
        except GLib.Error:
            return None

    def _start_services(self):
        python = ["/usr/bin/python3", "-m", "dbusmock"]
        self.processes.start("network", [*python, "--system", "--template", "networkmanager"], os.environ)
        self.processes.start("portal", [*python, "--session", *PORTAL], os.environ)
        manages_windows = not self.host or self.host.needs_window_manager
        if manages_windows:
            self.processes.start("windows", ["xfwm4", "--compositor=off"], os.environ)
        if NOTIFIER:
            self.processes.start("notifier", [str(NOTIFIER)], os.environ)
        self._paint_background(0x6f7c8a)
        self.wait_for_name(PORTAL[0])
        self.wait_for_name(NETWORK[0])
        self.set_online(True)
        self.call(*PORTAL[:2], "org.freedesktop.DBus.Mock", "AddMethods", "(sa(ssss))", (PORTAL[2], self._answers()))
        if NOTIFIER:
            self.wait_for_name("org.freedesktop.Notifications")
        if manages_windows:
            wait_until(lambda: "(WINDOW)" in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"), "a window manager")

    def start_notifier(self):
        self._launch_notifier()
        self.wait_for_name(NOTIFICATIONS)

    def end_notifier(self):
        self.processes.end("notifier")
        wait_until(lambda: NOTIFICATIONS not in self.names(), "the end of the notification server")

    def _launch_notifier(self):
        self.processes.start("notifier", [str(NOTIFIER)], os.environ)

    def wait_for_name(self, name):
        wait_until(lambda: name in self.names(), f"{name} on the bus")

    def _answers(self):
        """The portal's methods, in the words of its stand-in: 1 is dark, 2 is light."""
        value = 1 if self.is_dark else 2
        return [("Read", "ss", "v", f"ret = dbus.UInt32({value}, variant_level=1)"),
                ("ReadOne", "ss", "v", f"ret = dbus.UInt32({value})")]

    def _end(self):
        end_undisturbed()
        if self.bus is not None and not self.bus.is_closed():
            self.bus.set_exit_on_close(False)
            self.bus.close_sync(None)
        self.processes.end_all()
        os.environ.clear()
        os.environ.update(self._own_environment)
        shutil.rmtree(self.folder, ignore_errors=True)
