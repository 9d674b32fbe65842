"""Pages: what they show, where they are cut, and what is around that, as a user asks for it."""
import gzip
import re
import sys
import unittest

from vxcommand import CommandTest, Png, document, sample

# On a page of 72 by 36 points: a black square of 9 points whose left half is beyond the page, and a line of 4 points' width from
# 40 to 60 at a height of 20.
BEYOND = "0 g\n-4.5 9 m\n4.5 9 l\n4.5 18 l\n-4.5 18 l\nf\n0 G\n4 w\n40 20 m\n60 20 l\nS\n"
BLACK, WHITE = (0, 0, 0), (255, 255, 255)


class Pages(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("a.vx", document(BEYOND))

    def png(self, *options, dpi="72"):
        output, messages = self.run_vx("render", "a.vx", "-o", "a.png", "--dpi", dpi, "--profile", "none", *options)
        self.assertEqual((output, messages), (b"", []))
        return Png(self.read("a.png"))

    def size(self, *options):
        png = self.png(*options)
        return png.width, png.height

    def boxes(self, *options):
        self.run_vx("render", "a.vx", "-o", "a.pdf", *options)
        found = re.findall(rb"/(\w+Box)\[([^]]*)\]", self.read("a.pdf"))
        return {name.decode(): [round(float(number), 2) for number in numbers.split()] for name, numbers in found}

    def test_the_page_may_be_what_is_painted(self):
        self.assertEqual(self.size("--page", "drawing"), (65, 13))  # -4.5 to 60, 9 to 22
        self.assertEqual(self.boxes("--page", "drawing"), {"MediaBox": [-4.5, 9, 60, 22], "TrimBox": [-4.5, 9, 60, 22]})

    def test_all_formats_measure_the_same(self):
        self.run_vx("render", "a.vx", "-f", "svg,pdf,png", "-o", "{stem}.{ext}", "--page", "drawing", "--margin", "1in")
        self.assertIn(b'width="208.5pt" height="157pt"', self.read("a.svg"))
        self.assertIn(b"/MediaBox[-76.5 -63 132 94]", self.read("a.pdf"))

    def test_a_layer_that_is_not_painted_does_not_count(self):
        layers = (f"1 1 1 1 0 0 0 79 128 255 Lb\n({name}) Ln\n0 g\n0 0 m\n{side} 0 L\n{side} {side} L\n0 {side} L\nf\nLB\n"
                  for name, side in (("One", 9), ("Two", 20)))
        self.write("a.vx", document("".join(layers)))
        self.assertEqual(self.size("--page", "drawing"), (20, 20))
        self.assertEqual(self.size("--page", "drawing", "--hide", "Two"), (9, 9))

    def test_nothing_painted_is_no_page(self):
        self.write("a.vx", document("0 0 m\nn\n"))
        told = self.refused("render", "a.vx", "-o", "a.pdf", "--page", "drawing", status=1)
        self.assertIn("nothing is painted, so the page has no size: choose one, as a4", told)
        self.assertEqual(self.files(), ["a.vx"])

    def test_a_size_has_the_drawing_in_its_middle(self):
        self.assertEqual(self.boxes("--page", "letter")["MediaBox"], [-270, -378, 342, 414])
        self.assertEqual(self.size("--page", "100x50"), (100, 50))
        png = self.png("--page", "100x50")  # the square is 14 points from the left, 7 of 50 are above the page
        self.assertEqual([png.pixel(x, 30) for x in (7, 10, 17, 20)], [WHITE, BLACK, BLACK, WHITE])

    def test_a_drawing_too_large_for_its_page_is_told(self):
        for options, text in ((("--page", "70x50"), "2 pt wider than"),
                              (("--page", "80x44", "--margin", "5"), "2 pt wider and 2 pt higher than")):
            _, messages = self.run_vx("render", "a.vx", "-o", "a.pdf", *options)
            self.assertEqual(len(messages), 1)
            self.assertIn(f"the drawing is {text} its room on the page: choose a larger page", messages[0])
            self.refused("render", "a.vx", "-o", "a.pdf", *options, "--strict", status=3)

    def test_the_bleed_shows_what_is_there(self):
        self.assertEqual(self.boxes("--bleed", "3"),
                         {"MediaBox": [-3, -3, 75, 39], "BleedBox": [-3, -3, 75, 39], "TrimBox": [0, 0, 72, 36]})
        png = self.png("--bleed", "9")
        self.assertEqual((png.width, png.height), (90, 54))
        self.assertEqual([png.pixel(x, 31) for x in (3, 5, 12, 14)], [WHITE, BLACK, BLACK, WHITE])

    def test_marks_stand_outside_the_bleed(self):
        boxes = self.boxes("--bleed", "12", "--marks", "crop")  # marks from 12 to 12 + 14.17 beyond the cut
        self.assertEqual(boxes, {"MediaBox": [-26.17, -26.17, 98.17, 62.17], "BleedBox": [-12, -12, 84, 48],
                                 "TrimBox": [0, 0, 72, 36]})
        self.assertIn(b"/Separation/All/DeviceCMYK", self.read("a.pdf"))
        png = self.png("--bleed", "12", "--marks", "crop", dpi="720")
        self.assertEqual((png.width, png.height), (1243, 883))
        # The line at the height of the lower edge ends 142 pixels from the left, that of the left edge 142 from below.
        for x, y, painted in ((5, 621, True), (139, 621, True), (145, 621, False), (5, 626, False), (262, 878, True),
                              (262, 744, True), (262, 738, False), (266, 878, False)):
            self.assertEqual(png.pixel(x, y) != WHITE, painted, (x, y))

    def test_the_drawing_ends_at_the_bleed_before_marks(self):
        png = self.png("--marks", "crop")  # 22.68 points of marks, the square half cut off
        self.assertEqual([png.pixel(x, 45) for x in (20, 25)], [WHITE, BLACK])

    def test_each_plate_has_the_marks(self):
        self.write("a.vx", document(BEYOND + "0 1 1 0 (Red) 0 x\n0 0 m\n9 0 l\n9 9 l\nf\n"))
        self.run_vx("plates", "a.vx", "-o", "{ink}.png", "--dpi", "720", "--marks", "crop", "--samples", "1")
        for ink in ("Cyan", "Magenta", "Yellow", "Black", "Red"):
            self.assertEqual(Png(self.read(f"{ink}.png")).pixel(5, 587), (0,), ink)  # 22.68 + 36 points from above

    def test_a_standard_takes_all_of_it(self):
        for level in ("x1a", "x3"):
            boxes = self.boxes("--pdf-x", level, "--date", "0", "--page", "a6", "--bleed", "3mm", "--marks", "crop")
            media, bleed, trim = (boxes[name] for name in ("MediaBox", "BleedBox", "TrimBox"))
            self.assertTrue(media[0] < bleed[0] < trim[0] and trim[2] < bleed[2] < media[2])

    def test_the_next_step_is_told(self):
        cases = {("--page", "a4", "--box", "0,0,9,9"): "--page and --box both say what is shown: leave one out",
                 ("--page", "folio"): "--page folio: not a size of a page: give drawing, a name as a4",
                 ("--margin", "-3mm"): "--margin -3mm: not a length from 0 to 200 inches: give one as 3mm, 0.125in or 9",
                 ("--bleed", "3cm"): "--bleed 3cm: not a length",
                 ("--marks", "all"): "--marks all: not known: give one of crop, none"}
        for options, text in cases.items():
            with self.subTest(options):
                self.assertIn(text, self.refused("render", "a.vx", "-o", "a.pdf", *options, status=2))
        self.assertEqual(self.files(), ["a.vx"])

    def test_an_output_is_verified_with_its_page(self):
        self.run_vx("render", "a.vx", "-o", "a.pdf", "--page", "drawing", "--margin", "1")
        output, _ = self.run_vx("verify", "a.vx", "a.pdf", "--page", "drawing", "--margin", "1")
        self.assertIn(b"page box     -5.5 8 61 23\n", output)


LAYER = "1 1 1 1 0 0 0 79 128 255 Lb\n(Ground) Ln\n0 1 1 0 (Red) 0 x\n0 0 m\n9 0 L\n9 9 L\nf\nLB\n"


class Merge(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("a.vx", document(LAYER))
        self.write("b.vx", document(LAYER, box="0 0 9 9"))
        self.write("bad.vx", document("1 k\n"))

    def merge(self, *words, status=0):
        _, messages = self.run_vx("render", *words, "-o", "all.pdf", "--merge", status=status)
        return self.read("all.pdf"), messages

    def boxes(self, pdf):
        return [[float(side) for side in box.split()] for box in re.findall(rb"/MediaBox\[([^]]*)\]", pdf)]

    def test_each_drawing_is_a_page_of_its_own_size(self):
        pdf, messages = self.merge("a.vx", "b.vx", "a.vx")
        self.assertEqual(messages, [])
        self.assertEqual(self.boxes(pdf), [[0, 0, 72, 36], [0, 0, 9, 9], [0, 0, 72, 36]])
        self.assertIn(b"/Count 3", pdf)

    def test_a_name_of_another_format_is_told(self):
        _, messages = self.run_vx("render", "a.vx", "-f", "pdf", "-o", "all.tif", "--merge")
        self.assertEqual(messages, ["vx: -o all.tif: warning: pdf is written under a name of tiff: leave out -f, or change the name after -o"])
        self.assertTrue(self.read("all.tif").startswith(b"%PDF"))

    def test_bookmarks_are_titles_or_names(self):
        untitled = re.sub(rb"%%Title:.*\n", b"", document())
        self.write("c.vx.gz", gzip.compress(untitled))
        self.write("d.vx", untitled)
        pdf, _ = self.merge("a.vx", "c.vx.gz", "d.vx")
        self.assertEqual(re.findall(rb"/Title\((.*?)\)/Parent", pdf), [rb"A \(small\) square", b"c", b"d"])

    def test_layers_are_apart_and_inks_are_shared(self):
        pdf, _ = self.merge("a.vx", "b.vx")
        self.assertEqual(pdf.count(b"/Type/OCG/Name(Ground)"), 2)
        self.assertEqual(pdf.count(b"/Separation/Red"), 1)

    def test_a_font_is_there_once_whatever_pages_use_of_it(self):
        names = ["text-point", "text-area", "text-layers", "poster"]
        fonts = lambda pdf: sorted(re.findall(rb"/FontName/[A-Z]{6}\+([^/]*)", pdf))
        alone = [fonts(self.merge(sample(name))[0]) for name in names]
        together = fonts(self.merge(*map(sample, names))[0])
        self.assertGreater(sum(map(len, alone)), len(together))
        self.assertEqual(together, sorted(set(sum(alone, []))))

    def test_a_drawing_that_fails_costs_its_page_alone(self):
        self.write("large.vx.gz", gzip.compress(document("% long\n" * 5000000)))
        pdf, messages = self.merge("a.vx", "bad.vx", "b.vx", status=1)
        self.assertEqual(len(self.boxes(pdf)), 2)
        self.assertEqual(len(messages), 1)
        self.assertIn('bad.vx: malformed, line', messages[0])
        self.assertIn("its page is left out", messages[0])
        pdf, messages = self.merge("a.vx", "large.vx.gz", "b.vx", "--max-memory", "16M", status=5)
        self.assertEqual(len(self.boxes(pdf)), 2)

    def test_under_strict_all_or_nothing_is_written(self):
        message = self.run_vx("render", "a.vx", "bad.vx", "-o", "all.pdf", "--merge", "--strict", status=1)[1][-1]
        self.assertIn("all.pdf: 1 of 2 drawings failed, nothing written: go without --strict for the others", message)
        self.assertNotIn("all.pdf", self.files())

    def test_nothing_is_written_where_all_fail(self):
        message = self.run_vx("render", "bad.vx", "-o", "all.pdf", "--merge", status=1)[1][-1]
        self.assertIn("all.pdf: 1 of 1 drawings failed, nothing written", message)
        self.assertNotIn("all.pdf", self.files())

    def test_it_goes_with_a_standard_and_with_pages(self):
        pdf, _ = self.merge("a.vx", "b.vx", "--pdf-x", "x1a", "--date", "2026-11-22", "--page", "100x100", "--bleed", "9")
        self.assertEqual(pdf.count(b"/S/GTS_PDFX"), 1)
        self.assertEqual(pdf.count(b"(D:20261122000000Z)"), 2)  # created and changed, once
        self.assertEqual(pdf.count(b"/TrimBox"), 2)
        self.assertEqual(self.boxes(pdf)[1], [-54.5, -54.5, 63.5, 63.5])

    def test_the_same_drawings_give_the_same_bytes(self):
        self.assertEqual(self.merge("a.vx", "b.vx")[0], self.merge("a.vx", "b.vx")[0])
        output, _ = self.run_vx("render", "a.vx", "b.vx", "-o", "-", "--merge")
        self.assertEqual(output, self.read("all.pdf"))

    def test_the_next_step_is_told(self):
        cases = {("-o", "a.png"): "--merge: only a pdf has many pages, and png is written: name a .pdf",
                 ("-o", "{stem}.pdf"): "-o {stem}.pdf: --merge writes one file: name it, as -o all.pdf",
                 ("-o", "a.vx", "-f", "pdf"): "would overwrite the input",
                 ("-o", "bad.vx", "-f", "pdf"): "would overwrite the drawing"}
        for options, text in cases.items():
            with self.subTest(options):
                self.assertIn(text, self.refused("render", "a.vx", "--merge", *options, status=2))
        self.assertIn("no such folder", self.refused("render", "a.vx", "--merge", "-o", "none/a.pdf", status=4))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
