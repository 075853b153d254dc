"""What a fleet's records come to."""

from __future__ import annotations

from collections import Counter
from typing import Dict, List, Tuple

from gponval import Link
from gponval.fleet._records import STATUSES, Record, printable

_FULLEST = 5
_CARDS_OF_A_REASON = 3


class Summary:
    """Takes records one by one and keeps only what it says in the end."""

    def __init__(self) -> None:
        self.statuses: Counter[str] = Counter()
        self.errors: Counter[str] = Counter()
        """Refused cards by the request that refuses them; a card may be in several."""
        self.warnings: Counter[str] = Counter()
        self.reasons: Dict[str, Tuple[int, List[str]]] = {}
        """Why cards could not be audited: how many, and some of their names."""
        self.onus = 0
        self.links = 0
        self.fullest: List[Tuple[str, Link]] = []
        """The fullest links with their cards, the fullest first."""

    def add(self, record: Record) -> None:
        self.statuses[record.status] += 1
        self.onus += record.onus
        self.links += len(record.links)
        for request in {f.request for f in record.findings if f.result == "ERROR"}:
            self.errors[request] += 1
        for request in {f.request for f in record.findings if f.result == "WARNING"}:
            self.warnings[request] += 1
        if record.why:
            count, names = self.reasons.get(record.why, (0, []))
            names = names if len(names) == _CARDS_OF_A_REASON else [*names, record.name]
            self.reasons[record.why] = (count + 1, names)
        links = [(record.name, link) for link in record.links if link.share is not None]
        self.fullest = sorted([*self.fullest, *links], key=_fullest_first)[:_FULLEST]

    @property
    def cards(self) -> int:
        return sum(self.statuses.values())

    def by_request(self) -> List[Tuple[str, int]]:
        """How many cards each request refuses or questions, the most first."""
        both = self.errors + self.warnings
        return sorted(both.items(), key=lambda item: (-item[1], item[0]))

    def exit_status(self) -> int:
        if self.statuses["unreadable"] or self.statuses["failed"]:
            return 2
        return 1 if self.statuses["refused"] or self.statuses["warned"] else 0

    def text(self, seconds: float) -> str:
        lines = [f"{self.cards} cards: {self.counts()}"]
        lines += _requests("refused by", self.errors)
        lines += _requests("warned by", self.warnings)
        lines += [
            f"  {count} of them: {printable(why)} ({printable(', '.join(names))}"
            + (", ...)" if count > len(names) else ")")
            for why, (count, names) in sorted(self.reasons.items(), key=lambda item: -item[1][0])
        ]
        if self.fullest:
            lines.append("Fullest links:")
        for name, link in self.fullest:
            lines.append(f"  {100 * (link.share or 0):5.1f} %  {link.path} of {printable(name)}")
        rate = self.cards / seconds if seconds > 0 else 0
        lines.append(f"{seconds:.1f} s, {rate:.1f} cards/s")
        return "\n".join(lines)

    def counts(self) -> str:
        counts = [f"{self.statuses[status]} {status}" for status in STATUSES if self.statuses[status]]
        return ", ".join(counts) or "none"


def _fullest_first(entry: Tuple[str, Link]) -> Tuple[float, str, str]:
    """Audits end in any order, which must not show."""
    name, link = entry
    return (-(link.share or 0), name, link.path)


def _requests(words: str, requests: Counter[str]) -> List[str]:
    by_count = sorted(requests.items(), key=lambda item: (-item[1], item[0]))
    return [f"  {count} {words} {request}" for request, count in by_count]
