"""Makes the table, the JSON file, the chart and the verdicts from what was measured."""

import json
import re
import statistics

import chart
import environment
from environment import ROOT

PAGE = ROOT / "docs" / "performance.md"
BEGIN, END = "<!-- results: begin -->\n", "<!-- results: end -->\n"


class Results:
    """The medians of what was measured, and the ratios between them."""

    def __init__(self, measured, sizes):
        self.values = measured.values
        self.turns = measured.turns
        self.sizes = sizes
        self.targets = []

    def median(self, scenario, name):
        return statistics.median(self.values[scenario][name])

    def spread(self, scenario, name):
        """How far the middle half of the values lies apart, as a part of their median."""
        values = self.values[scenario][name]
        low, _, high = statistics.quantiles(values, n=4, method="inclusive")
        return (high - low) / statistics.median(values)

    def throughput(self, scenario, name):
        """Against the bare loop, of which each round had its own."""
        values = self.values[scenario]
        return statistics.median(bare / own for bare, own in zip(values["bare"], values[name]))

    def each_of(self, scenario, count, suffix, without=None):
        """The values of `count` items, in each round; if need be without those of another thing."""
        values = self.values[scenario]
        other = values[f"{count}{without}"] if without else [0] * len(values[f"{count}{suffix}"])
        return [value - less for value, less in zip(values[f"{count}{suffix}"], other)]

    def each_per_item(self, scenario, count, suffix="", without=None):
        """What one of `count` items adds to a thing with the fewest of them, in each round."""
        least = min(int(name.split()[0]) for name in self.values[scenario])
        rounds = zip(self.each_of(scenario, count, suffix, without), self.each_of(scenario, least, suffix, without))
        return [(many - few) / (count - least) for many, few in rounds]

    def per_item(self, scenario, count, suffix=""):
        return statistics.median(self.each_per_item(scenario, count, suffix))

    def growth(self, scenario, counts, suffix="", without=None):
        """How much more an item costs among the second of the counts than among the first: the median of the rounds."""
        few, many = (self.each_per_item(scenario, count, suffix, without) for count in counts)
        return statistics.median(b / a for a, b in zip(few, many))

    def growth_of_all(self, scenario, counts, suffix):
        """The same of the whole time, each item with its share of what is there without any."""
        few, many = counts
        rounds = zip(self.values[scenario][f"{few}{suffix}"], self.values[scenario][f"{many}{suffix}"])
        return statistics.median((b / many) / (a / few) for a, b in rounds)

    def aim(self, name, value, limit, is_reached):
        self.targets.append({"target": name, "value": round(value, 4), "limit": limit, "reached": is_reached})

    def check_targets(self):
        for scenario, what in (("large download", "one large file"), ("small downloads", "many small files"),
                               ("local copy", "local copy")):
            throughput = self.throughput(scenario, "module")
            self.aim(f"throughput of the module's transfer against the bare loop, {what}", throughput, ">= 0.97",
                     throughput >= 0.97)
        few, many = self.sizes.commands[-2:]
        for suffix in ("", " debug"):
            ratio = self.growth("runs", (few, many), suffix)
            self.aim(f"cost per command at {many:,} against {few:,}{logging(suffix)}", ratio, "<= 1.1", ratio <= 1.1)
        few, many = self.sizes.entries[-2:]
        ratio = self.growth("controls", (few, many))
        self.aim(f"cost per permission entry at {many:,} against {few:,}", ratio, "<= 1.1", ratio <= 1.1)
        few, many = self.sizes.advice[-2:]
        ratio = self.growth("advice", (few, many), " check")
        self.aim(f"cost per entry of norvik check at {many:,} against {few:,}", ratio, "<= 1.2", ratio <= 1.2)
        ratio = self.growth_of_all("advice", (few, many), " program")
        self.aim(f"cost per entry of norvik explain at {many:,} against {few:,}, its process included", ratio, "<= 1.2",
                 ratio <= 1.2)
        ratio = self.growth("advice", (few, many), " explain", " reading")
        self.aim("the same inside a process, without what the parser takes to read as many bytes", ratio, "<= 1.2", ratio <= 1.2)
        values = self.values["advice"]
        ratio = statistics.median(own / control for own, control in zip(values[f"{few} explain"], values[f"{few} control"]))
        self.aim(f"explaining a refusal with {few:,} entries against creating a control", ratio, "<= 1.5", ratio <= 1.5)
        small, large = (self.median(f"memory {size}", "working set") for size in self.sizes.memory)
        grown = (large - small) / 2**20
        self.aim(f"MiB of peak memory that {size_text(self.sizes.memory[1])} takes beyond {size_text(self.sizes.memory[0])}",
                 grown, "<= 1", grown <= 1)
        grown = self.median("handles", str(self.sizes.runs)) - self.median("handles", "1")
        self.aim(f"handles that {self.sizes.runs} runs leave open beyond those of one", grown, "<= 0", grown <= 0)


def logging(suffix):
    return ", debug logging " + ("on" if suffix else "off")


def size_text(size):
    for unit, name in ((10**9, "GB"), (10**6, "MB")):
        if size >= unit:
            return f"{size // unit} {name}"
    return f"{size:,} bytes"


def time_text(seconds):
    for unit, name in ((1, "s"), (1e-3, "ms"), (1e-6, "µs")):
        if seconds >= unit:
            return f"{seconds / unit:.3g} {name}"
    return f"{seconds / 1e-9:.3g} ns"


def table(heads, rows):
    lines = [heads, ["---"] + ["---:"] * (len(heads) - 1), *rows]
    return "".join("| " + " | ".join(map(str, cells)) + " |\n" for cells in lines) + "\n"


LABELS = {
    "module": "the module's transfer (`FetchURL`)",
    "run": "a run of the built DLL",
    "bare": "the bare 4 KiB loop",
    "URLDownloadToFile": "`URLDownloadToFile`",
    "CopyFile": "`CopyFile`",
    "curl": "native `curl` (its process)",
}


def transfers(results, scenario, size):
    names = [name for name in LABELS if name in results.values[scenario]]
    rows = []
    for name in names:
        seconds = results.median(scenario, name)
        rows.append([LABELS[name], time_text(seconds), f"{size / seconds / 1e6:,.0f} MB/s", f"{results.throughput(scenario, name):.3f}",
                     f"{results.spread(scenario, name):.1%}"])
    return table(["", "time", "throughput", "of the bare loop's", "spread"], rows)


def controls(results):
    rows = []
    for entries in results.sizes.entries:
        row = [f"{entries:,}"]
        for suffix in ("", " debug"):
            row.append(time_text(results.median("controls", f"{entries}{suffix}")))
            row.append(time_text(results.per_item("controls", entries, suffix)) if entries != results.sizes.entries[0] else "")
        rows.append(row)
    return table(["entries", "debug off", "each further entry", "debug on", "each further entry"], rows)


def advice(results):
    names = ("control", "explain", "program", "check", "reading")
    rows = []
    for entries in results.sizes.advice:
        row = [f"{entries:,}"]
        for name in names:
            row.append(time_text(results.median("advice", f"{entries} {name}")))
            is_least = entries == results.sizes.advice[0]
            row.append("" if is_least else time_text(results.per_item("advice", entries, f" {name}")))
        rows.append(row)
    heads = ("creating a control", "explaining a refusal", "the same, as a program", "checking the file",
             "the parser alone, on one text of as many bytes")
    return table(["entries", *(cell for head in heads for cell in (head, "each further entry"))], rows)


def runs(results):
    rows = []
    for count in results.sizes.commands:
        row = [f"{count:,}"]
        for suffix in ("", " debug"):
            row.append(time_text(results.median("runs", f"{count}{suffix}")))
            row.append(time_text(results.per_item("runs", count, suffix)) if count else "")
        rows.append(row)
    return table(["commands", "debug off", "per command", "debug on", "per command"], rows)


def chains(results):
    rows = [[f"{count:,}", time_text(seconds), time_text(seconds / count)]
            for count in results.sizes.chains for seconds in [results.median("chains", str(count))]]
    return table(["items", "time", "per item"], rows)


def memory(results):
    rows = [[size_text(size), *(f"{results.median(f'memory {size}', name) / 2**20:.2f} MiB" for name in ("working set", "pagefile"))]
            for size in results.sizes.memory]
    return table(["transferred", "peak working set", "peak of private memory"], rows)


def handles(results):
    rows = [[name, f"{results.median('handles', name):g}"] for name in results.values["handles"]]
    return table(["runs", "handles of the process"], rows)


def verdicts(results):
    rows = [[target["target"], f"{target['value']:g}", target["limit"], "yes" if target["reached"] else "**no**"]
            for target in results.targets]
    return table(["target", "measured", "limit", "reached"], rows)


def tables(results, facts, picture):
    sizes = results.sizes
    all_small = sizes.small_files * sizes.small
    return "".join((
        "### Targets\n\n", verdicts(results),
        f"![The times of the transfers]({picture})\n\n",
        f"### Download of {size_text(sizes.large)}\n\n", transfers(results, "large download", sizes.large),
        f"### Download of {sizes.small_files:,} files of {sizes.small:,} bytes\n\n", transfers(results, "small downloads", all_small),
        f"### Local copy of {size_text(sizes.large)}\n\n", transfers(results, "local copy", sizes.large),
        "### A control, created and destroyed\n\n", controls(results),
        "### What norvik.exe says of a permission file\n\n", advice(results),
        "### A run\n\n", runs(results),
        "### Deleting a chain\n\n", chains(results),
        "### Memory of one run in a process of its own\n\n", memory(results),
        "### Handles\n\n", handles(results),
        "### Size of the DLL\n\n", table(["width", "bytes"], [[width, f"{size:,}"] for width, size in environment.module_sizes().items()]),
        "### Measured on\n\n", table(["", ""], [[name, value] for name, value in facts.items()]))).rstrip() + "\n"


def as_json(results, facts):
    medians = {scenario: {name: results.median(scenario, name) for name in values} for scenario, values in results.values.items()}
    ratios = {scenario: {name: results.throughput(scenario, name) for name in medians[scenario]}
              for scenario in ("large download", "small downloads", "local copy")}
    document = {"units": "seconds; bytes for memory and sizes; handles", "environment": facts, "sizes": results.sizes._asdict(),
                "targets": results.targets, "throughput against the bare loop": ratios, "medians": medians,
                "bytes of the DLL": environment.module_sizes(), "values of every round": results.values,
                "turns of every round": results.turns}
    text = json.dumps(document, indent=1, ensure_ascii=False)
    return re.sub(r"\[[^][{]*\]", lambda numbers: " ".join(numbers.group().split()), text) + "\n"  # a line for each list


def chart_groups(results):
    sizes = results.sizes
    for scenario, title in (("large download", f"Download of {size_text(sizes.large)}"),
                            ("small downloads", f"Download of {sizes.small_files:,} files of {sizes.small:,} bytes"),
                            ("local copy", f"Local copy of {size_text(sizes.large)}")):
        bars = [(LABELS[name].replace("`", ""), results.values[scenario][name]) for name in LABELS if name in results.values[scenario]]
        yield title, bars


def write(measured, sizes, facts, is_quick):
    results = Results(measured, sizes)
    results.check_targets()
    if is_quick:
        folder = page = ROOT / "build" / "bench" / "quick"
        page = folder / "performance.md"
        old, picture = f"Quick: {sizes.rounds} rounds of small sizes. These numbers say nothing.\n\n{BEGIN}{END}", "chart.svg"
    else:
        folder, page = PAGE.parent / "performance", PAGE
        old, picture = page.read_text(), "performance/chart.svg"
    folder.mkdir(exist_ok=True)
    before, _, rest = old.partition(BEGIN)
    after = rest.partition(END)[2]
    body = tables(results, facts, picture)
    page.write_text(f"{before}{BEGIN}\n{body}\n{END}{after}")
    (folder / "results.json").write_text(as_json(results, facts))
    (folder / "chart.svg").write_text(chart.draw(list(chart_groups(results))))
    print(body)
    for target in results.targets:
        if not target["reached"]:
            print(f"MISSED: {target['target']}: {target['value']:g}, to be {target['limit']}")
    print(f"{'QUICK, not to be believed. ' if is_quick else ''}Written to {folder.relative_to(ROOT)} and {page.relative_to(ROOT)}")
