"""Reads XML documents with lxml, whose parser is libxml2."""

import re

from lxml import etree

from document import (CHANGE, CONFIGURATION, DEFAULT_OPERATIONS, MODEL, NETCONF, OPERATIONS,
                      Document, Item, Refused, close_inner, utf_8)
from values import BadValue

BLANKS = " \t\r\n"
DECLARATION = re.compile(
    r"""<\?xml\s+version\s*=\s*["']([^"']*)["'](?:\s+encoding\s*=\s*["']([^"']*)["'])?""")
# What libxml2 calls an error though the names and texts of the document are beyond doubt.
PEDANTIC = {
    "NS_ERR_COLON": "a colon in the name of a processing instruction",
    "DTD_XMLID_VALUE": "an xml:id that is no name",
    "WAR_NS_URI": "a namespace that is no URI",
}
EDIT_CONFIG = ("target", "default-operation", "test-option", "error-option", "config")


def parser(recover):
    return etree.XMLParser(resolve_entities=False, load_dtd=False, no_network=True,
                           huge_tree=True, strip_cdata=False, recover=recover)


def parsed(data, doubts):
    """The root element of well-formed XML without a DOCTYPE, in UTF-8."""
    text = utf_8(data, doubts)
    declaration = DECLARATION.match(text)
    if declaration:
        if (declaration[2] or "utf-8").lower() != "utf-8":
            raise Refused(f"the encoding {declaration[2]}")
        if declaration[1] != "1.0":
            doubts.append("another version of XML than 1.0")
    strict = parser(recover=False)
    data = text.encode("utf-8")
    try:
        root = etree.fromstring(data, strict)
    except (etree.XMLSyntaxError, ValueError) as error:
        errors = [entry.type_name for entry in strict.error_log
                  if entry.level >= etree.ErrorLevels.ERROR]
        if not errors or any(name not in PEDANTIC for name in errors):
            raise Refused(f"not XML: {error}") from error
        doubts.extend(PEDANTIC[name] for name in errors)
        root = etree.fromstring(data, parser(recover=True))
    if root.getroottree().docinfo.internalDTD is not None:
        raise Refused("a DOCTYPE")
    return root


def elements_of(element, doubts):
    """The elements below one that must not have text."""
    check_blank(element, element.text, doubts)
    result = []
    for child in element:
        check_blank(element, child.tail, doubts)
        if isinstance(child, etree._Entity):
            raise Refused("an entity")
        if isinstance(child.tag, str):
            result.append(child)
    return result


def check_blank(element, text, doubts):
    if text is None:
        return
    if text.strip(BLANKS):
        raise Refused(f"text in {element.tag}: {text.strip(BLANKS)[:20]!r}")
    if "\r" in text:
        doubts.append("a carriage return as a character reference between elements")


def text_of(element, doubts):
    pieces = [element.text or ""]
    for child in element:
        if isinstance(child, etree._Entity) or isinstance(child.tag, str):
            raise Refused(f"an element in the leaf {element.tag}")
        doubts.append("a comment or processing instruction inside a value")
        pieces.append(child.tail or "")
    return "".join(pieces)


class Wrappers:
    """Removes the elements of NETCONF around the model's."""

    def __init__(self, role, doubts):
        self.role = role
        self.doubts = doubts
        self.default_operation = "merge"

    def unwrap(self, root):
        tag = etree.QName(root)
        if tag.namespace == MODEL:
            return root
        if tag.namespace != NETCONF:
            raise Refused(f"the root {root.tag}")
        if tag.localname not in ("rpc", "edit-config", "config", "rpc-reply", "data"):
            raise Refused(f"the root {root.tag}")
        if tag.localname in ("rpc", "rpc-reply"):
            if any(etree.QName(name).localname == "operation" for name in root.attrib):
                raise Refused(f"an operation at {root.tag}")
            below = elements_of(root, self.doubts)
            wanted = "edit-config" if tag.localname == "rpc" else "data"
            if len(below) != 1 or below[0].tag != f"{{{NETCONF}}}{wanted}":
                raise Refused(f"{tag.localname} without just one {wanted}")
            return self.unwrap_below(below[0])
        return self.unwrap_below(root)

    def unwrap_below(self, element):
        if etree.QName(element).localname == "edit-config":
            element = self.config_of(element)
        self.check_attributes(element)
        name = etree.QName(element).localname
        if (name == "config") != (self.role == CHANGE):
            self.doubts.append(f"a {self.role} inside {name}")
        below = elements_of(element, self.doubts)
        if len(below) != 1:
            raise Refused(f"{name} with {len(below)} elements")
        if etree.QName(below[0]).namespace != MODEL:
            raise Refused(f"{below[0].tag} inside {name}")
        return below[0]

    def check_attributes(self, element):
        for name in element.attrib:
            if name == f"{{{NETCONF}}}operation":
                raise Refused(f"an operation at {element.tag}")
            self.doubts.append(f"the attribute {name} of {element.tag}")

    def config_of(self, edit_config):
        if self.role == CONFIGURATION:
            raise Refused("a configuration inside edit-config")
        self.check_attributes(edit_config)
        found = {}
        for element in elements_of(edit_config, self.doubts):
            tag = etree.QName(element)
            if tag.namespace != NETCONF or tag.localname not in EDIT_CONFIG:
                raise Refused(f"{element.tag} inside edit-config")
            if tag.localname in found:
                raise Refused(f"{tag.localname} twice")
            if "config" in found:
                self.doubts.append(f"{tag.localname} after config")
            found[tag.localname] = element
            if tag.localname != "config":
                self.check_attributes(element)
        if "config" not in found:
            raise Refused("edit-config without config")
        if "target" not in found:
            self.doubts.append("edit-config without target")
        if "default-operation" in found:
            self.take_default_operation(found["default-operation"])
        if "test-option" in found and "test-only" in text_of(found["test-option"], self.doubts):
            raise Refused("test-only")
        return found["config"]

    def take_default_operation(self, element):
        text = text_of(element, self.doubts)
        operation = text.strip(BLANKS)
        if operation not in DEFAULT_OPERATIONS:
            raise Refused(f"the default operation {operation!r}")
        if operation != text:
            self.doubts.append("blanks around the default operation")
        self.default_operation = operation


class Reader:
    def __init__(self, role, doubts):
        self.role = role
        self.doubts = doubts

    def item(self, element, node):
        item = Item(node)
        for name, value in element.attrib.items():
            self.take_attribute(item, name, value)
        if node.is_inner:
            for child in elements_of(element, self.doubts):
                item.below.append(self.item(child, self.child_node(node, child)))
            close_inner(item, self.role, self.doubts)
        else:
            self.take_value(item, element)
        return item

    @staticmethod
    def child_node(node, element):
        tag = etree.QName(element)
        if tag.namespace != MODEL:
            raise Refused(f"{tag.localname} in the namespace {tag.namespace}")
        child = node.children.get(tag.localname)
        if child is None:
            raise Refused(f"{tag.localname} below {node.path()}")
        return child

    def take_attribute(self, item, name, value):
        if name != f"{{{NETCONF}}}operation":
            raise Refused(f"the attribute {name}")
        if self.role == CONFIGURATION:
            raise Refused("an operation in a configuration")
        if item.node.is_key:
            raise Refused("an operation at a key")
        if value not in OPERATIONS:
            raise Refused(f"the operation {value!r}")
        item.operation = value

    def take_value(self, item, element):
        text = text_of(element, self.doubts)
        try:
            item.value = item.node.type.of_xml(text, self.doubts)
        except BadValue as error:
            if not item.goes or item.node.kind != "leaf":
                raise Refused(f"{item.node.path()}: {error}") from error
            if text:
                self.doubts.append("a leaf that goes, with no value of its type")


def read_xml(data, model, role):
    doubts = []
    wrappers = Wrappers(role, doubts)
    root = wrappers.unwrap(parsed(data, doubts))
    if root.tag != f"{{{MODEL}}}{model.name}":
        raise Refused(f"the root {root.tag}")
    return Document(Reader(role, doubts).item(root, model), wrappers.default_operation, doubts)
