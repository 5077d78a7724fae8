"""Tells how many functions of the shipped slice this run has entered, and holds the minimum: all of the product's own but
these. What the compiler took into the slice from the C++ library is counted too, but need not be entered."""

import re
import unittest

import slices

# Neither a journey nor a question (Questions.mm) leads there, on either machine.
NEVER_ENTERED = {
    "an exception that leaves a frame without being expected there": {
        "Retained<NSImageView>::~Retained()",
        "Retained<NSButton>::~Retained()",
        "DetectionReport::~DetectionReport()",
    },
}
# What begins so is the C++ library's: a name in std, or what clang calls when an exception has nowhere to go.
LIBRARY = re.compile(r"__Z(NK?)?S[tabsiod]|___clang_call_terminate$")


def functions() -> list[str]:
    """Returns the mangled names of the slice's functions in their order. The shipped executable is stripped of them: it
    is linked again with them, and its code must come out the same."""
    folder = slices.FOLDER / "coverage"
    shipped, named = slices.FOLDER / "slice", folder / "named"
    slices.link_slice(named, objects=slices.objects(), stripped=False)
    for file in (shipped, named):
        slices.llvm("llvm-objcopy", f"--dump-section=__TEXT,__text={folder / file.name}.code", file, "/dev/null")
    assert (folder / "slice.code").read_bytes() == (folder / "named.code").read_bytes(), "the code differs with names"

    listed = slices.llvm("llvm-nm", "--defined-only", named).splitlines()
    names = {int(address, 16): name for address, kind, name in (line.split(" ", 2) for line in listed) if kind in "tT"}
    starts = slices.llvm("llvm-objdump", "--macho", "--function-starts", shipped).splitlines()[1:]
    return [names[int(start, 16)] for start in filter(None, starts)]


def readable(mangled: list[str]) -> set[str]:
    """Returns names as the sources have them."""
    return set(slices.llvm("llvm-cxxfilt", "--strip-underscore", text="\n".join(mangled)).splitlines())


class CoverageTest(unittest.TestCase):
    def test_minimum(self) -> None:
        names = functions()
        entered = (slices.FOLDER / "coverage/functions").read_bytes()
        self.assertEqual(len(names), len(entered))
        missing = [name for name, was_entered in zip(names, entered) if not was_entered]
        own = [name for name in names if not LIBRARY.match(name)]
        own_missing = readable([name for name in missing if name in own])
        print(f"{len(names) - len(missing)} of the {len(names)} functions of the {slices.MACHINE} slice were entered, "
              f"{len(own) - len(own_missing)} of the product's own {len(own)}. To enter the others of those takes:")
        for reason, excused in NEVER_ENTERED.items():
            print(f"  {reason}:", *sorted(excused), sep="\n    ")
        self.assertEqual(set().union(*NEVER_ENTERED.values()), own_missing)


if __name__ == "__main__":
    unittest.main()
