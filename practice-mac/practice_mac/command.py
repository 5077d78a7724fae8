"""The options and verbs of the command practice-mac and of `pkexec /opt/practice/stage` inside."""
import argparse
import os
import signal
import sys
from pathlib import Path
from typing import Any, NoReturn

from . import product, stand_ins
from .machine import Mac, PracticeMacError
from .staging import StagingError

RIGHTS = ["granted", "refused", "dismissed"]
DESKTOP = ["normal", "missing", "read-only", "full"]
EPILOG = """
PLANTING: [--locations all|none|1,4,11] [--no-licence] [--no-agent] [--no-daemon] [--supervised]
TOOL: %s
MODE: %s (pkexec: real %s)
INSTANCE is the folder that `start` prints; it names the Mac.
FOLDERs appear inside at the same paths: --bind read-only, --share writable.
--until: the Mac is discarded when that process ends, for any reason; a script passes $$.
""" % (" ".join(stand_ins.TOOLS), " ".join(stand_ins.MODES), " ".join(stand_ins.ABSENT_MODES))


class Inside(argparse.ArgumentParser):
    """A parser that raises errors as StagingError."""

    def error(self, message: str) -> NoReturn:
        raise StagingError(message)


def locations(text: str) -> list[int]:
    try:
        return product.numbers(text)
    except StagingError as problem:
        raise argparse.ArgumentTypeError(str(problem)) from None


def variable(text: str) -> tuple[str, str]:
    name, equals, value = text.partition("=")
    if not name or not equals:
        raise argparse.ArgumentTypeError(f"'{text}' is not of the form NAME=VALUE")
    return name, value


def add_planting(words: argparse.ArgumentParser) -> None:
    words.add_argument("--locations", type=locations, default=locations("all"))
    for part in ("licence", "agent", "daemon"):
        words.add_argument(f"--no-{part}", dest=part, action="store_false")
    words.add_argument("--supervised", action="store_true")


def add_staging(verb: Any) -> None:
    """Adds the verbs that stage or report; `verb` makes the parser of each."""
    add_planting(verb("plant", "install the product (again)"))
    verb("rights", "set the answer to requests for administrator rights").add_argument(
        "rights", choices=RIGHTS)
    words = verb("tool", "set how a system tool behaves")
    words.add_argument("tool", choices=stand_ins.TOOLS)
    words.add_argument("mode", choices=stand_ins.MODES)
    verb("desktop", "set the state of ann's Desktop").add_argument("state", choices=DESKTOP)
    words = verb("await", "wait until TOOL has been called COUNT times (1), for at most --timeout SECONDS (60)")
    words.add_argument("tool", choices=stand_ins.TOOLS)
    words.add_argument("count", type=int, nargs="?", default=1)
    words.add_argument("--timeout", type=float, default=60)
    verb("report", "print what is there, what is gone and which tools were called").add_argument(
        "--json", dest="form", action="store_const", const="json", default="text")


def parser_with(verbs: Any, kind: type[argparse.ArgumentParser], instance: bool) -> Any:
    """A function that adds a verb to the parser."""
    def verb(name: str, help: str, instance: bool = instance) -> argparse.ArgumentParser:
        words = verbs.add_parser(name, help=help, allow_abbrev=False)
        words.set_defaults(verb=name)
        if instance:
            words.add_argument("instance", type=str)
        return words
    return verb


def request_of(words: list[str]) -> dict:
    """The request that a program inside makes with these words; StagingError if they are wrong."""
    parser = Inside(prog="stage", allow_abbrev=False, add_help=False)
    add_staging(parser_with(parser.add_subparsers(required=True, parser_class=Inside), Inside, False))
    return vars(parser.parse_args(words))


def parse(words: list[str]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        prog="practice-mac", allow_abbrev=False, epilog=EPILOG, formatter_class=argparse.RawDescriptionHelpFormatter,
        description="A disposable copy of this machine, set up as a Mac on which Quorlen 3 is installed.\n"
                    "practice-mac VERB --help shows a verb's options.")
    verb = parser_with(parser.add_subparsers(required=True, metavar="VERB"), argparse.ArgumentParser, True)
    start = verb("start", "start a practice Mac and print its instance", instance=False)
    once = verb("try", "start one, run a command in it, stop it: with the options of start and run", instance=False)
    run = verb("run", "run a command in it as the user ann, or as root")
    for words_of in (start, once):
        words_of.add_argument("--home", metavar="NAME", default="ann")
        words_of.add_argument("--rights", choices=RIGHTS, default="granted")
        words_of.add_argument("--display", metavar="virtual|none|:N", default="virtual")
        words_of.add_argument("--bind", metavar="FOLDER", action="append", default=[])
        words_of.add_argument("--share", metavar="FOLDER", action="append", default=[])
        add_planting(words_of)
    start.add_argument("--until", metavar="PID", type=int)
    for words_of in (run, once):
        words_of.add_argument("--root", action="store_true")
        words_of.add_argument("--env", metavar="NAME=VALUE", type=variable, action="append", default=[])
        words_of.usage = f"{words_of.prog} [OPTION]... {'instance ' if words_of is run else ''}-- COMMAND..."
    add_staging(verb)
    verb("stop", "stop it and discard its files")
    verb("list", "list the instances", instance=False)
    command: list[str] = []
    if words[:1] in (["run"], ["try"]) and "--" in words:
        words, command = words[:words.index("--")], words[words.index("--") + 1:]
    options = parser.parse_args(words or ["--help"])
    if options.verb in ("run", "try"):
        if not command:
            parser.error("no command after --")
        options.command = command
    return options


def run(mac: Mac, command: list[str], root: bool, env: list[tuple[str, str]]) -> int:
    """Runs a command with this process's streams. The command receives this process's interrupts, and ends with it."""
    program = mac.open_program(command, 0, 1, 2, root, dict(env))
    signal.signal(signal.SIGINT, lambda number, _: program.send_signal(number))
    return program.wait()


def main(words: list[str]) -> int:
    options = vars(parse(words))
    if os.geteuid() != 0:
        if not any(Path(folder, "sudo").exists() for folder in os.get_exec_path()):
            sys.exit("practice-mac: it needs root to make namespaces and mounts, and there is no sudo; run it as root")
        os.execvp("sudo", ["sudo", "--", sys.executable, "-ISB", *sys.argv])
    signal.signal(signal.SIGTERM, lambda number, _: sys.exit(128 + number))
    signal.signal(signal.SIGHUP, lambda number, _: sys.exit(128 + number))
    verb = options.pop("verb")
    try:
        if verb == "start":
            print(Mac.start(**options).instance)
        elif verb == "try":
            running = {name: options.pop(name) for name in ("command", "root", "env")}
            with Mac.start(until=os.getpid(), **options) as mac:
                return run(mac, **running)
        elif verb == "list":
            for mac in Mac.all():
                print(mac.instance, "up" if mac.is_up() else "ended", sep="\t")
        else:
            mac = Mac.named(options.pop("instance"))
            if verb == "stop":
                mac.stop()
            elif verb == "run":
                return run(mac, **options)
            elif (answer := mac.ask(verb, **options)) is not None:
                print(answer)
    except PracticeMacError as problem:
        print(f"practice-mac: {problem}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130
    return 0
