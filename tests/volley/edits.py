"""What documents make of a configuration: RFC 6241's operations on a simple tree, and what the
model wants of the outcome.

A tree is a dictionary for each container or entry, by the slot of an item: a text for a leaf or a
value of a leaf-list, a dictionary for what holds others.
"""

from document import CHANGE, CONFIGURATION, Refused

CLEAR_TEXT = "$0$"


def exists(node, value):
    """A container without presence exists if it has content."""
    if node.kind != "container":
        return value is not None
    return value is not None and any(
        exists(node.children[slot[0]], below) for slot, below in value.items())


class Edit:
    """One change, as it is applied to the tree."""

    def __init__(self, model, document):
        self.model = model
        self.document = document
        self.left_with_case = set()

    def apply(self, tree):
        slot = self.document.root.slot
        holder = {slot: tree}
        self.item(self.document.root, holder, self.document.default_operation, ())
        return holder.get(slot, {})

    def item(self, item, parent, inherited, path):
        path += item.slot
        operation = item.operation or inherited
        found = exists(item.node, parent.get(item.slot))
        if operation == "create" and found:
            raise Refused(f"{path} exists")
        if operation == "delete" and not found and not self.went_with_its_case(path):
            raise Refused(f"{path} does not exist")
        if operation == "none":
            self.on_the_way(item, parent, found, path)
            return
        if operation in ("delete", "remove", "replace"):
            parent.pop(item.slot, None)
        if operation in ("delete", "remove"):
            if any(below.operation for below in every_item(item.below)):
                self.document.doubts.append("operations inside what goes")
            return
        self.leave_other_cases(item, parent, path)
        if not item.node.is_inner:
            parent[item.slot] = item.value
            return
        below = parent.setdefault(item.slot, {})
        for child in item.below:
            self.item(child, below, "merge", path)
        if item.node.kind == "container" and not exists(item.node, below):
            self.without_content(item, parent)

    def on_the_way(self, item, parent, found, path):
        """The default operation "none": the node must exist, and stays as it is."""
        node = item.node
        there = found or node.kind == "container" or node.default is not None
        if not there:
            raise Refused(f"{path} does not exist")
        if not node.is_inner:
            return
        if not found and node.case is not None:
            self.document.doubts.append("a case that is not there, on the way")
        below = parent.setdefault(item.slot, {})
        for child in item.below:
            if not child.node.is_key:
                self.item(child, below, "none", path)

    def without_content(self, item, parent):
        if item.node.case is not None and not item.below:
            self.document.doubts.append("an empty container of a case")
        parent.pop(item.slot, None)

    def leave_other_cases(self, item, parent, path):
        """A node of one case of a choice removes those of the other cases."""
        case = item.node.case
        if case is None:
            return
        for slot in list(parent):
            other = item.node.parent.children[slot[0]].case
            if other is not None and other[0] == case[0] and other != case:
                del parent[slot]
                self.left_with_case.add(path[:-len(item.slot)] + slot)

    def went_with_its_case(self, path):
        gone = any(path[:len(left)] == left for left in self.left_with_case)
        if gone:
            self.document.doubts.append("a delete of what another case has ended already")
        return gone


def every_item(items):
    for item in items:
        yield item
        yield from every_item(item.below)


def check_cases(item, doubts):
    """Refuses nodes of two cases of one choice, unless all but one are deleted."""
    chosen = {}
    for below in item.below:
        check_cases(below, doubts)
        case = below.node.case
        if case is None or below.goes:
            continue
        first = chosen.setdefault(case[0], below)
        if first.node.case == case:
            continue
        if any(part.goes for part in every_item(first.below + below.below)):
            doubts.append("two cases, with nodes that go")
        elif not (first.below or first.value is not None) or not (
                below.below or below.value is not None):
            doubts.append("two cases, one of them empty")
        else:
            raise Refused(f"{first.node.path()} and {below.node.path()} exclude each other")


def check_complete(node, tree):
    """Refuses a tree without a mandatory leaf."""
    cases = {node.children[slot[0]].case for slot, value in tree.items()
             if exists(node.children[slot[0]], value)}
    for child in node.children.values():
        if child.case is not None and child.case not in cases:
            continue
        if child.mandatory and (child.name,) not in tree:
            raise Refused(f"{child.path()} is mandatory")
        if child.kind == "container":
            check_complete(child, tree.get((child.name,), {}))
    for slot, value in tree.items():
        child = node.children[slot[0]]
        if child.kind in ("list", "presence"):
            check_complete(child, value)


def read_configuration(model, document):
    """The tree of a configuration."""
    check_cases(document.root, document.doubts)
    tree = Edit(model, document).apply({})
    check_complete(model, tree)
    return tree


def apply_change(model, document, tree):
    """Applies the change to the tree, which is modified, and returns it."""
    check_cases(document.root, document.doubts)
    tree = Edit(model, document).apply(tree)
    check_complete(model, tree)
    return tree


READ = {CONFIGURATION: read_configuration, CHANGE: apply_change}


def lines_of(model, tree, text_of_encrypted):
    """Each leaf of the tree as a line, in a fixed order, without those with their default."""
    lines = []

    def walk(node, below, path):
        for slot, value in below.items():
            child = node.children[slot[0]]
            here = path + "/" + slot[0] + "".join(f"[{part}]" for part in slot[1:])
            if child.kind == "leaf":
                if child.type.encrypted:
                    value = text_of_encrypted(value)
                if value != child.default and not child.is_key:
                    lines.append(f"{here} {value!r}")
            elif child.kind == "leaf-list":
                lines.append(here)
            else:
                if child.kind != "container":
                    lines.append(here)
                walk(child, value, here)

    walk(model, tree, "")
    return sorted(lines)
