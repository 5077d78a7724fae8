"""Home folders with names that a careless program would misread as root. In each the product is removed for real."""

from person import PracticeMac, same
from phrases import *


def removed_from(home):
    """Removes the product from a home of that name; neighbours, and homes with similar names, keep their files."""
    with PracticeMac(home=home) as mac, mac.open_tool() as tool:
        licence = mac.bytes_of(LICENCE)
        same(tool.status(), DETECTED, "the status line")
        remove(tool)
        tool.rests(NOT_DETECTED)
        tool.logged(*STARTED, *SAVED, *COMPLETED, *NOTHING_FOUND)
        judge_gone(mac)
        facts = mac.report()
        for what in ("lost", "changed", "new_elsewhere"):
            same(facts[what], [], f"what else is {what.replace('_', ' ')}")
        same([archived_licence(mac, name) for name in mac.archives()], [licence], "the licence in the archive")
        same(len(mac.removal_logs()), 1, "log files")


def journey_home_with_an_apostrophe():
    """/Users/o'neil"""
    removed_from("o'neil")


def journey_home_with_a_blank():
    """/Users/ann lee"""
    removed_from("ann lee")


def journey_home_with_a_substitution():
    """/Users/$(touch evil)"""
    removed_from("$(touch evil)")


def journey_home_with_backquotes():
    """/Users/`touch evil`"""
    removed_from("`touch evil`")


def journey_home_with_double_quotes():
    """/Users/"ann\""""
    removed_from('"ann"')


def journey_home_with_a_backslash():
    """/Users/an\\n"""
    removed_from("an\\n")


def journey_home_with_letters_from_elsewhere():
    """/Users/Ånn Łódź 日本"""
    removed_from("Ånn Łódź 日本")
