"""The installer's tables write what registering by hand writes, in the view of each width."""

import re

from cases import Case
from machine import PROGRAM_FILES
from releases import VERSION, builds


def with_module(keys, path):
    """The registration with the module at another place."""
    folder = path.rsplit("\\", 1)[0]
    return {key: {name: value.replace("C:\\Hand\\norvik.dll", path).replace("C:\\Hand", folder) for name, value in values.items()}
            for key, values in keys.items()}


def classes(keys):
    return {key: values for key, values in keys.items() if key.startswith("software\\classes\\")}


class RegistrationTest(Case):
    def register_by_hand(self):
        folder = self.machine.path("Hand")
        folder.mkdir()
        (folder / "norvik.dll").write_bytes((builds(VERSION)[self.width] / "norvik.dll").read_bytes())
        self.machine.windows("regsvr32", "/s", "C:\\Hand\\norvik.dll")

    def expected(self):
        """What registering by hand writes, as if the module were where the installer puts it."""
        self.register_by_hand()
        found = classes(self.new_keys())
        self.assertGreater(len(found), 10, "regsvr32 registered nothing")
        return with_module(found, f"C:\\{PROGRAM_FILES}\\Norvik\\norvik.dll".replace("/", "\\"))

    def test_is_what_registering_by_hand_writes_and_takes_its_place(self):
        expected = self.expected()
        feature = "Module64" if self.width == "x64" else "Module32"
        self.install(VERSION, f"ADDLOCAL={feature}")
        self.assertEqual(expected, classes(self.new_keys()))
        self.permit()
        self.expect_running()
        self.uninstall()
        self.expect_clean_registry()

    def permit(self, name="Placed"):
        folder = self.machine.path(PROGRAM_FILES, "Norvik")
        (folder / "permit.xml").write_text(self.permissions[name].read_text(encoding="ascii"), encoding="ascii")

    def test_what_was_written_by_hand_after_installing_goes_too(self):
        self.install()
        self.register_by_hand()
        for key in ("CLSID\\{46A7009F-9EFB-4A02-84EB-F916591D659E}", "Norvik.AXNorvik\\CLSID"):
            self.machine.windows("reg", "add", f"HKLM\\Software\\Classes\\{key}", "/v", "Other", "/d", "one", "/f")
        self.uninstall()
        self.expect_clean_registry()


class Registration32Test(RegistrationTest):
    width = "x86"


def as_32_bit_view(keys):
    """What a 32-bit machine has, as the 32-bit view of a 64-bit one; names without a width are where both look."""
    redirected = re.compile(r"^software\\classes\\(?=clsid\\|interface\\)")
    found = {redirected.sub(r"software\\classes\\wow6432node\\", key): values for key, values in keys.items()}
    # The system itself writes the interfaces of a type library in both views.
    found.update({key: values for key, values in keys.items() if key.startswith("software\\classes\\interface\\")})
    return found


class OtherViewTest(Case):
    """The 32-bit module on a 64-bit machine: registered as on a 32-bit one, but for the views."""

    machines = ("x64", "x86")

    def test_the_32_bit_module_is_registered_in_the_32_bit_view(self):
        self.install(VERSION, "ADDLOCAL=Module32")
        found = classes(self.new_keys())
        self.assertEqual(as_32_bit_view(self.keys_of_32_bit_machine()), found)

    def keys_of_32_bit_machine(self):
        other = type(self)("test_the_32_bit_module_is_registered_in_the_32_bit_view")
        other.width = "x86"
        self.machine.end()
        other.setUp()
        try:
            RegistrationTest.register_by_hand(other)
            return with_module(classes(other.new_keys()), "C:\\Program Files (x86)\\Norvik\\norvik.dll")
        finally:
            other.doCleanups()
