"""The process of `tavsim run`: which tool that is, and its end."""

from __future__ import annotations

import shutil
import signal
import subprocess
from pathlib import Path

# tavsim takes requests to end that come at once for one.
_BETWEEN_REQUESTS_S = 0.25
_MOST_REQUESTS = 40


class Error(Exception):
    """What tavsim says of a run or a command that is not possible."""


class NotHappened(Error, AssertionError):
    """What was waited for has not happened; to a test, a failure."""


def find_tool() -> str:
    """The tavsim of the installation that this module belongs to, or else that of the PATH."""
    for folder in Path(__file__).resolve().parents:
        beside = folder / "bin" / "tavsim"
        if beside.is_file():
            return str(beside)
    found = shutil.which("tavsim")
    if found is None:
        raise Error("there is no tavsim on the PATH")
    return found


def reason(errors: str) -> str:
    """What tavsim has written on standard error, without its name."""
    return errors.strip().removeprefix("tavsim: ")


def end(process: subprocess.Popen[bytes], patience: float = 0.0) -> None:
    """Asks the process to end, and again; the second time, tavsim kills the program."""
    for wait in (max(patience, _BETWEEN_REQUESTS_S), *[_BETWEEN_REQUESTS_S] * _MOST_REQUESTS):
        if process.poll() is None:
            process.send_signal(signal.SIGTERM)
            try:
                process.wait(wait)
            except subprocess.TimeoutExpired:
                pass
    if process.poll() is None:
        process.kill()
        process.wait()


def end_and_remove(process: subprocess.Popen[bytes], folder: Path) -> None:
    """Ends the process without patience, and removes the folder."""
    end(process)
    shutil.rmtree(folder, ignore_errors=True)
