import pathlib
import tempfile
import threading
import time
import unittest

from workplace import Run, ToolError, Workplace, program_of

OUTPUT = """[==========] Running 3 tests from 2 test suites.
[ RUN      ] ATest.Passes
[       OK ] ATest.Passes (12 ms)
[ RUN      ] Many/BTest.Fails/1
somewhere.cpp:1: Failure
[  FAILED  ] Many/BTest.Fails/1, where GetParam() = 7 (3 ms)
"""
END = "[==========] 3 tests from 2 test suites ran. (15 ms total)\n"


class RunTest(unittest.TestCase):
    def test_a_run_passes_that_came_to_its_end_with_success(self):
        self.assertTrue(Run(1, 0, False, END).passed)
        self.assertFalse(Run(1, 1, False, END).passed)
        self.assertFalse(Run(1, 0, True, END).passed)
        self.assertFalse(Run(1, 0, False, OUTPUT).passed)

    def test_the_first_failed_test_breaks_a_run(self):
        run = Run(1, 1, False, OUTPUT + END)
        self.assertEqual("Many/BTest.Fails/1", run.breaking_test)
        self.assertEqual({"ATest.Passes": 12}, run.passed_milliseconds)

    def test_a_program_that_ends_in_a_test_is_broken_by_it(self):
        self.assertEqual("CTest.Ends", Run(1, 5, False, "[ RUN      ] CTest.Ends\n").breaking_test)
        self.assertEqual("(outside of all tests)", Run(1, 5, False, "").breaking_test)


class ProgramTest(unittest.TestCase):
    def test_a_program_has_the_variables_of_its_entry_but_those_that_share_its_cases(self):
        entry = {"name": "a_tests_1", "command": ["run", "--server", "/b/tests/a_tests.exe", "--gtest_output=xml:c.xml"],
                 "properties": [{"name": "TIMEOUT", "value": 600.0},
                                {"name": "ENVIRONMENT", "value": ["A=b=c", "GTEST_TOTAL_SHARDS=2", "GTEST_SHARD_INDEX=0"]}]}
        self.assertEqual(("a_tests", {"A": "b=c"}), program_of(entry))

    def test_an_entry_may_have_no_variables(self):
        entry = {"name": "a_tests", "command": ["run", "a_tests.exe"], "properties": []}
        self.assertEqual(("a_tests", {}), program_of(entry))


class AbandonTest(unittest.TestCase):
    def test_what_runs_ends_and_nothing_else_begins(self):
        with tempfile.TemporaryDirectory() as folder:
            place = Workplace(1, 1)
            place.folder = pathlib.Path(folder)
            (place.folder / "build").mkdir()
            codes = []
            thread = threading.Thread(target=lambda: codes.append(place._call(["sleep", "60"], "sleep.log")))
            begun = time.monotonic()
            thread.start()
            while not place.process:
                time.sleep(0.01)
            place.abandon()
            thread.join()
            self.assertNotEqual([0], codes)
            self.assertLess(time.monotonic() - begun, 30)
            with self.assertRaises(ToolError):
                place._call(["true"], "true.log")


if __name__ == "__main__":
    unittest.main()
