"""vx batch --report makes a catalogue that a person looks at, and a table of the same."""
import csv
import io
import json
import os
import re
import shutil
import subprocess
import sys
import unittest

from vxcommand import CommandTest, LEFT_HALF, Png, document

CHROMIUM = shutil.which("chromium")
HOSTILE = "</script><img src=x onerror=document.title=1>"
TEXT = "0 g\n0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_Nowhere 12 Tf\n(Hand) Tx\nTO\n"


def titled(title, body=LEFT_HALF):
    text = title.replace("(", "\\(").replace(")", "\\)")
    return document(body).replace(b"A \\(small\\) square", text.encode("latin-1"))


class ReportTest(CommandTest):
    def batch(self, *words, status=0, **options):
        output, messages = self.run_vx("batch", "-q", *words, status=status, **options)
        return [json.loads(line) for line in output.splitlines()], messages

    def entries(self, folder="report"):
        """What the page is given: each piece of its data is a call with a list."""
        pieces = int(re.fullmatch(rb"begin\((\d+)\);\n", self.read(f"{folder}/data/pieces.js"))[1])
        entries = []
        for piece in range(pieces):
            text = self.read(f"{folder}/data/{piece}.js").decode()
            entries += json.loads(re.fullmatch(r"add\((\[.*),\]\);\n", text, re.DOTALL)[1] + "]")
        return entries

    def table(self, folder="report"):
        return list(csv.DictReader(io.StringIO(self.read(f"{folder}/catalogue.csv").decode(), newline="")))


class Report(ReportTest):
    def setUp(self):
        super().setUp()
        self.write("a.vx", titled("=1+1", TEXT))
        self.write("b.vx", titled(HOSTILE, LEFT_HALF + "0 1 1 0 (Red Ink) 0.2 x\n0 0 m\n9 9 l\n9 0 l\nf\n"))
        self.write("bad.vx", titled("bad", "1 k\n"))
        self.write("cut.vx", document(end=""))
        self.write("list", b"b.vx\nbad.vx\na.vx\nnone.vx\n{\ncut.vx\n")

    def test_it_has_all_documents_in_their_order(self):
        for words in ([], ["--unordered", "-j", "3"]):
            self.batch("--manifest", "list", "-o", "out/", "--report", "report", *words, status=1)
            entries = self.entries()
            self.assertEqual([entry["number"] for entry in entries], [1, 2, 3, 4, 5, 6])
            self.assertEqual([entry["input"] for entry in entries], ["b.vx", "bad.vx", "a.vx", "none.vx", "", "cut.vx"])
            self.assertEqual([entry["thumbnail"] for entry in entries], [True, False, True, False, False, True])
            b, bad, a, none, line, cut = entries
            self.assertEqual((b["title"], b["inks"], b["outputs"]), (HOSTILE, ["CMYK", "Red Ink"], ["../out/b.pdf"]))
            self.assertEqual([round(side, 1) for side in b["size"]], [25.4, 12.7])
            self.assertEqual([(font["asked"], font["match"]) for font in a["fonts"]], [("Nowhere", "substitute")])
            self.assertIn('"k" wants 4 numbers', bad["damage"][0])
            self.assertEqual((bad["status"], bad["outputs"]), ("failed", []))
            self.assertIn("no such file", none["error"])
            self.assertIn("line 5: ", line["error"])
            self.assertEqual(cut["damage"], ["cut short"])
            self.assertIn("cut short", cut["warnings"][0])

    def test_thumbnails_are_small_pictures_and_no_outputs(self):
        told, _ = self.batch("a.vx", "b.vx", "-f", "png", "-b", "none", "--dpi", "600", "-o", "out/", "--report", "report")
        self.assertEqual([line["outputs"] for line in told], [["out/a.png"], ["out/b.png"]])
        for number in (1, 2):
            picture = Png(self.read(f"report/thumbnails/0/{number}.png"))
            self.assertEqual((picture.width, picture.height, picture.channels), (192, 96, 3))
        plain, _ = self.batch("a.vx", "b.vx", "-f", "png", "-b", "none", "--dpi", "600", "-o", "out/")
        self.assertEqual(told, plain)

    def test_the_table_has_the_same_and_no_formulas(self):
        self.batch("--manifest", "list", "-o", "out/", "--report", "report", status=1)
        rows = self.table()
        self.assertEqual([row["number"] for row in rows], list("123456"))
        self.assertEqual(rows[0]["title"], HOSTILE)
        self.assertEqual((rows[2]["title"], rows[2]["width mm"], rows[2]["fonts"]), ("'=1+1", "25.40", "Nowhere"))
        self.assertRegex(rows[2]["fonts that were not there"], "^Nowhere -> .")
        self.assertEqual((rows[0]["outputs"], rows[0]["thumbnail"]), ("../out/b.pdf", "thumbnails/0/1.png"))

    def test_a_run_that_goes_on_keeps_what_is_there(self):
        words = ["--manifest", "list", "-o", "out/", "--report", "report", "--journal", "journal"]
        self.batch(*words, status=1)
        entries, table = self.entries(), self.read("report/catalogue.csv")
        told, _ = self.batch(*words, "--resume", status=1)
        self.assertEqual([line.get("doneBefore", False) for line in told], [True, True, True, True, False, True])
        self.assertEqual(self.entries()[0], entries[0])
        self.assertEqual([entry["number"] for entry in self.entries()], [1, 2, 3, 4, 5, 6])
        # An entry that was torn, or a picture that is gone, is made again; the rest is not.
        self.write("report/entries/0/1.json", self.read("report/entries/0/1.json")[:30])
        os.remove(self.path("report/thumbnails/0/3.png"))
        told, _ = self.batch(*words, "--resume", status=1)
        self.assertEqual([line.get("doneBefore", False) for line in told], [False, True, False, True, False, True])
        self.assertEqual([entry["thumbnail"] for entry in self.entries()], [True, False, True, False, False, True])
        self.assertEqual(self.read("report/catalogue.csv").count(b"\r\n"), table.count(b"\r\n"))

    def test_a_catalogue_begins_anew_and_one_of_later_is_made_whole(self):
        words = ["-o", "out/", "--journal", "journal"]
        self.batch("a.vx", "b.vx", *words)
        told, _ = self.batch("a.vx", "b.vx", *words, "--resume", "--report", "report")
        self.assertEqual([line.get("doneBefore", False) for line in told], [False, False])
        self.assertEqual(len(self.entries()), 2)
        self.batch("b.vx", "-o", "out/", "--report", "report")
        self.assertEqual([entry["input"] for entry in self.entries()], ["b.vx"])
        self.assertEqual(os.listdir(self.path("report/thumbnails/0")), ["1.png"])

    def test_there_is_a_piece_for_every_thousand(self):
        self.write("many", b"none.vx\n" * 2001)
        self.batch("--manifest", "many", "-o", "out/{number}.pdf", "--report", "report", status=1)
        self.assertEqual(sorted(os.listdir(self.path("report/data"))), ["0.js", "1.js", "2.js", "pieces.js"])
        self.assertEqual([entry["number"] for entry in self.entries()], list(range(1, 2002)))

    def test_what_is_wrong_is_told_before_anything_is_made(self):
        self.write("file", b"")
        os.mkdir(self.path("full"))
        self.write("full/letter", b"dear")
        before = self.files()
        for folder, text in (("", '--report "": no name of a folder: name one that is new or empty'),
                             ("file", '--report "file": not a folder: name one that is new or empty'),
                             ("full", "--report full: holds something that is no catalogue: name a folder that is new or empty")):
            self.assertEqual(self.refused("batch", "a.vx", "-o", "out/", "--report", folder, status=2), "vx: " + text)
        self.refused("batch", "--merge-journals", "a", "--journal", "b", "--report", "report", status=2)
        self.refused("batch", "a.vx", "b.vx", "-o", "same.pdf", "--report", "report", status=2)
        self.assertEqual((self.files(), os.listdir(self.path("full"))), (before, ["letter"]))


@unittest.skipUnless(CHROMIUM, "chromium is not installed")
class ReportPage(ReportTest):
    def shown(self, script):
        """The page after the script, which is put behind its own."""
        page = self.read("report/index.html").decode()
        self.write("report/index.html", (page + f"<script>{script}</script>").encode())
        result = subprocess.run(
            [CHROMIUM, "--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1200,900", "--virtual-time-budget=5000",
             "--user-data-dir=" + self.path("profile"), "--dump-dom", "file://" + self.path("report/index.html")],
            capture_output=True, text=True, timeout=120, check=True)
        return result.stdout

    def test_it_searches_sorts_and_shows_what_is_in_sight(self):
        lines = []
        for i in range(60):
            self.write(f"{i}.vx", titled(HOSTILE if i == 7 else f"drawing {99 - i}"))
            lines.append(f"{i}.vx")
        self.write("list", "\n".join(lines).encode())
        self.batch("--manifest", "list", "-o", "out/", "--report", "report")
        shown = self.shown("setTimeout(() => { window.told = [count.textContent, list.children.length, document.title];"
                           "byId('head').children[1].firstChild.click(); told.push(shown[0].title, shown[1].title);"
                           "search.value = ' DRAWING 97 '; choose(); told.push(shown.length);"
                           "search.value = ''; choose(); select(59); told.push(document.activeElement.dataset.place);"
                           "const end = document.createElement('p'); end.id = 'told'; end.textContent = JSON.stringify(told); document.body.append(end); }, 2000)")
        told = json.loads(re.search(r'<p id="told">(.*?)</p>', shown)[1].replace("&lt;", "<").replace("&gt;", ">"))
        self.assertEqual(told[0], "60 of 60")
        self.assertLess(told[1], 30)
        # The 60 titles go from 40 to 99, and that of the seventh is markup.
        self.assertEqual(told[2:], ["Catalogue of drawings", HOSTILE, "drawing 40", 1, "59"])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
