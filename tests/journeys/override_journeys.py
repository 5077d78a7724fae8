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


def journey_cleanup_with_nothing_installed() -> None:
    """Someone else removes the product while the window is open: the click finds nothing and says so. Then, told so by
    the support, Ann runs the cleanup."""
    with PracticeMac(agent=False, daemon=False) as mac, mac.open_tool() as tool:
        mac.shell('rm -rf -- "$@"', *mac.locations(), root=True)
        expect_equal(tool.buttons(), CAN_REMOVE, "the buttons, which do not know yet")
        tool.press("Remove Quorlen 3")
        tool.answer(NOT_DETECTED, "OK",
                    "Cleanup is disabled because no Quorlen 3 files were found in the standard locations.", ["OK"])
        tool.rests(NOT_DETECTED)
        tool.has_buttons(NOTHING_TO_REMOVE)
        tool.logged(*NOTHING_FOUND)

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
        expect_equal(tool.buttons()["Override Cleanup"][1], "disabled", "the override button behind the outcome")
        tool.press("Restart Later")
        tool.rests(NOT_DETECTED)
        tool.has_buttons(NOTHING_TO_REMOVE)
        tool.logged("Starting override cleanup...", "No license file found to back up.", *COMPLETED, *NOTHING_FOUND)
        expect_equal(mac.desktop(), mac.removal_logs(), "the Desktop")
        expect_equal(len(mac.removal_logs()), 1, "log files")
        judge_clean(mac)
