"""Shared by faults_test.py and attacks_test.py: a practice Mac in which they run as root, and one operation of the tool
in it (Operation.mm)."""

import os
import shutil
import subprocess
import sys
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("QUORLEN_BUILD", ROOT / "build/linux"))
HOME = Path("/Users/ann")
LICENCE = HOME / "Library/Application Support/Quorlen/.licence"
DESKTOP = HOME / "Desktop"
CHOSEN = HOME / "chosen.zip"
OLD, NEW = b"A" * 20_000, b"B" * 15_000  # longer than a copy's buffer, so that a copy can fail in the middle
TIMEOUT = 120  # seconds; the limit of every wait


def run_in_mac(script: str, *words: str) -> int:
    """Runs a script in a new practice Mac as root, with "inside" as its first word. Returns its exit status."""
    sys.path.insert(0, str(ROOT / "practice-mac"))
    from practice_mac import command
    return command.main(["try", "--bind", str(BUILD), "--bind", str(ROOT / "tests"), "--root",
                         "--env", f"QUORLEN_BUILD={BUILD}", "--",
                         "/usr/bin/python3", "-B", str(Path(script).resolve()), "inside", *words])


def stage(*words: str) -> str:
    """Runs a staging verb of the practice Mac and returns its output."""
    return subprocess.run(["/opt/practice/stage", *words], check=True, text=True, timeout=TIMEOUT,
                          stdout=subprocess.PIPE).stdout


def as_ann(*command: str | Path, **environment: object) -> list[str]:
    """Returns the command line that runs a command as the user."""
    variables = {"HOME": HOME, "USER": "ann", "LOGNAME": "ann", "PATH": "/usr/bin:/bin", "LANG": "C.UTF-8",
                 "DISPLAY": ":99",
                 "ASAN_OPTIONS": "detect_leaks=0",  # sanitized builds: an operation that fails or ends early may leak
                 **environment}
    return ["/usr/bin/setpriv", "--reuid", "ann", "--regid", "ann", "--init-groups", "/usr/bin/env", "-i",
            *(f"{name}={value}" for name, value in variables.items()), *map(str, command)]


def operation(name: str, **environment: object) -> list[str]:
    """Returns the command line that runs an operation as the user."""
    return as_ann(BUILD / "tests/faults/operation", f"--gtest_filter=*{name}", QUORLEN_ARCHIVE=CHOSEN, **environment)


def set_up(name: str) -> None:
    """Sets up the first state of an operation."""
    for path in (*DESKTOP.glob("Quorlen-*"), *Path("/tmp").glob("*/Quorlen-*")):
        shutil.rmtree(path) if path.is_dir() else path.unlink()
    if name == "Removal":
        stage("plant", "--no-agent", "--no-daemon")
    if name == "Restore":
        with zipfile.ZipFile(CHOSEN, "w") as archive:
            archive.writestr("folder/.licence", NEW)
    LICENCE.parent.mkdir(exist_ok=True)
    LICENCE.write_bytes(OLD)
    for path in (LICENCE.parent, LICENCE):
        shutil.chown(path, "ann", "ann")
