"""Removing the product, and having second thoughts about it."""

from driver import NAME, PracticeMac, eventually, expect_equal, expect
from phrases import *


def journey_the_licence_outlives_removal_and_reinstallation() -> None:
    """Ann removes the product, installs it again without a licence and restores hers: it is back byte for byte."""
    with PracticeMac() as mac, mac.open_tool() as tool:
        licence, mode = mac.read(LICENCE), mac.mode_of(LICENCE)
        remove(tool)
        tool.rests(NOT_DETECTED)
        judge_gone(mac)
        mac.plant(licence=False)

        restore(tool, "Desktop", *mac.archives())
        tool.answer(RESTORED, "OK", "The Quorlen 3 license file has been restored.", ["OK"])
        tool.rests(DETECTED)
        expect_equal(mac.read(LICENCE), licence, "the restored licence")
        expect_equal(mac.mode_of(LICENCE), mode, "its mode")
        judge_clean(mac)


def journey_second_thoughts_then_refusal_then_removal() -> None:
    """Ann cancels, is refused, then removes after all: an archive for each confirmed try, one log file. Rights for the
    restart are refused: the tool stays, says so in its log, and nothing restarts."""
    with PracticeMac(rights="refused") as mac, mac.open_tool() as tool:
        licence = mac.read(LICENCE)
        expect_equal(tool.buttons(), CAN_REMOVE, "the buttons after the launch")

        tool.press("Remove Quorlen 3")
        tool.answer(CONFIRM, "Cancel", "This tool removes Quorlen 3 and related support files from this Mac.",
                    ["Remove Quorlen 3", "Cancel"])
        tool.rests(DETECTED)
        expect_equal(tool.buttons(), CAN_REMOVE, "the buttons after Cancel")
        tool.logged()
        expect_equal(mac.desktop(), [], "the Desktop after Cancel")

        tool.press("Remove Quorlen 3")
        tool.answer(CONFIRM, "Remove Quorlen 3")
        tool.sees_alert(NOT_REMOVED, "Please contact Vendrel Support if the problem continues.", ["OK"])
        expect_equal(tool.buttons(), DURING_A_RUN, "the buttons while the failure is shown")
        tool.press("OK")
        tool.rests(DETECTED)
        expect_equal(tool.buttons(), CAN_REMOVE, "the buttons after the refusal")
        tool.logged(*STARTED, *SAVED, *REFUSED, *ALL_FOUND, "License detected.")
        judge_kept(mac)
        expect_equal((len(mac.archives()), mac.removal_logs()), (1, []), "archives and log files after the refusal")

        mac.rights("granted")
        mac.passes_a_second()
        tool.press("Remove Quorlen 3")
        tool.answer(CONFIRM, "Remove Quorlen 3")
        tool.sees_alert(REMOVED)
        mac.rights("refused")
        tool.press("Restart Now")
        tool.rests(NOT_DETECTED)
        expect_equal(tool.buttons(), NOTHING_TO_REMOVE, "the buttons after the removal")
        tool.logged(*STARTED, *SAVED, *COMPLETED, "Restart request failed: …-128…", *NOTHING_FOUND)
        expect_equal(mac.calls("shutdown"), [], "the Mac's orders to shut down")
        judge_gone(mac)
        expect_equal([archived_licence(mac, name) for name in mac.archives()], [licence] * 2, "the archived licences")
        log, = mac.removal_logs()
        expect(removal_log(mac, log).endswith("\n" + COMPLETED[0] + "\n"), "the log file ends with the completion line")
        judge_clean(mac)


def journey_pointer_and_keyboard_alone() -> None:
    """Nothing is loaded into the tool: Ann aims by the window's layout, types Return twice, and the Mac restarts."""
    with PracticeMac() as mac, mac.open_tool(inspected=False) as tool:
        def focused() -> str:
            """The tool's window or alert that has the keyboard, or nothing."""
            return mac.shell('xdotool search --onlyvisible --name "^$1$" | grep -x "$(xdotool getwindowfocus)" || true',
                             NAME).strip()
        window = eventually(focused, "the window has the keyboard")
        untouched = mac.screen("rgb:-")
        mac.xdotool("mousemove", "--window", window, 242 + 180 // 2, 430 - 28 - 36 // 2, "mousedown", 1)
        eventually(lambda: mac.screen("rgb:-") != untouched, "the button looks pressed")
        mac.xdotool("mouseup", 1)
        question = eventually(lambda: (now := focused()) != window and now, "the question has the keyboard")
        mac.xdotool("key", "Return")
        eventually(lambda: mac.removal_logs() and focused() not in ("", window, question),
                   "the outcome has the keyboard")
        judge_gone(mac)
        mac.xdotool("key", "Return")
        expect_equal(tool.ended(), 0, "the tool's exit status")
        mac.awaits_call("shutdown")
        expect_equal(tool.said(), "", "the tool's error output")
