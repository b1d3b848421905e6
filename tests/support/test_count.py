"""What count.py makes of the results of programs, good and bad. Run with: python3 -m unittest tests/support/test_count.py"""

import contextlib
import io
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import count  # noqa: E402  # it lies beside this file

# CTest tells the command of a test only when there is such a program. It is never run.
RUNNER = sys.executable

GOOD = '<testcase name="{}" status="run" result="completed" classname="Suite"/>'

RUN_UNITTESTS = pathlib.Path(__file__).parent / "run_unittests.py"

# Tests that come to every kind of end.
MODULE = """
import unittest

class CaseTest(unittest.TestCase):
    def test_passes(self):
        pass

    def test_fails(self):
        self.fail("so")

    def test_breaks(self):
        raise OSError

    def test_fails_in_part(self):
        for number in range(3):
            with self.subTest(number=number):
                self.assertEqual(1, number)

    def test_skips(self):
        self.skipTest("so")
"""


def results(*cases, tests=None):
    """A results file as GoogleTest writes it, around its cases."""
    number = len(cases) if tests is None else tests
    return f'<testsuites tests="{number}"><testsuite name="Suite">{"".join(cases)}</testsuite></testsuites>'


def passed(number):
    return results(*[GOOD.format(f"Case{i}") for i in range(number)])


class CountTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = pathlib.Path(temporary.name)

    def build(self, width, programs):
        """A build folder whose CTest knows the programs; None stands for one that wrote no results."""
        folder = self.root / width
        (folder / "results").mkdir(parents=True)
        tests = ""
        for name, text in programs.items():
            tests += f'add_test({name} "{RUNNER}" "{name}.exe" "--gtest_output=xml:results/{name}.xml")\n'
            tests += f'set_tests_properties({name} PROPERTIES WORKING_DIRECTORY "{folder}")\n'
            if text is not None:
                (folder / "results" / f"{name}.xml").write_text(text, encoding="utf-8")
        (folder / "CTestTestfile.cmake").write_text(tests, encoding="utf-8")
        return str(folder)

    def run_count(self, *arguments):
        """The exit code and the lines."""
        output = io.StringIO()
        with contextlib.redirect_stdout(output):
            code = count.main(list(arguments))
        return code, output.getvalue().splitlines()

    def expect_failure(self, text, *told, closing="2 passed, 1 failed"):
        """A program with these results, beside one with two good cases, fails the count, and this is told."""
        code, lines = self.run_count(self.build("x64", {"good": passed(2), "bad": text}))
        self.assertEqual([*(f"x64: bad: {one}" for one in told), f"x64: {closing}, 0 s", closing], lines)
        self.assertEqual(1, code)

    def test_good_cases_of_all_programs_and_widths_are_summed_up(self):
        folders = [self.build("x64", {"one": passed(2), "two": passed(3)}), self.build("x86", {"one": passed(4)})]
        code, lines = self.run_count(*folders)
        self.assertEqual(["x64: 5 passed, 0 failed, 0 s", "x86: 4 passed, 0 failed, 0 s", "9 passed, 0 failed"], lines)
        self.assertEqual(0, code)

    def test_the_seconds_of_all_cases_of_a_width_are_summed_up(self):
        timed = results(GOOD.format("Slow").replace("/>", ' time="2.75"/>'), GOOD.format("Fast").replace("/>", ' time="0."/>'))
        lines = self.run_count(self.build("x64", {"one": timed, "two": timed}), self.build("x86", {"one": passed(1)}))[1]
        self.assertEqual(["x64: 4 passed, 0 failed, 6 s", "x86: 1 passed, 0 failed, 0 s", "5 passed, 0 failed"], lines)

    def test_a_failed_case_fails_the_count(self):
        failed = GOOD.format("Bad").replace("/>", '><failure message="no"/></testcase>')
        self.expect_failure(results(failed), "Suite.Bad failed")

    def test_a_failure_outside_of_all_cases_fails_the_count(self):
        outside = GOOD.format("").replace("/>", '><failure message="no"/></testcase>')
        self.expect_failure(results(GOOD.format("Good"), outside, tests=1), "Suite. failed", closing="3 passed, 1 failed")

    def test_a_disabled_case_fails_the_count(self):
        self.expect_failure(
            results('<testcase name="DISABLED_Bad" status="notrun" result="suppressed" classname="Suite"/>'),
            "Suite.DISABLED_Bad did not run",
        )

    def test_a_skipped_case_fails_the_count(self):
        skipped = '<testcase name="Bad" status="run" result="skipped" classname="Suite"><skipped message="no"/></testcase>'
        self.expect_failure(results(skipped), "Suite.Bad skipped", closing="2 passed, 0 failed, 1 skipped")

    def test_a_case_that_says_nothing_about_its_end_fails_the_count(self):
        self.expect_failure(results('<testcase name="Bad" classname="Suite"/>'), "Suite.Bad did not run")

    def test_a_program_without_results_fails_the_count(self):
        self.expect_failure(None, "wrote no results")

    def test_results_that_are_cut_fail_the_count(self):
        self.expect_failure(passed(2)[:-20], "its results are not whole")

    def test_empty_results_fail_the_count(self):
        self.expect_failure("", "its results are not whole")

    def test_a_program_that_ran_no_case_fails_the_count(self):
        self.expect_failure(results(), "ran no case")

    def test_results_with_fewer_cases_than_they_say_fail_the_count(self):
        self.expect_failure(results(GOOD.format("Good"), tests=2), "its results hold 1 cases and not 2")

    def test_bytes_that_xml_may_not_hold_are_read(self):
        failed = GOOD.format("Bad").replace("/>", '><failure message="\x01\x0b\ufffe"/></testcase>')
        self.expect_failure(results(failed), "Suite.Bad failed")

    def test_results_of_a_program_that_is_no_test_do_not_count(self):
        folder = self.build("x64", {"good": passed(2)})
        (pathlib.Path(folder) / "results" / "other.xml").write_text(passed(5), encoding="utf-8")
        self.assertEqual((0, ["x64: 2 passed, 0 failed, 0 s", "2 passed, 0 failed"]), self.run_count(folder))

    def test_a_program_may_write_its_results_under_several_names(self):
        folder = self.build("x64", {"torture_1": passed(2), "torture_2": passed(3)})
        self.assertEqual((0, ["x64: 5 passed, 0 failed, 0 s", "5 passed, 0 failed"]), self.run_count(folder))

    def test_two_tests_with_the_same_results_fail_the_count(self):
        folder = self.build("x64", {"good": passed(2)})
        with open(f"{folder}/CTestTestfile.cmake", "a", encoding="utf-8") as tests:
            tests.write(f'add_test(bad "{RUNNER}" "--gtest_output=xml:results/good.xml")\n')
        self.assertEqual(
            (1, ["x64: bad: its results go where those of good go", "x64: 2 passed, 1 failed, 0 s", "2 passed, 1 failed"]),
            self.run_count(folder),
        )

    def test_a_test_that_names_no_results_fails_the_count(self):
        folder = self.build("x64", {"good": passed(2)})
        with open(f"{folder}/CTestTestfile.cmake", "a", encoding="utf-8") as tests:
            tests.write(f'add_test(bad "{RUNNER}" "bad.exe")\n')
        self.assertEqual(
            (1, ["x64: bad: its command names no results file", "x64: 2 passed, 1 failed, 0 s", "2 passed, 1 failed"]),
            self.run_count(folder),
        )

    def test_excluded_tests_are_not_asked_for(self):
        folder = self.build("x64", {"good": passed(2), "torture_tests_1": None})
        for option in ("-E", "--exclude"):
            result = self.run_count(option, "torture_tests", folder)
            self.assertEqual((0, ["x64: 2 passed, 0 failed, 0 s", "2 passed, 0 failed"]), result)

    def test_a_width_without_a_test_fails_the_count(self):
        code, lines = self.run_count(self.build("x64", {"good": passed(2)}), self.build("x86", {}))
        self.assertEqual(["x64: 2 passed, 0 failed, 0 s", "x86: 0 passed, 0 failed, 0 s", "2 passed, 0 failed"], lines)
        self.assertEqual(1, code)

    def results_file(self, text):
        path = self.root / "packages.xml"
        if text is not None:
            path.write_text(text, encoding="utf-8")
        return str(path)

    def test_a_results_file_counts_like_a_folder(self):
        code, lines = self.run_count(self.build("x64", {"good": passed(2)}), self.results_file(passed(3)))
        self.assertEqual((0, ["x64: 2 passed, 0 failed, 0 s", "packages: 3 passed, 0 failed, 0 s", "5 passed, 0 failed"]),
                         (code, lines))

    def test_a_results_file_that_is_missing_or_cut_fails_the_count(self):
        for text, told in ((None, "wrote no results"), (passed(3)[:-20], "its results are not whole")):
            code, lines = self.run_count(self.build("x64" if text else "x86", {"good": passed(2)}), self.results_file(text))
            self.assertEqual((1, f"packages: packages: {told}"), (code, lines[0]))
            self.assertEqual("2 passed, 1 failed", lines[-1])

    def test_wrong_arguments_are_a_wrong_usage(self):
        run = subprocess.run([sys.executable, count.__file__], stderr=subprocess.PIPE, check=False)
        self.assertEqual(2, run.returncode)

    def test_a_results_file_is_counted_beside_the_folders(self):
        (self.root / "job.xml").write_text(passed(3), encoding="utf-8")
        code, lines = self.run_count(self.build("x64", {"one": passed(2)}), str(self.root / "job.xml"))
        self.assertEqual(["x64: 2 passed, 0 failed, 0 s", "job: 3 passed, 0 failed, 0 s", "5 passed, 0 failed"], lines)
        self.assertEqual(0, code)

    def test_a_results_file_that_is_missing_fails_the_count(self):
        code, lines = self.run_count(self.build("x64", {"one": passed(2)}), str(self.root / "job.xml"))
        self.assertEqual(["job: job: wrote no results", "x64: 2 passed, 0 failed, 0 s", "job: 0 passed, 1 failed, 0 s",
                          "2 passed, 1 failed"], lines)
        self.assertEqual(1, code)

    def test_cases_of_python_modules_are_counted_by_what_became_of_them(self):
        module = self.root / "test_module.py"
        module.write_text(MODULE, encoding="utf-8")
        path = self.root / "job.xml"
        done = subprocess.run([sys.executable, RUN_UNITTESTS, path, module], stderr=subprocess.DEVNULL, check=False)
        self.assertEqual(1, done.returncode)
        lines = self.run_count(self.build("x64", {"one": passed(2)}), str(path))[1]
        name = "job: job: test_module.CaseTest.test_"
        self.assertEqual([f"{name}breaks failed", f"{name}fails failed", f"{name}fails_in_part failed", f"{name}skips skipped"],
                         lines[:4])
        self.assertEqual("3 passed, 3 failed, 1 skipped", lines[-1])


if __name__ == "__main__":
    unittest.main()
