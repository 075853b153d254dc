"""What goes to a worker, and what comes back: plain values, which any process can read."""

from __future__ import annotations

import importlib
import json
from dataclasses import asdict, dataclass, field
from hashlib import sha256
from typing import Any, Dict, List, Optional

from gponval import Link

STATUSES = ("clean", "warned", "refused", "unreadable", "failed")


class Trouble(Exception):
    """What keeps the whole audit from going on."""


def optional_module(name: str, package: str, what: str) -> Any:
    """A module that only some audits need, from a Debian package of its own."""
    try:
        return importlib.import_module(name)
    except ImportError as error:
        raise Trouble(f"{what} needs the package {package}") from error


def printable(text: str) -> str:
    """The text without letters that would change what a terminal shows."""
    return "".join(letter if letter.isprintable() else ascii(letter)[1:-1] for letter in text)


@dataclass(frozen=True)
class Job:
    """One card to audit. Contents, not names of files: the worker may be another machine."""

    name: str
    config: bytes
    card: Optional[bytes] = None

    def digest(self) -> str:
        """The same for the same contents."""
        card = b"-" if self.card is None else b"+" + self.card
        return sha256(sha256(self.config).digest() + card).hexdigest()[:32]


@dataclass(frozen=True)
class Finding:
    """An answer of a validator that is not OK."""

    request: str
    path: str
    result: str
    """``"WARNING"`` or ``"ERROR"``."""
    text: str


@dataclass
class Record:
    """The audit of one card, a line of JSON."""

    name: str
    status: str
    """One of STATUSES. A refused card has errors; a warned one only warnings."""
    digest: str = ""
    why: str = ""
    """Why an unreadable card could not be read, or what happened to a failed one."""
    line: Optional[int] = None
    findings: List[Finding] = field(default_factory=list)
    links: List[Link] = field(default_factory=list)
    service_ports: int = 0
    service_port_limit: int = 0
    seconds: float = 0.0

    @property
    def share(self) -> Optional[float]:
        """How full the fullest link is."""
        return max((link.share for link in self.links if link.share is not None), default=None)

    @property
    def onus(self) -> int:
        return sum(link.onus for link in self.links)

    def to_json(self) -> str:
        values = {
            **vars(self),
            "findings": [asdict(finding) for finding in self.findings],
            "links": [link._asdict() for link in self.links],
        }
        return json.dumps(values, separators=(",", ":"))


def record_of(text: bytes) -> Record:
    """The record of a line of JSON. Raises ValueError."""
    try:
        values: Dict[str, Any] = json.loads(text)
        values["findings"] = [Finding(**finding) for finding in values["findings"]]
        values["links"] = [Link(**link) for link in values["links"]]
        record = Record(**values)
    except (KeyError, TypeError, ValueError, AttributeError, RecursionError) as error:
        raise ValueError("no record of an audit") from error
    if record.status not in STATUSES or not isinstance(record.name, str):
        raise ValueError("no record of an audit")
    return record
