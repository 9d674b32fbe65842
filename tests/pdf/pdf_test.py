"""PDF output, judged by other people's programs: qpdf, poppler, MuPDF and Ghostscript."""
import collections
import json
import os
import re
import shutil
import subprocess
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

    def test_samples_in_one_file_are_what_they_are_alone(self):
        names = ["harp", "text-point", "layers-nested", "spot-inks", "gradients", "text-layers"]
        self.run_vx("render", "-q", *map(sample, names), "-o", "all.pdf", "--merge")
        report = run("qpdf", "--check", self.path("all.pdf")).decode()
        self.assertIn("No syntax or stream encoding errors found", report)
        self.assertNotIn("WARNING", report)
        for page, name in enumerate(names, 1):
            together = run("pdftoppm", "-r", "36", "-f", str(page), "-l", str(page), self.path("all.pdf"))
            self.assertEqual(together, run("pdftoppm", "-r", "36", self.pdf(sample(name))), name)

    def test_the_same_document_gives_the_same_bytes(self):
        for name in ("text-vertical", "gradients", "poster"):
            self.pdf(sample(name), name="one.pdf")
            self.pdf(sample(name), name="two.pdf")
            self.assertEqual(self.read("one.pdf"), self.read("two.pdf"), name)

    def test_a_line_ends_after_the_bytes_of_every_stream(self):
        data = self.read(self.pdf(sample("poster")))
        streams = list(re.finditer(rb"/Length (\d+)>>\nstream\n", data))
        self.assertEqual(len(streams), data.count(b"\nendstream\n"))
        for head in streams:
            end = head.end() + int(head[1])
            self.assertEqual(data[end:end + 18], b"\nendstream\nendobj\n")

    def test_all_ways_of_compressing_give_the_same_page(self):
        sizes, pages = [], set()
        for how in ("none", "fast", "default", "small"):
            pdf = self.pdf(sample("poster"), "--compress", how)
            sizes.append(os.path.getsize(pdf))
            plain = run("qpdf", "--qdf", "--no-original-object-ids", pdf, "-")
            pages.add(re.sub(rb"/ID \[.*\]", b"", plain))
        self.assertEqual(sizes, sorted(set(sizes), reverse=True))
        self.assertEqual(len(pages), 1)

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


class Spots(PdfTest):
    """Spot inks: each a plate of its own."""

    LAKE = "1 0.5 0 0 (Lake) {} x\n"
    FILL = "0 0 m 9 0 L 9 9 L f\n"

    def plates(self, body, *options):
        """How much of each ink there is in the middle of a page that the body fills, 0 to 255."""
        pdf = self.pdf_of(body, *options)
        run("gs", "-q", "-dNOPAUSE", "-dBATCH", "-sDEVICE=tiffsep", "-r72", "-o", self.path("p%d.tif"), pdf)
        return {re.search(r"\((.*)\)", name)[1] for name in self.files() if name.startswith("p1(")}

    def program(self, body, *options):
        """The operators of the page that set colours."""
        plain = run("qpdf", "--qdf", "--object-streams=disable", self.pdf_of(body, *options), "-").decode("latin-1")
        self.assertLessEqual(set(re.findall(r"/Separation\s+/(\S+)", plain)), {"Lake", "Sea#20green", "Black"})
        return [" ".join(line.split()) for line in plain.splitlines() if re.search(r" (scn|SCN|k|K|g|G|cs|CS)$", line)]

    def test_each_has_a_plate(self):
        for sample_name, inks in (("spot-inks", {"Brick", "Night"}), ("custom-colours", {"Lake", "Poppy", "Moss", "Paper"}),
                                  ("several-operators-a-line", {"Hull"}), ("gradient-custom-colours", {"Brick", "Lagoon"})):
            with self.subTest(sample_name):
                run("gs", "-q", "-dNOPAUSE", "-dBATCH", "-sDEVICE=tiffsep", "-r20", "-o", self.path("%d.tif"), self.pdf(sample(sample_name)))
                plates = {re.search(r"\((.*)\)", name)[1] for name in self.files() if "(" in name}
                self.assertEqual(plates, inks | {"Cyan", "Magenta", "Yellow", "Black"})
                for name in self.files():
                    if name.endswith(".tif"):
                        os.remove(self.path(name))

    def test_its_name_may_have_any_sign(self):
        pdf = self.pdf_of("1 0.5 0 0 (#1 Lake \\(50% / deep\\)) 0 x\n" + self.FILL)
        report = run("qpdf", "--check", pdf).decode()
        self.assertNotIn("WARNING", report)
        with open(pdf, "rb") as file:
            self.assertIn(b"/Separation/#231#20Lake#20#2850#25#20#2F#20deep#29/DeviceCMYK", file.read())
        self.assertEqual(self.plates("1 0.5 0 0 (#1 Lake) 0 x\n" + self.FILL), {"#1 Lake", "Cyan", "Magenta", "Yellow", "Black"})

    def test_the_same_numbers_of_process_are_none(self):
        spot = self.LAKE.format(0) + self.FILL
        self.assertEqual(self.program(spot + "1 0.5 0 0 k\n" + self.FILL), ["/Spot1 cs", "1 scn", "1 .5 0 0 k"])
        # What is filled in the ink may be stroked in the same numbers.
        self.assertEqual(self.program("1 0.5 0 0 K\n" + self.LAKE.format(0) + "0 0 m 9 0 L 9 9 L b\n"),
                         ["/Spot1 cs", "1 scn", "1 .5 0 0 K"])

    def test_two_inks_of_the_same_numbers_are_two(self):
        self.assertEqual(self.program(self.LAKE.format(0) + self.FILL + "1 0.5 0 0 (Sea green) 0 x\n" + self.FILL),
                         ["/Spot1 cs", "1 scn", "/Spot2 cs", "1 scn"])

    def test_a_tint_is_written_the_other_way_round(self):
        self.assertEqual(self.program(self.LAKE.format("0.25") + self.FILL + self.LAKE.format(1) + self.FILL),
                         ["/Spot1 cs", ".75 scn", "/Spot1 cs", "0 scn"])

    def test_it_goes_on_through_groups_and_saves(self):
        lake = self.LAKE.format(0)
        self.assertEqual(self.program(f"{lake}*u\n0 0 m 9 0 L 9 9 L f\n2 2 m 3 2 L 3 3 L f\n*U\n"), ["/Spot1 cs", "1 scn"])
        # It is no part of what is saved: a restore brings back no other.
        self.assertEqual(self.program(f"0 0 0 1 k\nq\n{lake}{self.FILL}Q\n{self.FILL}"), ["/Spot1 cs", "1 scn"])

    def test_texts_are_in_it(self):
        self.assertEqual(self.program(self.LAKE.format(0) + "0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_Helvetica 12 Tf\n(Hand) Tx\nTO\n"),
                         ["/Spot1 cs", "1 scn"])

    def test_a_blend_is_one_shading_in_its_inks(self):
        plain = run("qpdf", "--qdf", "--object-streams=disable", self.pdf(sample("gradient-custom-colours")), "-").decode("latin-1")
        spaces = re.findall(r" obj\n\[\s+(?:/Separation\s+(/\S+)|/DeviceN\s+\[([^]]*)\])", plain)
        self.assertEqual({one or " ".join(several.split()) for one, several in spaces}, {"/Brick", "/Brick /Lagoon", "/Lagoon /Black"})
        # One for each of the four, and nothing painted step by step.
        self.assertEqual((plain.count("/ShadingType 2"), len(re.findall(r" sh$", plain, re.M)), len(re.findall(r"^f$", plain, re.M))), (4, 4, 0))

    def test_process_paints_in_the_inks_that_stand_in(self):
        self.assertEqual(self.program(self.LAKE.format("0.5") + self.FILL, "--spots", "process"), [".5 .25 0 0 k"])

    def test_viewers_show_the_colours_of_before(self):
        for name in ("custom-colours", "several-operators-a-line", "gradient-custom-colours"):
            process, kept = (self.pdf(sample(name), "--spots", how, name=how + ".pdf") for how in ("process", "keep"))
            for program in (["pdftoppm", "-r", "36"], ["mutool", "draw", "-q", "-r", "36", "-F", "ppm", "-o", "-"]):
                pages = [run(*program, path) for path in (process, kept)]
                worst = max(abs(a - b) for a, b in zip(*pages))
                self.assertLessEqual(worst, 6, (name, program[0])) # of 255: MuPDF rounds a plate before it turns it into inks

    def test_the_standards_have_it(self):
        plain = run("qpdf", "--qdf", self.pdf(sample("spot-inks"), "--pdf-x", "x1a", "--date", "0"), "-")
        self.assertIn(b"/Separation", plain)


class Layers(PdfTest):
    """Layers as optional content."""

    def properties(self, source, *options):
        file = json.loads(run("qpdf", "--json=1", "--json-key=objects", self.pdf(source, *options)))
        objects = file["objects"]
        root = objects[objects["trailer"]["/Root"]]
        return root.get("/OCProperties"), objects

    def test_they_have_names_order_and_states(self):
        found, objects = self.properties(sample("layers-nested"), "--layers", "all")

        def names(entry):
            return [names(one) if isinstance(one, list) else objects[one]["/Name"] for one in entry]

        self.assertEqual(names(found["/OCGs"]), ["Ground", "Field, ploughed", "Trees", "Notes"])
        self.assertEqual(names(found["/D"]["/Order"]), ["Notes", "Trees", "Ground", ["Field, ploughed"]])
        self.assertEqual(names(found["/D"]["/OFF"]), ["Notes"])
        self.assertEqual(names(found["/D"]["/Locked"]), ["Field, ploughed"])
        states = {objects[group]["/Name"]: objects[group]["/Usage"]["/Print"]["/PrintState"] for group in found["/OCGs"]}
        self.assertEqual(states, {"Ground": "/ON", "Field, ploughed": "/ON", "Trees": "/ON", "Notes": "/OFF"})

    def test_the_page_is_as_without(self):
        picture = [run("pdftoppm", "-r", "36", self.pdf(sample("layers-nested"), *words))
                   for words in ((), ("--layers", "all"), ("--pdf-x", "x3", "--date", "0"))]
        self.assertEqual(picture[0], picture[1]) # what does not print is hidden at first
        self.assertEqual(picture[0], picture[2])

    def test_the_standards_have_none(self):
        self.assertEqual(self.properties(sample("layers-nested"), "--pdf-x", "x1a", "--date", "0")[0], None)
        self.assertEqual(self.properties(sample("gray"))[0], None)


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

    def test_a_background_of_a_screen_is_refused(self):
        with unittest.mock.patch.dict(os.environ, self.DATE):
            process = self.start("render", sample("poster"), "-o", "out.pdf", "--pdf-x", "x1a", "-b", "white")
            _, errors = process.communicate(timeout=120)
            self.assertIn(process.returncode, (1, 2))
            self.assertIn("background", errors.decode())
            self.assertEqual(self.files(), [])


class Preflight(PdfTest):
    """Every sample as a file for archives, by a program that judges such files of part 1, from which part 2 was made."""

    FOLDER = "/usr/share/java"
    PARTS = ("preflight", "pdfbox2", "fontbox2", "xmpbox", "commons-logging", "javax.activation", "jaxb-api")
    # It finds these in files of part 2 because it knows part 1 alone.
    OF_PART_1 = {
        # It takes no other part.
        "7.11.2 : Error on MetaData, part must be 1",
        # Part 1 asks for a set of the glyphs of each composite font; part 2 for one that is right, where there is one.
        "3.1.11 : Invalid Font definition, FONT: The CIDSet entry is missing for the Composite Subset",
        # Part 1 builds on a PDF without layers.
        "1.4.8 : Trailer Syntax error, A Catalog shall not contain the OCPProperties entry",
        # Part 1 takes numbers up to 32767, part 2 up to those of a single-precision number.
        "1.0.6 : Syntax error, Invalid float range in a Number operand on page 1",
    }

    def judge(self, *options):
        """What is found, by the name of the sample."""
        path = [os.path.join(self.FOLDER, part + ".jar") for part in self.PARTS]
        missing = [one for one in path if not os.path.exists(one)]
        if missing or shutil.which("java") is None:
            self.skipTest("no preflight of PDF/A here: install the packages of the group \"all\"")
        for name in sample_names():
            self.pdf(sample(name), *options, "--date", "0", name=name + ".pdf")
        report = subprocess.run(["java", "-cp", ":".join(path), "org.apache.pdfbox.preflight.Validator_A1b", "group", self.folder],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False).stdout.decode()
        found = {}
        for part in re.split(r"^The file ", report, flags=re.M)[1:]:
            head, *lines = part.splitlines()
            found[head.split(".pdf")[0]] = {re.sub(r"[A-Z]{6}\+[^:]+", "FONT", line) for line in lines if line.strip()}
        self.assertEqual(set(found), set(sample_names()))
        return found

    def test_every_sample_is_fit_for_archives(self):
        met = set()
        for name, findings in self.judge("--pdf-a", "2b").items():
            with self.subTest(name):
                self.assertEqual(findings - self.OF_PART_1, set())
                met |= findings
        self.assertEqual(self.OF_PART_1 - met, set(), "an excuse that nothing needs")

    def test_a_plain_file_is_not(self):
        for name, findings in self.judge().items():
            with self.subTest(name):
                self.assertIn("7.1 : Error on MetaData, Metadata is not a stream", findings)


if __name__ == "__main__":
    unittest.main()
