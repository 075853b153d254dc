"""Small changes of a source, one at a time: what a slip of the hand or a wrong belief would leave."""

import bisect
from dataclasses import dataclass

from cpp_tokens import Statement, Token, bodies_of, statements_of, tokens_of


@dataclass(frozen=True)
class Change:
    kind: str
    start: int
    end: int
    instead: str


@dataclass(frozen=True)
class Mutant:
    """A change, with the lines that it touches as they were and as they are then."""

    file: str  # its name below src/validation
    line: int
    change: Change
    before: str
    after: str

    def __str__(self) -> str:
        was = "\n".join("    - " + line for line in self.before.split("\n"))
        now = "\n".join("    + " + line for line in self.after.split("\n"))
        return f"{self.file}:{self.line}: {self.change.kind}\n{was}\n{now}"


_COMPARISONS = {
    "<": ("<=", ">="),
    "<=": ("<", ">"),
    ">": (">=", "<="),
    ">=": (">", "<"),
    "==": ("!=",),
    "!=": ("==",),
}
_OPERATORS = {
    "&&": ("||",),
    "||": ("&&",),
    "+": ("-",),
    "-": ("+",),
    "*": ("/",),
    "/": ("*",),
    "%": ("/",),
    "&": ("|",),
    "|": ("&",),
    "^": ("|",),
    "<<": (">>",),
    "+=": ("=",),
}
_STEPS = {"++": "--", "--": "++"}

_NAMES = {
    "level": {
        "kTraceDetail": ("kTraceFlow",),
        "kTraceEntry": ("kTraceFlow", "kTraceDetail"),
        "kTraceFlow": ("kTraceDetail",),
    },
    "return code": {
        "CONFD_OK": ("CONFD_ERR",),
        "CONFD_ERR": ("CONFD_OK",),
        "CONFD_VALIDATION_WARN": ("CONFD_ERR", "CONFD_OK"),
        "ITER_STOP": ("ITER_CONTINUE",),
        "ITER_CONTINUE": ("ITER_STOP", "ITER_RECURSE"),
        "ITER_RECURSE": ("ITER_CONTINUE",),
    },
    "constant": {
        "true": ("false",),
        "false": ("true",),
        "MOP_CREATED": ("MOP_DELETED",),
        "MOP_DELETED": ("MOP_CREATED",),
        "MOP_MODIFIED": ("MOP_VALUE_SET",),
        "MOP_VALUE_SET": ("MOP_ATTR_SET",),
        "MOP_ATTR_SET": ("MOP_NOOP",),
        "C_NOEXISTS": ("C_XMLTAG",),
        "C_XMLTAG": ("C_NOEXISTS",),
        "C_BUF": ("C_UINT32",),
        "C_UINT32": ("C_INT32",),
        "C_INT32": ("C_UINT32",),
        "base__ns": ("0",),
        "base_gpon": ("base_xgspon",),
        "base_xgspon": ("base_gpon",),
        "base_downstream_fec": ("base_upstream_fec",),
        "base_upstream_fec": ("base_downstream_fec",),
        "limid_type_gpon": ("limid_type_xgspon",),
        "limid_type_xgspon": ("limid_type_gpon",),
        "FM_PORT_TYPE_GPON": ("FM_PORT_TYPE_XGSPON",),
        "FM_PORT_TYPE_XGSPON": ("FM_PORT_TYPE_GPON",),
        "kGponList": ("kXgsponList",),
        "kXgsponList": ("kGponList",),
        "CONFD_ERR_NOEXISTS": ("CONFD_OK",),
    },
    "call": {
        "get_elapsed_time_msec": ("get_elapsed_time_usec",),
        "get_elapsed_time_usec": ("get_elapsed_time_msec",),
        "continue": ("break",),
        "break": ("continue",),
        "kEnd": ("kLeave",),
        "kLeave": ("kEnd",),
        "min": ("max",),
        "max": ("min",),
        "emplace": ("insert_or_assign",),
    },
}


def _number(token: Token) -> list[str]:
    digits = token.text.rstrip("uUlL")
    suffix = token.text[len(digits) :]
    value = int(digits.replace("'", ""), 0)
    if digits[:2].lower() == "0x":
        return [f"0x{other:X}{suffix}" for other in (value + 1, value >> 1)]
    others = [value + 1] + ([value - 1] if value > 0 else [])
    return [f"{other}{suffix}" for other in others]


def _text(token: Token) -> list[str]:
    """One letter less; one more after a conversion, which would swallow what follows."""
    inner = token.text[1:-1]
    if not inner or inner[-2:-1] == "%":
        return [f'"{inner}~"']
    # The last letter may be an escape of two.
    return [f'"{inner[:-2]}"' if inner[-2:-1] == "\\" else f'"{inner[:-1]}"']


def _is_binary(code: str, token: Token) -> bool:
    """clang-format puts blanks on both sides of a binary operator, and of nothing else."""
    return code[token.start - 1].isspace() and code[token.end : token.end + 1].isspace()


def _token_changes(code: str, tokens: list[Token], at: int) -> list[Change]:
    token = tokens[at]

    def changes(kind: str, others) -> list[Change]:
        return [Change(kind, token.start, token.end, other) for other in others]

    if token.kind == "number":
        return changes("constant", _number(token))
    if token.kind == "text":
        return changes("text", _text(token))
    if token.kind == "letter":
        return changes("text", ["'~'"])
    if token.kind == "name":
        for kind, names in _NAMES.items():
            if token.text in names:
                return changes(kind, names[token.text])
        return []
    if token.text in _COMPARISONS and _is_binary(code, token):
        return changes("comparison", _COMPARISONS[token.text])
    joins_texts = token.text == "+" and "text" in (tokens[at - 1].kind, tokens[at + 1].kind)
    if token.text in _OPERATORS and _is_binary(code, token) and not joins_texts:
        return changes("operator", _OPERATORS[token.text])
    if token.text in _STEPS:
        return changes("operator", [_STEPS[token.text]])
    if token.text == "!" and tokens[at + 1].kind == "name":
        return changes("condition", [""])
    return []


def _conditions(tokens: list[Token]) -> list[Change]:
    """if (x) becomes if (!(x)), unless a comparison or an operator in it is changed anyway."""
    found = []
    for at, token in enumerate(tokens):
        if token.text != "if" or tokens[at + 1].text != "(":
            continue
        depth = 0
        inner = []
        for other in tokens[at + 1 :]:
            depth += {"(": 1, ")": -1}.get(other.text, 0)
            if depth == 0:
                break
            inner.append(other)
        inner = inner[1:]
        steered = any(t.text in _COMPARISONS or t.text in ("&&", "||", "!", ";", "=") for t in inner)
        if inner and not steered:
            found.append(Change("condition", inner[0].start, inner[0].start, "!"))
    return found


def _text_of(code: str, statement: Statement) -> str:
    return code[statement.start : statement.end]


def _order_counts(first: Statement, second: Statement) -> bool:
    """Of two statements one of which calls nothing, only if one reads or writes what the other
    writes."""
    if first.calls() and second.calls():
        return True
    written = [name for statement in (first, second) for name in statement.written()]
    return any(name in first.names() and name in second.names() for name in written)


def _statement_changes(code: str) -> list[Change]:
    found = []
    statements = statements_of(code)
    for first, second in zip(statements, statements[1:]):
        between = code[first.end : second.start]
        if first.block == second.block and not tokens_of(between) and _order_counts(first, second):
            swapped = _text_of(code, second) + between + _text_of(code, first)
            found.append(Change("order", first.start, second.end, swapped))
    for statement in statements:
        if not statement.is_declaration():
            found.append(Change("left out", statement.start, statement.end, ";"))
    return found


def _lines(code: str, change: Change) -> tuple[str, str]:
    """The lines that a change touches, before and after it, without their indentation."""
    first = code.rfind("\n", 0, change.start) + 1
    last = code.find("\n", change.end)
    last = len(code) if last < 0 else last
    before = code[first:last]
    after = code[first : change.start] + change.instead + code[change.end : last]

    def trimmed(text: str) -> str:
        return "\n".join(line.strip() for line in text.split("\n"))

    return trimmed(before), trimmed(after)


def mutants_of(file: str, code: str) -> list[Mutant]:
    """All changes of a source, from its top to its end."""
    tokens = tokens_of(code)
    spared = bodies_of(code)
    changes = [change for at in range(len(tokens)) for change in _token_changes(code, tokens, at)]
    changes += _conditions(tokens)
    changes += _statement_changes(code)
    changes = [c for c in changes if not any(a <= c.start < b for a, b in spared)]
    line_starts = [0] + [at + 1 for at, letter in enumerate(code) if letter == "\n"]
    mutants = []
    for change in sorted(changes, key=lambda c: (c.start, c.end, c.instead)):
        before, after = _lines(code, change)
        line = bisect.bisect_right(line_starts, change.start)
        mutants.append(Mutant(file, line, change, before, after))
    return mutants


def mutated(code: str, mutant: Mutant) -> str:
    change = mutant.change
    return code[: change.start] + change.instead + code[change.end :]
