"""The eleven locations in states that no installer leaves them in, and what runs from them."""

from driver import PracticeMac, expect_equal, expect
from phrases import *

AGENT_FILE = "Library/Application Support/com.vendrel.QuorlenAgent/state.json"
CACHES = "Library/Caches/com.vendrel.Quorlen3"
VENDOR = "Library/Application Support/Vendrel"


def journey_locations_in_odd_states() -> None:
    """A location leads to Ann's own folder, one leads nowhere, and two lead to each other: only the links go. One
    belongs to another user and is closed to all, one holds 100,000 files, and a program has a file of one open: they go
    too, and the program keeps running."""
    with PracticeMac() as mac:
        mac.shell('rm -rf -- "$@"; ln -s "$PWD/Documents" "$1"; ln -s /nowhere "$2"'
                  '; ln -s "$PWD/$4" "$3"; ln -s "$PWD/$3" "$4"', "Library/Logs/Quorlen",
                  "Library/Preferences/com.vendrel.Quorlen.plist", "Library/Preferences/com.vendrel.Quorlen3.plist",
                  "Library/LaunchAgents/com.vendrel.Quorlen3.Scheduler.plist")
        mac.shell('chown -R nobody: "$1"; chmod -R 000 "$1"', VENDOR, root=True)
        mac.shell('cd "$1"; mkdir {1..100}; for d in {1..100}; do touch $d/{1..1000}; done', CACHES)
        expect(int(mac.shell('find "$1" -type f | wc -l', CACHES)) >= 100_000, "100,000 files are there")
        reader = mac.shell('exec 3<"$1"; sleep infinity >/dev/null 2>&1 & echo $!', AGENT_FILE).strip()
        her_folder = "find Documents | sort; cat Documents/*"
        documents = mac.shell(her_folder)
        with mac.open_tool() as tool:
            expect_equal(tool.status(), "Quorlen 3 detected. 8 related item(s) found. License detected.", "the status")
            remove(tool)
            tool.rests(NOT_DETECTED)
            judge_gone(mac)
            expect_equal(mac.shell(her_folder), documents, "her folder")
            expect_equal(mac.shell('readlink "/proc/$1/fd/3"', reader, root=True),
                         f"{mac.home}/{AGENT_FILE} (deleted)\n", "the open file")


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
