"""The survivors that cannot be told apart from the plug-in, each with the reason."""

from dataclasses import dataclass
from pathlib import Path

from changes import Mutant


@dataclass(frozen=True)
class Equivalent:
    file: str
    before: str
    after: str


class Equivalents:
    """Entries of the form

        gpon_vlan_limit.cpp
        - the line as it is
        + the line as it is changed
        the reason, in one line or more

    with a blank line between them. Lines are without their indentation; a change of several lines
    has as many of each kind.
    """

    def __init__(self, reasons: dict[Equivalent, str]):
        self._reasons = reasons

    @staticmethod
    def read(path: Path) -> "Equivalents":
        lines = [line for line in path.read_text().splitlines() if not line.startswith("#")]
        reasons = {}
        for entry in "\n".join(lines).split("\n\n"):
            rows = entry.strip().splitlines()
            if not rows:
                continue
            before = "\n".join(row[2:] for row in rows if row.startswith("- "))
            after = "\n".join(row[2:] for row in rows if row.startswith("+ "))
            reason = " ".join(row for row in rows[1:] if row[:2] not in ("- ", "+ "))
            if not before or not reason:
                raise SystemExit(f"mutants: {path} has an entry without lines or reason:\n{entry}")
            reasons[Equivalent(rows[0], before, after)] = reason
        return Equivalents(reasons)

    def explain(self, mutant: Mutant) -> str:
        return self._reasons.get(Equivalent(mutant.file, mutant.before, mutant.after), "")

    def entries(self) -> list[Equivalent]:
        return list(self._reasons)
