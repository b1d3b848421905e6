"""The Windows Installer package of one width: its source for wixl, which makes the tables that wixl knows."""

import os
import pathlib
import re
import shutil
import tempfile
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass, field

import contents
import product
import registration
import scheme
import tables
from product import Failure
from tools import run

# Where what has to be remembered is kept, below the publisher's key.
REMEMBERED = {"INSTALLDIR": "InstallDir", "INSTALLDIR32": "InstallDir32"}

PROGRAM_FILES = {"x64": "ProgramFiles64Folder", "x86": "ProgramFilesFolder"}

# The order of what wixl would put elsewhere. Whatever is behind 1500 is part of the transaction, which a failure takes back.
SEQUENCE = {
    "FindRelatedProducts": 25,
    "AppSearch": 50,
    "RememberINSTALLDIR": 60,
    "RememberINSTALLDIR32": 61,
    "RepairAgain": 70,
    "LaunchConditions": 100,
    "TellLocation": 1010,
    "PrepareInstallation": 1300,  # behind MigrateFeatureStates, which decides what an upgrade installs
    "RemoveExistingProducts": 1501,
    "VerifyPermissions": 3801,  # behind MoveFiles
}


@dataclass
class Component:
    """A component: `wide` when it is seen by 64-bit programs, `features` that it belongs to, and what it brings."""

    name: str
    folder: str
    wide: bool
    features: list
    item: contents.Item | None = None
    rows: list = field(default_factory=list)
    removed_keys: list = field(default_factory=list)

    @property
    def is_permission(self):
        """It brings nothing of its own: it puts the administrator's permission file beside a module."""
        return not self.item and not self.rows


# What an installation of a product that is there may ask for. One that asks for nothing is a repair.
CHOICES = ("REMOVE", "ADDLOCAL", "ADDSOURCE", "ADDDEFAULT", "ADVERTISE", "REINSTALL", "PATCH", "RESUME", "UPGRADINGPRODUCTCODE")

LONGEST_NAME = 72  # of a row in Windows Installer's tables

# The package's own actions, in the build folder and where wixl works.
ACTIONS = "norvik_actions.dll"


def name_of(text):
    return re.sub(r"[^A-Za-z0-9_.]", "_", text)


class Package:
    """What the package of a width holds; the tables are made from this, and compared with it afterwards."""

    def __init__(self, width, version, builds, root=product.ROOT, code_of=None):
        self.width = width
        self.version = version
        self.builds = builds
        self.items = contents.contents(width, builds, root)
        self.features = contents.features(self.items)
        self.modules = {entry.feature: entry for entry in self.items if entry.is_module}
        self.folders = {"INSTALLDIR": width, **({"INSTALLDIR32": "x86"} if width == "x64" else {})}
        names = product.VersionResource(builds[width] / "norvik.dll")
        self.name, self.publisher = names.text("ProductName"), names.text("CompanyName")
        self.product_code = product.product_code(code_of or version, width)
        self.settings_key = f"Software\\{self.publisher}\\{self.name}"
        self.components_of_files = list(self.file_components())
        self.components = [*self.components_of_files, *self.shared_components(), *self.permission_components(), self.browser_launch(),
                           self.places()]
        self.check_names()

    def check_names(self):
        names = [component.name for component in self.components]
        for name in names:
            if names.count(name) > 1 or len(name) > LONGEST_NAME:
                raise Failure(f"The name {name} in the package is used twice or is too long.")

    def guid(self, component):
        return product.identifier(f"component {self.width} {component.name}")

    def module_width(self, feature):
        return "x64" if feature == "Module64" else "x86"

    def file_components(self):
        """Each file has a component of its own, so that a file that goes or comes never changes another's."""
        for entry in self.items:
            component = Component(name_of(f"{entry.feature}_{entry.path}"), entry.folder,
                                  self.folders[entry.folder] == "x64", contents.features_of(entry), entry)
            if entry.path.name == scheme.PROGRAM:
                component.removed_keys = [scheme.KEY]  # an administrator may have switched links on by hand
            if entry.is_module:
                rows = self.registration_rows(entry.feature)
                component.rows = [row for row in rows if row.owner == registration.MODULE]
                component.removed_keys = registration.roots(component.rows)
            yield component

    def registration_rows(self, feature):
        width = self.module_width(feature)
        file = name_of(f"{feature}_{self.modules[feature].path}")
        return list(registration.rows(self.builds[width], width, f"[#{file}]"))

    def shared_components(self):
        """What the modules of both widths need, and what stays as long as one of them does."""
        rows = self.registration_rows(next(iter(self.modules)))
        shared = [row for row in rows if row.owner == registration.SHARED]
        view = [row for row in rows if row.owner == registration.SHARED_VIEW]
        wide = self.width == "x64"
        yield Component("Registration", "INSTALLDIR", wide, list(self.modules), rows=shared + view,
                        removed_keys=registration.roots(shared + view))
        if wide:
            yield Component("Registration32", "INSTALLDIR32", False, list(self.modules), rows=view,
                            removed_keys=registration.roots(view))

    def permission_components(self):
        for feature, entry in self.modules.items():
            yield Component(f"Permissions_{feature}", entry.folder, self.folders[entry.folder] == "x64", [feature])

    def browser_launch(self):
        program = next(component.name for component in self.components_of_files if component.item.path.name == scheme.PROGRAM)
        return Component("BrowserLaunch", "INSTALLDIR", self.width == "x64", ["BrowserLaunch"],
                         rows=scheme.rows(f"[#{program}]"), removed_keys=[scheme.KEY])

    def places(self):
        rows = [registration.Row("", self.settings_key, REMEMBERED[folder], f"[{folder}]") for folder in self.folders]
        return Component("Places", "INSTALLDIR", self.width == "x64", self.features, rows=rows)

    def conditions(self):
        """What has to be so for an installation, and the sentence for those where it is not."""
        found = [("Installed OR VersionNT >= 601", f"{self.name} needs Windows 7 or later.")]
        if self.width == "x86":
            found.append(("Installed OR NOT VersionNT64", f"This package of {self.name} is for 32-bit Windows. The one for 64-bit "
                          "Windows has the modules of both widths."))
        return found

    def properties(self):
        return {
            "ARPNOMODIFY": "1",
            "ARPURLINFOABOUT": product.project("HOMEPAGE_URL"),
            # Whoever has the module loaded keeps it until the machine is restarted: no program is ended, and no restart is made.
            "MSIRESTARTMANAGERCONTROL": "Disable",
            "REBOOT": "ReallySuppress",
        }

    def actions(self):
        """The types and conditions of the package's own actions: 51 sets a property, 1 calls a function of a DLL in the package, and
        with 3072 it is called in the transaction, by the service."""
        return {
            **{f"Remember{folder}": (51, f"PREVIOUS{folder} AND NOT {folder}") for folder in self.folders},
            "RepairAgain": (51, f"Installed AND NOT ({' OR '.join(CHOICES)})"),
            "TellLocation": (51, ""),
            "PrepareInstallation": (1, 'NOT REMOVE~="ALL"'),
            "VerifyPermissions": (3073, "VerifyPermissions"),
        }

    def sequence(self):
        absent = {f"Remember{folder}" for folder in REMEMBERED if folder not in self.folders}
        return {action: number for action, number in SEQUENCE.items() if action not in absent}


    @staticmethod
    def directory_name(folder, path):
        return name_of(f"{folder}_{path}") if path.parts else folder

    def directories(self):
        """The folders of all files and the folders around them, each before those in it: the package's folder and a path."""
        found = {(entry.folder, path): None for entry in self.items for path in reversed(entry.path.parents)}
        return list(found)


def child(parent, tag, **attributes):
    return ElementTree.SubElement(parent, tag, {name: str(value) for name, value in attributes.items()})


def source_of(package):
    """The package as wixl reads it, in a folder where every file is called as its component."""
    wix = ElementTree.Element("Wix", {"xmlns": "http://schemas.microsoft.com/wix/2006/wi"})
    root = child(wix, "Product", Id=package.product_code, Name=package.name, Version=package.version, Language=1033,
                 Manufacturer=package.publisher, UpgradeCode=product.UPGRADE_CODE)
    child(root, "Package", InstallerVersion=500, Compressed="yes", InstallScope="perMachine",
          Manufacturer=package.publisher, Description=f"{package.name} {package.version}")
    child(root, "MediaTemplate", EmbedCab="yes")
    child(root, "MajorUpgrade", DowngradeErrorMessage=f"A later version of {package.name} is installed. Nothing was changed.")
    add_conditions(root, package)
    add_properties(root, package)
    directories = add_directories(root, package)
    for component in package.components:
        add_component(directories, package, component)
    for feature in package.features:
        element = child(root, "Feature", Id=feature, Title=feature, Description=contents.FEATURES[feature],
                        Level=2 if feature in contents.ONLY_BY_NAME else 1)
        for component in package.components:
            if feature in component.features:
                child(element, "ComponentRef", Id=component.name)
    add_actions(root, package)
    ElementTree.indent(wix)
    return ElementTree.tostring(wix, encoding="unicode")


def add_conditions(root, package):
    for text, message in package.conditions():
        child(root, "Condition", Message=f"{message} Nothing was changed.").text = text


def add_properties(root, package):
    for name, value in package.properties().items():
        child(root, "Property", Id=name, Value=value)
    for folder in package.folders:
        element = child(root, "Property", Id=f"PREVIOUS{folder}")
        child(element, "RegistrySearch", Id=f"Find{folder}", Root="HKLM", Key=package.settings_key, Name=REMEMBERED[folder],
              Type="raw", **({"Win64": "yes"} if package.width == "x64" else {}))


def add_directories(root, package):
    """The elements of all folders, by the folder of the package and the path in it."""
    target = child(root, "Directory", Id="TARGETDIR", Name="SourceDir")
    found = {}
    for folder, width in package.folders.items():
        above = child(target, "Directory", Id=PROGRAM_FILES[width])
        found[folder, pathlib.PurePosixPath(".")] = child(above, "Directory", Id=folder, Name=package.name)
    for folder, path in package.directories():
        if (folder, path) not in found:
            found[folder, path] = child(found[folder, path.parent], "Directory", Id=package.directory_name(folder, path),
                                        Name=path.name)
    return found


def add_component(directories, package, component):
    path = component.item.path.parent if component.item else pathlib.PurePosixPath(".")
    element = child(directories[component.folder, path], "Component", Id=component.name, Guid=package.guid(component),
                    **({"Win64": "yes"} if component.wide else {}))
    if component.item:
        child(element, "File", Id=component.name, Name=component.item.path.name, Source=component.name, KeyPath="yes")
    is_key_path = component.item is None
    for row in component.rows:
        if row.value is not None:
            child(element, "RegistryValue", Root="HKLM", Key=row.key, Type="string", Value=row.value,
                  **({"Name": row.name} if row.name else {}), **({"KeyPath": "yes"} if is_key_path else {}))
            is_key_path = False


def add_actions(root, package):
    sequence = child(root, "InstallExecuteSequence")
    for folder in package.folders:
        child(root, "CustomAction", Id=f"Remember{folder}", Property=folder, Value=f"[PREVIOUS{folder}]", Impersonate="yes")
    child(root, "CustomAction", Id="RepairAgain", Property="REINSTALL", Value="ALL", Impersonate="yes")
    child(root, "CustomAction", Id="TellLocation", Property="ARPINSTALLLOCATION", Value="[INSTALLDIR]", Impersonate="yes")
    child(root, "Binary", Id="Actions", SourceFile=ACTIONS)
    child(root, "CustomAction", Id="PrepareInstallation", BinaryKey="Actions", DllEntry="PrepareInstallation",
          Execute="immediate", Return="check", Impersonate="yes")
    child(root, "CustomAction", Id="VerifyPermissions", BinaryKey="Actions", DllEntry="VerifyPermissions", Execute="deferred",
          Return="check", Impersonate="no")
    for action, (_, condition) in package.actions().items():
        child(sequence, "Custom", Action=action, Sequence=SEQUENCE[action]).text = condition
    for action in ("FindRelatedProducts", "AppSearch", "LaunchConditions", "RemoveExistingProducts"):
        child(sequence, action, Sequence=SEQUENCE[action])


def stage(package, folder, epoch):
    """Copies what goes into the package to a folder, with one time for all."""
    sources = {component.name: component.item.source for component in package.components if component.item}
    sources[ACTIONS] = package.builds[package.width] / ACTIONS
    for name, source in sources.items():
        shutil.copyfile(source, folder / name)
        os.utime(folder / name, (epoch, epoch))


def build(package, msi, epoch):
    """Makes the package; its inputs alone decide what is in it."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        stage(package, folder, epoch)
        (folder / "package.wxs").write_text(source_of(package), encoding="ascii")
        run("wixl", "-a", package.width, "-o", "package.msi", "package.wxs", cwd=folder)
        tables.complete(package, folder, epoch)
        tables.check(package, folder / "package.msi", epoch)
        shutil.copyfile(folder / "package.msi", msi)
