"""Draws mutants: which single changes of src/ are tried, from a seed."""

import random
from collections import Counter
from dataclasses import dataclass

import operators
from tokens import Source

LEAST = 3  # mutants of every folder that is asked for


@dataclass(frozen=True)
class Mutant:
    """One change of one file; `file` is a path from the project's root on."""

    file: str
    line: int
    place: operators.Place
    before: str
    function: tuple  # its first and last line; empty outside of functions

    @property
    def folder(self):
        return self.file.split("/")[1]

    @property
    def id(self):
        """Stays what it is while the line and what stands in front of it in the file do."""
        place = self.place
        return f"{operators.digest(self.file, place.begin, place.end, place.operator, place.after) % 16 ** 8:08x}"

    def apply(self, text):
        return text[:self.place.begin] + self.place.after + text[self.place.end:]


def mutants_of(file, text):
    source = Source(text)
    for place in operators.all_places(source):
        index = next(index for index, token in enumerate(source.tokens) if token.end > place.begin)
        function = source.function_of(index)
        lines = source.lines_of(function) if function else ()
        yield Mutant(file, source.line(place.begin), place, text[place.begin:place.end], lines)


def all_mutants(root, folders):
    """Every mutant of the folders, in the order of files and lines."""
    for folder in folders:
        for path in sorted((root / "src" / folder).glob("*")):
            if path.suffix in (".cpp", ".h"):
                yield from mutants_of(path.relative_to(root).as_posix(), path.read_text(encoding="utf-8"))


def weight(mutant):
    return operators.OPERATORS[mutant.place.operator][1]


def shares(candidates, count):
    """How many of `count` each folder gets: by the weight of its places, and never fewer than LEAST (or than it has)."""
    heavy, has = Counter(), Counter()
    for mutant in candidates:
        heavy[mutant.folder] += weight(mutant)
        has[mutant.folder] += 1
    total = sum(heavy.values())
    return {folder: min(has[folder], max(LEAST, round(count * heavy[folder] / total))) for folder in heavy}


def shuffled(candidates, seed):
    """The order in which mutants are drawn: the same for the same seed and sources, heavy ones likely first."""
    generator = random.Random(seed)
    keys = {mutant: generator.random() ** (1 / weight(mutant)) for mutant in candidates}
    return sorted(candidates, key=keys.get, reverse=True)


class Draw:
    """Hands out mutants file by file, so that little is built twice, and others in place of those that do not compile."""

    def __init__(self, candidates, count, seed):
        order = shuffled(candidates, seed)
        wanted = shares(candidates, count)
        chosen, self.spare = [], {folder: [] for folder in wanted}
        for mutant in order:
            if wanted[mutant.folder] > 0:
                wanted[mutant.folder] -= 1
                chosen.append(mutant)
            else:
                self.spare[mutant.folder].append(mutant)
        self.waiting = {}
        for mutant in chosen:
            self.waiting.setdefault(mutant.file, []).append(mutant)
        self.count = len(chosen)

    def chosen(self):
        """Those that wait, in the order of files and lines."""
        waiting = (mutant for group in self.waiting.values() for mutant in group)
        return sorted(waiting, key=lambda mutant: (mutant.file, mutant.place.begin))

    def next(self, file):
        """The next mutant: of the same file while there is one, else of the file that has most; None when all are out."""
        if not self.waiting:
            return None
        if file not in self.waiting:
            file = max(self.waiting, key=lambda name: (len(self.waiting[name]), name))
        mutant = self.waiting[file].pop(0)
        if not self.waiting[file]:
            del self.waiting[file]
        return mutant

    def replace(self, mutant):
        """Draws another one of the folder in place of one that does not compile."""
        if self.spare[mutant.folder]:
            other = self.spare[mutant.folder].pop(0)
            self.waiting.setdefault(other.file, []).append(other)
        else:
            self.count -= 1
