"""The Python module: its errors, and that a run leaves neither processes nor files behind.

TAV_BUILD names the build folder.
"""

import fnmatch
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import tavsim

BUILD = Path(os.environ["TAV_BUILD"])
WAITS = BUILD / "tests/programs/wait_for_quit"
SERVICES = BUILD / "bin/services"

NEVER_CLOSED = "import sys, tavsim; run = tavsim.Run(sys.argv[1]); run.wait_ready()"


class RunTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        os.environ["TMPDIR"] = tempfile.tempdir = folder.name

    def tearDown(self):
        tempfile.tempdir = None
        left = Path(os.environ.pop("TMPDIR")).rglob("*")
        self.assertEqual([path for path in left if path.is_file()], [])

    def test_says_what_tavsim_says(self):
        for arguments, error in (
            ({"program": "/nowhere/app"}, "/nowhere/app: No such file or directory"),
            ({"device": {"machine": 5}}, "*/device.json: machine: must be a string"),
            ({"page": "/nowhere/page.js"}, "/nowhere/page.js: no such file"),
            ({"limit": -1}, "*--timeout*"),
        ):
            with self.subTest(error):
                with self.assertRaises(tavsim.Error) as raised:
                    tavsim.Run(**{"program": WAITS, **arguments})
                said = str(raised.exception)
                self.assertTrue(fnmatch.fnmatchcase(said, error), said)

    def test_refused_commands_are_errors(self):
        with tavsim.Run(WAITS) as run:
            with self.assertRaisesRegex(tavsim.Error, 'did you mean "location"'):
                run.command("locaton 1 2")
            run.quit()
            run.wait(within=30)
            with self.assertRaisesRegex(tavsim.Error, "^the program has ended with 0"):
                run.command("state")

    def test_a_program_that_does_not_listen_is_killed(self):
        run = tavsim.Run(["sh", "-c", "trap '' TERM; echo ready; exec sleep 1000"])
        while "ready" not in run.output:
            self.assertIsNone(run.status)
        run.close()
        self.assertEqual((run.status, run.output), (137, "ready\n"))

    def test_a_failed_wait_ends_the_program_and_shows_the_journal(self):
        with self.assertRaises(AssertionError) as raised:
            with tavsim.Run(WAITS) as run:
                run.wait_ready()
                run.wait_for(what="vibrator", within=0)
        text = str(raised.exception)
        self.assertIn('nothing like what="vibrator" within 0 s: no such entry\n  the journal', text)
        self.assertEqual(run.status, 0)
        self.assertEqual(run.journal()[0]["kind"], "host")

    def test_a_program_that_ends_fails_the_wait(self):
        with tavsim.Run("false") as run:
            with self.assertRaisesRegex(tavsim.NotHappened, "until it ended with 1"):
                run.wait_for(kind="*", within=60)

    def test_a_scenario_that_fails_fails_the_wait(self):
        with tempfile.TemporaryDirectory() as folder:
            scenario = Path(folder, "keyboard.scenario")
            scenario.write_text("at 1s: expect state keyboard shown\n")
            with tavsim.Run(WAITS, scenario=scenario, virtual_time=True) as run:
                self.assertEqual(run.wait(), 0)
            scenario.write_text("at 1s: expect state keyboard hidden\n")
            with tavsim.Run(WAITS, scenario=scenario, virtual_time=True) as run:
                with self.assertRaisesRegex(tavsim.NotHappened, ":1: at 1s: expect .* it is shown"):
                    run.wait()

    def test_entries_come_to_an_end_and_are_found_in_their_order(self):
        with tavsim.Run(SERVICES, virtual_time=True) as run:
            entries = list(run.entries())
            self.assertEqual(run.wait_for("reply.percent>50", what="reply")["token"], 1)
            ticks = [run.wait_for(what="reply", uri="*/ticks")["at"] for _ in range(3)]
            with self.assertRaisesRegex(tavsim.NotHappened, "no such entry"):
                run.wait_for(what="reply", uri="*/ticks")
            with self.assertRaisesRegex(tavsim.Error, 'no member "urii"; did you mean "uri"'):
                run.wait_for(urii="*")
            self.assertEqual(run.wait(), 0)
        self.assertEqual(ticks, sorted(set(ticks)))
        self.assertEqual(run.journal(), entries)
        self.assertIn("Battery: 72 percent", run.output)

    def test_a_root_that_is_given_stays(self):
        with tempfile.TemporaryDirectory() as root:
            with tavsim.Run(WAITS, device="quern", root=root) as run:
                run.wait_ready()
                self.assertEqual(run.state()["machine"], "quern")
            self.assertTrue((run.root / "data").is_dir())

    def test_nothing_outlives_python(self):
        subprocess.run([sys.executable, "-c", NEVER_CLOSED, WAITS], check=True)
