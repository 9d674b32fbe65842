"""Places a VX drawing on the page at hand in Scribus, or in a document of its size: spot inks stay spot colours with their tints, other
colours stay CMYK, and what overprints overprints.

    Script > Execute Script...                              asks for a drawing
    scribus -g -ns -py vx_place.py DRAWING DOCUMENT.sla     makes a document, without windows

What Scribus imports has colours of screens. So each paint gets a colour of its own there, a number; the document that comes of it is
saved, the numbers are replaced in it, and the group is copied from it.
"""
import json
import os
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

import scribus

SVG = "http://www.w3.org/2000/svg"
XLINK = "http://www.w3.org/1999/xlink"
FRAME = "vx-page"
FIRST_NUMBER = 0x10000  # beyond the colours of the same kind that a palette has: black, blue and green
DOT = "0.01"
MIXED = 0.005  # the least of an ink that makes a paint a mixture
NO_MARGINS = (0, 0, 0, 0)

NO_VX = "there is no command vx in the folders of PATH, which opens VX drawings: install the package vx"


class Failure(Exception):
    """Is what a person is told."""


def run_vx(*words):
    """Returns what vx wrote, and what it told."""
    try:
        made = subprocess.run(["vx", *words], capture_output=True, check=False)
    except FileNotFoundError:
        raise Failure(NO_VX) from None
    told = made.stderr.decode("utf-8", "replace").strip()
    if not made.stdout:
        raise Failure(told)
    return made.stdout, told


def inks_of(drawing):
    """The inks that have plates of their own, and what stands in for each, from 0 to 1."""
    output, _ = run_vx("info", "--json", "--salvage", "--quiet", "--", drawing)
    return {ink["name"]: ink["cmyk"] for ink in json.loads(output)["inks"] if ink["plate"]}


class Palette:
    """The paints of a drawing, and the colours of Scribus for them."""

    def __init__(self, inks):
        self.inks = inks
        self.names = {ink: ink for ink in inks}  # those in the document
        self.paints = []
        self.numbers = {}

    def number(self, element, prefix):
        """The number of a paint, as a colour of SVG."""
        gray, cmyk = element.get(prefix + "gray"), element.get(prefix + "cmyk")
        process = (0, 0, 0, 1 - float(gray)) if gray is not None else tuple(map(float, cmyk.split()))
        spots = [(element.get(f"{prefix}ink{nth}"), 1 - float(element.get(f"{prefix}tint{nth}", "1"))) for nth in ("", "-2")]
        spot = next((spot for spot in spots if self.is_all_of(process, spot)), None)
        paint = process, spot, element.get(prefix + "overprint") == "true"
        if paint not in self.numbers:
            self.numbers[paint] = len(self.paints)
            self.paints.append(paint)
        return f"#{FIRST_NUMBER + self.numbers[paint]:06x}"

    def is_all_of(self, process, spot):
        """Returns whether what stands in for a paint is that of one ink: in a blend it may be mixed with others."""
        ink, amount = spot
        return ink in self.inks and all(abs(amount * full - part) < MIXED for full, part in zip(self.inks[ink], process))

    def paint(self, name):
        """Returns that of a colour which Scribus has made of a number, or none."""
        if name is None or not name.startswith("FromSVG#"):
            return None
        index = int(name[-6:], 16) - FIRST_NUMBER
        return self.paints[index] if 0 <= index < len(self.paints) else None

    def colour(self, paint):
        """The name of a colour of Scribus, and how much of it, in percent."""
        process, spot, _ = paint
        if spot is not None:
            return self.names[spot[0]], str(round(100 * spot[1]))  # it knows no parts of a percent
        return " ".join(f"{ink}{100 * part:.4g}" for ink, part in zip("CMYK", process)), "100"

    def colours(self):
        """Each as a row of the document."""
        rows = {}
        for paint in self.paints:
            process, spot, _ = paint
            parts = self.inks[spot[0]] if spot is not None else process
            rows[self.colour(paint)[0]] = {"SPACE": "CMYK", **{ink: f"{100 * part:.6g}" for ink, part in zip("CMYK", parts)},
                                           **({"Spot": "1"} if spot is not None else {})}
        return [{"NAME": name, **row} for name, row in rows.items()]


def number_paints(svg, palette, file):
    """Writes the SVG with a number for each paint, in a frame of the page's size, which says where the page is. Returns that size."""
    root = ElementTree.fromstring(svg)
    for element in list(root.iter()):
        for attribute, prefix in (("fill", "data-"), ("stroke", "data-stroke-"), ("stop-color", "data-")):
            if element.get(attribute, "").startswith("#"):
                element.set(attribute, palette.number(element, prefix))
        # Scribus draws a line that has dots among its dashes without any.
        dashes = element.get("stroke-dasharray")
        if dashes is not None:
            element.set("stroke-dasharray", " ".join(DOT if dash == "0" else dash for dash in dashes.split()))
    width, height = root.get("viewBox").split()[2:]
    root.insert(0, ElementTree.Element(f"{{{SVG}}}rect", {"id": FRAME, "width": width, "height": height, "fill": "none"}))
    for prefix, uri in (("", SVG), ("xlink", XLINK)):
        ElementTree.register_namespace(prefix, uri)
    ElementTree.ElementTree(root).write(file, encoding="utf-8", xml_declaration=True)
    return float(width), float(height)


def replace_numbers(file, palette):
    """Gives a document the colours of the drawing, and takes the frame from it. Returns where in the group the frame was."""
    tree = ElementTree.parse(file)
    document = tree.getroot().find("DOCUMENT")
    rows = palette.colours()
    names = {row["NAME"] for row in rows}
    for colour in document.findall("COLOR"):
        if colour.get("NAME") in names or palette.paint(colour.get("NAME")) is not None:
            document.remove(colour)
    for index, row in enumerate(rows):
        document.insert(index, ElementTree.Element("COLOR", row))
    offset = 0.0, 0.0
    for parent in list(document.iter()):
        for element in list(parent):
            if element.get("ANNAME", "").strip() == FRAME:
                offset = float(element.get("gXpos")), float(element.get("gYpos"))
                parent.remove(element)
        overprints = []
        for name, shade in (("PCOLOR", "SHADE"), ("PCOLOR2", "SHADE2"), ("NAME", "SHADE")):
            paint = palette.paint(parent.get(name))
            if paint is not None:
                for attribute, value in zip((name, shade), palette.colour(paint)):
                    parent.set(attribute, value)
                overprints.append(paint[2])
        # An object overprints as a whole or not at all.
        if parent.tag == "PAGEOBJECT" and overprints and all(overprints):
            parent.set("doOverprint", "1")
    tree.write(file, encoding="utf-8", xml_declaration=True)
    return offset


def is_other(name, parts):
    """Returns whether the document has a colour of that name that is not this ink."""
    if name not in scribus.getColorNames():
        return False
    return not scribus.isSpotColor(name) or any(abs(there - 100 * part) > 0.5 for there, part in zip(scribus.getColorFloat(name), parts))


def rename_inks(palette):
    """Leaves the document its own colours. Returns lines that tell of it."""
    told = []
    for ink, parts in palette.inks.items():
        while is_other(palette.names[ink], parts):
            palette.names[ink] += " (VX)"
        if palette.names[ink] != ink:
            told.append(f'the document has another colour "{ink}": the ink of the drawing is "{palette.names[ink]}" in it')
    return told


def new_document(size):
    scribus.newDocument(size, NO_MARGINS, scribus.PORTRAIT, 1, scribus.UNIT_POINTS, scribus.PAGE_1, 0, 1)


def place(drawing):
    """Places the drawing, whose page begins where that of the document does. Returns what vx told."""
    svg, told = run_vx("render", "--format", "svg", "--text", "outlines", "--overprint", "ignore", "--salvage", "--output", "-", "--",
                       drawing)
    palette = Palette(inks_of(drawing))
    with tempfile.TemporaryDirectory(prefix="vx-scribus-") as folder:
        picture, document = os.path.join(folder, "drawing.svg"), os.path.join(folder, "drawing.sla")
        size = number_paints(svg, palette, picture)
        had_document = scribus.haveDoc()
        renamed = rename_inks(palette) if had_document else []
        new_document(size)
        scribus.placeSVG(picture, 0, 0)
        scribus.saveDocAs(document)
        scribus.closeDoc()
        offset = replace_numbers(document, palette)
        scribus.openDoc(document)
        drawn = [name for name, *_ in scribus.getPageItems()]
        if drawn:
            scribus.copyObjects(drawn)
        scribus.closeDoc()
    if not drawn:
        raise Failure("\n".join([f"{drawing}: nothing is painted in it", told]).strip())
    if not had_document:
        new_document(size)
        for ink in set(palette.inks) & set(scribus.getColorNames()):
            scribus.deleteColor(ink, "None")
    unit = scribus.getUnit()
    scribus.setUnit(scribus.UNIT_POINTS)
    placed = scribus.pasteObjects()[0]
    scribus.moveObjectAbs(-offset[0], -offset[1], placed)
    scribus.setUnit(unit)
    scribus.selectObject(placed)
    return "\n".join([told, *renamed]).strip()


def ask_and_place():
    drawing = scribus.fileDialog("Place a VX drawing", "VX drawings (*.vx *.eps *.ps);;All files (*)")
    if not drawing:
        return
    try:
        told, icon = place(drawing), scribus.ICON_WARNING
    except Failure as failure:
        told, icon = str(failure), scribus.ICON_CRITICAL
    if told:
        scribus.messageBox("VX drawing", told, icon)


def main(words):
    if not words:
        return ask_and_place()
    words = [os.path.abspath(word) for word in words]  # Scribus goes to other folders as it opens documents
    try:
        told = place(words[0])
    except Failure as failure:
        # Scribus keeps the status of a script to itself.
        return print(failure, file=sys.stderr)
    if told:
        print(told, file=sys.stderr)
    if len(words) > 1:
        scribus.saveDocAs(words[1])
    return None


if __name__ == "__main__":
    main(sys.argv[1:])
