#!/usr/bin/python3
"""Attacks by another process of the user, between the click and the end of the cleanup script.

usage: tests/faults/attacks_test.py

Tries each attack of docs/security.md on a practice Mac, with the user's own rights, and then checks the disk. An attack
that the design withstands must fail. An attack that it cannot withstand must succeed, as the document says.
QUORLEN_BUILD is the build folder (build/linux).
"""

import os
import pathlib
import signal
import subprocess
import sys
from collections.abc import Callable

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import scene  # noqa: E402
from scene import HOME, as_ann  # noqa: E402

FOREIGN = pathlib.Path("/srv/foreign")  # a folder of root's, with nothing of the product
MARK = FOREIGN / "mark"                 # a file that an attack leaves if it runs something as root
BAIT = HOME / "bait"                    # the attacker's files
LOGS = HOME / "Library/Logs/Quorlen"    # the last of the locations
SWAPS = 2000                            # folders that an attacker swaps while they are deleted

# Replaces each folder by a link and back, repeatedly. Prints the number of swaps after the first folder was deleted.
SWAPPER = """
import atexit, os, signal, sys
during, gone = 0, set()
atexit.register(lambda: print(during, flush=True))
signal.signal(signal.SIGTERM, lambda *_: sys.exit())
print("swapping", flush=True)
while len(gone) < int(sys.argv[2]):
    for number in range(int(sys.argv[2])):
        if number in gone:
            continue
        try:
            os.rename(f"d{number}/e", f"d{number}/f")
            os.symlink(sys.argv[1], f"d{number}/e")
            os.unlink(f"d{number}/e")
            os.rename(f"d{number}/f", f"d{number}/e")
            during += bool(gone)
        except OSError:
            gone.add(number)
"""


def root_tree() -> None:
    """Makes root's folder again, with entries that have the product's names and entries that do not."""
    subprocess.run(["rm", "-rf", FOREIGN, BAIT], check=True)
    for name in ("precious/file", "Quorlen/file"):
        path = FOREIGN / name
        path.parent.mkdir(parents=True)
        path.write_text("root's\n")
    FOREIGN.chmod(0o755)


def shell_of_ann(script: str) -> None:
    """Runs a shell script as the user in the user's home."""
    subprocess.run(as_ann("/bin/sh", "-euc", script), cwd=HOME, check=True, timeout=scene.TIMEOUT)


def removed(folder: pathlib.Path = HOME, **environment: object) -> bool:
    """Makes a removal in the attacker's environment. Returns whether it succeeded and removed all locations."""
    return ended_well(scene.start_operation("Removal", folder=folder, **environment))


def ended_well(process: subprocess.Popen) -> bool:
    """Returns whether a removal succeeded and removed all locations."""
    status, output = scene.finished(process)
    if status:
        print(output)
    return status == 0 and not LOGS.exists() and not pathlib.Path("/Applications/Quorlen.app").exists()


def untouched() -> bool:
    """Returns whether root's folder still has all its entries and no mark."""
    return (FOREIGN / "precious/file").exists() and (FOREIGN / "Quorlen/file").exists() and not MARK.exists()


def bait_program(name: str) -> None:
    """Makes a program of the attacker that leaves the mark if it runs as root."""
    shell_of_ann(f"mkdir -p {BAIT}; cd {BAIT}; printf '#!/bin/sh\\n: > {MARK}\\n' > {name}; chmod 755 {name}")


def a_location_is_a_link() -> bool:
    """A location is a link to another user's folder: the link is removed, the folder stays."""
    shell_of_ann(f"rm -rf Library/Logs/Quorlen; ln -s {FOREIGN}/precious Library/Logs/Quorlen")
    return removed() and untouched() and not LOGS.is_symlink()


def an_entry_below_a_location_is_a_link() -> bool:
    """There are links to another user's folder below a location: they are removed, the folder stays."""
    shell_of_ann(f"mkdir -p Library/Logs/Quorlen/deep; ln -s {FOREIGN} Library/Logs/Quorlen/deep/link")
    return removed() and untouched()


def entries_are_swapped_while_they_are_deleted() -> bool:
    """While root deletes, folders below a location repeatedly become links to another user's folder."""
    shell_of_ann(f"mkdir -p {LOGS}; cd {LOGS}; "
                 f"for i in $(seq 0 {SWAPS - 1}); do mkdir -p d$i/e; for j in 1 2 3 4 5; do : > d$i/e/$j; done; done")
    with subprocess.Popen(as_ann("/usr/bin/python3", "-ISc", SWAPPER, FOREIGN, SWAPS), cwd=LOGS, text=True,
                          stdout=subprocess.PIPE) as swapping:
        swapping.stdout.readline()
        status, _ = scene.finished(scene.start_operation("Removal"))
        swapping.terminate()
        during = int(swapping.stdout.readline())
    print(f"attack: {during} swaps were made after the first of {SWAPS} folders was deleted", flush=True)
    # A swap at the wrong moment prevents the deletion of the folder. Then the removal fails, and the next one
    # completes.
    return during > 0 and untouched() and (status == 0 or status == 1 and removed() and untouched())


def a_parent_is_a_link() -> bool:
    """A folder above a location is a link: an item with the location's name in the linked folder is deleted."""
    shell_of_ann(f"rm -rf Library/Logs; ln -s {FOREIGN} Library/Logs")
    deleted = removed() and not (FOREIGN / "Quorlen").exists() and (FOREIGN / "precious/file").exists()
    shell_of_ann("rm Library/Logs; mkdir Library/Logs")
    return deleted


def the_environment_is_hostile() -> bool:
    """The attacker sets variables of shells, loaders and interpreters, and puts programs first on the search path."""
    for name in ("launchctl", "pkill", "rm", "sfltool", "cat", "sh", "startup"):
        bait_program(name)
    startup = BAIT / "startup"
    done = removed(PATH=f"{BAIT}:/usr/bin:/bin", ENV=startup, BASH_ENV=startup, IFS="/", SHELL=BAIT / "sh",
                     SHELLOPTS="xtrace", PS4=f"$({startup})", TMPDIR=BAIT)
    return done and untouched()


def the_home_variable_points_elsewhere() -> bool:
    """HOME is another user's folder."""
    library = FOREIGN / "Library/Logs/Quorlen"
    library.mkdir(parents=True)
    return removed(HOME=FOREIGN) and untouched() and library.exists()


def the_working_folder_is_hostile() -> bool:
    """The tool is started in a folder with the attacker's programs."""
    for name in ("cat", "sh", "rm", "eval", "exit", "set"):
        bait_program(name)
    return removed(folder=BAIT) and untouched()


def the_text_is_overwritten() -> bool:
    """While root's shell runs, the attacker writes to its script through the tool's descriptor."""
    scene.stage("tool", "launchctl", "hangs")
    process = scene.start_operation("Removal")
    tried = refused = 0
    scene.wait_until(hanging_launchctl, "launchctl is called")
    for link in pathlib.Path("/proc").glob("[0-9]*/fd/*"):
        try:
            if "shell-text" not in os.readlink(link):
                continue
        except OSError:
            continue
        tried += 1
        attempt = subprocess.run(as_ann("/bin/sh", "-c", f"echo 'echo > {MARK}' >> {link}"), stderr=subprocess.DEVNULL)
        refused += attempt.returncode != 0
    scene.stage("tool", "launchctl", "real")
    for pid in hanging_launchctl():
        os.kill(pid, signal.SIGKILL)
    return ended_well(process) and tried > 0 and tried == refused and untouched()


def hanging_launchctl() -> list[int]:
    """Returns the processes of a launchctl that hangs."""
    return [pid for pid, command in scene.commands() if b"\0/bin/launchctl\0" in command]


def a_label_is_borrowed() -> bool:
    """Another user's process has a label of the product in its arguments: it is killed."""
    bystander = subprocess.Popen(["/bin/sh", "-c", "sleep 600; : com.vendrel.QuorlenDaemon"], process_group=0)
    killed = removed() and bystander.wait(timeout=60) == -signal.SIGTERM
    os.killpg(bystander.pid, signal.SIGKILL)  # the sleep that the shell started
    return killed


# Each attack, and whether the design withstands it.
ATTACKS: dict[Callable[[], bool], bool] = {
    a_location_is_a_link: True,
    an_entry_below_a_location_is_a_link: True,
    entries_are_swapped_while_they_are_deleted: True,
    a_parent_is_a_link: False,
    the_environment_is_hostile: True,
    the_home_variable_points_elsewhere: True,
    the_working_folder_is_hostile: True,
    the_text_is_overwritten: True,
    a_label_is_borrowed: False,
}


def inside() -> int:
    """Tries all attacks and returns the exit status."""
    wrong = 0
    for attack, withstood in ATTACKS.items():
        root_tree()
        scene.set_up("Removal")
        as_documented = attack()
        wrong += not as_documented
        print(f"attack: {attack.__doc__.splitlines()[0]} {'Withstood' if withstood else 'Cannot be withstood'}"
              f"{'.' if as_documented else ': THE TEST SHOWS OTHERWISE.'}", flush=True)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(inside() if sys.argv[1:] == ["inside"] else scene.run_in_mac(__file__))
