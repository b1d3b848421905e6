import unittest
from types import SimpleNamespace

import reach

ENTERED = {"a_tests": {"*": [("src/a/Start.cpp", 1)], "One.*": [("src/a/Suite.cpp", 1)],
                       "One.a": [("src/a/A.cpp", 10), ("src/a/B.h", 5)], "One.b": [("src/a/A.cpp", 30)], "Two.c": []},
           "b_tests": {"Three.d": [("src/a/A.cpp", 30)]}}
TESTS = {"a_tests": ["One.a", "One.b", "Two.c"], "b_tests": ["Three.d"]}


def mutant(file, *lines):
    return SimpleNamespace(file=file, function=lines)


class ReachTest(unittest.TestCase):
    def expect(self, expected, *changed):
        self.assertEqual(expected, reach.Reach(ENTERED, TESTS).tests_for(mutant(*changed)))

    def test_a_change_is_shown_to_the_tests_that_enter_its_function(self):
        self.expect({"a_tests": ["One.b"], "b_tests": ["Three.d"]}, "src/a/A.cpp", 29, 33)

    def test_what_a_suite_enters_all_its_tests_enter(self):
        self.expect({"a_tests": ["One.a", "One.b"]}, "src/a/Suite.cpp", 1, 2)

    def test_what_a_program_enters_all_its_tests_enter(self):
        self.expect({"a_tests": TESTS["a_tests"]}, "src/a/Start.cpp", 1, 2)

    def test_a_change_outside_of_functions_is_shown_to_all_that_enter_the_file(self):
        self.expect({"a_tests": ["One.a", "One.b"], "b_tests": ["Three.d"]}, "src/a/A.cpp")

    def test_a_change_of_a_header_is_shown_to_all(self):
        self.expect(TESTS, "src/a/B.h")
        self.expect(TESTS, "src/a/B.h", 5, 5)

    def test_a_test_that_did_not_tell_may_enter_anything(self):
        silent = reach.Reach(ENTERED, {"a_tests": [*TESTS["a_tests"], "Two.silent"]})
        self.assertEqual({"a_tests": ["One.b", "Two.silent"]}, silent.tests_for(mutant("src/a/A.cpp", 30, 30)))
        self.assertEqual({"a_tests": ["One.a", "One.b", "Two.silent"]}, silent.tests_for(mutant("src/a/A.cpp", 50, 51)))


class FilterTest(unittest.TestCase):
    def test_whole_suites_are_one_pattern(self):
        self.assertEqual(["One.*"], reach.filter_of(["One.a", "One.b"], TESTS["a_tests"]))
        self.assertEqual(["One.b", "Two.*"], reach.filter_of(["One.b", "Two.c"], TESTS["a_tests"]))

    def test_a_whole_program_needs_no_pattern(self):
        self.assertIsNone(reach.filter_of(TESTS["a_tests"], TESTS["a_tests"]))


if __name__ == "__main__":
    unittest.main()
