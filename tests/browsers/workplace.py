"""Where the tests with browsers work: the site, the installed programs, the screen. scripts/test-browsers prepares it."""

import os
import pathlib
import shutil
import subprocess
import time
import xml.sax.saxutils

ROOT = pathlib.Path(__file__).resolve().parents[2]
PART = pathlib.Path(os.environ["NORVIK_PART"])
WEB = PART / "web"
SECURE_WEB = PART / "secure"
AUTHORITY = ROOT / "build" / "tls" / "ca.pem"
PORTAL = os.environ["NORVIK_PORTAL"]
STRANGER = os.environ["NORVIK_STRANGER"]
SECURE = os.environ["NORVIK_SECURE"]
WINE = os.environ["NORVIK_WINE"].split()
DRIVE = pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c"
INSTALLED = DRIVE / "Program Files" / "Norvik"
PROGRAM = r"C:\Program Files\Norvik\norvikopen.exe"
DIALOGS = str(ROOT / "build" / "x64" / "tests" / "dialogs.exe")

HAPPENS_SECONDS = 20  # within this time, what must happen
NEVER_SECONDS = 4  # what has not happened by then does not

SAMPLE = "/stockroom/start.xml"
REFUSED = "/stockroom/refused.xml"

MANIFEST = """<?xml version="1.0"?>
<!DOCTYPE VantorManifest SYSTEM "manifest.dtd">
<VantorManifest version="1.0">
  <Copy><Source>%s</Source><Destination><Path>C:\\Stockroom</Path></Destination></Copy>
</VantorManifest>"""


class TooLate(AssertionError):
    """What must happen did not."""


def wait_until(condition, what, seconds=HAPPENS_SECONDS):
    """The first value of the condition that is true."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise TooLate(what)
        time.sleep(0.05)


def install(*more_sources):
    """The programs and the samples' permission file, which also permits these sources."""
    shutil.rmtree(INSTALLED, ignore_errors=True)
    INSTALLED.mkdir(parents=True)
    for name in ("norvik.dll", "norvik.exe", "norvikopen.exe"):
        shutil.copy(ROOT / "build" / "x64" / name, INSTALLED)
    permit = (ROOT / "samples" / "permit.xml").read_text().replace("http://apps.example.com", PORTAL)
    sources = "".join(f"<URL>{source}</URL>" for source in (SECURE + "/stockroom/", *more_sources))
    (INSTALLED / "permit.xml").write_text(permit.replace("<Extension>csv", sources + "<Extension>csv"))


def windows(*arguments, **options):
    """Starts a Windows program."""
    return subprocess.Popen([*WINE, *arguments], stdin=subprocess.DEVNULL, **options)


def run_windows(*arguments):
    """Runs a Windows program to its end: the exit code, and what it wrote. Wine's services would keep a pipe open."""
    output = PART / "output.txt"
    with open(output, "wb") as file:
        code = windows(*arguments, stdout=file, stderr=subprocess.DEVNULL).wait(60)
    return code, output.read_text(encoding="utf-8", errors="replace").replace("\r", "")


def copy_of(source):
    """A manifest that copies one file to C:\\Stockroom."""
    return MANIFEST % xml.sax.saxutils.escape(source)


class Requests:
    """What the site was asked for since the object was made, at all of its addresses: `METHOD URI` each."""

    def __init__(self):
        self.file = PART / "nginx" / "requests.log"
        self.seen = len(self.all())

    def all(self):
        return self.file.read_text().splitlines()

    def of_programs(self):
        """Without what browsers ask for by themselves: the pages, and their pictures."""
        return [line for line in self.all()[self.seen:] if " /stockroom/" in line]


class Application:
    """What the sample's manifest puts in place."""

    def __init__(self):
        user = next(folder for folder in (DRIVE / "users").iterdir() if folder.name != "Public")
        local = user / "AppData" / "Local" / "Vantor" / "Stockroom"
        common = DRIVE / "ProgramData" / "Vantor" / "Stockroom"
        temporary = [user / "Temp" / "Stockroom", user / "AppData" / "Local" / "Temp" / "Stockroom"]
        self.folders = [local, common, DRIVE / "Stockroom", *temporary]
        self.note = local / "opened.txt"

    def remove(self):
        for folder in self.folders:
            shutil.rmtree(folder, ignore_errors=True)

    def wait_until_opened(self):
        """Its own program has been started, and has written all of its note."""
        wait_until(lambda: self.note.exists() and "is open." in self.note.read_text(), "the application was not opened")

    def files(self):
        """Every file that is there, by name, with its bytes; without the note."""
        found = [file for folder in self.folders for file in folder.glob("*") if file != self.note]
        return {file.name: file.read_bytes() for file in found}

    @staticmethod
    def served_files():
        names = ("settings.ini", "prices.csv", "licence.txt", "notes.txt", "logo.png", "stockroom.vbs")
        return {name: (WEB / "stockroom" / "files" / name).read_bytes() for name in names}
