"""A fixture for pytest. It is there where conftest.py says

    pytest_plugins = ["tavsim.pytest_fixture"]
"""

from __future__ import annotations

import contextlib
from collections.abc import Callable, Iterator

import pytest

from tavsim.run import Run


@pytest.fixture
def tavsim_run() -> Iterator[Callable[..., Run]]:
    """Starts programs as tavsim.Run does; those that still run at the test's end are killed."""
    with contextlib.ExitStack() as runs:

        def start(*arguments: object, **options: object) -> Run:
            run = Run(*arguments, **options)  # type: ignore[arg-type]
            runs.callback(run.close)
            return run

        yield start
