"""Tests the loader itself: with a slice made for it, and with files that it has to refuse."""

import pathlib
import tempfile
import unittest

import slices

HERE = pathlib.Path(__file__).resolve().parent
ANY_IMPORT = ["-Xlinker", "-undefined", "-Xlinker", "dynamic_lookup"]  # The stubs list the product's imports only.


class SelfTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(dir=slices.FOLDER)
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def built(self, source, *options):
        """Builds an executable with the package's options and more, for Intel alone."""
        executable = self.folder / "executable"
        slices.compile_for_intel(source, self.folder / "object.o", *options, like="app/main.mm")
        slices.link_for_intel(executable, *ANY_IMPORT, objects=[self.folder / "object.o"])
        return executable

    def written(self, text):
        source = self.folder / "source.mm"
        source.write_text(text)
        return source

    def run_slice(self, executable):
        return slices.said_by(slices.wrapper("self-test", executable), "-argument")

    def refused(self, executable, why):
        status, said = self.run_slice(executable)
        self.assertEqual((2, f"shipped-slice: {why}. Nothing of the slice has run.\n"), (status, said))

    def test_what_the_compiler_makes_of_the_language_runs(self):
        status, said = self.run_slice(self.built(HERE / "self-test.mm"))
        # But for its definition, and one that must not be reached.
        facts = (HERE / "self-test.mm").read_text().count("expect(") - 2
        self.assertEqual((0, facts), (status, len(said.splitlines())), said)
        print(f"{facts} facts about the self-test slice")

    def test_wrong_files_are_refused(self):
        no_executable = "the file is no Mach-O executable for x86_64"
        self.refused(slices.APP / "Contents/Info.plist", no_executable)
        self.refused(slices.BUILD / "tests/shipped-slice/slice-loader", no_executable)
        arm = self.folder / "arm64"
        slices.llvm("llvm-lipo", slices.EXECUTABLE, "-thin", "arm64", "-output", arm)
        self.refused(arm, no_executable)
        for size in (0, 40000):
            (self.folder / "cut").write_bytes(slices.EXECUTABLE.read_bytes()[:size])
            self.refused(self.folder / "cut", "the file is cut off or no Mach-O executable")

    def test_what_is_not_known_is_refused(self):
        self.refused(self.built(self.written('extern "C" int uname(void *); int main() { return uname(nullptr); }')),
                     "the slice imports _uname, which is not known")
        self.refused(self.built(self.written("int main() { return 0; }"), "-fomit-frame-pointer"),
                     "a function keeps no frame pointer")
        self.refused(self.built(self.written('extern "C" int puts(const char *); int x = puts(""); int main() {}')),
                     "the slice has static initialisers or thread-local variables")
        cocoa = "#import <Cocoa/Cocoa.h>\n"
        self.refused(self.built(self.written(cocoa + 'int main() { return [@"…" length]; }')),
                     "a constant string is not ASCII")
        self.refused(self.built(self.written(cocoa + "int main() { return @protocol(NSObject) != nil; }")),
                     "the slice has Objective-C metadata in __objc_protorefs, which is not known")


if __name__ == "__main__":
    unittest.main()
