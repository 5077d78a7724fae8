#!/usr/bin/python3 -ISB
"""The journey of script/run: opens the built tool on a practice Mac, lets a person use it or uses it itself, and reports
what it did there. See script/run for the options.

Ends with status 0 only if everything is as it must be; what is not, is said at the end."""

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


class Report:
    """Prints facts under headings, and keeps those that are not as they must be."""

    def __init__(self) -> None:
        self.wrong: list[str] = []

    def section(self, heading: str, *facts: str) -> None:
        """Begins a section, with facts that are neither right nor wrong."""
        print(f"\n{heading}", *(f"  {fact}" for fact in facts), sep="\n")

    def judge(self, text: str, right: bool, must_be: object = "") -> None:
        """States something and marks it if it is not right."""
        print(f"  {text}" if right else f"✗ {text}")
        if not right:
            self.wrong.append(text + (f" (must be: {must_be})" if must_be else ""))

    def expect_equal(self, text: str, seen: object, wanted: object) -> None:
        """States something and marks it unless it is as wanted; what is wanted may be unknown (None)."""
        self.judge(text, wanted is None or seen == wanted, wanted)


class Way:
    """One way through the tool, as the options choose it, and what must come of it."""

    def __init__(self, refuse: bool, nothing_installed: bool, restart: bool) -> None:
        self.refuse, self.nothing_installed, self.restart = refuse, nothing_installed, restart and not refuse
        self.became = "absent" if nothing_installed else "kept" if refuse else "removed"
        self.running = 1 if refuse and not nothing_installed else 0
        self.archives = 0 if nothing_installed else 1
        self.logs = 0 if refuse else 1
        self.calls = [] if refuse else CLEANUP_CALLS
        self.shutdowns = [["shutdown", "-r", "now"]] if self.restart else []

    def mac(self, display: str = "virtual") -> PracticeMac:
        """A Mac in the state that this way begins with."""
        return PracticeMac(locations="none" if self.nothing_installed else "all",
                           rights="refused" if self.refuse else "granted", display=display)


def take_picture(tool: Tool, stage: str) -> None:
    """Takes the next numbered picture and tells of it."""
    number = len(list(driver.PICTURES.glob("*.png"))) + 1
    path = tool.settled_picture(f"{number}-{stage.replace(' ', '-')}")
    print(f"  {stage:24} {os.path.relpath(path, driver.ROOT)}")


def go(tool: Tool, way: Way) -> tuple[str, str]:
    """Goes one way through the tool, from its open window to its end. Returns the last status line and log."""
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


def report_machine(report: Report, mac: PracticeMac, licence: bytes | None, way: Way | None) -> None:
    """Reports what became of the Mac, and judges it where it is known what it must be."""
    facts = mac.report()
    report.section("The eleven locations")
    for place in facts["locations"]:
        report.expect_equal(f"{place['became']:8} {place['path']}", place["became"], way and way.became)
    report.section("Background processes")
    for job in ("agent", "daemon"):
        count = len(facts[job]["processes"])
        state = "running" if count else "ended" if facts[job]["starts"] else "never started"
        report.expect_equal(f"{job:8} {state}", count, way and way.running)

    report.section("Licence backup")
    for name in mac.archives():
        print(f"  {mac.home}/Desktop/{name}")
        same = archived_licence(mac, name) == licence
        report.judge(f"holds {'all' if same else 'not'} the {len(licence or b'')} bytes that were installed", same)
    report.expect_equal(f"{len(mac.archives()) or 'none'} on the Desktop", len(mac.archives()), way and way.archives)
    report.section("Removal log file")
    for name in mac.removal_logs():
        print(f"  {mac.home}/Desktop/{name}")
        last = removal_log(mac, name).splitlines()[-1]
        report.expect_equal(f"its last line: {last}", [last], COMPLETED)
    report.expect_equal(f"{len(mac.removal_logs()) or 'none'} on the Desktop", len(mac.removal_logs()), way and way.logs)

    calls = mac.calls()
    report.section("Calls of the system's tools", *(" ".join(call) for call in calls or [["none"]]))
    if way:
        cleanup = [call for call in calls if call[0] in ("launchctl", "pkill", "sfltool")]
        if cleanup != way.calls:
            report.judge("these are not the cleanup's calls in their order", False, way.calls or "none")
        if [call for call in calls if call[0] == "shutdown"] != way.shutdowns:
            report.judge("the restart was not ordered as it must be", False, way.shutdowns or "no restart")
        report.section("What else is new")
        platforms_own = re.compile(rf"{re.escape(facts['home'])}/GNUstep(/.*)?|/tmp/GNUstepSecure\d+(/.*)?")
        news = [path for key in ("new_in_home", "new_in_temporary_folder", "new_elsewhere") for path in facts[key]]
        for path in news:
            if not any(path.startswith(f"{other}/") for other in news):
                report.judge(path, platforms_own.fullmatch(path) is not None, "nothing but the platform's own")
        for key in ("lost", "changed"):
            for path in facts[key]:
                report.judge(f"{key}: {path}", False, "untouched")


def unattended(way: Way) -> int:
    """Goes one way through the tool, and judges everything it leaves."""
    report = Report()
    driver.PICTURES = driver.ROOT / "build/run"
    shutil.rmtree(driver.PICTURES, ignore_errors=True)
    with way.mac() as mac:
        licence = None if way.nothing_installed else mac.read(LICENCE)
        before = mac.detection()[0]
        report.section("What the driver did, with pictures")
        with mac.open_tool() as tool:
            after, log = go(tool, way)
            status = tool.ended()
            said = tool.said()
        if way.restart:
            mac.awaits_call("shutdown")
        report.section("Status line", f"before  {before}")
        wanted = None if way.restart else before if way.refuse else NOT_DETECTED
        report.expect_equal(f"after   {after}", after, wanted)
        report.section("Activity log", *log.splitlines())
        report.section("Exit status")
        report.expect_equal(str(status), status, 0)
        if said:
            report.section("Error output")
            report.judge(said.strip(), False, "nothing")
        report_machine(report, mac, licence, way)
    print("\nNot as it must be:" if report.wrong else "\nAll is as it must be.", *(f"  {text}" for text in report.wrong),
          sep="\n")
    return 1 if report.wrong else 0


def attended(way: Way, display: str) -> int:
    """Opens the tool on the caller's display, and reports what it did when it has ended."""
    report = Report()
    with way.mac(display) as mac:
        licence = None if way.nothing_installed else mac.read(LICENCE)
        print("\nThe tool opens on your display, on a practice Mac. Use it as you like; nothing reaches this machine.")
        status = mac.open_program(driver.TOOL).wait()
        report.section("Exit status")
        report.expect_equal(str(status), status, 0)
        report_machine(report, mac, licence, None)
    return 1 if report.wrong else 0


def main() -> int:
    parser = argparse.ArgumentParser(prog="script/run", allow_abbrev=False)
    for option in ("--unattended", "--refuse", "--nothing-installed", "--restart"):
        parser.add_argument(option, action="store_true")
    options = vars(parser.parse_args())
    if os.geteuid() != 0:
        kept = "--preserve-env=DISPLAY,XAUTHORITY,QUORLEN_BUILD,QUORLEN_TOOL,QUORLEN_SHARE"
        os.execvp("sudo", ["sudo", kept, sys.executable, "-ISB", *sys.argv])
    driver.end_orderly_when_told()
    display = re.fullmatch(r"(:\d+)(\.\d+)?", os.environ.get("DISPLAY", ""))
    try:
        if not options.pop("unattended") and display:
            return attended(Way(**options), display[1])
        return unattended(Way(**options))
    except (JourneyFailure, PracticeMacError) as failure:
        print("\nThe story so far:", *(f"  {line}" for line in driver.story), f"Then: {failure}", sep="\n",
              file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
