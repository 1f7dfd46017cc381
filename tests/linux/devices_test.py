"""Location, compass and motor."""

import os
from unittest import mock

import dbus
import dbus.bus

from buses import DRIVER, OnPrivateBuses


GEOCLUE = "org.freedesktop.GeoClue2"
MANAGER_PATH = "/org/freedesktop/GeoClue2/Manager"
PORTAL_PATH = "/org/freedesktop/portal/desktop"
CLIENT_PATH = "/org/freedesktop/GeoClue2/Client/1"


class Location(OnPrivateBuses):
    VALUES = {"Latitude": 52.52, "Longitude": 13.405, "Accuracy": 8.0, "Altitude": 34.0,
              "Speed": 1.5, "Heading": 90.0}

    def geoclue(self, on_start="", client_type="o"):
        """Requests its name once it has its objects, as the real GeoClue does."""
        manager = self.serve("com.example.GeoClue", MANAGER_PATH, GEOCLUE + ".Manager", True)
        manager.AddMethod("", "GetClient", "", client_type, f'ret = "{CLIENT_PATH}"')
        manager.AddMethod("", "DeleteClient", "o", "", "")
        manager.AddMethod("", "Come", "", "", f'self.connection.request_name("{GEOCLUE}")')
        manager.AddObject(CLIENT_PATH, GEOCLUE + ".Client",
                          {"DesktopId": "", "RequestedAccuracyLevel": dbus.UInt32(0)},
                          [("Stop", "", "", "")])
        client = self.mock("com.example.GeoClue", CLIENT_PATH, True)
        update = ('self.EmitSignal("", "LocationUpdated", "oo", '
                  '[dbus.ObjectPath("/"), dbus.ObjectPath("/location")])')
        client.AddMethod(GEOCLUE + ".Client", "Start", "", "", on_start or update)
        manager.AddObject("/location", GEOCLUE + ".Location", self.VALUES, [])
        manager.Come(dbus_interface=GEOCLUE + ".Manager")
        return manager, client

    def test_fixes_have_what_geoclue_knows(self):
        _, client = self.geoclue()
        self.assertEqual(self.run_driver("location", "1"),
                         ["tracking 0", "fix 52.5200 13.4050 34.0 8.0 -1.0 90.0 1.5"])
        properties = dbus.Interface(client, dbus.PROPERTIES_IFACE).GetAll(GEOCLUE + ".Client")
        self.assertEqual(properties["DesktopId"], os.path.basename(DRIVER))
        self.assertEqual(properties["RequestedAccuracyLevel"], 8)
        self.assertIn(("Stop", []), self.calls(client))

    def test_denial_is_a_failure_of_the_location_service(self):
        for name, failure in (("org.freedesktop.DBus.Error.AccessDenied", 6),
                              ("org.freedesktop.DBus.Error.Failed", 4)):
            manager, _ = self.geoclue(f'raise dbus.exceptions.DBusException("no", name="{name}")')
            self.assertEqual(self.run_driver("location", "1"),
                             ["tracking 0", f"location failure {failure}"])
            self.stop(manager.server)
        self.assertEqual(self.run_driver("location", "1"), ["tracking 0", "location failure 4"])
        self.geoclue(client_type="s")
        (line,) = self.run_driver("subscribe", "vire://com.vire.location/startTracking", "{}", "1")
        self.assertIn('"errorText":"GeoClue gave no client"', line)

    def test_a_service_that_is_killed_and_started_again_is_found_again(self):
        manager, _ = self.geoclue()
        process = self.start("location", "2")
        self.assertEqual(process.stdout.readline(), "tracking 0\n")
        self.assertTrue(process.stdout.readline().startswith("fix 52.52"))
        manager.server.kill()
        manager.server.wait()
        self.geoclue()
        (line,) = self.finish(process)
        self.assertTrue(line.startswith("fix 52.52"), line)

    def test_a_bus_that_is_started_again_has_its_location(self):
        address = "unix:path=" + self.folder + "/bus"
        private = mock.patch.dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=address)
        private.start()
        self.addCleanup(private.stop)
        process = None
        for _ in range(2):
            server = self.start_bus(address)
            self.system = dbus.bus.BusConnection(address)
            manager, _ = self.geoclue()
            process = process or self.start("location", "2")
            self.wait_for(lambda: process.stdout.readline().startswith("fix 52.52"))
            self.system.close()
            self.stop(server)
        self.finish(process)

    def test_one_way_tracking_starts_nothing(self):
        _, client = self.geoclue()
        get_client = "vire://org.freedesktop.GeoClue2" + MANAGER_PATH + "/GetClient"
        self.run_driver("send", "vire://com.vire.location/startTracking", "{}",
                        "call", get_client, "{}")
        self.assertNotIn(("Start", []), self.calls(client))

    def test_without_geoclue_the_portal_knows_where_it_is(self):
        portal, location = "org.freedesktop.portal.Desktop", "org.freedesktop.portal.Location"
        desktop = self.serve(portal, PORTAL_PATH, location)
        desktop.AddMethod("", "CreateSession", "a{sv}", "o",
                          'ret = dbus.ObjectPath("/s/" + args[0]["session_handle_token"])')
        for answer, expected in (
                (0, "fix 52.5200 13.4050 34.0 8.0 -1.0 90.0 1.5"), (1, "location failure 6"),
                (2, "location failure 4")):
            desktop.AddMethod("", "Start", "osa{sv}", "o", f"""
of_sender = args[0].replace("/session/", "/request/").rpartition("/")[0]
ret = dbus.ObjectPath(of_sender + "/" + args[2]["handle_token"])
response = dbus.lowlevel.SignalMessage(ret, "org.freedesktop.portal.Request", "Response")
response.append(dbus.UInt32({answer}), dbus.Dictionary(signature="sv"), signature="ua{{sv}}")
self.connection.send_message(response)
self.AddObject(args[0], "org.freedesktop.portal.Session", {{}}, [("Close", "", "", "")])
if not {answer}:
    self.EmitSignal("", "LocationUpdated", "oa{{sv}}", [args[0], {self.VALUES}])""")
            self.assertEqual(self.run_driver("location", "1"), ["tracking 0", expected])
            session = self.calls(desktop)[-1][1][0]
            self.assertEqual(self.calls(self.mock(portal, session)), [("Close", [])])

    def test_geoclue_is_the_compass_where_there_is_no_other(self):
        _, client = self.geoclue()
        self.assertEqual(self.run_driver("compass", "1"), ["enabled 0", "compass 1 90.0 1.0"])
        self.assertIn(("Stop", []), self.calls(client))


class Sensors(OnPrivateBuses):
    """With the real iio-sensor-proxy, whose fake compass turns by 10 degrees at a time."""

    DEVICE = ("P: /devices/virtual/input/input0\nE: SUBSYSTEM=input\nE: NAME=\"Power Button\"\n"
              "A: name=Power Button\n\n")
    COMPASS = "/net/hadess/SensorProxy/Compass"

    def sensor_proxy(self):
        devices = self.folder + "/devices"
        with open(devices, "w") as file:
            file.write(self.DEVICE)
        server = self.start_service("umockdev-run", "--device", devices, "--",
                                    "/usr/sbin/iio-sensor-proxy", FAKE_COMPASS="1")
        self.addCleanup(self.stop, server)
        self.wait_for_bus_object("net.hadess.SensorProxy", self.COMPASS, True)
        return server

    def test_a_compass_turns_also_when_its_service_was_gone(self):
        server = self.sensor_proxy()
        process = self.start("compass", "5")
        lines = [process.stdout.readline() for _ in range(4)]
        self.assertEqual(lines[0], "enabled 0\n")
        headings = [float(line.split()[2]) for line in lines[1:]]
        # A change that arrives while the compass is first read gives the same heading twice.
        self.assertGreater(len(set(headings)), 1)
        self.assertTrue(all(heading % 10.0 == 0.0 for heading in headings), headings)
        self.stop(server)
        self.sensor_proxy()
        # Several readings may arrive at once, so the count may be higher.
        self.assertGreaterEqual(len(self.finish(process)), 2)

    def test_a_compass_that_rests_is_read_once(self):
        interface = "net.hadess.SensorProxy.Compass"

        def sensors():
            """Requests its name once it can be claimed."""
            proxy = self.serve("com.example.Sensors", self.COMPASS, interface, True)
            proxy.AddProperties(interface, {"HasCompass": True, "CompassHeading": 0.0})
            proxy.AddMethods(interface, [
                ("ClaimCompass", "", "", ""), ("ReleaseCompass", "", "", ""),
                ("Come", "", "", 'self.connection.request_name("net.hadess.SensorProxy")')])
            proxy.Come(dbus_interface=interface)
            return proxy

        proxy, back = sensors(), self.folder + "/back"
        process = self.start("compass", "1", "wait", back, "call", "vire://com.example.Nobody/X",
                             "{}")
        self.assertEqual(process.stdout.readline(), "enabled 0\n")
        self.assertEqual(process.stdout.readline(), "compass 1 0.0 1.0\n")
        used = [("Come", []), ("ClaimCompass", []), ("ReleaseCompass", [])]
        self.wait_for(lambda: self.calls(proxy) == used)
        # While it is switched off, it is not claimed when its service comes back.
        self.stop(proxy.server)
        proxy = sensors()
        open(back, "w").close()
        self.finish(process)
        self.assertEqual(self.calls(proxy), used[:1])

    def test_without_any_compass_it_is_refused(self):
        self.assertEqual(self.run_driver("compass", "0"), ["enabled 2 "])


class Feedback(OnPrivateBuses):
    def test_the_real_daemon_takes_the_event(self):
        self.start_service("/usr/libexec/feedbackd", GSETTINGS_BACKEND="memory")
        self.wait_for_bus_object("org.sigxcpu.Feedback", "/org/sigxcpu/Feedback")
        self.assertEqual(self.reply("call", "vire://com.vire.vibrate/vibrate",
                                    '{"period":200,"duration":500}'), {"returnValue": True})
