"""Shared by the tests of the shipped slices: the selected slice, how to start it here, and how it was built."""

import json
import os
import pathlib
import shlex
import shutil
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
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
LLVM = pathlib.Path(f"/usr/lib/llvm-{(ROOT / 'script/llvm-version').read_text().strip()}/bin")

# Starts a program for the Arm machine here. The program gets its own name as the first argument.
EMULATED = f"""#!/bin/sh
exec /usr/bin/qemu-aarch64-static -0 "$0" -L {shlex.quote(str(ROOT / 'build/arm64-sysroot'))} "${{0%/*}}/loader" "$@"
"""


def wrapper(name: str, executable: pathlib.Path, coverage: pathlib.Path | None = None) -> pathlib.Path:
    """Makes a GNUstep application that runs an executable's slice with the shipped resources. Returns the program to
    start. `coverage`: the file that records the entered functions."""
    application = FOLDER / name / f"{PRODUCT}.app"
    shutil.rmtree(application.parent, ignore_errors=True)
    resources = application / "Resources"
    resources.mkdir(parents=True)
    for file in (APP / "Contents/Resources").iterdir():
        (resources / file.name).symlink_to(file)
    subprocess.run([ROOT / "platform/gnustep/make-info-plist", APP / "Contents/Info.plist", resources / "Info-gnustep.plist"],
                   check=True)  # As in the native build: GNUstep would use the Mac's icon file for title bars.
    (application / "Slice").symlink_to(executable)
    if coverage:
        (application / "Coverage").symlink_to(coverage)
    program = application / PRODUCT  # No link: GNUstep finds its resources by the program's real path.
    if MACHINE == "arm64":
        program.write_text(EMULATED)
        program.chmod(0o755)
        program = application / "loader"
    shutil.copy(BUILD / "tests/shipped-slice/slice-loader", program)
    return application / PRODUCT


def take_slice(executable: pathlib.Path, output: pathlib.Path, machine: str = MACHINE) -> None:
    """Writes a machine's slice of a universal executable to a file."""
    llvm("llvm-lipo", executable, "-thin", machine, "-output", output)


def compile_slice(source: str | pathlib.Path, output: pathlib.Path, *options: str, like: str | None = None,
                  replacing: tuple[tuple[pathlib.Path, pathlib.Path], ...] = ()) -> None:
    """Compiles a source for the slice's machine alone, as the package's build compiles it, or (`like`) another one, and
    with these options more. `replacing`: pairs of folders, of which the second takes the first one's place in the
    command."""
    commands = json.loads((CROSS_BUILD / "compile_commands.json").read_text())
    model = str(PACKAGE / (like or source))
    command, = (shlex.split(c["command"]) for c in commands if c["file"] == model)
    for old, new in replacing:
        command = [word.replace(str(old), str(new)) for word in command]
    command[command.index("-o") + 1] = str(output)
    command[-1] = str(PACKAGE / source)
    run_for_machine(command, options)


def link_command() -> list[str]:
    """Returns the words of the command that linked the executable for the package."""
    return shlex.split((CROSS_BUILD / "app/CMakeFiles/tool.dir/link.txt").read_text())


def objects() -> list[pathlib.Path]:
    """Returns the object files that the executable was linked from."""
    return [(CROSS_BUILD / "app" / word).resolve() for word in link_command() if word.endswith(".o")]


def link_slice(output: pathlib.Path, *options: str, objects: list[pathlib.Path], stripped: bool = True) -> None:
    """Links object files as the package's build does, with these options added, for the slice's machine only."""
    command = [word for word in link_command() if not word.endswith(".o")]
    if not stripped:
        for option in ("-x", "-S"):
            place = command.index(option)
            del command[place - 1:place + 1]  # With the -Xlinker before it.
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
