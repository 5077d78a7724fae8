"""Prints how many functions of the shipped slice this run entered. The run must enter all functions of the product
except NEVER_ENTERED. It need not enter the functions that the compiler copied from the C++ library."""

import re
import unittest

import slices

# No journey and no question (Questions.mm) enters these, on either machine.
NEVER_ENTERED = {
    "an exception that leaves a frame without being expected there": {
        "Retained<NSImageView>::~Retained()",
        "Retained<NSButton>::~Retained()",
        "DetectionReport::~DetectionReport()",
    },
}
# The C++ library's functions: names in std, and the function that clang calls for an uncaught exception.
LIBRARY = re.compile(r"__Z(NK?)?S[tabsiod]|___clang_call_terminate$")


def functions() -> list[str]:
    """Returns the mangled names of the slice's functions in order. The shipped executable has no names. So this links
    it again with names and checks that the code is the same."""
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
    """Returns the names in the sources."""
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
