"""The command gponval-fleet: output, exit status, and the ways in which it ends early."""

import json
import os
import pty
import signal
import subprocess
import sys
import time
from pathlib import Path

import pytest
from fleet_cards import COMMAND, EXAMPLES, FAULTS, PATIENCE, faulty, run, write_fleet


def start(*arguments, **options):
    return subprocess.Popen([*COMMAND, *map(str, arguments)], start_new_session=True, **options)


def records(text):
    return {record["name"]: record for record in map(json.loads, text.splitlines())}


def wait_for(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end, what
        time.sleep(0.02)


def children(pid):
    return [int(word) for word in Path(f"/proc/{pid}/task/{pid}/children").read_text().split()]


def workers_of(pid):
    """The processes of the pool, without the one of multiprocessing itself."""
    lines = {child: Path(f"/proc/{child}/cmdline").read_bytes() for child in children(pid)}
    return [child for child, line in lines.items() if b"spawn_main" in line]


def lines_of(file):
    return file.read_bytes().count(b"\n") if file.exists() else 0


@pytest.fixture
def cards(tmp_path):
    return tmp_path / "cards"


def test_a_clean_fleet_is_accepted(cards):
    outcome = run(write_fleet(cards, 3))
    lines = outcome.stdout.splitlines()
    assert lines[:2] == ["3 cards: 3 clean", "Fullest links:"]
    assert lines[2] == "    8.1 %  /config/interface/gpon{1 1 1} of town-000.xml"
    assert lines[-1].endswith("cards/s")
    assert outcome.stderr == ""


def test_findings_are_printed_with_a_summary(cards):
    outcome = run(write_fleet(cards, 2, FAULTS), status=1)
    assert "4 cards: 2 clean, 2 refused\n  1 refused by onu_bw_check\n" in outcome.stdout
    assert (
        "same-vlan.xml: refused\n"
        "  ERROR /config/service-port (service_port_global_validation)\n"
        "  Service-port 1 and 900 have conflicting matches.\n\n"
    ) in outcome.stdout


def test_a_broken_file_is_a_row(cards):
    (write_fleet(cards, 1, FAULTS) / "broken.xml").write_text("broken")
    outcome = run(cards, "--format", "jsonl", status=2)
    found = records(outcome.stdout)
    assert {name: record["status"] for name, record in found.items()} == {
        "broken.xml": "unreadable",
        "line-profile.xml": "refused",
        "same-vlan.xml": "refused",
        "town-000.xml": "clean",
    }
    assert found["broken.xml"]["line"] == 1
    assert "4 cards: 1 clean, 2 refused, 1 unreadable" in outcome.stderr


def test_a_warning_is_a_finding(cards):
    (write_fleet(cards, 0) / "a.xml").write_bytes(_with_many_snmp_onus())
    outcome = run(cards, "--format", "jsonl", status=1)
    record = records(outcome.stdout)["a.xml"]
    assert record["status"] == "warned"
    assert {finding["result"] for finding in record["findings"]} == {"WARNING"}


def _with_many_snmp_onus():
    onus = "".join(
        f"<onu><id>{onu}</id><snmp><real-time/></snmp></onu>"
        for onu in range(1, 130)
    )
    return (
        '<config xmlns="urn:tarnd:base"><interface><xgspon><chassis-id>1</chassis-id>'
        f"<slot-id>1</slot-id><port-id>1</port-id>{onus}</xgspon></interface></config>"
    ).encode()


@pytest.mark.parametrize(
    ("arguments", "words"),
    [
        ([], "give a PATH or --manifest"),
        (["none"], "none: there is no such file"),
        (["."], "there is no configuration"),
        ([".", "--jobs", "0"], "no number from 1"),
        ([".", "--resume", "a", "--output", "b"], "excludes"),
        ([".", "--scheduler", "tcp://a:1", "--jobs", "2"], "excludes"),
        ([EXAMPLES / "town.xml", "--output", "/nowhere/file"], "cannot write"),
        ([EXAMPLES / "town.xml", "--resume", EXAMPLES / "town.card"], ":1: no record of an audit"),
    ],
)
def test_wrong_use_is_trouble(tmp_path, arguments, words):
    outcome = run(*arguments, status=2, cwd=tmp_path)
    assert words in outcome.stderr
    assert "Traceback" not in outcome.stderr


def test_a_name_does_not_reach_the_terminal_as_it_is(cards):
    (write_fleet(cards, 0) / "\x1b[2J.xml").write_text("broken")
    outcome = run(cards, status=2)
    assert "\\x1b[2J.xml: unreadable" in outcome.stdout
    assert "\x1b" not in outcome.stdout


def test_the_script_is_the_same_command(cards):
    script = Path(os.environ["GPONVAL_FLEET"])
    outcome = subprocess.run(
        [sys.executable, script, "audit", write_fleet(cards, 2), "--jobs", "2"],
        capture_output=True,
        text=True,
        check=False,
    )
    assert (outcome.returncode, outcome.stderr) == (0, "")


def test_resume_audits_only_what_is_left(cards, tmp_path):
    output = tmp_path / "results.jsonl"
    write_fleet(cards, 3, ["same-vlan"])
    run(cards, "--output", output, status=1)
    whole = output.read_bytes()
    output.write_bytes(whole[:-30])  # the last line was not written to its end
    names = [json.loads(line)["name"] for line in whole.splitlines()]
    changed = next(name for name in names[:3] if name.startswith("town"))
    (cards / changed).write_bytes(faulty("line-profile"))
    outcome = run(cards, "--resume", output, status=1)
    assert "4 cards: 2 clean, 2 refused" in outcome.stdout
    lines = output.read_text().splitlines()
    assert len(lines) == 5
    assert {json.loads(line)["name"] for line in lines[3:]} == {changed, names[3]}
    before = output.read_bytes()
    run(cards, "--resume", output, status=1)
    assert output.read_bytes() == before


def test_resume_begins_a_file_that_does_not_exist(cards, tmp_path):
    run(write_fleet(cards, 2), "--resume", tmp_path / "results.jsonl")
    assert lines_of(tmp_path / "results.jsonl") == 2


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM], ids=["ctrl_c", "sigterm"])
def test_an_interrupted_audit_keeps_what_is_there(cards, tmp_path, number):
    output = tmp_path / "results.jsonl"
    write_fleet(cards, 400)
    with start(
        cards, "--jobs", "2", "--output", output, stdout=subprocess.PIPE, stderr=subprocess.PIPE
    ) as process:
        wait_for(lambda: lines_of(output) > 2, "no record")
        os.killpg(process.pid, number) if number == signal.SIGINT else process.send_signal(number)
        text, errors = process.communicate(timeout=PATIENCE)
    assert process.returncode == 2
    assert errors.decode().startswith("gponval-fleet: interrupted")
    assert b"Traceback" not in errors
    done = lines_of(output)
    assert done < 400
    assert f"{done} cards: {done} clean" in text.decode()
    assert run(cards, "--resume", output).stdout.startswith("400 cards: 400 clean")
    assert lines_of(output) == 400


def test_a_killed_worker_costs_no_card(cards, tmp_path):
    output = tmp_path / "results.jsonl"
    write_fleet(cards, 60)
    with start(cards, "--jobs", "2", "--output", output, stdout=subprocess.PIPE) as process:
        wait_for(lambda: lines_of(output) > 2 and workers_of(process.pid), "no worker")
        os.kill(workers_of(process.pid)[0], signal.SIGKILL)
        text, _ = process.communicate(timeout=PATIENCE)
    assert text.decode().startswith("60 cards: 60 clean")
    assert process.returncode == 0
    assert lines_of(output) == 60


def test_no_worker_outlives_a_killed_audit(cards, tmp_path):
    output = tmp_path / "results.jsonl"
    write_fleet(cards, 400)
    with start(cards, "--jobs", "2", "--output", output) as process:
        wait_for(lambda: lines_of(output) > 2, "no record")
        workers = workers_of(process.pid)
        process.kill()
    assert workers
    wait_for(lambda: not any(_runs(worker) for worker in workers), "a worker is left")


def _runs(pid):
    try:
        return Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0] != "Z"
    except OSError:
        return False


def test_a_reader_may_end_early(cards):
    write_fleet(cards, 40)
    with start(
        cards, "--format", "jsonl", stdout=subprocess.PIPE, stderr=subprocess.PIPE
    ) as process:
        process.stdout.readline()
        process.stdout.close()
        errors = process.stderr.read()
    assert b"Traceback" not in errors
    assert process.returncode == 2


def test_only_a_terminal_has_a_progress_bar(cards):
    write_fleet(cards, 4)
    ours, theirs = pty.openpty()
    with start(
        cards, stdout=subprocess.PIPE, stderr=theirs, env={**os.environ, "TERM": "xterm"}
    ) as process:
        os.close(theirs)
        seen = b""
        try:
            while True:
                seen += os.read(ours, 65536)
        except OSError:  # the other end is closed
            pass
        text = process.stdout.read()
    os.close(ours)
    assert b"of 4 cards" in seen
    assert text.startswith(b"4 cards: 4 clean")
    assert b"\x1b" not in text
