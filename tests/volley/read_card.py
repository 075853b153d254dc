"""Reads card files: lines of key = value, and comments."""

import re
import unicodedata

from document import Refused, utf_8

FLAGS = ("bw-check", "xgspon")
NUMBERS = ("onus-per-link", "pon-links", "manageable-links", "max-service-ports")
HIGHEST = 4294967295
ENTRY = re.compile(r"([^=]*)=(.*)")
QUOTED = re.compile(r"""\[(.*)\]|"(.*)"|'(.*)'""")


def bare(text, doubts):
    """The text without quotes or brackets, which TOML has around texts and lists."""
    text = text.strip(" \t")
    match = QUOTED.fullmatch(text)
    if match is None:
        return text
    doubts.append("quotes or brackets")
    return bare(next(group for group in match.groups() if group is not None), doubts)


def number_of(key, text, doubts):
    if not re.fullmatch("[0-9]+", text) or len(text.lstrip("0")) > 10 or int(text) > HIGHEST:
        raise Refused(f"{key} is {text!r}")
    if text != str(int(text)):
        doubts.append("leading zeros")
    return int(text)


def read_line(line, card, doubts):
    if any(unicodedata.category(letter) == "Cc" and letter != "\t" for letter in line):
        raise Refused(f"a control character in {line!r}")
    if line.lstrip(" \t").startswith(";"):
        doubts.append("a comment after a semicolon")
        return
    line = line.split("#")[0].strip(" \t")
    if not line:
        return
    match = ENTRY.fullmatch(line)
    if match is None:
        doubts.append("a key by itself")
    key, value = (bare(part, doubts) for part in (match.groups() if match else (line, "true")))
    if key in card:
        raise Refused(f"{key} twice")
    if key in FLAGS:
        if value not in ("true", "false"):
            raise Refused(f"{key} is {value!r}")
        card[key] = value == "true"
    elif key in NUMBERS:
        card[key] = number_of(key, value, doubts)
    else:
        raise Refused(f"the key {key!r}")


def read_card(data):
    """The card as a dictionary, and the reasons for which a program may refuse it nevertheless."""
    card, doubts = {}, []
    for line in utf_8(data, doubts).split("\n"):
        read_line(line.removesuffix("\r"), card, doubts)
    return card, doubts


def plain_card(card):
    def text_of(value):
        return str(value).lower()
    return "".join(f"{key} = {text_of(card[key])}\n" for key in FLAGS + NUMBERS if key in card)
