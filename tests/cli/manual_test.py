"""What the command says of itself in several places is the same in all of them: help, manual pages, completion."""
import glob
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from vxcommand import CommandTest, Png, VX, WITHOUT_LANDLOCK, document, sample, sample_names

SOURCE = os.environ["VX_SOURCE_DIR"]
VX_ITSELF = {"-V", "--version", "--event-detail"}
COMMANDS = ["info", "render", "plates", "coverage", "check", "text", "trace", "fonts", "batch", "verify", "view", "diff"]
# It interprets no document itself.
READING = [command for command in COMMANDS if command != "view"]
COMMON = "--plugin"  # the first of those that every command has


def text_of(*path):
    with open(os.path.join(SOURCE, *path), encoding="utf-8") as file:
        return file.read()


def help_of(*command):
    return subprocess.run([VX, *command, "--help"], capture_output=True, text=True, check=True).stdout


def helped_options(*command):
    """Returns both spellings of every option, as {"-f", "--format", ...}."""
    lines = re.findall(r"^  ((?:-\w,)?--[\w-]+)", help_of(*command), re.MULTILINE)
    return {name for line in lines for name in line.split(",")}


def section(page, title):
    return re.search(r"^## %s$(.*?)(?=^## |\Z)" % title, text_of("docs", page), re.MULTILINE | re.DOTALL)[1]


def described_options(page, title):
    terms = re.findall(r"^(\*\*-.*)\n: ", section(page, title), re.MULTILINE)
    return {name for term in terms for name in re.findall(r"\*\*(--?[\w-]+)\*\*", term)}


class Manual(unittest.TestCase):
    def test_every_command_has_a_page(self):
        self.assertEqual(sorted(os.listdir(os.path.join(SOURCE, "docs", "man"))),
                         sorted(["vx.1", "vx-thumbnailer.1", *(f"vx-{command}.1" for command in COMMANDS)]))
        self.assertEqual(re.findall(r"^  (\w+)  +[A-Z]", help_of(), re.MULTILINE), COMMANDS)

    def test_help_and_pages_know_the_same_options(self):
        common = described_options("vx.1.md", "OPTIONS OF EVERY COMMAND") - VX_ITSELF
        self.assertIn(COMMON, common)
        self.assertEqual(helped_options(), {"-h", "--help"} | VX_ITSELF)
        self.assertEqual(described_options("vx-view.1.md", "OPTIONS"), helped_options("view"))
        for command in READING:
            own = described_options(f"vx-{command}.1.md", "OPTIONS")
            with self.subTest(command=command):
                self.assertFalse(own & common)
                self.assertEqual(own | common, helped_options(command))

    def test_members_of_a_manifest_are_options(self):
        terms = re.findall(r"^(`.*)\n: ", section("vx-batch.1.md", "MANIFEST"), re.MULTILINE)
        members = {f"--{name}" for term in terms for name in re.findall(r"`([\w-]+)`", term)}
        common = described_options("vx.1.md", "OPTIONS OF EVERY COMMAND")
        options = {name for name in helped_options("batch") - common if name.startswith("--")}
        of_all = {"--manifest", "--null", "--files0-from", "--all-files", "--no-mkdir", "--jobs", "--allow-outside",
                  "--unordered", "--journal", "--resume", "--retry", "--summary", "--shard",
                  "--merge-journals", "--premis", "--bag", "--pack", "--report"}
        self.assertEqual(members - {"--input", "--id"}, options - of_all)

    def test_examples_are_those_of_the_help(self):
        for command in COMMANDS:
            examples = help_of(command).split("Examples:\n")[1].splitlines()
            page = section(f"vx-{command}.1.md", "EXAMPLES").splitlines()
            for example in examples:
                self.assertIn(example.strip(), [line.strip() for line in page], command)

    def test_exit_statuses(self):
        statuses = re.findall(r"^\*\*(\d+)\*\*\n: ", section("vx.1.md", "EXIT STATUS"), re.MULTILINE)
        self.assertEqual(statuses, ["0", "1", "2", "3", "4", "5", "6", "130"])

    @unittest.skipUnless(shutil.which("go-md2man"), "there is no go-md2man here")
    def test_pages_are_made_from_their_sources(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([os.path.join(SOURCE, "docs", "make-man"), folder], check=True)
            names = sorted(os.listdir(folder))
            self.assertEqual(names, sorted(os.listdir(os.path.join(SOURCE, "docs", "man"))))
            for name in names:
                with open(os.path.join(folder, name), encoding="utf-8") as made:
                    self.assertEqual(made.read(), text_of("docs", "man", name), f"{name}: run docs/make-man")


def members_of(value, place=""):
    """{"fonts[].asked": the values that it has, ...} of an object and of all in it."""
    found = {}
    for name, member in value.items():
        found.setdefault(place + name, []).append(member)
        objects = member if isinstance(member, list) else [member]
        inner = f"{place}{name}{'[].' if isinstance(member, list) else '.'}"
        for part in objects:
            if isinstance(part, dict):
                for path, values in members_of(part, inner).items():
                    found.setdefault(path, []).extend(values)
    return found


def named_members(page, title):
    """{member: what the page says of it}."""
    found = {}
    for terms, text in re.findall(r"^(`[^\n]*)\n: (.*?)(?=\n\n|\Z)", section(page, title), re.MULTILINE | re.DOTALL):
        for name in re.findall(r"`([^`]+)`", terms):
            found[name] = " ".join(text.split())
    return found


# The words with which a page says what a member is, and what it then is.
TYPES = {"Text and number": (str, int), "Text": (str,), "Number": (int,), "Whether": (bool,), "An object": (dict,),
         "A list": (list,), "Lists": (list,), "Points": (int, float), "How much": (int, float), "Four numbers": (list,), "Two numbers": (list,),
         "Any value": (int, float, str, list, dict, type(None))}


class Members(CommandTest):
    """Those of real outputs are those that the manual pages name, and no others."""

    TEXT = "0 g\n0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_{} 12 Tf\n(Hand) Tx\nTO\n"
    # No document leads to so many with the plug-in that is built in: each problem is reported once.
    UNSEEN = {"omitted.problems", "omitted.layers", "omitted.inks"}

    def setUp(self):
        super().setUp()
        self.names = [sample(name) for name in sample_names()]
        cases = {"open-date": document().replace(b"%%BoundingBox", b"%%CreationDate: 3/5/94\n%%BoundingBox"), "problems": document("1 2 Qx\n" + self.TEXT.format("Nowhere")), "malformed": document("1 k\n"),
                 "cut": document("u\n*u\nq\n1 1 1 1 0 0 0 0 0 0 Lb\nBb\n0 To\n", end=""),
                 "unshown": document("(a) p\n0 0 m\nf\n` ~\n%%BeginBinary: 1\n%%EndBinary\n%VX5_BeginPlace\n%VX5_EndPlace\n"),
                 "undrawn": document("%VX5_BeginPlace\n%%EOF\n%VX5_EndPlace\n0 g\n"),
                 "foreign": b"GIF89a, and then some", "empty": b"", "full": self.full(),
                 "fonts": document("".join(self.TEXT.format(f"Font{number}") for number in range(300)))}
        for name, data in cases.items():
            self.write(name + ".vx", data)
        self.names += [*(name + ".vx" for name in cases), "none.vx", "."]
        # More fonts than an answer holds: each with so long a path.
        deep = os.path.join("fonts", *(letter * 200 for letter in "abcdefghij"))
        os.makedirs(self.path(deep))
        shutil.copy("/usr/share/fonts/opentype/urw-base35/NimbusSans-Regular.otf", self.path(deep))
        self.deep = ["fonts.vx", "--no-system-fonts", "--font-dir", "fonts"]

    @staticmethod
    def full():
        """A header of more names than an answer holds: each byte becomes three."""
        lists = []
        for key, form in (("ProcessColors", "%s"), ("CustomColors", "(%s)"), ("Fonts", "%s")):
            names = [form % (f"{number:03}" + 240 * "\xc9") for number in range(256)]
            lists += [f"%%Document{key}: {names[0]}\n", *(f"%%+ {name}\n" for name in names[1:])]
        return document().replace(b"%%EndComments\n", "".join(lists).encode("latin-1") + b"%%EndComments\n")

    def objects(self, *words, **options):
        process = self.start(*words, **options)
        output, errors = process.communicate(timeout=300)
        self.assertIn(process.returncode, (0, 1, 3, 4, 5, 6), errors)
        return [json.loads(line) for line in output.splitlines()]

    def compare(self, objects, named, facts=(), unseen=frozenset()):
        """The values of each member. facts are members that only VX documents have."""
        seen = {}
        for one in objects:
            for path, values in members_of({**one, "id": 0} if "id" in one else one).items():
                seen.setdefault(path, []).extend(values)
        self.assertEqual(set(seen), set(named) - unseen)
        for path, values in seen.items():
            types = next((types for words, types in TYPES.items() if named[path].startswith(words)), None)
            self.assertIsNotNone(types, f"{path}: the page says no type: {named[path]}")
            for value in values:
                self.assertTrue(type(value) in types or value is None and "`null`" in named[path], f"{path}: {value!r}")
        for one in objects:
            for path in set(named) - set(one):
                if "." not in path and (path not in facts or one.get("vx")):
                    self.assertIn("Not there where", named[path], f"{path} is not in {one}")
        return seen

    def test_of_info(self):
        objects = self.objects("info", "--json", *self.names)
        objects += self.objects("info", "--json", *self.deep)
        objects += self.objects("info", "--json", "problems.vx", environment=WITHOUT_LANDLOCK)
        objects += self.objects("info", "--json", "problems.vx", hostile="crash")
        objects += self.objects("info", "--json", "--salvage", "malformed.vx")
        named = named_members("vx-info.1.md", "JSON")
        seen = self.compare(objects, named, set(named) - {"file", "error", "vx"}, self.UNSEEN)
        for path in ("fonts[].match", "lineEnds"):
            self.assertLessEqual({f"`{value}`" for value in seen[path] if value}, set(re.findall(r"`[^`]+`", named[path])))
        self.assertEqual(set(re.findall(r"`([^`]+)`", named["fonts[].match"])), {"exact", "stand-in", "substitute", "missing"})
        numbers = {int(number) for number in re.findall(r"\b(\d),", named["problems[].number"])}
        self.assertEqual(numbers, set(range(6)))
        self.assertLessEqual(set(seen["problems[].number"]), numbers)
        self.assertLessEqual({name for names in seen["confinedBy"] for name in names}, {"landlock", "seccomp"})

    def test_of_text(self):
        colours = "0.5 g\n", "0 0.5 1 0 (Ink) 0.25 x\n"
        self.write("spot.vx", document("".join(
            f"1 1 1 1 0 0 0 0 0 0 Lb\n(Words) Ln\n{colour}{self.TEXT[4:].format('Nowhere')}LB\n" for colour in colours)))
        named = named_members("vx-text.1.md", "JSON")
        seen = self.compare(self.objects("text", "--json", "spot.vx", *self.names), named)
        self.assertEqual(set(seen["kind"]), set(re.findall(r"`([^`]+)`", named["kind"])))

    def test_of_coverage(self):
        self.compare(self.objects("coverage", "--json", "-r", "20", *self.names), named_members("vx-coverage.1.md", "JSON"))

    def test_of_check(self):
        self.write("text.vx", document(self.TEXT.format("Helvetica").replace("0 g", "0.5 0 0 1 k")))
        objects = self.objects("check", "--json", "-r", "20", "--salvage", *self.names, "text.vx")
        self.compare(objects, named_members("vx-check.1.md", "JSON"))

    def test_findings_and_limits_of_check_are_those_of_the_program(self):
        """A wrong name in a file of limits lists the right ones."""
        self.write("a.vx", document())
        for member, title, terms in (("severities", "FINDINGS", r"^(`.*)\n: "), ("limits", "LIMITS", r"^(\*\*.*)\n: ")):
            self.write("limits.json", json.dumps({member: {"none": 1}}).encode())
            told = self.refused("check", "a.vx", "--limits", "limits.json", status=2).split("give one of ")[1].split(", ")
            described = re.findall(r"[\w-]+", " ".join(re.findall(terms, section("vx-check.1.md", title), re.MULTILINE)))
            self.assertEqual(sorted(described), sorted(told))

    def test_of_fonts(self):
        objects = self.objects("fonts", "--json", *self.names) + self.objects("fonts", "--json", *self.deep)
        self.compare(objects, named_members("vx-fonts.1.md", "JSON"))
        listed = self.objects("fonts", "--list", "--json")
        self.compare(listed, named_members("vx-fonts.1.md", "JSON OF A LIST"))
        boxes = self.objects("fonts", "--list", "--json", "--no-system-fonts")
        self.compare(boxes, named_members("vx-fonts.1.md", "JSON OF A LIST"))

    def test_of_batch(self):
        lines = [{"input": "problems.vx", "output": "a.png", "id": {"any": [1]}}, {"output": "b.png"},
                 {"input": "problems.vx", "output": "cut.vx/b.png"}, "no JSON"]
        self.write("list", b"".join(json.dumps(line).encode() + b"\n" for line in lines))
        documents = [name for name in self.names if name != "."]
        objects = self.objects("batch", *documents, "--manifest", "list", "--manifest", "none", "-f", "png", "--fit", "8",
                               "-o", "{stem}.png")
        objects += self.objects("batch", *self.deep, "-o", "deep.png", "-f", "png", "--fit", "8")
        self.write("same.vx", document())
        self.write("too.vx", document())
        for _ in range(2):
            objects += self.objects("batch", "same.vx", "-o", "same.png", "--fit", "8", "--journal", "done", "--resume")
        objects += self.objects("batch", "same.vx", "too.vx", "-o", "{hash}.png", "--fit", "8")
        objects += self.objects("batch", self.names[0], "--pdf-x", "x3", "-o", "dated.pdf")
        objects += self.objects("batch", "--salvage", "malformed.vx", "-o", "salvaged.png", "--fit", "8")
        named = named_members("vx-batch.1.md", "RESULTS")
        facts = named_members("vx-info.1.md", "JSON")
        for own in ("file", "error", "vx"):
            del facts[own]
        seen = self.compare(objects, {**facts, **named}, facts, self.UNSEEN)
        told = dict(zip(re.findall(r"`([^`]+)` (?=\d)", named["status"]), re.findall(r"` (\d)", named["status"])))
        self.assertLessEqual({(one["status"], str(one["exit"])) for one in objects}, set(told.items()))
        self.assertGreater(len(set(seen["status"])), 2)


    def test_of_verify(self):
        self.run_vx("render", "-q", "fonts.vx", "-o", "a.png", "--fit", "8")
        objects = [json.loads(self.run_vx("verify", "-q", "fonts.vx", "a.png", *words, "--json", status=status)[0])
                   for words, status in ((["--fit", "8"], 0), (["--fit", "9"], 3))]
        self.compare(objects, named_members("vx-verify.1.md", "JSON"))

    def test_of_diff(self):
        self.write("left.vx", document())
        self.write("other.vx", document("0 0 1 0 (Ink) 0.25 x\n0 0 m\n9 0 l\n9 9 l\nf\n" + "".join(
            self.TEXT.format("Nowhere").replace("Hand", f"Line {number}") for number in range(1001))))
        self.write("left.pdf", b"")
        self.run_vx("render", "-q", "left.vx", "-o", "left.pdf")
        self.run_vx("render", "-q", "left.vx", "-o", "left.png", "--width", "9")
        objects = [json.loads(self.run_vx("diff", "-q", *words, "--json", status=3)[0])
                   for words in (("left.vx", "other.vx"), ("other.vx", "left.pdf"), ("left.png", "other.vx"))]
        for one in objects:
            for fact in one["facts"]:  # members of these are those of vx info
                fact.update({side: "object" for side in "ab" if isinstance(fact[side], dict)})
        self.compare(objects, named_members("vx-diff.1.md", "JSON"))


class Security(unittest.TestCase):
    def test_every_promise_has_its_test(self):
        """`file Name`: a test of Python as Class.test_name, one of C++ as Suite.Name, or all of a class or suite."""
        sources = {}  # those of one name together
        for folder, _, names in os.walk(os.path.join(SOURCE, "tests")):
            for name in names:
                if re.search(r"(?:_test\.py|Test\.cpp)$", name):
                    sources[name] = sources.get(name, "") + text_of(folder, name)
        named = re.findall(r"`([\w]+(?:_test\.py|Test\.cpp)) ([\w.]+)`", text_of("docs", "security.md"))
        self.assertGreater(len(named), 20)
        for file, name in named:
            suite, _, test = name.partition(".")
            with self.subTest(file=file, name=name):
                self.assertIn(file, sources)
                if file.endswith(".py"):
                    self.assertIn(f"class {suite}(", sources[file])
                    self.assertIn(f"def {test}(" if test else "def test_", sources[file])
                else:
                    self.assertRegex(sources[file], rf"TEST\w*\(\s*{suite},\s*{test or '.'}")


class Completion(CommandTest):
    BASH = os.path.join(SOURCE, "packaging", "completion", "vx.bash")
    ZSH = os.path.join(SOURCE, "packaging", "completion", "_vx")

    def complete(self, *words):
        """Returns what bash offers for the last of the words that follow vx."""
        script = 'source "$0"; COMP_WORDS=(vx "$@"); COMP_CWORD=$#; _vx; printf "%s\\n" "${COMPREPLY[@]}"'
        output = subprocess.run(["bash", "--norc", "-c", script, self.BASH, *words], cwd=self.folder, check=True,
                                capture_output=True, text=True)
        self.assertEqual(output.stderr, "")
        return [line for line in output.stdout.split("\n") if line]

    def test_commands(self):
        self.assertEqual(self.complete(""), [*COMMANDS, "help", "--event-detail", "--help", "--version"])
        self.assertEqual(self.complete("help", ""), COMMANDS)
        self.assertEqual(self.complete("help", "f"), ["fonts"])
        self.assertEqual(self.complete("in"), ["info"])

    def test_options_are_those_of_the_help(self):
        for command in COMMANDS:
            options = {name for name in helped_options(command) if name.startswith("--")}
            self.assertEqual(set(self.complete(command, "--")), options, command)
        self.assertEqual(self.complete("render", "a.vx", "--pdf"), ["--pdf-x", "--pdf-a"])

    # The message about a wrong value lists these.
    CHOICES = ["--format", "--marks", "--intent", "--overprint", "--samples", "--text", "--spots", "--plate-colours", "--pdf-x", "--pdf-a",
               "--compress",
               "--script", "--missing-fonts", "--progress"]

    def test_values_are_those_that_the_program_takes(self):
        self.write("a.vx", document())
        for option in self.CHOICES:
            output = "a.pdf" if option in ("--text", "--spots", "--pdf-x", "--pdf-a", "--compress") else "a.png"
            told = self.refused("render", "a.vx", "-o", output, option, "nonsense", status=2)
            choices = set(re.findall(r"\w+", told.split(": give ")[1])) - {"one", "of", "or", "several", "as"}
            self.assertEqual(set(self.complete("render", option, "")), choices, option)
            self.assertEqual(set(self.complete("render", option, "=", "")), choices, option)
            self.assertEqual(set(self.complete("render", option, "=")), choices, option)

    # Options whose values are numbers or words of the user's own: there is nothing to offer.
    FREE = {"--dpi", "--zoom", "--width", "--height", "--fit", "--margin", "--bleed", "--hide", "--max-time", "--max-memory", "--max-output", "--limit", "--tolerance",
            "--jobs", "--shard", "--port"}
    FOLDERS = {"--font-dir", "--bag", "--report"}  # there is none to offer

    def test_every_value_that_can_be_named_is_offered(self):
        for name in ("file.vx", "other.icc"):
            self.write(name, b"")
        for command in COMMANDS:
            # The help puts the name of an option's value in capitals behind the option.
            taking = re.findall(r"^  (?:(-\w),)?(--[\w-]+) [A-Z]", help_of(command), re.MULTILINE)
            self.assertGreater(len(taking), 8 if command in READING else 0)
            for letter, name in taking:
                with self.subTest(command=command, option=name):
                    offered = self.complete(command, name, "")
                    self.assertEqual(not offered, name in self.FREE | self.FOLDERS, offered)
                    if letter:
                        self.assertEqual(self.complete(command, letter, ""), offered)

    def test_lists_of_formats(self):
        self.assertEqual(self.complete("render", "-f", "pdf,s"), ["pdf,svg"])

    def test_names_of_files(self):
        for name in ("one.vx", "two words.vx"):
            self.write(name, b"")
        os.mkdir(self.path("fonts"))
        self.assertEqual(sorted(self.complete("render", "")), ["fonts", "one.vx", "two words.vx"])
        self.assertEqual(self.complete("render", "tw"), ["two words.vx"])
        self.assertEqual(self.complete("info", "--font-dir", ""), ["fonts"])
        self.assertEqual(self.complete("render", "--profile", "f"), ["fogra39", "fonts"])
        self.assertEqual(self.complete("render", "--dpi", ""), [])

    # These stand in for the functions of zsh that complete, and show what they were asked for.
    ZSH_STUBS = """
        _arguments() { print -rl -- "$@" }
        _describe() { print -rl -- ${(P)2} }
        _vx=$1; shift; words=(vx "$@"); CURRENT=$(($# + 1)); source $_vx
    """

    @unittest.skipUnless(shutil.which("zsh"), "there is no zsh here")
    def test_zsh_knows_the_same(self):
        def offered(*words):
            return subprocess.run(["zsh", "-f", "-c", self.ZSH_STUBS, "zsh", self.ZSH, *words], check=True,
                                  capture_output=True, text=True).stdout.splitlines()

        self.assertEqual([line.split(":")[0] for line in offered("")][:len(COMMANDS)], COMMANDS)
        for command in COMMANDS:
            specs = {}
            for spec in offered(command, ""):
                match = re.match(r"(?:\*|\([^)]*\))?(--?[\w-]+)\[", spec)
                if match:
                    specs[match[1]] = spec
            self.assertEqual(set(specs), helped_options(command), command)
        for option in self.CHOICES:
            for value in self.complete("render", option, ""):
                spec = [line for line in offered("render", "") if re.match(r"(\*|\(.*?\))?%s\[" % option, line)][0]
                self.assertIn(value, re.findall(r"\w+", spec.split(":")[-1]), option)


class Pictures(CommandTest):
    """Pictures that a page shows, made by docs/make-pictures."""

    def test_they_are_those_of_the_samples(self):
        pictures = glob.glob(os.path.join(SOURCE, "docs/pictures/*.png"))
        self.assertGreater(len(pictures), 5)
        page = text_of("samples", "README.md")
        for path in pictures:
            name = os.path.basename(path)
            with self.subTest(name):
                self.assertIn(f"(../docs/pictures/{name})", page)
                with open(path, "rb") as file:
                    shown = Png(file.read())
                made = Png(self.run_vx("render", "-q", "--width", "300", sample(name[:-4]), "-f", "png", "-o", "-")[0])
                self.assertEqual((shown.width, shown.height, shown.channels), (made.width, made.height, made.channels))
                # A letter's edge may differ where another version of its font stands in.
                away = sum(abs(one - other) for rows in zip(shown.rows, made.rows) for one, other in zip(*rows))
                self.assertLess(away, 0.005 * 255 * 300 * shown.height * shown.channels)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
