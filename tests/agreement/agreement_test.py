"""Every sample as PNG, PDF and SVG: other people's programs show in the files what our own picture shows.

A difference is a fault of ours until it is shown to be theirs; then it has a row, with its reason, in LARGER.
"""
import os
import re
import unittest

from PIL import Image, ImageChops, ImageFilter, ImageStat

import pictures
from vxcommand import CommandTest, sample, sample_names

DPI = 288

# The most that a picture may differ, of 255: over all, and in the worst block. Along edges two programs differ by a few
# levels; a shape that is missing, or lies a pixel off, shows as more.
USUAL = {
    "poppler": (1.0, 25),
    "MuPDF": (1.5, 25),
    "Ghostscript": (1.2, 25),
    "rsvg": (0.5, 12),
}
# The same for text as text: programs move letters to whole parts of a pixel, and rsvg has its own distances between
# them.
TEXT = {
    "poppler": (2.5, 60),
    "MuPDF": (1.2, 28),
    "Ghostscript": (1.2, 35),
    "rsvg": (0.8, 55),
}
LARGER = {
    # A line without width is as thin as each program finds right; to this rsvg it is half a point wide.
    ("hairlines", "poppler"): (3, 55),
    ("hairlines", "MuPDF"): (4.5, 85),
    ("hairlines", "Ghostscript"): (3.5, 60),
    ("hairlines", "rsvg"): (4, 55),
    # Lines thinner than a pixel, one beside the other: these draw each as wide as a pixel.
    ("pocket-trumpet", "poppler"): (2, 95),
    ("pocket-trumpet", "Ghostscript"): (1.5, 40),
    # To poppler a corner of curves is as sharp as the lines that stand for them, which takes it below the mitre limit.
    ("butterfly", "poppler"): (1, 50),
    # A plate of its own leaves those of the process inks alone under overprint; our picture has the inks that stand in for it.
    ("spot-inks", "poppler"): (1.5, 130),
    ("spot-inks", "MuPDF"): (1.5, 130),
    # Colours of a screen that are multiplied come out purer than inks upon each other.
    ("overprint", "rsvg"): (2.5, 75),
}


def box_of(name):
    """The document's, in whole points, so that every program has the same pixels."""
    with open(sample(name), encoding="latin-1") as file:
        left, bottom, right, top = map(int, re.search(r"%%BoundingBox: *(.*)", file.read())[1].split())
    return f"--box={left},{bottom},{right},{top}"


class Agreement(CommandTest):
    def draw(self, name, extension, *words):
        out = f"out.{extension}"
        self.run_vx("render", "-q", sample(name), "-o", out, box_of(name), *words)
        return self.path(out)

    def own(self, name, *words):
        return Image.open(self.draw(name, "png", "-r", str(DPI), *words)).convert("RGB")

    def compare(self, name, program, own, theirs, usual):
        with self.subTest(f"{name} by {program}"):
            self.assertEqual(own.size, theirs.size)
            mean, worst = pictures.difference(own, theirs)
            limits = LARGER.get((name, program), usual[program])
            self.assertTrue(mean <= limits[0] and worst <= limits[1], f"{mean}, {worst}: more than {limits}")
            if limits is not usual[program]:
                self.assertTrue(mean > usual[program][0] or worst > usual[program][1], "it needs no row of its own")


class Pdf(Agreement):
    # Inks become colours by plain arithmetic here, since every program can do that.
    def test_every_sample_looks_as_in_our_png(self):
        for name in sample_names():
            own, pdf = self.own(name, "--profile", "none"), self.draw(name, "pdf")
            usual = TEXT if name.startswith("text-") else USUAL
            for program, inks in pictures.PDF_PROGRAMS.items():
                self.compare(name, program, own, inks(pdf, DPI, self.folder).convert("RGB"), usual)


class Svg(Agreement):
    def compare_with(self, own, name, usual, *words):
        svg = self.draw(name, "svg", *words)
        self.compare(name, "rsvg", own, pictures.colours_by_rsvg(svg, own.size, self.folder), usual)

    def test_every_sample_looks_as_in_our_png(self):
        for name in sample_names():
            own = self.own(name)
            self.compare_with(own, name, USUAL, "--text", "outlines")
            # The fonts are installed here, so a viewer that does not read the embedded ones finds them.
            if name.startswith("text-"):
                self.compare_with(own, name, TEXT)


class Seams(Agreement):
    """A blend is smooth along its ramp, whoever draws it."""

    def check_smooth(self, picture, pixels, colour, what):
        """No pixel is off the mean of its neighbours by more than 3."""
        levels = [picture.getpixel(pixel)[colour] for pixel in pixels]
        self.assertGreater(max(levels) - min(levels), 40, f"no ramp at all: {what}")
        for before, level, after in zip(levels, levels[1:], levels[2:]):
            self.assertLessEqual(abs(level - (before + after) / 2), 3, what)

    def check(self, picture):
        self.assertEqual(picture.size, (600, 400))
        for x in (10, 201, 333, 580):
            self.check_smooth(picture, [(x, y) for y in range(0, 120)], 0, f"the sky down to the hills at {x}")
            self.check_smooth(picture, [(x, y) for y in range(270, 399)], 0, f"the water at {x}")
        self.check_smooth(picture, [(280, y) for y in range(200, 260)], 2, "the sun from its rim up to its middle")
        self.check_smooth(picture, [(x, 255) for x in range(425, 600)], 0, "the slope of the hill")

    def test_blends_are_smooth(self):
        pdf = self.draw("gradients", "pdf")
        for program, inks in pictures.PDF_PROGRAMS.items():
            with self.subTest(program):
                self.check(inks(pdf, 144, self.folder).convert("RGB"))
        with self.subTest("rsvg"):
            self.check(pictures.colours_by_rsvg(self.draw("gradients", "svg"), (600, 400), self.folder))


class Plates(Agreement):
    """Each plate beside that which a press program makes of our PDF, where both have four samples a pixel, each way."""

    DPI = 72
    MEAN = 1.5
    ROUNDED = 1  # an amount between two levels is either
    # The most that the mean, and what is flat, may be off.
    LARGER = {
        # A line without width is as thin as each program finds right.
        "hairlines": (11, ROUNDED),
        # Lines thinner than a pixel, one beside the other, make a flat gray: this draws each as wide as a sample.
        "pocket-trumpet": (MEAN, 42),
        # The levels of a slow blend go up a pixel earlier or later.
        "gradient-midpoints": (MEAN, 2),
    }

    def plates(self, name):
        self.run_vx("plates", "-q", sample(name), "-o", "plate-{ink}.png", "-r", str(self.DPI), box_of(name))
        return {file[len("plate-"):-len(".png")]: Image.open(self.path(file)) for file in self.files()
                if file.startswith("plate-") and file.endswith(".png")}

    @staticmethod
    def flat(picture):
        """White where no neighbour has another level."""
        least, most = picture.filter(ImageFilter.MinFilter(3)), picture.filter(ImageFilter.MaxFilter(3))
        return ImageChops.difference(least, most).point(lambda level: 0 if level else 255)

    def test_every_sample_has_the_plates_of_its_pdf(self):
        for name in sample_names():
            own = self.plates(name)
            theirs = pictures.plates(self.draw(name, "pdf"), self.DPI, self.folder, own, samples=4)
            for ink, plate in own.items():
                other = theirs[ink].convert("L")
                mean, rounded = self.LARGER.get(name, (self.MEAN, self.ROUNDED))
                with self.subTest(f"{name}, {ink}"):
                    self.assertEqual(plate.size, other.size)
                    off = ImageChops.difference(plate, other)
                    self.assertLessEqual(ImageStat.Stat(off).mean[0], mean)
                    flat = ImageChops.multiply(self.flat(plate), self.flat(other))
                    self.assertLessEqual(ImageChops.multiply(off, flat).getextrema()[1], rounded)
            for ink in own:
                os.remove(self.path(f"plate-{ink}.png"))


if __name__ == "__main__":
    unittest.main()
