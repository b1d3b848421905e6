"""Runs the tests of Python modules, and writes their results as count.py reads them.

Usage: run_unittests.py RESULTS.xml TEST_FILE.py... What the tests tell goes to standard error; the exit code is 1 when not all passed.
"""

import pathlib
import sys
import time
import unittest
import xml.etree.ElementTree as etree


class Recorder(unittest.TextTestResult):
    """Keeps each case as GoogleTest would write it. A part of a case (subTest) that fails is a failure of the case."""

    def __init__(self, *arguments, **options):
        super().__init__(*arguments, **options)
        self.cases = {}
        self.begun = {}

    def startTest(self, test):
        super().startTest(test)
        self.begun[test.id()] = time.monotonic()
        self.case_of(test)

    def stopTest(self, test):
        super().stopTest(test)
        case = self.case_of(test)
        case.set("result", "completed")
        case.set("time", f"{time.monotonic() - self.begun[test.id()]:.3f}")

    def case_of(self, test):
        if test.id() not in self.cases:
            suite, _, name = test.id().rpartition(".")
            self.cases[test.id()] = etree.Element("testcase", classname=suite, name=name, status="run")
        return self.cases[test.id()]

    def add_failure(self, test, error):
        failure = etree.SubElement(self.case_of(test), "failure")
        failure.text = self._exc_info_to_string(error, test)

    def addError(self, test, error):
        super().addError(test, error)
        self.add_failure(test, error)

    def addFailure(self, test, error):
        super().addFailure(test, error)
        self.add_failure(test, error)

    def addSubTest(self, test, subtest, error):
        super().addSubTest(test, subtest, error)
        if error:
            self.add_failure(test, error)

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        etree.SubElement(self.case_of(test), "skipped", message=reason)

    def write(self, path):
        root = etree.Element("testsuites", tests=str(len(self.cases)))
        etree.SubElement(root, "testsuite").extend(self.cases.values())
        etree.ElementTree(root).write(path, encoding="utf-8", xml_declaration=True)


def main(arguments):
    results = pathlib.Path(arguments[0])
    results.unlink(missing_ok=True)
    results.parent.mkdir(parents=True, exist_ok=True)
    names = []
    for path in map(pathlib.Path, arguments[1:]):
        sys.path.insert(0, str(path.parent.resolve()))
        names.append(path.stem)
    suite = unittest.defaultTestLoader.loadTestsFromNames(names)
    result = unittest.TextTestRunner(resultclass=Recorder, verbosity=2).run(suite)
    result.write(results)
    return 0 if result.wasSuccessful() and result.cases else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
