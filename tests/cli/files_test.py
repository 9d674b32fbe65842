"""A name may stand for a pipe, a device, a file that others change or that must not be lost, or what a killed run left. The
command waits for nothing in vain, and tells what each of them is."""
import fcntl
import json
import os
import shutil
import signal
import stat
import sys
import threading
import time
import unittest

from vxcommand import CommandTest, CUTTING, document, Png, SANITIZED, WITHOUT_UNNAMED

SMALL = ["--fit", "8"]
SHORT = ["--max-time", "0.2"]
TOO_LATE = "not read to its end after 0.2 s: allow more with --max-time, or see what writes it"


class FilesTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("a.vx", document())

    def make_pipe(self, name):
        os.mkfifo(self.path(name))
        return name

    def feed(self, pipe, data):
        """Starts a process that writes to the pipe as soon as somebody reads it."""
        writer = threading.Thread(target=self.write, args=(pipe, data))
        writer.start()
        self.addCleanup(writer.join)

    def batch(self, *lines, status, words=()):
        manifest = "".join(json.dumps(line) + "\n" for line in lines).encode()
        output, _ = self.run_vx("batch", *SMALL, *words, stdin=manifest, status=status)
        return [json.loads(line) for line in output.splitlines()]


class Kinds(FilesTest):
    def test_a_pipe_is_read(self):
        pipe = self.make_pipe("pipe")
        plain = self.run_vx("render", "a.vx", "-f", "png", "-o", "-", *SMALL)[0]
        for words, options in [(["pipe"], {}), (["-"], {"stdin": document()})]:
            if "pipe" in words:
                self.feed(pipe, document())
            self.assertEqual(self.run_vx("render", *words, "-f", "png", "-o", "-", *SMALL, **options)[0], plain)
        reader, writer = os.pipe()  # what a shell makes of <(...)
        os.write(writer, document())
        os.close(writer)
        self.addCleanup(os.close, reader)
        self.run_vx("render", f"/dev/fd/{reader}", "-o", "b.png", *SMALL, pass_fds=[reader])
        self.assertEqual(self.read("b.png"), plain)

    def test_a_pipe_that_nobody_writes_to_takes_its_time(self):
        self.make_pipe("pipe")
        for words in (["render", "pipe", "-o", "a.png"], ["trace", "pipe"]):
            self.assertEqual(self.refused(*words, *SHORT, status=5), "vx: pipe: " + TOO_LATE)
        self.assertEqual(self.run_vx("info", "pipe", *SHORT, status=5)[1], ["vx: pipe: " + TOO_LATE])
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        message = self.refused("render", "-", "-o", "a.png", *SHORT, status=5, preexec_fn=lambda: os.dup2(reader, 0))
        self.assertEqual(message, "vx: standard input: " + TOO_LATE)

    def test_reading_and_drawing_share_the_time(self):
        """Either takes less than there is, both take more."""
        reader, writer = os.pipe()
        process = self.start("render", "-", "-o", "a.png", "--max-time", "2", hostile="nap", stdin=reader)
        os.close(reader)
        os.write(writer, document())
        time.sleep(1)
        os.close(writer)
        self.assertEqual((process.communicate(timeout=60)[1].decode(), process.returncode), (
            "vx: standard input: not done after 2 s, nothing written: allow more with --max-time\n", 5))

    def test_a_device_without_end_takes_its_memory(self):
        self.assertEqual(self.refused("render", "/dev/zero", "-o", "a.png", "--max-memory", "8M", status=5),
                         "vx: /dev/zero: is longer than the 8 MiB of memory that it may take: allow more with "
                         "--max-memory, or name a file")

    def test_a_batch_reads_and_writes_files_alone(self):
        self.make_pipe("pipe")
        cases = [("pipe", "b.png", 1, "is a pipe, not a file: name a file"),
                 ("/dev/zero", "c.png", 1, "is a device, not a file: name a file"),
                 ("a.vx", "pipe", 4, "pipe: is a pipe, not a file: name a file"),
                 ("a.vx", "/dev/null", 4, "/dev/null: is a device, not a file: name a file")]
        results = self.batch(*({"input": i, "output": o, "format": "png"} for i, o, _, _ in cases),
                             {"input": "a.vx", "output": "d.png"}, words=["--allow-outside"], status=4)
        self.assertEqual([(r["exit"], r.get("error")) for r in results],
                         [(code, error) for _, _, code, error in cases] + [(0, None)])
        self.assertEqual(self.files(), ["a.vx", "d.png", "pipe"])

    def test_a_pipe_for_an_output_needs_its_reader(self):
        pipe = self.make_pipe("pipe")
        self.assertEqual(self.refused("render", "a.vx", "-f", "png", "-o", pipe, status=4),
                         "vx: pipe: is a pipe that nobody reads: start its reader first")
        reader = os.open(self.path(pipe), os.O_RDONLY | os.O_NONBLOCK)
        self.run_vx("render", "a.vx", "-f", "png", "-o", pipe, *SMALL)
        self.assertEqual(Png(os.read(reader, 1 << 16)).width, 8)
        os.close(reader)

    def test_a_pipe_is_no_profile(self):
        self.make_pipe("pipe")
        for words in (["-o", "b.png"], ["-o", "b.svg"]):
            self.assertEqual(self.refused("render", "a.vx", *words, "--profile", "pipe", status=2),
                             'vx: --profile: profile "pipe" cannot be read as an ICC profile: give fogra39, none, or an '
                             "ICC profile of a CMYK press")
        for name in ("pipe", "/dev/zero"):
            self.assertEqual(self.refused("render", "a.vx", "-o", "b.pdf", "--pdf-x", "x3", "--profile", name, status=2),
                             f'vx: profile "{name}" is no ICC profile that can be read: name one of the press, or fogra39')
        results = self.batch({"input": "a.vx", "output": "b.png", "profile": "pipe"}, status=1)
        self.assertIn('profile "pipe" cannot be read', results[0]["error"])

    def test_what_is_no_font_map(self):
        self.make_pipe("pipe")
        os.mkdir(self.path("folder"))
        for name, told in [("folder", "is a directory: name a file in it"), ("none", "no such file: check the name"),
                           ("/dev/null", "is a device, not a file: name a file"),
                           ("/dev/zero", "is a device, not a file: name a file")]:
            with self.subTest(map=name):
                self.assertEqual(self.refused("info", "a.vx", "--font-map", name, status=2),
                                 f"vx: --font-map {name}: {told}")
        self.assertEqual(self.refused("info", "a.vx", "--font-map", "pipe", *SHORT, status=5),
                         "vx: --font-map pipe: " + TOO_LATE)
        self.feed("pipe", b"A = B\n" * (2 << 20))
        self.assertIn("longer than 10240000 bytes", self.refused("info", "a.vx", "--font-map", "pipe", status=2))

    def test_a_font_map_may_come_through_a_pipe(self):
        self.feed(self.make_pipe("pipe"), b"Nowhere = \xff\n")
        self.assertIn('no font "\\xFF" to serve "Nowhere"',
                      self.refused("info", "a.vx", "--font-map", "pipe", status=2))

    def test_a_folder_of_fonts_with_a_pipe(self):
        os.makedirs(self.path("fonts/more"))
        os.symlink("..", self.path("fonts/more/up"))
        os.symlink("nowhere", self.path("fonts/dangling"))
        self.run_vx("info", "a.vx", "--font-dir", "fonts")
        self.make_pipe("fonts/more/x.otf")
        self.assertEqual(self.refused("info", "a.vx", "--font-dir", "fonts", status=2),
                         'vx: --font-dir fonts: "fonts/more/x.otf" is a pipe, which is no font: take it away')

    def test_a_plugin_is_a_file(self):
        self.make_pipe("pipe")
        self.assertIn("no such plug-in", self.refused("info", "a.vx", "--plugin", "pipe", status=2))

    def test_no_folder_for_temporary_files(self):
        message = self.refused("render", "a.vx", "-f", "png", "-o", "-", environment={"TMPDIR": "/nowhere"}, status=4)
        self.assertEqual(message, 'vx: standard output: no temporary file in "/nowhere", no such file or directory: name '
                                  "another folder in TMPDIR")
        self.run_vx("render", "a.vx", "-f", "pdf,png", "-o", "{stem}.{ext}", environment={"TMPDIR": "/nowhere"})
        self.assertEqual(self.files(), ["a.pdf", "a.png", "a.vx"])


class Changes(FilesTest):
    TOLD = "vx: a.vx: changed while it was read, nothing written: try again when nothing writes to it"

    @unittest.skipIf(SANITIZED, "a sanitizer takes the signal")
    def test_an_input_that_is_cut(self):
        message = self.refused("render", "a.vx", "-o", "a.png", status=1,
                               environment={**CUTTING, "VX_CUT": self.path("a.vx")})
        self.assertEqual(message, self.TOLD)
        self.assertEqual(self.files(), ["a.vx"])

    def test_an_input_that_is_written_to(self):
        process = self.start("render", "a.vx", "-o", "a.png", hostile="watch")
        self.wait_for_notes(b"\n")
        with open(self.path("a.vx"), "r+b") as file:
            file.write(b"#")
        self.assertEqual((process.communicate(timeout=60)[1].decode(), process.returncode), (self.TOLD + "\n", 1))
        self.assertEqual(self.files(), ["a.vx", "worker.notes"])

    def test_an_output_that_is_cut_while_a_batch_looks_at_it(self):
        shutil.copy(self.path("a.vx"), self.path("b.png"))
        manifest = b'{"input": "a.vx", "output": "b.png"}\n{"input": "a.vx", "output": "c.png"}\n'
        output, _ = self.run_vx("batch", *SMALL, stdin=manifest, status=1,
                                environment={**CUTTING, "VX_CUT": self.path("b.png")})
        self.assertEqual([json.loads(line)["exit"] for line in output.splitlines()], [1, 0])
        self.assertEqual(self.read("b.png"), document())


class Drawings(FilesTest):
    def test_a_drawing_is_not_overwritten(self):
        drawings = {"bare.png": document(), "wrapped.png": b"\xC5\xD0\xD3\xC6" + bytes(26) + document()}
        for name, data in drawings.items():
            self.write(name, data)
        os.symlink("bare.png", self.path("link.png"))
        for name in (*drawings, "link.png", "none/../bare.png"):
            with self.subTest(output=name):
                self.assertEqual(self.refused("render", "a.vx", "-o", name, status=2),
                                 f'vx: -o {name}: would overwrite the drawing "{name}": choose another name, or add --force')
                self.assertEqual(self.batch({"input": "a.vx", "output": name}, status=1)[0]["exit"], 1)
        self.assertEqual({name: self.read(name) for name in drawings}, drawings)

    def test_one_of_several_stops_all(self):
        self.write("b.svg", document())
        self.assertIn('the drawing "b.svg"',
                      self.refused("render", "a.vx", "-f", "png,svg", "-o", "b.{ext}", status=2))
        self.assertEqual(self.files(), ["a.vx", "b.svg"])

    def test_force_overwrites_all_but_inputs(self):
        self.write("b.png", document())
        os.symlink("b.png", self.path("link.png"))
        self.run_vx("render", "a.vx", "-o", "link.png", "--force", *SMALL)
        self.assertEqual(Png(self.read("b.png")).width, 8)
        self.assertTrue(os.path.islink(self.path("link.png")))
        self.assertIn('would overwrite the input "a.vx"',
                      self.refused("render", "a.vx", "-f", "pdf", "-o", "./a.vx", "--force", status=2))

    def test_standard_output_is_no_file(self):
        self.write("-", document())
        self.assertEqual(Png(self.run_vx("render", "a.vx", "-f", "png", "-o", "-", *SMALL)[0]).width, 8)

    def test_other_files_are_overwritten(self):
        for number, data in enumerate((b"", b"%!PS-Other", b"\xC5\xD0", b"\x89PNG")):
            self.write("b.png", data)
            self.run_vx("render", "a.vx", "-o", "b.png", *SMALL)
            self.assertEqual(Png(self.read("b.png")).width, 8, number)


class Leftovers(FilesTest):
    def test_bits_that_lend_rights_are_dropped(self):
        for preload in ({}, WITHOUT_UNNAMED):
            self.write("b.png", b"old")
            os.chmod(self.path("b.png"), 0o7751)
            self.run_vx("render", "a.vx", "-o", "b.png", *SMALL, environment=preload)
            self.assertEqual(oct(stat.S_IMODE(os.stat(self.path("b.png")).st_mode)), "0o751")

    def killed_run(self):
        """Kills a run where every file has a name, and returns what it leaves."""
        process = self.start("render", "a.vx", "-o", "a.png", hostile="loop", environment=WITHOUT_UNNAMED)
        self.wait_for_notes(b"\n")
        worker = int(self.read("worker.notes").split()[0])
        process.kill()
        process.communicate(timeout=60)
        # The worker ends with its parent, and until then the file belongs to it.
        while os.path.exists(f"/proc/{worker}/fd") and os.listdir(f"/proc/{worker}/fd"):
            time.sleep(0.05)
        left = [name for name in self.files() if name.endswith(".part")]
        self.assertEqual(len(left), 1)
        return left[0]

    def test_the_next_run_tidies_up(self):
        left = self.killed_run()
        self.assertRegex(left, r"^\.vx-\d+-0\.part$")
        os.mkdir(self.path("elsewhere"))
        self.run_vx("render", "a.vx", "-o", "elsewhere/b.png", *SMALL)
        self.assertIn(left, self.files())
        self.run_vx("render", "a.vx", "-o", "b.png", *SMALL)
        self.assertEqual(self.files(), ["a.vx", "b.png", "elsewhere", "worker.notes"])

    def test_what_is_not_abandoned_stays(self):
        gone = int(self.killed_run().split("-")[1])
        names = [f".vx-{os.getpid()}-0.part", f".vx-{gone}-1.part.png", f"x.vx-{gone}-1.part", f".vx-{gone}.part",
                 f".vx-{gone}-01.part", f".vx-+{gone}-1.part", f".vx--{gone}-1.part", ".vx-0-0.part", f".vx-{gone}-x.part",
                 ".vx-99999999999-0.part", ".vx-.part"]
        for name in names:
            self.write(name, b"")
        held = [f".vx-{gone}-7.part"]  # by a run on another machine
        lock = open(self.path(self.write(held[0], b"")), "rb")
        self.addCleanup(lock.close)
        fcntl.flock(lock, fcntl.LOCK_EX)
        os.symlink("a.vx", self.path(f".vx-{gone}-8.part"))
        os.mkdir(self.path(f".vx-{gone}-9.part"))
        self.make_pipe(f".vx-{gone}-10.part")
        others = []
        if os.geteuid() == 0:
            others.append(self.write(f".vx-{gone}-11.part", b""))
            os.chown(self.path(others[0]), 1, -1)
        self.run_vx("render", "a.vx", "-o", "b.png", *SMALL)
        kept = names + held + others + [f".vx-{gone}-{number}.part" for number in (8, 9, 10)]
        self.assertEqual(self.files(), sorted(kept + ["a.vx", "b.png", "worker.notes"]))

    def test_a_run_keeps_what_is_its_own(self):
        """The second looks at the folder while the first is at work there."""
        process = self.start("render", "a.vx", "-o", "a.png", hostile="loop", environment=WITHOUT_UNNAMED)
        self.wait_for_notes(b"\n")
        before = [name for name in self.files() if name.endswith(".part")]
        self.run_vx("render", "a.vx", "-o", "b.png", *SMALL, environment=WITHOUT_UNNAMED)
        self.assertEqual([name for name in self.files() if name.endswith(".part")], before)
        process.send_signal(signal.SIGTERM)
        process.communicate(timeout=60)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
