"""How the build compiles a file, read from the build folder's compile_commands.json."""

import json
import pathlib
import shlex

from cached_jobs import ROOT


class Compilation:
    """The compiler and the arguments that matter to a reader of the file: macros, include folders, language, warnings. What
    makes the compiler take the headers that were compiled beforehand stands apart."""

    def __init__(self, entry):
        words = shlex.split(entry["command"])
        self.file = pathlib.Path(entry["file"]).resolve()
        self.compiler = words[0]
        self.arguments = []
        self.precompiled = []
        words = iter(words[1:])
        for word in words:
            if word in ("-o", "-c"):
                next(words)
            elif word == "-include":
                self.precompiled += [word, next(words)]
            elif not word.startswith("-ffile-prefix-map"):
                self.arguments.append(word)

    def include_folders(self):
        attached = [word[2:] for word in self.arguments if word.startswith("-I")]
        separate = [folder for word, folder in zip(self.arguments, self.arguments[1:]) if word == "-isystem"]
        return tuple(map(pathlib.Path, attached + separate))


def compilations(width, *folders):
    """The compilations of the C++ files below the given folders of the project, in the order of their names."""
    path = ROOT / "build" / width / "compile_commands.json"
    entries = map(Compilation, json.loads(path.read_text()))
    wanted = [ROOT / folder for folder in folders]
    return sorted((entry for entry in entries
                   if entry.file.suffix == ".cpp" and any(folder in entry.file.parents for folder in wanted)),
                  key=lambda entry: entry.file)
