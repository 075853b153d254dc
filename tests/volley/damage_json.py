"""Damage to JSON documents: to their members, and to their text."""

import json
import re

import words

OPERATIONS = ("merge", "replace", "create", "delete", "remove")
OPERATION = "ietf-netconf:operation"


class Raw(str):
    """Text that is written as it is."""


class Object:
    """An object as it is written: members may be repeated."""

    def __init__(self, members):
        self.members = [list(member) for member in members]


def copy(value):
    if isinstance(value, Object):
        return Object([(name, copy(member)) for name, member in value.members])
    return [copy(entry) for entry in value] if isinstance(value, list) else value


def write(value, pieces):
    if isinstance(value, Object):
        pieces.append("{")
        for i, (name, member) in enumerate(value.members):
            pieces.append(", " if i else "")
            pieces.append(json.dumps(name, ensure_ascii=False) + ": ")
            write(member, pieces)
        pieces.append("}")
    elif isinstance(value, list):
        pieces.append("[")
        for i, entry in enumerate(value):
            pieces.append(", " if i else "")
            write(entry, pieces)
        pieces.append("]")
    else:
        pieces.append(value if isinstance(value, Raw) else json.dumps(value, ensure_ascii=False))


class JsonText:
    """A document: its outermost value, and what is before and after it."""

    def __init__(self, root):
        self.before = ""
        self.root = root
        self.after = "\n"

    def copy(self):
        return JsonText(copy(self.root))

    def data(self):
        pieces = [self.before]
        write(self.root, pieces)
        pieces.append(self.after)
        return "".join(pieces).encode("utf-8", "surrogatepass")

    def values(self):
        """Each value."""
        found = [self.root]
        for value in found:
            if isinstance(value, Object):
                found.extend(member for _, member in value.members)
            elif isinstance(value, list):
                found.extend(value)
        return found

    def objects(self):
        return [value for value in self.values() if isinstance(value, Object) and value.members]

    def arrays(self):
        return [value for value in self.values() if isinstance(value, list)]


def of_items(item):
    """The value that RFC 7951 writes for an item that is no leaf."""
    members = []
    if item.operation is not None:
        members.append(("@", Object([(OPERATION, item.operation)])))
    arrays = {}
    for below in item.below:
        name = below.node.name
        if below.node.kind == "list":
            if name not in arrays:
                arrays[name] = []
                members.append((name, arrays[name]))
            arrays[name].append(of_items(below))
        elif below.node.kind == "leaf-list":
            if name not in arrays:
                arrays[name] = []
                members.append((name, arrays[name]))
            arrays[name].append(of_leaf(below))
        elif below.node.is_inner:
            members.append((name, of_items(below)))
        else:
            members.append((name, of_leaf(below)))
            if below.operation is not None:
                members.append(("@" + name, Object([(OPERATION, below.operation)])))
    return Object(members)


def of_leaf(item):
    """An item without a value is to be deleted; JSON requires one nevertheless, so it is the
    type's first."""
    base = item.node.type.base
    value = item.value
    if base == "empty":
        return [None]
    if base == "boolean":
        return value != "false"
    if base in ("string", "enumeration"):
        return value if value is not None else (item.node.type.names or ["x"])[0]
    if base == "union" and value is not None and not value.isdigit():
        return value
    return Raw(value if value is not None else "1")


def of_document(document):
    return JsonText(Object([("base:" + document.root.node.name, of_items(document.root))]))


def member_of(rng, document):
    around = rng.choice(document.objects())
    return around, rng.randrange(len(around.members))


def double(rng, document):
    around, at = member_of(rng, document)
    name, value = around.members[at]
    around.members.insert(rng.randrange(len(around.members) + 1), [name, copy(value)])
    return f"{name} twice"


def double_entry(rng, document):
    arrays = [array for array in document.arrays() if array]
    if not arrays:
        return "no array to double an entry of"
    array = rng.choice(arrays)
    count = rng.choice((1, 1, 1, 10, 3000))
    array.extend(copy(rng.choice(array)) for _ in range(count))
    return f"{count} entries again"


def lose(rng, document):
    around, at = member_of(rng, document)
    return f"without a {around.members.pop(at)[0]}"


def move(rng, document):
    around, at = member_of(rng, document)
    name, value = around.members[at]
    to = rng.choice(document.objects())
    to.members.insert(rng.randrange(len(to.members) + 1), [name, copy(value)])
    around.members = [member for member in around.members if member[1] is not value]
    return f"{name} moved"


def swap_values(rng, document):
    around, at = member_of(rng, document)
    other, to = member_of(rng, document)
    first, second = around.members[at][1], other.members[to][1]
    around.members[at][1], other.members[to][1] = copy(second), copy(first)
    return f"the values of {around.members[at][0]} and {other.members[to][0]} swapped"


def shuffle(rng, document):
    around = rng.choice(document.objects())
    rng.shuffle(around.members)
    return "members in another order"


def rename(rng, document):
    around, at = member_of(rng, document)
    old = around.members[at][0]
    new = words.other_name(rng, old)
    if rng.random() < 0.3:
        new = rng.choice(("base:" + old, "ietf-netconf:" + old, "@" + old, old + "\0",
                          old + "\ud800", "tailf-common:" + old, "base:base:" + old,
                          old.split(":")[-1], ""))
    around.members[at][0] = new
    return f"{old} is called {new[:40]!r}"


def rename_top(rng, document):
    if isinstance(document.root, Object) and document.root.members:
        document.root.members[0][0] = rng.choice((
            "config", "base:Config", "nc:config", "urn:tarnd:base:config", "ietf-netconf:config",
            "ietf-netconf:data", "base:", "", "base:profile"))
    return "another top-level member"


def second_top(rng, document):
    if isinstance(document.root, Object):
        new = rng.choice((
            ["base:config", Object([])], ["x", Raw("null")], ["@", Object([])],
            ["@base:config", Object([(OPERATION, "delete")])], ["config", Object([])]))
        document.root.members.insert(rng.choice((0, len(document.root.members))), new)
    return "a second top-level member"


RAW_VALUES = ("5", '"5"', "5.0", "5e0", "0.5e1", "50e-1", "5.5", "1e400", "-0", "-5", "null",
              "[null]", "[null, null]", "[]", "{}", "true", '"true"', "false", "[5]", "[[5]]",
              '{"5": 5}', "[{}]", '""', '"\\u0000"', '"\\ud800"', '"\\ud83d\\ude00"', '"\\u0001"',
              '"\\u00e9"', '"\\ufdd0"', '"\\uffff"', '"a\\rb"', '"\\/"', '"a\tb"', "NaN",
              "Infinity", "-Infinity", "0x10", "05", "+5", ".5", "5.", "'5'", "undefined", "5L",
              "4294967296", "1E9999999999", "1" * 400, "nul", "True", '"\\x41"', '"\\u12"',
              "4294967295.0", "1e-1", "18446744073709551616", "-9223372036854775809", "// 5\n5",
              "/* */ 5")


def other_value(rng, document):
    around, at = member_of(rng, document)
    if rng.random() < 0.5:
        new = Raw(rng.choice(RAW_VALUES))
    else:
        new = words.value(rng)
        new = Raw(new) if new.isdigit() and new.isascii() and rng.random() < 0.7 else new
    around.members[at][1] = new
    return f"{around.members[at][0]} is {new[:40]!r}"


def other_leaf(rng, document):
    """A leaf's value by another of the same or of another type."""
    places = [(around, member) for around in document.objects() for member in around.members
              if not isinstance(member[1], (list, Object))]
    if not places:
        return "no leaf to change"
    _, member = rng.choice(places)
    member[1] = words.value(rng)
    if member[1].isdigit() and member[1].isascii() and str(int(member[1])) == member[1]:
        member[1] = Raw(member[1])
    return f"{member[0]} is {member[1][:40]!r}"


def other_number(rng, document):
    numbers = [member for around in document.objects() for member in around.members
               if isinstance(member[1], Raw) and member[1].isdigit()]
    if not numbers:
        return "no number to change"
    member = rng.choice(numbers)
    member[1] = Raw(rng.choice((0, 1, 2, 3, 5, 7, 100, 4094, 65535, 10000)))
    return f"{member[0]} is {member[1]}"


def lose_leaf(rng, document):
    leaves = [(around, member) for around in document.objects() for member in around.members
              if not isinstance(member[1], (list, Object)) and member[0] not in words.KEYS]
    if not leaves:
        return "no leaf to lose"
    around, member = rng.choice(leaves)
    around.members.remove(member)
    return f"without the leaf {member[0]}"


def other_form(rng, document):
    around, at = member_of(rng, document)
    value = around.members[at][1]
    if isinstance(value, Raw):
        new = str(value)
    elif isinstance(value, list) and value:
        new = rng.choice((value[0], Object([("0", value[0])]), [value]))
    elif isinstance(value, str):
        new = rng.choice(([value], Raw(value), Object([(value, value)])))
    else:
        new = [value]
    around.members[at][1] = new
    return f"the value of {around.members[at][0]} in another form"


def operation(rng, document):
    around = rng.choice(document.objects())
    chosen = rng.choice(OPERATIONS)
    around.members.insert(rng.randrange(len(around.members) + 1),
                          ["@", Object([(OPERATION, chosen)])])
    return f"{chosen} at an object"


def leaf_operation(rng, document):
    leaves = [(around, at) for around in document.objects()
              for at, (name, value) in enumerate(around.members)
              if not isinstance(value, (list, Object)) and name not in words.KEYS]
    around, at = rng.choice(leaves) if leaves and rng.random() < 0.8 else member_of(rng, document)
    name = around.members[at][0]
    chosen = rng.choice(OPERATIONS)
    metadata = Object([(OPERATION, chosen)])
    around.members.insert(at + rng.randrange(2), ["@" + name, metadata])
    if chosen in ("delete", "remove") and rng.random() < 0.3:
        around.members = [member for member in around.members if member[0] != name]
    return f"{chosen} beside {name}"


def leaf_list_operation(rng, document):
    places = [(around, member[0], member[1]) for around in document.objects()
              for member in around.members
              if isinstance(member[1], list) and member[1] and not isinstance(member[1][0], Object)]
    if not places:
        return "no leaf-list to put an operation beside"
    around, name, values = rng.choice(places)
    metadata = [rng.choice((Raw("null"), Object([(OPERATION, rng.choice(OPERATIONS))])))
                for _ in range(len(values) + rng.choice((-1, 0, 0, 0, 1)))]
    around.members.append(["@" + name, metadata])
    return f"operations beside the values of {name}"


BAD_METADATA = ('{"nc:operation": "delete"}', '{"operation": "delete"}',
                '{"ietf-netconf:operation": "Delete"}', '{"ietf-netconf:operation": "none"}',
                '{"ietf-netconf:operation": ["delete"]}', '{"ietf-netconf:operation": null}',
                '{"ietf-netconf:operation": 5}', '{"ietf-netconf:Operation": "delete"}',
                '{"ietf-netconf:operation": "delete", "x:y": 1}', "{}", "null", '"delete"', "[]",
                '{"ietf-netconf:operation": "delete", "ietf-netconf:operation": "delete"}',
                '{"ietf-netconf:operation": "merge", "ietf-netconf:operation": "delete"}',
                '[{"ietf-netconf:operation": "delete"}]', '{"base:operation": "delete"}',
                '{"": "delete"}', '{"ietf-netconf:operation": ""}',
                '{"@ietf-netconf:operation": "delete"}', '{"ietf-netconf:default": "delete"}')


def bad_metadata(rng, document):
    around, at = member_of(rng, document)
    member = around.members[at][0]
    name = rng.choice(("@", "@", "@" + member, "@" + member, "@@", "@x", "@@" + member,
                       "@base:" + member))
    metadata = rng.choice(BAD_METADATA)
    around.members.insert(at, [name, Raw(metadata)])
    return f"{name} {metadata}"


def nest(rng, document):
    around, at = member_of(rng, document)
    opening, closing = rng.choice((("[", "]"), ('{"a":', "}"), ('[{"id":1,"onu":', "}]")))
    depth = rng.choice((1, 2, 10, 500, 20000, 100000))
    pieces = []
    write(around.members[at][1], pieces)
    around.members[at][1] = Raw(opening * depth + "".join(pieces) + closing * depth)
    return f"{around.members[at][0]} inside {depth} of {opening}"


def soup(rng, document):
    text = document.data().decode("utf-8", "replace")
    marks = list(re.finditer(r'[{}\[\]:,]|"[^"]*"|[0-9]+', text))
    mark = rng.choice(marks)
    new = rng.choice(("", mark[0] * 2, mark[0] + ",", "," + mark[0], mark[0] + " x",
                      "// c\n" + mark[0], mark[0].replace('"', ""), mark[0].replace('"', "'"),
                      "/* */" + mark[0], "{", "}", "[", "]", ":", "null",
                      "\ufeff" + mark[0], "\u00a0" + mark[0], "\f" + mark[0]))
    document.root = Raw(text[:mark.start()] + new + text[mark.end():])
    return f"{new[:20]!r} for {mark[0][:20]!r}"


def trailing_comma(rng, document):
    text = document.data().decode("utf-8", "replace")
    ends = list(re.finditer(r"[}\]]", text))
    end = rng.choice(ends)
    document.root = Raw(text[:end.start()] + "," + text[end.start():])
    return f"a comma before {end[0]} at {end.start()}"


def wrapper(rng, document):
    """The model's member inside NETCONF's, which JSON does not have."""
    prefix = rng.choice(("ietf-netconf:", "ietf-netconf:", "", "ietf-restconf:"))
    members = copy(document.root).members if isinstance(document.root, Object) else []
    for name in rng.choice((("data",), ("config",), ("config", "edit-config"),
                            ("data", "rpc-reply"), ("config", "edit-config", "rpc"))):
        members = [[prefix + name, Object(members)]]
        if name == "config":
            default = rng.choice(("merge", "replace", "none"))
            members.insert(rng.randrange(2), [prefix + "default-operation", default])
    document.root = Object(members)
    return f"inside {members[0][0]}"


def text_after(rng, document):
    document.after = rng.choice((" x", "{}", "null", ",", "}", "\n\n", "\0", "// end", "\x1a", "[]",
                                 "\ufeff", "\u00a0", '{"base:config": {}}', "#"))
    return f"{document.after!r} after the object"


def large_value(rng, document):
    around, at = member_of(rng, document)
    size = rng.choice((65, 500, 65536, 1000000))
    text = rng.choice(("x", "9", "\u00e9", "\\u00e9")) * size
    around.members[at][1] = Raw(text if text[0] == "9" else f'"{text}"')
    return f"{size} characters in {around.members[at][0]}"


# Those that often leave a document that can be read, and the others.
GENTLE_DAMAGES = (shuffle, shuffle, other_leaf, other_number, other_number, lose, lose_leaf,
                  operation, operation, operation, leaf_operation, leaf_operation,
                  leaf_list_operation)
ROUGH_DAMAGES = (double, double_entry, lose, lose, move, swap_values, rename, rename, rename_top,
                 second_top, other_value, other_value, other_value, other_leaf, other_form,
                 other_form, bad_metadata, bad_metadata, bad_metadata, nest, text_after, wrapper,
                 large_value)
TEXT_DAMAGES = (soup, trailing_comma)
