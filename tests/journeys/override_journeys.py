"""The override: shown while Shift is held and nothing is detected."""

from driver import PracticeMac, expect_equal
from phrases import *

EXPLAINED = "Quorlen 3 was not detected in the standard locations. " \
    "Continue only if Vendrel Support directed you to run cleanup."


def journey_shift_reveals_and_caps_lock_does_not() -> None:
    """With nothing installed Shift shows the override and letting go hides it. Caps Lock does nothing."""
    with PracticeMac(locations="none") as mac, mac.open_tool() as tool:
        expect_equal(tool.buttons(), NOTHING_TO_REMOVE, "the buttons after the launch")
        with tool.shift_held():
            tool.has_buttons(OVERRIDE_SHOWN)
        tool.has_buttons(NOTHING_TO_REMOVE)
        tool.key("Caps_Lock")
        tool.moves_pointer()
        expect_equal(tool.buttons(), NOTHING_TO_REMOVE, "the buttons under Caps Lock")
        tool.key("Caps_Lock")
        with tool.shift_held("Shift_R"):
            tool.has_buttons(OVERRIDE_SHOWN)
        tool.has_buttons(NOTHING_TO_REMOVE)
        tool.logged()


def journey_shift_changes_nothing_while_the_product_is_there() -> None:
    """With the product installed Shift shows nothing new."""
    with PracticeMac(locations="8") as mac, mac.open_tool() as tool:
        with tool.shift_held():
            tool.moves_pointer()
            expect_equal(tool.buttons(), CAN_REMOVE, "the buttons while Shift is held")


def journey_cleanup_with_nothing_installed() -> None:
    """Told so by the support, Ann runs the cleanup on a Mac that has nothing of the product."""
    with PracticeMac(locations="none", agent=False, daemon=False) as mac, mac.open_tool() as tool:
        with tool.shift_held():
            tool.press("Override Cleanup")
        tool.sees_alert(CONFIRM_OVERRIDE, EXPLAINED, ["Run Cleanup", "Cancel"])
        tool.press("Cancel")
        tool.rests(NOT_DETECTED)
        tool.logged()
        expect_equal(mac.calls(), [], "calls of the system's tools after Cancel")

        with tool.shift_held():
            tool.press("Override Cleanup")
        tool.answer(CONFIRM_OVERRIDE, "Run Cleanup")
        tool.sees_alert(REMOVED, "A restart is recommended to complete cleanup.", ["Restart Now", "Restart Later"])
        expect_equal(tool.buttons()["Override Cleanup"][1], "disabled", "the override button while the outcome is shown")
        tool.press("Restart Later")
        tool.rests(NOT_DETECTED)
        tool.has_buttons(NOTHING_TO_REMOVE)
        tool.logged("Starting override cleanup...", "No license file found to back up.", *COMPLETED, *NOTHING_FOUND)
        expect_equal(mac.desktop(), mac.removal_logs(), "the Desktop")
        expect_equal(len(mac.removal_logs()), 1, "log files")
        judge_clean(mac)


def journey_cleanup_of_parts_that_detection_does_not_know() -> None:
    """The files are gone, but the agent, the daemon and a helper still run, and a link leads nowhere: all that ends."""
    with PracticeMac() as mac:
        mac.shell('rm -rf -- "$@"; ln -s /nowhere "${@: -1}"', *mac.locations(), root=True)
        mac.shell('(exec -a com.vendrel.QuorlenDaemon-helper sleep infinity) >/dev/null 2>&1 &', root=True)
        with mac.open_tool() as tool:
            expect_equal(tool.status(), NOT_DETECTED, "the status line")
            expect_equal(mac.running(), {"agent": 1, "daemon": 2}, "what runs")
            with tool.shift_held():
                tool.press("Override Cleanup")
            tool.answer(CONFIRM_OVERRIDE, "Run Cleanup")
            tool.answer(REMOVED, "Restart Later")
            tool.rests(NOT_DETECTED)
            judge_gone(mac)
            expect_equal(mac.running(), {"agent": 0, "daemon": 0}, "what still runs")


def journey_the_product_appears_while_shift_is_held() -> None:
    """The product is installed while Shift is held: the override asks as if nothing were there, and removes it all."""
    with PracticeMac(locations="none") as mac, mac.open_tool() as tool:
        with tool.shift_held():
            tool.has_buttons(OVERRIDE_SHOWN)
            mac.plant()
            licence = mac.read(LICENCE)
            tool.press("Override Cleanup")
            tool.answer(CONFIRM_OVERRIDE, "Run Cleanup", EXPLAINED)
            tool.answer(REMOVED, "Restart Later")
            tool.rests(NOT_DETECTED)
            tool.has_buttons(OVERRIDE_SHOWN)
        tool.has_buttons(NOTHING_TO_REMOVE)
        tool.logged("Starting override cleanup...", *SAVED, *COMPLETED, *NOTHING_FOUND)
        judge_gone(mac)
        expect_equal([archived_licence(mac, name) for name in mac.archives()], [licence], "the licence in the archive")


def journey_a_new_scan_hides_the_override_although_shift_is_held() -> None:
    """A refused override leaves the product there: the scan after it shows the ordinary button even under Shift."""
    with PracticeMac(locations="none", rights="refused") as mac, mac.open_tool() as tool:
        with tool.shift_held():
            tool.has_buttons(OVERRIDE_SHOWN)
            mac.plant()
            tool.press("Override Cleanup")
            tool.answer(CONFIRM_OVERRIDE, "Run Cleanup")
            tool.answer(NOT_REMOVED, "OK")
            tool.rests(DETECTED)
            tool.has_buttons(CAN_REMOVE)
        judge_kept(mac)
