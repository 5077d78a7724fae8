#!/usr/bin/python3
"""Makes the system calls of the tool's operations fail, and kills the operations in the middle.

usage: tests/faults/faults_test.py faults [STRIDE]   Each call of a backup, a log file and a restore that opens, reads,
                                                     writes, renames, makes, removes, forks, executes or waits fails,
                                                     once with each of its errors. The archiver's calls do so too, or
                                                     only every STRIDE-th of their faults.
       tests/faults/faults_test.py kills [MOMENTS]   A restore and a removal are killed before each such call, or at
                                                     MOMENTS that are spread evenly over the calls. It kills the tool
                                                     and its archiver together, as at a power failure. Unlike at a power
                                                     failure, a script that runs as root goes on.

After each fault the log must show an allowed outcome, and the licence must be complete in at least one place. After
each kill a second run must complete. It runs in its own practice Mac. QUORLEN_BUILD is the build folder (build/linux).
"""

import re
import signal
import sys
import tempfile
import unittest
import zipfile
from collections.abc import Callable, Iterator
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent))
import scene  # noqa: E402
from scene import CHOSEN, DESKTOP, HOME, LICENCE, NEW, OLD  # noqa: E402
from tracer import KILL, Fault, Tracer  # noqa: E402

amount = 0  # STRIDE or MOMENTS


def is_complete(path: Path, licence: bytes) -> bool:
    """Returns whether a file is the complete licence, or an archive that has it."""
    try:
        if path.suffix != ".zip":
            return path.read_bytes() == licence
        with zipfile.ZipFile(path) as archive:
            return any(archive.read(name) == licence for name in archive.namelist() if name.endswith(".licence"))
    except (OSError, zipfile.BadZipFile):
        return False


class OperationTest(unittest.TestCase):
    def run_operation(self, name: str, tracer: Tracer, times: int = 1) -> None:
        """Runs an operation so many times in one process, unless it is killed."""
        self.printed = self.enterContext(tempfile.NamedTemporaryFile("r"))
        with open(self.printed.name, "w") as output:
            status = tracer.run([*scene.operation(name), f"--gtest_repeat={times}"], HOME, output,
                                scene.TIMEOUT * times)
        self.assertEqual(status, -signal.SIGKILL if tracer.killed else 0, Path(self.printed.name).read_text())

    def newly_said(self) -> list[str]:
        """Returns what the operation has said since the last call."""
        return re.findall("^said: (.*)", self.printed.read(), re.M)


class Faults(OperationTest):
    def every_fault(self, name: str, judge: Callable[[list[str]], bool]) -> None:
        """Runs an operation once for each fault of each of its calls. `judge` checks what it said and what it left, and
        returns whether it succeeded."""
        succeeded = []

        def one_by_one(faults: list[Fault | None]) -> Iterator[Fault | None]:
            for fault in faults:
                with self.subTest(fault):
                    scene.set_up(name)
                    yield fault
                    succeeded.append(judge(self.newly_said()))

        # The second run counts. The first one also makes what the process makes once.
        counting = Tracer(one_by_one([None, None]))
        self.run_operation(name, counting, 2)
        self.assertEqual(succeeded, [True, True], "the operation fails without a fault")
        own, of_children = [], []
        for number, call in enumerate(counting.calls, 1):
            (of_children if call.of_child else own).extend(Fault(number, error) for error in call.kind.errors)
        faults = own + of_children[::amount or 1]  # the archiver makes many calls, mostly while it starts
        failing = Tracer(one_by_one(faults))
        self.run_operation(name, failing, len(faults))
        print(f"calls: {len(counting.calls)}, faults: {failing.struck}", flush=True)
        self.assertGreater(failing.struck, 0)

    def test_a_backup_never_reports_an_archive_that_does_not_exist(self) -> None:
        def judge(said: list[str]) -> bool:
            self.assertTrue(is_complete(LICENCE, OLD), "a backup must not change the licence")
            archive = said[-1].removeprefix("last backup: ")
            if archive:
                self.assertEqual(said[:-1], ["License detected.", f"License backup created: {archive}"])
                self.assertTrue(is_complete(Path(archive), OLD), "the log names an incomplete archive")
            else:
                self.assertRegex("\n".join(said[:-1]),
                                 r"^License detected\.\nLicense backup (was not created\.|skipped: .+)$")
            return bool(archive)
        self.every_fault("Backup", judge)

    def test_a_log_file_is_complete_or_missing(self) -> None:
        def judge(said: list[str]) -> bool:
            self.assertEqual(said, ["Quorlen 3 removal completed."], "no text reports the outcome")
            files = [path.read_text() for path in DESKTOP.glob("Quorlen-*")]
            self.assertIn(files, ([], ["Quorlen 3 removal completed.\n"]))
            return bool(files)
        self.every_fault("LogFile", judge)

    def test_a_restore_ends_with_a_complete_licence_or_none(self) -> None:
        without_licence = 0

        def judge(said: list[str]) -> bool:
            nonlocal without_licence
            self.assertTrue(is_complete(CHOSEN, NEW), "a restore must not change its archive")
            if said == ["restored"]:
                self.assertTrue(is_complete(LICENCE, NEW))
                return True
            if said == ["not restored"]:
                self.assertTrue(is_complete(LICENCE, OLD), "the old licence is lost although there is no new one")
            else:
                self.assertRegex("\n".join(said), "^License (copy error|restore skipped): .+\nnot restored$")
                without_licence += not LICENCE.exists()
                self.assertTrue(not LICENCE.exists() or is_complete(LICENCE, OLD), "the licence is incomplete")
            return False
        self.every_fault("Restore", judge)
        self.assertGreater(without_licence, 0, "no fault came between the removal and the copy")


class Kills(OperationTest):
    def kill_everywhere(self, name: str, licence: bytes) -> None:
        """Kills an operation at the moments, and runs it again after each. The licence must always be complete in its
        location or in an archive."""
        without_licence = 0

        def check() -> None:
            self.assertTrue(any(is_complete(path, licence) for path in (LICENCE, CHOSEN, *DESKTOP.glob("*.zip"))),
                            "no complete licence is left")

        def check_at_the_kill() -> None:
            nonlocal without_licence
            without_licence += not LICENCE.exists()
            check()

        scene.set_up(name)
        counting = Tracer([None])
        self.run_operation(name, counting)
        calls = len(counting.calls)
        count = min(amount or calls, calls)
        killed = 0
        for moment in sorted({1 + number * calls // count for number in range(count)}):
            with self.subTest(killed_before_call=moment):
                scene.set_up(name)
                killing = Tracer([Fault(moment, KILL)], check_at_the_kill)
                self.run_operation(name, killing)
                killed += killing.killed
                check()  # a script that ran as root has ended
                self.run_operation(name, Tracer([None]))
                check()
                if name == "Restore":
                    self.assertTrue(is_complete(LICENCE, NEW), "the second run did not restore it")
        print(f"kill: {name}: {calls} calls, killed at {killed} moments, {without_licence} of them without a licence "
              "in its location", flush=True)
        self.assertGreater(killed, 0)

    def test_a_restore(self) -> None:
        # The user has agreed to lose the old licence. The chosen archive has the new one.
        self.kill_everywhere("Restore", NEW)

    def test_a_removal(self) -> None:
        self.kill_everywhere("Removal", OLD)


if __name__ == "__main__":
    words = sys.argv[1:]
    if words[0] != "inside":
        sys.exit(scene.run_in_mac(__file__, *words))
    amount = int(words[2]) if words[2:] else 0
    unittest.main(argv=[__file__, words[1].capitalize()])
