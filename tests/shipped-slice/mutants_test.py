"""Tests that a slice which is wrong in one place is noticed: by the loader, or by a journey that goes otherwise."""

import importlib
import pathlib
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
driver.TIMEOUT = 10  # A mutant makes its journey wait in vain. The unchanged slice keeps within this, too.


def copied_interface(name, file, old, new):
    """Copies the declarations of the platform, with one of them changed."""
    copy = FOLDER / name / "headers"
    shutil.copytree(slices.PACKAGE / HEADERS, copy)
    text = (copy / file).read_text()
    assert text.count(old) == 1, f"{file} says {old!r} {text.count(old)} times"
    (copy / file).write_text(text.replace(old, new))
    return copy


def built(name, sources=(), interface=None, options=()):
    """Builds the executable, for Intel alone, with some of its sources compiled against other declarations."""
    (FOLDER / name).mkdir(parents=True, exist_ok=True)
    objects = []
    for path in slices.objects():
        source = str(path).partition(".dir/")[2].removesuffix(".o")
        if source in sources:
            path = FOLDER / name / f"{pathlib.Path(source).name}.o"
            slices.compile_for_intel(source, path, replacing=[(slices.PACKAGE / HEADERS, interface)])
        objects.append(path)
    slices.link_for_intel(FOLDER / name / "executable", *options, objects=objects)
    return FOLDER / name / "executable"


def with_other_declaration(name, file, old, new, *sources):
    return built(name, sources, copied_interface(name, file, old, new))


def with_empty_exception_table(name):
    (FOLDER / name).mkdir(parents=True)
    data = bytearray(slices.EXECUTABLE.read_bytes())
    (processor, _, start, size), = (part for part in macho.parts(data) if part[0] == macho.X86_64)
    table = macho.Slice(bytes(data), processor, start, size).sections["__TEXT,__gcc_except_tab"]
    data[start + table.offset:start + table.offset + table.size] = bytes(table.size)
    (FOLDER / name / "executable").write_bytes(data)
    return FOLDER / name / "executable"


def journey(program, subject, name):
    """Goes a journey with a program; returns None, or what was not as it must be."""
    driver.TOOL = program
    driver.story.clear()
    try:
        getattr(importlib.import_module(f"{subject}_journeys"), f"journey_{name}")()
    except driver.JourneyFailure as failure:
        return str(failure)
    return None


class MutantsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(FOLDER, ignore_errors=True)

    def noticed_by_journey(self, executable, told, sign):
        program = slices.wrapper("mutant", executable)
        self.assertRegex(journey(program, *told) or "The journey noticed nothing.", sign)

    def noticed_by_loader(self, executable, sign):
        status, said = slices.said_by(slices.wrapper("mutant", executable))
        self.assertEqual(2, status)
        self.assertIn(sign, said)

    def test_the_unchanged_slice_passes(self):
        program = slices.wrapper("unchanged", built("unchanged"))
        for told in (LOOK, SHIFT, REMOVAL, NO_ARCHIVER):
            self.assertIsNone(journey(program, *told), told)

    def test_root_class_without_isa(self):
        mutant = with_other_declaration("isa", "objc/objc.h", "    Class isa;\n", "",
                                        "app/AppDelegate.mm", "ui/AppDelegate+OverrideReveal.mm")
        self.noticed_by_loader(mutant, "AppDelegate's _window is at 0 for the compiler, at 8 for the runtime")

    def test_coordinates_of_another_type(self):
        mutant = with_other_declaration("coordinates", "Foundation/Foundation.h",
                                        "typedef double CGFloat;", "typedef float CGFloat;", "ui/AppDelegate+MainWindow.mm")
        # Its views are nowhere to be found, or it doesn't come that far.
        self.noticed_by_journey(mutant, LOOK, "in vain: the window shows the first detection|the tool has ended")

    def test_shift_as_another_bit(self):
        mutant = with_other_declaration("shift", "AppKit/AppKit.h", "1 << 17", "1 << 18",
                                        "ui/AppDelegate+OverrideReveal.mm")
        self.noticed_by_journey(mutant, SHIFT, "the removal buttons")

    def test_desktop_as_another_folder(self):
        mutant = with_other_declaration("desktop", "Foundation/Foundation.h",
                                        "NSDesktopDirectory = 12", "NSDesktopDirectory = 9", "app/OutputFiles.mm")
        self.noticed_by_journey(mutant, REMOVAL, "License backup")

    def test_empty_exception_table(self):
        self.noticed_by_journey(with_empty_exception_table("exceptions"), NO_ARCHIVER, "the tool has ended with status")

    def test_chained_fixups(self):
        mutant = built("chained", options=["-mmacosx-version-min=13.0", "-Xlinker", "-fixup_chains"])
        self.noticed_by_loader(mutant, "the slice has chained fixups")


if __name__ == "__main__":
    unittest.main()
