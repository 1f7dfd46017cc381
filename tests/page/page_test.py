"""Plug-ins in a page of a real browser, on the simulated device and on today's Linux.

TAV_BUILD names the build folder.
"""

import functools
import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time

import dbusmock
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

from browser import PROGRAMS, PROJECT, TAVSIM, BrowserTest, kill_browser, start_browser, wait_until

HERE = os.path.dirname(os.path.abspath(__file__))
TAV_PAGE = PROGRAMS + "tav-page"
PLUGINS = os.environ["TAV_BUILD"] + "/plugins/"
ON_THE_DEVICE, ON_LINUX = PLACES = ("on the simulated device", "on today's Linux")
NO_ANSWER = "the application has not answered for 10 seconds"

# Texts that come back as they are, and texts that do not.
KEPT = ["", "😀 𐀀 \U0010ffff", '"\\\n\r\u2028</script>', "xé€" * (1 << 18)]
CHANGED = {"\0": "", "a\0b": "a", "\ud83d": "\ufffd",
           "a\ude00b\ud83d\ud83d": "a\ufffdb\ufffd\ufffd", None: "null"}


class PageTest(BrowserTest, dbusmock.DBusTestCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.start_session_bus()
        cls.start_system_bus()
        cls.plugin = tempfile.mkdtemp()
        cls.addClassCleanup(shutil.rmtree, cls.plugin)
        for file in ("index.html", "index.js"):
            shutil.copy(f"{HERE}/{file}", cls.plugin)
        shutil.copy(PROGRAMS + "tav_echo", cls.plugin + "/echo")
        with open(cls.plugin + "/appinfo.json", "w") as file:
            file.write('{"main": "index.html", "program": "echo"}')

    def leftovers(self):
        return [each for each in super().leftovers() if not each.startswith("libtav")]

    def start_plugin(self, place, folder, program):
        runtime = self.folder + "/run"
        os.makedirs(runtime, 0o700, exist_ok=True)
        if place is ON_THE_DEVICE:
            return self.start(TAVSIM, "run", "--page", folder + "/index.html",
                              f"{folder}/{program}")
        return self.start(TAV_PAGE, "--browser", "true", "--linger", "1", folder,
                          XDG_RUNTIME_DIR=runtime)

    def open_plugin(self, place, folder, program):
        plugin = self.start_plugin(place, folder, program)
        self.open(plugin)
        return plugin

    def open_echo(self, place=ON_LINUX):
        return self.open_plugin(place, self.plugin, "echo")

    def run_script(self, script, *arguments):
        return self.browser.execute_script(script, *arguments)

    def result_of(self, promise, *arguments):
        return self.browser.execute_async_script(
            f"const done = arguments[arguments.length - 1]; ({promise}).then(done, (error) =>"
            " done(error.message))", *arguments)

    def error_of(self, script):
        return self.run_script(f"try {{ {script}; return null }} catch (error) {{"
                               " return error.name + ': ' + error.message }")

    def heard(self):
        return self.run_script("return heard")

    def wait_until_heard(self, text):
        try:
            wait_until(lambda: any(text in one for one in self.heard()), text)
        except AssertionError as error:
            raise AssertionError(f"{error}; it has heard {self.heard()}") from None


def in_both_places(test):
    @functools.wraps(test)
    def in_both(self):
        for place in PLACES:
            with self.subTest(place):
                test(self, place)
    return in_both


class ExamplesTest(PageTest):
    @in_both_places
    def test_the_pathfinder_finds_a_way_again_when_the_land_changes(self, place):
        self.open_plugin(place, PLUGINS + "pathfinder", "pathfinder")
        self.find_by("button.primary").click()
        self.wait_for_text("status", "takes 141 minutes")
        self.find_by("[value=water]").click()
        ActionChains(self.browser) \
            .move_to_element_with_offset(self.find_by("tav-plugin"), -200, 120).click_and_hold() \
            .move_by_offset(60, 60).move_by_offset(80, -10).release().perform()
        self.wait_for_text("status", "takes 147 minutes")

    @in_both_places
    def test_it_is_used_by_clicks_and_keys(self, place):
        calculator = self.open_plugin(place, PLUGINS + "calculator", "calculator")
        for keys, shown, on_tape in [
                ("12+30", "42", "12 + 30 = 42"), ("22/7", "3.14285714286", "22 / 7"),
                (".1*4", "0.4", "0.1 * 4 = 0.4"), ("8/0", "division by zero", "")]:
            for key in [*keys, "Enter"]:
                self.find_by(f'[data-key="{key}"]').click()
            self.assertEqual(self.find("display").text, shown)
            self.wait_for_text("tape", on_tape)
        self.find_by("body").send_keys("2-5" + Keys.ENTER)
        self.assertEqual(self.find("display").text, "-3")
        self.click("off")
        self.wait_for_text("display", "ended")
        self.assertEqual(calculator.status(), 0, calculator.printed())


class BridgeTest(PageTest):
    @in_both_places
    def test_every_text_arrives_as_it_was_sent(self, place):
        self.open_echo(place)
        wrong = self.run_script("""
            const wrong = [];
            for (let first = 0; first < 0x10000; first += 0x800) {
                const codes = Array.from({ length: 0x800 }, (_, index) => first + index || 1);
                const text = String.fromCharCode(...codes);
                if (first !== 0xd800 && component.echo(text) !== text) {
                    wrong.push(first);
                }
            }
            return wrong;""")
        self.assertEqual(wrong, [])
        for sent, received in [*zip(KEPT, KEPT), *CHANGED.items()]:
            with self.subTest(sent=str(sent)[:20]):
                # The driver takes a lone surrogate only as an escape.
                got = self.run_script("heard.length = 0; const text = JSON.parse(arguments[0]);"
                                      "component.back(text); return component.echo(text)",
                                      json.dumps(sent))
                self.assertEqual(got, received)
                wait_until(lambda: self.heard() == [received], "the way back")

    @in_both_places
    def test_calls_nest_and_fail_as_calls_do(self, place):
        self.open_echo(place)
        rows = [("return component.methods().join()",
                 "echo,back,refuse,ask,answer,hang,flood,quit"),
                ("return component.call('echo', 1.5)", "1.5"),
                ("return [component.echo === component.echo, 'echo' in component,"
                 " 'nothing' in component, typeof component.nothing].join()",
                 "true,true,false,undefined")]
        for script, result in rows:
            self.assertEqual(self.run_script(script), result)
        for script, error in [("component.refuse('no ✗')", "Error: no ✗"),
                              ("component.call('nothing')", "Error: Unknown Function"),
                              ("component.nothing()", "TypeError: component.nothing is not a function"),
                              ("component.on('back')", "TypeError: ")]:
            self.assertIn(error, self.error_of(script))
        self.assertEqual(self.result_of("component.async.ask('question')"), "42")
        self.assertEqual(self.result_of("component.async.refuse('no')"), "no")
        self.assertEqual(self.result_of("Promise.all([1, 2, 3].map(component.async.echo))"),
                         ["1", "2", "3"])

    @in_both_places
    def test_the_picture_is_touched_and_typed_into(self, place):
        self.open_echo(place)
        picture = self.find_by("tav-plugin")
        self.click_in(picture, 30, -20)
        self.wait_until_heard("touched 150 60")
        picture.send_keys("a")
        self.wait_until_heard("key 97 97")
        picture.send_keys(Keys.LEFT)
        self.wait_until_heard("key 276 0")
        wait_until(lambda: self.color_at(picture, 150, 60) == [255, 0, 0], "a red square")

    def color_at(self, picture, x, y):
        return self.run_script(
            "const [plugin, x, y] = arguments;"
            "const canvas = (plugin.shadowRoot ?? plugin).querySelector('canvas');"
            "const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext('2d');"
            "copy.drawImage(canvas, 0, 0);"
            "return [...copy.getImageData(x, y, 1, 1).data].slice(0, 3)", picture, x, y)


class FaultsTest(PageTest):
    def tearDown(self):
        self.complaints()  # requests fail here

    def check_that_it_is_lost(self, sentence):
        self.wait_until_heard(sentence)
        self.assertIn(sentence, self.error_of("component.echo(1)"))
        self.assertIn(sentence, self.result_of("component.async.echo(1)"))

    @in_both_places
    def test_each_end_is_told(self, place):
        def kill_server(plugin):
            os.kill(plugin.child("tav-page") if place is ON_THE_DEVICE else plugin.process.pid,
                    signal.SIGKILL)

        for end, status, words in [
                (lambda plugin: self.error_of("component.quit()"), [0], "ended with status 0"),
                (lambda plugin: os.kill(plugin.child("echo"), signal.SIGKILL), [137], "SIGKILL"),
                (lambda plugin: plugin.process.send_signal(signal.SIGINT), [0], "with status 0"),
                (kill_server, [0, -9], "closed")]:
            with self.subTest(words):
                plugin = self.open_echo(place)
                end(plugin)
                self.check_that_it_is_lost(words)
                self.assertIn(plugin.status(), status, plugin.printed())

    def test_who_does_not_answer_is_given_up_after_its_time(self):
        plugins = {}
        for place, call in [(ON_THE_DEVICE, "hang"), (ON_LINUX, "hang"), (ON_LINUX, "echo")]:
            self.browser.switch_to.new_window("tab")
            self.addCleanup(self.close_tab, self.browser.current_window_handle)
            plugin = self.open_echo(place)
            self.run_script("window.error = null; return component.echo('is there')")
            if call == "echo":
                os.kill(plugin.child("echo"), signal.SIGSTOP)
            self.run_script(f"component.async.{call}('x')"
                            ".catch((thrown) => { error = thrown.message })")
            plugins[self.browser.current_window_handle] = plugin, time.monotonic()
            self.addCleanup(os.kill, plugin.child("echo"), signal.SIGKILL)
        for tab, (plugin, since) in plugins.items():
            self.browser.switch_to.window(tab)
            wait_until(lambda: self.run_script("return error") == NO_ANSWER, NO_ANSWER)
            self.assertGreater(time.monotonic() - since, 9)
        os.kill(plugin.child("echo"), signal.SIGCONT)
        self.assertEqual(self.run_script("return component.echo('again')"), "again")

    def close_tab(self, tab):
        self.browser.switch_to.window(tab)
        self.browser.close()
        self.browser.switch_to.window(self.browser.window_handles[0])

    @in_both_places
    def test_the_newest_page_has_the_plug_in(self, place):
        plugin = self.open_echo(place)
        self.browser.refresh()
        self.assertEqual(self.run_script("return component.echo('reloaded')"), "reloaded")
        older = self.browser.current_window_handle
        self.browser.switch_to.new_window("tab")
        self.addCleanup(self.close_tab, self.browser.current_window_handle)
        self.open(plugin)
        self.assertEqual(self.run_script("return component.echo('newer')"), "newer")
        newer = self.browser.current_window_handle
        self.browser.switch_to.window(older)
        self.check_that_it_is_lost("page")
        self.browser.switch_to.window(newer)
        self.run_script("component.back('still here')")
        self.wait_until_heard("still here")

    @in_both_places
    def test_a_page_may_loop_and_its_browser_may_vanish(self, place):
        other = start_browser()
        self.addCleanup(other.quit)
        plugin = self.start_plugin(place, self.plugin, "echo")
        other.get(plugin.link())
        other.execute_script("component.on('flood', () => { for (;;); }); component.async.flood()")
        self.open(plugin)
        self.assertEqual(self.run_script("return component.echo('x')"), "x")
        self.assertLess(int(self.run_script("return component.flood()")), 100)
        self.browser.get("about:blank")
        kill_browser(other)
        if place is ON_LINUX:
            self.assertEqual(plugin.status(), 0, plugin.printed())
            self.assertIn("tav-page: ", plugin.printed())
        else:
            self.assertIsNone(plugin.process.poll())

    @in_both_places
    def test_what_is_wrong_in_a_page_is_told_with_its_line(self, place):
        folder = shutil.copytree(self.plugin, self.folder + "/page/with faults")
        scripts = {"syntax.js": "let a;\nlet b = ;", "throws.js": "\n\nthrow new RangeError('far')",
                   "rejects.js": "console.warn('careful', 1);\nPromise.reject(new Error('later'))"}
        with open(folder + "/index.html", "w") as page:
            for name, text in scripts.items():
                with open(f"{folder}/{name}", "w") as file:
                    file.write(text)
                page.write(f"<script src={name}></script>")
        plugin = self.open_plugin(place, folder, "echo")
        for line in ("syntax.js:2: SyntaxError: ", "throws.js:3: RangeError: far",
                     "[page] careful 1", "rejects.js:2: Error: later"):
            wait_until(lambda: line in plugin.printed(), line + " in " + plugin.printed())
        shutil.rmtree(self.folder + "/page")


class DocumentedTest(PageTest):
    def test_the_test_in_the_documentation_passes(self):
        with open(PROJECT + "/docs/testing.md") as text:
            (test,) = re.findall(r"```python test_calculator.py\n(.*?)```", text.read(), re.DOTALL)
        folder = shutil.copytree(PLUGINS + "calculator", self.folder + "/page/calculator")
        with open(folder + "/test_calculator.py", "w") as file:
            # A sandbox cannot be had in every container.
            headless = 'options.add_argument("--headless=new")'
            file.write(test.replace(headless, headless + '; options.add_argument("--no-sandbox")'))
        environment = dict(os.environ, PATH=PROGRAMS + ":" + os.environ["PATH"],
                           PYTHONPATH=PROJECT + "/python", TMPDIR=self.folder + "/page")
        ran = subprocess.run(["/usr/bin/python3", "-B", "-m", "unittest", "test_calculator"],
                             cwd=folder, env=environment, capture_output=True, text=True)
        shutil.rmtree(self.folder + "/page")
        self.assertEqual(ran.returncode, 0, ran.stderr)
