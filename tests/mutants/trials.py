"""Builds the plug-in with one change and runs its tests on it.

The test programs are linked once more, against a library of the plug-in that exports every name. For
a mutant only the changed source is compiled, into a small library of its own that the tests get
preloaded: its functions take the place of those they were linked with.
"""

import json
import os
import re
import resource
import shlex
import shutil
import subprocess
from dataclasses import dataclass
from pathlib import Path

from changes import Mutant, mutated

# A loop without an end takes this much more than the whole program does without a change.
_CPU_FACTOR = 4
_CPU_SECONDS = 2
# For what waits instead; a busy machine may take long for the tests.
_WALL_SECONDS = 900
_MEMORY = 4 << 30
_FILE_SIZE = 256 << 20


@dataclass(frozen=True)
class Program:
    """A program of tests."""

    path: str  # below the build
    # Tests of the link, which no changed source changes, and those that take long and look for other
    # things than a changed line.
    left_out: tuple[str, ...]
    # Every test of a cross-cutting suite is for all sources, or for the request in its name; any
    # other test is for the sources that its file names.
    is_cross_cutting: bool

    @property
    def target(self) -> str:
        return Path(self.path).name

    @property
    def all_tests(self) -> str:
        return "-" + ":".join(self.left_out)


PROGRAMS = (
    Program("tests/unit/unit_tests", (), is_cross_cutting=False),
    Program("tests/catalogue/catalogue_tests", ("ExportedSymbols.*",), is_cross_cutting=True),
    Program("tests/robustness/robustness_tests", ("*LongLife*", "*NamesOfACard*"),
            is_cross_cutting=True),
)  # fmt: skip


@dataclass
class Result:
    mutant: Mutant
    outcome: str  # "killed", "survived", "same code" or "not compiled"
    by: str = ""  # the first test that failed


def run(command: list[str], **options) -> subprocess.CompletedProcess:
    return subprocess.run(
        command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
        **options,
    )  # fmt: skip


def must(command: list[str], **options) -> None:
    done = run(command, **options)
    if done.returncode != 0:
        raise SystemExit(f"mutants: {shlex.join(command)[:300]} failed:\n{done.stdout[-4000:]}")


def run_tests(program: Path, tests: str, cpu_seconds: int, preload: str) -> str:
    """The first test that fails, or nothing."""

    def limit() -> None:
        resource.setrlimit(resource.RLIMIT_CPU, (cpu_seconds, cpu_seconds))
        resource.setrlimit(resource.RLIMIT_AS, (_MEMORY, _MEMORY))
        resource.setrlimit(resource.RLIMIT_FSIZE, (_FILE_SIZE, _FILE_SIZE))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    environment = {**os.environ, "LD_PRELOAD": preload, "GTEST_FILTER": tests}
    command = [str(program), "--gtest_brief=1", "--gtest_fail_fast"]
    try:
        done = run(command, cwd=program.parent, env=environment, preexec_fn=limit,
                   timeout=_WALL_SECONDS)  # fmt: skip
    except subprocess.TimeoutExpired:
        return "(no end)"
    if done.returncode == 0:
        return ""
    failed = re.search(r"^\[  FAILED  \] (\S+?),? ", done.stdout, re.MULTILINE)
    return failed.group(1) if failed else f"(ended with {done.returncode})"


class Plugin:
    """The tree, and the build that all mutants start from."""

    def __init__(self, tree: Path):
        self.tree = tree
        self.sources = tree / "src/validation"
        self.build = tree / "build/dev"
        self.folder = self.build / "mutants"
        self.programs = {program: self.folder / program.target for program in PROGRAMS}
        self.commands: dict[str, list[str]] = {}  # by source
        self._tests: dict[Program, list[tuple[str, str]]] = {}  # file and full name
        self._cpu_seconds: dict[str, int] = {}  # by target

    def prepare(self) -> None:
        """Builds the plug-in as it is and its tests, which must pass."""
        must(["cmake", "--preset", "dev"], cwd=self.tree)
        targets = [program.target for program in PROGRAMS]
        must(["cmake", "--build", str(self.build), "--target", "gpon_valid", *targets])
        self._read_commands()
        self.folder.mkdir(exist_ok=True)
        self._link_and_measure()
        for program in PROGRAMS:
            self._list_tests(program)

    def _link_and_measure(self) -> None:
        """Unless nothing was built since the last time."""
        stamp = self.folder / "cpu_seconds.json"
        built = [self.build / "src/validation/libgpon_valid.so"]
        built += [self.build / program.path for program in PROGRAMS]
        if stamp.exists() and all(b.stat().st_mtime < stamp.stat().st_mtime for b in built):
            self._cpu_seconds = json.loads(stamp.read_text())
            return
        library = self._link_plugin()
        for program in PROGRAMS:
            self._link_tests(program, library)
            self._cpu_seconds[program.target] = self._measure(program)
        stamp.write_text(json.dumps(self._cpu_seconds))

    def _read_commands(self) -> None:
        for entry in json.loads((self.build / "compile_commands.json").read_text()):
            source = Path(entry["file"])
            if source.parent == self.sources:
                words = shlex.split(entry["command"])
                # Nobody compiles a mutant twice.
                self.commands[source.name] = words[1:] if words[0].endswith("ccache") else words

    def _link_plugin(self) -> Path:
        library = self.folder / "libevery_name.so"
        objects = sorted(self.build.glob("src/validation/CMakeFiles/gpon_valid_objects.dir/*.o"))
        built = [o for o in objects if o.name.removesuffix(".o") in self.commands]
        must(["c++", "-shared", f"-Wl,-soname,{library.name}", "-o", str(library),
              *map(str, built), "-lzlog"])  # fmt: skip
        return library

    def _link_tests(self, program: Program, library: Path) -> None:
        """As the build links them, with that library in place of the plug-in's objects or library."""
        lines = run(["ninja", "-C", str(self.build), "-t", "commands", program.path]).stdout
        link = next(line for line in lines.splitlines() if f" -o {program.path} " in line)
        words = shlex.split(link.split(" && ")[1])
        words = [word for word in words if "gpon_valid" not in word or word.startswith("-Wl,-rpath")]
        words[words.index(program.path)] = str(self.programs[program])
        must([*words, str(library), f"-Wl,-rpath,{self.folder}"], cwd=self.build)

    def _list_tests(self, program: Program) -> None:
        listing = self.folder / f"{program.target}.json"
        must([str(self.programs[program]), "--gtest_list_tests", f"--gtest_output=json:{listing}",
              f"--gtest_filter={program.all_tests}"])  # fmt: skip
        self._tests[program] = [
            (test["file"], f"{suite['name']}.{test['name']}")
            for suite in json.loads(listing.read_text())["testsuites"]
            for test in suite["testsuite"]
        ]

    def _measure(self, program: Program) -> int:
        """The time that its tests get with a change. Without one they must pass."""
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        failed = run_tests(self.programs[program], program.all_tests, 600, "")
        if failed:
            raise SystemExit(f"mutants: {failed} of {program.target} fails without a change")
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
        return round(_CPU_FACTOR * seconds) + _CPU_SECONDS

    def _requests(self) -> dict[str, str]:
        """The validator of each request, by the table of the dispatch."""
        table = (self.sources / "gpon_card_valid.cpp").read_text()
        return {name: validator for validator, name in re.findall(r'\{(\w+), "(\w+)"\}', table)}

    def _requests_of(self, file: str) -> list[str]:
        """The requests whose validators the source defines."""
        code = (self.sources / file).read_text()
        return [name for name, validator in self._requests().items()
                if f"\nstd::int32_t {validator}(" in code]  # fmt: skip

    def _own_tests(self, program: Program, file: str) -> list[str]:
        """The tests of the files that include the source's header or make its requests."""
        words = [f'"{Path(file).stem}.h"'] + [f'"{name}"' for name in self._requests_of(file)]
        codes = {path: (self.tree / path).read_text() for path, _ in self._tests[program]}
        return [test for path, test in self._tests[program] if any(w in codes[path] for w in words)]

    def _cross_cutting_tests(self, program: Program, file: str) -> list[str]:
        """All that are not for a request of another source, unless the source serves several."""
        own = self._requests_of(file)
        others = [name for name in self._requests() if own and name not in own]
        return [test for _, test in self._tests[program]
                if not any(test.rpartition("/")[2].startswith(name) for name in others)]  # fmt: skip

    def first_failure(self, file: str, preload: Path) -> str:
        """The tests that belong to a source, its own first: the first of them that fails."""
        stages = [(program, self._own_tests(program, file)) for program in PROGRAMS]
        for program in PROGRAMS:
            if program.is_cross_cutting or not self._requests_of(file):
                stages.append((program, self._cross_cutting_tests(program, file)))
        for program, tests in stages:
            if tests:
                failed = run_tests(self.programs[program], ":".join(tests),
                                   self._cpu_seconds[program.target], str(preload))  # fmt: skip
                if failed:
                    return failed
        return ""

    def dependents_of(self, file: str) -> list[str]:
        """The sources to compile after a change of the file: itself, or all that include it."""
        if file.endswith(".cpp"):
            return [file]
        including = {file}
        grown = True
        while grown:
            grown = False
            for path in self.sources.glob("*.*"):
                if path.suffix not in (".cpp", ".h") or path.name in including:
                    continue
                included = set(re.findall(r'#include "(\w+\.h)"', path.read_text()))
                if included & including:
                    including.add(path.name)
                    grown = True
        return sorted(name for name in including if name.endswith(".cpp"))


class Worker:
    """A folder with the plug-in's sources, in which one mutant after the other is tried."""

    def __init__(self, plugin: Plugin, folder: Path):
        self._plugin = plugin
        self._folder = folder
        self._sources = folder / "src/validation"
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(plugin.sources, self._sources)

    def try_out(self, mutant: Mutant) -> Result:
        code = (self._plugin.sources / mutant.file).read_text()
        (self._sources / mutant.file).write_text(mutated(code, mutant))
        try:
            return self._try_written(mutant)
        finally:
            (self._sources / mutant.file).write_text(code)

    def _try_written(self, mutant: Mutant) -> Result:
        changed = self._plugin.dependents_of(mutant.file)
        objects = [self._folder / (source + ".o") for source in changed]
        for source, to in zip(changed, objects):
            if not self._compile(self._sources, source, to):
                return Result(mutant, "not compiled")
        library = self._folder / "libmutant.so"
        must(["c++", "-shared", "-o", str(library), *map(str, objects)])
        failed = self._plugin.first_failure(mutant.file, library)
        if failed:
            return Result(mutant, "killed", failed)
        if all(self._is_same_code(source) for source in changed):
            return Result(mutant, "same code")
        return Result(mutant, "survived")

    def _compile(self, folder: Path, source: str, to: Path, *options: str) -> bool:
        words = list(self._plugin.commands[source])
        words[words.index("-o") + 1] = str(to)
        words[words.index("-c") + 1] = str(folder / source)
        own = str(self._plugin.sources)
        words = [word.replace(f"-I{own}", f"-I{folder}") for word in words]
        # Records and assertions name the place in the tree, wherever the copy is.
        words += [f"-ffile-prefix-map={folder}=src/validation", "-w", "-g0", *options]
        return run(words, cwd=self._plugin.build).returncode == 0

    def _is_same_code(self, source: str) -> bool:
        """Do the source and its mutant compile to the same instructions and data?"""
        built = []
        for name, folder in (("was", self._plugin.sources), ("is", self._sources)):
            to = self._folder / f"{name}.o"
            if not self._compile(folder, source, to, "-O2"):
                return False
            built.append(to.read_bytes())
        return built[0] == built[1]
