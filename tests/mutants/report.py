"""Tries mutants in parallel, prints their results, and compares these with the explained survivors."""

import argparse
import collections
import concurrent.futures
import fcntl
import os
import queue
import random
import sys

import rules
import trials
from rules import ROOT, Mutant

EXPLAINED = ROOT / "tests/mutants/explained.txt"


def explained() -> set[str]:
    """Returns the mutants that may survive. A paragraph is a reason, in lines that begin with "#", and their names."""
    names: list[str] = []
    for paragraph in EXPLAINED.read_text().split("\n\n"):
        lines = paragraph.strip().splitlines()
        listed = [line for line in lines if not line.startswith("#")]
        if listed and lines[0] == listed[0]:
            sys.exit(f"mutants: {EXPLAINED.name} gives no reason for: {listed[0]}")
        names += listed
    return set(names)


def chosen(options: argparse.Namespace, everything: list[Mutant]) -> list[Mutant]:
    """Returns the mutants that the command line names."""
    if options.random is not None:
        return random.Random(options.seed).sample(everything, options.random)
    return [mutant for mutant in everything
            if options.all or mutant.file in options.files or (options.named and options.named in mutant.name)]


def together(mutants: list[Mutant]) -> list[list[Mutant]]:
    """Puts the mutants of each file into groups that do not overlap."""
    groups: list[list[Mutant]] = []
    for mutant in mutants:
        for group in groups:
            if group[-1].file == mutant.file and group[-1].end <= mutant.start:
                group.append(mutant)
                break
        else:
            groups.append([mutant])
    return groups


def try_all(mutants: list[Mutant], compiler: trials.Compiler, may_survive: set[str], jobs: int) -> dict[str, str]:
    """Tries mutants and prints their results. Returns name -> the test that noticed it, or an empty text."""
    for file in sorted({mutant.file for mutant in mutants}):
        compiler.check(file)
    programs = trials.programs()
    workers: queue.Queue[trials.Worker] = queue.Queue()
    for number in range(jobs):
        workers.put(trials.Worker(number, compiler, programs))
    noticed: dict[str, str] = {}

    def try_group(group: list[Mutant]) -> None:
        worker = workers.get()
        try:
            by = worker.trial(group)
            for mutant in group:
                noticed[mutant.name] = worker.trial([mutant]) if by and len(group) > 1 else by
                word = noticed[mutant.name] or ("explained" if mutant.name in may_survive else "SURVIVED")
                print(f"{word}\t{mutant.name}", flush=True)
        finally:
            workers.put(worker)

    # A survivor must pass every test. The explained ones run together.
    groups = [[mutant] for mutant in mutants if mutant.name not in may_survive]
    groups += together([mutant for mutant in mutants if mutant.name in may_survive])
    try:
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            for done in concurrent.futures.as_completed([pool.submit(try_group, group) for group in groups]):
                done.result()
    finally:
        for worker in workers.queue:
            worker.stop()
    return noticed


def report(options: argparse.Namespace) -> None:
    """Runs the command line. Ends the program if a result differs from the explanations."""
    trials.SCRATCH.mkdir(parents=True, exist_ok=True)
    lock = os.open(trials.SCRATCH, os.O_RDONLY)
    fcntl.flock(lock, fcntl.LOCK_EX)  # One run at a time works in this folder.
    compiler = trials.Compiler()
    everything = [mutant for file in rules.files() for mutant in rules.mutants(file, compiler.options_for(file))]
    mutants = chosen(options, everything)
    if not mutants:
        sys.exit("mutants: there are none of these; --all --list prints the names of all.")
    if options.list:
        print(*(mutant.name for mutant in mutants), sep="\n")
        return
    may_survive = explained()
    noticed = try_all(mutants, compiler, may_survive, options.jobs or len(os.sched_getaffinity(0)))

    problems = [f"survived: {name}" for name, by in noticed.items() if not by and name not in may_survive]
    problems += [f"explained, but noticed by {by}: {name}" for name, by in noticed.items()
                 if by and name in may_survive]
    problems += [f"explained, but no mutant: {name}" for name in may_survive - {mutant.name for mutant in everything}]
    counts = collections.Counter("compiler" if by == trials.COMPILER else "test" if by else ""
                                 for by in noticed.values())
    print(f"mutants: {len(noticed)} of {len(everything)} tried; noticed by the compiler {counts['compiler']}, "
          f"by a test {counts['test']}, by nothing {counts['']}.")
    if problems:
        sys.exit("\n".join(f"mutants: {problem}" for problem in sorted(problems)))
