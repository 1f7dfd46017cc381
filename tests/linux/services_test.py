"""Calls to services on the session bus and the system bus."""

import json
import os
import socket
import time

from buses import LONGEST_RUN, OnPrivateBuses


class Services(OnPrivateBuses):
    NAME = "com.example.Weather"
    URI = "vire://com.example.Weather/"

    def weather(self, on_system=False):
        mock = self.serve(self.NAME, "/com/example/Weather", self.NAME, on_system)
        mock.AddMethod("", "Ask", "si", "s", 'ret = args[0] + " " + str(args[1])')
        mock.AddMethod("", "Fail", "", "", "raise dbus.exceptions.DBusException("
                       '"too wet", name="com.example.Wet")')
        mock.AddMethod("", "Warn", "", "", 'self.EmitSignal("", "Warned", "su", ["rain", 7])')
        mock.AddMethod("", "Count", "", "t", "ret = 18446744073709551615")
        return mock

    def test_calls_find_their_method_by_introspection(self):
        for on_system in (False, True):
            with self.subTest(on_system=on_system):
                mock = self.weather(on_system)
                self.assertEqual(self.reply("call", self.URI + "Ask", '["sun",5]'),
                                 {"returnValue": True, "arg0": "sun 5"})
                self.assertEqual(self.reply("call", self.URI + "Ask", '{"arg2":5,"arg1":"sun"}'),
                                 {"returnValue": True, "arg0": "sun 5"})
                self.assertEqual(self.reply("call", self.URI + "com/example/Weather/" +
                                            self.NAME + ".Count", "")["arg0"], 2 ** 64 - 1)
                mock.AddProperty(self.NAME, "Rain", True)
                self.assertEqual(self.reply("call", self.URI + "org.freedesktop.DBus.Properties.Get",
                                            '["com.example.Weather","Rain"]'),
                                 {"returnValue": True, "value": True})
                self.run_driver("send", self.URI + "Ask", '["one way",1]')
                self.assertIn(("Ask", ["one way", 1]), self.calls(mock))
                self.stop(mock.server)

    def test_failures_are_replies(self):
        self.weather()
        number = "the payload has a number that is malformed or too large"
        rows = {
            (self.URI + "Fail", "{}"): "com.example.Wet: too wet",
            (self.URI + "Nothing", "{}"):
                "no such method: Nothing of com.example.Weather/com/example/Weather",
            (self.URI + "Ask", '["sun"]'): 'Ask: no argument "arg2"',
            (self.URI + "Ask", "["): "the payload is no JSON",
            ("vire://com.example.Nobody/Ask", "{}"): "no such service: com.example.Nobody",
            ("vire://no name/Ask", "{}"): "no such service: vire://no name/Ask",
            ("Ask", "{}"): "no such service: Ask",
            ("vire://org.foo.my-app/x", "{}"):
                "no object path: /org/foo/my-app; give one: vire://SERVICE/PATH/METHOD",
            (self.URI + "Ask", "[1e400]"): number,
            (self.URI + "Ask", "[100000000000000000000]"): number,
        }
        for (uri, payload), text in rows.items():
            with self.subTest(uri=uri):
                self.assertEqual(self.reply("call", uri, payload),
                                 {"returnValue": False, "errorCode": -1, "errorText": text})

    def test_subscriptions_receive_signals_until_they_end(self):
        mock = self.serve(self.NAME, "/com/example/Weather", self.NAME)
        mock.AddMethod("", "Tick", "", "", 'self.EmitSignal("", "Tock", "u", [1])')
        uri = "vire://com.example.Weather/org.freedesktop.DBus.Properties.PropertiesChanged"
        process = self.start("abandon", uri.replace("/org.", "/com/example/Weather/org."), "{}",
                             "subscribe", uri, '{"subscribe":true}', "2")
        time_limit = time.monotonic() + LONGEST_RUN
        mock.AddProperty(self.NAME, "Rain", 0.0)
        while process.poll() is None and time.monotonic() < time_limit:
            mock.UpdateProperties(self.NAME, {"Rain": time.monotonic()})
        lines = self.finish(process)
        self.assertEqual(len(lines), 2)
        first = json.loads(lines[0].removeprefix("reply "))
        self.assertEqual(first["interface_name"], self.NAME)
        self.assertIn("Rain", first["changed_properties"])

    def test_a_service_that_comes_back_different_is_looked_at_again(self):
        mock = self.weather()
        marker = self.folder + "/back"
        process = self.start("call", self.URI + "Ask", '["sun",5]', "wait", marker,
                             "call", self.URI + "Ask", "[true]")
        self.assertIn("sun 5", process.stdout.readline())
        self.stop(mock.server)
        mock = self.serve(self.NAME, "/com/example/Weather", self.NAME)
        mock.AddMethod("", "Ask", "b", "b", "ret = args[0]")
        open(marker, "w").close()
        self.assertEqual(self.finish(process), ['reply {"returnValue":true,"arg0":true}'])

    def test_only_the_thread_that_loaded_the_library_is_served(self):
        for place in ("thread", "fork"):
            refused, answered = sorted(self.run_driver(place, "Ask", "{}"))
            self.assertEqual(refused, "call 2 Unable to dispatch service call")
            self.assertIn("no such service: Ask", answered)

    def test_ten_thousand_calls_take_no_more_memory_than_a_thousand(self):
        self.weather()
        (line,) = self.run_driver("repeat", "10000", self.URI + "Ask", '["sun",5]')
        self.assertLess(int(line.removeprefix("grown ")), 1024, "kB")

    def test_hostile_services_harm_nobody(self):
        asked = self.folder + "/asked"
        service = self.start_service("hostile_service.py", self.NAME, asked)
        self.wait_for_bus_object(self.NAME, "/com/example/Weather")
        for path in ("garbage", "types", "signature"):
            reply = self.reply("call", f"{self.URI}{path}/Ask", '{"a":1}')
            self.assertFalse(reply["returnValue"], path)
        large = self.reply("call", self.URI + "large/Ask", "{}")
        self.assertEqual(len(large["a"]), 1000000)
        self.assertEqual(self.run_driver(*["call", self.URI + "other/Ask", "{}"] * 2),
                         ['reply {"returnValue":true,"a":1,"arg1":"not announced"}'] * 2)
        # The late reply to a cancelled call must not pass for the reply to the next.
        self.assertEqual(self.run_driver("cancel", self.URI + "late/Ask", "{}", asked,
                                         "call", self.URI + "late/Release", "{}"),
                         ['reply {"returnValue":true}'])
        # The service exits while a call waits for its reply.
        self.assertFalse(self.reply("call", self.URI + "exit/Ask", "{}")["returnValue"])
        self.assertEqual(service.stdout.read().split().count("/other"), 1)


class BusThatDisappears(OnPrivateBuses):
    def hostile(self, asked):
        self.start_service("hostile_service.py", "com.example.Weather", asked,
                           DBUS_SESSION_BUS_ADDRESS=self.address)
        self.wait_for(lambda: self.has_owner(self.address, "com.example.Weather"))

    def test_calls_fail_until_there_is_one_again(self):
        # Where the session bus is unless a variable says otherwise.
        self.address = "unix:path=" + self.folder + "/bus"
        asked, back = self.folder + "/asked", self.folder + "/back"
        server = self.start_bus(self.address)
        self.hostile(asked)
        weather = "vire://com.example.Weather/"
        process = self.start("call", weather + "other/Ask", "{}", "call", weather + "late/Ask",
                             "{}", "call", weather + "other/Ask", "{}", "wait", back,
                             "call", weather + "other/Ask", "{}",
                             DBUS_SESSION_BUS_ADDRESS=None)
        self.assertIn('"a":1', process.stdout.readline())
        self.wait_for(lambda: os.path.exists(asked))
        self.stop(server)
        for _ in range(2):
            self.assertIn('"returnValue":false', process.stdout.readline())
        self.start_bus(self.address)
        self.hostile(asked)
        open(back, "w").close()
        (line,) = self.finish(process)
        self.assertIn('"a":1', line)

    def test_subscriptions_go_on_when_there_is_one_again(self):
        self.address = "unix:path=" + self.folder + "/bus"
        process = None
        for first in ("0", "1000000"):
            server = self.start_bus(self.address)
            self.start_service("device_services.py", first, DBUS_SESSION_BUS_ADDRESS=self.address)
            self.wait_for(lambda: self.has_owner(self.address, "com.vire.clock"))
            process = process or self.start("subscribe", "vire://com.vire.clock/ticks", "{}", "999",
                                            DBUS_SESSION_BUS_ADDRESS=self.address)
            self.wait_for(lambda: json.loads(process.stdout.readline()[6:])["tick"] >= int(first))
            self.stop(server)
            # It goes on looking for a bus.
            with socket.socket(socket.AF_UNIX) as no_bus:
                no_bus.bind(self.folder + "/bus")
                no_bus.listen()
                no_bus.settimeout(LONGEST_RUN)
                for _ in range(2):
                    no_bus.accept()[0].close()
            os.unlink(self.folder + "/bus")
