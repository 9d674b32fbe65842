"""Inkscape, ImageMagick and Scribus open drawings by what packaging/ has for them.

The environment names what is tested: VX the program, VX_PACKAGING the folder.
"""
import gzip
import os
import re
import shutil
import struct
import subprocess
import unittest
import xml.etree.ElementTree as ElementTree

from PIL import Image

import pictures
from editors_test import DPI, EditorTest, Inkscape, shown
from vxcommand import VX, document, sample, sample_names

PACKAGING = os.environ["VX_PACKAGING"]
SVG = "{http://www.w3.org/2000/svg}"
INKSCAPE = "{http://www.inkscape.org/namespaces/inkscape}"
SODIPODI = "{http://sodipodi.sourceforge.net/DTD/sodipodi-0.dtd}"
PATH_WITH_VX = os.path.dirname(VX) + os.pathsep + os.environ["PATH"]
PATH_WITHOUT_VX = os.pathsep.join(
    folder for folder in os.environ["PATH"].split(os.pathsep) if not os.path.exists(os.path.join(folder, "vx")))

# The circle of an object that is malformed is left out.
MALFORMED = document("0 0 0 1 k\n0 0 m\n36 0 l\n36 36 l\n0 36 l\nf\n1 2 (three) l\n")


class ExtensionTest(EditorTest):
    def setUp(self):
        super().setUp()
        self.environment = {}

    def call(self, *words, commands="", **environment):
        return super().call(*words, commands=commands, **{"PATH": PATH_WITH_VX, **self.environment, **environment})

    def assert_same(self, name, other, limits, *words):
        """Compares a picture with our own of a sample."""
        mean, worst = pictures.difference(shown(self.make("png", [name], *words)[name]), shown(self.path(other)))
        self.assertTrue(mean <= limits[0] and worst <= limits[1], f"{name}: {mean:.2f}, {worst}: more than {limits}")


class InkscapeExtension(ExtensionTest):
    PROGRAM, COMMAND = "Inkscape", "inkscape"

    def setUp(self):
        super().setUp()
        self.extensions = os.path.join(self.home, "extensions")
        shutil.copytree(os.path.join(PACKAGING, "inkscape"), self.extensions)
        self.environment = {"INKSCAPE_PROFILE_DIR": self.home}

    def saved(self, name, actions=""):
        """A drawing that Inkscape has opened, changed by its actions, and saved."""
        self.call("inkscape", sample(name), f"--actions={actions}export-filename:{self.path('saved.svg')};export-type:svg;export-do")
        return ElementTree.parse(self.path("saved.svg")).getroot()

    def run_alone(self, name, **environment):
        return subprocess.run(["/usr/bin/python3", os.path.join(self.extensions, "vx_input.py"), name], cwd=self.folder, check=False,
                              capture_output=True, text=True, env={**os.environ, "PATH": PATH_WITH_VX, **environment})

    def test_all_samples(self):
        names = list(sample_names())
        for name in names:
            shutil.copy(sample(name), self.folder)
        theirs = Inkscape.shown(self, {name: self.path(name + ".vx") for name in names})
        self.compare("svg", self.own(names), theirs)

    def test_one_command_makes_a_picture(self):
        shutil.copy(sample("poster"), self.path("drawing.vx"))
        self.call("inkscape", "drawing.vx", "--export-type=png", f"--export-dpi={DPI}")
        self.assert_same("poster", "drawing.png", (1.3, 15), "-r", str(DPI))

    def test_layers(self):
        layers = [group for group in self.saved("layers-nested") if group.get(INKSCAPE + "groupmode") == "layer"]
        self.assertEqual([(layer.get(INKSCAPE + "label"), "display:none" in layer.get("style", ""), layer.get(SODIPODI + "insensitive"))
                          for layer in layers],
                         [("Ground", False, None), ("Trees", False, None), ("Notes", True, None)])
        rows = [group for group in layers[0].iter() if group.get(INKSCAPE + "groupmode") == "layer"][1:]
        self.assertEqual([(row.get(INKSCAPE + "label"), row.get(SODIPODI + "insensitive")) for row in rows], [("Field, ploughed", "true")])

    def test_groups(self):
        groups = [[child.tag for child in group] for group in self.saved("spot-inks").iter(SVG + "g")]
        self.assertEqual(groups, [[SVG + "path"] * 3] * 2)

    def test_lines_of_text_are_edited(self):
        root = self.saved("text-point", "select-by-element:text;object-set-property:fill,#00c000;")
        lines = ["".join(line.itertext()) for line in root.iter(SVG + "text")]
        self.assertIn("Handgloves", lines)
        self.assertIn("Ligne, Zeile, fine", lines)
        for line in root.iter(SVG + "text"):
            self.assertIn("#00c000", line.get("style", ""))

    def test_spot_inks_are_swatches(self):
        root = self.saved("spot-inks")
        swatches = {gradient.get("id"): gradient.get(INKSCAPE + "label") for gradient in root.iter(SVG + "linearGradient")
                    if gradient.get(INKSCAPE + "swatch") == "solid"}
        self.assertEqual(sorted(swatches.values()), ["Brick", "Brick 40 %", "Brick 70 %", "Brick 80 %", "Night", "Night 15 %",
                                                     "Night 50 %", "Night 60 %"])
        for path in root.iter(SVG + "path"):
            painted = re.findall(r"url\(#(\w+)\)", path.get("fill", "") + path.get("stroke", "") + path.get("style", ""))
            inks = [path.get(name) for name in ("data-ink", "data-stroke-ink") if path.get(name) is not None]
            self.assertEqual(sorted(swatches[swatch].split()[0] for swatch in painted), sorted(inks))

    def test_what_vx_tells_is_told(self):
        done = self.run_alone(sample("text-missing"))
        self.assertEqual(done.returncode, 0)
        self.assertIn('no font "AGaramond-Semibold", drawn with', done.stderr)
        self.write("malformed.vx", MALFORMED)
        done = self.run_alone("malformed.vx")
        self.assertEqual(done.returncode, 0)
        self.assertIn("malformed", done.stderr)
        self.assertEqual(len(list(ElementTree.fromstring(done.stdout).iter(SVG + "path"))), 1)

    def test_failures_are_told(self):
        self.write("other.vx", b"%!PS-Other-3.0\n%%Title: not ours\n")
        done = self.run_alone("other.vx")
        self.assertEqual((done.returncode != 0, done.stdout), (True, ""))
        self.assertIn("other.vx: not a VX document", done.stderr)
        done = self.run_alone(sample("poster"), PATH=PATH_WITHOUT_VX)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("Install the package vx", done.stderr)


class ImageMagick(ExtensionTest):
    PROGRAM, COMMAND = "ImageMagick", "identify"

    def setUp(self):
        super().setUp()
        self.environment = {"MAGICK_CONFIGURE_PATH": os.path.join(PACKAGING, "imagemagick")}

    def assert_read(self, name, drawing, *words):
        self.call("convert", *words, drawing, "out.png")
        self.assert_same(name, "out.png", (0, 0), "-r", "72")

    def test_a_name_in_vx(self):
        shutil.copy(sample("poster"), self.path("drawing.vx"))
        self.assert_read("poster", "drawing.vx")

    def test_a_jpeg_is_on_white(self):
        shutil.copy(sample("text-point"), self.path("drawing.vx"))
        self.call("convert", "drawing.vx", "-quality", "95", "x.jpg")
        self.assert_same("text-point", "x.jpg", (2, 12), "-r", "72")

    def test_the_first_bytes_decide_for_other_names(self):
        with open(sample("text-point"), "rb") as file:
            data = file.read()
        for name, stored in {"bare": data, "drawing.eps": data, "drawing.ps": data, "drawing.vx.gz": gzip.compress(data),
                             "packed": gzip.compress(data), "packed.vx": gzip.compress(data)}.items():
            with self.subTest(name):
                self.write(name, stored)
                self.assert_read("text-point", name)

    def test_a_binary_eps_file_is_read_when_it_is_named(self):
        for name in ("wrapped", "wrapped.vx", "wrapped.eps"):
            with self.subTest(name):
                shutil.copy(sample("binary-wrapper"), self.path(name))
                self.assert_read("binary-wrapper", "vx:" + name)

    def test_files_of_others_stay_theirs(self):
        program = b"%!PS-Other-3.0 EPSF-3.0\n%%BoundingBox: 0 0 9 9\n0 0 9 9 rectfill\n%%EOF\n"
        wrapped = struct.pack("<IIIIIIIH", 0xC6D3D0C5, 30, len(program), 0, 0, 0, 0, 0xFFFF) + program
        note = self.path("started")
        os.mkdir(self.path("bin"))
        with open(self.path("bin/vx"), "w", encoding="ascii") as file:
            file.write(f"#!/bin/sh\ntouch '{note}'\nexit 1\n")
        os.chmod(self.path("bin/vx"), 0o755)
        environment = {**os.environ, **self.environment, "HOME": self.home, "PATH": self.path("bin") + os.pathsep + os.environ["PATH"]}
        shutil.copy(sample("poster"), self.path("own"))
        for name, data, starts in [("other.eps", program, False), ("other", program, False), ("other-wrapped.eps", wrapped, False),
                                   ("own", None, True)]:
            with self.subTest(name):
                if data is not None:
                    self.write(name, data)
                subprocess.run(["convert", name, "out.png"], cwd=self.folder, env=environment, capture_output=True, check=False)
                self.assertEqual(os.path.exists(note), starts)

    def test_density(self):
        self.call("convert", "-density", "200", "-units", "PixelsPerInch", sample("spot-inks"), "out.png")
        self.assert_same("spot-inks", "out.png", (0, 0), "-r", "200")
        with Image.open(self.path("out.png")) as picture:
            self.assertAlmostEqual(picture.info["dpi"][0], 200, places=1)

    def test_nothing_behind_it(self):
        shutil.copy(sample("text-point"), self.path("drawing.vx"))
        self.call("convert", "vxa:drawing.vx", "out.png")
        expected = self.make("png", ["text-point"], "-b", "none", "-r", "72")["text-point"]
        with Image.open(self.path("out.png")) as picture, Image.open(expected) as own:
            self.assertEqual(picture.convert("RGBA").getchannel("A").tobytes(), own.convert("RGBA").getchannel("A").tobytes())
            self.assertEqual(own.getchannel("A").getextrema(), (0, 255))

    def test_names_are_not_run(self):
        name = "a b'c\"$(touch started);`touch started`.vx"
        shutil.copy(sample("text-point"), self.path(name))
        self.assert_read("text-point", name)
        self.assertFalse(os.path.exists(self.path("started")))

    def test_a_folder_of_the_user(self):
        shutil.copytree(os.path.join(PACKAGING, "imagemagick"), os.path.join(self.home, ".config", "ImageMagick"))
        self.environment = {}
        shutil.copy(sample("text-point"), self.path("bare"))
        self.assert_read("text-point", "bare")


class ScribusScript(ExtensionTest):
    PROGRAM, COMMAND = "Scribus", "scribus"
    PLACE = os.path.join(PACKAGING, "scribus", "vx_place.py")

    # Each line of WORDS is a script's; what comes of it is exported.
    DRIVER = """
import os
import runpy
import sys
import scribus

def export(name):
    image = scribus.ImageExport()
    image.type, image.dpi, image.scale, image.quality = "PNG", %d, 100, 100
    image.saveAs(name + ".png")
    pdf = scribus.PDFfile()
    pdf.file, pdf.version, pdf.outdst = name + ".pdf", 15, 1
    pdf.save()
    scribus.saveDocAs(name + ".sla")

for line in os.environ["WORDS"].splitlines():
    drawing, name = line.split("\\t")
    sys.argv = ["vx_place.py", drawing]
    runpy.run_path(os.environ["PLACE"], run_name="__main__")
    export(name)
    scribus.closeDoc()
""" % DPI

    def script(self, *words, seconds=500, **environment):
        return self.call("timeout", str(seconds), "scribus", "-g", "-ns", "-py", *words, QT_QPA_PLATFORM="offscreen", PLACE=self.PLACE,
                         **environment)

    def place(self, names):
        self.write("drive.py", self.DRIVER.encode())
        self.script(self.path("drive.py"), WORDS="\n".join(f"{sample(name)}\t{self.path('placed-' + name)}" for name in names))

    def test_all_samples(self):
        names = list(sample_names())
        self.place(names)
        self.compare("vx", self.own(names), {name: shown(self.path(f"placed-{name}.png")) for name in names})

    def test_spot_inks(self):
        self.place(["spot-inks"])
        plain = self.path("plain.pdf")
        pictures.run("qpdf", "--qdf", "--object-streams=disable", self.path("placed-spot-inks.pdf"), plain)
        with open(plain, "rb") as file:
            data = file.read()
        self.assertEqual(sorted(re.findall(rb"/Separation\s+/(\w+)", data)), [b"Brick", b"Night"])
        tints = {round(float(tint), 4) for tint in re.findall(rb"(\S+) scn\b", data)}
        self.assertEqual(tints, {1, .7, .4, .8, .6, .15})
        document_of_scribus = ElementTree.parse(self.path("placed-spot-inks.sla"))
        colours = {row.get("NAME"): row for row in document_of_scribus.iter("COLOR")}
        self.assertEqual([colours["Brick"].get(key) for key in ("SPACE", "C", "M", "Y", "K", "Spot")], ["CMYK", "0", "75", "80", "10", "1"])
        self.assertEqual(colours["C0 M75 Y80 K10"].get("Spot"), None)
        self.assertEqual([name for name in colours if name.startswith("FromSVG")], [])
        objects = [item for item in document_of_scribus.iter("PAGEOBJECT") if item.get("PCOLOR") is not None]
        self.assertEqual([(item.get("PCOLOR"), item.get("SHADE", "100")) for item in objects if item.get("doOverprint") == "1"],
                         [("Brick", "80"), ("Night", "60")])
        self.assertFalse([item for item in document_of_scribus.iter("PAGEOBJECT") if "vx-page" in item.get("ANNAME", "")])

    def test_inks_that_are_called_as_other_colours(self):
        """A new document has a colour Red, which nobody uses; one that is open keeps its own Night."""
        with open(sample("spot-inks"), "rb") as file:
            self.write("red.vx", file.read().replace(b"Brick", b"Red"))
        self.script(self.PLACE, "red.vx", "new.sla")
        self.write("drive.py", b"""
import os
import runpy
import sys
import scribus
scribus.newDocument((400, 500), (9, 9, 9, 9), scribus.PORTRAIT, 1, scribus.UNIT_POINTS, scribus.PAGE_1, 0, 1)
scribus.defineColorCMYKFloat("Night", 100, 80, 20, 40)
scribus.setSpotColor("Night", True)
sys.argv = ["vx_place.py", "red.vx", "open.sla"]
runpy.run_path(os.environ["PLACE"], run_name="__main__")
""")
        told = self.script(self.path("drive.py"))
        self.assertIn('the document has another colour "Red": the ink of the drawing is "Red (VX)" in it\n', told)
        self.assertNotIn('"Night"', told)
        for name, ink, own in (("new.sla", "Red", []), ("open.sla", "Red (VX)", [("Red", "RGB", None)])):
            saved = ElementTree.parse(self.path(name))
            colours = [(row.get("NAME"), row.get("SPACE"), row.get("Spot")) for row in saved.iter("COLOR")]
            self.assertEqual([row for row in colours if row[0] in ("Red", "Night", "Red (VX)")],
                             sorted([*own, ("Night", "CMYK", "1"), (ink, "CMYK", "1")]))
            self.assertEqual(len([item for item in saved.iter("PAGEOBJECT") if item.get("PCOLOR") == ink]), 4)

    def test_a_document_that_is_open(self):
        """The drawing stands where its page begins, whatever it has beyond it, in the units of the document."""
        self.write("drive.py", b"""
import os
import runpy
import sys
import scribus
scribus.newDocument((400, 500), (9, 9, 9, 9), scribus.PORTRAIT, 1, scribus.UNIT_MILLIMETERS, scribus.PAGE_1, 0, 1)
scribus.createRect(10, 10, 20, 20)
sys.argv = ["vx_place.py", os.environ["DRAWING"]]
runpy.run_path(os.environ["PLACE"], run_name="__main__")
placed = scribus.getSelectedObject()
print("unit", scribus.getUnit() == scribus.UNIT_MILLIMETERS, "objects", len(scribus.getPageItems()))
print("placed", *(round(length * 72 / 25.4, 2) for length in (*scribus.getPosition(placed), *scribus.getSize(placed))))
""")
        told = self.script(self.path("drive.py"), DRAWING=sample("poster"))
        self.assertIn("unit True objects 2\nplaced -120.0 -20.0 540.0 420.0\n", told)

    def test_a_document_without_windows(self):
        told = self.script(self.PLACE, sample("layers"), "made.sla")
        self.assertIn("layers.vx: warning: 1 object behind the end of a layer", told)
        self.assertEqual(ElementTree.parse(self.path("made.sla")).find("DOCUMENT").get("PAGEWIDTH"), "300")

    def test_failures_are_told(self):
        self.write("other.vx", b"%!PS-Other-3.0\n%%Title: not ours\n")
        self.assertIn("other.vx: not a VX document", self.script(self.PLACE, "other.vx", "made.sla"))
        self.assertIn("there is no command vx in the folders of PATH", self.script(self.PLACE, sample("poster"), "made.sla", PATH=PATH_WITHOUT_VX))
        self.write("empty.vx", document(""))
        self.assertIn("empty.vx: nothing is painted in it", self.script(self.PLACE, "empty.vx", "made.sla"))
        self.assertFalse(os.path.exists(self.path("made.sla")))


if __name__ == "__main__":
    unittest.main()
