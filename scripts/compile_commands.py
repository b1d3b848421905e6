"""How the build compiles a file, read from the build folder's compile_commands.json."""

import json
import pathlib
import shlex

from cached_jobs import ROOT


class Compilation:
    """The compiler and the arguments that matter to a reader of the file: macros, include folders, language, warnings. What
    makes the compiler take the headers that were compiled beforehand stands apart. `folder` is the project's, with the
    CMakeLists.txt that names the file: the file itself may be one that includes several of the folder."""

    def __init__(self, entry):
        words = shlex.split(entry["command"])
        self.file = pathlib.Path(entry["file"]).resolve()
        self.compiler = words[0]
        self.arguments = []
        self.precompiled = []
        words = iter(words[1:])
        for word in words:
            if word == "-c":
                next(words)
            elif word == "-o":
                self.folder = ROOT / next(words).split("/CMakeFiles/")[0]
            elif word == "-include":
                self.precompiled += [word, next(words)]
            elif word == "-Winvalid-pch":
                self.precompiled.append(word)
            elif not word.startswith("-ffile-prefix-map"):
                self.arguments.append(word)

    def include_folders(self):
        attached = [word[2:] for word in self.arguments if word.startswith("-I")]
        separate = [folder for word, folder in zip(self.arguments, self.arguments[1:]) if word == "-isystem"]
        return tuple(map(pathlib.Path, attached + separate))


def all_compilations(width):
    """Those of C++ files; not of resources, and not of the precompiled headers."""
    entries = json.loads((ROOT / "build" / width / "compile_commands.json").read_text())
    return [Compilation(entry) for entry in entries
            if entry["file"].endswith((".cpp", ".cxx")) and not entry["file"].endswith(".hxx.cxx")]


def compilations(width, *folders):
    """The compilations of the C++ files below the given folders of the project, in the order of their names."""
    wanted = [ROOT / folder for folder in folders]
    return sorted((entry for entry in all_compilations(width)
                   if entry.file.suffix == ".cpp" and any(folder in entry.file.parents for folder in wanted)),
                  key=lambda entry: entry.file)


def compilation_of_each_folder(width):
    """One of the compilations of each folder with a CMakeLists.txt, with precompiled headers where there is one."""
    return {entry.folder: entry for entry in sorted(all_compilations(width), key=lambda entry: len(entry.precompiled))}
