"""What a user at a terminal sees while cards are audited. A pipe gets none of it."""

from __future__ import annotations

import sys
from contextlib import contextmanager
from typing import Any, Callable, Iterator

from gponval.fleet._records import Trouble, optional_module


@contextmanager
def progress(total: int) -> Iterator[Callable[[str], None]]:
    """A function to call after each card, with what to show next to the bar."""
    if not sys.stderr.isatty():
        yield lambda text: None
        return
    try:
        rich: Any = optional_module("rich.progress", "python3-rich", "a progress bar")
        console: Any = optional_module("rich.console", "python3-rich", "a progress bar")
    except Trouble:
        yield lambda text: None
        return
    bar = rich.Progress(
        rich.TextColumn("{task.completed} of {task.total} cards"),
        rich.BarColumn(bar_width=None),
        rich.TextColumn("{task.fields[rate]}"),
        rich.TimeRemainingColumn(),
        rich.TextColumn("{task.fields[text]}"),
        console=console.Console(stderr=True),
        transient=True,
    )
    with bar:
        task = bar.add_task("", total=total, text="", rate="")

        def advance(text: str) -> None:
            speed = bar.tasks[0].speed
            rate = f"{speed:.1f} cards/s" if speed else ""
            bar.update(task, advance=1, text=text, rate=rate)

        yield advance
