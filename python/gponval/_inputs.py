"""What a user may give as a configuration, a change or a card description."""

from __future__ import annotations

import json
import os
import re
from typing import Any, List, Mapping, Optional, Union

from gponval import _native
from gponval._edit import Edit, lexical
from gponval._errors import InputError

Source = Union[str, bytes, "os.PathLike[str]", Mapping[str, Any]]
Change = Union[Source, Edit]

# Nothing, a line "key = value", a comment, or several lines.
_CARD_TEXT = re.compile(r"\s*([\w-]+\s*=|#|$)|.*\n", re.ASCII)
_BYTE_ORDER_MARK = "\ufeff"
_BLANKS = " \t\r\n"
_BLANKS_IN_BYTES = (_BYTE_ORDER_MARK + _BLANKS).encode()
_LONGEST_BEGIN = 1000
# More than any card needs; a longer file, such as /dev/zero, is no configuration.
_LONGEST_FILE = 250_000_000


def _read(name: str) -> bytes:
    try:
        with open(name, "rb") as file:
            text = file.read(_LONGEST_FILE + 1)
    except OSError as error:
        raise InputError(f"cannot read: {error.strerror}", name) from error
    except ValueError as error:
        raise InputError(f"cannot read: {error}", name) from error
    if len(text) > _LONGEST_FILE:
        raise InputError(f"cannot read: longer than {_LONGEST_FILE // 1_000_000} MB", name)
    return text


def utf8(text: str) -> bytes:
    """The text for the extension module. Half of a surrogate pair has no form in UTF-8, and a text
    of the platform ends at a NUL."""
    if not isinstance(text, str):
        raise InputError(f"expected a str, not {type(text).__name__}")
    if "\0" in text:
        raise InputError(f"the text has a NUL at its character {text.index(chr(0)) + 1}")
    try:
        return text.encode()
    except UnicodeEncodeError as error:
        raise InputError(f"the text is not Unicode at its character {error.start + 1}") from error


def _json_of(source: Mapping[str, Any]) -> str:
    try:
        return json.dumps(dict(source))
    except (TypeError, ValueError, RecursionError) as error:
        raise InputError(f"the dict cannot be written as JSON: {error}") from error


def _begin_of(text: str) -> str:
    return text.lstrip(_BYTE_ORDER_MARK + _BLANKS)[:1]


def _name_of(source: Any) -> str:
    if not isinstance(source, (str, os.PathLike)):
        raise InputError(f"expected a path, a text or a dict, not {type(source).__name__}")
    name = os.fspath(source)
    if not isinstance(name, str):
        raise InputError("expected a path of type str")
    if not name.strip() or "\n" in name:
        raise InputError("the text begins neither with '<' nor with '{'")
    return name


def _native_source(source: Source, prefix: str = "") -> _native.Edit:
    if isinstance(source, Mapping):
        return _native.Edit(prefix + "json", _json_of(source), has_lines=False)
    if isinstance(source, bytes):
        is_json = source[:_LONGEST_BEGIN].lstrip(_BLANKS_IN_BYTES).startswith(b"{")
        return _native.Edit(prefix + ("json" if is_json else "xml"), source)
    if isinstance(source, str) and _begin_of(source) in ("<", "{"):
        kind = "json" if _begin_of(source) == "{" else "xml"
        return _native.Edit(prefix + kind, utf8(source))
    name = _name_of(source)
    kind = "json" if name.lower().endswith(".json") else "xml"
    return _native.Edit(prefix + kind, _read(name), os.fsencode(name))


def configuration(source: Source) -> _native.Edit:
    """A whole configuration."""
    return _native_source(source)


def edits(change: Optional[Change], candidate: Optional[Source] = None) -> List[_native.Edit]:
    """A change, or a candidate, as edits."""
    if change is not None and candidate is not None:
        raise TypeError("give a change or a candidate, not both")
    if candidate is not None:
        return [_native_source(candidate, "candidate-")]
    if change is None:
        return []
    if isinstance(change, Edit):
        return [
            _native.Edit(operation, utf8(text), has_lines=False) for operation, text in change.steps
        ]
    return [_native_source(change)]


def card_file(card: Optional[Source]) -> Optional[_native.Edit]:
    """A card description: a file, its text, or a dict of its keys."""
    if card is None:
        return None
    if isinstance(card, Mapping):
        lines = [f"{key} = {lexical(value)}" for key, value in card.items()]
        if any("\n" in line for line in lines):
            raise InputError("a key or a value of the card has a line end")
        return _native.Edit("card", utf8("\n".join(lines)), has_lines=False)
    if isinstance(card, bytes):
        return _native.Edit("card", card)
    if isinstance(card, str) and _CARD_TEXT.match(card) and not os.path.exists(card):
        return _native.Edit("card", utf8(card))
    name = _name_of(card)
    return _native.Edit("card", _read(name), os.fsencode(name))
