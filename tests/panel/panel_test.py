"""What a person does in the panel, and what the application gets of it.

TAV_BUILD names the build folder.
"""

import json
import os
import signal
import subprocess

from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

from browser import PROGRAMS, PROJECT, TAVSIM, kill_browser, start_browser, wait_until
from panel import PanelTest

HUNT = ["--device", PROJECT + "/examples/cache-hunt/device.json", PROGRAMS + "cache-hunt"]
BATTERY = "vire://com.vire.battery/status"
HINT_BUTTON = (80, 770)

# The caches on the map, in pixels from its middle, at its first zoom.
CACHES = [(0, -90), (140, -90), (210, 0)]


class DeviceInABrowserTest(PanelTest):
    def test_the_hunt_is_played_to_its_end_by_clicks_and_passes_again(self):
        hunt = self.start_and_open(*HUNT)
        self.touch(*HINT_BUTTON)
        self.wait_for_entry(hunt, "what=reply", "uri=*getItemInfo")
        self.touch(*HINT_BUTTON)
        self.wait_for_entry(hunt, 'what="item hint"', "outcome=purchased")
        for right, down in CACHES:
            self.click_at("map", right, down)
        self.type("walk-speed", "7")
        self.choose("speed", "10 ×")
        self.click("walk")
        self.wait_for_entry(hunt, "what=vibrator", "outcome=on*", "count=3")
        self.type("pattern", "what=vibrator outcome=on*")
        self.wait_for_text("journal-count", "3 of")
        self.find_by("#entries summary").click()
        self.find_by(".small-button").click()
        recording = self.value_of("recording")
        self.click("record-play")
        self.wait_for_text("played", "It has passed")
        self.click("quit")
        self.wait_for_text("notice", "ended with status 0")
        self.assertEqual(hunt.status(), 0)
        self.assertIn("found the boat house", hunt.printed())
        self.assert_that_it_passes(hunt, recording)

    def assert_that_it_passes(self, hunt, recording):
        self.assertIn("expect within", recording)
        scenario = self.folder + "/recorded.scenario"
        with open(scenario, "w") as file:
            file.write(recording)
        played = subprocess.run([TAVSIM, "test", scenario], env=hunt.environment, text=True,
                                capture_output=True)
        self.assertEqual(played.returncode, 0, recording + played.stdout + played.stderr)

    def test_the_world_turns_and_moves_under_the_hand(self):
        hunt = self.start_and_open(*HUNT)
        self.click_at("dial", 40, 0)
        self.wait_for_entry(hunt, 'what="compass reading"', "doubleValue1>=90", "doubleValue1<91")
        self.find("dial").send_keys(Keys.ARROW_RIGHT)
        self.wait_for_entry(hunt, 'what="compass reading"', "doubleValue1>=91", "doubleValue1<92")
        self.find("track-file").send_keys(PROJECT + "/examples/cache-hunt/tracks/park.gpx")
        self.wait_for_entry(hunt, "what=movement", 'outcome="on a track"')
        self.type("at-latitude", "52.51518")
        self.type("at-longitude", "13.35")
        self.find_by("#position .primary").click()
        self.wait_for_entry(hunt, "what=vibrator", "outcome=on*")

    def test_a_service_answers_as_it_is_edited(self):
        hunt = self.start_and_open(*HUNT)
        self.click("tab-services")
        card = self.find_by("details.service")
        self.assertIn(BATTERY, card.text)
        card.find_element(By.TAG_NAME, "summary").click()
        editor = card.find_element(By.TAG_NAME, "textarea")
        answer = card.find_element(By.CSS_SELECTOR, "button.primary")
        editor.clear()
        editor.send_keys('{"percent":')
        answer.click()
        self.assertIn("line 1, column 12", card.text)
        editor.send_keys(Keys.END, '7,"name":"<img src=x onerror=alert(1)>"}')
        answer.click()
        self.choose("speed", "100 ×")
        self.wait_for_entry(hunt, "what=reply", "uri=" + BATTERY, "reply.percent=7")
        refused = card.find_elements(By.CSS_SELECTOR, "label.switch")[1]
        refused.click()
        self.wait_for_entry(hunt, "what=call*", "uri=" + BATTERY, "outcome=refused")
        refused.click()
        wait_until(lambda: '"refused":[]' in hunt.ctl("state", "--json").stdout, "no refusal")

    def test_time_stands_still_and_goes_in_steps(self):
        run = self.start_and_open(PROGRAMS + "instruments")
        self.click("pause")
        self.wait_for_text("status", "paused")
        before = self.time_of(run)
        self.click("step")
        after = wait_until(lambda: self.time_of(run) > before and self.time_of(run), "a step")
        self.assertLessEqual(after - before, 100)
        self.click("step-delivery")
        wait_until(lambda: self.time_of(run) > after and self.is_paused(run), "the next delivery")
        now = self.time_of(run)
        self.wait_for_text("clock", f"{now // 60000}:{now % 60000 / 1000:06.3f}")
        self.wait_for_text("status", "paused")
        self.click("pause")
        self.wait_for_text("status", "running")

    def time_of(self, running):
        return json.loads(running.ctl("state", "--json").stdout)["time"]["now"]

    def is_paused(self, running):
        return json.loads(running.ctl("state", "--json").stdout)["time"]["paused"]

    def test_patterns_are_those_of_the_device(self):
        hunt = self.start_and_open(*HUNT)
        self.wait_for_entry(hunt, "what=reply", "latitude=*")
        self.click("pause")
        self.wait_for_text("status", "paused")
        for pattern, matches in [("what=reply reply.percent>71.5", 1), ('what="NApp_Get*"', 1),
                                 ("near 52.5141,13.35 12m", 1), ("near 52.5141,13.35 11m", 0),
                                 ("kind=h?st what=*Compass", 1), ("option=false", 1),
                                 ("payload.subscribe=true latitude=52.5*", 0), ("reply.percent=72", 1)]:
            with self.subTest(pattern):
                self.type("pattern", pattern)
                entries = hunt.ctl("journal", pattern).stdout.splitlines()
                self.assertEqual(len(entries), matches, entries)
                self.wait_for_text("journal-count", f"{matches} of ")
        self.type("pattern", "urii=x")
        self.wait_for_text("pattern-error", 'did you mean "uri"')

    def test_methods_of_a_plug_in_are_called(self):
        calculator = self.start_and_open(
            "--page", PROJECT + "/examples/cache-hunt/tests/page.js", *HUNT)
        wait_until(self.find("tab-page").is_displayed, "the page's area")
        self.click("tab-page")
        field = self.find_by('[aria-label="Arguments of cache"]')
        field.send_keys("1" + Keys.ENTER)
        self.wait_for_text("methods", "not found yet")
        self.wait_for_entry(calculator, "kind=page", "method=cache", "outcome=exception*")

    def test_devices_come_and_go(self):
        panel = self.start_tavsim("panel")
        self.open(panel)
        self.wait_for_text("notice", "No device runs")
        first = self.start_tavsim("run", *HUNT)
        self.wait_for_text("device-name", "cache-hunt")
        second = self.start_tavsim("run", PROGRAMS + "instruments")
        wait_until(lambda: len(self.find("devices").find_elements(By.TAG_NAME, "option")) == 2,
                   "both devices")
        os.kill(first.child("cache-hunt"), signal.SIGKILL)
        self.wait_for_text("notice", "killed")
        self.assertIn("NApp_EnableCompass", self.find("entries").text)
        self.choose("devices", "instruments on cinnabar")
        self.wait_for_text("status", "running")
        panel.process.send_signal(signal.SIGINT)
        self.wait_for_text("notice", "The panel was ended")
        self.assertIsNone(second.process.poll())

    def test_each_end_is_said(self):
        for end, status, words in [
                (lambda run: os.kill(run.child("cache-hunt"), signal.SIGKILL), 137, "SIGKILL"),
                (lambda run: run.process.send_signal(signal.SIGINT), 0, "ended with status 0"),
                (lambda run: run.process.kill(), -9, "tavsim was killed"),
                (lambda run: os.kill(run.child("tavsim-panel"), signal.SIGKILL), 0, "closed")]:
            with self.subTest(words):
                run = self.start_and_open(*HUNT)
                end(run)
                self.wait_for_text("notice", words)
                self.assertEqual(run.status(), status, run.printed())

    def test_a_browser_may_vanish(self):
        other = start_browser()
        self.addCleanup(other.quit)
        hunt = self.start_and_open(*HUNT)
        other.get(hunt.link())
        wait_until(lambda: other.find_element(By.ID, "status").text == "running", "the other one")
        kill_browser(other)
        self.find("screen").send_keys("h")
        self.wait_for_entry(hunt, "what=reply", "uri=*getItemInfo")
