"""Fleets for the tests, and jobs that end the worker that gets them."""

import os
import re
import subprocess
import sys
from pathlib import Path

from gponval.fleet import Job

EXAMPLES = Path(os.environ["GPONVAL_EXAMPLES"])
TOWN = (EXAMPLES / "town.xml").read_bytes()
CARD = (EXAMPLES / "town.card").read_bytes()

COMMAND = (sys.executable, "-m", "gponval.fleet", "audit")
PATIENCE = 180

# Each fault, and the requests that find it.
FAULTS = {
    "line-profile": (
        lambda text: text.replace(b">line-camera</line-profile>", b">line-cam</line-profile>", 1),
        {"onu_bw_check", "ponlink_bw_check", "sp_gem_check"},
    ),
    "same-vlan": (
        lambda text: _with_service_port(text, b"900"),
        {"service_port_global_validation"},
    ),
}


def run(*arguments, status=0, cwd=None):
    """An audit to its end, which must have this exit status."""
    outcome = subprocess.run(
        [*COMMAND, *map(str, arguments)],
        cwd=cwd,
        capture_output=True,
        text=True,
        check=False,
        timeout=PATIENCE,
    )
    assert outcome.returncode == status, outcome.stdout + outcome.stderr
    return outcome


def _with_service_port(text, number):
    """A copy of the first service port conflicts with it."""
    port = re.search(rb"<service-port>.*?</service-port>", text, re.DOTALL)[0]
    copy = re.sub(rb"<id>\d+</id>", b"<id>" + number + b"</id>", port, count=1)
    return text.replace(port, port + copy, 1)


def faulty(fault):
    text = FAULTS[fault][0](TOWN)
    assert text != TOWN
    return text


def write_fleet(folder, clean, faults=()):
    """Cards town-000.xml and so on, and one named after each fault. They differ in a comment."""
    folder.mkdir(exist_ok=True)
    cards = {f"town-{number:03}": TOWN + b"<!-- %d -->" % number for number in range(clean)}
    cards.update({fault: faulty(fault) for fault in faults})
    for name, text in cards.items():
        (folder / f"{name}.xml").write_bytes(text)
        (folder / f"{name}.card").write_bytes(CARD)
    return folder


class Deadly(Job):
    """Ends the process that unpacks it."""

    def __reduce__(self):
        return (os._exit, (9,))


class DeadlyOnce(Job):
    """Ends the first process that unpacks it. Its name is that of a file that does not exist."""

    def __reduce__(self):
        return (_end_once, (self.name, self.config))


def _end_once(name, config):
    try:
        Path(name).touch(exist_ok=False)
    except FileExistsError:
        return Job(name, config)
    os._exit(9)
