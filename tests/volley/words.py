"""Names and values for damage, similar to those of the model or not."""

# Names that the model has somewhere.
KNOWN = ("config", "gpon", "xgspon", "interface", "profile", "service-port", "onu", "id", "name",
         "slot", "chassis-id", "port-id", "tcont", "gem", "gem-id", "vlan-id", "cos", "match",
         "action", "ssid", "password", "type-1", "type-2", "traffic", "wlan", "auto", "custom",
         "ethernet", "uni", "veip", "ip-host", "address", "upstream-rate", "description", "snmp")
# Names of leaves that are keys of lists; a few of them are other leaves elsewhere.
KEYS = ("chassis-id", "slot-id", "port-id", "id", "name", "port", "gem-id", "slot")
UNKNOWN = ("a", "-", "_", "x" * 300, "x" * 100000, "config1", "\u00e9", "onu\u0301", "id\u200b",
           "Config", "__proto__", "operation", "A.B", "1a")
VALUES = ("", " ", "0", "1", "2", "5", "-1", "+5", "007", "-0", "0x10", "1e3", "1.0", ".5", "5.",
          "4095", "4094", "4096", "255", "256", "65535", "65536", "4294967295", "4294967296",
          "99999999999999999999", "1" * 400, "\u0665", "5 5", "NaN", "true", "false", "TRUE", "yes",
          "any", "Any", "add", "translate", "combo", "xgspon", "serial-number", "eth1", "wl0-vap1",
          "eth9", "name with blanks", "{brace}", "a/b", "a\"b", "a'b", "%s%n%p", "\u00e9t\u00e9",
          "\u4e2d\u6587", "\U0001F600", "\u00a0", "\u202egnp", "caf\u00e9", "x" * 31, "x" * 32,
          "x" * 33, "x" * 48, "x" * 49, "x" * 64, "x" * 65, "\u00e9" * 48, "\u00e9" * 64,
          "1/1", "1/1/1", "10.0.0.1", "10.0.0.1/24", "10.0.0.1/33", "256.0.0.1", "10.0.0.01",
          "10.0.0.1%eth0", "10.0.0.1 ", "0.0.0.0/0", "255.255.255.255/32", "$0$clear", "$0$",
          "$8$", "$8$AAAA", "$8$AAA", "$8$\u00e9", "$9$x", "$0$\u00e9 <&>", "line-home",
          "home-10m", "rg-home", "a\nb", "a\tb", "a\rb", "a\x7fb", "a\x85b", "\ufdd0", "\ufffd",
          "<a>", "&amp;", "]]>", "--", "\\u0000", "null", "[null]", "../../etc/passwd")


def other_name(rng, name):
    kind = rng.randrange(8)
    if kind == 0 and len(name) > 1:
        at = rng.randrange(len(name) - 1)
        return name[:at] + name[at + 1] + name[at] + name[at + 2:]
    if kind == 1 and len(name) > 1:
        at = rng.randrange(len(name))
        return name[:at] + name[at + 1:] or "a"
    if kind == 2:
        return rng.choice((name.upper(), name.capitalize(), name.replace("-", "_"), name + "s",
                           name + "-", name.replace("-", "")))
    if kind == 3:
        return rng.choice(("base:", "nc:", "x:", ":", "urn:tarnd:base:")) + name
    if kind in (4, 5):
        return rng.choice(UNKNOWN)
    return rng.choice(KNOWN)


def value(rng):
    if rng.random() < 0.1:
        return str(rng.randrange(2 ** rng.choice((3, 8, 12, 16, 32, 33, 64))))
    return rng.choice(VALUES)


def as_xml(rng, text):
    """The text for an element, escaped in several ways, and sometimes not at all."""
    if rng.random() < 0.05:
        return text
    named = {"&": "&amp;", "<": "&lt;", ">": "&gt;", "\r": "&#13;"}
    if rng.random() < 0.2:
        return "".join(f"&#{ord(character)};" for character in text)
    return "".join(named.get(character, character) for character in text)
