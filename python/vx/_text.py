"""The texts of a drawing, as records."""

from __future__ import annotations

import json
from dataclasses import dataclass
from typing import Any, Optional

from vx._info import Box


@dataclass(frozen=True)
class TextColour:
    """What a text is filled with, or stroked with where it is not filled. What does not apply is None.

        gray    how much light: 0 is black, 1 white
        cmyk    cyan, magenta, yellow and black, 0 to 1 each, where it is not gray
        spot    the name of the spot ink that the four stand in for
        amount  how much of that, 0 to 1
        spot2   the other one where one spot ink blends into another
        amount2 how much of that
    """

    gray: Optional[float]
    cmyk: Optional[tuple[float, float, float, float]]
    spot: Optional[str]
    amount: Optional[float]
    spot2: Optional[str] = None
    amount2: Optional[float] = None


@dataclass(frozen=True)
class TextRun:
    """A piece of a line that looks the same.

        font    as the drawing asks for it
        served  PostScript name of the font that would be drawn with here; empty: there is none
        size    the height of an em, in points of 1/72 inch
    """

    text: str
    font: str
    served: str
    size: float
    colour: TextColour


@dataclass(frozen=True)
class TextLine:
    """A line of a text, or a column; its runs from left to right, or from top to bottom.

        origin    the left end of the baseline of its first character; of a column the middle of its upper edge
        angle     to the next character: degrees against the clock, from the right
        length    from the origin to the end of the last character, in points
        height    an em of its largest characters, in points
        vertical  whether it is a column
        places    on a path, x, y and the angle of each character; else empty
    """

    text: str
    runs: tuple[TextRun, ...]
    origin: tuple[float, float]
    angle: float
    length: float
    height: float
    vertical: bool
    places: tuple[tuple[float, float, float], ...]


@dataclass(frozen=True)
class Text:
    """A text of a drawing; str() of it is its lines.

        layer               the name of the innermost layer that it is in; None: it is in none
        printing            whether that layer prints; True where it is in none
        kind                "point" along lines from a point, "path" along a path, "area" in an area
        box                 left, bottom, right, top around the ems of its characters, in points as the drawing's own box
        lines               from top to bottom; columns from right to left
        unknown_characters  bytes that mean none in the character set of their font: U+FFFD stands for each
    """

    layer: Optional[str]
    printing: bool
    kind: str
    box: Box
    lines: tuple[TextLine, ...]
    unknown_characters: int

    def __str__(self) -> str:
        return "\n".join(line.text for line in self.lines)


def read_text(text: str) -> Text:
    """Reads a text that the library gives as JSON."""
    members = json.loads(text)
    left, bottom, right, top = members["box"]
    return Text(members["layer"], members["printing"], members["kind"], (left, bottom, right, top),
                tuple(read_line(line) for line in members["lines"]), members["unknownCharacters"])


def read_line(members: dict[str, Any]) -> TextLine:
    runs = (TextRun(run["text"], run["font"], run["served"], run["size"], read_colour(run["colour"])) for run in members["runs"])
    x, y = members["origin"]
    return TextLine(members["text"], tuple(runs), (x, y), members["angle"], members["length"], members["height"],
                    members["vertical"], tuple((at[0], at[1], at[2]) for at in members.get("places", ())))


def read_colour(members: dict[str, Any]) -> TextColour:
    ink = members.get("cmyk")
    cmyk = (ink[0], ink[1], ink[2], ink[3]) if ink is not None else None
    return TextColour(members.get("gray"), cmyk, members.get("spot"), members.get("amount"), members.get("spot2"),
                      members.get("amount2"))
