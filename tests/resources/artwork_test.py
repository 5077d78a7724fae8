#!/usr/bin/python3
"""Tests the output of script/artwork: the window's images and the icon file. ImageMagick and icns2png read them."""

import filecmp
import itertools
import os
import pathlib
import re
import shutil
import struct
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
ARTWORK = ROOT / "script" / "artwork"
MAKE_ICNS = ROOT / "platform" / "macos" / "make-icns"
VECTORS = ROOT / "resources" / "vectors"
ICON_FILE = "QuorlenRemovalTool.icns"

# The frames of the window's image views, in points.
IMAGES = {"icon_removal_2024": (104, 104), "icon_2024": (104, 104), "quorlen-typeface_1024": (330, 52)}
FILES = {f"{name}{suffix}.png": (width * factor, height * factor)
         for name, (width, height) in IMAGES.items() for suffix, factor in (("", 1), ("@2x", 2))}

# The entries of the icon file: the side in pixels of PNG and RGB entries, the length in bytes of masks.
PNG_ENTRIES = {"ic11": 32, "ic12": 64, "ic07": 128, "ic08": 256, "ic13": 256, "ic09": 512, "ic14": 512, "ic10": 1024}
MASK_ENTRIES = {"s8mk": 16 * 16, "l8mk": 32 * 32}
RGB_ENTRIES = {"is32": 16, "il32": 32}


def output_of(*command: str | pathlib.Path) -> str:
    """Returns a command's standard output."""
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def png_chunks(png: bytes) -> list[str]:
    """Returns the types of a PNG file's chunks, in order."""
    kinds, at = [], 8
    while at < len(png):
        length, kind = struct.unpack_from(">I4s", png, at)
        kinds.append(kind.decode())
        at += length + 12
    return kinds


def icon_entries(icns: bytes) -> dict[str, bytes]:
    """Returns the entries of an icon file: the data by type."""
    magic, length = struct.unpack_from(">4sI", icns)
    assert (magic, length) == (b"icns", len(icns)), "the header does not have the file's length"
    entries, at = {}, 8
    while at < len(icns):
        kind, length = struct.unpack_from(">4sI", icns, at)
        entries[kind.decode()] = icns[at + 8:at + length]
        at += length
    return entries


def luminance(colour: str) -> float:
    """Returns the relative luminance of an sRGB colour "#rrggbb", as the WCAG define it."""
    parts = (value / 255 for value in bytes.fromhex(colour[1:]))
    red, green, blue = (part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(one: str, other: str) -> float:
    """Returns the contrast ratio of two colours, as the WCAG define it."""
    darker, lighter = sorted((luminance(one), luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)


class Artwork(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.made = cls.folder / "made"
        subprocess.run([ARTWORK, cls.made], check=True)
        cls.icon = cls.made / ICON_FILE

    def assertOnlyPicture(self, png: bytes, size: tuple[int, int], name: str) -> None:
        """Checks that a PNG file has this size in pixels, is 8-bit RGBA, sRGB and not interlaced, and has no more
        chunks."""
        found = (*struct.unpack_from(">IIBBBBB", png, 16), *dict.fromkeys(png_chunks(png)))
        self.assertEqual(found, (*size, 8, 6, 0, 0, 0, "IHDR", "sRGB", "IDAT", "IEND"), name)

    def test_makes_small_images_that_fill_the_views_at_both_scales(self) -> None:
        """They have opaque and clear parts. There are no other files."""
        self.assertEqual({path.name for path in self.made.iterdir()}, {*FILES, ICON_FILE})
        self.assertLess(self.icon.stat().st_size, 300_000)
        for name, size in FILES.items():
            png = (self.made / name).read_bytes()
            self.assertOnlyPicture(png, size, name)
            self.assertLess(len(png), 20_000, name)
            alpha = output_of("identify", "-format", "%[fx:minima.a] %[fx:maxima.a]", self.made / name)
            self.assertEqual(alpha, "0 1", name)

    def test_wordmark_is_legible_on_light_and_dark_windows(self) -> None:
        """Checks both colours: the letters and the Q's tail. Only their edges are partly transparent."""
        for suffix in ("", "@2x"):
            histogram = output_of("convert", self.made / f"quorlen-typeface_1024{suffix}.png", "-depth", "8",
                                  "-format", "%c", "histogram:info:-")
            colours = re.findall(r"(#[0-9A-F]{6})FF", histogram)
            self.assertEqual(len(colours), 2)
            for colour, window in itertools.product(colours, ("#ECECEC", "#323232", "#1E1E1E")):
                self.assertGreaterEqual(contrast(colour, window), 3, f"{colour} on {window}")

    def test_same_bytes_every_time(self) -> None:
        again = self.folder / "again"
        subprocess.run([ARTWORK, again], check=True, cwd="/", env={**os.environ, "TZ": "Asia/Tokyo", "LC_ALL": "C"})
        _, different, missing = filecmp.cmpfiles(again, self.made, [*FILES, ICON_FILE], shallow=False)
        self.assertEqual(different + missing, [])

    def test_a_failure_is_reported_and_changes_nothing(self) -> None:
        tools, kept = self.folder / "tools", self.folder / "kept" / ICON_FILE
        tools.mkdir()
        kept.parent.mkdir()
        kept.write_text("an earlier one")

        def assert_fails(message: str) -> None:
            run = subprocess.run([ARTWORK, kept.parent], env={"PATH": str(tools)}, capture_output=True, text=True)
            self.assertEqual((run.returncode, run.stderr), (1, message))
            self.assertEqual((list(kept.parent.iterdir()), kept.read_text()), ([kept], "an earlier one"))

        assert_fails("artwork: rsvg-convert is missing; nothing was written. script/bootstrap installs it.\n")
        (tools / "rsvg-convert").symlink_to(shutil.which("rsvg-convert"))
        (tools / "optipng").symlink_to(shutil.which("false"))
        assert_fails("artwork: optipng failed with status 1; nothing was written.\n")

    def test_icon_file_holds_every_size(self) -> None:
        entries = icon_entries(self.icon.read_bytes())
        self.assertEqual(entries.keys(), PNG_ENTRIES.keys() | MASK_ENTRIES.keys() | RGB_ENTRIES.keys())
        self.assertEqual({kind: len(entries[kind]) for kind in MASK_ENTRIES}, MASK_ENTRIES)
        for kind, side in PNG_ENTRIES.items():
            self.assertOnlyPicture(entries[kind], (side, side), kind)

    def test_packed_sizes_unpack_to_their_drawings(self) -> None:
        output_of("icns2png", "-x", "-o", self.folder, self.icon)
        for side in RGB_ENTRIES.values():
            drawn = self.folder / f"drawn-{side}.png"
            output_of("rsvg-convert", f"--width={side}", f"--output={drawn}", VECTORS / f"icon_removal_2024-{side}.svg")
            unpacked = self.folder / f"{self.icon.stem}_{side}x{side}x32.png"
            different = subprocess.run(["compare", "-metric", "AE", drawn, unpacked, "null:"], stderr=subprocess.PIPE)
            self.assertEqual(different.stderr, b"0", side)

    def test_icon_writer_refuses_other_files(self) -> None:
        oblong, output = self.made / "quorlen-typeface_1024.png", self.folder / "refused.icns"
        for image, why in (
                (oblong, f"{oblong} is not a square 8-bit RGBA image without interlacing"),
                (self.icon, f"{self.icon} is not a PNG file"),
                (self.made / "icon_2024.png",
                 "one image of each of the sizes 16, 32, 64, 128, 256, 512, 1024 is needed, no other")):
            run = subprocess.run([MAKE_ICNS, output, image], capture_output=True, text=True)
            self.assertEqual((run.returncode, run.stderr), (1, f"make-icns: {why}; {output} was not written\n"))
            self.assertFalse(output.exists())


if __name__ == "__main__":
    unittest.main()
