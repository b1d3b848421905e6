"""The permission file is the administrator's: it is placed when it is asked for, and left alone by everything else."""

import shutil

from cases import Case
from releases import EARLIER, LATER, VERSION


class PermissionTest(Case):
    def installed(self):
        return {name for name in self.machine.installed() if not name.endswith("permit.xml")}

    def test_none_is_installed_and_everything_is_refused(self):
        self.install()
        self.assertEqual([None] * len(self.folders()), self.permitted())
        self.assertEqual(("0x8000ffff", False), self.run_manifest())

    def test_one_is_placed_beside_each_module(self):
        shutil.copyfile(self.permissions["Placed"], self.machine.path("Share", "with blanks [1].xml"))
        self.install(VERSION, 'PERMITFILE="C:\\Share\\with blanks [1].xml"')
        self.assertEqual(["Placed"] * len(self.folders()), self.permitted())
        self.assertTrue(self.machine.path("Share", "with blanks [1].xml").exists(), "it is copied")
        self.expect_running()

    def test_one_that_is_there_is_left_alone_unless_another_is_asked_for(self):
        one, other = [["Placed"] * len(self.folders()), ["Elsewhere"] * len(self.folders())]
        self.install(EARLIER, "PERMITFILE=C:\\Share\\Placed.xml")
        self.permit("Elsewhere")
        self.install(EARLIER)
        self.assertEqual(other, self.permitted(), "a repair")
        self.install(VERSION)
        self.assertEqual(other, self.permitted(), "an upgrade")
        self.install(VERSION, "REINSTALL=ALL", "REINSTALLMODE=amus")
        self.assertEqual(other, self.permitted(), "a reinstallation of everything")
        self.install(VERSION, "PERMITFILE=C:\\Share\\Placed.xml")
        self.assertEqual(one, self.permitted(), "one that is asked for later")
        self.install(LATER, "PERMITFILE=C:\\Share\\Elsewhere.xml")
        self.assertEqual(other, self.permitted(), "one that is asked for with an upgrade")
        self.uninstall(LATER)
        self.assertEqual(other, self.permitted(), "after everything else is gone")
        self.assertEqual(set(), self.installed())
        self.expect_clean_registry()

    def expect_refusal(self, value, *told):
        self.install(VERSION, f"PERMITFILE={value}", code=1603)
        for text in told:
            self.assertIn(text, self.machine.log())
        self.assertEqual({}, self.machine.installed())

    def test_one_that_cannot_be_read_ends_the_installation_before_anything_is_changed(self):
        self.machine.path("Share", "empty.xml").touch()
        self.expect_refusal("C:\\Share\\missing.xml", '"C:\\Share\\missing.xml"', "(error 2)", "Nothing was changed.")
        self.expect_refusal("C:\\Share", '"C:\\Share"', "cannot be read")
        self.expect_refusal("C:\\Share\\empty.xml", "(error 38)")
        self.expect_refusal("permit.xml", 'has to be a full path, and "permit.xml" is none')
        self.expect_clean_registry()

    def test_one_that_cannot_be_read_leaves_the_earlier_version(self):
        self.install(EARLIER)
        self.permit()
        self.install(VERSION, "PERMITFILE=C:\\Share\\missing.xml", code=1603)
        self.expect_modules(EARLIER)
        self.assertEqual(["Placed"] * len(self.folders()), self.permitted())
        self.expect_running()


    def test_one_that_cannot_be_copied_takes_everything_back(self):
        folder = list(self.folders().values())[-1]
        self.machine.path(folder, "permit.xml").mkdir(parents=True)
        self.install(VERSION, "PERMITFILE=C:\\Share\\Placed.xml", code=1603)
        self.assertIn(f'could not be copied to "C:\\{str(folder).replace("/", chr(92))}\\permit.xml"', self.machine.log())
        self.assertEqual(set(), self.installed())
        self.expect_no_control()


class Permission32Test(PermissionTest):
    width = "x86"
