"""Checks the bundle and its zip: the files, their contents, the resources' signature, the same bytes each time."""

import hashlib
import pathlib
import plistlib
import re
import shutil
import struct
import tempfile
import time
import unittest
import zipfile
from collections.abc import Callable, Sequence

from support import APP, BUILDS, PACKAGES, PRODUCT, ROOT, FactTest

PICTURES = {"icon_removal_2024": (104, 104), "icon_2024": (104, 104), "quorlen-typeface_1024": (330, 52)}
ICON = "Resources/QuorlenRemovalTool.icns"
FILES = {
    "Info.plist", "PkgInfo", f"MacOS/{PRODUCT}", "_CodeSignature/CodeResources", ICON,
    *(f"Resources/{name}{suffix}.png" for name in PICTURES for suffix in ("", "@2x")),
}

# The rules that codesign writes for an application: the files that the seal covers, before macOS 10.9 and since.
RULES = {
    "^Resources/": True,
    "^Resources/.*\\.lproj/": {"optional": True, "weight": 1000.0},
    "^Resources/.*\\.lproj/locversion.plist$": {"omit": True, "weight": 1100.0},
    "^Resources/Base\\.lproj/": {"weight": 1010.0},
    "^version.plist$": True,
}
RULES2 = {
    ".*\\.dSYM($|/)": {"weight": 11.0},
    "^(.*/)?\\.DS_Store$": {"omit": True, "weight": 2000.0},
    "^(Frameworks|SharedFrameworks|PlugIns|Plug-ins|XPCServices|Helpers|MacOS|Library/(Automator|Spotlight|LoginItems))/":
        {"nested": True, "weight": 10.0},
    "^.*": True,
    "^Info\\.plist$": {"omit": True, "weight": 20.0},
    "^PkgInfo$": {"omit": True, "weight": 20.0},
    "^Resources/": {"weight": 20.0},
    "^Resources/.*\\.lproj/": {"optional": True, "weight": 1000.0},
    "^Resources/.*\\.lproj/locversion.plist$": {"omit": True, "weight": 1100.0},
    "^Resources/Base\\.lproj/": {"weight": 1010.0},
    "^[^/]+$": {"nested": True, "weight": 10.0},
    "^embedded\\.provisionprofile$": {"weight": 20.0},
    "^version\\.plist$": {"weight": 20.0},
}


def package(build: pathlib.Path) -> pathlib.Path:
    """Returns the one zip of a build folder."""
    path, = build.glob("*.zip")
    return path


def contents(app: pathlib.Path) -> dict[str, bytes]:
    """Returns the files of a bundle: path below Contents -> bytes."""
    folder = pathlib.Path(app, "Contents")
    return {path.relative_to(folder).as_posix(): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


class BundleTest(FactTest):
    def setUp(self) -> None:
        self.files = contents(APP)

    def with_file(self, name: str, data: bytes) -> dict[str, bytes]:
        """Returns the bundle's files with one replaced or added."""
        return self.files | {name: data}

    def test_files(self) -> None:
        def fact(files: dict[str, bytes]) -> None:
            self.assertEqual(set(files), FILES)
            self.assertEqual(files["PkgInfo"], b"APPL????")

        self.holds(fact, self.files,
                   self.with_file("Resources/.DS_Store", b""),
                   self.with_file("PkgInfo", b"APPL"),
                   {name: data for name, data in self.files.items() if name != ICON})

    def test_information(self) -> None:
        """Info.plist has exactly these keys, without GNUstep's. The version is the project's."""
        version = re.search(r"^project\(.*VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE)[1]
        expected = {
            "CFBundleDevelopmentRegion": "en",
            "CFBundleExecutable": PRODUCT,
            "CFBundleIconFile": "QuorlenRemovalTool",
            "CFBundleIdentifier": "com.vendrel.Quorlen3RemovalTool",
            "CFBundleInfoDictionaryVersion": "6.0",
            "CFBundleName": PRODUCT,
            "CFBundlePackageType": "APPL",
            "CFBundleShortVersionString": version,
            "CFBundleVersion": version,
            "LSApplicationCategoryType": "public.app-category.utilities",
            "LSMinimumSystemVersion": "10.13",
            "LSMinimumSystemVersionByArchitecture": {"x86_64": "10.13", "arm64": "11.0"},
            "NSDesktopFolderUsageDescription":
                "The tool saves a backup of your license and a log of the removal to your Desktop. "
                "You can choose a backup there to restore your license.",
            "NSHighResolutionCapable": True,
            "NSHumanReadableCopyright": "Copyright © 2026 Vendrel. All rights reserved.",
            "NSPrincipalClass": "NSApplication",
        }

        def fact(files: dict[str, bytes]) -> None:
            info = plistlib.loads(files["Info.plist"])
            self.assertEqual(info, expected)
            self.assertIs(info["NSHighResolutionCapable"], True)
            self.assertIn(f"Resources/{info['CFBundleIconFile']}.icns", files)

        plist = self.files["Info.plist"]
        self.holds(fact, self.files,
                   self.with_file("Info.plist", plist.replace(b"<true/>", b"<string>YES</string>")),
                   self.with_file("Info.plist", plist.replace(b"11.0", b"10.13")),
                   self.with_file("Info.plist", plist.replace(b"CFBundleIconFile", b"NSIcon")),
                   self.with_file("Info.plist", plist.replace(b"your license and", b"your licence and")),
                   self.with_file("Info.plist", plist.replace(version.encode(), b"0.9")))

    def test_pictures(self) -> None:
        """The PNG files have the views' sizes. The icon file has an entry for each size that macOS uses."""
        def fact(files: dict[str, bytes]) -> None:
            for name, (width, height) in PICTURES.items():
                for suffix, factor in (("", 1), ("@2x", 2)):
                    png = files[f"Resources/{name}{suffix}.png"]
                    self.assertEqual(png[:8], b"\x89PNG\r\n\x1a\n")
                    self.assertEqual(struct.unpack_from(">2I", png, 16), (width * factor, height * factor))
                    self.assertEqual(png[-8:-4], b"IEND")
            icon, at, kinds = files[ICON], 8, set()
            self.assertEqual(struct.unpack_from(">4sI", icon), (b"icns", len(icon)))
            while at < len(icon):
                kind, length = struct.unpack_from(">4sI", icon, at)
                kinds.add(kind.decode())
                at += length
            self.assertEqual(at, len(icon))
            self.assertLessEqual({"ic07", "ic08", "ic09", "ic10", "ic11", "ic12", "ic13", "ic14"}, kinds)

        png, icon = self.files["Resources/icon_2024.png"], self.files[ICON]
        self.holds(fact, self.files,
                   self.with_file("Resources/icon_2024@2x.png", png),
                   self.with_file("Resources/icon_2024.png", png[:-20]),
                   self.with_file(ICON, icon[:-1]),
                   self.with_file(ICON, icon.replace(b"ic13", b"ic99")))

    def test_sealed_resources(self) -> None:
        """CodeResources has the right hashes of exactly the files in Resources."""
        def fact(files: dict[str, bytes]) -> None:
            seal = plistlib.loads(files["_CodeSignature/CodeResources"])
            sealed = {name: data for name, data in files.items() if name.startswith("Resources/")}
            self.assertEqual(seal["files"], {name: hashlib.sha1(data).digest() for name, data in sealed.items()})
            self.assertEqual(seal["files2"],
                             {name: {"hash2": hashlib.sha256(data).digest()} for name, data in sealed.items()})
            self.assertEqual((seal["rules"], seal["rules2"]), (RULES, RULES2))

        picture, seal_file = "Resources/icon_2024.png", "_CodeSignature/CodeResources"
        self.holds(fact, self.files,
                   self.with_file(picture, self.files[picture] + b"\0"),
                   self.with_file("Resources/more.txt", b""),
                   self.with_file(seal_file, self.files[seal_file].replace(b"^[^/]+$", b"^[^/]*$")),
                   self.with_file(seal_file, self.files[seal_file].replace(b"<key>nested</key>", b"<key>omit</key>")),
                   {name: data for name, data in self.files.items() if name != picture})

    def test_zip(self) -> None:
        """The zip has exactly the bundle, with its executable bits, in sorted order, at the commit's time."""
        epoch = int((PACKAGES / "epoch").read_text())
        moment = time.gmtime((epoch + 1) // 2 * 2)[:6]  # the format has steps of two seconds; zip rounds up

        def fact(path: pathlib.Path) -> None:
            with zipfile.ZipFile(path) as archive:
                self.assertIsNone(archive.testzip())
                entries = archive.infolist()
                self.assertEqual([entry.filename for entry in entries], sorted(entry.filename for entry in entries))
                inside = f"{PRODUCT}.app/Contents/"
                files = {entry.filename: archive.read(entry) for entry in entries if not entry.is_dir()}
                self.assertEqual(files, {inside + name: data for name, data in self.files.items()})
                for entry in entries:
                    self.assertEqual(entry.date_time, moment)
                    self.assertEqual(entry.extra, b"")
                    runs = entry.is_dir() or entry.filename == f"{inside}MacOS/{PRODUCT}"
                    self.assertEqual(entry.external_attr >> 16 & 0o777, 0o755 if runs else 0o644, entry.filename)

        def changed(folder: str, change: Callable[[zipfile.ZipInfo], None]) -> pathlib.Path:
            """Writes the zip again with a change in each entry."""
            path = pathlib.Path(folder, f"{len(list(pathlib.Path(folder).iterdir()))}.zip")
            with zipfile.ZipFile(package(BUILDS[0])) as old, zipfile.ZipFile(path, "w") as new:
                for entry in old.infolist():
                    data = old.read(entry)
                    change(entry)
                    new.writestr(entry, data)
            return path

        def without_run_bit(entry: zipfile.ZipInfo) -> None:
            entry.external_attr &= ~(0o111 << 16)

        def at_another_time(entry: zipfile.ZipInfo) -> None:
            entry.date_time = (2020, 1, 1, 0, 0, 0)

        with tempfile.TemporaryDirectory() as folder:
            self.holds(fact, package(BUILDS[0]), changed(folder, without_run_bit), changed(folder, at_another_time))

    def test_same_bytes_in_any_folder(self) -> None:
        def fact(builds: Sequence[pathlib.Path]) -> None:
            one, other = builds
            self.assertEqual(contents(one / f"{PRODUCT}.app"), contents(other / f"{PRODUCT}.app"))
            self.assertEqual(package(one).name, package(other).name)
            self.assertEqual(package(one).read_bytes(), package(other).read_bytes())
            # The files do not contain the folder's path either.
            for data in contents(one / f"{PRODUCT}.app").values():
                self.assertNotIn(str(PACKAGES).encode(), data)

        with tempfile.TemporaryDirectory() as folder:
            touched = pathlib.Path(folder, "touched")
            shutil.copytree(APP, touched / APP.name)
            shutil.copy(package(BUILDS[1]), touched)
            with open(touched / APP.name / "Contents" / "PkgInfo", "ab") as file:
                file.write(b"\n")
            self.holds(fact, BUILDS, (BUILDS[0], touched))


if __name__ == "__main__":
    unittest.main()
