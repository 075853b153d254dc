"""A card that stays loaded."""

from __future__ import annotations

import json
from typing import Any, Callable, Dict, Iterable, List, NoReturn, Optional, Tuple, Union

from gponval import _inputs, _native
from gponval._changes import Changes, changes_of
from gponval._edit import Value, lexical
from gponval._errors import InputError
from gponval._inputs import Change, Source
from gponval._load import Load, load_of
from gponval._verdict import Answer, Audit, Verdict

Confirm = Union[bool, Callable[[List[Answer]], bool]]


class Card:
    """A line card with its configuration, which the plug-in of its daemon validates.

    >>> card = Card("town.xml", card="town.card")
    >>> verdict = card.commit("change.xml")
    >>> if not verdict:
    ...     print(verdict)

    ``config`` is the name of a file (JSON if it ends in ``.json``, else XML), a ``pathlib.Path``, a
    text or its ``bytes``, or a ``dict`` as in RFC 7951. ``card`` describes the card: the name of a
    card file, its text, or a ``dict`` such as ``{"bw-check": True, "max-service-ports": 4096}``.

    A change is one of the same, with the operations of NETCONF's edit-config, or an ``Edit``.
    Raises InputError for input that cannot be used; the card is then as it was. Cards may be used
    from any thread; one works at a time, without Python's lock.
    """

    def __init__(self, config: Source, card: Optional[Source] = None) -> None:
        self._native = _native.Card(_inputs.configuration(config), _inputs.card_file(card))

    def commit(
        self,
        change: Optional[Change] = None,
        confirm: Confirm = False,
        all: bool = False,
        only: Iterable[str] = (),
        *,
        candidate: Optional[Source] = None,
    ) -> Verdict:
        """Validates a change and keeps it if it is accepted.

        ``confirm`` answers warnings: yes or no, or a function that gets them and returns yes or no;
        the function cannot use a card. ``all`` goes on after the first error. ``only`` names the
        requests to call. ``candidate`` is a whole new configuration in place of a change.
        """
        return self._run(_inputs.edits(change, candidate), confirm, all, only, True)

    def check(
        self,
        change: Optional[Change] = None,
        confirm: Confirm = False,
        all: bool = False,
        only: Iterable[str] = (),
        *,
        candidate: Optional[Source] = None,
    ) -> Verdict:
        """The verdict of ``commit``; the card stays as it is."""
        return self._run(_inputs.edits(change, candidate), confirm, all, only, False)

    def audit(
        self, change: Optional[Change] = None, *, candidate: Optional[Source] = None
    ) -> Audit:
        """What the card would be with the change: the verdict of every validator that the change
        concerns, with warnings confirmed, and what the links would carry, even if the change is
        rejected. Nothing is kept.

        >>> audit = Card("{}", card="town.card").audit(candidate="town.xml")
        >>> audit.verdict.result, audit.load.links
        """
        report, load = self._native.audit(_inputs.edits(change, candidate))
        return Audit(_verdict(report), load_of(load))

    def request(
        self,
        name: str,
        keypath: str,
        value: Value = None,
        *,
        change: Optional[Change] = None,
    ) -> Verdict:
        """Asks one validator about one node, even if nothing changed there.

        The name is one of ``points()``, and the keypath leads to a node with this request; the node
        need not exist. ``value`` is the new value of a leaf as a file has it; without it, the leaf
        must have one. ``change`` is made before and not kept.
        """
        native_value = None if value is None else _inputs.utf8(lexical(value))
        edits = _inputs.edits(change)
        return _verdict(
            self._native.request(_inputs.utf8(name), _inputs.utf8(keypath), native_value, edits)
        )

    def changes(
        self, change: Optional[Change] = None, *, candidate: Optional[Source] = None
    ) -> Changes:
        """What the change would change, without validation. Nothing is kept."""
        return changes_of(*self._native.changes(_inputs.edits(change, candidate)))

    def config(self, format: str = "xml") -> str:
        """The configuration as text, ``"xml"`` or ``"json"``, without defaults. Passwords are
        encrypted."""
        if format not in ("xml", "json"):
            raise InputError(f"the format is 'xml' or 'json', not {format!r}")
        return self._native.print(format)

    def as_dict(self) -> Dict[str, Any]:
        """The configuration as in RFC 7951."""
        loaded: Dict[str, Any] = json.loads(self.config("json"))
        return loaded

    def get(self, keypath: str) -> Any:
        """The value of a leaf, which may be its default; a ``dict`` of a container or an entry; a
        list of all entries of a list, or of all values of a leaf-list, named without keys.

        None if the node does not exist. Values are as in RFC 7951; a leaf of type empty is
        ``[None]``.
        """
        nodes, one_of_several, every = self._native.get(_inputs.utf8(keypath))
        values = [next(iter(json.loads(node).values())) for node in nodes]
        if one_of_several:
            values = [value[0] for value in values]
        if every:
            return values
        return values[0] if values else None

    def load(self) -> Load:
        """What each link carries, by the figures of the plug-in."""
        return load_of(self._native.load())

    def __reduce__(self) -> NoReturn:
        raise TypeError(
            "a Card cannot be pickled or copied, as the plug-in belongs to its process; "
            "make a new one of its config()"
        )

    def _run(
        self,
        edits: List[_native.Edit],
        confirm: Confirm,
        every: bool,
        only: Iterable[str],
        keep: bool,
    ) -> Verdict:
        def answer(warnings: List[Tuple[str, str, str, str, float]]) -> bool:
            if callable(confirm):
                return bool(confirm([Answer(*warning) for warning in warnings]))
            return bool(confirm)

        names = [only] if isinstance(only, (str, bytes)) else list(only)
        requests = [_inputs.utf8(name) for name in names]
        return _verdict(self._native.commit(edits, answer, every, requests, keep))


def _verdict(report: _native.Report) -> Verdict:
    result, answers, messages, text = report
    return Verdict(result, tuple(Answer(*answer) for answer in answers), tuple(messages), text)
