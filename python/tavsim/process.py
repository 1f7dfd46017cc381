"""The process of `tavsim run`: finds the tool, starts it and ends it."""

from __future__ import annotations

import os
import shutil
import signal
import subprocess
from collections.abc import Mapping, Sequence
from pathlib import Path
from typing import Union

# Signals in quick succession count as one request to tavsim.
_BETWEEN_REQUESTS_S = 0.25
_MOST_REQUESTS = 40

_WITHOUT_DISPLAY = {"SDL_VIDEODRIVER": "dummy", "SDL_AUDIODRIVER": "dummy"}
WRITTEN = ("output", "errors")
"""The names of the files that receive standard output and standard error."""

StrPath = Union[str, "os.PathLike[str]"]


class Error(Exception):
    """A run or a command that tavsim refuses. The text is tavsim's message."""


class NotHappened(Error, AssertionError):
    """What a call waited for has not happened. In a test this counts as a failure."""


def find_tool() -> str:
    """The path of tavsim, in the installation that has this module or else on the PATH."""
    for folder in Path(__file__).resolve().parents:
        beside = folder / "bin" / "tavsim"
        if beside.is_file():
            return str(beside)
    found = shutil.which("tavsim")
    if found is None:
        raise Error("there is no tavsim on the PATH")
    return found


def reason(errors: str) -> str:
    """The message that tavsim has written on standard error, without tavsim's name."""
    return errors.strip().removeprefix("tavsim: ")


def start(
    command: Sequence[StrPath], environment: Mapping[str, str], folder: Path
) -> subprocess.Popen[bytes]:
    """Starts the process, with its output in the folder. `environment` overrides our own."""
    written = [(folder / name).open("wb") for name in WRITTEN]
    with written[0] as output, written[1] as errors:
        return subprocess.Popen(
            command,
            stdin=subprocess.DEVNULL,
            stdout=output,
            stderr=errors,
            env={**_WITHOUT_DISPLAY, **os.environ, **environment},
        )


def end(process: subprocess.Popen[bytes], patience: float = 0.0) -> None:
    """Asks the process to end, and asks again. At the second request tavsim kills the program."""
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
    """Ends the process without waiting for the program to quit, and removes the folder."""
    end(process)
    shutil.rmtree(folder, ignore_errors=True)
