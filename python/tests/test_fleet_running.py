"""Audits in processes of this machine: their records, and workers that die."""

import pytest
from conftest import SMALL
from fleet_cards import CARD, FAULTS, TOWN, Deadly, DeadlyOnce, faulty, write_fleet

import gponval
from gponval.fleet import Fleet, Job, LocalWorkers, audit, audited


def records(items, jobs=2):
    with LocalWorkers(jobs) as workers:
        return {record.name: record for record in audited(iter(items), workers)}


def test_a_clean_card_has_its_load():
    record = audit(Job("town", TOWN, CARD))
    card = gponval.Card(TOWN, card=CARD)
    assert (record.name, record.status, record.findings) == ("town", "clean", [])
    assert record.links == card.load().links
    assert (record.service_ports, record.service_port_limit) == (14, 16)


@pytest.mark.parametrize("fault", FAULTS)
def test_a_fault_is_found_by_its_requests_and_no_other(fault):
    record = audit(Job("card", faulty(fault), CARD))
    assert record.status == "refused"
    assert {finding.request for finding in record.findings} == FAULTS[fault][1]
    assert record.links


@pytest.mark.parametrize(
    ("config", "card", "why"),
    [
        (b"", None, "there is nothing in it"),
        (b"\0", None, "holds a NUL byte"),
        (SMALL.encode()[:-20], None, "not XML"),
        (b'{"base:config": {"sevice-port": []}}', None, "did you mean 'service-port'?"),
        (TOWN, b"no-such-key = 1\n", "card description: "),
        (b"<!DOCTYPE a [<!ENTITY b SYSTEM 'file:///etc/passwd'>]><a>&b;</a>", None, ""),
    ],
)
def test_a_broken_card_is_unreadable(config, card, why):
    record = audit(Job("card", config, card))
    assert record.status == "unreadable"
    assert why in record.why


def test_processes_say_what_this_one_says(tmp_path):
    items = list(Fleet([str(write_fleet(tmp_path / "cards", 5, FAULTS))]).jobs())
    here = {item.name: audit(item) for item in items}
    there = records(items)
    for record in (*here.values(), *there.values()):
        record.seconds = 0
    assert there == here


def test_a_worker_that_dies_costs_no_other_card_its_record():
    items = [Job(f"{number}", TOWN, CARD) for number in range(12)]
    items.insert(3, Deadly("deadly", TOWN, CARD))
    items.insert(7, Deadly("deadly too", TOWN, CARD))
    found = records(items)
    assert len(found) == 14
    assert {name for name, record in found.items() if record.status != "clean"} == {
        "deadly",
        "deadly too",
    }
    assert found["deadly"].status == "failed"
    assert "ended while it audited this card" in found["deadly"].why


def test_a_card_whose_worker_dies_has_another_try(tmp_path):
    once = str(tmp_path / "once")
    found = records([Job("a", TOWN, CARD), DeadlyOnce(once, TOWN, CARD), Job("b", TOWN, CARD)])
    assert {record.status for record in found.values()} == {"clean"}
    assert set(found) == {"a", "b", once}


def test_at_most_a_few_cards_are_in_memory():
    read = []
    done = []

    def items():
        for number in range(20):
            read.append(number)
            yield Job(f"{number}", TOWN, CARD)

    with LocalWorkers(1) as workers:
        for record in audited(items(), workers):
            done.append(record)
            assert len(read) - len(done) <= 2
    assert len(done) == 20
