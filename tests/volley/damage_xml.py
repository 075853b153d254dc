"""Damage to XML documents: to their elements, and to their text."""

import re

from lxml import etree

import words
from document import MODEL, NETCONF

OPERATIONS = ("merge", "replace", "create", "delete", "remove")
NOT_OPERATIONS = ("", "none", "Delete", "DELETE", " delete", "delete ", "del", "delete\n", "0",
                  "create,delete", "\u00e9")
NAMESPACES = (MODEL, "", "urn:tarnd:other", "urn:tarnd:base ", "URN:TARND:BASE", "urn:tarnd:bas",
              NETCONF, "http://www.w3.org/XML/1998/namespace", "base", "not a uri", "\u00e9",
              "urn:tarnd:base#", "urn:tarnd:base/", "urn:tarnd:tailf-common")


class Element:
    """An element as it is written: names with their prefixes, attributes even if they are double,
    markup and texts already escaped."""

    def __init__(self, name, attributes=(), content=()):
        self.name = name
        self.attributes = list(attributes)
        self.content = list(content)

    def copy(self):
        return Element(self.name, self.attributes, [
            part.copy() if isinstance(part, Element) else part for part in self.content])

    @property
    def below(self):
        return [part for part in self.content if isinstance(part, Element)]

    @property
    def is_leaf(self):
        return not self.below

    def write(self, pieces):
        attributes = "".join(f' {name}="{value}"' for name, value in self.attributes)
        if not self.content:
            pieces.append(f"<{self.name}{attributes}/>")
            return
        pieces.append(f"<{self.name}{attributes}>")
        for part in self.content:
            if isinstance(part, Element):
                part.write(pieces)
            else:
                pieces.append(part)
        pieces.append(f"</{self.name}>")


class XmlText:
    """A document: its root, and what is before and after it."""

    def __init__(self, root):
        self.before = ""
        self.root = root
        self.after = "\n"

    def copy(self):
        return XmlText(self.root.copy())

    def data(self):
        pieces = [self.before]
        self.root.write(pieces)
        pieces.append(self.after)
        return "".join(pieces).encode("utf-8", "surrogatepass")

    def elements(self):
        """Each element with its parent, the root with None."""
        found = [(None, self.root)]
        for _, element in found:
            found.extend((element, below) for below in element.below)
        return found

    def inner(self):
        return [element for _, element in self.elements() if not element.is_leaf]


def escaped(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def read(data):
    """An intact document; the prefix nc is NETCONF's, and there are no others."""
    def convert(source, around):
        tag = etree.QName(source)
        element = Element(tag.localname)
        if around is None:
            element.attributes += [("xmlns", MODEL), ("xmlns:nc", NETCONF)]
        for name, value in source.attrib.items():
            element.attributes.append(("nc:" + etree.QName(name).localname, escaped(value)))
        element.content.append(escaped(source.text or ""))
        for child in source:
            if isinstance(child.tag, str):
                element.content.append(convert(child, element))
            element.content.append(escaped(child.tail or ""))
        element.content = [part for part in element.content if part != ""]
        return element
    return XmlText(convert(etree.fromstring(data), None))


def some(rng, document):
    """An element that is not the root, with its parent."""
    elements = document.elements()
    return rng.choice(elements[1:] or [(document.root, document.root)])


def position(rng, element):
    return rng.randrange(len(element.content) + 1)


def double(rng, document):
    around, element = some(rng, document)
    if around.content.count(element):
        at = around.content.index(element) if rng.random() < 0.5 else position(rng, around)
        around.content.insert(at, element.copy())
    return f"{element.name} twice"


def lose(rng, document):
    around, element = some(rng, document)
    if element in around.content:
        around.content.remove(element)
    return f"without a {element.name}"


def move(rng, document):
    around, element = some(rng, document)
    to = rng.choice([other for _, other in document.elements()])
    if element in around.content and to is not element:
        to.content.insert(position(rng, to), element.copy())
        if element in around.content:
            around.content.remove(element)
    return f"{element.name} moved into {to.name}"


def swap(rng, document):
    around = rng.choice(document.inner() or [document.root])
    if len(around.below) > 1:
        first, second = rng.sample(around.below, 2)
        at, to = around.content.index(first), around.content.index(second)
        around.content[at], around.content[to] = second, first
    return f"two elements of {around.name} swapped"


def rename(rng, document):
    _, element = rng.choice(document.elements())
    old = element.name
    element.name = words.other_name(rng, old)
    if rng.random() < 0.3 and not element.is_leaf:
        for below in element.below:
            below.name = words.other_name(rng, below.name)
    return f"{old} is called {element.name[:40]}"


def other_text(rng, document):
    leaves = [element for _, element in document.elements() if element.is_leaf]
    element = rng.choice(leaves)
    value = words.value(rng)
    element.content = [words.as_xml(rng, value)]
    return f"{element.name} holds {value[:40]!r}"


def blanks_around_text(rng, document):
    _, element = rng.choice(document.elements())
    blank = rng.choice((" ", "\n", "\t", "\r\n", "&#13;", "&#xA0;", "\u2003"))
    element.content.insert(rng.choice((0, len(element.content))), blank)
    return f"{blank!r} in {element.name}"


def text_among_elements(rng, document):
    element = rng.choice(document.inner() or [document.root])
    text = rng.choice(("x", "5", "&amp;", "]]", "<![CDATA[x]]>", "<![CDATA[ ]]>", "&#65;", "\u00e9",
                       "<![CDATA[]]>"))
    element.content.insert(position(rng, element), text)
    return f"{text} in {element.name}"


def element_in_leaf(rng, document):
    leaves = [element for _, element in document.elements() if element.is_leaf]
    around, inside = rng.choice(leaves), some(rng, document)[1]
    around.content.insert(position(rng, around), inside.copy())
    return f"{inside.name} in the leaf {around.name}"


def markup(rng, document):
    _, element = rng.choice(document.elements())
    new = rng.choice(("<!-- -->", "<!--<a>-->", "<?target data?>", "<?xml version=\"1.0\"?>",
                      "<![CDATA[5]]>", "<![CDATA[<a/>]]>", "<!-- -- -->", "<?a:b?>", "<!>", "<!-->",
                      "<![IGNORE[x]]>", "<%x%>", "<>", "</>"))
    if element.is_leaf and element.content and rng.random() < 0.5:
        text = element.content[0]
        at = rng.randrange(len(text) + 1)
        element.content[:1] = [text[:at], new, text[at:]]
    else:
        element.content.insert(position(rng, element), new)
    return f"{new} in {element.name}"


def text_as_character_data(rng, document):
    leaves = [element for _, element in document.elements() if element.is_leaf and element.content]
    if leaves:
        element = rng.choice(leaves)
        element.content = ["<![CDATA[" + "".join(element.content) + "]]>"]
    return "a text as CDATA"


def nest(rng, document):
    around, element = some(rng, document)
    depth = rng.choice((1, 2, 10, 300, 5000, 50000))
    name = rng.choice((element.name, around.name, "a"))
    if element in around.content:
        at = around.content.index(element)
        pieces = []
        element.write(pieces)
        around.content[at] = (f"<{name}>" * depth + "".join(pieces) + f"</{name}>" * depth)
    return f"{element.name} inside {depth} of {name}"


def repeat(rng, document):
    around, element = some(rng, document)
    count = rng.choice((10, 500, 5000))
    pieces = []
    element.write(pieces)
    around.content.insert(position(rng, around), "".join(pieces) * count)
    return f"{element.name} {count} times"


def operation(rng, document):
    element = rng.choice([element for _, element in document.elements()
                          if element.name not in words.KEYS] or [document.root])
    chosen = rng.choice(OPERATIONS)
    element.attributes = [pair for pair in element.attributes if pair[0] != "nc:operation"]
    element.attributes.append(("nc:operation", chosen))
    if chosen in ("delete", "remove") and element.is_leaf and rng.random() < 0.5:
        element.content = []
    return f"{chosen} at {element.name}"


def entry_operation(rng, document):
    """An operation at an element with children, mostly an entry."""
    element = rng.choice(document.inner() or [document.root])
    chosen = rng.choice(OPERATIONS)
    element.attributes = [pair for pair in element.attributes if pair[0] != "nc:operation"]
    element.attributes.append(("nc:operation", chosen))
    return f"{chosen} at {element.name}"


def wrong_operation(rng, document):
    _, element = rng.choice(document.elements())
    good, bad = rng.choice(OPERATIONS), rng.choice(NOT_OPERATIONS)
    kind, attributes = rng.choice((
        ("without a prefix", [("operation", good)]),
        ("unknown", [("nc:operation", bad)]),
        ("in a foreign namespace", [("xmlns:nc", "urn:other"), ("nc:operation", good)]),
        ("in the model's namespace", [("xmlns:b", MODEL), ("b:operation", good)]),
        ("twice", [("nc:operation", good), ("nc:operation", good)]),
        ("twice, by two prefixes",
         [("xmlns:n", NETCONF), ("n:operation", good), ("nc:operation", good)]),
        ("with a prefix that is not declared", [("z:operation", good)]),
        ("with another name", [("nc:Operation", good)]),
        ("in an old namespace", [("xmlns:o", NETCONF[:-1] + "1"), ("o:operation", good)]),
    ))
    element.attributes += attributes
    return f"an operation {kind} at {element.name}"


def other_prefix(rng, document):
    element = rng.choice([element for _, element in document.elements()
                          if element.name not in words.KEYS] or [document.root])
    good = rng.choice(OPERATIONS)
    element.attributes = [pair for pair in element.attributes if pair[0] != "nc:operation"]
    element.attributes += [("xmlns:ops", NETCONF), ("ops:operation", good)]
    return f"{good} at {element.name} by another prefix"


def operation_at_key(rng, document):
    keys = [element for _, element in document.elements() if element.name in words.KEYS]
    element = rng.choice(keys or [document.root])
    element.attributes.append(("nc:operation", rng.choice(OPERATIONS)))
    return f"an operation at {element.name}"


def other_number(rng, document):
    numbers = [element for _, element in document.elements()
               if element.is_leaf and "".join(element.content).isdigit()]
    if not numbers:
        return "no number to change"
    element = rng.choice(numbers)
    element.content = [str(rng.choice((0, 1, 2, 3, 5, 7, 100, 4094, 65535, 10000)))]
    return f"{element.name} is {element.content[0]}"


def lose_leaf(rng, document):
    leaves = [(around, element) for around, element in document.elements()
              if around is not None and element.is_leaf and element.name not in words.KEYS]
    if not leaves:
        return "no leaf to lose"
    around, element = rng.choice(leaves)
    around.content.remove(element)
    return f"without the leaf {element.name}"


def move_to_end(rng, document):
    around, element = some(rng, document)
    if element in around.content:
        around.content.remove(element)
        around.content.append(element)
    return f"{element.name} at the end of {around.name}"


def comment(rng, document):
    element = rng.choice(document.inner() or [document.root])
    new = rng.choice(("<!-- a comment -->", "<?target data?>", "<![CDATA[ ]]>", "<!--<a>-->"))
    element.content.insert(position(rng, element), new)
    return f"{new} in {element.name}"


def plain_wrapper(rng, document):
    """The model's element inside NETCONF's as a client sends them."""
    config = Element("config", [("xmlns", NETCONF)], [document.root])
    kind = rng.choice(("config", "edit-config", "rpc", "data", "rpc-reply"))
    default = rng.choice(("merge", "replace", "none", None))
    parameters = [Element("target", [], [Element("running")])]
    if default is not None:
        parameters.append(Element("default-operation", [], [default]))
    edit = Element("edit-config", [("xmlns", NETCONF)], [*parameters, config])
    data = Element("data", [("xmlns", NETCONF)], [document.root])
    document.root = {
        "config": config, "edit-config": edit, "data": data,
        "rpc": Element("rpc", [("xmlns", NETCONF), ("message-id", "7")], [edit]),
        "rpc-reply": Element("rpc-reply", [("xmlns", NETCONF), ("message-id", "7")], [data]),
    }[kind]
    return f"inside {kind}, by default {default}"


def attribute(rng, document):
    _, element = rng.choice(document.elements())
    new = rng.choice((("x", "1"), ("xml:lang", "en"), ("xml:space", "preserve"), ("xml:id", "1 2"),
                      ("nc:default", "1"), ("id", "5"), ("xmlns:xsi", "urn:x"), ("z:y", ""),
                      ("xmlns:p", ""), ("xmlns:xml", "urn:x"), ("xmlns:xmlns", "urn:x"),
                      ("x", "<"), ("x", "&amp;"), ("x", "&nothing;"), ("nc:message-id", "1"),
                      ("x" * 10000, "y"), ("xmlns:q", "not a uri")))
    element.attributes.append(new)
    return f"the attribute {new[0][:20]} at {element.name}"


def namespace(rng, document):
    _, element = rng.choice(document.elements() + [(None, document.root)] * 5)
    new = rng.choice(NAMESPACES)
    element.attributes = [pair for pair in element.attributes if pair[0] != "xmlns"]
    element.attributes.append(("xmlns", new))
    return f"{element.name} in the namespace {new!r}"


def no_namespace(rng, document):
    _, element = rng.choice([(None, document.root)] * 2 + document.elements())
    if rng.random() < 0.5:
        lost = [pair for pair in element.attributes if pair[0].startswith("xmlns")]
        if lost:
            element.attributes.remove(rng.choice(lost))
        return f"{element.name} without a declaration"
    for below in element.below or [element]:
        below.attributes.append(("xmlns", ""))
    return f'xmlns="" in {element.name}'


def prefix_everywhere(rng, document):
    prefix = rng.choice(("base", "b", "nc", "x.y", "_", "\u00e9", "xml", "a:b"))
    declared = rng.choice((prefix, prefix, prefix, "other"))
    for _, element in document.elements():
        if rng.random() < 0.98:
            element.name = f"{prefix}:{element.name}"
    document.root.attributes = [pair for pair in document.root.attributes if pair[0] != "xmlns"]
    document.root.attributes.append((f"xmlns:{declared}", MODEL))
    return f"elements with the prefix {prefix}"


def declaration(rng, document):
    document.before = rng.choice((
        '<?xml version="1.0"?>\n', '<?xml version="1.0" encoding="UTF-8"?>\n',
        "<?xml version='1.0' encoding='utf-8' standalone='yes'?>", '<?xml version="1.1"?>',
        '<?xml version="1.0" encoding="UTF-16"?>', '<?xml version="1.0" encoding="ISO-8859-1"?>',
        '<?xml version="1.0" encoding="US-ASCII"?>', '<?xml version="1.0" encoding="utf8"?>',
        '<?xml version="1.0" encoding="x"?>', ' <?xml version="1.0"?>', "<?xml?>",
        '<?xml encoding="UTF-8"?>', '<?xml version="2.0"?>', '<?XML version="1.0"?>',
        '<?xml version="1.0" standalone="maybe"?>', "<!-- a comment -->\n", "<?style sheet?>\n"))
    return f"before the root {document.before!r}"


def document_type(rng, document):
    bombs = "".join(f'<!ENTITY e{i} "{f"&e{i - 1};" * 10 if i else "ha"}">' for i in range(9))
    document.before = rng.choice((
        "<!DOCTYPE config>", "<!DOCTYPE config []>", '<!DOCTYPE config SYSTEM "file:///dev/null">',
        '<!DOCTYPE config [<!ENTITY e "5">]>', "<!doctype config>",
        f"<!DOCTYPE config [{bombs}]>", '<!DOCTYPE config [<!ENTITY e SYSTEM "/etc/hostname">]>',
        '<!DOCTYPE config [<!ATTLIST config xmlns CDATA "urn:tarnd:base">]>',
        '<!DOCTYPE config PUBLIC "-//x" "y">'))
    if rng.random() < 0.5:
        _, element = rng.choice(document.elements())
        element.content.append(rng.choice(("&e;", "&e8;")))
    return f"{document.before[:40]!r}"


def entity(rng, document):
    _, element = rng.choice(document.elements())
    text = rng.choice(("&e;", "&nbsp;", "&amp;", "&#x26;", "&#0;", "&#1;", "&#x110000;", "&#xD800;",
                       "&#xFFFE;", "&", "&;", "&#;", "&#x;", "&lt", "&apos;&quot;", "&#xA;",
                       "&#128512;", "&#xFDD0;"))
    element.content.insert(position(rng, element), text)
    return f"{text} in {element.name}"


def tag_soup(rng, document):
    data = document.data().decode("utf-8", "replace")
    tags = list(re.finditer(r"</?[a-z][^<>]*>", data))
    tag = rng.choice(tags)
    new = rng.choice(("", tag[0][:-1], tag[0][1:], tag[0] * 2, tag[0].replace("/", ""),
                      tag[0].upper(), tag[0].replace("<", "</"), tag[0].replace(">", "/>"),
                      tag[0].replace('"', ""), tag[0].replace('"', "'"), "<" + tag[0],
                      tag[0].replace("=", " = "), tag[0].replace(">", " >"), "< " + tag[0][1:]))
    document.root = Element("x")
    document.root.write = lambda pieces: pieces.append(data[:tag.start()] + new + data[tag.end():])
    return f"{new[:40]} for {tag[0][:40]}"


def wrapper(rng, document):
    """The model's element inside NETCONF's, correctly or almost."""
    def around(name, *content, attributes=()):
        return Element(name, attributes, content)

    namespace_used = rng.choice((NETCONF,) * 8 + ("urn:other", MODEL, ""))
    inner = [document.root]
    if rng.random() < 0.1:
        inner = rng.choice(([], [document.root, document.root.copy()], ["x", document.root],
                            [Element("config"), document.root], [document.root, "<!-- -->"]))
    kind = rng.choice(("config", "edit-config", "edit-config", "rpc", "rpc", "data", "rpc-reply",
                       "get-config", "hello", "filter"))
    config = around("config", *inner)
    if rng.random() < 0.1:
        config.attributes.append(rng.choice((("nc:operation", "delete"), ("x", "y"))))
    parameters = [around("target", around(rng.choice(("running", "candidate"))))]
    for _ in range(rng.choice((0, 1, 1, 1, 2))):
        parameters.append(around("default-operation", rng.choice(
            ("merge", "replace", "none", "replace", "none", "delete", "", " none ", "Replace"))))
    if rng.random() < 0.1:
        parameters.append(rng.choice((
            around("test-option", "test-then-set"), around("error-option", "rollback-on-error"),
            around("url", "file:///x"), around("unknown"), around("test-option", "test-only"))))
    if rng.random() < 0.1:
        parameters = parameters[1:]
    edit = around("edit-config", *parameters, config)
    if rng.random() < 0.1:
        rng.shuffle(edit.content)
    data = around("data", *inner)
    roots = {"config": config, "edit-config": edit, "data": data,
             "rpc": around("rpc", edit, attributes=[("message-id", "101")]),
             "rpc-reply": around("rpc-reply", data, attributes=[("message-id", "101")])}
    root = roots.get(kind, around(kind, *inner))
    root.attributes += [("xmlns", namespace_used), ("xmlns:nc", NETCONF)]
    if rng.random() < 0.05:
        root.content.append(rng.choice((around("ok"), around("rpc-error"), "x", edit.copy())))
    document.root = root
    return f"inside {kind} of {namespace_used!r}, with {len(parameters)} parameters"


def large_value(rng, document):
    leaves = [element for _, element in document.elements() if element.is_leaf]
    element = rng.choice(leaves)
    size = rng.choice((65, 500, 65536, 1000000))
    element.content = [rng.choice(("x", "9", "\u00e9", "/")) * size]
    return f"{size} characters in {element.name}"


# Those that often leave a document that can be read, and the others.
GENTLE_DAMAGES = (
    swap, move_to_end, other_text, other_number, other_number, lose, lose_leaf, comment, operation,
    operation, operation, entry_operation, entry_operation, other_prefix, text_as_character_data,
    plain_wrapper, plain_wrapper)
ROUGH_DAMAGES = (
    double, lose, move, move, rename, rename, other_text, other_text, blanks_around_text,
    text_among_elements, element_in_leaf, markup, markup, nest, repeat, operation_at_key,
    wrong_operation, wrong_operation, attribute, namespace, namespace, no_namespace,
    prefix_everywhere, declaration, document_type, entity, tag_soup, wrapper, wrapper, large_value)
