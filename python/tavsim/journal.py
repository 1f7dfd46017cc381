"""The journal of a run, read while it is written."""

from __future__ import annotations

import json
from pathlib import Path
from typing import Any

Entry = dict[str, Any]
"""What the application did to the device, or received: at, kind, what, and further members."""


class Journal:
    """The entries of a journal file that is still being written."""

    def __init__(self, path: Path) -> None:
        self.entries: list[Entry] = []
        self.lines: list[str] = []  # the same as they are written
        self._path = path
        self._offset = 0

    def read(self) -> None:
        """Reads the whole lines that have been written since the last call."""
        if not self._path.exists():
            return
        with self._path.open("rb") as file:
            file.seek(self._offset)
            whole, newline, _ = file.read().rpartition(b"\n")
        self._offset += len(whole) + len(newline)
        # Text that comes from the application need not be UTF-8.
        text = whole.decode("utf-8", errors="replace")
        lines = [line for line in text.split("\n") if line]
        self.lines += lines
        self.entries += [json.loads(line) for line in lines]
