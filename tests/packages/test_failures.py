"""Installations that cannot be: they end with a code, and leave the machine as it was."""

import os

from cases import Case
from machine import windows_path
from releases import EARLIER, VERSION, package


class FailureTest(Case):
    def expect_nothing(self):
        self.assertEqual({}, self.machine.installed())
        self.expect_clean_registry()

    def test_a_folder_that_nobody_can_write_to(self):
        os.symlink("/proc", self.machine.folder / "dosdevices/r:")
        self.install(VERSION, "INSTALLDIR=R:\\Norvik", code=1603)
        self.expect_nothing()

    def test_a_file_where_the_folder_should_be(self):
        self.machine.path(self.folders()["x64"]).write_text("a file", encoding="ascii")
        self.install(code=1603)
        self.assertEqual("a file", self.machine.path(self.folders()["x64"]).read_text(encoding="ascii"))
        self.expect_clean_registry()

    def test_a_folder_where_the_module_should_be(self):
        self.machine.path(self.folders()["x64"], "norvik.dll").mkdir(parents=True)
        self.install(code=1603)
        self.expect_nothing()

    def test_a_package_that_is_damaged_or_missing(self):
        self.install(EARLIER)
        self.permit()
        data = package(VERSION).read_bytes()
        for name, content in {"junk": b"nothing that anybody could install", "cut": data[:len(data) // 3]}.items():
            file = self.machine.path("Share", f"{name}.msi")
            file.write_bytes(content)
            self.assertNotEqual(0, self.machine.installer("/i", windows_path(file)), name)
        self.assertNotEqual(0, self.machine.installer("/i", "C:\\Share\\none.msi"))
        self.expect_modules(EARLIER)
        self.expect_running()
