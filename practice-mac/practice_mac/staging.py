"""Changes the practice Mac while it runs: the installed product, the rights, the tools, the Desktop."""
import os
import pwd
import shutil
import subprocess
from pathlib import Path
from typing import TYPE_CHECKING

from . import dismissal, product, program, report, stand_ins
from .product import StagingError

if TYPE_CHECKING:
    from .launchd import Launchd


class Stage:
    """The Mac's state, and what was planted. Works inside the Mac, as root, in launchd's process."""

    def __init__(self, launchd: "Launchd", home: str) -> None:
        self.launchd = launchd
        self.home = Path(home)
        self.desktop = self.home / "Desktop"
        self.user = pwd.getpwnam("ann")
        self.planted: set[int] = set()
        self.licence: bytes | None = None  # the last planted one
        self.before: dict[str, list[int]] = {}

    def set_up(self, rights: str, **planting: object) -> None:
        """Makes the copied machine a Mac with the product, and records what is on it. Called once."""
        self.set_rights(rights)
        for name in stand_ins.STAND_INS:
            self.set_tool(name, "real")
        product.write_home(self.home)
        product.write_neighbours(self.home)
        self.give_to_ann(self.home)
        self.home.chmod(0o755)
        self.plant(**planting)
        self.before = report.everything(self)

    def give_to_ann(self, top: Path) -> None:
        os.lchown(top, self.user.pw_uid, self.user.pw_gid)
        for folder, names, files in os.walk(top):
            for name in (*names, *files):
                os.lchown(os.path.join(folder, name), self.user.pw_uid, self.user.pw_gid)

    def plant(self, locations: list[int] | str = "all", licence: bool = True, agent: bool = True, daemon: bool = True,
              supervised: bool = False) -> None:
        """Installs the chosen locations again, and starts the jobs whose programs are among them. Supervised jobs are
        restarted once."""
        from .launchd import Job
        if isinstance(locations, str):
            locations = product.numbers(locations)
        for folder in ("/Applications", "/Library/LaunchDaemons", "/Library/PrivilegedHelperTools"):
            Path(folder).mkdir(parents=True, exist_ok=True)  # every Mac has these
        for location in product.locations(self.home):
            if location.number in locations:
                product.install(location.number, self.home, licence, supervised)
                if location.in_home:
                    self.give_to_ann(location.path)
        restarts = 1 if supervised else 0
        if 3 in locations and daemon:
            self.launchd.load(Job(product.DAEMON, str(product.daemon_program()), 0, 0, restarts))
        if 5 in locations and agent:
            self.launchd.load(Job(product.AGENT, str(product.agent_program(self.home)),
                                  self.user.pw_uid, self.user.pw_gid, restarts))
        self.planted |= set(locations)
        if 4 in locations:
            self.licence = (self.home / product.LICENCE).read_bytes() if licence else None

    def locations(self) -> list[str]:
        """The paths of the eleven locations."""
        return [str(location.path) for location in product.locations(self.home)]

    def running(self) -> dict[str, int]:
        """The number of the agent's and of the daemon's processes."""
        return {job: len(report.processes_named(label)) for job, label in report.JOBS.items()}

    def report(self, form: str = "facts") -> dict | str:
        """What is there, what is gone and which tools were called, as a dictionary or in the form "json" or "text"."""
        return report.FORMS[form](report.facts(self))

    def set_rights(self, rights: str) -> None:
        """Sets the answer to requests for administrator rights."""
        # polkit's rule may read the file at any moment, so it is replaced in one step.
        fresh = program.RIGHTS.with_suffix(".new")
        fresh.write_text(rights + "\n", encoding="ascii")
        fresh.chmod(0o644)
        fresh.rename(program.RIGHTS)
        if rights == "dismissed":
            # Running programs get an agent here, later ones when they start.
            for folder in Path("/proc").glob("[0-9]*"):
                try:
                    if folder.stat().st_uid == self.user.pw_uid:
                        dismissal.dismiss_prompts_of(int(folder.name))
                except OSError:
                    continue  # it has an agent, or has just ended

    def set_tool(self, tool: str, mode: str) -> None:
        """Sets how a system tool behaves."""
        if tool == "pkexec":
            path, aside = Path(stand_ins.PKEXEC), Path(f"{stand_ins.PKEXEC}.aside")
            if mode not in ("real", *stand_ins.ABSENT_MODES):
                raise StagingError(f"pkexec can be real, {' or '.join(stand_ins.ABSENT_MODES)}, not {mode}")
            if not aside.exists():
                path.rename(aside)  # keeps the set-user-ID bit
            path.unlink(missing_ok=True)
            if mode == "real":
                aside.rename(path)
        else:
            path = Path(stand_ins.STAND_INS[tool].path)
            path.unlink(missing_ok=True)
            self.launchd.modes[tool] = mode
            if mode not in stand_ins.ABSENT_MODES:
                path.symlink_to("/opt/practice/stand-in")
        if mode == "not-a-program":
            product.write(path, b"\x7fthis is no program\0", 0o755)

    def set_desktop(self, state: str) -> None:
        """Makes the Desktop normal, missing, read-only or full."""
        if self.desktop.is_mount():
            subprocess.run(["umount", "--lazy", self.desktop], check=True)
        if state == "missing":
            shutil.rmtree(self.desktop, ignore_errors=True)
            return
        self.desktop.mkdir(exist_ok=True)
        if state == "full":
            subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "practice-mac-desktop", self.desktop], check=True)
            with open(self.desktop / report.FILLER, "wb", buffering=0) as filler:
                try:
                    while True:
                        filler.write(bytes(4096))
                except OSError:
                    pass  # it is full now
        os.chown(self.desktop, self.user.pw_uid, self.user.pw_gid)
        self.desktop.chmod(0o555 if state == "read-only" else 0o755)
