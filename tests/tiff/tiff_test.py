"""TIFF files as libtiff's tiffinfo, as Pillow and as a plain reader of our own see them, beside the plates of the same drawing."""
import os
import shutil
import struct
import subprocess
import sys
import unittest
import zlib

import numpy as np
from PIL import Image

from vxcommand import CommandTest, LEFT_HALF, document, sample

PROCESS = ("Cyan", "Magenta", "Yellow", "Black")
# Two spot inks over black, and a bar that overprints.
SPOTS = LEFT_HALF + "0 1 1 0 (Red Ink) 0.2 x\n30 0 m\n60 0 l\n72 33 l\n36 36 l\nf\n1 O\n1 0 0 0 (Blue) 0.5 x\n0 0 m\n72 0 l\n72 9 l\n0 11 l\nf\n"
SIZES = {1: "B", 2: "B", 3: "H", 4: "I", 5: "II", 7: "B", 16: "Q"}


class Tiff:
    """Reads what a TIFF of one directory, compressed strips and differences between neighbours says, and nothing else."""

    def __init__(self, data):
        assert data[:2] == b"II", "not little-endian"
        self.is_big = struct.unpack_from("<H", data, 2)[0] == 43
        place, count, entry = ("<Q", "<Q", "<HHQ") if self.is_big else ("<I", "<H", "<HHI")
        at = struct.unpack_from(place, data, 8 if self.is_big else 4)[0]
        entries = struct.unpack_from(count, data, at)[0]
        at += struct.calcsize(count)
        self.tags = {}
        for _ in range(entries):
            tag, kind, number = struct.unpack_from(entry, data, at)
            form = "<" + SIZES[kind] * number
            where = at + struct.calcsize(entry)
            if struct.calcsize(form) > struct.calcsize(place):
                where = struct.unpack_from(place, data, where)[0]
            self.tags[tag] = struct.unpack_from(form, data, where)
            at += struct.calcsize(entry) + struct.calcsize(place)
        assert (self.tags[259], self.tags[284], self.tags[317]) == ((8,), (1,), (2,)), "not deflated, with differences, side by side"
        rows = b"".join(zlib.decompress(data[at:at + size]) for at, size in zip(self.tags[273], self.tags[279]))
        differences = np.frombuffer(rows, np.uint8).reshape(self.tags[257][0], self.tags[256][0], self.tags[277][0])
        self.samples = np.cumsum(differences, axis=1, dtype=np.uint8)

    def names(self):
        return bytes(self.tags[333]).decode().split("\0")[:-1]


class Files(CommandTest):
    def plates(self, source, *options):
        """How much of each ink its plate has, 255 for all of it."""
        os.makedirs(self.path("plates"), exist_ok=True)
        self.run_vx("plates", "-q", source, "-o", "plates/{ink}.png", *options)
        plates = {}
        for name in os.listdir(self.path("plates")):
            plates[name[:-4]] = 255 - np.asarray(Image.open(self.path("plates/" + name)))
            os.remove(self.path("plates/" + name))
        return plates

    def test_each_sample_is_that_of_its_plate(self):
        many = "".join(f"1 0 0 0 (Ink {i}) 0.{i} x\n{5 * i} {i} m\n{5 * i + 9} 5 l\n{5 * i} 30 l\nf\n" for i in range(10))
        self.write("spots.vx", document(SPOTS))
        self.write("many.vx", document(many))
        self.write("empty.vx", document(""))
        for source, options, inks in (
                ("spots.vx", (), 6), ("spots.vx", ("--dpi", "300", "--samples", "2"), 6),
                ("spots.vx", ("--overprint", "ignore", "--fit", "99"), 6), ("spots.vx", ("--box", "9,3,50,30", "--zoom", "3"), 6),
                ("many.vx", ("--dpi", "400"), 14), ("empty.vx", ("--width", "1", "--height", "1"), 4),
                (sample("poster"), ("--dpi", "60"), 4), (sample("spot-inks"), (), 6), (sample("text-point"), (), 4)):
            with self.subTest(source=source, options=options):
                plates = self.plates(source, *options)
                self.run_vx("render", "-q", source, "-o", "a.tif", *options)
                tiff = Tiff(self.read("a.tif"))
                names = list(PROCESS) if inks == 4 else tiff.names()
                self.assertEqual(names[:4], list(PROCESS))
                self.assertEqual((len(names), sorted(names)), (inks, sorted(plates)))
                for number, name in enumerate(names):
                    np.testing.assert_array_equal(tiff.samples[:, :, number], plates[name], name)

    def test_spot_inks_may_be_painted_by_those_of_the_process(self):
        self.write("a.vx", document("0 1 1 0 (Red Ink) 0.2 x\n0 0 m\n72 0 l\n72 36 l\n0 36 l\nf\n"))
        self.run_vx("render", "a.vx", "-o", "a.tif", "--spots", "process", "--fit", "9")
        tiff = Tiff(self.read("a.tif"))
        self.assertEqual(tiff.samples.shape, (5, 9, 4))
        self.assertEqual(tiff.samples[2, 4].tolist(), [0, 204, 204, 0])
        self.assertNotIn(333, tiff.tags)

    def test_pillow_sees_the_same(self):
        self.write("a.vx", document(SPOTS))
        self.run_vx("render", "a.vx", "-o", "a.tiff")
        self.run_vx("render", "a.vx", "-o", "process.tif", "--spots", "process")
        for name in ("a.tiff", "process.tif"):
            image = Image.open(self.path(name))
            self.assertEqual((image.mode, [round(dpi) for dpi in image.info["dpi"]]), ("CMYK", [150, 150]))
            np.testing.assert_array_equal(np.asarray(image), Tiff(self.read(name)).samples[:, :, :4])

    def test_plates_are_those_of_the_pngs(self):
        self.write("a.vx", document(SPOTS))
        for words in (("-o", "{ink}.tif"), ("-o", "{ink}.{ext}", "-f", "tiff"), ("-o", "./", "-f", "tiff")):
            self.run_vx("plates", "a.vx", *words)
        plates = self.plates("a.vx")
        self.assertEqual(sorted(plates), sorted([*PROCESS, "Red Ink", "Blue"]))
        for ink, amounts in plates.items():
            image = Image.open(self.path(ink + ".tif"))
            self.assertEqual((image.mode, image.tag_v2[285]), ("L", ink))
            np.testing.assert_array_equal(np.asarray(image), 255 - amounts)  # black is all of the ink
            for same in (f"{ink}.tiff", f"a-{ink}.tiff"):
                self.assertEqual(self.read(same), self.read(ink + ".tif"))

    def test_it_goes_to_standard_output_and_through_a_batch(self):
        self.write("a.vx", document(SPOTS))
        self.run_vx("render", "a.vx", "-o", "a.tif")
        self.assertEqual(self.run_vx("render", "-", "-f", "tiff", "-o", "-", stdin=self.read("a.vx"))[0], self.read("a.tif"))
        self.run_vx("batch", "a.vx", "-f", "tiff", "-o", "out/")
        self.assertEqual(self.read("out/a.tiff"), self.read("a.tif"))
        self.run_vx("verify", "a.vx", "a.tif")

    def test_what_cannot_be_is_told_and_leaves_nothing(self):
        self.write("a.vx", document())
        self.write("bad.vx", document(SPOTS + "1 k\n"))
        self.write("many.vx", document("".join(f"1 0 0 0 (I{i}) 0 x\n0 0 m\n9 9 l\n9 0 l\nf\n" for i in range(253))))
        before = self.files()
        for words, text, status in (
                (["render", "a.vx", "-o", "a.tif", "-b", "white"], "--background is for pdf and svg and png, and tiff is written: leave it out", 2),
                (["render", "a.vx", "-o", "a.tif", "--intent", "perceptual"], "--intent is for svg and png, and tiff is written", 2),
                (["render", "a.vx", "-o", "a.tif", "--profile", "a.vx"], 'profile "a.vx" cannot be read as an ICC profile', 2),
                (["render", "a.vx", "-o", "a.tif", "--samples", "3"], "--samples 3: not known: give one of 1, 2, 4, 8", 2),
                (["plates", "a.vx", "-o", "{ink}.tif", "-f", "pdf"], "--format pdf: not one of plates: give png or tiff", 2),
                (["plates", "a.vx", "-o", "{ink}.gif"], "-o {ink}.gif: png or tiff is written: name a .png or .tiff", 2),
                (["render", "bad.vx", "-o", "a.tif"], '"k" wants 4 numbers, has 1', 1),
                (["render", "many.vx", "-o", "a.tif"], "it has 257 inks, and a TIFF takes 256", 1)):
            with self.subTest(words):
                self.assertIn(text, self.refused(*words, status=status))
                self.assertEqual(self.files(), before)


@unittest.skipUnless(shutil.which("tiffinfo"), "tiffinfo is not installed")
class Tags(CommandTest):
    def told(self, name):
        """What tiffinfo tells, by the words before the colon. It tells warnings beside it."""
        result = subprocess.run(["tiffinfo", self.path(name)], capture_output=True, text=True, check=True)
        self.assertEqual(result.stderr, "")
        lines = (line.strip().partition(":") for line in result.stdout.splitlines())
        return {word: value.strip() for word, _, value in lines}

    def test_a_page_in_inks(self):
        self.write("a.vx", document(SPOTS))
        self.run_vx("render", "a.vx", "-o", "a.tif", "--dpi", "300")
        told = self.told("a.tif")
        expected = {"Compression Scheme": "AdobeDeflate", "Photometric Interpretation": "separated",
                    "Extra Samples": "2<unspecified, unspecified>", "Ink Names": "Cyan, Magenta, Yellow, Black, Red Ink, Blue",
                    "NumberOfInks": "6", "InkSet": "1", "Samples/Pixel": "6", "Resolution": "300, 300 pixels/inch",
                    "ImageDescription": "A (small) square", "Planar Configuration": "single image plane",
                    "Orientation": "row 0 top, col 0 lhs"}
        self.assertEqual({word: told.get(word) for word in expected}, expected)
        self.assertRegex(told["Predictor"], "^horizontal differencing")
        self.assertRegex(told["ICC Profile"], "^<present>")

    def test_the_profile_is_that_of_the_press(self):
        self.write("a.vx", document())
        built_in = os.path.join(os.environ["VX_SOURCE_DIR"], "devices/colour/profiles/fogra39.icc")
        with open(built_in, "rb") as file:
            profile = file.read()
        for words, expected in (((), profile), (("--profile", built_in), profile), (("--profile", "none"), None)):
            self.run_vx("render", "a.vx", "-o", "a.tif", *words)
            self.assertEqual(Image.open(self.path("a.tif")).info.get("icc_profile"), expected)

    def test_a_plate(self):
        self.write("a.vx", document(SPOTS))
        self.run_vx("plates", "a.vx", "-o", "{ink}.tif")
        told = self.told("Red Ink.tif")
        expected = {"Photometric Interpretation": "min-is-black", "Samples/Pixel": "1", "PageName": "Red Ink",
                    "ImageDescription": "A (small) square", "Resolution": "150, 150 pixels/inch"}
        self.assertEqual({word: told.get(word) for word in expected}, expected)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
