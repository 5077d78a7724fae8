"""The window as such: what it shows first, its support page, and its end."""

import re
from collections.abc import Callable

from driver import ROOT, PracticeMac, Tool, expect, expect_equal, matches
from phrases import *


def project_version() -> str:
    """The version that the project states."""
    return re.search(r"^project\(.*VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE)[1]


def journey_first_look() -> None:
    """Ann opens the tool: the window says what it found and offers to remove it. The error output stays empty."""
    with PracticeMac(locations="1,4,11") as mac, mac.open_tool() as tool:
        expect_equal(tool.status(), "Quorlen 3 detected. 3 related item(s) found. License detected.", "the status line")
        expect_equal(tool.log().splitlines(), [f"version: {project_version()}", "updated: 2026.06.14", "Ready.",
                                               "Detected 3 Quorlen 3 item(s).", "License detected."], "the log")
        expect_equal(tool.buttons(), CAN_REMOVE, "the buttons")
        for text in ("Quorlen 3 Removal Tool", "This tool removes Quorlen 3 and related support files from this Mac.",
                     "?", "Restore License", "Cancel"):
            expect(text in tool.texts(tool.main_window()), f"the window shows {text!r}")
        images = [v["image"] for v in tool.views(tool.main_window()) if v["class"] == "NSImageView"]
        expect_equal(images, ["icon_removal_2024", "quorlen-typeface_1024"], "the images")
        expect_equal(tool.said(), "", "the tool's error output")


def journey_support_page() -> None:
    """The "?" button opens the support page in the browser, and nothing else happens."""
    with PracticeMac() as mac, mac.open_tool() as tool:
        tool.press("?")
        mac.awaits_call("xdg-open")
        (address,), = mac.calls("xdg-open")
        expect(matches(address, "https://…/tool_qr3_legacy_removal_tool"), f"the support page: {address}")
        tool.rests(DETECTED)
        tool.logged()


def judge_ended_well(tool: Tool) -> None:
    """Judges that the tool ended by itself with status 0, having removed the one monitor that it had installed."""
    expect_equal(tool.ended(), 0, "the tool's exit status")
    words = [line.split() for line in tool.mac.read(tool.witness).decode().splitlines()]
    expect_equal([word for word, _ in words], ["added", "removed"], "what became of the event monitor")
    expect_equal(words[0][1], words[1][1], "the monitor that was removed")


def ends_without_a_trace(leave: Callable[[Tool], None]) -> None:
    """Leaves the idle tool: it ends, and has changed nothing."""
    with PracticeMac() as mac, mac.open_tool() as tool:
        leave(tool)
        judge_ended_well(tool)
        judge_kept(mac)
        expect_equal((mac.desktop(), mac.calls()), ([], []), "traces")


def journey_closing_the_window() -> None:
    """Ann closes the idle window: the tool ends."""
    ends_without_a_trace(Tool.close_window)


def journey_pressing_cancel() -> None:
    """Ann presses "Cancel": the tool ends."""
    ends_without_a_trace(lambda tool: tool.press("Cancel"))


def journey_closing_an_alert_confirms_nothing() -> None:
    """Closing the question by its title bar is no yes, and the window can't be used behind it."""
    with PracticeMac() as mac, mac.open_tool() as tool:
        tool.press("Remove Quorlen 3")
        tool.sees_alert(CONFIRM)
        tool.close_window()
        tool.rests(DETECTED)
        tool.logged()
        tool.press("Remove Quorlen 3")
        tool.sees_alert(CONFIRM)
        tool.press_in_vain("Cancel")
        tool.sees_alert(CONFIRM)
        tool.press("Cancel")
        tool.rests(DETECTED)
        expect_equal((mac.desktop(), mac.calls()), ([], []), "traces")
