"""The panel in a browser."""

from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

from browser import TAVSIM, BrowserTest


class PanelTest(BrowserTest):
    def start_tavsim(self, *words):
        return self.start(TAVSIM, *words)

    def start_and_open(self, *command):
        running = self.start_tavsim("run", "--panel", *command)
        self.open(running)
        self.wait_for_text("status", "running")
        return running

    def click_at(self, id, right, down):
        self.click_in(self.find(id), right, down)

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
        # Not by clear(), which takes the focus away: then the page may fill the form anew.
        self.find(id).send_keys(Keys.CONTROL + "a")
        self.find(id).send_keys(text)

    def value_of(self, id):
        return self.find(id).get_property("value")
