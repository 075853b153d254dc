"""Makes the cases of a volley: files, one of them damaged, and the inputs for gponval."""

import random
from pathlib import Path

import damage_bytes
import damage_card
import damage_json
import damage_xml
import words
from document import CHANGE, CONFIGURATION, Refused
from read_xml import read_xml

# It only asks, and is answered with yes, so that no validator rejects a change.
HARMLESS_REQUEST = "sip_agent_profile_confirmation_warning"
SMALL_CHANGE = (b'<config xmlns="urn:tarnd:base"><profile><gpon><sip-agent-profile>'
                b"<name>volley</name></sip-agent-profile></gpon></profile></config>\n")
# Whatever a card can do shows in the answers to these together.
CHANGES_FOR_CARDS = ("bandwidth-overbooked", "service-port-too-many", "line-profile-five-tconts",
                     "link-remove", "link-remove-xgspon", "mode-change-empty")
XML_NAMES = (".xml",) * 16 + ("", ".txt", ".XML", ".xml.old", ".json")
JSON_NAMES = (".json",) * 16 + (".JSON", ".Json", ".xml")


class Case:
    """Files by name, and the inputs in gponval's order as (role or option, name)."""

    def __init__(self, number):
        self.number = number
        self.damages = []
        self.files = {}
        self.inputs = []
        self.damaged = None
        self.options = []
        self.save = "saved.xml"

    @property
    def shows_effect(self):
        return "--only" in self.options

    @property
    def card(self):
        return next((name for option, name in self.inputs if option == "--card"), None)

    def add(self, option, name, data):
        self.files[name] = data
        self.inputs.append((option, name))

    def arguments(self):
        arguments = ["commit"]
        for option, name in self.inputs:
            arguments += [option, name]
        return arguments + self.options + ["--save", self.save]

    def reading(self):
        """(role, name) of the configurations and changes in the order of their effect."""
        for option, name in self.inputs:
            if option == "--running":
                yield CONFIGURATION, name
        for option, name in self.inputs:
            if option in ("--change", "--candidate"):
                yield CHANGE if option == "--change" else CONFIGURATION, name


def is_json(name):
    return name.lower().endswith(".json")


class Material:
    """The intact files."""

    def __init__(self, model, sources):
        examples = Path(sources, "examples")
        self.model = model
        self.town = Path(examples, "town.xml").read_bytes()
        self.small = Path(sources, "fuzz", "card.xml").read_bytes()
        self.configurations = [self.town, self.small, Path(examples, "empty.xml").read_bytes()]
        self.changes = {path.stem: path.read_bytes()
                        for path in sorted(Path(examples, "changes").glob("*.xml"))}
        self.json_changes = [path.read_bytes()
                             for path in sorted(Path(examples, "changes").glob("*.json"))]
        self.cards = [path.read_bytes() for path in sorted(examples.glob("*.card"))]
        if not self.changes or not self.json_changes or not self.cards:
            raise FileNotFoundError(f"no examples in {examples}")


def part_of(rng, document):
    """A few of a document's elements, with those around them and the keys of entries."""
    parents = {id(element): around for around, element in document.elements()}
    kept = set()
    for _, element in rng.sample(document.elements(), min(len(parents), rng.choice((1, 2, 4, 8)))):
        while element is not None:
            kept.add(id(element))
            kept.update(id(below) for below in element.below if below.name in words.KEYS)
            element = parents[id(element)]

    def keep(element):
        element.content = [part for part in element.content
                           if not isinstance(part, damage_xml.Element) or id(part) in kept]
        for below in element.below:
            keep(below)

    keep(document.root)
    return document


def join(element, other):
    """Adds what another document has to the element, containers to their like."""
    for part in other.content:
        like = [below for below in element.below
                if isinstance(part, damage_xml.Element) and below.name == part.name
                and not any(key.name in words.KEYS for key in below.below)]
        if like:
            join(like[0], part)
        else:
            element.content.append(part)


class Maker:
    """Makes one case from its seed and number."""

    def __init__(self, material, seed, number):
        self.material = material
        self.rng = random.Random(f"{seed}/{number}")
        self.case = Case(number)

    def make(self):
        rng, case = self.rng, self.case
        kind = rng.choices(("change", "configuration", "candidate", "card"), (60, 15, 15, 10))[0]
        case.save = "saved.json" if rng.random() < 0.25 else "saved.xml"
        getattr(self, kind)()
        if kind == "card":
            case.options += ["--all", "--confirm", "yes"]
        elif rng.random() < 0.75:
            case.options += ["--only", HARMLESS_REQUEST, "--confirm", "yes"]
        else:
            case.options += ["--confirm", rng.choice(("yes", "no"))]
        return case

    def change(self):
        rng, case = self.rng, self.case
        case.add("--running", "running.xml", self.material.town)
        if rng.random() < 0.1:
            case.add("--change", "first.xml", SMALL_CHANGE)
        self.damaged("--change", "change", CHANGE, self.some_change())
        if rng.random() < 0.05:
            case.add("--change", "last.xml", SMALL_CHANGE)

    def configuration(self):
        self.damaged("--running", "running", CONFIGURATION,
                     self.rng.choice(self.material.configurations))
        self.case.add("--change", "change.xml", SMALL_CHANGE)

    def candidate(self):
        self.case.add("--running", "running.xml", self.rng.choice(self.material.configurations))
        self.damaged("--candidate", "candidate", CONFIGURATION,
                     self.rng.choice(self.material.configurations))

    def card(self):
        rng, case = self.rng, self.case
        data = rng.choice(self.material.cards)
        for _ in range(rng.choice((1, 1, 2, 3))):
            if rng.random() < 0.2:
                data, damage = rng.choice(damage_bytes.DAMAGES)(rng, data)
            else:
                text, damage = rng.choice(damage_card.DAMAGES)(rng, data.decode("utf-8", "replace"))
                data = text.encode("utf-8")
            case.damages.append(damage)
        case.add("--running", "running.xml", self.material.town)
        for name in CHANGES_FOR_CARDS:
            case.add("--change", name + ".xml", self.material.changes[name])
        case.add("--card", "damaged.card", data)
        case.damaged = "damaged.card"

    def some_change(self):
        """An example, two of them in one, or a part of the running configuration."""
        rng = self.rng
        if rng.random() < 0.4:
            return part_of(rng, damage_xml.read(self.material.town)).data()
        names = sorted(self.material.changes)
        document = damage_xml.read(self.material.changes[rng.choice(names)])
        if rng.random() < 0.2:
            other = damage_xml.read(self.material.changes[rng.choice(names)])
            join(document.root, other.root)
        return document.data()

    def damaged(self, option, stem, role, data):
        rng, case = self.rng, self.case
        as_json = rng.random() < 0.42
        if as_json and role == CHANGE and rng.random() < 0.05:
            data = rng.choice(self.material.json_changes)
            case.damages.append("as it is")
        elif as_json:
            data = self.damaged_json(data, role)
        else:
            data = self.damaged_xml(data)
        if rng.random() < 0.15:
            data, damage = rng.choice(damage_bytes.DAMAGES)(rng, data)
            case.damages.append(damage)
        name = stem + rng.choice(JSON_NAMES if as_json else XML_NAMES)
        case.add(option, name, data)
        case.damaged = name

    def number_of_damages(self):
        return self.rng.choices((0, 1, 2, 3), (5, 60, 25, 10))[0]

    def some_damage(self, damages):
        return self.rng.choice(damages.GENTLE_DAMAGES if self.rng.random() < 0.6 else
                               damages.ROUGH_DAMAGES)

    def damaged_xml(self, data):
        document = damage_xml.read(data)
        for _ in range(self.number_of_damages()):
            self.case.damages.append(self.some_damage(damage_xml)(self.rng, document))
        return document.data()

    def damaged_json(self, data, role):
        document = damage_json.of_document(self.readable(data, role))
        for _ in range(self.number_of_damages()):
            if not document.objects():
                break
            self.case.damages.append(self.some_damage(damage_json)(self.rng, document))
        if self.rng.random() < 0.07:
            damage = self.rng.choice(damage_json.TEXT_DAMAGES)
            self.case.damages.append(damage(self.rng, document))
        return document.data()

    def readable(self, data, role):
        """The document, or an intact one of its kind if two examples cannot be combined."""
        try:
            return read_xml(data, self.material.model, role)
        except Refused:
            return read_xml(SMALL_CHANGE, self.material.model, role)
