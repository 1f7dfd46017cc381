"""A service with malformed or late answers: hostile_service.py NAME FILE. It prints the path of each
object that it describes, and creates the file when it has received a call whose reply it holds
back."""

import os
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

INTERFACE = '<node><interface name="com.example.X"><method name="Ask">%s</method></interface></node>'
DESCRIPTIONS = {
    "/garbage": "<node><interface",
    "/types": 7,
    "/signature": INTERFACE % '<arg direction="in" name="a" type="((("/>',
    "/large": INTERFACE % '<arg direction="out" name="a" type="s"/>',
    "/other": INTERFACE % '<arg direction="out" name="a" type="s"/>',
    "/exit": INTERFACE % "",
    "/late": INTERFACE.replace("</method>", '</method><method name="Release"/>') % "",
}
ANSWERS = {
    "/large": GLib.Variant("(s)", ["x" * 1000000]),
    "/other": GLib.Variant("(is)", [1, "not announced"]),
}


held_back = []


def answer(connection, message, incoming):
    if not incoming or message.get_message_type() != Gio.DBusMessageType.METHOD_CALL:
        return message
    path = message.get_path()
    if message.get_member() == "Introspect":
        print(path, flush=True)
        description = DESCRIPTIONS.get(path, "<node/>")
        body = GLib.Variant("(s)" if isinstance(description, str) else "(i)", [description])
    elif path == "/exit":
        os._exit(0)
    elif message.get_member() == "Ask" and path == "/late":
        held_back.append(message)
        open(sys.argv[2], "w").close()
        return None
    else:
        body = ANSWERS.get(path, GLib.Variant("()", []))
    for asked in held_back + [message] if message.get_member() == "Release" else [message]:
        reply = Gio.DBusMessage.new_method_reply(asked)
        reply.set_body(body)
        connection.send_message(reply, Gio.DBusSendMessageFlags.NONE)
    return None


bus = Gio.bus_get_sync(Gio.BusType.SESSION)
bus.add_filter(answer)
Gio.bus_own_name_on_connection(bus, sys.argv[1], Gio.BusNameOwnerFlags.NONE)
GLib.MainLoop().run()
