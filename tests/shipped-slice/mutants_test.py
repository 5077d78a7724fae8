"""Tests that the loader or a journey notices a slice with one wrong place."""

import importlib
import pathlib
import re
import shutil
import unittest

import slices
import driver

FOLDER = slices.FOLDER / "mutants"
MUTANT = FOLDER / "executable"
HEADERS = slices.PACKAGE / "platform/macos/headers"
driver.TIMEOUT = 10  # seconds that a mutant's journey waits; the unchanged slice needs less

# The complete messages of the journeys and of the loader.
ISA_IS_MISSING = "AppDelegate's _window is at 0 for the compiler, at 8 for the runtime"
NOT_UP = "not true within 10 s: the window shows the first detection"
WRONG_BUTTONS = re.escape(
    "the removal buttons\n"
    "    must be: {'Remove Quorlen 3': ('hidden', 'disabled'), 'Override Cleanup': ('shown', 'enabled')}\n"
    "    is:      {'Remove Quorlen 3': ('shown', 'disabled'), 'Override Cleanup': ('hidden', 'enabled')}")
WRONG_FOLDER = (r"the activity log since the last look\n(.*\n)+    is:\n(.*\n)+"
                r" +License backup created: /Users/ann/Documents/Quorlen-License-Backup-[-0-9]+\.zip\n(.*\n)+")
TERMINATED = (r"the tool has ended with status 134; its output: terminate called without an active exception\n"
              r"(qemu: uncaught target signal 6 \(Aborted\) - core dumped\n)?")
CHAINED_FIXUPS = f"the slice has load command {0x80000034}, which is not known"

# A declaration, the sources that are compiled with another one, and what notices: a journey, or the loader.
DECLARATIONS = [
    ("objc/objc.h", "    Class isa;\n", "", ["app/AppDelegate.mm", "ui/AppDelegate+OverrideReveal.mm"],
     "loader", ISA_IS_MISSING),
    ("Foundation/Foundation.h", "typedef double CGFloat;", "typedef float CGFloat;", ["ui/AppDelegate+MainWindow.mm"],
     "window.first_look", NOT_UP),
    ("AppKit/AppKit.h", "1 << 17", "1 << 18", ["ui/AppDelegate+OverrideReveal.mm"],
     "override.shift_reveals_and_caps_lock_does_not", WRONG_BUTTONS),
    ("Foundation/Foundation.h", "NSDesktopDirectory = 12", "NSDesktopDirectory = 9", ["app/OutputFiles.mm"],
     "removal.second_thoughts_then_refusal_then_removal", WRONG_FOLDER),
]


def objects_with(header: str, declaration: str, other: str, sources: list[str]) -> list[pathlib.Path]:
    """Compiles some sources with another declaration. Returns the executable's object files, with these among them."""
    text = (HEADERS / header).read_text()
    assert text.count(declaration) == 1, f"{header} says {declaration!r} {text.count(declaration)} times"
    changed = FOLDER / "headers" / header
    changed.parent.mkdir(parents=True)
    changed.write_text(text.replace(declaration, other))
    objects = []
    for path in slices.objects():
        source = str(path).partition(".dir/")[2].removesuffix(".o")
        if source in sources:
            path = FOLDER / f"{pathlib.Path(source).name}.o"
            slices.compile_slice(source, path, f"-I{FOLDER / 'headers'}")
        objects.append(path)
    return objects


class MutantsTest(unittest.TestCase):
    def setUp(self) -> None:
        shutil.rmtree(FOLDER, ignore_errors=True)
        FOLDER.mkdir()

    def noticed_by(self, journey: str, message: str) -> None:
        """Fails unless a journey with the mutant, or the loader, fails with this message."""
        program = slices.wrapper("mutant", MUTANT)
        if journey == "loader":
            slices.judge_refused(program, message)
            return
        subject, name = journey.split(".")
        driver.TOOL = program
        driver.story.clear()
        with self.assertRaisesRegex(driver.JourneyFailure, rf"\A{message}\Z"):
            getattr(importlib.import_module(f"{subject}_journeys"), f"journey_{name}")()

    def test_other_declarations(self) -> None:
        for *change, journey, message in DECLARATIONS:
            with self.subTest(change):
                self.setUp()
                slices.link_slice(MUTANT, objects=objects_with(*change))
                self.noticed_by(journey, message)

    def test_empty_exception_table(self) -> None:
        table = FOLDER / "table"
        shutil.copy(slices.FOLDER / "slice", MUTANT)
        slices.llvm("llvm-objcopy", f"--dump-section=__TEXT,__gcc_except_tab={table}", MUTANT)
        table.write_bytes(bytes(table.stat().st_size))
        slices.llvm("llvm-objcopy", f"--update-section=__TEXT,__gcc_except_tab={table}", MUTANT)
        self.noticed_by("trouble.archiver_missing", TERMINATED)

    def test_chained_fixups(self) -> None:
        slices.link_slice(MUTANT, "-mmacosx-version-min=13.0", "-Xlinker", "-fixup_chains", objects=slices.objects())
        self.noticed_by("loader", CHAINED_FIXUPS)


if __name__ == "__main__":
    unittest.main()
