"""Helps the tests of the vx command: makes documents, reads PNG files, and runs command lines."""
import glob
import os
import random
import re
import struct
import subprocess
import tempfile
import time
import unittest
import zlib

VX = os.environ["VX"]
HOSTILE = os.environ.get("VX_HOSTILE_PLUGIN", "")


def preloaded(library):
    return {"LD_PRELOAD": os.environ.get(library, ""), "ASAN_OPTIONS": "verify_asan_link_order=0"}


# With these in its environment a command meets a file system where every file has a name, and a kernel that cannot confine
# files.
WITHOUT_UNNAMED = preloaded("VX_WITHOUT_UNNAMED")
WITHOUT_LANDLOCK = preloaded("VX_WITHOUT_LANDLOCK")
# With this the file that VX_CUT names is cut as soon as it is mapped.
CUTTING = preloaded("VX_CUTTING")
# The kernel has no call that closes what nobody names.
WITHOUT_CLOSING = preloaded("VX_WITHOUT_CLOSING")
# Which process looks for fonts and reads profiles is noted in the file that VX_WATCHED names.
WATCHING = preloaded("VX_WATCHING")
SANITIZED = os.environ.get("VX_SANITIZED", "0") not in ("", "0")

HEADER = """%!PS-Tavro-3.0
%%Title: (A \\(small\\) square)
%%Creator: by hand
%%BoundingBox: {box}
%VX5_FileFormat 3
%%EndComments
%%BeginSetup
%%EndSetup
"""

# Paints the left half of a page of 72 by 36 points black.
LEFT_HALF = "0 0 0 1 k\n0 0 m\n36 0 l\n36 36 l\n0 36 l\nf\n"

SAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "samples")


def sample(name):
    return os.path.join(SAMPLES, name + ".vx")


def sample_names():
    return sorted(os.path.splitext(os.path.basename(path))[0] for path in glob.glob(sample("*")))


def document(body=LEFT_HALF, box="0 0 72 36", end="%%PageTrailer\n%%EOF\n"):
    return (HEADER.format(box=box) + body + end).encode("latin-1")


class Png:
    """Reads PNG files as vx writes them: 8 bits a component, no interlace."""

    def __init__(self, data):
        if data[:8] != b"\x89PNG\r\n\x1a\n":
            raise ValueError("no PNG signature")
        at, packed = 8, b""
        self.ended = False
        while at < len(data):
            length, kind = struct.unpack(">I4s", data[at:at + 8])
            body = data[at + 8:at + 8 + length]
            if zlib.crc32(kind + body) != struct.unpack(">I", data[at + 8 + length:at + 12 + length])[0]:
                raise ValueError("bad checksum")
            if kind == b"IHDR":
                self.width, self.height, depth, colour = struct.unpack(">IIBB", body[:10])
                if depth != 8:
                    raise ValueError("not 8 bits")
                self.channels = {0: 1, 2: 3, 4: 2, 6: 4}[colour]
            elif kind == b"IDAT":
                packed += body
            self.ended = kind == b"IEND"
            at += 12 + length
        self.rows = self._unfilter(zlib.decompress(packed))

    def _unfilter(self, raw):
        step, width = self.channels, self.width * self.channels
        above, rows = bytearray(width), []
        for y in range(self.height):
            kind, row = raw[y * (width + 1)], bytearray(raw[y * (width + 1) + 1:(y + 1) * (width + 1)])
            for x in range(width):
                left = row[x - step] if x >= step else 0
                corner = above[x - step] if x >= step else 0
                row[x] = (row[x] + self._guess(kind, left, above[x], corner)) & 255
            rows.append(row)
            above = row
        return rows

    @staticmethod
    def _guess(kind, left, up, corner):
        if kind == 4:
            return min((left, up, corner), key=lambda value: abs(left + up - corner - value))
        return (0, left, up, (left + up) // 2)[kind]

    def pixel(self, x, y):
        return tuple(self.rows[y][x * self.channels:(x + 1) * self.channels])


def announced_chance():
    """Returns random numbers by a seed that is printed, or that of VX_SEED."""
    seed = int(os.environ.get("VX_SEED") or random.randrange(1 << 32))
    print(f"VX_SEED={seed}", flush=True)
    return random.Random(seed)


class CommandTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="vx-cli-")
        self.addCleanup(subprocess.call, ["rm", "-rf", self.folder])

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)
        return name

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def files(self):
        return sorted(os.listdir(self.folder))

    def start(self, *words, hostile=None, environment=None, **options):
        environment = {**os.environ, **(environment or {})}
        if hostile is not None:
            environment["VX_HOSTILE"] = hostile
            words += ("--plugin", HOSTILE)
            # The worker may open no file for writing, so it gets one that is open. The number of its process comes first.
            with open(self.path("worker.notes"), "wb") as notes:
                environment["VX_HOSTILE_NOTEBOOK"] = str(notes.fileno())
                return self.spawn(words, environment, pass_fds=[notes.fileno()], **options)
        return self.spawn(words, environment, **options)

    def spawn(self, words, environment, **options):
        options = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
        return subprocess.Popen([VX, *words], cwd=self.folder, env=environment, **options)

    def run_vx(self, *words, status=0, stdin=None, **options):
        """Runs vx, asserts its exit status and the shape of its messages, and returns (output, messages)."""
        if stdin is not None:
            options["stdin"] = subprocess.PIPE
        process = self.start(*words, **options)
        output, errors = process.communicate(stdin, timeout=120)
        errors = errors.decode()
        self.assertEqual(process.returncode, status, errors)
        messages = errors.splitlines()
        for message in messages:
            self.assertRegex(message, r"^vx: \S.*[^. ]$")
        self.summary = None  # what a batch tells in the end
        if words[0] == "batch" and messages and re.match(r"vx: [\d,]+ documents? in \d", messages[-1]):
            self.summary = messages.pop()
        warnings = [message for message in messages if ": warning: " in message]
        self.assertEqual(len(warnings), len(set(warnings)), "a warning is repeated")
        return output or b"", messages

    def wait_for_notes(self, end):
        """Until what the hostile plug-in notes ends so."""
        for _ in range(1200):
            if self.read("worker.notes").endswith(end):
                return
            time.sleep(0.05)
        self.fail("the worker notes nothing: %r" % self.read("worker.notes"))

    def refused(self, *words, status, **options):
        """Runs vx where one message is due and nothing on standard output, and returns the message."""
        output, messages = self.run_vx(*words, status=status, **options)
        self.assertEqual(output, b"")
        self.assertEqual(len(messages), 1, messages)
        return messages[0]
