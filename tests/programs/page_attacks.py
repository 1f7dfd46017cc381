#!/usr/bin/env python3
"""What the server of a plug-in's page refuses: page_attacks.py TAV-PAGE FOLDER.

The application is played here too, so that it can send what it likes, or take nothing.
"""
import os
import socket
import struct
import subprocess
import sys
import time
from collections import Counter
from concurrent.futures import ThreadPoolExecutor

from page_client import Page, web_page

ANSWER, CALL_FUNCTION, METHOD_CALL = 3, 1, 6
FOREIGN = "http://evil.example"
OPENED = "Sec-Fetch-Site: none\r\nSec-Fetch-Mode: navigate\r\n"

FILES = [  # path, host, origin, headers, status
    ("TOKEN/", "localhost:99", "http://localhost:99", "Sec-Fetch-Site: same-origin\r\n", 200),
    ("TOKEN/", None, None, OPENED, 200),
    ("TOKEN/", None, None, OPENED.replace("none", "cross-site"), 403),
    ("TOKEN/", None, None, OPENED.replace("navigate", "no-cors"), 403),
    ("TOKEN/", None, None, "Sec-Purpose: prefetch;prerender\r\n", 503),
    ("TOKEN/", None, FOREIGN, "", 403),
    ("TOKEN/", "evil.example", None, "", 403),
    ("/0123456789abcdef0123456789abcdef/", None, None, "", 404),
    ("TOKEN/inside/link.txt", None, None, "", 200),
    ("TOKEN/outside.txt", None, None, "", 404),
    ("TOKEN/outside/secret.txt", None, None, "", 404),
    ("TOKEN/../secret.txt", None, None, "", 404),
    ("TOKEN/..%2fsecret.txt", None, None, "", 400),
    ("TOKEN/inside/%2e%2e/%2e%2e/secret.txt", None, None, "", 404),
    ("TOKEN/.tav/..%2f..%2fsecret.txt", None, None, "", 400),
    ("TOKEN//etc/passwd", None, None, "", 404),
    ("TOKEN/index.html%00.txt", None, None, "", 400),
    ("TOKEN/.hidden", None, None, "", 404),
    ("TOKEN/inside/.hidden", None, None, "", 404),
    ("TOKEN/inside/", None, None, "", 404),
    ("TOKEN/pipe", None, None, "", 404),
    ("TOKEN/.tav/component.js", None, None, "", 200),
    ("TOKEN/.tav/call", None, None, "", 405),
]

CALLS = [  # origin (None: the page's own), whether with the cookie, page, body, status
    (FOREIGN, True, "1", "{}", 403),
    ("", True, "1", "{}", 403),
    (None, False, "1", "{}", 403),
    (None, True, "0", "{}", 410),
    (None, True, "99999999999", "{}", 410),
    (None, True, "1", "[" * (1 << 20), 400),
    (None, True, "1", '{"method": "x", "arguments": [5]}', 400),
    (None, True, "1", '{"method": "\\ud800"}', 400),
    (None, True, "1", "x" * ((16 << 20) + 1), 413),
]

ABUSES = [  # what a page sends over its WebSocket, and the code with which it is closed
    (b"\x81\x03abc", 1002),  # without a mask
    (b"\x81\xff" + struct.pack(">Q", 1 << 62) + bytes(4), 0),
    (b"\x81\x82\0\0\0\0{}" * 2000, 1008),
    (b"\x82\x81\0\0\0\0x", 1008),
    (b"\x81\x8b\0\0\0\0" b'{"touch":5}', 1008),
    (b"\x81\x87\0\0\0\0" b'{"x":{}', 1008),
]


class Application:
    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(path)
        self.stream = self.socket.makefile("rb")

    def send(self, kind, content):
        self.socket.sendall(struct.pack("=BQ", kind, len(content)) + content)

    def receive(self):
        kind, length = struct.unpack("=BQ", self.stream.read(9))
        return kind, self.stream.read(length)

    def call(self, name, times):
        for _ in range(times):
            self.send(CALL_FUNCTION, text(name) + b"i\0\0\0\0")

    def is_refused(self):
        return self.socket.recv(1) == b""


def text(value):
    return b"s" + struct.pack("=Q", len(value)) + value


def fill(folder):
    """The page's files, and what none of them may lead to."""
    os.makedirs(folder + "/page/inside")
    for name in ("secret.txt", "page/.hidden", "page/inside/.hidden", "page/inside/file.txt"):
        with open(f"{folder}/{name}", "w", encoding="utf-8") as file:
            file.write("text")
    with open(folder + "/page/index.html", "w", encoding="utf-8") as file:
        file.write("<!-- <head> --><!doctype html><html><head title='>'><script>")
    with open(folder + "/page/appinfo.json", "w", encoding="utf-8") as file:
        file.write('{"hosts": ["https://tiles.example:8443"]}')
    os.symlink("../secret.txt", folder + "/page/outside.txt")
    os.symlink("..", folder + "/page/outside")
    os.symlink("file.txt", folder + "/page/inside/link.txt")
    os.mkfifo(folder + "/page/pipe")


def refuse(link):
    for path, host, origin, headers, status in FILES:
        answer = web_page.Page(link, path, host, origin, headers=headers)
        assert answer.status == status, (path, host, origin, headers, answer.status)
    document = web_page.Page(link, "TOKEN/")
    assert b"<head title='>'><script src=" in document.body()
    policy = document.headers["content-security-policy"]
    assert "script-src 'self' https://tiles.example:8443; connect-src " in policy, policy
    page = Page(link)
    own = link[:link.index("/", 7)]
    for origin, has_cookie, number, body, status in CALLS:
        number = page.number if number == "1" else number
        answer = web_page.Page(link, f"TOKEN/.tav/call?page={number}", method="POST",
                               origin=own if origin is None else origin,
                               headers=page.cookie if has_cookie else "", content=body)
        assert answer.status == status, (origin, has_cookie, number, body[:50], answer.status)
    for path, origin, cookie in (("TOKEN/.tav/socket", FOREIGN, page.cookie),
                                 ("TOKEN/.tav/socket", "", page.cookie),
                                 ("TOKEN/.tav/socket", None, "")):
        assert web_page.Page(link, path, origin=origin, headers=cookie).status == 403
    for path in ("TOKEN/socket", "TOKEN/inside/.tav/socket"):
        assert web_page.Page(link, path, headers=page.cookie).status == 404
    stranger = web_page.Page(link, "TOKEN/.tav/socket?page=1", headers=page.cookie)
    assert "newer" in stranger.until("end")
    for data, code in ABUSES:
        page = Page(link)
        page.socket.sendall(data)
        while not isinstance(end := page.receive(), tuple):
            pass
        assert end in (("closed", code), ("closed", 0)), (data[:20], end)


def main(tav_page, folder):
    fill(folder)
    path = folder + "/socket"
    with subprocess.Popen([tav_page, "--socket", path, folder + "/page/index.html"], text=True,
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE) as server:
        link = server.stdout.readline().strip()
        refuse(link)
        # An application that breaks the protocol, and one too many.
        for kind, content in ((ANSWER, b""), (99, b""), (CALL_FUNCTION, text(b"x") + b"i\1\0\0\0")):
            application = Application(path)
            application.send(kind, content)
            assert application.is_refused()
        application = Application(path)
        assert Application(path).is_refused()
        # A crowd of connections that say nothing disturbs nobody.
        page = Page(link)
        port = page.socket.getpeername()
        crowd = [socket.create_connection(port, timeout=60) for _ in range(1000)]
        with ThreadPoolExecutor(300) as pool:
            call = pool.submit(page.call, "x")
            while (message := application.receive())[0] != METHOD_CALL:
                pass
            application.send(ANSWER, message[1][:5] + b"b\0n")
            assert call.result() == (200, {"reply": None})
            # While a page takes nothing, nothing more is read from the application.
            flood = pool.submit(application.call, b"x" * (1 << 20), 100)
            print(*page.call("x"))
            assert not flood.done()
            page = Page(link)
            flood.result()
            # An application that answers nothing has few calls, and the others wait or are told.
            calls = [pool.submit(page.call, "x") for _ in range(280)]
            while sum(each.done() for each in calls) < 9:
                time.sleep(0.01)
            page = Page(link)
            for _ in range(16):
                while (message := application.receive())[0] != METHOD_CALL:
                    pass
                application.send(ANSWER, message[1][:5] + b"b\0n")
            for result, count in sorted(Counter(str(each.result()) for each in calls).items()):
                print(count, result)
            # One that takes nothing cannot fill the server's memory.
            calls = [pool.submit(page.call, "x", "y" * (15 << 20)) for _ in range(3)]
            while not any(each.done() for each in calls):
                time.sleep(0.01)
            server.stdin.close()
            print(*sorted({each.result()[1]["error"] for each in calls}), sep="\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
