"""Shared by kill_test.py and attacks_test.py: a practice Mac in which they run as root, and one operation of the tool
under the tracer."""

import os
import pathlib
import subprocess
import sys
import time
import zipfile
from collections.abc import Callable

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("QUORLEN_BUILD", ROOT / "build/linux"))
TOOLS = BUILD / "tests/faults"
HOME = pathlib.Path("/Users/ann")
LICENCE = HOME / "Library/Application Support/Quorlen/.licence"
DESKTOP = HOME / "Desktop"
CHOSEN = HOME / "chosen.zip"
OLD, NEW = b"A" * 20_000, b"B" * 15_000
KILLED = 128 + 9
TIMEOUT = 120  # seconds; the limit of every wait
POLL_INTERVAL = 0.01


def run_in_mac(script: str, *words: str) -> int:
    """Runs a script in a new practice Mac as root, with "inside" as its first word. Returns its exit status."""
    sys.path.insert(0, str(ROOT / "practice-mac"))
    from practice_mac import command
    return command.main(["try", "--bind", str(BUILD), "--bind", str(ROOT / "tests"), "--root",
                         "--env", f"QUORLEN_BUILD={BUILD}", "--",
                         "/usr/bin/python3", "-SB", str(pathlib.Path(script).resolve()), "inside", *words])


def stage(*words: str) -> None:
    """Runs a staging verb of the practice Mac."""
    subprocess.run(["/opt/practice/stage", *words], check=True, timeout=TIMEOUT)


def wait_until(condition: Callable[[], object], what: str) -> None:
    """Waits for a condition. Ends the test if the condition is still false after TIMEOUT."""
    deadline = time.monotonic() + TIMEOUT
    while not condition():
        if time.monotonic() > deadline:
            sys.exit(f"still waiting after {TIMEOUT} s: {what}")
        time.sleep(POLL_INTERVAL)


def as_ann(*command: str | pathlib.Path, **environment: object) -> list[str]:
    """Returns the command line that runs a command as the user."""
    variables = {"HOME": HOME, "USER": "ann", "LOGNAME": "ann", "PATH": "/usr/bin:/bin", "LANG": "C.UTF-8",
                 "DISPLAY": ":99",
                 "ASAN_OPTIONS": "detect_leaks=0",  # sanitized builds: the leak check needs to trace the program
                 **environment}
    return ["/usr/bin/setpriv", "--reuid", "ann", "--regid", "ann", "--init-groups", "/usr/bin/env", "-i",
            *(f"{name}={value}" for name, value in variables.items()), *map(str, command)]


def start_operation(name: str, kill_at: int = 0, folder: pathlib.Path = HOME,
                    **environment: object) -> subprocess.Popen:
    """Starts a Removal or Restore as the user and kills it before a call (0: never). It prints its number of calls."""
    return subprocess.Popen(
        [TOOLS / "tracer", "--kill", str(kill_at),
         *as_ann(TOOLS / "operation", f"--gtest_filter=*{name}", QUORLEN_ARCHIVE=CHOSEN, **environment)],
        cwd=folder, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def finished(process: subprocess.Popen) -> tuple[int, str]:
    """Waits for an operation and for the cleanup script that it started. Returns its status and its output."""
    try:
        output, _ = process.communicate(timeout=TIMEOUT)
    except subprocess.TimeoutExpired:
        process.kill()
        sys.exit(f"an operation did not end within {TIMEOUT} s")
    wait_until(lambda: not scripts(), "the cleanup script ends")
    return process.returncode, output


def scripts() -> list[int]:
    """Returns the processes of a running cleanup script."""
    return [pid for pid, command in commands() if command.startswith((b"/usr/bin/pkexec\0", b"/bin/sh\0-c\0eval"))]


def commands() -> list[tuple[int, bytes]]:
    """Returns the processes with their command lines."""
    found = []
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            found.append((int(folder.name), (folder / "cmdline").read_bytes()))
        except OSError:
            continue  # the process has ended
    return found


def write_as_ann(path: pathlib.Path, content: bytes) -> None:
    """Writes a file of the user and makes its folders."""
    missing = [folder for folder in [path, *path.parents] if not folder.exists()]
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)
    owner = HOME.stat()
    for made in missing:
        os.chown(made, owner.st_uid, owner.st_gid)


def set_up(operation: str) -> None:
    """Sets up the first state of an operation."""
    for path in DESKTOP.glob("Quorlen-*"):
        path.unlink()
    if operation == "Removal":
        stage("plant", "--no-agent", "--no-daemon")
    else:
        with zipfile.ZipFile(CHOSEN, "w") as archive:
            archive.writestr("folder/.licence", NEW)
        CHOSEN.chmod(0o644)
    write_as_ann(LICENCE, OLD)
