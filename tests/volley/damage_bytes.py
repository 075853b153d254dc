"""Damage to the bytes of any file."""

BAD_UTF_8 = (b"\xff", b"\xc3", b"\xc0\x80", b"\xed\xa0\x80", b"\xf4\x90\x80\x80", b"\xe2\x82",
             b"\x80", b"\xfe\xff")
UNUSUAL = (b"\0", b"\x01", b"\x0b", b"\x1b[31m", b"\x7f", b"\xef\xbb\xbf", b"\xc2\xa0",
           b"\xe2\x80\xa8", b"\xef\xbf\xbe", b"\xef\xb7\x90", b"\xf0\x9f\x98\x80", b"\r", b"\r\n")
MARKS = tuple(bytes([mark]) for mark in b"<>/\"'&;:=!?[]{}(),.@#$%-_ \t\n\\0129azAZ")


def place(rng, data):
    return rng.randrange(len(data) + 1)


def truncate(rng, data):
    at = place(rng, data)
    return data[:at], f"cut at byte {at}"


def lose_beginning(rng, data):
    at = place(rng, data)
    return data[at:], f"without its first {at} bytes"


def change_byte(rng, data):
    at = place(rng, data)
    new = rng.choice(MARKS) if rng.random() < 0.7 else bytes([rng.randrange(256)])
    return data[:at] + new + data[at + 1:], f"byte {at} is {new!r}"


def insert_byte(rng, data):
    at = place(rng, data)
    new = rng.choice(MARKS + UNUSUAL + BAD_UTF_8)
    return data[:at] + new + data[at:], f"{new!r} at byte {at}"


def remove_bytes(rng, data):
    at = place(rng, data)
    count = rng.choice((1, 1, 1, 2, 5, 20, 100))
    return data[:at] + data[at + count:], f"{count} bytes fewer at {at}"


def swap_bytes(rng, data):
    at = place(rng, data)
    return data[:at] + data[at:at + 2][::-1] + data[at + 2:], f"two bytes swapped at {at}"


def invert_bit(rng, data):
    if not data:
        return data, "no bit to change"
    at = rng.randrange(len(data))
    bit = 1 << rng.randrange(8)
    return data[:at] + bytes([data[at] ^ bit]) + data[at + 1:], f"a bit of byte {at} changed"


def copy_part(rng, data):
    first, second = sorted((place(rng, data), place(rng, data)))
    second = min(second, first + 300)
    to = place(rng, data)
    return data[:to] + data[first:second] + data[to:], f"bytes {first} to {second} again at {to}"


def byte_order_mark(rng, data):
    mark = rng.choice((b"\xef\xbb\xbf", b"\xef\xbb\xbf" * 2, b"\xff\xfe", b"\xfe\xff",
                       b"\xff\xfe\0\0"))
    return mark + data, f"{mark!r} at the beginning"


def other_encoding(rng, data):
    encoding = rng.choice(("utf-16", "utf-16-le", "utf-16-be", "utf-32", "latin-1", "cp1252",
                           "utf-7"))
    return data.decode("utf-8", "replace").encode(encoding, "replace"), f"in {encoding}"


def line_ends(rng, data):
    end = rng.choice((b"\r\n", b"\r"))
    return data.replace(b"\n", end), f"lines end in {end!r}"


def little_or_nothing(rng, data):
    del data
    new = rng.choice((b"", b" ", b"\n", b"\0", b"\xef\xbb\xbf", b"<", b"{", b"[]", b"{}", b"null",
                      b"\"", b"0", b"<!-- -->", b"<?xml version=\"1.0\"?>", b"x", b"&", b"\xff",
                      b"<a/>", b"=", b"#", b"<a xmlns=\"\"/><a xmlns=\"\"/>"))
    return new, f"only {new!r}"


def before_or_after(rng, data):
    new = rng.choice((b" ", b"\n", b"x", b"<a/>", b"<!-- -->", b"<?x y?>", b"{}", b"]", b"}", b",",
                      b"null", b"\0", b"]]>", b"//", b"# end", b"&#32;", data))
    if rng.random() < 0.5:
        return new + data, f"{new[:20]!r} before the rest"
    return data + new, f"{new[:20]!r} after the rest"


def much_of_one(rng, data):
    at = place(rng, data)
    new = rng.choice((b" ", b"<", b"<a>", b"[", b"{\"a\":", b"&", b"\n", b"9", b"x", b"</a>", b"\"",
                      b"<!--", b"(")) * rng.choice((10, 1000, 100000))
    return data[:at] + new + data[at:], f"{len(new)} bytes of {new[:5]!r} at {at}"


DAMAGES = (truncate, truncate, lose_beginning, change_byte, change_byte, insert_byte, insert_byte,
           remove_bytes, swap_bytes, invert_bit, copy_part, byte_order_mark, other_encoding,
           line_ends, little_or_nothing, before_or_after, much_of_one)
