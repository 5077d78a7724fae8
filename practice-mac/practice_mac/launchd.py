"""The practice Mac's first process. It reaps orphans, runs the product's jobs as launchd does, records all calls of
the stand-ins, runs programs for the machine outside, and stages and reports.

A request is one line of JSON: {"verb": VERB, ARGUMENT: VALUE, …}. The answer is {"result": …} or {"error": TEXT}.
`verbs` lists them. Requests come through two sockets: "control" in the Mac's folder on the machine outside, and SOCKET
inside. Only root may make requests. The answers are computed inside, so a link inside never leads to a file outside.
"""
import json
import os
import plistlib
import pwd
import selectors
import signal
import socket
import stat
import struct
import subprocess
import time
from collections.abc import Callable
from dataclasses import dataclass
from typing import Any

from . import command, program, stand_ins
from .staging import Stage, StagingError

SOCKET = "/run/practice/launchd"
STAND_INS_SOCKET = "/run/practice/stand-ins"
REQUEST_TIMEOUT = 10  # seconds in which a client must send its whole request
NO_SUCH_JOB, BOOTOUT_FAILED, USAGE = 3, 5, 64


@dataclass
class Job:
    """One launch agent or daemon. uid 0 is the system's domain; any other uid is that user's."""

    label: str
    path: str
    uid: int
    gid: int
    restarts: int  # how many more times it is started after it has ended
    pid: int = 0
    starts: int = 0
    loaded: bool = True
    process: subprocess.Popen | None = None  # kept: the subprocess module would reap a process without a reference

    def start(self) -> None:
        """Returns when the program has its own command line."""
        self.process = subprocess.Popen([self.path, "infinity"], user=self.uid, group=self.gid, extra_groups=[],
                                        start_new_session=True, stdin=subprocess.DEVNULL)
        self.pid = self.process.pid
        self.starts += 1

    def stop(self) -> None:
        if self.pid:
            os.kill(self.pid, signal.SIGTERM)

    def unload(self) -> None:
        """Returns when the program has ended."""
        self.loaded = False
        if self.pid:
            os.kill(self.pid, signal.SIGKILL)
            os.waitpid(self.pid, 0)
            self.pid = 0


@dataclass
class Waiting:
    """A client that waits until a tool has been called `count` times."""

    client: socket.socket
    tool: str
    count: int
    deadline: float
    timeout: float


class Launchd:
    def __init__(self, control: socket.socket, home: str, display: str) -> None:
        self.jobs: dict[str, Job] = {}
        self.calls: list[dict] = []
        self.waiting: list[Waiting] = []
        self.hanging: list[socket.socket] = []  # stand-ins that must hang
        self.modes = {name: "real" for name in stand_ins.STAND_INS}
        self.display = display
        self.stage = Stage(self, home)
        self.verbs: dict[str, Callable[..., Any]] = {
            "calls": lambda: self.calls, "connect": self.connect, "desktop": self.stage.set_desktop,
            "look": self.look, "locations": self.stage.locations, "open": self.open, "plant": self.stage.plant,
            "report": self.stage.report, "rights": self.stage.set_rights, "running": self.stage.running,
            "tool": self.stage.set_tool}
        self.selector = selectors.DefaultSelector()

        woken, waker = os.pipe2(os.O_NONBLOCK | os.O_CLOEXEC)
        signal.signal(signal.SIGCHLD, lambda *_: None)
        signal.set_wakeup_fd(waker)
        self.selector.register(woken, selectors.EVENT_READ, lambda woken: (os.read(woken, 4096), self.collect()))

        inside = socket.socket(socket.AF_UNIX)
        inside.bind(SOCKET)
        tools = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        tools.bind(STAND_INS_SOCKET)
        for listener, path, answer in ((control, None, self.answer), (inside, SOCKET, self.answer),
                                       (tools, STAND_INS_SOCKET, self.answer_stand_in)):
            if path:
                os.chmod(path, 0o666)
            listener.listen(64)
            self.selector.register(listener, selectors.EVENT_READ, lambda it, answer=answer: answer(it.accept()[0]))

    def serve(self) -> None:
        """Handles events while the Mac is up."""
        while True:
            until = min((waiting.deadline for waiting in self.waiting), default=None)
            for key, _ in self.selector.select(None if until is None else max(0, until - time.monotonic())):
                key.data(key.fileobj)
            self.answer_waiting()

    def collect(self) -> None:
        """Reaps the processes that have ended, and restarts supervised jobs."""
        while True:
            try:
                pid, _ = os.waitpid(-1, os.WNOHANG)
            except ChildProcessError:
                return
            if pid == 0:
                return
            for job in self.jobs.values():
                if job.pid == pid:
                    job.pid = 0
                    if job.restarts > 0:
                        job.restarts -= 1
                        job.start()

    # --- Requests

    def answer(self, client: socket.socket) -> None:
        """Answers the one request of a client, at once or later."""
        self.collect()
        uid = caller(client)
        client.settimeout(REQUEST_TIMEOUT)
        try:
            line, descriptors = receive_request(client)
            if uid != 0:
                raise StagingError("only root may make requests")
            request = json.loads(line)
            if "words" in request:
                request = command.request_of(request["words"])
            verb = request.pop("verb")
            if verb == "run":
                self.run(client, descriptors, request)
            elif verb == "await":
                timeout = request["timeout"]
                self.waiting.append(
                    Waiting(client, request["tool"], request["count"], time.monotonic() + timeout, timeout))
            elif verb in self.verbs:
                reply(client, {"result": self.verbs[verb](**request)})
            else:
                raise StagingError(f"unknown verb: {verb}")
        except (StagingError, OSError, ValueError, KeyError, TypeError) as problem:
            reply(client, {"error": str(problem) if isinstance(problem, (StagingError, OSError)) else repr(problem)})

    def run(self, client: socket.socket, descriptors: list[int], request: dict) -> None:
        """Starts a process that runs a program for the client."""
        if os.fork() == 0:
            try:
                signal.set_wakeup_fd(-1)
                self.selector.close()
                program.supervise(client, descriptors, self.stage.user, self.display, **request)
            finally:
                os._exit(0)
        for descriptor in descriptors:
            os.close(descriptor)
        client.close()

    def answer_waiting(self) -> None:
        for waiting in list(self.waiting):
            made = sum(os.path.basename(call["tool"]) == waiting.tool for call in self.calls)
            if made >= waiting.count:
                answer: dict = {"result": None}
            elif time.monotonic() >= waiting.deadline:
                answer = {"error": f"{waiting.tool} was called {made} times and not {waiting.count} times "
                                   f"within {waiting.timeout:g} s"}
            else:
                continue
            self.waiting.remove(waiting)
            reply(waiting.client, answer)

    # --- Files

    def look(self, path: str) -> dict | None:
        """Kind, mode and entries of what is at a path, and whether it is found when links are followed; None if nothing
        is there. The path is absolute or relative to the home."""
        path = os.path.join(self.stage.home, path)
        try:
            status = os.lstat(path)
        except (FileNotFoundError, NotADirectoryError):
            return None
        link = stat.S_ISLNK(status.st_mode)
        return {"kind": "link" if link else "folder" if stat.S_ISDIR(status.st_mode) else "file",
                "mode": f"{stat.S_IMODE(status.st_mode):o}", "found": os.path.exists(path),
                "entries": sorted(os.listdir(path)) if os.path.isdir(path) else []}

    def open(self, path: str) -> "Descriptor":
        """A file, open for reading."""
        return Descriptor(os.open(os.path.join(self.stage.home, path), os.O_RDONLY | os.O_NONBLOCK | os.O_NOCTTY))

    @staticmethod
    def connect(path: str) -> "Descriptor":
        """A connection to a program's socket."""
        with socket.socket(socket.AF_UNIX) as line:
            line.settimeout(1)
            line.connect(path)
            line.setblocking(True)
            return Descriptor(line.detach())

    # --- The stand-ins

    def answer_stand_in(self, client: socket.socket) -> None:
        """Records a call of a stand-in and sends it its orders: see inside/stand-in."""
        uid = caller(client)
        client.settimeout(REQUEST_TIMEOUT)
        try:
            tool, *words = map(os.fsdecode, client.recv(1 << 20).split(b"\0"))
        except OSError:
            client.close()
            return
        self.calls.append({"order": len(self.calls) + 1, "tool": tool, "arguments": words,
                           "user": pwd.getpwuid(uid).pw_name})
        name = os.path.basename(tool)
        orders = stand_ins.orders(name, self.modes[name], words, uid, self) if name in self.modes else ["exit", "127"]
        if orders is None:
            self.hanging.append(client)
            return
        try:
            client.send(b"\0".join(map(os.fsencode, orders)))
        except OSError:
            pass  # the stand-in has ended
        client.close()

    # --- Jobs

    def load(self, job: Job) -> None:
        """Starts a job. Unloads an older job with the same label."""
        if job.label in self.jobs:
            self.jobs[job.label].unload()
        self.jobs[job.label] = job
        job.start()

    def launchctl(self, words: list[str], uid: int) -> tuple[int, str]:
        """Status and message of launchctl's subcommands that concern jobs."""
        match words:
            case ["stop", label] | ["remove", label]:
                job = self.jobs.get(label)
                if not job or not job.loaded or job.uid != uid:
                    return NO_SUCH_JOB, f"Could not find service \"{label}\""
                job.stop() if words[0] == "stop" else job.unload()
                return 0, ""
            case ["bootout", "system", path]:
                try:
                    with open(path, "rb") as file:
                        job = self.jobs.get(plistlib.load(file)["Label"])
                except (OSError, KeyError, plistlib.InvalidFileException):
                    job = None
                if uid != 0 or not job or not job.loaded or job.uid != 0:
                    return BOOTOUT_FAILED, "Boot-out failed: 5: Input/output error"
                job.unload()
                return 0, ""
        return USAGE, f"Unrecognized subcommand or arguments: {' '.join(words)}"


class Descriptor(int):
    """An answer that is an open file. It is sent to the client and closed here."""


def caller(client: socket.socket) -> int:
    """The uid of the client, from the kernel."""
    return struct.unpack("3i", client.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12))[1]


def receive_request(client: socket.socket) -> tuple[bytes, list[int]]:
    """The line of a request and the descriptors that come with it."""
    line, descriptors = b"", []
    while not line.endswith(b"\n"):
        part, passed, _, _ = socket.recv_fds(client, 1 << 16, 3)
        if not part:
            raise ValueError("incomplete request")
        line += part
        descriptors += passed
    return line, descriptors


def reply(client: socket.socket, answer: dict) -> None:
    """Sends the answer and closes the connection."""
    result = answer.get("result")
    try:
        line = json.dumps(answer).encode() + b"\n"
        if isinstance(result, Descriptor):
            socket.send_fds(client, [line], [result])
            os.close(result)
        else:
            client.sendall(line)
    except OSError:
        pass  # the client has gone
    client.close()
