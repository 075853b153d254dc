"""Splits C++ as clang-format leaves it into tokens, and finds the statements of its functions."""

import re
from dataclasses import dataclass

_TOKEN = re.compile(
    r"""
    (?P<space>\s+)
  | (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>(?<![^\n])\#(?:[^\n]*\\\n)*[^\n]*)
  | (?P<text>"(?:[^"\\\n]|\\.)*")
  | (?P<letter>'(?:[^'\\\n]|\\.)*')
  | (?P<number>(?:0[xX][0-9a-fA-F]+|[0-9][0-9']*)[uUlL]*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<sign><<=|>>=|<=>|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|::|.)
    """,
    re.VERBOSE | re.DOTALL,
)

_OPENING = {"(": ")", "[": "]", "{": "}"}


@dataclass(frozen=True)
class Token:
    kind: str  # text, letter, number, name or sign
    text: str
    start: int
    end: int


def tokens_of(code: str) -> list[Token]:
    """The tokens without blanks, comments and directives."""
    found = []
    for match in _TOKEN.finditer(code):
        if match.lastgroup not in ("space", "comment", "directive"):
            found.append(Token(match.lastgroup, match.group(), match.start(), match.end()))
    return found


def bodies_of(code: str) -> list[tuple[int, int]]:
    """Where the bodies of macros and static assertions are: no statements of functions."""
    return [match.span() for match in re.finditer(r"static_assert\((?:[^()]|\([^()]*\))*\);", code)]


def _opens_code(tokens: list[Token], at: int) -> bool:
    """Does the brace at that place open a block of statements?"""
    before = tokens[at - 1].text if at > 0 else ""
    if before in (")", "else", "try", "do"):
        return True
    if before == "const" and at > 1 and tokens[at - 2].text == ")":
        return True
    # A lambda with the type of its result: ") -> std::string {".
    for token in reversed(tokens[max(0, at - 8) : at]):
        if token.text == "->":
            return True
        if token.kind != "name" and token.text not in ("::", "<", ">", "*", "&"):
            return False
    return False


_NO_SIMPLE_STATEMENT = {
    "if", "else", "for", "while", "do", "switch", "case", "default", "try", "catch", "return",
    "break", "continue", "using", "static_assert", "throw", "struct", "enum", "namespace",
}  # fmt: skip


@dataclass(frozen=True)
class Statement:
    """A simple statement: it ends in a semicolon and does not steer the flow."""

    tokens: tuple[Token, ...]
    block: int  # statements of one block have the same number

    @property
    def start(self) -> int:
        return self.tokens[0].start

    @property
    def end(self) -> int:
        return self.tokens[-1].end

    def is_declaration(self) -> bool:
        """Is it likely to declare a variable? Without the names that it would bring, others do not
        compile."""
        words = [token.text for token in self.tokens]
        if words[0] in ("const", "constexpr", "auto", "static", "char", "int", "bool", "unsigned"):
            return True
        names = 0
        depth = 0
        for token in self.tokens:
            if token.text in ("=", "(", "{", ";", ".", "->", "[", "++", "--", "+="):
                return False
            depth += {"<": 1, ">": -1}.get(token.text, 0)
            if depth == 0 and token.kind == "name":
                names += 1
                if names == 2:
                    return True
            elif token.text == "::":
                names -= 1
        return False

    def calls(self) -> bool:
        return any(token.text == "(" for token in self.tokens)

    def names(self) -> list[str]:
        return [token.text for token in self.tokens if token.kind == "name"]

    def written(self) -> list[str]:
        """The last name before the sign of an assignment, or the variable of a plain declaration or
        step: it may be a member."""
        written: list[str] = []
        for token in self.tokens:
            if token.text in ("=", "+=", "-=", "{"):
                break
            if token.kind == "name":
                written = [token.text]
        return written


def statements_of(code: str) -> list[Statement]:
    """The simple statements of all functions, in their order."""
    tokens = tokens_of(code)
    statements: list[Statement] = []
    stack: list[tuple[str, bool, int]] = []  # closing bracket, opens code, number of the block
    blocks = 0
    current: list[Token] = []
    starts_here = False  # a statement may begin with the next token
    for at, token in enumerate(tokens):
        in_code = bool(stack) and stack[-1][1]
        if token.text in _OPENING and token.kind == "sign":
            is_code = token.text == "{" and _opens_code(tokens, at)
            if is_code:
                blocks += 1
                current = []
            elif current:
                current.append(token)
            stack.append((_OPENING[token.text], is_code, blocks))
            starts_here = is_code
            continue
        if stack and token.kind == "sign" and token.text == stack[-1][0]:
            closed = stack.pop()
            if closed[1]:
                # A lambda ends inside the statement that it is part of; that is no simple one.
                current = []
                starts_here = bool(stack) and stack[-1][1]
            elif current:
                current.append(token)
            continue
        if starts_here and in_code:
            current = [token]
            starts_here = False
        elif current:
            current.append(token)
        if token.text == ";" and in_code:
            if current and current[0].text not in _NO_SIMPLE_STATEMENT:
                statements.append(Statement(tuple(current), stack[-1][2]))
            current = []
            starts_here = True
        elif token.text == ":" and in_code and current and current[0].text in ("case", "default"):
            current = []
            starts_here = True
    return statements
