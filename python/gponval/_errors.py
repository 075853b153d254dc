"""The error for input that cannot be used."""

from __future__ import annotations

from typing import Optional


class InputError(ValueError):
    """What was given cannot be read or does not fit the data model.

    ``file`` is the name of the file, or None for anything else; ``line`` counts the lines of a file
    or a text from 1, or is None, as for a ``dict`` or an ``Edit``; ``path`` is the node in question,
    or None. ``str(error)`` is one line with file and line.
    """

    file: Optional[str]
    line: Optional[int]
    path: Optional[str]

    def __init__(
        self,
        text: str,
        file: Optional[str] = None,
        line: Optional[int] = None,
        path: Optional[str] = None,
    ) -> None:
        super().__init__(text, file, line, path)
        self.file = file
        self.line = line
        self.path = path

    def __str__(self) -> str:
        text, file, line = self.args[:3]
        if file is None and line is not None:
            place = f"line {line}:"
        else:
            place = "".join(f"{part}:" for part in (file, line) if part is not None)
        return _in_one_line(f"{place} {text}" if place else text)


def _in_one_line(text: str) -> str:
    return "".join(letter if letter.isprintable() else ascii(letter)[1:-1] for letter in text)
