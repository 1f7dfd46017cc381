"""A browser, the commands that run while it looks at their pages, and what they must leave behind:
nothing."""

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

PROJECT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
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


def kill_browser(browser):
    """Kills the browser's processes, as a crash would."""
    driver = str(browser.service.process.pid)
    for process in subprocess.run(["pgrep", "-P", driver], capture_output=True).stdout.split():
        os.kill(int(process), signal.SIGKILL)


def accept_interrupt():
    signal.signal(signal.SIGINT, signal.SIG_DFL)


class Running:
    """A command that runs."""

    def __init__(self, folder, *command, **environment):
        self.environment = dict(os.environ, SDL_VIDEODRIVER="dummy", TMPDIR=folder) | environment
        self.output = tempfile.NamedTemporaryFile("r", dir=folder, suffix=".output")
        # A shell lets what it runs in the background ignore Ctrl-C, and that is inherited.
        self.process = subprocess.Popen(command, env=self.environment, cwd=folder,
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


class BrowserTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
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
        self.assertEqual(self.leftovers(), [])

    def leftovers(self):
        return [root for user in os.scandir(self.folder) if user.is_dir()
                for root in os.listdir(user)]

    def start(self, *command, **environment):
        running = Running(self.folder, *command, **environment)
        self.addCleanup(running.process.wait)
        self.addCleanup(running.process.terminate)
        return running

    def open(self, running):
        self.browser.get(running.link())

    def tearDown(self):
        self.assertEqual(self.complaints(), [])

    def complaints(self):
        return [entry["message"] for entry in self.browser.get_log("browser")]

    def find(self, id):
        return self.browser.find_element(By.ID, id)

    def find_by(self, selector):
        return wait_until(lambda: self.browser.find_elements(By.CSS_SELECTOR, selector),
                          selector)[0]

    def click(self, id):
        self.find(id).click()

    def click_in(self, element, right, down):
        """Clicks so many pixels from the element's middle."""
        ActionChains(self.browser).move_to_element_with_offset(element, right, down).click() \
            .perform()

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
