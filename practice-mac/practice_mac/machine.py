"""The library for the machine outside: starts a practice Mac, makes requests to it, runs programs in it, stops it."""
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
from typing import Any

FOLDER = Path(__file__).resolve().parents[1]
BUILD = FOLDER.parent / "build"
PREFIX = "practice-mac."
TIMEOUT = 120  # seconds for a start, an answer, or a program whose output is wanted
BOOT = "import sys, pathlib; sys.path.insert(0, sys.argv[1]); " \
    "from practice_mac import boot; boot.main(pathlib.Path(sys.argv[2]))"


class PracticeMacError(Exception):
    """A practice Mac can't do what was requested; the text says why."""


class Program:
    """A program that runs in a practice Mac."""

    def __init__(self, line: socket.socket) -> None:
        self._line = line
        self.returncode: int | None = None

    def wait(self, timeout: float | None = None) -> int | None:
        """Its exit status, or 128 plus the number of the signal that ended it; None if it still runs after `timeout`
        seconds."""
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
    """A running practice Mac, named by its folder, the instance. The end of a `with` statement stops it."""

    def __init__(self, instance: Path) -> None:
        self.instance = instance

    @classmethod
    def start(cls, home: str = "ann", rights: str = "granted", display: str = "virtual", bind: Sequence[str] = (),
              share: Sequence[str] = (), until: int | None = None, **planting: Any) -> "Mac":
        """Starts one; the options are those of `practice-mac start`, `planting` those of `Stage.plant`. If the start
        fails, raises PracticeMacError and keeps nothing. It also keeps nothing if it is interrupted."""
        # An entry of /etc/passwd cannot hold a colon or a line feed.
        if home in ("", ".", "..") or set(home) & set("/:\n"):
            raise PracticeMacError(f"not a home folder's name: '{home}'")
        settings = {"home": f"/Users/{home}", "rights": rights, "display": display, "until": until,
                    "bind": [real_folder(path) for path in [*([BUILD] if BUILD.is_dir() else []), *bind]],
                    "share": [real_folder(path) for path in share],
                    "xauthority": check_display(display), "planting": planting}
        boot = None
        # Until the folder to remove is known, signals that end this process wait.
        held = signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGTERM, signal.SIGINT, signal.SIGHUP})
        mac = cls(Path(tempfile.mkdtemp(prefix=PREFIX)))
        try:
            signal.pthread_sigmask(signal.SIG_SETMASK, held)
            with tempfile.TemporaryFile() as errors:
                cache = ["-X", f"pycache_prefix={BUILD}/python"] if BUILD.is_dir() else ["-B"]
                boot = subprocess.Popen(
                    [sys.executable, "-IS", *cache, "-c", BOOT, FOLDER, mac.instance], stdin=subprocess.PIPE,
                    stdout=subprocess.PIPE, stderr=errors, start_new_session=True, cwd="/")
                with boot.stdin:
                    boot.stdin.write(json.dumps(settings).encode())
                answers = select.select([boot.stdout], [], [], TIMEOUT)[0]
                if not answers or boot.stdout.readline() != b"ready\n":
                    errors.seek(0)
                    said = errors.read().decode(errors="replace") + ("" if answers else f"no answer in {TIMEOUT} s")
                    raise PracticeMacError(f"{said.strip()}\n"
                                           "the practice Mac did not start; nothing of it was kept")
        except BaseException:
            if boot:
                boot.kill()  # the Mac's first process dies with it
                boot.stdout.read()  # ends when all of its processes have ended
                boot.wait()
            shutil.rmtree(mac.instance, ignore_errors=True)
            raise
        boot.stdout.close()
        if until is None:
            boot.wait()
        boot.returncode = 0  # one that waits for another process is not reaped here
        return mac

    @classmethod
    def named(cls, name: str) -> "Mac":
        """Returns the Mac of that name; raises PracticeMacError if there is none."""
        path = Path(name)
        if not (path.is_absolute() and path.name.startswith(PREFIX) and path.is_dir() and path.owner() == "root"):
            raise PracticeMacError(f"no such practice Mac: {name}")
        return cls(path)

    @classmethod
    def all(cls) -> list["Mac"]:
        """All in this machine's temporary folder."""
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
                line.recv(1)  # at the connection's end the process has ended, and another one may have its number
            except BlockingIOError:
                signal.pidfd_send_signal(first, signal.SIGKILL)  # the kernel also kills every other process in the Mac
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
        """Makes a request to the Mac's launchd and returns the result; an open file is returned as a descriptor. Raises
        PracticeMacError if the Mac refuses or does not answer."""
        with self._request([], verb=verb, **arguments) as line:
            line.settimeout(TIMEOUT + arguments.get("timeout", 0))
            passed: list[int] = []
            answer = receive(line, passed)
        if "error" in answer:
            raise PracticeMacError(f"{verb}: {answer['error']}")
        return passed[0] if passed else answer["result"]

    # Programs

    def open_program(self, command: list[str | bytes | Path], stdin: int, stdout: int, stderr: int, root: bool = False,
                     variables: dict[str, str] | None = None) -> Program:
        """Starts a program as the user ann, or as root, with these descriptors as its streams."""
        words = [os.fsdecode(word) for word in command]
        return Program(self._request([stdin, stdout, stderr], verb="run", command=words, root=root,
                                     variables=variables or {}))

    def run(self, *command: str | bytes | Path, root: bool = False, stdin: bytes = b"",
            variables: dict[str, str] | None = None) -> subprocess.CompletedProcess:
        """Runs a program as the user ann, or as root, and waits for its end; its output is bytes. After TIMEOUT, kills
        it and raises PracticeMacError."""
        with contextlib.ExitStack() as files:
            streams = [files.enter_context(tempfile.TemporaryFile()) for _ in range(3)]
            streams[0].write(stdin)
            streams[0].seek(0)
            running = self.open_program(list(command), *(stream.fileno() for stream in streams), root, variables)
            status = running.wait(TIMEOUT)
            if status is None:
                running.kill()
                raise PracticeMacError(f"in the practice Mac, {command} was killed: it ran longer than {TIMEOUT} s")
            for stream in streams[1:]:
                stream.seek(0)
            return subprocess.CompletedProcess(command, status, streams[1].read(), streams[2].read())

    def output(self, *command: str | bytes | Path, root: bool = False, stdin: bytes = b"") -> str:
        """Runs a program and returns its standard output; PracticeMacError if it fails."""
        done = self.run(*command, root=root, stdin=stdin)
        if done.returncode:
            raise PracticeMacError(f"in the practice Mac, {command} ended with {done.returncode}:\n"
                                   f"{done.stderr.decode(errors='replace')}")
        return done.stdout.decode(errors="surrogateescape")

    # Files, by paths that are absolute or relative to the home

    def look(self, path: str | Path) -> dict | None:
        """What is at a path, as `Launchd.look` describes it; None if nothing is there."""
        return self.ask("look", path=str(path))

    def exists(self, path: str | Path) -> bool:
        """Whether there is anything at a path, a dangling link included."""
        return self.look(path) is not None

    def read(self, path: str | Path) -> bytes:
        """A file's content."""
        with open(self.ask("open", path=str(path)), "rb") as file:
            return file.read()


def receive(line: socket.socket, passed: list[int] | None = None) -> dict:
    """An answer of launchd. Descriptors that come with it are added to `passed`."""
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


def real_folder(path: str | Path) -> str:
    """The path of a folder without links; PracticeMacError if there is none."""
    if not Path(path).is_dir():
        raise PracticeMacError(f"no such folder: {path}")
    return str(Path(path).resolve())


def check_display(display: str) -> str:
    """The X authority file for a display of this machine; PracticeMacError if there is no such display."""
    if display in ("virtual", "none"):
        return ""
    if not re.fullmatch(r":\d+", display):
        raise PracticeMacError(f"not a display of this machine: {display} (virtual, none or :N)")
    if not Path(f"/tmp/.X11-unix/X{display[1:]}").is_socket():
        raise PracticeMacError(f"display {display} has no socket in /tmp/.X11-unix; try --display virtual")
    home = pwd.getpwuid(int(os.environ.get("SUDO_UID", os.getuid()))).pw_dir
    return os.environ.get("XAUTHORITY", f"{home}/.Xauthority")
