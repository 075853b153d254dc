"""Verdicts on configuration changes of an optical line-terminal card.

>>> import gponval
>>> card = gponval.Card("town.xml", card="town.card")
>>> verdict = card.check(gponval.Edit().set("/config/service-port{16}/gpon/id", "1/1/1"))
>>> bool(verdict), verdict.result
>>> print(verdict)                   # what the command gponval prints
>>> card.load().links[0].total_room  # in kbit/s

``Card`` has the configuration and asks the validators; ``Edit`` writes changes node by node;
``points()`` lists the requests. InputError is raised for what cannot be read.
"""

from __future__ import annotations

import atexit
from typing import List, NamedTuple

from gponval import _native, _places
from gponval._card import Card
from gponval._changes import ChangedNode, Changes
from gponval._edit import Edit
from gponval._errors import InputError
from gponval._load import Fit, Limits, LineProfile, Link, Load
from gponval._verdict import Answer, Audit, Verdict

_native.set_places(_places.PLUGIN, _places.MODEL)
_native.set_input_error(InputError)
# Daemon threads may use cards while Python ends.
atexit.register(_native.stop)


class Point(NamedTuple):
    """A place in the model where a commit asks the plug-in."""

    request: str
    path: str
    call_once: bool
    priority: int


def points() -> List[Point]:
    """The validation points that the plug-in serves, in the order in which a commit calls them."""
    return [Point(*point) for point in _native.points()]


__all__ = [
    "Answer",
    "Audit",
    "Card",
    "ChangedNode",
    "Changes",
    "Edit",
    "Fit",
    "InputError",
    "Limits",
    "LineProfile",
    "Link",
    "Load",
    "Point",
    "Verdict",
    "points",
]
