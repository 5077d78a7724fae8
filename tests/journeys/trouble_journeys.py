"""A removal on a Mac whose archiver cannot be started."""

from driver import PracticeMac, expect_equal
from phrases import *


def journey_archiver_missing() -> None:
    """There is no archiver: the backup is skipped with the reason, and its staging folder still has the licence."""
    with PracticeMac() as mac:
        licence = mac.read(LICENCE)
        mac.tool_of_the_system("ditto", "missing")
        with mac.open_tool() as tool:
            remove(tool)
            tool.rests(NOT_DETECTED)
            tool.logged(*STARTED, "License detected.", "License backup skipped: …ditto…", *COMPLETED, *NOTHING_FOUND)
            judge_gone(mac)
            expect_equal((mac.archives(), len(mac.removal_logs())), ([], 1), "archives and log files")
            expect_equal([mac.read(f"{path}/.licence") for path in mac.temporary_folders()], [licence], "staged copies")
