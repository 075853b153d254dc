"""Results as JSON Lines: each record a line, as soon as it is there."""

from __future__ import annotations

import os
from typing import BinaryIO, Dict, Iterator, Optional, Set

from gponval.fleet._records import Job, Record, Trouble, record_of
from gponval.fleet._sources import Item


class Lines:
    """Each record is a whole line of the file, whatever ends the program."""

    def __init__(self, file: BinaryIO) -> None:
        self._file = file

    def write(self, record: Record) -> None:
        self._file.write(record.to_json().encode() + b"\n")
        self._file.flush()


class Earlier:
    """The file of an earlier audit, which this one goes on with. Raises Trouble."""

    def __init__(self, path: str) -> None:
        self._lines: Dict[str, int] = {}
        self._kept: Set[str] = set()
        try:
            self._file = open(path, "r+b" if os.path.exists(path) else "w+b")
            end = self._read(path)
            self._file.truncate(end)
            self.lines = Lines(open(path, "ab"))
        except OSError as error:
            raise Trouble(f"{path}: cannot use: {error.strerror}") from error

    def without_done(self, items: Iterator[Item]) -> Iterator[Item]:
        """The items; in place of a card that is done, its record."""
        for item in items:
            known = self._record(item)
            if known is None:
                yield item
            else:
                self._kept.add(known.name)
                yield known

    def has(self, record: Record) -> bool:
        """Whether the record is one of the earlier audit."""
        return record.name in self._kept

    def _read(self, path: str) -> int:
        """The end of the last whole line. What comes after it was not written to its end."""
        end = 0
        for number, line in enumerate(self._file, 1):
            if not line.endswith(b"\n"):
                break
            try:
                self._lines[record_of(line).name] = end
            except ValueError as error:
                raise Trouble(f"{path}:{number}: {error}") from error
            end += len(line)
        return end

    def _record(self, item: Item) -> Optional[Record]:
        place = self._lines.get(item.name)
        if place is None:
            return None
        self._file.seek(place)
        record = record_of(self._file.readline())
        if isinstance(item, Job):
            is_same = record.digest == item.digest() and record.status != "failed"
        else:
            is_same = record == item
        return record if is_same else None
