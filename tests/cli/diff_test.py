"""vx diff tells what differs between two drawings, or between a drawing and a file."""
import json
import os
import random
import struct
import sys
import unittest
import zlib

from vxcommand import CommandTest, LEFT_HALF, Png, SANITIZED, WITHOUT_LANDLOCK, document

# At 72 pixels an inch a pixel is a point. Without a profile black ink is black, (0, 0, 0).
PLAIN = ("--dpi", "72", "--profile", "none")
RED, BLUE, VIOLET, FRAME = (213, 49, 11), (11, 95, 213), (142, 36, 170), (60, 60, 60)


def square(left, bottom, side=10, ink="0 0 0 1 k"):
    right, top = left + side, bottom + side
    return f"{ink}\n{left} {bottom} m\n{right} {bottom} l\n{right} {top} l\n{left} {top} l\nf\n"


def text(line, font="Nowhere"):
    return f"0 g\n0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_{font} 12 Tf\n({line}) Tx\nTO\n"


def layer(name, body, visible=1):
    return f"{visible} 1 1 1 0 0 0 0 0 0 Lb\n({name}) Ln\n{body}LB\n"


def chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


def png(width, height, depth, colour, rows, interlace=0, extra=b""):
    header = struct.pack(">IIBBBBB", width, height, depth, colour, 0, 0, interlace)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + extra +
            chunk(b"IDAT", zlib.compress(b"".join(b"\0" + row for row in rows))) + chunk(b"IEND", b""))


def tiff(width, height, pixels, fields=None, big=False):
    """An uncompressed TIFF of one strip. fields: {tag: (type, values)} over those of RGB with 8 bits."""
    order = ">" if big else "<"
    size = {1: ("B", 1), 3: ("H", 2), 4: ("I", 4)}
    all_fields = {256: (4, [width]), 257: (4, [height]), 258: (3, [8, 8, 8]), 259: (3, [1]), 262: (3, [2]),
                  273: (4, [8]), 277: (3, [3]), 278: (4, [height]), 279: (4, [len(pixels)]), 284: (3, [1]), **(fields or {})}
    at = 8 + len(pixels) + 2 + 12 * len(all_fields) + 4
    entries, behind = b"", b""
    for tag, (kind, values) in sorted(all_fields.items()):
        letter, width_of = size[kind]
        body = struct.pack(f"{order}{len(values)}{letter}", *values)
        if len(body) > 4:
            place, behind = struct.pack(order + "I", at + len(behind)), behind + body
        else:
            place = body.ljust(4, b"\0")
        entries += struct.pack(order + "HHI", tag, kind, len(values)) + place
    head = b"MM\0*" if big else b"II*\0"
    return (head + struct.pack(order + "I", 8 + len(pixels)) + pixels + struct.pack(order + "H", len(all_fields)) + entries +
            b"\0\0\0\0" + behind)


class DiffTest(CommandTest):
    def diff(self, *words, status=3, **options):
        return self.run_vx("diff", "-q", *words, status=status, **options)[0].decode().splitlines()

    def told(self, *words, status=3, **options):
        return json.loads(self.diff(*words, "--json", status=status, **options)[0])


class DiffDrawings(DiffTest):
    def test_a_square_that_moved(self):
        self.write("a.vx", document(square(10, 10)))
        self.write("b.vx", document(square(12, 10)))
        # Two columns of ten pixels are left, two are new: 40 of 72 * 36, and 40 * 255 / 2592 = 3.9352.
        line = "40 of 2592 differ (1.5432 %), by 255 of 255 at most and 3.9352 on average"
        self.assertEqual(self.diff("a.vx", "b.vx", *PLAIN), [
            "a.vx and b.vx differ",
            "  pixels       " + line,
            "    place      40 pixels within 10 10 22 20",
            "  inks         " + line,
            "    plate      Black: " + line,
            "    place      40 pixels within 10 10 22 20"])
        told = self.told("a.vx", "b.vx", *PLAIN)
        self.assertEqual((told["a"], told["b"], told["same"], told["box"]), ("a.vx", "b.vx", False, [0, 0, 72, 36]))
        for part, channels in (("pixels", {"red", "green", "blue"}), ("inks", {"Black"})):
            found = told[part]
            self.assertEqual((found["width"], found["height"], found["different"], found["share"], found["largest"],
                              found["mean"]), (72, 36, 40, 0.015432, 255, 3.935185))
            self.assertEqual({one["name"] for one in found["channels"] if one["different"]}, channels)
            # From the top the square's rows are 36 - 20 to 36 - 10.
            self.assertEqual(found["places"], [{"box": [10, 10, 22, 20], "pixels": [10, 16, 22, 26], "different": 40}])
        self.assertEqual((told["facts"], told["words"], told["notCompared"]), ([], {"onlyInA": [], "onlyInB": []}, []))

    def test_the_same_drawing_twice(self):
        self.write("a.vx", document(text("Hand")))
        self.write("b.vx", document(text("Hand")).replace(b"\n", b"\r\n"))
        before = self.files()
        self.assertEqual(self.diff("a.vx", "b.vx", status=0), ["a.vx and b.vx are the same"])
        self.assertEqual(self.diff("-", "b.vx", status=0, stdin=self.read("a.vx")), ["standard input and b.vx are the same"])
        self.assertTrue(self.told("a.vx", "b.vx", status=0)["same"])
        self.assertEqual(self.files(), before)

    def test_places_are_apart(self):
        self.write("a.vx", document())
        self.write("b.vx", document(LEFT_HALF + square(2, 2, 4, "1 g") + square(60, 28, 2)))
        told = self.told("a.vx", "b.vx", "--only", "pixels", *PLAIN)["pixels"]
        self.assertEqual(told["placeCount"], 2)
        self.assertEqual([(one["box"], one["different"]) for one in told["places"]],
                         [([2, 2, 6, 6], 16), ([60, 28, 62, 30], 4)])
        # A hundred and one dots, 20 points apart: all are counted, a hundred are listed, ten are printed.
        dots = "".join(square(20 * (i % 20), 20 * (i // 20), 1) for i in range(101))
        self.write("none.vx", document("", box="0 0 400 120"))
        self.write("dots.vx", document(dots, box="0 0 400 120"))
        told = self.told("none.vx", "dots.vx", "--only", "inks", *PLAIN)["inks"]
        self.assertEqual((told["different"], told["placeCount"], len(told["places"])), (101, 101, 100))
        lines = self.diff("none.vx", "dots.vx", "--only", "inks", *PLAIN)
        self.assertEqual(sum("1 pixel within" in line for line in lines), 10)
        self.assertEqual(lines[-1].strip(), "and 91 more places")

    def test_tolerance(self):
        # 0.4 of 255 is 102, 0.42 is 107.1; of ink it is 153 and 147.9.
        self.write("a.vx", document(square(0, 0, ink="0.4 g")))
        self.write("b.vx", document(square(0, 0, ink="0.42 g")))
        told = self.told("a.vx", "b.vx", "--tolerance", "4", *PLAIN)
        self.assertEqual((told["pixels"]["different"], told["pixels"]["largest"]), (100, 5))
        self.assertEqual((told["inks"]["different"], told["inks"]["largest"]), (100, 5))
        told = self.told("a.vx", "b.vx", "--tolerance", "5", *PLAIN, status=0)
        self.assertEqual((told["pixels"]["different"], told["pixels"]["largest"], told["pixels"]["places"]), (0, 5, []))
        self.assertEqual(self.diff("a.vx", "b.vx", "--tolerance", "5", *PLAIN, status=0)[0],
                         "a.vx and b.vx are the same, where 5 of 255 is no difference")

    def test_one_box_for_both(self):
        self.write("a.vx", document(square(0, 0), box="0 0 20 20"))
        self.write("b.vx", document(square(0, 0), box="-10 0 20 30"))
        told = self.told("a.vx", "b.vx", *PLAIN)
        self.assertEqual((told["box"], told["pixels"]["width"], told["pixels"]["height"], told["pixels"]["different"]),
                         ([-10, 0, 20, 30], 30, 30, 0))
        self.assertEqual(told["facts"], [{"fact": "box", "a": [0, 0, 20, 20], "b": [-10, 0, 20, 30]}])
        told = self.told("a.vx", "b.vx", "--box", "0,0,5,5", *PLAIN)
        self.assertEqual((told["box"], told["pixels"]["width"]), ([0, 0, 5, 5], 5))
        # Pages of their own sizes have no pixels in common.
        told = self.told("a.vx", "b.vx", "--page", "drawing", "--margin", "1", "--only", "pixels", *PLAIN, status=0)
        self.write("c.vx", document(square(0, 0, 12), box="0 0 20 20"))
        told = self.told("a.vx", "c.vx", "--page", "drawing", "--only", "pixels", *PLAIN)
        self.assertEqual(told["facts"], [{"fact": "size", "a": "10 x 10 pixels", "b": "12 x 12 pixels"}])
        self.assertIn("the pixels: ", told["notCompared"][0])

    def test_inks_by_their_names(self):
        spot = "0 1 1 0 (Brick) 0 x"
        self.write("a.vx", document(square(0, 0, ink="0 1 1 0 k")))
        self.write("b.vx", document(square(0, 0, ink=spot)))
        told = self.told("a.vx", "b.vx", *PLAIN)
        self.assertEqual(told["pixels"]["different"], 0)  # a screen shows the same
        self.assertEqual([(one["name"], one["inA"], one["inB"], one["different"]) for one in told["inks"]["channels"]],
                         [("Cyan", True, True, 0), ("Magenta", True, True, 100), ("Yellow", True, True, 100),
                          ("Black", True, True, 0), ("Brick", False, True, 100)])
        self.assertEqual(told["facts"], [{"fact": "ink", "name": "Brick", "a": None,
                                          "b": {"cmyk": [0, 1, 1, 0], "tints": [0, 0]}}])
        told = self.told("a.vx", "b.vx", "--spots", "process", *PLAIN, status=0)
        self.assertEqual(told["inks"]["different"], 0)

    def test_layers_are_chosen(self):
        self.write("a.vx", document(layer("One", square(0, 0)) + layer("Two", square(20, 0))))
        self.write("b.vx", document(layer("One", square(0, 0)) + layer("Two", square(30, 0))))
        self.diff("a.vx", "b.vx", *PLAIN)
        self.assertEqual(self.diff("a.vx", "b.vx", "--hide", "Two", *PLAIN, status=0), ["a.vx and b.vx are the same"])


class DiffFacts(DiffTest):
    def facts(self, a, b, status=3):
        self.write("a.vx", a)
        self.write("b.vx", b)
        return self.told("a.vx", "b.vx", "--only", "facts", status=status)

    def test_what_the_header_says(self):
        told = self.facts(document(), document().replace(b"A \\(small\\) square", b"Other").replace(b"by hand", b"by foot")
                          .replace(b"%%BoundingBox", b"%%CreationDate: (11/22/1994)\n%%BoundingBox"))
        self.assertEqual({fact["fact"]: (fact["a"], fact["b"]) for fact in told["facts"]},
                         {"title": ("A (small) square", "Other"), "creator": ("by hand", "by foot"),
                          "date": ("", "1994-11-22"), "date text": ("", "11/22/1994")})
        self.assertNotIn("pixels", told)
        self.assertIn('  title        "A (small) square" | "Other"', self.diff("a.vx", "b.vx", "--only", "facts"))

    def test_layers_by_name(self):
        told = self.facts(document(layer("Same", "") + layer("Twice", "") + layer("Twice", "") + layer("Gone", "")),
                          document(layer("Same", "", 0) + layer("Twice", "") + layer("New\033[1m", "")))
        self.assertEqual([(one["fact"], one["name"], one["a"] is None, one["b"] is None) for one in told["facts"]
                          if one["fact"] == "layer"],
                         [("layer", "Same", False, False), ("layer", "Twice", False, True), ("layer", "Gone", False, True),
                          ("layer", "New\x1b[1m", True, False)])
        lines = self.diff("a.vx", "b.vx", "--only", "facts")
        self.assertIn('  layer        "Same" visible true | visible false', lines)
        self.assertIn('  layer        "Gone" only in the first', lines)
        self.assertIn('  layer        "New\\x1B[1m" only in the second', lines)

    def test_fonts_warnings_and_words(self):
        told = self.facts(document(text("one") + text("two") + text("two")),
                          document(text("two", "Elsewhere") + text("one") + text("three"), end=""))
        self.assertEqual(told["words"], {"onlyInA": ["two"], "onlyInB": ["three"]})
        fonts = [one for one in told["facts"] if one["fact"] == "font"]
        self.assertEqual([(one["name"], one["a"]) for one in fonts], [("Elsewhere", None)])
        warnings = [one for one in told["facts"] if one["fact"] == "warning"]
        self.assertTrue(any(one["a"] is None and "cut short" in one["b"] for one in warnings), warnings)
        lines = self.diff("a.vx", "b.vx", "--only", "facts")
        self.assertIn("  words        - two", lines)
        self.assertIn("  words        + three", lines)

    def test_many_words_are_counted(self):
        told = self.facts(document(), document("".join(text(f"Line {number}") for number in range(1003))))
        self.assertEqual((len(told["words"]["onlyInB"]), told["words"]["omitted"]), (1000, 3))
        self.assertEqual(told["words"]["onlyInB"][0], "Line 0")
        self.assertIn("+ and 3 more lines", self.diff("a.vx", "b.vx", "--only", "facts")[-1])

    def test_what_is_about_the_file_alone_is_no_difference(self):
        self.assertTrue(self.facts(document(), document().replace(b"\n", b"\r"), status=0)["same"])


class DiffMarks(DiffTest):
    def test_marks(self):
        self.write("a.vx", document(square(10, 10) + square(40, 10, ink="1 0 0 0 k")))
        self.write("b.vx", document(square(12, 10) + square(40, 10, ink="1 0 0 0 k")))
        self.diff("a.vx", "b.vx", "-o", "d.png", *PLAIN)
        picture = Png(self.read("d.png"))
        self.assertEqual((picture.width, picture.height), (72, 36))
        rows = {x: picture.pixel(x, 20) for x in range(72)}
        self.assertEqual([rows[x] for x in (10, 11, 20, 21)], [RED, RED, BLUE, BLUE])
        # A quarter of the darkness is left: of black 255 - 255 // 4, of cyan, whose lightness is (587 + 114) * 255 / 1000,
        # which is 179, 255 - 76 // 4; white stays.
        self.assertEqual((rows[15], rows[45], rows[30]), ((192,) * 3, (236,) * 3, (255,) * 3))
        # The frame is three pixels away, and two wide.
        self.assertEqual([rows[x] for x in (4, 5, 6, 7, 24, 25, 26, 27)],
                         [(255,) * 3, FRAME, FRAME, (255,) * 3, (255,) * 3, FRAME, FRAME, (255,) * 3])
        self.assertEqual([picture.pixel(15, y) for y in (10, 11, 12, 13, 28, 29, 30, 31)],
                         [(255,) * 3, FRAME, FRAME, (255,) * 3, (255,) * 3, FRAME, FRAME, (255,) * 3])

    def test_another_colour_of_the_same_lightness(self):
        # All of the three other inks is as black as black.
        self.write("a.vx", document(square(10, 10, ink="0 0 0 1 k")))
        self.write("b.vx", document(square(10, 10, ink="1 1 1 0 k")))
        self.diff("a.vx", "b.vx", "--only", "inks", "-o", "d.png", *PLAIN)
        self.assertEqual(Png(self.read("d.png")).pixel(15, 20), VIOLET)

    def test_side_by_side(self):
        self.write("a.vx", document(square(10, 10)))
        self.write("b.vx", document(square(30, 10)))
        self.diff("a.vx", "b.vx", "-o", "d.png", "--side-by-side", *PLAIN)
        picture = Png(self.read("d.png"))
        self.assertEqual((picture.width, picture.height), (3 * 72 + 2 * 8, 36))
        black, white = (0,) * 3, (255,) * 3
        self.assertEqual([picture.pixel(x, 20) for x in (15, 35, 80 + 15, 80 + 35, 160 + 15, 160 + 35, 160 + 60)],
                         [black, white, white, black, RED, BLUE, white])

    def test_outputs_are_kept(self):
        self.write("a.vx", document())
        self.write("b.vx", document(""))
        self.write("old.png", b"a picture")
        self.diff("a.vx", "b.vx", "-o", "old.png", "--fit", "9")
        self.assertEqual(Png(self.read("old.png")).width, 9)
        self.write("a.png", self.read("old.png"))
        for words, told, status in ((["a.vx", "a.png", "-o", "a.png"], "-o a.png: it is one of the two", 2),
                                    (["a.vx", "b.vx", "-o", "d.pdf"], "-o d.pdf: png is written", 2),
                                    (["a.vx", "b.vx", "-o", "-"], "-o -: png is written", 2),
                                    (["a.vx", "b.vx", "-o", "none/d.png"], "none/d.png: no such folder", 4)):
            with self.subTest(words=words):
                self.assertIn(told, self.refused("diff", *words, status=status))
        self.write("drawing.png", document())
        self.assertIn("drawing.png", self.refused("diff", "a.vx", "b.vx", "-o", "drawing.png", status=2))
        self.assertEqual(self.read("drawing.png"), document())
        self.diff("a.vx", "b.vx", "-o", "drawing.png", "--force")
        self.assertTrue(self.read("drawing.png").startswith(b"\x89PNG"))


class DiffPictures(DiffTest):
    """A drawing of 72 by 36 points whose left half is black, beside pictures of two pixels: black and white."""

    BLACK, WHITE = b"\0\0\0", b"\xff\xff\xff"

    def setUp(self):
        super().setUp()
        self.write("a.vx", document())

    def compare(self, name, data, *words, status=0):
        self.write(name, data)
        return self.told("a.vx", name, "--profile", "none", *words, status=status)

    def test_what_was_made_is_the_same(self):
        for name, words in (("a.png", ()), ("a.tif", ()), ("b.png", ("--fit", "31")), ("c.png", ("-b", "none", "--dpi", "96"))):
            self.run_vx("render", "-q", "a.vx", "-o", name, *words)
            self.assertEqual(self.diff("a.vx", name, status=0), [f"a.vx and {name} are the same"])
            self.assertEqual(self.diff(name, "a.vx", status=0), [f"{name} and a.vx are the same"])
            os.rename(self.path(name), self.path("any.name"))
            self.assertEqual(self.diff("a.vx", "any.name", status=0), ["a.vx and any.name are the same"])

    # Two wide and one high, in every form that a PNG has.
    def test_forms_of_png(self):
        forms = {
            "one bit": png(2, 1, 1, 0, [b"\x40"]),
            "gray": png(2, 1, 8, 0, [b"\x00\xff"]),
            "gray and alpha": png(2, 1, 8, 4, [b"\x00\xff\xff\xff"]),
            "16 bits": png(2, 1, 16, 2, [6 * b"\0" + 6 * b"\xff"]),
            # Entry 0 and then entry 1, in two bits each.
            "palette": png(2, 1, 2, 3, [b"\x10"], extra=chunk(b"PLTE", self.BLACK + self.WHITE)),
            "interlaced": png(2, 1, 8, 2, [self.BLACK, self.WHITE], interlace=1),
        }
        for form, data in forms.items():
            with self.subTest(form=form):
                told = self.compare("b.png", data, "--height", "1", "--width", "2")
                self.assertEqual((told["pixels"]["width"], told["pixels"]["different"]), (2, 0))
        told = self.compare("b.png", forms["16 bits"], "--width", "2", "--height", "1")
        self.assertEqual(told["notCompared"], ["all of b.png: it has 16 bits a channel, of which the upper 8 are compared"])
        swapped = png(2, 1, 8, 0, [b"\xff\x01"])
        told = self.compare("b.png", swapped, status=3)["pixels"]
        self.assertEqual((told["different"], told["largest"], told["mean"]), (2, 255, 254.5))  # 255 and 254
        self.assertEqual(told["places"][0]["box"], [0, 0, 72, 36])

    def test_what_nobody_sees_has_no_colour(self):
        rows = [b"\x00\x00\x00\xff" + b"\x12\x34\x56\x00"]
        self.assertTrue(self.compare("b.png", png(2, 1, 8, 6, rows))["same"])
        rows = [b"\x00\x00\x00\xff" + b"\x12\x34\x56\x80"]
        told = self.compare("b.png", png(2, 1, 8, 6, rows), status=3)["pixels"]
        self.assertEqual((told["different"], told["largest"]), (1, 128))

    def test_forms_of_tiff(self):
        rgb = self.BLACK + self.WHITE
        one = {258: (3, [8]), 277: (3, [1])}
        four = {258: (3, [8] * 4), 277: (3, [4])}
        forms = {
            "rgb": tiff(2, 1, rgb),
            "big-endian": tiff(2, 1, rgb, big=True),
            "gray": tiff(2, 1, b"\0\xff", {**one, 262: (3, [1])}),
            "alpha": tiff(2, 1, b"\0\0\0\xff\xff\xff\xff\xff", {**four, 338: (3, [2])}),
        }
        for form, data in forms.items():
            with self.subTest(form=form):
                self.assertEqual(self.compare("b.tif", data)["pixels"]["different"], 0)
        inks = tiff(2, 1, b"\0\0\0\xff\0\0\0\0", {**four, 262: (3, [5])})
        told = self.compare("b.tif", inks, "--width", "2", "--height", "1")
        self.assertEqual((told["inks"]["different"], "pixels" in told), (0, False))
        told = self.compare("b.tif", tiff(2, 1, b"\0\0\0\xfd\0\x09\0\0", {**four, 262: (3, [5])}), status=3)["inks"]
        self.assertEqual({one["name"]: one["largest"] for one in told["channels"]},
                         {"Cyan": 0, "Magenta": 9, "Yellow": 0, "Black": 2})
        for form, data, why in (
                ("palette", tiff(2, 1, b"\0\1", {**one, 262: (3, [3]), 320: (3, [0] * 768)}), "a TIFF of other colours"),
                ("16 bits", tiff(2, 1, 2 * rgb, {258: (3, [16] * 3)}), "a TIFF of other numbers than 8 bits"),
                ("planes", tiff(2, 1, rgb, {284: (3, [2]), 273: (4, [8, 10, 12]), 279: (4, [2, 2, 2])}), "a TIFF of planes"),
                ("turned", tiff(2, 1, rgb, {274: (3, [3])}), "a TIFF that is turned"),
                ("multiplied", tiff(2, 1, bytes(8), {**four, 338: (3, [1])}), "a TIFF with more than its colours"),
                ("strange inks", tiff(2, 1, b"\0\0", {**one, 262: (3, [5]), 332: (3, [2])}), "a TIFF of inks that it does not name"),
                ("tiles", tiff(16, 16, bytes(768), {322: (4, [16]), 323: (4, [16]), 324: (4, [8]), 325: (4, [768])}), "a TIFF of tiles")):
            with self.subTest(form=form):
                self.write("b.tif", data)
                self.assertIn(f"b.tif: {why}", self.refused("diff", "a.vx", "b.tif", status=1))

    def test_another_shape(self):
        told = self.compare("b.png", png(2, 4, 8, 0, [b"\x00\xff"] * 4), status=3)
        self.assertEqual(told["facts"], [{"fact": "size", "a": "2 x 1 pixels", "b": "2 x 4 pixels"}])
        self.assertNotIn("pixels", told)
        self.assertIn("give the options with which it was made", told["notCompared"][0])
        # Its box makes it one of the drawing: all of it is black.
        told = self.compare("b.png", png(2, 4, 8, 0, [b"\x00\x00"] * 4), "--box", "0,0,18,36")
        self.assertEqual(told["pixels"]["different"], 0)
        _, messages = self.run_vx("diff", "a.vx", "b.png", "-o", "d.png", status=3)
        self.assertEqual(messages, ["vx: -o d.png: warning: no picture is written, since no pixels are compared"])
        self.assertNotIn("d.png", self.files())

    def test_two_pictures(self):
        self.write("a.png", png(2, 1, 8, 0, [b"\x00\xff"]))
        self.write("b.png", png(2, 1, 8, 0, [b"\x00\x10"]))
        self.assertEqual(self.diff("a.png", "b.png")[1:], [
            "  pixels       1 of 2 differ (50 %), by 239 of 255 at most and 119.5 on average",
            "    place      1 pixel within 1 0 2 1, in pixels from the left and the top"])
        self.write("c.png", png(1, 1, 8, 0, [b"\x00"]))
        self.assertEqual(self.told("a.png", "c.png")["facts"], [{"fact": "size", "a": "2 x 1 pixels", "b": "1 x 1 pixels"}])

    def test_a_plate_is_no_page(self):
        for name in ("p-{ink}.png", "p-{ink}.tif"):
            self.run_vx("plates", "-q", "a.vx", "-o", name)
            name = name.replace("{ink}", "Black")
            self.assertIn(f"{name}: is the plate of Black", self.refused("diff", "a.vx", name, status=1))
            self.assertEqual(len(self.diff(name, name, status=0)), 1)

    def test_damaged_pictures(self):
        whole = png(2, 1, 8, 2, [self.BLACK + self.WHITE])
        large = png(200000, 200000, 8, 0, [])
        for data in (whole[:-30], whole[:20], whole[:8], large, whole.replace(b"IDAT", b"IDAU"),
                     whole[:40] + b"\xff" + whole[41:]):
            self.write("b.png", data)
            self.assertIn("b.png: a damaged PNG: ", self.refused("diff", "a.vx", "b.png", status=1))
        whole = tiff(2, 1, self.BLACK + self.WHITE)
        for data in (whole[:-30], whole[:6], tiff(0, 1, b""), tiff(2, 1, b"xxxxxx", {273: (4, [1 << 30])})):
            self.write("b.tif", data)
            self.assertIn("b.tif: a damaged TIFF: ", self.refused("diff", "a.vx", "b.tif", status=1))
        self.write("b.tif", tiff(200000, 1, b""))
        self.assertIn("larger than any that is compared", self.refused("diff", "a.vx", "b.tif", status=5))

    def test_any_bytes_are_told(self):
        """No damage ends a worker by force, and none is taken for a drawing's fault."""
        self.run_vx("render", "-q", "a.vx", "-o", "a.tif", "--fit", "8")
        self.run_vx("render", "-q", "a.vx", "-o", "a.png", "--fit", "8")
        chance = random.Random(11)
        for name in ("a.tif", "a.png"):
            whole = self.read(name)
            for _ in range(40):
                data = bytearray(whole)
                for _ in range(chance.randint(1, 6)):
                    data[chance.randrange(len(data))] = chance.randrange(256)
                self.write("b", bytes(data))
                process = self.start("diff", "-q", "a.vx", "b", "--max-time", "20")
                errors = process.communicate(timeout=120)[1]
                self.assertIn(process.returncode, (0, 1, 3, 5), errors)

    def test_nothing_is_read_unconfined_where_that_is_required(self):
        self.write("a.png", png(2, 1, 8, 0, [b"\x00\xff"]))
        for other in ("a.png", "a.vx"):
            told = self.refused("diff", "a.png", other, "--require-sandbox", status=1, environment=WITHOUT_LANDLOCK)
            self.assertIn("a.png: not read, there is no sandbox for files", told)
        _, messages = self.run_vx("diff", "a.png", "a.png", environment=WITHOUT_LANDLOCK)
        self.assertEqual(len(messages), 1, messages)

    @unittest.skipIf(SANITIZED, "a sanitizer needs more address space than a memory limit leaves")
    def test_limits(self):
        # An interlaced picture is held whole: here 64 MB.
        self.write("b.png", png(4000, 4000, 8, 2, [bytes(3 * 4000)] * 7, interlace=1))
        self.assertIn("b.png: needs more than 16 MiB of memory", self.refused("diff", "a.vx", "b.png", "--max-memory", "16M", status=5))


class DiffFiles(DiffTest):
    def setUp(self):
        super().setUp()
        self.write("a.vx", document())

    def test_what_was_made_is_the_same(self):
        for kind in ("pdf", "svg"):
            self.run_vx("render", "-q", "a.vx", "-o", f"a.{kind}")
            self.assertEqual(self.diff("a.vx", f"a.{kind}", status=0), [f"a.vx and a.{kind} are the same"])
            told = self.told("a.vx", f"a.{kind}", status=0)
            size = len(self.read(f"a.{kind}"))
            self.assertEqual((told["bytes"], told["notCompared"]), ({"a": size, "b": size}, []))

    def test_what_differs_and_what_nobody_knows(self):
        for kind, fact in (("pdf", ("page box", "0 0 72 36", "0 0 9 9")), ("svg", ("view box", "0 0 72 36", "0 0 9 9"))):
            self.run_vx("render", "-q", "a.vx", "-o", f"b.{kind}", "--box", "0,0,9,9")
            told = self.told("a.vx", f"b.{kind}")
            self.assertIn(fact, [(one["fact"], one["a"], one["b"]) for one in told["facts"]])
            self.assertIn("what they show: make a PNG of each", told["notCompared"][-1])
            self.assertTrue(self.told("a.vx", f"b.{kind}", "--box", "0,0,9,9", status=0)["same"])
            whole = self.read(f"b.{kind}")
            self.write("c", whole[:-1] + b"x")
            told = self.told(f"b.{kind}", "c")
            self.assertEqual((told["bytes"], told["facts"]),
                             ({"a": len(whole), "b": len(whole), "firstDifferent": len(whole) - 1}, []))
        self.write("foreign.pdf", b"%PDF-1.7\nall of it is packed")
        told = self.told("a.vx", "foreign.pdf")
        self.assertIn("page box: it is not said where it can be read in both", told["notCompared"])
        self.write("mm.svg", b"<?xml version='1.0'?>\n<svg\n  viewBox='0.0 0 72.00 36' width='72mm'></svg>")
        told = self.told("a.vx", "mm.svg")
        self.assertNotIn("view box", [one["fact"] for one in told["facts"]])
        self.assertIn("72mm", [one["b"] for one in told["facts"]])

    def test_hostile_files(self):
        for data in (b"%PDF-", b"%PDF-1.4", b"%PDF-1.4\n/MediaBox", b"%PDF-1.4\n/MediaBox [1 2 3", b"%PDF-\r\n/MediaBox" + b" " * 5000,
                     b"<svg", b"<svg viewBox=", b"<svg viewBox='", b"<svg viewBox='\x1b[1m\xff'>", b"<svg width height=''>"):
            self.write("b", data)
            self.assertEqual(self.diff("a.vx", "b")[0], "a.vx and b differ")
            self.assertNotIn("\x1b", "\n".join(self.diff("a.vx", "b")))


class DiffRefusals(DiffTest):
    def test_wrong_words(self):
        self.write("a.vx", document())
        self.write("bad.vx", document("1 k\n"))
        self.write("a.png", png(2, 1, 8, 0, [b"\x00\xff"]))
        self.write("a.pdf", b"%PDF-1.4\n")
        self.write("a.tif", tiff(2, 1, bytes(8), {258: (3, [8] * 4), 277: (3, [4]), 262: (3, [5])}))
        self.write("words.txt", b"words")
        os.mkdir(self.path("folder"))
        os.mkfifo(self.path("pipe"))
        for words, told, status in (
                (["a.vx"], "one name is given: name two", 2),
                (["a.vx", "a.vx", "a.vx"], "more than two names are given", 2),
                (["a.vx", "a.vx", "--tolerance", "255"], "--tolerance 255: not a whole number from 0 to 254", 2),
                (["a.vx", "a.vx", "--tolerance", "x"], "--tolerance x: not a whole number", 2),
                (["a.vx", "a.vx", "--only", "pixel"], "--only pixel: not known: give pixels, inks or facts", 2),
                (["a.vx", "a.vx", "--only", "inks,"], "--only inks,: not known", 2),
                (["a.vx", "a.png", "--only", "pixels"], "--only is for two drawings", 2),
                (["a.vx", "a.vx", "--side-by-side"], "--side-by-side is for a picture", 2),
                (["a.vx", "a.pdf", "-o", "d.png"], "-o is for what differs in pictures", 2),
                (["a.vx", "a.vx", "--only", "facts", "-o", "d.png"], "-o is for what differs in pictures", 2),
                (["a.vx", "a.png", "--pdf-x", "x3"], "--pdf-x is for pdf", 2),
                (["a.vx", "a.pdf", "--dpi", "9"], "--dpi is for", 2),
                (["a.png", "a.png", "--dpi", "9"], "no drawing is drawn", 2),
                (["a.vx", "a.png", "--profile", "none.icc"], "--profile: ", 2),
                (["a.png", "a.pdf"], "a.png is a PNG, and a.pdf a PDF: name two files of one format", 1),
                (["a.png", "a.tif"], "a.png has colours, and a.tif inks", 1),
                (["a.vx", "none.png"], "none.png: no such file", 1),
                (["none.vx", "a.vx"], "none.vx: no such file", 1),
                (["folder", "a.vx"], "folder: is a directory", 1),
                (["a.vx", "bad.vx"], "bad.vx: malformed", 1),
                (["bad.vx", "a.png"], "bad.vx: malformed", 1),
                (["a.vx", "words.txt"], "words.txt: not a VX document", 1)):
            with self.subTest(words=words):
                self.assertIn(told, self.refused("diff", *words, status=status))
        self.assertIn("pipe: ", self.refused("diff", "a.vx", "pipe", "--max-time", "2", status=5))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
