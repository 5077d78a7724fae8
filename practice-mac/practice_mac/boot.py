"""Starts a practice Mac: its namespaces, its disk, its user, D-Bus and polkit, a display. Its first process is then
launchd.

`Mac.start` runs this as a separate program, with the settings as JSON on standard input. It prints "ready" when the Mac
is up. On failure it writes the reason to standard error and ends with status 1.
"""
import contextlib
import ctypes
import errno
import fcntl
import json
import os
import select
import shutil
import signal
import socket
import struct
import subprocess
import sys
from collections.abc import Iterator
from pathlib import Path

from . import program
from .launchd import Launchd
from .staging import StagingError

CLONE_NEWNS, CLONE_NEWIPC, CLONE_NEWPID, CLONE_NEWNET = 0x20000, 0x8000000, 0x20000000, 0x40000000
MS_RDONLY, MS_REMOUNT, MS_BIND, MS_REC, MS_PRIVATE = 1, 32, 4096, 16384, 1 << 18
MNT_DETACH = 2
PR_SET_PDEATHSIG = 1
SIOCSIFFLAGS, IFF_UP = 0x8914, 1
TIMEOUT = 60  # seconds for a service to start

# The capabilities that a start needs, with their numbers. Containers have all of them but the last two by default.
CAPABILITIES = {"CHOWN": 0, "DAC_OVERRIDE": 1, "FOWNER": 3, "KILL": 5, "SETGID": 6, "SETUID": 7, "SYS_CHROOT": 18,
                "NET_ADMIN": 12, "SYS_ADMIN": 21}
CONTAINER = "--cap-add SYS_ADMIN --cap-add NET_ADMIN " \
    "--security-opt seccomp=unconfined --security-opt apparmor=unconfined"

# The rule reads the decision at each request, because polkitd loads changed rules only after a delay.
POLKIT_RULE = """
polkit.addRule(function(action, subject) {
    if (action.id != "org.freedesktop.policykit.exec")
        return polkit.Result.NOT_HANDLED;
    if (action.lookup("program") == "/opt/practice/stage")
        return polkit.Result.YES;
    switch (polkit.spawn(["/bin/cat", "/run/practice/rights"]).trim()) {
    case "granted":
        return polkit.Result.YES;
    case "dismissed":
        return polkit.Result.AUTH_ADMIN;
    default:
        return polkit.Result.NO;
    }
});
"""

libc = ctypes.CDLL(None, use_errno=True)


class Refusal(Exception):
    """A step that this machine or container does not allow."""


@contextlib.contextmanager
def step(what: str) -> Iterator[None]:
    """A step that the machine or container may refuse; `what` names it in the message."""
    try:
        yield
    except OSError as problem:
        missing = missing_capabilities()
        reason = f"Missing capabilities: {', '.join(missing)}." if missing else \
            "No capability is missing; a system call filter (seccomp) or AppArmor may forbid it."
        raise Refusal(f"this machine or container does not allow it to {what} ({problem.strerror}). {reason}\n"
                      f"  Start a container with {CONTAINER}\n"
                      "  or with --privileged; practice-mac/README.md has the whole command.") from None


def missing_capabilities() -> list[str]:
    """The CAPABILITIES that this process lacks."""
    try:
        status = Path("/proc/self/status").read_text(encoding="ascii", errors="replace")
    except OSError:
        return []  # a chroot without /proc
    effective = int(next(line for line in status.splitlines() if line.startswith("CapEff:")).split()[1], 16)
    return [f"CAP_{name}" for name, number in CAPABILITIES.items() if not effective >> number & 1]


def call(name: str, *arguments: int | str | bytes | Path | None) -> None:
    """Makes a system call for which Python 3.11 has no function."""
    words = [os.fsencode(word) if isinstance(word, (str, Path)) else word for word in arguments]
    if getattr(libc, name)(*words) < 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


def mount(source: str | Path, target: str | Path, kind: str = "", options: str = "", flags: int = 0) -> None:
    call("mount", source, target, kind or None, flags, options or None)


def bind(source: str | Path, target: str | Path, read_only: bool = False) -> None:
    with step(f"show {source} inside"):
        mount(source, target, flags=MS_BIND)
        if read_only:
            mount("none", target, flags=MS_BIND | MS_REMOUNT | MS_RDONLY)


def to_root_of_namespace(then: int) -> None:
    """Makes the root of the mount namespace this process's root, also in a chroot, and a folder its working folder.
    Some system calls need a root that is a mount point; the root of a chroot may not be one."""
    call("setns", os.pidfd_open(os.getpid()), CLONE_NEWNS)
    os.fchdir(then)


def make_disk(folder: Path) -> Path:
    """Mounts a layer in memory, which receives every change, over this machine's files. Returns the new root."""
    disk = folder / "disk"
    disk.mkdir()
    with step("mount a file system in memory"):
        mount("practice-mac", disk, "tmpfs", "mode=0755")
    os.chdir(disk)  # so that the options below hold no path: a comma in it would end an option
    for name in ("changes", "work", "root"):
        os.mkdir(name)
    with step("mount a writable layer over this machine's files"):
        mount("practice-mac", "root", "overlay", "lowerdir=/,upperdir=changes,workdir=work")
    root = disk / "root"
    for name, mode in (("run", "0755"), ("tmp", "1777"), ("dev", "0755")):
        with step(f"mount a separate /{name}"):
            mount(f"practice-mac-{name}", root / name, "tmpfs", f"mode={mode}")
    # A separate /proc, so that pkill sees only this namespace. Its files that change the kernel are read-only.
    with step("mount a separate /proc"):
        mount("proc", root / "proc", "proc")
    for knob in ("sys", "sysrq-trigger"):
        if (root / "proc" / knob).exists():
            bind(root / "proc" / knob, root / "proc" / knob, read_only=True)
    # Only harmless devices, and so no disk.
    for device in ("null", "zero", "full", "random", "urandom", "tty"):
        (root / "dev" / device).touch()
        bind(f"/dev/{device}", root / "dev" / device)
    for name, kind, options in (("pts", "devpts", "newinstance,ptmxmode=0666,mode=0620,gid=5"),
                                ("shm", "tmpfs", "mode=1777")):
        (root / "dev" / name).mkdir()
        with step(f"mount a separate /dev/{name}"):
            mount(f"practice-mac-{name}", root / "dev" / name, kind, options)
    for name, target in (("ptmx", "pts/ptmx"), ("fd", "/proc/self/fd"), ("stdin", "fd/0"), ("stdout", "fd/1"),
                         ("stderr", "fd/2")):
        (root / "dev" / name).symlink_to(target)
    return root


def show(folder: str, root: Path, inside: str = "", read_only: bool = True) -> None:
    """Shows a folder of this machine inside, at the same path or another one. It is bound, because the overlay may show
    the old content of a file that is replaced while the Mac is up."""
    target = root / (inside or folder).lstrip("/")
    target.mkdir(parents=True, exist_ok=True)
    bind(folder, target, read_only)
    # ann must be able to reach it. The modes outside do not change.
    for above in target.parents:
        if above == root:
            break
        if not (mode := above.stat().st_mode) & 1:
            above.chmod(mode | 1)


def leave_the_machine_outside(root: Path) -> None:
    """Makes the new root the only one."""
    with step("change to the new root"):
        to_root_of_namespace(os.open(root, os.O_PATH | os.O_DIRECTORY | os.O_CLOEXEC))
        call("pivot_root", ".", ".")
        call("umount2", ".", MNT_DETACH)
        os.chdir("/")
    for descriptor in map(int, os.listdir("/proc/self/fd")):
        with contextlib.suppress(OSError):
            if descriptor > 2 and os.path.isdir(f"/proc/self/fd/{descriptor}"):
                os.close(descriptor)  # an open folder outside would be a way out


def write_user(home: str) -> None:
    """Writes the user ann. useradd is slow, and refuses if the machine has a user ann."""
    lines = {name: [line for line in Path("/etc", name).read_text(encoding="utf-8").splitlines()
                    if not line.startswith("ann:")] for name in ("passwd", "group", "shadow")}
    taken = {line.split(":")[2] for name in ("passwd", "group") for line in lines[name] if line.count(":") > 2}
    uid = next(uid for uid in range(501, 1 << 16) if str(uid) not in taken)  # 501: a Mac's first user
    lines["passwd"].append(f"ann:x:{uid}:{uid}:Ann:{home}:/bin/bash")
    lines["group"].append(f"ann:x:{uid}:")
    lines["shadow"].append("ann:*:20000:0:99999:7:::")
    for name, text in lines.items():
        with open(f"/etc/{name}", "w", encoding="utf-8") as file:  # keeps owner and mode
            file.write("\n".join(text) + "\n")


def start_bus() -> None:
    """Starts the system bus, with one polkit rule. The bus starts polkitd at the first request."""
    rules = Path("/etc/polkit-1/rules.d")
    rules.mkdir(parents=True, exist_ok=True)
    (rules / "00-practice-mac.rules").write_text(POLKIT_RULE, encoding="ascii")
    machine = Path("/etc/machine-id")
    if not machine.exists() or not machine.read_bytes():
        machine.write_bytes(subprocess.run(["dbus-uuidgen"], check=True, stdout=subprocess.PIPE).stdout)
    Path("/run/dbus").mkdir()
    subprocess.run(["dbus-daemon", "--system", "--fork", "--nopidfile"], check=True)


def start_display() -> None:
    """Starts an X server and a window manager as ann, with another home so that they write nothing into ann's."""
    folder = Path("/run/practice/display")
    folder.mkdir()
    os.makedirs("/var/lib/openbox", exist_ok=True)
    # openbox warns if its menu is missing.
    Path("/var/lib/openbox/debian-menu.xml").write_text("<openbox_menu/>\n", encoding="ascii")
    shutil.chown(folder, "ann", "ann")
    variables = {"HOME": str(folder), "PATH": "/usr/bin:/bin", "LANG": "C.UTF-8", "DISPLAY": ":99"}

    def start(command: list[str], channel: int) -> None:
        subprocess.Popen(command, pass_fds=[channel], env=variables, cwd=folder, stdin=subprocess.DEVNULL,
                         stdout=subprocess.DEVNULL, user="ann", group="ann", extra_groups=[])

    def await_word(channel: int, who: str) -> None:
        # If the program ends, the other end of the channel is closed.
        word = b""
        while not word.endswith(b"\n"):
            if not select.select([channel], [], [], TIMEOUT)[0] or not (part := os.read(channel, 100)):
                raise RuntimeError(f"{who} did not come up")
            word += part
        os.close(channel)

    told, channel = os.pipe()
    start(["Xvfb", ":99", "-displayfd", str(channel), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
           "-noreset"], channel)
    os.close(channel)
    await_word(told, "the X server")
    fifo = folder / "manager"  # openbox closes what it inherits before it runs its start-up command
    os.mkfifo(fifo)
    shutil.chown(fifo, "ann", "ann")
    told, channel = os.open(fifo, os.O_RDONLY | os.O_NONBLOCK), os.open(fifo, os.O_WRONLY)
    start(["openbox", "--sm-disable", "--startup", f"/bin/sh -c 'echo up >{fifo}'"], channel)
    os.close(channel)
    await_word(told, "the window manager")


def come_up(folder: Path, settings: dict) -> Launchd:
    """Builds the Mac in a new process namespace and returns its launchd. Runs in the namespace's first process."""
    display = settings["display"]
    control = socket.socket(socket.AF_UNIX)
    os.chdir(folder)
    control.bind("control")  # the whole path may be too long for an address
    with step("make namespaces"):
        # Programs share System V memory with a display outside, so they need the IPC namespace of this machine.
        call("unshare", CLONE_NEWNS | CLONE_NEWNET | (0 if display.startswith(":") else CLONE_NEWIPC))
        here = os.open("/", os.O_PATH | os.O_DIRECTORY | os.O_CLOEXEC)
        to_root_of_namespace(here)
        mount("none", "/", flags=MS_REC | MS_PRIVATE)
        os.fchdir(here)
        os.chroot(".")
    root = make_disk(folder)
    for path in settings["bind"]:
        show(path, root)
    for path in settings["share"]:
        show(path, root, read_only=False)
    show(str(Path(__file__).resolve().parents[1] / "inside"), root, "/opt/practice")
    state = root / "run/practice"
    (state / "ann").mkdir(parents=True)
    sockets = root / "tmp/.X11-unix"
    sockets.mkdir()
    sockets.chmod(0o1777)
    if display.startswith(":"):
        (sockets / f"X{display[1:]}").touch()
        bind(f"/tmp/.X11-unix/X{display[1:]}", sockets / f"X{display[1:]}")
        with contextlib.suppress(OSError):
            shutil.copy(settings["xauthority"], state / "xauthority")
    leave_the_machine_outside(root)
    with step("bring up the loopback interface"), socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as network:
        fcntl.ioctl(network, SIOCSIFFLAGS, struct.pack("16sh14x", b"lo", IFF_UP))

    os.environ.clear()
    os.environ.update(PATH=program.PATH, LANG="C.UTF-8")
    write_user(settings["home"])
    for name in ("ann", "xauthority"):
        if Path("/run/practice", name).exists():
            shutil.chown(f"/run/practice/{name}", "ann", "ann")
    # Updates the font cache of all users; otherwise each program writes a cache into ann's home.
    fonts = subprocess.Popen(["fc-cache", "--system-only"])
    start_bus()
    if display == "virtual":
        start_display()
    fonts.wait()
    launchd = Launchd(control, settings["home"], display)
    launchd.stage.set_up(settings["rights"], **settings["planting"])
    return launchd


def be_first_process(folder: Path, settings: dict, ready: int) -> None:
    """Builds the Mac, reports that it is ready, and serves requests until it is killed."""
    call("prctl", PR_SET_PDEATHSIG, signal.SIGKILL)
    try:
        launchd = come_up(folder, settings)
    except (Refusal, StagingError, OSError, RuntimeError, subprocess.CalledProcessError) as problem:
        sys.exit(str(problem))
    if not settings["until"]:
        call("prctl", PR_SET_PDEATHSIG, 0)
    os.write(ready, b"ready\n")
    close_streams()
    os.close(ready)
    launchd.serve()


def close_streams() -> None:
    """Replaces this process's standard streams by /dev/null."""
    with open(os.devnull, "r+b") as nothing:
        for descriptor in (0, 1, 2):
            os.dup2(nothing.fileno(), descriptor)


def main(folder: Path) -> None:
    """Starts the first process. If the settings name a process ("until"), waits for the end of either one, and ends the
    Mac with that process."""
    settings = json.load(sys.stdin)
    until = os.pidfd_open(settings["until"]) if settings["until"] else None
    try:
        with step("start"):
            if missing_capabilities():
                raise PermissionError(errno.EPERM, os.strerror(errno.EPERM))
            call("unshare", CLONE_NEWPID)
    except Refusal as refusal:
        sys.exit(str(refusal))
    told, ready = os.pipe()
    pid = os.fork()
    if pid == 0:
        os.close(told)
        if until is not None:
            os.close(until)
        be_first_process(folder, settings, ready)
    os.close(ready)
    if not os.read(told, 10):
        sys.exit(1)
    os.write(1, b"ready\n")
    if until is None:
        return
    close_streams()
    first = os.pidfd_open(pid)
    if first not in select.select([first, until], [], [])[0]:
        os.kill(pid, signal.SIGKILL)
        os.waitpid(pid, 0)
        shutil.rmtree(folder, ignore_errors=True)
