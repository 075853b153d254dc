"""Reads JSON documents with Python's json module, made as strict as RFC 8259 and RFC 7951 are."""

import json

from document import (CHANGE, CONFIGURATION, DEFAULT_OPERATIONS, OPERATIONS, Document, Item,
                      Refused, close_inner, utf_8)
from values import BadValue, Number

OPERATION = "ietf-netconf:operation"
PREFIX = "base:"


class Object(list):
    """The members of an object, in their order."""


def members(pairs):
    names = [name for name, _ in pairs]
    if len(set(names)) != len(names):
        raise Refused("a member twice")
    for name in names:
        check_text(name)
    return Object(pairs)


def check_text(text):
    try:
        text.encode("utf-8")
    except UnicodeEncodeError as error:
        raise Refused("half of a surrogate pair") from error


def no_constant(name):
    raise Refused(f"{name} is no JSON")


def parsed(data, doubts):
    try:
        return json.loads(utf_8(data, doubts), object_pairs_hook=members, parse_int=Number,
                          parse_float=Number, parse_constant=no_constant)
    except (ValueError, RecursionError) as error:
        raise Refused(f"not JSON: {error}") from error


class Wrappers:
    """Removes what NETCONF has around the model's node; there is no standard for it in JSON."""

    PREFIX = "ietf-netconf:"

    def __init__(self, role, doubts):
        self.role = role
        self.doubts = doubts
        self.default_operation = "merge"

    def unwrap(self, value, wanted):
        """The value of the model's node, in an object that has it or one of the wanted members."""
        if not isinstance(value, Object) or len(value) != 1:
            raise Refused("no object with just one member")
        name, inside = value[0]
        if name.startswith(PREFIX):
            return name.removeprefix(PREFIX), inside
        name = name.removeprefix(self.PREFIX)
        if name not in wanted:
            raise Refused(f"the member {name!r}")
        self.doubts.append("NETCONF's elements in JSON")
        if name == "edit-config":
            inside = self.config_of(inside)
        below = {"rpc": ("edit-config",), "rpc-reply": ("data",)}.get(name, ())
        return self.unwrap(inside, below)

    def config_of(self, value):
        if not isinstance(value, Object):
            raise Refused("edit-config is no object")
        found = {name.removeprefix(self.PREFIX): inside for name, inside in value}
        if len(found) != len(value) or "config" not in found:
            raise Refused("edit-config without just one config")
        for name, inside in found.items():
            if name == "default-operation":
                if inside not in DEFAULT_OPERATIONS:
                    raise Refused(f"the default operation {inside!r}")
                self.default_operation = inside
            elif name not in ("config", "target"):
                raise Refused(f"{name!r} in edit-config")
        return found["config"]


class Reader:
    def __init__(self, role, doubts):
        self.role = role
        self.doubts = doubts

    def operation(self, metadata, node):
        """The operation in the metadata of one instance."""
        if not isinstance(metadata, Object):
            raise Refused(f"metadata of {node.path()} is no object")
        if self.role == CONFIGURATION:
            raise Refused("metadata in a configuration")
        if node.is_key:
            raise Refused("metadata of a key")
        if not metadata:
            self.doubts.append("empty metadata")
        operation = None
        for name, value in metadata:
            if name != OPERATION:
                raise Refused(f"the metadata {name!r}")
            if isinstance(value, Number) or value not in OPERATIONS:
                raise Refused(f"the operation {value!r}")
            operation = value
        return operation

    def inner(self, node, value):
        if not isinstance(value, Object):
            raise Refused(f"{node.path()} is no object")
        item = Item(node)
        metadata = {}
        values = []
        for name, member in value:
            if name == "@":
                item.operation = self.operation(member, node)
            elif name.startswith("@"):
                metadata[self.child_node(node, name[1:])] = member
            else:
                values.append((self.child_node(node, name), member))
        named = [child for child, _ in values]
        if len(set(named)) != len(named):
            raise Refused(f"a member of {node.path()} twice")
        for child, member in values:
            item.below.extend(self.items(child, member, metadata.pop(child, None)))
        for child, of_child in metadata.items():
            item.below.append(self.leaf_without_value(child, of_child))
        close_inner(item, self.role, self.doubts)
        return item

    def child_node(self, node, name):
        if name.startswith(PREFIX):
            self.doubts.append("a module's name below the top level")
            name = name[len(PREFIX):]
        child = node.children.get(name)
        if child is None:
            raise Refused(f"{name!r} below {node.path()}")
        return child

    def items(self, node, value, metadata):
        if node.is_inner and metadata is not None:
            raise Refused(f"metadata beside {node.path()}")
        if node.kind in ("container", "presence"):
            return [self.inner(node, value)]
        if node.kind == "leaf":
            operation = None if metadata is None else self.operation(metadata, node)
            return [self.leaf(node, value, operation)]
        if not isinstance(value, list) or isinstance(value, Object):
            raise Refused(f"{node.path()} is no array")
        if node.kind == "list":
            return [self.inner(node, entry) for entry in value]
        return self.leaf_list(node, value, metadata)

    def leaf(self, node, value, operation):
        item = Item(node, operation)
        if isinstance(value, str):
            check_text(value)
        try:
            item.value = node.type.of_json(value, self.doubts)
        except BadValue as error:
            if not item.goes or node.kind != "leaf":
                raise Refused(f"{node.path()}: {error}") from error
            self.doubts.append("a leaf that goes, with no value of its type")
        return item

    def leaf_list(self, node, values, metadata):
        operations = [] if metadata is None else metadata
        if not isinstance(operations, list) or isinstance(operations, Object):
            raise Refused(f"metadata of {node.path()} is no array")
        if len(operations) > len(values):
            raise Refused(f"more metadata than values of {node.path()}")
        if metadata == [] or metadata and self.role == CONFIGURATION:
            self.doubts.append("metadata that says nothing")
        operations = [None if entry is None else self.operation(entry, node)
                      for entry in operations]
        operations += [None] * (len(values) - len(operations))
        return [self.leaf(node, value, operation) for value, operation in zip(values, operations)]

    def leaf_without_value(self, node, metadata):
        if node.kind != "leaf":
            raise Refused(f"metadata of {node.path()}, which is not there")
        item = Item(node, self.operation(metadata, node))
        if not item.goes:
            raise Refused(f"metadata of {node.path()}, which is not there")
        self.doubts.append("a leaf that goes, without a value")
        return item


def read_json(data, model, role):
    doubts = []
    wrappers = Wrappers(role, doubts)
    around = ("rpc", "edit-config", "config") if role == CHANGE else ("rpc-reply", "data", "config")
    name, value = wrappers.unwrap(parsed(data, doubts), around)
    if name != model.name:
        raise Refused(f"the top-level member {name!r}")
    return Document(Reader(role, doubts).inner(model, value), wrappers.default_operation, doubts)
