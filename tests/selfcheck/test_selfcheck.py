"""The self-check, run under Wine by its own selfcheck.cmd: what it makes of programs that go wrong, and the zip file as a tester
unpacks it. The build folders hold both widths; 64-bit programs are run.

Run with: NORVIK_PREFIX=2 python3 tests/support/run_unittests.py build/selfcheck.xml tests/selfcheck/test_selfcheck.py
"""

import fnmatch
import functools
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD = ROOT / "build"
WORK = BUILD / "selfcheck"
PROGRAMS = BUILD / "x64" / "tests"

sys.path.insert(0, str(ROOT / "packaging"))
import selfcheck  # noqa: E402  # it lies with what makes packages

WAYWARD_CASES = 5


def run_windows(folder, *command, **variables):
    """What a Windows program does in a folder: the exit code and what it told."""
    done = subprocess.run([ROOT / "scripts/run-windows-program", *command], cwd=folder, env={**os.environ, **variables},
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, timeout=120)
    return done.returncode, done.stdout.decode("utf-8", errors="replace")


def run(folder, *arguments, server=True, **variables):
    """The same of selfcheck.cmd."""
    return run_windows(folder, *(["--server"] if server else []), "cmd", "/c", "selfcheck.cmd", *arguments, **variables)


def report_in(folder):
    return json.loads((folder / "report/report.json").read_text(encoding="utf-8"))


@functools.cache
def cases_of(suite):
    """The full names of a suite's cases, as its program lists them."""
    names, group = [], None
    for line in run_windows(ROOT, PROGRAMS / f"{suite}.exe", "--gtest_list_tests")[1].splitlines():
        name = line.split("  #")[0]
        if name.startswith("  "):
            names.append(group + name.strip())
        else:
            group = name.strip()
    return names


def time_of_program(content):
    """The time in the head of a Windows program; 0 where the linker was told to leave it out."""
    head = int.from_bytes(content[0x3C:0x40], "little")
    return int.from_bytes(content[head + 8:head + 12], "little")


class WaywardTest(unittest.TestCase):
    """One program that goes wrong as it is asked to, as the suite of a small folder of its own."""

    def setUp(self):
        self.folder = WORK / self.id().rpartition(".")[2]
        shutil.rmtree(self.folder, ignore_errors=True)
        (self.folder / "x64/tests").mkdir(parents=True)
        shutil.copy(ROOT / "packaging/selfcheck/selfcheck.cmd", self.folder)
        shutil.copy(PROGRAMS / "selfcheck.exe", self.folder / "x64/tests")
        shutil.copy(PROGRAMS / "wayward.exe", self.folder / "x64/tests/wayward_tests.exe")
        self.write_suites(["wayward_tests"])

    def write_suites(self, suites, *rules):
        document = {"version": "1.2.3", "suites": {"x64": suites}, "rules": list(rules)}
        (self.folder / "suites.json").write_text(json.dumps(document), encoding="utf-8")

    def run_wayward(self, *arguments, ways=""):
        return run(self.folder, "/width", "x64", *arguments, NORVIK_WAYWARD=ways)

    def only_suite(self):
        (suite,) = report_in(self.folder)["suites"]
        return suite

    def failed(self):
        return {case["case"]: case["output"] for case in self.only_suite()["failed"]}

    def test_what_passes_is_counted(self):
        code, told = self.run_wayward()
        self.assertEqual((0, f"{WAYWARD_CASES} passed, 0 failed"), (code, told.splitlines()[-2]))
        report = report_in(self.folder)
        self.assertEqual({"passed": WAYWARD_CASES, "failed": 0, "statesWine": 0, "leftOut": 0}, report["total"])
        self.assertEqual("1.2.3", report["version"])
        self.assertRegex(report["machine"]["windows"], r"^[0-9]+\.[0-9]+\.[0-9]+$")
        self.assertRegex(report["machine"]["wine"], r"^[0-9]+\.[0-9]+")
        self.assertRegex(report["machine"]["files"]["msxml3.dll"], r"^[0-9]+\.[0-9]+\.[0-9]+\.[0-9]+$")
        self.assertGreater(report["machine"]["ansiCodePage"], 0)

    def test_what_fails_crashes_or_hangs_is_told_and_the_rest_is_run(self):
        code, _ = self.run_wayward("/limit", "10", ways="Fails Crashes Hangs")
        self.assertEqual(1, code)
        self.assertEqual(WAYWARD_CASES - 3, self.only_suite()["passed"])
        failed = self.failed()
        self.assertEqual({"WaywardTest.Fails", "WaywardTest.Crashes", "WaywardTest.Hangs"}, set(failed))
        self.assertIn("was asked to fail, with a letter of the code page: \u00e4", failed["WaywardTest.Fails"])
        self.assertRegex(failed["WaywardTest.Crashes"], "(?s)ended with code 0xC0000005.*about to crash \ufffd")
        self.assertIn("not done after 10 seconds", failed["WaywardTest.Hangs"])
        text = (self.folder / "report/report.txt").read_text(encoding="utf-8")
        self.assertIn("about to crash", text)
        self.assertTrue(text.endswith("\n2 passed, 3 failed\n"), text[-200:])

    def test_a_program_that_ends_badly_behind_its_cases_fails(self):
        code, _ = self.run_wayward(ways="EndsBadly")
        self.assertEqual(1, code)
        self.assertEqual(WAYWARD_CASES, self.only_suite()["passed"])
        self.assertRegex(self.failed()["(the program)"], "ended with code 0x00000007")

    def test_a_program_that_is_missing_or_none_fails_and_the_others_are_run(self):
        (self.folder / "x64/tests/junk_tests.exe").write_text("no program", encoding="utf-8")
        self.write_suites(["gone_tests", "junk_tests", "wayward_tests"])
        code, _ = self.run_wayward()
        self.assertEqual(1, code)
        gone, junk, wayward = report_in(self.folder)["suites"]
        self.assertEqual([{"case": "(the program)", "output": "gone_tests.exe is not there."}], gone["failed"])
        self.assertIn("junk_tests.exe", junk["failed"][0]["output"])
        self.assertEqual((WAYWARD_CASES, []), (wayward["passed"], wayward["failed"]))

    def test_a_report_that_cannot_be_written_is_written_elsewhere_and_says_so(self):
        code, told = self.run_wayward("/report", "Z:\\proc\\report")
        self.assertEqual(1, code)
        self.assertRegex(told, r"Nothing can be written to Z:\\proc\\report, so the report is in C:\\.*norvik-selfcheck\.")
        self.assertFalse((self.folder / "report").exists())

    def test_cases_are_left_out_or_forgiven_with_their_reasons(self):
        left_out = {"suite": "wayward_tests", "cases": "*.Hangs:*.PassesToo", "reason": "not now"}
        wine = {"kind": "wine", "suite": "wayward_tests", "cases": "*.Fails", "reason": "Wine fails too"}
        self.write_suites(["wayward_tests"], {"kind": "certificates", **left_out}, wine)
        code, _ = self.run_wayward(ways="Fails Hangs")
        suite = self.only_suite()
        self.assertEqual((0, 2, []), (code, suite["passed"], suite["failed"]))
        self.assertEqual([("WaywardTest.Hangs", "not now"), ("WaywardTest.PassesToo", "not now")],
                         [(case["case"], case["reason"]) for case in suite["leftOut"]])
        self.assertEqual([("WaywardTest.Fails", "Wine fails too")], [(case["case"], case["reason"]) for case in suite["statesWine"]])

    def test_what_registers_is_run_when_it_is_asked_for(self):
        rule = {"kind": "registration", "suite": "wayward_tests", "cases": "*.PassesToo", "reason": "registers"}
        self.write_suites(["wayward_tests"], rule)
        self.assertEqual(0, self.run_wayward()[0])
        self.assertEqual((WAYWARD_CASES - 1, False), (self.only_suite()["passed"], report_in(self.folder)["registered"]))
        self.assertEqual(0, self.run_wayward("/register")[0])
        self.assertEqual((WAYWARD_CASES, True), (self.only_suite()["passed"], report_in(self.folder)["registered"]))

    def test_what_an_interrupted_run_left_in_the_registry_is_put_back(self):
        aside, entry = "HKCU\\Software\\NorvikTests\\Registration", "HKCR\\Norvik.AXNorvik"
        self.addCleanup(run_windows, ROOT, "reg", "delete", entry, "/f")
        for key, text in ((f"{aside}\\Norvik.AXNorvik", "of the machine"), (entry, "of a test")):
            run_windows(ROOT, "reg", "add", key, "/ve", "/d", text, "/f")
        self.assertEqual(0, self.run_wayward("/register")[0])
        self.assertIn("of the machine", run_windows(ROOT, "reg", "query", entry, "/ve")[1])
        self.assertEqual(1, run_windows(ROOT, "reg", "query", aside)[0])

    def test_a_rule_that_names_no_case_fails(self):
        self.write_suites(["wayward_tests"], {"kind": "wine", "suite": "wayward_tests", "cases": "*.Gone", "reason": "none"})
        self.assertEqual(1, self.run_wayward()[0])
        self.assertEqual({"(suites.json)": "No case is named *.Gone."}, self.failed())

    def test_what_cannot_be_begun_is_said(self):
        code, told = self.run_wayward("/suites", "other_tests")
        self.assertEqual((2, "There is no suite other_tests."), (code, told.strip()))
        code, told = run(self.folder, "/width", "x64", server=False)
        self.assertEqual(2, code)
        self.assertIn("Python 3.8 or later is needed", told)


class RulesTest(unittest.TestCase):
    """What tells cases apart, against the programs of this build."""

    def test_every_rule_names_cases_of_its_suite(self):
        for rule in json.loads((ROOT / "tests/selfcheck/rules.json").read_text(encoding="utf-8")):
            with self.subTest(**rule):
                names = cases_of(rule["suite"])
                for pattern in rule["cases"].split(":"):
                    self.assertTrue(fnmatch.filter(names, pattern), pattern)


class ZipFileTest(unittest.TestCase):
    """The zip file of this build."""

    @classmethod
    def setUpClass(cls):
        cls.zip = WORK / "selfcheck.zip"
        WORK.mkdir(parents=True, exist_ok=True)
        selfcheck.make_selfcheck(BUILD, cls.zip, "1.2.3", 1700000000)

    def test_it_runs_where_it_is_unpacked(self):
        folder = WORK / "Selbst pr\u00fcfen"
        shutil.rmtree(folder, ignore_errors=True)
        with zipfile.ZipFile(self.zip) as archive:
            archive.extractall(folder)
        code, told = run(folder, "/width", "x64", "/suites", "common_tests,docs_tests,support_tests")
        self.assertEqual(0, code, told)
        suites = {suite["suite"]: suite for suite in report_in(folder)["suites"]}
        self.assertEqual({"common_tests", "docs_tests", "support_tests"}, set(suites))
        for name, suite in suites.items():
            with self.subTest(name):
                self.assertGreater(suite["passed"], 3)
                self.assertEqual([], suite["failed"] + suite["statesWine"])
        left_out = {case["case"] for case in suites["support_tests"]["leftOut"]}
        self.assertIn("WebServerTest.ACertificateOfTheTrustedAuthorityIsAccepted", left_out)

    def test_it_holds_no_path_of_the_machine_that_made_it(self):
        with zipfile.ZipFile(self.zip) as archive:
            names = archive.namelist()
            holding = [name for name in names if str(ROOT).encode() in archive.read(name)]
        self.assertEqual([], holding)
        self.assertEqual(sorted(names), names)
        for name in ("selfcheck.cmd", "README.txt", "server/webserver.py", "x64/norvik.dll", "x86/tests/selfcheck.exe"):
            self.assertIn(name, names)

    def test_nothing_in_it_tells_when_it_was_made(self):
        with zipfile.ZipFile(self.zip) as archive:
            self.assertEqual({(2023, 11, 14, 22, 13, 20)}, {entry.date_time for entry in archive.infolist()})
            times = {name: time_of_program(archive.read(name)) for name in archive.namelist() if name.endswith((".exe", ".dll"))}
        self.assertEqual({}, {name: time for name, time in times.items() if time})

    def test_every_program_of_ctest_is_a_suite_in_it(self):
        # CTest itself is not asked: a second one takes the log of the one that is running.
        files = (BUILD / "x64/tests").rglob("CTestTestfile.cmake")
        programs = {name for file in files for name in re.findall(r'/(\w+_tests)\.exe"', file.read_text(encoding="utf-8"))}
        self.assertLess(10, len(programs))
        with zipfile.ZipFile(self.zip) as archive:
            suites = json.loads(archive.read("suites.json"))["suites"]
        self.assertEqual({"x64": sorted(programs), "x86": sorted(programs)}, suites)


if __name__ == "__main__":
    unittest.main()
