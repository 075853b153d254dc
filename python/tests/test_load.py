"""What a card carries."""

import pandas
import pytest
from conftest import ADDED_PORT, SMALL

import gponval


def new_onu(edit, onu):
    path = f"/config/interface/gpon{{1 1 1}}/onu{{{onu}}}"
    edit.set(path + "/profile-references/line-profile", "home")
    return edit.set(path + "/auth-method/serial-number", f"GPON{onu:08d}")


def test_the_load_of_a_link(small):
    load = small.load()
    (link,) = load.links
    assert link.path == "/config/interface/gpon{1 1 1}"
    assert (link.onus, link.total, link.fixed) == (1, 1560, 0)
    assert (link.total_room, link.fixed_room) == (1107504 - 1560, 442752)
    assert link.share == pytest.approx(1560 / 1107504)
    assert load.line_profiles == [gponval.LineProfile("home", 1000, 0, 1, 0)]
    assert load.service_ports == 0


def test_as_many_onus_fit_as_a_commit_accepts(small):
    (fit,) = small.load().fit("home")
    assert fit.limit == "total bandwidth"
    onus = gponval.Edit()
    for onu in range(2, 2 + fit.onus):
        new_onu(onus, onu)
    assert small.commit(onus)
    assert small.load().fit("home")[0].onus == 0
    verdict = small.commit(new_onu(gponval.Edit(), 5000))
    assert verdict.answers[-1].text.startswith("Total bandwidth exceeds")


def test_a_link_without_a_check_has_no_figures():
    card = gponval.Card(SMALL, card={"bw-check": False})
    (link,) = card.load().links
    assert link.total is None
    assert link.share is None
    assert card.load().fit("home")[0].onus is None


def test_tables_are_made_of_records(small):
    answers = pandas.DataFrame(small.check(ADDED_PORT).answers)
    assert list(answers.columns) == ["request", "path", "result", "text", "msecs"]
    assert set(answers.result) == {"OK"}
    load = small.load()
    links = pandas.DataFrame(load.links)
    assert list(links.columns) == list(gponval.Link._fields)
    assert links.total_room.tolist() == [1107504 - 1560]
    fits = pandas.DataFrame(load.fit("home"))
    assert list(fits.columns) == ["path", "onus", "limit"]
