#!/usr/bin/python3 -IB
"""Makes up sequences of what a user and the world do, takes each on the real tool on a practice Mac, and after every
step holds its window, its log, the disk and the calls of the system's tools against the model's.

usage: wander.py [--steps N] [--seconds N] [--seed N]

A seed always gives the same few sequences. The program takes whole seeds, one after the other, until it has taken so
many steps, and for so many seconds. At the first difference it looks for a shorter sequence that shows one, prints
that, and ends with status 1.
QUORLEN_BUILD, QUORLEN_TOOL and QUORLEN_SHARE choose what is driven: see driver.py."""

import argparse
import contextlib
import io
import itertools
import json
import pathlib
import sys
import time
import zipfile

import hypothesis
from hypothesis import strategies

sys.path[:0] = [str(pathlib.Path(__file__).resolve().parents[1] / folder) for folder in ("driver", "wander")]
import driver  # noqa: E402
from driver import (  # noqa: E402
    LICENCE, JourneyFailure, PracticeMac, PracticeMacError, eventually, expect_equal, matches)
from model import ALL, FILES, MODES, NOT_REMOVED, REMOVED, Model, Step  # noqa: E402
from phrases import zip_of  # noqa: E402

LENGTH = 24  # the most steps of a sequence, after the first
SEQUENCES = 5  # the most of a seed
LOOKS = 60  # how often it looks before what differs from the model counts as a difference
SHRINKING = 240  # seconds in which a shorter sequence is looked for

CONTENTS = {
    "good.zip": zip_of(("Backup/.licence", b"good")), "deep.zip": zip_of(("1/2/3/4/5/6/7/8/.licence", b"deep")),
    "folder.zip": zip_of((".licence/inside.txt", b"inside")), "locked.zip": zip_of((".licence", b"locked", 0o100000)),
    "link.zip": zip_of((".licence", b"/Users/ann/Shelf/keep.txt", 0o120777)), "empty.zip": zip_of(),
    "like.zip": zip_of(*((name, b"x") for name in (".license", ".LICENCE", ".Licence", "licence", "a.licence"))),
    "damaged.zip": zip_of((".licence", bytes(range(256)) * 40))[:5000], "text.zip": b"Dear Ann,\nhere it is.\n"}


class Difference(Exception):
    """The tool did another thing than the model; the text has the steps and what differs."""


def agree(seen: object, wanted: object) -> bool:
    """Whether two values are equal, where a text that is wanted may have a "…" for anything."""
    # Each text gets a line of its own, which is as far as a "…" reaches.
    return matches(*(json.dumps(value, indent=0, ensure_ascii=False, sort_keys=True) for value in (seen, wanted)))


class Real:
    """Takes the steps of the model for real, and tells what then can be seen. One Mac serves all sequences."""

    def __init__(self, mac: PracticeMac) -> None:
        self.mac = mac
        self.tool: driver.Tool | None = None
        self.paths = mac.locations()
        for name in FILES:
            mac.put(f"Downloads/{name}", CONTENTS[name])
        self.reset()
        self.strange = self.strange_files()

    def take(self, name: str, *arguments: object) -> None:
        """Takes a step: a method of this class, of the Mac or of the tool."""
        next(getattr(it, name) for it in (self, self.mac, self.tool) if hasattr(it, name))(*arguments)

    def reset(self) -> None:
        """Makes the Mac as a new Model has it."""
        self.end_tool()
        self.hold_shift(False)
        self.mac.desktop_becomes("normal")
        self.mac.rights("granted")
        self.mac.clock_stands(False)
        for tool in MODES:
            self.mac.tool_of_the_system(tool, "real")
        self.mac.shell('rm -rf "$@" Shelf Desktop/* /tmp/*/Quorlen-License-*; mkdir Shelf; echo kept >Shelf/keep.txt; '
                       'echo Bread >Desktop/Shopping.txt; chown -R ann: Shelf Desktop', *self.paths, root=True)
        self.licences: dict[bytes, str] = {}
        self.stamped = 0
        self.plant(ALL, True)
        self.earlier_calls = len(self.mac.calls())

    def end_tool(self) -> None:
        if self.tool:
            self.tool.__exit__(None)
            self.tool = None

    def strange_files(self) -> list[list[str]]:
        """What became of the files with which no step has to do."""
        return list(map(self.mac.report().get, ("lost", "changed", "new_elsewhere")))

    # The steps

    def plant(self, numbers: tuple[int, ...], licence: bool) -> None:
        self.mac.plant(list(numbers), licence)
        if 4 in numbers and licence:
            self.licences[self.mac.read(LICENCE)] = f"planted {len(self.licences) + 1}"

    def take_away(self, numbers: tuple[int, ...]) -> None:
        self.mac.shell('rm -rf -- "$@"', *(self.paths[number - 1] for number in numbers), root=True)

    def link(self, number: int, kind: str) -> None:
        target = f"{self.mac.home}/Shelf" if kind == "linked" else "/nowhere"
        self.mac.shell('rm -rf -- "$2"; ln -s -- "$1" "$2"', target, self.paths[number - 1], root=True)

    def shut(self, what: str) -> None:
        self.mac.shell('chown root "${1%/*}"' if what == "folder" else 'chmod 000 "$1"', LICENCE, root=True)

    def open(self) -> None:
        self.tool = self.mac.open_tool().__enter__()

    def hold_shift(self, down: bool) -> None:
        self.mac.xdotool("keydown" if down else "keyup", "Shift_L")

    def clock_stands(self, stands: bool) -> None:
        self.wait_for_another_second()
        self.mac.clock_stands(stands)
        self.stamped = int(time.time())

    def wait_for_another_second(self) -> None:
        eventually(lambda: int(time.time()) != self.stamped, "another second, so that names made from the clock differ")

    def press(self, title: str) -> None:
        self.wait_for_another_second()
        self.tool.press(title)

    def choose(self, folder: str, file: str | int) -> None:
        self.tool.choose_file(folder, self.mac.archives()[file] if isinstance(file, int) else file)
        self.tool.confirm_panel()

    # What can be seen

    def location(self, path: str) -> str:
        match self.mac.look(path):
            case {"kind": "link", "found": found}:
                return "linked" if found else "dangling"
            case found:
                return "there" if found else "absent"

    def licence(self, path: str) -> str | None:
        match self.mac.look(path):
            case {"kind": "file", "mode": mode}:
                return self.named("closed" if mode == "0" else "file", self.mac.read(path))
            case {"kind": "folder"}:
                return self.named("folder", self.mac.read(f"{path}/inside.txt"))
            case found:
                return found and "link"

    def archived(self, name: str) -> str:
        with zipfile.ZipFile(io.BytesIO(self.mac.read(f"Desktop/{name}"))) as archive:
            entry = next(entry for entry in archive.infolist() if "/.licence" in entry.filename and not entry.is_dir())
            link, folder = entry.external_attr >> 29 == 0o12 >> 1, entry.filename.endswith("inside.txt")
            return "link" if link else self.named("folder" if folder else "file", archive.read(entry))

    def named(self, kind: str, content: bytes) -> str:
        return f"{kind} {self.licences.get(content) or content.decode(errors='replace')}"

    def disk(self) -> dict[str, object]:
        """As Model.disk."""
        names = self.mac.listing("Desktop")
        full = ".filler" in names  # The archiver may leave a part of an archive there.
        archives, logs = [] if full else self.mac.archives(), self.mac.removal_logs()
        return {"locations": {number: self.location(path) for number, path in enumerate(self.paths, 1)},
                "licence": self.licence(LICENCE), "licence on the Shelf": self.licence("Shelf/.licence"),
                "other files on the Shelf": sorted({*self.mac.listing("Shelf")} - {".licence"}),
                "archives": [self.archived(name) for name in archives],
                "removal logs": [self.mac.read(f"Desktop/{name}").decode().splitlines() for name in logs],
                "other files on the Desktop": [] if full else sorted({*names} - {*archives, *logs, "Shopping.txt"}),
                "staging folders": sorted(self.licence(f"{path}/.licence") or "nothing"
                                          for path in self.mac.temporary_folders()),
                "processes": self.mac.running(), "calls": self.mac.calls()[self.earlier_calls:]}

    def window(self) -> dict[str, object]:
        """As Model.window."""
        windows = eventually(self.tool.look, "the tool answers")["windows"]
        modal = next((window for window in windows if window["modal"]), None)
        main = list(self.tool.views(next((w for w in windows if w["title"] == driver.NAME and w != modal), None)))
        texts, titles = self.tool.alert(modal)
        return {"status": next((view["text"] for view in main if view["in_window"] == driver.STATUS_LINE), None),
                "log": next((view["text"] for view in main if view["class"] == "NSTextView"), "").splitlines(),
                "alert": texts + titles if titles or not modal else [modal["title"]],
                **{view["text"]: driver.state_of(view) for view in main
                   if view.get("action", "").endswith(("emoveQuorlen3:", "restoreLicense:"))}}

    def must_be_as(self, model: Model) -> None:
        """Waits until all is as the model has it."""
        if self.tool and not model.is_open:
            expect_equal(self.tool.ended(), 0, "the tool's exit status")
            self.end_tool()
            eventually(lambda: not self.mac.shell("pgrep -f '/sbin/shutdown -r no[w]' || true"), "the restart's order")
        wanted = model.disk() | (model.window() if model.is_open else {})
        seen: dict[str, object] = {}
        for _ in range(LOOKS):
            # What was listed may be gone, and an archive may not be whole, while the tool is at work.
            with contextlib.suppress(PracticeMacError, zipfile.BadZipFile):
                seen = (self.window() if model.is_open else {}) | self.disk()
                if agree(seen, wanted):
                    break
            time.sleep(driver.POLL_INTERVAL)
        for what in wanted | seen:
            agree(seen.get(what), wanted.get(what)) or expect_equal(seen.get(what), wanted.get(what), what)
        if model.alert in (REMOVED, NOT_REMOVED):
            self.stamped = int(time.time())


@strategies.composite
def plans(draw: strategies.DrawFn) -> tuple[Step, ...]:
    """Steps that are possible one after the other. Each is drawn in the same way, and may be none, so that a plan
    shrinks."""
    model, plan = Model(), [("open",)]
    model.open()
    for _ in range(LENGTH):
        if step := draw(strategies.sampled_from(draw(strategies.sampled_from([[()], *model.choices()])))):
            model.take(*step)
            plan.append(step)
    return tuple(plan)


class Wanderer:
    """Takes plans, and remembers how each ended: many of those that shrinking tries are known already."""

    def __init__(self, real: Real) -> None:
        self.real = real
        self.known: dict[tuple[Step, ...], Difference | None] = {}
        self.until = float("inf")
        self.steps = self.sequences = 0

    def take(self, plan: tuple[Step, ...]) -> None:
        parts = [plan[:length] for length in range(1, len(plan) + 1)]
        if plan not in self.known and not any(map(self.known.get, parts)) and time.monotonic() < self.until:
            self.take_for_real(parts)
        if difference := next(filter(None, map(self.known.get, parts)), None):
            self.until = min(self.until, time.monotonic() + SHRINKING)
            raise difference  # always from here: Hypothesis tells failures apart by the line

    def take_for_real(self, parts: list[tuple[Step, ...]]) -> None:
        model = Model()
        self.real.reset()
        self.sequences += 1
        for part in parts:
            model.take(*part[-1])
            try:
                self.real.take(*part[-1])
                self.real.must_be_as(model)
                if part == parts[-1]:
                    expect_equal(self.real.strange_files(), self.real.strange, "other files lost, changed and new")
            except (JourneyFailure, PracticeMacError) as failure:
                steps = (f"  {number}. {' '.join(map(str, step))}\n" for number, step in enumerate(part, 1))
                self.known[part] = Difference(f"{''.join(steps)}Then: {failure}")
                return
            self.known[part] = None
            self.steps += 1


def main() -> int:
    parser = argparse.ArgumentParser(allow_abbrev=False)
    for option, default in (("--steps", 0), ("--seconds", 0), ("--seed", 1)):
        parser.add_argument(option, type=int, default=default)
    options = parser.parse_args()
    driver.run_as_root()
    driver.end_orderly_when_told()
    settings = hypothesis.settings(
        database=None, deadline=None, max_examples=SEQUENCES, suppress_health_check=list(hypothesis.HealthCheck),
        phases=[hypothesis.Phase.generate, hypothesis.Phase.shrink], verbosity=hypothesis.Verbosity.quiet)
    began, found = time.monotonic(), 0
    with PracticeMac() as mac:
        wanderer = Wanderer(Real(mac))
        for seed in itertools.count(options.seed):
            try:
                hypothesis.seed(seed)(settings(hypothesis.given(plans())(lambda plan: wanderer.take(plan))))()
            except Difference as difference:
                print(f"wander: seed {seed}: the tool and the model differ. The shortest sequence found:\n{difference}")
                found = 1
            if found or wanderer.steps >= options.steps and time.monotonic() - began >= options.seconds:
                break
        wanderer.real.end_tool()
    print(f"wander: seeds {options.seed} to {seed}, {wanderer.sequences} sequences, {wanderer.steps} steps that agreed,"
          f" differences: {found}, {time.monotonic() - began:.0f} s")
    return found


sys.exit(main())
