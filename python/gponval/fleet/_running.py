"""Many audits at once, in processes of this machine or on others."""

from __future__ import annotations

import multiprocessing
import multiprocessing.connection
import os
import pickle
import signal
import threading
from concurrent.futures import FIRST_COMPLETED, CancelledError, Executor, Future
from concurrent.futures import ProcessPoolExecutor, wait
from concurrent.futures.process import BrokenProcessPool
from contextlib import contextmanager
from types import TracebackType
from typing import Dict, Iterator, Optional, Protocol, Type

from gponval.fleet._audit import audit
from gponval.fleet._records import Job, Record, Trouble
from gponval.fleet._sources import Item

_WORKER_DIED = "the worker ended while it audited this card, twice"


class Workers(Protocol):
    """What audits run on."""

    def window(self) -> int:
        """How many cards to have on their way: no worker waits, and few cards are in memory."""

    def submit(self, job: Job) -> Future[Record]:
        """Begins an audit."""

    def died(self, error: BaseException) -> bool:
        """Whether the error in place of a result means that a worker died."""

    def once_more(self, job: Job) -> Record:
        """The audit of a card whose worker died, where it can harm no other."""


def audited(items: Iterator[Item], workers: Workers) -> Iterator[Record]:
    """The records of all cards, each as soon as there is one."""
    pending: Dict[Future[Record], Job] = {}
    is_last = False
    while pending or not is_last:
        while not is_last and len(pending) < workers.window():
            item = next(items, None)
            if item is None:
                is_last = True
            elif isinstance(item, Record):
                yield item
            else:
                pending[workers.submit(item)] = item
        if not pending:
            continue
        done, _ = wait(pending, return_when=FIRST_COMPLETED)
        for future in done:
            yield _result(future, pending.pop(future), workers)


def _result(future: Future[Record], job: Job, workers: Workers) -> Record:
    try:
        return future.result()
    except CancelledError as error:
        raise Trouble("the connection to the workers is lost") from error
    except Exception as error:
        if workers.died(error):
            return workers.once_more(job)
        return failed(job, f"{type(error).__name__}: {error}")


def failed(job: Job, why: str) -> Record:
    return Record(job.name, "failed", job.digest(), why=why)


class LocalWorkers:
    """Processes of this machine, by default one for each processor that this process may use."""

    def __init__(self, jobs: Optional[int] = None) -> None:
        self._jobs = jobs or len(os.sched_getaffinity(0))
        self._pool = _new_pool(self._jobs)
        self._alone: Optional[Executor] = None

    def __enter__(self) -> LocalWorkers:
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        if error is not None:  # nobody waits for what they do
            for process in multiprocessing.active_children():
                process.terminate()
        self._pool.shutdown(cancel_futures=True)
        if self._alone is not None:
            self._alone.shutdown(cancel_futures=True)

    def window(self) -> int:
        return 2 * self._jobs

    def submit(self, job: Job) -> Future[Record]:
        try:
            return _submitted(self._pool, job)
        except BrokenProcessPool:
            self._pool.shutdown()
            self._pool = _new_pool(self._jobs)
            return _submitted(self._pool, job)

    def died(self, error: BaseException) -> bool:
        # When one process dies, the pool ends, with all cards that were on their way.
        return isinstance(error, BrokenProcessPool)

    def once_more(self, job: Job) -> Record:
        if self._alone is None:
            self._alone = _new_pool(1)
        try:
            return _submitted(self._alone, job).result()
        except BrokenProcessPool:
            self._alone.shutdown()
            self._alone = None
            return failed(job, _WORKER_DIED)


def _new_pool(processes: int) -> Executor:
    # Forked, a process would have the locks of this one's threads in any state.
    context = multiprocessing.get_context("spawn")
    return ProcessPoolExecutor(processes, context, initializer=_end_with_parent)


def _submitted(pool: Executor, job: Job) -> Future[Record]:
    """The card is in a file in memory, and the pool's pipe has only the name of that: a pool that
    loses a process while its pipe is full waits for ever on Python 3.11."""
    held = os.memfd_create("card")
    with open(os.dup(held), "wb") as file:
        pickle.dump(job, file)
    with _without_interrupts():
        future = pool.submit(_audit_held, f"/proc/{os.getpid()}/fd/{held}")
    future.add_done_callback(lambda _: os.close(held))
    return future


def _audit_held(path: str) -> Record:
    with open(path, "rb") as file:
        job: Job = pickle.load(file)
    return audit(job)


@contextmanager
def _without_interrupts() -> Iterator[None]:
    """A process that begins here never gets the Ctrl-C of the terminal; this one gets it afterwards."""
    before = signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGINT})
    try:
        yield
    finally:
        signal.pthread_sigmask(signal.SIG_SETMASK, before)


def _end_with_parent() -> None:
    """A process of the pool would wait for ever if this command were killed."""
    parent = multiprocessing.parent_process()
    if parent is None:
        return
    sentinel = parent.sentinel

    def watch() -> None:
        multiprocessing.connection.wait([sentinel])
        os._exit(1)

    threading.Thread(target=watch, daemon=True).start()
