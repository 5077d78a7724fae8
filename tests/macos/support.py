"""What the tests of the packaged Mac app share."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGES = pathlib.Path(os.environ["PACKAGES"])
PRODUCT = "Quorlen 3 Removal Tool"
BUILDS = [PACKAGES / folder / "build" / "macos" for folder in ("one", "one more")]
APP = BUILDS[0] / f"{PRODUCT}.app"
EXECUTABLE = APP / "Contents" / "MacOS" / PRODUCT
LLVM = pathlib.Path(f"/usr/lib/llvm-{(ROOT / 'script' / 'llvm-version').read_text().strip()}")


def llvm(tool, *arguments):
    """Returns what one of LLVM's tools says; its failure is the test's."""
    return subprocess.run([LLVM / "bin" / tool, *arguments], stdout=subprocess.PIPE, check=True).stdout.decode()


def replaced(data, offset, new):
    """Returns data with the bytes at this place replaced."""
    return data[:offset] + new + data[offset + len(new):]


def renamed(data, old, new):
    """Returns data with a name of the same length in the place of another, wherever that stands whole."""
    assert len(old) == len(new) and old + b"\0" in data, old
    return data.replace(b"\0" + old + b"\0", b"\0" + new + b"\0").replace(old + b"\0", new + b"\0")


class OnDisk:
    """A universal executable's bytes in a file, for LLVM's tools, as long as the block lasts."""

    def __init__(self, data):
        self.file = tempfile.NamedTemporaryFile()
        self.file.write(data)
        self.file.flush()

    def __enter__(self):
        return self.file.name

    def __exit__(self, *_):
        self.file.close()


def bindings(data, architecture):
    """Returns what dyld puts where: address -> (symbol, library)."""
    with OnDisk(data) as path:
        lines = llvm("llvm-objdump", "--macho", f"--arch={architecture}", "--bind", "--lazy-bind", path).splitlines()
    found = {}
    for line in lines:
        # segment section address type addend dylib symbol; the lazy ones have no type and no addend.
        words = re.fullmatch(r"__\S+\s+__\S+\s+0x(\S+)\s+(?:pointer\s+0\s+)?(\S+)\s+(\S+)(?: \(weak import\))?", line)
        if words:
            found[int(words[1], 16)] = (words[3], words[2])
    return found


class FactTest(unittest.TestCase):
    """Each fact is a function that checks a sample and raises AssertionError when it doesn't hold. It has to hold for
    the packaged app and to be missed in each broken sample: a check that can't fail fails."""

    maxDiff = None

    def holds(self, fact, sample, *broken):
        fact(sample)
        for number, sample in enumerate(broken):
            with self.assertRaises(AssertionError, msg=f"broken sample {number} of {self.id()} passed"):
                fact(sample)
