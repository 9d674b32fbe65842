"""Runs the commands of archive/ in just the way that preservation systems run them, and reads records as readers do."""
import concurrent.futures
import hashlib
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

from vxcommand import CommandTest, VX, document, sample, sample_names

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
ARCHIVE = os.path.join(ROOT, "archive")
DOCUMENTS = 200
PREMIS = "{http://www.loc.gov/premis/v3}"
SUBSTITUTE = document("0 g\n0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_Nowhere 12 Tf\n(Hand) Tx\nTO\n")


def sha256(data):
    return hashlib.sha256(data).hexdigest()


class ArchiveTest(CommandTest):
    """A system that runs one command a file: it replaces names, splits words, and knows zero and other statuses."""

    def run_as_system(self, command, names):
        for name, value in names.items():
            command = command.replace(name, value)
        words = shlex.split(command)
        self.assertEqual(words[0], "vx")
        return subprocess.run([VX] + words[1:], cwd=self.folder, capture_output=True, timeout=120, check=False)

    def validate(self, *records):
        return subprocess.run(["xmllint", "--noout", "--relaxng", os.path.join(ARCHIVE, "premis.rng"), *records],
                              cwd=self.folder, capture_output=True, text=True, check=False)


class FormatPolicy(ArchiveTest):
    def setUp(self):
        super().setUp()
        with open(os.path.join(ARCHIVE, "format-policy.json"), encoding="utf-8") as file:
            self.rules = json.load(file)["rules"]

    def normalise(self, rule, source, folder):
        """Returns the output and the event's text, as a system keeps them."""
        name = os.path.splitext(os.path.basename(source))[0]
        names = {"%fileFullName%": source, "%fileName%": name, "%outputDirectory%": folder + "/",
                 "%prefix%": "0f3-", "%postfix%": "-1a"}
        location = rule["outputLocation"]
        for key, value in names.items():
            location = location.replace(key, value)
        run = self.run_as_system(rule["command"], names)
        self.assertEqual((run.returncode, run.stdout), (0, b""), run.stderr)
        self.assertTrue(os.path.isfile(location), location)
        event = self.run_as_system(rule["eventDetail"], names)
        self.assertEqual((event.returncode, event.stderr), (0, b""))
        check = self.run_as_system(rule["verification"], {**names, "%outputLocation%": location})
        self.assertEqual(check.returncode, 0, check.stdout)
        return location, event.stdout.decode()

    def test_two_hundred_documents(self):
        names = sample_names()
        sources = []
        for number in range(DOCUMENTS):
            path = os.path.join(self.folder, f"drawing {number:03d} of {names[number % len(names)]}.vx")
            shutil.copy(sample(names[number % len(names)]), path)
            sources.append(path)
        kept = os.path.join(self.folder, "kept")
        os.mkdir(kept)

        def both(number):
            first = self.normalise(self.rules[0], sources[number], kept)
            if number % 10 == 0:
                for rule in self.rules[1:]:
                    self.normalise(rule, sources[number], kept)
            return first

        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            done = list(pool.map(both, range(DOCUMENTS)))
        self.assertEqual(len({location for location, _ in done}), DOCUMENTS)
        self.assertEqual(len({event for _, event in done}), 1)
        self.assertEqual([rule["purpose"] for rule in self.rules], ["preservation", "access", "thumbnail"])
        self.assertEqual(len(os.listdir(kept)), DOCUMENTS + 2 * (DOCUMENTS // 10))

    def test_what_fails_leaves_nothing_and_says_so(self):
        names = {"%fileFullName%": "bad.vx", "%fileName%": "bad", "%outputDirectory%": "./", "%prefix%": "",
                 "%postfix%": ""}
        self.write("bad.vx", document("1 c\n"))
        for rule in self.rules:
            self.assertNotEqual(self.run_as_system(rule["command"], names).returncode, 0)
            self.assertEqual(self.files(), ["bad.vx"])

    def test_an_output_that_changed_is_not_verified(self):
        self.write("a.vx", document())
        rule = self.rules[2]
        location, _ = self.normalise(rule, os.path.join(self.folder, "a.vx"), self.folder)
        with open(location, "ab") as file:
            file.write(b"x")
        check = self.run_as_system(rule["verification"], {"%fileFullName%": "a.vx", "%outputLocation%": location})
        self.assertNotEqual(check.returncode, 0)


class EventDetail(CommandTest):
    def test_names_program_plugin_and_profile_by_digest(self):
        output, messages = self.run_vx("--event-detail")
        self.assertEqual(messages, [])
        with open(VX, "rb") as file:
            program = sha256(file.read())
        profiles = os.path.join(ROOT, "devices", "colour", "profiles")
        digests = []
        for name in sorted(os.listdir(profiles)):
            with open(os.path.join(profiles, name), "rb") as file:
                digests.append(sha256(file.read()))
        found = re.fullmatch(r'program="vx"; version="(\d+\.\d+\.\d+)"; plugin="sha256:([0-9a-f]{64})"; '
                             r'profile="sha256:([0-9a-f]{64})"\n', output.decode())
        self.assertEqual(found[2], program)
        self.assertIn(found[3], digests)
        self.assertEqual(self.run_vx("--event-detail", "nonsense", status=2)[0], b"")


class Premis(ArchiveTest):
    def test_records_tell_what_became_of_a_drawing(self):
        self.write("a.vx", SUBSTITUTE)
        environment = {"SOURCE_DATE_EPOCH": "1000000000"}
        self.run_vx("render", "-q", "a.vx", "-f", "pdf,svg", "-o", "made.{ext}", "--premis", "--spots", "process",
                    environment=environment)
        self.assertEqual(self.files(), ["a.vx", "made.pdf", "made.pdf.premis.xml", "made.svg", "made.svg.premis.xml"])
        checked = self.validate("made.pdf.premis.xml", "made.svg.premis.xml")
        self.assertEqual(checked.returncode, 0, checked.stderr)
        root = ElementTree.fromstring(self.read("made.svg.premis.xml"))

        def texts(name):
            return [element.text for element in root.iter(PREMIS + name)]

        source, made = sha256(self.read("a.vx")), sha256(self.read("made.svg"))
        self.assertEqual(texts("objectIdentifierValue") + texts("messageDigest"), [made, made])
        self.assertEqual(texts("linkingObjectIdentifierValue"), [source, made])
        self.assertEqual(texts("relatedObjectIdentifierValue"), [source])
        self.assertEqual(texts("size"), [str(len(self.read("made.svg")))])
        self.assertEqual(texts("formatName"), ["image/svg+xml"])
        self.assertEqual(texts("eventDateTime"), ["2001-09-09T01:46:40Z"])  # a thousand million seconds
        self.assertEqual(texts("eventOutcome"), ["warning"])
        self.assertRegex(texts("eventOutcomeDetailNote")[0], 'no font "Nowhere"')
        self.assertTrue(texts("eventDetail")[0].endswith('; source="a.vx"; options="spots=process"'), texts("eventDetail"))

    def test_the_grammar_refuses_what_is_not_one(self):
        self.write("a.vx", document())
        self.run_vx("render", "a.vx", "-o", "a.png", "--premis")
        whole = self.read("a.png.premis.xml").decode()
        for part, other in (("<size>", "<size>-"), ("<eventOutcome>success", "<eventOutcome>maybe"), ("has source", "is"),
                            (sha256(self.read("a.vx")), "0"), ('version="3.0"', 'version="2.2"'),
                            ("<agentType>software</agentType>", "")):
            self.assertIn(part, whole)
            self.write("broken.xml", whole.replace(part, other).encode())
            self.assertNotEqual(self.validate("broken.xml").returncode, 0, part)

    def test_names_are_escaped(self):
        name = 'a <&"\'\x01 \u00e9.vx'
        self.write(name, document())
        self.run_vx("render", name, "-f", "svg", "-o", "{stem}.svg", "--premis")
        record = next(path for path in self.files() if path.endswith(".premis.xml"))
        self.assertEqual(self.validate(record).returncode, 0)
        root = ElementTree.fromstring(self.read(record))
        self.assertEqual([element.text for element in root.iter(PREMIS + "originalName")], ['a <&"\'\ufffd \u00e9.svg'])

    def test_failures_have_no_record(self):
        self.write("bad.vx", document("1 c\n"))
        self.run_vx("render", "bad.vx", "-o", "bad.png", "--premis", status=1)
        self.assertEqual(self.files(), ["bad.vx"])
        self.write("a.vx", document())
        self.assertIn("a record tells of files",
                      self.run_vx("render", "a.vx", "-f", "svg", "-o", "-", "--premis", status=2)[1][0])
        os.mkdir(os.path.join(self.folder, "a.svg.premis.xml"))
        self.assertIn("a.svg.premis.xml: cannot be written",
                      self.run_vx("render", "a.vx", "-o", "a.svg", "--premis", status=4)[1][0])


class Bags(ArchiveTest):
    def check_bag(self, folder, outputs):
        """Reads a bag as a validator does."""
        self.assertEqual(self.read(folder + "/bagit.txt"), b"BagIt-Version: 1.0\nTag-File-Character-Encoding: UTF-8\n")
        total = 0
        listed = []
        for manifest in ("manifest-sha256.txt", "tagmanifest-sha256.txt"):
            for line in self.read(f"{folder}/{manifest}").decode().splitlines():
                digest, name = line.split("  ", 1)
                name = name.replace("%0A", "\n").replace("%0D", "\r").replace("%25", "%")
                data = self.read(f"{folder}/{name}")
                self.assertEqual(digest, sha256(data), name)
                listed.append(name)
                total += len(data) if name.startswith("data/") else 0
        payload = [name for name in listed if name.startswith("data/")]
        self.assertEqual(sorted(payload), sorted("data/" + name for name in outputs))
        self.assertEqual([name for name in listed if name not in payload],
                         ["bag-info.txt", "bagit.txt", "manifest-sha256.txt"])
        there = {os.path.relpath(os.path.join(at, name), os.path.join(self.folder, folder))
                 for at, _, names in os.walk(os.path.join(self.folder, folder)) for name in names}
        self.assertEqual(there, set(listed) | {"tagmanifest-sha256.txt"})
        self.assertIn(f"Payload-Oxum: {total}.{len(payload)}\n", self.read(folder + "/bag-info.txt").decode())

    def write_folder(self):
        os.makedirs(os.path.join(self.folder, "in", "deep"))
        for name in ("in/a.vx", "in/deep/b%.vx", "in/deep/c\nd.vx"):
            self.write(name, document())

    def test_a_folder_becomes_a_bag(self):
        self.write_folder()
        self.run_vx("batch", "in", "--bag", "bag", "-f", "svg", "--premis", "--summary", "none")
        made = ["a.svg", "deep/b%.svg", "deep/c\nd.svg"]
        self.check_bag("bag", made + [name + ".premis.xml" for name in made])

    def test_a_run_that_goes_on_lists_all(self):
        self.write_folder()
        words = ["--bag", "bag", "-f", "png", "--fit", "9", "--journal", "journal", "--summary", "none"]
        self.run_vx("batch", "in/a.vx", *words)
        self.check_bag("bag", ["a.png"])
        self.run_vx("batch", "in/a.vx", "in/deep/b%.vx", *words, "--resume")
        self.check_bag("bag", ["a.png", "b%.png"])
        # A record that is asked for later is made by drawing again.
        self.run_vx("batch", "in/a.vx", "in/deep/b%.vx", *words, "--resume", "--premis")
        self.check_bag("bag", ["a.png", "a.png.premis.xml", "b%.png", "b%.png.premis.xml"])

    def test_what_failed_is_not_in_it_and_what_is_shared_once(self):
        self.write("a.vx", document())
        self.write("same.vx", document())
        self.write("bad.vx", document("1 c\n"))
        self.run_vx("batch", "a.vx", "same.vx", "bad.vx", "--bag", "bag", "-f", "svg", "-o", "bag/data/{hash:8}.svg",
                    "--summary", "none", status=1)
        self.check_bag("bag", [sha256(document())[:8] + ".svg"])

    def test_what_is_no_output_is_told(self):
        self.write("a.vx", document())
        os.makedirs(os.path.join(self.folder, "bag", "data"))
        self.write("bag/data/other", b"")
        messages = self.run_vx("batch", "a.vx", "--bag", "bag", "-f", "svg", "--summary", "none")[1]
        self.assertEqual(messages, ['vx: warning: --bag bag: 1 file in "data" is not of this run, and is in no manifest: '
                                    "take it away"])

    def test_bad_words(self):
        self.write("a.vx", document())
        output, _ = self.run_vx("batch", "a.vx", "--bag", "bag", "-f", "svg", "-o", "out/{stem}.svg", "--summary", "none",
                                status=1)
        self.assertIn("outside of the bag: name its folder with -o, as bag/data/", json.loads(output)["error"])
        self.assertIn("no name of a folder", self.run_vx("batch", "a.vx", "--bag", "", "-f", "svg", status=2)[1][0])
        self.write("file", b"")
        self.assertIn('--bag file: "data" cannot be written',
                      self.run_vx("batch", "a.vx", "--bag", "file", "-f", "svg", status=4)[1][0])


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
