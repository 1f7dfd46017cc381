"""The application as the plug-in of a page, for which this test speaks in place of tav-page."""

import json
import os
import socket
import struct
import subprocess
from pathlib import Path

from buses import BUILD, LONGEST_RUN, OnPrivateBuses

CALL_FUNCTION, ANSWER, METHOD_LIST, METHOD_CALL, CONSOLE_LINE, PROBLEM = 1, 3, 5, 6, 8, 9
PICTURE = BUILD + "/bin/tav_linux_picture"
FRAME, FRAME_WANTED, TOUCH, KEY, TYPED = 4, 7, 10, 11, 12


def items(*values):
    content = b""
    for value in values:
        if value is None:
            content += b"n"
        elif isinstance(value, bool):
            content += b"b" + bytes([value])
        elif isinstance(value, int):
            content += b"i" + struct.pack("=i", value)
        else:
            content += b"s" + struct.pack("=Q", len(value.encode())) + value.encode()
    return content


def values(content):
    while content:
        tag, content = content[:1], content[1:]
        size = {b"n": 0, b"b": 1, b"i": 4, b"s": 8}[tag]
        value = int.from_bytes(content[:size], "little") if size else None
        if tag == b"s":
            size += value
            value = content[8:size].decode()
        content = content[size:]
        yield value


class Page(OnPrivateBuses):
    def listen(self):
        path = self.folder + "/page"
        Path(path).unlink(missing_ok=True)
        self.listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(self.listener.close)
        self.listener.bind(path)
        self.listener.listen()
        self.listener.settimeout(LONGEST_RUN)
        return path

    def accept(self):
        self.socket, _ = self.listener.accept()
        self.addCleanup(self.socket.close)
        self.socket.settimeout(LONGEST_RUN)
        self.stream = self.socket.makefile("rb")

    def send(self, kind, *values):
        content = items(*values)
        self.socket.sendall(struct.pack("=BQ", kind, len(content)) + content)

    def receive_raw(self):
        kind, length = struct.unpack("=BQ", self.stream.read(9))
        return kind, self.stream.read(length)

    def receive(self):
        kind, content = self.receive_raw()
        return kind, *values(content)

    def test_the_page_calls_and_is_called(self):
        process = self.start("plugin", TAV_PAGE_SOCKET=self.listen())
        self.accept()
        self.send(METHOD_LIST, 7)
        self.assertEqual(self.receive(), (ANSWER, 7, 3, "echo", "ask", "end"))
        self.send(METHOD_CALL, 1, "ask", 1, "\u00e9\n")
        self.assertEqual(self.receive(), (CALL_FUNCTION, "asked", 2, "\u00e9\n", None))
        self.send(METHOD_CALL, 2, "echo", 2, "x", None)
        self.assertEqual(self.receive(), (ANSWER, 2, 0, "2 x"))
        self.assertEqual(self.receive(), (ANSWER, 1, 0, "told"))
        self.send(METHOD_CALL, 3, "nowhere", 0)
        self.assertEqual(self.receive(), (ANSWER, 3, 1, "Unknown Function"))
        self.send(CONSOLE_LINE, "log", "hello")
        self.send(CONSOLE_LINE, "warn", "beware")
        self.send(PROBLEM, "page.js:3: a mistake")
        self.send(METHOD_CALL, 4, "end", 0)
        self.assertEqual(self.receive()[:2], (ANSWER, 4))
        self.socket.sendall(b"\xff" * 9)
        self.stream.read()
        output, errors = process.communicate()
        refused = ("%s 2 Could not register JS Handlers. Either this was not launched as a plugin, "
                   "or the IPC is not yet set up.", "%s 2 Unable to dispatch message")
        self.assertEqual(output.splitlines(), [
            "again 0", *[line % "thread" for line in refused], *[line % "fork" for line in refused],
            "asked 0", "[page] hello", "gone 2 Unable to dispatch message"])
        self.assertEqual(errors.splitlines()[:2], ["[page] beware", "[page] page.js:3: a mistake"])
        self.assertRegex(errors.splitlines()[2], "^tav: the page has ended: .*closed")
        self.assertEqual(process.returncode, 0)

    def test_without_a_page_there_is_no_plugin(self):
        self.assertEqual(self.run_driver("plugin"), ["plugin 0"])
        process = self.start("plugin", TAV_PAGE_SOCKET=self.folder + "/page")
        self.assertEqual(process.communicate(), (
            "plugin 1 Could not register JS Handlers. Either this was not launched as a plugin, or "
            "the IPC is not yet set up.\n", f"tav: {self.folder}/page: No such file or directory; "
            "TAV_PAGE_SOCKET names it, but no page is served there. Start the program "
            "with tav-page.\n"))

    def display(self):
        """Starts an X server that ends with the test."""
        server = self.start_program("Xvfb", "-displayfd", "1", "-noreset", "-nolisten", "tcp",
                                    stderr=subprocess.DEVNULL)
        return ":" + server.stdout.readline().strip()

    def see(self, is_first, color):
        self.send(FRAME_WANTED, is_first)
        self.check_frame(color)

    def check_frame(self, color):
        kind, frame = self.receive_raw()
        header, pixels = frame.split(b"\n", 1)
        self.assertEqual((kind, json.loads(header)), (FRAME, {
            "width": 480, "height": 800, "parts": [[0, 0, 480, 800]]}))
        self.assertTrue(pixels == bytes(color) * 480 * 800)

    def test_the_picture_is_seen_and_touched_in_the_page(self):
        display = self.display()
        # A software renderer. Memory that libX11 and the driver keep is no leak of the program's.
        x11 = {"LIBGL_ALWAYS_SOFTWARE": "1", "LP_NUM_THREADS": "0", "DISPLAY": display,
               "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}
        for driver, *arguments in ("dummy",), ("x11",), ("x11", "opengl"):
            with self.subTest(driver=driver, arguments=arguments):
                self.check_picture(*arguments, SDL_VIDEODRIVER=driver,
                                   **(x11 if driver == "x11" else {}))

    def check_picture(self, *arguments, **environment):
        process = self.start_program(PICTURE, *arguments, TAV_PAGE_SOCKET=self.listen(),
                                     **environment)
        self.accept()
        line = process.stdout.readline
        self.see(True, (0, 0, 0))
        self.send(TOUCH, "down", 480, 6)  # beside the surface
        self.send(TOUCH, "up", 479, 6)  # of nothing
        self.send(TOUCH, "down", 5, 6)
        self.assertEqual(line(), "+5,6, 1 at 5,6\n")
        self.see(False, (255, 0, 0))
        self.send(TOUCH, "move", 479, 799)
        self.send(TOUCH, "up", 480, 800)
        self.assertEqual(line(), "-479,799, 0 at 479,799\n")
        self.send(KEY, True, "nothing")
        self.send(KEY, True, "left ctrl")
        self.assertEqual(line(), "+left ctrl 0, 0 at 479,799 left ctrl\n")
        self.see(True, (0, 0, 0))  # a page that begins to look presses no key
        self.assertEqual(line(), "-left ctrl 0, 0 at 479,799\n")
        self.send(TYPED, "\n")
        self.send(TYPED, "A\u20ac")
        self.assertEqual([line().split(",")[0] for _ in range(6)], [
            "+left shift 0", "+a 41", "-a 0", "-left shift 0", "+unknown key 20ac",
            "-unknown key 0"])
        self.send(KEY, True, "q")
        self.assertEqual(line(), "+q 71, 0 at 479,799 q\n")
        self.send(TOUCH, "down", 1, 2)
        self.assertEqual(line(), "+1,2, 1 at 1,2 q\n")
        self.socket.shutdown(socket.SHUT_RDWR)
        output, errors = process.communicate()
        self.assertEqual(output, "-1,2, 0 at 1,2\n-q 0, 0 at 1,2\n")
        self.assertRegex(errors, "^tav: the page has ended: .*closed")
        self.assertEqual(process.returncode, 0, errors)

    def test_a_picture_is_sent_while_the_application_waits_without_handling_events(self):
        process = self.start_program(PICTURE, TAV_PAGE_SOCKET=self.listen())
        self.accept()
        self.send(FRAME_WANTED, True)
        self.send(KEY, True, "w")
        process.stdout.readline()
        self.check_frame((0, 0, 0))
