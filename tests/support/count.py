"""Counts the cases in GoogleTest's result files below a folder, and prints the sum as one line.

Usage: count.py FOLDER [FOLDER...]. Exits with 1 when a case failed or none ran.
"""

import pathlib
import re
import sys
import xml.etree.ElementTree

# A failed comparison of bytes puts them into the file as they are; they are nothing that XML may hold.
NOT_XML = re.compile("[^\\t\\n\\r -\ud7ff\ue000-\ufffd]")


def read(path):
    return xml.etree.ElementTree.fromstring(NOT_XML.sub("?", path.read_text(encoding="utf-8", errors="replace")))


def main(folders):
    passed = failed = skipped = 0
    for folder in folders:
        for path in sorted(pathlib.Path(folder).glob("*.xml")):
            for case in read(path).iter("testcase"):
                if case.find("failure") is not None:
                    failed += 1
                elif case.get("result") == "skipped" or case.find("skipped") is not None:
                    skipped += 1
                else:
                    passed += 1
    print(f"{passed} passed, {failed} failed, {skipped} skipped")
    return 0 if passed and not failed else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
