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
        lines.append(f"{folder or 'all':12} {len(mine):5} {counts['killed']:7} {counts['timed out']:10} {counts['survived']:9} "
                     f"{percent(counts):8.1f}")
    return "\n".join(lines)


def line_of(verdict):
    """One line about one mutant; texts of more than one line are folded."""
    before, after = (" ".join(text.split()) for text in (verdict.before, verdict.after))
    end = f" by {verdict.test}" if verdict.test else ""
    return f"{verdict.id} {verdict.file}:{verdict.line} {verdict.operator}: `{before}` -> `{after}`: {verdict.result}{end}"


def write(folder, verdicts, seed, state):
    counted = sorted((verdict for verdict in verdicts if verdict.result in COLUMNS), key=lambda verdict: (verdict.file, verdict.line, verdict.id))
    survivors = [verdict for verdict in counted if verdict.result == "survived"]
    parts = [f"seed {seed}, {len(verdicts) - len(counted)} more changes did not compile", table(counted)]
    if survivors:
        parts.append("Survivors:\n" + "\n".join(map(line_of, survivors)))
    parts.append("All:\n" + "\n".join(map(line_of, counted)))
    (folder / "report.txt").write_text("\n\n".join(parts) + "\n")
    content = {"seed": seed, "state": state, "mutants": [verdict.as_dict() for verdict in verdicts]}
    (folder / "report.json").write_text(json.dumps(content, indent=1))
    return "\n\n".join(parts[:-1])
