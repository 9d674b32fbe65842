"""What is known of a drawing, as records."""

from __future__ import annotations

import dataclasses
import json
import re
from dataclasses import dataclass
from typing import Any, TypeVar

# Left, bottom, right, top, in points of 1/72 inch; y goes up.
Box = tuple[float, float, float, float]

Record = TypeVar("Record")


@dataclass(frozen=True)
class Header:
    """What a drawing says of itself at its beginning. Texts are empty where it says nothing.

        version     2 to 5
        monochrome  declared black and white
        box         left, bottom, right, top as they are written: they may be inverted, or empty
        created     the date, in words of the drawing's own
    """

    version: int
    monochrome: bool
    box: Box
    title: str
    creator: str
    created: str


@dataclass(frozen=True)
class FontUse:
    """A font that a drawing uses, and what serves it.

        asked           as the drawing names it
        served          PostScript name of the font that was taken; empty: boxes are drawn
        match           "exact", "stand-in" (of the same widths), "substitute" (of another design), or "missing"
        strings         pieces of text
        characters      in them
        missing_glyphs  of these, those that the font taken does not have
    """

    asked: str
    served: str
    match: str
    strings: int
    characters: int
    missing_glyphs: int


@dataclass(frozen=True)
class FontFile(FontUse):
    """A font that a drawing uses, what serves it, and the file of that.

        file  empty: there is none, or it came from memory
    """

    file: str


@dataclass(frozen=True)
class Uses:
    """How much there is of each thing in a drawing.

        fills, strokes, clips  shapes that are filled, stroked, and clipped to
        segments               lines and curves of all paths
        shows                  pieces of text
        gray, cmyk, overprint  whether there is any paint of that kind
    """

    fills: int
    strokes: int
    clips: int
    segments: int
    shows: int
    gray: bool
    cmyk: bool
    overprint: bool


@dataclass(frozen=True)
class Layer:
    """A layer of a drawing, as its flags say; what is painted follows printing.

        colour  of its outlines in an editor: red, green and blue, 0 to 255
        parent  the layer around it, as its place among all; -1 where there is none
    """

    name: str
    visible: bool
    preview: bool
    enabled: bool
    printing: bool
    dimmed: bool
    colour: tuple[int, int, int]
    parent: int


@dataclass(frozen=True)
class Ink:
    """A spot ink that something is painted in: the CMYK that stands in for it, 0 to 1, and the least and the most tint that it is
    used in (0 is all of it, 1 none).

        mixtures  of how many different CMYK inks of this name are; a press has one plate for all
        plate     whether PDF has one; else it is painted in process inks there
    """

    name: str
    cmyk: tuple[float, float, float, float]
    tints: tuple[float, float]
    mixtures: int
    plate: bool


@dataclass(frozen=True)
class Problem:
    """Something in a drawing that cannot be shown as it was meant: the number of its kind, and what it is in words."""

    number: int
    title: str
    message: str


@dataclass(frozen=True)
class Info:
    """All that is known of a drawing that was read to its end.

    Texts are empty where it says nothing.

        version          2 to 5
        creation_date    in words of the drawing's own
        date             the same as it is read, "1994-03-05T10:12:00"; empty where it cannot be, or can be in two ways
        box              left, bottom, right, top as they are written: they may be inverted, or empty
        points           width and height of the box, in points of 1/72 inch
        millimetres      the same in millimetres
        monochrome       declared black and white
        process_colours  names that its header declares, as custom_colours and declared_fonts are
        layers           in the order in which they begin
        inks             spot inks that something is painted in
        fonts            those that it uses, in the order of their first texts
        uses             how much there is of each thing in it
        problems         what cannot be shown as it was meant
        unshown          how much is not shown: {"patterns": 2, "placedPictures": 1, "postscript": 1, "binary": 1,
                         "betweenLayers": 1}, each where it is there
        whole            a line says that it ends; else the file is cut short
        open             what it begins more often than it ends, and how many of these: {"groups": 1}
        undrawn          what stands behind a line "%%EOF" within a placed or binary section: {"line": 12, "bytes": 345}
        bytes            its size
        unpacked_bytes   its size once it is unpacked, which is the same where it is not packed
        line_ends        "LF", "CR", "CR LF" or "mixed"; empty: it has none
        wrapping         what else is around the drawing, as "gzip, MacBinary"
        damage           what is wrong with the gzip or xz data that it is packed in
        eps_wrapper      it is inside a binary EPS file
    """

    version: int
    title: str
    creator: str
    creation_date: str
    date: str
    box: Box
    points: tuple[float, float]
    millimetres: tuple[float, float]
    monochrome: bool
    process_colours: tuple[str, ...]
    custom_colours: tuple[str, ...]
    declared_fonts: tuple[str, ...]
    layers: tuple[Layer, ...]
    inks: tuple[Ink, ...]
    fonts: tuple[FontFile, ...]
    uses: Uses
    problems: tuple[Problem, ...]
    unshown: dict[str, int]
    whole: bool
    open: dict[str, int]
    undrawn: dict[str, int]
    bytes: int
    unpacked_bytes: int
    line_ends: str
    eps_wrapper: bool
    wrapping: str
    damage: str


def read_info(text: str) -> Info:
    """Reads the facts that the library gives as JSON."""
    facts = json.loads(text)
    facts["layers"] = tuple(record_of(Layer, layer) for layer in facts["layers"])
    facts["inks"] = tuple(record_of(Ink, ink) for ink in facts["inks"])
    facts["fonts"] = tuple(record_of(FontFile, font) for font in facts["fonts"])
    facts["uses"] = record_of(Uses, facts["uses"])
    facts["problems"] = tuple(record_of(Problem, problem) for problem in facts["problems"])
    return record_of(Info, facts)


def record_of(kind: type[Record], members: dict[str, Any]) -> Record:
    """Makes a record of those members that it has a field for: a library that tells more still fits."""
    values = {field.name: members[camel(field.name)] for field in dataclasses.fields(kind)}
    return kind(**{name: tuple(value) if isinstance(value, list) else value for name, value in values.items()})


def camel(name: str) -> str:
    """Returns the name of a member of JSON: "lineEnds" for line_ends."""
    return re.sub("_(.)", lambda match: match[1].upper(), name)
