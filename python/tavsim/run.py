"""A program on a simulated device."""

from __future__ import annotations

import json
import os
import re
import shutil
import subprocess
import tempfile
import time
import weakref
from collections.abc import Iterator, Mapping, Sequence
from pathlib import Path
from typing import Any

from tavsim.journal import Entry, Journal
from tavsim.process import (
    WRITTEN,
    Error,
    NotHappened,
    StrPath,
    end,
    end_and_remove,
    find_tool,
    reason,
    start,
)

_LOOK_S = 0.01  # between two polls of a file or a process
_NOT_SET_UP = (2, 127)  # how `tavsim run` ends when it cannot start the program
_SCENARIO_FAILED = 3
_NO_ENTRY = 1  # how `tavsim journal` ends when nothing matches
_LINES_SHOWN = 10
_LINK = re.compile(r"^tavsim: .* is at (http://\S+)\n", re.MULTILINE)
_ASKED_S = 5.0  # that a program has to end when it is asked to quit


class Run:
    """A program that runs on a simulated device. It is started when the object is made.

    As a context manager it ends the program at the end of the block, with end(), or with close()
    after an exception. It does not raise again what wait() has raised. Programs that still run
    when Python exits are ended. When Python is killed, they end at their limit.
    """

    def __init__(
        self,
        program: StrPath | Sequence[StrPath],
        *,
        device: StrPath | Mapping[str, Any] | None = None,
        scenario: StrPath | None = None,
        root: StrPath | None = None,
        page: StrPath | None = None,
        plugin: bool = False,
        virtual_time: bool = False,
        environment: Mapping[str, str] | None = None,
        limit: float = 60.0,
        options: Sequence[str] = (),
    ) -> None:
        """Starts the program. Raises Error when the program or the device cannot be started.

        program: its name or path, or a list of that and its arguments.
        device: the name of a device, the path of a profile, or a profile as a dictionary. Default:
            the device that the scenario names, or else "cinnabar".
        scenario: the path of a scenario to play. When it fails, wait() raises NotHappened.
        root: the folder of the device's files, which is kept. Default: a temporary folder.
        page: the path of a page: a script, or an HTML file, which is served to a browser and not
            in virtual time. The program runs as the plug-in of that page.
        plugin: run the program as the plug-in of a page that never calls it.
        virtual_time: let waiting take no time. The program then runs as fast as it can, and does
            not wait for commands.
        environment: variables in addition to the test's own. Without an SDL_VIDEODRIVER or
            SDL_AUDIODRIVER in either, the program gets "dummy" and needs no display.
        limit: the seconds after which the program is ended.
        options: further options of `tavsim run`.
        """
        self._folder = Path(tempfile.mkdtemp(prefix="tavsim-python-"))
        try:
            self._root = Path(root).absolute() if root is not None else self._folder / "root"
            self._journal = Journal(self._folder / "journal")
            self._awaited = 0  # the first entry that wait_for() looks at
            self._tool = find_tool()
            command = [
                *(self._tool, "run", "--root", str(self._root), "--timeout", str(limit)),
                *(["--device", self._device_name(device)] if device is not None else []),
                *(["--scenario", os.fspath(scenario)] if scenario is not None else []),
                *("--journal", str(self._folder / "journal")),
                *(["--page", os.fspath(page)] if page is not None else []),
                *(["--plugin"] if plugin else []),
                *(["--virtual-time"] if virtual_time else []),
                *options,
                "--",
                *([program] if isinstance(program, (str, os.PathLike)) else program),
            ]
            self._has_scenario = scenario is not None
            self._is_told = False  # that the device was not possible, or the scenario failed
            self._process = start(command, environment or {}, self._folder)
        except BaseException:
            shutil.rmtree(self._folder, ignore_errors=True)
            raise
        self._finish = weakref.finalize(self, end_and_remove, self._process, self._folder)
        try:
            self._wait_until_set_up()
        except BaseException:
            self.close()
            raise

    def __enter__(self) -> Run:
        return self

    def __exit__(self, kind: type[BaseException] | None, *_: object) -> None:
        try:
            if kind is None and not self._is_told:
                self.end()
        finally:
            self.close()

    @property
    def root(self) -> Path:
        """The root folder of the device."""
        return self._root

    @property
    def status(self) -> int | None:
        """The exit status of `tavsim run`; None while the program runs."""
        return self._process.poll()

    @property
    def output(self) -> str:
        """What the program has written on its standard output so far."""
        return self._written("output")

    @property
    def errors(self) -> str:
        """What the program and tavsim have written on standard error so far."""
        return self._written("errors")

    def command(self, line: str, *, within: float = 10.0) -> str:
        """Carries out a command of `tavsim ctl` and returns its output.

        This happens when the application next handles SDL's events. Raises Error when the command
        is refused, or when the application does not answer within that many seconds.
        """
        deadline = time.monotonic() + within
        while not (self._root / "control").exists() and time.monotonic() < deadline:
            self._raise_if_ended()
            time.sleep(_LOOK_S)
        left = max(deadline - time.monotonic(), _LOOK_S)
        done = self._tavsim("ctl", "--root", str(self._root), "--timeout", f"{left:.3f}", line)
        if done.returncode != 0:
            raise Error(reason(done.stderr))
        return done.stdout

    def state(self) -> dict[str, Any]:
        """The state of the device, as `tavsim ctl state --json` prints it.

        A dictionary with machine, plugin, position, compass and others; what the application did
        to the device is the dictionary state.
        """
        told: dict[str, Any] = json.loads(self.command("state --json"))
        return told

    def entries(self) -> Iterator[Entry]:
        """Yields the entries of the journal from the first to the last, as they are written.

        Waits for more until the program has ended.
        """
        index = 0
        while True:
            has_ended = self.status is not None
            self._journal.read()
            while index < len(self._journal.entries):
                yield self._journal.entries[index]
                index += 1
            if has_ended:
                return
            time.sleep(_LOOK_S)

    def journal(self) -> list[Entry]:
        """The entries of the journal so far."""
        self._journal.read()
        return list(self._journal.entries)

    def wait_for(self, pattern: str = "", *, within: float = 10.0, **members: str) -> Entry:
        """Waits until the journal has an entry with these members, and returns it.

            run.wait_for(kind="bus", what="call*", uri="*vibrate*", within=5)
            run.wait_for("what=reply reply.items[0].price=0.99 at<2000")

        In a value, * stands for any characters and ? for one. The pattern can have all conditions
        of scenarios. Each call searches after the entry that the last call found. Raises Error for
        what no entry can have, and NotHappened after that many seconds, or when the program ends.
        """
        globs = [f"{name}={json.dumps(glob)}" for name, glob in members.items()]
        wanted = " ".join([pattern, *globs] if pattern else globs)
        deadline = time.monotonic() + within
        start = seen = self._awaited
        is_checked = False
        while True:
            has_ended = self.status is not None
            is_over = time.monotonic() >= deadline
            self._journal.read()
            end = len(self._journal.lines)
            if end > seen or not is_checked:
                index, _ = self._find(wanted, seen, end)
                if index is not None:
                    self._awaited = index + 1
                    return self._journal.entries[index]
                seen, is_checked = end, True
            if has_ended:
                self._raise_if_not_set_up()
                raise NotHappened(self._missing(wanted, start, f"until it ended with {self.status}"))
            if is_over:
                raise NotHappened(self._missing(wanted, start, f"within {within:g} s"))
            time.sleep(_LOOK_S)

    def wait_ready(self, *, within: float = 10.0) -> None:
        """Waits until the application handles SDL's events."""
        self.command("state", within=within)

    def link(self, *, within: float = 10.0) -> str:
        """Waits until the page can be opened in a browser, and returns the link to it.

        Raises NotHappened after that many seconds.
        """
        deadline = time.monotonic() + within
        while (found := _LINK.search(self.errors)) is None:
            self._raise_if_ended()
            if time.monotonic() >= deadline:
                raise NotHappened(f"no page was served within {within:g} s")
            time.sleep(_LOOK_S)
        return found[1]

    def quit(self) -> None:
        """Sends the application an SDL_QUIT event, and does not wait for its end."""
        self.command("quit")

    def wait(self, *, within: float | None = None) -> int:
        """Waits until the program has ended, by default up to its limit, and returns its status.

        Raises NotHappened after that many seconds or when the scenario failed, and Error when the
        program or the device could not be started.
        """
        try:
            status = self._process.wait(within)
        except subprocess.TimeoutExpired:
            raise NotHappened(f"the program has not ended within {within:g} s") from None
        self._raise_if_not_set_up()
        if self._has_scenario and status == _SCENARIO_FAILED:
            self._is_told = True
            raise NotHappened(self.errors.strip())
        return status

    def end(self) -> int:
        """Asks the program to quit, kills it after 5 seconds, returns its status as wait() does."""
        end(self._process, patience=_ASKED_S)
        return self.wait()

    def close(self) -> None:
        """Ends the program almost at once if it still runs, and removes its temporary files.

        A root folder that was given is kept. Journal, status, output and errors can still be read.
        """
        if not self._finish.alive:
            return
        end(self._process)
        self._journal.read()
        self._kept = {name: self._written(name) for name in WRITTEN}
        self._finish()

    def _device_name(self, device: StrPath | Mapping[str, Any]) -> str:
        if not isinstance(device, Mapping):
            return os.fspath(device)
        path = self._folder / "device.json"
        path.write_text(json.dumps(device), encoding="utf-8")
        return str(path)

    # `tavsim run` makes this file in the folder once it has checked all its other arguments.
    def _wait_until_set_up(self) -> None:
        while not (self._root / ".run").exists():
            if self.status is not None:
                self._raise_if_not_set_up()
                return
            time.sleep(_LOOK_S)

    def _tavsim(self, *words: str, given: str = "") -> subprocess.CompletedProcess[str]:
        return subprocess.run(
            [self._tool, *words],
            input=given,
            capture_output=True,
            encoding="utf-8",
            errors="replace",
            check=False,
        )

    def _written(self, name: str) -> str:
        if not self._finish.alive:
            return self._kept[name]
        return (self._folder / name).read_text(encoding="utf-8", errors="replace")

    def _raise_if_not_set_up(self) -> None:
        errors = self.errors
        is_tavsims = errors.startswith("tavsim: ") or not self._root.exists()
        if self.status in _NOT_SET_UP and is_tavsims:
            self._is_told = True
            raise Error(reason(errors))

    def _raise_if_ended(self) -> None:
        if self.status is not None:
            self._raise_if_not_set_up()
            raise Error(f"the program has ended with {self.status}\n{self.errors}".rstrip())

    # The index of the first of these entries that matches, or else why there is none.
    def _find(self, wanted: str, start: int, end: int) -> tuple[int | None, str]:
        lines = "\n".join(self._journal.lines[start:end])
        found = self._tavsim("journal", "--number", "/dev/stdin", wanted, given=lines)
        if found.returncode == _NO_ENTRY:
            return None, found.stderr.strip()
        if found.returncode != 0:
            raise Error(reason(found.stderr))
        return start + int(found.stdout.partition(":")[0]), ""

    def _missing(self, wanted: str, start: int, until: str) -> str:
        _, why = self._find(wanted, start, len(self._journal.lines))
        shown = self._journal.lines[-_LINES_SHOWN:]
        said = self.errors.splitlines()[-_LINES_SHOWN:]
        text = f"the program did nothing like {wanted} {until}: {why}"
        for title, lines in (("the journal's end", shown), ("its standard error's", said)):
            text += "".join(f"\n  {line}" for line in [f"{title}:", *lines]) if lines else ""
        return text
