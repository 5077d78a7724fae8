"""The practice Mac as the machine outside sees it: starts one, asks it, runs programs in it, stops it."""
import contextlib
import json
import os
import pwd
import re
import select
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
from collections.abc import Sequence
from pathlib import Path
from typing import Any, BinaryIO

FOLDER = Path(__file__).resolve().parents[1]
BUILD = FOLDER.parent / "build"
PREFIX = "practice-mac."
TIMEOUT = 120  # seconds until an answer that has not come never will
BOOT = "import sys, pathlib; sys.path.insert(0, sys.argv[1]); " \
    "from practice_mac import boot; boot.main(pathlib.Path(sys.argv[2]))"


class PracticeMacError(Exception):
    """What was asked of a practice Mac can't be done; the text says why."""


class Program:
    """A program that runs in a practice Mac."""

    def __init__(self, line: socket.socket) -> None:
        self._line = line
        self.returncode: int | None = None

    def wait(self, timeout: float | None = None) -> int | None:
        """Its exit status, 128 and the signal's number if one ended it; None if it has not ended within so many seconds."""
        if self.returncode is None and select.select([self._line], [], [], timeout)[0]:
            answer = receive(self._line)
            self._line.close()
            if "error" in answer:
                raise PracticeMacError(answer["error"])
            self.returncode = answer["result"]
        return self.returncode

    def poll(self) -> int | None:
        """Its exit status if it has ended."""
        return self.wait(0)

    def send_signal(self, number: int) -> None:
        """Sends the program and its children a signal."""
        if self.poll() is None:
            with contextlib.suppress(OSError):
                self._line.send(bytes([number]))

    def kill(self) -> None:
        """Kills it and its children, and returns when it has ended."""
        self.send_signal(signal.SIGKILL)
        self.wait(TIMEOUT)


class Mac:
    """A running practice Mac. Its folder, the instance, names it; a `with` statement stops it at the end."""

    def __init__(self, instance: Path) -> None:
        self.instance = instance

    @classmethod
    def start(cls, home: str = "ann", rights: str = "granted", display: str = "virtual", bind: Sequence[str] = (),
              share: Sequence[str] = (), until: int | None = None, locations: list[int] | str = "all", licence: bool = True,
              agent: bool = True, daemon: bool = True, supervised: bool = False) -> "Mac":
        """Starts one; the options are those of `practice-mac start`. Raises PracticeMacError and keeps nothing if it
        does not come up, and keeps nothing either if anything interrupts it meanwhile."""
        # A password entry cannot hold a colon or a line feed.
        if home in ("", ".", "..") or set(home) & set("/:\n"):
            raise PracticeMacError(f"not a home folder's name: '{home}'")
        settings = {"home": f"/Users/{home}", "rights": rights, "display": display, "until": until,
                    "bind": [real_folder(path) for path in [*([BUILD] if BUILD.is_dir() else []), *bind]],
                    "share": [real_folder(path) for path in share],
                    "xauthority": check_display(display),
                    "planting": {"locations": numbers(locations), "licence": licence, "agent": agent,
                                 "daemon": daemon, "supervised": supervised}}
        boot = None
        # An end that is asked for now waits until what it has to remove is known.
        held = signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGTERM, signal.SIGINT, signal.SIGHUP})
        mac = cls(Path(tempfile.mkdtemp(prefix=PREFIX)))
        try:
            signal.pthread_sigmask(signal.SIG_SETMASK, held)
            with tempfile.TemporaryFile() as errors:
                cache = ["-X", f"pycache_prefix={BUILD}/python"] if BUILD.is_dir() else ["-B"]
                boot = subprocess.Popen(
                    [sys.executable, "-IS", *cache, "-c", BOOT, FOLDER, mac.instance], stdin=subprocess.PIPE, stderr=errors,
                    stdout=subprocess.PIPE, start_new_session=True, cwd="/")
                with boot.stdin:
                    boot.stdin.write(json.dumps(settings).encode())
                if boot.stdout.readline() != b"ready\n":
                    errors.seek(0)
                    raise PracticeMacError(f"{errors.read().decode(errors='replace').strip()}\n"
                                           "the practice Mac did not come up; nothing of it was kept")
        except BaseException:
            if boot:
                boot.kill()  # its first process dies with it
                boot.stdout.read()  # to the end, which comes when all of its processes have ended
                boot.wait()
            shutil.rmtree(mac.instance, ignore_errors=True)
            raise
        boot.stdout.close()
        if until is None:
            boot.wait()
        boot.returncode = 0  # if it watches another process, it is not waited for
        return mac

    @classmethod
    def named(cls, name: str) -> "Mac":
        """The Mac of that name; PracticeMacError if there is none."""
        path = Path(name)
        if not (path.is_absolute() and path.name.startswith(PREFIX) and path.is_dir() and path.owner() == "root"):
            raise PracticeMacError(f"no such practice Mac: {name}")
        return cls(path)

    @classmethod
    def all(cls) -> list["Mac"]:
        """Those of this machine's temporary folder."""
        return [cls(path) for path in sorted(Path(tempfile.gettempdir()).glob(f"{PREFIX}*")) if path.is_dir()]

    def __enter__(self) -> "Mac":
        return self

    def __exit__(self, *_: object) -> None:
        self.stop()

    def stop(self) -> None:
        """Ends all of its processes, waits for that, and removes its folder."""
        with contextlib.suppress(PracticeMacError, ProcessLookupError), self._connect() as line:
            pid = struct.unpack("3i", line.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12))[0]
            first = os.pidfd_open(pid)
            line.setblocking(False)
            try:
                line.recv(1)  # The connection's end: it has ended meanwhile, and the number may be another process's.
            except BlockingIOError:
                signal.pidfd_send_signal(first, signal.SIGKILL)  # The kernel ends every other process with it.
                select.select([first], [], [])
            os.close(first)
        shutil.rmtree(self.instance, ignore_errors=True)

    def is_up(self) -> bool:
        try:
            self._connect().close()
        except PracticeMacError:
            return False
        return True

    def _connect(self) -> socket.socket:
        line = socket.socket(socket.AF_UNIX)
        try:
            folder = os.open(self.instance, os.O_PATH | os.O_DIRECTORY)
            try:
                line.connect(f"/proc/self/fd/{folder}/control")  # the whole path may be too long for an address
            finally:
                os.close(folder)
        except OSError:
            line.close()
            raise PracticeMacError(f"this practice Mac has ended: {self.instance}") from None
        return line

    def _request(self, descriptors: list[int], **request: Any) -> socket.socket:
        line = self._connect()
        socket.send_fds(line, [json.dumps(request).encode() + b"\n"], descriptors)
        return line

    def ask(self, verb: str, **arguments: Any) -> Any:
        """Asks the Mac's launchd, which answers without starting a process. A file comes as a descriptor."""
        with self._request([], verb=verb, **arguments) as line:
            line.settimeout(TIMEOUT + arguments.get("timeout", 0))
            passed: list[int] = []
            answer = receive(line, passed)
        if "error" in answer:
            raise PracticeMacError(f"{verb}: {answer['error']}")
        return passed[0] if passed else answer["result"]

    def plant(self, locations: list[int] | str = "all", licence: bool = True, agent: bool = True, daemon: bool = True,
              supervised: bool = False) -> None:
        """Installs the product again; the options are those of `practice-mac plant`."""
        self.ask("plant", locations=numbers(locations), licence=licence, agent=agent, daemon=daemon,
                 supervised=supervised)

    # Programs

    def open_program(self, command: list[str | bytes | Path], stdin: int, stdout: int, stderr: int, root: bool = False,
                     variables: dict[str, str] | None = None) -> Program:
        """Starts a program as the user ann, or as root, with these descriptors as its streams."""
        words = [os.fsdecode(word) for word in command]
        return Program(self._request([stdin, stdout, stderr], verb="run", command=words, root=root,
                                     variables=variables or {}))

    def run(self, *command: str | bytes | Path, root: bool = False, stdin: bytes = b"",
            variables: dict[str, str] | None = None) -> subprocess.CompletedProcess:
        """Runs a program as the user ann, or as root, and waits for it; its output is bytes."""
        with contextlib.ExitStack() as files:
            streams: list[BinaryIO] = [files.enter_context(open(os.memfd_create("stream"), "w+b")) for _ in range(3)]
            streams[0].write(stdin)
            streams[0].seek(0)
            status = self.open_program(list(command), *(stream.fileno() for stream in streams), root, variables).wait()
            for stream in streams[1:]:
                stream.seek(0)
            return subprocess.CompletedProcess(command, status, streams[1].read(), streams[2].read())

    def output(self, *command: str | bytes | Path, root: bool = False, stdin: bytes = b"") -> str:
        """What a program writes; PracticeMacError if it fails."""
        done = self.run(*command, root=root, stdin=stdin)
        if done.returncode:
            raise PracticeMacError(f"in the practice Mac, {command} ended with {done.returncode}:\n"
                                   f"{done.stderr.decode(errors='replace')}")
        return done.stdout.decode(errors="surrogateescape")

    # Questions about files, by paths that may begin at the home

    def look(self, path: str | Path) -> dict | None:
        """Kind, mode, owner, target and entries of what is at a path; None where nothing is."""
        return self.ask("look", path=str(path))

    def exists(self, path: str | Path) -> bool:
        """Whether there is anything at a path, a dangling link included."""
        return self.look(path) is not None

    def read(self, path: str | Path) -> bytes:
        """A file's content."""
        with open(self.ask("open", path=str(path)), "rb") as file:
            return file.read()


def receive(line: socket.socket, passed: list[int] | None = None) -> dict:
    """An answer of launchd's, and the descriptors that come with it."""
    answer = b""
    try:
        while not answer.endswith(b"\n"):
            part, descriptors, _, _ = socket.recv_fds(line, 1 << 20, 1)
            if not part:
                return {"error": "the practice Mac has ended"}
            answer += part
            if passed is not None:
                passed += descriptors
    except ConnectionError:
        return {"error": "the practice Mac has ended"}
    except TimeoutError:
        return {"error": "the practice Mac does not answer"}
    return json.loads(answer)


def numbers(chosen: list[int] | str) -> list[int]:
    """Locations by their numbers: "all", "none" or "1,4,11"."""
    if isinstance(chosen, list):
        return chosen
    if chosen in ("all", "none"):
        return list(range(1, 12)) if chosen == "all" else []
    found = {int(word) if word.isdecimal() else 0 for word in chosen.split(",")}
    if not found <= set(range(1, 12)):
        raise PracticeMacError(f"locations are all, none or numbers from 1 to 11, and not {chosen}")
    return sorted(found)


def real_folder(path: str | Path) -> str:
    """The path of a folder without links; PracticeMacError if there is none."""
    if not Path(path).is_dir():
        raise PracticeMacError(f"no such folder: {path}")
    return str(Path(path).resolve())


def check_display(display: str) -> str:
    """The X authority file for a display of this machine; PracticeMacError if it is no such display."""
    if display in ("virtual", "none"):
        return ""
    if not re.fullmatch(r":\d+", display):
        raise PracticeMacError(f"not a display of this machine: {display} (virtual, none or :N)")
    if not Path(f"/tmp/.X11-unix/X{display[1:]}").is_socket():
        raise PracticeMacError(f"display {display} has no socket in /tmp/.X11-unix; try --display virtual")
    home = pwd.getpwuid(int(os.environ.get("SUDO_UID", os.getuid()))).pw_dir
    return os.environ.get("XAUTHORITY", f"{home}/.Xauthority")
