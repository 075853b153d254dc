"""Input that cannot be used: one InputError with one clear line."""

import pytest
from conftest import ADDED_PORT, SMALL

import gponval
from gponval import Edit

UNKNOWN = ADDED_PORT.replace("gem-id", "gem-idd")


def error_of(work):
    with pytest.raises(gponval.InputError) as raised:
        work()
    error = raised.value
    assert isinstance(error, ValueError)
    assert str(error)
    assert "\n" not in str(error)
    return error


def test_a_wrong_text_has_line_and_path(small):
    error = error_of(lambda: small.commit(UNKNOWN))
    assert error.file is None
    assert error.line == 4
    assert error.path == "/config/service-port{7}/gpon/onu/gem"
    assert "did you mean 'gem-id'?" in str(error)


def test_a_wrong_file_is_named(small, tmp_path):
    file = tmp_path / "change.xml"
    file.write_text(UNKNOWN)
    error = error_of(lambda: small.commit(file))
    assert error.file == str(file)
    assert str(error).startswith(f"{file}:4: ")


def test_after_an_error_the_card_is_as_it_was(small):
    before = small.config()
    for _ in range(3):
        error_of(lambda: small.commit(UNKNOWN))
    assert small.config() == before
    assert small.commit(ADDED_PORT)


@pytest.mark.parametrize(
    "work",
    [
        lambda card: gponval.Card("there-is-no-such-file.xml"),
        lambda card: gponval.Card("<config/>"),
        lambda card: gponval.Card("{"),
        lambda card: gponval.Card({}),
        lambda card: gponval.Card({"base:config": {"sevice-port": []}}),
        lambda card: gponval.Card({"base:config": {"service-port": [{"id": "\udc80"}]}}),
        lambda card: gponval.Card(SMALL, card="onus-per-link = many\n"),
        lambda card: gponval.Card(SMALL, card={"onu-per-link": 1}),
        lambda card: gponval.Card(SMALL, card="no-such.card"),
        lambda card: card.commit("<config xmlns='urn:tarnd:base'>"),
        lambda card: card.commit({"base:config": {"service-port": [{"id": -1}]}}),
        lambda card: card.check(Edit().set("/config/sevice-port{1}")),
        lambda card: card.check(Edit().set("/config/service-port{x}")),
        lambda card: card.check(Edit().delete("/config/service-port{99}")),
        lambda card: card.check(Edit().set("/config/service-port{1}/match/vlan/vlan-id", "many")),
        lambda card: card.request("sp_gem_check", "/config/sevice-port"),
        lambda card: card.request("sp_gem_check", ""),
        lambda card: card.request("sp_gem_chec", "/config/service-port"),
        lambda card: card.request("sp_gem_check", "/config/gpon"),
        lambda card: card.request("onu_bw_check", "/config/interface/gpon/onu"),
        lambda card: card.request("vlan_limit_check", "/config/profile/gpon/service-profile{a}/vlan-mapping"),
        lambda card: card.request("pon_mode_validation", "/config/interface/xgspon{1 1 9}/operation-mode"),
        lambda card: card.check(ADDED_PORT, only="sp_gem_chec"),
        lambda card: card.check(Edit().set("/config/service-port{1}\udc80")),
        lambda card: card.check("<config>\udc80</config>"),
        lambda card: card.check({"base:config": object()}),
        lambda card: card.check("name\0with-nul.xml"),
        lambda card: card.check("/dev"),
        lambda card: card.changes(UNKNOWN),
        lambda card: card.get("/config/sevice-port"),
        lambda card: card.get("service-port"),
        lambda card: card.load().fit("hoem"),
    ],
)
def test_every_kind_of_wrong_input_is_an_input_error(small, work):
    error_of(lambda: work(small))


@pytest.mark.parametrize(
    "work",
    [
        lambda card: gponval.Card(7),
        lambda card: card.commit(7),
        lambda card: card.commit(ADDED_PORT, candidate=SMALL),
        lambda card: gponval.Card(SMALL, card=7),
    ],
)
def test_a_value_of_a_wrong_type_is_a_type_error(small, work):
    with pytest.raises(TypeError):
        work(small)
