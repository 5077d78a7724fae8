#!/usr/bin/python3 -ISB
"""The journey of script/run: opens the built tool on a practice Mac, lets the user use it or uses it itself, and prints
what the tool did there. See script/run for the options.

An unattended run ends with status 0 only if everything is as it must be. Its last lines name every difference."""

import argparse
import os
import pathlib
import re
import shutil
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import driver  # noqa: E402
from driver import JourneyFailure, PracticeMac, PracticeMacError, Tool  # noqa: E402
from phrases import (  # noqa: E402
    CLEANUP_CALLS, COMPLETED, CONFIRM, CONFIRM_OVERRIDE, LICENCE, NOT_DETECTED, NOT_REMOVED, OVERRIDE_SHOWN, REMOVED,
    archived_licence, removal_log)


def print_section(heading: str, *lines: str) -> None:
    print(f"\n{heading}", *(f"  {line}" for line in lines), sep="\n")


class Way:
    """One way through the tool, as the options choose it, and its expected results."""

    def __init__(self, refuse: bool, nothing_installed: bool, restart: bool) -> None:
        self.refuse, self.nothing_installed, self.restart = refuse, nothing_installed, restart and not refuse
        self.became = "absent" if nothing_installed else "kept" if refuse else "removed"
        self.running = 1 if refuse and not nothing_installed else 0
        self.archives = 0 if nothing_installed else 1
        self.logs = 0 if refuse else 1
        self.calls = [] if refuse else CLEANUP_CALLS
        self.shutdowns = [["shutdown", "-r", "now"]] if self.restart else []

    def mac(self, display: str = "virtual") -> PracticeMac:
        """A Mac in this way's first state."""
        return PracticeMac(locations="none" if self.nothing_installed else "all",
                           rights="refused" if self.refuse else "granted", display=display)


def take_picture(tool: Tool, stage: str) -> None:
    """Takes the next numbered picture and prints its path."""
    number = len(list(driver.PICTURES.glob("*.png"))) + 1
    path = tool.settled_picture(f"{number}-{stage.replace(' ', '-')}")
    print(f"  {stage:24} {os.path.relpath(path, driver.ROOT)}")


def go(tool: Tool, way: Way) -> tuple[str, str]:
    """Uses the tool in one way, until it ends. Returns the last status line and log."""
    take_picture(tool, "the tool is open")
    before = tool.status()
    if way.nothing_installed:
        with tool.shift_held():
            tool.has_buttons(OVERRIDE_SHOWN)
            take_picture(tool, "Shift is held")
            tool.press("Override Cleanup")
    else:
        tool.press("Remove Quorlen 3")
    tool.sees_alert(CONFIRM_OVERRIDE if way.nothing_installed else CONFIRM)
    take_picture(tool, "it asks")
    tool.press("Run Cleanup" if way.nothing_installed else "Remove Quorlen 3")
    tool.sees_alert(NOT_REMOVED if way.refuse else REMOVED)
    take_picture(tool, "it tells the outcome")
    if way.restart:
        log = tool.log()
        tool.press("Restart Now")
        return "(the tool closed before the restart)", log
    tool.press("OK" if way.refuse else "Restart Later")
    tool.rests(before if way.refuse else NOT_DETECTED)
    take_picture(tool, "it has looked again")
    after, log = tool.status(), tool.log()
    tool.close_window()
    return after, log


def judged(mac: PracticeMac, way: Way, licence: bytes | None) -> dict[str, tuple[object, object]]:
    """What the Mac's state is and what it must be after this way, each under its name."""
    facts, calls = mac.report(), mac.calls()
    new = [path for key in ("new_in_home", "new_in_temporary_folder", "new_elsewhere") for path in facts[key]]
    platforms_own = re.compile(rf"{re.escape(facts['home'])}/GNUstep(/.*)?|/tmp/GNUstepSecure\d+(/.*)?")
    return {
        "what became of the eleven locations": ([at["became"] for at in facts["locations"]], [way.became] * 11),
        "the running processes": (mac.running(), {"agent": way.running, "daemon": way.running}),
        "whether each backup holds the licence": (
            [archived_licence(mac, name) == licence for name in mac.archives()], [True] * way.archives),
        "the last lines of the removal logs": (
            [removal_log(mac, name).splitlines()[-1] for name in mac.removal_logs()], COMPLETED * way.logs),
        "the cleanup's calls": ([call for call in calls if call[0] in ("launchctl", "pkill", "sfltool")], way.calls),
        "the calls for a restart": ([call for call in calls if call[0] == "shutdown"], way.shutdowns),
        "what else is new": ([path for path in new if not platforms_own.fullmatch(path)], []),
        "what else is lost": (facts["lost"], []),
        "what else has changed": (facts["changed"], []),
    }


def unattended(way: Way) -> int:
    """Uses the tool in one way, prints what happened, and judges everything that the tool leaves."""
    driver.PICTURES = driver.ROOT / "build/run"
    shutil.rmtree(driver.PICTURES, ignore_errors=True)
    with way.mac() as mac:
        licence = None if way.nothing_installed else mac.read(LICENCE)
        before = mac.detection()[0]
        print_section("What the driver did, with pictures")
        with mac.open_tool() as tool:
            after, log = go(tool, way)
            status, said = tool.ended(), tool.said()
        if way.restart:
            mac.awaits_call("shutdown")
        print_section("Status line", f"before  {before}", f"after   {after}")
        print_section("Activity log", *log.splitlines())
        print(f"\n{mac.report_text()}")
        judgements = {
            "the last status line": (after, after if way.restart else before if way.refuse else NOT_DETECTED),
            "the exit status": (status, 0), "the error output": (said, ""), **judged(mac, way, licence)}
    wrong = [f"{what}: {seen!r:.1000}\n    must be: {wanted!r:.1000}"
             for what, (seen, wanted) in judgements.items() if seen != wanted]
    print_section("Not as it must be:" if wrong else "All is as it must be.", *wrong)
    return 1 if wrong else 0


def attended(way: Way, display: str) -> int:
    """Opens the tool on the caller's display. When it has ended, prints what it did and returns its exit status."""
    with way.mac(display) as mac:
        print("\nThe tool opens on your display, on a practice Mac. Use it as you like; nothing reaches this machine.")
        status = mac.open_program(driver.TOOL).wait()
        print(f"\n{mac.report_text()}")
        print_section("Exit status", str(status))
    return status


def main() -> int:
    parser = argparse.ArgumentParser(prog="script/run", allow_abbrev=False)
    for option in ("--unattended", "--refuse", "--nothing-installed", "--restart"):
        parser.add_argument(option, action="store_true")
    options = vars(parser.parse_args())
    driver.run_as_root()
    driver.end_orderly_when_told()
    display = re.fullmatch(r"(:\d+)(\.\d+)?", os.environ.get("DISPLAY", ""))
    try:
        if not options.pop("unattended") and display:
            return attended(Way(**options), display[1])
        return unattended(Way(**options))
    except (JourneyFailure, PracticeMacError) as failure:
        print("\nThe steps so far:", *(f"  {line}" for line in driver.story), f"Then: {failure}", sep="\n",
              file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
