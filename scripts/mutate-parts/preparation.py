"""Prepares a workplace: built, and knowing which tests enter which function."""

import json

import reach
from workplace import ROOT, ToolError

SECONDS_OF_A_PROGRAM = 1800
FOLDER = ROOT / "build" / "mutate"
REACH_FILE = FOLDER / "reach.json"


def prepare(place, names, state, left_out, is_reach_known, say):
    """Brings the workplace to the project's state; what was found out about this state before is not found out again. The
    first workplace sets `is_reach_known` when that is so."""
    place.take_project(names)
    place.configure(tells_functions=False)
    baseline = Baseline(place, state)
    if place.number == 1:
        trace_functions(place, state, left_out, say)
        is_reach_known.set()
    if not baseline.is_built:
        say(f"workplace {place.number}: building")
        place.build_all()
        place.keep_unchanged()
        place.start_wine()
        place.keep_prefix()
        baseline.begin()
    place.start_wine()
    return baseline


def trace_functions(place, state, left_out, say):
    """Finds out which functions each test of a program enters, for the programs that are not left out and not yet known."""
    known = read_json(REACH_FILE)
    if known.get("state") != state:
        known = {"state": state, "entered": {}, "tests": {}}
    missing = [program for program in place.programs if program not in left_out and program not in known["tests"]]
    if not missing:
        return
    say(f"workplace {place.number}: building with functions that tell when they are entered")
    place.configure(tells_functions=True)
    place.build_all()
    place.start_wine()
    for program in missing:
        say(f"workplace {place.number}: which functions {program} enters")
        trace = place.folder / "build" / "trace.txt"
        trace.unlink(missing_ok=True)
        # Whether all pass is not asked here: some look at what the DLL is made of.
        place.run(program, seconds=SECONDS_OF_A_PROGRAM, trace=trace, to_the_end=True)
        if not trace.exists():
            raise ToolError(f"{program} does not tell which functions it enters")
        known["entered"][program] = reach.read_trace(place.folder, program, trace)
        known["tests"][program] = place.tests_of(program)
        write_json(REACH_FILE, known)
    place.configure(tells_functions=False)


def read_reach(left_out):
    """Without the programs that are left out."""
    found = read_json(REACH_FILE)
    tests = {program: tests for program, tests in found["tests"].items() if program not in left_out}
    return reach.Reach(found["entered"], tests)


class Baseline:
    """How the test programs of a workplace pass without a change. Each is run when it is asked for first."""

    def __init__(self, place, state):
        self.place = place
        self.path = place.folder / "build" / "baseline.json"
        self.known = read_json(self.path)
        self.is_built = self.known.get("state") == state
        if not self.is_built:
            self.path.unlink(missing_ok=True)
            self.known = {"state": state, "milliseconds": {}, "left out": []}

    def begin(self):
        write_json(self.path, self.known)

    @property
    def left_out(self):
        """(program, test) of the tests that fail by themselves."""
        return set(map(tuple, self.known["left out"]))

    def leave_out(self, program, test):
        self.known["left out"].append((program, test))
        write_json(self.path, self.known)

    def seconds(self, program, tests):
        """How long the tests take."""
        milliseconds = self.of(program)
        return sum(milliseconds.get(test, 0) for test in tests) / 1000

    def slow_tests(self, program, seconds, part):
        """Those that take so many seconds, and this part of the program's time, each."""
        milliseconds = self.of(program)
        limit = max(seconds * 1000, part * sum(milliseconds.values()))
        return {test for test, taken in milliseconds.items() if taken > limit}

    def of(self, program):
        """The milliseconds of each test of a program, which passes: at the second attempt at the latest."""
        known = self.known["milliseconds"]
        if program not in known:
            run = self.place.run_unchanged(program, SECONDS_OF_A_PROGRAM)
            if not run.passed:
                for test in run.failed_tests:
                    self.leave_out(program, test)
                run = self.place.run_unchanged(program, SECONDS_OF_A_PROGRAM)
            if not run.passed:
                (FOLDER / "failed.txt").write_text(run.output)
                raise ToolError(f"{program} fails without a change ({run.breaking_test}); see build/mutate/failed.txt")
            known[program] = run.passed_milliseconds
            write_json(self.path, self.known)
        return known[program]


def read_json(path):
    return json.loads(path.read_text()) if path.exists() else {}


def write_json(path, value):
    path.write_text(json.dumps(value, indent=1))
