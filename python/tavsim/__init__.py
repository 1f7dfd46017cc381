"""Tests with tavsim: run a program on a simulated device, control the device, check what happened.

    with tavsim.Run(["./alarm", "52.5", "13.4"], device="cinnabar") as alarm:
        alarm.command("location 52.5 13.4 34 8 12 90 1.4")
        alarm.wait_for(kind="bus", uri="*vibrate*")
        assert alarm.state()["state"]["vibrator"] == "on, period 100 ms"
        alarm.quit()
        assert alarm.wait() == 0

It needs nothing but Python's standard library and an installed tavsim.
"""

from tavsim.journal import Entry
from tavsim.process import Error, NotHappened
from tavsim.run import Run

__all__ = ["Entry", "Error", "NotHappened", "Run"]
