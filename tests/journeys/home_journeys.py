"""Home folders with names that a careless program would misread as root. In each the product is removed for real."""

from driver import PracticeMac, expect_equal
from phrases import *


def removed_from(home: str) -> None:
    """Removes the product from a home of that name; neighbours, and homes with similar names, keep their files."""
    with PracticeMac(home=home) as mac, mac.open_tool() as tool:
        licence = mac.read(LICENCE)
        expect_equal(tool.status(), DETECTED, "the status line")
        remove(tool)
        tool.rests(NOT_DETECTED)
        tool.logged(*STARTED, *SAVED, *COMPLETED, *NOTHING_FOUND)
        judge_gone(mac)
        facts = mac.report()
        for what in ("lost", "changed", "new_elsewhere"):
            expect_equal(facts[what], [], f"what else is {what.replace('_', ' ')}")
        expect_equal([archived_licence(mac, name) for name in mac.archives()], [licence], "the licence in the archive")
        expect_equal(len(mac.removal_logs()), 1, "log files")


def journey_home_with_an_apostrophe() -> None:
    """/Users/o'neil"""
    removed_from("o'neil")


def journey_home_with_a_blank() -> None:
    """/Users/ann lee"""
    removed_from("ann lee")


def journey_home_with_a_substitution() -> None:
    """/Users/$(touch evil)"""
    removed_from("$(touch evil)")


def journey_home_with_backquotes() -> None:
    """/Users/`touch evil`"""
    removed_from("`touch evil`")


def journey_home_with_double_quotes() -> None:
    """/Users/"ann\""""
    removed_from('"ann"')


def journey_home_with_a_backslash() -> None:
    """/Users/an\\n"""
    removed_from("an\\n")


def journey_home_with_letters_from_elsewhere() -> None:
    """/Users/Ånn Łódź 日本"""
    removed_from("Ånn Łódź 日本")
