"""The audit of a whole card: the verdict and the load of one reading."""

import pytest
from conftest import EXAMPLES, SMALL

import gponval

EMPTY = {"base:config": {}}


def test_an_audit_is_the_check_and_the_load():
    candidate = EXAMPLES / "town.xml"
    empty = gponval.Card(EMPTY, card=EXAMPLES / "town.card")
    audit = empty.audit(candidate=candidate)
    loaded = gponval.Card(candidate, card=EXAMPLES / "town.card").load()
    assert audit.verdict
    checked = empty.check(candidate=candidate, all=True, confirm=True)
    assert [answer[:4] for answer in audit.verdict.answers] == [
        answer[:4] for answer in checked.answers
    ]
    assert audit.load.links == loaded.links
    assert audit.load.limits == loaded.limits
    assert audit.load.line_profiles == loaded.line_profiles
    assert audit.load.service_ports == loaded.service_ports
    assert audit.load.fit("line-home") == loaded.fit("line-home")


def test_an_audit_keeps_nothing(small):
    before = small.config()
    audit = small.audit(candidate=EXAMPLES / "town.xml")
    assert audit.load.service_ports == 14
    assert small.config() == before
    assert small.load().service_ports == 0


def test_a_rejected_card_has_a_load_and_every_finding():
    wrong = SMALL.replace("<profile-references><line-profile>home<", "<profile-references><line-profile>hme<")
    wrong = wrong.replace("<tcont>1</tcont></gem>", "<tcont>7</tcont></gem>")
    audit = gponval.Card(EMPTY).audit(candidate=wrong)
    assert not audit.verdict
    errors = {answer.request for answer in audit.verdict.answers if answer.result == "ERROR"}
    assert len(errors) > 1
    (link,) = audit.load.links
    assert link.onus == 1
    assert link.rejected == "line profile 'hme' does not exist"


def test_warnings_are_confirmed(small):
    fec_off = gponval.Edit().set("/config/interface/gpon{1 1 1}/upstream-fec", False)
    audit = small.audit(fec_off)
    assert audit.verdict
    assert [answer.result for answer in audit.verdict.answers].count("WARNING") == 1


@pytest.mark.parametrize("text", [SMALL.encode(), b"\xef\xbb\xbf" + SMALL.strip().encode()])
def test_a_text_may_be_bytes(text):
    assert gponval.Card(text, card=b"onus-per-link = 5\n").load().limits.onus_per_link == 5
    as_json = gponval.Card(text).config("json").encode()
    assert gponval.Card(b"\n " + as_json).load().links[0].onus == 1


@pytest.mark.parametrize("text", [b"", b"\xff\xfe<", b"{", b"\0", b"no configuration"])
def test_wrong_bytes_are_an_input_error(text):
    with pytest.raises(gponval.InputError):
        gponval.Card(EMPTY).audit(candidate=text)
    with pytest.raises(gponval.InputError):
        gponval.Card(EMPTY, card=b"no-such-key = \xff\n")
