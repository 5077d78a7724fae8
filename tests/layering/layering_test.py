"""Checks the includes of the product and of platform/, and that no source tests for its platform.

- Each of the product's folders includes itself and the folders after it in PRODUCT_FOLDERS. app/AppDelegate.mm and
  app/main.mm start everything and may include every folder.
- The product's folders may include platform/Retained.hpp and platform/Text.hpp. They import no other header of the
  platform than <Cocoa/Cocoa.h>.
- platform/ includes none of the product's folders, and neither of its two platforms includes the other.
- There is no conditional compilation, except for C++ and, in platform/macos/, for the processor.
"""

import pathlib
import re
import tempfile
import unittest
from collections.abc import Iterator

ROOT = pathlib.Path(__file__).resolve().parents[2]
PRODUCT_FOLDERS = ("removal", "licence", "detection", "ui", "app")  # each includes itself and those after it
ENTRIES = ("app/AppDelegate.mm", "app/main.mm")
SHARED = ("platform/Retained.hpp", "platform/Text.hpp")
SOURCES = {".h", ".hpp", ".cpp", ".mm"}
LANGUAGE = {"__cplusplus"}
PROCESSOR = {"__LP64__", "__x86_64__", "__aarch64__", "__arm64__", "__OBJC_BOOL_IS_BOOL"}

INCLUDE = re.compile(r'\s*#\s*(?:include|import)\s*(["<])([^">]+)[">]')
CONDITION = re.compile(r"\s*#\s*(?:el)?if(?:n?def)?\b(.*)")
STANDARD_HEADER = re.compile(r"[a-z0-9_]+")  # C++'s: <string>, <cstdint>


def may_include(path: str, included: str) -> bool:
    """Returns whether the file at `path` may include `included`. Both are paths below the top folder."""
    if included in SHARED:
        return True
    folder, target = path.split("/")[0], included.split("/")[0]
    if folder == "platform":
        return path not in SHARED and included.startswith("/".join(path.split("/")[:2]) + "/")
    return target in (PRODUCT_FOLDERS if path in ENTRIES else PRODUCT_FOLDERS[PRODUCT_FOLDERS.index(folder):])


def findings(root: pathlib.Path) -> Iterator[str]:
    """Yields every line below `root` that breaks a rule, as "PATH:LINE: what is wrong"."""
    for file in sorted(file for top in (*PRODUCT_FOLDERS, "platform") for file in (root / top).rglob("*")
                       if file.suffix in SOURCES):
        path = file.relative_to(root).as_posix()
        conditions = LANGUAGE | (PROCESSOR if path.startswith("platform/macos/") else set())
        in_product = not path.startswith("platform/")
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            if include := INCLUDE.match(line):
                quote, included = include.groups()
                if quote == '"' and not may_include(path, included):
                    yield f"{path}:{number}: may not include {included}"
                allowed = included == "Cocoa/Cocoa.h" or STANDARD_HEADER.fullmatch(included)
                if quote == "<" and in_product and not allowed:
                    yield f"{path}:{number}: the product imports <Cocoa/Cocoa.h> and standard C++, not <{included}>"
            elif in_product and line.lstrip().startswith("@import"):
                yield f"{path}:{number}: the product imports <Cocoa/Cocoa.h>, not a module"
            elif condition := CONDITION.match(line):
                if unknown := set(re.findall(r"[A-Za-z_]\w*", condition[1])) - conditions - {"defined"}:
                    yield f"{path}:{number}: conditional compilation by {' '.join(sorted(unknown))}"
                elif not re.search(r"[A-Za-z_]", condition[1]):
                    yield f"{path}:{number}: conditional compilation"


class LayeringTest(unittest.TestCase):
    def test_this_checkout_keeps_the_rules(self) -> None:
        self.assertGreater(len(list((ROOT / "app").glob("*.mm"))), 1)
        self.assertEqual(list(findings(ROOT)), [])

    def test_what_breaks_a_rule_is_found(self) -> None:
        for path, line in (
                ("app/OutputFiles.mm", '#import "ui/ModalAlert.hpp"'),
                ("ui/ModalAlert.hpp", '#include "detection/KnownLocations.hpp"'),
                ("detection/DetectionReport.cpp", '#include "licence/FailureReason.hpp"'),
                ("licence/Archiver.mm", '# import "removal/Quoting.hpp"'),
                ("removal/Quoting.cpp", '#include "Quoting.hpp"'),
                ("app/main.mm", '#import "platform/gnustep/Swizzling.hpp"'),
                ("app/main.mm", '#import "tests/support/Stage.hpp"'),
                ("ui/ModalAlert.mm", "#import <AppKit/AppKit.h>"),
                ("ui/ModalAlert.mm", "#include <unistd.h>"),
                ("ui/ModalAlert.mm", "@import AppKit;"),
                ("ui/ModalAlert.mm", "#if __APPLE__"),
                ("ui/ModalAlert.mm", "#ifdef GNUSTEP"),
                ("ui/ModalAlert.mm", "#ifndef GNUSTEP"),
                ("ui/ModalAlert.mm", "#elif __has_include(<AppKit/AppKit.h>)"),
                ("ui/ModalAlert.mm", "#if 0"),
                ("ui/ModalAlert.mm", "#if __LP64__"),
                ("platform/Text.hpp", '#import "app/AppDelegate.h"'),
                ("platform/Text.hpp", '#import "platform/gnustep/Swizzling.hpp"'),
                ("platform/Text.hpp", "#if defined(__APPLE__)"),
                ("platform/gnustep/looks/Images.mm", '#import "ui/WindowLayout.hpp"'),
                ("platform/gnustep/looks/Images.mm", '#import "platform/macos/libc/math.h"'),
                ("platform/gnustep/looks/Images.mm", "#ifdef __x86_64__"),
                ("platform/macos/headers/objc.h", "#ifdef GNUSTEP")):
            # A tree that consists of one file with one line.
            with self.subTest(path, line=line), tempfile.TemporaryDirectory() as folder:
                file = pathlib.Path(folder, path)
                file.parent.mkdir(parents=True)
                file.write_text(f"// A comment.\n{line}\n")
                self.assertEqual([finding.split()[0] for finding in findings(pathlib.Path(folder))], [f"{path}:2:"])


if __name__ == "__main__":
    unittest.main()
