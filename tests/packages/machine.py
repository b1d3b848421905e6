"""A machine to install on: a copy of a ready-made Wine prefix, what is done on it, and what is on it afterwards."""

import functools
import os
import pathlib
import re
import shutil
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build"
PREFIXES = {"x64": BUILD / "wine-packages", "x86": BUILD / "wine-x86-packages"}  # where nothing else ever runs

PROGRAM_FILES = pathlib.PurePosixPath("Program Files")
PROGRAM_FILES_X86 = pathlib.PurePosixPath("Program Files (x86)")


def windows_path(path):
    """A path of this side, as Windows programs name it."""
    return "Z:" + str(path).replace("/", "\\")


def make_prefix(width, folder):
    """Copies the ready-made prefix. The system's own files are shared: nothing that is installed writes into them."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for entry in PREFIXES[width].iterdir():
        if entry.is_file():
            shutil.copy2(entry, folder)
    shutil.copytree(PREFIXES[width] / "dosdevices", folder / "dosdevices", symlinks=True)
    shutil.copytree(PREFIXES[width] / "drive_c", folder / "drive_c", symlinks=True, copy_function=os.link)


class Machine:
    def __init__(self, width, folder):
        self.width = width
        self.folder = folder
        make_prefix(width, folder)
        self.drive = folder / "drive_c"
        self.before = self.files()

    def command(self, *words):
        return [str(ROOT / "tests/packages/in-prefix"), self.width, str(self.folder), *words]

    def windows(self, *words, **options):
        """What a Windows program wrote."""
        # Wine's services keep the output of the first program open, so it goes to a file.
        output = self.folder / "output.txt"
        with output.open("wb") as file:
            subprocess.run(self.command(*words), stdout=file, stderr=subprocess.STDOUT, check=False, timeout=120, **options)
        return output.read_text(encoding="utf-8", errors="replace").replace("\r\n", "\n")

    def script(self, *lines):
        """What a command script wrote."""
        file = self.drive / "script.cmd"
        file.write_text("".join(f"@{line}\r\n" for line in lines), encoding="ascii", newline="")
        return self.windows("cmd", "/c", "C:\\script.cmd")

    def installer(self, *arguments):
        """The exit code of msiexec, which a shell of this side would see cut to eight bits, and none of its windows."""
        return self.installers(arguments)[0]

    def installers(self, *calls):
        """The exit codes of several calls."""
        lines = []
        for call in calls:
            words = " ".join(str(word) for word in call).replace("%", "%%")
            lines += [f"msiexec {words} /qn /l*v C:\\installer.log", "echo CODE %errorlevel%"]
        codes = [int(code) for code in re.findall(r"^CODE (-?\d+)", self.script(*lines), re.MULTILINE)]
        if len(codes) != len(calls):
            raise AssertionError(f"the installer told {len(codes)} codes for {len(calls)} calls")
        return codes

    def log(self):
        data = (self.drive / "installer.log").read_bytes()
        return data.decode("utf-16" if data[:2] == b"\xff\xfe" else "utf-8", errors="replace")

    def restart(self):
        self.windows("wineboot", "-r")
        self.end()

    def end(self):
        subprocess.run(self.command("end"), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True, timeout=60)

    def files(self):
        """All files of the drive but the system's, by their paths."""
        found = {}
        for path in self.drive.rglob("*"):
            name = path.relative_to(self.drive)
            if path.is_file() and (name.parts[0] != "windows" or name.parts[1] == "Installer"):
                found[str(name)] = path
        return found

    def installed(self):
        """The files below both Program Files that were not there before, by their paths."""
        return {name: path for name, path in self.files().items() if name not in self.before and name.startswith("Program Files")}

    def path(self, *parts):
        return self.drive.joinpath(*parts)

    def registry(self):
        """The machine's part of the registry: a dictionary of values by the keys' paths. What runs is ended for it."""
        self.end()
        return read_registry(self.folder / "system.reg")


def unescape(text):
    return re.sub(r"\\(.)", r"\1", text)


def read_registry(path):
    """The keys of a file of Wine's registry, in lower case, with their values by name; the default value's name is empty."""
    sections = path.read_text(encoding="utf-8").split("\n\n")
    return dict(read_key(section) for section in sections if section.startswith("["))


@functools.cache  # nearly all keys of all machines are those of a new one
def read_key(section):
    head, *lines = re.sub(r"\\\n *", "", section).splitlines()
    values = {}
    for line in lines:
        if match := re.match(r'(?:@|"((?:[^"\\]|\\.)*)")=(.*)', line):
            values[unescape(match[1] or "")] = unescape(match[2][1:-1]) if match[2].startswith('"') else match[2]
    return unescape(head[1:head.rindex("]")]).lower(), values
