#!/usr/bin/python3
"""Attacks by another process of the user, between the click and the end of the cleanup script.

usage: tests/faults/attacks_test.py

Makes each attack that docs/security.md marks "tried" on a practice Mac, with the user's own rights, and then checks the
disk. An attack that the design withstands must fail. One that it cannot withstand must succeed, as the document says.
QUORLEN_BUILD is the build folder (build/linux).
"""

import json
import os
import shutil
import signal
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent))
import scene  # noqa: E402
from scene import HOME  # noqa: E402

FOREIGN = Path("/srv/foreign")             # a folder of root's
ROOTS = {"precious/file", "Quorlen/file"}  # its files; one is in a folder with the name of a location
MARK = FOREIGN / "mark"                    # a file that an attack leaves if it runs something as root
BAIT = HOME / "bait"                       # the attacker's files
LOGS = HOME / "Library/Logs/Quorlen"       # the last of the locations
SWAPS = 2000                               # folders that an attacker swaps while they are deleted

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


def shell_of_ann(script: str) -> None:
    """Runs a shell script as the user in the user's home."""
    subprocess.run(scene.as_ann("/bin/sh", "-euc", script), cwd=HOME, check=True, timeout=scene.TIMEOUT)


def write_as_root(*files: str) -> None:
    """Writes files below root's folder."""
    for path in map(FOREIGN.joinpath, files):
        path.parent.mkdir(parents=True)
        path.write_text("root's\n")


def bait_programs(*names: str) -> None:
    """Makes programs of the attacker that leave the mark if they run as root."""
    shell_of_ann(f"mkdir {BAIT}; cd {BAIT}; "
                 f"for name in {' '.join(names)}; do printf '#!/bin/sh\\n: > {MARK}\\n' > $name; chmod 755 $name; done")


def start_removal(folder: Path = HOME, **environment: object) -> subprocess.Popen:
    """Starts a removal in the attacker's environment."""
    return subprocess.Popen(scene.operation("Removal", **environment), cwd=folder, text=True, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT)


class Attacks(unittest.TestCase):
    def setUp(self) -> None:
        for folder in (FOREIGN, BAIT):
            shutil.rmtree(folder, ignore_errors=True)
        write_as_root(*ROOTS)
        scene.set_up("Removal")

    def tearDown(self) -> None:
        print(f"attack: {self.shortDescription()}", flush=True)

    def completes(self, removal: subprocess.Popen) -> None:
        """Checks that a removal succeeds and removes all locations."""
        output, _ = removal.communicate(timeout=scene.TIMEOUT)
        self.assertEqual(removal.returncode, 0, output)
        self.assertFalse(os.path.lexists(LOGS))

    def root_keeps(self, files: set[str]) -> None:
        """Checks that root's folder has these files and no mark."""
        self.assertEqual({str(path.relative_to(FOREIGN)) for path in FOREIGN.rglob("*") if path.is_file()}, files)

    def test_a_location_is_a_link(self) -> None:
        """A location is a link to another user's folder: the link is removed, the folder stays."""
        shell_of_ann(f"rm -rf {LOGS}; ln -s {FOREIGN}/precious {LOGS}")
        self.completes(start_removal())
        self.root_keeps(ROOTS)

    def test_an_entry_below_a_location_is_a_link(self) -> None:
        """There are links to another user's folder below a location: they are removed, the folder stays."""
        shell_of_ann(f"mkdir {LOGS}/deep; ln -s {FOREIGN} {LOGS}/deep/link")
        self.completes(start_removal())
        self.root_keeps(ROOTS)

    def test_entries_are_swapped_while_they_are_deleted(self) -> None:
        """While root deletes, folders below a location repeatedly become links to another user's folder."""
        shell_of_ann(f"cd {LOGS}; for i in $(seq 0 {SWAPS - 1}); do mkdir -p d$i/e; "
                     "for j in 1 2 3 4 5; do : > d$i/e/$j; done; done")
        with subprocess.Popen(scene.as_ann("/usr/bin/python3", "-ISc", SWAPPER, FOREIGN, SWAPS), cwd=LOGS, text=True,
                              stdout=subprocess.PIPE) as swapping:
            try:
                swapping.stdout.readline()
                removal = start_removal()
                output, _ = removal.communicate(timeout=scene.TIMEOUT)
            finally:
                swapping.terminate()  # otherwise it swaps while a folder is left
            during = int(swapping.stdout.readline())
        print(f"attack: {during} swaps were made after the first of {SWAPS} folders was deleted")
        self.assertGreater(during, 0)
        self.root_keeps(ROOTS)
        # A swap at the wrong moment prevents the deletion of the folder. Then the removal fails, and the next one
        # completes.
        self.assertIn(removal.returncode, (0, 1), output)
        if removal.returncode == 1:
            self.completes(start_removal())
            self.root_keeps(ROOTS)

    def test_a_parent_is_a_link(self) -> None:
        """A folder above a location is a link: an item with the location's name in the linked folder is deleted."""
        shell_of_ann(f"rm -rf Library/Logs; ln -s {FOREIGN} Library/Logs")
        self.addCleanup(shell_of_ann, "rm Library/Logs; mkdir Library/Logs")
        self.completes(start_removal())
        self.root_keeps({"precious/file"})

    def test_the_environment_is_hostile(self) -> None:
        """The attacker sets variables of shells and interpreters, and puts programs first on the search path."""
        bait_programs("launchctl", "pkill", "rm", "sfltool", "cat", "sh", "startup")
        startup = BAIT / "startup"
        self.completes(start_removal(PATH=f"{BAIT}:/usr/bin:/bin", ENV=startup, BASH_ENV=startup, IFS="/",
                                     SHELL=BAIT / "sh", SHELLOPTS="xtrace", PS4=f"$({startup})", TMPDIR=BAIT))
        self.root_keeps(ROOTS)

    def test_the_home_variable_points_elsewhere(self) -> None:
        """HOME is another user's folder: it stays, and the user's own is cleaned."""
        write_as_root("Library/Logs/Quorlen/file")
        self.completes(start_removal(HOME=FOREIGN))
        self.root_keeps({*ROOTS, "Library/Logs/Quorlen/file"})

    def test_the_working_folder_is_hostile(self) -> None:
        """The tool is started in a folder with the attacker's programs: none of them runs as root."""
        bait_programs("cat", "sh", "rm", "eval", "exit", "set")
        self.completes(start_removal(BAIT))
        self.root_keeps(ROOTS)

    def test_the_text_is_overwritten(self) -> None:
        """While root's shell runs, the attacker writes to its script through a descriptor: the system refuses."""
        calls = json.loads(scene.stage("report", "--json"))["calls"]
        scene.stage("tool", "launchctl", "hangs")
        removal = start_removal()
        scene.stage("await", "launchctl", str(1 + sum(call["tool"] == "/bin/launchctl" for call in calls)))
        scripts = [link for link in Path("/proc").glob("[0-9]*/fd/*") if "shell-text" in target_of(link)]
        attempts = [subprocess.run(scene.as_ann("/bin/sh", "-c", f"echo 'echo > {MARK}' >> {script}"))
                    for script in scripts]
        scene.stage("tool", "launchctl", "real")
        subprocess.run(["/bin/sh", "-c", "kill -KILL $(pgrep -x launchctl)"], check=True)
        self.completes(removal)
        self.root_keeps(ROOTS)
        self.assertNotEqual(attempts, [])
        self.assertNotIn(0, [attempt.returncode for attempt in attempts])

    def test_a_label_is_borrowed(self) -> None:
        """Another user's process has a label of the product in its arguments: it is killed."""
        with subprocess.Popen([sys.executable, "-ISc", "input()", "com.vendrel.QuorlenDaemon"],
                              stdin=subprocess.PIPE) as bystander:
            self.completes(start_removal())
            self.assertEqual(bystander.wait(scene.TIMEOUT), -signal.SIGTERM)


def target_of(link: Path) -> str:
    """Returns a link's target; nothing if the link has gone."""
    try:
        return os.readlink(link)
    except OSError:
        return ""


if __name__ == "__main__":
    if sys.argv[1:] != ["inside"]:
        sys.exit(scene.run_in_mac(__file__))
    unittest.main(argv=[__file__])
