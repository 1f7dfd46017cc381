"""The alarm as a whole, on a simulated device, with nothing but Python's standard library.

STATION_ALARM names the program that is tested.
"""

import json
import os
import unittest

import tavsim

PROGRAM = os.environ.get("STATION_ALARM", "build/station_alarm")
CENTRAL_STATION = ["52.5251", "13.3694", "1000"]
FAR = "location 52.4000 13.0667 34 8 12 90 40"
NEAR = "location 52.5251 13.3690 34 8 12 90 20"
# This device knows only the positions that a test gives it.
DEVICE = {"machine": "cinnabar"}


class AlarmTest(unittest.TestCase):
    def test_rings_when_near(self):
        with tavsim.Run([PROGRAM, *CENTRAL_STATION], device=DEVICE) as alarm:
            alarm.wait_for(what="subscribe", uri="*/startTracking")
            alarm.command(FAR)
            alarm.command(NEAR)
            vibration = alarm.wait_for(what="call", uri="*/vibrate")
            self.assertEqual(json.loads(vibration["payload"]), {"period": 200, "duration": 5000})
            self.assertEqual(alarm.state()["state"]["vibrator"], "on, period 200 ms")
            alarm.quit()
            self.assertEqual(alarm.wait(), 0)
        self.assertEqual(alarm.output.splitlines(), ["waiting", "wake up!"])

    def test_goes_on_without_a_position(self):
        with tavsim.Run([PROGRAM, *CENTRAL_STATION], device=DEVICE) as alarm:
            alarm.wait_for(what="subscribe", uri="*/startTracking")
            alarm.command("location error 5")
            alarm.wait_for(what="subscribe", uri="*/startTracking")
            alarm.command(NEAR)
            alarm.wait_for(kind="device", what="vibrator", outcome="on*")
        self.assertEqual(alarm.output.splitlines(), ["waiting", "no position", "wake up!"])

    def test_says_what_it_cannot_do(self):
        dead_bus = {"TAVSIM_FAIL": "dispatch:1+"}
        with tavsim.Run([PROGRAM, *CENTRAL_STATION], environment=dead_bus) as alarm:
            self.assertEqual(alarm.wait(), 1)
        self.assertEqual(alarm.errors, "station_alarm: Unable to communicate with app card\n")


if __name__ == "__main__":
    unittest.main()
