"""The one table of the stand-ins: the Mac's tools that Debian lacks, `shutdown`, which must only record, and `pkill`,
which is the real one behind a record.

All are one small program, inside/stand-in: it tells launchd how it was called and does what launchd orders.
"""
from collections.abc import Callable
from typing import TYPE_CHECKING, NamedTuple

if TYPE_CHECKING:
    from .launchd import Launchd

USAGE = 64
# What a stand-in does: ["exit", STATUS, MESSAGE…], ["exec", PROGRAM, NAME, ARGUMENT…] or ["signal", NUMBER].
Orders = list[str]


class StandIn(NamedTuple):
    path: str
    act: Callable[[list[str], int, "Launchd"], Orders]  # its arguments, the caller's uid, launchd


def finish(status: int, message: str = "") -> Orders:
    return ["exit", str(status), message]


def launchctl(words: list[str], uid: int, launchd: "Launchd") -> Orders:
    return finish(*launchd.launchctl(words, uid))


STAND_INS = {
    "ditto": StandIn("/usr/bin/ditto", lambda words, uid, launchd: ["exec", "/opt/practice/ditto", "ditto", *words]),
    "launchctl": StandIn("/bin/launchctl", launchctl),
    "sfltool": StandIn("/usr/bin/sfltool", lambda words, uid, launchd:
                       finish(0) if words == ["resetbtm"] else finish(USAGE, "usage: sfltool resetbtm")),
    "shutdown": StandIn("/sbin/shutdown", lambda words, uid, launchd:
                        finish(0) if uid == 0 else finish(1, "NOT super-user")),
    # In the stand-in's own process: pkill spares itself, and that command line holds what it looks for.
    "pkill": StandIn("/usr/bin/pkill", lambda words, uid, launchd: ["exec", "/usr/bin/pgrep", "pkill", *words]),
    "xdg-open": StandIn("/usr/bin/xdg-open", lambda words, uid, launchd: finish(0 if len(words) == 1 else 1)),
}
PKEXEC = "/usr/bin/pkexec"  # the real one, which can be taken away
TOOLS = [*STAND_INS, "pkexec"]
ABSENT_MODES = ["missing", "not-a-program"]
MODES = ["real", *ABSENT_MODES, "fails", "silent", "hangs", "dies"]


def orders(name: str, mode: str, words: list[str], uid: int, launchd: "Launchd") -> Orders | None:
    """What a stand-in that was called has to do; None: it gets no answer and hangs."""
    match mode:
        case "fails":
            return finish(1, "made to fail by the practice Mac")
        case "silent":
            return finish(0)
        case "hangs":
            return None
        case "dies":
            return ["signal", "9"]
    return STAND_INS[name].act(words, uid, launchd)
