"""Tests the loader with a slice for this purpose, and with slices that it must refuse."""

import filecmp
import pathlib
import tempfile
import unittest
import zipfile

import slices

SELF_TEST = pathlib.Path(__file__).resolve().parent / "self-test.mm"
ANY_IMPORT = ["-Xlinker", "-undefined", "-Xlinker", "dynamic_lookup"]  # The stubs list the product's imports only.
COCOA = "#import <Cocoa/Cocoa.h>\n"
PUTS = 'extern "C" int puts(const char *);\n'

# A source, what the loader says about it, and the compiler's options for it.
REFUSED = [
    ('extern "C" int uname(void *); int main() { return uname(nullptr); }',
     "the slice imports _uname, which is not known"),
    (PUTS + 'int main() { return puts("") + 1; }', "a function keeps no frame pointer", "-fomit-frame-pointer"),
    (PUTS + 'int x = puts(""); int main() {}', "the slice has static initialisers"),
    (COCOA + 'int main() { return [@"…" length]; }', "a constant string is not ASCII"),
    (COCOA + "@protocol Own\n@end\n@interface Some : NSObject <Own>\n@end\n@implementation Some\n@end\nint main() {}",
     "the slice adopts the protocol Own, which is not known"),
    (COCOA + "@interface Some : NSObject\n@end\n@implementation Some\n+ (void)load\n{\n}\n@end\nint main() {}",
     "the slice has Objective-C metadata in __objc_nlclslist, which is not known"),
    (COCOA + "@interface NSTask (Own) <NSApplicationDelegate>\n@end\n@implementation NSTask (Own)\n@end\nint main() {}",
     "the category Own adopts a protocol"),
    ("thread_local int x; int main() { return x; }", "the slice imports __tlv_bootstrap, which is not known"),
]
if slices.MACHINE == "arm64":
    REFUSED.append((
        COCOA + "@interface NSString (Test)\n+ (id)predicateWithFormat:(id)format, ...;\n@end\n"
        'int main() { return [NSString predicateWithFormat:@"x"] != nil; }',
        "the slice sends predicateWithFormat:, whose arguments are not where this system expects them"))


class SelfTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(dir=slices.FOLDER)
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def built(self, source: pathlib.Path, *options: str) -> pathlib.Path:
        """Builds an executable with the package's options and more, and returns the program that runs it."""
        slices.compile_slice(source, self.folder / "object.o", *options, like="app/main.mm")
        slices.link_slice(self.folder / "executable", *ANY_IMPORT, objects=[self.folder / "object.o"])
        return slices.wrapper("self-test", self.folder / "executable")

    def test_what_the_compiler_makes_of_the_language_runs(self) -> None:
        status, said = slices.said_by(self.built(SELF_TEST), "-argument")
        facts = SELF_TEST.read_text().count(" expect(") - 1  # Without its definition.
        self.assertEqual((0, facts), (status, len(said.splitlines())), said)
        print(f"{facts} facts about the self-test slice for {slices.MACHINE}")

    def test_what_runs_is_what_ships(self) -> None:
        archive, = slices.CROSS_BUILD.glob("*.zip")
        with zipfile.ZipFile(archive) as file:
            universal = file.extract(str(slices.EXECUTABLE.relative_to(slices.CROSS_BUILD)), self.folder)
        slices.take_slice(universal, self.folder / "slice")
        loaded = slices.FOLDER / f"shipped/{slices.PRODUCT}.app/Slice"
        self.assertTrue(filecmp.cmp(self.folder / "slice", loaded, shallow=False), "the slice that runs is another one")

    def test_what_is_not_known_is_refused(self) -> None:
        for text, why, *options in REFUSED:
            with self.subTest(why):
                source = self.folder / "source.mm"
                source.write_text(text)
                slices.judge_refused(self.built(source, *options), why)


if __name__ == "__main__":
    unittest.main()
