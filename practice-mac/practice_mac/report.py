"""The report: what is on the practice Mac compared with its start, and which tools were called."""
import contextlib
import json
import os
import pwd
import stat
from pathlib import Path
from typing import TYPE_CHECKING

from . import product

if TYPE_CHECKING:
    from .staging import Stage

WATCHED = [Path("/Users"), Path("/Applications"), Path("/Library"), Path("/tmp")]
FILLER = ".filler"  # what fills a full Desktop
JOBS = {"agent": product.AGENT, "daemon": product.DAEMON}


def everything(stage: "Stage") -> dict[str, list[int]]:
    """The paths in the watched folders, without the eleven locations, the Desktop and bound folders, each with a file's
    size and time."""
    apart = {*stage.locations(), str(stage.desktop)}
    found: dict[str, list[int]] = {}
    for top in WATCHED:
        for folder, names, files in os.walk(top):
            names[:] = [name for name in names if f"{folder}/{name}" not in apart
                        and not os.path.ismount(f"{folder}/{name}")]
            for name in (*names, *files):
                path = f"{folder}/{name}"
                with contextlib.suppress(FileNotFoundError):  # a running program may remove what was just listed
                    if path not in apart:
                        status = os.lstat(path)
                        found[path] = [status.st_size, status.st_mtime_ns] if stat.S_ISREG(status.st_mode) else []
    return found


def kind(path: Path) -> str:
    try:
        mode = path.lstat().st_mode
    except OSError:
        return "nothing"
    return "link" if stat.S_ISLNK(mode) else "folder" if stat.S_ISDIR(mode) else "file"


def became(was_planted: bool, now: str) -> str:
    if was_planted:
        return "removed" if now == "nothing" else "kept"
    return "absent" if now == "nothing" else "appeared"


def processes_named(label: str) -> list[dict]:
    """The processes whose program has the label in its path."""
    found = []
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            words = (folder / "cmdline").read_bytes().split(b"\0")
            user = pwd.getpwuid(folder.stat().st_uid).pw_name
        except (OSError, KeyError):
            continue
        if label.encode() in words[0]:
            found.append({"pid": int(folder.name), "user": user, "command": os.fsdecode(b" ".join(words).strip())})
    return found


def archive(path: Path, licence: bytes | None) -> dict:
    """The members of a zip archive, and whether it holds the planted licence."""
    import zipfile  # only here, so that a start is faster
    try:
        with zipfile.ZipFile(path) as zipped:
            members = [info for info in zipped.infolist() if not info.is_dir()]
            kept = [zipped.read(info) for info in members if Path(info.filename).name == ".licence"]
            names = [info.filename for info in members]
    except (OSError, zipfile.BadZipFile) as problem:
        return {"name": path.name, "problem": str(problem)}
    return {"name": path.name, "members": names, "holds_planted_licence": kept == [licence]}


def facts(stage: "Stage") -> dict:
    """The report as a dictionary."""
    before, now = stage.before, everything(stage)
    new = sorted(set(now) - set(before))
    licence = stage.home / product.LICENCE
    desktop = sorted(entry for entry in stage.desktop.iterdir() if entry.name != FILLER) \
        if stage.desktop.is_dir() else None
    below = {"home": f"{stage.home}/", "tmp": "/tmp/"}
    jobs = stage.launchd.jobs
    return {
        "home": str(stage.home),
        "locations": [{"number": place.number, "path": str(place.path),
                       "became": became(place.number in stage.planted, kind(place.path))}
                      for place in product.locations(stage.home)],
        "licence": {
            "kind": kind(licence),
            "same_as_planted": kind(licence) == "file" and licence.read_bytes() == stage.licence,
            "mode": f"{stat.S_IMODE(licence.lstat().st_mode):04o}" if kind(licence) != "nothing" else None},
        **{name: {"processes": processes_named(label), "starts": jobs[label].starts if label in jobs else 0}
           for name, label in JOBS.items()},
        "calls": stage.launchd.calls,
        "desktop": None if desktop is None else
        [{"name": entry.name, "kind": kind(entry), "size": entry.lstat().st_size} for entry in desktop],
        "archives": [archive(entry, stage.licence) for entry in desktop or [] if entry.suffix == ".zip"],
        "new_in_home": [path for path in new if path.startswith(below["home"])],
        "new_in_temporary_folder": [path for path in new if path.startswith(below["tmp"])],
        "new_elsewhere": [path for path in new if not path.startswith(tuple(below.values()))],
        "lost": sorted(set(before) - set(now)),
        "changed": sorted(path for path in set(before) & set(now) if before[path] != now[path]),
    }


def text(facts: dict) -> str:
    """The report for a reader."""
    licence = facts["licence"]
    same = "the planted one" if licence["same_as_planted"] else licence["kind"]
    lines = ["Locations"]
    lines += [f"  {place['number']:2}  {place['became']:8}  {place['path']}" for place in facts["locations"]]
    lines += ["Licence file", f"      {same}  {licence['mode'] or ''}"]
    for name in JOBS:
        processes = facts[name]["processes"]
        lines.append(name.capitalize())
        lines += [f"      running as {process['user']}: {process['command']}" for process in processes]
        lines.append(f"      {len(processes)} running, {facts[name]['starts']} started")
    lines.append("Calls")
    lines += [f"  {call['order']:2}  {call['user']}: {' '.join(map(repr, [call['tool'], *call['arguments']]))}"
              for call in facts["calls"]]
    lines.append("Desktop" if facts["desktop"] is not None else "Desktop (missing)")
    lines += [f"      {entry['name']}  ({entry['kind']}, {entry['size']} bytes)" for entry in facts["desktop"] or []]
    lines += [f"      {zipped['name']}: {zipped.get('members', zipped.get('problem'))}"
              + (", with the planted licence" if zipped.get("holds_planted_licence") else "")
              for zipped in facts["archives"]]
    for title in ("new_in_home", "new_in_temporary_folder", "new_elsewhere", "lost", "changed"):
        if facts[title]:
            lines += [title.replace("_", " ").capitalize(), *(f"      {path}" for path in facts[title])]
    return "\n".join(lines)


FORMS = {"facts": lambda facts: facts, "json": lambda facts: json.dumps(facts, indent=1), "text": text}
