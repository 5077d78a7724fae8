"""The eleven locations in states that no installer leaves them in, and what runs from them."""

from driver import PracticeMac, expect_equal, expect
from phrases import *

LOGS = "Library/Logs/Quorlen"
CACHES = "Library/Caches/com.vendrel.Quorlen3"
VENDOR = "Library/Application Support/Vendrel"


def journey_locations_that_are_links() -> None:
    """A location leads to Ann's own folder, one leads nowhere, two lead to each other: only the links go."""
    with PracticeMac() as mac:
        mac.shell('rm -rf -- "$1" "$2" "$3" "$4"'
                  '; ln -s "$PWD/Documents" "$1"'  # to a folder of Ann's
                  '; ln -s /nowhere "$2"; ln -s "$PWD/$4" "$3"; ln -s "$PWD/$3" "$4"',
                  LOGS, CACHES, VENDOR, "Library/Preferences/com.vendrel.Quorlen3.plist")
        documents = mac.shell("find Documents | sort | tee /dev/null; cat Documents/*")
        with mac.open_tool() as tool:
            expect_equal(tool.status(), "Quorlen 3 detected. 8 related item(s) found. License detected.", "the status line")
            remove(tool)
            tool.rests(NOT_DETECTED)
            judge_gone(mac)
            expect_equal(mac.shell("find Documents | sort | tee /dev/null; cat Documents/*"), documents, "Ann's own folder")


def journey_a_location_that_only_root_may_read() -> None:
    """A location belongs to another user and is closed to all: it is detected, and the superuser removes it."""
    with PracticeMac() as mac:
        mac.shell('chown -R nobody: "$1"; chmod -R 000 "$1"', VENDOR, root=True)
        with mac.open_tool() as tool:
            expect_equal(tool.status(), DETECTED, "the status line")
            remove(tool)
            tool.rests(NOT_DETECTED)
            judge_gone(mac)


def journey_a_location_with_100000_files() -> None:
    """The caches hold 100,000 files: they go like the rest."""
    with PracticeMac() as mac:
        mac.shell('cd "$1"; mkdir {1..100}; for d in {1..100}; do touch $d/{1..1000}; done', CACHES)
        expect(int(mac.shell('find "$1" -type f | wc -l', CACHES)) >= 100_000, "100,000 files are there")
        with mac.open_tool() as tool:
            remove(tool)
            tool.rests(NOT_DETECTED)
            judge_gone(mac)


def journey_a_file_that_is_still_open() -> None:
    """A program still has a log file open: the file goes all the same, and the program keeps running."""
    with PracticeMac() as mac:
        reader = mac.shell('exec 3<"$1"/Quorlen-2026-11-01.log; sleep infinity >/dev/null 2>&1 & echo $!', LOGS).strip()
        with mac.open_tool() as tool:
            remove(tool)
            tool.rests(NOT_DETECTED)
            judge_gone(mac)
            opened = mac.shell('readlink "/proc/$1/fd/3"', reader, root=True)
            expect(opened.endswith(".log (deleted)\n"), "the file is still open")


def journey_jobs_that_are_restarted_when_killed() -> None:
    """The agent and the daemon are each started once more when they end. The script unloads the daemon: nothing of it
    is left. The agent, a job of Ann's that the superuser's "stop" does not reach, is killed, started again, and runs on
    without its files until the Mac restarts."""
    with PracticeMac(supervised=True) as mac, mac.open_tool() as tool:
        expect_equal(mac.running(), {"agent": 1, "daemon": 1}, "what runs")
        remove(tool)
        tool.rests(NOT_DETECTED)
        judge_gone(mac)
        calls = [call for call in mac.calls() if call[0] != "ditto"]
        expect_equal(calls, CLEANUP_CALLS, "the calls in their order")
        expect_equal(mac.running(), {"agent": 1, "daemon": 0}, "what runs afterwards")
        expect_equal(mac.report()["agent"]["starts"], 2, "how often the agent was started")
