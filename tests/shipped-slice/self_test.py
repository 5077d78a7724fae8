"""Tests the loader with a slice for this purpose, and with files that it must refuse."""

import hashlib
import pathlib
import sys
import tempfile
import unittest
import zipfile

import slices

sys.path.insert(0, str(slices.ROOT / "tests/macos"))
import macho

HERE = pathlib.Path(__file__).resolve().parent
ANY_IMPORT = ["-Xlinker", "-undefined", "-Xlinker", "dynamic_lookup"]  # The stubs list the product's imports only.


class SelfTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(dir=slices.FOLDER)
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def built(self, source: pathlib.Path, *options: str) -> pathlib.Path:
        """Builds an executable with the package's options and more, for this machine only."""
        executable = self.folder / "executable"
        slices.compile_slice(source, self.folder / "object.o", *options, like="app/main.mm")
        slices.link_slice(executable, *ANY_IMPORT, objects=[self.folder / "object.o"])
        return executable

    def written(self, text: str) -> pathlib.Path:
        source = self.folder / "source.mm"
        source.write_text(text)
        return source

    def run_slice(self, executable: pathlib.Path) -> tuple[int, str]:
        return slices.said_by(slices.wrapper("self-test", executable), "-argument")

    def refused(self, executable: pathlib.Path, why: str) -> None:
        status, said = self.run_slice(executable)
        self.assertEqual((2, f"shipped-slice: {why}. Nothing of the slice has run.\n"), (status, said))

    def test_what_the_compiler_makes_of_the_language_runs(self) -> None:
        status, said = self.run_slice(self.built(HERE / "self-test.mm"))
        # Without its definition, and one that must not be reached.
        facts = (HERE / "self-test.mm").read_text().count("expect(") - 2
        self.assertEqual((0, facts), (status, len(said.splitlines())), said)
        print(f"{facts} facts about the self-test slice for {slices.MACHINE}")

    def test_what_runs_is_what_ships(self) -> None:
        archive, = slices.CROSS_BUILD.glob("*.zip")
        with zipfile.ZipFile(archive) as file:
            universal = file.read(str(slices.EXECUTABLE.relative_to(slices.CROSS_BUILD)))
        (start, size), = (part[2:] for part in macho.parts(universal) if macho.NAMES[part[0]] == slices.MACHINE)
        loaded = slices.FOLDER / f"shipped/{slices.PRODUCT}.app/Slice"
        self.assertEqual(hashlib.sha256(universal[start:start + size]).hexdigest(),
                         hashlib.sha256(loaded.read_bytes()).hexdigest())

    def test_wrong_files_are_refused(self) -> None:
        no_executable = f"the file is no Mach-O executable for {slices.MACHINE}"
        self.refused(slices.APP / "Contents/Info.plist", no_executable)
        self.refused(slices.BUILD / "tests/shipped-slice" / "slice-loader", no_executable)
        other = self.folder / "other"
        slices.take_slice(slices.EXECUTABLE, other, slices.OTHER_MACHINE)
        self.refused(other, no_executable)
        for size in (0, 40000):
            (self.folder / "cut").write_bytes(slices.EXECUTABLE.read_bytes()[:size])
            self.refused(self.folder / "cut", "the file is cut off or no Mach-O executable")

    def test_what_is_not_known_is_refused(self) -> None:
        self.refused(self.built(self.written('extern "C" int uname(void *); int main() { return uname(nullptr); }')),
                     "the slice imports _uname, which is not known")
        self.refused(self.built(self.written('extern "C" int puts(const char *); int main() { return puts("") + 1; }'),
                                "-fomit-frame-pointer"),
                     "a function keeps no frame pointer")
        self.refused(self.built(self.written('extern "C" int puts(const char *); int x = puts(""); int main() {}')),
                     "the slice has static initialisers or thread-local variables")
        cocoa = "#import <Cocoa/Cocoa.h>\n"
        self.refused(self.built(self.written(cocoa + 'int main() { return [@"…" length]; }')),
                     "a constant string is not ASCII")
        self.refused(self.built(self.written(cocoa + "@protocol Own\n@end\nint main() { return @protocol(Own) != nil; }")),
                     "the slice names the protocol Own, which is not known")
        if slices.MACHINE == "arm64":
            sends = ("@interface NSString (Test)\n+ (id)predicateWithFormat:(id)format, ...;\n@end\n"
                     'int main() { return [NSString predicateWithFormat:@"x"] != nil; }')
            self.refused(self.built(self.written(cocoa + sends)),
                         "the slice sends predicateWithFormat:, whose arguments are not where this system expects them")


if __name__ == "__main__":
    unittest.main()
