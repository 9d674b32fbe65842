"""vx verify compares an output with what is made of the drawing now."""
import hashlib
import json
import os
import sys
import unittest

from vxcommand import CommandTest, LEFT_HALF, document


class Verify(CommandTest):
    def setUp(self):
        super().setUp()
        text = "0 g\n0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_Nowhere 12 Tf\n(Hand) Tx\nTO\n"
        self.write("a.vx", document(text))
        self.write("b.vx", document(LEFT_HALF))

    def verify(self, *words, status=0, **options):
        return self.run_vx("verify", "-q", *words, status=status, **options)[0].decode().splitlines()

    def test_what_was_made_is_the_same_in_every_format(self):
        for kind in ("pdf", "svg", "png", "tif"):
            self.run_vx("render", "-q", "a.vx", "-o", f"a.{kind}")
            before = self.files()
            lines = self.verify("a.vx", f"a.{kind}")
            self.assertRegex(lines[0], rf"^a\.{kind}: is what vx \d+\.\d+\.\d+ makes of a\.vx$")
            self.assertEqual(lines[1:3], ["  sha256       " + hashlib.sha256(self.read(f"a.{kind}")).hexdigest(),
                                          "  page box     0 0 72 36"])
            self.assertRegex(lines[3], "^  substitute   Nowhere: .")
            self.assertEqual(self.files(), before)  # nothing is written
        self.assertEqual(len(self.verify("-", "a.svg", stdin=self.read("a.vx"))), 4)

    def test_anything_else_is_not(self):
        self.run_vx("render", "b.vx", "-o", "b.png", "--fit", "9")
        whole = self.read("b.png")
        self.verify("b.vx", "b.png", "--fit", "9")
        for data, words in ((whole, ["--fit", "8"]), (whole, ["--fit", "9", "-b", "black"]), (whole + b"x", ["--fit", "9"]),
                            (whole[:-1], ["--fit", "9"]), (b"", ["--fit", "9"])):
            self.write("b.png", data)
            lines = self.verify("b.vx", "b.png", *words, status=3)
            self.assertIn("b.png: is not what vx ", lines[0])
            self.assertEqual(lines[1], "  sha256       " + hashlib.sha256(data).hexdigest())
            self.assertIn("  expected     ", lines[2])
            self.assertEqual(self.read("b.png"), data)

    def test_json(self):
        self.run_vx("render", "b.vx", "-o", "b.dat", "-f", "svg", "--box", "0,0,9,9")
        told = json.loads(self.verify("b.vx", "b.dat", "-f", "svg", "--box", "0,0,9,9", "--json")[0])
        digest = hashlib.sha256(self.read("b.dat")).hexdigest()
        told.pop("version")
        self.assertEqual(told, {"input": "b.vx", "output": "b.dat", "same": True, "sha256": digest, "expected": digest,
                                "box": [0, 0, 9, 9], "substitutes": []})

    def test_what_cannot_be_compared_is_told(self):
        self.write("bad.vx", document("1 k\n"))
        self.write("b.png", b"")
        os.mkdir(self.path("folder"))
        for words, told, status in (
                (["b.vx"], "one name is given: name a drawing and its output", 2),
                (["b.vx", "b.png", "b.png"], "more than two names are given", 2),
                (["b.vx", "-"], "an output on standard input cannot be compared", 2),
                (["b.vx", "b.png", "-f", "png,svg"], "--format png,svg: one output has one format", 2),
                (["b.vx", "b.png", "--pdf-x", "x3"], "--pdf-x is for pdf", 2),
                (["b.vx", "none.png"], "none.png: no such file: check the name", 1),
                (["b.vx", "folder"], "folder: is a directory: name a file in it", 1),
                (["none.vx", "b.png"], "none.vx: no such file", 1),
                (["bad.vx", "b.png"], "bad.vx: malformed", 1)):
            with self.subTest(words=words):
                self.assertIn(told, self.refused("verify", *words, status=status))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
