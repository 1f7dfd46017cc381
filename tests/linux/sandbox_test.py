"""What docs/linux.md permits in a sandbox is enough, through the proxy that sandboxes use."""

import os
import re
import subprocess
import unittest
from pathlib import Path

import desktop_test
import devices_test
import machine_test
from buses import HERE

TABLE = Path(HERE).parents[1].joinpath("docs/linux.md").read_text()
# Each sandbox may call the portals.
PORTALS = ["--call=org.freedesktop.portal.*=*",
           "--broadcast=org.freedesktop.portal.*=@/org/freedesktop/portal/*"]
TESTS = (
    (desktop_test.Desktop, "test_pages_and_mails_are_opened_by_the_portal"),
    (desktop_test.Desktop, "test_every_player_is_paused"),
    (desktop_test.Desktop, "test_ports_are_opened_and_closed_at_run_time"),
    (desktop_test.Desktop, "test_the_motor_runs_by_pattern_or_by_event"),
    (desktop_test.Desktop, "test_switches_that_the_desktop_has"),
    (desktop_test.Desktop, "test_an_inhibition_is_what_the_portal_responds"),
    (devices_test.Location, "test_fixes_have_what_geoclue_knows"),
    (devices_test.Location, "test_without_geoclue_the_portal_knows_where_it_is"),
    (devices_test.Sensors, "test_a_compass_that_rests_is_read_once"),
    (machine_test.Machine, "test_settings_come_from_the_machine"),
)


def permitted(bus):
    names = re.findall(rf"`--{bus}talk-name=([\w.]+\*?)`", TABLE)
    return ["--talk=" + name for name in names if name != "SERVICE"]


class InSandbox:
    def setUp(self):
        super().setUp()
        self.buses = {
            "DBUS_SESSION_BUS_ADDRESS": self.proxy("session", PORTALS + permitted("")),
            "DBUS_SYSTEM_BUS_ADDRESS": self.proxy("system", permitted("system-"))}

    def proxy(self, bus, permissions):
        ready, at_proxy = os.pipe()
        path = f"{self.folder}/{bus}"
        address = os.environ[f"DBUS_{bus.upper()}_BUS_ADDRESS"]
        proxy = subprocess.Popen(["xdg-dbus-proxy", f"--fd={at_proxy}", address, path, "--filter",
                                  *permissions], pass_fds=[at_proxy])
        os.close(at_proxy)
        self.addCleanup(self.stop, proxy)
        self.addCleanup(os.close, ready)
        self.assertEqual(os.read(ready, 1), b"x")
        return "unix:path=" + path

    def start(self, *arguments, **changes):
        return super().start(*arguments, **(self.buses | changes))


class HiddenGeoClue(InSandbox, devices_test.Location):
    def proxy(self, bus, permissions):
        return super().proxy(bus, [name for name in permissions if "GeoClue" not in name])

    def test_a_location_that_is_not_permitted_is_the_portals(self):
        self.geoclue()
        self.test_without_geoclue_the_portal_knows_where_it_is()


def load_tests(_loader, _tests, _pattern):
    classes = {case: type("Sandboxed" + case.__name__, (InSandbox, case), {}) for case, _ in TESTS}
    return unittest.TestSuite([
        HiddenGeoClue("test_a_location_that_is_not_permitted_is_the_portals"),
        *(classes[case](name) for case, name in TESTS)])
