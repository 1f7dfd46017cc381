"""A fixture for pytest. To use it, write in conftest.py:

    pytest_plugins = ["tavsim.pytest_fixture"]
"""

from __future__ import annotations

import contextlib
from collections.abc import Callable, Iterator

import pytest

from tavsim.run import Run


@pytest.fixture
def tavsim_run() -> Iterator[Callable[..., Run]]:
    """Starts programs as tavsim.Run does. Those that still run when the test ends are killed."""
    with contextlib.ExitStack() as runs:

        def start(*arguments: object, **options: object) -> Run:
            run = Run(*arguments, **options)  # type: ignore[arg-type]
            runs.callback(run.close)
            return run

        yield start
