#!/usr/bin/python3
"""What another process of the user can make the superuser do between the click and the end of the cleanup script.

usage: tests/faults/attacks_test.py

Each attack of docs/security.md is tried on a practice Mac, with everything that the user may do; what is judged is what
then is on the disk. Attacks that the design withstands must fail, and those that it cannot withstand must succeed: the
document tells the truth about both. QUORLEN_BUILD names the build folder (build/linux).
"""

import os
import pathlib
import signal
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import kill_test as mac  # noqa: E402

HOME = mac.HOME
FOREIGN = pathlib.Path("/srv/foreign")  # root's own; nothing of the product
MARK = FOREIGN / "mark"                 # an attack that runs something as root leaves it
BAIT = HOME / "bait"                    # what an attacker has prepared
CALLS = pathlib.Path("/run/practice/record/calls")


def root_tree():
    """Makes root's own folder anew, with entries that carry names of the product and entries that don't."""
    subprocess.run(["rm", "-rf", FOREIGN, BAIT], check=True)
    for name in ("precious/file", "Quorlen/file"):
        path = FOREIGN / name
        path.parent.mkdir(parents=True)
        path.write_text("root's\n")
    FOREIGN.chmod(0o755)


def as_ann(*command, **environment):
    """The command line that runs a command as the user."""
    return ["/usr/bin/setpriv", "--reuid", "ann", "--regid", "ann", "--init-groups",
            "/usr/bin/env", "-i", f"HOME={HOME}", "USER=ann", "LOGNAME=ann",
            "PATH=/usr/bin:/bin", "LANG=C.UTF-8", "DISPLAY=:99",
            "ASAN_OPTIONS=detect_leaks=0",  # as in kill_test.py
            *(f"{name}={value}" for name, value in environment.items()), *map(str, command)]


def shell_of_ann(script):
    """Runs a shell script as the user, in his home."""
    subprocess.run(as_ann("/bin/sh", "-euc", script), cwd=HOME, check=True)


def removal(folder=HOME, **environment):
    """Starts a removal that goes through; the environment is the attacker's."""
    return subprocess.Popen([mac.TOOLS / "tracer", "--kill", "0",
                             *as_ann(mac.TOOLS / "operation", "--gtest_filter=*Removal", **environment)],
                            cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def finished(process):
    """Waits for a removal and what it started."""
    process.wait()
    mac.no_script_runs()


def untouched():
    """Whether all of root's own is there, and nothing more."""
    return (FOREIGN / "precious/file").exists() and (FOREIGN / "Quorlen/file").exists() and not MARK.exists()


def bait_program(name):
    """A program of the attacker's that would leave the mark if it ran as root."""
    shell_of_ann(f"mkdir -p {BAIT}; cd {BAIT}; printf '#!/bin/sh\\n: > {MARK}\\n' > {name}; chmod 755 {name}")


def a_location_is_a_link():
    """A location is a link to somebody else's folder: the link goes, the folder stays."""
    shell_of_ann(f"rm -rf Library/Logs/Quorlen; ln -s {FOREIGN}/precious Library/Logs/Quorlen")
    finished(removal())
    return untouched() and not (HOME / "Library/Logs/Quorlen").is_symlink()


def an_entry_below_a_location_is_a_link():
    """Below a location lie links to somebody else's folder: they go, the folder stays."""
    shell_of_ann(f"mkdir -p Library/Logs/Quorlen/deep; ln -s {FOREIGN} Library/Logs/Quorlen/deep/link")
    finished(removal())
    return untouched() and not (HOME / "Library/Logs/Quorlen").exists()


def entries_are_swapped_while_they_are_deleted():
    """While the superuser deletes, folders below a location become links to somebody else's folder, over and over."""
    shell_of_ann("mkdir -p Library/Logs/Quorlen; cd Library/Logs/Quorlen; "
                 "for i in $(seq 300); do mkdir -p d$i/e; for j in 1 2 3 4 5; do : > d$i/e/$j; done; done")
    swapping = subprocess.Popen(as_ann("/bin/sh", "-c", f"""cd Library/Logs/Quorlen || exit
        while :; do
            for i in $(seq 300); do mv d$i/e d$i/f && ln -s {FOREIGN} d$i/e && rm d$i/e && mv d$i/f d$i/e; done
        done
        """), cwd=HOME, stderr=subprocess.DEVNULL, process_group=0)
    finished(removal())
    os.killpg(swapping.pid, signal.SIGKILL)
    swapping.wait()
    return untouched()


def a_parent_is_a_link():
    """A folder above a location is a link: what carries the location's name in the other place is deleted."""
    shell_of_ann(f"rm -rf Library/Logs; ln -s {FOREIGN} Library/Logs")
    finished(removal())
    deleted = not (FOREIGN / "Quorlen").exists() and (FOREIGN / "precious/file").exists()
    shell_of_ann("rm Library/Logs; mkdir Library/Logs")
    return deleted


def the_environment_is_hostile():
    """Variables that shells, loaders and interpreters obey, and programs of the attacker's first on the search path."""
    for name in ("launchctl", "pkill", "rm", "sfltool", "cat", "sh", "startup"):
        bait_program(name)
    startup = BAIT / "startup"
    finished(removal(PATH=f"{BAIT}:/usr/bin:/bin", ENV=startup, BASH_ENV=startup, IFS="/", SHELL=BAIT / "sh",
                     SHELLOPTS="xtrace", PS4=f"$({startup})", TMPDIR=BAIT))
    return untouched() and not (HOME / "Library/Logs/Quorlen").exists()


def the_home_variable_points_elsewhere():
    """HOME names somebody else's folder."""
    library = FOREIGN / "Library/Logs/Quorlen"
    library.mkdir(parents=True)
    finished(removal(HOME=FOREIGN))
    return untouched() and library.exists() and not (HOME / "Library/Logs/Quorlen").exists()


def the_working_folder_is_hostile():
    """The tool is started in a folder with programs of the attacker's."""
    for name in ("cat", "sh", "rm", "eval", "exit", "set"):
        bait_program(name)
    finished(removal(folder=BAIT))
    return untouched()


def the_text_is_overwritten():
    """While the superuser's shell runs, the text that it was given is written to, through the tool's own descriptor."""
    subprocess.run(["/opt/practice/stage", "tool", "launchctl", "hangs"], check=True)
    earlier = CALLS.read_text().count("/launchctl\"")
    process = removal()
    subprocess.run(["/opt/practice/stage", "await", "launchctl", str(earlier + 1)], check=True)
    tried, refused = 0, 0
    for link in pathlib.Path("/proc").glob("[0-9]*/fd/*"):
        try:
            if "shell-text" not in os.readlink(link):
                continue
        except OSError:
            continue
        tried += 1
        attempt = subprocess.run(as_ann("/bin/sh", "-c", f"echo 'echo > {MARK}' >> {link}"), stderr=subprocess.DEVNULL)
        refused += attempt.returncode != 0
    subprocess.run(["/opt/practice/stage", "tool", "launchctl", "real"], check=True)
    while process.poll() is None:
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if b"\0/bin/launchctl\0" in (folder / "cmdline").read_bytes():
                    os.kill(int(folder.name), signal.SIGKILL)
            except OSError:
                continue
        time.sleep(0.05)
    finished(process)
    return tried > 0 and tried == refused and untouched()


def a_label_is_borrowed():
    """A process of somebody else's has a label of the product in its arguments: it is killed."""
    bystander = subprocess.Popen(["/bin/sh", "-c", "sleep 600; : com.vendrel.QuorlenDaemon"], process_group=0)
    finished(removal())
    killed = bystander.wait(timeout=60) == -signal.SIGTERM
    os.killpg(bystander.pid, signal.SIGKILL)  # the sleep that it waited for
    return killed


# The attack, and whether the design withstands it.
ATTACKS = {
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


def inside():
    """Tries all of them, and returns the exit status."""
    wrong = 0
    for attack, withstood in ATTACKS.items():
        root_tree()
        mac.stage("Removal")
        as_documented = attack()
        wrong += not as_documented
        print(f"attack: {attack.__doc__.splitlines()[0]} {'Withstood' if withstood else 'Cannot be withstood'}"
              f"{'.' if as_documented else ': NOT SO.'}", flush=True)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(inside() if sys.argv[1:] == ["", "inside"] else mac.outside("", pathlib.Path(__file__)))
