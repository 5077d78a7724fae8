"""Checks the bundle and its zip: the files, their contents, the resources' signature, the same bytes each time."""

import hashlib
import io
import pathlib
import plistlib
import re
import struct
import time
import unittest
import zipfile

from support import APP, BUILDS, PACKAGES, PRODUCT, ROOT, FactTest, files, patched

ICON = "Resources/QuorlenRemovalTool.icns"
FILES = {"Info.plist", "PkgInfo", f"MacOS/{PRODUCT}", "_CodeSignature/CodeResources"}  # and the resources

# The rules that codesign writes for an application: the files that the seal covers, before macOS 10.9 and since.
TRANSLATIONS = {
    "^Resources/.*\\.lproj/": {"optional": True, "weight": 1000.0},
    "^Resources/.*\\.lproj/locversion.plist$": {"omit": True, "weight": 1100.0},
    "^Resources/Base\\.lproj/": {"weight": 1010.0},
}
RULES = {"^Resources/": True, "^version.plist$": True, **TRANSLATIONS}
RULES2 = {
    ".*\\.dSYM($|/)": {"weight": 11.0},
    "^(.*/)?\\.DS_Store$": {"omit": True, "weight": 2000.0},
    "^(Frameworks|SharedFrameworks|PlugIns|Plug-ins|XPCServices|Helpers|MacOS|Library/(Automator|Spotlight|LoginItems))/":
        {"nested": True, "weight": 10.0},
    "^.*": True,
    "^Info\\.plist$": {"omit": True, "weight": 20.0},
    "^PkgInfo$": {"omit": True, "weight": 20.0},
    "^Resources/": {"weight": 20.0},
    "^[^/]+$": {"nested": True, "weight": 10.0},
    "^embedded\\.provisionprofile$": {"weight": 20.0},
    "^version\\.plist$": {"weight": 20.0},
    **TRANSLATIONS,
}


def package(build: pathlib.Path) -> pathlib.Path:
    """Returns the one zip of a build folder."""
    path, = build.glob("*.zip")
    return path


def hashes(files: dict[str, bytes]) -> dict[str, str]:
    """Returns the files' hashes, which a failed comparison can print."""
    return {name: hashlib.sha256(data).hexdigest() for name, data in files.items()}


class BundleTest(FactTest):
    def setUp(self) -> None:
        self.files = files(APP / "Contents")

    def test_files(self) -> None:
        """The pictures are those that script/artwork drew for the build; tests/resources looks at what it draws."""
        drawn = {f"Resources/{name}": data for name, data in files(BUILDS[0] / "pictures").items() if name != ".drawn"}

        def fact(files: dict[str, bytes]) -> None:
            self.assertLessEqual(FILES, set(files))
            self.assertEqual(files["PkgInfo"], b"APPL????")
            self.assertEqual(hashes({name: data for name, data in files.items() if name not in FILES}), hashes(drawn))

        self.holds(fact, self.files,
                   self.files | {"Resources/.DS_Store": b""},
                   self.files | {"PkgInfo": b"APPL"},
                   self.files | {"Resources/icon_2024@2x.png": self.files["Resources/icon_2024.png"]},
                   self.files | {ICON: self.files[ICON][:-1]},
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
                   self.files | {"Info.plist": plist.replace(b"<true/>", b"<string>YES</string>")},
                   self.files | {"Info.plist": plist.replace(b"11.0", b"10.13")},
                   self.files | {"Info.plist": plist.replace(b"CFBundleIconFile", b"NSIcon")},
                   self.files | {"Info.plist": plist.replace(b"your license and", b"your licence and")},
                   self.files | {"Info.plist": plist.replace(version.encode(), b"0.9")})

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
                   self.files | {picture: self.files[picture] + b"\0"},
                   self.files | {"Resources/more.txt": b""},
                   self.files | {seal_file: self.files[seal_file].replace(b"^[^/]+$", b"^[^/]*$")},
                   self.files | {seal_file: self.files[seal_file].replace(b"<key>nested</key>", b"<key>omit</key>")})

    def test_zip(self) -> None:
        """The zip has exactly the bundle, with its executable bits, in sorted order, at the commit's time."""
        epoch = int((PACKAGES / "epoch").read_text())
        moment = time.gmtime((epoch + 1) // 2 * 2)[:6]  # the format has steps of two seconds; zip rounds up

        def fact(data: bytes) -> None:
            with zipfile.ZipFile(io.BytesIO(data)) as archive:
                self.assertIsNone(archive.testzip())
                entries = archive.infolist()
                self.assertEqual([entry.filename for entry in entries], sorted(entry.filename for entry in entries))
                inside = f"{PRODUCT}.app/Contents/"
                found = {entry.filename: archive.read(entry) for entry in entries if not entry.is_dir()}
                self.assertEqual(hashes(found), hashes({inside + name: data for name, data in self.files.items()}))
                for entry in entries:
                    runs = entry.is_dir() or entry.filename == f"{inside}MacOS/{PRODUCT}"
                    self.assertEqual((entry.date_time, entry.extra, entry.external_attr >> 16 & 0o777),
                                     (moment, b"", 0o755 if runs else 0o644), entry.filename)

        # The fields of the central directory.
        data = package(BUILDS[0]).read_bytes()
        self.holds(fact, data,
                   patched(data, rb"(?<=PK\x01\x02.{36})\xED\x81", struct.pack("<H", 0o100644)),  # runs no more
                   patched(data, rb"(?<=PK\x01\x02.{8}).{4}", struct.pack("<2H", 0, (2020 - 1980) << 9 | 1 << 5 | 1)))

    def test_same_bytes_in_any_folder(self) -> None:
        """The files do not contain the folder's path either."""
        def fact(builds: list[dict[str, bytes]]) -> None:
            one, other = builds
            self.assertEqual(hashes(one), hashes(other))
            self.assertEqual([name for name, data in one.items() if str(PACKAGES).encode() in data], [])

        one, other = (files(build / APP.name) | {package(build).name: package(build).read_bytes()} for build in BUILDS)
        path = {"Contents/PkgInfo": bytes(PACKAGES)}
        self.holds(fact, [one, other], [one, other | path], [one | path, other | path])


if __name__ == "__main__":
    unittest.main()
