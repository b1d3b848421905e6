"""Writes what became of the mutants: build/mutate/report.txt and report.json."""

import json

COLUMNS = ("killed", "timed out", "survived")


def percent(counts):
    made = sum(counts.values())
    return 100 * (counts["killed"] + counts["timed out"]) / made if made else 100.0


def table(verdicts):
    """A line for each folder and one for all."""
    lines = [f"{'folder':12} {'made':>5} {'killed':>7} {'timed out':>10} {'survived':>9} {'percent':>8}"]
    folders = list(dict.fromkeys(verdict.folder for verdict in sorted(verdicts, key=lambda verdict: verdict.folder)))
    for folder in [*folders, None]:
        mine = [verdict for verdict in verdicts if folder in (None, verdict.folder)]
        counts = {result: sum(verdict.result == result for verdict in mine) for result in COLUMNS}
        killed, hung, survived = counts.values()
        lines.append(f"{folder or 'all':12} {len(mine):5} {killed:7} {hung:10} {survived:9} {percent(counts):8.1f}")
    return "\n".join(lines)


def change_of(name, file, line, operator, before, after):
    """One line about one mutant; texts of more than one line are folded."""
    before, after = (" ".join(text.split()) for text in (before, after))
    return f"{name} {file}:{line} {operator}: `{before}` -> `{after}`"


def line_of(verdict):
    change = change_of(verdict.id, verdict.file, verdict.line, verdict.operator, verdict.before, verdict.after)
    return f"{change}: {verdict.result}{' by ' + verdict.test if verdict.test else ''}"


def write(folder, verdicts, options, state):
    counted = [verdict for verdict in verdicts if verdict.result in COLUMNS]
    counted.sort(key=lambda verdict: (verdict.file, verdict.line, verdict.id))
    survivors = [verdict for verdict in counted if verdict.result == "survived"]
    parts = [f"seed {options.seed}, {len(verdicts) - len(counted)} more changes did not compile", table(counted)]
    if options.leave_out:
        parts.insert(1, f"Left out: {' '.join(options.leave_out)}")
    if survivors:
        parts.append("Survivors:\n" + "\n".join(map(line_of, survivors)))
        parts.append("Again: scripts/mutate --only " + " ".join(verdict.id for verdict in survivors))
    parts.append("All:\n" + "\n".join(map(line_of, counted)))
    (folder / "report.txt").write_text("\n\n".join(parts) + "\n")
    mutants = [verdict.as_dict() for verdict in verdicts]
    content = {"seed": options.seed, "state": state, "left out": options.leave_out, "mutants": mutants}
    (folder / "report.json").write_text(json.dumps(content, indent=1))
    return "\n\n".join(parts[:-1])
