"""The manifest names each card and its card description."""

from __future__ import annotations

import csv
import io
from dataclasses import dataclass
from typing import Any, List, Mapping, Optional

from gponval.fleet._archives import Unreadable, read_limited
from gponval.fleet._records import Trouble, optional_module

_COLUMNS = ("name", "config", "card")
_LONGEST = 100_000_000


@dataclass(frozen=True)
class Row:
    """``config`` and ``card`` are names as in the folder or the archive."""

    name: str
    config: str
    card: Optional[str]


def read_manifest(path: str) -> List[Row]:
    """Raises Trouble: without its manifest no card of the fleet is known."""
    try:
        with open(path, "rb") as file:
            text = read_limited(file, _LONGEST).decode("utf-8-sig")
    except OSError as error:
        raise Trouble(f"{path}: cannot read: {error.strerror}") from error
    except (Unreadable, UnicodeDecodeError) as error:
        raise Trouble(f"{path}: cannot read: {error}") from error
    is_yaml = path.lower().endswith((".yaml", ".yml"))
    entries = _of_yaml(path, text) if is_yaml else _of_csv(path, text)
    return [_row(f"{path}: card {number}", entry) for number, entry in enumerate(entries, 1)]


def _of_csv(path: str, text: str) -> List[Any]:
    try:
        return list(csv.DictReader(io.StringIO(text, newline=""), strict=True))
    except csv.Error as error:
        raise Trouble(f"{path}: no CSV: {error}") from error


def _of_yaml(path: str, text: str) -> List[Any]:
    yaml = optional_module("yaml", "python3-yaml", "a manifest in YAML")
    try:
        entries = yaml.safe_load(text)
    except (yaml.YAMLError, ValueError, RecursionError) as error:
        raise Trouble(f"{path}: no YAML: {error}") from error
    if not isinstance(entries, list):
        raise Trouble(f"{path}: no list of cards")
    return entries


def _row(place: str, entry: Any) -> Row:
    if not isinstance(entry, Mapping):
        raise Trouble(f"{place}: no mapping")
    values = {}
    for column, value in entry.items():
        if column not in _COLUMNS:
            raise Trouble(f"{place}: {column!r} is none of {', '.join(_COLUMNS)}")
        if isinstance(value, (list, Mapping)):
            raise Trouble(f"{place}: {column} is no text")
        values[column] = "" if value is None else str(value)
    config = values.get("config", "")
    if not config:
        raise Trouble(f"{place}: config is missing")
    return Row(values.get("name") or config, config, values.get("card") or None)
