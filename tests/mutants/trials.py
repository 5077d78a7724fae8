"""Builds mutants in their own folders and runs the tests on them, on practice Macs that stay up between tests."""

import contextlib
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

import rules
from rules import ROOT, Mutant

sys.path.insert(0, str(ROOT / "practice-mac"))
from practice_mac.machine import Mac, PracticeMacError  # noqa: E402

BUILD = ROOT / "build/linux"
SCRATCH = ROOT / "build/mutants"
COMPILER = "the compiler"
JOURNEY = "journey.window.first_look"
LIMIT = 120  # seconds, for one run of a program; far more than any needs
# Standard headers that the product's files include. With these and the platform's read beforehand, compiling is quick.
STANDARD_HEADERS = ("array", "charconv", "limits", "memory", "string", "string_view", "utility", "vector")


class CannotJudge(Exception):
    """The unchanged product does not compile either, or fails a test."""


def output_of(*command: str | pathlib.Path) -> str:
    """Returns a command's output. A failure is an error."""
    return subprocess.run(command, cwd=BUILD, stdout=subprocess.PIPE, check=True).stdout.decode()


class Compiler:
    """Compiles and links as the normal build does, but faster and into other folders."""

    def __init__(self) -> None:
        self.commands: dict[str, list[str]] = {}  # object file -> the command that makes it
        self.sources: dict[str, str] = {}  # object file -> its source in the repository
        for command in json.loads((BUILD / "compile_commands.json").read_text()):
            words = shlex.split(command["command"])
            output, source = words[words.index("-o") + 1], pathlib.Path(command["file"])
            folder = source.relative_to(ROOT).parts[0] if source.is_relative_to(ROOT) else ""
            if folder in rules.PRODUCT_FOLDERS and not output.startswith("tests/"):  # not the fuzzers'
                self.commands[output] = words[next(n for n, word in enumerate(words) if "clang++" in word):]
                self.sources[output] = str(source.relative_to(ROOT))
        self.users: dict[str, set[str]] = {}  # file in the repository -> the product's object files that include it
        output = ""
        for line in output_of("ninja", "-t", "deps").splitlines():
            if not line.startswith(" "):
                output = line.split(":")[0]
            elif output in self.commands and (path := (BUILD / line.strip()).resolve()).is_relative_to(ROOT):
                self.users.setdefault(str(path.relative_to(ROOT)), set()).add(output)
        self.links: dict[pathlib.Path, list[str]] = {}
        self.preludes: dict[str, pathlib.Path] = {}

    def options(self, output: str) -> list[str]:
        """Returns the compiler's options for an object file, without source and output."""
        words = self.commands[output]
        options = [*words[1:words.index("-o")], "-O0", "-g0"]
        language = words[words.index("-x") + 1] if "-x" in words else "c++"
        if language not in self.preludes:
            self.preludes[language] = self.make_prelude(language, [words[0], *options])
        return [*options, "-include-pch", str(self.preludes[language])]

    def options_for(self, file: str) -> list[str]:
        """Returns the compiler's options for a file of the product, or none if it is not compiled."""
        if file == rules.PROPERTY_LIST:
            return []
        output = min(self.users[file])
        return self.options(output) + (["-Wno-pragma-once-outside-header"] if file.endswith(".hpp") else [])

    @staticmethod
    def make_prelude(language: str, command: list[str]) -> pathlib.Path:
        """Precompiles the headers that all files include."""
        header = SCRATCH / f"prelude-{language.replace('+', 'p')}.hpp"
        SCRATCH.mkdir(parents=True, exist_ok=True)
        lines = [f"#include <{name}>\n" for name in STANDARD_HEADERS]
        header.write_text("".join(lines + ["#import <Cocoa/Cocoa.h>\n"] * (language != "c++")))
        command = [word for word in command if word not in ("-x", language)]
        compiled = header.with_suffix(".pch")
        subprocess.run([*command, "-x", f"{language}-header", "-fpch-instantiate-templates", header, "-o", compiled],
                       cwd=BUILD, check=True)
        return compiled

    def compile(self, file: str, data: bytes, folder: pathlib.Path) -> dict[str, str] | None:
        """Compiles all that a changed file is part of. Returns old object file -> new one, or None after an error."""
        changed = folder / file
        changed.parent.mkdir(parents=True, exist_ok=True)
        changed.write_bytes(data)
        objects = {}
        for output in sorted(self.users[file]):
            source = changed if self.sources[output] == file else ROOT / self.sources[output]
            objects[output] = str(folder / f"{len(objects)}.o")
            command = [self.commands[output][0], f"-I{folder}", *self.options(output), "-o", objects[output], "-c",
                       source]
            if subprocess.run(command, cwd=BUILD, stderr=subprocess.DEVNULL, check=False).returncode != 0:
                return None
        return objects

    def check(self, file: str) -> None:
        """Checks that the unchanged file compiles, so that an error shows a fault of the mutant."""
        if file != rules.PROPERTY_LIST and not self.compile(file, (ROOT / file).read_bytes(), SCRATCH / "unchanged"):
            raise CannotJudge(f"{file} doesn't compile unchanged")

    def link(self, program: pathlib.Path, objects: dict[str, str], folder: pathlib.Path) -> pathlib.Path | None:
        """Links a program with other object files. Returns None if it contains none of them."""
        if program not in self.links:
            target = str(program.relative_to(BUILD))
            commands = [shlex.split(line) for line in output_of("ninja", "-t", "commands", target).splitlines()]
            words = next(words for words in reversed(commands) if target in words)
            self.links[program] = words[next(n for n, word in enumerate(words) if "clang++" in word):-2]  # "&& :"
        words = self.links[program]
        if not objects.keys() & set(words):
            return None
        linked = folder / program.name
        if program.parent.suffix == ".app":  # The program finds its bundle by its own path.
            linked = folder / program.parent.name / program.name
            linked.parent.mkdir(exist_ok=True)
            if not (linked.parent / "Resources").exists():
                (linked.parent / "Resources").symlink_to(program.parent / "Resources")
        words = [objects.get(word, word) for word in words] + ["-fuse-ld=lld", "-Wl,--strip-debug"]
        words[words.index("-o") + 1] = str(linked)
        subprocess.run(words, cwd=BUILD, check=True)
        return linked


class Program:
    """A GoogleTest program of one of the product's folders."""

    def __init__(self, name: str, path: pathlib.Path, plain: bool) -> None:
        self.name = name
        self.path = path
        self.plain = plain  # CTest starts it without a practice Mac, because it has no window
        self.folder = path.relative_to(BUILD / "tests").parts[0]
        self.times: dict[str, int] = {}  # test -> milliseconds, once known
        self.noticed: dict[str, list[str]] = {}  # function -> the tests that noticed its mutants

    def filters(self, function: str) -> list[str]:
        """Returns the tests for a mutant in order: those that noticed its neighbours, the quick ones, the rest."""
        first = self.noticed.get(function, [])[-3:]
        by_time = sorted(self.times, key=lambda name: self.times[name])
        quick = [name for name in by_time[:len(by_time) // 2] if name not in first]
        return [":".join(first), ":".join(quick), "-" + ":".join(first + quick)]

    def learn(self, output: str) -> str | None:
        """Stores the times of the tests in a program's output. Returns the test that failed or did not end."""
        for name, time in re.findall(r"\[       OK \] (\S+) \((\d+) ms\)", output):
            self.times[name] = int(time)
        ended = re.findall(r"\[  FAILED  \] (\w+\.\w+)", output)
        begun = re.findall(r"\[ RUN      \] (\S+)", output)
        return ended[0] if ended else begun[-1] if begun else None


def programs() -> list[Program]:
    """Returns the test programs of the product's folders."""
    found = []
    for test in json.loads(output_of("ctest", "--show-only=json-v1"))["tests"]:
        words = test.get("command", [])
        path = pathlib.Path(words[-1]) if words else ROOT
        if path.is_relative_to(BUILD / "tests") and path.relative_to(BUILD / "tests").parts[0] in rules.PRODUCT_FOLDERS:
            found.append(Program(test["name"], path, plain=len(words) == 1))
    return found


class Worker:
    """Tries mutants one after another."""

    def __init__(self, number: int, compiler: Compiler, all_programs: list[Program]) -> None:
        self.folder = SCRATCH / str(number)
        self.compiler = compiler
        self.programs = all_programs
        self.mac: Mac | None = None  # as the room tests need it; it stays up between tests

    def stop(self) -> None:
        """Stops its practice Mac."""
        if self.mac:
            self.mac.stop()
            self.mac = None

    def run(self, program: pathlib.Path, words: str, *options: str) -> tuple[int | None, str]:
        """Runs the tests of a program that match a filter. Returns its status, None if it did not end, and its
        output."""
        self.mac = self.mac or Mac.start(locations="none", until=os.getpid())
        with tempfile.TemporaryFile() as output, open(os.devnull, "rb") as nothing:
            streams = nothing.fileno(), output.fileno(), output.fileno()
            status = None
            with contextlib.suppress(PracticeMacError):  # the Mac has ended
                running = self.mac.open_program([program, f"--gtest_filter={words}", *options], *streams)
                status = running.wait(LIMIT)
                if status is None:
                    running.kill()
            output.seek(0)
            return status, output.read().decode(errors="replace")

    def trial(self, mutants: list[Mutant]) -> str:
        """Builds mutants of one file together and runs the tests. Returns the first test that fails, or nothing."""
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        if mutants[0].file == rules.PROPERTY_LIST:
            return self.trial_of_property_list(mutants)
        objects = self.compiler.compile(mutants[0].file, rules.applied(mutants), self.folder)
        if objects is None:
            return COMPILER
        folder = mutants[0].file.partition("/")[0]
        for program in sorted(self.programs, key=lambda program: (program.folder != folder, not program.plain)):
            changed = self.compiler.link(program.path, objects, self.folder)
            if changed and (test := self.noticing_test(program, changed, f"{mutants[0].file} {mutants[0].function}")):
                return f"{program.name}: {test}"
        return self.trial_of_tool(objects)

    def noticing_test(self, program: Program, changed: pathlib.Path, function: str) -> str | None:
        """Returns the test of a program that notices a change."""
        for again in (False, True):
            test, hung = self.failing_test(program, changed, function)
            if test is None:
                return None
            # An earlier mutant may have damaged the Mac. If it did not, the unchanged program passes.
            healthy = not hung and self.run(program.path, test)[0] == 0
            if not healthy:
                self.stop()
            if healthy or (hung and self.run(program.path, test)[0] == 0):
                program.noticed.setdefault(function, []).append(test)
                return f"{test} (did not end)" if hung else test
            if again:
                raise CannotJudge(f"{program.name}: {test} fails for the unchanged product")

    def failing_test(self, program: Program, changed: pathlib.Path, function: str) -> tuple[str | None, bool]:
        """Returns the first test that fails with a changed program, and whether it did not end."""
        for words in program.filters(function):
            if words:
                status, output = self.run(changed, words, "--gtest_fail_fast")
                failed = program.learn(output)
                if status != 0:
                    return failed or "the program's start", status is None
        return None, False

    def trial_of_tool(self, objects: dict[str, str]) -> str:
        """Runs a journey with the tool itself, after all other tests."""
        tool, = BUILD.glob("*.app/*Tool")
        changed = self.compiler.link(tool, objects, self.folder)
        assert changed
        journey = ["ctest", "--test-dir", BUILD, "-R", f"^{re.escape(JOURNEY)}$", "--no-tests=error"]
        environment = os.environ | {"QUORLEN_TOOL": str(changed)}
        noticed = subprocess.run(journey, env=environment, stdout=subprocess.DEVNULL, check=False)
        return JOURNEY if noticed.returncode else ""

    def trial_of_property_list(self, mutants: list[Mutant]) -> str:
        """Runs the shipped bundle's test on a bundle with the changed property list."""
        cmake = (ROOT / "CMakeLists.txt").read_text()
        text = rules.applied(mutants).decode()
        text = text.replace("@PROJECT_VERSION@", re.search(r"VERSION ([\d.]+) LANGUAGES", cmake)[1])
        name = re.search(r"set\(PRODUCT_NAME \"(.*)\"\)", cmake)[1]
        contents = self.folder / "one/build/macos" / f"{name}.app/Contents"
        (contents / "Resources").mkdir(parents=True)
        (contents / "Info.plist").write_text(text.replace("@PRODUCT_NAME@", name))
        for icon in (BUILD / "pictures").glob("*.icns"):
            shutil.copy(icon, contents / "Resources")
        test = [sys.executable, "-B", ROOT / "tests/macos/bundle_test.py", "BundleTest.test_information"]
        environment = os.environ | {"PACKAGES": str(self.folder)}
        noticed = subprocess.run(test, env=environment, stderr=subprocess.DEVNULL, check=False)
        return "macos.bundle: test_information" if noticed.returncode else ""
