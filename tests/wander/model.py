"""The tool as its description has it: what each step of a user or of the world does to the disk, the window, the log
and the calls of the system's tools. It knows nothing of how the tool is built.

A step is the name of a method of Model, which is a method of what drives the real tool too, and its arguments."""

from phrases import (
    CLEANUP_CALLS, COMPLETED, CONFIRM, CONFIRM_OVERRIDE, NOT_DETECTED, NOT_REMOVED, NOT_RESTORED, NOTHING_FOUND,
    REMOVED, RESTORED, STARTED)

HOME = "/Users/ann"
LICENCE_PATH = f"{HOME}/Library/Application Support/Quorlen/.licence"
BACKUP, RESTORING = "Quorlen-License-Backup-…", "Quorlen-License-Restore-…"
PANEL = "Choose a Quorlen License Backup"
REPLACE = "Replace existing license?"
REMOVE, OVERRIDE, RESTORE, SUPPORT, CANCEL = "Remove Quorlen 3", "Override Cleanup", "Restore License", "?", "Cancel"

# Message, informative text, then the buttons in their order.
ALERTS = {alert[0]: list(alert) for alert in (
    (CONFIRM, "This tool removes Quorlen 3 and related support files from this Mac.", REMOVE, CANCEL),
    (CONFIRM_OVERRIDE, "Quorlen 3 was not detected in the standard locations. Continue only if Vendrel Support "
     "directed you to run cleanup.", "Run Cleanup", CANCEL),
    (NOT_DETECTED, "Cleanup is disabled because no Quorlen 3 files were found in the standard locations.", "OK"),
    (REMOVED, "A restart is recommended to complete cleanup.", "Restart Now", "Restart Later"),
    (NOT_REMOVED, "Please contact Vendrel Support if the problem continues.", "OK"),
    (REPLACE, "A Quorlen 3 license file already exists on this Mac. Replace it with the selected backup?", "Replace",
     CANCEL),
    (RESTORED, "The Quorlen 3 license file has been restored.", "OK"),
    (NOT_RESTORED, "The selected backup did not contain a .licence file or could not be restored.", "OK"),
    (PANEL,))}

# The files in Downloads, each with the licence in it. A licence is a kind ("closed" is a file that only root may read)
# and what is in it.
FILES = {"good.zip": "file good", "deep.zip": "file deep", "folder.zip": "folder inside", "link.zip": "link",
         "locked.zip": "closed locked", "like.zip": None, "empty.zip": None, "damaged.zip": None, "text.zip": None}

ALL = tuple(range(1, 12))
SOME = (ALL, (1, 4, 11), (4,), (8, 9), (2, 3, 5, 7), (1, 2, 3), (6, 10))
ABSENT = ("missing", "not-a-program")
MODES = {"ditto": (*ABSENT, "fails", "silent", "dies", "real", "real"), "launchctl": ("missing", "fails", "real"),
         "pkill": ("missing", "fails", "real"), "sfltool": ("missing", "dies", "real"), "pkexec": ("missing", "real"),
         "shutdown": ("missing", "fails", "real"), "xdg-open": ("missing", "fails", "real")}

Step = tuple


class Model:
    """Begins with the product installed, a Mac in order and the tool closed."""

    def __init__(self) -> None:
        self.locations = dict.fromkeys(ALL, "there")  # or "absent", "dangling" or "linked": to the user's own Shelf
        # In location 4, by its state.
        self.licences: dict[str, str | None] = {"there": "file planted 1", "linked": None}
        self.planted = 1
        self.folder_is_closed = False  # to the user: location 4
        self.processes = {"agent": 1, "daemon": 1}
        self.decision = "granted"
        self.modes = dict.fromkeys(MODES, "real")
        self.desktop = "normal"
        # By the second in its name: the licence in each archive on the Desktop, each removal log there, and the licence
        # in each staging folder that was left.
        self.archives: dict[int, str] = {}
        self.removal_logs: dict[int, list[str]] = {}
        self.staged: dict[int, str] = {}
        self.unfinished: set[int] = set()  # archives on a full Desktop
        self.second = 0
        self.calls: list[list[str]] = []
        self.is_open = self.shift = self.detected = self.clock_is_stopped = False
        self.alert = ""  # its message, or the panel's title

    def take(self, name: str, *arguments: object) -> None:
        getattr(self, name)(*arguments)

    # What can be done

    def choices(self) -> list[list[Step]]:
        """The steps that are possible now, in groups; a likelier group comes more than once."""
        world = [
            *[[("clock_stands", not self.clock_is_stopped)]] * 2,
            [("plant", ALL, True)], [("plant", numbers, licence) for numbers in SOME for licence in (True, False)],
            [("take_away", numbers) for numbers in SOME],
            [("link", number, kind) for number in (1, 4, 4, 4, 6, 8, 11) for kind in ("linked", "dangling")],
            [("rights", decision) for decision in ("granted", "refused", "dismissed")],
            [("tool_of_the_system", tool, mode) for tool, modes in MODES.items() for mode in modes],
            [("tool_of_the_system", "ditto", mode) for mode in MODES["ditto"]],
            [("desktop_becomes", state) for state in ("normal", "missing", "read-only", "full")]]
        if self.locations[4] == "there" and (self.licence or "file").startswith("file"):
            world.append([("shut", "folder"), *([("shut", "licence")] if self.licence else [])])
        if not self.is_open:
            return [[("open",)]] * 12 + world
        person: list[list[Step]] = [[("hold_shift", not self.shift)]]
        close = [] if self.shift else [("close_window",)]  # With Shift, a click asks the window manager for more.
        if self.alert == PANEL:
            person += [[("choose", "Downloads", name) for name in FILES]] * 6 + [[("cancel_panel",), *close]] * 2
            person += [[("choose", "Desktop", number) for number in range(len(self.seen_archives()))]] * 6
        elif self.alert:
            first, *others = [("press", title) for title in ALERTS[self.alert][2:]]
            person += [[first]] * 12 + [others + close] * 3 + [[("press_in_vain", CANCEL)]]
        else:
            person += [[("press", RESTORE)]] * 5 + [[("press", SUPPORT)], [("press", CANCEL), *close]]
            for title, state in self.buttons().items():
                if state == ("shown", "enabled"):
                    person += [[("press", title)]] * 8
                elif state == ("shown", "disabled"):
                    person += [[("press_in_vain", title)]] + [[("hold_shift", True)]] * 2
        return [steps for steps in person + world if steps]

    # What can be seen

    @property
    def licence(self) -> str | None:
        return self.licences.get(self.locations[4])

    def seen_archives(self) -> list[str]:
        """A full Desktop is another disk, which covers what is on the Desktop."""
        return list(self.archives.values()) if self.desktop != "full" else []

    def disk(self) -> dict[str, object]:
        """What must be on disk, run and have been called."""
        return {"locations": self.locations, "licence": self.licence, "licence on the Shelf": self.licences["linked"],
                "other files on the Shelf": ["keep.txt"], "archives": self.seen_archives(),
                "removal logs": list(self.removal_logs.values()) if self.desktop != "full" else [],
                "other files on the Desktop": [], "staging folders": sorted(self.staged.values()),
                "processes": self.processes, "calls": self.calls}

    def buttons(self) -> dict[str, tuple[str, str]]:
        reveal = self.shift and not self.detected
        states = (REMOVE, not reveal, self.remove_enabled), (OVERRIDE, reveal, self.override_enabled)
        return {title: ("shown" if shown else "hidden", "enabled" if enabled else "disabled")
                for title, shown, enabled in states}

    def window(self) -> dict[str, object]:
        """What the tool must show."""
        return {"status": self.status, "log": self.log, **self.buttons(), RESTORE: ("shown", "enabled"),
                "alert": ALERTS.get(self.alert, [])}

    # What the world does

    def plant(self, numbers: tuple[int, ...], licence: bool) -> None:
        self.take_away(numbers)
        self.locations.update(dict.fromkeys(numbers, "there"))
        self.processes |= {name: 1 for name, number in (("daemon", 3), ("agent", 5)) if number in numbers}
        if 4 in numbers and licence:
            self.planted += 1
            self.licences["there"] = f"file planted {self.planted}"

    def take_away(self, numbers: tuple[int, ...]) -> None:
        self.locations.update(dict.fromkeys(numbers, "absent"))
        if 4 in numbers:
            self.licences["there"], self.folder_is_closed = None, False

    def link(self, number: int, kind: str) -> None:
        self.take_away((number,))
        self.locations[number] = kind

    def shut(self, what: str) -> None:
        if what == "licence":
            self.licences["there"] = f"{self.licence}".replace("file", "closed", 1)
        self.folder_is_closed |= what == "folder"

    def rights(self, decision: str) -> None:
        self.decision = decision

    def tool_of_the_system(self, tool: str, mode: str) -> None:
        self.modes[tool] = mode

    def desktop_becomes(self, state: str) -> None:
        self.desktop = state
        self.unfinished.clear()
        if state == "missing":
            self.archives, self.removal_logs = {}, {}

    def clock_stands(self, stands: bool) -> None:
        self.clock_is_stopped = stands
        self.second += 1

    # What a user does

    def open(self) -> None:
        self.is_open = self.override_enabled = True
        self.log = ["version: …", "updated: 2026.06.14", "Ready."]
        self.scan()

    def hold_shift(self, down: bool) -> None:
        self.shift = down

    def press_in_vain(self, title: str) -> None:
        pass

    def press(self, title: str) -> None:
        if self.alert:
            self.answer(title == ALERTS[self.alert][2])
        elif title == REMOVE:
            self.alert = CONFIRM if self.count() else NOT_DETECTED
        elif title == SUPPORT:
            self.call("xdg-open", "https://…/tool_qr3_legacy_removal_tool")
        elif title == CANCEL:
            self.is_open = False
        else:
            self.alert = CONFIRM_OVERRIDE if title == OVERRIDE else PANEL

    def close_window(self) -> None:
        if self.alert:
            self.answer(False)
        else:
            self.is_open = False

    def cancel_panel(self) -> None:
        self.alert = ""

    def choose(self, folder: str, file: str | int) -> None:
        self.file, self.alert = file, REPLACE
        self.chosen = f"{HOME}/{folder}/{BACKUP + '.zip' if isinstance(file, int) else file}"
        if not self.licence:
            self.restore()

    def answer(self, first: bool) -> None:
        """An alert or panel closes: by its first button, or in another way."""
        alert, self.alert = self.alert, ""
        if alert in (CONFIRM, CONFIRM_OVERRIDE) and first:
            self.remove(STARTED if alert == CONFIRM else ["Starting override cleanup..."])
        elif alert == REPLACE and first:
            self.restore()
        elif alert == REMOVED and first and self.granted("Restart request failed"):
            self.call("shutdown", "-r", "now")
            self.is_open = False
        elif alert in (REMOVED, NOT_REMOVED):
            self.override_enabled = True
            self.scan()
        elif alert in (NOT_DETECTED, RESTORED, NOT_RESTORED):
            self.scan()

    # What the tool then does

    def call(self, tool: str, *words: str) -> None:
        if self.modes[tool] not in ABSENT:
            self.calls.append([tool, *words])

    def count(self) -> int:
        return sum(state in ("there", "linked") for state in self.locations.values())

    def scan(self) -> None:
        count, suffix = self.count(), " License detected." if self.licence else ""
        self.detected = self.remove_enabled = count > 0
        self.status = (f"Quorlen 3 detected. {count} related item(s) found." if count else NOT_DETECTED) + suffix
        self.log += [f"Detected {count} Quorlen 3 item(s)."] if count else NOTHING_FOUND
        self.log += [suffix.strip()] if suffix else []

    def granted(self, failure: str) -> bool:
        """Whether administrator rights are granted; if not, the log has the failure."""
        if self.modes["pkexec"] == "real" and self.decision == "granted":
            return True
        self.log.append(f"{failure}: …{'-128' if self.modes['pkexec'] == 'real' else 'pkexec'}…")
        return False

    def remove(self, started: list[str]) -> None:
        self.remove_enabled = self.override_enabled = False
        self.log += started
        self.back_up()
        self.alert = NOT_REMOVED
        if self.granted("Removal encountered an error"):
            self.alert = REMOVED
            for words in CLEANUP_CALLS:
                self.call(*words)
            if self.modes["pkill"] == "real":
                self.processes = {"agent": 0, "daemon": 0}
            elif self.modes["launchctl"] == "real":
                self.processes["daemon"] = 0  # The agent is a job of the user's: root's "stop" does not reach it.
            self.take_away(ALL)
            self.log += COMPLETED
            if self.desktop == "normal":
                self.removal_logs[self.stamp()] = list(self.log)

    def stamp(self) -> int:
        """The second for a name: another one each time, unless the clock stands."""
        self.second += not self.clock_is_stopped
        return self.second

    def back_up(self) -> None:
        if not self.licence:
            self.log.append("No license file found to back up.")
            return
        archive, stamp = f"{HOME}/Desktop/{BACKUP}.zip", self.stamp()
        # What an earlier backup of this second staged is not replaced.
        if self.staged.get(stamp, "nothing") == "nothing":
            self.staged[stamp] = "nothing" if self.licence.startswith("closed") else self.licence
        self.log.append("License detected.")
        self.call("ditto", "-c", "-k", "--sequesterRsrc", "--keepParent", f"/tmp/…/{BACKUP}/.licence", archive)
        if self.modes["ditto"] in ABSENT:
            self.log.append("License backup skipped: …ditto…")
            return
        staged, earlier = self.staged.pop(stamp), self.archives if self.desktop != "full" else self.unfinished
        created = self.modes["ditto"] == "silent" and stamp in earlier
        if self.modes["ditto"] == "real" and staged != "nothing":
            # An archive of this second can be written again even on a Desktop that is read-only.
            if created := self.desktop == "normal" or (self.desktop == "read-only" and stamp in self.archives):
                self.archives[stamp] = staged
            elif self.desktop == "full":
                self.unfinished.add(stamp)
        self.log.append(f"License backup created: {archive}" if created else "License backup was not created.")

    def restore(self) -> None:
        self.alert = NOT_RESTORED
        # A backup may be gone by now, with the Desktop.
        held = (FILES | dict(enumerate(self.seen_archives()))).get(self.file)
        self.log.append(f"Restoring license from: {self.chosen}")
        self.call("ditto", "-x", "-k", self.chosen, f"/tmp/…/{RESTORING}")
        if self.modes["ditto"] in ABSENT:
            self.log.append("License restore skipped: …ditto…")
        elif self.modes["ditto"] == "real" and held:
            if self.locations[4] == "absent":
                self.locations[4] = "there"
            # The old licence is removed, then the new one is copied.
            readable = not held.startswith("closed")
            if writable := self.locations[4] != "dangling" and not self.folder_is_closed:
                self.licences[self.locations[4]] = held if readable else None
            if readable and writable:
                self.alert = RESTORED
            else:
                self.log.append("License copy error: …")
        self.log.append(f"License restored: {LICENCE_PATH}" if self.alert == RESTORED else "License restore failed.")
