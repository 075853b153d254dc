"""The examples of docs/python.md, as they are there."""

import os
import re
import shutil
import subprocess
import sys
import textwrap
from pathlib import Path

import pytest
from conftest import EXAMPLES

PAGE = (Path(os.environ["GPONVAL_DOCS"]) / "python.md").read_text()
ANSIBLE = shutil.which("ansible-playbook", path="/usr/bin")


def section(title):
    return PAGE.split(f"## {title}\n")[1].split("\n## ")[0]


def code(text, language="python"):
    return re.findall(rf"```{language}\n(.*?)```", text, re.DOTALL)


def run(folder, *arguments):
    return subprocess.run(
        arguments,
        cwd=folder,
        env={**os.environ, "HOME": str(folder), "LC_ALL": "C.UTF-8"},
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        check=False,
    )


@pytest.fixture
def folder(tmp_path):
    for name in ("town.xml", "town.card"):
        shutil.copy(EXAMPLES / name, tmp_path)
    return tmp_path


def test_the_first_example_prints_what_the_page_shows(folder):
    outcome = run(folder, sys.executable, "-c", code(PAGE)[0])
    shown = textwrap.dedent(PAGE.split("prints what the command `gponval` prints:\n\n")[1].split("\n\nThe")[0])
    assert (outcome.returncode, outcome.stdout.rstrip()) == (0, shown)


def test_the_example_of_more_onus_prints_what_the_page_shows(folder):
    text = section("Which link takes fifty more ONUs of this profile?")
    shown = "".join(line[4:] + "\n" for line in text.splitlines() if line.startswith("    /config"))
    outcome = run(folder, sys.executable, "-c", code(text)[0])
    assert (outcome.returncode, outcome.stdout) == (0, shown)


@pytest.mark.parametrize("wrong", [False, True], ids=["right", "wrong"])
def test_the_example_of_a_repository_finds_wrong_configurations(folder, wrong):
    cards = folder / "cards"
    cards.mkdir()
    text = (EXAMPLES / "town.xml").read_text()
    if wrong:
        text = text.replace("<line-profile>line-camera<", "<line-profile>line-cam<")
    (cards / "town.xml").write_text(text)
    shutil.copy(EXAMPLES / "town.card", cards)
    text = section("A check of a repository of configurations")
    (folder / "test_cards.py").write_text(code(text)[0])
    pytest_here = (sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider")
    outcome = run(folder, *pytest_here, "test_cards.py")
    assert outcome.returncode == int(wrong), outcome.stdout
    assert ("Line profile line-cam doesn't not exist." in outcome.stdout) == wrong


@pytest.mark.parametrize(
    ("change", "status"), [("service-port-add.xml", 0), ("service-port-conflict.xml", 2)]
)
def test_the_example_of_a_playbook_stops_before_a_wrong_change(folder, change, status):
    text = section("Before Ansible changes a card")
    (folder / "filter_plugins").mkdir()
    (folder / "filter_plugins" / "gponval_filter.py").write_text(code(text)[0])
    (folder / "playbook.yml").write_text(code(text, "yaml")[0])
    variables = f"change={EXAMPLES / 'changes' / change}"
    outcome = run(
        folder, sys.executable, ANSIBLE, "-i", "localhost,", "-e", variables, "playbook.yml"
    )
    assert outcome.returncode == status, outcome.stdout
    assert ("have conflicting matches" in outcome.stdout) == bool(status)
