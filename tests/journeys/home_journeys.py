"""A home folder with a name that a careless program would misread as root."""

from driver import PracticeMac, expect_equal
from phrases import *


def journey_home_with_an_odd_name() -> None:
    """The name has an apostrophe, a blank, substitutions, quotes, a backslash and letters from elsewhere. The product
    is removed for real; neighbours, and homes with similar names, keep their files."""
    with PracticeMac(home='o\'neil $(touch evil) `touch evil` "an\\n" Łódź 日本') as mac, mac.open_tool() as tool:
        licence = mac.read(LICENCE)
        expect_equal(tool.status(), DETECTED, "the status line")
        remove(tool)
        tool.rests(NOT_DETECTED)
        tool.logged(*STARTED, *SAVED, *COMPLETED, *NOTHING_FOUND)
        judge_gone(mac)
        facts = mac.report()
        expect_equal([facts[what] for what in ("lost", "changed", "new_elsewhere")], [[], [], []], "other files")
        expect_equal([archived_licence(mac, name) for name in mac.archives()], [licence], "the licence in the archive")
        expect_equal(len(mac.removal_logs()), 1, "log files")
