"""Private buses, the services on them, and the driver that uses these through libtav."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import time

import dbus
import dbus.bus
import dbusmock

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = os.environ["TAV_BUILD"]
DRIVER = BUILD + "/bin/tav_linux_driver"
LONGEST_RUN = 60


class OnPrivateBuses(dbusmock.DBusTestCase):
    @classmethod
    def setUpClass(cls):
        cls.start_session_bus()
        cls.start_system_bus()
        cls.session = cls.get_dbus(False)
        cls.system = cls.get_dbus(True)

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        # An application looks for its files beside its executable, so each test has a copy.
        self.program = shutil.copy(DRIVER, self.folder)

    def environment(self, **changes):
        environment = dict(os.environ, SDL_VIDEODRIVER="dummy", LANG="C", LC_ALL=None,
                           LC_MESSAGES=None, HOME=self.folder, XDG_RUNTIME_DIR=self.folder,
                           XDG_DATA_HOME=self.folder + "/share",
                           XDG_CONFIG_HOME=self.folder + "/config") | changes
        return {name: value for name, value in environment.items() if value is not None}

    def start(self, *arguments, **changes):
        return self.start_program(self.program, *arguments, **changes)

    def start_program(self, *command, stderr=subprocess.PIPE, **changes):
        process = subprocess.Popen(command, env=self.environment(**changes), stdout=subprocess.PIPE,
                                   stderr=stderr, text=True)
        self.addCleanup(process.__exit__, None, None, None)
        self.addCleanup(process.kill)
        return process

    def start_service(self, *command, **changes):
        """Starts one of the programs in this folder, or another program, as a service."""
        if command[0].endswith(".py"):
            command = (sys.executable, HERE + "/" + command[0], *command[1:])
        return self.start_program(*command, stderr=subprocess.DEVNULL, **changes)

    def finish(self, process):
        lines = process.stdout.read().splitlines()
        self.assertEqual(process.stderr.read(), "")
        self.assertEqual(process.wait(LONGEST_RUN), 0, lines)
        return lines

    def run_driver(self, *arguments, **changes):
        return self.finish(self.start(*arguments, **changes))

    def reply(self, *arguments):
        (line,) = self.run_driver(*arguments)
        return json.loads(line.removeprefix("reply "))

    def serve(self, name, path, interface, on_system=False):
        """Starts a mock, which ends with the test, and returns its object."""
        server = self.spawn_server(name, path, interface, on_system, stdout=subprocess.DEVNULL)
        self.addCleanup(self.stop, server)
        mock = self.mock(name, path, on_system)
        mock.server = server
        return mock

    def mock(self, name, path, on_system=False):
        bus = self.system if on_system else self.session
        return dbus.Interface(bus.get_object(name, path), dbusmock.MOCK_IFACE)

    @staticmethod
    def stop(server):
        server.terminate()
        server.wait()

    def start_bus(self, address):
        """Starts a bus at the address, which the test may stop."""
        server = self.start_service("dbus-daemon", "--session", "--nofork", "--nopidfile",
                                    "--address=" + address, "--print-address")
        server.stdout.readline()
        return server

    @staticmethod
    def has_owner(address, name):
        bus = dbus.bus.BusConnection(address)
        has_owner = bus.name_has_owner(name)
        bus.close()
        return has_owner

    def wait_for(self, is_so):
        time_limit = time.monotonic() + LONGEST_RUN
        while not is_so():
            self.assertLess(time.monotonic(), time_limit)

    def calls(self, mock):
        return [(str(name), [a for a in arguments]) for _, name, arguments in mock.GetCalls()]
