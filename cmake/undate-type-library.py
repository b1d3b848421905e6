"""Takes the time of its making out of a type library, so that the same source always gives the same bytes.

Usage: undate-type-library.py FILE. The compiler writes the time twice: as a text ("... at Fri Nov 20 23:16:54 2026", in UTC
because the build sets TZ) and as a 32-bit number.
"""

import calendar
import pathlib
import re
import struct
import sys
import time

FIXED = b"Thu Jan  1 00:00:00 1970"


def main(path):
    data = path.read_bytes()
    match = re.search(rb"Created by WIDL version \S+ at ([ -~]{24})", data)
    if not match:
        sys.exit(f"{path}: no time of making found; has the compiler changed?")
    made = calendar.timegm(time.strptime(match[1].decode(), "%a %b %d %H:%M:%S %Y"))
    data = data.replace(match[1], FIXED).replace(struct.pack("<I", made), struct.pack("<I", 0))
    path.write_bytes(data)


main(pathlib.Path(sys.argv[1]))
