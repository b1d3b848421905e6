"""The bill of materials: every file that is shipped, and the libraries that are linked into the code (SPDX 2.3, as JSON)."""

import functools
import hashlib
import json
import os
import pathlib
import re
import time
from dataclasses import dataclass

import product
from product import Failure
from tools import run


@dataclass(frozen=True)
class Library:
    """A library that becomes part of the code: what it is called, its licence, and its owner as a distribution's package."""

    name: str
    licence: str
    package: str


GCC_LICENCE = "GPL-3.0-or-later WITH GCC-exception-3.1"
RUNTIME_LICENCE = "ZPL-2.1 AND LicenseRef-public-domain"

# Archives by the beginning of their names, the more special ones first. What is left of the tool chain's is its C runtime.
KINDS = (("libstdc++", "libstdc++", GCC_LICENCE), ("libgcc", "libgcc", GCC_LICENCE), ("libssp", "libssp", GCC_LICENCE),
         ("libpthread", "winpthreads", "MIT AND BSD-3-Clause"), ("libwinpthread", "winpthreads", "MIT AND BSD-3-Clause"),
         ("lib", "mingw-w64 runtime", RUNTIME_LICENCE))

# Libraries that are headers leave no archive in a map; the program's CMakeLists.txt says that it uses them.
HEADERS = (Library("CLI11", "BSD-3-Clause", "libcli11-dev"), Library("nlohmann-json", "MIT", "nlohmann-json3-dev"),
           Library("fmt", "MIT", "libfmt-dev"))

PUBLIC_DOMAIN = {
    "licenseId": "LicenseRef-public-domain",
    "extractedText": "Parts of the runtime have no copyright: their authors have placed them in the public domain.",
}


@functools.cache
def owners(archives):
    """The distribution's packages that these files belong to, by the files."""
    paths = {os.path.realpath(archive): archive for archive in archives}
    found = (line.split(": ") for line in run("dpkg-query", "-S", *sorted(paths)).splitlines())
    return {paths[path]: package.split(":")[0] for package, path in found}


@functools.cache
def version_of(package):
    return run("dpkg-query", "-W", "-f", "${Version}", package)


def archives_in(map_file):
    """The tool chain's archives that the linker took something from."""
    text = map_file.read_text(encoding="utf-8", errors="replace")
    taken = re.search(r"^Archive member included.*?\n\n(.*?)\n\n", text, re.DOTALL | re.MULTILINE)
    if not taken:
        raise Failure(f"{map_file} does not say what was linked.")
    return frozenset(re.findall(r"^(/\S+\.a)\(", taken[1], re.MULTILINE))


def libraries_of(map_file):
    """What is linked into the code beside the map."""
    found = set(HEADERS) if map_file.name == "norvik.exe.map" else set()
    for archive, package in owners(archives_in(map_file)).items():
        name = pathlib.PurePath(archive).name
        kind, licence = next((kind, licence) for start, kind, licence in KINDS if name.startswith(start))
        found.add(Library(kind, licence, package))
    return found


def checksums(data):
    return [{"algorithm": name.upper(), "checksumValue": hashlib.new(name, data).hexdigest()} for name in ("sha1", "sha256")]


def reference(text):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.]", "-", text)


def file_entry(name, data):
    return {"SPDXID": reference(f"File-{name}"), "fileName": f"./{name}", "checksums": checksums(data),
            "licenseConcluded": "NOASSERTION", "copyrightText": "NOASSERTION"}


def library_entry(library):
    return {"SPDXID": reference(f"Package-{library.name}-{library.package}"), "name": library.name,
            "versionInfo": version_of(library.package), "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
            "sourceInfo": f"from the package {library.package} of the distribution that it was built on",
            "licenseConcluded": library.licence, "licenseDeclared": library.licence, "copyrightText": "NOASSERTION"}


def verification_code(files):
    """SPDX's code for the whole of some files: the SHA-1 of their SHA-1s in order."""
    digests = sorted(entry["checksums"][0]["checksumValue"] for entry in files)
    return hashlib.sha1("".join(digests).encode()).hexdigest()


def relation(one, kind, other):
    return {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}


def bill(name, publisher, version, files, maps, epoch):
    """The document; `files` has the shipped files by name, `maps` the linker's maps of those that are code."""
    contents = {path: source.read_bytes() for path, source in sorted(files.items())}
    entries = [file_entry(path, data) for path, data in contents.items()]
    linked = {path: sorted(libraries_of(map_file), key=str) for path, map_file in sorted(maps.items())}
    libraries = sorted(set().union(*linked.values()), key=str)
    main = reference(f"Package-{name}")
    package = {"SPDXID": main, "name": name, "versionInfo": version, "supplier": f"Organization: {publisher}",
               "downloadLocation": "NOASSERTION", "homepage": product.project("HOMEPAGE_URL"), "filesAnalyzed": True,
               "packageVerificationCode": {"packageVerificationCodeValue": verification_code(entries)},
               "licenseConcluded": "NOASSERTION", "licenseDeclared": "NOASSERTION", "copyrightText": "NOASSERTION"}
    relations = [relation("SPDXRef-DOCUMENT", "DESCRIBES", main)]
    relations += [relation(main, "CONTAINS", entry["SPDXID"]) for entry in entries]
    relations += [relation(reference(f"File-{path}"), "STATIC_LINK", library_entry(library)["SPDXID"])
                  for path, some in linked.items() for library in some]
    digest = hashlib.sha256("".join(map(str, entries)).encode()).hexdigest()
    return {"spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": f"{name}-{version}",
            "documentNamespace": f"{product.project('HOMEPAGE_URL')}spdx/{version}/{digest}",
            "creationInfo": {"created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(epoch)),
                             "creators": [f"Organization: {publisher}", "Tool: scripts/package"]},
            "hasExtractedLicensingInfos": [PUBLIC_DOMAIN], "packages": [package, *map(library_entry, libraries)],
            "files": entries, "relationships": relations}


def write(path, document):
    path.write_text(json.dumps(document, indent=2) + "\n", encoding="utf-8")
