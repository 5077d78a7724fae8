"""Makes the measurements of script/bench in a practice Mac as root. Prints each row as a line of JSON.

usage: rows.py BUILD_FOLDER QUICK     QUICK is 1 for a few runs on small trees, 0 for the full measurement

Each row has what, value, baseline, ratio, unit, runs, baseline_is, and spread (the middle half of the values). It
measures tool and baseline in turns, in pairs. Value and baseline are medians; ratio is the median of the pairs' ratios.
"""

import json
import math
import os
import pathlib
import pwd
import shutil
import statistics
import subprocess
import sys
import time
from collections.abc import Sequence

BUILD = pathlib.Path(sys.argv[1])
QUICK = sys.argv[2] == "1"
ANN = pwd.getpwnam("ann")
HOME = pathlib.Path(ANN.pw_dir)
BENCH = BUILD / "bench"
TOOL = BUILD / "Quorlen 3 Removal Tool.app/Quorlen 3 Removal Tool"
BARE = BENCH / "BareWindow.app/BareWindow"
POPULATED = BENCH / "PopulatedWindow.app/PopulatedWindow"
ARM_SLICE = BUILD / "shipped-slice/arm64/shipped/Quorlen 3 Removal Tool.app/Quorlen 3 Removal Tool"
IDLE_SECONDS = 5 if QUICK else 30

Pairs = Sequence[tuple[float, float]]  # (value, baseline)


def as_ann(*command: object) -> list[str]:
    """Returns the command line that runs a command as the user."""
    return ["/usr/bin/setpriv", "--reuid", "ann", "--regid", "ann", "--init-groups",
            "/usr/bin/env", "-i", f"HOME={HOME}", "USER=ann", "LOGNAME=ann",
            "PATH=/usr/bin:/bin", "LANG=C.UTF-8", "DISPLAY=:99", *map(str, command)]


def output(*command: object) -> str:
    """Runs a command as the user and returns its output."""
    return subprocess.run(as_ann(*command), cwd=HOME, check=True, text=True, stdout=subprocess.PIPE).stdout


def plant(*options: str) -> None:
    """Installs the product."""
    subprocess.run(["/opt/practice/stage", "plant", "--no-agent", "--no-daemon", *options], check=True)


def row(what: str, pairs: Pairs, unit: str, baseline_is: str, note: str = "") -> None:
    """Prints the row of pairs (value, baseline)."""
    values, baselines = [value for value, _ in pairs], [baseline for _, baseline in pairs]
    low, _, high = statistics.quantiles(values, n=4) if len(values) > 1 else values * 3
    ratio = statistics.median(value / baseline for value, baseline in pairs) if all(baselines) else None
    print(json.dumps({"what": what, "value": statistics.median(values), "baseline": statistics.median(baselines),
                      "ratio": ratio, "unit": unit, "runs": len(pairs), "baseline_is": baseline_is,
                      "spread": [low, high], "note": note}), flush=True)


def report(what: str, values: Sequence[float], unit: str, note: str = "") -> None:
    """Prints a row without a baseline."""
    low, _, high = statistics.quantiles(values, n=4) if len(values) > 1 else list(values) * 3
    print(json.dumps({"what": what, "value": statistics.median(values), "baseline": None, "ratio": None, "unit": unit,
                      "runs": len(values), "baseline_is": None, "spread": [low, high], "note": note}), flush=True)


class Running:
    """A program whose window is shown and at rest. `shown` is the time at which the window was drawn first; for the
    tool, the time at which it showed the status line of the detection. `rested` is the time of the last drawing. Both
    are in milliseconds since the start."""

    def __init__(self, program: pathlib.Path, detects: bool = True) -> None:
        until = ["--status-line"] if program in (TOOL, ARM_SLICE) and detects else []
        self.clock = subprocess.Popen(as_ann(BENCH / "window-clock", *until, program), cwd=HOME, text=True,
                                      stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        words = self.clock.stdout.readline().split()
        if len(words) != 3:
            sys.exit(f"rows: {program} did not show its window or its status line")
        self.shown, self.rested, self.process = float(words[0]), float(words[1]), int(words[2])

    def __enter__(self) -> "Running":
        return self

    def __exit__(self, *_: object) -> None:
        self.clock.communicate()

    def resident(self) -> float:
        """Returns its resident memory in MB."""
        return self._field("smaps_rollup", "Rss") / 1024

    def wake_ups(self) -> int:
        """Returns the number of its voluntary context switches."""
        return self._field("status", "voluntary_ctxt_switches")

    def _field(self, file: str, name: str) -> int:
        text = pathlib.Path(f"/proc/{self.process}/{file}").read_text()
        return int(next(line for line in text.splitlines() if line.startswith(name + ":")).split()[1])


def launch_and_memory() -> tuple[tuple[str, Pairs, str, str], ...]:
    """Launches the tool, the bare window and the populated one in turns. Prints two rows and returns the other rows."""
    plant()
    launches, memory = [], []
    for number in range(4 if QUICK else 31):
        times, sizes = [], []
        for program in (TOOL, BARE, POPULATED):
            with Running(program) as running:
                times.append((running.shown, running.rested))
                sizes.append(running.resident())
        if number:  # the first one warms up
            launches.append(times)
            memory.append(sizes)
    bare = "a bare window on the same AppKit with the same additions"
    populated = "the same window with the same views, without the tool's code"
    row("launch", [(tool[0], baseline[0]) for tool, baseline, _ in launches], "ms", bare)
    row("memory", [(tool, baseline) for tool, baseline, _ in memory], "MB", bare)
    return (("launch to rest, against the same views", [(tool[1], baseline[1]) for tool, _, baseline in launches], "ms",
             populated),
            ("memory, against the same views", [(tool, baseline) for tool, _, baseline in memory], "MB", populated))


def emulated_launch() -> None:
    """Launches the Mac app's Arm slice in the emulator and the tool in turns, if the tests have prepared that slice."""
    if not ARM_SLICE.exists():
        return
    plant()
    pairs = []
    for _ in range(2 if QUICK else 10):
        times = []
        for program in (ARM_SLICE, TOOL):
            with Running(program) as running:
                times.append(running.shown)
        pairs.append(tuple(times))
    row("launch of the Arm slice, emulated", pairs, "ms", "the tool's launch", "why its tests take that long")


def plant_files(count: int) -> None:
    """Installs the product with `count` files in its application support folder."""
    plant()
    top = HOME / "Library/Application Support/Quorlen/Data"
    for number in range(0, count, 100):
        folder = top / f"{number // 100:05}"
        folder.mkdir(parents=True)
        for file in range(min(100, count - number)):
            (folder / f"{file:03}.dat").write_bytes(b"data\n")
    subprocess.run(["chown", "-R", "ann:ann", top], check=True)


def elapsed(*command: str, **options: object) -> float:
    """Returns the milliseconds that a command takes."""
    begin = time.perf_counter()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, **options)
    return 1000 * (time.perf_counter() - begin)


def removals(count: int, runs: int) -> Pairs:
    """Returns pairs of times: a removal of `count` files, without the prompt, and the same script run by root."""
    script = output(BENCH / "operations", "script")
    pairs = []
    for _ in range(runs):
        plant_files(count)
        tool = float(output(BENCH / "operations", "removal"))
        prompt = statistics.median(elapsed(*as_ann("/usr/bin/pkexec", "/bin/true")) for _ in range(3))
        plant_files(count)
        baseline = elapsed("/bin/sh", "-c", 'eval "$(/bin/cat)"', input=script.encode())
        pairs.append((tool - prompt, baseline))
        prompts.append(prompt)
        for path in (HOME / "Desktop").glob("Quorlen-*"):
            path.unlink()
    return pairs


prompts = []


def exponent(points: Sequence[tuple[float, float]]) -> float:
    """Returns the slope of a straight line through the points' logarithms."""
    xs, ys = [math.log(x) for x, _ in points], [math.log(y) for _, y in points]
    return statistics.linear_regression(xs, ys).slope


def operation(name: str, runs: int) -> Pairs:
    """Returns the pairs of times of an operation and its baseline, without the first."""
    pairs = [tuple(map(float, line.split())) for line in output(BENCH / "operations", name, runs).splitlines()]
    for path in (HOME / "Desktop").glob("Quorlen-*"):
        path.unlink()
    return pairs[1:]


def idle() -> None:
    """Measures the wake-ups per second of the tool and of the bare window at rest."""
    with Running(TOOL) as tool, Running(BARE) as bare:
        time.sleep(2)  # until the work after a launch ends
        before = tool.wake_ups(), bare.wake_ups()
        time.sleep(IDLE_SECONDS)
        after = tool.wake_ups(), bare.wake_ups()
    rates = [(later - sooner) / IDLE_SECONDS for sooner, later in zip(before, after)]
    row("idle", [tuple(rates)], "wake-ups/s", "the bare window")


def shift() -> None:
    """Measures the time from a press of Shift until the other button is on the screen."""
    for path in (pathlib.Path("/Applications/Quorlen.app"), HOME / "Library/Application Support/Quorlen"):
        shutil.rmtree(path, ignore_errors=True)
    script = output(BENCH / "operations", "script")
    subprocess.run(["/bin/sh"], input=script, text=True, check=True, stdout=subprocess.DEVNULL)
    with Running(TOOL, detects=False):
        pairs = [tuple(map(float, line.split()))
                 for line in output(BENCH / "shift-clock", 5 if QUICK else 50).splitlines()]
    row("Shift press to the buttons swapped", pairs, "ms", "a round trip to the X server")


def main() -> None:
    against_views = launch_and_memory()
    counts = (100, 1000) if QUICK else (1000, 10_000, 100_000)
    of_files = {count: removals(count, 2 if QUICK else 5) for count in counts}
    fewest, largest = counts[0], counts[-1]
    more = {count: statistics.median(value - baseline for value, baseline in pairs)
            for count, pairs in of_files.items()}
    prompt = statistics.median(prompts)
    row("removal", of_files[largest], "ms", "the same script run directly by root on an identical tree",
        f"{largest} files; from the confirming press to the completion alert, less {prompt:.0f} ms for the prompt; "
        f"{more[largest]:.0f} ms more than the baseline, and {more[fewest]:.0f} ms more than it with {fewest} files")
    for what in against_views:
        row(*what)
    plant()
    row("detection", [(1000 * value, 1000 * baseline) for value, baseline in operation("scan", 1001)], "µs",
        "twelve bare stat calls", "the twelve tests")
    row("detection, with labels and log",
        [(1000 * value, 1000 * baseline) for value, baseline in operation("detection", 101)], "µs",
        "twelve bare stat calls", "AppKit lays the log's text out again")
    for name in ("backup", "restore"):
        pairs = operation(name, 4 if QUICK else 31)
        fixed = statistics.median(value - baseline for value, baseline in pairs)
        row(f"a {name}", pairs, "ms", "the archiver run directly on the same file",
            f"{fixed:.1f} ms above the baseline")
    idle()
    shift()
    emulated_launch()
    slope = exponent([(count, statistics.median(value for value, _ in pairs)) for count, pairs in of_files.items()])
    report(f"growth: a removal of {', '.join(map(str, counts))} files", [slope], "exponent", "the design: 1 at most")
    lines = (100, 1000) if QUICK else (100, 1000, 10_000, 100_000)
    appends = {}
    for count in lines:
        appends[count] = [float(line) for line in output(BENCH / "operations", "append", count, 5).splitlines()][1:]
        report(f"one line more on a log of {count}", appends[count], "ms")
    slope = exponent([(count, statistics.median(times)) for count, times in appends.items()][-3:])
    report("growth: one line more on a long log", [slope], "exponent", "the design: 1, each replaces the whole text")


if __name__ == "__main__":
    os.umask(0o022)
    main()
