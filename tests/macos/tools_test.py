"""Tests the tools that make the package: repeated runs and refusals."""

import pathlib
import shutil
import tempfile
import unittest

from support import APP, BUILDS, COPIES, LLVM, PRODUCT, ROOT, files, patched, run

ADHOC_SIGN = ROOT / "platform" / "macos" / "adhoc-sign"
CHECK_APP = ROOT / "tests" / "macos" / "check-app"
MAKE_STUBS = ROOT / "platform" / "macos" / "make-stubs"


class AppTest(unittest.TestCase):
    """Has a copy of the app that the tools may change."""

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.app = pathlib.Path(folder.name, APP.name)
        shutil.copytree(APP, self.app)
        self.executable = self.app / "Contents" / "MacOS" / PRODUCT
        self.resources = self.app / "Contents" / "Resources"


class SealTest(AppTest):
    def refuses(self, reason: str) -> None:
        before = files(self.app)
        status, said = run(ADHOC_SIGN, self.app)
        self.assertEqual(status, 1)
        self.assertIn(reason, said)
        self.assertIn("nothing was changed", said)
        self.assertTrue(files(self.app) == before)

    def test_signing_again_restores_the_signature_and_changes_no_other_byte(self) -> None:
        before = files(self.app)
        shutil.rmtree(self.app / "Contents" / "_CodeSignature")
        (self.resources / "more.txt").write_text("more")
        self.assertEqual(run(ADHOC_SIGN, self.app), (0, ""))
        self.assertFalse(self.executable.read_bytes() == before[f"Contents/MacOS/{PRODUCT}"])
        (self.resources / "more.txt").unlink()
        self.assertEqual(run(ADHOC_SIGN, self.app), (0, ""))
        self.assertTrue(files(self.app) == before)

    def test_what_it_cannot_sign_is_refused(self) -> None:
        link = self.resources / "link.png"
        link.symlink_to("icon_2024.png")
        self.refuses("is a link")
        link.unlink()
        data = self.executable.read_bytes()
        self.executable.write_bytes(data[4096:])  # the first architecture, and more
        self.refuses("no universal file")
        self.executable.write_bytes(patched(data, rb"\x1D\0{3}(?=\x10\0{3})", b"\x29\0\0\0"))  # no LC_CODE_SIGNATURE
        self.refuses("left no signature to replace")


class CheckAppTest(AppTest):
    """Tests check-app, which checks the app on a Mac. Here it gets LLVM's tools under the Mac's names, or no tools."""

    def check(self, *tools: str) -> tuple[int, str]:
        with tempfile.TemporaryDirectory() as folder:
            for name in ("bash", "cat", "grep", "mktemp", "rm"):
                pathlib.Path(folder, name).symlink_to(shutil.which(name))
            for name in tools:
                pathlib.Path(folder, name).symlink_to(LLVM / "bin" / f"llvm-{name}")
            return run(CHECK_APP, self.app, env={"PATH": folder})

    def test_the_app_passes_and_missing_tools_are_named(self) -> None:
        status, said = self.check("lipo", "otool")
        self.assertEqual((status, said.splitlines()), (0, [
            "left out: the signature is whole; codesign is not here",
            "left out: Info.plist is a property list; plutil is not here",
            "left out: the icon file can be read; iconutil is not here",
            "passed:   the executable is for Intel and Apple silicon",
            "passed:   the executable uses only the system's libraries",
        ]))

    def test_a_wrong_app_fails(self) -> None:
        self.executable.write_bytes(self.executable.read_bytes().replace(b"/usr/lib/libc++.1", b"/opt/lib/libc++.1"))
        status, said = self.check("otool")
        self.assertEqual(status, 1)
        self.assertIn("FAILED:   the executable uses only the system's libraries", said)
        self.assertIn("\t/opt/lib/libc++.1.dylib", said)
        self.executable.write_bytes(b"")
        status, said = self.check("lipo")
        self.assertEqual(status, 1)
        self.assertIn("FAILED:   the executable is for Intel and Apple silicon", said)

    def test_anything_but_an_app_is_refused(self) -> None:
        for arguments in ([], ["/nowhere"]):
            usage = "usage: tests/macos/check-app APP, where APP is an application bundle\n"
            self.assertEqual(run(CHECK_APP, *arguments), (2, usage))


class RefusalTest(unittest.TestCase):
    def test_make_stubs_names_a_wrong_line(self) -> None:
        listed = (ROOT / "platform" / "macos" / "stubs" / "symbols.txt").read_text()
        wrong = ("    klass NSAlert", "class NSAlert", "    class", "    class NSAlert NSButton")
        for text in (*(f"{listed}{line}\n" for line in wrong), "    class NSAlert\n"):  # the last one has no library
            with self.subTest(text[-30:]), tempfile.TemporaryDirectory() as folder:
                symbols = pathlib.Path(folder, "symbols.txt")
                symbols.write_text(text)
                status, said = run(MAKE_STUBS, symbols, "12.3", folder)
                self.assertEqual(status, 1)
                self.assertIn(f"{symbols}:{len(text.splitlines())}: ", said)
                self.assertEqual(list(pathlib.Path(folder).iterdir()), [symbols])

    def test_package_needs_a_mac_for_an_identity(self) -> None:
        before = [path.stat().st_mtime_ns for path in BUILDS[0].iterdir()]
        for words, why in ((["--identity"], "unknown words: --identity"),
                           (["--identity", "Developer ID"], "signing with an identity needs a Mac's codesign")):
            self.assertEqual(run("script/package", *words, cwd=COPIES[0]),
                             (2, f"package: {why}; nothing was done. --help shows the usage.\n"))
        self.assertEqual([path.stat().st_mtime_ns for path in BUILDS[0].iterdir()], before)


if __name__ == "__main__":
    unittest.main()
