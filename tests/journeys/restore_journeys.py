"""Restoring the licence from good, damaged and hostile archives."""

from driver import PracticeMac, Tool, eventually, expect_equal, expect
from phrases import *

QUESTION = "Replace existing license?"
QUESTION_EXPLAINED = "A Quorlen 3 license file already exists on this Mac. Replace it with the selected backup?"
WHY_NOT = "The selected backup did not contain a .licence file or could not be restored."
FOUND_WITH_LICENCE = [*ALL_FOUND, "License detected."]


def try_in_vain(mac: PracticeMac, tool: Tool, name: str, content: bytes) -> None:
    """Tries to restore from an unusable archive, and checks that nothing was changed."""
    before = mac.read(LICENCE)
    mac.put(f"Desktop/{name}", content)
    restore(tool, "Desktop", name)
    tool.answer(QUESTION, "Replace")
    tool.answer(NOT_RESTORED, "OK", WHY_NOT, ["OK"])
    tool.rests(DETECTED)
    tool.logged(f"Restoring license from: …/Desktop/{name}", "License restore failed.", *FOUND_WITH_LICENCE)
    expect_equal(mac.read(LICENCE), before, f"the licence after {name}")
    judge_clean(mac)
    mac.shell('rm -- "$1"', f"Desktop/{name}")


def restore_over(mac: PracticeMac, tool: Tool, name: str, content: bytes) -> None:
    """Restores from an archive over the licence that is there."""
    mac.put(f"Desktop/{name}", content)
    restore(tool, "Desktop", name)
    tool.answer(QUESTION, "Replace", QUESTION_EXPLAINED, ["Replace", "Cancel"])
    tool.answer(RESTORED, "OK")
    tool.rests(DETECTED)
    tool.logged(f"Restoring license from: …/Desktop/{name}", f"License restored: {mac.home}/{LICENCE}",
                *FOUND_WITH_LICENCE)
    judge_clean(mac)


def journey_replacing_and_declining() -> None:
    """Ann has a licence: she cancels the panel, declines to replace it, and then replaces it after all."""
    with PracticeMac() as mac, mac.open_tool() as tool:
        old = mac.read(LICENCE)
        archive = zip_of(("Quorlen-License-Backup-20260102-030405/.licence", b"another licence"))
        mac.put("Desktop/backup.zip", archive)

        tool.press("Restore License")
        tool.cancel_panel()
        tool.rests(DETECTED)

        restore(tool, "Desktop", "backup.zip")
        tool.answer(QUESTION, "Cancel", QUESTION_EXPLAINED, ["Replace", "Cancel"])
        tool.rests(DETECTED)
        tool.logged()
        expect_equal(mac.read(LICENCE), old, "the licence after declining")

        restore_over(mac, tool, "backup.zip", archive)
        expect_equal(mac.read(LICENCE), b"another licence", "the licence after replacing")
        expect_equal(mac.read("Desktop/backup.zip"), archive, "the archive")


def journey_without_a_licence_nothing_is_asked() -> None:
    """The product was never installed: a restore makes the folder and asks nothing."""
    with PracticeMac(locations="none") as mac, mac.open_tool() as tool:
        mac.put("Desktop/backup.zip", zip_of((".licence", b"mine")))
        restore(tool, "Desktop", "backup.zip")
        tool.answer(RESTORED, "OK")
        tool.rests("Quorlen 3 detected. 1 related item(s) found. License detected.")
        tool.has_buttons(CAN_REMOVE)
        expect_equal(mac.read(LICENCE), b"mine", "the licence")


def journey_files_that_are_no_archives() -> None:
    """A damaged archive, an empty archive, an empty file and a text named .zip: the tool refuses each, and the licence
    is unchanged."""
    whole = zip_of(("folder/.licence", bytes(range(256)) * 40))
    with PracticeMac() as mac, mac.open_tool() as tool:
        try_in_vain(mac, tool, "damaged.zip", whole[:len(whole) // 2])
        try_in_vain(mac, tool, "empty.zip", zip_of())
        try_in_vain(mac, tool, "nothing.zip", b"")
        try_in_vain(mac, tool, "text.zip", b"Dear Ann,\nhere is your licence.\n")


def journey_archives_without_a_licence() -> None:
    """Archives without a ".licence": the names of their entries differ in a letter, in case or in length."""
    with PracticeMac() as mac, mac.open_tool() as tool:
        try_in_vain(mac, tool, "other.zip", zip_of(("folder/readme.txt", b"text")))
        try_in_vain(mac, tool, "like.zip", zip_of(*((f"{n}/{name}", b"x") for n, name in enumerate(
            (".license", ".LICENCE", ".Licence", "licence", "a.licence", ".licence.txt", ".licence ")))))


def journey_archives_with_a_licence_in_odd_places() -> None:
    """A licence ten folders deep, two licences, and a folder named ".licence": the tool restores the first that it
    finds."""
    with PracticeMac() as mac, mac.open_tool() as tool:
        restore_over(mac, tool, "deep.zip", zip_of(("1/2/3/4/5/6/7/8/9/10/.licence", b"deep down")))
        expect_equal(mac.read(LICENCE), b"deep down", "the licence from ten folders deep")

        restore_over(mac, tool, "several.zip", zip_of(("a/.licence", b"of a"), ("b/.licence", b"of b")))
        expect(mac.read(LICENCE) in (b"of a", b"of b"), "the licence is one of the several")

        restore_over(mac, tool, "folder.zip", zip_of((".licence/inside.txt", b"in a folder")))
        expect_equal(mac.read(f"{LICENCE}/inside.txt"), b"in a folder", "the folder that took the licence's place")


def journey_archives_that_climb_out() -> None:
    """Hostile archives with entries in "..", at absolute paths, or behind a link: the tool writes nothing outside its
    temporary folder and the licence's place."""
    link = 0o120777
    hostile = {
        "climbing.zip": [("../../climbed", b"evil"), ("../../../../../Users/ann/Desktop/climbed", b"evil"),
                         ("a/../../../climbed", b"evil")],
        "absolute.zip": [("/tmp/climbed", b"evil"), ("/Users/ann/climbed", b"evil")],
        "links.zip": [("out", b"/Users/ann/Desktop", link), ("out/climbed", b"evil")],
    }
    with PracticeMac() as mac, mac.open_tool() as tool:
        licence = mac.read(LICENCE)
        for name, members in hostile.items():
            before = mac.report()
            mac.put(f"Desktop/{name}", zip_of(*members, (".licence", b"bait")))
            restore(tool, "Desktop", name)
            tool.answer(QUESTION, "Replace")
            outcome = eventually(lambda: (w := tool.modal_window()) and next(
                (text for text in tool.texts(w) if text in (RESTORED, NOT_RESTORED)), None), "an outcome")
            tool.answer(outcome, "OK")
            tool.rests(DETECTED)

            expect_equal(mac.read(LICENCE), b"bait" if outcome == RESTORED else licence, f"the licence after {name}")
            licence = mac.read(LICENCE)
            expect_equal(mac.desktop(), [name], "the Desktop")
            after = mac.report()
            for where in ("new_elsewhere", "lost"):
                expect_equal(after[where], before[where], f"{where.replace('_', ' ')} after {name}")
            judge_clean(mac)
            mac.shell('rm -- "$1"', f"Desktop/{name}")
        climbed = mac.shell("find / -xdev -name climbed 2>/dev/null || true", root=True)
        expect_equal(climbed, "", "what the archives wrote outside")


def journey_a_link_named_licence() -> None:
    """The archive's licence is a link to a file of Ann's: only the link is copied, and the file stays as it is."""
    with PracticeMac() as mac, mac.open_tool() as tool:
        mac.put("Documents/diary.txt", b"Dear diary")
        restore_over(mac, tool, "link.zip", zip_of((".licence", b"/Users/ann/Documents/diary.txt", 0o120777)))
        expect_equal(mac.shell('readlink -- "$1"', LICENCE), "/Users/ann/Documents/diary.txt\n", "what the licence links to")
        restore_over(mac, tool, "plain.zip", zip_of((".licence", b"plain")))
        expect_equal(mac.read(LICENCE), b"plain", "the licence")
        expect_equal(mac.read("Documents/diary.txt"), b"Dear diary", "the file that the link led to")


def journey_the_copy_fails_after_the_old_licence_is_gone() -> None:
    """The archive's licence can't be read. The old one is gone by then, as designed; the archive is untouched."""
    archive = zip_of(("backup/.licence", b"unreadable", 0o100000))
    with PracticeMac() as mac, mac.open_tool() as tool:
        mac.put("Desktop/locked.zip", archive)
        restore(tool, "Desktop", "locked.zip")
        tool.answer(QUESTION, "Replace")
        tool.answer(NOT_RESTORED, "OK", WHY_NOT)
        tool.rests(DETECTED_WITHOUT_LICENCE)
        tool.logged("Restoring license from: …", "License copy error: …", "License restore failed.", *ALL_FOUND)
        expect(not mac.exists(LICENCE), "no licence is left")
        expect_equal(mac.read("Desktop/locked.zip"), archive, "the archive")
        judge_clean(mac)


def journey_the_licence_folder_is_closed() -> None:
    """Ann may not write into the licence's folder: the old licence stays, and the tool says that the copy failed."""
    archive = zip_of(("backup/.licence", b"new"))
    with PracticeMac() as mac, mac.open_tool() as tool:
        old = mac.read(LICENCE)
        mac.put("Desktop/backup.zip", archive)
        mac.shell('chown root: "${1%/*}"', LICENCE, root=True)
        restore(tool, "Desktop", "backup.zip")
        tool.answer(QUESTION, "Replace")
        tool.answer(NOT_RESTORED, "OK", WHY_NOT)
        tool.rests(DETECTED)
        tool.logged("Restoring license from: …", "License copy error: …", "License restore failed.",
                    *FOUND_WITH_LICENCE)
        expect_equal(mac.read(LICENCE), old, "the licence")
        expect_equal(mac.read("Desktop/backup.zip"), archive, "the archive")
        judge_clean(mac)
