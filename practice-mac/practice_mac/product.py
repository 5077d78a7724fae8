"""The product as its installer leaves it on a Mac, and the neighbours that a removal must not touch."""
import os
import plistlib
import re
import shutil
from pathlib import Path
from typing import NamedTuple

AGENT = "com.vendrel.QuorlenAgent"
DAEMON = "com.vendrel.QuorlenDaemon"
LICENCE = "Library/Application Support/Quorlen/.licence"


# A second list of the eleven locations, on purpose independent of the product's.
LOCATIONS = (
    "/Applications/Quorlen.app",
    f"/Library/LaunchDaemons/{DAEMON}.plist",
    f"/Library/PrivilegedHelperTools/{DAEMON}",
    "~/Library/Application Support/Quorlen",
    f"~/Library/Application Support/{AGENT}",
    "~/Library/Application Support/Vendrel",
    "~/Library/LaunchAgents/com.vendrel.Quorlen3.Scheduler.plist",
    "~/Library/Preferences/com.vendrel.Quorlen3.plist",
    "~/Library/Preferences/com.vendrel.Quorlen.plist",
    "~/Library/Caches/com.vendrel.Quorlen3",
    "~/Library/Logs/Quorlen",
)


class StagingError(Exception):
    """A request that can't be done; the text says why."""


class Location(NamedTuple):
    number: int
    in_home: bool
    path: Path


def locations(home: Path) -> list[Location]:
    """The eleven locations, in order, with their full paths."""
    return [Location(number, path.startswith("~"), Path(path.replace("~", str(home), 1)))
            for number, path in enumerate(LOCATIONS, 1)]


def numbers(chosen: str) -> list[int]:
    """The numbers of chosen locations: "all", "none" or for example "1,4,11"."""
    every = [str(number) for number in range(1, len(LOCATIONS) + 1)]
    words = {"all": every, "none": []}.get(chosen, chosen.split(","))
    if not set(words) <= set(every):
        raise StagingError(f"locations are all, none or numbers from 1 to {len(LOCATIONS)}, not {chosen}")
    return sorted(map(int, set(words)))


def agent_program(home: Path) -> Path:
    return home / "Library/Application Support" / AGENT / AGENT


def daemon_program() -> Path:
    return Path("/Library/PrivilegedHelperTools", DAEMON)


def write(path: Path, content: bytes | str = b"", mode: int = 0o644) -> None:
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content.encode() if isinstance(content, str) else content)
    path.chmod(mode)


def write_plist(path: Path, content: dict, form: plistlib.PlistFormat = plistlib.FMT_XML) -> None:
    write(path, plistlib.dumps(content, fmt=form))


def write_program(path: Path) -> None:
    """A program that runs until a signal ends it; its command line begins with its path."""
    write(path, Path("/usr/bin/sleep").read_bytes(), 0o755)


def write_application(root: Path, identifier: str, version: str) -> None:
    contents = root / "Contents"
    name = root.stem
    write_plist(contents / "Info.plist", {
        "CFBundleIdentifier": identifier, "CFBundleName": name, "CFBundleExecutable": name,
        "CFBundlePackageType": "APPL", "CFBundleShortVersionString": version, "LSMinimumSystemVersion": "10.13"})
    write(contents / "PkgInfo", "APPL????")
    write_program(contents / "MacOS" / name)
    write(contents / "Resources" / f"{name}.icns", b"icns" + os.urandom(20_000))
    for language in ("en", "de", "ja", "pt-BR"):
        write(contents / f"Resources/{language}.lproj/Localizable.strings", '"Open…" = "Open…";\n')
    framework = contents / "Frameworks/QuorlenCore.framework"
    write(framework / "Versions/A/QuorlenCore", os.urandom(50_000), 0o755)
    (framework / "Versions/Current").symlink_to("A")
    (framework / "QuorlenCore").symlink_to("Versions/Current/QuorlenCore")
    write_plist(contents / "_CodeSignature/CodeResources", {"files": {}, "files2": {}})


def install(number: int, home: Path, with_licence: bool, keep_alive: bool) -> None:
    """Replaces one location by a new installation. The caller sets the owners."""
    root = locations(home)[number - 1].path
    remove(root)
    match number:
        case 1:
            write_application(root, "com.vendrel.Quorlen3", "3.4.1")
        case 2:
            write_plist(root, {"Label": DAEMON, "ProgramArguments": [str(daemon_program())], "RunAtLoad": True,
                               "KeepAlive": keep_alive})
        case 3:
            write_program(root)
        case 4:
            write(root / "Library.db", b"SQLite format 3\0" + os.urandom(30_000))
            write(root / "Templates/Letter – A4.template", os.urandom(900))
            (root / "Plug-ins").mkdir()
            if with_licence:
                write(home / LICENCE, os.urandom(777), 0o600)
        case 5:
            write_program(agent_program(home))
            write(root / "state.json", '{"lastRun": 0}\n')
        case 6:
            write(root / "Shared/device-id", os.urandom(16).hex() + "\n", 0o600)
        case 7:
            write_plist(root, {"Label": AGENT, "ProgramArguments": [str(agent_program(home))], "RunAtLoad": True,
                               "KeepAlive": keep_alive})
        case 8 | 9:
            write_plist(root, {"NSWindow Frame Main": "100 100 800 600", "Launches": number}, plistlib.FMT_BINARY)
        case 10:
            for index in range(48):
                write(root / f"fsCachedData/{index:02x}/{os.urandom(8).hex()}", os.urandom(500))
            write(root / "Cache.db", os.urandom(4_000))
        case 11:
            for day in range(1, 8):
                write(root / f"Quorlen-2026-11-{day:02}.log", "09:00:00 started\n" * 200)


def remove(path: Path) -> None:
    """Removes a file, a folder or a link, if there is one. The target of a link stays."""
    if path.is_dir() and not path.is_symlink():
        shutil.rmtree(path)
    else:
        path.unlink(missing_ok=True)


def write_home(home: Path) -> None:
    """Writes the folders of every Mac's home, and two of the user's files."""
    for folder in ("Desktop", "Documents", "Downloads", "Library/Application Support", "Library/Caches",
                   "Library/LaunchAgents", "Library/Logs", "Library/Preferences", "Pictures"):
        (home / folder).mkdir(parents=True, exist_ok=True)
    write(home / "Documents/Letter to Vendrel.txt", "Dear Vendrel,\n")
    write(home / "Desktop/Shopping.txt", "Bread\n")


def write_neighbours(home: Path) -> None:
    """Writes what a faulty removal could delete: names that begin or end like the product's, and paths that result from
    misreading a special character in the home's name."""
    write_application(Path("/Applications/Quorlen 2.app"), "com.vendrel.Quorlen2", "2.9")
    write_application(Path("/Applications/Letters.app"), "com.example.Letters", "1.0")
    write_plist(Path(f"/Library/LaunchDaemons/{DAEMON}2.plist"), {"Label": f"{DAEMON}2"})
    write(Path("/Library/PrivilegedHelperTools/com.example.Helper"), os.urandom(100), 0o755)
    for name in ("Application", "Support/Quorlen", "Application Support/Quorlen 2/.licence",
                 "Application Support/Letters/state", "LaunchAgents/com.example.Letters.plist",
                 "Preferences/com.vendrel.Quorlen2.plist", "Preferences/com.vendrel.Quorlen3.plist.bak",
                 "Caches/com.vendrel.Quorlen", "Logs/Quorlen.log"):
        write(home / "Library" / name, "a neighbour's\n")
    for decoy in decoy_homes(home.name) - {home.name, ".", ".."}:
        for location in locations(Path("/Users", decoy)):
            if location.in_home:
                write(location.path, "a neighbour's\n")


def decoy_homes(name: str) -> set[str]:
    """The names that a program or shell could misread NAME in "/Users/NAME" as."""
    expanded = re.sub(r"\$\([^)]*\)|`[^`]*`", "", name)
    bare = re.sub(r"""['"\\`$]""", "", name)
    return {expanded, bare, name.split(" ")[0], name.replace("\\", "/"), name.replace("\\\\", "\\")}
