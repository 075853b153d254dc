"""What a change changes."""

from __future__ import annotations

import json
from typing import Any, NamedTuple, Tuple


class ChangedNode(NamedTuple):
    """One node that is created, deleted or has another value.

    ``old`` and ``new`` are the values of a leaf as texts; of an entry or a presence container a
    ``dict`` from the relative path of each node in it to its value. None if there is none.
    """

    path: str
    op: str
    """``"create"``, ``"delete"`` or ``"change"``."""
    old: Any
    new: Any


class Changes(Tuple[ChangedNode, ...]):
    """The nodes in the order of the model; ``str`` of it is what ``gponval diff`` prints."""

    text: str = ""

    def __str__(self) -> str:
        return self.text


def changes_of(nodes: str, text: str) -> Changes:
    """From the JSON and the text of ``gponval diff``."""
    changes = Changes(ChangedNode(**node) for node in json.loads(nodes))
    changes.text = text
    return changes
