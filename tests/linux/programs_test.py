"""Whole programs: the binaries that run on a simulated device, here without one."""

import re
import sys
from pathlib import Path

from buses import BUILD, HERE, OnPrivateBuses


TAVSIM = BUILD + "/bin/tavsim"
SOURCE = str(Path(HERE).parents[1])


class Programs(OnPrivateBuses):
    def lines_of(self, *command):
        return self.finish(self.start_program(*command))

    def device_services(self):
        self.start_service("device_services.py", "0")
        for name in ("battery", "clock"):
            self.wait_for_bus_object("com.vire." + name, "/com/vire/" + name)

    def test_the_tour_is_the_same_program(self):
        tour = BUILD + "/bin/tour"
        rows = {
            (tour,): {"hardware id": "-1", "before it is enabled": "error 5: *",
                      "orientation right": "error 2: Unable to communicate with app card",
                      "one reply": "ok", "answered": "yes", "vibrate": "ok",
                      "items": "none: *there is no shop on this system*"},
            (TAVSIM, "run", "--virtual-time", tour): {
                "hardware id": "501", "orientation right": "ok", "one reply": "ok",
                "answered": "yes", "vibrate": "ok"},
        }
        for command, expected in rows.items():
            with self.subTest(command=command):
                lines = self.lines_of(*command)
                for name, value in expected.items():
                    row = re.escape("  " + name) + " +" + re.escape(value).replace(r"\*", ".*")
                    self.assertTrue([line for line in lines if re.fullmatch(row, line)], name)

    def test_the_example_of_services_is_the_same_program(self):
        services = BUILD + "/bin/services"
        simulated = Path(SOURCE, "examples/services.txt").read_text().splitlines()
        self.device_services()
        lines = self.lines_of(services)
        self.assertEqual(sorted(re.sub(r"\d+$", "n", line) for line in lines), sorted([
            *simulated[2:4], *["Tick n"] * 3, "Nobody to greet: no such service: com.vire.nowhere",
            "Nobody to greet: no such service: com.vire.vault"]))

    def test_programs_that_were_linked_otherwise_are_started_by_tavsim(self):
        self.device_services()
        commands = [[BUILD + "/tests/programs/service_reply_linux_sdl_first"]]
        library = Path(BUILD, "lib/libtavlinux.so").read_bytes()
        if b"__asan_init" not in library:  # Python is built without AddressSanitizer
            commands.append([sys.executable, SOURCE + "/tests/programs/loads_library.py",
                             BUILD + "/lib/libtav.so"])
        for command in commands:
            with self.subTest(command=command):
                lines = self.lines_of(TAVSIM, "run", "--real", *command)
                self.assertTrue(lines[-1].endswith("percent 72"), lines)
