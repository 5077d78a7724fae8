"""Prints how many functions of the shipped slice this run entered. The run must enter all functions of the product
except NEVER_ENTERED. It need not enter the functions that the compiler copied from the C++ library."""

import re
import unittest

import slices

# No journey and no question (Questions.mm) enters these, on either machine: that takes an exception that leaves a frame
# without being expected there.
NEVER_ENTERED = {
    "Retained<NSImageView>::~Retained()",
    "Retained<NSButton>::~Retained()",
    "DetectionReport::~DetectionReport()",
}
# The C++ library's functions: names in std, and the function that clang calls for an uncaught exception.
LIBRARY = re.compile(r"__Z(NK?)?S[tabsiod]|___clang_call_terminate$")


def functions() -> dict[str, str]:
    """Returns the mangled names of the slice's functions by their addresses. The shipped executable has no names. So
    this links it again with names and checks that the code is the same."""
    folder = slices.FOLDER / "coverage"
    shipped, named = slices.FOLDER / "slice", folder / "named"
    slices.link_slice(named, objects=slices.objects(), stripped=False)
    for file in (shipped, named):
        slices.llvm("llvm-objcopy", f"--dump-section=__TEXT,__text={folder / file.name}.code", file, folder / "copy")
    assert (folder / "slice.code").read_bytes() == (folder / "named.code").read_bytes(), "the code differs with names"

    names = dict(re.findall(r"^(\w+) [tT] (.+)$", slices.llvm("llvm-nm", named), re.MULTILINE))
    starts = (slices.FOLDER / f"shipped/{slices.PRODUCT}.app/Functions").read_text().split()
    return {start: names[start] for start in starts}


class CoverageTest(unittest.TestCase):
    def test_minimum(self) -> None:
        names = functions()
        entered = (slices.FOLDER / "coverage/functions").read_text().split()
        missing = [name for address, name in names.items() if address not in entered]
        own = [name for name in names.values() if not LIBRARY.match(name)]
        own_missing = "\n".join(name for name in missing if name in own)
        own_missing = set(slices.llvm("llvm-cxxfilt", "--strip-underscore", text=own_missing).splitlines())
        print(f"{len(names) - len(missing)} of the {len(names)} functions of the {slices.MACHINE} slice were entered, "
              f"{len(own) - len(own_missing)} of the product's own {len(own)}.")
        self.assertEqual(NEVER_ENTERED, own_missing)


if __name__ == "__main__":
    unittest.main()
