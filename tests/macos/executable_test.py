"""Checks the executable file: architectures, load commands, libraries, symbols, protection, signature."""

import hashlib
import pathlib
import plistlib
import re
import struct
import subprocess
import tempfile
import unittest

import macho
from support import APP, BUILDS, EXECUTABLE, LLVM, ROOT, FactTest, OnDisk, bindings, llvm, renamed, replaced

APPKIT = "/System/Library/Frameworks/AppKit.framework/Versions/C/AppKit"
FOUNDATION = "/System/Library/Frameworks/Foundation.framework/Versions/C/Foundation"
CORE_FOUNDATION = "/System/Library/Frameworks/CoreFoundation.framework/Versions/A/CoreFoundation"
LIBRARIES = [  # with their compatibility versions
    (APPKIT, 45), (FOUNDATION, 300), (CORE_FOUNDATION, 150),
    ("/usr/lib/libobjc.A.dylib", 1), ("/usr/lib/libc++.1.dylib", 1), ("/usr/lib/libSystem.B.dylib", 1),
]


def version(major: int, minor: int) -> int:
    """Returns a version in the form of a load command."""
    return major << 16 | minor << 8


def allowed() -> set[tuple[str, str]]:
    """Returns the allow-list: (library, symbol)."""
    names = set()
    for line in (ROOT / "platform" / "macos" / "stubs" / "symbols.txt").read_text().splitlines():
        words = line.partition("#")[0].split()
        if line.startswith("/"):
            library = pathlib.PurePath(words[0]).name.partition(".")[0]
        elif words:
            kind, name = words
            names |= {(library, form + name) for form in {
                "class": ("_OBJC_CLASS_$_", "_OBJC_METACLASS_$_"),
                "exception": ("_OBJC_EHTYPE_$_",),
            }.get(kind, ("",))}
    return names


class ExecutableTest(FactTest):
    def setUp(self) -> None:
        self.data = EXECUTABLE.read_bytes()
        self.slices = macho.slices(self.data)

    def in_slice(self, architecture: str, offset: int, new: bytes) -> bytes:
        """Returns the executable with bytes of one architecture replaced."""
        return replaced(self.data, self.slices[architecture].start + offset, new)

    def test_architectures(self) -> None:
        def fact(data: bytes) -> None:
            with OnDisk(data) as path:
                self.assertEqual(llvm("llvm-lipo", "-archs", path).split(), ["x86_64", "arm64"])
            for (_, alignment, offset, _), page in zip(macho.parts(data), (12, 14)):
                self.assertGreaterEqual(alignment, page)
                self.assertEqual(offset % (1 << alignment), 0)

        self.holds(fact, self.data, self.slices["arm64"].file, replaced(self.data, 8 + 16, struct.pack(">I", 3)))

    def test_lowest_system_and_sdk(self) -> None:
        def fact(data: bytes) -> None:
            slices = macho.slices(data)
            lowest, sdk = slices["x86_64"].fields(macho.LC_VERSION_MIN_MACOSX, "2I")
            self.assertEqual((lowest, sdk), (version(10, 13), version(12, 3)))
            platform, lowest, sdk = slices["arm64"].fields(macho.LC_BUILD_VERSION, "3I")
            self.assertEqual((platform, lowest, sdk), (1, version(11, 0), version(12, 3)))  # 1: macOS

        intel = self.slices["x86_64"].one(macho.LC_VERSION_MIN_MACOSX)
        arm = self.slices["arm64"].one(macho.LC_BUILD_VERSION)
        self.holds(fact, self.data,
                   self.in_slice("x86_64", intel + 8, struct.pack("<I", version(10, 14))),
                   self.in_slice("x86_64", intel + 12, struct.pack("<I", version(26, 0))),
                   self.in_slice("arm64", arm + 12, struct.pack("<I", version(12, 0))),
                   self.in_slice("arm64", arm + 16, struct.pack("<I", 0)))

    def test_load_commands(self) -> None:
        """There are exactly these commands: no chained fixups (unknown to 10.13), run paths or weak libraries."""
        rest = ["LC_DYLD_INFO_ONLY", "LC_SYMTAB", "LC_DYSYMTAB", "LC_LOAD_DYLINKER", "LC_UUID", "minimum", "LC_MAIN",
                *["LC_LOAD_DYLIB"] * len(LIBRARIES), "LC_FUNCTION_STARTS", "LC_DATA_IN_CODE", "LC_CODE_SIGNATURE"]

        def fact(data: bytes) -> None:
            with OnDisk(data) as path:
                for architecture, minimum in (("x86_64", "LC_VERSION_MIN_MACOSX"), ("arm64", "LC_BUILD_VERSION")):
                    said = llvm("llvm-objdump", "--macho", f"--arch={architecture}", "--private-headers", path)
                    commands = re.findall(r"^ +cmd (\S+)$", said, re.MULTILINE)
                    commands = [name for name in commands if name != "LC_SEGMENT_64"]
                    self.assertEqual(commands, [minimum if name == "minimum" else name for name in rest])

        starts = self.slices["x86_64"].one(macho.LC_FUNCTION_STARTS)
        chained_fixups = struct.pack("<I", 0x80000034)  # LC_DYLD_CHAINED_FIXUPS
        self.holds(fact, self.data, self.in_slice("x86_64", starts, chained_fixups))

    def test_libraries(self) -> None:
        def fact(data: bytes) -> None:
            for part in macho.slices(data).values():
                found = []
                for at in part.all(macho.LC_LOAD_DYLIB):
                    name, _, _, compatibility = struct.unpack_from("<4I", part.file, at + 8)
                    end = part.file.index(b"\0", at + name)
                    found.append((part.file[at + name:end].decode(), compatibility >> 16))
                self.assertEqual(found, LIBRARIES)

        self.holds(fact, self.data, renamed(self.data, b"/usr/lib/libc++.1.dylib", b"/opt/lib/libc++.1.dylib"))

    def test_undefined_symbols_are_the_allowed_ones(self) -> None:
        """Each symbol comes from the library in the list, and every symbol of the list is used."""
        def fact(data: bytes) -> None:
            for architecture, part in macho.slices(data).items():
                with OnDisk(data) as path:
                    said = llvm("llvm-nm", "-m", "-u", "-arch", architecture, path)
                found = {(library.partition(".")[0], name) for name, library in
                         re.findall(r"\(undefined\) (?:weak )?external (\S+) \(from (\S+)\)", said)}
                self.assertEqual(len(found), len(said.splitlines()))
                self.assertLessEqual(found, allowed())
                # Only a class that is subclassed needs its metaclass.
                self.assertEqual({name for _, name in allowed() - found if "_METACLASS_" not in name}, set())

        self.holds(fact, self.data,
                   renamed(self.data, b"_NSHomeDirectory", b"_NSHomeDirectorz"),
                   renamed(self.data, b"_OBJC_CLASS_$_NSTask", b"_OBJC_CLASS_$_NSPipe"))

    def test_what_is_not_allowed_does_not_link(self) -> None:
        """A class or function that is not in the list causes a link error that names it. An allowed one links."""
        def fact(symbol: str) -> None:
            with tempfile.TemporaryDirectory() as folder:
                program = f'extern "C" void {symbol}(); int main() {{ {symbol}(); }}'
                done = subprocess.run(
                    [LLVM / "bin" / "clang++", "-target", "x86_64-apple-macos10.13", "-fuse-ld=lld", "-x", "c++", "-",
                     "-isysroot", BUILDS[0] / "sdk", "-o", f"{folder}/program"],
                    input=program.encode(), stderr=subprocess.PIPE)
            self.assertNotEqual(done.returncode, 0)
            self.assertIn(f"undefined symbol: {symbol}".encode(), done.stderr)

        self.holds(fact, "system", "memcpy")

    def test_one_image_info(self) -> None:
        """There is one, of 8 bytes: version 0, and the flag for class properties of categories."""
        def fact(data: bytes) -> None:
            for part in macho.slices(data).values():
                found = [section for name, section in part.sections.items() if name.endswith("__objc_imageinfo")]
                self.assertEqual([section.size for section in found], [8])
                self.assertEqual(struct.unpack_from("<2I", part.file, found[0].offset), (0, 0x40))

        part = self.slices["arm64"]
        place = next(section.offset for name, section in part.sections.items() if name.endswith("__objc_imageinfo"))
        self.holds(fact, self.data, self.in_slice("arm64", place + 4, struct.pack("<I", 0x45)))

    def test_position_independent_and_protected(self) -> None:
        """No relocation is in text, no segment is both writable and executable, and everything can be moved."""
        def fact(data: bytes) -> None:
            for architecture, part in macho.slices(data).items():
                self.assertEqual(part.file_type, 2)  # MH_EXECUTE
                # MH_PIE, MH_TWOLEVEL, MH_DYLDLINK, MH_NOUNDEFS; the C++ library's replaceable symbols add two.
                self.assertEqual(part.flags & ~0x18000, 0x200085)
                protection = {segment.name: (segment.initial, segment.maximum) for segment in part.segments}
                self.assertEqual(protection.pop("__TEXT"), (5, 5))
                self.assertEqual(protection.pop("__PAGEZERO"), (0, 0))
                self.assertEqual(protection.pop("__LINKEDIT"), (1, 1))
                self.assertEqual(set(protection.values()), {(3, 3)})
                relocations = part.fields(macho.LC_DYSYMTAB, "18I")[15:18:2]
                self.assertEqual(relocations, (0, 0))
                self.assertEqual([section.name for section in part.sections.values() if section.relocations], [])
                with OnDisk(data) as path:
                    said = llvm("llvm-objdump", "--macho", f"--arch={architecture}",
                                "--rebase", "--bind", "--lazy-bind", "--weak-bind", path)
                touched = set(re.findall(r"^(__\S+) ", said, re.MULTILINE))
                self.assertLessEqual(touched, {"__DATA", "__DATA_CONST"})
                self.assertIn("__DATA", touched)

        intel = self.slices["x86_64"]
        text = intel.all(macho.LC_SEGMENT_64)[1]
        self.holds(fact, self.data,
                   self.in_slice("x86_64", 24, struct.pack("<I", intel.flags & ~0x200000)),
                   self.in_slice("x86_64", text + 60, struct.pack("<I", 7)),
                   self.in_slice("x86_64", text + 72 + 60, struct.pack("<I", 3)),
                   self.in_slice("x86_64", intel.one(macho.LC_DYSYMTAB) + 8 + 68, struct.pack("<I", 3)))

    def test_small_and_stripped(self) -> None:
        def fact(data: bytes) -> None:
            self.assertLess(len(data), 250_000)
            with OnDisk(data) as path:
                for architecture in ("x86_64", "arm64"):
                    said = llvm("llvm-nm", "--defined-only", "--format=just-symbols", "-arch", architecture, path)
                    self.assertEqual(said.split(), ["__mh_execute_header"])
                    self.assertNotIn("__DWARF", [segment.name for segment in macho.slices(data)[architecture].segments])

        symbols, _ = self.slices["arm64"].fields(macho.LC_SYMTAB, "2I")
        self.holds(fact, self.data,
                   self.data + bytes(250_000),
                   self.in_slice("arm64", symbols + 16 + 4, bytes([0x0E, 1])))  # makes the second symbol a local one

    def test_signature(self) -> None:
        """Each hash of the signature is right: the code's pages, Info.plist, requirements, CodeResources."""
        info_plist = (APP / "Contents" / "Info.plist").read_bytes()
        resources = (APP / "Contents" / "_CodeSignature" / "CodeResources").read_bytes()

        def fact(sample: tuple[bytes, bytes, bytes]) -> None:
            data, info_plist, resources = sample
            for part in macho.slices(data).values():
                start, size = part.fields(macho.LC_CODE_SIGNATURE, "2I")
                linkedit = part.segments[-1]
                self.assertEqual(start % 16, 0)
                self.assertEqual(start + size, len(part.file))
                self.assertEqual((linkedit.name, linkedit.offset + linkedit.file_size), ("__LINKEDIT", len(part.file)))
                self.assertGreaterEqual(linkedit.size, linkedit.file_size)
                blob = part.file[start:]

                magic, length, count = struct.unpack_from(">3I", blob)
                self.assertEqual(magic, 0xFADE0CC0)
                self.assertLessEqual(length, size)
                slots = {slot: blob[at:at + struct.unpack_from(">I", blob, at + 4)[0]]
                         for slot, at in struct.iter_unpack(">2I", blob[12:12 + 8 * count])}
                self.assertEqual(sorted(slots), [0, 2, 0x10000])
                self.assertEqual(slots[2], struct.pack(">3I", 0xFADE0C01, 12, 0))
                self.assertEqual(slots[0x10000], struct.pack(">2I", 0xFADE0B01, 8))

                directory = slots[0]
                magic, _, version, flags, hashes, name, special, pages, limit = struct.unpack_from(">9I", directory)
                self.assertEqual((magic, version, flags, limit), (0xFADE0C02, 0x20400, 2, start))  # 2: ad hoc
                self.assertEqual(tuple(directory[36:40]), (32, 2, 0, 12))  # SHA-256, pages of 4 KiB
                identifier = directory[name:directory.index(b"\0", name)].decode()
                self.assertEqual(identifier, plistlib.loads(info_plist)["CFBundleIdentifier"])
                text = part.segments[1]
                self.assertEqual(struct.unpack_from(">3Q", directory, 64), (text.offset, text.file_size, 1))

                def slot(number: int) -> bytes:
                    return directory[hashes + 32 * number:hashes + 32 * (number + 1)]

                self.assertEqual(special, 3)
                for number, content in ((-1, info_plist), (-2, slots[2]), (-3, resources)):
                    self.assertEqual(slot(number), hashlib.sha256(content).digest(), f"slot {number}")
                self.assertEqual(pages, -(-start // 4096))
                for number in range(pages):
                    content = part.file[4096 * number:min(4096 * (number + 1), start)]
                    self.assertEqual(slot(number), hashlib.sha256(content).digest(), f"page {number} of {part.name}")

        text = self.slices["x86_64"].sections["__TEXT,__text"].offset
        signature, _ = self.slices["arm64"].fields(macho.LC_CODE_SIGNATURE, "2I")
        self.holds(fact, (self.data, info_plist, resources),
                   (self.in_slice("x86_64", text, b"\xCC"), info_plist, resources),
                   (self.in_slice("arm64", signature + 51, b"\0"), info_plist, resources),
                   (self.data, info_plist.replace(b"1.0", b"1.1"), resources),
                   (self.data, info_plist, resources + b"\n"))

    def test_bound_libraries(self) -> None:
        """Exceptions and classes come from the libraries in which macOS has them, by two-level names."""
        expected = {
            "_OBJC_CLASS_$_NSAlert": "AppKit", "_OBJC_CLASS_$_NSTask": "Foundation",
            "_OBJC_EHTYPE_$_NSException": "CoreFoundation", "___CFConstantStringClassReference": "CoreFoundation",
            "_objc_msgSend": "libobjc", "___gxx_personality_v0": "libc++", "dyld_stub_binder": "libSystem",
        }

        def fact(data: bytes) -> None:
            for architecture in ("x86_64", "arm64"):
                found = dict(bindings(data, architecture).values())
                self.assertEqual({name: found.get(name, "").partition(".")[0] for name in expected}, expected)

        self.holds(fact, self.data, renamed(self.data, b"_OBJC_EHTYPE_$_NSException", b"_OBJC_EHTYPE_$_NSExceptioo"))


if __name__ == "__main__":
    unittest.main()
