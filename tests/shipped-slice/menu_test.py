"""Reads the running menu bar of the shipped slice item by item, and uses it: see MenuQuestions.mm.

On Debian the Command key is Alt. GNUstep decides here which items are enabled, and that "Quit" ends the tool even while
an alert is open; AppKit refuses to quit then.
"""

import sys
import unittest

import slices

sys.path[:0] = [str(slices.ROOT / folder) for folder in ("tests/driver", "tests/journeys")]
import driver
import phrases
import window_journeys

COMMAND, COMMAND_AND_OPTION = 1 << 20, 1 << 20 | 1 << 19
SEPARATOR = "-"

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


def items(text: str) -> tuple[list[str | tuple[str, str, str, int]], set[str]]:
    """Returns the items that MenuQuestions.mm printed for one state, and the titles of the disabled items."""
    found: list[str | tuple[str, str, str, int]] = []
    disabled = set()
    for line in text.splitlines():
        if line == SEPARATOR:
            found.append(line)
            continue
        title, action, key, modifiers, state = line.split("|")
        found.append((title, action, key, int(modifiers, 16)))
        if state == "disabled":
            disabled.add(title)
    return found, disabled


class MenuTest(unittest.TestCase):
    def test_each_item_and_what_it_does_to_an_alert(self) -> None:
        bundle = slices.BUILD / "tests/shipped-slice/MenuQuestions.bundle"
        with driver.PracticeMac(locations="none", licence=False, agent=False, daemon=False) as mac:
            written = mac.run(str(driver.TOOL), "-GSAppKitUserBundles", f'("{bundle}")')
        answers = dict(part.split("\n", 1) for part in written.split("\n# ")[1:])
        for state, disabled in DISABLED.items():
            with self.subTest(state):
                self.assertEqual((MENU_BAR, disabled), items(answers[state].rstrip("\n")))
        self.assertEqual(f"version: {window_journeys.project_version()}\n", answers["copied"])
        self.assertEqual([f"About {slices.PRODUCT}: still open", f"Hide {slices.PRODUCT}: still open",
                          "Hide Others: still open", "Show All: still open"],
                         answers["chosen while the alert is open"].splitlines())

    def test_quit_ends_the_tool(self) -> None:
        with driver.PracticeMac() as mac, mac.open_tool() as tool:
            tool.key("alt+q")
            window_journeys.judge_ended_well(tool)
            phrases.judge_kept(mac)

    def test_close_closes_the_window_and_so_ends_the_tool(self) -> None:
        with driver.PracticeMac() as mac, mac.open_tool() as tool:
            tool.key("alt+w")
            window_journeys.judge_ended_well(tool)
            phrases.judge_kept(mac)

    def test_no_key_of_the_menu_answers_an_alert(self) -> None:
        with driver.PracticeMac() as mac, mac.open_tool() as tool:
            tool.press("Remove Quorlen 3")
            tool.sees_alert(phrases.CONFIRM)
            for key in "xcvamw":
                tool.key(f"alt+{key}")
            tool.sees_alert(phrases.CONFIRM)
            tool.press("Cancel")  # The alert is still open.
            tool.rests(phrases.DETECTED)
            tool.logged()
            tool.press("Remove Quorlen 3")
            tool.sees_alert(phrases.CONFIRM)
            tool.key("alt+q")
            window_journeys.judge_ended_well(tool)
            phrases.judge_kept(mac)
            driver.expect_equal((mac.desktop(), mac.calls()), ([], []), "traces")


if __name__ == "__main__":
    unittest.main()
