#!/usr/bin/python3
"""A Secret Service with fixed items, which writes down every call that it gets and can stop answering.

fake_secret_service.py LOG [--item SERVICE STATE SECRET_FILE]... [--silent CALL] [--end-on CALL] [--nonsense CALL]
STATE is locked, unlocked, refused (found unlocked, and locked when it is read) or broken (unlocked, but no reading it).
A CALL has the form of a line of the log: Kind.Member, where Kind tells the object: Service, Collection, Item or Other.
"""
import argparse
import os

import dbus
import dbus.lowlevel
import dbus.mainloop.glib
from gi.repository import GLib

ROOT = "/org/freedesktop/secrets"
COLLECTION = ROOT + "/collection/only"
SESSION = ROOT + "/session/only"

options = argparse.ArgumentParser()
options.add_argument("log")
options.add_argument("--item", nargs=3, action="append", default=[])
options.add_argument("--silent")
options.add_argument("--end-on")
options.add_argument("--nonsense")
options = options.parse_args()

ITEMS = {"%s/%d" % (COLLECTION, number): item for number, item in enumerate(options.item)}


def paths(selected):
    return dbus.Array(selected, signature="o")


def properties(path):
    if path == ROOT:
        return {"Collections": paths([COLLECTION])}
    common = {"Label": "", "Locked": False, "Created": dbus.UInt64(0), "Modified": dbus.UInt64(0)}
    if path == COLLECTION:
        return {**common, "Items": paths(ITEMS)}
    service, state, _ = ITEMS[path]
    attributes = dbus.Dictionary({"service": service}, signature="ss")
    return {**common, "Locked": state == "locked", "Attributes": attributes}


def found(attributes, locked):
    return paths(path for path, item in ITEMS.items()
                 if (item[1] == "locked") == locked and attributes == {"service": item[0]})


def secret(path):
    with open(ITEMS[path][2], "rb") as file:
        return dbus.Struct((dbus.ObjectPath(SESSION), dbus.ByteArray(b""), dbus.ByteArray(file.read()),
                            "text/plain"), signature="oayays")


def answer(call, path, arguments):
    """The signature and the values of the reply, or the name of an error."""
    if call == options.nonsense:
        return "s", "nonsense"
    if call.endswith(".GetAll"):
        return "a{sv}", properties(path)
    if call == "Service.SearchItems":
        return "aoao", found(arguments[0], False), found(arguments[0], True)
    if call == "Service.OpenSession" and arguments[0] == "plain":
        return "vo", dbus.String("", variant_level=1), SESSION
    if call == "Item.GetSecret":
        state = ITEMS[path][1]
        if state == "unlocked":
            return "(oayays)", secret(path)
        return "org.freedesktop.Secret.Error.IsLocked" if state != "broken" else "org.example.Error"
    return "org.freedesktop.DBus.Error.NotSupported"


def kind(path):
    if path == ROOT:
        return "Service"
    return "Collection" if path == COLLECTION else "Item" if path in ITEMS else "Other"


def handle(connection, message):
    if message.get_type() != dbus.lowlevel.MESSAGE_TYPE_METHOD_CALL:
        return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
    call = kind(message.get_path()) + "." + message.get_member()
    with open(options.log, "a", encoding="utf-8") as log:
        log.write(call + "\n")
    if call == options.end_on:
        os._exit(0)
    if call == options.silent:
        return dbus.lowlevel.HANDLER_RESULT_HANDLED
    reply = answer(call, message.get_path(), message.get_args_list())
    if isinstance(reply, str):
        result = dbus.lowlevel.ErrorMessage(message, reply, "no")
    else:
        result = dbus.lowlevel.MethodReturnMessage(message)
        result.append(signature=reply[0], *reply[1:])
    connection.send_message(result)
    return dbus.lowlevel.HANDLER_RESULT_HANDLED


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
bus.add_message_filter(handle)
bus.request_name("org.freedesktop.secrets")
GLib.MainLoop().run()
