"""The application as the plug-in of a page, for which this test speaks in place of tav-page."""

import socket
import struct

from buses import OnPrivateBuses

CALL_FUNCTION, ANSWER, METHOD_LIST, METHOD_CALL, CONSOLE_LINE, PROBLEM = 1, 3, 5, 6, 8, 9


def items(*values):
    content = b""
    for value in values:
        if value is None:
            content += b"n"
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
        self.listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(self.listener.close)
        self.listener.bind(path)
        self.listener.listen()
        return path

    def send(self, kind, *values):
        content = items(*values)
        self.socket.sendall(struct.pack("=BQ", kind, len(content)) + content)

    def receive(self):
        kind, length = struct.unpack("=BQ", self.stream.read(9))
        return kind, *values(self.stream.read(length))

    def test_the_page_calls_and_is_called(self):
        process = self.start("plugin", TAV_PAGE_SOCKET=self.listen())
        self.socket, _ = self.listener.accept()
        self.addCleanup(self.socket.close)
        self.stream = self.socket.makefile("rb")
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
            "tav-page, whose page this program is a plug-in of, sets TAV_PAGE_SOCKET\n"))
