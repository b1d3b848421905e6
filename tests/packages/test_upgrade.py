"""From one version to another, and back to the same."""

import pathlib
import subprocess
import time

from cases import Case
from machine import windows_path
from releases import EARLIER, LATER, VERSION, package

# Has the module loaded until the share has a file called stop. The script host cannot sleep here; what it starts can wait.
HOLDER = """
var files = new ActiveXObject("Scripting.FileSystemObject");
var shell = new ActiveXObject("WScript.Shell");
var control = new ActiveXObject("Norvik.AXNorvik");
files.CreateTextFile("C:\\\\Share\\\\held").Close();
while (!files.FileExists("C:\\\\Share\\\\stop")) shell.Run("ping -n 2 127.0.0.1", 0, true);
"""


class UpgradeTest(Case):
    def entries(self):
        """The versions in Programs and Features."""
        uninstall = "software\\microsoft\\windows\\currentversion\\uninstall\\"
        return sorted(values["DisplayVersion"] for key, values in self.new_keys().items() if key.startswith(uninstall))

    def test_goes_from_version_to_version_and_never_back(self):
        self.install(EARLIER)
        self.permit()
        for version in (VERSION, LATER):
            self.install(version)
            self.expect_modules(version)
            self.expect_running()
        self.install(VERSION, code=1603)
        self.assertIn("LaunchConditions. Return value 0.", self.machine.log())
        self.expect_modules(LATER)
        self.expect_running()
        self.assertEqual([LATER], self.entries())

    def test_the_same_version_again_repairs(self):
        self.install()
        expected = self.new_keys()
        module = self.machine.path(self.folders()[self.width], "norvik.dll")
        module.unlink()
        self.machine.windows("reg", "delete", "HKLM\\Software\\Classes\\Norvik.AXNorvik", "/f")
        self.expect_no_control()
        self.install()
        self.expect_modules(VERSION)
        self.expect_files()
        self.assertEqual(expected, self.new_keys())

    def test_a_minor_upgrade_keeps_the_product(self):
        self.install()
        self.permit()
        self.install(LATER, "REINSTALL=ALL", "REINSTALLMODE=vomus", kind="-minor")
        self.expect_modules(LATER)
        self.expect_running()
        self.assertEqual([LATER], self.entries())
        self.uninstall(VERSION)
        self.expect_no_control()

    def test_a_module_in_use_is_replaced_at_the_next_start(self):
        self.install(EARLIER)
        self.permit()
        (self.machine.path("Share") / "hold.js").write_text(HOLDER, encoding="ascii")
        with subprocess.Popen(self.machine.command("cscript", "//nologo", "C:\\Share\\hold.js"), stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as holder:
            self.wait_for(self.machine.path("Share", "held"))
            self.install(VERSION, code=3010)
            self.assertIsNone(holder.poll(), "who holds the module was ended")
            self.machine.path("Share", "stop").touch()
            holder.wait(timeout=30)
        self.machine.restart()
        self.expect_modules(VERSION)
        self.expect_running()
        self.assertEqual([VERSION], self.entries())

    def wait_for(self, file: pathlib.Path):
        deadline = time.monotonic() + 30
        while not file.exists():
            self.assertLess(time.monotonic(), deadline, f"{file.name} never came")
            time.sleep(0.05)

    def test_a_signed_package_installs_signed_modules(self):
        self.install(VERSION, kind="-signed")
        self.permit()
        self.expect_running()
        self.expect_modules("signed")


class Upgrade32Test(Case):
    width = "x86"
    test_goes_from_version_to_version_and_never_back = UpgradeTest.test_goes_from_version_to_version_and_never_back
    entries = UpgradeTest.entries


class WrongMachineTest(Case):
    def expect_refusal(self, other, code):
        self.assertEqual(code, self.machine.installer("/i", windows_path(package(VERSION, other))))
        self.assertEqual({}, self.machine.installed())

    def test_the_package_for_32_bits_is_refused_on_64(self):
        self.expect_refusal("x86", 1603)
        self.assertIn("LaunchConditions. Return value 0.", self.machine.log())
        self.expect_clean_registry()


class WrongMachine32Test(Case):
    width = "x86"

    def test_the_package_for_64_bits_is_refused_on_32(self):
        WrongMachineTest.expect_refusal(self, "x64", 1633)
        self.expect_clean_registry()
