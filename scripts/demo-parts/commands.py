"""commands.py MANIFEST FOLDER: shows a manifest's commands, a line for each; sources below FOLDER without it."""

import sys
import xml.etree.ElementTree as ElementTree


def policy(element):
    return f"if it exists: {element.tag}" + (" with force" if element.get("force") == "true" else "")


def describe(command):
    destination = command.find("Destination")
    source = command.findtext("Source").strip().removeprefix(sys.argv[2])
    folder = next(e for e in destination if e.tag not in ("FileName", "Attributes", "IfFileExists"))
    text = (folder.text or "").strip()
    more = [element.text or element.tag for element in destination.findall("Attributes/*")]
    more += [policy(element) for element in destination.findall("IfFileExists/*")]
    if command.tag == "Open":
        more.append("for the browser" if command.get("browser") == "true" else "started by the shell")
    return command.tag, source, f"{folder.tag} {text}".strip(), ", ".join(more)


rows = [describe(command) for command in ElementTree.parse(sys.argv[1]).getroot()]
widths = [max(len(row[column]) for row in rows) for column in range(3)]
for row in rows:
    print(("  " + "  ".join(text.ljust(width) for text, width in zip(row, widths)) + "  " + row[3]).rstrip())
