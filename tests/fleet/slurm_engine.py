# SPDX-License-Identifier: Apache-2.0
"""examples/fleet/slurm on a real Slurm: two nodes of one CPU on this machine, all files in a temporary folder.

One node is killed while it works. With --requeue its task runs again on the other one, and each good pair is in the
history exactly once.
"""

import ctypes
import os
import pathlib
import shutil
import socket
import subprocess
import time

from daemons import NotStarted, kill
from fleet_pairs import GOOD, NUM_PAIRS, name_of
from local_engines import EXAMPLES, Fleet

PROGRAMS = ("munged", "slurmctld", "slurmd", "sbatch", "squeue", "scontrol", "sinfo")
PR_SET_CHILD_SUBREAPER = 36
NODES = ("n1", "n2")

CONFIGURATION = """
ClusterName=fleet
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={ports[0]}
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket={folder}/munge.socket,cred_expire=5
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool.%n
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.%n.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.%n.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SelectType=select/linear
SchedulerType=sched/builtin
SlurmdParameters=config_overrides
SlurmdTimeout=6
SlurmctldTimeout=6
MessageTimeout=5
KillWait=1
ReturnToService=2
MpiDefault=none
MailProg=/bin/true
NodeName=n1 NodeHostname={host} NodeAddr=127.0.0.1 Port={ports[1]} CPUs=1
NodeName=n2 NodeHostname={host} NodeAddr=127.0.0.1 Port={ports[2]} CPUs=1
PartitionName=all Nodes=n1,n2 Default=YES State=UP
"""


def why_not():
    return "" if os.geteuid() == 0 else "it takes root"


def wait_until(condition, seconds, what, fault=AssertionError):
    """The first result of the condition that is true; the fault after that many seconds."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        result = condition()
        if result:
            return result
        time.sleep(0.1)
    raise fault(what if isinstance(what, str) else what())


def free_ports(count):
    sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def parents():
    """The parent of each process."""
    found = {}
    for folder in pathlib.Path("/proc").iterdir():
        if folder.name.isdigit():
            try:
                stat = (folder / "stat").read_text()
            except OSError:
                continue
            found[int(folder.name)] = int(stat.rpartition(")")[2].split()[1])
    return found


def descendants():
    """The processes that this one has started, and theirs. Orphans are among them, as this process takes them over."""
    tree = parents()
    found, new = set(), {os.getpid()}
    while new:
        new = {process for process, parent in tree.items() if parent in new} - found
        found |= new
    return found


def environment_of(process):
    try:
        entries = pathlib.Path(f"/proc/{process}/environ").read_bytes().split(b"\0")
    except OSError:
        return {}
    return dict(entry.decode(errors="replace").split("=", 1) for entry in entries if b"=" in entry)


class Cluster:
    """munged, slurmctld and two slurmd, which end with the block."""

    def __init__(self, folder):
        self.folder = folder
        self.environment = dict(os.environ, SLURM_CONF=str(folder / "slurm.conf"), LC_ALL="C")
        self.daemons = {}

    def __enter__(self):
        # Daemons leave their tasks to the first process; so they stay ours.
        ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1)
        try:
            self.start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        kill(descendants())
        for daemon in self.daemons.values():
            daemon.wait()
        try:
            while os.waitpid(-1, os.WNOHANG) != (0, 0):
                pass
        except ChildProcessError:
            pass

    def daemon(self, name, *command):
        with open(self.folder / f"{name}.out", "wb") as output:
            # In sessions of their own, so that a signal to the test's group leaves the order of ending to the test.
            self.daemons[name] = subprocess.Popen(
                command, env=self.environment, stdin=subprocess.DEVNULL, stdout=output, stderr=output, start_new_session=True
            )

    def start(self):
        self.folder.mkdir()
        self.folder.chmod(0o755)
        for name in ("state", *(f"spool.{node}" for node in NODES)):
            (self.folder / name).mkdir()
        key = self.folder / "munge.key"
        key.write_bytes(os.urandom(128))
        key.chmod(0o400)
        text = CONFIGURATION.format(folder=self.folder, host=socket.gethostname().split(".")[0], ports=free_ports(3))
        (self.folder / "slurm.conf").write_text(text, encoding="utf-8")
        (self.folder / "cgroup.conf").write_text(f"CgroupPlugin=cgroup/v1\nCgroupMountpoint={self.folder}/cgroup\n", encoding="utf-8")
        files = [f"--{kind}-file={self.folder}/munge.{kind}" for kind in ("key", "pid", "log", "seed")]
        self.daemon("munged", "munged", "--foreground", "--force", f"--socket={self.folder}/munge.socket", *files)
        self.wait_for("munged", (self.folder / "munge.socket").exists)
        self.daemon("slurmctld", "slurmctld", "-D", "-c")
        self.wait_for("slurmctld", lambda: self.output("scontrol", "ping").find("is UP") >= 0)
        for node in NODES:
            self.daemon(node, "slurmd", "-D", "-N", node)
        for node in NODES:
            self.wait_for(node, lambda node=node: self.output("sinfo", "-h", "-n", node, "-o", "%t").strip() == "idle")

    def wait_for(self, name, condition):
        """Waits until a daemon is at work."""

        def is_there():
            if self.daemons[name].poll() is not None:
                raise NotStarted(f"{name} ended: {self.last_line(name)}")
            return condition()

        wait_until(is_there, 60, lambda: f"{name} isn't ready: {self.last_line(name)}", NotStarted)

    def last_line(self, name):
        lines = (self.folder / f"{name}.out").read_text(errors="replace").splitlines()
        return lines[-1] if lines else "it printed nothing"

    def output(self, *command):
        return subprocess.run(
            command, env=self.environment, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False
        ).stdout

    def tasks_of(self, node):
        """Processes of tasks on a node, and the number of the array's task."""
        found = {}
        for process in descendants():
            values = environment_of(process)
            if values.get("SLURMD_NODENAME") == node and "SLURM_ARRAY_TASK_ID" in values:
                found[process] = int(values["SLURM_ARRAY_TASK_ID"])
        return found

    def kill_node(self, node, numbers):
        """Kills a node, with all that runs there, while it works on one of these tasks; returns the task's number."""

        def find_task():
            tasks = self.tasks_of(node)
            return tasks if any(number in numbers for number in tasks.values()) else None

        tasks = wait_until(find_task, 120, f"{node} has no task")
        tree = parents()
        # The daemon first, so that it can't report; then what runs the tasks.
        kill([self.daemons[node].pid, *{tree[process] for process in tasks if process in tree} - {os.getpid()}, *tasks])
        return next(number for number in tasks.values() if number in numbers)


def test_slurm(program, folder):
    fleet = Fleet(program, folder, seconds=0.3)
    with Cluster(folder / "slurm") as cluster:
        fleet.environment.update(cluster.environment, ZANL_PROFILE=str(folder / "program"))
        status, output = fleet.run(str(EXAMPLES / "slurm/submit.sh"), "pairs", "results", "runs.db")
        assert status == 0, output
        array, last = output.split()
        # Half of them are done.
        results = folder / "results"
        wait_until(lambda: len(list(results.glob("*.summary.json"))) >= NUM_PAIRS // 2, 180, "no results")
        assert not (folder / "runs.db").exists(), "the last job waits for the array"
        number = cluster.kill_node(NODES[1], set(GOOD))
        wait_until(lambda: not cluster.output("squeue", "-h").strip(), 240, lambda: cluster.output("squeue"))
        details = cluster.output("scontrol", "show", "job", f"{array}_{number}")
        assert "Restarts=1 " in details and "NodeList=n1" in details, details
        assert "JobState=COMPLETED" in cluster.output("scontrol", "show", "job", last)
        fleet.check_results(GOOD)
        # The task that was killed ran twice.
        calls = fleet.take_calls()
        assert sorted(set(calls)) == [name_of(good) for good in GOOD] and calls.count(name_of(number)) == 2, calls
    assert not [process for process in descendants() if environment_of(process).get("SLURM_CONF")]
    shutil.rmtree(folder)
