"""The content of a document: instances of the model's nodes, each with the operation of an edit."""

OPERATIONS = ("merge", "replace", "create", "delete", "remove")
CONFIGURATION = "configuration"
CHANGE = "change"
NETCONF = "urn:ietf:params:xml:ns:netconf:base:1.0"
MODEL = "urn:tarnd:base"


class Refused(Exception):
    """The document must not be accepted, for this reason."""


class Item:
    """An instance of a node in a document.

    `value` is the canonical text of a leaf or leaf-list value; None of a leaf that goes and whose
    text is no value of its type. `keys` are the canonical texts of an entry's keys.
    """

    def __init__(self, node, operation=None):
        self.node = node
        self.operation = operation
        self.value = None
        self.keys = ()
        self.below = []

    @property
    def goes(self):
        return self.operation in ("delete", "remove")

    @property
    def slot(self):
        """What identifies the instance below its parent."""
        if self.node.kind == "list":
            return (self.node.name, self.keys)
        if self.node.kind == "leaf-list":
            return (self.node.name, self.value)
        return (self.node.name,)


class Document:
    """A document as it was read.

    `doubts` are the reasons why a program may refuse it, too; if it is accepted its effect is that
    of the items all the same.
    """

    def __init__(self, root, default_operation, doubts):
        self.root = root
        self.default_operation = default_operation
        self.doubts = doubts


DEFAULT_OPERATIONS = ("merge", "replace", "none")


def close_inner(item, role, doubts):
    """Checks a complete inner item: each instance once, an entry with its keys."""
    node = item.node
    if node.kind == "list":
        keys = {below.node.name: below.value for below in item.below if below.node.is_key}
        missing = [key for key in node.keys if key not in keys]
        if missing:
            raise Refused(f"{node.path()} without its key {missing[0]}")
        item.keys = tuple(keys[key] for key in node.keys)
    item.below = each_once(item.below, role, doubts)


def each_once(items, role, doubts):
    """The items; if a change has a container or an entry again, it is joined with the first one."""
    first_of = {}
    for item in items:
        first = first_of.setdefault(item.slot, item)
        if first is item:
            continue
        again = role == CHANGE and item.node.is_inner
        if not again or item.operation is not None or first.operation is not None:
            raise Refused(f"{item.node.path()} {item.slot[1:]} twice")
        doubts.append("a container or entry again")
        further = [below for below in item.below if not below.node.is_key]
        first.below = each_once(first.below + further, role, doubts)
    return list(first_of.values())


def utf_8(data, doubts):
    """The text of a file, without a byte order mark."""
    if b"\0" in data:
        raise Refused("a NUL byte")
    try:
        text = data.decode("utf-8")
    except UnicodeDecodeError as error:
        raise Refused(f"not UTF-8: {error}") from error
    text = text.removeprefix("\ufeff")
    if text.startswith("\ufeff"):
        doubts.append("a second byte order mark")
    return text.lstrip("\ufeff")
