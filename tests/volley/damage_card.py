"""Damage to card files: lines of key = value."""

KEYS = ("bw-check", "onus-per-link", "pon-links", "manageable-links", "max-service-ports", "xgspon")
OTHER_KEYS = ("bw_check", "bwcheck", "BW-CHECK", "onus-per-links", "xgspon ", "", "x" * 300,
              "\u00e9", '"xgspon"', "'xgspon'", "card.xgspon", "xgs pon", "xgspon\x1b[31m",
              "[card]", "++", "-")
VALUES = ("true", "false", "TRUE", "True", "yes", "on", "1", "0", "2", "16", "17", "64", "065",
          "+5", "-1", "4294967295", "4294967296", "99999999999999999999999", "0x10", "1_000",
          "1.0", "1e3", "", " ", '"true"', "'true'", '"16"', "'16'", "[16]", "[1, 2]", "[true]",
          "{}", "true false", "16 # c", "true # c", "true#c", "16;c", "nan", "inf", "\u0665",
          "\u00e9", "t\0rue", "x" * 1000, '"\\u0031"', '"""16"""', "16,", "=16", "1 6", "\\",
          "2024-03-04", "!!", "%n")


def lines_of(text):
    return text.split("\n")


def other_value(rng, text):
    key, value = rng.choice(KEYS), rng.choice(VALUES)
    lines = [line for line in lines_of(text) if not line.startswith(key)]
    lines.insert(rng.randrange(len(lines) + 1), f"{key} = {value}")
    return "\n".join(lines), f"{key} is {value[:40]!r}"


def good_value(rng, text):
    """A card with another, correct value."""
    key = rng.choice(KEYS)
    value = rng.choice(("true", "false") if key in ("bw-check", "xgspon") else
                       ("0", "1", "2", "3", "10", "16", "17", "63", "128", "4294967295"))
    lines = [line for line in lines_of(text) if not line.startswith(key)]
    lines.insert(rng.randrange(len(lines) + 1), f"{key} = {value}")
    return "\n".join(lines), f"{key} is {value}"


def other_key(rng, text):
    key = rng.choice(OTHER_KEYS)
    lines = lines_of(text)
    lines.insert(rng.randrange(len(lines) + 1), f"{key} = {rng.choice(VALUES)}")
    return "\n".join(lines), f"the key {key[:40]!r}"


def double(rng, text):
    lines = lines_of(text)
    line = rng.choice(lines)
    lines.insert(rng.randrange(len(lines) + 1), line)
    return "\n".join(lines), f"{line!r} twice"


def lose(rng, text):
    lines = lines_of(text)
    line = lines.pop(rng.randrange(len(lines)))
    return "\n".join(lines), f"without {line!r}"


def shuffle(rng, text):
    lines = lines_of(text)
    rng.shuffle(lines)
    return "\n".join(lines), "lines in another order"


def other_line(rng, text):
    lines = lines_of(text)
    new = rng.choice(("xgspon", "= 5", "=", "xgspon =", "xgspon = = true", "xgspon : true",
                      "xgspon true", "[section]", "[[section]]", "[section", "; comment",
                      "// comment", "# comment", "\t", "   # comment", "\u00a0", "\ufeff", "true",
                      "--xgspon", "'''", '"""', "{", "include other", "xgspon := true", "a.b = 1",
                      "# \x01", "# \u00e9", "\r", "\x0c"))
    lines.insert(rng.randrange(len(lines) + 1), new)
    return "\n".join(lines), f"the line {new!r}"


def blanks(rng, text):
    lines = lines_of(text)
    at = rng.randrange(len(lines))
    blank = rng.choice((" ", "\t", "  ", "\u00a0", "\r"))
    lines[at] = rng.choice((blank + lines[at], lines[at] + blank, lines[at].replace("=", blank),
                            lines[at].replace(" = ", "="), lines[at].replace("=", "=" + blank)))
    return "\n".join(lines), f"{blank!r} in {lines[at]!r}"


def no_last_line_end(rng, text):
    del rng
    return text.rstrip("\n"), "no line end at the end"


DAMAGES = (other_value, other_value, other_value, good_value, good_value, good_value, good_value,
           other_key, double, lose, shuffle, other_line, other_line, blanks, no_last_line_end)
