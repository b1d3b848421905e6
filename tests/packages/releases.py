"""The packages that the tests install: of this version, of an earlier and a later one, signed and not."""

import pathlib
import shutil
import struct
import subprocess
import sys

from machine import BUILD, ROOT

sys.path.insert(0, str(ROOT / "packaging"))
import contents  # noqa: E402, F401  # they lie in another folder, and are for all tests
import installer  # noqa: E402
import make  # noqa: E402
import product  # noqa: E402
import registration  # noqa: E402, F401
import tables  # noqa: E402, F401
import tools  # noqa: E402, F401
from signing import Signer  # noqa: E402

WORK = BUILD / "packages-tests"
EPOCH = 1_700_000_000  # a fixed day: the tests look at no clock

VERSION = product.project("VERSION")
MAJOR, MINOR, _ = (int(number) for number in VERSION.split("."))
EARLIER = f"{MAJOR - 1}.9.0"
LATER = f"{MAJOR}.{MINOR + 1}.0"

OUTPUT = WORK / "output"  # all packages of this version
CERTIFICATE, KEY = WORK / "certificate.pem", WORK / "key.pem"


def set_version(path, version):
    """Makes code say that it is of another version."""
    data = bytearray(path.read_bytes())
    position = data.find(product.FIXED_SIGNATURE)
    if position >= 0:
        major, minor, patch = (int(number) for number in version.split("."))
        struct.pack_into("<II", data, position + 8, major << 16 | minor, patch << 16)
        path.write_bytes(data)


def builds_of(version, sign=None):
    """The build folders of a version: those of the project, with the version in their code."""
    folder = WORK / ("signed" if sign else version)
    copies = make.copy_builds(folder, None)
    for copy in copies.values():
        for name in make.CODE:
            set_version(copy / name, version)
            if sign:
                sign.sign(copy / name)
    return copies


def builds(version):
    """The build folders that the packages of a version were made from."""
    return {width: WORK / version / width for width in product.WIDTHS}


def code_of(version, width):
    """The bytes of the module of a version."""
    return (builds(version)[width] / "norvik.dll").read_bytes()


def package(version, width="x64", kind=""):
    return WORK / f"norvik-{version}-{width}{kind}.msi"


def signer():
    return Signer(str(CERTIFICATE), str(KEY), "Norvik", EPOCH)


def make_certificate():
    command = ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-sha256", "-days", "2",
               "-subj", "/CN=Norvik test publisher", "-addext", "keyUsage=critical,digitalSignature",
               "-addext", "extendedKeyUsage=codeSigning", "-keyout", KEY, "-out", CERTIFICATE]
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def build(version, width, folders, kind="", sign=None, **options):
    file = package(version, width, kind)
    installer.build(installer.Package(width, version, folders, **options), file, EPOCH)
    if sign:
        sign.sign(file)


def make_releases():
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    make_certificate()
    folders = {version: builds_of(version) for version in (EARLIER, VERSION, LATER)}
    for version in folders:
        for width in product.WIDTHS:
            build(version, width, folders[version])
    OUTPUT.mkdir()
    make.make_all(OUTPUT, VERSION, folders[VERSION], EPOCH)
    build(LATER, "x64", folders[LATER], kind="-minor", code_of=VERSION)
    build(VERSION, "x64", builds_of(VERSION, signer()), kind="-signed", sign=signer())


