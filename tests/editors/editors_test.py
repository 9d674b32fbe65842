"""Every sample as SVG and PDF, opened in the editors that people use: they show what it is.

SVG stands beside our own picture, PDF beside that of pdftocairo, whose colours of inks those editors take over.

The environment names what is tested: VX the program.
"""
import os
import shutil
import subprocess
import unittest
import xml.etree.ElementTree as ElementTree

from PIL import Image

import pictures
from vxcommand import CommandTest, sample, sample_names

DPI = 96
SECONDS = 570

# The most that a picture may differ, of 255: over all, and in the worst block.
USUAL = {
    # The same library shows both; text is set to whole parts of a pixel.
    ("Inkscape", "svg"): (1.3, 15),
    ("Inkscape", "pdf"): (5.5, 40),
    # It has its own places for letters, and draws shapes without the part of a pixel that their edges cover.
    ("LibreOffice", "svg"): (6, 70),
    # Its stripes of a blend, laid over each other, let what lies below shine through.
    ("LibreOffice", "pdf"): (12, 125),
    # It draws shapes as LibreOffice does.
    ("Scribus", "svg"): (7.5, 90),
    # Its own profile makes black blacker, and edges of shapes are as in an SVG.
    ("Scribus", "vx"): (7.5, 90),
}

MULTIPLIED = "colours that are multiplied come out purer than inks upon each other"
NOT_MULTIPLIED = "it knows no colours that are multiplied: what lies above hides what lies below"
OVERPRINT = "it shows no overprint on a screen"
BLACK = "its profile makes black blacker"
THIN_LINES = "a line thinner than a pixel is as wide as each program finds right"
TEXT_CLIP = "text of a PDF does not clip in it"
CLIP = "what is filled in a PDF is not clipped in it"
FONT = "it opens text of a PDF in an installed font that it finds by a name in the file, which is another one here"
DOTS = "it draws lines without length of an SVG too large, and leaves out those of a PDF"
COLUMN = "it sets columns of a PDF by the font's measures, somewhat lower"
LARGER = {
    ("overprint", "Inkscape", "svg"): ((2.5, 80), MULTIPLIED),
    ("overprint", "LibreOffice", "svg"): ((8, 255), NOT_MULTIPLIED),
    ("overprint", "Scribus", "svg"): ((8, 255), NOT_MULTIPLIED),
    ("overprint", "Scribus", "vx"): ((9, 255), OVERPRINT),
    ("poster", "Scribus", "vx"): ((7.5, 150), OVERPRINT),
    ("fireworks", "Scribus", "vx"): ((14, 70), BLACK),
    ("text-japanese", "Scribus", "vx"): ((8.5, 90), BLACK),
    ("text-vertical", "Scribus", "vx"): ((7.5, 100), BLACK),
    ("hairlines", "Inkscape", "svg"): ((5, 50), THIN_LINES),
    ("hairlines", "Inkscape", "pdf"): ((5, 70), THIN_LINES),
    ("hairlines", "LibreOffice", "svg"): ((11, 90), THIN_LINES),
    ("hairlines", "Scribus", "svg"): ((10, 80), THIN_LINES),
    ("harp", "Inkscape", "pdf"): ((4, 70), THIN_LINES),
    ("harp", "Scribus", "svg"): ((7.5, 160), THIN_LINES),
    ("pocket-trumpet", "Inkscape", "pdf"): ((5, 105), THIN_LINES),
    ("pocket-trumpet", "Scribus", "svg"): ((12, 125), THIN_LINES),
    ("hairlines", "Scribus", "vx"): ((15, 80), THIN_LINES),
    ("harp", "Scribus", "vx"): ((8, 165), THIN_LINES),
    ("pocket-trumpet", "Scribus", "vx"): ((13.5, 135), THIN_LINES),
    ("gradient-text", "Inkscape", "pdf"): ((95, 255), TEXT_CLIP),
    ("text-clip", "Inkscape", "pdf"): ((55, 255), TEXT_CLIP),
    ("text-render-modes", "Inkscape", "pdf"): ((40, 255), TEXT_CLIP),
    ("text-chinese", "Inkscape", "pdf"): ((14, 135), FONT),
    ("text-korean", "Inkscape", "pdf"): ((13, 120), FONT),
    ("text-missing", "Inkscape", "pdf"): ((19, 145), FONT),
    ("text-symbol", "Inkscape", "pdf"): ((9, 140), FONT),
    ("text-version-4-japanese", "Inkscape", "pdf"): ((8, 115), COLUMN),
    ("text-vertical", "Inkscape", "pdf"): ((17, 140), COLUMN),
    ("poster", "LibreOffice", "svg"): ((3, 145), NOT_MULTIPLIED),
    ("degenerate", "LibreOffice", "svg"): ((13.5, 205), DOTS),
    ("degenerate", "LibreOffice", "pdf"): ((8, 235), DOTS),
    ("text-missing", "LibreOffice", "pdf"): ((26, 180), FONT),
    ("text-symbol", "LibreOffice", "pdf"): ((12, 170), FONT),
    # Shapes that are clipped fill the page in some.
    **{(name, "LibreOffice", "pdf"): ((110, 255), CLIP) for name in (
        "clips", "compound-clip", "gradient-highlights", "gradient-radial", "gradient-slopes", "gradient-strokes", "gradient-text",
        "gradients", "groups", "poster", "text-clip", "text-render-modes")},
}


def shown(file):
    """The picture on white paper."""
    picture = Image.open(file).convert("RGBA")
    return Image.alpha_composite(Image.new("RGBA", picture.size, "white"), picture).convert("RGB")


class EditorTest(CommandTest):
    def setUp(self):
        super().setUp()
        if shutil.which(self.COMMAND) is None:
            self.skipTest(f"there is no {self.COMMAND} here")
        self.home = os.path.join(self.folder, "home")
        os.mkdir(self.home)

    def call(self, *words, commands="", **environment):
        """Runs a program as a person who has never run it, and returns what it says."""
        done = subprocess.run(words, input=commands, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=SECONDS, text=True,
                              cwd=self.folder, env={**os.environ, "HOME": self.home, **environment})
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout

    def make(self, extension, names, *words):
        """Draws the samples, and returns the paths by their names."""
        self.run_vx("render", "-q", *map(sample, names), "-o", "{stem}." + extension, *words)
        return {name: self.path(f"{name}.{extension}") for name in names}

    def own(self, names):
        return {name: shown(file) for name, file in self.make("png", names, "-r", str(DPI)).items()}

    def by_cairo(self, files):
        made = {}
        for name, file in files.items():
            pictures.run("pdftocairo", "-png", "-singlefile", "-r", str(DPI), file, file + ".cairo")
            made[name] = shown(file + ".cairo.png")
        return made

    def compare(self, extension, expected, theirs):
        self.assertEqual(set(expected), set(theirs))
        usual = USUAL[self.PROGRAM, extension]
        for name, picture in expected.items():
            with self.subTest(f"{name}.{extension} in {self.PROGRAM}"):
                other = theirs[name]
                # Editors round the size of a page up or down.
                self.assertLessEqual(max(abs(one - two) for one, two in zip(picture.size, other.size)), 1)
                mean, worst = pictures.difference(picture, other.resize(picture.size))
                limits, _ = LARGER.get((name, self.PROGRAM, extension), (usual, ""))
                self.assertTrue(mean <= limits[0] and worst <= limits[1], f"{mean:.2f}, {worst}: more than {limits}")


class Inkscape(EditorTest):
    PROGRAM, COMMAND = "Inkscape", "inkscape"

    def shown(self, files):
        commands = "".join(f"file-open:{file}\nexport-type:png\nexport-dpi:{DPI}\nexport-area-page\nexport-filename:{file}.png\n"
                           "export-do\nfile-close\n" for file in files.values())
        self.call("inkscape", "--shell", commands=commands, INKSCAPE_PROFILE_DIR=self.home)
        return {name: shown(file + ".png") for name, file in files.items()}

    def test_svg(self):
        names = list(sample_names())
        self.compare("svg", self.own(names), self.shown(self.make("svg", names)))

    def test_lines_to_be_edited(self):
        names = [name for name in sample_names() if name.startswith("text-")]
        self.compare("svg", self.own(names), self.shown(self.make("svg", names, "--text", "editable")))

    def test_pdf(self):
        files = self.make("pdf", list(sample_names()))
        self.compare("pdf", self.by_cairo(files), self.shown(files))


class LibreOffice(EditorTest):
    PROGRAM, COMMAND = "LibreOffice", "soffice"

    def shown(self, files, *words):
        self.call("soffice", f"-env:UserInstallation=file://{self.home}", "--headless", *words, "--convert-to", "png", "--outdir",
                  self.home, *files.values())
        return {name: shown(os.path.join(self.home, name + ".png")) for name in files}

    def test_svg(self):
        names = list(sample_names())
        self.compare("svg", self.own(names), self.shown(self.make("svg", names)))

    def test_pdf(self):
        files = self.make("pdf", list(sample_names()))
        self.compare("pdf", self.by_cairo(files), self.shown(files, "--infilter=draw_pdf_import"))


class Scribus(EditorTest):
    PROGRAM, COMMAND = "Scribus", "scribus"

    # Sets text with its own distances between letters, so shapes are compared. Places what it imports by the box of all that is drawn: that of a drawing on a background is the page, where nothing
    # reaches beyond it.
    SCRIPT = """
import os
import scribus
for line in os.environ["FILES"].splitlines():
    file, width, height = line.rsplit(" ", 2)
    size = float(width), float(height)
    scribus.newDocument(size, (0, 0, 0, 0), scribus.PORTRAIT, 1, scribus.UNIT_POINTS, scribus.PAGE_1, 0, 1)
    scribus.placeSVG(file, 0, 0)
    placed = scribus.getSelectedObject()
    if placed and all(abs(one - two) < 0.5 for one, two in zip(scribus.getSize(placed), size)):
        scribus.moveObjectAbs(0, 0, placed)
        image = scribus.ImageExport()
        image.type, image.dpi, image.scale, image.quality = "PNG", %d, 100, 100
        image.saveAs(file + ".png")
    scribus.closeDoc()
""" % DPI

    def test_svg(self):
        files = self.make("svg", list(sample_names()), "--background", "white", "--text", "outlines")
        sizes = {name: ElementTree.parse(file).getroot().get("viewBox").split(" ")[2:] for name, file in files.items()}
        self.write("place.py", self.SCRIPT.encode())
        self.call("scribus", "-g", "-ns", "-py", self.path("place.py"), QT_QPA_PLATFORM="offscreen",
                  FILES="\n".join(f"{file} {' '.join(sizes[name])}" for name, file in files.items()))
        theirs = {name: shown(file + ".png") for name, file in files.items() if os.path.exists(file + ".png")}
        self.assertGreater(len(theirs), 30)
        self.compare("svg", self.own(list(theirs)), theirs)


if __name__ == "__main__":
    unittest.main()
