"""Removals on a Mac where something is wrong: the Desktop, the archiver, the way to administrator rights."""

from driver import PracticeMac, Tool, expect_equal
from phrases import *

NOT_SAVED = ["License detected.", "License backup was not created."]


def remove_without_backup(mac: PracticeMac, tool: Tool, *backup_lines: str) -> None:
    """Removes the product while the backup can't be made, and judges that the removal is whole and the log tells it."""
    remove(tool)
    tool.rests(NOT_DETECTED)
    tool.logged(*STARTED, *backup_lines, *COMPLETED, *NOTHING_FOUND)
    judge_gone(mac)
    expect_equal([a for a in mac.report()["archives"] if "problem" not in a], [], "archives that can be opened")


def on_a_desktop_that_is(state: str) -> None:
    """A removal while nothing can be written to the Desktop. The log file is missing without a word, as designed."""
    with PracticeMac() as mac:
        mac.desktop_becomes(state)
        with mac.open_tool() as tool:
            remove_without_backup(mac, tool, *NOT_SAVED)
            expect_equal(mac.removal_logs(), [], "log files")
            judge_clean(mac)


def journey_desktop_missing() -> None:
    """The Desktop folder is missing: the removal succeeds, the log tells that no backup was made."""
    on_a_desktop_that_is("missing")


def journey_desktop_read_only() -> None:
    """The Desktop can't be written to: the removal succeeds, the log tells that no backup was made."""
    on_a_desktop_that_is("read-only")


def journey_desktop_full() -> None:
    """The disk of the Desktop is full: the removal succeeds, the log tells that no backup was made."""
    on_a_desktop_that_is("full")


def with_an_archiver_that(mode: str, *backup_lines: str, left: int = 0) -> None:
    """A removal while the archiver misbehaves; `left` staging folders stay, with the licence in them."""
    with PracticeMac() as mac:
        licence = mac.read(LICENCE)
        mac.tool_of_the_system("ditto", mode)
        with mac.open_tool() as tool:
            remove_without_backup(mac, tool, *backup_lines)
            expect_equal(len(mac.removal_logs()), 1, "log files")
            copies = mac.temporary_folders()
            expect_equal(len(copies), left, "staging folders left")
            for path in copies:
                expect_equal(mac.read(f"{path}/.licence"), licence, "the licence in the staging folder")


def journey_archiver_missing() -> None:
    """There is no archiver: the backup is skipped with the reason, and its staging folder still has the licence."""
    with_an_archiver_that("missing", "License detected.", "License backup skipped: …ditto…", left=1)


def journey_archiver_is_no_program() -> None:
    """The archiver is a broken file: the backup is skipped with the reason, and its staging folder has the licence."""
    with_an_archiver_that("not-a-program", "License detected.", "License backup skipped: …ditto…", left=1)


def journey_archiver_fails() -> None:
    """The archiver fails: no backup, and the log says so."""
    with_an_archiver_that("fails", *NOT_SAVED)


def journey_archiver_makes_no_file() -> None:
    """The archiver claims success but made no file: no backup, and the log says so."""
    with_an_archiver_that("silent", *NOT_SAVED)


def journey_archiver_is_killed() -> None:
    """The archiver hangs, and someone kills it: no backup, the removal goes on from there."""
    with PracticeMac() as mac:
        mac.tool_of_the_system("ditto", "hangs")
        with mac.open_tool() as tool:
            tool.press("Remove Quorlen 3")
            tool.answer(CONFIRM, "Remove Quorlen 3")
            mac.awaits_call("ditto")
            expect_equal(tool.look(), None, "what can be seen of the busy tool")
            mac.shell("pkill -KILL -f '[/]usr/bin/ditto'", root=True)
            tool.answer(REMOVED, "Restart Later")
            tool.rests(NOT_DETECTED)
            tool.logged(*STARTED, *NOT_SAVED, *COMPLETED, *NOTHING_FOUND)
            judge_gone(mac)
            judge_clean(mac)


def journey_restore_without_an_archiver() -> None:
    """There is no archiver to restore with: the attempt is skipped with the reason, and nothing was touched."""
    with PracticeMac() as mac:
        old = mac.read(LICENCE)
        mac.put("Desktop/backup.zip", zip_of((".licence", b"new")))
        mac.tool_of_the_system("ditto", "missing")
        with mac.open_tool() as tool:
            restore(tool, "Desktop", "backup.zip")
            tool.answer("Replace existing license?", "Replace")
            tool.answer(NOT_RESTORED, "OK")
            tool.rests(DETECTED)
            tool.logged("Restoring license from: …", "License restore skipped: …ditto…", "License restore failed.",
                        *ALL_FOUND, "License detected.")
            expect_equal(mac.read(LICENCE), old, "the licence")
            judge_clean(mac)


def journey_no_means_to_ask_for_rights() -> None:
    """The system's way to administrator rights is missing: an ordinary failure, and nothing is removed."""
    with PracticeMac() as mac:
        mac.tool_of_the_system("pkexec", "missing")
        with mac.open_tool() as tool:
            tool.press("Remove Quorlen 3")
            tool.answer(CONFIRM, "Remove Quorlen 3")
            tool.answer(NOT_REMOVED, "OK")
            tool.rests(DETECTED)
            tool.logged(*STARTED, *SAVED, "Removal encountered an error: …", *ALL_FOUND, "License detected.")
            judge_kept(mac)
            expect_equal((len(mac.archives()), mac.removal_logs()), (1, []), "archives and log files")
