"""What is installed: the one list from which the installers, the archive to be placed by hand and the bill of materials come."""

import pathlib
from dataclasses import dataclass

from product import ROOT, Failure

# What an administrator may choose to install, in the order of the packages. The x86 package has no 64-bit module.
FEATURES = {
    "Module64": "The module for 64-bit hosts",
    "Module32": "The module for 32-bit hosts",
    "Program": "norvik.exe, which explains, plans and checks",
    "Documents": "The documents, the document types and the samples",
    "BrowserLaunch": "Links in browsers start manifests, for all users",
}

# Installed by nobody who does not name them.
ONLY_BY_NAME = {"BrowserLaunch"}

# Files of one feature that another one needs, too.
ALSO_IN = {"norvikopen.exe": ["BrowserLaunch"]}

# Where documents come from, below the project's folder. What concerns only those who change the module is left out.
DOCUMENTS = ("README.md", "CHANGELOG.md", "docs/*.md", "docs/*.json", "docs/pictures/*", "samples/**/*", "share/dtd/*",
             "share/page/*")
FOR_DEVELOPERS = {"docs/performance.md", "docs/release.md"}

# The sample lies where permit.xml has to lie, under a name that the module does not look at.
SAMPLE_PERMISSIONS = "permit.sample.xml"


@dataclass(frozen=True)
class Item:
    """A file of a package: `feature` it belongs to, `folder` it is installed in (INSTALLDIR or INSTALLDIR32), its `path` there,
    the file that it is made from, and whether it is code of a width."""

    feature: str
    folder: str
    path: pathlib.PurePosixPath
    source: pathlib.Path
    is_code: bool = False

    @property
    def is_module(self):
        return self.is_code and self.path.suffix == ".dll"


def item(feature, folder, path, source, is_code=False):
    return Item(feature, folder, pathlib.PurePosixPath(path), source, is_code)


def module(feature, folder, build, root):
    return [
        item(feature, folder, "norvik.dll", build / "norvik.dll", is_code=True),
        item(feature, folder, SAMPLE_PERMISSIONS, root / "samples/permit.xml"),
    ]


def documents(root):
    found = {path for pattern in DOCUMENTS for path in root.glob(pattern) if path.is_file()}
    names = {path.relative_to(root).as_posix(): path for path in found}
    return [item("Documents", "INSTALLDIR", name, names[name]) for name in sorted(names) if name not in FOR_DEVELOPERS]


def contents(width, builds, root=ROOT):
    """The files of the package for a width of Windows; `builds` are the build folders by width."""
    if width == "x64":
        items = module("Module64", "INSTALLDIR", builds["x64"], root) + module("Module32", "INSTALLDIR32", builds["x86"], root)
    else:
        items = module("Module32", "INSTALLDIR", builds["x86"], root)
    items += [item("Program", "INSTALLDIR", name, builds[width] / name, is_code=True) for name in ("norvik.exe", "norvikopen.exe")]
    items += documents(root)
    for entry in items:
        if not entry.source.is_file():
            raise Failure(f"{entry.source} is missing.")
    return items


def features_of(entry):
    return [entry.feature, *ALSO_IN.get(entry.path.name, [])]


def features(items):
    """The features that have files, in their order."""
    return [name for name in FEATURES if any(name in features_of(entry) for entry in items)]


def by_hand(builds, root=ROOT):
    """The same files as they lie in the archive: names and sources. Each width's code has a folder of its own."""
    files = {}
    for width in builds:
        for entry in contents(width, builds, root):
            if entry.folder == "INSTALLDIR" and entry.feature != "Documents":
                files[f"{width}/{entry.path}"] = entry.source
            elif entry.feature == "Documents":
                files[str(entry.path)] = entry.source
    return files
