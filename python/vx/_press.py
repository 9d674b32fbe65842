"""Records of what a press makes of a drawing."""

from __future__ import annotations

import json
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from typing import Any, Optional, Union

from vx._info import Box
from vx._text import TextColour, read_colour

# From where on something is found, and how bad it is: JSON as text, or the same as a dict.
Limits = Union[str, Mapping[str, Mapping[str, Union[float, str]]]]


class InkPixels:
    """Tells how much of each ink the pixels of a drawing have.

        width, height  in pixels
        inks           their names: Cyan, Magenta, Yellow, Black, and each spot ink that the drawing paints with
        pixels         a memoryview, height by width by inks bytes: 0 is none of the ink, 255 all; the top row comes first

    NumPy takes the pixels without a copy: numpy.asarray(ink_pixels.pixels).
    """

    width: int
    height: int
    inks: tuple[str, ...]
    pixels: memoryview

    def __init__(self, width: int, height: int, inks: Sequence[str], pixels: bytes) -> None:
        self.width = width
        self.height = height
        self.inks = tuple(inks)
        self.pixels = memoryview(pixels).cast("B", (height, width, len(inks)))

    def __repr__(self) -> str:
        return f"<vx.InkPixels of {self.width} by {self.height} pixels, {', '.join(self.inks)}>"


@dataclass(frozen=True)
class PaintedObject:
    """Tells what is painted at a point.

        kind       "fill", "stroke", "text" or "blend"
        colour     its own; of a blend that at the point
        overprint  whether it leaves the inks that it has none of
        layer      the name of the innermost layer that it is in; None: it is in none
        printing   whether that layer prints
        box        around what its clip leaves of it, in points as the drawing's own box
        width      of a stroke, in points; 0: the thinnest line that can be seen; else None
        text       of a text, the characters that look the same; else None, as are the next three
        font       as the drawing asks for it
        served     PostScript name of the font that it is drawn with; empty: there is none
        size       the height of an em, in points
    """

    kind: str
    colour: TextColour
    overprint: bool
    layer: Optional[str]
    printing: bool
    box: Box
    width: Optional[float]
    text: Optional[str]
    font: Optional[str]
    served: Optional[str]
    size: Optional[float]


@dataclass(frozen=True)
class Coverage:
    """Tells how much ink a page takes. Amounts are parts of a full ink, 1: four full inks are 4.

        inks      the mean of each over the page, by its name
        mean      of all together
        most      of all together where that is most
        most_at   where that is first, in points; None: there is no ink
        limit     above which there is too much
        share     the part of the page that has more
        area      the same in square points
        heat_map  a PNG of where there is how much, where it was asked for
    """

    inks: dict[str, float]
    mean: float
    most: float
    most_at: Optional[tuple[float, float]]
    limit: float
    share: float
    area: float
    heat_map: Optional[bytes]


@dataclass(frozen=True)
class Finding:
    """Something that a press would get wrong; str() of it is its text.

        name      of the kind, as "hairline"
        severity  "error", "warning" or "note"
        count     how often it was found
        value     the worst; None where there is none
        limit     what that is held against; None where there is none
        names     of fonts, inks or layers
        line      of the document, from 1; None where that is not known
        places    the box and the layer of each of the first
    """

    name: str
    severity: str
    count: int
    text: str
    value: Optional[float]
    limit: Optional[float]
    names: tuple[str, ...]
    line: Optional[int]
    places: tuple[tuple[Box, str], ...]

    def __str__(self) -> str:
        return self.text


@dataclass(frozen=True)
class Check:
    """Tells what a check found; str() of it is a line a finding, as the command prints them.

        errors, warnings, notes  how many kinds were found
        findings                 the worst first
        html                     a page that shows them, with all pictures in it, where it was asked for
    """

    errors: int
    warnings: int
    notes: int
    findings: tuple[Finding, ...]
    html: Optional[bytes]
    text: str

    def __str__(self) -> str:
        return self.text


def read_box(numbers: Sequence[float]) -> Box:
    left, bottom, right, top = numbers
    return left, bottom, right, top


def read_object(text: str) -> PaintedObject:
    members = json.loads(text)
    return PaintedObject(members["kind"], read_colour(members["colour"]), members["overprint"], members["layer"],
                         members["printing"], read_box(members["box"]), members.get("width"), members.get("text"),
                         members.get("font"), members.get("served"), members.get("size"))


def read_coverage(text: str, heat_map: Optional[bytes]) -> Coverage:
    members = json.loads(text)
    total, above = members["total"], members["above"]
    at = total.get("mostAt")
    return Coverage({ink["name"]: ink["mean"] for ink in members["inks"]}, total["mean"], total["most"],
                    None if at is None else (at[0], at[1]), above["limit"], above["share"], above["area"], heat_map)


def read_finding(members: Mapping[str, Any]) -> Finding:
    places = ((read_box(place["box"]), place["layer"]) for place in members.get("places", ()))
    return Finding(members["name"], members["severity"], members["count"], members["text"], members.get("value"),
                   members.get("limit"), tuple(members.get("names", ())), members.get("line"), tuple(places))


def read_check(text: str, lines: str, html: Optional[bytes]) -> Check:
    members = json.loads(text)
    return Check(members["errors"], members["warnings"], members["notes"],
                 tuple(read_finding(finding) for finding in members["findings"]), html, lines)


def limits_text(limits: Limits) -> str:
    return limits if isinstance(limits, str) else json.dumps(limits)
