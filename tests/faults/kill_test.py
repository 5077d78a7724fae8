#!/usr/bin/python3
"""Kills a removal and a restore before each of the system calls by which they open, read, write, rename, make, remove,
fork, execute or wait, and looks each time whether the licence is complete somewhere and a second run completes.

usage: tests/faults/kill_test.py [MOMENTS]     MOMENTS: how many calls of each operation, evenly spread; all by default

The tool and its archiver are killed together, as when a machine is switched off; what runs as root by then goes on, as
it would not, and is waited for. Runs in a practice Mac of its own; QUORLEN_BUILD names the build folder (build/linux).
"""

import os
import pathlib
import subprocess
import sys
import time
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("QUORLEN_BUILD", ROOT / "build/linux"))
COMMAND = ROOT / "practice-mac/practice-mac"
TOOLS = BUILD / "tests/faults"
HOME = pathlib.Path("/Users/ann")
LICENCE = HOME / "Library/Application Support/Quorlen/.licence"
DESKTOP = HOME / "Desktop"
CHOSEN = HOME / "chosen.zip"
OLD, NEW = b"A" * 20_000, b"B" * 15_000


def outside(moments, script=pathlib.Path(__file__)):
    """Starts a practice Mac and goes on in it as root, with this script or another one. Returns the exit status."""
    seat = subprocess.run([COMMAND, "start", "--bind", BUILD, "--bind", ROOT / "tests"], check=True, text=True,
                          stdout=subprocess.PIPE).stdout.strip()
    try:
        return subprocess.run([COMMAND, "run", seat, "--root", "--env", f"QUORLEN_BUILD={BUILD}", "--",
                               "/usr/bin/python3", "-B", script.resolve(), moments, "inside"]).returncode
    finally:
        subprocess.run([COMMAND, "stop", seat], check=True)


def run(operation, kill_at):
    """Runs an operation as the user, killed before a call (0: never). Returns its status and its number of calls."""
    done = subprocess.run(
        [TOOLS / "tracer", "--kill", str(kill_at),
         "/usr/bin/setpriv", "--reuid", "ann", "--regid", "ann", "--init-groups", "/usr/bin/env", "-i",
         f"HOME={HOME}", "USER=ann", "LOGNAME=ann", "PATH=/usr/bin:/bin", "LANG=C.UTF-8", "DISPLAY=:99",
         "ASAN_OPTIONS=detect_leaks=0",  # of a sanitized build: the leak check would have to trace the program itself
         f"QUORLEN_ARCHIVE={CHOSEN}", TOOLS / "operation", f"--gtest_filter=*{operation}"],
        cwd=HOME, text=True, capture_output=True)
    if kill_at == 0 and done.returncode:
        raise SystemExit(f"kill: {operation} does not complete:\n{done.stdout}{done.stderr}")
    return done.returncode, int(done.stdout.split()[-1])


def no_script_runs():
    """Waits until nothing of the cleanup script runs any more."""
    def runs():
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                command = (folder / "cmdline").read_bytes()
            except OSError:
                continue
            if command.startswith((b"/usr/bin/pkexec\0", b"/bin/sh\0-c\0eval")):
                return True
        return False
    while runs():
        time.sleep(0.01)


def write_as_ann(path, content):
    """Writes a file of the user's, with its folders."""
    missing = [folder for folder in [path, *path.parents] if not folder.exists()]
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)
    owner = HOME.stat()
    for made in missing:
        os.chown(made, owner.st_uid, owner.st_gid)


def stage(operation):
    """Puts everything into its first state."""
    for path in DESKTOP.glob("Quorlen-*"):
        path.unlink()
    if operation == "Removal":
        subprocess.run(["/opt/practice/stage", "plant", "--no-agent", "--no-daemon"], check=True)
    else:
        with zipfile.ZipFile(CHOSEN, "w") as archive:
            archive.writestr("folder/.licence", NEW)
        CHOSEN.chmod(0o644)
    write_as_ann(LICENCE, OLD)


def archives_hold(licence):
    """Whether one of the archives holds the licence, complete."""
    for path in [*DESKTOP.glob("*.zip"), CHOSEN]:
        try:
            with zipfile.ZipFile(path) as archive:
                if any(archive.read(name) == licence for name in archive.namelist() if name.endswith(".licence")):
                    return True
        except (OSError, zipfile.BadZipFile):
            pass
    return False


def complete(licence):
    """Whether a licence is complete in its own place or in an archive."""
    return LICENCE.is_file() and LICENCE.read_bytes() == licence or archives_hold(licence)


def kill_everywhere(operation, wanted):
    """Kills an operation at so many moments (0: at each). Returns what was found wrong."""
    stage(operation)
    _, calls = run(operation, 0)
    count = min(wanted or calls, calls)
    moments = sorted({1 + number * calls // count for number in range(count)})
    found, killed, windows = [], 0, 0
    for moment in moments:
        stage(operation)
        status, _ = run(operation, moment)
        killed += status == 128 + 9
        # A restore's user has agreed to lose the old licence; the new one is in the chosen archive.
        licence = OLD if operation == "Removal" else NEW
        windows += not LICENCE.exists()
        if not complete(licence):
            found.append(f"{operation}, killed before call {moment}: the licence is nowhere complete")
        no_script_runs()
        if not complete(licence):
            found.append(f"{operation}, killed before call {moment}: the licence is gone once the script has ended")
        run(operation, 0)
        if not complete(licence):
            found.append(f"{operation}, killed before call {moment}: the second run lost the licence")
        if operation == "Restore" and LICENCE.read_bytes() != NEW:
            found.append(f"{operation}, killed before call {moment}: the second run did not restore it")
    print(f"kill: {operation}: {calls} calls, killed at {killed} moments, {windows} of them without a licence in its "
          f"own place; {len(found)} faults found", flush=True)
    if not killed:
        found.append(f"{operation}: nothing was killed")
    return found


def inside(wanted):
    """Does all of it, and returns the exit status."""
    found = kill_everywhere("Restore", wanted) + kill_everywhere("Removal", wanted)
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    words = sys.argv[1:]
    sys.exit(inside(int(words[0])) if words[1:] == ["inside"] else outside(words[0] if words else "0"))
