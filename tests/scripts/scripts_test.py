"""Tests that every script has a usage and refuses an unknown word before it builds, installs or changes anything."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
LLVM = (ROOT / "script/llvm-version").read_text().strip()
# A script that starts one of these has begun to work.
WORKING_TOOLS = ("apt-get", "dpkg-query", "sudo", "git", "cmake", "ninja", "ctest", "clang-format",
                 f"clang-format-{LLVM}", f"clang-tidy-{LLVM}", "rsvg-convert", "optipng")


def scripts() -> list[str]:
    """Returns the commands of the checkout, as paths below its top folder."""
    found = [f"script/{path.name}" for path in sorted((ROOT / "script").iterdir()) if os.access(path, os.X_OK)]
    return [*found, ".ci/run"]


class ScriptsTest(unittest.TestCase):
    """Runs each script in a copy of the sources, with tools that only record that they were called."""

    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.copy = pathlib.Path(folder.name, "copy")
        shutil.copytree(ROOT, cls.copy, symlinks=True,
                        ignore=lambda folder, names: {"build", ".git"} if folder == str(ROOT) else set())
        cls.tools = pathlib.Path(folder.name, "tools")
        cls.tools.mkdir()
        cls.calls = pathlib.Path(folder.name, "calls")
        for tool in WORKING_TOOLS:
            recorder = cls.tools / tool
            recorder.write_text(f'#!/bin/sh\necho "{tool} $*" >>"{cls.calls}"\nexit 1\n')
            recorder.chmod(0o755)

    def run_script(self, script: str, *words: str) -> subprocess.CompletedProcess[str]:
        """Runs a script of the copy, from another folder, and checks that it started and changed nothing."""
        before = self.contents()
        environment = {**os.environ, "PATH": f"{self.tools}:{os.environ['PATH']}", "PYTHONDONTWRITEBYTECODE": "1"}
        done = subprocess.run([self.copy / script, *words], cwd="/", env=environment, text=True, timeout=30,
                              capture_output=True)
        started = self.calls.read_text() if self.calls.exists() else ""
        self.calls.unlink(missing_ok=True)
        self.assertEqual(started, "", f"{script} {' '.join(words)} started something")
        self.assertEqual(self.contents(), before, f"{script} {' '.join(words)} changed the checkout")
        return done

    def contents(self) -> list[tuple[str, int]]:
        """Returns every path of the copy with its modification time; a new or removed file changes its folder's."""
        return [(folder, os.lstat(os.path.join(folder, name)).st_mtime_ns)
                for folder, folders, files in os.walk(self.copy) for name in (*folders, *files)]

    def test_help_prints_the_usage(self) -> None:
        for script in scripts():
            with self.subTest(script):
                done = self.run_script(script, "--help")
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                self.assertRegex(done.stdout, rf"(?m)^usage: {re.escape(script)}\b")
                self.assertGreater(len(done.stdout.strip().splitlines()), 2, "the usage says nothing but its line")

    def test_an_unknown_word_a_word_too_many_and_a_bad_value_are_refused(self) -> None:
        commands = [(script, "--chek") for script in scripts()]
        # script/artwork takes any word as its output folder.
        commands += [(script, *["folder"] * (script == "script/artwork"), "no-such-word") for script in scripts()]
        for script, *words in (
                *commands, ("script/bootstrap", "run", "no-such-group"), ("script/build", "linux", "more"),
                ("script/build", "--only"), ("script/build", "--only", "tests"), ("script/test", "-R"),
                ("script/test", "-R", "x", "no-such-word"), ("script/sanitize", "-L", "x", "--nonsense"),
                ("script/format", "--check", "more"), ("script/lint", "no/such/file.mm"), ("script/fuzz", "ten"),
                ("script/fuzz", "10", "no-such-target"), ("script/faults", "1", "none"),
                ("script/faults", "1", "1", "1"), ("script/wander", "10", "--slice", "none"),
                ("script/wander", "--seed"), ("script/wander", "10", "10")):
            with self.subTest(script, words=words):
                done = self.run_script(script, *words)
                self.assertEqual(done.returncode, 2)
                self.assertIn("usage", done.stdout + done.stderr)
                if (script, *words) in commands:
                    self.assertIn(words[-1], done.stderr)

    def test_what_needs_debian_says_so_on_a_mac_and_does_nothing(self) -> None:
        uname = self.tools / "uname"
        uname.write_text("#!/bin/sh\necho Darwin\n")
        uname.chmod(0o755)
        self.addCleanup(uname.unlink)
        needy = ("run", "sanitize", "lint", "fuzz", "faults", "wander")
        for command, status, reason in (
                (["script/test", "-R", "removal"], 2, "a Mac cannot run the tests"), ([".ci/run"], 1, "needs Debian"),
                *(([f"script/{name}"], 1, "needs Debian") for name in needy)):
            with self.subTest(command):
                done = self.run_script(*command)
                self.assertEqual((done.returncode, done.stdout), (status, ""))
                self.assertRegex(done.stderr, rf"^(\.ci/)?{pathlib.Path(command[0]).name}: .*{reason}")

    def test_scripts_for_a_mac_use_nothing_that_its_bash_lacks(self) -> None:
        scripts = [f"script/{name}" for name in ("common.sh", "bootstrap", "build", "test", "format", "package")]
        for script in (*scripts, "tests/macos/check-app"):
            with self.subTest(script):
                text = re.sub(r"(?m)#.*", "", (ROOT / script).read_text())
                self.assertNotRegex(
                    text, r"\b(mapfile|readarray|coproc|declare -A|local -n)\b|\$\{\w+(,,|\^\^|@)|&>>|\|&")


if __name__ == "__main__":
    unittest.main()
