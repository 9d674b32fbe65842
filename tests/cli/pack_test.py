"""vx batch --pack puts outputs into one tar, with an index, and goes on with it however a run ended."""
import hashlib
import json
import os
import shutil
import signal
import subprocess
import sys
import tarfile
import time
import unittest

from vxcommand import CommandTest, announced_chance, document

SLOW = os.environ.get("VX_SLOW") == "1"
PACKED = ["--pack", "o.tar", "-f", "svg"]
JOURNAL = ["--journal", "journal", "--resume"]


class PackTest(CommandTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("in"))

    def make(self, *names):
        """Each document draws something of its own."""
        for name in names:
            os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
            self.write(name, document(f"0 0 m\n{sum(name.encode('utf-8', 'surrogateescape'))} 9 l\nS\n"))

    def batch(self, *words, status=0, **options):
        output, messages = self.run_vx("batch", *words, status=status, **options)
        return [json.loads(line) for line in output.splitlines()], messages

    def members(self, name="o.tar"):
        """Returns the bytes of the members, of which the last of a name counts, after the end of the tar was seen."""
        with open(self.path(name), "rb") as file:
            self.assertEqual((os.path.getsize(file.name) % 512, file.read()[-1024:]), (0, bytes(1024)))
            file.seek(0)
            with tarfile.open(fileobj=file) as tar:
                return {member.name: tar.extractfile(member).read() for member in tar}

    def index(self, name="o.tar"):
        return [json.loads(line) for line in self.read(name + ".jsonl").splitlines()]

    def check(self, name="o.tar"):
        """The index tells where each member is, and what. Returns the members."""
        whole, members, index = self.read(name), self.members(name), self.index(name)
        self.assertEqual({line["member"] for line in index}, set(members))
        for line in index:
            data = whole[line["offset"]:line["offset"] + line["size"]]
            self.assertEqual(hashlib.sha256(data).hexdigest(), line["sha256"])
        for line in {line["member"]: line for line in index}.values():
            self.assertEqual(len(members[line["member"]]), line["size"])
            self.assertEqual(hashlib.sha256(members[line["member"]]).hexdigest(), line["sha256"])
        return members

    def drawn(self, *words, **options):
        """Returns which documents were drawn anew."""
        return [r["input"] for r in self.batch("in", *PACKED, *JOURNAL, *words, **options)[0] if not r.get("doneBefore")]

    def tree(self, folder):
        return {os.path.relpath(os.path.join(at, name), self.path(folder)): self.read(os.path.join(at, name))
                for at, _, names in os.walk(self.path(folder)) for name in names}


class Packs(PackTest):
    def test_members_are_what_files_would_be(self):
        self.make("in/a.vx", "in/deep/b.vx", "in/deep/c.vx")
        results, _ = self.batch("in", "--pack", "new/o.tar", "-f", "svg,png", "--fit", "9", "-j", "2")
        self.batch("in", "-o", "files/", "-f", "svg,png", "--fit", "9")
        members = self.check("new/o.tar")
        self.assertEqual(members, self.tree("files"))
        self.assertEqual(sorted(name for r in results for name in r["outputs"]), sorted(members))
        self.assertEqual({line["member"]: line["document"] for line in self.index("new/o.tar")},
                         {output: r["input"] for r in results for output in r["outputs"]})
        self.assertEqual(sorted(os.listdir(self.path("new"))), ["o.tar", "o.tar.jsonl"])
        for program in ("tar", "bsdtar"):
            if shutil.which(program):
                os.mkdir(self.path(program))
                subprocess.run([program, "-xf", self.path("new/o.tar"), "-C", self.path(program)], check=True)
                self.assertEqual(self.tree(program), members)

    def test_the_same_documents_make_the_same_tar(self):
        self.make("in/a.vx", "in/b.vx")
        self.batch("in", *PACKED, "-j", "1")
        first = self.read("o.tar")
        os.utime(self.path("in/a.vx"), (1, 1))
        self.batch("in", *PACKED, "-j", "1", environment={"TZ": "Asia/Tokyo", "LC_ALL": "C"})
        self.assertEqual(self.read("o.tar"), first)
        self.batch("in", "--pack", "dated.tar", "-f", "svg", environment={"SOURCE_DATE_EPOCH": "86400"})
        for name, at in (("o.tar", 0), ("dated.tar", 86400)):
            with tarfile.open(self.path(name)) as tar:
                for member in tar:
                    self.assertEqual((member.mtime, member.mode, member.uid, member.gid, member.uname, member.gname),
                                     (at, 0o644, 0, 0, "", ""))

    def test_names_of_all_kinds(self):
        names = ["e\u0301te\u0301" * 20 + "/" + "\u65e5" * 60, "x" * 120 + "/" + "y" * 120, "a b'\"", os.fsdecode(b"b\xff\xfe")]
        self.make(*(f"in/{name}.vx" for name in names))
        for environment in ({"LC_ALL": "C"}, {"LC_ALL": "C.UTF-8"}):
            self.batch("in", *PACKED, environment=environment)
            self.assertEqual({os.fsencode(name) for name in self.members()}, {os.fsencode(name + ".svg") for name in names})
            self.assertEqual(len(self.index()), 4)
        self.drawn()
        self.assertEqual(self.drawn(), [])

    def test_names_of_lines_are_members(self):
        self.make("in/a.vx", "in/b.vx")
        lines = [{"input": "in/a.vx", "output": "./x/../y//a.svg"}, {"input": "in/b.vx", "output": "../b.svg"},
                 {"input": "in/b.vx", "output": "/b.svg"}, {"input": "in/b.vx", "output": "-"},
                 {"input": "in/a.vx", "output": "y/a.svg"}, {"input": "in/b.vx", "output": "in/a.vx", "format": "svg"}]
        results, _ = self.batch("--pack", "o.tar", status=1, stdin="".join(json.dumps(line) + "\n" for line in lines).encode())
        self.assertEqual([(r["exit"], r["outputs"]) for r in results],
                         [(0, ["y/a.svg"]), (1, []), (1, []), (1, []), (1, []), (0, ["in/a.vx"])])
        for result, told in zip(results[1:5], ('to "../b.svg", outside of the tar', 'to "/b.svg", outside of the tar',
                                               '"-" is standard output', 'to "y/a.svg", as document 1 is')):
            self.assertIn(told, result["error"])
        self.assertEqual(sorted(self.check()), ["in/a.vx", "y/a.svg"])

    def test_two_documents_for_one_member_are_told_before_anything_is_drawn(self):
        self.make("in/a.vx", "in/b/a.vx")
        self.assertIn('"in/a.vx" and "in/b/a.vx" would both be written to "a.svg"',
                      self.refused("batch", "in", *PACKED, "-o", "./{stem}.{ext}", status=2))
        self.assertEqual(self.files(), ["in"])

    def test_what_fails_is_no_member(self):
        self.make("in/a.vx")
        self.write("in/bad.vx", document("1 k\n"))
        self.batch("in", *PACKED, status=1)
        self.assertEqual(list(self.check()), ["a.svg"])
        self.batch("--pack", "none.tar", "-o", "{stem}.svg", stdin=b"")
        self.assertEqual((self.check("none.tar"), self.read("none.tar")), ({}, bytes(1024)))

    def test_equal_documents_share_a_member(self):
        self.make("in/a.vx")
        shutil.copy(self.path("in/a.vx"), self.path("in/b.vx"))
        results, _ = self.batch("in", *PACKED, "-o", "{hash}.{ext}")
        self.assertEqual(([r.get("sharesWith") for r in results], len(self.index()), len(self.check())), ([None, 1], 1, 1))

    def test_records_are_members_beside(self):
        self.make("in/a.vx", "in/b.vx")
        self.assertEqual(self.drawn("--premis"), ["in/a.vx", "in/b.vx"])
        members = self.check()
        self.assertEqual(sorted(members), ["a.svg", "a.svg.premis.xml", "b.svg", "b.svg.premis.xml"])
        self.assertIn(hashlib.sha256(members["a.svg"]).hexdigest().encode(), members["a.svg.premis.xml"])
        self.assertEqual(self.drawn("--premis"), [])
        os.remove(self.path("o.tar"))
        os.remove(self.path("journal"))
        self.drawn()
        self.assertEqual(self.drawn("--premis"), ["in/a.vx", "in/b.vx"])
        self.assertEqual(len(self.check()), 4)

    def test_a_shard_is_a_tar(self):
        self.make(*(f"in/{number}.vx" for number in range(12)))
        self.batch("in", *PACKED)
        parts = {}
        for number in (1, 2, 3):
            self.batch("in", "--pack", f"{number}.tar", "-f", "svg", "--shard", f"{number}/3")
            part = self.check(f"{number}.tar")
            self.assertFalse(set(part) & set(parts))
            parts.update(part)
        self.assertEqual(parts, self.check())

    # Each row has words and what the message must say.
    REFUSED = [
        (["--pack", "tar"], '--pack "tar": no name of a tar: name one, as pictures.tar'),
        (["--pack", ""], '--pack "": no name of a tar'), (["--pack", "o.tar.gz"], '--pack "o.tar.gz": no name of a tar'),
        (["--pack", "o.tar", "--bag", "bag"], "--pack: what is in a bag are files: leave --bag or --pack out"),
        (["--pack", "o.tar", "--report", "report"], "--pack: a catalogue leads to outputs that are files"),
        (["--pack", "o.tar", "--allow-outside"], "--pack: outputs lie in the tar: leave --allow-outside out"),
        (["--pack", "o.tar", "--journal", "o.tar.part"], 'would overwrite "o.tar.part", which is the journal'),
        (["--pack", "d.tar"], 'would overwrite "d.tar", which is a drawing'),
        (["--pack", "m.tar", "--manifest", "m.tar"], 'would overwrite "m.tar", which is a manifest'),
        (["--pack", "o.tar", "--merge-journals", "--journal", "j"], "--pack: journals are merged, and nothing is packed"),
    ]

    def test_what_does_not_go_with_it_is_told(self):
        self.make("in/a.vx", "d.tar")
        self.write("m.tar", b"d.tar\n")
        before = self.files()
        for words, told in self.REFUSED:
            with self.subTest(words=words):
                self.assertIn(told, self.refused("batch", "in", "-f", "svg", *words, status=2))
                self.assertEqual([name for name in self.files() if not name.startswith("o.tar.part")], before)

    def test_where_nothing_can_be_written_is_told_first(self):
        self.make("in/a.vx")
        os.mkdir(self.path("folder.tar"))
        os.mkfifo(self.path("pipe.tar"))
        for words, told in ((["--pack", "folder.tar"], "is a directory"), (["--pack", "pipe.tar"], "invalid argument"),
                            (["--pack", "none/o.tar", "--no-mkdir"], "no such file or directory")):
            self.assertIn(f"--pack {words[1]}: cannot be written, {told}: choose another place",
                          self.refused("batch", "in", "-f", "svg", *words, status=4))

    def test_a_link_is_written_through(self):
        self.make("in/a.vx", "far/x")
        self.write("far/o.tar", b"old")
        os.symlink("far/o.tar", self.path("o.tar"))
        self.batch("in", *PACKED)
        self.assertTrue(os.path.islink(self.path("o.tar")))
        self.assertEqual(list(self.check("far/o.tar")), ["a.svg"])

    def test_a_full_disk_costs_what_has_no_room_alone(self):
        self.make(*(f"in/{number}.vx" for number in range(12)))

        def limit():
            import resource
            resource.setrlimit(resource.RLIMIT_FSIZE, (6000, 6000))

        results, messages = self.batch("in", *PACKED, *JOURNAL, "-j", "1", status=4, preexec_fn=limit)
        done = [r["input"] for r in results if r["exit"] == 0]
        self.assertTrue(0 < len(done) < 12)
        self.assertRegex(results[-1]["error"], '--pack o.tar: its member ".*.svg" cannot be written, file too large: make room, and '
                         "go on with --resume --retry failed")
        self.assertIn("vx: --pack o.tar: cannot be written, file too large: make room, and go on with --resume", messages)
        self.assertNotIn("o.tar", self.files())
        self.assertEqual(set(self.drawn("--retry", "failed")), {r["input"] for r in results} - set(done))
        self.assertEqual(len(self.check()), 12)


class PackResumes(PackTest):
    NAMES = [f"in/{name}.vx" for name in "abcd"]

    def setUp(self):
        super().setUp()
        self.make(*self.NAMES)
        self.assertEqual(self.drawn("-j", "1"), self.NAMES)
        self.whole = self.check()

    def reopen(self, cut=0, tail=b"", lines=None):
        """Makes of the whole tar what a run leaves that is killed."""
        tar, index = self.read("o.tar")[:-1024], self.read("o.tar.jsonl").splitlines(keepends=True)
        self.write("o.tar.part", tar[:len(tar) - cut] + tail)
        self.write("o.tar.part.jsonl", b"".join(index[:lines]))
        os.remove(self.path("o.tar"))
        os.remove(self.path("o.tar.jsonl"))

    def test_what_is_done_is_passed_over_and_the_tar_left_alone(self):
        before = os.stat(self.path("o.tar"))
        self.assertEqual(self.drawn(), [])
        after = os.stat(self.path("o.tar"))
        self.assertEqual((before.st_ino, before.st_mtime_ns), (after.st_ino, after.st_mtime_ns))

    def test_what_comes_later_is_added(self):
        first = self.read("o.tar")
        self.make("in/e.vx")
        self.assertEqual(self.drawn(), ["in/e.vx"])
        self.assertTrue(self.read("o.tar").startswith(first[:-1024]))
        self.assertEqual(self.check(), {**self.whole, "e.svg": self.members()["e.svg"]})
        self.assertEqual(self.files(), ["in", "journal", "o.tar", "o.tar.jsonl"])

    def test_of_a_document_that_changed_the_last_counts(self):
        self.write("in/b.vx", document())
        self.assertEqual(self.drawn(), ["in/b.vx"])
        members = self.check()
        self.assertNotEqual(members["b.svg"], self.whole["b.svg"])
        self.assertEqual([line["member"] for line in self.index()], ["a.svg", "b.svg", "c.svg", "d.svg", "b.svg"])
        self.assertEqual(self.drawn(), [])

    def test_without_it_the_tar_begins_anew(self):
        os.remove(self.path("in/a.vx"))
        self.batch("in", *PACKED)
        self.assertEqual(sorted(self.check()), ["b.svg", "c.svg", "d.svg"])

    def test_a_torn_tail_is_cut(self):
        for tail in (b"", b"x", bytes(1024), b"y" * 5000):
            self.reopen(tail=tail)
            self.assertEqual(self.drawn(), [])
            self.assertEqual(self.check(), self.whole)
        with open(self.path("o.tar.jsonl"), "rb") as index:
            torn = index.read().splitlines(keepends=True)[-1]
        for cut in (1, len(torn) - 1):
            self.reopen()
            self.write("o.tar.part.jsonl", self.read("o.tar.part.jsonl")[:-cut])
            self.assertEqual(self.drawn(), ["in/d.vx"])
            self.assertEqual(self.check(), self.whole)

    def test_what_the_journal_has_and_the_tar_lost_is_done_again(self):
        for cut, lines, again in ((0, 2, self.NAMES[2:]), (1, None, self.NAMES[3:]), (600, None, self.NAMES[3:]),
                                  (1 << 20, None, self.NAMES), (0, 0, self.NAMES)):
            with self.subTest(cut=cut, lines=lines):
                tar = len(self.read("o.tar")) - 1024
                self.reopen(cut=min(cut, tar), lines=lines)
                self.assertEqual(self.drawn("-j", "1"), again)
                self.assertEqual(self.check(), self.whole)
                self.assertEqual(len(self.index()), 4)

    def test_what_the_tar_has_and_the_journal_lost_is_not_there_twice(self):
        lines = self.read("journal").splitlines(keepends=True)
        self.write("journal", b"".join(lines[:-2]))  # the last document was begun, and done
        self.reopen()
        before = self.read("o.tar.part")
        self.assertEqual(self.drawn(), ["in/d.vx"])
        self.assertEqual(self.read("o.tar")[:-1024], before)
        self.assertEqual(self.check(), self.whole)

    def test_members_are_read_when_that_is_wanted(self):
        line = self.index()[1]
        tar = bytearray(self.read("o.tar"))
        tar[line["offset"] + 5] ^= 1
        self.write("o.tar", tar)
        self.assertEqual(self.drawn(), [])
        self.assertEqual([r["input"] for r in self.batch("in", *PACKED, *JOURNAL[:2], "--resume=verify")[0]
                          if not r.get("doneBefore")], ["in/b.vx"])
        self.assertEqual(self.members(), self.whole)

    def test_an_index_without_its_name_gets_it(self):
        os.rename(self.path("o.tar.jsonl"), self.path("o.tar.part.jsonl"))  # killed between the two
        self.assertEqual(self.drawn(), [])
        self.assertEqual(self.check(), self.whole)
        self.assertEqual(self.files(), ["in", "journal", "o.tar", "o.tar.jsonl"])

    def test_a_tar_that_is_gone_or_has_no_index_is_made_again(self):
        for name in ("o.tar", "o.tar.jsonl"):
            os.remove(self.path(name))
            self.assertEqual(self.drawn(), self.NAMES)
            self.assertEqual(self.check(), self.whole)

    def test_an_index_that_makes_no_sense_is_told(self):
        line = self.index()[2]
        for wrong in (b"{}\n", b"no\n", *((json.dumps({**line, **change}) + "\n").encode() for change in
                                           ({"offset": 3}, {"offset": 512}, {"sha256": "x"}, {"size": "1"}))):
            lines = self.read("o.tar.jsonl").splitlines(keepends=True)
            before = self.read("o.tar")
            self.write("wrong.tar.jsonl", b"".join([*lines[:2], wrong, *lines[3:]]))
            self.write("wrong.tar", before)
            told = self.refused("batch", "in", "--pack", "wrong.tar", "-f", "svg", *JOURNAL, status=2)
            self.assertIn(f"--pack wrong.tar: the line at byte {sum(map(len, lines[:2]))} of its index makes no sense", told)
            self.assertEqual(self.read("wrong.tar"), before)

    def test_a_huge_size_is_what_the_tar_lost(self):
        lines = self.read("o.tar.jsonl").splitlines(keepends=True)
        self.write("o.tar.jsonl", b"".join(lines[:3]) + (json.dumps({**self.index()[3], "size": 2**64 - 1}) + "\n").encode())
        self.assertEqual(self.drawn(), ["in/d.vx"])
        self.assertEqual(self.check(), self.whole)

    def test_one_run_at_a_time_writes_to_it(self):
        process = self.start("batch", "--pack", "p.tar", "-o", "{stem}.svg", "-", stdin=subprocess.PIPE)
        process.stdin.write(b"in/a.vx\n")
        process.stdin.flush()
        process.stdout.readline()
        for more in ([], ["--journal", "other", "--resume"]):
            self.assertEqual(self.refused("batch", "in", "--pack", "p.tar", "-f", "svg", *more, status=4),
                             "vx: --pack p.tar: another run writes to it: wait for its end, or choose another name")
        self.assertNotIn("p.tar", self.files())
        process.communicate(timeout=60)
        self.assertEqual(list(self.check("p.tar")), ["a.svg"])

    def interrupted(self, *words, how=signal.SIGTERM):
        process = self.start("batch", "--pack", "p.tar", "-o", "{stem}.svg", "-", *words, stdin=subprocess.PIPE)
        process.stdin.write(b"in/a.vx\n")
        process.stdin.flush()
        process.stdout.readline()
        process.send_signal(how)
        errors = process.communicate(timeout=60)[1].decode()
        self.assertEqual(process.returncode, 130)
        return errors

    def test_an_interrupt_leaves_what_can_be_gone_on_with(self):
        for how in (signal.SIGTERM, signal.SIGINT):
            self.assertIn('--pack p.tar: is not whole yet: what is done is in "p.tar.part"', self.interrupted("--journal", "j", how=how))
            results, _ = self.batch("in", "--pack", "p.tar", "-o", "{stem}.svg", "--journal", "j", "--resume", "-j", "1")
            self.assertEqual([r.get("doneBefore") for r in results], [True, None, None, None])
            self.assertEqual(self.check("p.tar"), self.whole)
            for name in ("j", "p.tar"):
                os.remove(self.path(name))

    def test_without_a_journal_it_leaves_nothing(self):
        before = self.files()
        self.assertIn("--pack p.tar: is not whole yet, and nothing is left of it", self.interrupted())
        self.assertEqual(self.files(), before)


class PackKills(PackTest):
    DOCUMENTS, KILLS = (10000, 50) if SLOW else (200, 6)

    def test_a_run_that_is_killed_again_and_again_comes_to_the_same(self):
        chance = announced_chance()
        self.make(*(f"in/{number}.vx" for number in range(self.DOCUMENTS)))
        words = ["batch", "in", "-f", "svg", "--summary", "none"]
        self.finish(*words, "-o", "whole/")
        killed = 0
        for left in range(self.KILLS, 0, -1):
            process = self.start(*words, "--pack", "o.tar", *JOURNAL, "-j", "2", stdout=subprocess.DEVNULL)
            done = self.size()
            goal = done + chance.randrange(max((self.DOCUMENTS * 1536 - done) // left * 3 // 2, 1))
            while process.poll() is None and self.size() < goal:
                time.sleep(0.0005)
            process.kill()
            process.communicate()
            killed += process.returncode == -signal.SIGKILL
            self.assertNotIn("o.tar", self.files() if process.returncode else [])
        self.finish(*words, "--pack", "o.tar", *JOURNAL)
        self.assertGreater(killed, self.KILLS // 8)  # the others were done before
        self.assertEqual(self.check(), self.tree("whole"))
        self.assertEqual(len(self.index()), self.DOCUMENTS)  # each is there once
        offsets = {line["member"]: line["sha256"] for line in self.index()}
        for line in map(json.loads, self.read("journal").splitlines()):
            for output in line.get("outputs", []):
                self.assertEqual(offsets[output["path"]], output["sha256"])

    def finish(self, *words):
        process = self.start(*words, stdout=subprocess.DEVNULL)
        errors = process.communicate(timeout=3600)[1]
        self.assertEqual((process.returncode, errors), (0, b""))

    def size(self):
        return os.path.getsize(self.path("o.tar.part")) if os.path.exists(self.path("o.tar.part")) else 0


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
