"""What the cases of installing share: a machine for each, and what is asked of it."""

import os
import shutil
import unittest

from machine import PREFIXES, PROGRAM_FILES, PROGRAM_FILES_X86, ROOT, Machine, read_registry, windows_path
from releases import VERSION, WORK, builds, code_of, contents, installer, package, product

SCRIPT = windows_path(ROOT / "samples/page.js")
CLASS_UNKNOWN = "0x800a01ad"

PERMISSIONS = """<?xml version="1.0"?>
<!DOCTYPE VantorPermissions SYSTEM "permit.dtd">
<VantorPermissions version="1.0">
  <Source><URL>C:\\Share\\</URL><Extension>txt</Extension></Source>
  <Destination><Path>C:\\{folder}</Path></Destination>
</VantorPermissions>
"""

MANIFEST = """<?xml version="1.0"?>
<!DOCTYPE VantorManifest SYSTEM "manifest.dtd">
<VantorManifest version="1.0">
  <Copy><Source>C:\\Share\\notes.txt</Source><Destination><Path>C:\\Placed</Path></Destination></Copy>
</VantorManifest>
"""


class Case(unittest.TestCase):
    """A case with a machine of its own, which has a share with a manifest and two permission files."""

    width = "x64"

    @property
    def machines(self):
        """The widths of the machines that the case needs."""
        return (self.width,)

    def setUp(self):
        self.machine = Machine(self.width, WORK / f"prefix-{os.getpid()}-{self.width}")
        self.addCleanup(shutil.rmtree, self.machine.folder)
        self.addCleanup(self.machine.end)
        share = self.machine.path("Share")
        share.mkdir()
        (share / "setup.xml").write_text(MANIFEST, encoding="ascii")
        (share / "notes.txt").write_text("some notes", encoding="ascii")
        self.permissions = {name: share / f"{name}.xml" for name in ("Placed", "Elsewhere")}
        for name, file in self.permissions.items():
            file.write_text(PERMISSIONS.format(folder=name), encoding="ascii")

    def folders(self):
        """Where the modules of each width go when nobody says otherwise."""
        if self.width == "x86":
            return {"x86": PROGRAM_FILES / "Norvik"}
        return {"x64": PROGRAM_FILES / "Norvik", "x86": PROGRAM_FILES_X86 / "Norvik"}

    def install(self, version=VERSION, *words, kind="", code=0):
        """Installs a package, and looks at the installer's exit code."""
        found = self.machine.installer("/i", windows_path(package(version, self.width, kind)), *words)
        self.assertEqual(code, found, self.machine.log()[-2000:])

    def uninstall(self, version=VERSION, *words):
        self.assertEqual(0, self.machine.installer("/x", product.product_code(version, self.width), *words))

    def permit(self, name="Placed"):
        """Puts a permission file beside each module, as an administrator does by hand."""
        for folder in self.folders().values():
            shutil.copyfile(self.permissions[name], self.machine.path(folder, "permit.xml"))

    def permitted(self):
        """The permission files beside the modules: which one each is, None where there is none, its text where it is another."""
        names = {file.read_text(encoding="ascii"): name for name, file in self.permissions.items()}
        found = []
        for folder in self.folders().values():
            file = self.machine.path(folder, "permit.xml")
            text = file.read_text(encoding="ascii") if file.exists() else None
            found.append(names.get(text, text))
        return found

    def run_manifest(self):
        """What cscript says of running the share's manifest, and whether its file was placed."""
        placed = self.machine.path("Placed", "notes.txt")
        placed.unlink(missing_ok=True)
        code = self.machine.windows("cscript", "//nologo", SCRIPT, "C:\\Share\\setup.xml").strip()
        return code, placed.exists()

    def expect_running(self):
        self.assertEqual(("0x00000000", True), self.run_manifest())

    def expect_no_control(self):
        self.assertEqual((CLASS_UNKNOWN, False), self.run_manifest())

    def expect_modules(self, version):
        """The modules are those of the version, byte for byte."""
        for width, folder in self.folders().items():
            self.assertEqual(code_of(version, width),
                             self.machine.path(folder, "norvik.dll").read_bytes(), f"{folder} has not the module of {version}")

    def items(self):
        """What the package of this version installs, by the paths on the machine."""
        folder = {"INSTALLDIR": PROGRAM_FILES / "Norvik", "INSTALLDIR32": PROGRAM_FILES_X86 / "Norvik"}
        items = installer.Package(self.width, VERSION, builds(VERSION)).items
        return {str(folder[item.folder] / item.path): item for item in items}

    def expect_files(self, features=None, and_also=()):
        """Just these files are there, byte for byte those of the package."""
        expected = {name: item for name, item in self.items().items() if not features or features & set(contents.features_of(item))}
        found = self.machine.installed()
        self.assertEqual(sorted([*expected, *and_also]), sorted(found))
        for name, item in expected.items():
            self.assertEqual(item.source.read_bytes(), found[name].read_bytes(), name)

    def new_keys(self):
        """What the registry's software has that a new machine has not, without what Windows Installer keeps for itself."""
        before = read_registry(PREFIXES[self.width] / "system.reg")
        return {key: values for key, values in self.machine.registry().items()
                if key.startswith("software\\") and before.get(key) != values and not is_installers(key)}

    def expect_clean_registry(self):
        self.assertEqual({}, self.new_keys())


def is_installers(key):
    return key.startswith(("software\\classes\\installer\\", "software\\microsoft\\windows\\currentversion\\installer\\"))
