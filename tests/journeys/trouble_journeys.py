"""Removals on a Mac where something is wrong: the Desktop, the archiver, the way to administrator rights."""

from person import PracticeMac, same
from phrases import *

NOT_SAVED = ["License detected.", "License backup was not created."]


def remove_without_backup(mac, tool, *backup_lines):
    """Removes the product while the backup can't be made, and judges that the removal is whole and the log tells it."""
    remove(tool)
    tool.rests(NOT_DETECTED)
    tool.logged(*STARTED, *backup_lines, *COMPLETED, *NOTHING_FOUND)
    judge_gone(mac)
    same([a for a in mac.report()["archives"] if "problem" not in a], [], "archives that can be opened")


def on_a_desktop_that_is(state):
    """A removal while nothing can be written to the Desktop. The log file is missing without a word, as designed."""
    with PracticeMac() as mac:
        mac.desktop_becomes(state)
        with mac.open_tool() as tool:
            remove_without_backup(mac, tool, *NOT_SAVED)
            same(mac.removal_logs(), [], "log files")
            judge_clean(mac)


def journey_desktop_missing():
    """The Desktop folder is missing: the removal succeeds, the log tells that no backup was made."""
    on_a_desktop_that_is("missing")


def journey_desktop_read_only():
    """The Desktop can't be written to: the removal succeeds, the log tells that no backup was made."""
    on_a_desktop_that_is("read-only")


def journey_desktop_full():
    """The disk of the Desktop is full: the removal succeeds, the log tells that no backup was made."""
    on_a_desktop_that_is("full")


def with_an_archiver_that(mode, *backup_lines, left=0):
    """A removal while the archiver misbehaves; `left` staging folders stay, with the licence in them."""
    with PracticeMac() as mac:
        licence = mac.bytes_of(LICENCE)
        mac.tool_of_the_system("ditto", mode)
        with mac.open_tool() as tool:
            remove_without_backup(mac, tool, *backup_lines)
            same(len(mac.removal_logs()), 1, "log files")
            copies = mac.temporary_folders()
            same(len(copies), left, "staging folders left")
            for name in copies:
                path = mac.shell('find /tmp -name "$1"', name, root=True).strip()
                same(mac.bytes_of(f"{path}/.licence"), licence, "the licence in the staging folder")


def journey_archiver_missing():
    """There is no archiver: the backup is skipped with the reason, and its staging folder still has the licence."""
    with_an_archiver_that("missing", "License detected.", "License backup skipped: …ditto…", left=1)


def journey_archiver_is_no_program():
    """The archiver is a broken file: the backup is skipped with the reason, and its staging folder has the licence."""
    with_an_archiver_that("not-a-program", "License detected.", "License backup skipped: …ditto…", left=1)


def journey_archiver_fails():
    """The archiver fails: no backup, and the log says so."""
    with_an_archiver_that("fails", *NOT_SAVED)


def journey_archiver_makes_no_file():
    """The archiver claims success but made no file: no backup, and the log says so."""
    with_an_archiver_that("silent", *NOT_SAVED)


def journey_archiver_is_killed():
    """The archiver hangs, and someone kills it: no backup, the removal goes on from there."""
    with PracticeMac() as mac:
        mac.tool_of_the_system("ditto", "hangs")
        with mac.open_tool() as tool:
            tool.press("Remove Quorlen 3")
            tool.answer(CONFIRM, "Remove Quorlen 3")
            mac.awaits_call("ditto")
            same(tool.look(), None, "what can be seen of the busy tool")
            mac.shell("pkill -KILL -f '[/]usr/bin/ditto'", root=True)
            tool.answer(REMOVED, "Restart Later")
            tool.rests(NOT_DETECTED)
            tool.logged(*STARTED, *NOT_SAVED, *COMPLETED, *NOTHING_FOUND)
            judge_gone(mac)
            judge_clean(mac)


def journey_restore_without_an_archiver():
    """There is no archiver to restore with: the attempt is skipped with the reason, and nothing was touched."""
    with PracticeMac() as mac:
        old = mac.bytes_of(LICENCE)
        mac.put("Desktop/backup.zip", zip_of((".licence", b"new")))
        mac.tool_of_the_system("ditto", "missing")
        with mac.open_tool() as tool:
            restore(tool, "Desktop", "backup.zip")
            tool.answer("Replace existing license?", "Replace")
            tool.answer(NOT_RESTORED, "OK")
            tool.rests(DETECTED)
            tool.logged("Restoring license from: …", "License restore skipped: …ditto…", "License restore failed.",
                        *ALL_FOUND, "License detected.")
            same(mac.bytes_of(LICENCE), old, "the licence")
            judge_clean(mac)


def journey_no_means_to_ask_for_rights():
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
            same((len(mac.archives()), mac.removal_logs()), (1, []), "archives and log files")
