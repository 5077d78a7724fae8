"""Uses the tool on a practice Mac as a user does: looks at its window, presses its buttons, and judges what is then on
disk, on the screen and in the log.

    with PracticeMac(locations="all", rights="granted") as mac, mac.open_tool() as tool:
        tool.press("Remove Quorlen 3")
        tool.answer("Remove Quorlen 3?", "Remove Quorlen 3")

Each press is a real press of the X pointer or keyboard (xdotool). The inspector, a bundle in the tool, describes the
windows. Each step waits until its condition is true. After TIMEOUT, or if the tool ends unexpectedly, `JourneyFailure`
says what was expected and what was seen. The end of a `with` block ends the tool or the Mac. The practice Mac also ends
with this process.

QUORLEN_BUILD names the build folder if it is not build/linux. QUORLEN_TOOL names the executable to drive if it is not
that build's tool. QUORLEN_SHARE names a folder of this machine in which that executable may write.
"""

import contextlib
import json
import os
import pathlib
import re
import signal
import socket
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable, Iterator
from typing import Any

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "practice-mac"))
from practice_mac.machine import Mac, PracticeMacError  # noqa: E402
from practice_mac.product import LICENCE  # noqa: E402

BUILD = pathlib.Path(os.environ.get("QUORLEN_BUILD", ROOT / "build/linux"))
NAME = "Quorlen 3 Removal Tool"
TOOL = pathlib.Path(os.environ.get("QUORLEN_TOOL", BUILD / f"{NAME}.app" / NAME))
SHARE = os.environ.get("QUORLEN_SHARE")
INSPECTOR = BUILD / "Inspector.bundle"
PICTURES = ROOT / "build/journeys"

TIMEOUT = 60  # seconds for a condition to come true; far more than any step takes
POLL_INTERVAL = 0.05  # seconds between two checks of a condition
BUSY = 1  # seconds without an answer after which the tool counts as busy

CLOCK = "/run/practice/ann/clock"  # the file that stops the tool's clock while it exists
STATUS_LINE = [36, 215, 488, 22]  # its place in the main window
DEFAULT_BUTTON = "#1E78E6"  # the colour on Debian of the button that Return presses

# GNUstep writes these two lines when it loads the inspector.
INSPECTOR_LINES = re.compile(r"^.*(Loading 1 user defined AppKit bundles|Loaded '.*Inspector\.bundle')\n", re.MULTILINE)

View = dict[str, Any]  # a window, view or cell, as inspector/Snapshot.hpp describes it


class JourneyFailure(AssertionError):
    """A test's expectation is not met."""


class Timeout(JourneyFailure):
    """A condition did not come true within TIMEOUT."""


story: list[str] = []  # the steps so far; a failing journey prints them


def note(line: str) -> None:
    """Adds a line to the story."""
    story.append(line)


def expect_equal(seen: object, wanted: object, what: str) -> None:
    """Fails unless two values are equal; `what` names them."""
    if seen != wanted:
        raise JourneyFailure(f"{what}\n    must be: {wanted!r:.1000}\n    is:      {seen!r:.1000}")


def expect(condition: object, what: str) -> None:
    """Fails unless a condition is true; `what` states it."""
    if not condition:
        raise JourneyFailure(f"not true: {what}")


def matches(text: str, pattern: str) -> bool:
    """Whether a text matches a pattern, in which each "…" stands for any text within a line."""
    return re.fullmatch("[^\n]*".join(map(re.escape, pattern.split("…"))), text) is not None


def state_of(button: View) -> tuple[str, str]:
    """What a user sees of a button: "shown" or "hidden", and "enabled" or "disabled"."""
    return "shown" if button["visible"] else "hidden", "enabled" if button["enabled"] else "disabled"


def eventually(condition: Callable[[], Any], what: str) -> Any:
    """Waits until `condition()` is true and returns its value; `what` states the condition."""
    deadline = time.monotonic() + TIMEOUT
    while True:
        if seen := condition():
            return seen
        if time.monotonic() > deadline:
            raise Timeout(f"not true within {TIMEOUT} s: {what}")
        time.sleep(POLL_INTERVAL)


class PracticeMac:
    """A disposable Mac with the product installed. Use it in a `with` statement."""

    def __init__(self, home: str = "ann", **options: Any) -> None:
        """Takes the options of `practice_mac.machine.Mac.start`."""
        self.home = f"/Users/{home}"
        folders = [] if TOOL.is_relative_to(ROOT / "build") else [str(TOOL.parent)]
        self._options = {"home": home, "until": os.getpid(), "bind": folders, "share": [SHARE] if SHARE else [],
                         **options}
        self._changes = ", ".join(f"{name} {value}" for name, value in {"home": home, **options}.items())

    def __enter__(self) -> "PracticeMac":
        self._mac = Mac.start(**self._options)
        self._first_desktop = set(self.listing("Desktop"))
        note(f"A practice Mac started: {self._changes}")
        return self

    def __exit__(self, *_: object) -> None:
        self._mac.stop()

    # Staging

    def plant(self, locations: str | list[int] = "all", licence: bool = True, agent: bool = True, daemon: bool = True,
              supervised: bool = False) -> None:
        """Installs the product again, as at the start."""
        note("The product is installed again.")
        self._mac.ask("plant", locations=locations, licence=licence, agent=agent, daemon=daemon, supervised=supervised)

    def rights(self, decision: str) -> None:
        """Sets the answer to requests for administrator rights: "granted", "refused" or "dismissed"."""
        note(f"Administrator rights are now {decision}.")
        self._mac.ask("rights", rights=decision)

    def tool_of_the_system(self, tool: str, mode: str) -> None:
        """Sets how a system tool behaves: "real", "missing", "fails", "silent", "hangs", …"""
        note(f"The tool {tool} is now in the mode {mode!r}.")
        self._mac.ask("tool", tool=tool, mode=mode)

    def desktop_becomes(self, state: str) -> None:
        """Sets the state of the Desktop: "normal", "missing", "read-only" or "full"."""
        note(f"The Desktop is now {state}.")
        self._mac.ask("desktop", state=state)

    def awaits_call(self, tool: str, count: int = 1) -> None:
        """Waits until a system tool has been called `count` times since the start."""
        self._mac.ask("await", tool=tool, count=count, timeout=TIMEOUT)

    def run(self, *command: str, root: bool = False, stdin: bytes = b"") -> str:
        """Runs a command as the user, or as root, and returns its standard output; fails if the command fails."""
        try:
            return self._mac.output(*command, root=root, stdin=stdin)
        except PracticeMacError as problem:
            raise JourneyFailure(str(problem)) from None

    def shell(self, script: str, *arguments: str, root: bool = False) -> str:
        """Runs a bash script, in which $1, $2, … are the arguments and the working folder is the home."""
        return self.run("bash", "-euc", 'cd "$0"; ' + script, self.home, *arguments, root=root)

    def put(self, path: str, content: bytes) -> None:
        """Writes a file as the user; the path is absolute or relative to the home."""
        self.run("tee", "--", path, stdin=content)

    def clock_stands(self, stands: bool) -> None:
        """Stops the clock of the tool, if it was opened with the inspector, at the present second; or lets it go on."""
        note(f"The clock {'stands' if stands else 'goes on'}.")
        self.run("bash", "-euc", 'date +%s >"$0"' if stands else 'rm -f "$0"', CLOCK, root=True)

    def passes_a_second(self) -> None:
        """Waits for the next second of the clock, so that names made from the clock differ."""
        second = int(time.time())
        eventually(lambda: int(time.time()) != second, "the clock goes on")

    # What is on it. Paths are absolute or relative to the home.

    def report(self) -> dict:
        """What is there, what is gone and which tools were called: `practice-mac report --json`."""
        return self._mac.ask("report")

    def report_text(self) -> str:
        """The same as text: `practice-mac report`."""
        return self._mac.ask("report", form="text")

    def locations(self) -> list[str]:
        """The paths of the product's eleven locations."""
        return self._mac.ask("locations")

    def calls(self, tool: str | None = None) -> list[list[str]]:
        """The calls of a system tool, each a list of its arguments; or of all tools, each with its name first."""
        calls = [(call["tool"].split("/")[-1], call["arguments"]) for call in self._mac.ask("calls")]
        return [words for name, words in calls if name == tool] if tool else [[name, *words] for name, words in calls]

    def running(self) -> dict[str, int]:
        """The number of the agent's and of the daemon's processes."""
        return self._mac.ask("running")

    def look(self, path: str) -> dict[str, Any] | None:
        """Kind, mode and entries of what is at a path, and whether it is found through links; None if nothing is."""
        return self._mac.look(path)

    def exists(self, path: str) -> bool:
        """Whether there is anything at a path, a dangling link included."""
        return self._mac.exists(path)

    def mode_of(self, path: str) -> str:
        """A file's mode, such as "600"."""
        return self._mac.look(path)["mode"]

    def read(self, path: str | pathlib.Path) -> bytes:
        """A file's content."""
        return self._mac.read(path)

    def listing(self, folder: str) -> list[str]:
        """The sorted names in a folder; empty when there is no such folder."""
        return (self._mac.look(folder) or {"entries": []})["entries"]

    def desktop(self) -> list[str]:
        """The sorted names of what was put on the Desktop since the start."""
        return [name for name in self.listing("Desktop") if name not in self._first_desktop]

    def archives(self) -> list[str]:
        """The names of the licence backups on the Desktop, oldest first."""
        return [name for name in self.listing("Desktop") if matches(name, "Quorlen-License-Backup-…-….zip")]

    def removal_logs(self) -> list[str]:
        """The names of the removal logs on the Desktop, oldest first."""
        return [name for name in self.listing("Desktop") if matches(name, "Quorlen-3-Removal-Log-…-….txt")]

    def temporary_folders(self) -> list[str]:
        """The paths of what the tool has left in its temporary folder."""
        return [f"/tmp/{folder}/{name}" for folder in self.listing("/tmp") for name in self.listing(f"/tmp/{folder}")
                if name.startswith("Quorlen-License-")]

    def detection(self) -> tuple[str, list[str]]:
        """The expected result of a scan of the disk as it is now: the status line, and the lines of the log."""
        count = sum(bool((at := self._mac.look(path)) and at["found"]) for path in self.locations())
        licence = ["License detected."] if (at := self._mac.look(LICENCE)) and at["found"] else []
        if not count:
            return "Quorlen 3 was not detected.", [
                "No Quorlen 3 files detected in the standard locations.", "Removal is disabled. Hold Shift to show "
                "Override Cleanup if Vendrel Support directs you to proceed."]
        return " ".join([f"Quorlen 3 detected. {count} related item(s) found.", *licence]), \
            [f"Detected {count} Quorlen 3 item(s).", *licence]

    # The screen, the pointer and the keyboard

    def xdotool(self, *words: object) -> str:
        """Runs an xdotool command, and returns what it prints."""
        return self.run("xdotool", *map(str, words))

    def connect(self, path: str) -> socket.socket:
        """A connection to a socket of a program on the Mac."""
        return socket.socket(fileno=self._mac.ask("connect", path=path))

    def screen(self, *options: str) -> bytes:
        """A picture of the screen, taken by ImageMagick's `import` with these options."""
        done = self._mac.run("import", "-window", "root", *options)
        expect(done.returncode == 0, f"a picture of the screen: {done.stderr.decode(errors='replace')}")
        return done.stdout

    def open_program(self, *command: str | pathlib.Path, output: int | None = None, **variables: str) -> Any:
        """Starts a program as the user. Its output goes to a descriptor, by default to this process's streams."""
        with open(os.devnull, "rb") as nothing:
            return self._mac.open_program(list(command), nothing.fileno(), 1 if output is None else output,
                                          2 if output is None else output, variables=variables)

    def open_tool(self, inspected: bool = True) -> "Tool":
        """Starts the tool; use the result in a `with` statement. Without the inspector its windows can't be read."""
        return Tool(self, inspected)


class Tool:
    """The running tool, as a user sees and uses it. The block of its `with` statement begins when the window shows the
    first detection (without the inspector, at once). The end of the block ends the tool."""

    def __init__(self, mac: PracticeMac, inspected: bool) -> None:
        self.mac = mac
        self._inspected = inspected
        self._lines_read = 0

    def __enter__(self) -> "Tool":
        self._errors = tempfile.TemporaryFile()
        self._socket, self.witness = "/run/practice/ann/inspector", "/run/practice/ann/witness"
        variables, arguments = {}, []
        if self._inspected:
            variables = {"PRACTICE_MAC_INSPECTOR": self._socket, "PRACTICE_MAC_WITNESS": self.witness,
                         "PRACTICE_MAC_CLOCK": CLOCK}
            arguments = ["-GSAppKitUserBundles", f'("{INSPECTOR}")']
        self.process = self.mac.open_program(TOOL, *arguments, output=self._errors.fileno(), **variables)
        note("The tool was opened.")
        if not self._inspected:
            return self
        try:
            eventually(lambda: self.status() not in (None, "Checking for Quorlen 3..."),
                       "the window shows the first detection")
            status, lines = self.mac.detection()
            expect_equal(self.status(), status, "the status line after the launch")
            self.logged("version: …", "updated: …", "Ready.", *lines)
        except BaseException:
            self._end("launch")
            raise
        note(f"Its status line reads: {status}")
        return self

    def __exit__(self, kind: type | None, *_: object) -> None:
        self._end("failure" if kind else None)

    def _end(self, picture: str | None) -> None:
        if self.process.poll() is None:
            if picture:
                with contextlib.suppress(JourneyFailure, PracticeMacError, OSError):
                    note(f"A picture of the screen: {self.picture(f'{picture}-{os.getpid()}')}")
            self.process.kill()
        if picture:
            note(f"The tool's error output: {self.said() or '(nothing)'}")
        self._errors.close()

    # Looking

    def look(self) -> View | None:
        """All that the tool shows now: see inspector/Snapshot.hpp. None while it is busy or has not started yet."""
        if (status := self.process.poll()) is not None:
            raise JourneyFailure(f"the tool has ended with status {status}; its output: {self.said() or '(nothing)'}")
        with contextlib.suppress(PracticeMacError, ConnectionError, TimeoutError):
            with self.mac.connect(self._socket) as line:
                line.settimeout(BUSY)
                answer = b"".join(iter(lambda: line.recv(1 << 16), b""))
                return json.loads(answer) if answer else None
        return None

    def _window(self, wanted: Callable[[View], bool]) -> View | None:
        snapshot = self.look()
        return next((w for w in snapshot["windows"] if wanted(w)), None) if snapshot else None

    def main_window(self) -> View | None:
        """The tool's own window, or None."""
        return self._window(lambda w: w["title"] == NAME and not w["modal"])  # an alert has this title too

    def modal_window(self) -> View | None:
        """The open alert or panel, or None."""
        return self._window(lambda w: w["modal"])

    def front_window(self) -> View | None:
        """The open alert or panel if there is one, else the tool's own window; or None."""
        windows = (self.look() or {"windows": []})["windows"]
        return max((w for w in windows if w["modal"] or w["title"] == NAME), key=lambda w: w["modal"], default=None)

    @staticmethod
    def views(window: View | None) -> Iterator[View]:
        """Every view of a window, each before its subviews."""
        waiting = list(window["views"]) if window else []
        while waiting:
            view = waiting.pop(0)
            yield view
            waiting[:0] = view["views"]

    def texts(self, window: View | None) -> list[str]:
        """The texts of a window's visible labels and buttons."""
        return [v["text"] for v in self.views(window) if v.get("text") and v["visible"] and v["class"] != "NSTextView"]

    def status(self) -> str | None:
        """The status line."""
        return next((v["text"] for v in self.views(self.main_window()) if v["in_window"] == STATUS_LINE), None)

    def log(self) -> str:
        """The whole activity log."""
        return eventually(lambda: next((v for v in self.views(self.main_window()) if v["class"] == "NSTextView"), None),
                          "the window with its log")["text"]

    def alert(self, window: View | None) -> tuple[list[str], list[str]]:
        """The texts of an alert's labels, and the titles of its buttons from right to left, the first one first."""
        views = sorted(self.views(window), key=lambda v: -v["on_screen"][0])
        return ([" ".join(v["text"].split()) for v in self.views(window) if v.get("label") and v["text"]],
                [v["text"] for v in views if v.get("action") == "buttonAction:" and v["visible"]])

    def button(self, title: str, window: View | None = None) -> View | None:
        """The button with a title in a window, by default the main window; or None."""
        return next((v for v in self.views(window or self.main_window())
                     if v.get("text") == title and v.get("button")), None)

    def shows(self, title: str) -> bool:
        """Whether the main window shows a button with this title."""
        found = self.button(title)
        return bool(found and found["visible"])

    def buttons(self) -> dict[str, tuple[str, str]]:
        """The states of the two removal buttons: shown or hidden, enabled or disabled."""
        window = eventually(self.main_window, "the window")

        def state(title: str) -> tuple[str, str]:
            found = self.button(title, window)
            expect(found, f"the window has a button {title!r}")
            return state_of(found)
        return {title: state(title) for title in ("Remove Quorlen 3", "Override Cleanup")}

    def has_buttons(self, wanted: dict[str, tuple[str, str]]) -> None:
        """Waits until the two removal buttons are in these states."""
        with contextlib.suppress(Timeout):
            eventually(lambda: self.buttons() == wanted, "the buttons")
        expect_equal(self.buttons(), wanted, "the removal buttons")
        note("The removal buttons: " + ", ".join(f"{title} {' and '.join(state)}" for title, state in wanted.items()))

    def said(self) -> str:
        """What the tool has written to its standard output and error."""
        written = os.pread(self._errors.fileno(), 1 << 20, 0)  # seeking would move the tool's position too
        return INSPECTOR_LINES.sub("", written.decode(errors="replace"))

    def _outer_frame(self, window: View) -> tuple[int, int, int, int]:
        """A window's edges on the screen with its title bar and border: left, top, right, bottom."""
        told = self.mac.shell('xwininfo -id "$1"; xprop -id "$1" _NET_FRAME_EXTENTS', str(window["x_window"]))
        x, y, width, height = (int(re.search(rf"{what}: +(-?\d+)", told)[1])
                               for what in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
        extents = re.search(r"= (\d+), (\d+), (\d+), (\d+)", told)
        left, right, top, bottom = map(int, extents.groups()) if extents else [0] * 4
        return x - left, y - top, x + width + right, y + height + bottom

    def picture(self, name: str, front_only: bool = False) -> pathlib.Path:
        """Saves a picture of the screen and returns its path. It is cut to the tool's windows, or to the front one, if
        the inspector describes them."""
        windows = (self.look() or {"windows": []})["windows"]
        frames = [self._outer_frame(window) for window in windows[:1 if front_only else None]]
        cut = []
        if frames:
            left, top, right, bottom = (f(edges) for f, edges in zip((min, min, max, max), zip(*frames)))
            cut = ["-crop", f"{right - left:.0f}x{bottom - top:.0f}+{left:.0f}+{top:.0f}", "+repage"]
        PICTURES.mkdir(parents=True, exist_ok=True)
        path = PICTURES / f"{name}.png"
        path.write_bytes(self.mac.screen(*cut, "png:-"))
        return path

    def settled_picture(self, name: str, front_only: bool = False) -> pathlib.Path:
        """Saves a picture as `picture` does, when drawing is complete: two pictures in a row have the same colours, and
        the button that Return presses in an alert or panel has its colour."""
        last = [""]

        def condition() -> pathlib.Path | None:
            path = self.picture(name, front_only)
            colours = subprocess.run(["convert", path, "-format", "%c", "histogram:info:-"], check=True, text=True,
                                     stdout=subprocess.PIPE).stdout
            default = any(v.get("key_equivalent") == "\r" and v["enabled"] and v["visible"]
                          for v in self.views(self.modal_window()))
            before, last[0] = last[0], colours
            return path if before == colours and (DEFAULT_BUTTON in colours or not default) else None
        return eventually(condition, f"drawing is complete in the picture {name!r}")

    # Judging what is seen

    def rests(self, status: str) -> None:
        """Waits until no alert is open and the status line has this text."""
        def condition() -> bool:
            snapshot = self.look()
            return bool(snapshot) and not any(w["modal"] for w in snapshot["windows"]) and self.status() == status
        try:
            eventually(condition, "")
        except Timeout:
            raise Timeout(f"not true within {TIMEOUT} s: no alert is open and the status line is {status!r}; "
                          f"it is {self.status()!r}") from None
        note(f"The status line reads: {status}")

    def logged(self, *lines: str) -> None:
        """Waits until the log lines since the last call (or the launch) are exactly these; "…" is as in `matches`."""
        def new_lines() -> list[str]:
            return self.log().splitlines()[self._lines_read:]
        with contextlib.suppress(Timeout):
            eventually(lambda: len(new_lines()) >= len(lines), "the log")
        seen = new_lines()
        if len(seen) != len(lines) or not all(map(matches, seen, lines)):
            wanted, found = ("".join(f"        {line}\n" for line in text) for text in (lines, seen))
            raise JourneyFailure(f"the activity log since the last look\n    must be:\n{wanted}    is:\n{found}")
        self._lines_read += len(seen)
        note("The log gained: " + " | ".join(seen))

    def sees_alert(self, message: str, informative: str | None = None, buttons: list[str] | None = None) -> View:
        """Waits for an alert with this message, and judges its other texts if they are given."""
        window = eventually(lambda: (w := self.modal_window()) and message in self.texts(w) and w,
                            f"the alert {message!r}")
        note(f"An alert: {message}")
        texts, titles = self.alert(window)
        if informative is not None:
            expect_equal(texts, [message, informative], f"the texts of the alert {message!r}")
        if buttons is not None:
            expect_equal(titles, buttons, f"the buttons of the alert {message!r}, right to left")
        return window

    # Pressing

    def _click(self, rectangle: list[float], reaches_tool: bool = True, across: float = 1 / 2) -> None:
        """Presses the pointer's first button in a rectangle, `across` of its width from the left. Releases it when the
        tool has received the press, if it is to receive it."""
        x, y, width, height = rectangle
        before = eventually(self.look, "the tool answers")["presses"]
        self.mac.xdotool("mousemove", round(x + width * across), round(y + height / 2), "mousedown", 1)
        if reaches_tool:
            eventually(lambda: (snapshot := self.look()) and snapshot["presses"] > before, "the tool gets the press")
        self.mac.xdotool("mouseup", 1)

    def _still(self, find: Callable[[], View | None], what: str) -> View:
        """Waits until `find()` returns the same place twice, because the window manager may still move a window."""
        last: list[View | None] = [None]

        def condition() -> View | None:
            before, last[0] = last[0], find()
            return last[0] if last[0] and before and before["on_screen"] == last[0]["on_screen"] else None
        return eventually(condition, what)

    def press(self, title: str) -> None:
        """Presses a shown and enabled button, in the alert or panel if one is open, else in the main window."""
        def find() -> View | None:
            window = self.front_window()
            found = window and self.button(title, window)
            return found if found and found["visible"] and found["enabled"] else None
        self._click(self._still(find, f"a button {title!r} that can be pressed")["on_screen"])
        note(f"Pressed: {title}")

    def press_in_vain(self, title: str) -> None:
        """Clicks on a button of the main window that is disabled, or that an open alert makes ineffective."""
        self._click(eventually(lambda: self.button(title), f"the button {title!r}")["on_screen"], reaches_tool=False)
        eventually(self.look, "the tool answers")
        note(f"Clicked on {title}, which must do nothing")

    def answer(self, message: str, title: str, informative: str | None = None,
               buttons: list[str] | None = None) -> None:
        """Waits for an alert as `sees_alert` does, and presses one of its buttons."""
        self.sees_alert(message, informative, buttons)
        self.press(title)

    def key(self, name: str) -> None:
        """Types a key, by its X name: "Return", "Escape", "Caps_Lock", …"""
        self.mac.xdotool("key", name)
        note(f"Typed: {name}")

    @contextlib.contextmanager
    def shift_held(self, key: str = "Shift_L") -> Iterator[None]:
        """Holds a Shift key down during the block."""
        self.mac.xdotool("keydown", key)
        note(f"{key} goes down")
        try:
            yield
        finally:
            self.mac.xdotool("keyup", key)
            note(f"{key} goes up")

    def moves_pointer(self) -> None:
        """Moves the pointer across the window, and waits until the tool has received each move."""
        x, y, width, height = eventually(self.main_window, "the window")["frame"]
        for left, top in ((x + 40, y + 40), (x + width / 2, y + 60)):
            before = eventually(self.look, "the tool answers")["moves"]
            self.mac.xdotool("mousemove", round(left), round(top))
            eventually(lambda: (snapshot := self.look()) and snapshot["moves"] > before, "the tool gets the move")

    def choose_file(self, *path: str) -> None:
        """Chooses a file in the open panel, by its folders and its name from the home folder on."""
        self._press_in_panel("_setHomeDirectory")
        for number, name in enumerate(path):
            def find_cell() -> View | None:
                columns = [v for v in self.views(self.modal_window()) if "cells" in v]
                columns.sort(key=lambda column: column["on_screen"][0], reverse=True)
                cells = [cell for column in columns for cell in column["cells"]
                         if cell["text"] == name and cell["on_screen"][3] >= 10]  # not one scrolled out of sight
                return cells[0] if cells else None
            # Two clicks in one place would be a double-click, and the next column may appear there.
            self._click(self._still(find_cell, f"{name!r} in the panel")["on_screen"], across=(1 + number % 2) / 3)
        note(f"Chose in the panel: {'/'.join(path)}")

    def confirm_panel(self) -> None:
        """Presses the open panel's confirming button."""
        self._press_in_panel("ok:")

    def cancel_panel(self) -> None:
        """Presses the open panel's "Cancel"."""
        self._press_in_panel("cancel:")

    def _press_in_panel(self, action: str) -> None:
        def find() -> View | None:
            buttons = (v for v in self.views(self.modal_window()) if v.get("action") == action)
            return next((button for button in buttons if button["enabled"]), None)
        self._click(self._still(find, f"the panel's button for {action}")["on_screen"])
        note(f"Pressed in the panel: the button for {action}")

    def close_window(self) -> None:
        """Presses the close button at the right end of the title bar: in the alert or panel if one is open, else in the
        main window."""
        def find() -> View | None:
            window = self.front_window()
            return window and {"on_screen": window["frame"]}
        x, y, width, _ = self._still(find, "the window")["on_screen"]
        self._click([x + width - 18, y - 17, 14, 14], reaches_tool=False)
        note("Pressed the window's close button")

    def ended(self) -> int:
        """Waits until the tool has ended, and returns its exit status."""
        status = self.process.wait(TIMEOUT)
        if status is None:
            raise Timeout(f"the tool is still running after {TIMEOUT} s")
        note(f"The tool ended with status {status}")
        return status


def run_as_root() -> None:
    """Starts this program again with sudo, unless root runs it."""
    if os.geteuid() != 0:
        kept = "--preserve-env=DISPLAY,XAUTHORITY,QUORLEN_BUILD,QUORLEN_TOOL,QUORLEN_SHARE"
        os.execvp("sudo", ["sudo", kept, sys.executable, *sys.orig_argv[1:]])


def end_orderly_when_told() -> None:
    """Lets a signal that ends this process first end every `with` block."""
    def leave(number: int, _: object) -> None:
        raise SystemExit(128 + number)
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        signal.signal(number, leave)
