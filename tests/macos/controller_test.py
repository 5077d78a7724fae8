"""Checks the controller's runtime metadata in both architectures: class, properties, methods with their exact types,
categories, and exception tables."""

import struct
import unittest
from collections.abc import Iterator

import macho
from support import EXECUTABLE, FactTest, bindings, renamed, replaced

# Name, type encoding, attributes; BOOL stands for its encoding, which differs between the architectures.
PROPERTIES = [
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

# The operations, by the category that holds them; the class itself holds those of "".
METHODS = {
    "": {
        "applicationDidFinishLaunching:": "v24@0:8@16",
        "applicationWillTerminate:": "v24@0:8@16",
        "applicationShouldTerminateAfterLastWindowClosed:": "BOOL24@0:8@16",
        "dealloc": "v16@0:8",
    },
    "ActivityLog": {
        "appVersionString": "@16@0:8",
        "appUpdatedString": "@16@0:8",
        "appendLog:": "v24@0:8@16",
    },
    "MainWindow": {
        "buildWindow": "v16@0:8",
        "labelWithFrame:text:font:alignment:": "@72@0:8{CGRect={CGPoint=dd}{CGSize=dd}}16@48@56q64",
    },
    "OverrideReveal": {
        "installModifierMonitor": "v16@0:8",
        "updateOverrideButtonVisibility": "v16@0:8",
    },
    "SupportPage": {
        "openSupportPage:": "v24@0:8@16",
    },
    "KnownLocations": {
        "knownQuorlenPaths": "@16@0:8",
        "licensePath": "@16@0:8",
        "licenseExists": "BOOL16@0:8",
        "existingQuorlenPaths": "@16@0:8",
    },
    "DetectionStatus": {
        "updateDetectionStatus": "v16@0:8",
    },
    "RemovalFlow": {
        "removeQuorlen3:": "v24@0:8@16",
        "overrideRemoveQuorlen3:": "v24@0:8@16",
        "beginRemovalWithOverride:": "v20@0:8BOOL16",
    },
    "CleanupScript": {
        "cleanupShellScript": "@16@0:8",
        "shellQuotedString:": "@24@0:8@16",
        "appleScriptQuotedString:": "@24@0:8@16",
    },
    "Completion": {
        "showCompletionWithSuccess:": "v20@0:8BOOL16",
        "restartNow": "v16@0:8",
        "writeRemovalLogToDesktop": "v16@0:8",
    },
    "LicenceBackup": {
        "backupLicenceIfPresent": "v16@0:8",
    },
    "LicenceRestore": {
        "restoreLicense:": "v24@0:8@16",
        "restoreLicenseFromZip:toPath:": "BOOL32@0:8@16@24",
        "findLicenseFileUnderPath:": "@24@0:8@16",
        "showSimpleAlertWithTitle:message:": "v32@0:8@16@24",
    },
}
# Constructs and destroys the instance variables that are C++ objects.
GENERATED = {".cxx_construct": "@16@0:8", ".cxx_destruct": "v16@0:8"}
CATCHING = ("backupLicenceIfPresent", "restoreLicenseFromZip:toPath:")


def accessors() -> dict[str, str]:
    """Returns the methods of the properties: selector -> type encoding."""
    found = {}
    for name, types, _ in PROPERTIES:
        plain = types.partition('"')[0]
        found[name] = f"{plain}16@0:8"
        found[f"set{name[0].upper()}{name[1:]}:"] = f"v{'20' if plain == 'BOOL' else '24'}@0:8{plain}16"
    return found


class ControllerTest(FactTest):
    def setUp(self) -> None:
        self.data = EXECUTABLE.read_bytes()
        self.slices = macho.slices(self.data)

    def in_slice(self, architecture: str, offset: int, new: bytes) -> bytes:
        """Returns the executable with bytes of one architecture replaced."""
        return replaced(self.data, self.slices[architecture].start + offset, new)

    @staticmethod
    def controllers(data: bytes) -> Iterator[tuple[str, dict, macho.ObjectiveC, macho.Slice]]:
        """Yields for each architecture: its encoding of BOOL, the class, all runtime metadata, the slice."""
        for architecture, part in macho.slices(data).items():
            objective_c = macho.ObjectiveC(part)
            yield "c" if architecture == "x86_64" else "B", objective_c.classes["AppDelegate"], objective_c, part

    def test_class(self) -> None:
        """There is one class, a subclass of NSObject and an application delegate. Its variables follow the isa."""
        def fact(data: bytes) -> None:
            for boolean, controller, objective_c, part in self.controllers(data):
                self.assertEqual(list(objective_c.classes), ["AppDelegate"])
                bound = bindings(data, part.name)
                self.assertEqual(bound[controller["address"] + 8][0], "_OBJC_CLASS_$_NSObject")
                self.assertEqual(controller["protocols"], ["NSApplicationDelegate"])
                self.assertEqual(controller["start"], 8)
                variables = [
                    (f"_{name}", types.replace("BOOL", boolean), 8 + 8 * number, 1 if types == "BOOL" else 8)
                    for number, (name, types, _) in enumerate(PROPERTIES)]
                self.assertEqual(controller["ivars"][:len(variables)], variables)
                name, _, offset, size = controller["ivars"][-1]
                self.assertEqual(offset + size, controller["size"], name)

        part = self.slices["arm64"]
        variables = part.sections["__DATA,__objc_ivar"].offset
        self.holds(fact, self.data,
                   self.in_slice("arm64", variables, struct.pack("<I", 0)),
                   renamed(self.data, b"_OBJC_CLASS_$_NSObject", b"_OBJC_CLASS_$_NSString"),
                   renamed(self.data, b"NSApplicationDelegate", b"NSApplicationDeIegate"))

    def test_properties(self) -> None:
        def fact(data: bytes) -> None:
            for boolean, controller, *_ in self.controllers(data):
                expected = [(name, f"T{types.replace('BOOL', boolean)},{attributes},V_{name}")
                            for name, types, attributes in PROPERTIES]
                # The other properties are the NSObject protocol's.
                self.assertEqual(controller["properties"][:len(expected)], expected)
                rest = {name for name, _ in controller["properties"][len(expected):]}
                self.assertLessEqual(rest, {"hash", "superclass", "description", "debugDescription"})

        self.holds(fact, self.data,
                   renamed(self.data, b'T@"NSString",C,N,V_lastBackupPath', b'T@"NSString",&,N,V_lastBackupPath'),
                   renamed(self.data, b"Tc,N,V_quorlenDetected", b"TC,N,V_quorlenDetected"))

    def test_methods(self) -> None:
        """Each operation is in its category of the class, with exactly these types. There are no others."""
        def fact(data: bytes) -> None:
            for boolean, controller, objective_c, _ in self.controllers(data):
                categories = [category for category in objective_c.categories if category["class"] == "AppDelegate"]
                found = {category["name"]: category["methods"] for category in categories}
                self.assertEqual(len(found), len(categories))
                found[""] = controller["methods"]
                types = {category: {selector: types for selector, (types, _) in methods.items()}
                         for category, methods in found.items()}
                expected = METHODS | {"": METHODS[""] | accessors() | GENERATED}
                self.assertEqual(types, {category: {selector: types.replace("BOOL", boolean)
                                                    for selector, types in methods.items()}
                                         for category, methods in expected.items()})
                self.assertEqual(controller["class methods"], {})
                self.assertEqual([category["class methods"] for category in categories], [{}] * len(categories))

        part = self.slices["x86_64"]
        category = part.lists("__objc_catlist")[0]
        self.holds(fact, self.data,
                   renamed(self.data, b"appendLog:", b"appendIog:"),
                   renamed(self.data, b"v20@0:8c16", b"v20@0:8B16"),
                   self.in_slice("x86_64", part.place(category + 8), bytes(8)))

    def test_menu_bar(self) -> None:
        """There is one category of a platform class. It has only the method `load`."""
        def fact(data: bytes) -> None:
            for _, _, objective_c, part in self.controllers(data):
                category, = (category for category in objective_c.categories if category["class"] != "AppDelegate")
                self.assertEqual(bindings(data, part.name)[category["address"] + 8][0], "_OBJC_CLASS_$_NSApplication")
                self.assertEqual(category["methods"], {})
                self.assertEqual({name: types for name, (types, _) in category["class methods"].items()},
                                 {"load": "v16@0:8"})
                self.assertEqual(part.lists("__objc_nlcatlist"), (category["address"],))

        part = self.slices["arm64"]
        listed = part.sections["__DATA_CONST,__objc_nlcatlist"]
        self.holds(fact, self.data,
                   renamed(self.data, b"load", b"Load"),
                   self.in_slice("arm64", listed.offset, struct.pack("<Q", part.lists("__objc_catlist")[0])))

    def test_methods_are_code(self) -> None:
        """Each method's address is the start of a function."""
        def fact(data: bytes) -> None:
            for _, controller, objective_c, part in self.controllers(data):
                methods = {code: selector for owner in (controller, *objective_c.categories)
                           for selector, (_, code) in owner["methods"].items()}
                self.assertLessEqual(set(methods), part.functions())

        part = self.slices["arm64"]
        code = macho.ObjectiveC(part).classes["AppDelegate"]["methods"]["dealloc"][1]
        place = part.file.index(struct.pack("<Q", code))
        self.holds(fact, self.data, self.in_slice("arm64", place, struct.pack("<Q", code + 4)))

    def test_exceptions_are_caught(self) -> None:
        """The backup and the restore catch NSException and no other type."""
        def fact(data: bytes) -> None:
            for _, _, objective_c, part in self.controllers(data):
                unwinding, bound = macho.Unwinding(part), bindings(data, part.name)
                code = {selector: code for category in objective_c.categories
                        for selector, (_, code) in category["methods"].items()}
                for selector in CATCHING:
                    function = code[selector]
                    self.assertTrue(unwinding.functions[function] & unwinding.HAS_LSDA)
                    personality = unwinding.personality(function)
                    self.assertEqual(bound[personality][0], "___objc_personality_v0")
                    types = macho.caught(part, unwinding.tables[function])
                    self.assertEqual({bound[pointer][0] for pointer in types}, {"_OBJC_EHTYPE_$_NSException"})
                personalities = {bound[pointer][0] for pointer in unwinding.personalities}
                self.assertEqual(personalities, {"___objc_personality_v0", "___gxx_personality_v0"})

        part = self.slices["x86_64"]
        table = part.sections["__TEXT,__gcc_except_tab"]
        unwinding = part.sections["__TEXT,__unwind_info"]
        self.holds(fact, self.data,
                   self.in_slice("x86_64", table.offset, bytes(table.size)),
                   self.in_slice("x86_64", unwinding.offset + 20, struct.pack("<I", 0)),
                   renamed(self.data, b"___objc_personality_v0", b"___objc_personality_v1"),
                   renamed(self.data, b"_OBJC_EHTYPE_$_NSException", b"_OBJC_EHTYPE_$_NSExceptioo"))


if __name__ == "__main__":
    unittest.main()
