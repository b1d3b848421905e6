"""Counts the cases of all test programs that CTest knows in the build folders, and tells what did not pass.

Usage: count.py [-E REGEX] BUILD_FOLDER|RESULTS.xml [...]. A results file stands for tests that CTest does not know. -E (or
--exclude) leaves the tests out that `ctest -E REGEX` leaves out. Every other test must have written the results file that its
command names with --gtest_output=xml:FILE, whole: a program that crashed wrote none. A case passed when it ran to its end without a
failure. One that failed, was disabled or skipped, and a program without results, are told by name, and the exit code is 1. The last
lines are one for each source, with the seconds that its cases took, and their sum.
"""

import argparse
import collections
import json
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree

OUTPUT = "--gtest_output=xml:"

# A failed comparison of bytes puts them into the file as they are; they are nothing that XML may hold.
NOT_XML = re.compile("[^\\t\\n\\r -\ud7ff\ue000-\ufffd]")


class Unusable(Exception):
    """What a program left behind, or what CTest knows of it, cannot be counted."""


def tests_of(folder, exclude):
    """The tests of a build folder as CTest describes them."""
    command = ["ctest", "--show-only=json-v1"] + (["-E", exclude] if exclude else [])
    listing = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, check=True)
    return json.loads(listing.stdout)["tests"]


def results_file(test, folder):
    """Where a test's program writes its results."""
    names = [word[len(OUTPUT) :] for word in test.get("command", []) if word.startswith(OUTPUT)]
    if len(names) != 1:
        raise Unusable("its command names no results file")
    start = {entry["name"]: entry["value"] for entry in test["properties"]}.get("WORKING_DIRECTORY", folder)
    return pathlib.Path(start, names[0])


def writers_of(source, exclude):
    """Who writes results, by name, each with the file or with what is wrong with it."""
    if source.endswith(".xml"):
        return [(pathlib.Path(source).stem, pathlib.Path(source))]
    found, taken = [], {}
    for test in tests_of(source, exclude):
        try:
            path = results_file(test, source)
            if path in taken:
                raise Unusable(f"its results go where those of {taken[path]} go")
            taken[path] = test["name"]
        except Unusable as error:
            path = error
        found.append((test["name"], path))
    return found


def cases_of(path):
    """The cases in a results file, which holds as many as it says."""
    if isinstance(path, Unusable):
        raise path
    try:
        text = path.read_text(encoding="utf-8", errors="replace")
        root = xml.etree.ElementTree.fromstring(NOT_XML.sub("?", text))
    except FileNotFoundError:
        raise Unusable("wrote no results") from None
    except xml.etree.ElementTree.ParseError:
        raise Unusable("its results are not whole") from None
    cases = list(root.iter("testcase"))
    if not cases:
        raise Unusable("ran no case")
    # A failure outside of all cases is written as one more case, which GoogleTest does not count.
    counted = [case for case in cases if case.get("name")]
    if root.get("tests") != str(len(counted)):
        raise Unusable(f"its results hold {len(counted)} cases and not {root.get('tests')}")
    return cases


def outcome_of(case):
    """How a case went: passed, failed, skipped, or what else the file says about it."""
    if case.find("failure") is not None or case.find("error") is not None:
        return "failed"
    if case.get("result") == "skipped" or case.find("skipped") is not None:
        return "skipped"
    if case.get("status") == "run" and case.get("result") == "completed":
        return "passed"
    return "did not run"


def count(source, exclude):
    """How many cases of a build folder or a results file passed, failed and were skipped. A program without results counts as one
    failed case."""
    label = pathlib.Path(source).stem
    counts = collections.Counter()
    for name, path in writers_of(source, exclude):
        try:
            cases = cases_of(path)
        except Unusable as error:
            counts["failed"] += 1
            print(f"{label}: {name}: {error}")
            continue
        for case in cases:
            outcome = outcome_of(case)
            counts[outcome if outcome in ("passed", "skipped") else "failed"] += 1
            counts["seconds"] += float(case.get("time", 0))
            if outcome != "passed":
                print(f"{label}: {name}: {case.get('classname')}.{case.get('name')} {outcome}")
    return counts


def line(counts):
    text = f"{counts['passed']} passed, {counts['failed']} failed"
    return text + (f", {counts['skipped']} skipped" if counts["skipped"] else "")


def main(arguments):
    parser = argparse.ArgumentParser(prog="count.py")
    parser.add_argument("-E", "--exclude", metavar="REGEX")
    parser.add_argument("sources", metavar="BUILD_FOLDER|RESULTS.xml", nargs="+")
    options = parser.parse_args(arguments)
    counts = {source: count(source, options.exclude) for source in options.sources}
    for source, of_source in counts.items():
        print(f"{pathlib.Path(source).stem}: {line(of_source)}, {of_source['seconds']:.0f} s")
    total = sum(counts.values(), collections.Counter())
    print(line(total))
    all_ran = all(of_source["passed"] for of_source in counts.values())
    return 0 if all_ran and not total["failed"] and not total["skipped"] else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
