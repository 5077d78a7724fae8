"""Compares the declarations of the platform's interface with the known facts about it.

interface-facts.txt lists every method with its type encoding in the platform's runtime. InterfaceFacts.mm asserts the
other facts; each build of the app compiles it. clang's library reads the declarations.
"""

import pathlib
import re
import shutil
import tempfile
import unittest

from clang.cindex import CursorKind, Index
from support import BOOL, COPIES, EXECUTABLE, HEADERS, LLVM, FactTest, accessors, clang, compiler_options, objdump

HERE = pathlib.Path(__file__).parent
# Two declarations of NSAlert. The panels have a different runModal.
ALERT = "- (NSButton *)addButtonWithTitle:(NSString *)title;\n- (NSModalResponse)runModal;"

# The compiler replaces these by calls of the runtime's functions, or needs them declared for an empty literal.
WITHOUT_MESSAGE = {"+[NSObject alloc]", "-[NSObject retain]", "-[NSObject release]", "-[NSObject autorelease]",
                   "+[NSDictionary dictionaryWithObjects:forKeys:count:]"}
METHODS = {CursorKind.OBJC_INSTANCE_METHOD_DECL, CursorKind.OBJC_CLASS_METHOD_DECL}


def declared(architecture: str, interface: pathlib.Path) -> dict[str, str]:
    """Returns the methods that the interface declares: name -> type encoding."""
    resources = next((LLVM / "lib" / "clang").iterdir())
    options = compiler_options(architecture, interface)
    options += ["-resource-dir", str(resources), "-x", "objective-c++-header"]
    unit = Index.create().parse(str(interface / "Cocoa" / "Cocoa.h"), args=options)
    assert not list(unit.diagnostics), "the interface doesn't compile cleanly"
    found = {}
    for cursor in unit.cursor.walk_preorder():
        if cursor.kind in METHODS:
            # The USR also has a category's class: c:objc(cy)NSTask@NSDeprecated(im)launch
            usr = cursor.get_usr()
            owner, mark, selector = re.fullmatch(r"c:objc\(\w\w\)(\w+)(?:@\w+)?\(([ic])m\)(.+)", usr).groups()
            found[f"{'-' if mark == 'i' else '+'}[{owner} {selector}]"] = cursor.objc_type_encoding
    return found


def known(architecture: str) -> dict[str, str]:
    """Returns the facts for one architecture: method -> type encoding."""
    found = {}
    for line in (HERE / "interface-facts.txt").read_text().splitlines():
        if line and not line.startswith("#"):
            owner, encoding, *selectors = line.split()
            for selector in selectors:
                property_ = not re.search(r"\d", encoding)
                methods = accessors(selector, encoding) if property_ else {selector: encoding}
                found |= {f"{owner[0]}[{owner[1:]} {method}]": types.replace("BOOL", BOOL[architecture])
                          for method, types in methods.items()}
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

    def test_every_method_has_the_platform_s_types(self) -> None:
        def fact(interface: pathlib.Path) -> None:
            for architecture in BOOL:
                self.assertEqual(declared(architecture, interface), known(architecture))

        self.holds(fact, HEADERS,
                   self.changed("Foundation/Foundation.h", "typedef double CGFloat", "typedef float CGFloat"),
                   self.changed("Foundation/Foundation.h", "- (BOOL)fileExists", "- (bool)fileExists"),
                   self.changed("AppKit/AppKit.h", ALERT, ALERT.partition("\n")[0]),
                   self.changed("AppKit/AppKit.h", "(unsigned long long, NSEventMask)", "(unsigned, NSEventMask)"))

    def test_constants_and_structures(self) -> None:
        """A wrong value does not compile."""
        def fact(interface: pathlib.Path) -> None:
            for architecture in BOOL:
                facts = HERE / "InterfaceFacts.mm"
                self.assertEqual(clang(architecture, "-fsyntax-only", facts, interface=interface), (0, ""))

        self.holds(fact, HEADERS,
                   self.changed("AppKit/AppKit.h", "1 << 17", "1 << 16"),
                   self.changed("AppKit/AppKit.h", "Circular = 7", "Circular = 8"),
                   self.changed("Foundation/Foundation.h", "= 12", "= 13"),
                   self.changed("Foundation/Foundation.h", "    NSUInteger length", "    unsigned length"),
                   self.changed("objc/objc.h", "__OBJC_BOOL_IS_BOOL", "1"))

    def test_nothing_newer_than_the_lowest_system(self) -> None:
        """A call that macOS 10.13 does not have is an error if its declaration says so."""
        def fact(interface: pathlib.Path) -> None:
            source = COPIES[0] / "ui" / "ModalAlert.mm"
            self.assertEqual(clang("x86_64", "-fsyntax-only", source, interface=interface), (0, ""))

        self.holds(fact, HEADERS,
                   self.changed("AppKit/AppKit.h", ALERT,
                                ALERT.replace("runModal;", "runModal API_AVAILABLE(macos(10.14));")))

    def test_nothing_that_the_app_does_not_use(self) -> None:
        """The app has each method's name, and the name of each property's getter or setter."""
        def subject(selector: str) -> str:
            """Returns the part that a getter and its setter share, or another selector without its last colon."""
            return re.sub(r"^(set|is)(?=[A-Z])", "", selector.removesuffix(":")).lower()

        names = objdump(EXECUTABLE.read_bytes(), "arm64", "--section=__TEXT,__objc_methname").splitlines()[2:]
        sent = {subject(name.split()[1]) for name in names}

        def fact(methods: set[str]) -> None:
            unused = [method for method in methods - WITHOUT_MESSAGE if subject(method[:-1].split()[1]) not in sent]
            self.assertEqual(unused, [])

        methods = set(known("arm64"))
        self.holds(fact, methods, methods | {"-[NSWindow setAlphaValue:]"})


if __name__ == "__main__":
    unittest.main()
