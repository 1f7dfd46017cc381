"""A browser with the panel in it, and the programs on simulated devices that the panel shows."""

import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import Select

PROJECT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PROGRAMS = os.environ["TAV_BUILD"] + "/bin/"
TAVSIM = PROGRAMS + "tavsim"
PATIENCE = 30


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not (result := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"not within {PATIENCE} s: {what}")
        time.sleep(0.02)
    return result


def start_browser():
    options = webdriver.ChromeOptions()
    options.add_argument("--headless=new")
    options.add_argument("--no-sandbox")  # it cannot be had in every container
    options.add_argument("--disable-dev-shm-usage")
    options.add_argument("--window-size=1280,1000")
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def accept_interrupt():
    signal.signal(signal.SIGINT, signal.SIG_DFL)


class Running:
    """A command of tavsim that runs."""

    def __init__(self, folder, *command):
        self.environment = dict(os.environ, SDL_VIDEODRIVER="dummy", TMPDIR=folder)
        self.output = tempfile.NamedTemporaryFile("r", dir=folder, suffix=".output")
        # A shell lets what it runs in the background ignore Ctrl-C, and that is inherited.
        self.process = subprocess.Popen([TAVSIM, *command], env=self.environment, cwd=folder,
                                        stdin=subprocess.DEVNULL, stdout=self.output,
                                        stderr=self.output, preexec_fn=accept_interrupt)

    def printed(self):
        with open(self.output.name) as output:
            return output.read()

    def link(self):
        return wait_until(lambda: re.search(r"http://127\.0\.0\.1:\d+/\S+", self.printed()),
                          "a link in the output")[0]

    def ctl(self, *words):
        return subprocess.run([TAVSIM, "ctl", *words], env=self.environment, text=True,
                              capture_output=True)

    def child(self, name):
        """The process of that name that it has started."""
        found = subprocess.run(["pgrep", "-P", str(self.process.pid), name], text=True,
                               capture_output=True)
        return int(found.stdout)

    def status(self):
        return self.process.wait(PATIENCE)


class PanelTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = start_browser()
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.addCleanup(self.check_that_nothing_stays)

    def check_that_nothing_stays(self):
        mark = ("TMPDIR=" + self.folder).encode()
        wait_until(lambda: not [one for one in os.listdir("/proc") if has_mark(one, mark)],
                   "the end of all processes of the test")
        roots = [root for user in os.scandir(self.folder) if user.is_dir()
                 for root in os.listdir(user)]
        self.assertEqual(roots, [])

    def start(self, *command):
        running = Running(self.folder, *command)
        self.addCleanup(running.process.wait)
        self.addCleanup(running.process.terminate)
        return running

    def start_and_open(self, *command):
        running = self.start("run", "--panel", *command)
        self.open(running)
        self.wait_for_text("status", "running")
        return running

    def open(self, running):
        self.browser.get(running.link())

    def tearDown(self):
        complaints = [entry["message"] for entry in self.browser.get_log("browser")]
        self.assertEqual(complaints, [])

    def find(self, id):
        return self.browser.find_element(By.ID, id)

    def find_by(self, selector):
        return wait_until(lambda: self.browser.find_elements(By.CSS_SELECTOR, selector),
                          selector)[0]

    def click(self, id):
        self.find(id).click()

    def click_at(self, id, right, down):
        """Clicks so many pixels from the element's middle."""
        ActionChains(self.browser).move_to_element_with_offset(self.find(id), right, down).click() \
            .perform()

    def touch(self, x, y):
        """Clicks that pixel of the application's picture."""
        right, down = self.browser.execute_script(
            "const [x, y] = arguments, screen = document.getElementById('screen');"
            "const scale = screen.getBoundingClientRect().width / screen.width;"
            "return [(x - screen.width / 2) * scale, (y - screen.height / 2) * scale];", x, y)
        self.click_at("screen", round(right), round(down))

    def choose(self, id, text):
        Select(self.find(id)).select_by_visible_text(text)

    def type(self, id, text):
        field = self.find(id)
        field.clear()
        field.send_keys(text)

    def value_of(self, id):
        return self.find(id).get_property("value")

    def wait_for_text(self, id, text):
        try:
            wait_until(lambda: text in self.find(id).text, f"{text} in {id}")
        except AssertionError as error:
            raise AssertionError(f"{error}; it says {self.find(id).text!r}") from None

    def wait_for_entry(self, running, *pattern):
        answer = running.ctl("wait", *pattern, "within", f"{PATIENCE}s")
        self.assertEqual(answer.returncode, 0, answer.stderr + running.ctl("journal").stdout[-2000:])


def has_mark(process, mark):
    try:
        with open(f"/proc/{process}/environ", "rb") as environment:
            return mark in environment.read().split(b"\0")
    except OSError:
        return False
