"""The registration of links in browsers, as `norvik browser on` writes it."""

import registration

PROGRAM = "norvikopen.exe"
KEY = "Software\\Classes\\norvik"


def rows(program):
    """`program` is what stands for the path of norvikopen.exe."""
    return [
        registration.Row("", KEY, None, "URL:Norvik"),
        registration.Row("", KEY, "URL Protocol", ""),
        registration.Row("", f"{KEY}\\shell\\open\\command", None, f'"{program}" "%1"'),
    ]
