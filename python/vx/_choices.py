"""What can be chosen: the formats, the options, and how a value of Python becomes the text that an option takes."""

from __future__ import annotations

import decimal
import difflib
import functools
import numbers
import os
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from typing import Any, Union

from vx._errors import ArgumentError, OptionError
from vx._libvx import in_python, lib, option_names, record, text_of

# An option takes a text as a command line has it, or a number. True and False stand for yes and no, a path for its name, and four
# numbers for a box. None is as if the option were not named.
Value = Union[str, float, bool, "os.PathLike[str]", Sequence[float], None]


@dataclass(frozen=True)
class Format:
    """A format that drawings can be written in.

        name  as Document.render takes it, and the extension of such a file: "png"
        mime  "image/png"
    """

    name: str
    mime: str


@dataclass(frozen=True)
class Option:
    """An option, as vx.open and Document.render take it by keyword, or as vx.Library does.

        name      of the keyword: "pdf_x"
        value     what stands for its value in help: "N", "COLOR"
        choices   all values that there are; empty: it is not one of a few
        standard  its value when nobody gives one; empty: it depends, see help
        formats   those for which it means something; empty: it is about reading a drawing, whatever is made of it
        help      a line
        least     the smallest number
        most      the largest; both 0: nothing is said
    """

    name: str
    value: str
    choices: tuple[str, ...]
    standard: str
    formats: tuple[str, ...]
    help: str
    least: float
    most: float

    def __str__(self) -> str:
        return f"{self.name}={self.value}: {self.help}"


def formats() -> tuple[Format, ...]:
    """The formats that drawings can be written in.

    >>> [format.name for format in vx.formats()]
    ['pdf', 'svg', 'png', 'tiff']
    """
    rows = (record("vx_format", lib.vx_format_at, index) for index in range(lib.vx_format_count()))
    return tuple(Format(text_of(row.name), text_of(row.mime)) for row in rows)


@functools.lru_cache(maxsize=None)
def options() -> tuple[Option, ...]:
    """All options, with their help and ranges.

    >>> for option in vx.options():
    ...     if option.formats == ("pdf",):
    ...         print(option)
    pdf_x=LEVEL: pdf: the standard of the press to keep to: x1a, x3, x4 or none (none)
    pdf_a=LEVEL: pdf: the standard of archives to keep to: 2b, 2u or none (none)
    date=WHEN: pdf: the date of its creation: as 2026-11-22T10:30, in seconds since 1970, file or now (the document's own)
    compress=HOW: pdf: how hard to compress: none, fast, default or small (default)
    """
    return tuple(read_option(lib.vx_option_at, index) for index in range(lib.vx_option_count()))


@functools.lru_cache(maxsize=None)
def library_options() -> tuple[Option, ...]:
    """The options of vx.Library that have a text; help(vx.Library) tells what else it takes.

    >>> [option.name for option in vx.library_options()]
    ['font_dirs', 'font_map', 'system_fonts', 'temp_dir']
    """
    return tuple(read_option(lib.vx_library_option_at, index) for index in range(lib.vx_library_option_count()))


def read_option(procedure: Any, index: int) -> Option:
    """Reads the option of that number, of those that the procedure lists."""
    row = record("vx_option", procedure, index)

    def words(characters: object) -> tuple[str, ...]:
        return tuple(filter(None, text_of(characters).split(",")))

    return Option(option_names()[text_of(row.name)], text_of(row.value), words(row.choices), text_of(row.standard),
                  words(row.formats), in_python(text_of(row.help)), row.least, row.most)


def texts_of(values: Mapping[str, Value]) -> dict[str, str]:
    """Returns the options as the library takes them, without those that are None."""
    known = [option.name for option in options()]
    for name in values:
        if name not in known:
            close = difflib.get_close_matches(name, known, 1)
            hint = f"did you mean {close[0]}?" if close else "leave it out;"
            raise OptionError(f"no option \"{name}\": {hint} vx.options() lists them")
    texts = {name: text_of_value(name, value) for name, value in values.items() if value is not None}
    for name, text in texts.items():
        if not text:
            raise OptionError(f"{name}: its value is empty: give one, or None")
    return {name.replace("_", "-"): text for name, text in texts.items()}


def check_meant(values: Mapping[str, Value], format_name: str) -> None:
    """Refuses options that mean nothing for that format: whoever gives one expects something of it."""
    if format_name not in (known.name for known in formats()):
        return
    for option in options():
        if values.get(option.name) is not None and option.formats and format_name not in option.formats:
            raise OptionError(f"{option.name} is for {' and '.join(option.formats)}, and {format_name} is made: leave it out")


def check_meant_for_texts(values: Mapping[str, Value]) -> None:
    """Refuses options that say nothing of how a drawing is read, nor which of its layers are."""
    for option in options():
        if values.get(option.name) is not None and option.formats and option.name not in ("layers", "hide"):
            raise OptionError(f"{option.name} is for {' and '.join(option.formats)}, and texts are read: leave it out")


def text_of_value(name: str, value: object) -> str:
    """Writes a value as a command line would have it."""
    if isinstance(value, str):
        return value
    if isinstance(value, bool):
        return "yes" if value else "no"
    if isinstance(value, numbers.Integral):
        return str(int(value))
    if isinstance(value, numbers.Real):
        number = float(value)
        return str(int(number)) if number.is_integer() else format(decimal.Decimal(repr(number)), "f")  # never 1e-07
    if isinstance(value, os.PathLike):
        return os.fsdecode(value)
    if isinstance(value, Sequence) and not isinstance(value, (bytes, bytearray, memoryview)):
        return ",".join(text_of_value(name, part) for part in value)
    raise TypeError(f"{name} is of type {type(value).__name__}: give a number, a text or a path")


def c_text(text: str, what: str) -> bytes:
    """Returns the text in UTF-8, as the library has all texts. A NUL is refused: it would end the text too early."""
    if not isinstance(text, str):
        raise TypeError(f"{what} is of type {type(text).__name__}: give a text")
    if "\0" in text:
        raise ArgumentError(f"{what} has a NUL in it: leave that out")
    return os.fsencode(text) if what == "path" else text.encode("utf-8", "surrogatepass")
