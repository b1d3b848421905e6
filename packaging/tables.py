"""The tables of a Windows Installer package: what wixl does not know is added here, and all of them are read back and compared."""

import hashlib
import time

import product
import registration
from product import Failure
from tools import run

# Attributes of components (msidbComponentAttributes...).
REGISTRY_KEY_PATH, TRANSITIVE, WIDE = 4, 64, 256

# Names in the Registry table that stand for the key itself: made and taken away, or taken away with all that it holds.
MAKE_AND_TAKE, TAKE = "*", "-"

LOCAL_MACHINE = 2
ON_UNINSTALL = 2  # when a row of RemoveFile is carried out
MOVE_FILES = 3800  # where the action of that name usually stands

MOVE_FILE_COLUMNS = {"MoveFile": "s72", "Component_": "s72", "SourceName": "L255", "DestName": "L255", "SourceFolder": "S72",
                     "DestFolder": "s72", "Options": "i2"}


def permissions(package):
    """The components that put the administrator's permission file beside a module. Their key path is the folder; it has no row in
    CreateFolder, which would keep it when all else is gone."""
    return [component for component in package.components if component.is_permission]


def attributes(component):
    """An installation that names a permission file is asked for it, also when the component was not installed before."""
    wanted = WIDE if component.wide else 0
    if component.rows and not component.item:
        wanted |= REGISTRY_KEY_PATH
    if component.is_permission:
        wanted |= TRANSITIVE
    return wanted


def move_file_rows(package):
    """The file is copied (Options 0), over one that is there, and no component owns it: it stays when all else goes."""
    return [[f"Place_{component.name}", component.name, "", "permit.xml", "PERMITFILE", component.folder, "0"]
            for component in permissions(package)]


def registry_rows(package):
    """(key, name, value, component) of the whole Registry table."""
    rows = set()
    for component in package.components:
        for row in component.rows:
            rows.add((row.key, MAKE_AND_TAKE if row.value is None else row.name or "", row.value or "", component.name))
        rows.update((key, TAKE, "", component.name) for key in component.removed_keys)
    return rows


def is_key_row(row):
    return row[1] in (MAKE_AND_TAKE, TAKE)


def remove_file_rows(package):
    """What is empty when all features are gone goes, too: also folders in which there was nothing but folders."""
    return [(f"Folder{number}", package.places().name, "", package.directory_name(*directory), str(ON_UNINSTALL))
            for number, directory in enumerate(reversed(package.directories()))]


def versions(package):
    """The version and language of every file that has one, by the name of its component."""
    found = {}
    for component in package.components:
        if component.item and component.item.is_code:
            resource = product.VersionResource(component.item.source)
            found[component.name] = (resource.number, str(resource.language))
    return found


def secure_properties(package):
    """What an installation by another account takes over from the one who asked for it."""
    remembered = [f"PREVIOUS{folder}" for folder in package.folders]
    return sorted(["WIX_DOWNGRADE_DETECTED", "WIX_UPGRADE_DETECTED", "PERMITFILE", *package.folders, *remembered])


def edits(package):
    """The statements that complete what wixl made."""
    for component in permissions(package):
        yield (f"UPDATE `Component` SET `Attributes` = {attributes(component)}, `Condition` = 'PERMITFILE' "
               f"WHERE `Component` = '{component.name}'")
    yield f"INSERT INTO `InstallExecuteSequence` (`Action`, `Sequence`) VALUES ('MoveFiles', {MOVE_FILES})"
    for name, (version, language) in versions(package).items():
        yield f"UPDATE `File` SET `Version` = '{version}', `Language` = '{language}' WHERE `File` = '{name}'"
        yield f"DELETE FROM `MsiFileHash` WHERE `File_` = '{name}'"
    yield f"UPDATE `Property` SET `Value` = '{';'.join(secure_properties(package))}' WHERE `Property` = 'SecureCustomProperties'"
    for number, (key, name, _, component) in enumerate(sorted(filter(is_key_row, registry_rows(package)))):
        yield ("INSERT INTO `Registry` (`Registry`, `Root`, `Key`, `Name`, `Component_`) "
               f"VALUES ('Key{number}', {LOCAL_MACHINE}, '{key}', '{name}', '{component}')")
    for key, component, _, directory, mode in remove_file_rows(package):
        yield ("INSERT INTO `RemoveFile` (`FileKey`, `Component_`, `DirProperty`, `InstallMode`) "
               f"VALUES ('{key}', '{component}', '{directory}', {mode})")


def table_text(name, columns, keys, rows):
    lines = [columns, list(columns.values()), [name, *keys], *rows]
    return "".join("\t".join(line) + "\r\n" for line in lines)


def complete(package, folder, epoch):
    """Adds to package.msi in the folder what its source could not say, and gives it its package code and times."""
    msi = folder / "package.msi"
    text = table_text("MoveFile", MOVE_FILE_COLUMNS, ["MoveFile"], move_file_rows(package))
    (folder / "MoveFile.idt").write_text(text, encoding="ascii", newline="")
    run("msibuild", msi, "-i", folder / "MoveFile.idt")
    run("msibuild", msi, *(word for statement in edits(package) for word in ("-q", statement)))
    summary = run("msiinfo", "export", msi, "_SummaryInformation")
    file = folder / "_SummaryInformation.idt"
    file.write_text(set_summary(summary, package_code(package, folder), epoch), encoding="ascii", newline="")
    run("msibuild", msi, "-i", file)


def package_code(package, folder):
    """Packages that differ in anything have different codes: all that goes into one decides on its code."""
    inputs = hashlib.sha256(run("wixl", "--version").encode() + "\n".join(edits(package)).encode())
    for path in sorted(folder.iterdir()):
        if path.suffix != ".msi":
            inputs.update(f"{path.name} {hashlib.sha256(path.read_bytes()).hexdigest()}\n".encode())
    return product.identifier(f"package {inputs.hexdigest()}")


def summary_time(epoch):
    return time.strftime("%Y/%m/%d %H:%M:%S", time.gmtime(epoch))


def set_summary(text, code, epoch):
    """The summary with its package code (9) and the times of its making (12) and saving (13)."""
    lines = text.replace("\r\n", "\n").splitlines()
    fixed = {"9": code, "12": summary_time(epoch), "13": summary_time(epoch)}
    found = [line.split("\t", 1) for line in lines]
    return "".join("\t".join([entry[0], fixed.get(entry[0], entry[1])]) + "\r\n" for entry in found)


def read(msi, table):
    """The rows of a table, each by the names of its columns; none for a table that is not there."""
    if table not in run("msiinfo", "tables", msi).split():
        return []
    lines = run("msiinfo", "export", msi, table).replace("\r\n", "\n").split("\n")
    names = lines[0].split("\t")
    return [dict(zip(names, line.split("\t"))) for line in lines[3:] if line]


def compare(name, found, meant):
    if found != meant:
        raise Failure(f"The table {name} is not what was meant: {found} instead of {meant}.")


def check(package, msi, epoch):
    """Reads the tables back and compares them with what was meant; the first that differs is a failure."""
    compare("Component", {row["Component"]: (row["ComponentId"], row["Directory_"].split("_")[0], int(row["Attributes"]),
                                             row["Condition"]) for row in read(msi, "Component")},
            {component.name: (package.guid(component), component.folder, attributes(component),
                              "PERMITFILE" if component.is_permission else "") for component in package.components})
    check_files(package, msi)
    compare("Registry", {(row["Key"], row["Name"], row["Value"], row["Component_"]) for row in read(msi, "Registry")},
            registry_rows(package))
    compare("Registry.Root", {row["Root"] for row in read(msi, "Registry")}, {str(LOCAL_MACHINE)})
    compare("MoveFile", [list(row.values()) for row in read(msi, "MoveFile")], move_file_rows(package))
    compare("CreateFolder", read(msi, "CreateFolder"), [])
    compare("RemoveFile", {tuple(row.values()) for row in read(msi, "RemoveFile")}, set(remove_file_rows(package)))
    compare("FeatureComponents", {(row["Feature_"], row["Component_"]) for row in read(msi, "FeatureComponents")},
            {(feature, component.name) for component in package.components for feature in component.features})
    check_order(package, msi)
    check_product(package, msi, epoch)


def check_files(package, msi):
    rows = {row["File"]: row for row in read(msi, "File")}
    compare("File", {name: (row["FileName"], int(row["FileSize"]), row["Version"], row["Language"]) for name, row in rows.items()},
            {component.name: (component.item.path.name, component.item.source.stat().st_size,
                              *versions(package).get(component.name, ("", "")))
             for component in package.components if component.item})
    compare("MsiFileHash", {row["File_"] for row in read(msi, "MsiFileHash")}, rows.keys() - versions(package).keys())


def check_order(package, msi):
    rows = {row["Action"]: (int(row["Sequence"]), row["Condition"]) for row in read(msi, "InstallExecuteSequence")}
    conditions = {action: condition for action, (_, condition) in package.actions().items()}
    meant = {action: (number, conditions.get(action, "")) for action, number in package.sequence().items()}
    meant["MoveFiles"] = (MOVE_FILES, "")
    compare("InstallExecuteSequence", {action: rows.get(action) for action in meant}, meant)
    types = {row["Action"]: int(row["Type"]) for row in read(msi, "CustomAction")}
    compare("CustomAction", types, {action: kind for action, (kind, _) in package.actions().items()})


def check_product(package, msi, epoch):
    properties = {row["Property"]: row["Value"] for row in read(msi, "Property")}
    meant = {**package.properties(), "ALLUSERS": "1", "ProductCode": package.product_code, "ProductVersion": package.version,
             "ProductName": package.name, "Manufacturer": package.publisher, "UpgradeCode": product.UPGRADE_CODE,
             "ProductLanguage": "1033", "SecureCustomProperties": ";".join(secure_properties(package))}
    compare("Property", properties, meant)
    compare("Upgrade", {(row["UpgradeCode"], row["VersionMin"], row["VersionMax"], row["Attributes"], row["ActionProperty"])
                        for row in read(msi, "Upgrade")},
            {(product.UPGRADE_CODE, "", package.version, "1", "WIX_UPGRADE_DETECTED"),
             (product.UPGRADE_CODE, package.version, "", "2", "WIX_DOWNGRADE_DETECTED")})
    compare("LaunchCondition", {row["Condition"] for row in read(msi, "LaunchCondition")},
            {"NOT WIX_DOWNGRADE_DETECTED", *(condition for condition, _ in package.conditions())})
    summary = {row["PropertyId"]: row["Value"] for row in read(msi, "_SummaryInformation")}
    compare("_SummaryInformation", (summary["7"], summary["12"], summary["13"]),
            (("x64" if package.width == "x64" else "Intel") + ";1033", summary_time(epoch), summary_time(epoch)))
