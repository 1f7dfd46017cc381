"""Two services of a handheld device on the session bus: a battery, and a clock that counts its
ticks from the number in the argument."""

import itertools
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

BATTERY = """<node><interface name="com.vire.battery"><method name="status">
<arg direction="out" name="percent" type="i"/><arg direction="out" name="temperature" type="d"/>
<arg direction="out" name="charging" type="b"/><arg direction="out" name="source" type="s"/>
</method></interface></node>"""
CLOCK = """<node><interface name="com.vire.clock"><signal name="ticks"><arg name="tick" type="u"/>
</signal></interface></node>"""
TICK_MS = 20


def answer(*call):
    call[-1].return_value(GLib.Variant("(idbs)", [72, 24.5, False, "battery"]))


def tick():
    bus.emit_signal(None, "/com/vire/clock", "com.vire.clock", "ticks",
                    GLib.Variant("(u)", [next(ticks)]))
    return True


bus = Gio.bus_get_sync(Gio.BusType.SESSION)
ticks = itertools.count(int(sys.argv[1]))
for name, description in (("com.vire.battery", BATTERY), ("com.vire.clock", CLOCK)):
    interface = Gio.DBusNodeInfo.new_for_xml(description).interfaces[0]
    bus.register_object("/" + name.replace(".", "/"), interface, answer, None, None)
    Gio.bus_own_name_on_connection(bus, name, Gio.BusNameOwnerFlags.NONE)
GLib.timeout_add(TICK_MS, tick)
GLib.MainLoop().run()
