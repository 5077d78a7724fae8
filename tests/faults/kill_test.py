#!/usr/bin/python3
"""Kills a removal and a restore before each system call that opens, reads, writes, renames, makes, removes, forks,
executes or waits. Checks each time that the licence is complete somewhere and that a second run completes.

usage: tests/faults/kill_test.py [MOMENTS]     MOMENTS: the number of calls to kill at; by default all

It kills the tool and its archiver together, as at a power failure. Unlike at a power failure, a script that runs as
root goes on, and the test waits for its end. MOMENTS are spread evenly over each operation. It runs in its own practice
Mac. QUORLEN_BUILD is the build folder (build/linux).
"""

import pathlib
import sys
import zipfile

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import scene  # noqa: E402
from scene import CHOSEN, DESKTOP, LICENCE, NEW, OLD  # noqa: E402


def run(operation: str, kill_at: int) -> tuple[int, int]:
    """Runs an operation and kills it before a call (0: never). Waits for its cleanup script. Returns its status and its
    number of calls."""
    status, output = scene.finished(scene.start_operation(operation, kill_at))
    if kill_at == 0 and status:
        raise SystemExit(f"kill: {operation} does not complete:\n{output}")
    return status, int(output.split()[-1])


def archives_hold(licence: bytes) -> bool:
    """Returns whether one of the archives has the complete licence."""
    for path in [*DESKTOP.glob("*.zip"), CHOSEN]:
        try:
            with zipfile.ZipFile(path) as archive:
                if any(archive.read(name) == licence for name in archive.namelist() if name.endswith(".licence")):
                    return True
        except (OSError, zipfile.BadZipFile):
            pass
    return False


def complete(licence: bytes) -> bool:
    """Returns whether a licence is complete in its location or in an archive."""
    return LICENCE.is_file() and LICENCE.read_bytes() == licence or archives_hold(licence)


def kill_everywhere(operation: str, wanted: int) -> list[str]:
    """Kills an operation at `wanted` calls (0: at each). Returns the faults that it found."""
    scene.set_up(operation)
    _, calls = run(operation, 0)
    count = min(wanted or calls, calls)
    moments = sorted({1 + number * calls // count for number in range(count)})
    found, killed, windows = [], 0, 0
    for moment in moments:
        scene.set_up(operation)
        process = scene.start_operation(operation, moment)
        killed += process.wait(scene.TIMEOUT) == scene.KILLED
        # A restore's user has agreed to lose the old licence; the new one is in the chosen archive.
        licence = OLD if operation == "Removal" else NEW
        windows += not LICENCE.exists()
        if not complete(licence):
            found.append(f"{operation}, killed before call {moment}: no complete licence is left")
        scene.finished(process)
        if not complete(licence):
            found.append(f"{operation}, killed before call {moment}: no complete licence is left after the script")
        run(operation, 0)
        if not complete(licence):
            found.append(f"{operation}, killed before call {moment}: the second run lost the licence")
        if operation == "Restore" and LICENCE.read_bytes() != NEW:
            found.append(f"{operation}, killed before call {moment}: the second run did not restore it")
    print(f"kill: {operation}: {calls} calls, killed at {killed} moments, {windows} of them without a licence in its "
          f"location; {len(found)} faults found", flush=True)
    if not killed:
        found.append(f"{operation}: nothing was killed")
    return found


def inside(wanted: int) -> int:
    """Tests both operations and returns the exit status."""
    found = kill_everywhere("Restore", wanted) + kill_everywhere("Removal", wanted)
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    words = sys.argv[1:]
    if words[:1] == ["inside"]:
        sys.exit(inside(int(words[1])))
    sys.exit(scene.run_in_mac(__file__, words[0] if words else "0"))
