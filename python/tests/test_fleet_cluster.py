"""Audits on the workers of a Dask scheduler: real processes, on this machine."""

import json
import os
import re
import signal
import subprocess
import sys
import time
from contextlib import contextmanager

import pytest
from fleet_cards import FAULTS, PATIENCE, run, write_fleet

# Without the HTTP server for people, and without a nanny that starts a new worker.
SCHEDULER = ("distributed.cli.dask_scheduler", "--host", "127.0.0.1", "--port", "0", "--no-dashboard")
WORKER = ("distributed.cli.dask_worker", "--nthreads", "1", "--no-nanny", "--no-dashboard")


def start(module, *arguments, **options):
    command = [sys.executable, "-m", module, *map(str, arguments)]
    return subprocess.Popen(command, start_new_session=True, **options)


def wait_for(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < end, what
        time.sleep(0.05)


def found(file, pattern):
    return re.search(pattern, file.read_text()) if file.exists() else None


@contextmanager
def running(folder, name, *command):
    log = folder / f"{name}.log"
    with open(log, "wb") as file, start(*command, stdout=file, stderr=file, cwd=folder) as process:
        try:
            yield process, log
        finally:
            process.kill()


@pytest.fixture
def cluster(tmp_path):
    """The address of a scheduler with two workers, and these."""
    with running(tmp_path, "scheduler", *SCHEDULER) as (_, log):
        wait_for(lambda: found(log, r"tcp://[0-9.:]+"), "the scheduler does not start")
        address = found(log, r"tcp://[0-9.:]+")[0]
        options = (*WORKER, "--local-directory", tmp_path, address)
        with running(tmp_path, "first", *options) as first:
            with running(tmp_path, "second", *options) as second:
                for _, worker_log in (first, second):
                    wait_for(lambda: found(worker_log, "Registered to"), "a worker does not start")
                yield address, first[0]


def records(text):
    found = {record["name"]: record for record in map(json.loads, text.splitlines())}
    for record in found.values():
        del record["seconds"]
    return found


def test_a_cluster_says_what_this_machine_says(cluster, tmp_path):
    (write_fleet(tmp_path / "cards", 6, FAULTS) / "broken.xml").write_text("broken")
    there = run(tmp_path / "cards", "--scheduler", cluster[0], "--format", "jsonl", status=2)
    here = run(tmp_path / "cards", "--jobs", "2", "--format", "jsonl", status=2)
    assert records(there.stdout) == records(here.stdout)
    assert len(records(here.stdout)) == 9
    assert "Traceback" not in there.stderr
    assert "Warning" not in there.stderr


def test_a_killed_worker_costs_no_card(cluster, tmp_path):
    address, worker = cluster
    output = tmp_path / "results.jsonl"
    cards = write_fleet(tmp_path / "cards", 200, FAULTS)
    arguments = ("audit", cards, "--scheduler", address, "--output", output)
    with start("gponval.fleet", *arguments, stdout=subprocess.PIPE) as process:
        wait_for(lambda: output.exists() and output.read_bytes().count(b"\n") > 5, "no record")
        worker.kill()
        text, _ = process.communicate(timeout=PATIENCE)
    assert f"{200 + len(FAULTS)} cards: 200 clean, {len(FAULTS)} refused" in text.decode()
    assert process.returncode == 1
    assert len(records(output.read_text())) == 200 + len(FAULTS)


def test_ctrl_c_ends_an_audit_on_a_cluster(cluster, tmp_path):
    output = tmp_path / "results.jsonl"
    cards = write_fleet(tmp_path / "cards", 300)
    arguments = ("audit", cards, "--scheduler", cluster[0], "--output", output)
    with start("gponval.fleet", *arguments, stderr=subprocess.PIPE) as process:
        wait_for(lambda: output.exists() and output.read_bytes().count(b"\n") > 5, "no record")
        os.killpg(process.pid, signal.SIGINT)
        _, errors = process.communicate(timeout=PATIENCE)
    assert process.returncode == 2
    assert b"gponval-fleet: interrupted" in errors
    assert 5 < len(records(output.read_text())) < 300


def test_no_scheduler_is_trouble(tmp_path):
    write_fleet(tmp_path / "cards", 1)
    outcome = run(tmp_path / "cards", "--scheduler", "tcp://127.0.0.1:1", status=2)
    assert "no scheduler answers" in outcome.stderr
    assert "Traceback" not in outcome.stderr
