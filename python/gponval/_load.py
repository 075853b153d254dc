"""What a card carries."""

from __future__ import annotations

from typing import List, NamedTuple, Optional

from gponval import _native
from gponval._inputs import utf8


class Limits(NamedTuple):
    """What the plug-in allows on a card; bandwidth in kbit/s."""

    checks_bandwidth: bool
    total_capacity: int
    fixed_capacity: int
    onu_overhead: int
    onus_per_link: Optional[int]
    """None if the card does not define it."""
    dynamic_tconts: int
    static_tconts: int
    service_ports: int


class Link(NamedTuple):
    """One PON link. ``total`` (with the overhead of the ONUs) and ``fixed`` are what its ONUs reserve
    upstream in kbit/s, ``total_room`` and ``fixed_room`` what is left, ``share`` the fuller of both
    as a part of 1; None if the plug-in does not check the bandwidth of this link. ``rejected`` says
    why every change of its ONUs is rejected at present, or is empty."""

    path: str
    onus: int
    total: Optional[int]
    total_room: Optional[int]
    fixed: Optional[int]
    fixed_room: Optional[int]
    share: Optional[float]
    rejected: str


class LineProfile(NamedTuple):
    """One line profile: what each ONU that uses it reserves in kbit/s, without the overhead, and its
    TCONTs by kind."""

    name: str
    total: int
    fixed: int
    dynamic_tconts: int
    static_tconts: int


class Fit(NamedTuple):
    """How many more ONUs a link accepts, None for any number, and what rejects the next one."""

    path: str
    onus: Optional[int]
    limit: str


class Load(NamedTuple):
    """What a card carried when it was asked. ``links`` and ``line_profiles`` are lists of records that
    ``pandas.DataFrame`` takes as they are."""

    limits: Limits
    links: List[Link]
    line_profiles: List[LineProfile]
    service_ports: int

    def fit(self, line_profile: str) -> List[Fit]:
        """How many more ONUs with this line profile each link accepts. Raises InputError for a line
        profile that does not exist."""
        links = [(link.path, link.onus, link.total, link.fixed, link.rejected) for link in self.links]
        figures = (self.limits, links, self.line_profiles, self.service_ports)
        return [Fit(*fit) for fit in _native.fit(figures, utf8(line_profile))]

    def __repr__(self) -> str:
        return f"<gponval.Load of {len(self.links)} links, {self.service_ports} service ports>"


def load_of(figures: _native.Load) -> Load:
    """The figures of the plug-in, and what follows from them."""
    limit_figures, links, line_profiles, service_ports = figures
    limits = Limits(*limit_figures)
    return Load(
        limits,
        [_link(limits, *link) for link in links],
        [LineProfile(*line_profile) for line_profile in line_profiles],
        service_ports,
    )


def _link(
    limits: Limits, path: str, onus: int, total: Optional[int], fixed: Optional[int], rejected: str
) -> Link:
    if total is None or fixed is None:
        return Link(path, onus, None, None, None, None, None, rejected)
    return Link(
        path,
        onus,
        total,
        max(limits.total_capacity - total, 0),
        fixed,
        max(limits.fixed_capacity - fixed, 0),
        max(total / limits.total_capacity, fixed / limits.fixed_capacity),
        rejected,
    )
