"""Opens a VX drawing in Inkscape, which starts this with the drawing's path: SVG goes to standard output, what the user should know to
standard error.

Colours of spot inks become swatches, an ink's tint each: who changes a swatch changes it in the whole drawing.
"""
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

SVG = "http://www.w3.org/2000/svg"
INKSCAPE = "http://www.inkscape.org/namespaces/inkscape"
NAMESPACES = {"": SVG, "xlink": "http://www.w3.org/1999/xlink", "inkscape": INKSCAPE,
              "sodipodi": "http://sodipodi.sourceforge.net/DTD/sodipodi-0.dtd"}

# Layers that do not print are there, but hidden, and what is malformed in a drawing is left out and told.
COMMAND = ["vx", "render", "--format", "svg", "--text", "editable", "--layers", "all", "--salvage", "--output", "-", "--"]

NO_VX = """There is no command vx in the folders of PATH, which opens VX drawings. Install the package vx,
or start Inkscape with the folder of the command in PATH."""


def name_of(ink, tint):
    """Tints are what is lacking of an ink: 0 is all of it."""
    return ink if tint == 0 else f"{ink} {round(100 * (1 - tint), 2):g} %"


def make_swatches(root):
    swatches = {}
    for element in root.iter():
        for paint, prefix in (("fill", "data-"), ("stroke", "data-stroke-")):
            ink = element.get(prefix + "ink")
            # A paint of two inks stays a colour.
            if ink is None or element.get(prefix + "ink-2") is not None or not element.get(paint, "").startswith("#"):
                continue
            # Inks that are printed alike may still differ on screens: a drawing may define one twice.
            key = ink, float(element.get(prefix + "tint")), element.get(paint)
            swatch = swatches.setdefault(key, f"ink{len(swatches) + 1}")
            element.set(paint, f"url(#{swatch})")
    if not swatches:
        return
    definitions = ElementTree.Element(f"{{{SVG}}}defs")
    for (ink, tint, colour), swatch in swatches.items():
        # It is in the space of the user: that of a line's own box has no area.
        gradient = ElementTree.SubElement(definitions, f"{{{SVG}}}linearGradient", {
            "id": swatch, f"{{{INKSCAPE}}}label": name_of(ink, tint), f"{{{INKSCAPE}}}swatch": "solid", "gradientUnits": "userSpaceOnUse"})
        ElementTree.SubElement(gradient, f"{{{SVG}}}stop", {"offset": "0", "stop-color": colour})
    definitions.tail = "\n"
    root.insert(0, definitions)


def main(drawing):
    try:
        made = subprocess.run([*COMMAND, drawing], stdout=subprocess.PIPE, check=False)
    except FileNotFoundError:
        return NO_VX
    if not made.stdout:
        return made.returncode or 1
    for prefix, uri in NAMESPACES.items():
        ElementTree.register_namespace(prefix, uri)
    drawn = ElementTree.ElementTree(ElementTree.fromstring(made.stdout))
    make_swatches(drawn.getroot())
    drawn.write(sys.stdout.buffer, encoding="utf-8", xml_declaration=True)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[-1]))
