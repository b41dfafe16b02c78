"""fake_logind.py: owns logind's name on the bus of DBUS_SESSION_BUS_ADDRESS, or the name given, and passes on as its
PrepareForSleep whatever its method Sleep is called with."""
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

MANAGER = "org.freedesktop.login1.Manager"


class Manager(dbus.service.Object):
    @dbus.service.signal(MANAGER, signature="b")
    def PrepareForSleep(self, is_beginning):
        pass

    @dbus.service.method(MANAGER, in_signature="b")
    def Sleep(self, is_beginning):
        self.PrepareForSleep(is_beginning)


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
name = dbus.service.BusName(sys.argv[1], bus)
manager = Manager(bus, "/org/freedesktop/login1")
GLib.MainLoop().run()
