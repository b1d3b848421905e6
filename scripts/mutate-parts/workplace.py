"""A copy of the whole project in which mutants are built and run. It shares nothing with the project or another copy."""

import contextlib
import functools
import hashlib
import itertools
import json
import os
import pathlib
import re
import signal
import subprocess
import time
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD = pathlib.Path("build/x64")
# A copy of what was built from unchanged sources, in a folder whose path is as long: tests depend on lengths of paths.
UNCHANGED = pathlib.Path("build/u64")
TESTED = ("src/", "tests/", "docs/", "cmake/", "CMakeLists.txt", "CMakePresets.json", "README.md")
CLEAN_PREFIX = "build/wine-clean"
LONGEST_FILTER = 24000  # characters; a Windows command line ends at 32,767

RAN = re.compile(r"^\[=+\] (\d+) tests? from \d+ test suites? ran", re.MULTILINE)
OK = re.compile(r"^\[       OK \] (\S+?)(?:, where .*)? \((\d+) ms\)", re.MULTILINE)
FAILED = re.compile(r"^\[  FAILED  \] (\S+?)(?:, where .*)? \((\d+) ms\)", re.MULTILINE)
SKIPPED = re.compile(r"^\[  SKIPPED \] (\S+) \((\d+) ms\)", re.MULTILINE)
RUN = re.compile(r"^\[ RUN      \] (\S+)", re.MULTILINE)


class ToolError(Exception):
    """What keeps the tool from judging."""


@dataclass
class Run:
    """How a test program, or a part of it, went."""

    seconds: float
    code: int
    timed_out: bool
    output: str

    @property
    def passed(self):
        return self.code == 0 and not self.timed_out and RAN.search(self.output) is not None

    @property
    def passed_milliseconds(self):
        return {name: int(milliseconds) for pattern in (OK, SKIPPED) for name, milliseconds in pattern.findall(self.output)}

    @property
    def failed_tests(self):
        return [name for name, _ in FAILED.findall(self.output)]

    @property
    def breaking_test(self):
        """The test that failed first or, when the program ended or hung in it, the one that ran last."""
        if self.failed_tests:
            return self.failed_tests[0]
        begun = RUN.findall(self.output)
        return begun[-1] if begun and begun[-1] not in self.passed_milliseconds else "(outside of all tests)"


def project_files():
    """Everything that is part of the project, changes that are not committed included."""
    command = ["git", "ls-files", "--cached", "--others", "--exclude-standard", "-z"]
    done = subprocess.run(command, cwd=ROOT, check=True, stdout=subprocess.PIPE)
    return sorted(name for name in done.stdout.decode().split("\0") if name and (ROOT / name).is_file())


def fingerprint(names):
    """Tells one state of what is tested from another; there are tests of documents too."""
    digest = hashlib.sha256()
    for name in (name for name in names if name.startswith(TESTED)):
        digest.update(f"{name}\0".encode() + hashlib.sha256((ROOT / name).read_bytes()).digest())
    return digest.hexdigest()


def shell_command(commands):
    """The command that runs these in the shell, with what scripts/lib.sh has."""
    return ["bash", "-c", f"set -euo pipefail; . scripts/lib.sh; {commands}"]


def program_of(entry):
    """The name of the test program that an entry of CTest runs, and the variables that are set for it."""
    name = next(pathlib.Path(word).stem for word in entry["command"] if word.endswith(".exe"))
    values = next((each["value"] for each in entry["properties"] if each["name"] == "ENVIRONMENT"), [])
    variables = dict(value.split("=", 1) for value in values)
    return name, {key: value for key, value in variables.items() if not key.startswith("GTEST_")}


class Workplace:
    def __init__(self, number, processors):
        self.number = number
        self.folder = ROOT / "build" / "mutate" / str(number)
        self.processors = processors  # to build with
        self.process = None           # that is running
        self.is_abandoned = False

    def take_project(self, names):
        """Makes the copy's files those of the project. What is the same stays untouched, and is not built again."""
        self.folder.mkdir(parents=True, exist_ok=True)
        for name in names:
            source, copy = ROOT / name, self.folder / name
            data = source.read_bytes()
            if not copy.is_file() or copy.read_bytes() != data:
                copy.parent.mkdir(parents=True, exist_ok=True)
                copy.write_bytes(data)
            copy.chmod(source.stat().st_mode)
        wanted = set(names)
        for folder, folders, files in os.walk(self.folder):
            if pathlib.Path(folder) == self.folder:
                folders.remove("build") if "build" in folders else None
            for file in files:
                path = pathlib.Path(folder, file)
                if path.relative_to(self.folder).as_posix() not in wanted:
                    path.unlink()
        (self.folder / "build").mkdir(exist_ok=True)

    def configure(self, tells_functions):
        script = self.folder / "scripts" / "mutate-parts" / "workplace.cmake"
        self._run(["cmake", "--preset", "x64", f"-DCMAKE_PROJECT_INCLUDE={script}",
                   f"-DNORVIK_TELL_FUNCTIONS={'ON' if tells_functions else 'OFF'}"], "configure.log")

    def build(self, *targets):
        """False when it does not compile."""
        return self._build(targets) == 0

    def build_all(self):
        if self._build([]) != 0:
            raise ToolError(f"the unchanged project does not build; see {self.folder}/build/build.log")

    def keep_unchanged(self):
        (self.folder / UNCHANGED / "tests").mkdir(parents=True, exist_ok=True)
        built = self.folder / BUILD
        for path in itertools.chain(built.glob("*.dll"), built.glob("*.exe"), (built / "tests").glob("*.exe")):
            (self.folder / UNCHANGED / path.relative_to(built)).write_bytes(path.read_bytes())

    @functools.cached_property
    def programs(self):
        """{program: environment} as CTest has them. The cases of a program are not shared between entries here."""
        command = ["ctest", "--test-dir", str(BUILD), "--show-only=json-v1"]
        done = subprocess.run(command, cwd=self.folder, check=True, stdout=subprocess.PIPE)
        return dict(map(program_of, json.loads(done.stdout)["tests"]))

    def start_wine(self):
        self._shell("start_wine x64")

    def end_wine(self):
        self._shell("use_wine x64; end_wine")

    def keep_prefix(self):
        """Keeps Wine's prefix as it is now, for renew_prefix."""
        self._shell(f'use_wine x64; end_wine; rm -rf {CLEAN_PREFIX}; cp -a "$WINEPREFIX" {CLEAN_PREFIX}; start_wine x64')

    def renew_prefix(self):
        """Takes away what programs have left in Wine's prefix."""
        self._shell(f'use_wine x64; end_wine; rm -rf "$WINEPREFIX"; cp -a {CLEAN_PREFIX} "$WINEPREFIX"; start_wine x64')

    def run(self, program, tests=None, seconds=None, build=BUILD, trace=None, to_the_end=False, options=()):
        """Runs a test program, or those of its tests, up to the first failure or to the end, where CTest runs it. `trace` is
        the file for the functions that are entered."""
        command = ["../../scripts/run-windows-program", "--server", f"tests/{program}.exe", "--gtest_color=no", *options]
        if not to_the_end:
            command.append("--gtest_fail_fast")
        if tests is not None:
            command.append(f"--gtest_filter={':'.join(tests)}")
        environment = {**os.environ, "NORVIK_FIRST_PROCESSOR": str(self.number - 1), **self.programs[program]}
        if trace:
            environment["NORVIK_FUNCTION_TRACE"] = f"Z:{trace}"
        start = time.monotonic()
        with open(self.folder / "build" / "output.txt", "wb+") as output:
            self._start(command, output, self.folder / build, environment)
            timed_out = False
            try:
                code = self.process.wait(seconds)
            except subprocess.TimeoutExpired:
                timed_out = True
                code = self._stop()
            output.seek(0)
            text = output.read().decode("utf-8", "replace").replace("\r", "")
        if timed_out:
            self.end_wine()
            self.start_wine()
        return Run(time.monotonic() - start, code, timed_out, text)

    def run_unchanged(self, program, seconds):
        return self.run(program, seconds=seconds, build=UNCHANGED, to_the_end=True)

    def tests_of(self, program):
        """The names of all its tests, in the order in which they run."""
        listing = self.run(program, seconds=120, options=["--gtest_list_tests"]).output
        names, suite = [], ""
        for line in listing.splitlines():
            word = line.split("#")[0].strip()
            if line.startswith("  "):
                names.append(suite + word)
            elif word.endswith("."):
                suite = word
        return [name for name in names if "DISABLED_" not in name]

    def abandon(self):
        """Ends what is running, and lets nothing else begin: another thread may be at work here."""
        self.is_abandoned = True
        if self.process and self.process.poll() is None:
            self._stop()
        if (self.folder / "scripts").is_dir():
            subprocess.run(shell_command("choose_prefix x64; end_wine"), cwd=self.folder, check=False,
                           stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def _start(self, command, output, folder, environment=None):
        if not self.is_abandoned:
            self.process = subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                            stderr=subprocess.STDOUT, start_new_session=True)
        if self.is_abandoned:  # before, or meanwhile
            if self.process and self.process.poll() is None:
                self._stop()
            raise ToolError("interrupted")

    def _stop(self):
        self._signal(signal.SIGTERM)
        try:
            return self.process.wait(20)
        except subprocess.TimeoutExpired:
            self._signal(signal.SIGKILL)
            return self.process.wait()

    def _signal(self, number):
        with contextlib.suppress(ProcessLookupError):  # it has ended meanwhile, and another thread was told so
            os.killpg(self.process.pid, number)

    def _build(self, targets):
        return self._call(["ninja", "-C", str(BUILD), "-j", str(self.processors), *targets], "build.log")

    def _run(self, command, log):
        if self._call(command, log):
            raise ToolError(f"{' '.join(command)} failed; see {self.folder}/build/{log}")

    def _call(self, command, log):
        with open(self.folder / "build" / log, "wb") as output:
            self._start(command, output, self.folder)
            return self.process.wait()

    def _shell(self, commands):
        """Commands of scripts/lib.sh. Their output goes to a file: Wine's services would keep a pipe open."""
        self._run(shell_command(commands), "wine.log")
