#!/usr/bin/python3
"""Tests the practice Mac on real instances. Needs root.

The tests of a class share one practice Mac where they can. `setUp` then restores what a test may change."""
import contextlib
import io
import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile
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
DAEMON = "com.vendrel.QuorlenDaemon"


def practice_mac(*words: str | Path) -> subprocess.CompletedProcess:
    return subprocess.run([COMMAND, *words], capture_output=True, check=False, text=True, timeout=120)


class Mac:
    """A practice Mac that runs during a `with` statement, with what these tests ask of it."""

    def __init__(self, **options: Any) -> None:
        self.options = {"display": "none", **options}

    def __enter__(self) -> "Mac":
        self.mac = machine.Mac.start(**self.options)
        self.instance = str(self.mac.instance)
        self.ask, self.look, self.exists, self.output = self.mac.ask, self.mac.look, self.mac.exists, self.mac.output
        self.run = self.mac.run
        return self

    def __exit__(self, *_: object) -> None:
        self.mac.stop()

    def do(self, verb: str, *words: str) -> str:
        """Calls the command practice-mac."""
        done = practice_mac(verb, self.instance, *words)
        if done.returncode != 0:
            raise AssertionError(f"{verb} {words}: {done.stderr}")
        return done.stdout

    def write(self, path: str, content: bytes = b"") -> None:
        """Writes a file as ann."""
        self.output("tee", path, stdin=content)

    def report(self) -> dict:
        return self.ask("report")

    def fates(self) -> list[str]:
        return [place["became"] for place in self.report()["locations"]]

    def calls(self) -> list[tuple]:
        return [(call["user"], call["tool"], *call["arguments"]) for call in self.ask("calls")]


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


class HostTraces:
    """What a practice Mac could leave behind on the machine outside."""

    def __init__(self) -> None:
        self.mounts = Path("/proc/self/mountinfo").read_text(encoding="utf-8")
        self.users = Path("/etc/passwd").read_bytes()
        self.instances = sorted(Path(tempfile.gettempdir()).glob("practice-mac.*"))

    def __eq__(self, other: object) -> bool:
        return vars(self) == vars(other)

    def __repr__(self) -> str:
        return repr(vars(self))


def processes_in(namespace: str) -> list[str]:
    """The command lines of the processes in a process namespace."""
    found = []
    for link in Path("/proc").glob("[0-9]*/ns/pid"):
        try:
            if os.readlink(link) == namespace:
                found.append((link.parents[1] / "cmdline").read_bytes().replace(b"\0", b" ").decode(errors="replace"))
        except OSError:
            pass  # it has ended
    return found


def first_process(mac: Mac) -> int:
    """The process id of a Mac's first process on the machine outside."""
    namespace = mac.output("readlink", "/proc/self/ns/pid").strip()
    found = [link.parents[1] for link in Path("/proc").glob("[0-9]*/ns/pid") if os.readlink(link) == namespace]
    return next(int(folder.name) for folder in found if "NSpid:\t%s\t1\n" % folder.name in
                (folder / "status").read_text(encoding="ascii"))


class Isolation(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.folder = cls.enterClassContext(tempfile.TemporaryDirectory(dir="/var/tmp"))
        cls.bound = cls.enterClassContext(tempfile.TemporaryDirectory())
        cls.shared = cls.enterClassContext(tempfile.TemporaryDirectory())
        for folder in (cls.folder, cls.bound, cls.shared):
            Path(folder, "file").write_text("outside", encoding="ascii")
            os.chmod(folder, 0o777)
        cls.mac = cls.enterClassContext(Mac(bind=[cls.bound], share=[cls.shared]))

    def test_a_file_that_root_deletes_or_changes_inside_stays_as_it_was_outside(self) -> None:
        file = Path(self.folder, "file")
        self.assertEqual(self.mac.output("cat", file, root=True), "outside")
        script = f"cd {self.folder} && echo inside >file && echo >new && rm -r {self.folder}"
        self.mac.output("sh", "-c", script, root=True)
        self.assertFalse(self.mac.exists(self.folder))
        self.assertEqual(file.read_text(encoding="ascii"), "outside")
        self.assertEqual(list(Path(self.folder).iterdir()), [file])

    def test_root_inside_sees_and_ends_no_process_outside(self) -> None:
        with running("sleep", "987654321") as outside:
            self.assertNotIn("sleep 987654321", self.mac.output("ps", "-eo", "args", root=True))
            self.assertNotEqual(self.mac.run("sh", "-c", f"kill -KILL {outside.pid}", root=True).returncode, 0)

    def test_there_is_no_disk_and_the_kernels_settings_are_read_only(self) -> None:
        disks = ("find", "/dev", "-exec", "test", "-b", "{}", ";", "-print")
        self.assertEqual(self.mac.output(*disks, root=True), "")
        setting = "/proc/sys/vm/swappiness"
        self.assertNotEqual(self.mac.run("sh", "-c", f"cat {setting} >{setting}", root=True).returncode, 0)

    def test_the_only_network_interface_is_the_loopback(self) -> None:
        links = json.loads(self.mac.output("ip", "-json", "link"))
        self.assertEqual([(link["ifname"], "UP" in link["flags"]) for link in links], [("lo", True)])

    def test_a_bound_folder_is_read_only_and_a_shared_one_is_writable(self) -> None:
        self.assertEqual(self.mac.output("cat", f"{self.bound}/file"), "outside")
        self.assertNotEqual(self.mac.run("sh", "-c", f"echo inside >'{self.bound}/file'", root=True).returncode, 0)
        self.mac.output("sh", "-c", f"echo inside >'{self.shared}/mine'")
        self.assertEqual(Path(self.bound, "file").read_text(encoding="ascii"), "outside")
        self.assertEqual(Path(self.shared, "mine").read_text(encoding="ascii"), "inside\n")

    def test_two_at_once_do_not_affect_each_other(self) -> None:
        with Mac(display="virtual", home="one") as one, Mac(display="virtual", home="two", locations="none") as two:
            one.output("rm", "-r", "/Users/one/Library/Logs/Quorlen")
            self.assertEqual(one.fates().count("removed"), 1)
            self.assertEqual(two.fates(), ["absent"] * 11)
            for mac in (one, two):
                mac.output("xdpyinfo")


class Leavings(unittest.TestCase):
    def setUp(self) -> None:
        self.before = HostTraces()

    def test_stop_leaves_nothing(self) -> None:
        with Mac(display="virtual") as mac:
            self.assertNotEqual(HostTraces(), self.before)
            namespace = mac.output("readlink", "/proc/self/ns/pid").strip()
            self.assertNotEqual(processes_in(namespace), [])
        wait_until(lambda: not processes_in(namespace))  # the machine's first process reaps the last one
        self.assertEqual(HostTraces(), self.before)

    def test_a_failed_start_leaves_nothing(self) -> None:
        started = practice_mac("start", "--locations", "12")
        if started.returncode == 0:
            practice_mac("stop", started.stdout.strip())
            self.fail("it started")
        self.assertEqual(HostTraces(), self.before)

    def test_an_interrupted_start_leaves_nothing(self) -> None:
        with running(COMMAND, "start", stdout=subprocess.DEVNULL) as starting:
            wait_until(lambda: HostTraces().instances != self.before.instances)
            starting.terminate()
            starting.wait()
        self.assertEqual(HostTraces(), self.before)

    def test_one_that_was_killed_is_reported_and_can_be_stopped(self) -> None:
        with Mac() as mac:
            os.kill(first_process(mac), signal.SIGKILL)
            wait_until(lambda: not mac.mac.is_up())
            self.assertIn("has ended", practice_mac("run", mac.instance, "--", "true").stderr)
        self.assertEqual(HostTraces(), self.before)

    def test_it_ends_with_the_process_that_until_names(self) -> None:
        with running("sleep", "infinity") as owner:
            instance = practice_mac("start", "--until", str(owner.pid)).stdout.strip()
            self.assertTrue(Path(instance).is_dir())
        wait_until(lambda: HostTraces() == self.before)  # the folder is removed last

    def test_without_the_right_to_make_namespaces_it_says_so_and_leaves_nothing(self) -> None:
        refused = subprocess.run(["setpriv", "--bounding-set=-sys_admin", "--inh-caps=-sys_admin", COMMAND, "start"],
                                 capture_output=True, text=True, check=False)
        self.assertNotEqual(refused.returncode, 0)
        self.assertIn("does not allow it to start", refused.stderr)
        self.assertIn("CAP_SYS_ADMIN.", refused.stderr)
        self.assertIn("--cap-add SYS_ADMIN", refused.stderr)
        self.assertEqual(HostTraces(), self.before)


class Running(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.mac = cls.enterClassContext(Mac(display="virtual"))

    def test_a_command_ends_with_the_run_that_started_it(self) -> None:
        with running(COMMAND, "run", self.mac.instance, "--", "sh", "-c", "echo $$; exec sleep infinity",
                     stdout=subprocess.PIPE, text=True) as command:
            pid = command.stdout.readline().strip()
            self.assertTrue(self.mac.exists(f"/proc/{pid}"))
            command.terminate()
            command.wait()
        wait_until(lambda: not self.mac.exists(f"/proc/{pid}"))

    def test_status_streams_and_variables_are_passed(self) -> None:
        self.assertEqual(self.mac.run("sh", "-c", "exit 41").returncode, 41)
        self.assertEqual(self.mac.run("sh", "-c", "kill -TERM $$").returncode, 128 + signal.SIGTERM)
        done = self.mac.run("sh", "-c", "cat; echo an error >&2", stdin=b"\0\xff\n")
        self.assertEqual((done.stdout, done.stderr), (b"\0\xff\n", b"an error\n"))
        done = practice_mac("run", self.mac.instance, "--env", "A=b c\n'", "--", "printenv", "A")
        self.assertEqual(done.stdout, "b c\n'\n")

    def test_ann_is_an_ordinary_user_in_her_home_on_a_display(self) -> None:
        self.assertEqual(self.mac.output("sh", "-c", 'id -un; pwd; echo "$HOME $DISPLAY"').split(),
                         ["ann", "/Users/ann", "/Users/ann", ":99"])
        self.assertEqual(self.mac.output("id", "-u", root=True), "0\n")
        self.assertIn("_NET_SUPPORTING_WM_CHECK(WINDOW)", self.mac.output("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"))

    def test_a_command_that_names_a_label_is_not_killed_by_what_it_runs(self) -> None:
        done = self.mac.run("sh", "-c", 'exec pkill -f "$1"', "sh", AGENT, root=True)
        self.assertEqual(done.returncode, 0)

    def test_a_display_outside_can_be_used(self) -> None:
        number, writer = os.pipe()
        with running("Xvfb", "-displayfd", str(writer), "-nolisten", "tcp", pass_fds=[writer],
                     stderr=subprocess.DEVNULL) as server:
            os.close(writer)
            with open(number, encoding="ascii") as line:
                display = ":" + line.readline().strip()
            with Mac(display=display) as mac:
                self.assertIn("name of display:    " + display, mac.output("xdpyinfo"))
            server.terminate()  # lets it remove its socket
            server.wait()


class Rights(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.mac = cls.enterClassContext(Mac())

    def setUp(self) -> None:
        self.mac.ask("plant", locations="1")
        self.mac.ask("rights", rights="granted")

    def delete_as_administrator(self) -> int:
        return self.mac.run("pkexec", "/bin/rm", "-r", SYSTEM_LOCATIONS[0]).returncode

    def test_ann_cannot_delete_a_system_location_without_rights(self) -> None:
        for path in SYSTEM_LOCATIONS:
            before = self.mac.output("find", path, root=True)
            self.assertNotEqual(self.mac.run("rm", "-rf", path).returncode, 0)
            self.assertEqual(self.mac.output("find", path, root=True), before)

    def test_granted_rights_delete(self) -> None:
        self.assertEqual(self.delete_as_administrator(), 0)
        self.assertFalse(self.mac.exists(SYSTEM_LOCATIONS[0]))

    def test_refused_rights_delete_nothing_until_they_are_granted(self) -> None:
        self.mac.do("rights", "refused")
        self.assertEqual(self.delete_as_administrator(), 127)
        self.assertTrue(self.mac.exists(SYSTEM_LOCATIONS[0]))
        self.mac.ask("rights", rights="granted")
        self.assertEqual(self.delete_as_administrator(), 0)

    def test_a_dismissed_prompt_deletes_nothing_and_has_another_status_than_a_refusal(self) -> None:
        self.mac.ask("rights", rights="dismissed")
        self.assertEqual(self.delete_as_administrator(), 126)
        self.assertTrue(self.mac.exists(SYSTEM_LOCATIONS[0]))

    def test_changes_apply_to_a_running_program_and_it_can_always_stage(self) -> None:
        program = """
            for rights in refused dismissed granted; do
                pkexec /opt/practice/stage rights $rights
                pkexec true
                echo $?
            done"""
        self.assertEqual(self.mac.output("sh", "-c", program).split(), ["127", "126", "0"])

    def test_pkexec_can_be_missing_or_no_program_and_is_restored_with_its_rights(self) -> None:
        self.mac.ask("tool", tool="pkexec", mode="missing")
        self.assertFalse(self.mac.exists("/usr/bin/pkexec"))
        self.mac.ask("tool", tool="pkexec", mode="not-a-program")
        self.assertTrue(self.mac.exists("/usr/bin/pkexec"))
        self.assertNotEqual(self.delete_as_administrator(), 0)
        self.mac.do("tool", "pkexec", "real")
        self.assertEqual(self.delete_as_administrator(), 0)


class Product(unittest.TestCase):
    def test_all_of_it_is_planted_as_an_installer_leaves_it(self) -> None:
        with Mac() as mac:
            report = mac.report()
            self.assertEqual([place["became"] for place in report["locations"]], ["kept"] * 11)
            self.assertEqual([place["path"] for place in report["locations"]][:3], SYSTEM_LOCATIONS)
            self.assertEqual((report["licence"]["same_as_planted"], report["licence"]["mode"]), (True, "0600"))
            self.assertEqual((report["new_in_home"], report["lost"], report["changed"]), ([], [], []))
            planted = [place["path"] for place in report["locations"]] + [f"/Users/ann/{LICENCE}"]
            owners = mac.output("stat", "-c", "%U", *planted)
            self.assertEqual(owners.split(), ["root"] * 3 + ["ann"] * 9)
            for name, user in (("agent", "ann"), ("daemon", "root")):
                self.assertEqual([process["user"] for process in report[name]["processes"]], [user])

    def test_some_locations_without_licence_and_jobs(self) -> None:
        chosen = (3, 4, 5, 11)
        with Mac(locations=list(chosen), licence=False, agent=False, daemon=False) as mac:
            self.assertEqual(mac.fates(), ["kept" if number in chosen else "absent" for number in range(1, 12)])
            self.assertFalse(mac.exists(LICENCE))
            report = mac.report()
            self.assertEqual((report["agent"]["processes"], report["daemon"]["processes"]), ([], []))

    def test_planting_again_restores_all_of_it_with_another_licence_or_none(self) -> None:
        with Mac() as mac:
            first = mac.mac.read(LICENCE)
            mac.output("rm", "-rf", "/Users/ann/Library/Logs/Quorlen", SYSTEM_LOCATIONS[0], root=True)
            mac.do("plant")
            report = mac.report()
            self.assertEqual(mac.fates(), ["kept"] * 11)
            self.assertNotEqual(mac.mac.read(LICENCE), first)
            self.assertEqual([len(report[name]["processes"]) for name in ("agent", "daemon")], [1, 1])
            mac.do("plant", "--locations", "4", "--no-licence")
            self.assertEqual(mac.report()["licence"]["kind"], "nothing")

    def test_supervised_jobs_are_started_once_more_unless_they_were_unloaded(self) -> None:
        with Mac(supervised=True) as mac:
            mac.output("/bin/launchctl", "bootout", "system", SYSTEM_LOCATIONS[1], root=True)
            mac.output("/usr/bin/pkill", "-f", AGENT, root=True)
            wait_until(lambda: mac.report()["agent"]["starts"] == 2)
            report = mac.report()
            self.assertEqual((len(report["agent"]["processes"]), report["agent"]["starts"]), (1, 2))
            self.assertEqual((len(report["daemon"]["processes"]), report["daemon"]["starts"]), (0, 1))
            mac.output("/usr/bin/pkill", "-f", AGENT, root=True)
            wait_until(lambda: not mac.report()["agent"]["processes"])
            self.assertEqual(mac.report()["agent"]["starts"], 2)

    def test_a_home_may_have_an_odd_name_and_has_neighbours_for_each_misread_name(self) -> None:
        for name in ("o'neil lee", '$(x) `x` "x"', "a\\b Zoë Ångström", "-rf", "*"):
            with self.subTest(name), Mac(home=name) as mac:
                home = f"/Users/{name}"
                self.assertEqual(mac.output("sh", "-c", 'cd && pwd && getent passwd ann | cut -d: -f6').splitlines(),
                                 [home, home])
                mac.output("sh", "-c", 'rm -r "$HOME/Library/Logs/Quorlen"')
                self.assertEqual(mac.fates(), ["kept"] * 10 + ["removed"])
                self.assertEqual(mac.report()["lost"], [])

    def test_what_is_lost_changed_or_new_elsewhere_is_reported(self) -> None:
        with Mac(home="ann lee") as mac:
            mac.output("rm", "-r", "/Applications/Quorlen 2.app/Contents/Info.plist", "/Users/ann/Library/Logs/Quorlen",
                       root=True)
            mac.output("sh", "-c", "echo more >>'Documents/Letter to Vendrel.txt'; touch Library/new /tmp/new")
            report = mac.report()
            self.assertEqual(report["lost"], ["/Applications/Quorlen 2.app/Contents/Info.plist",
                                              "/Users/ann/Library/Logs/Quorlen"])
            self.assertEqual(report["changed"], ["/Users/ann lee/Documents/Letter to Vendrel.txt"])
            self.assertEqual(report["new_in_home"], ["/Users/ann lee/Library/new"])
            self.assertEqual(report["new_in_temporary_folder"], ["/tmp/new"])


class Tools(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.mac = cls.enterClassContext(Mac())

    def setUp(self) -> None:
        self.mac.ask("plant", locations="3,5")  # starts the jobs again
        self.calls_before = len(self.mac.calls())

    def test_every_call_is_recorded_exactly(self) -> None:
        odd = ["", " ", "a\nb", "'\"\\$`", "é", b"\xff"]
        self.mac.run("/usr/bin/ditto", *odd)
        self.mac.run("/bin/launchctl", "stop", AGENT, root=True)
        self.mac.run("/usr/bin/sfltool", "resetbtm", root=True)
        self.mac.run("/sbin/shutdown", "-r", "now", root=True)
        self.mac.run("/usr/bin/pkill", "-f", "no such process", root=True)
        self.mac.run("/usr/bin/xdg-open", "https://example.com/?a=b&c")
        self.assertEqual(self.mac.calls()[self.calls_before:], [
            ("ann", "/usr/bin/ditto", "", " ", "a\nb", "'\"\\$`", "é", "\udcff"),
            ("root", "/bin/launchctl", "stop", AGENT),
            ("root", "/usr/bin/sfltool", "resetbtm"),
            ("root", "/sbin/shutdown", "-r", "now"),
            ("root", "/usr/bin/pkill", "-f", "no such process"),
            ("ann", "/usr/bin/xdg-open", "https://example.com/?a=b&c")])

    def test_ann_can_stage_only_with_pkexec(self) -> None:
        done = self.mac.run("/opt/practice/stage", "tool", "ditto", "missing")
        self.assertEqual((done.returncode, done.stderr), (1, b"stage: only root may make requests\n"))
        self.assertTrue(self.mac.exists("/usr/bin/ditto"))

    def test_ann_can_write_only_to_a_normal_desktop(self) -> None:
        for state, writable in (("full", False), ("read-only", False), ("missing", False), ("normal", True)):
            self.mac.ask("desktop", state=state)
            done = self.mac.run("sh", "-c", "echo x >Desktop/x")
            self.assertEqual(done.returncode == 0, writable, state)

    def test_pkill_ends_only_processes_with_the_label(self) -> None:
        before = self.mac.output("ps", "-eo", "args", root=True).count("\n")
        self.mac.output("/usr/bin/pkill", "-f", DAEMON, root=True)
        wait_until(lambda: not self.mac.report()["daemon"]["processes"])
        self.assertEqual(len(self.mac.report()["agent"]["processes"]), 1)
        self.assertEqual(self.mac.output("ps", "-eo", "args", root=True).count("\n"), before - 1)

    def test_launchctl_acts_on_the_callers_own_jobs(self) -> None:
        self.assertNotEqual(self.mac.run("/bin/launchctl", "stop", AGENT, root=True).returncode, 0)
        self.assertNotEqual(self.mac.run("/bin/launchctl", "remove", DAEMON).returncode, 0)
        self.mac.output("/bin/launchctl", "remove", AGENT)
        self.mac.output("/bin/launchctl", "bootout", "system", SYSTEM_LOCATIONS[1], root=True)
        report = self.mac.report()
        self.assertEqual((report["agent"]["processes"], report["daemon"]["processes"]), ([], []))

    def test_only_root_can_order_a_restart_and_its_call_can_be_awaited(self) -> None:
        shutdowns = sum(call[1] == "/sbin/shutdown" for call in self.mac.calls())
        self.assertNotEqual(self.mac.run("/sbin/shutdown", "-r", "now").returncode, 0)
        with running(COMMAND, "await", self.mac.instance, "shutdown", str(shutdowns + 2)) as waiting:
            self.mac.output("/sbin/shutdown", "-r", "now", root=True)
            self.assertEqual(waiting.wait(60), 0)

    def test_each_way_in_which_a_tool_can_fail(self) -> None:
        calls = sum(call[1] == "/usr/bin/ditto" for call in self.mac.calls())
        words = ("/usr/bin/ditto", "-c", "-k", "--sequesterRsrc", "--keepParent", f"/Users/ann/{LICENCE}", "/tmp/l.zip")
        for mode, status in (("missing", 127), ("fails", 1), ("silent", 0), ("dies", 128 + signal.SIGKILL)):
            self.mac.ask("tool", tool="ditto", mode=mode)
            self.assertEqual(self.mac.run(*words).returncode, status, mode)
            self.assertFalse(self.mac.exists("/tmp/l.zip"), mode)
        self.mac.ask("tool", tool="ditto", mode="not-a-program")
        launch = "import subprocess; subprocess.run(['/usr/bin/ditto'])"
        self.assertIn(b"Exec format error", self.mac.run("/usr/bin/python3", "-c", launch).stderr)
        self.mac.ask("tool", tool="ditto", mode="hangs")
        with running(COMMAND, "run", self.mac.instance, "--", *words) as hanging:
            self.mac.ask("await", tool="ditto", count=calls + 4, timeout=60)
            self.mac.output("sh", "-c", "kill $(pgrep -x ditto)", root=True)
            self.assertEqual(hanging.wait(60), 128 + signal.SIGTERM)
        self.mac.do("tool", "ditto", "real")
        self.assertEqual(self.mac.run(*words).returncode, 0)
        self.assertTrue(self.mac.exists("/tmp/l.zip"))


class Ditto(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        cls.mac = cls.enterClassContext(Mac())

    def setUp(self) -> None:
        self.mac.ask("desktop", state="normal")
        self.mac.output("sh", "-c", "rm -rf /tmp/* /Users/ann/Desktop/*.zip", root=True)

    def extract(self, members: dict[str | zipfile.ZipInfo, bytes]) -> int:
        """Extracts an archive of these members as ann into /tmp/out, and returns the status."""
        with zipfile.ZipFile(archive := io.BytesIO(), "w") as zipped:
            for name, content in members.items():
                zipped.writestr(name, content)
        self.mac.write("/tmp/made.zip", archive.getvalue())
        return self.mac.run("/usr/bin/ditto", "-x", "-k", "/tmp/made.zip", "/tmp/out").returncode

    def outside(self) -> list[str]:
        """What is new outside /tmp/out."""
        report = self.mac.report()
        new = report["new_in_home"] + report["new_in_temporary_folder"] + report["new_elsewhere"]
        return [path for path in new if path != "/tmp/made.zip" and not path.startswith("/tmp/out")]

    def link(self, name: str) -> zipfile.ZipInfo:
        info = zipfile.ZipInfo(name)
        info.create_system = 3
        info.external_attr = 0o120777 << 16
        return info

    def test_a_file_is_archived_under_its_parents_name_and_extracted_unchanged(self) -> None:
        script = f"""
            mkdir '/tmp/@ Ablage – 1' && cp -p ~/'{LICENCE}' '/tmp/@ Ablage – 1' && cd /
            /usr/bin/ditto -c -k --sequesterRsrc --keepParent '/tmp/@ Ablage – 1/.licence' ~/Desktop/l.zip &&
            LC_ALL=C /usr/bin/ditto -x -k ~/Desktop/l.zip /tmp/out/deep &&
            cd '/tmp/out/deep/@ Ablage – 1' && cmp ~/'{LICENCE}' .licence && stat -c %a .licence"""
        self.assertEqual(self.mac.output("sh", "-c", script), "600\n")
        self.assertEqual(self.mac.report()["archives"], [
            {"name": "l.zip", "members": ["@ Ablage – 1/.licence"], "holds_planted_licence": True}])

    def test_a_missing_source_a_missing_archive_and_a_full_disk_fail(self) -> None:
        pack = ("/usr/bin/ditto", "-c", "-k", "--sequesterRsrc", "--keepParent")
        self.assertEqual(self.mac.run(*pack, "/tmp/nothing", "/tmp/l.zip").returncode, 1)
        self.assertEqual(self.mac.run("/usr/bin/ditto", "-x", "-k", "/tmp/nothing.zip", "/tmp/out").returncode, 1)
        self.mac.do("desktop", "full")
        self.assertEqual(self.mac.run(*pack, f"/Users/ann/{LICENCE}", "/Users/ann/Desktop/l.zip").returncode, 1)

    def test_only_zip_archives_are_extracted(self) -> None:
        self.mac.output("sh", "-c", "cd /tmp; echo text >text.zip; bsdtar -cf tar.zip -C /etc hostname; : >empty.zip")
        for name in ("text", "tar", "empty"):
            done = self.mac.run("/usr/bin/ditto", "-x", "-k", f"/tmp/{name}.zip", "/tmp/out")
            self.assertEqual(done.returncode, 1, name)
            self.assertFalse(self.mac.exists("/tmp/out/hostname"))

    def test_a_damaged_zip_fails(self) -> None:
        self.assertEqual(self.extract({".licence": b"x" * 1000}), 0)
        self.mac.output("sh", "-c", "head -c 500 /tmp/made.zip >/tmp/short.zip")
        self.assertEqual(self.mac.run("/usr/bin/ditto", "-x", "-k", "/tmp/short.zip", "/tmp/out2").returncode, 1)

    def test_an_empty_zip_extracts_nothing(self) -> None:
        self.assertEqual(self.extract({}), 0)

    def test_no_entry_is_extracted_outside_the_folder(self) -> None:
        target = "/Users/ann/Desktop"
        self.assertEqual(self.extract({"a/.licence": b"in"}), 0)
        self.assertNotEqual(self.extract({"../climbed": b"x", "a/../../climbed": b"x"}), 0)
        self.extract({f"{target}/absolute": b"x"})
        self.assertNotEqual(self.extract({self.link("out"): target.encode(), "out/through": b"x"}), 0)
        self.assertEqual(self.outside(), [])
        self.assertEqual([entry["name"] for entry in self.mac.report()["desktop"]], ["Shopping.txt"])


if __name__ == "__main__":
    if os.geteuid() != 0:
        raise SystemExit("practice_mac_test.py: needs root, as the practice Mac does")
    # This run has its own folder for instances, so that it does not see this machine's other practice Macs.
    with tempfile.TemporaryDirectory(prefix="instances, ") as folder:
        os.environ["TMPDIR"] = tempfile.tempdir = folder
        unittest.main()
