"""Runs one program for the machine outside, as the user ann or as root."""
import json
import os
import pwd
import select
import signal
import socket
from pathlib import Path

from . import dismissal

RIGHTS = Path("/run/practice/rights")
PATH = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"
NOT_RUN, NOT_FOUND = 126, 127


def environment(user: pwd.struct_passwd, display: str) -> dict[str, str]:
    """The environment of every program of that user."""
    found = {"PATH": PATH, "LANG": "C.UTF-8", "SHELL": "/bin/bash", "HOME": user.pw_dir, "USER": user.pw_name,
             "LOGNAME": user.pw_name}
    if display != "none":
        found["DISPLAY"] = ":99" if display == "virtual" else display
    if display.startswith(":"):
        found["XAUTHORITY"] = "/run/practice/xauthority"
    return found


def supervise(client: socket.socket, descriptors: list[int], ann: pwd.struct_passwd, display: str,
              command: list[str], root: bool, variables: dict[str, str]) -> None:
    """Runs a program with the client's three descriptors as its streams, and sends the client the exit status.
    Each byte from the client is the number of a signal for the program. The program is killed if the client
    disconnects.

    This process stays the program's parent: pkexec refuses to run as launchd's child. polkit assigns a request to the
    program or, if the program is pkexec, to this parent, so an agent is registered for both."""
    user = pwd.getpwuid(0) if root else ann
    client.settimeout(None)
    held, release = os.pipe()
    pid = os.fork()
    if pid == 0:
        os.setsid()
        os.close(release)
        os.read(held, 1)
        execute(descriptors, user, environment(user, display) | variables, command)
    for descriptor in (*descriptors, held):
        os.close(descriptor)
    if not root and RIGHTS.read_text(encoding="ascii").strip() == "dismissed":
        dismissal.dismiss_prompts_of(os.getpid(), pid)
    os.write(release, b"g")  # closing it is not enough, because the agent has it open too
    ended = os.pidfd_open(pid)
    while ended not in (readable := select.select([ended, client], [], [])[0]):
        if client in readable:
            number = client.recv(1)
            for kill in (os.killpg, os.kill):
                try:
                    kill(pid, number[0] if number else signal.SIGKILL)
                    break
                except ProcessLookupError:
                    continue  # it has no group yet, or has ended
            if not number:
                return
    status = os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])
    client.sendall(json.dumps({"result": status if status >= 0 else 128 - status}).encode() + b"\n")


def execute(descriptors: list[int], user: pwd.struct_passwd, variables: dict[str, str], command: list[str]) -> None:
    """Becomes the program."""
    try:
        for number, descriptor in enumerate(descriptors):
            os.dup2(descriptor, number)
        signal.set_wakeup_fd(-1)
        for number in (signal.SIGCHLD, signal.SIGPIPE):
            signal.signal(number, signal.SIG_DFL)
        os.umask(0o022)
        os.initgroups(user.pw_name, user.pw_gid)
        os.setgid(user.pw_gid)
        os.setuid(user.pw_uid)
        os.chdir(user.pw_dir)
        os.environ.clear()  # execvpe searches its PATH
        os.environ.update(variables)
        os.execvpe(command[0], command, variables)
    except OSError as problem:
        os.write(2, f"practice-mac: {command[0]}: {problem.strerror}\n".encode(errors="replace"))
        os._exit(NOT_FOUND if isinstance(problem, FileNotFoundError) else NOT_RUN)
