"""Checks the executable file: architectures, load commands, libraries, symbols, protection, signature. LLVM's tools
read it. They refuse a file with a wrong structure, which also fails a check."""

import hashlib
import pathlib
import plistlib
import re
import struct
import tempfile
import unittest

from support import (APP, BOOL, EXECUTABLE, PRODUCT, ROOT, FactTest, clang, files, llvm, objdump, patched, renamed,
                     replaced)

FRAMEWORKS = "/System/Library/Frameworks"


def expected_commands(architecture: str) -> list[str]:
    """Returns the load commands: kind, name, what a segment may do at first and at most, the version that a library is
    compatible with. There are no chained fixups (unknown to 10.13), run paths or weak libraries."""
    arm = architecture == "arm64"
    return [
        "LC_SEGMENT_64 __PAGEZERO --- ---",
        "LC_SEGMENT_64 __TEXT r-x r-x",
        *(["LC_SEGMENT_64 __DATA_CONST rw- rw-"] if arm else []),
        "LC_SEGMENT_64 __DATA rw- rw-",
        "LC_SEGMENT_64 __LINKEDIT r-- r--",
        "LC_DYLD_INFO_ONLY", "LC_SYMTAB", "LC_DYSYMTAB", "LC_LOAD_DYLINKER /usr/lib/dyld", "LC_UUID",
        "LC_BUILD_VERSION macos 11.0 12.3" if arm else "LC_VERSION_MIN_MACOSX 10.13 12.3",  # lowest system, SDK
        "LC_MAIN",
        f"LC_LOAD_DYLIB {FRAMEWORKS}/AppKit.framework/Versions/C/AppKit 45.0.0",
        f"LC_LOAD_DYLIB {FRAMEWORKS}/Foundation.framework/Versions/C/Foundation 300.0.0",
        f"LC_LOAD_DYLIB {FRAMEWORKS}/CoreFoundation.framework/Versions/A/CoreFoundation 150.0.0",
        "LC_LOAD_DYLIB /usr/lib/libobjc.A.dylib 1.0.0",
        "LC_LOAD_DYLIB /usr/lib/libc++.1.dylib 1.0.0",
        "LC_LOAD_DYLIB /usr/lib/libSystem.B.dylib 1.0.0",
        "LC_FUNCTION_STARTS", "LC_DATA_IN_CODE", "LC_CODE_SIGNATURE",
    ]


def commands(data: bytes, architecture: str) -> list[dict[str, str]]:
    """Returns the fields of each load command. A segment's do not include those of its sections."""
    blocks = re.split(r"^Load command \d+\n", objdump(data, architecture, "--private-headers"), flags=re.MULTILINE)
    fields = r"^ *(\w+(?: version)?) (.+?)(?: \(offset \d+\))?$"
    return [dict(re.findall(fields, re.split("Section| ntools", block)[0], re.MULTILINE)) for block in blocks[1:]]


def allowed() -> set[tuple[str, str]]:
    """Returns the allow-list: (library, symbol)."""
    prefixes, names = {"class": "_OBJC_CLASS_$_", "exception": "_OBJC_EHTYPE_$_"}, set()
    for line in (ROOT / "platform" / "macos" / "stubs" / "symbols.txt").read_text().splitlines():
        words = line.partition("#")[0].split()
        if line.startswith("/"):
            library = pathlib.PurePath(words[0]).name.partition(".")[0]
        elif words:
            names.add((library, prefixes.get(words[0], "") + words[1]))
    return names


class ExecutableTest(FactTest):
    def setUp(self) -> None:
        self.data = EXECUTABLE.read_bytes()

    def thin(self, architecture: str, data: bytes) -> bytes:
        """Returns one architecture of a universal executable."""
        with tempfile.NamedTemporaryFile() as file:
            llvm("llvm-lipo", data, "-thin", architecture, "-output", file.name)
            return pathlib.Path(file.name).read_bytes()

    def test_architectures(self) -> None:
        """Each begins at a multiple of its system's pages."""
        def fact(data: bytes) -> None:
            said = llvm("llvm-objdump", data, "--macho", "--universal-headers")
            self.assertEqual(re.findall(r"(?:^architecture|align) (\S+)", said, re.MULTILINE),
                             ["x86_64", "2^12", "arm64", "2^14"])

        self.holds(fact, self.data, self.thin("arm64", self.data), replaced(self.data, 8 + 16, struct.pack(">I", 3)))

    def test_load_commands(self) -> None:
        shown = ("cmd", "segname", "initprot", "maxprot", "name", "compatibility version", "platform", "minos",
                 "version", "sdk")

        def fact(data: bytes) -> None:
            for architecture in BOOL:
                self.assertEqual([" ".join(command[field] for field in shown if field in command)
                                  for command in commands(data, architecture)], expected_commands(architecture))

        self.holds(fact, self.data,
                   patched(self.data, rb"(?<=\x24\0{3}\x10\0{3})\0\x0D\x0A\0", b"\0\x0E\x0A\0"),  # from 10.14 on
                   patched(self.data, rb"(?<=\x24\0{3}\x10\0{3}\0\x0D\x0A\0)\0\x03\x0C", b"\0\0\x1A"),  # SDK 26
                   patched(self.data, rb"(?<=\x32\0{3}\x20\0{3}\x01\0{3})\0\0\x0B", b"\0\0\x0C"),  # from 12 on
                   patched(self.data, rb"(?<=\x32\0{3}\x20\0{3}\x01\0{3}\0\0\x0B\0)\0\x03\x0C", b"\0\0\0"),
                   patched(self.data, rb"\x26\0\0\0(?=\x10\0\0\0)", b"\x34\0\0\x80"),  # LC_DYLD_CHAINED_FIXUPS
                   patched(self.data, rb"(?<=\x19\0{3}....__TEXT\0{10}.{36})\x05", b"\x07"),  # text is writable
                   renamed(self.data, b"/usr/lib/libc++.1.dylib", b"/opt/lib/libc++.1.dylib"))

    def test_position_independent(self) -> None:
        """Everything can be moved, and moving it changes nothing in text."""
        def fact(data: bytes) -> None:
            for architecture in BOOL:
                said = objdump(data, architecture, "--private-headers")
                self.assertRegex(said, r" EXECUTE .* NOUNDEFS DYLDLINK TWOLEVEL BINDS_TO_WEAK PIE\n")
                self.assertEqual(set(re.findall(r" (?:nreloc|nextrel|nlocrel) (\d+)", said)), {"0"})
                said = objdump(data, architecture, "--rebase", "--bind", "--lazy-bind", "--weak-bind")
                touched = set(re.findall(r"^(__\S+) ", said, re.MULTILINE))
                self.assertLessEqual(touched, {"__DATA", "__DATA_CONST"})
                self.assertIn("__DATA", touched)

        relocation = struct.pack("<2I", 0x1000, 1)  # one, at a place where a table may be
        self.holds(fact, self.data,
                   patched(self.data, rb"(?<=\xCF\xFA\xED\xFE.{20})\x85\0\x21\0", b"\x85\0\x01\0"),
                   patched(self.data, rb"(?<=__text\0{10}__TEXT\0{10}.{24})\0{8}", relocation),
                   patched(self.data, rb"(?<=\x0B\0{3}\x50\0{3}.{64})\0{8}", relocation),  # LC_DYSYMTAB
                   patched(self.data, rb"__DATA(?=\0)", b"__DATB"))

    def test_exceptions_pass_the_routines_of_both_languages(self) -> None:
        def fact(data: bytes) -> None:
            for architecture in BOOL:
                said = objdump(data, architecture, "--unwind-info", "--bind")
                pointers = re.findall(r" personality\[\d+\]: 0x(\w+)", said)
                routines = [re.findall(rf"(?m) 0x1{pointer.upper()} .* (\S+)$", said) for pointer in pointers]
                self.assertCountEqual(routines, [["___objc_personality_v0"], ["___gxx_personality_v0"]])

        self.holds(fact, self.data,
                   patched(self.data, rb"(?<=\x01\0{3}\x1C\0{3}.{8})\x02(?=\0{3})", b"\0"),  # their number
                   renamed(self.data, b"___objc_personality_v0", b"___objc_personality_v1"))

    def test_undefined_symbols_are_the_allowed_ones(self) -> None:
        """Each symbol of the list is used, and comes by a two-level name from the library in which macOS has it."""
        placed = {("AppKit", "_OBJC_CLASS_$_NSAlert"), ("Foundation", "_OBJC_CLASS_$_NSTask"),
                  ("CoreFoundation", "_OBJC_EHTYPE_$_NSException"), ("libobjc", "_objc_msgSend"),
                  ("CoreFoundation", "___CFConstantStringClassReference"), ("libc++", "___gxx_personality_v0"),
                  ("libSystem", "dyld_stub_binder")}

        def fact(data: bytes) -> None:
            for architecture in BOOL:
                said = llvm("llvm-nm", data, "-m", "-u", "-arch", architecture)
                found = re.findall(r"\(undefined\) (?:weak )?external (\S+) \(from (\S+)\)", said)
                self.assertEqual(len(found), len(said.splitlines()))
                found = {(library, name.replace("_METACLASS_", "_CLASS_")) for name, library in found}
                self.assertEqual(found, allowed())
                self.assertLessEqual(placed, found)

        self.holds(fact, self.data,
                   renamed(self.data, b"_NSHomeDirectory", b"_NSHomeDirectorz"),
                   renamed(self.data, b"_OBJC_CLASS_$_NSTask", b"_OBJC_CLASS_$_NSPipe"),
                   renamed(self.data, b"_OBJC_EHTYPE_$_NSException", b"_OBJC_EHTYPE_$_NSExceptioo"))

    def test_what_is_not_allowed_does_not_link(self) -> None:
        """A class or function that is not in the list causes a link error that names it. An allowed one links."""
        def fact(symbol: str) -> None:
            with tempfile.TemporaryDirectory() as folder:
                source = f'extern "C" void {symbol}(); int main() {{ {symbol}(); }}'
                status, said = clang("x86_64", "-fuse-ld=lld", "-o", f"{folder}/program", "-", text=source)
            self.assertEqual(status, 1)
            self.assertIn(f"undefined symbol: {symbol}", said)

        self.holds(fact, "system", "memcpy")

    def test_small_and_stripped(self) -> None:
        def fact(data: bytes) -> None:
            self.assertLess(len(data), 250_000)
            for architecture in BOOL:
                said = llvm("llvm-nm", data, "--defined-only", "--format=just-symbols", "-arch", architecture)
                self.assertEqual(said.split(), ["__mh_execute_header"])

        arm = self.thin("arm64", self.data)
        symbols, = (int(command["symoff"]) for command in commands(arm, "arm64") if command["cmd"] == "LC_SYMTAB")
        local = replaced(arm, symbols + 16 + 4, bytes([0x0E, 1]))  # The second symbol becomes a local one.
        self.holds(fact, self.data, self.data + bytes(250_000), self.data.replace(arm, local))

    def test_signature(self) -> None:
        """Each byte of the signature is right: ad hoc, hashes of CodeResources, requirements, Info.plist, the pages."""
        def fact(app: dict[str, bytes]) -> None:
            for architecture in BOOL:
                code = self.thin(architecture, app[f"MacOS/{PRODUCT}"])
                by_name = {command.get("segname", command["cmd"]): command for command in commands(code, architecture)}
                start, size = (int(by_name["LC_CODE_SIGNATURE"][field]) for field in ("dataoff", "datasize"))
                linkedit = by_name["__LINKEDIT"]
                self.assertEqual(start % 16, 0)
                self.assertEqual(start + size, len(code))
                self.assertEqual(int(linkedit["fileoff"]) + int(linkedit["filesize"]), len(code))
                self.assertGreaterEqual(int(linkedit["vmsize"], 16), int(linkedit["filesize"]))

                identifier = plistlib.loads(app["Info.plist"])["CFBundleIdentifier"].encode() + b"\0"
                requirements = struct.pack(">3I", 0xFADE0C01, 12, 0)
                pages = [code[page:min(page + 4096, start)] for page in range(0, start, 4096)]
                special = [app["_CodeSignature/CodeResources"], requirements, app["Info.plist"]]
                names_and_hashes = identifier + b"".join(hashlib.sha256(data).digest() for data in special + pages)
                directory = struct.pack(
                    ">9I4B4I4Q", 0xFADE0C02, 88 + len(names_and_hashes), 0x20400,
                    2, 88 + len(identifier) + 32 * len(special), 88, len(special), len(pages), start,  # 2: ad hoc
                    32, 2, 0, 12, 0, 0, 0, 0,  # SHA-256, pages of 4 KiB
                    0, 0, int(by_name["__TEXT"]["filesize"]), 1,  # the text of a main executable
                ) + names_and_hashes
                at = 36 + len(directory)
                index = struct.pack(">9I", 0xFADE0CC0, at + 20, 3, 0, 36, 2, at, 0x10000, at + 12)
                signature = index + directory + requirements + struct.pack(">2I", 0xFADE0B01, 8)
                self.assertEqual(code[start:], signature.ljust(size, b"\0"), architecture)

        app, name = files(APP / "Contents"), f"MacOS/{PRODUCT}"
        self.holds(fact, app,
                   app | {name: replaced(self.data, 20_000, b"\xCC")},
                   app | {name: patched(self.data, rb"(?<=\xFA\xDE\x0C\x02.{11})\x02", b"\0")},  # not ad hoc
                   app | {"Info.plist": app["Info.plist"].replace(b"1.0", b"1.1")},
                   app | {"_CodeSignature/CodeResources": app["_CodeSignature/CodeResources"] + b"\n"})


if __name__ == "__main__":
    unittest.main()
