"""Restoring the licence from good, damaged and hostile archives."""

from driver import PracticeMac, eventually, expect_equal, expect
from phrases import *

QUESTION = "Replace existing license?"
QUESTION_EXPLAINED = "A Quorlen 3 license file already exists on this Mac. Replace it with the selected backup?"
WHY_NOT = "The selected backup did not contain a .licence file or could not be restored."
FOUND_WITH_LICENCE = [*ALL_FOUND, "License detected."]


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

        restore(tool, "Desktop", "backup.zip")
        tool.answer(QUESTION, "Replace")
        tool.answer(RESTORED, "OK")
        tool.rests(DETECTED)
        tool.logged("Restoring license from: …/Desktop/backup.zip", f"License restored: {mac.home}/{LICENCE}",
                    *FOUND_WITH_LICENCE)
        judge_clean(mac)
        expect_equal(mac.read(LICENCE), b"another licence", "the licence after replacing")
        expect_equal(mac.read("Desktop/backup.zip"), archive, "the archive")


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


def journey_the_licence_folder_is_closed() -> None:
    """Ann may not write into the licence's folder: the old licence stays, and the tool says that the copy failed."""
    archive = zip_of(("backup/.licence", b"new"))
    with PracticeMac() as mac, mac.open_tool() as tool:
        old = mac.read(LICENCE)
        mac.put("Desktop/backup.zip", archive)
        mac.shell('chown root: "${1%/*}"', LICENCE, root=True)
        restore(tool, "Desktop", "backup.zip")
        tool.answer(QUESTION, "Replace")
        tool.answer(NOT_RESTORED, "OK", WHY_NOT, ["OK"])
        tool.rests(DETECTED)
        tool.logged("Restoring license from: …", "License copy error: …", "License restore failed.",
                    *FOUND_WITH_LICENCE)
        expect_equal(mac.read(LICENCE), old, "the licence")
        expect_equal(mac.read("Desktop/backup.zip"), archive, "the archive")
        judge_clean(mac)
