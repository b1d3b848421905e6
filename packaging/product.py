"""What the packages say about the product. Its version and link stand in CMake's project(), its names in the module itself."""

import functools
import pathlib
import re
import struct
import sys
import uuid

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "scripts"))
from pe_file import PeFile  # noqa: E402  # it lies with the scripts

WIDTHS = ("x64", "x86")

# Every identifier of the packages is derived from this one, which is random and never changes.
NAMESPACE = uuid.UUID("cc64db61-84e6-4210-b5b5-ce1cd85eb6ee")

VERSION_RESOURCE = 16
FIXED_SIGNATURE = struct.pack("<I", 0xFEEF04BD)


class Failure(Exception):
    """Something that ends the making of packages, in a sentence for the one who makes them."""


@functools.cache
def project(name):
    """The value of VERSION or HOMEPAGE_URL in CMake's project()."""
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    match = re.search(rf'\bproject\([^)]*\b{name}\s+"?([^\s")]+)', text)
    if not match:
        raise Failure(f"CMakeLists.txt has no {name} in its project().")
    return match[1]


def identifier(text):
    """An identifier that is always the same for the same text, as the installer writes it."""
    return "{" + str(uuid.uuid5(NAMESPACE, text)).upper() + "}"


# One for both widths: a machine takes only one of the packages, and a fleet is asked for one product.
UPGRADE_CODE = identifier("upgrade")


def product_code(version, width):
    return identifier(f"product {version} {width}")


class VersionResource:
    """What a module's version resource says: `number` as in 1.2.3.0, `language` as a number, and its texts."""

    def __init__(self, path):
        data = PeFile(path).resources().get((VERSION_RESOURCE, 1), b"")
        position = data.find(FIXED_SIGNATURE)
        if position < 0:
            raise Failure(f"{path} has no version resource.")
        high, low = struct.unpack_from("<II", data, position + 8)
        self.number = f"{high >> 16}.{high & 0xFFFF}.{low >> 16}.{low & 0xFFFF}"
        self.pairs = data.decode("utf-16-le", errors="replace")
        self.language = ord(self.text("Translation")[0])

    def text(self, name):
        """The value of that name, which begins at the next multiple of four bytes."""
        return re.search(rf"\b{name}\0+([^\0]+)", self.pairs)[1]
