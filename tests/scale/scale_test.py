"""The recipes of docs/scale.md, run as they stand, with shards that are killed: in the end all is there, once, and what one machine makes.

Each test has its own folder, and everything that it starts runs below that, and ends with it."""
import getpass
import glob
import hashlib
import json
import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

from vxcommand import VX, document

SOURCE = os.environ["VX_SOURCE_DIR"]
HERE = os.path.join(SOURCE, "tests", "scale")
SLOW = os.environ.get("VX_SLOW") == "1"
DOCUMENTS = 2000 if SLOW else 200
SHARDS = 20  # as the page says
PATIENCE = 300  # seconds: on a busy machine, for what takes a few


def blocks():
    """Returns the page's code blocks by their names."""
    with open(os.path.join(SOURCE, "docs", "scale.md"), encoding="utf-8") as page:
        return dict(re.findall(r"^`([\w.-]+)`\n\n```\w*\n(.*?)^```$", page.read(), re.MULTILINE | re.DOTALL))


def kill(process, how=signal.SIGKILL):
    try:
        os.kill(process, how)
    except ProcessLookupError:
        pass  # it ended by itself


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    try:
        for each in sockets:
            each.bind(("127.0.0.1", 0))
        return [each.getsockname()[1] for each in sockets]
    finally:
        for each in sockets:
            each.close()


def process_file(process, name):
    """Returns what /proc has of a process, nothing where it is gone."""
    try:
        with open(f"/proc/{process}/{name}", "rb") as file:
            return file.read().split(b"\0")
    except OSError:
        return []


def open_files(process):
    """Returns what the process has open, and its folder."""
    found = []
    for place in glob.glob(f"/proc/{process}/fd/*") + [f"/proc/{process}/cwd"]:
        try:
            found.append(os.readlink(place))
        except OSError:
            pass  # it is closed, or not ours
    return found


def parent_of(process):
    status = process_file(process, "stat")
    return int(status[0].rpartition(b")")[2].split()[1]) if status else None


def is_alive(process):
    status = process_file(process, "stat")
    return bool(status) and status[0].rpartition(b")")[2].split()[0] != b"Z"


class ScaleTest(unittest.TestCase):
    NEEDS = ()  # programs

    @classmethod
    def setUpClass(cls):
        for program in cls.NEEDS:
            if not shutil.which(program, path=os.environ["PATH"] + ":/usr/sbin"):
                raise unittest.SkipTest(f"there is no {program} here: ./check --scale installs it")

    def setUp(self):
        self.folder = os.path.realpath(tempfile.mkdtemp(prefix="vx-scale-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.addCleanup(self.end_all)
        for name in ("bin", "home", "work"):
            os.mkdir(self.path(name))
        os.symlink(VX, self.path("bin/vx"))
        os.symlink("/usr/bin/python3", self.path("bin/python3"))
        self.work = self.path("work")
        self.environment = {
            **{name: value for name, value in os.environ.items() if not name.startswith(("SLURM", "VX", "PYTHON", "SSH"))},
            "PATH": self.path("bin") + ":/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin", "HOME": self.path("home"),
            "XDG_CACHE_HOME": self.path("home"), "VX_SCALE_TEST": self.folder}
        self.blocks = blocks()
        os.mkdir(os.path.join(self.work, "in"))
        for number in range(DOCUMENTS):
            lines = f"{number} 0 m\n9 {number % 7} l\nS\n" + "1 1 m\n2 2 l\nS\n" * (600 if SLOW else 5)
            with open(os.path.join(self.work, "in", f"{number}.vx"), "wb") as file:
                file.write(document(lines))
        with open(os.path.join(self.work, "in", "bad.vx"), "wb") as file:  # is told, and costs nothing else
            file.write(document("1 k\n"))
        self.place("render-shard")
        self.shell(self.blocks["make-list"])

    def path(self, name):
        return os.path.join(self.folder, name)

    def place(self, name):
        """Puts a block into a file of its name."""
        path = os.path.join(self.work, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(self.blocks[name])
        os.chmod(path, 0o755)

    def start(self, *words, **options):
        return subprocess.Popen(words, cwd=self.work, **{"env": self.environment, "stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE,
                                                         "stderr": subprocess.STDOUT, "text": True, **options})

    def shell(self, script, status=0, **variables):
        process = self.start("sh", "-euc", script, env={**self.environment, **variables})
        output = process.communicate(timeout=PATIENCE * 4)[0]
        self.assertEqual(process.returncode, status, output)
        return output

    def wait_for(self, what, told):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            found = what()
            if found:
                return found
            time.sleep(0.01)
        self.fail(f"waited in vain for {told}")
        return None

    def ours(self, *words):
        """Returns the processes below our folder whose command lines have the words."""
        found = []
        for process in filter(str.isdigit, os.listdir("/proc")):
            command = [word.decode(errors="replace") for word in process_file(process, "cmdline")]
            mark = f"VX_SCALE_TEST={self.folder}".encode()
            if all(word in command for word in words) and mark in process_file(process, "environ") and is_alive(process):
                found.append(int(process))
        return found

    def end_all(self):
        """Ends with the test what it started, and sees that it has ended."""
        def kill_what_is_left():
            # Some daemons write over their environment.
            left = set(self.ours()) | {int(process) for process in filter(str.isdigit, os.listdir("/proc")) if int(process) != os.getpid() and
                                       is_alive(process) and any(path.startswith(self.folder) for path in open_files(process))}
            for process in left:
                kill(process)
            return not left

        self.wait_for(kill_what_is_left, "the end of all that was started")

    def journal_of(self, shard):
        """Returns the lines of the shard's newest journal."""
        journals = sorted(glob.glob(os.path.join(self.work, "journals", f"{shard}-*")), key=os.path.getmtime)
        if not journals:
            return []
        with open(journals[-1], "rb") as file:
            return file.read().splitlines()

    def running(self, shard):
        """Returns the command, or nothing, that is in the midst of the shard: some documents are done, others not."""
        done = sum(b'"done"' in line for line in self.journal_of(shard))
        return self.ours("--shard", f"{shard}/{SHARDS}") if 3 <= done < DOCUMENTS / SHARDS / 2 else []

    def kill_one(self, shards):
        """Kills the first of the shards that is in the midst of its work, and returns it."""
        def look():
            return next(((shard, found) for shard in shards if (found := self.running(shard))), None)

        shard, found = self.wait_for(look, f"one of the shards {shards}")
        for process in found:
            kill(process)
        return shard

    def run_with_kills(self, script):
        process = self.start("sh", "-euc", script)
        shards = list(range(1, SHARDS + 1))
        for _ in range(2):
            shards.remove(self.kill_one(shards))
        output = process.communicate(timeout=PATIENCE * 4)[0]
        self.assertEqual(process.returncode, 0, output)
        return output

    def tree(self, folder):
        """Returns the digest of each file."""
        found = {}
        for at, _, names in os.walk(os.path.join(self.work, folder)):
            for name in names:
                path = os.path.join(at, name)
                with open(path, "rb") as file:
                    found[os.path.relpath(path, os.path.join(self.work, folder))] = hashlib.sha256(file.read()).hexdigest()
        return found

    def check(self):
        """All is there, once, and what one machine makes."""
        self.shell("vx batch --manifest list -f svg -o 'alone/{hash:2}/{hash:2}/{hash}.{ext}' -q >alone.jsonl", status=1)
        self.assertEqual(len(self.tree("alone")), DOCUMENTS)
        self.assertEqual(self.tree("out"), self.tree("alone"))
        results = []
        for name in sorted(os.listdir(os.path.join(self.work, "results"))):
            if name.isdigit():
                with open(os.path.join(self.work, "results", name), encoding="utf-8") as file:
                    results += map(json.loads, file)
        self.assertEqual(sorted(r["number"] for r in results), list(range(1, DOCUMENTS + 2)))
        self.assertEqual([r["input"] for r in results if r["exit"] != 0], ["in/bad.vx"])
        self.shell(self.blocks["look-over"], status=1)
        with open(os.path.join(self.work, "results.jsonl"), encoding="utf-8") as file:
            results = [json.loads(line) for line in file]
        self.assertEqual([r["number"] for r in results], list(range(1, DOCUMENTS + 2)))
        self.assertTrue(all(r.get("doneBefore") for r in results))


class Page(ScaleTest):
    """Needs no engine: the shards come one after the other."""

    def test_every_block_is_run_by_a_test(self):
        with open(__file__, encoding="utf-8") as file:
            tests = file.read()
        self.assertEqual([name for name in self.blocks if f'"{name}"' not in tests], [])
        with open(os.path.join(SOURCE, "docs", "scale.md"), encoding="utf-8") as page:
            self.assertEqual(page.read().count("\n```") / 2, len(self.blocks))

    def test_shards(self):
        script = "".join(f"./render-shard {shard} {SHARDS}\n" for shard in range(1, SHARDS + 1))
        self.shell(script)
        self.shell(script)
        self.check()
        self.assertEqual(len(os.listdir(os.path.join(self.work, "journals"))), SHARDS)

    def test_a_shard_that_cannot_be_done_is_told(self):
        os.mkdir(os.path.join(self.work, "results"))
        with open(os.path.join(self.work, "out"), "w", encoding="ascii"):
            pass
        self.shell("./render-shard 1 20", status=4)
        self.assertNotIn("1", os.listdir(os.path.join(self.work, "results")))


class Parallel(ScaleTest):
    NEEDS = ("parallel",)

    def test_here(self):
        self.run_with_kills(self.blocks["parallel-here"])
        self.check()


class ParallelSsh(ScaleTest):
    NEEDS = ("parallel", "sshd", "ssh")

    def setUp(self):
        super().setUp()
        port = free_ports(1)[0]
        for name in ("host", "me"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self.path(name)], check=True)
        with open(self.path("sshd_config"), "w", encoding="ascii") as file:
            file.write(f"Port {port}\nListenAddress 127.0.0.1\nHostKey {self.path('host')}\nAuthorizedKeysFile {self.path('me.pub')}\n"
                       f"PidFile {self.path('sshd.pid')}\nPermitRootLogin prohibit-password\nPasswordAuthentication no\nUsePAM no\n"
                       f"StrictModes no\nMaxStartups 100\nSetEnv PATH={self.environment['PATH']} VX_SCALE_TEST={self.folder}\n")
        with open(self.path("ssh_config"), "w", encoding="ascii") as file:
            file.write(f"Host node1 node2\nHostName 127.0.0.1\nPort {port}\nUser {getpass.getuser()}\nIdentityFile {self.path('me')}\n"
                       "StrictHostKeyChecking no\nUserKnownHostsFile /dev/null\nLogLevel ERROR\n")
        with open(self.path("bin/ssh"), "w", encoding="ascii") as file:
            file.write(f'#!/bin/sh\nexec /usr/bin/ssh -F {self.path("ssh_config")} "$@"\n')
        os.chmod(self.path("bin/ssh"), 0o755)
        if os.getuid() == 0:
            os.makedirs("/run/sshd", exist_ok=True)
        self.start("/usr/sbin/sshd", "-f", self.path("sshd_config"), "-E", self.path("sshd.log")).communicate(timeout=60)
        self.wait_for(lambda: os.path.exists(self.path("sshd.pid")), "sshd")

    def test_over_ssh(self):
        self.run_with_kills(self.blocks["parallel-ssh"])
        self.check()


class Snakemake(ScaleTest):
    NEEDS = ("snakemake",)

    def test_a_rule_with_shards(self):
        self.place("Snakefile")
        self.run_with_kills(self.blocks["snakemake-run"])
        self.check()


class Dask(ScaleTest):
    @classmethod
    def setUpClass(cls):
        if subprocess.run(["/usr/bin/python3", "-c", "import dask.bag"], stderr=subprocess.DEVNULL, check=False).returncode:
            raise unittest.SkipTest("there is no Dask for /usr/bin/python3 here: ./check --scale installs it")

    def test_a_bag(self):
        self.place("shards.py")
        self.run_with_kills(self.blocks["dask-run"])
        self.check()


class Slurm(ScaleTest):
    NEEDS = ("sbatch", "slurmctld", "slurmd", "munged")

    def setUp(self):
        super().setUp()
        ports = free_ports(3)
        host = socket.gethostname().split(".")[0]
        values = {"HOST": host, "USER": getpass.getuser(), "FOLDER": self.folder,
                  "PORT": ports[0], "PORT1": ports[1], "PORT2": ports[2]}
        with open(os.path.join(HERE, "slurm.conf"), encoding="ascii") as file:
            text = re.sub("@(\\w+)@", lambda match: str(values[match[1]]), file.read())
        with open(self.path("slurm.conf"), "w", encoding="ascii") as file:
            file.write(text)
        self.environment["SLURM_CONF"] = self.path("slurm.conf")
        for name in ("munge", "state", "spool-n1", "spool-n2"):
            os.mkdir(self.path(name), 0o700)
        with open(self.path("munge/key"), "wb") as file:
            file.write(os.urandom(1024))
        os.chmod(self.path("munge/key"), 0o400)
        munge = self.path("munge/")
        self.daemon("munged", f"--key-file={munge}key", f"--socket={munge}socket", f"--pid-file={munge}pid",
                    f"--seed-file={munge}seed", f"--log-file={munge}log", "--force")
        self.daemon("slurmctld", "-c", "-i")
        for node in ("n1", "n2"):
            self.daemon("slurmd", "-N", node)
        self.wait_for(lambda: self.states() == ["idle", "idle"], "the nodes")
        self.place("shards.sbatch")

    def daemon(self, *words):
        with open(self.path("daemons.log"), "ab") as log:  # a pipe would stay open as long as they run
            self.assertEqual(self.start(*words, stdout=log).wait(timeout=60), 0)

    def states(self):
        """Returns how the nodes are."""
        return self.shell("sinfo --noheader --Node --format=%T || true").split()

    def submit(self):
        """Begins the run, and returns it with the job's number."""
        run = self.start("sh", "-euc", self.blocks["slurm-run"])
        job = self.wait_for(lambda: self.shell("squeue --noheader --format=%F || true").split(), "the job")[0]
        return run, job

    def requeue(self, job, shard, how="slurm-requeue"):
        self.wait_for(lambda: self.start("sh", "-euc", self.blocks[how], stdout=subprocess.DEVNULL,
                                         env={**self.environment, "task": f"{job}_{shard}"}).wait() == 0, "the requeue")

    def finish(self, run):
        output = run.communicate(timeout=PATIENCE * 4)[0]
        self.assertEqual(run.returncode, 0, output)
        self.check()

    def restarts(self, job, shard):
        """Returns how often the shard was started again."""
        told = self.shell(f"scontrol show job {job}_{shard} || true")
        found = re.search(r"Restarts=(\d+)", told)
        return int(found[1]) if found else 0

    def begin_at_once(self, job, shard):
        """Waits until the shard is in the queue again, which may take long, and has it begin."""
        self.wait_for(lambda: self.restarts(job, shard), "the controller, which starts the shard again")
        self.shell(f"scontrol update jobid={job}_{shard} StartTime=now || true")

    def one_on(self, node):
        """Returns a shard in the midst of its work on the node, and its processes."""
        def look():
            for shard in range(1, SHARDS + 1):
                if any(f"SLURMD_NODENAME={node}".encode() in process_file(process, "environ") for process in self.running(shard)):
                    return shard
            return 0
        return self.wait_for(look, f"a shard on {node}")

    def daemons_of(self, node):
        """Returns the node's daemon and those of its tasks."""
        with open(self.path(f"slurmd-{node}.pid"), encoding="ascii") as file:
            slurmd = int(file.read())
        found = [slurmd]
        for process in filter(str.isdigit, os.listdir("/proc")):
            command = b" ".join(process_file(process, "cmdline"))
            if command.startswith(b"slurmstepd") and self.node_of_step(process) == node:
                found.append(int(process))
        return found

    def node_of_step(self, process):
        """A step's daemon has the spool folder of its node open, or as its own."""
        files = open_files(process)
        return next((node for node in ("n1", "n2") if any(
            file.startswith(self.path(f"spool-{node}")) or file == self.path(f"slurmd-{node}.log") for file in files)), None)

    def test_tasks_are_requeued(self):
        run, job = self.submit()
        self.wait_for(lambda: self.running(1), "shard 1")
        self.requeue(job, 1)
        self.kill_one([6])  # its script ends with it: the task has failed
        self.wait_for(lambda: "JobState=FAILED" in self.shell(f"scontrol show job {job}_6 || true"), "the end of shard 6")
        self.requeue(job, 6)
        self.assertEqual((self.restarts(job, 1), self.restarts(job, 6)), (1, 1))
        self.finish(run)

    def test_a_node_dies_with_all_on_it(self):
        run, job = self.submit()
        shard = self.one_on("n1")
        for process in self.daemons_of("n1") + [process for process in self.ours() if b"SLURMD_NODENAME=n1" in process_file(process, "environ")]:
            kill(process)
        self.begin_at_once(job, shard)
        self.finish(run)

    def test_a_script_outlives_its_node(self):
        run, job = self.submit()
        shard = self.one_on("n1")
        orphans = self.ours("--shard", f"{shard}/{SHARDS}")
        first = next(process for process in orphans if parent_of(process) not in [None, *orphans])  # the others are its workers
        daemons = self.daemons_of("n1")
        for process in daemons:
            kill(process)
        self.wait_for(lambda: not any(map(is_alive, daemons)), "the end of the node")
        for process in orphans:  # or it would have ended before anybody notices; not before, or the kernel hangs up on it
            kill(process, signal.SIGSTOP)
        self.begin_at_once(job, shard)
        self.wait_for(lambda: set(self.running(shard)) - set(orphans), "the second writer")
        self.assertTrue(is_alive(first))
        for process in orphans:
            kill(process, signal.SIGCONT)
        self.finish(run)
        self.wait_for(lambda: not is_alive(first), "the end of the first writer")
        self.check()


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
