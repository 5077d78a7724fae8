"""Tests the tools that make the package: repeated runs and refusals."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

from support import APP, BUILDS, EXECUTABLE, LLVM, PRODUCT, ROOT

ADHOC_SIGN = ROOT / "platform" / "macos" / "adhoc-sign"
COPY = BUILDS[0].parents[1]
MAKE_STUBS = ROOT / "platform" / "macos" / "make-stubs"


def run(*command: str | pathlib.Path, **options: object) -> tuple[int, str]:
    """Returns a command's exit status and output."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    return done.returncode, done.stdout.decode()


def contents(folder: pathlib.Path) -> dict[pathlib.Path, bytes]:
    """Returns the files of a folder: path below it -> bytes."""
    return {path.relative_to(folder): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


class SealTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.app = pathlib.Path(folder.name, APP.name)
        shutil.copytree(APP, self.app)
        self.executable = self.app / "Contents" / "MacOS" / PRODUCT

    def refuses(self, reason: str) -> None:
        before = contents(self.app)
        status, said = run(ADHOC_SIGN, self.app)
        self.assertEqual((status, contents(self.app)), (1, before))
        self.assertIn(reason, said)
        self.assertIn("nothing was changed", said)

    def test_signing_again_restores_the_signature_and_changes_no_other_byte(self) -> None:
        before = contents(self.app)
        shutil.rmtree(self.app / "Contents" / "_CodeSignature")
        self.assertEqual(run(ADHOC_SIGN, self.app), (0, ""))
        self.assertEqual(contents(self.app), before)

        (self.app / "Contents" / "Resources" / "more.txt").write_text("more")
        self.assertEqual(run(ADHOC_SIGN, self.app), (0, ""))
        self.assertNotEqual(self.executable.read_bytes(), before[self.executable.relative_to(self.app)])
        (self.app / "Contents" / "Resources" / "more.txt").unlink()
        self.assertEqual(run(ADHOC_SIGN, self.app), (0, ""))
        self.assertEqual(contents(self.app), before)

    def test_links_are_refused(self) -> None:
        (self.app / "Contents" / "Resources" / "link.png").symlink_to("icon_2024.png")
        self.refuses("is a link")

    def test_one_architecture_is_refused(self) -> None:
        thin = self.app.with_name("thin")
        subprocess.run([LLVM / "bin" / "llvm-lipo", EXECUTABLE, "-thin", "arm64", "-output", thin], check=True)
        shutil.copy(thin, self.executable)
        self.refuses("no universal file")

    def test_an_executable_without_a_signature_is_refused(self) -> None:
        parts = []
        for architecture in ("x86_64", "arm64"):
            parts.append(self.app.with_name(architecture))
            subprocess.run([LLVM / "bin" / "clang++", "-target", f"{architecture}-apple-macos11.0", "-fuse-ld=lld",
                            "-Wl,-no_adhoc_codesign", "-isysroot", BUILDS[0] / "sdk", "-x", "c++", "-",
                            "-o", parts[-1]], input=b"int main() { }", check=True)
        subprocess.run([LLVM / "bin" / "llvm-lipo", "-create", *parts, "-output", self.executable], check=True)
        self.refuses("left no signature to replace")


class CheckAppTest(unittest.TestCase):
    """Tests check-app, which checks the app on a Mac. Here it gets LLVM's tools under the Mac's names, or no tools."""

    def check(self, app: pathlib.Path, *tools: str) -> tuple[int, str]:
        with tempfile.TemporaryDirectory() as folder:
            for name in ("bash", "cat", "grep", "mktemp", "rm"):
                pathlib.Path(folder, name).symlink_to(shutil.which(name))
            for name in tools:
                pathlib.Path(folder, name).symlink_to(LLVM / "bin" / f"llvm-{name}")
            return run(ROOT / "tests/macos/check-app", app, env={"PATH": folder})

    def test_the_app_passes_and_missing_tools_are_named(self) -> None:
        status, said = self.check(APP, "lipo", "otool")
        self.assertEqual((status, said.splitlines()), (0, [
            "left out: the signature is whole; codesign is not here",
            "left out: Info.plist is a property list; plutil is not here",
            "left out: the icon file can be read; iconutil is not here",
            "passed:   the executable is for Intel and Apple silicon",
            "passed:   the executable uses only the system's libraries",
        ]))

    def test_a_wrong_app_fails(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            app = pathlib.Path(folder, APP.name)
            shutil.copytree(APP, app)
            executable = app / "Contents" / "MacOS" / PRODUCT
            executable.write_bytes(executable.read_bytes().replace(b"/usr/lib/libc++.1", b"/opt/lib/libc++.1"))
            status, said = self.check(app, "lipo", "otool")
            self.assertEqual(status, 1)
            self.assertIn("FAILED:   the executable uses only the system's libraries", said)
            self.assertIn("\t/opt/lib/libc++.1.dylib", said)
            executable.write_bytes(b"")
            status, said = self.check(app, "lipo")
            self.assertEqual(status, 1)
            self.assertIn("FAILED:   the executable is for Intel and Apple silicon", said)

    def test_anything_but_an_app_is_refused(self) -> None:
        for arguments in ([], ["/nowhere"]):
            status, said = run(ROOT / "tests/macos/check-app", *arguments)
            self.assertEqual((status, said),
                             (2, "usage: tests/macos/check-app APP, where APP is an application bundle\n"))


class StubsTest(unittest.TestCase):
    def test_a_wrong_line_is_named(self) -> None:
        listed = (ROOT / "platform" / "macos" / "stubs" / "symbols.txt").read_text()
        for wrong in ("    klass NSAlert", "class NSAlert", "    class", "    class NSAlert NSButton"):
            with self.subTest(wrong), tempfile.TemporaryDirectory() as folder:
                symbols = pathlib.Path(folder, "symbols.txt")
                symbols.write_text(f"{listed}{wrong}\n")
                status, said = run(MAKE_STUBS, symbols, "12.3", folder)
                self.assertEqual(status, 1)
                self.assertIn(f"{symbols}:{len(listed.splitlines()) + 1}: ", said)
                self.assertEqual(list(pathlib.Path(folder).iterdir()), [symbols])


class PackageTest(unittest.TestCase):
    def test_an_identity_needs_a_mac(self) -> None:
        before = [path.stat().st_mtime_ns for path in BUILDS[0].iterdir()]
        status, said = run("script/package", "--identity", "Developer ID Application: Vendrel", cwd=COPY)
        self.assertEqual(status, 2)
        self.assertEqual(said, "package: signing with an identity needs a Mac's codesign; nothing was done. "
                               "--help shows the usage.\n")
        self.assertEqual([path.stat().st_mtime_ns for path in BUILDS[0].iterdir()], before)

    def test_unknown_arguments_are_refused(self) -> None:
        for arguments in (["--sign"], ["--identity"], ["1.0"]):
            status, said = run("script/package", *arguments, cwd=COPY)
            words = " ".join(arguments)
            self.assertEqual((status, said), (
                2, f"package: unknown words: {words}; nothing was done. --help shows the usage.\n"))


if __name__ == "__main__":
    unittest.main()
