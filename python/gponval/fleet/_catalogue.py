"""What to do about each text of a validator: docs/texts.md, which is installed with the package."""

from __future__ import annotations

import re
from functools import lru_cache
from pathlib import Path
from typing import Dict, List, NamedTuple, Optional, Pattern

_HEADING = re.compile(r"^(#+) (.+)$")
# Such as "*Rejected.*", which the reader of a finding knows.
_VERDICT = re.compile(r"^\*[^*]+\* ")
_PLACEHOLDER = re.compile(r"<[^<>]+>")


class Explanation(NamedTuple):
    """A text of the catalogue, ``<...>`` in it is a part that varies, and what it means."""

    request: str
    text: str
    meaning: str


class _Known(NamedTuple):
    pattern: Pattern[str]
    explanation: Explanation


class Catalogue:
    """The explanations of a catalogue in Markdown: a heading for each request, and in it each text,
    indented, with paragraphs that say what it means."""

    def __init__(self, markdown: str) -> None:
        self.explanations = _explanations(markdown)
        self._known: Dict[str, List[_Known]] = {}
        for explanation in self.explanations:
            known = _Known(_pattern(explanation.text), explanation)
            self._known.setdefault(explanation.request, []).append(known)

    def explain(self, request: str, text: str) -> Optional[Explanation]:
        """What the request means by the text. Another request may share its texts with this one."""
        own = self._known.get(request, [])
        others = [known for known in sum(self._known.values(), []) if known not in own]
        for known in (*own, *others):
            if known.pattern.match(text):
                return known.explanation
        return None


@lru_cache(maxsize=None)
def catalogue() -> Catalogue:
    return Catalogue((Path(__file__).parent / "texts.md").read_text(encoding="utf-8"))


def _explanations(markdown: str) -> List[Explanation]:
    found = []
    request = ""
    texts: List[str] = []
    for block in re.split(r"\n\s*\n", markdown):
        heading = _HEADING.match(block)
        if heading:
            request = heading[2] if heading[1] == "##" else ""
            texts = []
        elif request and block.startswith("    "):
            texts.append("\n".join(line[4:] for line in block.splitlines()))
        elif request and texts:
            meaning = _VERDICT.sub("", " ".join(block.split())).replace("`", "")
            found += [Explanation(request, text, meaning) for text in texts]
            texts = []
    return found


def _pattern(text: str) -> Pattern[str]:
    """The begin of a message that has this text; lines may follow, or be repeated."""
    first = text.splitlines()[0]
    parts = [re.escape(part) for part in _PLACEHOLDER.split(first)]
    return re.compile(".*?".join(parts), re.DOTALL)
