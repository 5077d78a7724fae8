"""What the journeys share: the tool's texts, and common steps and judgements."""

import io
import zipfile

from driver import LICENCE, PracticeMac, Tool, expect_equal

DETECTED = "Quorlen 3 detected. 11 related item(s) found. License detected."
NOT_DETECTED = "Quorlen 3 was not detected."

CONFIRM = "Remove Quorlen 3?"
CONFIRM_OVERRIDE = "Run cleanup anyway?"
REMOVED = "Quorlen 3 has been removed successfully."
NOT_REMOVED = "Quorlen 3 removal did not complete."
RESTORED = "License restored."
NOT_RESTORED = "License was not restored."

# The log lines of each step, for `Tool.logged`.
STARTED = ["Starting Quorlen 3 removal..."]
SAVED = ["License detected.", "License backup created: …/Desktop/Quorlen-License-Backup-….zip"]
COMPLETED = ["Quorlen 3 removal completed."]
NOTHING_FOUND = ["No Quorlen 3 files detected in the standard locations.",
                 "Removal is disabled. Hold Shift to show Override Cleanup if Vendrel Support directs you to proceed."]
ALL_FOUND = ["Detected 11 Quorlen 3 item(s)."]
REFUSED = ["Removal encountered an error: …-128…"]

# The cleanup's calls of the system tools, in this order.
AGENT, DAEMON = "com.vendrel.QuorlenAgent", "com.vendrel.QuorlenDaemon"
CLEANUP_CALLS = [["launchctl", "stop", AGENT], ["pkill", "-f", AGENT], ["launchctl", "stop", DAEMON],
                 ["launchctl", "bootout", "system", f"/Library/LaunchDaemons/{DAEMON}.plist"],
                 ["launchctl", "remove", DAEMON], ["pkill", "-f", DAEMON], ["sfltool", "resetbtm"]]

# The states of the two removal buttons.
CAN_REMOVE = {"Remove Quorlen 3": ("shown", "enabled"), "Override Cleanup": ("hidden", "enabled")}
NOTHING_TO_REMOVE = {"Remove Quorlen 3": ("shown", "disabled"), "Override Cleanup": ("hidden", "enabled")}
OVERRIDE_SHOWN = {"Remove Quorlen 3": ("hidden", "disabled"), "Override Cleanup": ("shown", "enabled")}
DURING_A_RUN = {"Remove Quorlen 3": ("shown", "disabled"), "Override Cleanup": ("hidden", "disabled")}


def remove(tool: Tool, then: str = "Restart Later") -> None:
    """Removes the product and answers the completion alert."""
    tool.press("Remove Quorlen 3")
    tool.answer(CONFIRM, "Remove Quorlen 3")
    tool.answer(REMOVED, then)


def restore(tool: Tool, *path: str) -> None:
    """Chooses an archive, by its folders and its name from the home folder on, and confirms the open panel."""
    tool.press("Restore License")
    tool.choose_file(*path)
    tool.confirm_panel()


def removal_log(mac: PracticeMac, name: str) -> str:
    """The text of a removal log on the Desktop."""
    return mac.read(f"Desktop/{name}").decode("utf-8")


def archived_licence(mac: PracticeMac, name: str) -> bytes:
    """The licence that a backup on the Desktop holds."""
    with zipfile.ZipFile(io.BytesIO(mac.read(f"Desktop/{name}"))) as archive:
        members = [member for member in archive.namelist() if member.split("/")[-1] == ".licence"]
        expect_equal(len(members), 1, "licences in the backup")
        return archive.read(members[0])


def judge_gone(mac: PracticeMac) -> None:
    """Judges that nothing is left at any of the eleven locations."""
    left = [path for path in mac.locations() if mac.exists(path)]
    expect_equal(left, [], "what is left of the eleven locations")


def judge_kept(mac: PracticeMac) -> None:
    """Judges that all eleven locations are there."""
    missing = [path for path in mac.locations() if not mac.exists(path)]
    expect_equal(missing, [], "what is missing of the eleven locations")


def judge_clean(mac: PracticeMac) -> None:
    """Judges that the tool left nothing in its temporary folder."""
    expect_equal(mac.temporary_folders(), [], "what the tool left in its temporary folder")


def zip_of(*members: tuple) -> bytes:
    """A zip archive in memory. A member is a name, a content and, optionally, a Unix mode."""
    memory = io.BytesIO()
    with zipfile.ZipFile(memory, "w") as archive:
        for name, content, *mode in members:
            entry = zipfile.ZipInfo(name, (2026, 1, 2, 3, 4, 6))
            entry.create_system = 3  # Unix, so that the mode is used
            entry.external_attr = (mode[0] if mode else 0o100644) << 16
            archive.writestr(entry, content)
    return memory.getvalue()
