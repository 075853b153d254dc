"""The command gponval-fleet."""

from __future__ import annotations

import argparse
import os
import signal
import sys
import time
from typing import Any, BinaryIO, List, Optional, Sequence, cast

from gponval.fleet._lines import Earlier, Lines
from gponval.fleet._progress import progress
from gponval.fleet._records import Record, Trouble, printable
from gponval.fleet._running import LocalWorkers, audited
from gponval.fleet._sources import Fleet
from gponval.fleet._summary import Summary

_HELP = """Audits the configurations of many cards.

Each card's whole configuration is committed to an empty card, with every validator asked, and
nothing is kept. PATH is a configuration, a folder or an archive (.zip, .tar, .tar.gz, .tar.bz2,
.tar.xz) of them. The card description of a.xml is a.card next to it, unless the manifest names
another one."""

_STATUS = """The exit status is 0 if all cards are clean, 1 if there are findings, and 2 if a card could not be
audited, or the audit did not end.

Examples:
  gponval-fleet audit cards
  gponval-fleet audit cards.tar.gz --html report.html
  gponval-fleet audit cards --resume results.jsonl
  gponval-fleet audit --manifest fleet.csv --scheduler tcp://cluster:8786"""

_TROUBLE = 2


def _number_of_jobs(text: str) -> int:
    if not text.isdecimal() or not 0 < int(text) <= 1024:
        raise argparse.ArgumentTypeError(f"{text!r} is no number from 1 to 1024")
    return int(text)


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="gponval-fleet", description="Audits the configurations of many cards."
    )
    commands = parser.add_subparsers(metavar="COMMAND", dest="command", required=True)
    command = commands.add_parser(
        "audit",
        help="validate each card, and report what its links carry",
        description=_HELP,
        epilog=_STATUS,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    option = command.add_argument
    option("paths", nargs="*", metavar="PATH", help="a configuration, a folder or an archive")
    option("--manifest", metavar="FILE", help="CSV or YAML with name, config and card of each card")
    option("--jobs", type=_number_of_jobs, metavar="N", help="processes (one for each processor)")
    option("--scheduler", metavar="ADDRESS", help="audit on the workers of this Dask scheduler")
    option("--html", metavar="FILE", help="write a page for a browser")
    option(
        "--format",
        choices=("text", "jsonl"),
        default="text",
        help="of standard output: findings and a summary, or a record of each card (text)",
    )
    option("--output", metavar="FILE", help="write a record of each card, as JSON Lines")
    option("--resume", metavar="FILE", help="go on with the FILE of an earlier --output")
    return parser


def _options(arguments: Optional[Sequence[str]]) -> argparse.Namespace:
    parser = _parser()
    options = parser.parse_args(arguments)
    if not options.paths and options.manifest is None:
        parser.error("give a PATH or --manifest")
    if options.output is not None and options.resume is not None:
        parser.error("--resume writes to its FILE, so it excludes --output")
    if options.scheduler is not None and options.jobs is not None:
        parser.error("--jobs is for this machine, so it excludes --scheduler")
    return options


def _workers(options: argparse.Namespace) -> Any:
    if options.scheduler is None:
        return LocalWorkers(options.jobs)
    from gponval.fleet._cluster import ClusterWorkers

    return ClusterWorkers(options.scheduler)


def _opened(path: str, mode: str = "wb") -> BinaryIO:
    try:
        return cast(BinaryIO, open(path, mode))
    except OSError as error:
        raise Trouble(f"{path}: cannot write: {error.strerror}") from error


def _print_findings(record: Record) -> None:
    if record.status == "clean":
        return
    print(f"{printable(record.name)}: {record.status}")
    if record.why:
        print(f"  {printable(record.why)}")
    for finding in record.findings:
        print(f"  {finding.result} {printable(finding.path)} ({finding.request})")
        for line in finding.text.splitlines():
            print(f"  {printable(line)}")
    print(flush=True)


class _Outputs:
    """Where each record goes."""

    def __init__(self, options: argparse.Namespace, earlier: Optional[Earlier]) -> None:
        self.summary = Summary()
        self._earlier = earlier
        self._page = None
        if options.html is not None:
            from gponval.fleet._page import Page

            self._html: str = options.html
            _opened(self._html, "ab").close()  # an earlier report stays until there is a new one
            self._page = Page()
        self._is_text = options.format == "text"
        self._lines: List[Lines] = []
        if options.output is not None:
            self._lines.append(Lines(_opened(options.output)))
        if earlier is not None:
            self._lines.append(earlier.lines)
        if not self._is_text:
            self._lines.append(Lines(sys.stdout.buffer))

    def add(self, record: Record) -> None:
        self.summary.add(record)
        if self._page is not None:
            self._page.add(record)
        if self._earlier is None or not self._earlier.has(record):
            for lines in self._lines:
                lines.write(record)
        if self._is_text:
            _print_findings(record)


    def end(self, seconds: float) -> None:
        if self._page is not None:
            with _opened(self._html) as file:
                file.write(self._page.html(self.summary, seconds).encode())


def _audit(options: argparse.Namespace) -> int:
    start = time.monotonic()
    fleet = Fleet(options.paths, options.manifest)
    if len(fleet) == 0:
        raise Trouble("there is no configuration, *.xml or *.json, in the paths")
    earlier = Earlier(options.resume) if options.resume is not None else None
    outputs = _Outputs(options, earlier)
    items = fleet.jobs() if earlier is None else earlier.without_done(fleet.jobs())
    summary_to = sys.stdout if options.format == "text" else sys.stderr
    try:
        with progress(len(fleet)) as advance, _workers(options) as workers:
            for record in audited(items, workers):
                outputs.add(record)
                advance(outputs.summary.counts())
    except (KeyboardInterrupt, Trouble):
        print(outputs.summary.text(time.monotonic() - start), file=summary_to, flush=True)
        raise
    outputs.end(time.monotonic() - start)
    print(outputs.summary.text(time.monotonic() - start), file=summary_to, flush=True)
    return outputs.summary.exit_status()


def _interrupt(*_: object) -> None:
    raise KeyboardInterrupt


def main(arguments: Optional[Sequence[str]] = None) -> int:
    options = _options(arguments)
    signal.signal(signal.SIGTERM, _interrupt)
    try:
        return _audit(options)
    except Trouble as error:
        print(f"gponval-fleet: {printable(str(error))}", file=sys.stderr)
    except KeyboardInterrupt:
        print("gponval-fleet: interrupted; --resume goes on from a file of --output", file=sys.stderr)
    except BrokenPipeError:
        # Python would write what is left when it ends.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
    return _TROUBLE
