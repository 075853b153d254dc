"""What a commit or a request answers."""

from __future__ import annotations

from typing import NamedTuple, Tuple

from gponval._load import Load


class Answer(NamedTuple):
    """What one validator said of one node."""

    request: str
    path: str
    result: str
    """``"OK"``, ``"WARNING"`` or ``"ERROR"``."""
    text: str
    msecs: float


class Verdict(NamedTuple):
    """The outcome of a commit, a check or a request. True if it was accepted; ``str`` of it is what
    the command prints."""

    result: str
    """``"accepted"``, ``"rejected"`` or ``"unconfirmed"``."""
    answers: Tuple[Answer, ...]
    messages: Tuple[str, ...]
    """Notices that validators sent to the user's session."""
    text: str

    def __bool__(self) -> bool:
        return self.result == "accepted"

    def __str__(self) -> str:
        return self.text


class Audit(NamedTuple):
    """What a change would lead to."""

    verdict: Verdict
    load: Load
