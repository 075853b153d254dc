"""Audits of many cards: each one's whole configuration as the candidate of an empty card.

>>> from gponval.fleet import Fleet, LocalWorkers, audited
>>> with LocalWorkers(jobs=4) as workers:
...     for record in audited(Fleet(["cards"]).jobs(), workers):
...         print(record.name, record.status)

The command ``gponval-fleet`` does this; see docs/fleet.md.
"""

from __future__ import annotations

from gponval.fleet._audit import audit
from gponval.fleet._records import Finding, Job, Record, Trouble
from gponval.fleet._running import LocalWorkers, audited
from gponval.fleet._sources import Fleet

__all__ = [
    "Finding",
    "Fleet",
    "Job",
    "LocalWorkers",
    "Record",
    "Trouble",
    "audit",
    "audited",
]
