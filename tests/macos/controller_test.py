"""Checks the controller's runtime metadata in both architectures: class, properties, methods with their exact types,
categories. llvm-objdump reads it."""

import re
import struct
import unittest

from support import BOOL, COPIES, EXECUTABLE, FactTest, accessors, clang, llvm, objdump, patched, renamed

# BOOL stands for its encoding, which differs between the architectures.
PROPERTIES = [  # with attributes
    ("window", '@"NSWindow"', "&,N"),
    ("statusLabel", '@"NSTextField"', "&,N"),
    ("removeButton", '@"NSButton"', "&,N"),
    ("overrideButton", '@"NSButton"', "&,N"),
    ("restoreLicenseButton", '@"NSButton"', "&,N"),
    ("logView", '@"NSTextView"', "&,N"),
    ("lastBackupPath", '@"NSString"', "C,N"),
    ("quorlenDetected", "BOOL", "N"),
    ("modifierMonitor", "@", "&,N"),
]
# The operations, by the category that holds them; the class itself holds those of "". Its last two construct and
# destroy the instance variables that are C++ objects.
METHODS = {
    "": {"applicationDidFinishLaunching:": "v24@0:8@16", "applicationWillTerminate:": "v24@0:8@16",
         "applicationShouldTerminateAfterLastWindowClosed:": "BOOL24@0:8@16", "dealloc": "v16@0:8",
         ".cxx_construct": "@16@0:8", ".cxx_destruct": "v16@0:8"},
    "ActivityLog": {"appVersionString": "@16@0:8", "appUpdatedString": "@16@0:8", "appendLog:": "v24@0:8@16"},
    "MainWindow": {"buildWindow": "v16@0:8",
                   "labelWithFrame:text:font:alignment:": "@72@0:8{CGRect={CGPoint=dd}{CGSize=dd}}16@48@56q64"},
    "OverrideReveal": {"installModifierMonitor": "v16@0:8", "updateOverrideButtonVisibility": "v16@0:8"},
    "SupportPage": {"openSupportPage:": "v24@0:8@16"},
    "KnownLocations": {"knownQuorlenPaths": "@16@0:8", "licensePath": "@16@0:8", "licenseExists": "BOOL16@0:8",
                       "existingQuorlenPaths": "@16@0:8"},
    "DetectionStatus": {"updateDetectionStatus": "v16@0:8"},
    "RemovalFlow": {"removeQuorlen3:": "v24@0:8@16", "overrideRemoveQuorlen3:": "v24@0:8@16",
                    "beginRemovalWithOverride:": "v20@0:8BOOL16"},
    "CleanupScript": {"cleanupShellScript": "@16@0:8", "shellQuotedString:": "@24@0:8@16",
                      "appleScriptQuotedString:": "@24@0:8@16"},
    "Completion": {"showCompletionWithSuccess:": "v20@0:8BOOL16", "restartNow": "v16@0:8",
                   "writeRemovalLogToDesktop": "v16@0:8"},
    "LicenceBackup": {"backupLicenceIfPresent": "v16@0:8"},
    "LicenceRestore": {"restoreLicense:": "v24@0:8@16", "restoreLicenseFromZip:toPath:": "BOOL32@0:8@16@24",
                       "findLicenseFileUnderPath:": "@24@0:8@16",
                       "showSimpleAlertWithTitle:message:": "v32@0:8@16@24"},
}
CATCHING = {"backupLicenceIfPresent": "licence/AppDelegate+LicenceBackup.mm",
            "restoreLicenseFromZip:toPath:": "licence/AppDelegate+LicenceRestore.mm"}

# A category: its address, name, class, instance methods and class methods. llvm-objdump repeats the class in between.
CATEGORY = re.compile(r"""^\w{16} 0x(\w+)\n +name 0x\w+ (.+)\n +cls 0x(\w+)\n(?:.*\n)*?   instanceMethods .*
((?:.*\n)*?)      classMethods .*
((?:.*\n)*?)         protocols""", re.MULTILINE)


def fields(text: str, *names: str) -> list[tuple[str, ...]]:
    """Returns the values of fields that follow each other, wherever they do, without the addresses of texts."""
    return re.findall(r"\n\s+".join(rf"{name} (?:0x\w+ )?(.+)" for name in names), text)


class ControllerTest(FactTest):
    def setUp(self) -> None:
        self.data = EXECUTABLE.read_bytes()

    @staticmethod
    def metadata(data: bytes, architecture: str) -> dict[str, str]:
        """Returns what llvm-objdump says about the metadata's sections: name -> text."""
        said = objdump(data, architecture, "--objc-meta-data")
        parts = re.split(r"^Contents of \(__DATA\w*,(\w+)\) section\n", said, flags=re.MULTILINE)
        return dict(zip(parts[1::2], parts[2::2], strict=True))

    def test_class(self) -> None:
        """The class is a subclass of NSObject and an application delegate. It has these properties, and these variables
        after the isa."""
        def fact(data: bytes) -> None:
            for architecture, boolean in BOOL.items():
                sections = self.metadata(data, architecture)
                described, _ = sections["__objc_classlist"].split("Meta Class\n")
                self.assertEqual(fields(described, "superclass", "cache"), [("_OBJC_CLASS_$_NSObject", "0x0")])
                names = [name for name, _ in fields(sections["__objc_classlist"], "name", "baseMethods")]
                self.assertEqual(names, ["AppDelegate"] * 2)  # the class and its metaclass
                self.assertEqual(fields(described, "name", "protocols")[0][0], "NSApplicationDelegate")
                self.assertEqual(fields(described, "instanceStart"), ["8"])
                variables = [(name, types, int(offset) % (1 << 32), int(size)) for offset, name, types, _, size
                             in fields(described, "offset", "name", "type", "alignment", "size")]
                *variables, (_, _, last, size) = variables
                self.assertEqual(variables, [
                    (f"_{name}", types.replace("BOOL", boolean), 8 + 8 * number, 1 if types == "BOOL" else 8)
                    for number, (name, types, _) in enumerate(PROPERTIES)])
                self.assertEqual(fields(described, "instanceSize"), [str(last + size)])
                # The NSObject protocol has one property.
                self.assertEqual(fields(described, "name", "attributes"), [
                    *((name, f"T{types.replace('BOOL', boolean)},{attributes},V_{name}")
                      for name, types, attributes in PROPERTIES),
                    ("description", 'T@"NSString",R,C')])
                self.assertEqual(sections.get("__objc_imageinfo", "").split(),
                                 ["version", "0", "flags", "0x40", "OBJC_IMAGE_HAS_CATEGORY_CLASS_PROPERTIES"])

        self.holds(fact, self.data,
                   patched(self.data, re.escape(struct.pack("<3I", 8, 16, 24)), struct.pack("<3I", 0, 16, 24)),
                   renamed(self.data, b"_OBJC_CLASS_$_NSObject", b"_OBJC_CLASS_$_NSString"),
                   renamed(self.data, b"NSApplicationDelegate", b"NSApplicationDeIegate"),
                   renamed(self.data, b'T@"NSString",C,N,V_lastBackupPath', b'T@"NSString",&,N,V_lastBackupPath'),
                   renamed(self.data, b"Tc,N,V_quorlenDetected", b"TC,N,V_quorlenDetected"),
                   patched(self.data, b"__objc_imageinfo", b"__objc_imageless"))

    def test_methods(self) -> None:
        """Each operation is in its category of the class, with exactly these types, and starts a function. There are no
        others, except what makes the menu bar: a category of NSApplication, whose `load` is called at the start."""
        properties = {selector: types for name, encoding, _ in PROPERTIES
                      for selector, types in accessors(name, encoding.partition('"')[0]).items()}

        def fact(data: bytes) -> None:
            dump = llvm("llvm-readobj", data, "--hex-dump=__objc_nlcatlist")
            loads = re.findall(r"^0x\w+ (.{35})", dump, re.MULTILINE)
            for (architecture, boolean), load in zip(BOOL.items(), loads, strict=True):
                sections = self.metadata(data, architecture)
                described, meta_class = sections["__objc_classlist"].split("Meta Class\n")
                address, = re.findall(r"^\w{16} 0x(\w+)$", described, re.MULTILINE)
                parts = [("", "", address, described, meta_class), *CATEGORY.findall(sections["__objc_catlist"])]
                found = [(name, owner, dict(fields(methods, "name", "types")), dict(fields(others, "name", "types")))
                         for _, name, owner, methods, others in parts]
                expected = [(name, address, {selector: types.replace("BOOL", boolean)
                                             for selector, types in methods.items()}, {})
                            for name, methods in (METHODS | {"": METHODS[""] | properties}).items()]
                self.assertEqual(found, [*expected, ("MenuBar", "0", {}, {"load": "v16@0:8"})])

                code = re.findall(r"imp 0x(\w+)", sections["__objc_classlist"] + sections["__objc_catlist"])
                functions = objdump(data, architecture, "--function-starts").split()
                self.assertLessEqual({address.zfill(16) for address in code}, set(functions))
                menu_bar = int(parts[-1][0], 16)
                self.assertEqual(bytes.fromhex(load), struct.pack("<Q", menu_bar))
                self.assertRegex(objdump(data, architecture, "--bind"),
                                 rf" 0x{menu_bar + 8:X} .* _OBJC_CLASS_\$_NSApplication\n")

        listed = self.metadata(self.data, "arm64")["__objc_catlist"]
        name, owner, code = (struct.pack("<Q", int(re.search(rf"{field} 0x(\w+)", listed)[1], 16))
                             for field in ("name", "cls", "imp"))
        (first, *_), *_, (last, *_) = CATEGORY.findall(listed)
        first, last = (struct.pack("<Q", int(address, 16)) for address in (first, last))
        self.holds(fact, self.data,
                   renamed(self.data, b"appendLog:", b"appendIog:"),
                   renamed(self.data, b"v20@0:8c16", b"v20@0:8B16"),
                   patched(self.data, re.escape(name + owner), name + bytes(8)),
                   patched(self.data, re.escape(code), code[:1] + b"\1" + code[2:]),
                   renamed(self.data, b"load", b"Load"),
                   patched(self.data, re.escape(last + last), last + first),  # the last category, and what is loaded
                   renamed(self.data, b"_OBJC_CLASS_$_NSApplication", b"_OBJC_CLASS_$_NSapplication"))

    def test_exceptions_are_caught(self) -> None:
        """The backup and the restore catch NSException and no other type. tests/shipped-slice runs their handlers."""
        def fact(sources: dict[str, str]) -> None:
            for selector, source in sources.items():
                status, code = clang("x86_64", "-S", "-emit-llvm", "-o", "-", "-", text=source)
                self.assertEqual(status, 0, code)
                function = code.partition(f" {selector}]\"(")[2].partition("\n}\n")[0]
                caught = re.findall("^ +catch ptr (.+)$", function, re.MULTILINE)
                self.assertEqual(set(caught), {'@"OBJC_EHTYPE_$_NSException"'}, selector)

        sources = {selector: (COPIES[0] / source).read_text() for selector, source in CATCHING.items()}
        clause, other = "@catch (NSException *exception) {", "@catch (...) { NSException *exception = nil;"
        self.holds(fact, sources, {selector: text.replace(clause, other) for selector, text in sources.items()})


if __name__ == "__main__":
    unittest.main()
