"""Runs gponval on a case and checks the result."""

import contextlib
import difflib
import os
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import unicodedata
from pathlib import Path

import edits
from cases import is_json
from document import CONFIGURATION, Refused
from read_card import plain_card, read_card
from read_json import read_json
from read_xml import read_xml

LONGEST_LINE = 400
# What a run may take is processor time, which its neighbours do not add to. A run that does not end
# is ended after so many times as much.
PATIENCE = 15
SANITIZERS = re.compile(rb"Sanitizer|runtime error:")
VERDICTS = {0: ("Commit accepted.", "Nothing to commit."), 1: ("Commit rejected.",),
            3: ("Commit not confirmed.",)}
UNPRINTABLE = ("Cc", "Cf", "Cs", "Zl", "Zp")


class Failure(Exception):
    """What gponval did wrong. The kind is one word."""

    def __init__(self, kind, text):
        super().__init__(text)
        self.kind = kind


def read(name, data, model, role):
    return (read_json if is_json(name) else read_xml)(data, model, role)


class Expectation:
    """The expected result, by a strict reading of a case's files."""

    def __init__(self, case, model):
        self.refused = None
        self.doubts = []
        self.before = None
        self.after = None
        self.card = None
        try:
            self.read(case, model)
        except Refused as error:
            self.refused = str(error)

    @property
    def verdict(self):
        if self.refused is not None:
            return "refused"
        return "doubtful" if self.doubts else "read"

    def read(self, case, model):
        if case.card is not None:
            self.card, doubts = read_card(case.files[case.card])
            self.doubts += doubts
        for role, name in case.reading():
            document = read(name, case.files[name], model, role)
            tree = edits.read_configuration(model, document) if role == CONFIGURATION else \
                edits.apply_change(model, document, self.after)
            self.doubts += document.doubts
            self.after = tree
            if self.before is None:
                # A change uses up the tree that it is applied to.
                self.before = edits.read_configuration(
                    model, read(name, case.files[name], model, role))


class Ciphers:
    """What clear texts were encrypted as: the same text always the same, and each its own."""

    def __init__(self):
        self.lock = threading.Lock()
        self.clear_text_of = {}
        self.cipher_of = {}

    def learn(self, clear, cipher):
        with self.lock:
            known = self.cipher_of.setdefault(clear, cipher)
            other = self.clear_text_of.setdefault(cipher, clear)
        if known != cipher or other != clear:
            raise Failure("effect", f"{clear!r} is encrypted as {cipher!r}; {known!r}, {other!r}")

    def clear(self, text):
        with self.lock:
            return self.clear_text_of.get(text, text)


class Run:
    """The result of a run: status, outputs, seconds of processor time and files."""

    def __init__(self, status, output, errors, seconds, files):
        self.status = status
        self.output = output
        self.errors = errors
        self.seconds = seconds
        self.files = files


class Judge:
    def __init__(self, gponval, model, seconds):
        self.gponval = gponval
        self.model = model
        self.seconds = seconds
        self.ciphers = Ciphers()

    def run(self, case):
        folder = tempfile.mkdtemp(prefix="volley-")
        try:
            for name, data in case.files.items():
                Path(folder, name).write_bytes(data)
            return self.run_in(folder, case)
        finally:
            shutil.rmtree(folder)

    def run_in(self, folder, case):
        patience = PATIENCE * self.seconds
        with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
            process = subprocess.Popen(
                [self.gponval, *case.arguments()], cwd=folder, stdin=subprocess.DEVNULL,
                stdout=output, stderr=errors)
            late = threading.Event()

            def end_late_run():
                # Before the signal: the run may have ended before this thread goes on.
                late.set()
                with contextlib.suppress(ProcessLookupError):
                    os.kill(process.pid, signal.SIGKILL)

            clock = threading.Timer(patience, end_late_run)
            clock.start()
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            clock.cancel()
            if late.is_set():
                raise Failure("slow", f"still running after {patience} s")
            output.seek(0)
            errors.seek(0)
            files = {name: Path(folder, name).read_bytes() for name in os.listdir(folder)}
            return Run(process.returncode, output.read(), errors.read(),
                       usage.ru_utime + usage.ru_stime, files)

    def judge(self, case, expectation):
        """Raises Failure if gponval did wrong; otherwise returns its exit status."""
        run = self.run(case)
        check_ending(run)
        check_files(case, run)
        if run.seconds > self.seconds:
            raise Failure("slow", f"took {run.seconds:.1f} s of processor time")
        if run.status == 2:
            if expectation.verdict == "read":
                raise Failure("refused", f"refused what can be read: {run.errors.decode()}")
            return run.status
        if expectation.verdict == "refused":
            raise Failure("accepted", f"status {run.status} for {expectation.refused}")
        if case.shows_effect and run.status != 0:
            raise Failure("verdict", f"status {run.status} though nobody can object")
        if run.status == 0:
            self.check_effect(case, expectation, run)
        if expectation.card is not None:
            self.check_card(case, expectation, run)
        return run.status

    def check_effect(self, case, expectation, run):
        saved = run.files[case.save]
        try:
            document = read(case.save, saved, self.model, CONFIGURATION)
            tree = edits.read_configuration(self.model, document)
        except Refused as error:
            raise Failure("effect", f"saved what cannot be read: {error}") from error
        self.learn(expectation.after, tree)
        same = self.ciphers.clear
        wanted = edits.lines_of(self.model, expectation.after, same)
        found = edits.lines_of(self.model, tree, same)
        if wanted != found:
            raise Failure("effect", "\n".join(
                ["another effect, - as read, + as saved:"]
                + [line for line in difflib.unified_diff(wanted, found, n=0, lineterm="")
                   if not line.startswith(("---", "+++", "@@"))]))
        before = edits.lines_of(self.model, expectation.before, same)
        if run.output.startswith(b"Nothing to commit.") and before != wanted:
            raise Failure("verdict", "'Nothing to commit.' though something changes")

    def learn(self, wanted, found):
        """Pairs the clear texts that were read with what was saved for them."""
        def walk(node, left, right):
            for slot, value in left.items():
                child = node.children[slot[0]]
                other = right.get(slot)
                if other is None:
                    continue
                if child.is_inner:
                    walk(child, value, other)
                elif child.kind == "leaf" and child.type.encrypted:
                    if other.startswith(edits.CLEAR_TEXT):
                        raise Failure("effect", f"{child.path()} is saved in clear text")
                    if value.startswith(edits.CLEAR_TEXT):
                        self.ciphers.learn(value, other)
        walk(self.model, wanted, found)

    def check_card(self, case, expectation, run):
        """The card as it was read, written in a plain form, must have the same verdict."""
        data = case.files[case.card]
        case.files[case.card] = plain_card(expectation.card).encode()
        plain = self.run(case)
        case.files[case.card] = data
        if (plain.status, plain.output) != (run.status, run.output):
            raise Failure("effect", "\n".join(
                [f"another verdict than with {expectation.card}:"] + list(difflib.unified_diff(
                    plain.output.decode().splitlines(), run.output.decode().splitlines(), n=0,
                    lineterm=""))))


def check_ending(run):
    if run.status < 0:
        raise Failure("signal", f"ended by signal {-run.status}: {shown(run.errors)}")
    if SANITIZERS.search(run.errors):
        raise Failure("sanitizer", shown(run.errors))
    if run.status not in (0, 1, 2, 3):
        raise Failure("status", f"status {run.status}: {shown(run.errors)}")
    if run.status == 2:
        check_line(run.errors)
        if run.output:
            raise Failure("output", f"status 2 with the output {shown(run.output)}")
        return
    if run.errors:
        raise Failure("output", f"status {run.status} and on standard error {shown(run.errors)}")
    if not run.output.decode("utf-8", "replace").startswith(VERDICTS[run.status]):
        raise Failure("output", f"status {run.status} with the output {shown(run.output)}")


def check_line(errors):
    try:
        text = errors.decode("utf-8")
    except UnicodeDecodeError as error:
        raise Failure("line", f"the line is not UTF-8: {shown(errors)}") from error
    if text.count("\n") != 1 or not text.endswith("\n") or len(text) == 1:
        raise Failure("line", f"{text.count(chr(10))} lines: {shown(errors)}")
    if len(text) - 1 > LONGEST_LINE:
        raise Failure("line", f"{len(text) - 1} characters: {shown(errors)}")
    bad = [character for character in text[:-1] if unicodedata.category(character) in UNPRINTABLE]
    if bad:
        raise Failure("line", f"{bad[0]!r} in the line {shown(errors)}")


def check_files(case, run):
    wanted = set(case.files) | ({case.save} if run.status == 0 else set())
    if set(run.files) != wanted:
        odd = sorted(set(run.files) ^ wanted)
        raise Failure("files", f"the files {odd} at status {run.status}")
    for name, data in case.files.items():
        if run.files[name] != data:
            raise Failure("files", f"{name} was changed")


def shown(data):
    return repr(data[:1500].decode("utf-8", "backslashreplace"))
