"""Makes all packages of a release from what was built. scripts/package calls it.

Usage: make.py [--check] [--output FOLDER] [--minor-upgrade-of VERSION] [--sign CERTIFICATE --key KEY [--authority FILE]
[--pkcs11-module FILE] [--timestamp URL]]
"""

import argparse
import pathlib
import re
import shutil
import sys
import tempfile

import archives
import bill
import contents
import installer
import product
import selfcheck
from product import ROOT, WIDTHS, Failure
from signing import Signer
from tools import run

# What the build gives to the packages: code that is signed, what it was linked from, and what registration is read from.
CODE = ("norvik.dll", "norvik.exe", "norvikopen.exe", installer.ACTIONS)
BESIDE = (*(f"{name}.map" for name in CODE), "src/control/generated/norvik.rgs", "src/control/generated/norvik.idl")


def arguments():
    parser = argparse.ArgumentParser(prog="package", description="Makes all packages of a release below build/packages.")
    parser.add_argument("--check", action="store_true", help="make nothing, only tell what stands against it")
    parser.add_argument("--output", type=pathlib.Path, default=ROOT / "build/packages", metavar="FOLDER")
    parser.add_argument("--minor-upgrade-of", metavar="VERSION", help="keep that version's product code")
    parser.add_argument("--sign", metavar="CERTIFICATE", help="sign code and packages; the file has the chain, too")
    parser.add_argument("--key", help="the file of the key, or its pkcs11: name")
    parser.add_argument("--authority", metavar="FILE", help="what signatures are verified with; the certificate itself if not given")
    parser.add_argument("--pkcs11-module", metavar="FILE", help="the library of the token that has the key")
    parser.add_argument("--timestamp", metavar="URL", help="a time stamp server; signatures then differ each time")
    options = parser.parse_args()
    if bool(options.sign) != bool(options.key):
        parser.error("--sign and --key belong together")
    if options.timestamp and not options.sign:
        parser.error("--timestamp needs --sign")
    return options


def check_version(version, root=ROOT):
    """A release that its users cannot read about is not packaged."""
    log = root / "CHANGELOG.md"
    if not log.is_file() or not re.search(rf"^## {re.escape(version)}(\s|$)", log.read_text(encoding="utf-8"), re.MULTILINE):
        raise Failure(f"CHANGELOG.md has no entry for the version {version}.")


def check_files(options):
    """What a signature needs is looked for before time is spent on what it would sign."""
    key_file = None if options.key and options.key.startswith("pkcs11:") else options.key
    for name in (options.sign, key_file, options.authority, options.pkcs11_module):
        if name and not pathlib.Path(name).is_file():
            raise Failure(f"{name} is no file.")


def epoch_of_sources():
    """The time of the last commit: what was made of one commit is the same on every day."""
    return int(run("git", "-C", ROOT, "log", "-1", "--format=%ct"))


def signer(options, epoch):
    if not options.sign:
        return None
    name = product.VersionResource(ROOT / "build/x64/norvik.dll").text("ProductName")
    return Signer(options.sign, options.key, name, epoch, options.authority, options.pkcs11_module, options.timestamp)


def copy_builds(folder, sign, build=ROOT / "build"):
    """Copies what the packages need of both builds, by width; the copies are signed where somebody signs."""
    builds = {width: folder / width for width in WIDTHS}
    for width, copy in builds.items():
        for name in (*CODE, *BESIDE):
            (copy / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(build / width / name, copy / name)
        for name in CODE if sign else ():
            sign.sign(copy / name)
    return builds


def make_all(output, version, builds, epoch, sign=None, code_of=None, root=ROOT, tests=None):
    """Writes every package into an empty folder; `root` is where the documents come from, and `tests` the folder of the builds
    whose test programs make the self-check, which is left out without them."""
    stem = f"norvik-{version}"
    for width in WIDTHS:
        package = installer.Package(width, version, builds, root, code_of)
        file = output / f"{stem}-{width}.msi"
        installer.build(package, file, epoch)
        if sign:
            sign.sign(file)
    files = contents.by_hand(builds, root)
    archives.write_zip(output / f"{stem}.zip", files, epoch)
    # What the installers run while they install is in nobody's folder afterwards, and part of what is delivered all the same.
    files.update({f"{width}/installer/{installer.ACTIONS}": builds[width] / installer.ACTIONS for width in WIDTHS})
    maps = {name: source.with_name(f"{source.name}.map") for name, source in files.items() if source.name in CODE}
    bill.write(output / f"{stem}.spdx.json", bill.bill(package.name, package.publisher, version, files, maps, epoch))
    if tests:
        selfcheck.make_selfcheck(tests, output / f"{stem}-selfcheck.zip", version, epoch, builds)
    archives.write_checksums(output)


def replace(new, old):
    """The packages of one run take the place of those of an earlier one, all together."""
    shutil.rmtree(old, ignore_errors=True)
    old.parent.mkdir(parents=True, exist_ok=True)
    shutil.move(new, old)


def main():
    options = arguments()
    version = product.project("VERSION")
    check_version(version)
    check_files(options)
    if options.check:
        return
    epoch = epoch_of_sources()
    sign = signer(options, epoch)
    with tempfile.TemporaryDirectory(dir=ROOT / "build") as name:
        work = pathlib.Path(name)
        made = work / "packages"
        made.mkdir()
        make_all(made, version, copy_builds(work, sign), epoch, sign, options.minor_upgrade_of, tests=ROOT / "build")
        replace(made, options.output)
    for path in sorted(options.output.iterdir()):
        print(f"{path.stat().st_size:>10,}  {path}")


if __name__ == "__main__":
    try:
        main()
    except Failure as failure:
        sys.exit(f"error: {failure}")
