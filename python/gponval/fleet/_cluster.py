"""The workers of a Dask scheduler, on any machines that have this package."""

from __future__ import annotations

import time
import warnings
import zlib
from concurrent.futures import Future
from types import TracebackType
from typing import Any, Optional, Tuple, Type

from gponval.fleet._audit import audit
from gponval.fleet._records import Job, Record, Trouble, optional_module
from gponval.fleet._running import failed

_WAIT_SECONDS = 20
_LOOK_SECONDS = 5.0
_WORKERS_DIED = "every worker ended while it audited this card"


class ClusterWorkers:
    """The scheduler gives the card of a worker that dies to another, as often as its setting
    ``allowed-failures`` says."""

    def __init__(self, address: str) -> None:
        self._distributed = optional_module("distributed", "python3-distributed", "--scheduler")
        # Contents are sent with the task on purpose.
        warnings.filterwarnings("ignore", message="(?s).*Large object of size")
        warnings.filterwarnings("ignore", message="(?s).*Sending large graph")
        try:
            self._client: Any = self._distributed.Client(
                address, timeout=_WAIT_SECONDS, set_as_default=False
            )
        except (OSError, ValueError) as error:
            raise Trouble(f"{address}: no scheduler answers: {error}") from error
        self._threads = 0
        self._looked = 0.0
        try:
            self._client.wait_for_workers(1, timeout=_WAIT_SECONDS)
            self._client.run(_check_package)
        except Exception as error:
            self._client.close()
            raise Trouble(f"{address}: the workers cannot be used: {error}") from error
        self._executor: Any = self._client.get_executor(pure=False)

    def __enter__(self) -> ClusterWorkers:
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self._executor.shutdown(wait=error is None)
        self._client.close(timeout=2)

    def window(self) -> int:
        now = time.monotonic()
        if now - self._looked > _LOOK_SECONDS:  # workers come and go
            self._threads = sum(self._client.nthreads().values())
            self._looked = now
        return max(2, 4 * self._threads)

    def submit(self, job: Job) -> Future[Record]:
        submitted: Future[Record] = self._executor.submit(_audit_packed, _packed(job))
        return submitted

    def died(self, error: BaseException) -> bool:
        return isinstance(error, self._distributed.KilledWorker)

    def once_more(self, job: Job) -> Record:
        return failed(job, _WORKERS_DIED)


# The scheduler passes on every byte, and configurations shrink to a twentieth.

_Packed = Tuple[str, bytes, Optional[bytes]]


def _packed(job: Job) -> _Packed:
    return job.name, zlib.compress(job.config, level=1), job.card


def _audit_packed(packed: _Packed) -> Record:
    name, config, card = packed
    return audit(Job(name, zlib.decompress(config), card))


def _check_package() -> None:
    """Fails on a worker without the package, before it fails each card."""
    audit(Job("", b""))
