"""Reads the running menu bar of the shipped slice item by item, uses it, and tests the parts of the controller that no
journey reaches: see Questions.mm.

On Debian the Command key is Alt. GNUstep decides here which items are enabled, and that "Quit" ends the tool even while
an alert is open; AppKit refuses to quit then.
"""

import unittest

import slices
import driver
import phrases
import window_journeys

COMMAND, COMMAND_AND_OPTION = 1 << 20, 1 << 20 | 1 << 19
SEPARATOR = ("-----------", "", "", COMMAND)  # As GNUstep has it.

# The expected menu bar: title, selector, key equivalent, modifiers. A menu's title comes before its items.
MENU_BAR = [
    (slices.PRODUCT, "", "", COMMAND),
    (f"About {slices.PRODUCT}", "orderFrontStandardAboutPanel:", "", COMMAND),
    SEPARATOR,
    (f"Hide {slices.PRODUCT}", "hide:", "h", COMMAND),
    ("Hide Others", "hideOtherApplications:", "h", COMMAND_AND_OPTION),
    ("Show All", "unhideAllApplications:", "", COMMAND),
    SEPARATOR,
    (f"Quit {slices.PRODUCT}", "terminate:", "q", COMMAND),
    ("Edit", "", "", COMMAND),
    ("Cut", "cut:", "x", COMMAND),
    ("Copy", "copy:", "c", COMMAND),
    ("Paste", "paste:", "v", COMMAND),
    ("Select All", "selectAll:", "a", COMMAND),
    ("Window", "", "", COMMAND),
    ("Minimize", "performMiniaturize:", "m", COMMAND),
    ("Zoom", "performZoom:", "", COMMAND),  # Always disabled: the window has one size.
    ("Close", "performClose:", "w", COMMAND),
]
EDITING = {"Cut", "Copy", "Paste", "Select All"}
DISABLED = {
    "nothing has the keyboard": EDITING | {"Zoom"},
    "the log has the keyboard": EDITING - {"Select All"} | {"Zoom"},
    "a line of the log is selected": {"Cut", "Paste", "Zoom"},
    "an alert is open": EDITING | {"Minimize", "Zoom", "Close"},
}


def items(text: str) -> tuple[list[tuple[str, str, str, int]], set[str]]:
    """Returns the items that Questions.mm wrote for one state, and the titles of those that are disabled."""
    rows = [line.split("|") for line in text.splitlines()]
    return ([(title, action, key, int(modifiers, 16)) for title, action, key, modifiers, _ in rows],
            {title for title, *_, enabled in rows if enabled == "0"} - {SEPARATOR[0]})


class MenuTest(unittest.TestCase):
    def test_each_question_is_answered(self) -> None:
        bundle = slices.BUILD / "tests/shipped-slice/Questions.bundle"
        with driver.PracticeMac(locations="none", licence=False, agent=False, daemon=False) as mac:
            ask = [str(driver.TOOL), "-GSAppKitUserBundles", f'("{bundle}")']
            mac.run(*ask)
            written = mac.run(*ask, "-AskMenu", "YES")
        answers = dict(part.split("\n", 1) for part in written.split("\n# ")[1:])
        for state, disabled in DISABLED.items():
            with self.subTest(state):
                self.assertEqual((MENU_BAR, disabled), items(answers[state].rstrip("\n")))
        self.assertEqual(f"version: {window_journeys.project_version()}\n", answers["copied"])
        self.assertEqual([f"About {slices.PRODUCT}: still open", f"Hide {slices.PRODUCT}: still open",
                          "Hide Others: still open", "Show All: still open"],
                         answers["chosen while the alert is open"].splitlines())

    def test_quit_and_close_end_the_tool(self) -> None:
        for at_alert, key in ((False, "alt+q"), (False, "alt+w"), (True, "alt+q")):
            with self.subTest(key, at_alert=at_alert), driver.PracticeMac() as mac, mac.open_tool() as tool:
                if at_alert:
                    tool.press("Remove Quorlen 3")
                    tool.sees_alert(phrases.CONFIRM)
                tool.key(key)
                window_journeys.judge_ended_well(tool)
                phrases.judge_kept(mac)
                driver.expect_equal((mac.desktop(), mac.calls()), ([], []), "traces")


if __name__ == "__main__":
    unittest.main()
