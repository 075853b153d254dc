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


class Load:
    """What a card carried when it was asked. ``links`` and ``line_profiles`` are lists of records that
    ``pandas.DataFrame`` takes as they are."""

    limits: Limits
    links: List[Link]
    line_profiles: List[LineProfile]
    service_ports: int

    def __init__(self, load: _native.CardLoad) -> None:
        self._native = load
        self.limits = Limits(**load.limits)
        self.links = [_link(link, self.limits) for link in load.links]
        self.line_profiles = [
            LineProfile(line.name, line.total, line.fixed, line.dynamic_tconts, line.static_tconts)
            for line in load.line_profiles
        ]
        self.service_ports = load.service_ports

    def fit(self, line_profile: str) -> List[Fit]:
        """How many more ONUs with this line profile each link accepts. Raises InputError for a line
        profile that does not exist."""
        name = utf8(line_profile)
        return [Fit(link.path, *self._native.fit(link, name)) for link in self._native.links]

    def __repr__(self) -> str:
        return f"<gponval.Load of {len(self.links)} links, {self.service_ports} service ports>"


def _link(link: _native.LinkLoad, limits: Limits) -> Link:
    if link.total is None or link.fixed is None:
        return Link(link.path, link.onus, None, None, None, None, None, link.rejected)
    return Link(
        link.path,
        link.onus,
        link.total,
        max(limits.total_capacity - link.total, 0),
        link.fixed,
        max(limits.fixed_capacity - link.fixed, 0),
        max(link.total / limits.total_capacity, link.fixed / limits.fixed_capacity),
        link.rejected,
    )
