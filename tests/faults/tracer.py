"""Makes one system call of a program fail, or kills the program before one call. Needs root.

The kernel shows this process each call of the KINDS before it makes it (seccomp_unotify(2)): also the calls that the C
library makes internally (posix_spawn, stdio), and those of the programs that the program starts. A call counts while
the program has a window open, which it opens and closes with an unused form of prctl(2). Programs that have gained
rights (pkexec and what it starts) run on undisturbed.
"""

import errno
import fcntl
import os
import select
import signal
import socket
import struct
import subprocess
from collections.abc import Callable, Iterable
from concurrent.futures import ThreadPoolExecutor
from contextlib import suppress
from pathlib import Path
from typing import IO, NamedTuple

import seccomp


class Kind(NamedTuple):
    """System calls that can return the same errors."""

    calls: tuple[str, ...]
    errors: tuple[int, ...]
    of_files: bool = False  # whether only the calls on files and folders count, not those on terminals, pipes, sockets


OPEN = Kind(("open", "openat", "openat2", "creat"),
            (errno.ENOSPC, errno.EACCES, errno.EIO, errno.EINTR, errno.EMFILE))
READ = Kind(("read", "pread64"), (errno.EIO, errno.EINTR), of_files=True)
WRITE = Kind(("write", "pwrite64", "writev", "sendfile", "copy_file_range"),
             (errno.ENOSPC, errno.EIO, errno.EINTR), of_files=True)
RENAME = Kind(("rename", "renameat", "renameat2", "link", "linkat"), (errno.ENOSPC, errno.EACCES, errno.EIO))
MKDIR = Kind(("mkdir", "mkdirat"), (errno.ENOSPC, errno.EACCES, errno.EIO))
UNLINK = Kind(("unlink", "unlinkat", "rmdir"), (errno.EACCES, errno.EIO))
FORK = Kind(("fork", "vfork", "clone", "clone3"), (errno.EAGAIN, errno.ENOMEM))
EXEC = Kind(("execve", "execveat"), (errno.EACCES, errno.EIO, errno.EMFILE))
WAIT = Kind(("wait4", "waitid"), (errno.EINTR,))
KINDS = (OPEN, READ, WRITE, RENAME, MKDIR, UNLINK, FORK, EXEC, WAIT)

KIND_OF = {seccomp.resolve_syscall(seccomp.Arch(), name): kind for kind in KINDS for name in kind.calls}
WINDOW = 0x51464c54  # the first argument of the prctl that opens (1) or closes (0) a window: Operation.mm

# <linux/seccomp.h>
RECEIVE, SEND = 0xc0502100, 0xc0182101
REQUEST, ANSWER = struct.Struct("=QIIiIQ6Q"), struct.Struct("=QqiI")
CONTINUE = 1

KILL = -1


class Fault(NamedTuple):
    """What happens at one call."""

    call: int   # its number in the window, from 1 on
    error: int  # it fails with this error; KILL: the program and its children are killed before it


class Call(NamedTuple):
    """A call in a window."""

    kind: Kind
    of_child: bool


class Tracer:
    """Runs a program. At each window's opening it takes that window's fault, or None, from `faults`; at the program's
    end it asks `faults` once more."""

    def __init__(self, faults: Iterable[Fault | None], when_killed: Callable[[], None] = lambda: None) -> None:
        self.calls: list[Call] = []  # those of the last window, in order
        self.struck = 0              # the number of faults that were made
        self.killed = False          # whether one of them was a kill
        self._faults = iter(faults)
        self._fault: Fault | None = None
        self._when_killed = when_killed
        self._window_of = 0          # the process whose window is open
        self._processes: set[int] = set()

    def run(self, command: list[str], folder: Path, output: IO[str], timeout: float) -> int:
        """Runs a program and waits for its end and for that of every program that it started. Returns its status."""
        ours, theirs = socket.socketpair()

        def submit_to_tracer() -> None:
            calls = seccomp.SyscallFilter(seccomp.ALLOW)
            calls.set_attr(seccomp.Attr.CTL_NNP, False)  # pkexec can still gain rights
            for number in KIND_OF:
                calls.add_rule(seccomp.NOTIFY, number)
            calls.add_rule(seccomp.NOTIFY, "prctl", seccomp.Arg(0, seccomp.EQ, WINDOW))
            calls.load()
            socket.send_fds(theirs, [b"calls"], [calls.get_notify_fd()])

        with ours, theirs, ThreadPoolExecutor() as threads:
            program = threads.submit(subprocess.run, command, cwd=folder, preexec_fn=submit_to_tracer, stdout=output,
                                     timeout=timeout)
            program.add_done_callback(lambda _: theirs.close())
            _, listeners, _, _ = socket.recv_fds(ours, 16, 1)
            for listener in listeners:  # none if the program could not be started
                with open(listener, "rb", buffering=0):
                    self._serve(listener)
            next(self._faults, None)
            return program.result().returncode

    def _serve(self, listener: int) -> None:
        """Answers the kernel until the last process has ended."""
        requests = select.poll()
        requests.register(listener, select.POLLIN)
        while requests.poll()[0][1] & select.POLLIN:
            with suppress(FileNotFoundError, ProcessLookupError):  # the process has ended meanwhile
                request, process, _, number, _, _, *arguments = REQUEST.unpack(
                    fcntl.ioctl(listener, RECEIVE, bytes(REQUEST.size)))
                error = self._enter(process, number, arguments)
                fcntl.ioctl(listener, SEND, ANSWER.pack(request, 0, -error, 0 if error else CONTINUE))

    def _enter(self, process: int, number: int, arguments: list[int]) -> int:
        """Takes note of a call. Returns the error with which it fails; 0 lets the kernel make it."""
        if os.stat(f"/proc/{process}").st_uid == 0:
            return 0
        self._processes.add(process)
        kind = KIND_OF.get(number)
        if not kind:
            self._window_of = process if arguments[1] else 0
            if self._window_of:
                self.calls = []
                self._fault = next(self._faults)
        elif self._window_of and not (kind.of_files and not is_file(process, arguments[0])):
            self.calls.append(Call(kind, process != self._window_of))
            if self._fault and self._fault.call == len(self.calls):
                self.struck += 1
                if self._fault.error != KILL:
                    return self._fault.error
                self.killed = True
                self._kill()
                self._when_killed()
        if self.killed:
            self._kill()
        return 0

    def _kill(self) -> None:
        for process in self._processes:
            with suppress(ProcessLookupError):
                os.kill(process, signal.SIGKILL)


def is_file(process: int, descriptor: int) -> bool:
    """Returns whether a descriptor of a process is a file or folder."""
    try:
        target = os.readlink(f"/proc/{process}/fd/{descriptor}")
    except OSError:
        return False
    return target.startswith("/") and not target.startswith("/dev/")
