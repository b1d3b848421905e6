"""What registration writes: the entries of the module's registration script, and those that the system adds for its type library.

Both are read from what the build generated: norvik.rgs, which the module itself carries out, and norvik.idl.
"""

import re
from dataclasses import dataclass

CLASSES = "Software\\Classes\\"

# The system's own marshaler for interfaces that a type library describes.
AUTOMATION_MARSHALER = "{00020424-0000-0000-C000-000000000046}"

# LIBFLAG_FHASDISKIMAGE: what the system notes of a library that it has read from a file.
LIBRARY_FLAGS = "8"

# Who owns an entry: a module of one width, or both modules together, in the view of one width or where there is only one.
MODULE, SHARED, SHARED_VIEW = "module", "shared", "shared view"


@dataclass(frozen=True)
class Row:
    """A value of the registry below HKEY_LOCAL_MACHINE; `name` is None for the default value, `value` is None for a bare key."""

    owner: str
    key: str
    name: str | None
    value: str | None


def script_entries(text):
    """(key, name, value) of all entries of a registration script, as the registrar writes them below its root."""
    tokens = re.findall(r"'((?:[^']|'')*)'|([^\s'=]+)|(=)", text)
    words = [("text", quoted.replace("''", "'")) if not (bare or equal) else ("word", bare or equal)
             for quoted, bare, equal in tokens]
    path, name, is_value, position = [], None, False, 0
    while position < len(words):
        word = words[position][1]
        position += 1
        if word == "{":
            path.append(name)
        elif word == "}":
            path.pop()
        elif word == "val":
            is_value = True
        elif word not in ("NoRemove", "ForceRemove"):
            name, value = word, None
            if words[position:position + 2] == [("word", "="), ("word", "s")]:
                value = words[position + 2][1]
                position += 3
            if path:
                key = "\\".join(path[1:] if is_value else path[1:] + [name])
                yield key, name if is_value else None, value
            is_value = False


def library_facts(text):
    """What the interface description says: the library's id, version and title, the interface's id and name."""
    library = re.search(r"uuid\((?P<id>[^)]*)\),\s*version\((?P<version>[^)]*)\),\s*helpstring\(\"(?P<title>[^\"]*)\"\)\s*\]"
                        r"\s*library", text)
    interface = re.search(r"uuid\(([^)]*)\)[^\]]*\]\s*interface\s+(\w+)", text)
    return library["id"], library["version"], library["title"], interface[1], interface[2]


def library_rows(text, width, module):
    library, version, title, interface, interface_name = library_facts(text)
    yield Row(SHARED, f"TypeLib\\{{{library}}}", None, None)
    key = f"TypeLib\\{{{library}}}\\{version}"
    yield Row(SHARED, key, None, title)
    yield Row(SHARED, f"{key}\\FLAGS", None, LIBRARY_FLAGS)
    yield Row(SHARED, f"{key}\\HELPDIR", None, "[HELPFOLDER]")
    yield Row(MODULE, f"{key}\\0\\{'win64' if width == 'x64' else 'win32'}", None, module)
    key = f"Interface\\{{{interface}}}"
    yield Row(SHARED_VIEW, key, None, interface_name)
    yield Row(SHARED_VIEW, f"{key}\\ProxyStubClsid", None, AUTOMATION_MARSHALER)
    yield Row(SHARED_VIEW, f"{key}\\ProxyStubClsid32", None, AUTOMATION_MARSHALER)
    yield Row(SHARED_VIEW, f"{key}\\TypeLib", None, f"{{{library}}}")
    yield Row(SHARED_VIEW, f"{key}\\TypeLib", "Version", version)


def script_rows(text, module):
    """The class itself is seen by hosts of its own width only; the other names lead to it, and are the same for both."""
    for key, name, value in script_entries(text):
        if key != "CLSID":
            yield Row(MODULE if key.startswith("CLSID\\") else SHARED, key, name, value and value.replace("%MODULE%", module))


def rows(build, width, module):
    """What registering the module of this width writes; `module` is what stands for its path."""
    generated = build / "src/control/generated"
    script = (generated / "norvik.rgs").read_text(encoding="ascii")
    description = (generated / "norvik.idl").read_text(encoding="ascii")
    for row in [*script_rows(script, module), *library_rows(description, width, module)]:
        yield Row(row.owner, CLASSES + row.key, row.name, row.value)


def roots(some):
    """The keys that belong to the product alone: whatever lies in them goes with it."""
    keys = {row.key for row in some}
    own = {key for key in keys if not any(key.startswith(other + "\\") for other in keys)}
    return sorted(own)
