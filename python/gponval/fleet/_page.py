"""The report as one page for a browser. Nothing in it is loaded from elsewhere.

What the page shows of single cards is in it as compressed JSON, which its script unpacks when somebody
looks at it. The script puts texts of cards into the page only as texts, never as HTML.
"""

from __future__ import annotations

import base64
import gzip
import hashlib
import json
from dataclasses import replace
from pathlib import Path
from typing import Any, Dict, List, Optional

from gponval.fleet._catalogue import catalogue
from gponval.fleet._plot import BINS, bin_of, links_by_fill
from gponval.fleet._records import STATUSES, Finding, Record, optional_module
from gponval.fleet._summary import Summary

_CARDS_OF_A_CHUNK = 50
# Of a card with thousands of findings, the table and the card's part show so many.
_FINDINGS_IN_TABLE = 20
_FINDINGS_OF_A_CARD = 200


class Page:
    """Takes records one by one, and keeps them compressed."""

    def __init__(self) -> None:
        # What is missing is missed before the audit, not after it.
        self._jinja2: Any = optional_module("jinja2", "python3-jinja2", "--html")
        self._fill = [0] * len(BINS)
        links_by_fill(self._fill)
        self._cards: List[List[Any]] = []
        self._findings: List[List[Any]] = []
        self._requests: Dict[str, int] = {}
        self._explanations: Dict[Optional[str], int] = {None: 0}
        self._chunks: List[str] = []
        self._records: List[str] = []

    def add(self, record: Record) -> None:
        number = len(self._cards)
        self._cards.append(
            [
                record.name,
                STATUSES.index(record.status),
                len(record.findings),
                record.onus,
                record.service_ports,
                None if record.share is None else round(100 * record.share, 1),
                record.why,
            ]
        )
        for finding in record.findings[:_FINDINGS_IN_TABLE]:
            self._findings.append([number, *self._row(finding)])
        for link in record.links:
            if link.share is not None:
                self._fill[bin_of(link.share)] += 1
        shown = replace(record, findings=record.findings[:_FINDINGS_OF_A_CARD])
        self._records.append(
            f'{{"record":{shown.to_json()},"advice":{json.dumps(self._advice(shown))}}}'
        )
        if len(self._records) == _CARDS_OF_A_CHUNK:
            self._end_chunk()

    def html(self, summary: Summary, seconds: float) -> str:
        self._end_chunk()
        here = Path(__file__).parent
        script = (here / "page.js").read_text(encoding="utf-8")
        data = {
            "statuses": STATUSES,
            "cards": self._cards,
            "findings": self._findings,
            "requests": list(self._requests),
            "perChunk": _CARDS_OF_A_CHUNK,
            "advice": list(self._explanations),
        }
        environment = self._jinja2.Environment(
            autoescape=True, trim_blocks=True, lstrip_blocks=True, undefined=self._jinja2.StrictUndefined
        )
        template = environment.from_string((here / "page.html").read_text(encoding="utf-8"))
        markup = self._jinja2.utils.markupsafe.Markup
        page: str = template.render(
            script=markup(script),
            script_hash=_hash(script),
            style=markup((here / "page.css").read_text(encoding="utf-8")),
            plot=markup(links_by_fill(self._fill)),
            fill=list(zip(BINS, self._fill)),
            index=_packed(json.dumps(data, separators=(",", ":"))),
            chunks=self._chunks,
            summary=summary,
            statuses=STATUSES,
            seconds=seconds,
        )
        return page

    def _row(self, finding: Finding) -> List[Any]:
        request = self._requests.setdefault(finding.request, len(self._requests))
        advice = self._explanation(finding)
        return [finding.result, request, finding.path, finding.text, advice]

    def _advice(self, record: Record) -> List[int]:
        return [self._explanation(finding) for finding in record.findings]

    def _explanation(self, finding: Finding) -> int:
        found = catalogue().explain(finding.request, finding.text)
        meaning = None if found is None else found.meaning
        return self._explanations.setdefault(meaning, len(self._explanations))

    def _end_chunk(self) -> None:
        if self._records:
            self._chunks.append(_packed(f"[{','.join(self._records)}]"))
            self._records = []


def _packed(text: str) -> str:
    return base64.b64encode(gzip.compress(text.encode(), 6, mtime=0)).decode()


def _hash(script: str) -> str:
    """Lets a browser run this script and no other."""
    return base64.b64encode(hashlib.sha256(script.encode()).digest()).decode()
