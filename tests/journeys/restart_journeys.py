"""The restart that a removal offers. A refused one is in removal_journeys.py."""

from driver import PracticeMac, expect_equal, expect
from phrases import *


def journey_restart_granted() -> None:
    """Ann chooses "Restart Now": the tool ends at once, and a second later the Mac is told to restart."""
    with PracticeMac() as mac, mac.open_tool() as tool:
        remove(tool, then="Restart Now")
        expect_equal(tool.ended(), 0, "the tool's exit status")
        mac.awaits_call("shutdown")
        expect_equal(mac.calls("shutdown"), [["-r", "now"]], "the Mac's orders to shut down")
        judge_gone(mac)
        log, = mac.removal_logs()
        expect(removal_log(mac, log).endswith(COMPLETED[0] + "\n"), "the log file ends before the restart")
        judge_clean(mac)
