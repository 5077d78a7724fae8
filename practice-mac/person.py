"""A person at a practice Mac: looks at the tool's window, presses what is there, and judges by what then is on disk.

    with PracticeMac(locations="all", rights="granted") as mac, mac.open_tool() as tool:
        tool.press("Remove Quorlen 3")
        tool.answer("Remove Quorlen 3?", "Remove Quorlen 3")

Every press is a real one of the X pointer or keyboard (xdotool). What is seen comes from the inspector, a bundle that
only looks. Nothing here waits for a time: everything waits for a condition, and where it does not come true, `Surprise`
is raised with what was done, what was expected and what was seen. Leaving the `with` block ends everything, whatever
happened in it; should this process be killed, a guard does so in its place.

QUORLEN_BUILD names another build folder than build/linux, QUORLEN_TOOL another executable to drive than that build's
tool, QUORLEN_SHARE a folder of this machine in which that executable may write.
"""

import contextlib
import json
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = pathlib.Path(os.environ.get("QUORLEN_BUILD", ROOT / "build/linux"))
NAME = "Quorlen 3 Removal Tool"
TOOL = pathlib.Path(os.environ.get("QUORLEN_TOOL", BUILD / f"{NAME}.app" / NAME))
SHARE = os.environ.get("QUORLEN_SHARE")
INSPECTOR = BUILD / "Inspector.bundle"
PICTURES = ROOT / "build/journeys"
COMMAND = ROOT / "practice-mac/practice-mac"

PATIENCE = 60  # seconds until a condition that has not come true never will; far above what any step takes
GLANCE = 0.05  # seconds between two looks

DEFAULT_BUTTON = "#1E78E6"  # how a button that Return presses is drawn on Debian

# GNUstep says these two lines about every bundle that its defaults make it load: they are not the tool's.
INSPECTOR_LINES = re.compile(r"^.*(Loading 1 user defined AppKit bundles|Loaded '.*Inspector\.bundle')\n", re.MULTILINE)


class Surprise(AssertionError):
    """Something is not as it must be. The text tells the story up to that point."""


story = []  # what was done and seen, in order; a failing journey is told with it


def tell(line):
    """Adds a line to the story."""
    story.append(line)


def same(seen, wanted, what):
    """Judges that two things are equal; `what` names them in words."""
    if seen != wanted:
        raise Surprise(f"{what}\n    must be: {wanted!r:.1000}\n    is:      {seen!r:.1000}")


def true(condition, what):
    """Judges that something holds; `what` says it in words."""
    if not condition:
        raise Surprise(f"not so: {what}")


def like(text, pattern):
    """Whether a text is the pattern, in which each "…" stands for anything but a line's end."""
    return re.fullmatch("[^\n]*".join(map(re.escape, pattern.split("…"))), text) is not None


def eventually(glimpse, what):
    """Looks again and again until `glimpse()` gives something true, and returns that; `what` says what is awaited."""
    deadline = time.monotonic() + PATIENCE
    while True:
        if seen := glimpse():
            return seen
        if time.monotonic() > deadline:
            raise Surprise(f"waited {PATIENCE} s in vain: {what}")
        time.sleep(GLANCE)


class PracticeMac:
    """A throw-away Mac with the product installed as asked for. Use it in a `with` statement."""

    def __init__(self, locations="all", licence=True, agent=True, daemon=True, supervised=False, rights="granted",
                 home="ann", display="virtual"):
        """`locations`: "all", "none" or numbers such as "1,4". `rights`: what becomes of each request for administrator
        rights: "granted", "refused" or "dismissed". `home`: the name of the home folder. `display`: "virtual" or an X
        display of this machine."""
        self.home = f"/Users/{home}"
        self._options = ["--home", home, "--rights", rights, "--display", display]
        self._options += self._planting(locations, licence, agent, daemon, supervised)

    @staticmethod
    def _planting(locations, licence, agent, daemon, supervised):
        flags = {"--no-licence": not licence, "--no-agent": not agent, "--no-daemon": not daemon,
                 "--supervised": supervised}
        return ["--locations", locations, *(flag for flag, wanted in flags.items() if wanted)]

    def __enter__(self):
        # The one folder that is the same inside and outside; not in /tmp, where the report looks for leftovers.
        self.shared = pathlib.Path(tempfile.mkdtemp(prefix="journey.", dir="/var/tmp"))
        self.shared.chmod(0o777)
        folders = ["--share", str(self.shared)]
        if SHARE:
            folders += ["--share", SHARE]
        if not TOOL.is_relative_to(ROOT / "build"):
            folders += ["--bind", str(TOOL.parent)]
        started = subprocess.run([COMMAND, "start", *self._options, *folders], text=True, capture_output=True)
        if started.returncode:
            shutil.rmtree(self.shared)
            raise Surprise(f"the practice Mac did not start:\n{started.stderr}")
        self.seat = started.stdout.strip()
        # Ends the Mac in this process's place when the pipe closes without a word: when this process was killed.
        self._guard = subprocess.Popen(
            ["setsid", "--fork", "sh", "-c", 'read -r line || { "$1" stop "$2"; rm -rf "$3"; }', "guard",
             COMMAND, self.seat, self.shared],
            stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            self._first_desktop = set(self.listing("Desktop"))
        except BaseException:
            self.__exit__()
            raise
        tell(f"A practice Mac started: {' '.join(self._options)}")
        return self

    def __exit__(self, *_):
        try:
            self._command("stop", self.seat)
        finally:
            self._guard.communicate(b"done\n")
            shutil.rmtree(self.shared, ignore_errors=True)

    def _command(self, *words):
        done = subprocess.run([COMMAND, *words], text=True, capture_output=True)
        if done.returncode:
            raise Surprise(f"practice-mac {' '.join(words)} failed:\n{done.stderr}")
        return done.stdout

    # Staging

    def plant(self, locations="all", licence=True, agent=True, daemon=True, supervised=False):
        """Installs the product again, as at the start."""
        tell("The product is installed again.")
        self._command("plant", self.seat, *self._planting(locations, licence, agent, daemon, supervised))

    def rights(self, decision):
        """Decides what becomes of requests for administrator rights: "granted", "refused" or "dismissed"."""
        tell(f"From now on administrator rights are {decision}.")
        self._command("rights", self.seat, decision)

    def tool_of_the_system(self, tool, mode):
        """Changes how a tool of the system behaves: "real", "missing", "fails", "silent", "hangs", …"""
        tell(f"From now on {tool} is {mode}.")
        self._command("tool", self.seat, tool, mode)

    def desktop_becomes(self, state):
        """Changes the Desktop: "normal", "missing", "read-only" or "full"."""
        tell(f"The Desktop is {state} now.")
        self._command("desktop", self.seat, state)

    def awaits_call(self, tool, count=1):
        """Returns when a tool of the system has been called so many times."""
        self._command("await", self.seat, tool, str(count))

    def run(self, *command, root=False, stdin=None):
        """Runs a command as the user, or as root, and returns its standard output."""
        done = subprocess.run([COMMAND, "run", self.seat, *(["--root"] if root else []), "--", *command],
                              input=stdin, capture_output=True)
        if done.returncode:
            raise Surprise(f"in the practice Mac, {command} ended with {done.returncode}:\n{done.stderr.decode()}")
        return done.stdout.decode(errors="surrogateescape")

    def shell(self, script, *arguments, root=False):
        """Runs a bash script, in which $1, $2, … are the arguments and the working folder is the home."""
        return self.run("bash", "-euc", 'cd "$0"; ' + script, self.home, *arguments, root=root)

    def put(self, path, content):
        """Writes a file of the user's, relative to the home or absolute."""
        self.run("bash", "-euc", 'cd "$0"; cat > "$1"', self.home, path, stdin=content)

    def passes_a_second(self):
        """Returns in another second of the clock than it was called in: names made from the clock then differ."""
        second = int(time.time())
        eventually(lambda: int(time.time()) != second, "the clock goes on")

    # Truth

    def report(self):
        """What is there, what is gone and what was called: `practice-mac report --json`."""
        return json.loads(self._command("report", self.seat, "--json"))

    def locations(self):
        """The paths of the product's eleven locations."""
        return [location["path"] for location in self.report()["locations"]]

    def calls(self, tool=None):
        """The calls of one of the system's tools, each a list of its arguments; or of all, with the names first."""
        calls = [(call["tool"].split("/")[-1], call["arguments"]) for call in self.report()["calls"]]
        return [words for name, words in calls if name == tool] if tool else [[name, *words] for name, words in calls]

    def running(self):
        """How many processes of the agent and of the daemon run."""
        facts = self.report()
        return {job: len(facts[job]["processes"]) for job in ("agent", "daemon")}

    def mode_of(self, path):
        """A file's mode, such as "600"."""
        return self.shell('stat -c %a -- "$1"', path, root=True).strip()

    def desktop(self):
        """The sorted names of what was put on the Desktop since the start."""
        return [name for name in self.listing("Desktop") if name not in self._first_desktop]

    def bytes_of(self, path):
        """A file's content, relative to the home or absolute."""
        return bytes.fromhex(self.shell('od -An -v -tx1 -- "$1" | tr -d " \\n"', path, root=True))

    def exists(self, path):
        """Whether there is anything at a path, a dangling link included."""
        return self.shell('if [ -e "$1" ] || [ -L "$1" ]; then echo yes; fi', path, root=True) == "yes\n"

    def listing(self, folder):
        """The sorted names in a folder, relative to the home or absolute; empty when there is no such folder."""
        find = '! [ -d "$1" ] || find "$1" -mindepth 1 -maxdepth 1 -printf "%f\\n" | sort'
        return self.shell(find, folder, root=True).splitlines()

    def archives(self):
        """The names of the licence backups on the Desktop, oldest first."""
        return [name for name in self.listing("Desktop") if like(name, "Quorlen-License-Backup-…-….zip")]

    def removal_logs(self):
        """The names of the removal logs on the Desktop, oldest first."""
        return [name for name in self.listing("Desktop") if like(name, "Quorlen-3-Removal-Log-…-….txt")]

    def temporary_folders(self):
        """What the tool has left in its temporary folder."""
        return self.shell("find /tmp -maxdepth 2 -name 'Quorlen-License-*' -printf '%f\\n'", root=True).split()

    def hands(self, *words):
        """Moves the pointer or the keyboard: the words of an xdotool command. Returns what it prints."""
        return self.run("xdotool", *map(str, words))

    def click(self, x, y, window=None):
        """Presses the pointer's first button at a place of the screen, or of an X window, at the pace of a person."""
        within = ["--window", window] if window else []
        self.hands("mousemove", *within, round(x), round(y), "sleep", 0.2, "mousedown", 1, "sleep", 0.15, "mouseup", 1)

    def open_tool(self, inspected=True):
        """Starts the tool; use the result in a `with` statement. Without the inspector nothing can be looked at."""
        return Tool(self, inspected)


class Tool:
    """The running tool, as a person sees and uses it. The block of its `with` statement begins when the window shows
    the first detection (at once, if nothing can be looked at), and ends with the tool, however it ends."""

    def __init__(self, mac, inspected):
        self.mac = mac
        self._inspected = inspected
        self._lines_read = 0

    def __enter__(self):
        self.witness = self.mac.shared / "witness"
        self._socket = self.mac.shared / "inspector"
        self._errors = tempfile.TemporaryFile()
        variables, arguments = [], []
        if self._inspected:
            variables = ["--env", f"PRACTICE_MAC_INSPECTOR={self._socket}",
                         "--env", f"PRACTICE_MAC_WITNESS={self.witness}"]
            arguments = ["-GSAppKitUserBundles", f'("{INSPECTOR}")']
        self.process = subprocess.Popen([COMMAND, "run", self.mac.seat, *variables, "--", TOOL, *arguments],
                                        stdin=subprocess.DEVNULL, stdout=self._errors, stderr=self._errors)
        tell("The tool was opened.")
        if not self._inspected:
            return self
        try:
            eventually(lambda: self.status() not in (None, "Checking for Quorlen 3..."),
                       "the window shows the first detection")
        except BaseException:
            self._end("launch")
            raise
        self.logged(*self.log().splitlines())
        tell(f"Its status line reads: {self.status()}")
        return self

    def __exit__(self, kind, *_):
        self._end("surprise" if kind else None)

    def _end(self, picture):
        if self.process.poll() is None:
            if picture:
                with contextlib.suppress(Surprise, OSError):
                    tell(f"The screen then: {self.picture(f'{picture}-{os.getpid()}')}")
            self.process.kill()
            self.process.wait()
        if picture:
            tell(f"The tool said on standard error: {self.said() or '(nothing)'}")
        self._errors.close()

    # Looking

    def look(self):
        """All that the tool shows now: see the inspector's Snapshot.hpp. None while it is busy or not there."""
        if self.process.poll() is not None:
            raise Surprise(f"the tool has ended with status {self.process.returncode}, and said: {self.said()}")
        with contextlib.suppress(FileNotFoundError, ConnectionError), socket.socket(socket.AF_UNIX) as line:
            line.connect(str(self._socket))
            answer = b"".join(iter(lambda: line.recv(1 << 16), b""))
            if answer and not (snapshot := json.loads(answer)).get("busy"):
                return snapshot
        return None

    def _window(self, want):
        snapshot = self.look()
        return next((w for w in snapshot["windows"] if want(w)), None) if snapshot else None

    def main_window(self):
        """The tool's own window, or None."""
        return self._window(lambda w: w["title"] == NAME and not w["modal"])  # an alert bears the tool's name too

    def modal_window(self):
        """The alert or panel that must be answered first, or None."""
        return self._window(lambda w: w["modal"])

    @staticmethod
    def views(window):
        """Every view of a window, each before its subviews."""
        waiting = list(window["views"]) if window else []
        while waiting:
            view = waiting.pop(0)
            yield view
            waiting[:0] = view["views"]

    def texts(self, window):
        """The texts that a window shows, one of each label and button that can be seen."""
        return [v["text"] for v in self.views(window) if v.get("text") and v["visible"] and v["class"] != "NSTextView"]

    def status(self):
        """The status line."""
        return next((v["text"] for v in self.views(self.main_window()) if v["in_window"] == [36, 215, 488, 22]), None)

    def _log_view(self):
        return next((v for v in self.views(self.main_window()) if v["class"] == "NSTextView"), None)

    def log(self):
        """The whole activity log."""
        return eventually(self._log_view, "the window with its log")["text"]

    def button(self, title, window=None):
        """The button of that title in a window (the main one), or None."""
        return next((v for v in self.views(window or self.main_window())
                     if v.get("text") == title and "bezel_style" in v), None)

    def shows(self, title):
        """Whether the main window shows a button of that title."""
        found = self.button(title)
        return bool(found and found["visible"])

    def buttons(self):
        """The two removal buttons as they are: which is shown, and whether each can be pressed."""
        def state(title):
            found = self.button(title)
            return ("shown" if found["visible"] else "hidden", "enabled" if found["enabled"] else "disabled")
        return {title: state(title) for title in ("Remove Quorlen 3", "Override Cleanup")}

    def has_buttons(self, wanted):
        """Waits until the two removal buttons are in these states."""
        with contextlib.suppress(Surprise):
            eventually(lambda: self.buttons() == wanted, "the buttons")
        same(self.buttons(), wanted, "the removal buttons")
        tell("The removal buttons: " + ", ".join(f"{title} {' and '.join(state)}" for title, state in wanted.items()))

    def said(self):
        """What the tool has written to its standard output and error."""
        self._errors.seek(0)
        return INSPECTOR_LINES.sub("", self._errors.read().decode(errors="replace"))

    def _outer_frame(self, window):
        """A window's edges on the screen (left, top, right, bottom), with what the window manager draws around it."""
        told = self.mac.shell('xwininfo -id "$1"; xprop -id "$1" _NET_FRAME_EXTENTS', str(window["x_window"]))
        x, y, width, height = (int(re.search(rf"{what}: +(-?\d+)", told)[1])
                               for what in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
        extents = re.search(r"= (\d+), (\d+), (\d+), (\d+)", told)
        left, right, top, bottom = map(int, extents.groups()) if extents else [0] * 4
        return x - left, y - top, x + width + right, y + height + bottom

    def picture(self, name, front_only=False):
        """Saves a picture of the screen, cut to the tool's windows, or the front one, where they can be seen, and returns
        its path."""
        windows = (self.look() or {"windows": []})["windows"]
        frames = [self._outer_frame(window) for window in windows[:1 if front_only else None]]
        cut = []
        if frames:
            left, top, right, bottom = (f(edges) for f, edges in zip((min, min, max, max), zip(*frames)))
            cut = ["-crop", f"{right - left:.0f}x{bottom - top:.0f}+{left:.0f}+{top:.0f}", "+repage"]
        PICTURES.mkdir(parents=True, exist_ok=True)
        path = PICTURES / f"{name}.png"
        with open(path, "wb") as file:
            subprocess.run([COMMAND, "run", self.mac.seat, "--", "import", "-window", "root", *cut, "png:-"],
                           stdout=file, check=True)
        return path

    def settled_picture(self, name, front_only=False):
        """Saves a picture as `picture` does, once all is drawn: two in a row have the same colours, and the button that
        Return presses in an alert or panel has its own."""
        last = [None]

        def glimpse():
            path = self.picture(name, front_only)
            colours = subprocess.run(["convert", path, "-format", "%c", "histogram:info:-"], check=True, text=True,
                                     stdout=subprocess.PIPE).stdout
            default = any(v.get("key_equivalent") == "\r" and v["enabled"] and v["visible"]
                          for v in self.views(self.modal_window()))
            before, last[0] = last[0], colours
            return path if before == colours and (DEFAULT_BUTTON in colours or not default) else None
        return eventually(glimpse, f"the picture {name!r} shows all that is drawn")

    # Judging what is seen

    def rests(self, status):
        """Waits until no alert is open and the status line reads so."""
        def glimpse():
            snapshot = self.look()
            return snapshot and not any(w["modal"] for w in snapshot["windows"]) and self.status() == status
        eventually(glimpse, f"no alert open and the status line {status!r}; it is {self.status()!r}")
        tell(f"The status line reads: {status}")

    def logged(self, *lines):
        """Waits for the log lines since the last call (or the launch): exactly these; a "…" stands for anything."""
        seen = []

        def glimpse():
            seen[:] = self.log().splitlines()[self._lines_read:]
            return len(seen) >= len(lines)
        with contextlib.suppress(Surprise):
            eventually(glimpse, "the log")
        if len(seen) != len(lines) or not all(map(like, seen, lines)):
            wanted, found = ("".join(f"        {line}\n" for line in text) for text in (lines, seen))
            raise Surprise(f"the activity log since the last look\n    must be:\n{wanted}    is:\n{found}")
        self._lines_read += len(seen)
        tell("The log gained: " + " | ".join(seen))

    def sees_alert(self, message, informative=None, buttons=None):
        """Waits for an alert with this message; judges its other texts if they are given."""
        window = eventually(lambda: (w := self.modal_window()) and message in self.texts(w) and w,
                            f"the alert {message!r}")
        tell(f"An alert: {message}")
        if informative is not None:
            shown = [" ".join(v["text"].split()) for v in self.views(window) if "bezeled" in v and v["text"] != message]
            same(shown, [informative], f"what the alert {message!r} explains")
        if buttons is not None:
            shown = [v for v in self.views(window) if v.get("action") == "buttonAction:" and v["visible"]]
            shown.sort(key=lambda v: v["on_screen"][0], reverse=True)  # the first button stands rightmost
            same([v["text"] for v in shown], list(buttons), f"the buttons of the alert {message!r}, right to left")
        return window

    # Pressing

    def _click(self, rectangle):
        x, y, width, height = rectangle
        self.mac.click(x + width / 2, y + height / 2)

    def _still(self, find, what):
        """What `find()` gives, once it gives the same twice: what the window manager still moves can't be aimed at."""
        last = [None]

        def glimpse():
            before, last[0] = last[0], find()
            return last[0] if last[0] and before and before["on_screen"] == last[0]["on_screen"] else None
        return eventually(glimpse, what)

    def press(self, title):
        """Presses a button that is shown and enabled, in the alert or panel if one is open, else in the window."""
        def find():
            snapshot = self.look()
            if not snapshot:
                return None
            window = next((w for w in snapshot["windows"] if w["modal"]), None) \
                or next((w for w in snapshot["windows"] if w["title"] == NAME), None)
            found = window and self.button(title, window)
            return found if found and found["visible"] and found["enabled"] else None
        self._click(self._still(find, f"a button {title!r} that can be pressed")["on_screen"])
        tell(f"Pressed: {title}")

    def press_in_vain(self, title):
        """Clicks where a button of the main window is, whether or not it is enabled or covered by an alert."""
        self._click(self.button(title)["on_screen"])
        tell(f"Clicked on {title}, which should do nothing")

    def answer(self, message, title, informative=None, buttons=None):
        """Waits for an alert, judges its texts if they are given, and presses one of its buttons."""
        self.sees_alert(message, informative, buttons)
        self.press(title)

    def key(self, name):
        """Types a key, by its X name: "Return", "Escape", "Caps_Lock", …"""
        self.mac.hands("key", name)
        tell(f"Typed: {name}")

    @contextlib.contextmanager
    def shift_held(self, key="Shift_L"):
        """Holds a Shift key down during the block."""
        self.mac.hands("keydown", key)
        tell(f"{key} goes down")
        try:
            yield
        finally:
            self.mac.hands("keyup", key)
            tell(f"{key} goes up")

    def moves_pointer(self):
        """Moves the pointer across the window, and waits until the tool is idle again."""
        x, y, width, height = self.main_window()["frame"]
        self.mac.hands("mousemove", x + 40, y + 40, "sleep", 0.1, "mousemove", x + width / 2, y + 60, "sleep", 0.1)
        eventually(self.look, "the tool answers")

    def choose_file(self, *path):
        """Chooses a file in the open panel, by the folders and the name that lead to it from the home folder."""
        self._press_in_panel("_setHomeDirectory")
        for name in path:
            def find_cell():
                columns = [v for v in self.views(self.modal_window()) if "cells" in v]
                columns.sort(key=lambda column: column["on_screen"][0], reverse=True)
                cells = [cell for column in columns for cell in column["cells"]
                         if cell["text"] == name and cell["shown"][3] >= 10]  # not one that is scrolled out of sight
                return dict(cells[0], on_screen=cells[0]["shown"]) if cells else None
            self._click(self._still(find_cell, f"{name!r} in the panel")["on_screen"])
        tell(f"Chose in the panel: {'/'.join(path)}")

    def confirm_panel(self):
        """Presses the open panel's confirming button."""
        self._press_in_panel("ok:")

    def cancel_panel(self):
        """Presses the open panel's "Cancel"."""
        self._press_in_panel("cancel:")

    def _press_in_panel(self, action):
        def find():
            buttons = (v for v in self.views(self.modal_window()) if v.get("action") == action)
            return next((button for button in buttons if button["enabled"]), None)
        self._click(self._still(find, f"the panel's button for {action}")["on_screen"])
        tell(f"Pressed in the panel: the button for {action}")

    def close_window(self, window=None):
        """Presses the close button that the window manager draws at the right end of a window's title bar."""
        x, y, width, _ = (window or self.main_window())["frame"]
        self._click([x + width - 18, y - 17, 14, 14])
        tell("Pressed the window's close button")

    def ended(self):
        """Waits until the tool has ended by itself, and returns its exit status."""
        try:
            status = self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            raise Surprise("the tool is still running") from None
        tell(f"The tool ended with status {status}")
        return status


def end_orderly_when_told():
    """Makes a request to end unwind every `with` block."""
    def leave(number, _):
        raise SystemExit(128 + number)
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        signal.signal(number, leave)
