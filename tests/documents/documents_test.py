#!/usr/bin/python3
"""Compares the documents with the sources and files that they describe."""

import functools
import os
import pathlib
import re
import unittest
from collections.abc import Iterable, Iterator
from typing import NamedTuple

ROOT = pathlib.Path(__file__).resolve().parents[2]
MESSAGES = ROOT / "docs" / "messages.md"
DOCUMENTS = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", *sorted((ROOT / "docs").glob("*.md"))]

PRODUCT_FOLDERS = ("app", "ui", "detection", "removal", "licence")
# Paths and root's commands. The tool never shows or logs a text of these files.
WITHOUT_TEXTS = {"detection/KnownLocations.hpp", "removal/CleanupScript.cpp", "removal/PrivilegedStatement.cpp",
                 "removal/Quoting.cpp"}
# Literals that the tool never shows: keys, patterns, names of images and the commands of other programs.
NOT_SHOWN = {
    "CFBundleShortVersionString", "yyyyMMdd-HHmmss", "icon_removal_2024", "icon_2024", "quorlen-typeface_1024",
    "/usr/bin/ditto", "-c", "-k", "--sequesterRsrc", "--keepParent", "-x", "zip",
    "/bin/sh -c '/bin/sleep 1; /sbin/shutdown -r now' >/dev/null 2>&1 &",
}
# The date after "updated: " changes with each version, so no document states it.
UPDATED_DATE = re.compile(r"\d{4}\.\d\d\.\d\d")

PLATFORM_SECTION = "What the platform fills in"


def without_spaces_around(pieces: Iterable[str]) -> set[str]:
    """Returns the pieces without surrounding spaces, and without blank pieces."""
    return {piece.strip() for piece in pieces} - {""}


def pieces_of_row(text: str) -> set[str]:
    """Returns the fixed parts of a text of the table; … stands for a part that is filled in."""
    return without_spaces_around(text.split("…"))


def pieces_of_source(path: pathlib.Path, prefix: str) -> set[str]:
    """Returns the fixed parts of the string literals of a source: split at line ends and at format specifiers."""
    token = re.compile(rf'//[^\n]*|/\*.*?\*/|#\s*(?:import|include)[^\n]*|{prefix}"(?P<text>(?:\\.|[^"\\])*)"', re.S)
    literals = [match["text"] for match in token.finditer(path.read_text()) if match["text"]]
    return without_spaces_around(piece for literal in literals for piece in re.split(r"%@|%s|\\n", literal))


def sources(*folders: str) -> list[pathlib.Path]:
    """Returns the C++ and Objective-C++ files of these folders."""
    return [path for folder in folders for path in sorted((ROOT / folder).iterdir())
            if path.suffix in (".h", ".hpp", ".cpp", ".mm")]


@functools.cache
def shown_by_the_sources() -> set[str]:
    """Returns the fixed parts of all texts that the product can show or log."""
    pieces = set()
    for path in sources(*PRODUCT_FOLDERS):
        if str(path.relative_to(ROOT)) not in WITHOUT_TEXTS:
            pieces |= pieces_of_source(path, "[@u]")
    return {piece for piece in pieces - NOT_SHOWN if not UPDATED_DATE.fullmatch(piece)}


class Row(NamedTuple):
    """A line of a table in messages.md."""
    section: str
    text: str
    tests: list[str]


def rows() -> Iterator[Row]:
    """Yields the rows of all tables in messages.md."""
    section = ""
    for line in MESSAGES.read_text().splitlines():
        if line.startswith("## "):
            section = line[3:]
        elif line.startswith("| `"):
            text, _, _, tests = (cell.strip() for cell in line.strip("|").split("|"))
            yield Row(section, text.removeprefix("`").removesuffix("`"), re.findall(r"`([^`]+)`", tests))


@functools.cache
def words_of(path: pathlib.Path) -> str:
    """Returns a test's source, with adjacent string literals joined and without the backslash of an escaped period."""
    return re.sub(r'"\s*\\?\s*"', "", path.read_text()).replace("\\\\.", ".")


def test_sources(name: str) -> list[pathlib.Path]:
    """Returns the file that defines a test and the file that its kind of tests share; nothing if no file defines it."""
    if name.startswith("journey."):
        _, subject, journey = name.split(".")
        shared = ROOT / "tests/driver/phrases.py"
        places, definition = [ROOT / f"tests/journeys/{subject}_journeys.py"], rf"^def journey_{journey}\("
    else:
        suite, case = name.split(".")
        shared = ROOT / "tests/support/RoomTest.hpp"
        places = sorted(path for path in (ROOT / "tests").glob("*/*Tests.*") if path.suffix in (".cpp", ".mm"))
        definition = rf"^TEST(_F|_P)?\({suite}, {case}\)"
    defining = [path for path in places if path.exists() and re.search(definition, path.read_text(), re.M)]
    return [*defining, shared] if defining else []


class Messages(unittest.TestCase):
    def test_every_text_of_the_sources_is_in_the_table(self) -> None:
        documented = set().union(*(pieces_of_row(row.text) for row in rows()))
        self.assertEqual(shown_by_the_sources() - documented, set(), "missing in docs/messages.md")

    def test_every_text_of_the_table_is_in_the_sources(self) -> None:
        platform = set().union(*(pieces_of_source(path, "@?") for path in sources("platform/gnustep/missing")))
        self.assertIn(PLATFORM_SECTION, [row.section for row in rows()])
        for row in rows():
            literals = platform if row.section == PLATFORM_SECTION else shown_by_the_sources()
            self.assertEqual(pieces_of_row(row.text) - literals, set(), f"stale in docs/messages.md: {row.text}")

    def test_every_text_has_tests_that_exist_and_contain_it(self) -> None:
        for row in rows():
            self.assertTrue(row.tests, f"the row names no test: {row.text}")
            for test in row.tests:
                with self.subTest(text=row.text, test=test):
                    places = test_sources(test)
                    self.assertTrue(places, "there is no such test")
                    said = "".join(words_of(place) for place in places)
                    self.assertEqual([piece for piece in pieces_of_row(row.text) if piece not in said], [],
                                     "the test does not contain the text")


@functools.cache
def tree() -> set[str]:
    """Returns every file and folder of the checkout, relative to its root, except built files."""
    found = set()
    for folder, folders, files in os.walk(ROOT):
        folders[:] = [name for name in folders if name not in ("build", ".git", "__pycache__")]
        found |= {str(pathlib.Path(folder, name).relative_to(ROOT)) for name in folders + files}
    return found


def anchors(document: pathlib.Path) -> set[str]:
    """Returns the anchors of a document, which code hosts derive from its headings."""
    headings = re.findall(r"^#+ (.+)$", document.read_text(), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def dead_links(document: pathlib.Path, text: str) -> Iterator[str]:
    """Yields the links to files and headings that do not exist."""
    for target in re.findall(r"\]\(([^)\s]+)\)", text):
        path, _, anchor = target.partition("#")
        place = document.parent / path if path else document
        if "://" not in target and not (place.exists() and (not anchor or anchor in anchors(place))):
            yield target


def missing_paths(text: str) -> set[str]:
    """Returns the paths below the top folder that the text names and that do not exist."""
    folders = "|".join(re.escape(path.name) for path in ROOT.iterdir() if path.is_dir() and path.name in tree())
    named = re.findall(rf"(?<![\w./~-])(?:{folders})/[\w./+-]*", re.sub(r"\]\([^)]*\)", "]", text))
    return {path.rstrip("./") for path in named} - tree()


def missing_sources(text: str) -> set[str]:
    """Returns the names of sources, with or without a path, that the text has and no file of the checkout."""
    named = re.findall(r"`(?:[^`\s]*/)?([\w.+-]+\.(?:mm|hpp|cpp|h|py|tsv|in|md|cmake))`", text)
    return set(named) - {path.rpartition("/")[2] for path in tree()}


class Documents(unittest.TestCase):
    def test_every_link_path_and_source_exists(self) -> None:
        for document in DOCUMENTS:
            text = document.read_text()
            with self.subTest(document=str(document.relative_to(ROOT))):
                self.assertEqual([*dead_links(document, text), *missing_paths(text), *missing_sources(text)], [])

    def test_readme_names_every_script(self) -> None:
        text = (ROOT / "README.md").read_text()
        scripts = sorted(path for path in tree()
                         if re.fullmatch(r"script/[^/]+", path) and os.access(ROOT / path, os.X_OK))
        self.assertEqual([path for path in scripts if not re.search(rf"{path}(?![\w-])", text)], [])

    def test_readme_lists_the_locations_in_their_order(self) -> None:
        header = (ROOT / "detection/KnownLocations.hpp").read_text()
        known = re.findall(r'^    u"([^"]+)"', header, re.M)
        readme = (ROOT / "README.md").read_text()
        listed = [path.removeprefix("~/") for path in re.findall(r"^\s+(~?/.*Quorlen.*|~/Library/.*)$", readme, re.M)]
        self.assertEqual(listed, known)


if __name__ == "__main__":
    unittest.main()
