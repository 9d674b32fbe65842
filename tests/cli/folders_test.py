"""vx batch looks through folders, makes those of its outputs, and sees before it draws that two documents would be one output."""
import gzip
import hashlib
import json
import os
import subprocess
import sys
import unittest

from vxcommand import CommandTest, document

SMALL = ["-f", "png", "--fit", "1"]


class BatchTest(CommandTest):
    def batch(self, *words, status=0, **options):
        """Returns the results and the messages."""
        output, messages = self.run_vx("batch", *SMALL, *words, status=status, **options)
        return [json.loads(line) for line in output.splitlines()], messages

    def make(self, *names, data=None):
        for name in names:
            os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
            self.write(name, document() if data is None else data)

    def tree(self, folder):
        """Returns the files below the folder."""
        return sorted(os.path.relpath(os.path.join(at, name), self.path(folder))
                      for at, _, names in os.walk(self.path(folder)) for name in names)


class Folders(BatchTest):
    def setUp(self):
        super().setUp()
        self.make("in/b/deep/x.vx", "in/b/no extension", "in/a.vx", "in/c.vx")
        self.make("in/b/readme.vx", data=b"no drawing, whatever its name\n")

    DOCUMENTS = ["in/a.vx", "in/b/deep/x.vx", "in/b/no extension", "in/c.vx"]

    def inputs(self, *words, **options):
        return [result["input"] for result in self.batch(*words, **options)[0]]

    def test_drawings_are_found_by_what_is_in_them(self):
        results, messages = self.batch("in", "-o", "{namehash}.png")
        self.assertEqual([(r["number"], r["input"], "manifest" in r) for r in results],
                         [(i + 1, name, False) for i, name in enumerate(self.DOCUMENTS)])
        self.assertEqual(messages, [])

    def test_the_tree_is_mirrored(self):
        outputs = ["a.png", "b/deep/x.png", "b/no extension.png", "c.png"]
        for number, pattern in enumerate(("out/", "{relative}/{stem}.{ext}", "{relative}/{stem}.png")):
            folder = f"out{number}"
            results, _ = self.batch("in/", "-o", f"{folder}/{pattern.removeprefix('out/')}")
            self.assertEqual([r["outputs"] for r in results], [[f"{folder}/{name}"] for name in outputs])
            self.assertEqual(self.tree(folder), outputs)
        os.mkdir(self.path("there"))
        self.batch("in", "-o", "there")
        self.assertEqual(self.tree("there"), outputs)

    def test_documents_that_are_named_are_in_no_folder(self):
        results, _ = self.batch("in/c.vx", "in/b", "-o", "{relative}/{stem}.png")
        self.assertEqual([r["outputs"] for r in results], [["c.png"], ["deep/x.png"], ["no extension.png"]])

    def test_folders_are_made_unless_that_is_unwanted(self):
        results, messages = self.batch("in", "-o", "out/{relative}/", "--no-mkdir", status=4)
        self.assertEqual([r["status"] for r in results], ["not written"] * 4)
        self.assertIn("vx: out/b/deep/x.png: no such folder: make it first", messages)
        self.assertEqual(self.files(), ["in"])
        results, _ = self.batch("in/c.vx", "-o", "in/a.vx/c.png", status=4)
        self.assertIn("no such folder", results[0]["error"])

    def test_all_files_are_told_of_when_that_is_wanted(self):
        results, _ = self.batch("in", "-o", "out/", "--all-files", status=1)
        self.assertEqual([r["input"] for r in results], [*self.DOCUMENTS[:3], "in/b/readme.vx", "in/c.vx"])
        self.assertEqual([r["exit"] for r in results], [0, 0, 0, 1, 0])
        self.assertIn("not a VX document", results[3]["error"])

    def test_what_the_run_writes_into_a_folder_is_none_of_its_documents(self):
        for wants_all in ([], ["--all-files"]):
            self.assertEqual(len(self.inputs("in", "-o", "in/{relative}/z-{stem}.png", "-j", "1", *wants_all,
                                             status=len(wants_all))), 4 + len(wants_all))
            for name in self.tree("in"):
                if name.endswith(".png"):
                    os.remove(self.path(os.path.join("in", name)))

    def test_links_are_told_of_and_not_followed(self):
        os.symlink("..", self.path("in/b/around"))
        os.symlink("../c.vx", self.path("in/b/file"))
        os.symlink("in", self.path("link"))
        results, messages = self.batch("link", "-o", "out/")
        self.assertEqual([r["input"] for r in results], [name.replace("in/", "link/", 1) for name in self.DOCUMENTS])
        self.assertEqual(messages, [f"vx: link/b/{name}: warning: a symbolic link, which is not followed: name what it "
                                    "leads to, if it is to be drawn" for name in ("around", "file")])

    def test_pipes_and_devices_are_passed_over(self):
        os.mkfifo(self.path("in/pipe"))
        self.assertEqual(self.inputs("in", "-o", "out/", "--all-files", status=1)[-1], "in/c.vx")

    def test_packed_files_that_are_no_drawings_are_passed_over(self):
        self.make("in/p.gz", data=gzip.compress(b"a list of things"))
        self.make("in/q.vx.gz", data=gzip.compress(document()))
        results, messages = self.batch("in", "-o", "out/")
        self.assertEqual([r["input"] for r in results], [*self.DOCUMENTS, "in/q.vx.gz"])
        self.assertEqual(messages, [])
        self.assertIn("in/p.gz", self.inputs("in", "-o", "out/", "--all-files", status=1))

    @unittest.skipIf(os.geteuid() == 0, "nothing is forbidden to root")
    def test_what_may_not_be_read_is_told(self):
        os.chmod(self.path("in/b"), 0)
        os.chmod(self.path("in/c.vx"), 0)
        results, _ = self.batch("in", "-o", "out/", status=1)
        self.assertEqual([(r["input"], r["exit"]) for r in results], [("in/a.vx", 0), ("in/b", 1), ("in/c.vx", 1)])
        self.assertIn("the folder cannot be looked through, permission denied: check who may read it",
                      results[1]["error"])
        os.chmod(self.path("in/b"), 0o700)

    def test_an_empty_folder_is_nothing(self):
        os.mkdir(self.path("empty"))
        self.assertEqual(self.batch("empty", "-o", "out/"), ([], []))

    def test_wrong_words(self):
        for words, told in ((["in"], "no output: add -o and a folder, as -o pictures/"),
                            (["in/a.vx", "--all-files", "-o", "x.png"], "--all-files: no folder to look through"),
                            (["--files0-from", "", "-o", "x.png"], "--files0-from: the name is empty"),
                            (["-", "--files0-from", "-", "-o", "x.png"], "- is given twice"),
                            (["in", "-o", "{hash:0}.png"], "{hash:0}: not a number of digits"),
                            (["in", "-o", "{namehash:60}{namehash:5}.png"], "{namehash:5}: not a number of digits")):
            with self.subTest(words=words):
                self.assertIn(told, self.refused("batch", *words, status=2))
        self.assertEqual(self.files(), ["in"])

    # Each row has what makes two documents share an output, and how the message ends.
    SHARED = [
        ((), "out/{stem}.png", '"in/a.vx" and "in/b/a.vx" would both be written to "out/a.png": name each after its '
         "folder, as -o 'out/{relative}/{stem}.{ext}'"),
        ((), "out/x.png", '"in/a.vx" and "in/b/a.vx" would both be written to "out/x.png": name each after its folder'),
        (("in/c.vx.gz",), "out/", '"in/c.vx" and "in/c.vx.gz" would both be written to "out/c.png": name each after its '
         "number, as -o 'out/{stem}-{number}.{ext}'"),
        (("in/c.vx.gz", "in/b/c.vx"), "out/{stem}.png", 'to "out/a.png", and so would others to 1 more: '),
    ]

    def test_two_documents_for_one_output_are_told_before_anything_is_drawn(self):
        for more, pattern, told in self.SHARED:
            with self.subTest(pattern=pattern):
                self.make("in/b/a.vx", *more)
                self.assertIn(told, self.refused("batch", "in", *SMALL, "-o", pattern, status=2))
                self.assertEqual(self.files(), ["in"])
                for name in more:
                    os.remove(self.path(name))

    def test_so_are_those_of_manifests(self):
        self.write("list", b"in/a.vx\nnone.vx\nin/c.vx\n")
        told = ('vx: "in/a.vx" and "none.vx" would both be written to "x.png": name each after its input, as -o '
                "'{dir}/{stem}.{ext}', or {number}")
        self.assertEqual(self.refused("batch", "--manifest", "list", *SMALL, "-o", "x.png", status=2), told)
        with open(self.path("list"), "rb") as stdin:
            self.assertEqual(self.refused("batch", *SMALL, "-o", "x.png", status=2,
                                          preexec_fn=lambda: os.dup2(stdin.fileno(), 0)), told)
        self.assertEqual(self.files(), ["in", "list"])
        results, _ = self.batch("-o", "x.png", status=1, stdin=b"in/a.vx\nin/c.vx\n")  # a pipe comes bit by bit
        self.assertEqual([r["exit"] for r in results], [0, 1])


class Names(BatchTest):
    def setUp(self):
        super().setUp()
        self.make("a.vx", "b.vx")
        self.make("c.vx", data=document("n\n"))
        self.digests = {name: hashlib.sha256(self.read(name)).hexdigest() for name in self.files()}

    def test_outputs_are_named_after_digests(self):
        results, _ = self.batch("a.vx", "c.vx", "-o", "{hash:2}/{hash:2}/{hash}-{namehash:5}.png")
        digests = [(self.digests[name], hashlib.sha256(name.encode()).hexdigest()) for name in ("a.vx", "c.vx")]
        self.assertEqual([r["outputs"] for r in results],
                         [[f"{one[:2]}/{one[2:4]}/{one}-{name[:5]}.png"] for one, name in digests])
        self.run_vx("render", "c.vx", "-o", "{hash:3}/{stem}-{number}.png", *SMALL)
        self.assertEqual(self.tree(digests[1][0][:3]), ["c-1.png"])

    def test_equal_documents_share_what_is_named_after_their_digest(self):
        results, messages = self.batch("a.vx", "c.vx", "b.vx", "-o", "{hash}.png")
        self.assertEqual([r.get("sharesWith") for r in results], [None, None, 1])
        self.assertEqual([r["exit"] for r in results], [0] * 3)
        self.assertEqual(messages, ["vx: b.vx: warning: is equal to document 1, and shares its output"])
        self.assertEqual(len(set(self.digests.values())), len([name for name in self.files() if name.endswith(".png")]))

    def test_equal_documents_that_are_drawn_in_two_ways_do_not(self):
        lines = [{"input": "a.vx", "fit": 1}, {"input": "b.vx", "fit": 2}]
        output, messages = self.run_vx("batch", "-o", "{hash}.png", status=1,
                                       stdin="".join(json.dumps(line) + "\n" for line in lines).encode())
        self.assertEqual([json.loads(line)["exit"] for line in output.splitlines()], [0, 1])
        self.assertIn("as document 1 is", messages[0])

    def test_what_has_no_digest_is_told(self):
        results, _ = self.batch("none.vx", "-o", "{hash}.png", status=1)
        self.assertEqual(results[0]["error"], "no such file: check the name")
        self.assertIn("{hash}: standard input has no digest",
                      self.refused("render", "-", "-o", "{hash}.png", status=2, stdin=document()))
        self.assertIn('{hash}: "none.vx": no such file', self.refused("render", "none.vx", "-o", "{hash}.png", status=2))

    def test_numbers_are_those_of_the_results(self):
        results, _ = self.batch("-", "-o", "{number}.png", stdin=b"a.vx\n\nb.vx\n")
        self.assertEqual([(r["number"], r["outputs"]) for r in results], [(1, ["1.png"]), (2, ["2.png"])])

    def test_lists_of_names_that_end_in_nul(self):
        self.write("list", b"a.vx\0c.vx\0")
        for words, stdin in ((["--files0-from", "list"], b""), (["--files0-from", "-"], b"a.vx\0c.vx")):
            results, _ = self.batch(*words, "-o", "{stem}.png", stdin=stdin)
            self.assertEqual([(r["manifest"], r["input"]) for r in results], [(words[1], "a.vx"), (words[1], "c.vx")])
        self.write("lines", b"b.vx\n")
        results, _ = self.batch("--manifest", "lines", "--files0-from", "list", "-o", "{stem}.png")
        self.assertEqual([r["input"] for r in results], ["b.vx", "a.vx", "c.vx"])
        results, _ = self.batch("--files0-from", "none", "-o", "{stem}.png", status=1)
        self.assertEqual(results[0]["error"], "none: no such file: check the name")

    def test_render_makes_the_folders_of_patterns_alone(self):
        self.run_vx("render", "a.vx", *SMALL, "-o", "new/deep/{stem}.png")
        self.run_vx("render", "a.vx", *SMALL, "-o", "new/other/")
        self.assertEqual(self.tree("new"), ["deep/a.png", "other/a.png"])
        for words in (["-o", "no/a.png"], ["-o", "no/{stem}.png", "--no-mkdir"]):
            self.assertIn("no such folder", self.refused("render", "a.vx", *SMALL, *words, status=4))
        self.assertNotIn("no", self.files())


class Many(BatchTest):
    """Manifests that are longer than what is looked at ahead and remembered. Most documents do not exist, which is quick."""
    REMEMBERED = 100000

    def last_results(self):
        with open(self.path("results"), "rb") as results:
            results.seek(-10000, os.SEEK_END)
            return results.read().splitlines()[-2:]

    def run_lines(self, lines):
        """Returns the last two results and the most memory that was taken, in KiB."""
        with open(self.path("list"), "w", encoding="ascii") as file:
            file.writelines(line + "\n" for line in lines)
        with open(self.path("results"), "wb") as results:
            process = self.start("batch", "--manifest", "list", "-q", "-j", "1", *SMALL, "-o", "out/{stem}.png", stdout=results,
                                 stderr=subprocess.DEVNULL)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        return [json.loads(line) for line in self.last_results()], usage.ru_maxrss

    def test_two_documents_for_one_output_are_refused_beyond_as_well(self):
        self.make("./a.vx", "./b.vx", "out/old.png")
        self.write("out/a.png", b"old")  # what was there before the run is replaced
        def lines(last, count=1):  # all of them at once would be taken for memory of the command, which begins as our copy
            yield from (f"none/{number}" for number in range(count * self.REMEMBERED))
            yield from last

        results, once = self.run_lines(lines(["a.vx", '{"input": "b.vx", "output": "out/../out/a.png"}']))
        self.assertEqual([r["exit"] for r in results], [0, 4])
        self.assertIn("another document of this run was written to it", results[1]["error"])
        _, twice = self.run_lines(lines([], 2))
        self.assertLess(twice - once, 2048)  # the names alone are more


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
