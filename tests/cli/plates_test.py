"""Plates, and how much ink they take, as a user makes them."""
import json
import os
import sys
import unittest

from vxcommand import LEFT_HALF, CommandTest, Png, document, sample

# The left half black, the right half in a spot ink of two thirds, and above all a bar that overprints.
SPOTS = LEFT_HALF + "0 1 1 0 (Red Ink) 0.2 x\n36 0 m\n72 0 l\n72 36 l\n36 36 l\nf\n1 O\n0.4 0 0 0 k\n0 0 m\n72 0 l\n72 9 l\n0 9 l\nf\n"


class Plates(CommandTest):
    def plate(self, name):
        return Png(self.read(name))

    def test_each_ink_has_its_picture(self):
        self.write("a.vx", document(SPOTS))
        output, messages = self.run_vx("plates", "a.vx", "-o", "{stem}-{ink}.png", "--dpi", "72")
        self.assertEqual((output, messages), (b"", []))
        self.assertEqual(self.files(), ["a-Black.png", "a-Cyan.png", "a-Magenta.png", "a-Red Ink.png", "a-Yellow.png", "a.vx"])
        # Rows are counted from the top. Black is all of an ink: 255 less 0.8 of it is 51, less 0.4 of it 153.
        expected = {"Black": (0, 0, 255, 255), "Cyan": (255, 153, 255, 153), "Magenta": (255,) * 4,
                    "Red Ink": (255, 255, 51, 51), "Yellow": (255,) * 4}
        for ink, grays in expected.items():
            plate = self.plate(f"a-{ink}.png")
            self.assertEqual((plate.width, plate.height, plate.channels), (72, 36, 1))
            found = tuple(plate.pixel(x, y)[0] for x, y in ((9, 9), (9, 30), (60, 9), (60, 30)))
            self.assertEqual(found, grays, ink)

    def test_overprint_may_be_ignored(self):
        self.write("a.vx", document(SPOTS))
        self.run_vx("plates", "a.vx", "-o", "{ink}.png", "--dpi", "72", "--overprint", "ignore")
        self.assertEqual(self.plate("Black.png").pixel(9, 30), (255,))
        self.assertEqual(self.plate("Red Ink.png").pixel(60, 30), (255,))

    def test_names_of_inks_become_names_of_files(self):
        names = ["../up", "up", "UP", ".hidden", "a{stem}b"]
        self.write("a.vx", document("".join(f"1 0 0 0 ({name}) 0 x\n0 0 m\n9 0 l\n9 9 l\nf\n" for name in names)))
        self.run_vx("plates", "a.vx", "-o", "{ink}.png")
        self.assertEqual([name for name in self.files() if name[0] not in "ab"],
                         ["Black.png", "Cyan.png", "Magenta.png", "UP-2.png", "Yellow.png", "___up.png", "_hidden.png", "up.png"])
        self.assertIn("a_stem_b.png", self.files())

    def test_a_pipe_is_read_once(self):
        self.run_vx("plates", "-", "-o", "{stem}-{ink}.png", stdin=document(SPOTS))
        self.assertEqual(len(self.files()), 5)

    def test_folders_are_made(self):
        self.write("a.vx", document())
        self.refused("plates", "a.vx", "-o", "out/{stem}/{ink}.png", "--no-mkdir", status=4)
        self.run_vx("plates", "a.vx", "-o", "out/{stem}/{ink}.png")
        self.assertEqual(sorted(os.listdir(self.path("out/a"))), ["Black.png", "Cyan.png", "Magenta.png", "Yellow.png"])

    def test_a_folder_gets_names(self):
        self.write("a.vx", document())
        self.run_vx("plates", "a.vx", "-o", "./")
        self.assertIn("a-Black.png", self.files())

    def test_a_name_of_another_format_is_told(self):
        self.write("a.vx", document())
        for name, told in (("{ink}.png", ["vx: -o {ink}.png: warning: tiff is written under a name of png: leave out -f, or change the name after -o"]),
                           ("{ink}.tif", []), ("{ink}", [])):
            self.assertEqual(self.run_vx("plates", "a.vx", "-f", "tiff", "-o", name)[1], told)
        self.assertEqual(self.read("Black.png")[:4], b"II*\x00")

    def test_a_malformed_drawing_leaves_nothing(self):
        self.write("a.vx", document(SPOTS + "1 k\n"))
        message = self.refused("plates", "a.vx", "-o", "{ink}.png", status=1)
        self.assertIn('"k" wants 4 numbers, has 1', message)
        self.assertEqual(self.files(), ["a.vx"])

    def test_what_is_wrong_is_told(self):
        self.write("a.vx", document())
        self.write("b.vx", document())
        cases = {
            ("plates", "a.vx"): "no output: add -o and a name, as -o '{stem}-{ink}.png'",
            ("plates", "a.vx", "-o", "a.png"): "-o a.png: all plates would be written to one file: name each after its ink, as -o '{stem}-{ink}.png'",
            ("plates", "a.vx", "-o", "{ink}.tga"): "-o {ink}.tga: png or tiff is written: name a .png or .tiff",
            ("plates", "a.vx", "b.vx", "-o", "{ink}.png"): "-o {ink}.png: \"a.vx\" and \"b.vx\" would both be written to \"{ink}.png\": name each after its input, as -o '{dir}/{stem}.{ext}'",
            ("plates", "a.vx", "-o", "{ink}.png", "--samples", "3"): "--samples 3: not known: give one of 1, 2, 4, 8",
            ("coverage", "a.vx", "--limit", "no"): "--limit no: not a number of percent above 0 and up to 10000: give one as 300",
            ("coverage", "a.vx", "--limit", "0"): "--limit 0: not a number of percent above 0 and up to 10000: give one as 300",
            ("coverage", "a.vx", "-o", "a.pdf"): "-o a.pdf: png is written: name a .png",
        }
        for words, text in cases.items():
            with self.subTest(words):
                self.assertEqual(self.refused(*words, status=2), "vx: " + text)
        self.assertEqual(self.files(), ["a.vx", "b.vx"])

    def test_a_drawing_is_not_overwritten(self):
        self.write("a.vx", document())
        self.write("Black.png", document())
        message = self.refused("plates", "a.vx", "-o", "{ink}.png", status=2)
        self.assertEqual(message, 'vx: -o {ink}.png: would overwrite the drawing "Black.png": choose another name, or add --force')
        self.run_vx("plates", "a.vx", "-o", "{ink}.png", "--force")
        self.assertEqual(self.plate("Black.png").channels, 1)


class Coverage(CommandTest):
    def measured(self, *words):
        return [json.loads(line) for line in self.run_vx("coverage", "--json", *words)[0].splitlines()]

    def test_numbers(self):
        self.write("a.vx", document(SPOTS))
        self.write("empty.vx", document(""))
        found, empty = self.measured("a.vx", "empty.vx", "--dpi", "72", "--limit", "110")
        # A quarter of the page has the bar, of 0.4 cyan; its left half has black besides, its right half 0.8 of the spot ink.
        self.assertEqual(found, {
            "file": "a.vx",
            "inks": [{"name": "Cyan", "spot": False, "mean": 0.1}, {"name": "Magenta", "spot": False, "mean": 0.0},
                     {"name": "Yellow", "spot": False, "mean": 0.0}, {"name": "Black", "spot": False, "mean": 0.5},
                     {"name": "Red Ink", "spot": True, "mean": 0.4}],
            "total": {"mean": 1.0, "most": 1.4, "mostAt": [0.5, 8.5]},
            "above": {"limit": 1.1, "share": 0.25, "area": 648.0}})
        self.assertEqual(empty["total"], {"mean": 0.0, "most": 0.0})

    def test_words(self):
        self.write("a.vx", document())
        self.assertEqual(self.run_vx("coverage", "a.vx", "--dpi", "72")[0].decode().splitlines(), [
            "a.vx", "  Cyan              0.00 %", "  Magenta           0.00 %", "  Yellow            0.00 %",
            "  Black            50.00 %", "  all inks         50.00 %", "  at most          100.0 %, first at 0.5, 35.5 pt",
            "  above 300 %       0.00 % of the page, 0.0 mm²"])

    def test_text_in_a_spot_ink(self):
        self.write("a.vx", document("0 1 0 0 (Pink) 0 x\n0 To\n1 0 0 1 5 5 0 Tp\nTP\n0 Tr\n/_Helvetica 30 Tf\n(HHH) Tx\nTO\n"))
        inks = self.measured("a.vx")[0]["inks"]
        self.assertEqual([ink["name"] for ink in inks if ink["mean"] > 0], ["Pink"])

    def test_text_is_measured_once(self):
        output, _ = self.run_vx("coverage", "-q", "--json", sample("text-point"))
        self.assertEqual(len(output.splitlines()), 1)

    def test_heat_map(self):
        self.write("a.vx", document(SPOTS))
        self.run_vx("coverage", "a.vx", "-o", "map.png", "--dpi", "72", "--limit", "100")
        heat = Png(self.read("map.png"))
        self.assertEqual(heat.channels, 3)
        # Black alone is the limit, yellow; the spot ink is four fifths of it, blue; with the bar there is more, red.
        self.assertEqual(heat.pixel(9, 9), (254, 217, 118))
        self.assertEqual(heat.pixel(60, 9), (107, 174, 214))
        self.assertEqual(heat.pixel(9, 30), (103, 0, 13))

    def test_a_malformed_drawing_prints_nothing(self):
        self.write("a.vx", document(SPOTS + "1 k\n"))
        self.refused("coverage", "a.vx", "-o", "map.png", status=1)
        self.assertEqual(self.files(), ["a.vx"])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
