"""Rows for calls from the page of a plug-in on today's Linux: what the server takes for one, and what
it takes a page in a real browser."""

import http.client
import json
import os
import re
import shutil
import subprocess
import tempfile
import time
from contextlib import contextmanager

BATCHES = 25
CALLS = 40  # in a batch
MOST = 1.3
MOST_ALIKE = 1.2
MOST_OF_SERVER = 100e3  # nanoseconds
METHODS = (1, 100)

# The milliseconds of a call and of an empty request. A browser's clock is coarse, so many are timed.
IN_THE_PAGE = """
const [calls] = arguments;
const time = (what) => {
    const start = performance.now();
    for (let call = 0; call < calls; ++call) {
        what();
    }
    return (performance.now() - start) / calls;
};
return [time(() => component.answer("x")), time(() => {
    const request = new XMLHttpRequest();
    request.open("GET", "empty.txt", false);
    request.send();
})];
"""


class Page:
    """A page without a browser."""

    def __init__(self, link):
        host, self.path = re.fullmatch(r"http://([^/]+)(/.*)", link).groups()
        self.connection = http.client.HTTPConnection(host)
        self.connection.request("GET", self.path, headers={"Sec-Fetch-Dest": "document"})
        answer = self.connection.getresponse()
        self.headers = {"Cookie": answer.getheader("Set-Cookie").split(";")[0],
                        "Origin": f"http://{host}", "Content-Type": "application/json"}
        script = re.search(r"\.tav/component\.js\?page=\w+", answer.read().decode())[0]
        self.method = self.path + script.replace("component.js", "call")
        self.body = json.dumps({"method": "answer", "arguments": ["x"]})

    def call(self):
        self.connection.request("POST", self.method, self.body, self.headers)
        answer = json.loads(self.connection.getresponse().read())
        assert answer == {"reply": "x"}, answer

    def ask_for_nothing(self):
        self.connection.request("GET", self.path + "empty.txt", headers=self.headers)
        assert self.connection.getresponse().read() == b""


def processor_time(process):
    with open(f"/proc/{process}/schedstat") as file:
        return int(file.read().split()[0])


def time_of(what, process):
    """Nanoseconds of the real time that it takes, and of the process's processor time."""
    start, before = time.perf_counter(), processor_time(process)
    for _ in range(CALLS):
        what()
    return ((time.perf_counter() - start) * 1e9 / CALLS,
            (processor_time(process) - before) / CALLS)


@contextmanager
def plugin(build, environment, count):
    """A served plug-in with so many methods: its server's process and its link."""
    with tempfile.TemporaryDirectory() as folder:
        shutil.copy(f"{build}/bin/tav_linux_plugin", folder + "/plugin")
        for name, text in (("appinfo.json", '{"main": "index.html", "program": "plugin"}'),
                           ("index.html", "<!doctype html><title>bench</title>"),
                           ("empty.txt", "")):
            with open(f"{folder}/{name}", "w") as file:
                file.write(text)
        os.mkdir(folder + "/run", 0o700)
        nobody = f"unix:path={folder}/none"
        command = [f"{build}/bin/tav-page", "--browser", "true", folder, "--", str(count)]
        with subprocess.Popen(command, stdout=subprocess.PIPE, text=True,
                              env=environment | {"XDG_RUNTIME_DIR": folder + "/run",
                                                 "DBUS_SESSION_BUS_ADDRESS": nobody,
                                                 "DBUS_SYSTEM_BUS_ADDRESS": nobody}) as server:
            try:
                yield server.pid, re.search(r"http://\S+", server.stdout.readline())[0]
            finally:
                server.terminate()


def server_rows(build, environment, shown_time):
    with plugin(build, environment, METHODS[0]) as (server, link), \
            plugin(build, environment, METHODS[1]) as (_, other_link):
        page, other = Page(link), Page(other_link)
        times = [[time_of(what, server) for what in (page.call, page.ask_for_nothing, other.call)]
                 for _ in range(BATCHES)]
    # Other load only adds to a time.
    one, call = (min(each[0][kind] for each in times) for kind in (0, 1))
    empty = min(each[1][1] for each in times)
    many = min(each[2][0] for each in times)
    yield (["call from a page, the server's processor time, beside an empty request",
            shown_time(call), shown_time(empty), f"{call / empty:.3f}",
            f"below {shown_time(MOST_OF_SERVER)}"], call < MOST_OF_SERVER)
    yield ([f"call from a page without a browser, {METHODS[1]} methods, beside {METHODS[0]}",
            shown_time(many), shown_time(one), f"{many / one:.3f}", f"at most {MOST_ALIKE}"],
           many <= MOST_ALIKE * one)


def browser_row(build, environment, shown_time):
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service

    options = webdriver.ChromeOptions()
    for option in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage"):
        options.add_argument(option)
    with plugin(build, environment, METHODS[1]) as (_, link), \
            webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options) as browser:
        browser.get(link)
        batches = [browser.execute_script(IN_THE_PAGE, CALLS) for _ in range(BATCHES)]
    call, empty = (min(each) * 1e6 for each in zip(*batches))
    return (["synchronous call from a page in Chromium, beside an empty request", shown_time(call),
             shown_time(empty), f"{call / empty:.3f}", f"at most {MOST}"], call <= MOST * empty)


def rows(build, environment, shown_time):
    if not os.path.exists(f"{build}/bin/tav_linux_plugin"):
        return
    yield from server_rows(build, environment, shown_time)
    yield browser_row(build, environment, shown_time)
