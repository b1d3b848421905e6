"""Installing, choosing and removing: what is on the machine afterwards, and that the control works."""

from cases import Case
from machine import PROGRAM_FILES, PROGRAM_FILES_X86
from releases import EARLIER, VERSION, product


class InstallTest(Case):
    def test_installs_all_features_runs_a_manifest_and_leaves_nothing(self):
        self.install()
        self.expect_files()
        self.permit()
        self.expect_running()
        for folder in self.folders().values():
            self.machine.path(folder, "permit.xml").unlink()
        self.uninstall()
        self.assertEqual({}, self.machine.installed())
        for folder in self.folders().values():
            self.assertFalse(self.machine.path(folder).exists(), f"{folder} is left")
        self.expect_no_control()
        self.expect_clean_registry()

    def test_tells_programs_and_features_about_itself(self):
        self.install()
        code = product.product_code(VERSION, self.width).lower()
        entry = self.machine.registry()[f"software\\microsoft\\windows\\currentversion\\uninstall\\{code}"]
        expected = {"DisplayName": "Norvik", "DisplayVersion": VERSION, "Publisher": "Quorvane", "NoModify": "dword:00000001",
                    "URLInfoAbout": product.project("HOMEPAGE_URL"), "InstallLocation": f"C:\\{PROGRAM_FILES}\\Norvik\\"}
        self.assertEqual(expected, {name: entry.get(name) for name in expected})


class Install32Test(InstallTest):
    width = "x86"


class FeatureTest(Case):
    def test_some_features_and_the_others_later(self):
        self.install(VERSION, "ADDLOCAL=Module32,Program")
        self.expect_files({"Module32", "Program"})
        self.expect_no_control()
        self.install(VERSION, "ADDLOCAL=Module64,Documents")
        self.expect_files({"Module64", "Module32", "Program", "Documents"})
        self.permit_64()
        self.expect_running()
        permit = [str(PROGRAM_FILES / "Norvik/permit.xml")]
        self.install(VERSION, "REMOVE=Documents")
        self.expect_files({"Module64", "Module32", "Program"}, and_also=permit)
        self.install(VERSION, "REMOVE=Module64,Program")
        self.expect_files({"Module32"}, and_also=permit)
        self.expect_no_control()
        keys = self.new_keys()
        self.assertIn("software\\classes\\norvik.axnorvik", keys, "both modules need it")
        self.assertFalse([key for key in keys if key.startswith("software\\classes\\clsid\\")])
        self.assertTrue([key for key in keys if key.startswith("software\\classes\\wow6432node\\clsid\\")])

    def permit_64(self):
        text = self.permissions["Placed"].read_text(encoding="ascii")
        self.machine.path(PROGRAM_FILES, "Norvik", "permit.xml").write_text(text, encoding="ascii")

    def test_all_but_one_feature(self):
        self.install(VERSION, "ADDLOCAL=ALL", "REMOVE=Module32")
        self.expect_files({"Module64", "Program", "Documents"})
        self.assertFalse([key for key in self.new_keys() if key.startswith("software\\classes\\wow6432node\\clsid\\")])


class FolderTest(Case):
    FOLDERS = ("INSTALLDIR=C:\\Tools\\Wide", 'INSTALLDIR32="C:\\Tools\\Narrow 32"')

    def chosen(self):
        return sorted(path.relative_to(self.machine.drive).as_posix() for path in self.machine.path("Tools").glob("*/norvik.*"))

    def folders(self):
        return {"x64": PROGRAM_FILES.parent / "Tools/Wide", "x86": PROGRAM_FILES_X86.parent / "Tools/Narrow 32"}

    def test_chosen_folders_are_remembered_until_nothing_is_left(self):
        self.install(EARLIER, *self.FOLDERS)
        self.assertEqual(["Tools/Narrow 32/norvik.dll", "Tools/Wide/norvik.dll", "Tools/Wide/norvik.exe"], self.chosen())
        self.permit()
        self.expect_running()
        self.install(VERSION)
        self.expect_modules(VERSION)
        self.expect_running()
        self.machine.path("Tools/Wide/norvik.dll").unlink()
        self.install(VERSION)
        self.expect_modules(VERSION)
        self.uninstall()
        self.assertEqual([], self.chosen())
        self.assertEqual({}, self.machine.installed())
        self.expect_clean_registry()

    def test_an_upgrade_may_go_to_other_folders(self):
        self.install(EARLIER)
        self.install(VERSION, *self.FOLDERS)
        self.expect_modules(VERSION)
        self.assertEqual({}, self.machine.installed())
        self.permit()
        self.expect_running()

    def test_another_folder_is_refused_as_long_as_it_is_installed(self):
        self.install(VERSION, *self.FOLDERS)
        files = self.chosen()
        self.install(VERSION, "INSTALLDIR=C:\\Other", code=1603)
        self.assertIn('It is installed in "C:\\Tools\\Wide"', self.machine.log())
        self.install(VERSION, "INSTALLDIR32=C:\\Other", code=1603)
        self.assertIn('It is installed in "C:\\Tools\\Narrow 32"', self.machine.log())
        self.install(VERSION, *self.FOLDERS)
        self.assertEqual(files, self.chosen())
        self.assertFalse(self.machine.path("Other").exists())

    def test_one_folder_for_both_widths_is_refused(self):
        self.install(VERSION, "INSTALLDIR=C:\\Tools", "INSTALLDIR32=c:\\tools\\", code=1603)
        self.assertIn("INSTALLDIR and INSTALLDIR32 have to be two folders.", self.machine.log())
        self.assertFalse(self.machine.path("Tools").exists())
        self.expect_clean_registry()
