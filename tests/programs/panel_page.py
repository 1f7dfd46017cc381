#!/usr/bin/env python3
"""A page of the panel as far as its server sees it: panel_page.py COMMAND LINK, see main()."""
import json
import os
import signal
import socket
import struct
import sys
import time

import web_page


class Page(web_page.Page):
    def answer(self, message):
        self.send({**message, "id": 1})
        while "id" not in (message := self.receive()):
            assert isinstance(message, dict), message
        return message

    def open(self):
        while not (devices := self.until("devices")):
            pass
        self.process = devices[0]["process"]
        self.send({"open": devices[0]["root"]})
        return self.until("opened")


FILES = [  # path, host, origin, method, status
    ("TOKEN/", None, None, "GET", 200),
    ("TOKEN/", "localhost:99", "http://localhost:99", "HEAD", 200),
    ("TOKEN/", None, None, "POST", 405),
    ("TOKEN/", None, "http://evil.example", "GET", 403),
    ("TOKEN/", "127.0.0.1.evil.example", None, "GET", 403),
    ("TOKEN/", "localhost:80.evil.example", None, "GET", 400),
    ("TOKEN/", "127.0.0.1\r\nHost: evil.example", None, "GET", 403),
    ("/", None, None, "GET", 404),
    ("//", None, None, "GET", 404),
    ("/0123456789abcdef0123456789abcdef/", None, None, "GET", 404),
    ("TOKEN/../devices/quern.json", None, None, "GET", 404),
    ("TOKEN/../panel/style.css", None, None, "GET", 404),
    ("TOKEN/%2e%2e/panel/style.css", None, None, "GET", 404),
    ("TOKEN//style.css", None, None, "GET", 404),
    ("TOKEN/socket", None, "http://127.0.0.1", "GET", 403),
    ("TOKEN/socket", None, "http://evil.example", "GET", 403),
    ("TOKEN/socket", None, "", "GET", 403),
    ("TOKEN/socket", "127.0.0.1.evil.example", None, "GET", 403),
    ("TOKEN/style.css/socket", None, None, "GET", 404),
    ("/0123456789abcdef0123456789abcdef/socket", None, None, "GET", 404),
    ("TOKEN/socket", "[::1]", None, "GET", 101),
]

FRAMES = [  # what a page sends, and how it is closed or refused
    (b"\x81\x03abc", 1002),  # without a mask
    (b"\x81\xff" + struct.pack(">Q", 1 << 62) + bytes(4), 0),
    (b"\x81\x82\0\0\0\0\xff\xfe", 1007),
    (b"\x81\x82\0\0\0\0{}" * 2000, 1008),
]

MESSAGES = [
    (b"[" * (1 << 20), "message: not JSON: "),
    (b'{"open": "/etc"}', "no device is running in /etc"),
    (b'{"ask": 5}', "message: ask: must be a string"),
    (b'{"ask": "quit"}', "no device is open"),
    (b'{"frames": true, "x": 1}', "message: x: unknown field"),
]


def attack(link):
    for path, host, origin, method, status in FILES:
        answer = Page(link, path, host, origin, method)
        assert answer.status == status, (path, host, origin, method, answer.status)
    assert "default-src 'none'; script-src 'self';" in answer.headers["content-security-policy"]
    assert "sec-websocket-extensions" not in answer.headers
    page = Page(link)
    page.open()
    half = [Page(link) for _ in range(2)]
    half[0].socket.sendall(b"\x81\xfe\xff")
    port = page.socket.getpeername()
    crowd = [socket.create_connection(port, timeout=60) for _ in range(1000)]
    for each in crowd:
        each.sendall(b"GET / HTT")
    for data, code in FRAMES:
        other = Page(link)
        other.until("devices")
        other.socket.sendall(data)
        while not isinstance(end := other.receive(), tuple):
            pass
        assert end in (("closed", code), ("closed", 0)), (data[:20], end)
    other = Page(link)
    other.until("devices")
    for data, reason in MESSAGES:
        other.send(data)
        assert (refused := other.until("refused")).startswith(reason), refused
    other.send(b"\0", kind=2)
    assert other.until("refused") == "a message is text"
    error = page.answer({"ask": "text " + "x" * (1 << 20)})["error"]
    assert error == "a command is one line of at most 64 KiB", error
    # An application that is stopped keeps its own pages waiting, and no other.
    os.kill(page.process, signal.SIGSTOP)
    try:
        for _ in range(64):
            page.send({"ask": "state --json", "id": 1})
        error = page.answer({"ask": "state --json"})["error"]
        assert error == "too many commands are waiting for the application", error
        assert Page(link).until("settings")["canPlay"]
    finally:
        os.kill(page.process, signal.SIGCONT)
    # Those that were there are served as ever, and pages that are gone make room.
    assert '"device"' in page.until("output")
    del half
    more = [Page(link) for _ in range(20)]
    assert {each.status for each in more} == {101, 503}
    for each in more:
        each.socket.close()


def steer(link):
    """Prints what commands, a dropped track and scenarios come to."""
    page = Page(link)
    root = page.open()
    print(page.answer({"ask": "location lost"})["output"], end="")
    print(page.answer({"ask": "battery many"})["error"])
    print(page.answer({"ask": "watch"})["error"])
    track = "<gpx><trk><trkseg>" + "".join(
        f'<trkpt lat="5{n}" lon="9"><time>2020-01-01T00:00:0{n}Z</time></trkpt>' for n in range(2)
    ) + "</trkseg></trk></gpx>"
    for name in ("../../a walk.gpx", "a walk.GPX", "a walk.exe"):
        answer = page.answer({"track": name, "content": track, "factor": 2})
        print(answer.get("output", answer.get("error")))
    print(page.answer({"track": "x.nmea", "content": "?"})["error"].replace(root, "ROOT"))
    for text in ("at 100ms: quit\n", "expect within 1s kind=device what=vibrator\n", "at\n"):
        answer = page.answer({"play": text})
        print(answer["status"], answer["output"].replace(root, "ROOT"), end="")
    for outside in ({"ask": "screenshot /x.png"}, {"ask": "track ../x.gpx 2"},
                    {"play": "at 0s: expect picture ../x.png 8\n"}, {"play": "include x\n"}):
        print(page.answer(outside)["error"].replace(root, "ROOT"))
    with open(root + "/recording", encoding="utf-8") as recording:
        print(*[line.replace(root, "ROOT") for line in recording][2:], sep="", end="")


def frames(link):
    """Prints the pictures of a screen that is drawn anew again and again."""
    page = Page(link)
    page.open()
    page.send({"frames": True})
    for _ in range(4):
        while not isinstance(picture := page.receive(), bytes):
            pass
        line, files = picture.split(b"\n", 1)
        head = json.loads(line)
        # Not before this one is shown does another come, and on a slow line they are compressed.
        assert "output" in page.answer({"ask": "key tap a"})
        time.sleep(0.2)
        page.send({"shown": True})
        for x, y, width, height, size in head["parts"]:
            assert struct.unpack(">8s8xII", files[:24]) == (b"\x89PNG\r\n\x1a\n", width, height)
            files = files[size:]
        print(head["width"], head["height"], head["format"], x, y, width, height, len(files))


def end(link):
    """Prints how the device that is shown has ended."""
    page = Page(link)
    page.open()
    print("shown", flush=True)
    print(page.until("ended"))


if __name__ == "__main__":
    {"attack": attack, "steer": steer, "frames": frames, "end": end}[sys.argv[1]](sys.argv[2])
