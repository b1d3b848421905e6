"""The packages themselves, without a machine: that they are what was meant, whole, signed, and the same whenever they are made."""

import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

from machine import ROOT
from releases import (EARLIER, EPOCH, LATER, OUTPUT, VERSION, WORK, builds, contents, installer, make, package, product,
                      registration, signer, tables, tools)

Failure = product.Failure


class Folders(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(dir=WORK)
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)


class SameBytesTest(Folders):
    def copy(self, name, moment):
        """All that packages are made from, in another folder and with other times: the project's folder and the build folders."""
        root = self.folder / name
        for item in contents.documents(ROOT):
            (root / item.path).parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(item.source, root / item.path)
        copies = {width: shutil.copytree(folder, root / "build" / width) for width, folder in builds(VERSION).items()}
        for path in root.rglob("*"):
            os.utime(path, (moment, moment))
        return root, copies

    def make(self, name, moment, sign=None):
        root, copies = self.copy(name, moment)
        output = root / "output"
        output.mkdir()
        make.make_all(output, VERSION, copies, EPOCH, sign, root=root)
        return {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in output.iterdir()}

    def test_two_builds_in_two_folders_on_two_days_are_the_same(self):
        first = self.make("one", 1_000_000_000)
        self.assertEqual(first, self.make("another-with-a-longer-name", 1_500_000_000))
        self.assertGreaterEqual(len(first), 5)

    def test_two_signed_builds_are_the_same_without_a_time_stamp(self):
        first = self.make("one", 1_000_000_000, signer())
        self.assertEqual(first, self.make("another", 1_500_000_000, signer()))

    def test_another_content_has_another_package_code_and_the_same_product(self):
        changed = {width: shutil.copytree(folder, self.folder / width) for width, folder in builds(VERSION).items()}
        with (changed["x64"] / "norvik.dll").open("ab") as file:
            file.write(b"more")
        installer.build(installer.Package("x64", VERSION, changed), self.folder / "changed.msi", EPOCH)
        found = [{row["PropertyId"]: row["Value"] for row in tables.read(msi, "_SummaryInformation")}["9"]
                 for msi in (package(VERSION), self.folder / "changed.msi")]
        self.assertNotEqual(*found)
        self.assertEqual(*[self.product_of(msi) for msi in (package(VERSION), self.folder / "changed.msi")])

    @staticmethod
    def product_of(msi):
        return {row["Property"]: row["Value"] for row in tables.read(msi, "Property")}["ProductCode"]


class IdentifierTest(unittest.TestCase):
    def test_the_upgrade_code_never_changes(self):
        self.assertEqual("{CB8E510B-422D-5B1D-B5C3-78FC8171C19D}", product.UPGRADE_CODE)

    def test_each_version_and_width_is_a_product_and_its_components_are_the_same(self):
        codes = [product.product_code(version, width) for version in (EARLIER, VERSION, LATER) for width in product.WIDTHS]
        self.assertEqual(len(codes), len(set(codes)))
        earlier, later = [installer.Package("x64", version, builds(version)) for version in (EARLIER, LATER)]
        self.assertEqual([earlier.guid(one) for one in earlier.components], [later.guid(one) for one in later.components])
        other = installer.Package("x86", VERSION, builds(VERSION))
        self.assertFalse({earlier.guid(one) for one in earlier.components} & {other.guid(one) for one in other.components})


class TableTest(Folders):
    """What is read back after building is compared, table by table: a package that differs is none."""

    DAMAGES = {
        "Component": "UPDATE `Component` SET `Attributes` = 272 WHERE `Component` = 'Permissions_Module64'",
        "Component ": "UPDATE `Component` SET `Condition` = '' WHERE `Component` = 'Permissions_Module32'",
        "File": "UPDATE `File` SET `Version` = '' WHERE `File` = 'Module64_norvik.dll'",
        "MsiFileHash": "DELETE FROM `MsiFileHash` WHERE `File_` = 'Documents_README.md'",
        "Registry": "UPDATE `Registry` SET `Value` = 'Both' WHERE `Value` = 'Apartment'",
        "Registry ": "DELETE FROM `Registry` WHERE `Name` = '-'",
        "Registry.Root": "UPDATE `Registry` SET `Root` = 1 WHERE `Name` = 'ThreadingModel'",
        "MoveFile": "UPDATE `MoveFile` SET `Options` = 1 WHERE `Component_` = 'Permissions_Module64'",
        "RemoveFile": "DELETE FROM `RemoveFile` WHERE `DirProperty` = 'INSTALLDIR'",
        "CreateFolder": "INSERT INTO `CreateFolder` (`Directory_`, `Component_`) VALUES ('INSTALLDIR', 'Places')",
        "FeatureComponents": "DELETE FROM `FeatureComponents` WHERE `Feature_` = 'Program'",
        "InstallExecuteSequence": "UPDATE `InstallExecuteSequence` SET `Sequence` = 6601 WHERE `Action` = 'RemoveExistingProducts'",
        "InstallExecuteSequence ": "DELETE FROM `InstallExecuteSequence` WHERE `Action` = 'MoveFiles'",
        "InstallExecuteSequence  ": "UPDATE `InstallExecuteSequence` SET `Condition` = '' WHERE `Action` = 'RepairAgain'",
        "CustomAction": "UPDATE `CustomAction` SET `Type` = 65 WHERE `Action` = 'PrepareInstallation'",
        "Property": "UPDATE `Property` SET `Value` = 'PERMITFILE' WHERE `Property` = 'SecureCustomProperties'",
        "Upgrade": "DELETE FROM `Upgrade` WHERE `ActionProperty` = 'WIX_DOWNGRADE_DETECTED'",
        "LaunchCondition": "DELETE FROM `LaunchCondition` WHERE `Condition` = 'NOT WIX_DOWNGRADE_DETECTED'",
    }

    def test_a_package_that_differs_from_what_was_meant_is_none(self):
        meant = installer.Package("x64", VERSION, builds(VERSION))
        tables.check(meant, package(VERSION), EPOCH)
        for name, damage in self.DAMAGES.items():
            with self.subTest(damage):
                file = shutil.copyfile(package(VERSION), self.folder / "damaged.msi")
                tools.run("msibuild", file, "-q", damage)
                with self.assertRaisesRegex(Failure, f"^The table {re.escape(name.strip())} is not what was meant"):
                    tables.check(meant, file, EPOCH)

    def test_another_time_or_width_is_noticed(self):
        for width, epoch in (("x64", EPOCH + 2), ("x86", EPOCH)):
            with self.assertRaisesRegex(Failure, "is not what was meant"):
                tables.check(installer.Package(width, VERSION, builds(VERSION)), package(VERSION), epoch)

    def test_a_permission_file_can_be_asked_for_with_every_installation(self):
        """Wine asks for conditions again by itself; elsewhere a component has to be transitive, and a permanent one would stay."""
        for width, features in (("x64", {"Module64": 256, "Module32": 0}), ("x86", {"Module32": 0})):
            rows = {row["Component"]: row for row in tables.read(package(VERSION, width), "Component")}
            for feature, wide in features.items():
                row = rows[f"Permissions_{feature}"]
                self.assertEqual((64 + wide, "PERMITFILE"), (int(row["Attributes"]), row["Condition"]))

    def test_every_folder_goes_when_it_is_empty(self):
        folders = {row["Directory"] for row in tables.read(package(VERSION), "Directory")}
        removed = {row["DirProperty"] for row in tables.read(package(VERSION), "RemoveFile") if not row["FileName"]}
        self.assertEqual(folders - {"TARGETDIR", "ProgramFilesFolder", "ProgramFiles64Folder"}, removed)

    def test_folders_take_over_the_access_lists_of_program_files(self):
        rows = {row["Directory"]: row["Directory_Parent"] for row in tables.read(package(VERSION), "Directory")}
        self.assertEqual(("ProgramFiles64Folder", "ProgramFilesFolder"), (rows["INSTALLDIR"], rows["INSTALLDIR32"]))
        for table in ("LockPermissions", "MsiLockPermissionsEx"):
            self.assertEqual([], tables.read(package(VERSION), table))

    def test_an_upgrade_keeps_the_choice_of_features_and_is_one_transaction(self):
        rows = {row["Action"]: int(row["Sequence"]) for row in tables.read(package(VERSION), "InstallExecuteSequence")}
        order = ["FindRelatedProducts", "AppSearch", "LaunchConditions", "CostFinalize", "MigrateFeatureStates", "PrepareInstallation",
                 "InstallValidate", "InstallInitialize", "RemoveExistingProducts", "ProcessComponents", "MoveFiles", "InstallFiles",
                 "InstallFinalize"]
        self.assertEqual(order, sorted(order, key=rows.__getitem__))
        migrating = {row["ActionProperty"]: int(row["Attributes"]) & 1 for row in tables.read(package(VERSION), "Upgrade")}
        self.assertEqual(1, migrating["WIX_UPGRADE_DETECTED"])

    def test_what_wixl_does_not_know_is_a_failure(self):
        text = installer.source_of(installer.Package("x64", VERSION, builds(VERSION)))
        (self.folder / "package.wxs").write_text(text.replace('KeyPath="yes"', 'KeyPath="yes" Permanent="yes"', 1), encoding="ascii")
        installer.stage(installer.Package("x64", VERSION, builds(VERSION)), self.folder, EPOCH)
        with self.assertRaisesRegex(Failure, "Permanent"):
            tools.run("wixl", "-a", "x64", "-o", "package.msi", "package.wxs", cwd=self.folder)


class OutputTest(Folders):
    """All that scripts/package leaves."""

    output = OUTPUT

    def file(self, end):
        return self.output / f"norvik-{VERSION}{end}"

    def test_the_archive_has_the_files_of_both_installers(self):
        with zipfile.ZipFile(self.file(".zip")) as archive:
            found = {name: archive.read(name) for name in archive.namelist()}
        self.assertEqual({name: source.read_bytes() for name, source in contents.by_hand(builds(VERSION)).items()}, found)
        for name in ("x64/norvik.dll", "x86/norvik.dll", "x64/norvik.exe", "x86/norvik.exe", "x86/permit.sample.xml",
                     "docs/permissions.md", "samples/permit.xml", "share/dtd/permit.dtd", "share/page/norvik.js",
                     "README.md", "CHANGELOG.md"):
            self.assertIn(name, found)
        self.assertFalse([name for name in found if name.endswith("/permit.xml") and not name.startswith("samples/")])

    def test_the_checksums_are_those_of_all_packages(self):
        subprocess.run(["sha256sum", "--check", "--strict", "--quiet", "SHA256SUMS"], cwd=self.output, check=True)
        listed = {line.split("  ")[1] for line in (self.output / "SHA256SUMS").read_text(encoding="ascii").splitlines()}
        self.assertEqual({path.name for path in self.output.iterdir()} - {"SHA256SUMS"}, listed)

    def test_the_bill_has_every_file_and_what_is_linked_in(self):
        bill = json.loads(self.file(".spdx.json").read_text(encoding="utf-8"))
        with zipfile.ZipFile(self.file(".zip")) as archive:
            expected = {f"./{name}": hashlib.sha256(archive.read(name)).hexdigest() for name in archive.namelist()}
        for width, folder in builds(VERSION).items():
            data = (folder / installer.ACTIONS).read_bytes()
            expected[f"./{width}/installer/{installer.ACTIONS}"] = hashlib.sha256(data).hexdigest()
        found = {entry["fileName"]: check["checksumValue"] for entry in bill["files"] for check in entry["checksums"]
                 if check["algorithm"] == "SHA256"}
        self.assertEqual(expected, found)
        identifiers = [entry["SPDXID"] for entry in bill["files"] + bill["packages"]]
        self.assertEqual(len(identifiers), len(set(identifiers)))
        self.assertEqual({"libgcc", "libssp", "libstdc++", "mingw-w64 runtime"}, self.linked(bill, "x64-norvik.dll"))
        self.assertIn("libgcc", self.linked(bill, f"x86-installer-{installer.ACTIONS}".replace("_", "-")))
        self.assertEqual({"CLI11", "fmt", "nlohmann-json", "libgcc", "libssp", "libstdc++", "mingw-w64 runtime", "winpthreads"},
                         self.linked(bill, "x86-norvik.exe"))
        for entry in bill["packages"]:
            self.assertRegex(entry["versionInfo"], r"^\d+\.\d+")
        for relation in bill["relationships"]:
            self.assertIn(relation["relatedSpdxElement"], identifiers)

    @staticmethod
    def linked(bill, file):
        names = {entry["SPDXID"]: entry["name"] for entry in bill["packages"]}
        return {names[relation["relatedSpdxElement"]] for relation in bill["relationships"]
                if relation["relationshipType"] == "STATIC_LINK" and relation["spdxElementId"] == f"SPDXRef-File-{file}"}

    def test_links_of_the_documents_lead_to_files_that_are_installed(self):
        names = set(contents.by_hand(builds(VERSION)))
        folders = {str(parent) for name in names for parent in pathlib.PurePosixPath(name).parents}
        not_installed = contents.FOR_DEVELOPERS | {"ARCHITECTURE.md", "CONTRIBUTING.md"}
        for name in sorted(names):
            if name.endswith(".md"):
                text = (ROOT / name).read_text(encoding="utf-8")
                for target in re.findall(r"\]\(([^):#]+)(?:#[^)]*)?\)", text):
                    path = os.path.normpath(os.path.join(os.path.dirname(name), target))
                    self.assertIn(path, names | folders | not_installed, f"{name} leads to {target}")


class SignatureTest(Folders):
    def test_code_and_package_are_signed_and_a_changed_byte_is_noticed(self):
        signed = [WORK / "signed" / width / name for width in product.WIDTHS for name in make.CODE]
        for file in [*signed, package(VERSION, kind="-signed")]:
            signer().verify(file)
            data = bytearray(file.read_bytes())
            data[len(data) // 2] ^= 1
            tampered = self.folder / file.name
            tampered.write_bytes(data)
            with self.assertRaisesRegex(Failure, "^osslsigncode failed"):
                signer().verify(tampered)

    def test_what_is_not_signed_is_no_signed_package(self):
        with self.assertRaisesRegex(Failure, "^osslsigncode failed"):
            signer().verify(package(VERSION))


class CommandTest(Folders):
    def run_make(self, *words):
        command = [sys.executable, "-B", str(ROOT / "packaging/make.py"), "--output", str(self.folder / "made"), *words]
        return subprocess.run(command, capture_output=True, text=True, check=False)

    def test_makes_signed_packages(self):
        sign = signer()
        done = self.run_make("--sign", sign.certificate, "--key", sign.key)
        self.assertEqual((0, ""), (done.returncode, done.stderr))
        made = self.folder / "made"
        names = {f"norvik-{VERSION}{end}" for end in ("-x64.msi", "-x86.msi", ".zip", ".spdx.json")} | {"SHA256SUMS"}
        self.assertLessEqual(names, {path.name for path in made.iterdir()})
        for width in product.WIDTHS:
            sign.verify(made / f"norvik-{VERSION}-{width}.msi")
        with zipfile.ZipFile(made / f"norvik-{VERSION}.zip") as archive:
            archive.extract("x86/norvik.dll", self.folder)
        sign.verify(self.folder / "x86/norvik.dll")

    def test_half_of_a_signer_is_refused(self):
        for words in (("--key", "k"), ("--sign", "c"), ("--timestamp", "http://127.0.0.1/")):
            done = self.run_make(*words)
            self.assertEqual(2, done.returncode)
            self.assertFalse((self.folder / "made").exists())

    def test_a_check_makes_nothing(self):
        sign = signer()
        words = ["--check", "--sign", sign.certificate, "--key", sign.key]
        self.assertEqual(0, self.run_make(*words).returncode)
        self.assertEqual(0, self.run_make(*words[:-1], "pkcs11:token=t;object=o").returncode)
        missing = str(self.folder / "missing.pem")
        for wrong in ([*words[:-1], missing], ["--check", "--sign", missing, "--key", sign.key], [*words, "--authority", missing],
                      [*words, "--pkcs11-module", missing]):
            done = self.run_make(*wrong)
            self.assertEqual((1, f"error: {missing} is no file.\n"), (done.returncode, done.stderr))
        self.assertFalse((self.folder / "made").exists())

    def test_a_version_without_an_entry_is_refused(self):
        (self.folder / "CHANGELOG.md").write_text("# Changes\n\n## 2.0.1\n\nText about 3.0.0.\n", encoding="ascii")
        make.check_version("2.0.1", self.folder)
        for version in ("3.0.0", "2.0", "2.0.10"):
            with self.assertRaisesRegex(Failure, f"no entry for the version {re.escape(version)}"):
                make.check_version(version, self.folder)
        with self.assertRaises(Failure):
            make.check_version("2.0.1", self.folder / "none")
        make.check_version(VERSION)


class ScriptTest(unittest.TestCase):
    def test_the_registration_script_is_read_as_the_registrar_does(self):
        script = """HKCR
        {
          A.B = s 'It''s a class'
          {
            C = s 'c'
          }
          NoRemove Many
          {
            ForceRemove {1-2}
            {
              val Model = s 'one'
              D
            }
          }
        }"""
        self.assertEqual([("A.B", None, "It's a class"), ("A.B\\C", None, "c"), ("Many", None, None), ("Many\\{1-2}", None, None),
                          ("Many\\{1-2}", "Model", "one"), ("Many\\{1-2}\\D", None, None)],
                         list(registration.script_entries(script)))


class VersionTest(unittest.TestCase):
    def test_versions_and_names_are_read_from_the_code(self):
        for version in (EARLIER, VERSION, LATER):
            resource = product.VersionResource(builds(version)["x86"] / "norvik.exe")
            self.assertEqual((f"{version}.0", 1033, "Norvik"), (resource.number, resource.language, resource.text("ProductName")))
        with self.assertRaisesRegex(Failure, "has no version resource"):
            product.VersionResource(builds(VERSION)["x64"] / installer.ACTIONS)
