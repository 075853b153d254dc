"""Generated edits, texts and keypaths: each is used or raises InputError, and Python goes on."""

import json

from conftest import EXAMPLES
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

import gponval

# Always the same examples, so that a run of the tests does not depend on chance.
often = settings(
    max_examples=400,
    deadline=None,
    derandomize=True,
    database=None,
    suppress_health_check=list(HealthCheck),
)

TOWN = (EXAMPLES / "town.xml").read_text()
CARD = gponval.Card(TOWN, card=EXAMPLES / "town.card")
CHANGES = gponval.Card(EXAMPLES / "empty.xml").changes(candidate=TOWN)
CHANGE_TEXTS = [file.read_text() for file in sorted((EXAMPLES / "changes").glob("*.xml"))]

# Every node of the town, and every value.
PATHS = sorted(
    {node.path for node in CHANGES}
    | {f"{node.path}/{inside}" for node in CHANGES for inside in node.new or ()}
    | {point.path for point in gponval.points()}
)
VALUES = sorted({str(value) for node in CHANGES for value in (node.new or {}).values()})


def damaged(text, insert):
    """The text with a slice replaced by something else."""
    places = st.integers(0, len(text))
    return st.builds(
        lambda one, other, new: text[: min(one, other)] + new + text[max(one, other) :],
        places,
        places,
        insert,
    )


pieces = st.one_of(
    st.sampled_from(["{", "}", "/", "{1 1 1}", "{77}", '{"a b"}', "'", "[id='1']", "=", "base:", ""]),
    st.text(max_size=8),
    st.sampled_from(VALUES),
)
paths = st.one_of(
    st.sampled_from(PATHS),
    st.sampled_from(PATHS).flatmap(lambda path: damaged(path, pieces)),
    st.text(max_size=20),
)
values = st.one_of(
    st.none(), st.booleans(), st.integers(), st.text(max_size=20), st.sampled_from(VALUES)
)
steps = st.tuples(st.sampled_from(["set", "create", "replace", "delete", "remove"]), paths, values)
json_values = st.recursive(
    values | st.floats(),
    lambda inner: st.lists(inner, max_size=3)
    | st.dictionaries(st.text(max_size=5) | st.sampled_from(["config", "id", "gpon"]), inner),
    max_leaves=8,
)


def edit_of(all_steps):
    edit = gponval.Edit()
    for operation, path, value in all_steps:
        if operation in ("delete", "remove"):
            getattr(edit, operation)(path)
        else:
            getattr(edit, operation)(path, value)
    return edit


def used_or_input_error(work):
    """Whether the work ended without an InputError."""
    try:
        work()
    except gponval.InputError as error:
        assert str(error)
        assert str(error).isprintable()
        return False
    return True


def after_all_the_card_is_as_it_was(work):
    before = CARD.config()
    used_or_input_error(work)
    assert CARD.config() == before


@often
@given(st.lists(steps, min_size=1, max_size=4))
def test_edits(all_steps):
    change = edit_of(all_steps)
    after_all_the_card_is_as_it_was(lambda: CARD.check(change, confirm=True, all=True))
    after_all_the_card_is_as_it_was(lambda: CARD.changes(change))


@often
@given(st.lists(steps, min_size=1, max_size=4))
def test_edits_that_are_kept(all_steps):
    card = gponval.Card(TOWN)
    if used_or_input_error(lambda: card.commit(edit_of(all_steps), confirm=True)):
        assert gponval.Card(card.config()).config() == card.config()


@often
@given(paths)
def test_keypaths(path):
    after_all_the_card_is_as_it_was(lambda: CARD.get(path))


@often
@given(
    st.sampled_from([point.request for point in gponval.points()]) | st.text(max_size=10),
    paths,
    st.none() | st.text(max_size=20) | st.sampled_from(VALUES),
)
def test_requests(name, path, value):
    after_all_the_card_is_as_it_was(lambda: CARD.request(name, path, value))


@often
@given(st.sampled_from(gponval.points()), st.lists(pieces, max_size=4), st.none() | pieces)
def test_requests_of_a_node_that_has_them(point, keys, value):
    path = point.path
    for name in ("gpon", "xgspon", "onu", "line-profile", "service-profile", "vlan-mapping"):
        path = path.replace(f"/interface/{name}/", f"/interface/{name}{{1 1 1}}/")
    parts = path.split("/")
    for at, key in zip(range(4, len(parts)), keys):
        parts[at] += key
    after_all_the_card_is_as_it_was(lambda: CARD.request(point.request, "/".join(parts), value))


@often
@given(st.sampled_from(CHANGE_TEXTS).flatmap(lambda text: damaged(text, pieces)))
def test_xml(text):
    after_all_the_card_is_as_it_was(lambda: CARD.check("<" + text.lstrip("<")))


@often
@given(st.dictionaries(st.sampled_from(["base:config", "config"]) | st.text(), json_values))
def test_json(value):
    after_all_the_card_is_as_it_was(lambda: CARD.check(value))
    after_all_the_card_is_as_it_was(lambda: CARD.check(json.dumps(value)))


@often
@given(st.dictionaries(st.sampled_from(["bw-check", "xgspon"]) | st.text(), values) | st.text())
def test_card_descriptions(card):
    used_or_input_error(lambda: gponval.Card(TOWN, card=card))
