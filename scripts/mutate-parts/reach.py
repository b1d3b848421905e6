"""Which functions of src/ each test case enters, told by programs that were built with NORVIK_TELL_FUNCTIONS."""

import itertools
import re
import struct
import subprocess

from workplace import BUILD, LONGEST_FILTER

POSITION = re.compile(r"^(?:.*/)?(src/\S+):(\d+)")


def image_base(path):
    """Where a 64-bit module wants to lie (Microsoft's PE format)."""
    data = path.read_bytes()
    header = struct.unpack_from("<I", data, 0x3C)[0]
    return struct.unpack_from("<Q", data, header + 24 + 24)[0]


def places_in(image, positions):
    """{position: (file, line)} of the functions of src/ that begin at these positions of the image."""
    positions, base = sorted(positions), image_base(image)
    if not positions:
        return {}
    addresses = "\n".join(f"{base + position:#x}" for position in positions)
    done = subprocess.run(["x86_64-w64-mingw32-addr2line", "-e", str(image)], input=addresses, text=True,
                          stdout=subprocess.PIPE, check=True)
    matches = zip(positions, map(POSITION.match, done.stdout.splitlines()))
    return {position: (match[1], int(match[2])) for position, match in matches if match}


def read_trace(folder, program, path):
    """{test: {(file, line)}}; tests are named as test_trace.cpp names them."""
    entered = {}
    for line in path.read_text().splitlines():
        name, *words = line.split()
        entered.setdefault(name, set()).update(words)
    images = {"test": folder / BUILD / "tests" / f"{program}.exe",
              **{name: folder / BUILD / name for name in ("norvik.dll", "norvik.exe", "norvikopen.exe")}}
    positions = {image: set() for image in images}
    for image, position in (word.split("+") for words in entered.values() for word in words):
        positions[image].add(int(position, 16))
    places = {f"{image}+{position:x}": place for image, path in images.items()
              for position, place in places_in(path, positions[image]).items()}
    return {name: sorted({places[word] for word in words if word in places}) for name, words in entered.items()}


class Reach:
    """`entered` is {program: {test: [(file, line)]}}; `tests` is {program: [test]}, all of them in their order."""

    def __init__(self, entered, tests):
        self.tests = tests
        self.entered = {program: {test: [tuple(place) for place in places] for test, places in tests.items()}
                        for program, tests in entered.items()}

    def tests_for(self, mutant):
        """{program: tests} that enter the function that is changed; of what stands outside of functions, or is never entered
        (the compiler had no need to), those that enter any function of the source file; without any, all there are. What a
        header defines the test programs compile too, and these copies tell nothing: that is for all tests."""
        if mutant.file.endswith(".h"):
            return dict(self.tests)
        for is_reached in (self.is_in_function(mutant), self.is_in_source(mutant)):
            if any(is_reached(place) for program in self.tests for place in self.places_of(program)):
                chosen = {program: self.chosen_tests(program, is_reached) for program in self.tests}
                return {program: tests for program, tests in chosen.items() if tests}
        return dict(self.tests)

    def places_of(self, program):
        return itertools.chain.from_iterable(self.entered.get(program, {}).values())

    @staticmethod
    def is_in_function(mutant):
        first, last = mutant.function or (0, -1)
        return lambda place: place[0] == mutant.file and first <= place[1] <= last

    @staticmethod
    def is_in_source(mutant):
        return lambda place: place[0] == mutant.file

    def chosen_tests(self, program, is_reached):
        """A test that did not come to its end when it was to tell may enter anything."""
        entered = self.entered.get(program, {})
        reaching = {test for test, places in entered.items() if any(map(is_reached, places))}
        return [test for test in self.tests[program]
                if test not in entered or {test, suite_of(test) + ".*", "*"} & reaching]


def suite_of(test):
    return test.rsplit(".", 1)[0]


def filter_of(tests, every):
    """The shortest patterns for these tests of a program; None for all of them."""
    if len(tests) == len(every):
        return None
    chosen, rest = set(tests), {suite_of(test) for test in every if test not in set(tests)}
    patterns = [test if suite_of(test) in rest else suite_of(test) + ".*" for test in every if test in chosen]
    patterns = list(dict.fromkeys(patterns))
    return patterns if sum(map(len, patterns)) + len(patterns) < LONGEST_FILTER else None
