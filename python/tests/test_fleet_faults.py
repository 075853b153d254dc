"""Cards that ``gponval generate`` makes: known faults are found by their requests, and nothing else is."""

import json
import os
import subprocess

import pytest

COMMAND = os.environ["GPONVAL_COMMAND"]
FLEET = os.environ["GPONVAL_FLEET"]
SEEDS = (1, 2)


def generated(*options):
    return subprocess.run([COMMAND, "generate", *options], check=True, stdout=subprocess.PIPE).stdout


def kinds():
    """The requests that report each kind of fault."""
    lines = generated("--faults", "list").decode().splitlines()
    return {kind: set(requests.split(",")) for kind, requests, *_ in map(str.split, lines)}


@pytest.fixture(scope="module", name="audited")
def audited_fleet(tmp_path_factory):
    """The records of cards without a fault, with each of them, and with all at once."""
    cards = tmp_path_factory.mktemp("cards")
    for seed in SEEDS:
        town = ("--size", "town", "--seed", str(seed))
        (cards / f"none-{seed}.xml").write_bytes(generated(*town))
        for kind in [*kinds(), "all"]:
            (cards / f"{kind}-{seed}.xml").write_bytes(generated(*town, "--faults", kind))
    audit = subprocess.run(
        [FLEET, "audit", str(cards), "--format", "jsonl"], check=False, stdout=subprocess.PIPE
    )
    assert audit.returncode == 1
    records = map(json.loads, audit.stdout.decode().splitlines())
    return {record["name"].removesuffix(".xml"): record for record in records}


def requests_of(record):
    return {finding["request"] for finding in record["findings"]}


@pytest.mark.parametrize("seed", SEEDS)
def test_a_card_without_a_fault_is_clean(audited, seed):
    assert audited[f"none-{seed}"]["status"] == "clean"


@pytest.mark.parametrize("seed", SEEDS)
@pytest.mark.parametrize("kind", kinds())
def test_a_fault_is_found_by_its_requests_and_no_other(audited, kind, seed):
    assert requests_of(audited[f"{kind}-{seed}"]) == kinds()[kind]


@pytest.mark.parametrize("seed", SEEDS)
def test_all_faults_of_one_card_are_found(audited, seed):
    assert requests_of(audited[f"all-{seed}"]) == set().union(*kinds().values())


def test_cards_of_two_seeds_differ(audited):
    assert audited["none-1"]["digest"] != audited["none-2"]["digest"]
