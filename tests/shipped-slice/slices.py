"""Shared by the tests of the shipped slices: the selected slice, how to start it here, and how it was built."""

import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / folder) for folder in ("tests/driver", "tests/journeys")]  # For the tests' imports.
PRODUCT = "Quorlen 3 Removal Tool"
MACHINE = os.environ["SLICE"]  # Apple's name: "x86_64" or "arm64".
OTHER_MACHINE = {"arm64": "x86_64", "x86_64": "arm64"}[MACHINE]
FOLDER = pathlib.Path(os.environ["SLICES"]) / MACHINE
BUILD = pathlib.Path(os.environ["QUORLEN_BUILD"])  # the build of the loader, the questions and the inspector
NATIVE_BUILD = pathlib.Path(os.environ["NATIVE_BUILD"])
PACKAGE = pathlib.Path(os.environ["PACKAGES"]) / "one"  # The tree that the app was packaged from.
CROSS_BUILD = PACKAGE / "build/macos"
APP = CROSS_BUILD / f"{PRODUCT}.app"
EXECUTABLE = APP / "Contents/MacOS" / PRODUCT
LINK = shlex.split((CROSS_BUILD / "app/CMakeFiles/tool.dir/link.txt").read_text())  # The command that made it.
LLVM = pathlib.Path(f"/usr/lib/llvm-{(ROOT / 'script/llvm-version').read_text().strip()}/bin")

# Starts a program for the Arm machine here. The program gets its own name as the first argument.
EMULATED = f"""#!/bin/sh
exec /usr/bin/qemu-aarch64-static -0 "$0" -L {shlex.quote(str(ROOT / 'build/arm64-sysroot'))} "${{0%/*}}/loader" "$@"
"""


def describe(executable: pathlib.Path, folder: pathlib.Path) -> None:
    """Writes what LLVM's tools read in an executable to the files that the loader reads in a folder: the link addresses
    of its functions; each function's frame; each pointer that the start changes, with an addend and an import's name,
    or with the word "pointer" if it points into the executable."""
    starts = llvm("llvm-objdump", "--macho", "--function-starts", executable)
    (folder / "Functions").write_text("\n".join(starts.splitlines()[1:]))

    tables = llvm("llvm-objdump", "--macho", "--rebase", "--bind", "--weak-bind", "--lazy-bind", executable)
    fixups = re.findall(r"^__\w+ +__\w+ +(0x\w+) +(?:pointer +(-?\d+) )?.*?(\S+)$", tables, re.MULTILINE)
    (folder / "Fixups").write_text("".join(f"{place} {addend or 0} {name}\n" for place, addend, name in fixups))

    unwinding = llvm("llvm-objdump", "--macho", "--unwind-info", executable)
    handlers = dict(re.findall(r"function offset=(\w+), LSDA offset=(\w+)", unwinding))
    personalities = ["0", *re.findall(r"personality\[\d+\]: (\w+)", unwinding)]
    encodings = re.findall(r"function offset=(\w+), encoding\[\d+\]=(\w+)", unwinding)
    end = re.search(r"function offset=(\w+), 2nd level page offset=0x00000000", unwinding)[1]
    ends = [function for function, _ in encodings[1:]] + [end]
    (folder / "Frames").write_text("".join(
        f"{function} {end} {encoding} {personalities[int(encoding, 16) >> 28 & 3]} {handlers.get(function, 0)}\n"
        for (function, encoding), end in zip(encodings, ends)))


def wrapper(name: str, executable: pathlib.Path) -> pathlib.Path:
    """Makes a GNUstep application that runs an executable's slice with the shipped resources. Returns the program to
    start."""
    application = FOLDER / name / f"{PRODUCT}.app"
    shutil.rmtree(application.parent, ignore_errors=True)
    resources = application / "Resources"
    resources.mkdir(parents=True)
    for file in (APP / "Contents/Resources").iterdir():
        (resources / file.name).symlink_to(file)
    # As in the native build: GNUstep would use the Mac's icon file for title bars.
    subprocess.run([ROOT / "platform/gnustep/make-info-plist", APP / "Contents/Info.plist",
                    resources / "Info-gnustep.plist"], check=True)
    (application / "Slice").symlink_to(executable)
    describe(executable, application)
    program = application / PRODUCT  # No link: GNUstep finds its resources by the program's real path.
    if MACHINE == "arm64":
        program.write_text(EMULATED)
        program.chmod(0o755)
        program = application / "loader"
    shutil.copy(BUILD / "tests/shipped-slice/slice-loader", program)
    return application / PRODUCT


def take_slice(universal: str | pathlib.Path, output: pathlib.Path) -> None:
    """Writes the machine's slice of a universal executable to a file."""
    llvm("llvm-lipo", universal, "-thin", MACHINE, "-output", output)


def compile_slice(source: str | pathlib.Path, output: pathlib.Path, *options: str, like: str | None = None) -> None:
    """Compiles a source for the slice's machine alone, as the package's build compiles it, or (`like`) another one, and
    with these options more."""
    commands = json.loads((CROSS_BUILD / "compile_commands.json").read_text())
    model = str(PACKAGE / (like or source))
    command, = (shlex.split(c["command"]) for c in commands if c["file"] == model)
    command[command.index("-o") + 1] = str(output)
    command[-1] = str(PACKAGE / source)
    run_for_machine(command, options)


def objects() -> list[pathlib.Path]:
    """Returns the object files that the executable was linked from."""
    return [(CROSS_BUILD / "app" / word).resolve() for word in LINK if word.endswith(".o")]


def link_slice(output: pathlib.Path, *options: str, objects: list[pathlib.Path], stripped: bool = True) -> None:
    """Links object files as the package's build does, with these options added, for the slice's machine only."""
    command = [word for word in LINK if not word.endswith(".o")]
    if not stripped:
        command = shlex.split(shlex.join(command).replace("-Xlinker -x -Xlinker -S", ""))
    command[command.index("-o") + 1] = str(output)
    run_for_machine(command, [*map(str, objects), *options])


def run_for_machine(command: list[str], options: tuple[str, ...] | list[str]) -> None:
    """Runs a command of the package's build with these options more, for the slice's machine alone."""
    other = command.index(OTHER_MACHINE)
    subprocess.run([*command[:other - 1], *command[other + 1:], *options], cwd=CROSS_BUILD / "app", check=True)


def llvm(tool: str, *arguments: str | pathlib.Path, text: str | None = None) -> str:
    """Gives one of LLVM's tools a text to read, and returns what it writes."""
    return subprocess.run([LLVM / tool, *arguments], input=text, stdout=subprocess.PIPE, check=True, text=True).stdout


def said_by(program: pathlib.Path, *arguments: str) -> tuple[int, str]:
    """Runs a program and returns its exit status (negative: the signal that ended it) and what it wrote."""
    done = subprocess.run([program, *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
    return done.returncode, done.stdout.decode(errors="replace")


def judge_refused(program: pathlib.Path, why: str) -> None:
    """Fails unless the loader refuses a program's slice for this reason."""
    said = said_by(program)
    assert said == (2, f"shipped-slice: {why}. Nothing of the slice has run.\n"), said
