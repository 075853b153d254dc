"""Reads card files as TOML, of which they are a small part."""

import re
import tomllib

from document import Refused, utf_8

FLAGS = ("bw-check", "xgspon")
NUMBERS = ("onus-per-link", "pon-links", "manageable-links", "max-service-ports")
HIGHEST = 4294967295
PLAIN_LINE = re.compile(r"[ \t]*(|#.*|[a-z-]+[ \t]*=[ \t]*(true|false|[0-9]+)[ \t]*(#.*)?)")


def read_card(data):
    """The card as a dictionary, and why a program may refuse it all the same."""
    text = utf_8(data)
    try:
        card = tomllib.loads(text)
    except (tomllib.TOMLDecodeError, RecursionError) as error:
        raise Refused(f"not TOML: {error}") from error
    for key, value in card.items():
        if key in FLAGS:
            if not isinstance(value, bool):
                raise Refused(f"{key} is {value!r}")
        elif key not in NUMBERS:
            raise Refused(f"the key {key!r}")
        elif isinstance(value, bool) or not isinstance(value, int) or not 0 <= value <= HIGHEST:
            raise Refused(f"{key} is {value!r}")
    plain = all(PLAIN_LINE.fullmatch(line) for line in re.split(r"\r?\n", text))
    return card, [] if plain else ["a form that TOML has and a plain card file has not"]


def plain_card(card):
    def text_of(value):
        return str(value).lower()
    return "".join(f"{key} = {text_of(card[key])}\n" for key in FLAGS + NUMBERS if key in card)
