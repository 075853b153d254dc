"""The audit of one card. All that a worker needs."""

from __future__ import annotations

import time
from typing import List

import gponval
from gponval.fleet._records import Finding, Job, Record

_EMPTY = b'{"base:config":{}}'


def audit(job: Job) -> Record:
    """Whatever is wrong with the card is in its record."""
    start = time.perf_counter()
    try:
        record = _audited(job)
    except gponval.InputError as error:
        record = Record(job.name, "unreadable", why=_why(error), line=error.line)
    except Exception as error:  # one card must not end the others
        record = Record(job.name, "failed", why=f"{type(error).__name__}: {error}")
    record.digest = job.digest()
    record.seconds = round(time.perf_counter() - start, 6)
    return record


def _audited(job: Job) -> Record:
    try:
        empty = gponval.Card(_EMPTY, card=job.card)
    except gponval.InputError as error:
        raise gponval.InputError(f"card description: {_why(error)}") from error
    verdict, load = empty.audit(candidate=job.config)
    findings = [
        Finding(answer.request, answer.path, answer.result, answer.text)
        for answer in verdict.answers
        if answer.result != "OK"
    ]
    return Record(
        job.name,
        _status(findings),
        findings=findings,
        links=load.links,
        service_ports=load.service_ports,
        service_port_limit=load.limits.service_ports,
    )


def _status(findings: List[Finding]) -> str:
    if any(finding.result == "ERROR" for finding in findings):
        return "refused"
    return "warned" if findings else "clean"


def _why(error: gponval.InputError) -> str:
    return str(error)
