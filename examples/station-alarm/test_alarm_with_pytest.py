"""The same for pytest, whose fixture tavsim_run starts programs and ends them."""

import pytest

from test_alarm import CENTRAL_STATION, DEVICE, FAR, NEAR, PROGRAM


@pytest.fixture
def alarm(tavsim_run):
    run = tavsim_run([PROGRAM, *CENTRAL_STATION], device=DEVICE)
    run.wait_for(what="subscribe", uri="*/startTracking")
    return run


def test_rings_when_near(alarm):
    alarm.command(NEAR)
    assert alarm.wait_for(kind="device", what="vibrator")["outcome"] == "on, period 200 ms"


def test_lets_sleep_when_far(alarm):
    alarm.command(FAR)
    assert alarm.end() == 0
    assert alarm.output.splitlines() == ["waiting"]
