"""The stand-ins: tools of the Mac that Debian lacks; `shutdown` and `xdg-open`, which only record; and `pkill`, which
records and then runs the real one.

All are one program, inside/stand-in. It reports its call to launchd and does what launchd orders.
"""
from collections.abc import Callable
from typing import TYPE_CHECKING, NamedTuple

if TYPE_CHECKING:
    from .launchd import Launchd

USAGE = 64
# What a stand-in must do: ["exit", STATUS, MESSAGE…], ["exec", PROGRAM, NAME, ARGUMENT…] or ["signal", NUMBER].
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
    # pgrep called as pkill is pkill. It replaces the stand-in's process, because pkill never kills itself.
    "pkill": StandIn("/usr/bin/pkill", lambda words, uid, launchd: ["exec", "/usr/bin/pgrep", "pkill", *words]),
    "xdg-open": StandIn("/usr/bin/xdg-open", lambda words, uid, launchd: finish(0 if len(words) == 1 else 1)),
}
PKEXEC = "/usr/bin/pkexec"  # the real one, which can be removed
TOOLS = [*STAND_INS, "pkexec"]
ABSENT_MODES = ["missing", "not-a-program"]
MODES = ["real", *ABSENT_MODES, "fails", "silent", "hangs", "dies"]


def orders(name: str, mode: str, words: list[str], uid: int, launchd: "Launchd") -> Orders | None:
    """What a stand-in must do; None if it must hang."""
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
