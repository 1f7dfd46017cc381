"""A page in a browser as far as a web server on this machine sees it.

WebSockets are spoken by hand, because the attacks of the tests break their rules.
"""
import json
import re
import socket
import struct


class Page:
    """A connection to the server, with one request: for a WebSocket if the path ends so."""

    def __init__(self, link, path="TOKEN/socket", host=None, origin=None, method="GET",
                 headers="", content=""):
        port, self.folder = re.fullmatch(r"http://127.0.0.1:(\d+)(/\w+/)", link).groups()
        host = host or "127.0.0.1:" + port
        if path.partition("?")[0].endswith("socket"):
            origin = "http://" + host if origin is None else origin
            headers += "Connection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
            headers += "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n"
            headers += "Sec-WebSocket-Extensions: permessage-deflate\r\n"
        if content:
            headers += f"Content-Length: {len(content)}\r\n"
        if origin:
            headers += f"Origin: {origin}\r\n"
        path = path.replace("TOKEN/", self.folder)
        self.socket = socket.create_connection(("127.0.0.1", int(port)), timeout=60)
        self.socket.sendall(f"{method} {path} HTTP/1.1\r\nHost: {host}\r\n{headers}\r\n"
                            f"{content}".encode())
        self.stream = self.socket.makefile("rb")
        self.status = int(self.stream.readline().split()[1])
        self.headers = {}
        while (line := self.stream.readline().decode().strip()) != "":
            name, value = line.split(": ", 1)
            self.headers[name.lower()] = value

    def send(self, message, kind=1):
        data = message if isinstance(message, bytes) else json.dumps(message).encode()
        form = ("B", 0) if len(data) < 126 else ("BH", 126) if len(data) < 1 << 16 else ("BQ", 127)
        length = (form[1] or len(data)) | 0x80
        rest = [len(data)] if form[1] else []
        mask = bytes(4)
        self.socket.sendall(struct.pack(">B" + form[0], kind | 0x80, length, *rest) + mask + data)

    def receive(self):
        """The next message; how the connection was closed where it was."""
        try:
            while True:
                kind, length = self.stream.read(2)
                if length > 125:
                    form = ">H" if length == 126 else ">Q"
                    (length,) = struct.unpack(form, self.stream.read(struct.calcsize(form)))
                data = self.stream.read(length)
                if kind & 15 == 8:
                    return "closed", struct.unpack(">H", data[:2])[0]
                if kind & 15 == 1:
                    return json.loads(data)
                if kind & 15 == 2:
                    return data
        except (ValueError, struct.error, ConnectionError):
            return "closed", 0

    def until(self, name):
        """What the next message with that member says; "closed" when there is none."""
        while name not in (message := self.receive()):
            if isinstance(message, tuple):
                return "closed"
        return message[name]

    def body(self):
        return self.stream.read(int(self.headers.get("content-length", 0)))
