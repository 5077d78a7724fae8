"""Compares the declarations of the platform's interface with the known facts about it.

interface-facts.txt lists every method with its type encoding in the platform's runtime. InterfaceFacts.mm asserts the
other facts; each build of the app compiles it. clang's library reads the declarations.
"""

import ctypes
import json
import pathlib
import re
import shlex
import shutil
import subprocess
import tempfile
import unittest

import macho
from support import BUILDS, EXECUTABLE, LLVM, FactTest

COPY = BUILDS[0].parents[1]
HEADERS = COPY / "platform" / "macos" / "headers"
FACTS = pathlib.Path(__file__).with_name("interface-facts.txt")
FACTS_FOR_THE_COMPILER = pathlib.Path(__file__).with_name("InterfaceFacts.mm")
BOOL = {"x86_64": "c", "arm64": "B"}

# Two declarations of NSAlert. The panels have a different runModal.
ALERT = "- (NSButton *)addButtonWithTitle:(NSString *)title;\n- (NSModalResponse)runModal;"

# The compiler replaces these by calls of the runtime's functions, or needs them declared for an empty literal.
WITHOUT_MESSAGE = {"+[NSObject alloc]", "-[NSObject retain]", "-[NSObject release]", "-[NSObject autorelease]",
                   "+[NSDictionary dictionaryWithObjects:forKeys:count:]"}


def options(architecture: str, interface: pathlib.Path) -> list[str]:
    """Returns the build's compiler options, for one architecture and with this interface."""
    commands = json.loads((BUILDS[0] / "compile_commands.json").read_text())
    command, = [command["command"] for command in commands if command["file"].endswith(FACTS_FOR_THE_COMPILER.name)]
    words = shlex.split(command.replace("-arch x86_64 -arch arm64", f"-arch {architecture}"))
    words = [str(interface) if word == str(HEADERS) else word for word in words]
    # Leaves out the compiler, the source and the output.
    return [*words[1:words.index("-o")], "-resource-dir", str(next((LLVM / "lib" / "clang").iterdir()))]


class String(ctypes.Structure):
    _fields_ = [("data", ctypes.c_void_p), ("flags", ctypes.c_uint)]


class Cursor(ctypes.Structure):
    _fields_ = [("kind", ctypes.c_int), ("data", ctypes.c_int), ("pointers", ctypes.c_void_p * 3)]


VISITOR = ctypes.CFUNCTYPE(ctypes.c_int, Cursor, Cursor, ctypes.c_void_p)
CLASS, CATEGORY, PROTOCOL, METHOD, CLASS_METHOD = 11, 12, 13, 16, 17  # CXCursorKind
CONTINUE, RECURSE = 1, 2  # CXChildVisitResult


class Library:
    """The calls of clang's library <clang-c/Index.h> that read declarations."""

    def __init__(self) -> None:
        self.library = ctypes.CDLL(str(next((LLVM / "lib").glob("libclang-*.so.1"))))
        self.declare("createIndex", ctypes.c_void_p, ctypes.c_int, ctypes.c_int)
        self.declare("parseTranslationUnit", ctypes.c_void_p, ctypes.c_void_p, ctypes.c_char_p,
                     ctypes.POINTER(ctypes.c_char_p), ctypes.c_int, ctypes.c_void_p, ctypes.c_uint, ctypes.c_uint)
        self.declare("getTranslationUnitCursor", Cursor, ctypes.c_void_p)
        self.declare("visitChildren", ctypes.c_uint, Cursor, VISITOR, ctypes.c_void_p)
        self.declare("getNumDiagnostics", ctypes.c_uint, ctypes.c_void_p)
        self.declare("getCursorUSR", String, Cursor)
        self.declare("getDeclObjCTypeEncoding", String, Cursor)
        self.declare("getCString", ctypes.c_char_p, String)
        self.declare("disposeString", None, String)
        self.index = self.call("createIndex", 0, 1)

    def declare(self, name: str, result: type | None, *arguments: type) -> None:
        """Declares the types of a function."""
        function = getattr(self.library, f"clang_{name}")
        function.restype, function.argtypes = result, arguments

    def call(self, name: str, *arguments: object) -> object:
        """Calls a function."""
        return getattr(self.library, f"clang_{name}")(*arguments)

    def text(self, name: str, cursor: Cursor) -> str:
        """Returns a text of a declaration."""
        string = self.call(name, cursor)
        text = self.call("getCString", string).decode()
        self.call("disposeString", string)
        return text

    def methods(self, architecture: str, interface: pathlib.Path) -> dict[str, str]:
        """Returns the methods that the interface declares: name -> type encoding."""
        arguments = [option.encode() for option in [*options(architecture, interface), "-x", "objective-c++-header"]]
        unit = self.call("parseTranslationUnit", self.index, bytes(interface / "Cocoa" / "Cocoa.h"),
                         (ctypes.c_char_p * len(arguments))(*arguments), len(arguments), None, 0, 0)
        assert self.call("getNumDiagnostics", unit) == 0, "the interface doesn't compile cleanly"
        found = {}

        def visit(cursor: Cursor, _: Cursor, __: object) -> int:
            if cursor.kind in (METHOD, CLASS_METHOD):
                # The USR also has a category's class: c:objc(cy)NSTask@NSDeprecated(im)launch
                owner, mark, selector = re.fullmatch(r"c:objc\(\w\w\)(\w+)(?:@\w+)?\(([ic])m\)(.+)",
                                                     self.text("getCursorUSR", cursor)).groups()
                name = f"{'-' if mark == 'i' else '+'}[{owner} {selector}]"
                found[name] = self.text("getDeclObjCTypeEncoding", cursor)
            return RECURSE if cursor.kind in (CLASS, PROTOCOL, CATEGORY) else CONTINUE

        self.call("visitChildren", self.call("getTranslationUnitCursor", unit), VISITOR(visit), None)
        return found


def known(architecture: str) -> dict[str, str]:
    """Returns the facts for one architecture: method -> type encoding."""
    found = {}
    for line in FACTS.read_text().splitlines():
        if line and not line.startswith("#"):
            name, encoding = re.fullmatch(r"([+-]\[\w+ \S+\])\s+(\S+)", line).groups()
            found[name] = encoding.replace("BOOL", BOOL[architecture])
    return found


class InterfaceTest(FactTest):
    def changed(self, file: str, old: str, new: str) -> pathlib.Path:
        """Returns a copy of the interface with a changed declaration in one file."""
        copy = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, copy)
        shutil.copytree(HEADERS, copy, dirs_exist_ok=True)
        text = (copy / file).read_text()
        self.assertEqual(text.count(old), 1, old)
        (copy / file).write_text(text.replace(old, new))
        return copy

    @staticmethod
    def compiled(architecture: str, interface: pathlib.Path, source: pathlib.Path) -> str:
        """Returns the compiler's messages for a source file with this interface: empty if it compiles."""
        done = subprocess.run([LLVM / "bin" / "clang++", *options(architecture, interface), "-fsyntax-only", source],
                              stderr=subprocess.PIPE)
        return done.stderr.decode()

    def test_every_method_has_the_platform_s_types(self) -> None:
        library = Library()

        def fact(interface: pathlib.Path) -> None:
            for architecture in BOOL:
                self.assertEqual(library.methods(architecture, interface), known(architecture))

        self.holds(fact, HEADERS,
                   self.changed("Foundation/Foundation.h", "typedef double CGFloat", "typedef float CGFloat"),
                   self.changed("Foundation/Foundation.h", "- (BOOL)fileExists", "- (bool)fileExists"),
                   self.changed("AppKit/AppKit.h", ALERT, ALERT.partition("\n")[0]),
                   self.changed("AppKit/AppKit.h", "(unsigned long long, NSEventMask)", "(unsigned, NSEventMask)"))

    def test_constants_and_structures(self) -> None:
        """A wrong value does not compile."""
        def fact(interface: pathlib.Path) -> None:
            for architecture in BOOL:
                self.assertEqual(self.compiled(architecture, interface, FACTS_FOR_THE_COMPILER), "")

        self.holds(fact, HEADERS,
                   self.changed("AppKit/AppKit.h", "1 << 17", "1 << 16"),
                   self.changed("AppKit/AppKit.h", "Circular = 7", "Circular = 8"),
                   self.changed("Foundation/Foundation.h", "= 12", "= 13"),
                   self.changed("Foundation/Foundation.h", "    NSUInteger length", "    unsigned length"),
                   self.changed("objc/objc.h", "__OBJC_BOOL_IS_BOOL", "1"))

    def test_nothing_newer_than_the_lowest_system(self) -> None:
        """A call that macOS 10.13 does not have is an error if its declaration says so."""
        def fact(interface: pathlib.Path) -> None:
            self.assertEqual(self.compiled("x86_64", interface, COPY / "ui" / "ModalAlert.mm"), "")

        self.holds(fact, HEADERS,
                   self.changed("AppKit/AppKit.h", ALERT,
                                ALERT.replace("runModal;", "runModal API_AVAILABLE(macos(10.14));")))

    def test_nothing_that_the_app_does_not_use(self) -> None:
        """The app has each method's name, and the name of each property's getter or setter."""
        sent = set()
        for part in macho.slices(EXECUTABLE.read_bytes()).values():
            sent |= set(part.texts("__TEXT,__objc_methname"))

        def subject(selector: str) -> str:
            """Returns the part that a getter and its setter share, or another selector without its last colon."""
            return re.sub(r"^(set|is)(?=[A-Z])", "", selector.removesuffix(":")).lower()

        subjects = {subject(selector) for selector in sent}

        def fact(methods: set[str]) -> None:
            declared = {method: method[:-1].partition(" ")[2] for method in methods - WITHOUT_MESSAGE}
            unused = [method for method, selector in declared.items() if subject(selector) not in subjects]
            self.assertEqual(unused, [])

        methods = set(known("arm64"))
        self.holds(fact, methods, methods | {"-[NSWindow setAlphaValue:]"})


if __name__ == "__main__":
    unittest.main()
