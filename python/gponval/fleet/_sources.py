"""The cards of files, folders and archives, one after another, with their contents."""

from __future__ import annotations

import os
import stat
from collections import Counter
from dataclasses import dataclass
from typing import Dict, Iterator, List, Optional, Protocol, Sequence, Set, Tuple, Union

from gponval.fleet._archives import (
    LONGEST_CARD,
    LONGEST_CONFIG,
    TAR_ERRORS,
    ZIP_ERRORS,
    Content,
    Tar,
    Unreadable,
    Zip,
    is_archive,
    is_zip,
    read_limited,
)
from gponval.fleet._manifest import Row, read_manifest
from gponval.fleet._records import Job, Record, Trouble

Item = Union[Job, Record]
"""A card to audit, or the record of one that cannot be."""

_MOST_CARD_BYTES = 64_000_000


class Place(Protocol):
    """Where cards are. ``names`` are the files in it."""

    names: List[str]

    def contents(self, wanted: Set[str], limit: int) -> Iterator[Tuple[str, Content]]:
        """The wanted files, in the order in which the place has them."""


class Folder:
    """A folder with all folders in it; no link to another folder is followed."""

    def __init__(self, path: str) -> None:
        self._path = path
        self.names: List[str] = []
        for folder, folders, files in os.walk(path):
            folders.sort()
            inside = os.path.relpath(folder, path)
            self.names += [os.path.normpath(os.path.join(inside, name)) for name in sorted(files)]

    def contents(self, wanted: Set[str], limit: int) -> Iterator[Tuple[str, Content]]:
        for name in self.names:
            if name in wanted:
                yield name, read_file(os.path.join(self._path, name), limit)


class SingleFile:
    """One file, and the card description next to it."""

    def __init__(self, path: str) -> None:
        self._folder, name = os.path.split(path)
        self.names = [name]
        card = _card_beside(name)
        if os.path.exists(os.path.join(self._folder, card)):
            self.names.append(card)

    def contents(self, wanted: Set[str], limit: int) -> Iterator[Tuple[str, Content]]:
        for name in self.names:
            if name in wanted:
                yield name, read_file(os.path.join(self._folder, name), limit)


def read_file(path: str, limit: int) -> Content:
    try:
        # Opening a pipe must not wait for its other end.
        descriptor = os.open(path, os.O_RDONLY | os.O_NONBLOCK | os.O_CLOEXEC)
        with open(descriptor, "rb") as file:
            if not stat.S_ISREG(os.fstat(descriptor).st_mode):
                return Unreadable("not a file")
            return read_limited(file, limit)
    except Unreadable as error:
        return error
    except OSError as error:
        return Unreadable(f"cannot read: {error.strerror}")


def shown(name: str) -> str:
    """A file's name may be any bytes; that of a card is a text."""
    return os.fsencode(name).decode("utf-8", "backslashreplace")


@dataclass(frozen=True)
class _Entry:
    """One card of a place."""

    name: str
    config: str
    card: Optional[str]


class Fleet:
    """All cards of the paths: each a configuration, a folder or an archive of them. A manifest names
    the cards; without one, they are all files ``*.xml`` and ``*.json``, and the card description of
    ``a.xml`` is ``a.card`` next to it, if there is one. Raises Trouble."""

    def __init__(self, paths: Sequence[str], manifest: Optional[str] = None) -> None:
        self._beside_manifest = os.path.dirname(manifest) if manifest is not None else ""
        self._records: List[Record] = []
        self._places: List[Tuple[str, Place, List[_Entry]]] = []
        self._used: Counter[str] = Counter()
        if manifest is not None:
            self._add_manifest(paths or [self._beside_manifest or "."], read_manifest(manifest))
            return
        for path in paths:
            place = self._open(path)
            if place is not None:
                prefix = path if len(paths) > 1 else None
                self._places.append((path, place, _entries(path, place.names, prefix)))

    def __len__(self) -> int:
        """How many cards there are, as far as it is known before they are read."""
        return len(self._records) + sum(len(entries) for _, _, entries in self._places)

    def jobs(self) -> Iterator[Item]:
        """Each card once. At most the contents of one are in memory."""
        yield from self._records
        for path, place, entries in self._places:
            yield from self._jobs_of(path, place, entries)

    def _add_manifest(self, paths: Sequence[str], rows: List[Row]) -> None:
        left = rows
        for path in paths:
            place = self._open(path)
            if place is None:
                continue
            names = {os.path.normpath(name): name for name in place.names}
            here = [row for row in left if os.path.normpath(row.config) in names]
            left = [row for row in left if os.path.normpath(row.config) not in names]
            self._places.append((path, place, [_entry(row, names) for row in here]))
        for row in left:
            self._records.append(_unreadable(row.name, f"there is no {row.config}"))

    def _open(self, path: str) -> Optional[Place]:
        try:
            if os.path.isdir(path):
                return Folder(path)
            if not os.path.exists(path):
                raise Trouble(f"{shown(path)}: there is no such file")
            if not is_archive(path):
                return SingleFile(path)
            return Zip(path) if is_zip(path) else Tar(path)
        except (*ZIP_ERRORS, *TAR_ERRORS, Unreadable) as error:
            self._records.append(_unreadable(shown(path), f"no archive: {error}"))
            return None

    def _jobs_of(self, path: str, place: Place, entries: List[_Entry]) -> Iterator[Item]:
        by_config: Dict[str, List[_Entry]] = {}
        for entry in entries:
            by_config.setdefault(entry.config, []).append(entry)
        cards = self._cards_of(place, {entry.card for entry in entries if entry.card is not None})
        seen: Set[str] = set()
        try:
            for config, content in place.contents(set(by_config), LONGEST_CONFIG):
                seen.add(config)
                for entry in by_config[config]:
                    yield self._job(entry, content, cards)
        except (*ZIP_ERRORS, *TAR_ERRORS) as error:
            yield _unreadable(shown(path), f"cannot read: {error}")
        damage = place.damage if isinstance(place, Tar) else ""
        if damage:
            yield _unreadable(shown(path), f"cannot read: {damage}")
        for config in by_config.keys() - seen:
            for entry in by_config[config]:
                yield _unreadable(entry.name, "could not be read from the archive")

    def _cards_of(self, place: Place, wanted: Set[str]) -> Dict[str, Content]:
        cards: Dict[str, Content] = {}
        left = _MOST_CARD_BYTES
        if not wanted:
            return cards
        for name, content in place.contents(wanted & set(place.names), LONGEST_CARD):
            left -= len(content) if isinstance(content, bytes) else 0
            cards[name] = content if left >= 0 else Unreadable("too many card descriptions")
        for name in wanted - set(place.names):
            cards[name] = read_file(os.path.join(self._beside_manifest, name), LONGEST_CARD)
        for name in wanted - cards.keys():
            cards[name] = Unreadable("could not be read from the archive")
        return cards

    def _job(self, entry: _Entry, content: Content, cards: Dict[str, Content]) -> Item:
        self._used[entry.name] += 1
        count = self._used[entry.name]
        name = entry.name if count == 1 else f"{entry.name}#{count}"
        card = cards[entry.card] if entry.card is not None else None
        if isinstance(content, Unreadable):
            return _unreadable(name, str(content))
        if isinstance(card, Unreadable):
            return _unreadable(name, f"card description: {card}")
        return Job(name, content, card)


def _entry(row: Row, names: Dict[str, str]) -> _Entry:
    """``names`` are those of the place, as it has them, by their normal form."""
    config = os.path.normpath(row.config)
    if row.card is not None:
        card: Optional[str] = names.get(os.path.normpath(row.card), row.card)
    else:
        card = names.get(_card_beside(config))
    return _Entry(row.name, names[config], card)


def _entries(path: str, names: List[str], prefix: Optional[str]) -> List[_Entry]:
    known = set(names)
    is_place = os.path.isdir(path) or is_archive(path)
    entries = []
    for name in dict.fromkeys(names) if is_place else names[:1]:
        if is_place and not name.lower().endswith((".xml", ".json")):
            continue
        whole = os.path.join(prefix or "", os.path.normpath(name)) if is_place else prefix or name
        card = _card_beside(name)
        entries.append(_Entry(shown(whole), name, card if card in known else None))
    return entries


def _card_beside(name: str) -> str:
    return os.path.splitext(name)[0] + ".card"


def _unreadable(name: str, why: str) -> Record:
    return Record(name, "unreadable", why=why)
