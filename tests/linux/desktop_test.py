"""Requests to the desktop, with and without somebody there to answer them."""

import os
from pathlib import Path

from buses import DRIVER, OnPrivateBuses


PORTAL = "org.freedesktop.portal.Desktop"
PORTAL_PATH = "/org/freedesktop/portal/desktop"
LAUNCH = "vire://com.vire.applicationManager/launch"


class Desktop(OnPrivateBuses):
    def portal(self, code, *slow):
        server = self.start_service("portal_service.py", code, *slow)
        self.wait_for_bus_object(PORTAL, PORTAL_PATH)
        return server

    def asked(self, portal):
        # Messages arrive in order: after this reply, all earlier ones have been handled.
        self.session.call_blocking(PORTAL, PORTAL_PATH, "com.example.Test", "Release", "", ())
        self.stop(portal)
        return portal.stdout.read().splitlines()

    def test_pages_and_mails_are_opened_by_the_portal(self):
        portal = self.portal("0")
        opened = {"https://example.com/?a=$(touch x)": 0, "HTTP://example.com": 0,
                  "localhost:8080/x": "http://localhost:8080/x",
                  "www.example.org:8": "http://www.example.org:8"}
        refused = ["", "http://", "file:///x", "javascript:x"]
        lines = self.run_driver(*[word for target in [*opened, *refused] for word in (
            "call", LAUNCH, f'{{"id":"com.vire.app.browser","params":{{"target":"{target}"}}}}')],
            "mail", "S;ubject", "`Body`", "someone@example.com")
        self.assertEqual(lines[:len(opened)], ['reply {"returnValue":true}'] * len(opened))
        for line in lines[len(opened):-1]:
            self.assertIn("no address of a page", line)
        self.assertEqual(self.asked(portal), [
            f"OpenURI  {address or target} {{}}" for target, address in opened.items()] + [
            "ComposeEmail  {'subject': 'S;ubject', 'body': '`Body`', "
            "'addresses': ['someone@example.com']}"])

    def test_what_one_way_calls_came_to_is_traced(self):
        self.portal("2")
        trace = self.folder + "/trace"
        lines = self.run_driver(
            "mail", 'a "quote"', "", "x@y.z", "browse", "file:///x", "port", "4000", "1", "vibrate",
            "0", "100", "send", "vire://org.freedesktop.DBus/GetId", "no", "call", LAUNCH,
            '{"id":"com.vire.app.browser","params":{"target":"y.z"}}', "call",
            "vire://com.example.Nobody/X", "{}", TAV_TRACE="tav_e", TAV_TRACE_FILE=trace, PATH="/")
        self.assertEqual(lines[:4], ["mail 0", "browse 0", "port 0", "vibrate 0"])
        lines = Path(trace).read_text().splitlines()
        self.assertEqual({line.removeprefix("tav_e HKSCaller ") for line in lines}, {
            "the payload is no JSON object", "the target is no address of a page",
            "nothing opens http://y.z", "there is nothing that vibrates",
            "org.freedesktop.DBus.Error.ServiceUnknown: The name org.fedoraproject.FirewallD1 "
            "was not provided by any .service files", "the payload is no JSON",
            "no such service: com.example.Nobody"})

    def test_without_a_portal_a_program_gets_one_argument(self):
        opener, opened = Path(self.folder, "xdg-open"), Path(self.folder, "opened")
        opener.write_text(f'#!/bin/sh\nprintf "%s|" "$#" "$1" >{opened}.part\n'
                          f"mv {opened}.part {opened}\n")
        opener.chmod(0o700)
        path = self.folder + ":" + os.environ["PATH"]
        rows = {("browse", "--help; rm x"): "1|http://--help; rm x|",
                ("browse", "example.com/'$x"): "1|http://example.com/'$x|",
                ("mail", "S&x=", 'a b', "x@y.z"):
                    "1|mailto:x%40y.z?subject=S%26x%3D&body=a%20b|"}
        for command, expected in rows.items():
            with self.subTest(command=command):
                self.run_driver(*command, "wait", str(opened), PATH=path)
                self.assertEqual(opened.read_text(), expected)
                opened.unlink()

    def test_every_player_is_paused(self):
        path, interface = "/org/mpris/MediaPlayer2", "org.mpris.MediaPlayer2.Player"
        players = [self.serve("org.mpris.MediaPlayer2." + name, path, interface)
                   for name in ("one", "two.instance7")]
        recorder = self.serve("com.example.Recorder", path, interface)
        for service in (*players, recorder):
            service.AddMethod("", "Pause", "", "", "")
        self.run_driver("pause", "call", "vire://com.vire.mediad/service/pauseAllMediaPlayback",
                        "{}", "call", "vire://com.example.Nobody/X", "{}")
        for player in players:
            self.assertEqual(self.calls(player)[0], ("Pause", []))
        self.assertEqual(self.calls(recorder), [])

    def test_ports_are_opened_and_closed_at_run_time(self):
        name, path = "org.fedoraproject.FirewallD1", "/org/fedoraproject/FirewallD1"
        firewall = self.serve(name, path, name + ".zone", True)
        firewall.AddMethod("", "addPort", "sssi", "s", 'ret = "public"')
        firewall.AddMethod("", "removePort", "sss", "s", "raise dbus.exceptions.DBusException("
                           '"NOT_ENABLED: 4000:tcp", name="org.fedoraproject.FirewallD1.Exception")')
        closing = '{"protocol":"TCP","port":4000,"isEnabled":false}'
        self.assertEqual(self.run_driver("port", "4000", "1", "call",
                                         "kora://com.vire.firewall/portCtrl", closing),
                         ["port 0", 'reply {"returnValue":true}'])
        self.assertEqual(self.calls(firewall), [("addPort", ["", "4000", "tcp", 0]),
                                                ("addPort", ["", "4000", "udp", 0]),
                                                ("removePort", ["", "4000", "tcp"])])

    def test_the_motor_runs_by_pattern_or_by_event(self):
        name, path = "org.sigxcpu.Feedback", "/org/sigxcpu/Feedback"
        feedback = self.serve(name, path, name)
        feedback.AddMethod("", "TriggerFeedback", "ssa{sv}i", "u", "ret = 1")
        vibrate = ("call", "vire://com.vire.vibrate/vibrate", '{"period":200,"duration":500}')
        self.assertTrue(self.reply(*vibrate)["returnValue"])
        feedback.AddMethod(name + ".Haptic", "Vibrate", "sa(du)", "b", "ret = True")
        self.assertTrue(self.reply(*vibrate)["returnValue"])
        self.run_driver("vibrate", "200", "400")
        program = os.path.basename(DRIVER)
        self.assertEqual(self.calls(feedback), [
            ("TriggerFeedback", [program, "phone-incoming-call", {"profile": "quiet"}, 1]),
            *[("Vibrate", [program, [(1.0, 100), (0.0, 100)] * 2 + rest])
              for rest in ([(1.0, 100)], [])]])

    def test_switches_that_the_desktop_has(self):
        keyboard = self.serve("sm.puri.OSK0", "/sm/puri/OSK0", "sm.puri.OSK0")
        keyboard.AddMethod("", "SetVisible", "b", "", "")
        saver = self.serve("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                           "org.freedesktop.ScreenSaver")
        saver.AddMethod("", "Inhibit", "ss", "u", "ret = 7")
        saver.AddMethod("", "UnInhibit", "u", "", "")
        lines = self.run_driver("keyboard", "1", "keyboard", "0", "timeout", "0", "timeout", "0",
                                "timeout", "1", "banners", "1", "call",
                                "vire://org.freedesktop.ScreenSaver/Nothing", "{}")
        self.assertEqual(lines[:-1], ["keyboard 0"] * 2 + ["timeout 0"] * 3 + ["banners 0"])
        self.assertEqual(self.calls(keyboard), [("SetVisible", [True]), ("SetVisible", [False])])
        self.assertEqual([name for name, _ in self.calls(saver)], ["Inhibit", "UnInhibit"])

    def test_an_inhibition_is_what_the_portal_responds(self):
        refused = "timeout 2 Unable to communicate with app card"
        release = ("call", f"vire://{PORTAL}{PORTAL_PATH}/com.example.Test.Release", "{}")
        inhibit = "Inhibit  8 {'reason': 'The application asked for it'}"
        for arguments, outcomes in ((["0"], ["timeout 0"] * 2), (["2"], [refused] * 2),
                                    (["0", "slow"], [refused] * 2)):
            with self.subTest(arguments=arguments):
                portal = self.portal(*arguments)
                lines = self.run_driver("timeout", "0", "timeout", "0", *release, "timeout", "1")
                self.assertEqual(lines[:2], outcomes)
                count = 2 if arguments == ["2"] else 1
                self.assertEqual(sorted(self.asked(portal)), ["Close"] * count + [inhibit] * count)

    def test_what_nobody_can_do_is_refused(self):
        card = "Unable to communicate with app card"
        lines = self.run_driver("refusals", "banners", "0", "keyboard", "1", "timeout", "0")
        self.assertEqual(lines[:5],
                         [f"orientation 2 {card}", f"gestures 2 {card}", f"pause UI 2 {card}",
                          "touch 2 Could not communicate with Touch Aggression service",
                          "JavaScript 2 Could not register JS Handlers. Either this was not "
                          "launched as a plugin, or the IPC is not yet set up."])
        self.assertIn("there is no shop on this system", lines[5])


class NoBuses(OnPrivateBuses):
    def test_everything_is_refused_and_nothing_hangs(self):
        gone = "unix:path=" + self.folder + "/none"
        card = "Unable to communicate with app card"
        lines = self.run_driver(
            "call", "vire://com.example.Weather/Ask", "{}", "browse", "http://example.com", "port",
            "4000", "1", "pause", "keyboard", "1", "timeout", "0", "timeout", "1",
            DBUS_SESSION_BUS_ADDRESS=gone, DBUS_SYSTEM_BUS_ADDRESS=gone, PATH="/")
        self.assertEqual(lines, [
            "call 2 Unable to dispatch service call", f"browse 2 {card}", f"port 2 {card}",
            f"pause 2 {card}", "keyboard 2 Could not communicate with card", f"timeout 2 {card}",
            "timeout 0"])
