"""The data model, read from its YANG modules: just what says which data a configuration may hold.

An unknown statement ends the reading, so that a model that says more is not taken for one that says
less.
"""

import re
from pathlib import Path

from values import Type

# Statements without influence on valid data.
WITHOUT_EFFECT = {
    "contact", "description", "namespace", "organization", "prefix", "reference", "revision",
    "units", "yang-version", "tailf:validate", "extension", "import", "error-message",
}
BUILT_IN = {
    "boolean", "empty", "enumeration", "int8", "int16", "int32", "int64", "string", "uint8",
    "uint16", "uint32", "uint64", "union",
}
# RFC 6991; its module is not among the model's files.
IMPORTED = {
    "inet:ipv4-address": Type(
        "string",
        patterns=[r"(([0-9]|[1-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])\.){3}"
                  r"([0-9]|[1-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])(%[^\s]+)?"]),
}

TOKEN = re.compile(
    r"""\s+ | //[^\n]* | /\*.*?\*/
      | (?P<single>'[^']*') | (?P<double>"(?:[^"\\]|\\.)*") | (?P<mark>[{};]|\+(?=\s))
      | (?P<word>[^\s{};"']+)""",
    re.VERBOSE | re.DOTALL)


class Statement:
    def __init__(self, keyword, argument):
        self.keyword = keyword
        self.argument = argument
        self.below = []

    def argument_of(self, keyword, default=None):
        for statement in self.below:
            if statement.keyword == keyword:
                return statement.argument
        return default

    def all_of(self, keyword):
        return [statement for statement in self.below if statement.keyword == keyword]


class Node:
    """A data node. `case` is (choice, case) of a node inside a choice: choices are no data."""

    def __init__(self, name, kind, parent):
        self.name = name
        self.kind = kind  # container, presence, list, leaf or leaf-list
        self.parent = parent
        self.children = {}
        self.keys = ()
        self.type = None
        self.default = None
        self.mandatory = False
        self.case = None

    @property
    def is_key(self):
        return self.parent is not None and self.name in self.parent.keys

    @property
    def is_inner(self):
        return self.kind in ("container", "presence", "list")

    def path(self):
        return (self.parent.path() if self.parent else "") + "/" + self.name


def tokens_of(text):
    position = 0
    while position < len(text):
        match = TOKEN.match(text, position)
        if not match:
            raise ValueError(f"no YANG: {text[position:position + 40]!r}")
        position = match.end()
        if match.lastgroup == "single":
            yield "text", match["single"][1:-1]
        elif match.lastgroup == "double":
            yield "text", re.sub(r"\\([nt\"\\])", lambda escape: {
                "n": "\n", "t": "\t", '"': '"', "\\": "\\"}[escape[1]], match["double"][1:-1])
        elif match.lastgroup is not None:
            yield match.lastgroup, match[match.lastgroup]


def statements_of(text):
    """The statements of a module, as a list with the module itself."""
    stack = [Statement("", None)]
    words = []
    joined = False
    for kind, token in tokens_of(text):
        if kind == "mark" and token == "+":
            joined = True
        elif kind != "mark":
            if joined:
                words[-1] += token
                joined = False
            else:
                words.append(token)
        elif token == "}":
            stack.pop()
        else:
            statement = Statement(words[0], words[1] if len(words) > 1 else None)
            words = []
            stack[-1].below.append(statement)
            if token == "{":
                stack.append(statement)
    return stack[0].below


class Reader:
    def __init__(self):
        self.types = dict(IMPORTED)
        self.groupings = {}

    def define(self, module, prefix):
        """Records the typedefs and groupings of a module, without and with the prefix."""
        for statement in module.all_of("typedef"):
            self.types[prefix + statement.argument] = self.type_of(statement.all_of("type")[0])
            if "encrypted" in statement.argument:
                self.types[prefix + statement.argument].encrypted = True
        for statement in module.all_of("grouping"):
            self.groupings[prefix + statement.argument] = statement

    def type_of(self, statement):
        name = statement.argument
        result = Type(name) if name in BUILT_IN else self.types[name].copy()
        for below in statement.below:
            if below.keyword == "range":
                result.ranges.append(parts_of(below.argument))
            elif below.keyword == "length":
                result.lengths.append(parts_of(below.argument))
            elif below.keyword == "pattern":
                result.patterns.append(python_pattern(below.argument))
            elif below.keyword == "enum":
                result.names.append(below.argument)
            elif below.keyword == "type":
                result.members.append(self.type_of(below))
            elif below.keyword not in WITHOUT_EFFECT:
                raise ValueError(f"the type {name} has an unknown '{below.keyword}'")
        return result

    def fill(self, node, statements, case=None):
        for statement in statements:
            if statement.keyword == "uses":
                self.fill(node, self.groupings[statement.argument].below, case)
            elif statement.keyword == "choice":
                self.fill_choice(node, statement, case)
            elif statement.keyword in ("container", "list", "leaf", "leaf-list"):
                child = self.node(statement, node)
                child.case = case
                node.children[child.name] = child
            elif statement.keyword not in WITHOUT_EFFECT | {
                    "key", "presence", "type", "default", "mandatory"}:
                raise ValueError(f"{node.path()} has an unknown '{statement.keyword}'")

    def fill_choice(self, node, choice, case):
        if case is not None:
            raise ValueError(f"the choice {choice.argument} is inside another")
        for statement in choice.below:
            if statement.keyword == "case":
                self.fill(node, statement.below, (choice.argument, statement.argument))
            elif statement.keyword not in WITHOUT_EFFECT:
                raise ValueError(f"the choice {choice.argument} has '{statement.keyword}'")

    def node(self, statement, parent):
        kind = statement.keyword
        if kind == "container" and statement.argument_of("presence"):
            kind = "presence"
        node = Node(statement.argument, kind, parent)
        node.keys = tuple(statement.argument_of("key", "").split())
        node.default = statement.argument_of("default")
        node.mandatory = statement.argument_of("mandatory") == "true"
        if node.is_inner:
            self.fill(node, statement.below)
        else:
            node.type = self.type_of(statement.all_of("type")[0])
        return node


def parts_of(text):
    """[(1, 4094)] of "1..4094", None at an open end."""
    def end(word):
        return None if word in ("min", "max") else int(word)
    parts = [part.split("..") for part in text.replace(" ", "").split("|")]
    return [(end(part[0]), end(part[-1])) for part in parts]


def python_pattern(pattern):
    """A pattern of XML Schema, in which ^ and $ are plain letters, for Python."""
    return re.sub(r"\[(?:[^\]\\]|\\.)*\]|\\.|[$^]",
                  lambda part: "\\" + part[0] if part[0] in "$^" else part[0], pattern)


def read_model(folder):
    """The top-level node of the model."""
    reader = Reader()
    extensions = statements_of(Path(folder, "tailf-common.yang").read_text("utf-8"))[0]
    reader.define(extensions, "tailf:")
    module = statements_of(Path(folder, "base.yang").read_text("utf-8"))[0]
    reader.define(module, "")
    return reader.node(module.all_of("container")[0], None)
