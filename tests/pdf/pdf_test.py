"""PDF output, judged by other people's programs: qpdf, poppler, MuPDF and Ghostscript."""
import collections
import os
import re
import unittest
import unittest.mock

import pictures
from pictures import run
from vxcommand import CommandTest, document, sample, sample_names

HERE = os.path.dirname(os.path.abspath(__file__))


class PdfTest(CommandTest):
    def pdf(self, source, *options, name="out.pdf"):
        self.run_vx("render", "-q", source, "-o", name, *options)
        return self.path(name)

    def pdf_of(self, body, *options, **header):
        self.write("in.vx", document(body, **header))
        return self.pdf("in.vx", *options)


class Structure(PdfTest):
    def test_every_sample_is_a_sound_file(self):
        for name in sample_names():
            with self.subTest(name):
                report = run("qpdf", "--check", self.pdf(sample(name))).decode()
                self.assertIn("No syntax or stream encoding errors found", report)
                self.assertNotIn("WARNING", report)

    def test_the_same_document_gives_the_same_bytes(self):
        for name in ("text-vertical", "gradients", "poster"):
            self.pdf(sample(name), name="one.pdf")
            self.pdf(sample(name), name="two.pdf")
            self.assertEqual(self.read("one.pdf"), self.read("two.pdf"), name)

    def test_the_page_is_the_documents_box(self):
        pdf = self.pdf_of("0 g\n0 0 m\n9 9 L\nS\n", box="-5 10 67 46")
        report = run("pdfinfo", "-box", pdf).decode()
        self.assertRegex(report, r"MediaBox: +-5\.00 +10\.00 +67\.00 +46\.00")
        self.assertRegex(report, r"TrimBox: +-5\.00 +10\.00 +67\.00 +46\.00")

    def test_title_and_creator_are_the_documents(self):
        report = run("pdfinfo", self.pdf_of("")).decode()
        self.assertRegex(report, r"Title: +A \(small\) square\n")
        self.assertRegex(report, r"Creator: +by hand\n")
        self.assertNotIn("CreationDate", report)


    def test_a_blend_is_one_shading(self):
        plain = run("qpdf", "--qdf", "--object-streams=disable", self.pdf(sample("gradients")), "-")
        self.assertGreaterEqual(plain.count(b" sh\n"), 4)
        self.assertLess(plain.count(b"\nf\n"), 60)


class Text(PdfTest):
    def text(self, name, *options):
        return run("pdftotext", "-layout", self.pdf(sample(name), *options), "-").decode()

    def test_fonts_are_embedded_subsets_that_know_their_characters(self):
        for name in [name for name in sample_names() if name.startswith("text-")]:
            with self.subTest(name):
                rows = run("pdffonts", self.pdf(sample(name))).decode().splitlines()[2:]
                self.assertTrue(rows)
                for row in rows:
                    self.assertRegex(row, r"^[A-Z]{6}\+\S.* yes +yes +yes +\d+ +0$")

    def test_accents_come_back(self):
        self.assertIn("Été, garçon, naïve", self.text("text-version-4"))

    def test_japanese_comes_back(self):
        text = self.text("text-japanese")
        for line in ("古い図面を開く", "「平成」とVX、カタカナ。", "字間をあける"):
            self.assertIn(line, text)

    def test_columns_come_back(self):
        text = self.text("text-vertical")
        for column in ("縦書きの「見本」", "「見本」、ちっテー①"):
            self.assertIn(column, text)

    def test_words_keep_their_spaces(self):
        text = self.text("text-spacing")
        for line in ("As the text was written", "wide word spaces here", "condensed to seventy"):
            self.assertIn(line, text)

    def test_text_that_clips_comes_back(self):
        self.assertIn("CLIP", self.text("text-render-modes"))

    def test_glyphs_that_have_numbers_are_found_by_them(self):
        body = ("0 g\n0 To\n1 0 0 1 0 0 0 Tp\nTP\n0 Tr\n/_CidKeyed 40 Tf\n(A) Tx\nTO\n")
        fonts = os.path.join(HERE, "..", "unit", "pdf", "fonts")
        pdf = self.pdf_of(body, "--font-dir", fonts, "--no-system-fonts", box="0 0 40 40")
        self.assertIn("CidKeyed", run("pdffonts", pdf).decode())
        # The square goes from (4, 0) to (20, 16).
        for inks in pictures.PDF_PROGRAMS.values():
            image = inks(pdf, 72, self.folder)
            self.assertEqual([image.getpixel(at)[3] for at in ((12, 32), (2, 32), (22, 32), (12, 20))], [255, 0, 0, 0])

    def test_outlines_are_no_text(self):
        pdf = self.pdf(sample("text-japanese"), "--text", "outlines")
        self.assertEqual(len(run("pdffonts", pdf).decode().splitlines()), 2)
        self.assertEqual(run("pdftotext", pdf, "-").decode().strip(), "")


# Words that are others in a PDF's text, as pdftotext finds it, with the reason.
OTHER_WORDS = {
    # It takes letters that stand on a slanted line for further apart than they are.
    "text-area": ("one", "on e"),
    # Letters that each turn a little further have no line for it.
    "text-path": ("along half circle", "alo n g h alf ci rc le"),
    # Upright Roman letters, one below the other, are words to it.
    "text-legacy": ("AB CD EFG HIJ KL MN", "A B C D E F G H I J K L M N"),
    "text-vertical": ("ABC図VX", "A B C 図 V X"),
}


class Words(PdfTest):
    def test_those_of_the_file_are_those_of_the_drawing(self):
        found = 0
        for name in sample_names():
            with self.subTest(name):
                ours = collections.Counter(self.run_vx("text", "-q", sample(name))[0].decode().split())
                theirs = collections.Counter(run("pdftotext", self.pdf(sample(name)), "-").decode().split())
                found += ours.total()
                only_ours, only_theirs = OTHER_WORDS.get(name, ("", ""))
                self.assertEqual(ours - theirs, collections.Counter(only_ours.split()))
                self.assertEqual(theirs - ours, collections.Counter(only_theirs.split()))
        self.assertGreater(found, 150)


# Four squares on cyan: yellow without overprint, with it; gray without it, with it.
OVERPRINT = """1 0 0 0 k
0 0 m
100 0 L
100 20 L
0 20 L
f
""" + "".join(f"""{flag} O
{colour}
{x} 5 m
{x + 10} 5 L
{x + 10} 15 L
{x} 15 L
f
""" for x, flag, colour in ((5, 0, "0 0 1 0 k"), (25, 1, "0 0 1 0 k"), (45, 0, "0.4 g"), (65, 1, "0.4 g")))


class Inks(PdfTest):
    def test_ink_under_overprint_survives(self):
        plates = pictures.plates(self.pdf_of(OVERPRINT, box="0 0 100 20"), 72, self.folder)
        amounts = {ink: [255 - plates[ink].getpixel((x, 10)) for x in (2, 10, 30, 50, 70)] for ink in plates}
        # The amounts beside the squares, then on each, of 255. 0.4 gray is 0.6 black.
        self.assertEqual(amounts["Cyan"], [255, 0, 255, 0, 255])
        self.assertEqual(amounts["Magenta"], [0] * 5)
        self.assertEqual(amounts["Yellow"], [0, 255, 255, 0, 0])
        self.assertEqual(amounts["Black"], [0, 0, 0, 153, 153])

    def test_white_that_overprints_takes_black_alone(self):
        body = "0.5 0 0 0.5 k\n0 0 m\n20 0 L\n20 20 L\n0 20 L\nf\n1 O\n1 g\n0 0 m\n10 0 L\n10 20 L\n0 20 L\nf\n"
        plates = pictures.plates(self.pdf_of(body, box="0 0 20 20"), 72, self.folder)
        amounts = {ink: [255 - plates[ink].getpixel((x, 10)) for x in (5, 15)] for ink in plates}
        for ink, (painted, beside) in {"Cyan": (128, 128), "Black": (0, 128)}.items():
            self.assertAlmostEqual(amounts[ink][0], painted, delta=1)
            self.assertAlmostEqual(amounts[ink][1], beside, delta=1)

    def test_inks_are_the_documents_numbers(self):
        body = "0.2 0.4 0.6 0.1 k\n0 0 m\n20 0 L\n20 20 L\n0 20 L\nf\n"
        pdf = self.pdf_of(body, box="0 0 20 20")
        for inks in pictures.PDF_PROGRAMS.values():
            for amount, wanted in zip(inks(pdf, 72, self.folder).getpixel((10, 10)), (51, 102, 153, 25.5)):
                self.assertAlmostEqual(amount, wanted, delta=1)


class Standards(PdfTest):
    DATE = {"SOURCE_DATE_EPOCH": "951782400"}

    def test_a_file_for_print_says_so(self):
        with unittest.mock.patch.dict(os.environ, self.DATE):
            for level, version in (("x1a", "PDF/X-1a:2003"), ("x3", "PDF/X-3:2003")):
                report = run("pdfinfo", self.pdf(sample("text-point"), "--pdf-x", level)).decode()
                self.assertIn(version, report)
                self.assertRegex(report, r"PDF version: +1\.4\n")

    def test_it_paints_in_inks_alone(self):
        with unittest.mock.patch.dict(os.environ, self.DATE):
            for name in ("gradients", "overprint", "text-japanese"):
                pdf = self.pdf(sample(name), "--pdf-x", "x1a")
                plain = run("qpdf", "--qdf", "--object-streams=disable", pdf, "-")
                self.assertNotRegex(plain, rb"/(DeviceRGB|CalRGB|Lab|SMask|BM)\b")
                self.assertNotRegex(plain, rb"(?m) (rg|RG)$")

    def test_it_needs_a_date(self):
        with unittest.mock.patch.dict(os.environ):
            os.environ.pop("SOURCE_DATE_EPOCH", None)
            message = self.refused("render", sample("text-point"), "-o", "out.pdf", "--pdf-x", "x1a", status=1)
        self.assertTrue(re.search("date of creation.*--date", message), message)
        self.assertEqual(self.files(), [])

    def test_a_background_of_a_screen_is_refused(self):
        with unittest.mock.patch.dict(os.environ, self.DATE):
            process = self.start("render", sample("poster"), "-o", "out.pdf", "--pdf-x", "x1a", "-b", "white")
            _, errors = process.communicate(timeout=120)
            self.assertIn(process.returncode, (1, 2))
            self.assertIn("background", errors.decode())
            self.assertEqual(self.files(), [])


if __name__ == "__main__":
    unittest.main()
