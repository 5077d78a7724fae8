"""Removals on a Mac whose archiver cannot be started."""

from driver import PracticeMac, expect_equal
from phrases import *


def without_an_archiver(mode: str) -> None:
    """A removal while the archiver cannot be started: it is whole, and the staging folder stays with the licence in it."""
    with PracticeMac() as mac:
        licence = mac.read(LICENCE)
        mac.tool_of_the_system("ditto", mode)
        with mac.open_tool() as tool:
            remove(tool)
            tool.rests(NOT_DETECTED)
            tool.logged(*STARTED, "License detected.", "License backup skipped: …ditto…", *COMPLETED, *NOTHING_FOUND)
            judge_gone(mac)
            expect_equal((mac.archives(), len(mac.removal_logs())), ([], 1), "archives and log files")
            expect_equal([mac.read(f"{path}/.licence") for path in mac.temporary_folders()], [licence], "staged licences")


def journey_archiver_missing() -> None:
    """There is no archiver: the backup is skipped with the reason, and its staging folder still has the licence."""
    without_an_archiver("missing")


def journey_archiver_is_no_program() -> None:
    """The archiver is a broken file: the backup is skipped with the reason, and its staging folder has the licence."""
    without_an_archiver("not-a-program")
