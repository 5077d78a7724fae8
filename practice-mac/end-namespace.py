#!/usr/bin/python3
"""Ends a process namespace and returns when all of it is gone.

    end-namespace.py HOLDER                 HOLDER: the process that made the namespace, and parent of its first one
    end-namespace.py HOLDER --after PID SEAT
                                            waits for PID to end, and removes the folder SEAT as well;
                                            does neither when the namespace ends before
"""
import os
import select
import shutil
import signal
import sys


def wait_for_any(*processes: int) -> list[int]:
    """Those of these process descriptors whose process has ended, one at least."""
    return select.select(processes, [], [])[0]


def end(holder: int) -> None:
    with open(f"/proc/{holder}/task/{holder}/children", encoding="ascii") as children:
        processes = [os.pidfd_open(holder)] + [os.pidfd_open(int(child)) for child in children.read().split()]
    # The first process goes first: the kernel ends every other one inside, then the holder collects it and ends too.
    signal.pidfd_send_signal(processes[-1], signal.SIGKILL)
    for process in reversed(processes):
        wait_for_any(process)


def main() -> None:
    holder = int(sys.argv[1])
    try:
        if len(sys.argv) == 2:
            end(holder)
            return
        os.closerange(3, 1024)  # what its starter had open
        namespace, awaited = os.pidfd_open(holder), None
        try:
            awaited = os.pidfd_open(int(sys.argv[3]))
        except ProcessLookupError:
            pass  # it has ended already
        if awaited is None or namespace not in wait_for_any(namespace, awaited):
            end(holder)
            shutil.rmtree(sys.argv[4], ignore_errors=True)
    except (ProcessLookupError, FileNotFoundError):
        pass  # the namespace has gone meanwhile


main()
