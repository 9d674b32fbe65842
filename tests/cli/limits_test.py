"""A hostile document may cost only so much memory, time and room for files. Each limit gives one message and exit status 5."""
import json
import os
import random
import resource
import subprocess
import sys
import time
import unittest

from vxcommand import CommandTest, LEFT_HALF, SANITIZED, VX, document

MIB = 1 << 20
FORMATS = ("png", "pdf", "svg")
FONTS = ["--no-system-fonts", "--font-dir", "/usr/share/fonts/opentype/urw-base35"]
BLACK = "0 0 0 1 k\n0 0 0 1 K\n"


def points(count, seed=1):
    dice = random.Random(seed)
    return "".join(f"{dice.randrange(72)} {dice.randrange(36)} L\n" for _ in range(count))


def text(font, string, mode=0):
    return f"0 To\n1 0 0 1 2 2 0 Tp\nTP\n{mode} Tr\n/_{font} 12 Tf\n({string}) Tx\nTO\n"


def with_gradients(count):
    """Makes a document with so many definitions, and an instance of each that fills the page."""
    setup = "".join(f"%VX5_BeginGradient: (G{i})\n(G{i}) {i % 2} 2 Bd\n[\n0 {i / count:.3f} 0 0 1 50 100 Bs\n"
                    f"{i / count:.3f} 0 0 0.5 1 50 0 Bs\nBD\n%VX5_EndGradient\n" for i in range(count))
    page = "0 0 m\n72 0 L\n72 36 L\n0 36 L\n"
    shapes = "".join(f"{page}Bb\n1 (G{i}) 0 0 0 72 1 0 0 1 0 0 Bg\n{30 + i % 40} 0 0 45 36 18 Bm\nf\n0 BB\n" for i in range(count))
    return document(shapes).replace(b"%%EndSetup\n", setup.encode() + b"%%EndSetup\n", 1)


# Each row has a name, a document, and the formats for which it must not fit into the memory; for the others it may.
HUNGRY = [
    ("a path of a million lines", lambda: document(BLACK + "0 0 m\n" + points(1000000) + "f\n"), FORMATS),
    ("a stroke of a million lines", lambda: document(BLACK + "0 0 m\n" + points(1000000) + "S\n"), FORMATS),
    ("saves a million deep", lambda: document("q\n" * 1000000), FORMATS),
    ("paths in saves", lambda: document(BLACK + "q\n0 0 m\n9 9 L\n" * 300000), FORMATS),
    ("clips in saves", lambda: document("".join(f"q\n0 {i % 9} m\n72 0 L\n72 {36 - i % 7} L\nh\nW\nn\n"
                                                for i in range(60000))), ("png", "pdf")),
    ("clips of one another", lambda: document(("0 0 m\n72 1 L\n71 36 L\nh\nW\nn\n" * 50000)), ()),
    ("groups", lambda: document(BLACK + "u\n" * 1000000 + LEFT_HALF), ()),
    ("compound paths", lambda: document(BLACK + "*u\n" + "0 0 m\n9 9 L\n9 0 L\nf\n" * 20000 + "*U\n"), ()),
    ("layers", lambda: document(BLACK + "1 1 1 0 0 0 0 79 128 255 Lb\n(Layer) Ln\n0 0 m\n9 9 L\nS\nLB\n" * 30000), ()),
    ("a long text", lambda: document(BLACK + text("Helvetica", "W" * 400) * 3000), ()),
    ("a text that clips", lambda: document("q\n" + text("Helvetica", "&8W" * 30, 7) * 400), ()),
    ("many fonts", lambda: document("".join(text(f"Font{i}-Bold", "abc") for i in range(2000))), ("pdf",)),
    ("many colours", lambda: document("".join(f"{i / 30000:.5f} 0 0 1 k\n0 0 m\n9 9 L\n9 0 L\nf\n" for i in range(30000))),
     ()),
    ("many widths", lambda: document(BLACK + "".join(f"{i / 30000:.5f} w\n0 0 m\n9 9 L\nS\n" for i in range(30000))), ()),
    ("many gradients", lambda: with_gradients(2000), ()),
]


@unittest.skipIf(SANITIZED, "a sanitizer needs more address space than a memory limit leaves")
class Memory(CommandTest):
    LIMIT = 24 * MIB
    # This is for the program, its libraries, the stack, and the font files that are mapped, some for each of 256 names.
    OVERHEAD = 24 * MIB
    MAPPED_FONTS = 48 * MIB

    # What a process had before it became another program counts as well, so the one that starts vx must be small.
    STARTER = ("import os, sys\nprocess = os.spawnv(os.P_NOWAIT, sys.argv[1], sys.argv[1:])\n"
               "_, status, usage = os.wait4(process, 0)\nprint(os.waitstatus_to_exitcode(status), usage.ru_maxrss)")

    def peak(self, *words):
        """Returns the exit status, the messages, and the most memory that one of its processes had."""
        command = [sys.executable, "-c", self.STARTER, VX, *words, "--max-memory", str(self.LIMIT), "-q", *FONTS]
        ended = subprocess.run(command, cwd=self.folder, capture_output=True, text=True, timeout=120, check=True)
        status, peak = map(int, ended.stdout.split())
        return status, ended.stderr.splitlines(), peak * 1024

    def test_no_document_takes_more_than_it_may(self):
        for name, make, refused in HUNGRY:
            data = make()
            self.write("a.vx", data)
            for kind in FORMATS:
                with self.subTest(document=name, format=kind):
                    status, messages, peak = self.peak("render", "a.vx", "-o", "a." + kind)
                    most = self.LIMIT + self.OVERHEAD + len(data) + (self.MAPPED_FONTS if "font" in name else 0)
                    self.assertLess(peak, most, messages)
                    if kind in refused:
                        self.assertEqual(status, 5, messages)
                        self.assertIn("more than 24 MiB of memory, nothing written: allow more with --max-memory",
                                      messages[0])
                        self.assertEqual(self.files(), ["a.vx"])
                    else:
                        self.assertEqual((status, messages), (0, []))
                        os.remove(self.path("a." + kind))

    def test_a_picture_is_part_of_it(self):
        self.write("a.vx", document())
        status, messages, peak = self.peak("render", "a.vx", "-o", "a.png", "--width", "16000", "--samples", "8")
        self.assertEqual(status, 5, messages)
        self.assertIn("memory", messages[0])
        self.assertLess(peak, self.LIMIT + self.OVERHEAD)

    def test_a_device_without_end_is_part_of_it(self):
        status, messages, peak = self.peak("info", "/dev/zero")
        self.assertEqual(status, 5, messages)
        self.assertLess(peak, self.LIMIT + self.OVERHEAD)

    def test_a_document_in_a_pipe_is_part_of_it(self):
        data = document("% nothing\n" * (5 * MIB))
        message = self.refused("render", "-", "-o", "a.png", "--max-memory", "20M", stdin=data, status=5)
        self.assertEqual(message, "vx: standard input: is longer than the 20 MiB of memory that it may take: "
                                  "allow more with --max-memory, or name a file")
        self.write("a.vx", data)
        self.run_vx("render", "a.vx", "-o", "a.png", "--max-memory", "20M")
        self.assertEqual(self.files(), ["a.png", "a.vx"])


class Sizes(CommandTest):
    def setUp(self):
        super().setUp()
        # Every line is at another place, so that no format packs them into nothing.
        dice = random.Random(1)
        self.write("a.vx", document("0.1 w\n" + "".join(
            f"{dice.random():.3f} G\n{dice.random() * 72:.3f} {dice.random() * 36:.3f} m\n9 9 L\nS\n" for _ in range(5000))))

    def test_a_file_has_its_limit(self):
        for kind in FORMATS:
            with self.subTest(format=kind):
                message = self.refused("render", "a.vx", "-o", "a." + kind, "--max-output", "4K", status=5)
                self.assertEqual(message, f"vx: a.{kind}: takes more than 4 KiB, nothing written: allow more with --max-output")
                self.assertEqual(self.files(), ["a.vx"])
                self.run_vx("render", "a.vx", "-o", "a." + kind, "--max-output", "10M")
                self.assertGreater(os.path.getsize(self.path("a." + kind)), 4 << 10)
                os.remove(self.path("a." + kind))
                message = self.refused("render", "a.vx", "-f", kind, "-o", "-", "--max-output", "4K", status=5)
                self.assertIn("vx: standard output: takes more than 4 KiB", message)

    def test_in_a_batch(self):
        manifest = b"".join(b'{"input": "a.vx", "output": "b.%s"}\n' % kind.encode() for kind in FORMATS)
        output, messages = self.run_vx("batch", "-", "--max-output", "4K", stdin=manifest, status=5)
        self.assertEqual(output.count(b'"status":"limit"'), 3, output)
        self.assertEqual(len(messages), 3)
        self.assertEqual(self.files(), ["a.vx"])

    def test_by_default(self):
        # A path that is never ended is painted again by each "b", so that an SVG grows with its square.
        self.write("a.vx", document("0 0 0 1 k\n" + "".join(f"0 0 m\n{i % 71}.{i:04} 9 L\n9 0 L\nb\n" for i in range(6000))))
        message = self.refused("render", "a.vx", "-o", "a.svg", status=5)
        self.assertEqual(message, "vx: a.svg: takes more than 256 MiB, nothing written: allow more with --max-output")
        self.write("c.vx", document())
        lines = b'{"input": "a.vx", "output": "b.svg"}\n{"input": "c.vx", "output": "c.svg"}\n'
        output, messages = self.run_vx("batch", "-", "--max-output", "auto", stdin=lines, status=5)
        self.assertEqual([json.loads(line)["status"] for line in output.splitlines()], ["limit", "done"])
        self.assertEqual(messages, ["vx: b.svg: takes more than 256 MiB, nothing written: allow more with --max-output"])
        self.assertEqual(self.files(), ["a.vx", "c.svg", "c.vx"])

    def test_the_systems_own_limit_is_no_limit_of_ours(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (4000, 4000))

        for kind in FORMATS:
            message = self.refused("render", "a.vx", "-o", "a." + kind, status=4, preexec_fn=limit)
            self.assertEqual(message, f"vx: a.{kind}: cannot be written, file too large: allow more with ulimit -f where vx "
                                      "is started")

    def test_a_trace_into_a_file(self):
        with open(self.path("calls"), "wb") as calls:
            messages = self.run_vx("trace", "a.vx", "--max-output", "4K", stdout=calls, status=5)[1]
        self.assertEqual(messages, ["vx: standard output: takes more than 4 KiB: allow more with --max-output"])
        self.assertEqual(os.path.getsize(self.path("calls")), 4 << 10)

    def test_what_stands_in_a_file_already_does_not_count(self):
        line = b"moveto 0 0\n"
        self.write("calls", b"before\n" * 1000)
        self.write("short.vx", document(LEFT_HALF))
        with open(self.path("calls"), "ab") as calls:
            self.run_vx("trace", "short.vx", "--max-output", "4K", stdout=calls)
            messages = self.run_vx("trace", "a.vx", "--max-output", "4K", stdout=calls, status=5)[1]
        self.assertEqual(messages, ["vx: standard output: takes more than 4 KiB: allow more with --max-output"])
        self.assertIn(b"before\n" + line, self.read("calls"))

    def test_pixels(self):
        message = self.refused("render", "a.vx", "-o", "a.png", "--width", "100000", "--height", "100000", status=5)
        self.assertIn("100000 by 100000 pixels is too large", message)


class Time(CommandTest):
    # These take long on any machine: fine dashes, wide strokes and huge letters, all over the page.
    SLOW = [
        BLACK + "[0.00002 0.00002]0 d\n0.1 w\n" + ("0 0 m\n" + points(60000) + "S\n") * 20,
        BLACK + "1 j\n1 J\n2000 w\n" + "0 0 m\n72 36 L\nS\n" * 60000,
        BLACK + text("Helvetica", "W8&" * 130).replace(" 12 Tf", " 3000 Tf") * 2000,
    ]

    def test_a_document_that_takes_long_is_ended(self):
        for number, body in enumerate(self.SLOW):
            with self.subTest(document=number):
                self.write("a.vx", document(body))
                started = time.monotonic()
                message = self.refused("render", "a.vx", "-o", "a.png", "--width", "3000", "--max-time", "1", *FONTS,
                                       status=5)
                self.assertEqual(message, "vx: a.vx: not done after 1 s, nothing written: allow more with --max-time")
                self.assertLess(time.monotonic() - started, 20)
                self.assertEqual(self.files(), ["a.vx"])


class Callers(CommandTest):
    """The limits under which vx was started are not told as limits of its own."""

    def limited(self, behaviour, resources, *words, status=5):
        self.write("a.vx", document())

        def limit():
            for number, most in resources.items():
                resource.setrlimit(number, (most, most))

        return self.refused("render", "a.vx", "-o", "a.png", *words, hostile=behaviour, status=status, preexec_fn=limit)

    @unittest.skipIf(SANITIZED, "a sanitizer needs more address space than a limit leaves")
    def test_memory(self):
        for number, name in [(resource.RLIMIT_AS, "ulimit -v"), (resource.RLIMIT_DATA, "ulimit -d")]:
            for words in ([], ["--max-memory", "0"]):
                self.assertEqual(self.limited("heap", {number: 300 * MIB}, *words),
                                 f"vx: a.vx: needs more memory than {name} allows, nothing written: allow more where vx is "
                                 "started")
            self.assertIn("more than 64 MiB of memory, nothing written: allow more with --max-memory",
                          self.limited("heap", {number: 900 * MIB}, "--max-memory", "64M"))

    # The file of the font is mapped, which a limit of data does not count.
    @unittest.skipIf(SANITIZED, "a sanitizer needs more address space than a limit leaves")
    def test_a_font_is_not_missing_for_want_of_address_space(self):
        sample = os.path.join(os.environ["VX_SOURCE_DIR"], "samples", "text-korean.vx")
        words = ("render", sample, "-f", "svg", "-o", "-")
        whole, _ = self.run_vx(*words)
        ends = set()
        for most in range(26 * MIB, 50 * MIB, MIB):
            process = self.start(*words, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (most, most)))
            output, messages = process.communicate(timeout=60)
            if process.returncode == 0:
                self.assertEqual((output, messages), (whole, b""), most)
            else:
                self.assertEqual((process.returncode, messages.count(b"\n"), b"ulimit -v" in messages), (5, 1, True), messages)
            ends.add(process.returncode)
        self.assertEqual(ends, {0, 5})

    def test_processor_time(self):
        self.assertEqual(self.limited("loop", {resource.RLIMIT_CPU: 1}),
                         "vx: a.vx: needs more processor time than ulimit -t allows, nothing written: allow more where vx "
                         "is started")

    def test_a_worker_that_the_system_kills(self):
        self.assertEqual(self.limited("kill", {}),
                         "vx: a.vx: the worker process was killed, as the system does when memory runs out, nothing "
                         "written: close other programs, or allow it less with --max-memory")

    def test_few_descriptors_are_fewer_workers(self):
        self.write("a.vx", document())
        manifest = b"".join(b'{"input": "a.vx", "output": "%d.{ext}"}\n' % i for i in range(20))
        for most in (14, 20, 40):
            output, messages = self.run_vx(
                "batch", "-j", "16", "-f", ",".join(FORMATS), "--fit", "8", stdin=manifest,
                preexec_fn=lambda most=most: resource.setrlimit(resource.RLIMIT_NOFILE, (most, most)))
            self.assertEqual((output.count(b'"status":"done"'), messages), (20, []))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
