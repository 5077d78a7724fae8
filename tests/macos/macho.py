"""Reads universal Mach-O files for the tests, as <mach-o/loader.h>, <mach-o/fat.h> and the published layout of the
Objective-C runtime's metadata describe them. A file with another layout raises an exception."""

import struct
from collections.abc import Iterator

X86_64, ARM64 = 0x01000007, 0x0100000C
NAMES = {X86_64: "x86_64", ARM64: "arm64"}

LC_SYMTAB, LC_DYSYMTAB, LC_LOAD_DYLIB, LC_SEGMENT_64 = 0x2, 0xB, 0xC, 0x19
LC_CODE_SIGNATURE, LC_VERSION_MIN_MACOSX, LC_FUNCTION_STARTS, LC_BUILD_VERSION = 0x1D, 0x24, 0x26, 0x32


def parts(file: bytes) -> list[tuple[int, int, int, int]]:
    """Returns (processor, alignment, offset, size) for each part of a universal file."""
    magic, count = struct.unpack_from(">2I", file)
    assert magic == 0xCAFEBABE, "not a universal file"
    found = []
    for number in range(count):
        processor, _, offset, size, alignment = struct.unpack_from(">5I", file, 8 + 20 * number)
        found.append((processor, alignment, offset, size))
    return found


class Section:
    def __init__(self, file: bytes, at: int) -> None:
        self.name = "%s,%s" % tuple(file[place:place + 16].rstrip(b"\0").decode() for place in (at + 16, at))
        self.address, self.size = struct.unpack_from("<2Q", file, at + 32)
        self.offset, _, _, self.relocations, self.flags = struct.unpack_from("<5I", file, at + 48)


class Segment:
    def __init__(self, file: bytes, at: int) -> None:
        self.name = file[at + 8:at + 24].rstrip(b"\0").decode()
        self.address, self.size, self.offset, self.file_size = struct.unpack_from("<4Q", file, at + 24)
        self.maximum, self.initial, count, self.flags = struct.unpack_from("<4I", file, at + 56)
        self.sections = [Section(file, at + 72 + 80 * number) for number in range(count)]


class Slice:
    """One architecture of an executable. `start` is its offset in the universal file."""

    def __init__(self, file: bytes, processor: int, start: int, size: int) -> None:
        self.name, self.start = NAMES[processor], start
        self.file = file[start:start + size]
        magic, kind, _, self.file_type, count, _, self.flags, _ = struct.unpack_from("<8I", self.file)
        assert magic == 0xFEEDFACF and kind == processor, "not a 64-bit Mach-O file of its architecture"
        self.commands, at = [], 32  # (command, offset)
        for _ in range(count):
            command, length = struct.unpack_from("<2I", self.file, at)
            self.commands.append((command, at))
            at += length
        self.segments = [Segment(self.file, at) for at in self.all(LC_SEGMENT_64)]
        self.sections = {section.name: section for segment in self.segments for section in segment.sections}

    def all(self, command: int) -> list[int]:
        """Returns the offsets of the load commands of this kind."""
        return [at for kind, at in self.commands if kind == command]

    def one(self, command: int) -> int:
        """Returns the offset of the one load command of this kind."""
        at, = self.all(command)
        return at

    def fields(self, command: int, format: str) -> tuple:
        """Returns the fields after kind and length of the one load command of this kind."""
        return struct.unpack_from("<" + format, self.file, self.one(command) + 8)

    def place(self, address: int) -> int:
        """Returns the file offset of an address."""
        for segment in self.segments:
            if segment.address <= address < segment.address + segment.file_size:
                return segment.offset + address - segment.address
        raise ValueError(f"no such address: {address:#x}")

    def read(self, address: int, format: str) -> tuple:
        """Returns the values at an address."""
        return struct.unpack_from("<" + format, self.file, self.place(address))

    def text(self, address: int) -> str:
        """Returns the C string at an address."""
        at = self.place(address)
        return self.file[at:self.file.index(b"\0", at)].decode()

    def texts(self, section: str) -> list[str]:
        """Returns the C strings of a section."""
        section = self.sections[section]
        return self.file[section.offset:section.offset + section.size].rstrip(b"\0").decode().split("\0")

    def pointers(self, section: str) -> tuple[int, ...]:
        """Returns the pointers of a section, or none if there is no such section."""
        if section not in self.sections:
            return ()
        section = self.sections[section]
        return struct.unpack_from(f"<{section.size // 8}Q", self.file, section.offset)

    def functions(self) -> set[int]:
        """Returns the start addresses of the functions."""
        at, size = self.fields(LC_FUNCTION_STARTS, "2I")
        address, end, found = self.segments[1].address, at + size, set()
        while at < end:
            step, at = uleb128(self.file, at)
            if step == 0:
                break
            address += step
            found.add(address)
        return found

    def lists(self, name: str) -> tuple[int, ...]:
        """Returns the pointers of an Objective-C list section, from either data segment."""
        return self.pointers(f"__DATA,{name}") + self.pointers(f"__DATA_CONST,{name}")


def slices(file: bytes) -> dict[str, Slice]:
    """Returns the architectures of a universal executable by their names."""
    found = [Slice(file, processor, offset, size) for processor, _, offset, size in parts(file)]
    return {part.name: part for part in found}


def entries(part: Slice, address: int, format: str) -> Iterator[tuple]:
    """Yields the entries of an Objective-C list: each entry's fields. Address 0 is an empty list."""
    if address:
        size, count = part.read(address, "2I")
        assert size == struct.calcsize("<" + format), "a list of another layout"
        for number in range(count):
            yield part.read(address + 8 + size * number, format)


def methods(part: Slice, address: int) -> dict[str, tuple[str, int]]:
    """Returns the methods of a list: selector -> (type encoding, address of the code)."""
    return {part.text(name): (part.text(types), code) for name, types, code in entries(part, address, "3Q")}


class ObjectiveC:
    """The runtime's metadata of the classes and categories of one architecture."""

    def __init__(self, part: Slice) -> None:
        self.classes = {}
        for address in part.lists("__objc_classlist"):
            name, description = self.describe(part, address)
            self.classes[name] = description
        self.categories = []
        for address in part.lists("__objc_catlist"):
            name, target, instance, kind = part.read(address, "4Q")
            self.categories.append({
                "address": address,
                "name": part.text(name),
                "class": next((name for name, known in self.classes.items() if known["address"] == target), None),
                "methods": methods(part, instance),
                "class methods": methods(part, kind),
            })

    @staticmethod
    def describe(part: Slice, address: int) -> tuple[str, dict]:
        meta, _, _, _, data = part.read(address, "5Q")
        start, size, _, _, name, own, protocols, ivars, _, properties = part.read(data + 4, "3I7Q")
        protocol_list = part.read(protocols, "Q")[0] if protocols else 0
        return part.text(name), {
            "address": address,
            "start": start,
            "size": size,
            "methods": methods(part, own),
            "class methods": methods(part, part.read(part.read(meta + 32, "Q")[0] + 32, "Q")[0]),
            "protocols": [part.text(part.read(part.read(protocols + 8 + 8 * number, "Q")[0] + 8, "Q")[0])
                          for number in range(protocol_list)],
            "ivars": [(part.text(name), part.text(types), part.read(offset, "I")[0], length)
                      for offset, name, types, _, length in entries(part, ivars, "3Q2I")],
            "properties": [(part.text(name), part.text(attributes))
                           for name, attributes in entries(part, properties, "2Q")],
        }


class Unwinding:
    """The compact unwind table (<mach-o/compact_unwind_encoding.h>) of one architecture: the personality and the
    exception table of each function."""

    HAS_LSDA, PERSONALITY = 0x40000000, 0x30000000

    def __init__(self, part: Slice) -> None:
        section = part.sections["__TEXT,__unwind_info"]
        self.part, self.base = part, section.offset
        self.image = next(segment.address for segment in part.segments if segment.name == "__TEXT")
        version, common, commons, personality, personalities, index, pages = self.at(0, "7I")
        assert version == 1
        self.personalities = [self.image + offset for offset, in
                              struct.iter_unpack("<I", self.bytes(personality, 4 * personalities))]
        encodings = self.at(common, f"{commons}I")
        self.functions = {}  # address -> encoding
        self.tables = {}  # address -> address of the exception table
        rows = [self.at(index + 12 * number, "3I") for number in range(pages)]
        for number, (first, page, tables) in enumerate(rows[:-1]):
            for offset, table in struct.iter_unpack("<2I", self.bytes(tables, rows[number + 1][2] - tables)):
                self.tables[self.image + offset] = self.image + table
            kind, = self.at(page, "I")
            if kind == 2:  # UNWIND_SECOND_LEVEL_REGULAR
                start, count = self.at(page + 4, "2H")
                for offset, encoding in struct.iter_unpack("<2I", self.bytes(page + start, 8 * count)):
                    self.functions[self.image + offset] = encoding
            else:  # UNWIND_SECOND_LEVEL_COMPRESSED
                assert kind == 3
                start, count, own_start, own_count = self.at(page + 4, "4H")
                known = encodings + self.at(page + own_start, f"{own_count}I")
                for entry, in struct.iter_unpack("<I", self.bytes(page + start, 4 * count)):
                    self.functions[self.image + first + (entry & 0xFFFFFF)] = known[entry >> 24]

    def bytes(self, offset: int, size: int) -> "bytes":
        return self.part.file[self.base + offset:self.base + offset + size]

    def at(self, offset: int, format: str) -> tuple:
        return struct.unpack_from("<" + format, self.part.file, self.base + offset)

    def personality(self, function: int) -> int | None:
        """Returns the address of the pointer to the function's personality routine, or None."""
        number = (self.functions[function] & self.PERSONALITY) >> 28
        return self.personalities[number - 1] if number else None


def uleb128(data: bytes, at: int) -> tuple[int, int]:
    """Returns the number at an offset and the offset after it."""
    value, shift = 0, 0
    while True:
        byte = data[at]
        value, shift, at = value | (byte & 0x7F) << shift, shift + 7, at + 1
        if byte < 0x80:
            return value, at


def caught(part: Slice, table: int) -> list[int]:
    """Returns the addresses of the pointers to the types that a function's exception table catches; 0 is any type."""
    data, at = part.file, part.place(table)
    assert data[at] == 0xFF, "landing pads relative to something else"
    encoding, types, at = data[at + 1], *uleb128(data, at + 2)
    assert encoding == 0x9B, "types not given as relative pointers to pointers"
    end = at + types
    length, sites = uleb128(data, at + 1)
    actions = sites + length
    found = set()
    at = sites
    while at < actions:
        for _ in range(3):  # start, length, landing pad
            _, at = uleb128(data, at)
        action, at = uleb128(data, at)
        if action:
            found.add(action)
    caught_types = []
    for place in sorted(actions + action - 1 for action in found):
        while True:
            filter_, place = sleb128(data, place)
            start = place
            step, _ = sleb128(data, place)
            if filter_ > 0:
                position = end - 4 * filter_
                offset, = struct.unpack_from("<i", data, position)
                caught_types.append(table + position - part.place(table) + offset if offset else 0)
            if step == 0:
                break
            place = start + step
    return caught_types


def sleb128(data: bytes, at: int) -> tuple[int, int]:
    """Returns the signed number at an offset and the offset after it."""
    start = at
    value, at = uleb128(data, at)
    bits = 7 * (at - start)
    return (value - (1 << bits) if value >> (bits - 1) & 1 else value), at
