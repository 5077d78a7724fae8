"""Tests that the loader or a journey notices a slice with one wrong place."""

import importlib
import pathlib
import re
import shutil
import sys
import unittest

import slices

sys.path[:0] = [str(slices.ROOT / folder) for folder in ("tests/driver", "tests/journeys", "tests/macos")]
import macho
import driver

FOLDER = slices.FOLDER / "mutants"
HEADERS = pathlib.Path("platform/macos/headers")
LOOK = ("window", "first_look")
SHIFT = ("override", "shift_reveals_and_caps_lock_does_not")
REMOVAL = ("removal", "second_thoughts_then_refusal_then_removal")
NO_ARCHIVER = ("trouble", "archiver_missing")
# The journeys' complete messages for the mutants.
NOT_UP = "not true within 10 s: the window shows the first detection"
WRONG_BUTTONS = re.escape(
    "the removal buttons\n"
    "    must be: {'Remove Quorlen 3': ('hidden', 'disabled'), 'Override Cleanup': ('shown', 'enabled')}\n"
    "    is:      {'Remove Quorlen 3': ('shown', 'disabled'), 'Override Cleanup': ('hidden', 'enabled')}")
WRONG_FOLDER = (r"the activity log since the last look\n(.*\n)+    is:\n(.*\n)+"
                r" +License backup created: /Users/ann/Documents/Quorlen-License-Backup-[-0-9]+\.zip\n(.*\n)+")
TERMINATED = (r"the tool has ended with status 134; its output: terminate called without an active exception\n"
              r"(qemu: uncaught target signal 6 \(Aborted\) - core dumped\n)?")
driver.TIMEOUT = 10  # seconds. A mutant's journey waits this long. The unchanged slice also needs less.


def copied_interface(name: str, file: str, old: str, new: str) -> pathlib.Path:
    """Copies the platform's declarations and changes one of them."""
    copy = FOLDER / name / "headers"
    shutil.copytree(slices.PACKAGE / HEADERS, copy)
    text = (copy / file).read_text()
    assert text.count(old) == 1, f"{file} says {old!r} {text.count(old)} times"
    (copy / file).write_text(text.replace(old, new))
    return copy


def built(name: str, sources: tuple[str, ...] = (), interface: pathlib.Path | None = None,
          options: tuple[str, ...] = ()) -> pathlib.Path:
    """Builds the executable for this machine only, with some sources compiled with other declarations."""
    (FOLDER / name).mkdir(parents=True, exist_ok=True)
    objects = []
    for path in slices.objects():
        source = str(path).partition(".dir/")[2].removesuffix(".o")
        if source in sources:
            path = FOLDER / name / f"{pathlib.Path(source).name}.o"
            slices.compile_slice(source, path, replacing=[(slices.PACKAGE / HEADERS, interface)])
        objects.append(path)
    slices.link_slice(FOLDER / name / "executable", *options, objects=objects)
    return FOLDER / name / "executable"


def with_other_declaration(name: str, file: str, old: str, new: str, *sources: str) -> pathlib.Path:
    """Builds the executable with some sources compiled with one changed declaration."""
    return built(name, sources, copied_interface(name, file, old, new))


def with_empty_exception_table(name: str) -> pathlib.Path:
    """Copies the packaged executable with zeros instead of its exception tables."""
    (FOLDER / name).mkdir(parents=True)
    data = bytearray(slices.EXECUTABLE.read_bytes())
    (processor, _, start, size), = (part for part in macho.parts(data) if macho.NAMES[part[0]] == slices.MACHINE)
    table = macho.Slice(bytes(data), processor, start, size).sections["__TEXT,__gcc_except_tab"]
    data[start + table.offset:start + table.offset + table.size] = bytes(table.size)
    (FOLDER / name / "executable").write_bytes(data)
    return FOLDER / name / "executable"


def journey(program: pathlib.Path, subject: str, name: str) -> str | None:
    """Runs a journey with a program. Returns None, or a description of the failure."""
    driver.TOOL = program
    driver.story.clear()
    try:
        getattr(importlib.import_module(f"{subject}_journeys"), f"journey_{name}")()
    except driver.JourneyFailure as failure:
        return str(failure)
    return None


class MutantsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        shutil.rmtree(FOLDER, ignore_errors=True)

    def noticed_by_journey(self, executable: pathlib.Path, name: tuple[str, str], sign: str) -> None:
        program = slices.wrapper("mutant", executable)
        self.assertRegex(journey(program, *name) or "The journey noticed nothing.", rf"\A{sign}\Z")

    def noticed_by_loader(self, executable: pathlib.Path, what: str) -> None:
        status, said = slices.said_by(slices.wrapper("mutant", executable))
        self.assertEqual((2, f"shipped-slice: {what}. Nothing of the slice has run.\n"), (status, said))

    def test_the_unchanged_slice_passes(self) -> None:
        program = slices.wrapper("unchanged", built("unchanged"))
        for name in (LOOK, SHIFT, REMOVAL, NO_ARCHIVER):
            self.assertIsNone(journey(program, *name), name)

    def test_root_class_without_isa(self) -> None:
        mutant = with_other_declaration("isa", "objc/objc.h", "    Class isa;\n", "",
                                        "app/AppDelegate.mm", "ui/AppDelegate+OverrideReveal.mm")
        self.noticed_by_loader(mutant, "AppDelegate's _window is at 0 for the compiler, at 8 for the runtime")

    def test_coordinates_of_another_type(self) -> None:
        mutant = with_other_declaration("coordinates", "Foundation/Foundation.h",
                                        "typedef double CGFloat;", "typedef float CGFloat;", "ui/AppDelegate+MainWindow.mm")
        self.noticed_by_journey(mutant, LOOK, NOT_UP)

    def test_shift_as_another_bit(self) -> None:
        mutant = with_other_declaration("shift", "AppKit/AppKit.h", "1 << 17", "1 << 18",
                                        "ui/AppDelegate+OverrideReveal.mm")
        self.noticed_by_journey(mutant, SHIFT, WRONG_BUTTONS)

    def test_desktop_as_another_folder(self) -> None:
        mutant = with_other_declaration("desktop", "Foundation/Foundation.h",
                                        "NSDesktopDirectory = 12", "NSDesktopDirectory = 9", "app/OutputFiles.mm")
        self.noticed_by_journey(mutant, REMOVAL, WRONG_FOLDER)

    def test_empty_exception_table(self) -> None:
        self.noticed_by_journey(with_empty_exception_table("exceptions"), NO_ARCHIVER, TERMINATED)

    def test_chained_fixups(self) -> None:
        mutant = built("chained", options=("-mmacosx-version-min=13.0", "-Xlinker", "-fixup_chains"))
        self.noticed_by_loader(mutant, "the slice has chained fixups, and only dyld's opcodes are understood")


if __name__ == "__main__":
    unittest.main()
