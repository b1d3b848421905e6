"""Builds one mutant after the other in a workplace and lets the tests judge them."""

from dataclasses import asdict, dataclass

import reach
from workplace import UNCHANGED, ToolError

# A program that takes longer than this for the tests it is asked for hangs.
TIMES_AS_LONG = 8
SECONDS_MORE = 45

# A test that takes this many seconds is slow, if it is that part of its program's time, too: all others come before it.
SLOW_SECONDS = 1.0
SLOW_PART = 0.05

# How often a test may kill before it is looked at again whether it passes without the change.
KILLS_PER_PROOF = 8

# How often a program is tried again without a test that fails by itself, or with what runs have left taken away.
MOST_ATTEMPTS = 4

# The suites that judge the DLL or the programs as a whole come last, the longest behind the others.
LAST_PROGRAMS = ["docs_tests", "control_tests", "names_tests", "open_tests", "tool_tests", "hostile_tests", "machine_tests",
                 "decisions_tests", "long_run_tests", "torture_tests"]


@dataclass
class Verdict:
    id: str
    file: str
    line: int
    operator: str
    before: str
    after: str
    result: str = ""  # "killed", "timed out", "survived" or "not compiled"
    test: str = ""    # that killed it
    tests: int = 0    # that ran
    seconds: float = 0

    @property
    def folder(self):
        return self.file.split("/")[1]

    def as_dict(self):
        return asdict(self)


class Unproven(Exception):
    """A test that failed with a change failed without it too, when the same tests ran."""


class Judge:
    def __init__(self, place, baseline, reached):
        self.place = place
        self.baseline = baseline
        self.reached = reached
        self.kills_since_proof = {}

    def judge(self, mutant):
        """The verdict's result, test and number of tests. The source is put back in any case."""
        path = self.place.folder / mutant.file
        unchanged = path.read_bytes()
        path.write_text(mutant.apply(unchanged.decode("utf-8")), encoding="utf-8")
        try:
            if not self.place.build(mutant.folder):
                return "not compiled", "", 0
            return self.run_programs(mutant)
        finally:
            path.write_bytes(unchanged)

    def run_programs(self, mutant):
        count = 0
        for program, tests in self.in_parts(mutant):
            if not self.place.build(program):
                return "not compiled", "", 0
            result, ran = self.run_steady(program, tests)
            count += ran
            if result:
                return (*result, count)
        return "survived", "", count

    def in_order(self, mutant):
        """The folder's own tests first, then the other folders', those first of which the fewest are asked for."""
        own = f"{mutant.folder}_tests"
        chosen = self.reached.tests_for(mutant)

        def order(program):
            rank = LAST_PROGRAMS.index(program) + 1 if program in LAST_PROGRAMS else 0
            return program != own, rank, len(chosen[program])

        return [(program, chosen[program]) for program in sorted(chosen, key=order)]

    def in_parts(self, mutant):
        """(program, tests): the slow tests of all programs behind the others. A program is seen to pass in its turn."""
        slow_parts = []
        for program, tests in self.in_order(mutant):
            slow = self.baseline.slow_tests(program, SLOW_SECONDS, SLOW_PART)
            quick_part, slow_part = ([test for test in tests if (test in slow) == is_slow] for is_slow in (False, True))
            slow_parts.append((program, slow_part))
            yield program, quick_part
        yield from slow_parts

    def run_steady(self, program, tests):
        """What run_program gives, and how many tests ran. A test that fails by itself is left out from then on."""
        for _ in range(MOST_ATTEMPTS):
            steady = [test for test in tests if (program, test) not in self.baseline.left_out]
            try:
                return self.run_program(program, steady) if steady else None, len(steady)
            except Unproven:
                continue
        raise ToolError(f"{program} fails without a change; see {self.place.folder}/build/output.txt")

    def run_program(self, program, tests):
        """None when all pass, else how the change was noticed, and by which test."""
        every = self.reached.tests[program]
        wanted = reach.filter_of(tests, every)
        seconds = self.baseline.seconds(program, tests if wanted else every) * TIMES_AS_LONG + SECONDS_MORE
        run = self.place.run(program, wanted, seconds)
        if run.timed_out:  # the machine may have been busy, or asleep
            run = self.place.run(program, wanted, seconds)
        if run.passed:
            return None
        test = run.breaking_test
        self.prove(program, tests[:tests.index(test) + 1] if test in tests else tests, seconds, test)
        return "timed out" if run.timed_out else "killed", f"{program}: {test}"

    def prove(self, program, tests, seconds, test):
        """A test that kills has to pass without the change, among the same tests: it may fail by itself, or because of what
        programs have left in Wine's prefix."""
        key = program, test
        self.kills_since_proof[key] = self.kills_since_proof.get(key, KILLS_PER_PROOF) + 1
        if self.kills_since_proof[key] <= KILLS_PER_PROOF:
            return
        wanted = reach.filter_of(tests, self.reached.tests[program])
        if not self.place.run(program, wanted, seconds, build=UNCHANGED).passed:
            self.place.renew_prefix()
            again = self.place.run(program, wanted, seconds, build=UNCHANGED)
            if not again.passed:
                self.baseline.leave_out(program, again.breaking_test)
            raise Unproven
        self.kills_since_proof[key] = 0
