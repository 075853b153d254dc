"""Commits, checks and requests, with every form of input."""

import copy
import inspect
import json
import pickle
import signal
import subprocess
import sys
import threading
import time

import pytest
from conftest import ADDED_PORT, COMMAND, EXAMPLES, FEC_OFF, SMALL

import gponval
from gponval import Edit

PORT = "/config/service-port{7}"
FEC = "/config/interface/gpon{1 1 1}/upstream-fec"
PROFILE = "/config/profile/gpon/bandwidth-profile{new}"


def test_a_commit_is_kept(small):
    verdict = small.commit(ADDED_PORT)
    assert verdict
    assert verdict.result == "accepted"
    assert small.get(PORT + "/gpon/onu/gem/gem-id") == 1


def test_a_check_is_not_kept(small):
    before = small.config()
    assert small.check(ADDED_PORT)
    assert small.config() == before


def test_a_rejected_commit_changes_nothing(small):
    before = small.config()
    verdict = small.commit(ADDED_PORT.replace("<gem-id>1<", "<gem-id>9<"))
    assert not verdict
    assert verdict.result == "rejected"
    answer = verdict.answers[-1]
    assert (answer.request, answer.result) == ("sp_gem_check", "ERROR")
    assert answer.text == "Service-port [7] gem [9] was not configured to onu [1]"
    assert small.config() == before


@pytest.mark.parametrize(
    ("confirm", "result", "asked"),
    [
        (False, "unconfirmed", 0),
        (True, "accepted", 0),
        (lambda warnings: True, "accepted", 1),
        (lambda warnings: False, "unconfirmed", 1),
    ],
    ids=["no", "yes", "a_function_says_yes", "a_function_says_no"],
)
def test_warnings_are_confirmed(small, confirm, result, asked):
    seen = []

    def noted(warnings):
        seen.append(warnings)
        return confirm(warnings)

    verdict = small.commit(FEC_OFF, confirm=noted if callable(confirm) else confirm)
    assert verdict.result == result
    assert len(seen) == asked
    for warnings in seen:
        assert [(warning.request, warning.result) for warning in warnings] == [
            ("fec_confirmation_warning", "WARNING")
        ]


def test_an_exception_of_the_function_that_confirms_comes_out(small):
    def fail(warnings):
        raise ZeroDivisionError

    before = small.config()
    with pytest.raises(ZeroDivisionError):
        small.commit(FEC_OFF, confirm=fail)
    assert small.config() == before
    assert small.commit(ADDED_PORT)


def test_a_function_that_confirms_cannot_use_a_card(small):
    with pytest.raises(RuntimeError, match="a function that confirms warnings cannot use a card"):
        small.commit(FEC_OFF, confirm=lambda warnings: bool(small.check(ADDED_PORT)))
    assert small.check(ADDED_PORT)


def test_all_goes_on_after_the_first_error(small):
    wrong = ADDED_PORT.replace("<gem-id>1<", "<gem-id>9<")
    first = small.check(wrong).answers
    every = small.check(wrong, all=True).answers
    assert first[-1].result == "ERROR"
    assert len(every) > len(first)


def test_only_calls_the_named_requests(small):
    assert {answer.request for answer in small.check(ADDED_PORT).answers} > {"sp_gem_check"}
    for only in ("sp_gem_check", ["sp_gem_check"]):
        answers = small.check(ADDED_PORT, only=only).answers
        assert {answer.request for answer in answers} == {"sp_gem_check"}


def test_a_request_asks_one_validator(small):
    verdict = small.request("sp_gem_check", "/config/service-port", change=ADDED_PORT)
    assert verdict
    assert len(verdict.answers) == 1
    assert small.get(PORT) is None


def test_a_request_takes_the_new_value_of_a_leaf(small):
    assert small.request("fec_confirmation_warning", FEC, "false").result == "unconfirmed"


def test_the_same_change_in_every_form(tmp_path):
    onu = {"id": 1, "gem": {"gem-id": 1}}
    port = {"id": 7, "gpon": {"id": "1/1/1", "onu": onu}}
    as_dict = {"base:config": {"service-port": [port]}}
    (tmp_path / "change.xml").write_text(ADDED_PORT)
    (tmp_path / "change.json").write_text(json.dumps(as_dict))
    edit = Edit().set(PORT + "/gpon/id", "1/1/1").set(PORT + "/gpon/onu/id", 1)
    edit.set("/config/service-port[id='7']/gpon/onu/gem/gem-id", 1)
    configurations = set()
    for change in (
        ADDED_PORT,
        tmp_path / "change.xml",
        str(tmp_path / "change.xml"),
        json.dumps(as_dict),
        as_dict,
        tmp_path / "change.json",
        edit,
    ):
        card = gponval.Card(SMALL)
        assert card.commit(change)
        configurations.add(card.config())
    assert len(configurations) == 1


def test_an_edit_has_every_operation(small):
    assert small.commit(Edit().create(PROFILE + "/traffic/type-4/maximum", 8))
    with pytest.raises(gponval.InputError):
        small.commit(Edit().create(PROFILE + "/traffic/type-4/maximum", 8))
    assert small.commit(Edit().delete(PROFILE))
    with pytest.raises(gponval.InputError):
        small.commit(Edit().delete(PROFILE))
    assert small.commit(Edit().remove(PROFILE))
    assert small.commit(Edit().replace(PROFILE + "/traffic/type-4/maximum", 9))
    assert small.get(PROFILE) == {"name": "new", "traffic": {"type-4": {"maximum": 9}}}


def test_a_candidate_is_the_whole_new_configuration(town):
    empty = gponval.Card(EXAMPLES / "empty.xml", card=EXAMPLES / "town.card")
    assert empty.commit(candidate=EXAMPLES / "town.xml")
    assert empty.config() == town.config()


def test_the_configuration_as_text_and_as_dict(town):
    assert json.loads(town.config("json")) == town.as_dict()
    assert gponval.Card(town.as_dict()).config() == town.config()
    with pytest.raises(ValueError, match="yaml"):
        town.config("yaml")


@pytest.mark.parametrize(
    ("path", "value"),
    [
        ("/config/interface/gpon{1 1 1}/onu{1}/id", 1),
        (FEC, True),
        ("/config/interface/gpon{1 1 1}/onu{9}", None),
        ("/config/interface/gpon{1 1 1}/onu{1}/profile-references", {"line-profile": "home"}),
        ("/config/profile/gpon/line-profile{home}/gem{1}/gem-id", 1),
        ("/config/service-port", []),
        (
            "/config/profile/gpon/bandwidth-profile",
            [{"name": "up", "traffic": {"type-2": {"assured": 1000}}}],
        ),
        ("/config/profile/gpon/bandwidth-profile{up}", {"name": "up", "traffic": {"type-2": {"assured": 1000}}}),
    ],
)
def test_a_node_by_its_keypath(small, path, value):
    assert small.get(path) == value


@pytest.mark.parametrize("change", sorted((EXAMPLES / "changes").iterdir()), ids=lambda file: file.name)
def test_a_verdict_reads_like_the_command(town, change):
    command = subprocess.run(
        [COMMAND, "commit", "--running", EXAMPLES / "town.xml"]
        + ["--card", EXAMPLES / "town.card", "--change", change],
        capture_output=True,
        text=True,
        stdin=subprocess.DEVNULL,
        check=False,
    )
    verdict = town.check(change)
    assert str(verdict) == command.stdout
    assert bool(verdict) == (command.returncode == 0)


def test_cards_live_side_by_side_each_with_its_description():
    two = gponval.Edit()
    for port in (7, 8):
        path = f"/config/service-port{{{port}}}"
        two.set(path + "/gpon/id", "1/1/1").set(path + "/gpon/onu/id", 1)
        two.set(path + "/gpon/onu/gem/gem-id", 1).set(path + "/match/vlan/vlan-id", port)
    limited = gponval.Card(SMALL, card={"max-service-ports": 1, "bw-check": True})
    free = gponval.Card(SMALL, card="max-service-ports = 10\n")
    for _ in range(3):
        assert "Installed 2 of 1 allowed" in str(limited.check(two))
        assert free.check(two)
    assert limited.load().limits.service_ports == 1
    assert free.load().limits.service_ports == 10


def test_a_change_of_each_node_is_a_record_and_the_text_is_that_of_the_command(town, tmp_path):
    port = ADDED_PORT.replace("<id>7<", "<id>77<")
    (tmp_path / "change.xml").write_text(port)
    changes = town.changes(port)
    assert [(node.path, node.op, node.old) for node in changes] == [
        ("/config/service-port{77}", "create", None)
    ]
    assert changes[0].new == {"gpon/id": "1/1/1", "gpon/onu/id": "1", "gpon/onu/gem/gem-id": "1"}
    command = subprocess.run(
        [COMMAND, "diff", "--running", EXAMPLES / "town.xml", "--change", tmp_path / "change.xml"],
        capture_output=True,
        text=True,
        check=False,
    )
    assert str(changes) == command.stdout
    assert town.get("/config/service-port{77}") is None
    assert not town.changes()


def test_a_request_reads_like_the_command(town):
    onus = "/config/interface/gpon{1 1 1}/onu"
    command = subprocess.run(
        [COMMAND, "request", "onu_bw_check", onus, "--running", EXAMPLES / "town.xml"]
        + ["--card", EXAMPLES / "town.card"],
        capture_output=True,
        text=True,
        check=True,
    )
    assert str(town.request("onu_bw_check", onus)) == command.stdout


def test_a_card_may_go_while_another_works(small):
    others = [gponval.Card(SMALL) for _ in range(3)]

    def let_go(warnings):
        others.clear()
        return True

    assert small.check(FEC_OFF, confirm=let_go)
    assert small.check(ADDED_PORT)


def test_threads_may_use_cards_together(town):
    small = gponval.Card(SMALL)
    overbooked = EXAMPLES / "changes" / "bandwidth-overbooked.xml"
    wrong = []

    def work(card, change, accepted):
        wrong.extend(change for _ in range(50) if bool(card.check(change)) != accepted)

    threads = [
        threading.Thread(target=work, args=arguments)
        for arguments in ((small, ADDED_PORT, True), (town, overbooked, False)) * 2
    ]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert wrong == []


ENDS_WHILE_THREADS_WORK = """
import sys, threading, time
import gponval

card = gponval.Card(sys.argv[1])
fec_off = gponval.Edit().set("/config/interface/gpon{1 1 1}/upstream-fec", False)

def ask_wrongly():
    try:
        card.get("/config/sevice-port")
    except gponval.InputError:
        pass

works = [
    lambda: card.check(),
    lambda: card.get("/config"),
    lambda: card.load(),
    lambda: card.check(fec_off, confirm=lambda warnings: True),
    ask_wrongly,
]

def work(one):
    while True:
        one()

for one in works:
    threading.Thread(target=work, args=(one,), daemon=True).start()
time.sleep(0.3)
"""


def test_python_ends_while_daemon_threads_use_a_card():
    for _ in range(5):
        ended = subprocess.run(
            [sys.executable, "-c", ENDS_WHILE_THREADS_WORK, str(EXAMPLES / "town.xml")],
            stderr=subprocess.PIPE,
            text=True,
            timeout=100,
            check=False,
        )
        assert (ended.returncode, ended.stderr) == (0, "")


ENDS_WHILE_A_FUNCTION_CONFIRMS = """
import sys, threading, time
import gponval

card = gponval.Card(sys.argv[1])
other = gponval.Card(sys.argv[1])
fec_off = gponval.Edit().set("/config/interface/gpon{1 1 1}/upstream-fec", False)
asked = threading.Event()

def confirm(warnings):
    asked.set()
    while True:
        time.sleep(0.01)

threading.Thread(target=card.check, args=(fec_off, confirm), daemon=True).start()
asked.wait()
"""


def test_python_ends_while_a_function_that_confirms_does_not():
    ended = subprocess.run(
        [sys.executable, "-c", ENDS_WHILE_A_FUNCTION_CONFIRMS, str(EXAMPLES / "town.xml")],
        stderr=subprocess.PIPE,
        text=True,
        timeout=100,
        check=False,
    )
    assert (ended.returncode, ended.stderr) == (0, "")


def test_ctrl_c_ends_the_wait_for_another_thread(small):
    asked = threading.Event()
    interrupted = threading.Event()

    def confirm(warnings):
        asked.set()
        return interrupted.wait(100)

    def interrupt():
        time.sleep(0.3)
        signal.pthread_kill(threading.main_thread().ident, signal.SIGINT)

    confirming = threading.Thread(target=small.check, args=(FEC_OFF, confirm))
    confirming.start()
    assert asked.wait(100)
    interrupting = threading.Thread(target=interrupt)
    interrupting.start()
    with pytest.raises(KeyboardInterrupt):
        small.check(ADDED_PORT)
    assert confirming.is_alive()
    interrupted.set()
    confirming.join()
    interrupting.join()
    assert small.check(ADDED_PORT)


def test_python_goes_on_while_a_function_confirms_and_a_thread_waits(small):
    asked = threading.Event()
    answers = []

    # If the other thread kept Python's lock while it waits for the card, this one could not go on.
    def confirm(warnings):
        asked.set()
        time.sleep(0.2)
        answers.append("confirmed")
        return True

    def wait_and_check():
        asked.wait()
        answers.append(bool(small.check(ADDED_PORT)))

    thread = threading.Thread(target=wait_and_check)
    thread.start()
    assert small.commit(FEC_OFF, confirm=confirm)
    thread.join()
    assert sorted(map(str, answers)) == ["True", "confirmed"]


def public_functions():
    for name in gponval.__all__:
        public = getattr(gponval, name)
        yield name, public
        for inner, function in vars(public).items():
            if inspect.isfunction(function) and not inner.startswith("_"):
                yield f"{name}.{inner}", function


def test_everything_public_has_a_docstring():
    without = [name for name, public in public_functions() if not public.__doc__]
    assert without == []


def test_records_can_be_sent_to_another_process(small):
    edit = Edit().set(PORT + "/gpon/id", "1/1/1")
    load = small.load()
    changes = small.changes(ADDED_PORT)
    with pytest.raises(gponval.InputError) as raised:
        small.get("/config/sevice-port")
    records = [small.check(FEC_OFF), small.audit(FEC_OFF), load, load.fit("home"), changes]
    for record in [*records, gponval.points()]:
        assert pickle.loads(pickle.dumps(record)) == record
    assert str(pickle.loads(pickle.dumps(changes))) == str(changes)
    assert pickle.loads(pickle.dumps(load)).fit("home") == load.fit("home")
    assert pickle.loads(pickle.dumps(edit)).steps == edit.steps
    error = pickle.loads(pickle.dumps(raised.value))
    assert (str(error), vars(error)) == (str(raised.value), vars(raised.value))


@pytest.mark.parametrize("work", [pickle.dumps, copy.copy, copy.deepcopy])
def test_a_card_stays_in_its_process(small, work):
    with pytest.raises(TypeError, match="a Card cannot be pickled or copied"):
        work(small)


def test_answers_cannot_be_changed(small):
    verdict = small.check(ADDED_PORT)
    with pytest.raises(AttributeError):
        verdict.result = "rejected"
    with pytest.raises(AttributeError):
        verdict.answers[0].text = ""


def test_the_points_are_those_of_the_command():
    command = subprocess.run(
        [COMMAND, "points", "--format", "json"], capture_output=True, text=True, check=True
    )
    points = [
        {"request": p.request, "path": p.path, "call-once": p.call_once, "priority": p.priority}
        for p in gponval.points()
    ]
    assert points == json.loads(command.stdout)["points"]
