"""Restoring the licence from good, damaged and hostile archives."""

from driver import PracticeMac, eventually, expect_equal, expect
from phrases import *

QUESTION = "Replace existing license?"
QUESTION_EXPLAINED = "A Quorlen 3 license file already exists on this Mac. Replace it with the selected backup?"
WHY_NOT = "The selected backup did not contain a .licence file or could not be restored."


def journey_replacing_and_declining() -> None:
    """Ann has a licence: she cancels the panel, declines to replace it, may not write into its folder, so that the old
    one stays and the tool says that the copy failed, and then replaces it after all."""
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

        for owner, outcome, licence, lines in (
                ("root", NOT_RESTORED, old, ["License copy error: …", "License restore failed."]),
                ("ann", RESTORED, b"another licence", [f"License restored: {mac.home}/{LICENCE}"])):
            mac.shell('chown "$1": "${2%/*}"', owner, LICENCE, root=True)
            restore(tool, "Desktop", "backup.zip")
            tool.answer(QUESTION, "Replace")
            tool.answer(outcome, "OK", WHY_NOT if outcome == NOT_RESTORED else None, ["OK"])
            tool.rests(DETECTED)
            tool.logged("Restoring license from: …/Desktop/backup.zip", *lines, *ALL_FOUND, "License detected.")
            expect_equal(mac.read(LICENCE), licence, f"the licence in a folder of {owner}")
            expect_equal(mac.read("Desktop/backup.zip"), archive, "the archive")
            judge_clean(mac)


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
            mac.put(f"Desktop/{name}", zip_of(*members, (".licence", name.encode())))
            restore(tool, "Desktop", name)
            tool.answer(QUESTION, "Replace")
            outcome = eventually(lambda: (w := tool.modal_window()) and next(
                (text for text in tool.texts(w) if text in (RESTORED, NOT_RESTORED)), None), "an outcome")
            tool.answer(outcome, "OK")
            tool.rests(DETECTED)
            licence = name.encode() if outcome == RESTORED else licence
            expect_equal(mac.read(LICENCE), licence, f"the licence after {name}")
        expect_equal(mac.desktop(), sorted(hostile), "the Desktop")
        facts = mac.report()
        expect_equal((facts["new_elsewhere"], facts["lost"]), ([], []), "other files")
        judge_clean(mac)
        climbed = mac.shell("find / -xdev -name climbed 2>/dev/null || true", root=True)
        expect_equal(climbed, "", "what the archives wrote outside")
