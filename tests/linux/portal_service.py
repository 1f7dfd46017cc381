"""A desktop portal: portal_service.py CODE [slow]

Prints its requests and responds with the code. A slow one answers only on Release or Close."""

import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NAME, PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
INTERFACES = """<node>
<interface name="org.freedesktop.portal.OpenURI"><method name="OpenURI"><arg type="s"/>
<arg type="s"/><arg type="a{sv}"/><arg type="o" direction="out"/></method></interface>
<interface name="org.freedesktop.portal.Email"><method name="ComposeEmail"><arg type="s"/>
<arg type="a{sv}"/><arg type="o" direction="out"/></method></interface>
<interface name="org.freedesktop.portal.Inhibit"><method name="Inhibit"><arg type="s"/>
<arg type="u"/><arg type="a{sv}"/><arg type="o" direction="out"/></method></interface>
<interface name="org.freedesktop.portal.Request"><method name="Close"/></interface>
<interface name="com.example.Test"><method name="Release"/></interface></node>"""

code, is_slow = int(sys.argv[1]), len(sys.argv) > 2
described = {interface.name: interface for interface in
             Gio.DBusNodeInfo.new_for_xml(INTERFACES).interfaces}
waiting = []


def respond(sender, handle, invocation):
    # A portal may send the response before the method returns.
    bus.emit_signal(sender, handle, "org.freedesktop.portal.Request", "Response",
                    GLib.Variant("(ua{sv})", [code, {}]))
    invocation.return_value(GLib.Variant("(o)", [handle]))


def answer(_, sender, path, interface, method, parameters, invocation):
    if method in ("Release", "Close"):
        while waiting:
            respond(*waiting.pop())
        invocation.return_value(None)
    if method == "Release":
        return
    arguments = parameters.unpack()
    token = arguments[-1].pop("handle_token") if arguments else None
    print(method, *arguments, flush=True)
    if method == "Close":
        return
    handle = f"{PATH}/request/{sender[1:].replace('.', '_')}/{token}"
    bus.register_object(handle, described["org.freedesktop.portal.Request"], answer, None, None)
    waiting.append((sender, handle, invocation))
    if not is_slow:
        respond(*waiting.pop())


bus = Gio.bus_get_sync(Gio.BusType.SESSION)
for name in described:
    if not name.endswith("Request"):
        bus.register_object(PATH, described[name], answer, None, None)
Gio.bus_own_name_on_connection(bus, NAME, Gio.BusNameOwnerFlags.NONE)
GLib.MainLoop().run()
