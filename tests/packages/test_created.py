"""docs/rollout.md has a table of everything that an installation creates."""

import fnmatch
import re

from cases import Case
from machine import PROGRAM_FILES, PROGRAM_FILES_X86, ROOT
from releases import VERSION, contents, product

REDIRECTED = re.compile(r"^software\\classes\\")


def tables():
    """The rows of the page's tables, by the heads of the first columns; cells without their marks for code."""
    found, rows = {}, None
    for line in (ROOT / "docs/rollout.md").read_text(encoding="utf-8").splitlines():
        cells = [cell.strip().strip("`") for cell in line.strip("|").split("|")] if line.startswith("|") else None
        if cells is None:
            rows = None
        elif rows is None:
            rows = found.setdefault(cells[0], [])
        elif not set(cells[0]) <= set("- "):
            rows.append(cells)
    return found


class CreatedTest(Case):
    def features_of(self, cell):
        names = set(cell.split(", "))
        return names if self.width == "x64" else names - {"Module64"}

    def patterns(self):
        """The files of the table, as patterns of paths on the machine."""
        folders = {"[INSTALLDIR]": PROGRAM_FILES / "Norvik", "[INSTALLDIR32]": PROGRAM_FILES_X86 / "Norvik"}
        if self.width == "x86":
            folders["[INSTALLDIR32]"] = folders["[INSTALLDIR]"]
        found = []
        for file, feature in tables()["file"]:
            if self.features_of(feature):
                head, _, path = file.partition("]")
                found.append((str(folders[head + "]"] / path.replace("\\", "/")), feature))
        return found

    def keys(self):
        """(key, value) of the table, as this machine has them."""
        code = product.product_code(VERSION, self.width)
        for key, value, view, feature in tables()["key"]:
            if not self.features_of(feature) or (self.width == "x86" and value == "InstallDir32"):
                continue
            key = key.replace("{ProductCode}", code).lower()
            yield key, value
            if self.width == "x64" and view in ("own", "both"):
                yield REDIRECTED.sub(r"software\\classes\\wow6432node\\", key), value

    def created_keys(self):
        keys = self.new_keys()
        for key, values in keys.items():
            if "\\uninstall\\" in key:
                yield key, "written by Windows Installer"
            else:
                yield from ((key, name or "(default)") for name in values)
                if not values:
                    yield key, ""
        # A key that has nothing but keys is not in the file of the registry.
        yield from ((key, "") for key, value in self.keys() if not value and key not in keys
                    and any(other.startswith(key + "\\") for other in keys))

    def test_the_table_of_what_is_created_is_complete(self):
        self.install(VERSION, "ADDLOCAL=ALL")
        patterns, files = self.patterns(), self.machine.installed()
        owners = {name: [feature for pattern, feature in patterns if fnmatch.fnmatchcase(name, pattern)] for name in files}
        self.assertEqual({name: [", ".join(contents.features_of(item))] for name, item in self.items().items()}, owners)
        for pattern, _ in patterns:
            self.assertTrue(fnmatch.filter(files, pattern), f"{pattern} is in the table, and no file is")
        self.assertEqual(sorted(self.keys()), sorted(self.created_keys()))


class Created32Test(CreatedTest):
    width = "x86"
