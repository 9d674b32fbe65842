"""vx batch keeps a journal, goes on where an earlier run ended, however it ended, and sums up."""
import hashlib
import json
import os
import re
import signal
import subprocess
import sys
import time
import unittest

from vxcommand import CommandTest, announced_chance, document

SMALL = ["-f", "png", "--fit", "1"]
SLOW = os.environ.get("VX_SLOW") == "1"


class JournalTest(CommandTest):
    def batch(self, *words, status=0, **options):
        """Returns the results and the messages."""
        output, messages = self.run_vx("batch", *SMALL, *words, status=status, **options)
        return [json.loads(line) for line in output.splitlines()], messages

    def resume(self, *words, status=0, resume="--resume", **options):
        """Returns which documents were drawn anew, and the messages."""
        results, messages = self.batch("--journal", "journal", *([resume] if resume else []), *words, status=status, **options)
        return [r["input"] for r in results if not r.get("doneBefore")], messages

    def lines(self, kind):
        """Returns the lines of the journal that begin so."""
        lines = [json.loads(line) for line in self.read("journal").splitlines()]
        return [line for line in lines if kind in line]

    def digest(self, name):
        return hashlib.sha256(self.read(name)).hexdigest()


class Journal(JournalTest):
    def setUp(self):
        super().setUp()
        for name in ("a.vx", "b.vx"):
            self.write(name, document(name == "a.vx" and "n\n" or "1 2 Qx\n"))

    def test_it_has_what_was_done_and_with_what(self):
        self.batch("a.vx", "none.vx", "b.vx", "-o", "{stem}.png", "--journal", "journal", "-j", "1", "--missing-fonts",
                   "substitute", status=1)
        runs, begun, done = self.lines("journal"), self.lines("begun"), self.lines("done")
        self.assertEqual(len(runs), 1)
        self.assertEqual((runs[0]["vx"], runs[0]["plugin"], runs[0]["reading"]),
                         (self.run_vx("--version")[0].decode().split()[1], "built in", "missing-fonts=substitute\n"))
        self.assertRegex(runs[0]["fonts"], "^[0-9a-f]{64}$")
        self.assertRegex(runs[0]["time"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        self.assertEqual([line["input"] for line in begun], ["a.vx", "none.vx", "b.vx"])
        self.assertEqual([line["begun"] for line in begun], [line["done"] for line in done])
        self.assertEqual([(line["number"], line["exit"], len(line["warnings"])) for line in done],
                         [(1, 0, 0), (2, 1, 0), (3, 0, 1)])
        self.assertEqual((done[0]["sha256"], done[0]["bytes"]), (self.digest("a.vx"), len(self.read("a.vx"))))
        self.assertEqual(done[0]["outputs"], [{"path": "a.png", "sha256": self.digest("a.png"),
                                               "bytes": len(self.read("a.png"))}])
        self.assertEqual((done[1]["outputs"], done[1]["error"]), ([], "no such file: check the name"))
        for line in done:
            self.assertGreaterEqual(line["milliseconds"], 0)

    def test_lines_are_there_when_something_happens(self):
        process = self.start("batch", *SMALL, "-o", "{stem}.png", "--journal", "journal", "-", stdin=subprocess.PIPE)
        process.stdin.write(b"a.vx\n")
        process.stdin.flush()
        process.stdout.readline()
        self.assertEqual([len(self.lines(kind)) for kind in ("journal", "begun", "done")], [1, 1, 1])
        told = self.refused("batch", "a.vx", "-o", "x.png", "--journal", "journal", status=4)
        self.assertEqual(told, "vx: --journal journal: another run writes to it: wait for its end, or choose another name")
        process.communicate(timeout=60)

    def test_no_other_file_becomes_one(self):
        self.write("text", b"my only notes")
        os.mkdir(self.path("folder"))
        os.mkfifo(self.path("pipe"))
        for name, told, status in (("a.vx", "is there, and is no journal", 2), ("text", "is there, and is no journal", 2),
                                   ("pipe", "is there, and is no journal", 2), ("none/journal", "cannot be opened", 4),
                                   ("folder", "cannot be opened, is a directory", 4)):
            self.assertIn(f"--journal {name}: {told}", self.refused("batch", "b.vx", "-o", "x.png", "--journal", name,
                                                                    status=status))
        self.assertEqual((self.read("text"), self.read("a.vx")), (b"my only notes", document("n\n")))
        self.assertNotIn("x.png", self.files())

    def test_it_is_no_output(self):
        results, _ = self.batch("a.vx", "-o", "journal", "--journal", "journal", status=1)
        self.assertIn('would overwrite the journal "journal"', results[0]["error"])

    def test_what_cannot_be_written_ends_the_run(self):
        def limit():
            import resource
            resource.setrlimit(resource.RLIMIT_FSIZE, (600, 600))

        told = self.run_vx("batch", "-", *SMALL, "-o", "{number}.png", "--journal", "journal", status=4,
                           stdin=b"a.vx\n" * 9, preexec_fn=limit)[1]
        self.assertIn("--journal journal: cannot be written, file too large: make room, and go on with --resume", told[-1])

    def test_wrong_words(self):
        for words, told in ((["--resume"], "--resume: no journal"), (["--journal", ""], '--journal "": no name of a file'),
                            (["--journal", "-"], '--journal "-": no name of a file'),
                            (["--journal", "j", "--resume=size"], "--resume=size: not known: give --resume, or --resume=verify"),
                            (["--journal", "j", "--retry", "failed"], "--retry: nothing is gone on with: add --resume"),
                            (["--journal", "j", "--resume", "--retry", "all"], "--retry all: not known: give failed"),
                            (["--summary", "long"], "--summary long: not known: give text, json or none")):
            with self.subTest(words=words):
                self.assertIn(told, self.refused("batch", "a.vx", "-o", "a.png", *words, status=2))
        self.assertEqual(self.files(), ["a.vx", "b.vx"])

    def test_results_come_as_documents_are_done_when_nobody_cares(self):
        self.write("slow.vx", document("0 0 m\n9 9 l\n" * 300000 + "n\n"))
        words = ["slow.vx", "a.vx", "b.vx", "-o", "{stem}.png", "-j", "2"]
        self.assertEqual([r["number"] for r in self.batch(*words)[0]], [1, 2, 3])
        numbers = [r["number"] for r in self.batch(*words, "--unordered")[0]]
        self.assertEqual((numbers[0], sorted(numbers)), (2, [1, 2, 3]))


class Resume(JournalTest):
    NAMES = ["a.vx", "b.vx", "c.vx"]

    def setUp(self):
        super().setUp()
        for name in self.NAMES:
            self.write(name, document(f"% {name}\n1 2 Qx\n"))
        self.words = ["-j", "1", *self.NAMES, "bad.vx", "-o", "{stem}.png"]
        self.write("bad.vx", document("1 k\n"))
        self.assertEqual(self.resume(*self.words, status=1)[0], [*self.NAMES, "bad.vx"])

    def test_what_is_done_is_passed_over(self):
        before = self.read("journal")
        results, messages = self.batch(*self.words, "--journal", "journal", "--resume", status=1)
        self.assertEqual([(r["input"], r["outputs"], r["exit"], r["doneBefore"], len(r["warnings"])) for r in results],
                         [*((name, [name[0] + ".png"], 0, True, 1) for name in self.NAMES), ("bad.vx", [], 1, True, 0)])
        self.assertIn("malformed", results[-1]["error"])
        self.assertEqual(messages, [])  # they were told before
        self.assertEqual(self.summary, "vx: 4 documents in 1 s: 3 done, 3 with warnings, 1 failed, 4 before this run; "
                         "--resume --retry failed tries these again")
        self.assertTrue(self.read("journal").startswith(before))
        self.assertEqual(len(self.lines("begun")), 4)

    def test_without_it_all_is_done_again(self):
        drawn, messages = self.resume(*self.words, resume=None, status=1)
        self.assertEqual(len(drawn), 4)
        self.assertIn("vx: --journal journal: 4 documents are done in it, and are done again: --resume passes over them",
                      messages)

    def test_what_changed_is_done_again(self):
        self.write("a.vx", document("n\n"))
        os.remove(self.path("b.png"))
        self.assertEqual(self.resume(*self.words, status=1)[0], ["a.vx", "b.vx"])
        self.assertEqual(self.resume(*self.words, status=1)[0], [])
        self.assertEqual(len(self.resume(*self.words, "--background", "black", status=1)[0]), 4)
        self.assertEqual(len(self.resume(*self.words, "--date-order", "mdy", status=1)[0]), 4)
        self.assertEqual(len(self.resume(*self.words, status=1, environment={"SOURCE_DATE_EPOCH": "1"})[0]), 4)
        self.assertEqual(self.resume(*self.words[:-1], "{stem}{stem}.png", status=1)[0], [*self.NAMES, "bad.vx"])

    def test_outputs_are_read_when_that_is_wanted(self):
        whole = self.read("a.png")
        self.write("a.png", whole[:-1] + b"x")
        self.assertEqual(self.resume(*self.words, status=1)[0], [])
        self.assertEqual(self.resume(*self.words, resume="--resume=verify", status=1)[0], ["a.vx"])
        self.assertEqual(self.read("a.png"), whole)
        self.write("a.png", whole + b"x")
        self.assertEqual(self.resume(*self.words, status=1)[0], ["a.vx"])

    def test_what_failed_is_tried_again_when_that_is_wanted(self):
        self.assertEqual(self.resume(*self.words, "--retry", "failed", status=1)[0], ["bad.vx"])
        self.write("bad.vx", document())
        self.assertEqual(self.resume(*self.words)[0], ["bad.vx"])

    def test_a_torn_line_is_mended(self):
        whole = self.read("journal")
        last = whole.splitlines(keepends=True)[-1]
        for cut in (1, 20, len(last) - 1):
            self.write("journal", whole[:-cut])
            drawn, messages = self.resume(*self.words, status=1)
            self.assertEqual((drawn, messages[0]), (["bad.vx"], "vx: --journal journal: its last line was torn, and is "
                                                    "taken away"))
            for line in self.read("journal").splitlines():
                json.loads(line)
        self.write("journal", whole[:9])  # the first line
        self.assertEqual(len(self.resume(*self.words, status=1)[0]), 4)

    def test_a_line_that_makes_no_sense_is_no_line(self):
        whole = self.read("journal").decode()
        self.write("journal", re.sub(r'("done":"[0-9a-f]{16}","number":1,).*', r"\1", whole).encode())
        self.assertEqual(self.resume(*self.words, status=1)[0], ["a.vx"])

    def test_files_that_turned_out_to_be_no_drawings_stay_passed_over(self):
        import gzip
        os.mkdir(self.path("in"))
        self.write("in/a.gz", gzip.compress(b"no drawing"))
        self.write("in/b.vx", document())
        for _ in range(2):
            results, _ = self.batch("in", "-o", "out/", "--journal", "journal", "--resume", "--retry", "failed")
            self.assertEqual([r["input"] for r in results], ["in/b.vx"])
        self.assertEqual(self.resume("in", "-o", "out/", "--all-files", status=1)[0], ["in/a.gz"])

    def test_what_was_begun_three_times_in_vain_is_left_for_last(self):
        begun = self.lines("begun")[0]
        done = [line for line in self.read("journal").splitlines(keepends=True) if b'"number":1,' not in line]
        again = (json.dumps(begun, separators=(",", ":")) + "\n").encode()
        for times, order in ((1, [1, 2, 3, 4]), (3, [2, 3, 4, 1])):
            self.write("journal", b"".join(line for line in done if b"begun" not in line) + again * times)
            results, messages = self.batch(*self.words, "--journal", "journal", "--resume", status=1)
            self.assertEqual([r["number"] for r in results], order)
            self.assertEqual([r["input"] for r in results if not r.get("doneBefore")], ["a.vx"])
            told = "vx: a.vx: warning: was begun 3 times and never done: is left for last"
            self.assertEqual(told in messages, times == 3)


class Kills(JournalTest):
    DOCUMENTS, KILLS = (10000, 50) if SLOW else (200, 5)

    def test_a_run_that_is_killed_again_and_again_comes_to_the_same(self):
        chance = announced_chance()
        os.mkdir(self.path("in"))
        for number in range(self.DOCUMENTS):
            self.write(f"in/{number}.vx", document(f"{number % 97} {number % 31} m\n9 9 l\nS\n" * (number % 5)))
        words = ["batch", "in", "-f", "svg", "--summary", "none", "--journal", "journal", "--resume"]
        self.finish(*words[:-2], "undisturbed", "-o", "whole/")

        jobs, killed = 2, 0
        for left in range(self.KILLS, 0, -1):
            process = self.start(*words, "-j", str(jobs), "-o", "out/", stdout=subprocess.DEVNULL)
            done = self.size()
            share = (self.DOCUMENTS * 400 - done) // left  # bytes that a run may add to the journal
            goal = done + chance.randrange(max(share * 3 // 2, 1))
            while process.poll() is None and self.size() < goal:
                time.sleep(0.0005)
            process.kill()
            process.communicate()
            killed += process.returncode == -signal.SIGKILL
        self.finish(*words, "-o", "out/")
        self.assertGreater(killed, self.KILLS // 2)

        self.assertEqual(self.digests("out"), self.digests("whole"))
        done = self.lines("done")
        self.assertEqual({line["input"] for line in done}, {f"in/{number}.vx" for number in range(self.DOCUMENTS)})
        for line in done:
            for output in line["outputs"]:
                self.assertEqual(output["sha256"], self.digest(output["path"]))
        self.assertLessEqual(len(self.lines("begun")), self.DOCUMENTS + self.KILLS * jobs)

    def finish(self, *words):
        process = self.start(*words, stdout=subprocess.DEVNULL)
        errors = process.communicate(timeout=3600)[1]
        self.assertEqual((process.returncode, errors), (0, b""))

    def size(self):
        return os.path.getsize(self.path("journal")) if os.path.exists(self.path("journal")) else 0

    def digests(self, folder):
        names = os.listdir(self.path(folder))
        return {name: self.digest(f"{folder}/{name}") for name in names}


class Summaries(JournalTest):
    def setUp(self):
        super().setUp()
        self.write("a.vx", document("n\n"))
        self.write("w.vx", document("1 2 Qx\n"))

    def test_one_line_in_the_end(self):
        self.batch("a.vx", "w.vx", "none.vx", "-o", "{stem}.png", status=1)
        self.assertEqual(self.summary, "vx: 3 documents in 1 s: 2 done, 1 with warnings, 1 failed")
        os.mkdir(self.path("in"))
        self.write("in/text", b"no drawing")
        self.batch("in", "-o", "out/")
        self.assertEqual(self.summary, "vx: 0 documents in 1 s: 0 done, 1 file is no drawing")

    def test_none_where_none_is_wanted(self):
        for words in (["-q"], ["--summary", "none"]):
            self.assertEqual(self.run_vx("batch", "a.vx", *SMALL, "-o", "a.png", *words), (self.run_vx(
                "batch", "a.vx", *SMALL, "-o", "a.png", "-q")[0], []))
            self.assertIsNone(self.summary)

    def test_json(self):
        process = self.start("batch", "a.vx", "w.vx", "none.vx", *SMALL, "-o", "{stem}.png", "--summary", "json", "-q")
        told = json.loads(process.communicate(timeout=60)[1].splitlines()[-1])
        self.assertGreater(told.pop("seconds"), 0)
        self.assertEqual(told, {"documents": 3, "done": 2, "warned": 1, "failed": 1, "doneBefore": 0, "passedOver": 0,
                                "end": "whole", "exit": 1})

    def start_endless(self, *words, **options):
        """Draws three documents, of which none ends."""
        for name in ("x.vx", "y.vx", "z.vx"):
            self.write(name, document())
        process = self.start("batch", "x.vx", "y.vx", "z.vx", *SMALL, "-o", "{stem}.png", "-j", "2", *words, **options)
        return process

    def test_an_interrupt_ends_all_and_sums_up(self):
        process = self.start_endless("--journal", "journal", hostile="loop")
        self.wait_for_notes(b"\n")
        process.send_signal(signal.SIGINT)
        self.assertEqual((process.communicate(timeout=60)[1], process.returncode),
                         (b"vx: interrupted: 0 of 3 done; --resume goes on\n", 130))
        self.assertEqual(self.files(), ["a.vx", "journal", "w.vx", "worker.notes", "x.vx", "y.vx", "z.vx"])

    def test_a_request_to_end_finishes_what_is_begun(self):
        body = "0 0 m\n9 9 l\n" * 400000 + "n\n"
        for name in ("x.vx", "y.vx", "z.vx"):
            self.write(name, document(body))
        for name in (signal.SIGTERM, signal.SIGHUP):
            with self.subTest(name):
                process = self.start("batch", "x.vx", "y.vx", "z.vx", "-f", "png", "--fit", "1", "-o", "{stem}.png", "-j", "1",
                                     "--journal", f"journal-{name}", start_new_session=True)
                while not os.path.exists(self.path(f"journal-{name}")) or b"begun" not in self.read(f"journal-{name}"):
                    time.sleep(0.01)
                os.killpg(process.pid, name)  # as those do that end a whole job
                output, errors = process.communicate(timeout=60)
                self.assertEqual(process.returncode, 130, errors)
                self.assertEqual([json.loads(line)["status"] for line in output.splitlines()], ["done"])
                self.assertEqual(errors.decode().splitlines(),
                                 ["vx: asked to end: 1 document that is begun is finished first",
                                  "vx: asked to end: 1 of 3 done; --resume goes on"])
                self.assertIn("x.png", self.files())
                self.assertNotIn("y.png", self.files())

    def test_a_second_signal_ends_at_once(self):
        process = self.start_endless(hostile="loop")
        self.wait_for_notes(b"\n")
        process.send_signal(signal.SIGTERM)
        self.assertIn(b"asked to end: 2 documents that are begun are finished first", process.stderr.readline())
        process.send_signal(signal.SIGTERM)
        self.assertEqual((process.communicate(timeout=60)[1], process.returncode), (b"", 130))

    def test_progress_says_what_is_left(self):
        process = self.start("batch", "a.vx", "none.vx", "w.vx", *SMALL, "-o", "{stem}.png", "--progress", "always", "-j", "1")
        self.assertIn(b"\r\x1b[K0 of 3 done", process.communicate(timeout=60)[1])


class Shards(JournalTest):
    COUNT = 3

    def setUp(self):
        super().setUp()
        self.names = [f"{number}.vx" for number in range(20)]
        for name in self.names:
            self.write(name, document(f"{name[:-3]} 9 m\n9 9 l\nS\n"))
        self.write("list", "".join(f"{name}\n" for name in [*self.names, "none.vx"]).encode())
        self.words = ["--manifest", "list", "-o", "out/{stem}.png"]

    def shard_of(self, name):
        return int.from_bytes(hashlib.sha256(name.encode()).digest()[:8], "big") % self.COUNT + 1

    def do_shard(self, shard, *words):
        return self.batch(*self.words, "--shard", f"{shard}/{self.COUNT}", "--journal", f"{shard}.journal", *words,
                          status=int(self.shard_of("none.vx") == shard))[0]

    def test_each_document_is_in_one(self):
        numbers = []
        for shard in range(1, self.COUNT + 1):
            results = self.do_shard(shard)
            self.assertEqual({self.shard_of(r["input"]) for r in results}, {shard})
            self.assertIn(f"vx: {len(results)} documents in 1 s: ", self.summary)
            numbers += [r["number"] for r in results]
            self.assertEqual([self.names[r["number"] - 1] for r in results if r["exit"] == 0],
                             [r["input"] for r in results if r["exit"] == 0])
        self.assertEqual(sorted(numbers), list(range(1, 22)))
        self.assertEqual(len(os.listdir(self.path("out"))), 20)

    def test_all_tell_of_a_manifest_that_cannot_be_read(self):
        for shard in ("1/2", "2/2"):
            results, _ = self.batch("--manifest", "none", "-o", "x.png", "--shard", shard, status=1)
            self.assertEqual(len(results), 1)

    def test_their_journals_merge(self):
        for shard in range(1, self.COUNT + 1):
            self.do_shard(shard)
        self.write("journal", self.read("1.journal"))
        self.do_shard(2, "--resume", "--retry", "failed")  # some lines are there twice
        with open(self.path("2.journal"), "ab") as file:
            file.write(b'{"begun":"00000000000000aa","input":"lost.vx"}\n{"done":"00')  # a run is at work
        names = [f"{shard}.journal" for shard in (1, 2, 3, 2)]
        output, messages = self.run_vx("batch", "--merge-journals", *names, "--journal", "all")
        self.assertEqual((output, messages[0].split(": ", 2)[2][:36]), (b"", "21 documents are done in 4 journals,"))
        self.write("journal", self.read("all"))
        self.assertEqual(sorted(line["input"] for line in self.lines("done")), sorted([*self.names, "none.vx"]))
        self.assertEqual([line["input"] for line in self.lines("begun")], ["lost.vx"] * 2)
        self.assertEqual(self.resume(*self.words, status=1)[0], [])
        os.remove(self.path("out/7.png"))
        self.assertEqual(self.resume(*self.words, status=1)[0], ["7.vx"])

    def test_wrong_words(self):
        self.batch("0.vx", "-o", "0.png", "--journal", "journal")
        before = self.files()
        for words, told in ((["--shard", "0/3"], "--shard 0/3: not K/N with K from 1 to N: give one as 3/20"),
                            (["--shard", "4/3"], "--shard 4/3: not K/N"), (["--shard", "3"], "--shard 3: not K/N"),
                            (["--shard", "1/x"], "--shard 1/x: not K/N"), (["--shard", "1/2/3"], "--shard 1/2/3: not K/N"),
                            (["--merge-journals"], "--merge-journals: no journal to merge into: give one with --journal")):
            self.assertIn(told, self.refused("batch", "0.vx", "-o", "x.png", *words, status=2))
        for words, told in (([], "no journals to merge: name them"), (["0.vx"], "0.vx: is no journal: name those of"),
                            (["journal", "none"], "none: no such file"), (["journal", "all", "--manifest", "list"], "no journals"),
                            (["./journal"], None)):
            into = "journal" if told is None else "all"
            self.assertIn(told or "./journal: is what the journals are to be merged into: leave it out",
                          self.refused("batch", "--merge-journals", *words, "--journal", into, status=2))
        self.assertEqual(self.files(), before)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
