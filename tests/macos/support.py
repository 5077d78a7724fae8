"""Shared by the tests of the packaged Mac app."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest
from collections.abc import Callable
from typing import TypeVar

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGES = pathlib.Path(os.environ["PACKAGES"])
PRODUCT = "Quorlen 3 Removal Tool"
BUILDS = [PACKAGES / folder / "build" / "macos" for folder in ("one", "one more")]
APP = BUILDS[0] / f"{PRODUCT}.app"
EXECUTABLE = APP / "Contents" / "MacOS" / PRODUCT
LLVM = pathlib.Path(f"/usr/lib/llvm-{(ROOT / 'script' / 'llvm-version').read_text().strip()}")

Sample = TypeVar("Sample")


def llvm(tool: str, *arguments: str | pathlib.Path) -> str:
    """Returns the output of one of LLVM's tools. If the tool fails, the test fails."""
    return subprocess.run([LLVM / "bin" / tool, *arguments], stdout=subprocess.PIPE, check=True).stdout.decode()


def replaced(data: bytes, offset: int, new: bytes) -> bytes:
    """Returns data with the bytes at an offset replaced."""
    return data[:offset] + new + data[offset + len(new):]


def renamed(data: bytes, old: bytes, new: bytes) -> bytes:
    """Returns data with each whole occurrence of a name replaced by a name of the same length."""
    assert len(old) == len(new) and old + b"\0" in data, old
    return data.replace(b"\0" + old + b"\0", b"\0" + new + b"\0").replace(old + b"\0", new + b"\0")


class OnDisk:
    """A universal executable in a temporary file, for LLVM's tools. The file exists until the block ends."""

    def __init__(self, data: bytes) -> None:
        self.file = tempfile.NamedTemporaryFile()
        self.file.write(data)
        self.file.flush()

    def __enter__(self) -> str:
        return self.file.name

    def __exit__(self, *_: object) -> None:
        self.file.close()


def bindings(data: bytes, architecture: str) -> dict[int, tuple[str, str]]:
    """Returns the bindings that dyld makes: address -> (symbol, library)."""
    with OnDisk(data) as path:
        lines = llvm("llvm-objdump", "--macho", f"--arch={architecture}", "--bind", "--lazy-bind", path).splitlines()
    found = {}
    for line in lines:
        # segment section address type addend dylib symbol; lazy bindings have no type and no addend.
        words = re.fullmatch(r"__\S+\s+__\S+\s+0x(\S+)\s+(?:pointer\s+0\s+)?(\S+)\s+(\S+)(?: \(weak import\))?", line)
        if words:
            found[int(words[1], 16)] = (words[3], words[2])
    return found


class FactTest(unittest.TestCase):
    """Each fact is a function that checks a sample and raises AssertionError if the fact does not hold. The fact must
    hold for the packaged app and must not hold for each broken sample, so that every check is seen to fail."""

    maxDiff = None

    def holds(self, fact: Callable[[Sample], None], sample: Sample, *broken: Sample) -> None:
        """Checks that a fact holds for the sample and for no broken sample."""
        fact(sample)
        for number, sample in enumerate(broken):
            with self.assertRaises(AssertionError, msg=f"broken sample {number} of {self.id()} passed"):
                fact(sample)
