"""The journal of a run, read while it is written."""

from __future__ import annotations

import json
import re
from collections.abc import Mapping
from pathlib import Path
from typing import Any

Entry = dict[str, Any]
"""What the application did to the device, or received: at, kind, what, and further members."""


def matches(entry: Mapping[str, Any], members: Mapping[str, str]) -> bool:
    """Whether the entry has all these members, each with a value that its glob matches.

    In a glob, * stands for any characters and ? for one. Values other than strings are matched by
    their JSON text.
    """
    return all(
        name in entry and _glob(glob).fullmatch(_text(entry[name]))
        for name, glob in members.items()
    )


def _text(value: Any) -> str:
    return value if isinstance(value, str) else json.dumps(value, separators=(",", ":"))


def _glob(glob: str) -> re.Pattern[str]:
    parts = {"*": ".*", "?": "."}
    return re.compile("".join(parts.get(one, re.escape(one)) for one in glob), re.DOTALL)


class Journal:
    """The entries of a journal file that is still being written."""

    def __init__(self, path: Path) -> None:
        self.entries: list[Entry] = []
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
        self.entries += [json.loads(line) for line in text.split("\n") if line]
