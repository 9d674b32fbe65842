"""An output is there whole or not at all, whatever ends the command or fills the disk, in every format, alone and in a batch.
Each test begins with an output that is there already, and has the temporary files in a folder of its own."""
import fcntl
import json
import os
import random
import resource
import signal
import subprocess
import sys
import time
import unittest

from vxcommand import CommandTest, WITHOUT_UNNAMED, document

FORMATS = ("png", "pdf", "svg")
OLD = b"what was there before"


def scribble():
    """Makes lines at random places, which no format can pack into a few bytes."""
    dice = random.Random(1)
    return document("0.1 w\n" + "".join(f"{dice.random():.3f} G\n{dice.random() * 72:.3f} {dice.random() * 36:.3f} m\n9 9 L\nS\n"
                                        for _ in range(20000)))


def limit_files():
    resource.setrlimit(resource.RLIMIT_FSIZE, (4000, 4000))


class OutputFiles(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("a.vx", scribble())
        os.mkdir(self.path("tmp"))
        self.temporary = {"TMPDIR": self.path("tmp")}

    def each(self):
        """Yields a format, the words of a render or of a batch, and what goes to standard input."""
        for kind in FORMATS:
            name = "old." + kind
            line = json.dumps({"input": "a.vx", "output": name}).encode()
            for words, manifest in ((["render", "a.vx", "-o", name], None), (["batch", "-"], line)):
                self.write(name, OLD)
                with self.subTest(format=kind, command=words[0]):
                    yield kind, words, manifest
                os.remove(self.path(name))

    def assert_as_before(self, kind, *more):
        self.assertEqual(self.read("old." + kind), OLD)
        self.assertEqual(self.files(), sorted(["a.vx", "old." + kind, "tmp", *more]))
        self.assertEqual(os.listdir(self.path("tmp")), [])

    def start_drawing(self, words, manifest, environment):
        """Starts a command whose worker would never end, and returns it when that is half way through."""
        process = self.start(*words, hostile="scribble", environment=environment, stdin=subprocess.PIPE)
        if manifest is not None:
            process.stdin.write(manifest)
        process.stdin.close()
        process.stdin = None
        deadline = time.monotonic() + 60
        while not self.read("worker.notes").endswith(b"drawn 0\n"):
            self.assertLess(time.monotonic(), deadline, "the worker does not draw")
            time.sleep(0.02)
        return process

    def end_worker(self):
        """Waits until the worker has ended, or is a zombie."""
        worker = int(self.read("worker.notes").split()[0])
        deadline = time.monotonic() + 30
        while time.monotonic() < deadline:
            try:
                with open(f"/proc/{worker}/stat") as file:
                    if file.read().rsplit(")", 1)[1].split()[0] == "Z":
                        return
            except FileNotFoundError:
                return
            time.sleep(0.02)
        self.fail("the worker is still there")

    def test_a_whole_output_replaces_what_was_there(self):
        for kind, words, manifest in self.each():
            self.run_vx(*words, stdin=manifest, environment=self.temporary)
            self.assertGreater(len(self.read("old." + kind)), 4000)
            self.assertEqual(self.files(), sorted(["a.vx", "old." + kind, "tmp"]))
            self.assertEqual(os.listdir(self.path("tmp")), [])

    def test_killed(self):
        try:
            os.close(os.open(self.folder, os.O_TMPFILE | os.O_RDWR, 0o600))
        except OSError:
            self.skipTest("this file system cannot make files without a name")
        for kind, words, manifest in self.each():
            process = self.start_drawing(words, manifest, self.temporary)
            process.kill()
            process.communicate(timeout=60)
            self.assertEqual(process.returncode, -signal.SIGKILL)
            self.end_worker()
            self.assert_as_before(kind, "worker.notes")

    def test_ended(self):
        for preload in ({}, WITHOUT_UNNAMED):
            for kind, words, manifest in self.each():
                process = self.start_drawing(words, manifest, {**self.temporary, **preload})
                is_batch = words[0] == "batch"  # which finishes what is begun when it is asked to end
                process.send_signal(signal.SIGINT if is_batch else signal.SIGTERM)
                output, errors = process.communicate(timeout=60)
                told = b"vx: interrupted: 0 done; with --journal, --resume could go on\n" if is_batch else b""
                self.assertEqual((process.returncode, output, errors), (130, b"", told))
                self.end_worker()
                self.assert_as_before(kind, "worker.notes")

    def test_the_worker_killed(self):
        for kind, words, manifest in self.each():
            process = self.start_drawing(words, manifest, self.temporary)
            os.kill(int(self.read("worker.notes").split()[0]), signal.SIGKILL)
            errors = process.communicate(timeout=60)[1].decode()
            self.assertEqual(process.returncode, 5, errors)
            self.assertIn("the worker process was killed, ", errors)
            self.assert_as_before(kind, "worker.notes")

    def test_files_that_may_not_grow(self):
        for kind, words, manifest in self.each():
            messages = self.run_vx(*words, stdin=manifest, environment=self.temporary, preexec_fn=limit_files, status=4)[1]
            self.assertEqual(len(messages), 1)
            self.assertRegex(messages[0], f"^vx: old.{kind}: cannot be .*, file too large: ")
            self.assert_as_before(kind)

    # Standard output leads to a reader that left, or to a disk that is full.
    def test_standard_output(self):
        for kind in FORMATS:
            words = ["render", "a.vx", "-f", kind, "-o", "-"]
            with self.subTest(format=kind):
                reader, writer = os.pipe()
                os.close(reader)
                messages = self.run_vx(*words, environment=self.temporary, stdout=writer, status=4)[1]
                os.close(writer)
                self.assertEqual(messages, [])
                with open("/dev/full", "wb") as full:
                    messages = self.run_vx(*words, environment=self.temporary, stdout=full, status=4)[1]
                self.assertEqual(messages, ["vx: standard output: cannot be written, no space left on device: "
                                            "choose another place with -o"])
                self.assertEqual(os.listdir(self.path("tmp")), [])

    def test_a_reader_that_leaves_half_way(self):
        for kind in FORMATS:
            with self.subTest(format=kind):
                reader, writer = os.pipe()
                fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, 4096)  # less than there is to write
                process = self.start("render", "a.vx", "-f", kind, "-o", "-", environment=self.temporary, stdout=writer)
                os.close(writer)
                self.assertEqual(len(os.read(reader, 1)), 1)
                os.close(reader)
                errors = process.communicate(timeout=60)[1]
                self.assertEqual((process.returncode, errors), (4, b""))
                self.assertEqual(os.listdir(self.path("tmp")), [])

    def mount(self, name):
        """The disk has 16 KiB."""
        os.mkdir(self.path(name))
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=16k", "vx-test", self.path(name)],
                                 capture_output=True, text=True, check=False)
        if mounted.returncode != 0:
            self.skipTest("no file system can be mounted here: " + mounted.stderr.strip())
        self.addCleanup(subprocess.call, ["umount", self.path(name)])

    def test_a_full_disk(self):
        self.mount("disk")
        for preload in ({}, WITHOUT_UNNAMED):
            for kind in FORMATS:
                with self.subTest(format=kind, preload=preload):
                    self.write("disk/old." + kind, OLD)
                    environment = {**self.temporary, **preload}
                    message = self.refused("render", "a.vx", "-o", "disk/old." + kind, environment=environment, status=4)
                    self.assertRegex(message, f"^vx: disk/old.{kind}: cannot be written, no space left on device: ")
                    self.assertEqual((os.listdir(self.path("disk")), self.read("disk/old." + kind)), (["old." + kind], OLD))
                    self.assertEqual(os.listdir(self.path("tmp")), [])
                    os.remove(self.path("disk/old." + kind))

    def test_no_room_for_temporary_files(self):
        self.mount("disk")
        for preload in ({}, WITHOUT_UNNAMED):
            environment = {"TMPDIR": self.path("disk"), **preload}
            message = self.refused("render", "a.vx", "-f", "pdf", "-o", "-", environment=environment, status=4)
            self.assertEqual(message, "vx: standard output: cannot be written, no space left on device: "
                                      "choose another place with -o")
            self.assertEqual((self.files(), os.listdir(self.path("disk"))), (["a.vx", "disk", "tmp"], []))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
