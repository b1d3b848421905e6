"""Links in browsers start manifests where the feature is named, or an administrator has switched it on by hand; nowhere else."""

from cases import Case
from machine import PROGRAM_FILES
from releases import VERSION

KEY = "software\\classes\\norvik"
COMMAND = f"{KEY}\\shell\\open\\command"
PROGRAM = f"C:\\{PROGRAM_FILES}\\Norvik\\norvikopen.exe"


class BrowserLaunchTest(Case):
    def registered(self):
        return {key: values for key, values in self.machine.registry().items() if key == KEY or key.startswith(KEY + "\\")}

    def switch(self, state):
        return self.machine.windows(f"C:\\{PROGRAM_FILES}\\Norvik\\norvik.exe", "browser", state)

    def test_is_not_installed_unless_it_is_named(self):
        self.install()
        self.assertEqual({}, self.registered())
        self.assertIn("Links in browsers start no manifests.", self.switch("status"))
        self.install(VERSION, "ADDLOCAL=BrowserLaunch")
        self.assertEqual({"": "URL:Norvik", "URL Protocol": ""}, self.registered()[KEY])
        self.assertEqual({"": f'"{PROGRAM}" "%1"'}, self.registered()[COMMAND])
        self.assertIn("Links in browsers start manifests", self.switch("status"))
        self.install(VERSION, "REMOVE=BrowserLaunch")
        self.assertEqual({}, self.registered())
        self.expect_files()

    def test_is_what_an_administrator_switches_on_by_hand(self):
        self.install(VERSION, "ADDLOCAL=BrowserLaunch")
        self.expect_files({"BrowserLaunch"})
        by_feature = self.registered()
        self.uninstall()
        self.assertEqual({}, self.registered())
        self.install()
        self.switch("on")
        self.assertEqual(by_feature, self.registered())
        self.switch("off")
        self.assertEqual({}, self.registered())

    def test_goes_with_the_program_however_it_was_switched_on(self):
        self.install()
        self.switch("on")
        self.assertNotEqual({}, self.registered())
        self.uninstall()
        self.assertEqual({}, self.registered())
        self.expect_clean_registry()

    def test_stays_on_through_a_repair(self):
        self.install()
        self.switch("on")
        self.install()
        self.assertIn("Links in browsers start manifests", self.switch("status"))


class BrowserLaunch32Test(BrowserLaunchTest):
    width = "x86"
