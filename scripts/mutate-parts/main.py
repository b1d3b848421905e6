#!/usr/bin/env python3
"""What scripts/mutate does; see there."""

import argparse
import json
import os
import secrets
import signal
import sys
import threading
import time

import preparation
import report
from judge import Judge, Verdict
from mutants import Draw, all_mutants
from workplace import ROOT, ToolError, Workplace, fingerprint, project_files

FOLDERS = ("common", "log", "xml", "transfer", "permissions", "engine", "control", "advice", "tool", "open")
VERDICTS = preparation.FOLDER / "verdicts.jsonl"


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/mutate",
                                     description="Changes src/ in one place at a time and looks whether a test notices.")
    parser.add_argument("--seed", type=int, help="chooses the changes; without one it is drawn, and printed")
    parser.add_argument("--count", type=int, default=300, help="how many changes (300)")
    parser.add_argument("--folder", action="append", choices=FOLDERS, help="of this folder of src/ only; may be given again")
    parser.add_argument("--jobs", type=int, default=2, help="how many workplaces (2), each for a processor")
    parser.add_argument("--list", action="store_true", help="says which changes would be tried")
    parser.add_argument("--only", nargs="+", metavar="ID", help="these changes, and no others")
    parser.add_argument("--resume", action="store_true", help="judges no change twice while the sources are the same")
    parser.add_argument("--leave-out", action="append", default=[], metavar="PROGRAM",
                        help="does without this test program, torture_tests for example; may be given again")
    return parser.parse_args()


class Work:
    """The mutants that are still to be judged and the verdicts so far, shared by the workplaces."""

    def __init__(self, draw, known, state, left_out):
        self.draw = draw
        self.known = known
        self.state = state
        self.left_out = left_out
        self.lock = threading.Lock()
        self.verdicts = []
        self.baselines = {}
        self.failure = None
        self.start = time.monotonic()

    def next(self, file):
        """The next mutant without a verdict; None when there is none, or when the tool failed."""
        with self.lock:
            while not self.failure:
                mutant = self.draw.next(file)
                if not mutant or mutant.id not in self.known:
                    return mutant
                self._take(mutant, self.known[mutant.id])
            return None

    def add(self, mutant, verdict):
        with self.lock:
            with VERDICTS.open("a") as file:
                file.write(json.dumps({"state": self.state, "left out": self.left_out, **verdict.as_dict()}) + "\n")
            self._take(mutant, verdict)

    def fail(self, error):
        with self.lock:
            self.failure = self.failure or error

    def _take(self, mutant, verdict):
        self.verdicts.append(verdict)
        if verdict.result == "not compiled":
            self.draw.replace(mutant)
            return
        done = sum(verdict.result != "not compiled" for verdict in self.verdicts)
        passed = time.monotonic() - self.start
        say(f"[{done}/{self.draw.count} {passed:.0f} s] {report.line_of(verdict)}, {verdict.seconds:.1f} s")


def say(text):
    print(text, file=sys.stderr, flush=True)


def known_verdicts(state, left_out):
    """By mutant, of the same sources. What survived while a program was left out that is not left out now is not known."""
    known = {}
    for line in map(json.loads, VERDICTS.read_text().splitlines() if VERDICTS.exists() else ()):
        is_same, was_left_out = line.pop("state") == state, set(line.pop("left out"))
        if is_same and (line["result"] != "survived" or was_left_out <= set(left_out)):
            known[line["id"]] = Verdict(**line)
    return known


def choose(options):
    """The draw, with a seed of its own unless one is given."""
    if options.seed is None:
        options.seed = secrets.randbelow(10 ** 6)
    candidates = list(all_mutants(ROOT, options.folder or FOLDERS))
    if options.only:
        candidates = [mutant for mutant in candidates if mutant.id in options.only]
        if len(candidates) < len(set(options.only)):
            raise ToolError("the sources have no such change (a change's name holds for one state of its file)")
        options.count = len(candidates)
    return Draw(candidates, options.count, options.seed)


def judge_all(work, place, left_out):
    """Judges mutants in one workplace until there is none left."""
    judge = Judge(place, work.baselines[place], preparation.read_reach(left_out))
    mutant = work.next(None)
    while mutant:
        start = time.monotonic()
        result, test, tests = judge.judge(mutant)
        work.add(mutant, Verdict(mutant.id, mutant.file, mutant.line, mutant.place.operator, mutant.before,
                                 mutant.place.after, result, test, tests, round(time.monotonic() - start, 1)))
        mutant = work.next(mutant.file)


def work_in(work, place, names, is_reach_known, left_out):
    """What one workplace does. The first finds out which tests enter which function; the others wait for it, once built."""
    try:
        work.baselines[place] = preparation.prepare(place, names, work.state, left_out, is_reach_known, say)
        is_reach_known.wait()
        judge_all(work, place, left_out)
    except BaseException as error:  # it is raised again where all workplaces have come to their end
        work.fail(error)
        is_reach_known.set()


def run(options, draw):
    names = project_files()
    state = fingerprint(names)
    verdicts = known_verdicts(state, options.leave_out) if options.resume else {}
    work = Work(draw, verdicts, state, options.leave_out)
    processors = max(1, len(os.sched_getaffinity(0)) // options.jobs)
    places = [Workplace(number + 1, processors) for number in range(options.jobs)]
    is_reach_known = threading.Event()
    threads = [threading.Thread(target=work_in, args=(work, place, names, is_reach_known, options.leave_out), daemon=True)
               for place in places]
    try:
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    except KeyboardInterrupt as error:
        work.fail(error)
    finally:
        for place in places:
            place.abandon()
        summary = report.write(preparation.FOLDER, work.verdicts, options, state)
    if work.failure:
        raise work.failure
    print(summary)


def interrupt(*_):
    raise KeyboardInterrupt


def main():
    options = arguments()
    signal.signal(signal.SIGTERM, interrupt)
    try:
        draw = choose(options)
        print(f"seed {options.seed}", flush=True)
        if options.list:
            for mutant in draw.chosen():
                print(report.change_of(mutant.id, mutant.file, mutant.line, mutant.place.operator, mutant.before,
                                       mutant.place.after))
            return 0
        preparation.FOLDER.mkdir(parents=True, exist_ok=True)
        run(options, draw)
    except ToolError as error:
        say(f"error: {error}")
        return 1
    except KeyboardInterrupt:
        say("interrupted; --resume goes on")
        return 130
    return 0


if __name__ == "__main__":
    sys.exit(main())
