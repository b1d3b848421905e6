"""Reads what a Windows module says about itself: its header, imports, exports and resources (Microsoft's PE format)."""

import struct
from collections import namedtuple

MACHINES = {0x8664: "x64", 0x014C: "x86"}
EXPORT, IMPORT, RESOURCE, RELOCATION, DELAY_IMPORT = 0, 1, 2, 5, 13  # entries of the data directory

Section = namedtuple("Section", "name address data characteristics")


class PeFile:
    """A module, read from a file. `characteristics` are the DllCharacteristics, `sections` come in their order."""

    def __init__(self, path):
        self.data = path.read_bytes()
        start = self.number("<I", 0x3C)
        if self.data[start:start + 4] != b"PE\0\0":
            raise ValueError(f"{path} is not a Windows module")
        machine, count, self.time, _, _, optional_size, _ = struct.unpack_from("<HHIIIHH", self.data, start + 4)
        self.width = MACHINES.get(machine, f"machine {machine:#x}")
        optional = start + 24
        is_wide = self.number("<H", optional) == 0x20B
        self.characteristics = self.number("<H", optional + 70)
        directory = optional + (112 if is_wide else 96)
        self.directory = [struct.unpack_from("<II", self.data, directory + 8 * index) for index in range(16)]
        self.sections = [self.section(optional + optional_size + 40 * index) for index in range(count)]

    def number(self, form, offset):
        return struct.unpack_from(form, self.data, offset)[0]

    def section(self, offset):
        name, _, address, size, position = struct.unpack_from("<8sIIII", self.data, offset)
        characteristics = self.number("<I", offset + 36)
        return Section(name.rstrip(b"\0").decode(), address, self.data[position:position + size], characteristics)

    def at(self, address):
        """The bytes from a relative virtual address on, to the end of its section."""
        for section in self.sections:
            if section.address <= address < section.address + len(section.data):
                return section.data[address - section.address:]
        raise ValueError(f"the address {address:#x} is in no section")

    def text(self, address):
        return self.at(address).split(b"\0", 1)[0].decode()

    def imported_modules(self):
        """The names of the modules that are loaded with this one; an empty list when there are none."""
        address, names = self.directory[IMPORT][0], []
        while address and (name := struct.unpack_from("<5I", self.at(address))[3]):
            names.append(self.text(name))
            address += 20
        return names

    def exports(self):
        """The names of the exported functions; a function without a name counts as its ordinal."""
        address = self.directory[EXPORT][0]
        if not address:
            return []
        base, functions, count, _, names, ordinals = struct.unpack_from("<6I", self.at(address), 16)
        named = [struct.unpack_from("<H", self.at(ordinals + 2 * index))[0] for index in range(count)]
        texts = [self.text(struct.unpack_from("<I", self.at(names + 4 * index))[0]) for index in range(count)]
        return texts + [f"#{base + index}" for index in range(functions) if index not in named]

    def resources(self):
        """The contents of the resources by (type, name); both are numbers or texts. Languages are not told apart."""
        address = self.directory[RESOURCE][0]
        if not address:
            return {}
        tree = self.at(address)
        return {(kind, name): self.leaf(tree, languages)
                for kind, names in entries(tree, 0) for name, languages in entries(tree, names)}

    def leaf(self, tree, languages):
        _, offset = next(iter(entries(tree, languages)))
        address, size = struct.unpack_from("<II", tree, offset)
        return self.at(address)[:size]


def entries(tree, offset):
    """(name or number, offset of what it stands for) for each entry of one directory of the resource tree."""
    named, numbered = struct.unpack_from("<HH", tree, offset + 12)
    for index in range(named + numbered):
        name, target = struct.unpack_from("<II", tree, offset + 16 + 8 * index)
        yield (name_at(tree, name & 0x7FFFFFFF) if name >> 31 else name), target & 0x7FFFFFFF


def name_at(tree, offset):
    length = struct.unpack_from("<H", tree, offset)[0]
    return tree[offset + 2:offset + 2 + 2 * length].decode("utf-16-le")
