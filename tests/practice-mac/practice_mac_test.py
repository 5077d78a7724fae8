#!/usr/bin/python3
"""Tests the practice Mac on real instances. Needs root.

The tests of a class share one practice Mac where they can."""
import contextlib
import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import unittest.mock
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any

FOLDER = Path(__file__).resolve().parents[2] / "practice-mac"
sys.path.insert(0, str(FOLDER))
from practice_mac import machine  # noqa: E402

COMMAND = FOLDER / "practice-mac"
SYSTEM_LOCATIONS = ["/Applications/Quorlen.app", "/Library/LaunchDaemons/com.vendrel.QuorlenDaemon.plist",
                    "/Library/PrivilegedHelperTools/com.vendrel.QuorlenDaemon"]
LICENCE = "Library/Application Support/Quorlen/.licence"
AGENT = "com.vendrel.QuorlenAgent"


def practice_mac(*words: str | Path) -> subprocess.CompletedProcess:
    return subprocess.run([COMMAND, *words], capture_output=True, check=False, text=True, timeout=120)


def practice_mac_up(**options: Any) -> machine.Mac:
    """A practice Mac for a `with` statement."""
    return machine.Mac.start(**{"display": "none", **options})


def fates(report: dict) -> list[str]:
    """What became of the eleven locations."""
    return [place["became"] for place in report["locations"]]


def wait_until(condition: Callable[[], object]) -> None:
    """Waits for a condition of which no event tells, for at most a minute."""
    deadline = time.monotonic() + 60
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError("the condition did not come true within a minute")
        time.sleep(0.01)


@contextlib.contextmanager
def running(*words: str | Path, **options: Any) -> Iterator[subprocess.Popen]:
    """Runs a process on the machine outside, at most until the end of the `with` statement."""
    with subprocess.Popen(words, **options) as process:
        try:
            yield process
        finally:
            process.kill()


def instances() -> list[Path]:
    return sorted(Path(tempfile.gettempdir()).glob("practice-mac.*"))


def host_traces() -> tuple:
    """What a practice Mac could leave behind on the machine outside."""
    return Path("/proc/self/mountinfo").read_text(encoding="utf-8"), Path("/etc/passwd").read_bytes(), instances()


def processes_in(mac: machine.Mac) -> Callable[[], list[Path]]:
    """Returns a function that lists the processes of a Mac on the machine outside, as folders of /proc."""
    namespace = mac.output("readlink", "/proc/self/ns/pid").strip()

    def find() -> list[Path]:
        found = []
        for link in Path("/proc").glob("[0-9]*/ns/pid"):
            with contextlib.suppress(OSError):  # it has ended
                if os.readlink(link) == namespace:
                    found.append(link.parents[1])
        return found
    return find


class Isolation(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.folder = cls.enterClassContext(tempfile.TemporaryDirectory(dir="/var/tmp"))
        cls.bound = cls.enterClassContext(tempfile.TemporaryDirectory())
        cls.shared = cls.enterClassContext(tempfile.TemporaryDirectory())
        for folder in (cls.folder, cls.bound, cls.shared):
            Path(folder, "file").write_text("outside", encoding="ascii")
            os.chmod(folder, 0o777)
        cls.mac = cls.enterClassContext(practice_mac_up(bind=[cls.bound], share=[cls.shared]))

    def refused(self, script: str) -> None:
        """Checks that a shell script of root's fails."""
        self.assertNotEqual(self.mac.run("sh", "-c", script, root=True).returncode, 0, script)

    def test_a_file_that_root_deletes_or_changes_inside_stays_as_it_was_outside(self) -> None:
        file = Path(self.folder, "file")
        self.assertEqual(self.mac.output("cat", file, root=True), "outside")
        script = f"cd {self.folder} && echo inside >file && echo >new && rm -r {self.folder}"
        self.mac.output("sh", "-c", script, root=True)
        self.assertFalse(self.mac.exists(self.folder))
        self.assertEqual(file.read_text(encoding="ascii"), "outside")
        self.assertEqual(list(Path(self.folder).iterdir()), [file])

    def test_root_inside_reaches_no_process_disk_kernel_setting_or_network_outside(self) -> None:
        with running("sleep", "987654321") as outside:
            self.assertNotIn("sleep 987654321", self.mac.output("ps", "-eo", "args", root=True))
            self.refused(f"kill -KILL {outside.pid}")
        self.assertEqual(self.mac.output("find", "/dev", "-exec", "test", "-b", "{}", ";", "-print", root=True), "")
        self.refused("cat /proc/sys/vm/swappiness >/proc/sys/vm/swappiness")
        links = json.loads(self.mac.output("ip", "-json", "link"))
        self.assertEqual([(link["ifname"], "UP" in link["flags"]) for link in links], [("lo", True)])

    def test_a_bound_folder_is_read_only_and_a_shared_one_is_writable(self) -> None:
        self.assertEqual(self.mac.output("cat", f"{self.bound}/file"), "outside")
        self.refused(f"echo inside >'{self.bound}/file'")
        self.mac.output("sh", "-c", f"echo inside >'{self.shared}/mine'")
        self.assertEqual(Path(self.shared, "mine").read_text(encoding="ascii"), "inside\n")

    def test_two_at_once_do_not_affect_each_other(self) -> None:
        with practice_mac_up(display="virtual", home="-rf") as one, \
                practice_mac_up(display="virtual", home="*", locations="none") as two:
            one.output("rm", "-r", "/Users/-rf/Library/Logs/Quorlen")
            self.assertEqual(fates(one.ask("report")), ["kept"] * 10 + ["removed"])
            self.assertEqual(fates(two.ask("report")), ["absent"] * 11)
            self.assertTrue(one.output("xdpyinfo") and two.output("xdpyinfo"))


class Leavings(unittest.TestCase):
    """Each test leaves the machine outside as it was."""

    def setUp(self) -> None:
        self.before = host_traces()

    def tearDown(self) -> None:
        self.assertEqual(host_traces(), self.before)

    def test_stop_leaves_nothing(self) -> None:
        with practice_mac_up(display="virtual") as mac:
            self.assertNotEqual(host_traces(), self.before)
            processes = processes_in(mac)
            self.assertNotEqual(processes(), [])
        wait_until(lambda: not processes())  # the machine's first process reaps the last one

    def test_an_interrupted_start_leaves_nothing(self) -> None:
        with running(COMMAND, "start", stdout=subprocess.DEVNULL) as starting:
            wait_until(instances)
            starting.terminate()
            starting.wait()

    def test_one_that_was_killed_is_reported_and_can_be_stopped(self) -> None:
        with practice_mac_up() as mac:
            statuses = [folder / "status" for folder in processes_in(mac)()]  # grep -s: some may have ended
            found = subprocess.run(["grep", "-lsP", r"^NSpid:\t\d+\t1$", *statuses], stdout=subprocess.PIPE, text=True)
            os.kill(int(Path(found.stdout.strip()).parent.name), signal.SIGKILL)
            wait_until(lambda: not mac.is_up())
            self.assertIn("has ended", practice_mac("run", mac.instance, "--", "true").stderr)

    def test_it_ends_with_the_process_that_until_names(self) -> None:
        with running("sleep", "infinity") as owner:
            instance = practice_mac("start", "--until", str(owner.pid)).stdout.strip()
            self.assertTrue(Path(instance).is_dir())
        wait_until(lambda: host_traces() == self.before)  # the folder is removed last

    def test_without_the_right_to_make_namespaces_it_says_so_and_leaves_nothing(self) -> None:
        refused = subprocess.run(["setpriv", "--bounding-set=-sys_admin", "--inh-caps=-sys_admin", COMMAND, "start"],
                                 capture_output=True, text=True, check=False)
        self.assertNotEqual(refused.returncode, 0)
        self.assertRegex(refused.stderr, r"(?s)does not allow it to start.*CAP_SYS_ADMIN\..*--cap-add SYS_ADMIN")


class Running(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.mac = cls.enterClassContext(practice_mac_up(display="virtual"))

    def test_a_command_ends_with_the_run_that_started_it(self) -> None:
        with running(COMMAND, "run", self.mac.instance, "--", "sh", "-c", "echo $$; exec sleep infinity",
                     stdout=subprocess.PIPE, text=True) as command:
            pid = command.stdout.readline().strip()
            self.assertTrue(self.mac.exists(f"/proc/{pid}"))
            command.terminate()
            command.wait()
        wait_until(lambda: not self.mac.exists(f"/proc/{pid}"))

    def test_status_streams_and_variables_are_passed(self) -> None:
        self.assertEqual(self.mac.run("sh", "-c", "kill -TERM $$").returncode, 128 + signal.SIGTERM)
        done = self.mac.run("sh", "-c", "cat; echo an error >&2; exit 41", stdin=b"\0\xff\n")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (41, b"\0\xff\n", b"an error\n"))
        said = practice_mac("run", self.mac.instance, "--env", "A=b c\n'", "--", "printenv", "A").stdout
        self.assertEqual(said, "b c\n'\n")

    def test_ann_is_an_ordinary_user_in_her_home_on_a_display(self) -> None:
        self.assertEqual(self.mac.output("sh", "-c", 'id -un; pwd; echo "$HOME $DISPLAY"').split(),
                         ["ann", "/Users/ann", "/Users/ann", ":99"])
        self.assertEqual(self.mac.output("id", "-u", root=True), "0\n")
        self.assertIn("_NET_SUPPORTING_WM_CHECK(WINDOW)", self.mac.output("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"))

    def test_a_command_that_names_a_label_is_not_killed_by_what_it_runs(self) -> None:
        self.assertEqual(self.mac.run("sh", "-c", 'exec pkill -f "$1"', "sh", AGENT, root=True).returncode, 0)

    def test_a_program_that_runs_longer_than_the_limit_is_killed(self) -> None:
        with unittest.mock.patch.object(machine, "TIMEOUT", 1):
            self.assertRaisesRegex(machine.PracticeMacError, "longer than 1 s", self.mac.run, "sleep", "123456789")
        self.assertNotIn("123456789", self.mac.output("ps", "-eo", "args"))

    def test_a_display_outside_can_be_used(self) -> None:
        number, writer = os.pipe()
        with running("Xvfb", "-displayfd", str(writer), "-nolisten", "tcp", pass_fds=[writer],
                     stderr=subprocess.DEVNULL) as server:
            os.close(writer)
            with open(number, encoding="ascii") as line:
                display = ":" + line.readline().strip()
            with practice_mac_up(display=display) as mac:
                self.assertIn("name of display:    " + display, mac.output("xdpyinfo"))
            server.terminate()  # lets it remove its socket
            server.wait()


class Rights(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.mac = cls.enterClassContext(practice_mac_up())

    def test_ann_cannot_delete_a_system_location_stop_the_daemon_restart_or_stage_without_rights(self) -> None:
        for path in SYSTEM_LOCATIONS:
            before = self.mac.output("find", path, root=True)
            self.assertNotEqual(self.mac.run("rm", "-rf", path).returncode, 0)
            self.assertEqual(self.mac.output("find", path, root=True), before)
        for command in (("/bin/launchctl", "bootout", "system", SYSTEM_LOCATIONS[1]), ("/sbin/shutdown", "-r", "now")):
            self.assertNotEqual(self.mac.run(*command).returncode, 0)
        self.assertEqual(self.mac.ask("running"), {"agent": 1, "daemon": 1})
        done = self.mac.run("/opt/practice/stage", "tool", "ditto", "missing")
        self.assertEqual((done.returncode, done.stderr), (1, b"stage: only root may make requests\n"))
        self.assertTrue(self.mac.exists("/usr/bin/ditto"))

    def test_changes_apply_to_a_running_program_and_to_later_ones_and_ann_can_always_stage(self) -> None:
        program = """
            for rights in refused granted dismissed; do
                pkexec /opt/practice/stage rights $rights
                pkexec true
                echo $?
            done"""
        self.assertEqual(self.mac.output("sh", "-c", program).split(), ["127", "0", "126"])
        for rights, status in (("dismissed", 126), ("refused", 127), ("granted", 0)):
            self.assertEqual(practice_mac("rights", self.mac.instance, rights).returncode, 0)
            self.assertEqual(self.mac.run("pkexec", "true").returncode, status)

    def test_pkexec_can_be_missing_or_no_program_and_is_restored_with_its_rights(self) -> None:
        for mode, status in (("missing", 127), ("not-a-program", 126), ("real", 0)):
            self.mac.ask("tool", tool="pkexec", mode=mode)
            self.assertEqual(self.mac.run("/usr/bin/pkexec", "true").returncode, status, mode)


class Product(unittest.TestCase):
    def test_all_of_it_is_planted_as_an_installer_leaves_it(self) -> None:
        with practice_mac_up() as mac:
            report = mac.ask("report")
            paths = [place["path"] for place in report["locations"]]
            self.assertEqual(fates(report), ["kept"] * 11)
            self.assertEqual(paths[:3], SYSTEM_LOCATIONS)
            self.assertEqual((report["licence"]["same_as_planted"], report["licence"]["mode"]), (True, "0600"))
            self.assertEqual((report["new_in_home"], report["lost"], report["changed"]), ([], [], []))
            owners = mac.output("stat", "-c", "%U", *paths, f"/Users/ann/{LICENCE}")
            self.assertEqual(owners.split(), ["root"] * 3 + ["ann"] * 9)
            for name, user in (("agent", "ann"), ("daemon", "root")):
                self.assertEqual([process["user"] for process in report[name]["processes"]], [user])

    def test_planting_again_restores_what_is_chosen_with_another_licence_or_none(self) -> None:
        with practice_mac_up(agent=False, daemon=False) as mac:
            self.assertEqual(mac.ask("running"), {"agent": 0, "daemon": 0})
            first = mac.read(LICENCE)
            mac.output("rm", "-rf", "/Users/ann/Library/Logs/Quorlen", SYSTEM_LOCATIONS[0], root=True)
            self.assertEqual(practice_mac("plant", mac.instance, "--locations", "1,4").returncode, 0)
            self.assertEqual(fates(mac.ask("report")), ["kept"] * 10 + ["removed"])
            self.assertNotEqual(mac.read(LICENCE), first)
            mac.ask("plant", locations="3,4,5", licence=False)
            self.assertFalse(mac.exists(LICENCE))
            self.assertEqual(mac.ask("running"), {"agent": 1, "daemon": 1})

    def test_what_is_lost_changed_or_new_elsewhere_is_reported(self) -> None:
        with practice_mac_up(home="ann lee") as mac:
            mac.output("rm", "-r", "/Applications/Quorlen 2.app/Contents/Info.plist", "/Users/ann/Library/Logs/Quorlen",
                       root=True)
            mac.output("sh", "-c", "echo more >>'Documents/Letter to Vendrel.txt'; touch Library/new /tmp/new")
            report = mac.ask("report")
            self.assertEqual(report["lost"], ["/Applications/Quorlen 2.app/Contents/Info.plist",
                                              "/Users/ann/Library/Logs/Quorlen"])
            self.assertEqual(report["changed"], ["/Users/ann lee/Documents/Letter to Vendrel.txt"])
            self.assertEqual(report["new_in_home"], ["/Users/ann lee/Library/new"])
            self.assertEqual(report["new_in_temporary_folder"], ["/tmp/new"])


class Tools(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.mac = cls.enterClassContext(practice_mac_up(locations="4"))

    def test_every_call_is_recorded_exactly(self) -> None:
        odd = ("/usr/bin/ditto", "", " ", "a\nb", "'\"\\$`", "é", b"\xff")
        of_root = [("/bin/launchctl", "stop", AGENT), ("/usr/bin/sfltool", "resetbtm"), ("/sbin/shutdown", "-r", "now"),
                   ("/usr/bin/pkill", "-f", "no such process")]
        opened = ("/usr/bin/xdg-open", "https://example.com/?a=b&c")
        earlier = len(self.mac.ask("calls"))
        self.mac.run(*odd)
        for call in of_root:
            self.mac.run(*call, root=True)
        self.mac.run(*opened)
        self.assertEqual([(call["user"], call["tool"], *call["arguments"]) for call in self.mac.ask("calls")[earlier:]],
                         [("ann", *map(os.fsdecode, odd)), *(("root", *call) for call in of_root), ("ann", *opened)])

    def test_each_way_in_which_a_tool_can_fail(self) -> None:
        for mode, status in (("missing", 127), ("not-a-program", 126), ("fails", 1), ("silent", 0),
                             ("dies", 128 + signal.SIGKILL), ("real", 64)):
            self.mac.ask("tool", tool="ditto", mode=mode)
            self.assertEqual(self.mac.run("/usr/bin/ditto").returncode, status, mode)

    def test_a_file_is_archived_under_its_parents_name_and_extracted_unchanged(self) -> None:
        script = f"""
            mkdir '/tmp/@ Ablage – 1' && cp -p ~/'{LICENCE}' '/tmp/@ Ablage – 1' && cd / &&
            /usr/bin/ditto -c -k --sequesterRsrc --keepParent '/tmp/@ Ablage – 1/.licence' ~/Desktop/l.zip &&
            LC_ALL=C /usr/bin/ditto -x -k ~/Desktop/l.zip /tmp/out/deep &&
            cd '/tmp/out/deep/@ Ablage – 1' && cmp ~/'{LICENCE}' .licence && stat -c %a .licence"""
        self.assertEqual(self.mac.output("sh", "-c", script), "600\n")
        self.assertEqual(self.mac.ask("report")["archives"], [
            {"name": "l.zip", "members": ["@ Ablage – 1/.licence"], "holds_planted_licence": True}])

    def test_only_zip_archives_are_extracted(self) -> None:
        self.mac.output("sh", "-c", "bsdtar -cf /tmp/tar.zip -C /etc hostname")
        self.assertEqual(self.mac.run("/usr/bin/ditto", "-x", "-k", "/tmp/tar.zip", "/tmp/out").returncode, 1)
        self.assertFalse(self.mac.exists("/tmp/out/hostname"))


if __name__ == "__main__":
    if os.geteuid() != 0:
        raise SystemExit("practice_mac_test.py: needs root, as the practice Mac does")
    # This run has its own folder for instances, so that it does not see this machine's other practice Macs.
    with tempfile.TemporaryDirectory(prefix="instances, ") as folder:
        os.environ["TMPDIR"] = tempfile.tempdir = folder
        unittest.main()
