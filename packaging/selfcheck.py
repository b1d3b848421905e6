"""Makes the zip file of the self-check: all test programs of both widths, what they need beside them, and what runs them.

Usage: selfcheck.py BUILD_FOLDER ZIP VERSION EPOCH. BUILD_FOLDER holds x64 and x86, built. The zip file depends on nothing but what
goes into it and EPOCH, the time of its files in seconds since 1970.
"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile

from archives import write_zip

ROOT = pathlib.Path(__file__).resolve().parent.parent
WIDTHS = ("x64", "x86")
SUITES = "*_tests.exe"

# What the test programs start, beside their own cases.
COMPANIONS = ("interrupted_host.exe", "other_host.exe", "selfcheck.exe")

# What the test programs read of the project (NORVIK_PROJECT_FOLDER).
READ_BY_TESTS = ("README.md", "docs/*.md", "docs/*.json", "samples/**/*", "share/dtd/*", "share/page/*",
                 "tests/advice/messages.txt", "tests/decisions/*.json", "tests/fuzz/corpus/*/*", "tests/page/cases.js",
                 "tests/transfer/data/*.txt")

# What is opened with an editor, or read by the command interpreter, on Windows.
WINDOWS_TEXTS = ("selfcheck.cmd", "README.txt")


def suites_of(build_folder, width):
    return sorted(path.stem for path in (build_folder / width / "tests").glob(SUITES))


def suites_json(build_folder, version):
    """What there is to run, and which cases are not like the others."""
    suites = {width: suites_of(build_folder, width) for width in WIDTHS}
    for width, names in suites.items():
        if not names:
            raise FileNotFoundError(f"{build_folder / width / 'tests'} holds no test program")
    rules = json.loads((ROOT / "tests/selfcheck/rules.json").read_text(encoding="utf-8"))
    document = {"version": version, "suites": suites, "rules": rules}
    return (json.dumps(document, indent=1) + "\n").encode("utf-8")


def strip_of(folder):
    """The tool of a build folder's compiler that takes the symbols out of a program."""
    cache = (folder / "CMakeCache.txt").read_text(encoding="utf-8")
    return re.search(r"^CMAKE_STRIP:\w+=(.+)$", cache, re.MULTILINE)[1]


def strip(tool, source, target):
    """Copies a program without its symbols, which are most of it. -p keeps the time of now out of its head."""
    target.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run([tool, "-p", "-o", target, source], check=True)
    return target


def programs(build_folder, modules, width, folder):
    """The files of one width, by their names in the zip file. The module is taken as it is: it is what is under test."""
    built = build_folder / width
    tool = strip_of(built)
    files = {f"{width}/{name}": modules / name for name in ("norvik.dll", "norvik.exe", "norvikopen.exe")}
    for name in [*COMPANIONS, *(f"{suite}.exe" for suite in suites_of(build_folder, width))]:
        files[f"{width}/tests/{name}"] = strip(tool, built / "tests" / name, folder / width / name)
    return files


def windows_text(source, target):
    target.write_bytes(source.read_bytes().replace(b"\n", b"\r\n"))
    return target


def pages():
    """What the tests read of the project."""
    files = {}
    for pattern in READ_BY_TESTS:
        found = [path for path in ROOT.glob(pattern) if path.is_file()]
        if not found:
            raise FileNotFoundError(f"nothing in {ROOT} matches {pattern}")
        files.update({f"project/{path.relative_to(ROOT).as_posix()}": path for path in found})
    return files


def contents(build_folder, modules, version, folder):
    """All files, by their names in the zip file. Those that are made for it are made in the folder."""
    suites = folder / "suites.json"
    suites.write_bytes(suites_json(build_folder, version))
    files = {"suites.json": suites, "server/webserver.py": ROOT / "tests/support/webserver.py", **pages()}
    for name in WINDOWS_TEXTS:
        files[name] = windows_text(ROOT / "packaging/selfcheck" / name, folder / name)
    for width in WIDTHS:
        files.update(programs(build_folder, modules[width], width, folder))
    return files


def make_selfcheck(build_folder, out_zip, version, epoch, modules=None):
    """Writes the zip file. `modules` are the folders, by width, of the module and the programs when they are not those that were
    built, but signed copies. A file that is not built is an error, not a zip file without it."""
    build_folder = pathlib.Path(build_folder)
    modules = modules or {width: build_folder / width for width in WIDTHS}
    with tempfile.TemporaryDirectory() as folder:
        write_zip(out_zip, contents(build_folder, modules, version, pathlib.Path(folder)), epoch)


if __name__ == "__main__":
    make_selfcheck(sys.argv[1], sys.argv[2], sys.argv[3], int(sys.argv[4]))
