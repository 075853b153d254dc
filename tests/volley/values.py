"""The values of leaves: which texts and JSON values a type has, and the canonical text of each."""

import copy
import re
import unicodedata

INTEGER = re.compile(r"[+-]?[0-9]+\Z")
XML_BLANKS = " \t\n\r"
INTEGER_BITS = {
    "int8": (True, 8), "int16": (True, 16), "int32": (True, 32), "int64": (True, 64),
    "uint8": (False, 8), "uint16": (False, 16), "uint32": (False, 32), "uint64": (False, 64),
}


class BadValue(Exception):
    """The type does not have the value."""


class Number(str):
    """A number of JSON as it was written."""


class Type:
    def __init__(self, base, patterns=()):
        self.base = base
        self.ranges = []
        self.lengths = []
        self.patterns = list(patterns)
        self.names = []
        self.members = []
        self.encrypted = False

    def copy(self):
        # Flat lists only: those of a derived type grow without those of its base.
        result = copy.copy(self)
        result.ranges, result.lengths = list(self.ranges), list(self.lengths)
        result.patterns, result.names = list(self.patterns), list(self.names)
        result.members = list(self.members)
        return result

    def of_xml(self, text, doubts):
        """The canonical text of an element's text."""
        if self.base == "union":
            return self.first_member(lambda member: member.of_xml(text, doubts), text)
        if self.base in INTEGER_BITS:
            return self.integer(text.strip(XML_BLANKS))
        if self.base == "empty":
            if text:
                raise BadValue(f"{text!r} is not empty")
            return ""
        if self.base == "string":
            return self.string(text, doubts)
        return self.name(text)

    def of_json(self, value, doubts):
        """The canonical text of a value of JSON, as RFC 7951 writes values of this type."""
        if self.base == "union":
            return self.first_member(lambda member: member.of_json(value, doubts), value)
        if self.base in ("int64", "uint64"):
            raise BadValue("64 bits are not in the model")
        if self.base in INTEGER_BITS and isinstance(value, Number):
            return self.integer(whole_number(value, doubts))
        if self.base == "boolean" and isinstance(value, bool):
            return "true" if value else "false"
        if self.base == "empty" and isinstance(value, list) and value == [None]:
            return ""
        if isinstance(value, str) and not isinstance(value, Number):
            if self.base == "string":
                return self.string(value, doubts)
            if self.base == "enumeration":
                return self.name(value)
        raise BadValue(f"{type(value).__name__} is no {self.base}")

    def first_member(self, read, value):
        for member in self.members:
            try:
                return read(member)
            except BadValue:
                continue
        raise BadValue(f"{value!r} suits no type of the union")

    def integer(self, text):
        if not INTEGER.match(text):
            raise BadValue(f"{text!r} is no number")
        if len(text.lstrip("+-").lstrip("0")) > 20:
            raise BadValue("too many digits")
        number = int(text)
        signed, bits = INTEGER_BITS[self.base]
        lowest, highest = (-2 ** (bits - 1), 2 ** (bits - 1) - 1) if signed else (0, 2 ** bits - 1)
        if not lowest <= number <= highest or not in_all(self.ranges, number):
            raise BadValue(f"{number} is out of range")
        return str(number)

    def string(self, text, doubts):
        check_characters(text, doubts)
        if not in_all(self.lengths, len(text)):
            raise BadValue(f"{len(text)} characters")
        for pattern in self.patterns:
            if not re.fullmatch(pattern, text, re.ASCII):
                raise BadValue(f"{text!r} does not match {pattern!r}")
            if not re.fullmatch(pattern, text):
                doubts.append("a blank beyond ASCII, which is none to XML Schema")
        return text

    def name(self, text):
        names = ("true", "false") if self.base == "boolean" else self.names
        if text not in names:
            raise BadValue(f"{text!r} is none of {names}")
        return text


def in_all(restrictions, number):
    return all(
        any((low is None or low <= number) and (high is None or number <= high)
            for low, high in parts)
        for parts in restrictions)


def whole_number(number, doubts):
    """The digits of a number of JSON, which may have a fraction or an exponent."""
    if INTEGER.match(number):
        return number
    match = re.fullmatch(r"(-?)([0-9]+)(?:\.([0-9]+))?(?:[eE]([+-]?[0-9]+))?", number)
    sign, digits, fraction, exponent = match[1], match[2], match[3] or "", int(match[4] or 0)
    if abs(exponent) > 40:
        raise BadValue(f"{number} is out of range")
    scaled = int(digits + fraction) * 10 ** max(0, exponent - len(fraction))
    divisor = 10 ** max(0, len(fraction) - exponent)
    if scaled % divisor:
        raise BadValue(f"{number} is not whole")
    doubts.append("a whole number with a fraction or an exponent")
    return sign + str(scaled // divisor)


def check_characters(text, doubts):
    """Refuses what no YANG string holds (RFC 7950, yang-char)."""
    for character in text:
        code = ord(character)
        if code < 0x20 and character not in "\t\n\r":
            raise BadValue(f"the character {code:#x}")
        if 0xD800 <= code <= 0xDFFF or code in (0xFFFE, 0xFFFF):
            raise BadValue(f"the character {code:#x}")
        if unicodedata.category(character) == "Cn" and (
                0xFDD0 <= code <= 0xFDEF or code & 0xFFFE == 0xFFFE):
            doubts.append("a noncharacter, which XML has and YANG has not")
