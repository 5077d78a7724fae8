#!/usr/bin/python3 -B
"""Opens the built tool on a practice Mac, lets a person or a robot use it, and says what it did there. See script/run.

Ends with status 0 only if everything is as it must be; what is not, is said at the end."""

import argparse
import io
import os
import re
import shutil
import subprocess
import sys
import zipfile

import person
from person import PracticeMac, Surprise

AGENT, DAEMON = "com.vendrel.QuorlenAgent", "com.vendrel.QuorlenDaemon"
LICENCE = "Library/Application Support/Quorlen/.licence"
DETECTED = "Quorlen 3 detected. 11 related item(s) found. License detected."
NOT_DETECTED = "Quorlen 3 was not detected."
COMPLETED = "Quorlen 3 removal completed."

# What the cleanup asks of the system's tools, in this order.
CLEANUP_CALLS = [
    ["launchctl", "stop", AGENT],
    ["pkill", "-f", AGENT],
    ["launchctl", "stop", DAEMON],
    ["launchctl", "bootout", "system", f"/Library/LaunchDaemons/{DAEMON}.plist"],
    ["launchctl", "remove", DAEMON],
    ["pkill", "-f", DAEMON],
    ["sfltool", "resetbtm"],
]


class Findings:
    """Prints facts under headings, and keeps those that are not as they must be."""

    def __init__(self):
        self.wrong = []

    @staticmethod
    def heading(text):
        """Begins a section."""
        print(f"\n{text}")

    @staticmethod
    def fact(text):
        """States something that is neither right nor wrong."""
        print(f"  {text}")

    def judge(self, text, right, must_be=""):
        """States something and marks it when it is not right."""
        print(f"  {text}" if right else f"✗ {text}")
        if not right:
            self.wrong.append(text + (f" (must be: {must_be})" if must_be else ""))


class Album:
    """Pictures of the stages in build/run, numbered in their order; those of an earlier run go."""

    def __init__(self):
        person.PICTURES = person.ROOT / "build/run"
        shutil.rmtree(person.PICTURES, ignore_errors=True)
        self._taken = 0

    def add(self, tool, stage):
        """Takes a picture and tells of it."""
        self._taken += 1
        path = tool.settled_picture(f"{self._taken}-{stage.replace(' ', '-')}")
        Findings.fact(f"{stage:24} {os.path.relpath(path, person.ROOT)}")


def use_as_a_person_does(tool, way, album):
    """Goes one way through the tool, from its open window to its end. Returns the status line before and after, the log
    as it was last seen, and the exit status."""
    album.add(tool, "the tool is open")
    before = tool.status()
    if way.nothing_installed:
        question, yes = "Run cleanup anyway?", "Run Cleanup"
        with tool.shift_held():
            tool.has_buttons({"Remove Quorlen 3": ("hidden", "disabled"), "Override Cleanup": ("shown", "enabled")})
            album.add(tool, "Shift is held")
            tool.press("Override Cleanup")
    else:
        question, yes = "Remove Quorlen 3?", "Remove Quorlen 3"
        tool.press("Remove Quorlen 3")
    tool.sees_alert(question)
    album.add(tool, "it asks")
    tool.press(yes)
    tool.sees_alert("Quorlen 3 removal did not complete." if way.refuse else "Quorlen 3 has been removed successfully.")
    album.add(tool, "it tells the outcome")
    if way.restart and not way.refuse:
        log = tool.log()
        tool.press("Restart Now")
        return before, "(the tool closed before the restart)", log, tool.ended()
    tool.press("OK" if way.refuse else "Restart Later")
    tool.rests(before if way.refuse else NOT_DETECTED)
    album.add(tool, "it has looked again")
    after, log = tool.status(), tool.log()
    tool.close_window()
    return before, after, log, tool.ended()


def show_what_was_seen(findings, way, before, after, log, status):
    """Prints and judges what the window told."""
    restarted = way.restart and not way.refuse
    findings.heading("Status line")
    first = NOT_DETECTED if way.nothing_installed else DETECTED
    findings.judge(f"before  {before}", before == first, first)
    last = DETECTED if way.refuse and not way.nothing_installed else NOT_DETECTED
    findings.judge(f"after   {after}", restarted or after == last, last)
    findings.heading("Activity log")
    for line in log.splitlines():
        findings.fact(line)
    findings.heading("Exit status")
    findings.judge(str(status), status == 0, "0")


def show_what_became(findings, facts, wanted=None, running=None):
    """Prints what became of the locations, the agent and the daemon, and judges it where it is said what it must be."""
    findings.heading("The eleven locations")
    for location in facts["locations"]:
        became = location["became"]
        findings.judge(f"{became:8} {location['path']}", wanted in (None, became), wanted)
    findings.heading("Background processes")
    for job in ("agent", "daemon"):
        there, started = len(facts[job]["processes"]), facts[job]["starts"]
        text = "running" if there else "ended" if started else "never started"
        findings.judge(f"{job:8} {text}", running in (None, there), "running" if running else "not running")


def show_what_was_written(findings, mac, licence, wanted_archives=None, wanted_logs=None):
    """Prints and judges what lies on the Desktop now."""
    def judge_count(names, wanted):
        if not names or wanted not in (None, len(names)):
            findings.judge(f"{len(names) or 'none'} on the Desktop", wanted in (None, len(names)), str(wanted))

    findings.heading("Licence backup")
    archives = mac.archives()
    for name in archives:
        with zipfile.ZipFile(io.BytesIO(mac.bytes_of(f"Desktop/{name}"))) as archive:
            members = [member for member in archive.namelist() if not member.endswith("/")]
            same = [archive.read(member) for member in members] == [licence]
        findings.fact(f"{mac.home}/Desktop/{name}")
        findings.judge(f"holds {', '.join(members)}: " + (f"all {len(licence)} bytes as they were installed" if same
                       else "not the licence that was installed"), same)
    judge_count(archives, wanted_archives)

    findings.heading("Removal log file")
    logs = mac.removal_logs()
    for name in logs:
        text = mac.bytes_of(f"Desktop/{name}").decode()
        findings.fact(f"{mac.home}/Desktop/{name}")
        findings.judge(f"its last line: {text.splitlines()[-1]}", text.endswith(f"\n{COMPLETED}\n"), COMPLETED)
    judge_count(logs, wanted_logs)


def show_calls(findings, calls, cleaned=None, restarted=None):
    """Prints the calls of the system's tools, and judges those of the cleanup and of the restart."""
    findings.heading("Calls of the system's tools")
    for call in calls:
        findings.fact(" ".join(call))
    if not calls:
        findings.fact("none")
    cleanup = [call for call in calls if call[0] in ("launchctl", "pkill", "sfltool")]
    if cleaned is not None and cleanup != (CLEANUP_CALLS if cleaned else []):
        findings.judge("these are not the cleanup's calls in their order", False, CLEANUP_CALLS if cleaned else "none")
    orders = [call for call in calls if call[0] == "shutdown"]
    if restarted is not None and orders != ([["shutdown", "-r", "now"]] if restarted else []):
        findings.judge("the restart was not ordered as it must be", False, "shutdown -r now" if restarted else "none")


def show_the_rest(findings, facts):
    """Prints what else changed: what the platform writes for every program; anything else is wrong."""
    findings.heading("What else is new")
    platforms_own = re.compile(rf"{re.escape(facts['home'])}/GNUstep(/.*)?|/tmp/GNUstepSecure\d+(/.*)?")
    news = [path for key in ("new_in_home", "new_in_temporary_folder", "new_elsewhere") for path in facts[key]]
    folders = [path for path in news if not any(path.startswith(other + "/") for other in news)]
    for path in folders:
        findings.judge(path, platforms_own.fullmatch(path) is not None, "nothing but the platform's own")
    for key in ("lost", "changed"):
        for path in facts[key]:
            findings.judge(f"{key}: {path}", False, "untouched")
    if not news:
        findings.fact("nothing")


def practice_mac(way, display="virtual"):
    """A Mac in the state that a way through the tool begins with."""
    return PracticeMac(locations="none" if way.nothing_installed else "all",
                       rights="refused" if way.refuse else "granted", display=display)


def unattended(way):
    """Lets the robot go one way, and judges everything it leaves."""
    findings = Findings()
    album = Album()
    with practice_mac(way) as mac:
        licence = None if way.nothing_installed else mac.bytes_of(LICENCE)
        findings.heading("What the robot did, with pictures")
        with mac.open_tool() as tool:
            before, after, log, status = use_as_a_person_does(tool, way, album)
            said = tool.said()
        restarted = way.restart and not way.refuse
        if restarted:
            mac.awaits_call("shutdown")
        facts = mac.report()
        show_what_was_seen(findings, way, before, after, log, status)
        if said:
            findings.heading("Error output")
            findings.judge(said.strip(), False, "nothing")
        show_what_became(findings, facts,
                         "absent" if way.nothing_installed else "kept" if way.refuse else "removed",
                         running=1 if way.refuse and not way.nothing_installed else 0)
        show_what_was_written(findings, mac, licence, wanted_archives=0 if way.nothing_installed else 1,
                              wanted_logs=0 if way.refuse else 1)
        show_calls(findings, mac.calls(), cleaned=not way.refuse, restarted=restarted)
        show_the_rest(findings, facts)
    print()
    if findings.wrong:
        print("Not as it must be:", *(f"  {text}" for text in findings.wrong), sep="\n")
        return 1
    print("All is as it must be.")
    return 0


def attended(way, display):
    """Opens the tool on the caller's display, and says what it did when it has ended."""
    findings = Findings()
    with practice_mac(way, display) as mac:
        licence = None if way.nothing_installed else mac.bytes_of(LICENCE)
        print("\nThe tool opens on your display, on a practice Mac. Use it as you like; nothing reaches this machine.")
        status = subprocess.run([person.COMMAND, "run", mac.seat, "--", person.TOOL]).returncode
        findings.heading("Exit status")
        findings.judge(str(status), status == 0, "0")
        facts = mac.report()
        show_what_became(findings, facts)
        show_what_was_written(findings, mac, licence)
        show_calls(findings, mac.calls())
    return 1 if findings.wrong else 0


def main():
    options = argparse.ArgumentParser(allow_abbrev=False)
    for option in ("--unattended", "--refuse", "--nothing-installed", "--restart"):
        options.add_argument(option, action="store_true")
    way = options.parse_args()
    person.end_orderly_when_told()
    display = os.environ.get("DISPLAY", "")
    try:
        if re.fullmatch(r":\d+(\.\d+)?", display) and not way.unattended:
            return attended(way, display)
        return unattended(way)
    except Surprise as surprise:
        print("\nThe story so far:", *(f"  {line}" for line in person.story), sep="\n", file=sys.stderr)
        print(f"Then: {surprise}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
