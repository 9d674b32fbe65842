"""Makes a CID-keyed font whose glyphs' numbers differ from their places: python3 MakeCidFont.py cid-keyed.otf

Glyph 1 has number 700 and is a square for "A"; glyph 2 has number 33 and is a triangle for the character U+898B.
"""
import sys

from fontTools.cffLib import FDArrayIndex, FDSelect, FontDict
from fontTools.fontBuilder import FontBuilder
from fontTools.pens.t2CharStringPen import T2CharStringPen


def char_string(width, points):
    pen = T2CharStringPen(width, None)
    if points:
        pen.moveTo(points[0])
        for point in points[1:]:
            pen.lineTo(point)
        pen.closePath()
    return pen.getCharString()


order = [".notdef", "cid00700", "cid00033"]
shapes = {
    ".notdef": (1000, []),
    "cid00700": (600, [(100, 0), (500, 0), (500, 400), (100, 400)]),
    "cid00033": (1000, [(100, 0), (900, 0), (500, 800)]),
}
builder = FontBuilder(1000, isTTF=False)
builder.setupGlyphOrder(order)
builder.setupCharacterMap({0x41: "cid00700", 0x898B: "cid00033"})
builder.setupCFF("CidKeyed", {"FullName": "CidKeyed"},
                 {name: char_string(*shape) for name, shape in shapes.items()}, {})
cff = builder.font["CFF "].cff
top = cff.topDictIndex[0]
top.ROS = ("Adobe", "Japan1", 0)
top.CIDCount = 1000
private = top.Private
fonts = FDArrayIndex()
fonts.strings = top.strings
fonts.GlobalSubrs = top.GlobalSubrs
font = FontDict()
font.setCFF2(False)
font.Private = private
font.FontName = "CidKeyed-Only"
fonts.append(font)
top.FDArray = fonts
top.FDSelect = FDSelect()
top.FDSelect.format = 0
top.FDSelect.gidArray = [0] * len(order)
top.CharStrings.fdSelect = top.FDSelect
top.CharStrings.fdArray = fonts
for glyph in top.CharStrings.values():
    glyph.private = private
    glyph.fdSelectIndex = 0
del top.Private
builder.setupHorizontalMetrics({name: (shape[0], 0) for name, shape in shapes.items()})
builder.setupHorizontalHeader(ascent=880, descent=-120)
builder.setupNameTable({"familyName": "CidKeyed", "styleName": "Regular", "psName": "CidKeyed"})
builder.setupOS2(sTypoAscender=880, sTypoDescender=-120, fsType=0)
builder.setupPost(keepGlyphNames=False)
builder.font["head"].created = builder.font["head"].modified = 0
builder.font.recalcTimestamp = False
builder.save(sys.argv[1])
