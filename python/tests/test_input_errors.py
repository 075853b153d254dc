"""Input that cannot be used: one InputError with one clear line."""

import pytest
from conftest import ADDED_PORT, SMALL

import gponval
from gponval import Edit

PORT_ID = "/config/service-port{1}/match/vlan/vlan-id"
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


@pytest.mark.parametrize(
    "work",
    [
        lambda card: card.commit({"base:config": {"service-port": [{"id": 7, "gem-idd": 1}]}}),
        lambda card: card.commit({"base:config": {"service-port": [{"id": -1}]}}),
        lambda card: card.commit(candidate={"base:config": {"sevice-port": []}}),
        lambda card: gponval.Card({"base:config": {"sevice-port": []}}),
        lambda card: gponval.Card(SMALL, card={"bw-check": True, "onu-per-link": 1}),
        lambda card: card.check(Edit().set("/config/sevice-port{1}")),
        lambda card: card.check(Edit().set(PORT_ID, "many")),
        lambda card: card.check(Edit().delete("/config/service-port{99}").delete("/config/gpon")),
    ],
)
def test_a_line_is_one_that_the_user_wrote(small, work):
    error = error_of(lambda: work(small))
    assert (error.file, error.line) == (None, None)
    assert not str(error).startswith("line")


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
        lambda card: card.load().fit("home\0"),
        lambda card: card.load().fit(None),
        lambda card: card.get(None),
        lambda card: card.get(b"/config"),
        lambda card: card.get("/config\0"),
        lambda card: card.request(None, "/config"),
        lambda card: card.request("sp_gem_check", 5),
        lambda card: card.request("sp_gem_check", "/config/service-port", b"1"),
        lambda card: card.check(ADDED_PORT, only=[None]),
        lambda card: card.check(ADDED_PORT, only=b"sp_gem_check"),
        lambda card: card.check(Edit().set("/config/service-port{1}", 10**5000)),
        lambda card: card.check(Edit().set("/config/service-port{1}/gpon/id", b"1/1/1")),
        lambda card: card.check(Edit().set("/config/service-port{1}/gpon/id", ["1/1/1"])),
        lambda card: card.check(Edit().delete(7)),
        lambda card: card.config("yaml"),
        lambda card: card.commit(7),
        lambda card: card.commit(b"<config/>"),
        lambda card: gponval.Card(7),
        lambda card: gponval.Card(None),
        lambda card: gponval.Card([]),
        lambda card: gponval.Card(SMALL, card=7),
        lambda card: gponval.Card(SMALL, card={"max-service-ports": 10**5000}),
        lambda card: gponval.Card(SMALL, card={"bw-check": "true\nxgspon = true"}),
    ],
)
def test_every_kind_of_wrong_input_is_an_input_error(small, work):
    error_of(lambda: work(small))


def test_a_change_and_a_candidate_are_a_wrong_call(small):
    with pytest.raises(TypeError):
        small.commit(ADDED_PORT, candidate=SMALL)


@pytest.mark.parametrize("text", ["", " \n", "[1]\n", "config\nxmlns"])
def test_a_text_that_is_no_configuration_is_no_name_of_a_file(small, text):
    for work in (gponval.Card, small.commit):
        error = error_of(lambda: work(text))
        assert str(error) == "the text begins neither with '<' nor with '{'"
        assert error.file is None


def test_a_line_of_a_text_is_called_so(small):
    assert str(error_of(lambda: small.commit(UNKNOWN))).startswith("line 4: ")


def test_a_card_file_may_have_an_equals_sign_in_its_name(tmp_path, monkeypatch):
    folder = tmp_path / "env=prod"
    folder.mkdir()
    (folder / "a=b.card").write_text("max-service-ports = 7\n")
    (folder / "wrong.card").write_text("max-service-port = 7\n")
    monkeypatch.chdir(tmp_path)
    for name in (str(folder / "a=b.card"), "env=prod/a=b.card"):
        assert gponval.Card(SMALL, card=name).load().limits.service_ports == 7
    error = error_of(lambda: gponval.Card(SMALL, card=str(folder / "wrong.card")))
    assert error.file == str(folder / "wrong.card")


@pytest.mark.parametrize("text", ["", "# nothing", "max-service-ports=7", "\nxgspon = true\n"])
def test_a_description_may_be_a_text(text):
    assert gponval.Card(SMALL, card=text).load().limits.onus_per_link is None


def test_values_need_not_be_texts(town):
    path = "/config/interface/gpon{1 1 1}/upstream-fec"
    assert town.request("fec_confirmation_warning", path, False).answers
