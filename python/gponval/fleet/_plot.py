"""The plot of the page: how many links are how full. Its colours are those of the page, light or dark."""

from __future__ import annotations

import io
import re
from typing import Any, List, Sequence

from gponval.fleet._records import optional_module

BINS = ["0-10", "10-20", "20-30", "30-40", "40-50", "50-60", "60-70", "70-80", "80-90", "90-100"]
BINS += ["over 100"]
_BELOW_A_BAR = [f"<{percent}" for percent in range(10, 100, 10)] + ["≤100", ">100"]
_NEARLY_FULL = 8

# Colours that the plot has only until the page's own take their places.
_COLOURS = {"#010203": "var(--ink)", "#010204": "var(--bar)", "#010205": "var(--warn)"}
_COLOURS["#010206"] = "var(--bad)"
_INK, _BAR, _WARN, _BAD = _COLOURS


def bin_of(share: float) -> int:
    return min(int(share * 10), 9) if share <= 1 else 10


def links_by_fill(counts: Sequence[int]) -> str:
    """SVG to put into a page."""
    figure_module: Any = optional_module("matplotlib.figure", "python3-matplotlib", "--html")
    matplotlib: Any = optional_module("matplotlib", "python3-matplotlib", "--html")
    settings = {"svg.fonttype": "none", "svg.hashsalt": "gponval", "font.size": 9}
    with matplotlib.rc_context(settings):
        figure = figure_module.Figure(figsize=(5.4, 2.8), layout="constrained")
        axes = figure.add_subplot()
        bars = axes.bar(_BELOW_A_BAR, counts, color=_bar_colours(), width=0.86)
        axes.bar_label(bars, [f"{count:,}" if count else "" for count in counts], color=_INK)
        axes.set_xlabel("fill of the link in %", color=_INK)
        axes.set_ylabel("links", color=_INK)
        axes.tick_params(colors=_INK, length=0)
        axes.yaxis.get_major_locator().set_params(integer=True)
        for side, spine in axes.spines.items():
            spine.set_visible(side == "bottom")
            spine.set_color(_INK)
        text = io.StringIO()
        figure.savefig(text, format="svg", transparent=True, metadata={"Date": None})
    return _for_the_page(text.getvalue())


def _bar_colours() -> List[str]:
    return [_BAR] * _NEARLY_FULL + [_WARN] * 2 + [_BAD]


def _for_the_page(svg: str) -> str:
    svg = svg[svg.index("<svg") :]
    svg = re.sub(r"<metadata>.*?</metadata>", "", svg, flags=re.DOTALL)
    for colour, variable in _COLOURS.items():
        svg = svg.replace(colour, variable)
    return svg.replace("<svg ", '<svg role="img" aria-labelledby="fill" ', 1)
