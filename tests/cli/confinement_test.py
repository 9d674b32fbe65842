"""What is read in confined workers beside documents, that is fonts and profiles, and what a worker is left with."""
import errno
import json
import os
import resource
import struct
import sys
import unittest

from vxcommand import CommandTest, SANITIZED, WATCHING, WITHOUT_CLOSING, document

FONTS = "/usr/share/fonts/opentype/urw-base35"
ONLY = ["--no-system-fonts", "--font-dir"]
SMALL = ["-f", "png", "--fit", "8"]
NOT_LISTED = ("the fonts of this machine are not listed after 2 s%s: look for a pipe or a circle of links in their folders, "
              "or allow more with --max-time")


class ConfinementTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("text.vx", document("0 g\n0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_Helvetica 12 Tf\n(Hand) Tx\nTO\n"))
        self.write("plain.vx", document())

    def watched(self, *words, environment=None, **options):
        """Runs vx with a library that notes which process does what. The notes, as (what, number), and its messages."""
        _, messages = self.run_vx(*words, environment={**WATCHING, "VX_WATCHED": self.path("watched"), **(environment or {})},
                                  **options)
        data = self.read("watched")
        os.remove(self.path("watched"))
        text = data[8:8 + struct.unpack("=Q", data[:8])[0]].decode()
        return [(what, int(number)) for what, number in (line.split() for line in text.splitlines())], messages

    def workers(self, notes, what):
        """Those processes that did it, the main process not among them."""
        processes = [number for name, number in notes if name == what]
        self.assertNotIn(dict(notes)["main"], processes, notes)
        return processes

    def skip_unless_confined(self):
        confined = json.loads(self.run_vx("info", "--json", "plain.vx")[0])["confinedBy"]
        if confined != ["landlock", "seccomp"]:
            self.skipTest("this kernel confines by %s alone" % confined)

    def configured(self, *caches):
        """The environment in which fontconfig knows one folder of fonts, and these of its cache."""
        os.makedirs(self.path("fonts"), exist_ok=True)
        lines = "".join(f"<cachedir>{self.path(cache)}</cachedir>" for cache in caches)
        self.write("fonts.conf", f"<fontconfig><dir>{self.path('fonts')}</dir>{lines}</fontconfig>".encode())
        return {"FONTCONFIG_FILE": self.path("fonts.conf"), "HOME": self.path("home")}

    def assert_nothing_hangs(self, message, words, environment=None):
        """Text is told of, whatever the command; documents without text are as ever."""
        message = message % ", nothing written"
        self.assertEqual(self.refused("render", "text.vx", "-o", "a.png", *words, status=5, environment=environment),
                         f"vx: text.vx: {message}")
        plain = message.replace(", nothing written", "")
        self.assertEqual(self.refused("info", "text.vx", *words, status=5, environment=environment), f"vx: text.vx: {plain}")
        self.assertEqual(self.refused("trace", "text.vx", *words, status=5, environment=environment), f"vx: text.vx: {plain}")
        self.assertEqual(self.refused("fonts", "--list", *words, status=5, environment=environment), f"vx: {plain}")
        self.run_vx("render", "plain.vx", "-o", "plain.png", *words, environment=environment)
        self.write("list", b"".join(b'{"input": "%s.vx", "output": "%d.png"}\n' % (name, number)
                                    for number, name in enumerate((b"text", b"plain", b"text"))))
        output, messages = self.run_vx("batch", "--manifest", "list", "--fit", "8", *words, status=5, environment=environment)
        results = [json.loads(line) for line in output.splitlines()]
        self.assertEqual([result["status"] for result in results], ["limit", "done", "limit"])
        self.assertEqual([result.get("error") for result in results], [message, None, message])
        self.assertEqual(messages, [f"vx: text.vx: {message}"] * 2)


class FontFiles(ConfinementTest):
    def test_fonts_that_are_links_out_of_their_folder_are_drawn_with(self):
        os.mkdir(self.path("links"))
        os.mkdir(self.path("elsewhere"))
        for name in ("Regular", "Bold"):
            with open(f"{FONTS}/NimbusSans-{name}.otf", "rb") as font:
                self.write(f"elsewhere/{name}.otf", font.read())
        os.symlink("../elsewhere/Regular.otf", self.path("links/a.otf"))
        output, _ = self.run_vx("fonts", "--json", "text.vx", *ONLY, "links")
        font, = json.loads(output)["fonts"]
        self.assertEqual((font["match"], font["served"], font["missingGlyphs"]), ("stand-in", "NimbusSans-Regular", 0))
        self.run_vx("render", "text.vx", "-o", "linked.png", *ONLY, "links")
        self.run_vx("render", "text.vx", "-o", "direct.png", *ONLY, "elsewhere")
        self.assertEqual(self.read("linked.png"), self.read("direct.png"))
        # The folder that a link leads to is not opened for its sake.
        self.skip_unless_confined()
        for name, outcome in (("Regular", 0), ("Bold", errno.EACCES)):
            self.run_vx("info", "text.vx", *ONLY, "links", status=1, hostile="reach",
                        environment={"VX_HOSTILE_FONT": self.path(f"elsewhere/{name}.otf")})
            self.assertIn(f"font {outcome}", self.read("worker.notes").decode().splitlines())

    def test_they_are_listed_once_and_only_for_text(self):
        for name in "abcd":
            self.write(name + ".vx", self.read("text.vx"))
        for names, times in ((["plain"], 0), (["a"], 1), (["a", "plain", "b", "c", "d"], 1)):
            with self.subTest(names=names):
                notes, _ = self.watched("batch", *SMALL, "-j", "4", "-o", "{stem}.png", *ONLY, FONTS,
                                        *(name + ".vx" for name in names))
                self.assertEqual(len(self.workers(notes, "fonts")), times, notes)

    def test_a_pipe_in_a_folder_that_is_named_is_named(self):
        os.makedirs(self.path("fonts/deep"))
        os.mkfifo(self.path("fonts/deep/a.otf"))
        for words in (["render", "text.vx", "-o", "a.png"], ["batch", "text.vx", "-o", "a.png"], ["fonts", "--list"]):
            self.assertEqual(self.refused(*words, *ONLY, "fonts", status=2),
                             'vx: --font-dir fonts: "fonts/deep/a.otf" is a pipe, which is no font: take it away')

    def test_a_pipe_among_the_fonts_of_the_system_holds_nothing_up(self):
        environment = self.configured("cache")
        os.mkfifo(self.path("fonts/a.otf"))
        self.assert_nothing_hangs(NOT_LISTED, ["--max-time", "2"], environment)

    def test_a_circle_of_links_holds_nothing_up(self):
        os.mkdir(self.path("circle"))
        for name in "abc":
            os.symlink("../circle", self.path("circle/" + name))
        self.assert_nothing_hangs(NOT_LISTED, [*ONLY, "circle", "--max-time", "2"])

    # Not what a home folder is made up of, nor another folder of a cache.
    def test_only_the_cache_of_fontconfig_is_written_to(self):
        self.write("mine", b"mine")
        os.mkdir(self.path("home"))
        environment = {"HOME": self.path("home"), "XDG_CACHE_HOME": "", "VX_WATCH_WRITE": self.path("mine")}
        notes, _ = self.watched("fonts", "--list", *ONLY, FONTS, environment=environment)
        self.assertEqual(len(self.workers(notes, "fonts")), 1)
        self.assertEqual(os.listdir(self.path("home")), [".cache"])
        self.assertEqual(os.listdir(self.path("home/.cache")), ["fontconfig"])
        kept = os.listdir(self.path("home/.cache/fontconfig"))
        self.assertTrue(kept and all("cache-" in name for name in kept), kept)
        self.assertEqual(self.read("mine"), b"mine")
        self.skip_unless_confined()
        tried = {what: number for what, number in notes if what not in ("main", "fonts")}
        self.assertEqual(tried, {"write": errno.EACCES, "unlink": errno.EACCES, "rename": errno.EACCES,
                                 "chmod": errno.EPERM, "truncate": errno.EPERM})

    def test_the_cache_is_kept_where_fontconfig_would_keep_it(self):
        environment = self.configured("deep/cache", "other")
        with open(f"{FONTS}/NimbusSans-Bold.otf", "rb") as font:
            self.write("fonts/a.otf", font.read())
        self.run_vx("fonts", "--list", environment=environment)
        self.assertEqual(len([name for name in os.listdir(self.path("deep/cache")) if "cache-" in name]), 1)
        self.assertFalse(os.path.exists(self.path("other")))

    @unittest.skipIf(SANITIZED, "a worker under a sanitizer has standard error, and fontconfig writes there")
    def test_no_cache_is_needed(self):
        self.write("file", b"")
        for home in ("/proc", self.path("file/home"), ""):  # where nothing can be made
            environment = {**self.configured("/proc/cache"), "HOME": home, "XDG_CACHE_HOME": ""}
            for words in ([], [*ONLY, FONTS]):
                with self.subTest(home=home, words=words):
                    self.assertEqual(self.run_vx("render", "text.vx", "-o", "a.png", "-q", *words, environment=environment)[1],
                                     [])


class Profiles(ConfinementTest):
    PRESS = "/usr/share/color/icc/ghostscript/default_cmyk.icc"
    CRASH = {"VX_WATCH_CRASH": "SWOP"}  # whoever reads one in which that stands

    def setUp(self):
        super().setUp()
        with open(self.PRESS, "rb") as profile:
            self.write("press.icc", profile.read())

    def test_a_profile_is_read_by_workers_alone(self):
        for words in (["render", "plain.vx", "-o", "a.png"], ["render", "plain.vx", "-f", "svg,png", "-o", "a.{ext}"],
                      ["render", "plain.vx", "-o", "a.pdf", "--pdf-x", "x3"], ["batch", "plain.vx", *SMALL, "-o", "a.png"]):
            with self.subTest(words=words):
                notes, _ = self.watched(*words, "--profile", "press.icc", environment={"SOURCE_DATE_EPOCH": "86400"})
                # One that tries it, and that of the document.
                self.assertGreaterEqual(len(set(self.workers(notes, "profile"))), 2, notes)

    # As one that is damaged might end the library that reads it.
    def test_one_that_ends_its_reader_costs_a_worker(self):
        notes, messages = self.watched("render", "plain.vx", "-o", "a.png", "--profile", "press.icc", status=6,
                                       environment=self.CRASH)
        self.assertEqual(len(self.workers(notes, "profile")), 1)
        self.assertEqual(messages, ["vx: --profile: the worker process crashed, signal 6 (Aborted): give another profile and "
                                    "report it"])
        self.assertNotIn("a.png", self.files())

    def test_one_of_a_line_costs_that_line(self):
        lines = [{"input": "plain.vx", "output": "a.png", "profile": "press.icc"},
                 {"input": "plain.vx", "output": "b.png", "profile": "none"}]
        self.write("list", "".join(json.dumps(line) + "\n" for line in lines).encode())
        notes, messages = self.watched("batch", "--manifest", "list", *SMALL, "--profile", "none", status=6,
                                       environment=self.CRASH)
        self.workers(notes, "profile")
        self.assertEqual(len(messages), 1)
        self.assertIn("crashed, signal 6", messages[0])
        self.assertIn("b.png", self.files())
        self.assertNotIn("a.png", self.files())

    def test_what_is_no_file_holds_nothing_up(self):
        os.mkfifo(self.path("pipe"))
        for name in ("pipe", ".", "none.icc"):
            self.assertIn(f'"{name}" cannot be read', self.refused("render", "plain.vx", "-o", "a.png", "--profile", name,
                                                                     status=2))


class Descriptors(ConfinementTest):
    """Where the kernel cannot close all but those that are named, they are closed one by one, or nothing is read."""

    def test_are_closed_one_by_one(self):
        self.run_vx("render", "plain.vx", "-o", "a.png", status=1, hostile="probe", environment=WITHOUT_CLOSING)
        kinds = [line.split()[0] for line in self.read("worker.notes").decode().splitlines() if line.startswith("is-")]
        streams, others = kinds[:3], kinds[3:]
        # Standard error is that of the command where a sanitizer tells there what it found.
        self.assertEqual(streams[:2] if SANITIZED else streams, ["is-device"] * (2 if SANITIZED else 3))
        self.assertLessEqual(set(others), {"is-file", "is-other", "is-pipe"})
        self.assertEqual((others.count("is-file"), others.count("is-pipe")), (1, 1))

    def test_few_are_enough_or_that_is_told(self):
        self.write("list", b"".join(b'{"input": "text.vx", "output": "%d.png"}\n' % number for number in range(4)))
        ends = set()
        for most in range(8, 14):
            limit = lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))
            process = self.start("batch", "--manifest", "list", *ONLY, FONTS, "-j", "4", preexec_fn=limit)
            output, errors = process.communicate(timeout=120)
            ends.add(process.returncode)
            for result in map(json.loads, output.splitlines()):
                if result["status"] == "done":
                    self.assertEqual([font["match"] for font in result["fonts"]], ["stand-in"], most)
                else:
                    self.assertIn("too many open files", result["error"], most)
        self.assertIn(0, ends)
        self.assertNotIn(6, ends)

    def test_are_never_kept(self):
        environment = {**WITHOUT_CLOSING, "VX_WITHOUT_PROC": "1"}
        for words in (["info", "plain.vx"], ["render", "plain.vx", "-o", "a.png"]):
            self.assertEqual(self.refused(*words, status=1, environment=environment),
                             "vx: plain.vx: no worker process, function not implemented: mount /proc where vx is started")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
