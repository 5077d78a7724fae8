"""Shared by the tests of the packaged Mac app."""

import json
import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest
from collections.abc import Callable
from typing import TypeVar

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGES = pathlib.Path(os.environ["PACKAGES"])
PRODUCT = "Quorlen 3 Removal Tool"
COPIES = [PACKAGES / folder for folder in ("one", "one more")]  # of the sources, each with its package
BUILDS = [copy / "build" / "macos" for copy in COPIES]
APP = BUILDS[0] / f"{PRODUCT}.app"
EXECUTABLE = APP / "Contents" / "MacOS" / PRODUCT
HEADERS = COPIES[0] / "platform" / "macos" / "headers"
LLVM = pathlib.Path(f"/usr/lib/llvm-{(ROOT / 'script' / 'llvm-version').read_text().strip()}")
BOOL = {"x86_64": "c", "arm64": "B"}  # the encoding of BOOL in each architecture, in the executable's order

Sample = TypeVar("Sample")


def run(*command: str | pathlib.Path, **options: object) -> tuple[int, str]:
    """Returns a command's exit status and output."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
    return done.returncode, done.stdout


def llvm(tool: str, data: bytes, *options: str) -> str:
    """Returns what one of LLVM's tools says about an executable. The tool must accept it."""
    with tempfile.NamedTemporaryFile() as file:
        file.write(data)
        file.flush()
        status, said = run(LLVM / "bin" / tool, *options, file.name)
    assert status == 0, said
    return said


def objdump(data: bytes, architecture: str, *options: str) -> str:
    """Returns what llvm-objdump says about one architecture of an executable."""
    return llvm("llvm-objdump", data, "--macho", f"--arch={architecture}", *options)


def compiler_options(architecture: str, interface: pathlib.Path = HEADERS) -> list[str]:
    """Returns the build's compiler options, for one architecture and with this interface."""
    commands = json.loads((BUILDS[0] / "compile_commands.json").read_text())
    command, = (command["command"] for command in commands if command["file"].endswith("InterfaceFacts.mm"))
    words = shlex.split(command.replace("-arch x86_64 -arch arm64", f"-arch {architecture}"))
    words = words[1:words.index("-o")]  # without the compiler, the output and the source
    return [str(interface) if word == str(HEADERS) else word for word in words]


def clang(architecture: str, *arguments: str | pathlib.Path, interface: pathlib.Path = HEADERS,
          text: str = "") -> tuple[int, str]:
    """Gives the compiler a text to read. Returns its exit status and output."""
    return run(LLVM / "bin" / "clang++", *compiler_options(architecture, interface), *arguments, input=text)


def files(folder: pathlib.Path) -> dict[str, bytes]:
    """Returns the files of a folder: path below it -> bytes."""
    return {path.relative_to(folder).as_posix(): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def accessors(getter: str, types: str) -> dict[str, str]:
    """Returns the methods of a property: selector -> type encoding."""
    name = re.sub("^is(?=[A-Z])", "", getter)
    size = 20 if types == "BOOL" else 24
    return {getter: f"{types}16@0:8", f"set{name[0].upper()}{name[1:]}:": f"v{size}@0:8{types}16"}


def replaced(data: bytes, offset: int, new: bytes) -> bytes:
    """Returns data with the bytes at an offset replaced."""
    return data[:offset] + new + data[offset + len(new):]


def patched(data: bytes, pattern: bytes, new: bytes) -> bytes:
    """Returns data with each match of a regular expression replaced by as many bytes."""
    result, count = re.subn(pattern, lambda _: new, data, flags=re.DOTALL)
    assert count and len(result) == len(data), pattern
    return result


def renamed(data: bytes, old: bytes, new: bytes) -> bytes:
    """Returns data with each occurrence of a name, or of the end of a longer name, replaced by a name as long."""
    return patched(data, re.escape(old) + rb"(?=\0)", new)


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
