"""Tells how many functions of the shipped slice this run has entered, and holds the floor: all of them but these."""

import re
import unittest

import slices

# Neither a person nor a question (Questions.mm) leads there. The controller's deallocation, which the process's end
# forestalls, is asked for, so that it isn't among them.
NEVER_ENTERED = {
    "an exception that leaves a frame without being expected there": {
        "___clang_call_terminate",
        "Retained<NSImageView>::~Retained()",
        "Retained<NSButton>::~Retained()",
        "DetectionReport::~DetectionReport()",
        "std::u16string::~basic_string()",
        "std::_AllocatorDestroyRangeReverse<std::allocator<std::u16string>, std::u16string*>::operator()() const",
    },
    "a text or a list too large for the memory": {
        "std::__throw_length_error(char const*)",
        "std::length_error::length_error(char const*)",
        "std::u16string::__throw_length_error() const",
        "std::vector<std::u16string, std::allocator<std::u16string>>::__throw_length_error() const",
        "std::__throw_bad_array_new_length()",
    },
    "a number of ten digits; eleven is the largest": {
        "char* std::__itoa::__append10<unsigned int>(char*, unsigned int)",
        "char* std::__itoa::__append10<unsigned long long>(char*, unsigned long long)",
    },
    "assigning lines to a report that has lines already": {
        "std::u16string::operator=(std::u16string const&)",
        "std::u16string& std::u16string::__assign_no_alias<true>(char16_t const*, unsigned long)",
        "std::u16string& std::u16string::__assign_no_alias<false>(char16_t const*, unsigned long)",
    },
    "a caller; the compiler writes it for a table of virtual functions, and the library destroys another way": {
        "std::__shared_ptr_emplace<AppDelegate*, std::allocator<AppDelegate*>>::~__shared_ptr_emplace()",
    },
}


def functions():
    """Returns the names of the slice's functions in their order. The shipped executable is stripped of them: it is
    linked again with them, and its code must come out the same."""
    folder = slices.FOLDER / "coverage"
    slices.llvm("llvm-lipo", slices.EXECUTABLE, "-thin", "x86_64", "-output", folder / "shipped")
    slices.link_for_intel(folder / "named", objects=slices.objects(), stripped=False)
    for name in ("shipped", "named"):
        slices.llvm("llvm-objcopy", f"--dump-section=__TEXT,__text={folder / name}.code", folder / name, "/dev/null")
    assert (folder / "shipped.code").read_bytes() == (folder / "named.code").read_bytes(), "the code differs with names"

    listed = slices.llvm("llvm-nm", "--defined-only", folder / "named").splitlines()
    names = {int(address, 16): name for address, kind, name in (line.split(" ", 2) for line in listed) if kind in "tT"}
    starts = slices.llvm("llvm-objdump", "--macho", "--function-starts", folder / "shipped").splitlines()[1:]
    mangled = [names[int(start, 16)] for start in filter(None, starts)]
    written = slices.llvm("llvm-cxxfilt", "--strip-underscore", text="\n".join(mangled)).replace("std::__1::", "std::")
    text = "std::basic_string<char16_t, std::char_traits<char16_t>, std::allocator<char16_t>>"
    written = written.replace(text, "std::u16string")
    return re.sub(r"\[abi:\w+\]", "", written).splitlines()


class CoverageTest(unittest.TestCase):
    def test_floor(self):
        names = functions()
        entered = (slices.FOLDER / "coverage/functions").read_bytes()
        self.assertEqual(len(names), len(entered))
        missing = [name for name, was_entered in zip(names, entered) if not was_entered]
        print(f"{len(names) - len(missing)} of the {len(names)} functions of the shipped slice were entered. "
              "To enter the others takes:")
        for reason, excused in NEVER_ENTERED.items():
            print(f"  {reason}:", *sorted(excused), sep="\n    ")
        self.assertEqual(set(missing), set().union(*NEVER_ENTERED.values()))


if __name__ == "__main__":
    unittest.main()
