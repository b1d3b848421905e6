#!/usr/bin/env python3
"""measure.py ADDRESS [--quick]: measures round by round what scripts/bench reports, and writes the report.

ADDRESS is that of a web server for build/bench/web. Every round of every scenario is a process of its own; the contestants of a
scenario take their turns inside of it, each round another one first. The rounds of all scenarios are interleaved, so that what the
machine does meanwhile meets them all.
"""

import subprocess
import sys
import time
from collections import namedtuple

import environment
import report
from environment import ROOT

WEB = ROOT / "build" / "bench" / "web"
PROGRAM = "build/x64/bench/norvik_bench.exe"

Sizes = namedtuple("Sizes", "rounds large small small_files entries commands chains memory runs budget advice")
FULL = Sizes(rounds=9, large=100_000_000, small=4096, small_files=1000, entries=(10, 1000, 10_000),
             commands=(0, 1, 10, 100, 1000, 10_000), chains=(1000, 10_000, 100_000), memory=(1_000_000, 1_000_000_000), runs=100,
             budget=3000, advice=(10, 10_000, 100_000))
QUICK = Sizes(rounds=2, large=1_000_000, small=4096, small_files=20, entries=(10, 100, 200), commands=(0, 1, 10, 100, 200),
              chains=(1000, 10_000), memory=(1_000_000, 10_000_000), runs=10, budget=20,
              advice=(10, 100, 200))

# One transfer of a gigabyte tells as much about memory as nine.
MEMORY_ROUNDS = 5

# Checking a hundred thousand entries asks the system for as many folders, which takes its time.
ADVICE_ROUNDS = 3

# How often a round measures what anything disturbs. A local copy takes a tenth of a second, and a third more when the system has no
# memory at hand for it, whoever makes it: the fastest turn is the value of the round. Small files keep the disk busy.
TURNS_OF_COPIES = 9
SMALL_DOWNLOADS_IN_A_ROUND = 2


class Measurements:
    """The values of every scenario: {scenario: {name: [a value for each round]}}, and those of the turns that rounds consist of."""

    def __init__(self):
        self.values = {}
        self.turns = {}

    def add(self, scenario, name, value):
        self.values.setdefault(scenario, {}).setdefault(name, []).append(value)

    def run(self, scenario, command, *arguments):
        """One round of one scenario of the measuring program. Of several turns the fastest counts."""
        words = ["scripts/run-windows-program", PROGRAM, command, *map(str, arguments)]
        done = subprocess.run(words, cwd=ROOT, stdout=subprocess.PIPE, text=True, timeout=600, check=False)
        if done.returncode:
            sys.exit(f"error: {' '.join(words)} failed:\n{done.stdout}")
        turns = {}
        for line in done.stdout.splitlines():
            name, value = line.split("\t")
            turns.setdefault(name, []).append(float(value))
        for name, values in turns.items():
            self.add(scenario, name, min(values))
            if len(values) > 1:
                self.turns.setdefault(scenario, {}).setdefault(name, []).append(values)


def make_web(sizes):
    """The served files: named by number, in folders named after their purpose. Those of the memory scenario are holes."""
    content = bytes(range(256)) * (sizes.large // 256 + 1)
    for folder, count, size in (("large", 1, sizes.large), ("small", sizes.small_files, sizes.small)):
        (WEB / folder).mkdir()
        for number in range(count):
            (WEB / folder / f"{number}.bin").write_bytes(content[:size])
    for size in sizes.memory:
        (WEB / f"memory{size}").mkdir()
        with (WEB / f"memory{size}" / "0.bin").open("wb") as file:
            file.truncate(size)


def measure_curl(results, scenario, source, count):
    """All files by one curl, as long as its process lives. What it writes goes as soon as it is measured."""
    folder = ROOT / "build" / "bench" / "curl"
    folder.mkdir(exist_ok=True)
    words = ["curl", "--disable", "--silent", "--show-error", "--fail", "--noproxy", "*", "--output", f"{folder}/#1.bin",
             f"{source}[0-{count - 1}].bin"]
    start = time.perf_counter()
    subprocess.run(words, timeout=600, check=True)
    results.add(scenario, "curl", time.perf_counter() - start)
    for number in range(count):
        (folder / f"{number}.bin").unlink()


def measure_downloads(results, scenario, number, source, count, size):
    """The curl comes before the others in one round and behind them in the next."""
    if number % 2:
        measure_curl(results, scenario, source, count)
    results.run(scenario, "downloads", number, source, count, size)
    if number % 2 == 0:
        measure_curl(results, scenario, source, count)


def measure_round(results, sizes, address, number):
    measure_downloads(results, "large download", number, f"{address}/large/", 1, sizes.large)
    for turn in range(SMALL_DOWNLOADS_IN_A_ROUND):
        measure_downloads(results, "small downloads", number * SMALL_DOWNLOADS_IN_A_ROUND + turn, f"{address}/small/",
                          sizes.small_files, sizes.small)
    results.run("local copy", "copies", number, sizes.large, TURNS_OF_COPIES)
    results.run("controls", "controls", 10 * sizes.budget, *rotated(sizes.entries, number))
    results.run("runs", "runs", sizes.budget, *rotated(sizes.commands, number))
    results.run("chains", "chains", *sizes.chains)
    results.run("handles", "handles", sizes.runs)
    if number < ADVICE_ROUNDS:
        results.run("advice", "advice", *rotated(sizes.advice, number))
    if number < MEMORY_ROUNDS:
        for size in rotated(sizes.memory, number):
            results.run(f"memory {size}", "memory", f"{address}/memory{size}/", size)


def rotated(items, number):
    """The same items, with another one first in each round."""
    first = number % len(items)
    return items[first:] + items[:first]


def main():
    address, is_quick = sys.argv[1], sys.argv[2:] == ["--quick"]
    sizes = QUICK if is_quick else FULL
    facts = environment.facts()
    make_web(sizes)
    results = Measurements()
    start = time.monotonic()
    for number in range(sizes.rounds):
        print(f"Round {number + 1} of {sizes.rounds}", file=sys.stderr, flush=True)
        measure_round(results, sizes, address, number)
    facts["seconds of measuring"] = round(time.monotonic() - start)
    facts["load average after it"] = environment.load()
    report.write(results, sizes, facts, is_quick)


if __name__ == "__main__":
    main()
