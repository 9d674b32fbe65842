"""A drawing that is open."""

from __future__ import annotations

import errno
import os
import threading
import warnings
from collections.abc import Callable, Iterator, Mapping, Sequence
from contextlib import contextmanager
from types import TracebackType
from typing import Any, Optional, Union

from vx._choices import Value, c_text, check_meant, check_meant_for_texts, formats, texts_of
from vx._errors import ArgumentError, BusyError, DrawingWarning, MissingFileError, OptionError, ReadError, StoppedError
from vx._file import write_whole
from vx._info import FontUse, Header, Info, read_info
from vx._libvx import call, ffi, lib, record, text_of
from vx._picture import Picture
from vx._press import (Check, Coverage, InkPixels, Limits, PaintedObject, limits_text, read_check, read_coverage,
                       read_object)
from vx._text import Text, read_text

# Is called with the bytes that were read and the bytes that there are.
Progress = Callable[[int, int], object]

# The words for a match are those of the facts in JSON.
MATCHES = {"VX_FONT_BOXES": "missing", "VX_FONT_EXACT": "exact", "VX_FONT_STAND_IN": "stand-in",
           "VX_FONT_SUBSTITUTE": "substitute"}


class Document:
    """A drawing that is open: vx.open makes one. As a context manager it is closed at the end. Its name is that of the file.

    Every call takes options as keywords, by the names of the command line with _ for -; vx.options() lists them. They hold
    for that call alone, and go before those that vx.open was given; None takes one of these back. An option that means
    nothing for what is made is refused.

    A call may also have progress=function, which is called with the bytes that were read and the bytes that there are.
    What it raises comes out of the call: that is how to end one. Without it, Ctrl-C waits until the drawing is done.

    While a call draws, other threads of Python run. A document is for one call at a time: one that meets another is a
    BusyError. For many threads, open it as often.

    Drawings that have to be shown with other fonts than they name, or without something, are a DrawingWarning of Python's
    warnings; the texts are in .warnings too. In a notebook a document is shown as its picture.
    """

    def __init__(self, library: Any, source: Union[str, os.PathLike[str], bytes], options: Mapping[str, Value]) -> None:
        self._guard = threading.Lock()
        self._is_set: list[bytes] = []
        self._options = dict(options)
        self._info: Optional[Info] = None
        handle = ffi.new("vx_document **")
        if isinstance(source, (str, os.PathLike)):
            self.name = printable(os.fsdecode(source))
            kept = None
            try:
                call(lib.vx_document_open_file, library, c_text(os.fsdecode(source), "path"), handle, about=self.name)
            except ReadError as error:
                raise missing_or(error, source) from None
        elif isinstance(source, (bytes, bytearray, memoryview)):
            self.name = "<bytes>"
            kept = ffi.from_buffer(bytes(source))
            call(lib.vx_document_open_bytes, library, kept, len(kept), lib.VX_BORROW, handle, about=self.name)
        else:
            raise TypeError(f"a drawing is opened from a path or from bytes, not from {type(source).__name__}: give one of "
                            "these, such as what read() returns")
        self._handle = ffi.gc(handle[0], make_end(library, kept))
        with self._at_work({}):
            self._keep_told()

    # ---- Its life ----

    def close(self) -> None:
        """Ends it, and lets go of its file. A second time does nothing. Pictures that were made of it stay."""
        with self._alone():
            if self._handle is not None:
                ffi.release(self._handle)
            self._handle = None

    @property
    def closed(self) -> bool:
        """Whether close was called."""
        return self._handle is None

    def __enter__(self) -> Document:
        return self

    def __exit__(self, kind: Optional[type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def __repr__(self) -> str:
        return f"<vx.Document {self.name}{', closed' if self.closed else ''}>"

    # ---- What it is ----

    @property
    def header(self) -> Header:
        """What it says of itself at its beginning. Nothing more of it is read.

        >>> vx.open("harp.vx").header.box
        (0.0, 0.0, 576.0, 301.5)
        """
        with self._at_work({}) as handle:
            facts = record("vx_facts", lib.vx_document_facts, handle)
            return Header(facts.version, facts.monochrome == 1, (facts.left, facts.bottom, facts.right, facts.top),
                          text_of(facts.title), text_of(facts.creator), text_of(facts.created))

    @property
    def info(self) -> Info:
        """All that is known of it. It is read to its end for that, the first time.

        >>> info = vx.open("harp.vx").info
        >>> info.points, info.uses.fills
        ((576.0, 301.5), 133)
        """
        with self._at_work({}) as handle:
            if self._info is None:
                text = ffi.new("const char **")
                self._read(Callbacks(), None, lib.vx_document_json, handle, text)
                self._info = read_info(text_of(text[0]))
            return self._info

    @property
    def warnings(self) -> tuple[str, ...]:
        """What the last call that read it had to tell, a line each: which fonts are not there, and what cannot be shown."""
        return self._warnings

    @property
    def fonts(self) -> tuple[FontUse, ...]:
        """The fonts that the last call that read it found in use, in the order of their first texts."""
        return self._fonts

    # ---- What becomes of it ----

    def render(self, format: str, *, progress: Optional[Progress] = None, **options: Value) -> bytes:
        """Draws it, and returns the bytes of a file: those that the command vx writes with the same options.

            format   "png", "svg", "pdf" or "tiff"; vx.formats() lists them
            options  such as width=400 or dpi=300 (pixels), box=(left, bottom, right, top) (points of 1/72 inch),
                     background="none", text="outlines", pdf_x="x1a"

        Raises vx.OptionError, vx.MalformedError for a damaged drawing, vx.LimitError for one that takes too much time or
        memory, vx.FontMissingError where missing_fonts="fail", and what progress raises.

        >>> with vx.open("harp.vx") as drawing:
        ...     png = drawing.render("png", width=400)
        >>> png[1:4]
        b'PNG'
        """
        data, told = self._render(format, progress, options)
        self._warn(told)
        return data

    def save(self, path: Union[str, os.PathLike[str]], format: Optional[str] = None, *,
             progress: Optional[Progress] = None, **options: Value) -> None:
        """Draws it into a file, which is written whole or not at all. The name's extension says the format, if it is not given.

        A file that is there is replaced. When it cannot be written, the OSError is Python's own.

        >>> vx.open("harp.vx").save("harp.pdf")
        """
        name = os.fsdecode(path)
        if format is None:
            format = os.path.splitext(name)[1][1:].lower()
            format = "tiff" if format == "tif" else format
            known = [row.name for row in formats()]
            if format not in known:
                raise OptionError(f"{printable(name)}: its name does not end in a format: give one of {', '.join(known)}")
        data, told = self._render(format, progress, options)
        write_whole(name, data)
        self._warn(told)

    def picture(self, *, progress: Optional[Progress] = None, **options: Value) -> Picture:
        """Draws it into memory: the pixels of the PNG with the same options, for NumPy and Pillow to take without a copy.

        >>> vx.open("harp.vx").picture(width=144).size
        (144, 75)
        """
        check_meant(options, "png")
        with self._at_work(options) as handle:
            picture = Picture(*self._size(handle))
            top_row = ffi.from_buffer("uint8_t[]", picture.pixels)
            pixels = ffi.new("vx_pixels *", {"size": ffi.sizeof("vx_pixels"), "width": picture.width, "height": picture.height,
                                             "top_row": top_row, "stride": 4 * picture.width})
            told = self._read(Callbacks(), progress, lib.vx_document_pixels, handle, pixels)
        self._warn(told)
        return picture

    def texts(self, *, progress: Optional[Progress] = None, **options: Value) -> tuple[Text, ...]:
        """Its words, text by text in the order in which they are painted. Nothing is drawn, and no font is needed.

            options  layers="all" or "NAME,NAME" for other texts than those of layers that print, hide="NAME", script="japanese";
                     max_time (seconds) and others of how a drawing is read

        Raises vx.OptionError, also for a layer that is not there, vx.MalformedError for a damaged drawing, vx.LimitError, and what
        progress raises.

        >>> text = vx.open("text-point.vx").texts()[0]
        >>> str(text), text.kind, text.lines[0].runs[0].font
        ('Handgloves', 'point', 'Times-Bold')
        """
        check_meant_for_texts(options)
        found: list[Text] = []
        callbacks = Callbacks()
        keep = callbacks.make("vx_text", lambda lines, text: found.append(read_text(text_of(text))))
        with self._at_work(options) as handle:
            told = self._read(callbacks, progress, lib.vx_document_texts, handle, keep, ffi.NULL)
        self._warn(told)
        return tuple(found)

    def object_at(self, x: float, y: float, *, within: float = 0.25, progress: Optional[Progress] = None,
                  **options: Value) -> Optional[PaintedObject]:
        """The topmost object at a point, in points as the drawing's own box; None: paper. Nothing is drawn.

            within   points: lines that are thinner are found as if they were as wide as that
            options  those of texts

        >>> found = vx.open("harp.vx").object_at(280, 80)
        >>> found.kind, [round(ink, 2) for ink in found.colour.cmyk]
        ('fill', [0.21, 0.51, 0.79, 0.0])
        """
        check_meant_for_texts(options)
        text = ffi.new("const char **")
        with self._at_work(options) as handle:
            told = self._read(Callbacks(), progress, lib.vx_document_object_at, handle, float(x), float(y), float(within), text)
            found = None if text[0] == ffi.NULL else read_object(text_of(text[0]))
        self._warn(told)
        return found

    # ---- What a press makes of it; options are those of a picture's size, layers, overprint and samples ----

    def ink_pixels(self, *, progress: Optional[Progress] = None, **options: Value) -> InkPixels:
        """Tells how much of each ink the pixels of a picture have.

        >>> vx.open("harp.vx").ink_pixels(width=144)
        <vx.InkPixels of 144 by 75 pixels, Cyan, Magenta, Yellow, Black>
        """
        check_meant(options, "tiff")
        with self._at_work(options) as handle:
            width, height = self._size(handle)
            inks = ffi.new("vx_inks *", {"size": ffi.sizeof("vx_inks"), "width": width, "height": height})
            told = self._read(Callbacks(), progress, lib.vx_document_inks, handle, inks)
            names = [text_of(inks.names[index]) for index in range(inks.ink_count)]
            found = InkPixels(width, height, names, ffi.buffer(inks.amounts, width * height * len(names))[:])
        self._warn(told)
        return found

    def plates(self, format: str = "png", *, progress: Optional[Progress] = None, **options: Value) -> dict[str, bytes]:
        """The plate of each ink by its name, process inks first: files of gray pictures in which black is all of the ink.

            format  "png" or "tiff"

        >>> list(vx.open("harp.vx").plates(width=144))
        ['Cyan', 'Magenta', 'Yellow', 'Black']
        """
        check_meant(options, "tiff")
        plates: dict[str, bytes] = {}

        def take(ink: Any, data: Any, size: int) -> None:
            plates[text_of(ink)] = ffi.buffer(data, size)[:]

        callbacks = Callbacks()
        keep = callbacks.make("vx_plate", take)
        with self._at_work(options) as handle:
            told = self._read(callbacks, progress, lib.vx_document_plates, handle, c_text(format, "format"), keep, ffi.NULL)
        self._warn(told)
        return plates

    def coverage(self, limit: float = 300, *, heat_map: bool = False, progress: Optional[Progress] = None,
                 **options: Value) -> Coverage:
        """Tells how much ink the page takes.

            limit     percent of all inks together above which there is too much
            heat_map  whether to make a PNG of where there is how much

        >>> vx.open("harp.vx").coverage(dpi=72).most
        2.2627
        """
        check_meant(options, "tiff")
        pieces: list[bytes] = []
        callbacks = Callbacks()
        write = callbacks.make("vx_write", keep_in(pieces)) if heat_map else ffi.NULL
        text = ffi.new("const char **")
        with self._at_work(options) as handle:
            told = self._read(callbacks, progress, lib.vx_document_coverage, handle, float(limit), text, write, ffi.NULL)
            found = read_coverage(text_of(text[0]), b"".join(pieces) if heat_map else None)
        self._warn(told)
        return found

    def check(self, limits: Optional[Limits] = None, *, html: bool = False, progress: Optional[Progress] = None,
              **options: Value) -> Check:
        """Tells what a press would get wrong.

            limits  from where on something is found and how bad it is, as {"limits": {"hairline": 0.2}, "severities":
                    {"hairline": "error"}}, or the same as text; what is not named is as in the command
            html    whether to make a page that shows the findings on the picture, and each plate

        >>> vx.open("harp.vx").check(dpi=72).errors
        0
        """
        check_meant(options, "png")
        pieces: list[bytes] = []
        callbacks = Callbacks()
        wanted = ffi.new("vx_check *", {"size": ffi.sizeof("vx_check")})
        name = ffi.new("char[]", c_text(self.name, "name"))
        said = ffi.NULL if limits is None else ffi.new("char[]", c_text(limits_text(limits), "limits"))
        wanted.name, wanted.limits = name, said
        if html:
            wanted.page = page = callbacks.make("vx_write", keep_in(pieces))  # which is there as long as its name
        with self._at_work(options) as handle:
            told = self._read(callbacks, progress, lib.vx_document_check, handle, wanted)
            found = read_check(text_of(wanted.json), text_of(wanted.text), b"".join(pieces) if html else None)
        self._warn(told)
        return found

    def size(self, **options: Value) -> tuple[int, int]:
        """Width and height of the PNG with these options, in pixels. Nothing is drawn.

        >>> vx.open("harp.vx").size(dpi=72)
        (576, 302)
        """
        check_meant(options, "png")
        with self._at_work(options) as handle:
            return self._size(handle)

    def _repr_svg_(self) -> str:
        return self.render("svg").decode()

    def _repr_png_(self) -> bytes:
        return self.render("png")

    # ---- How ----

    def _render(self, format: str, progress: Optional[Progress], options: Mapping[str, Value]) -> tuple[bytes, tuple[str, ...]]:
        """Returns the bytes of a file, and the warnings."""
        check_meant(options, format)
        pieces: list[bytes] = []
        callbacks = Callbacks()
        write = callbacks.make("vx_write", keep_in(pieces))
        with self._at_work(options) as handle:
            told = self._read(callbacks, progress, lib.vx_document_render, handle, c_text(format, "format"), write, ffi.NULL)
        return b"".join(pieces), told

    @contextmanager
    def _alone(self) -> Iterator[None]:
        if not self._guard.acquire(blocking=False):
            raise BusyError(f"{self.name}: another call is at work with this document: wait for its end, or open it once more")
        try:
            yield
        finally:
            self._guard.release()

    @contextmanager
    def _at_work(self, options: Mapping[str, Value]) -> Iterator[Any]:
        """Keeps other calls away, sets these options, and forgets those of the call before."""
        with self._alone():
            if self._handle is None:
                raise ArgumentError(f"{self.name}: the document is closed: open it again")
            texts = texts_of({**self._options, **options})
            while self._is_set:
                self._call(lib.vx_document_set, self._handle, self._is_set[-1], ffi.NULL)
                self._is_set.pop()
            for name, text in texts.items():
                self._is_set.append(name.encode())
                self._call(lib.vx_document_set, self._handle, self._is_set[-1], c_text(text, name))
            yield self._handle

    def _call(self, procedure: Any, *arguments: Any) -> None:
        call(procedure, *arguments, about=self.name)

    def _read(self, callbacks: Callbacks, progress: Optional[Progress], procedure: Any, handle: Any,
              *arguments: Any) -> tuple[str, ...]:
        """Makes a call that reads the document, and returns its warnings. They are kept too, also where the call fails."""
        # Each call sets it, if only to nothing: the function of the call before is gone.
        tell = ffi.NULL if progress is None else callbacks.make("vx_progress", progress)
        self._call(lib.vx_document_set_progress, handle, tell, ffi.NULL)
        try:
            self._call(procedure, handle, *arguments)
        except StoppedError:
            callbacks.raise_again()
            raise
        finally:
            self._keep_told()
        return self._warnings

    def _keep_told(self) -> None:
        count = lib.vx_document_warning_count(self._handle)
        self._warnings = tuple(text_of(lib.vx_document_warning_at(self._handle, index)) for index in range(count))
        uses = (record("vx_font_use", lib.vx_document_font_at, self._handle, index)
                for index in range(lib.vx_document_font_count(self._handle)))
        matches = ffi.typeof("vx_match").elements
        self._fonts = tuple(FontUse(text_of(use.asked), text_of(use.served), MATCHES[matches[use.match]], use.strings,
                                    use.characters, use.missing_glyphs) for use in uses)

    def _size(self, handle: Any) -> tuple[int, int]:
        width, height = ffi.new("int32_t *"), ffi.new("int32_t *")
        self._call(lib.vx_document_size, handle, width, height)
        return width[0], height[0]

    def _warn(self, told: Sequence[str]) -> None:
        """Gives the warnings to Python, with the line of whoever called the caller of this."""
        for warning in told:
            warnings.warn(f"{self.name}: {warning}", DrawingWarning, stacklevel=3)


class Callbacks:
    """Functions of Python for C to call. What one of them raises ends the call, and is raised again when C has returned."""

    def __init__(self) -> None:
        self._raised: list[BaseException] = []

    def make(self, kind: str, function: Callable[..., object]) -> Any:
        """Makes a pointer for C, which is valid as long as the object that is returned."""
        def run(_: Any, *arguments: Any) -> int:
            function(*arguments)
            return 0

        return ffi.callback(kind, run, error=1, onerror=lambda kind, error, trace: self._raised.append(error))

    def raise_again(self) -> None:
        for error in self._raised:
            raise error from None


def keep_in(pieces: list[bytes]) -> Callable[[Any, int], None]:
    """Makes what keeps the bytes that the library writes."""
    return lambda data, size: pieces.append(ffi.buffer(data, size)[:])


def make_end(*kept: Any) -> Callable[[Any], None]:
    """Makes what frees a document. It holds the library and the bytes until then, in whatever order Python frees things."""
    free = lib.vx_document_free

    def end(document: Any, kept: tuple[Any, ...] = kept) -> None:
        free(document)

    return end


def missing_or(error: ReadError, source: Union[str, os.PathLike[str]]) -> ReadError:
    """Returns the error; for a file that is not there, one of the kind that Python's own open raises."""
    try:
        os.stat(source)
    except FileNotFoundError:
        missing = MissingFileError(*error.args)
        missing.errno = errno.ENOENT
        return missing
    except OSError:
        pass
    return error


def printable(name: str) -> str:
    """Returns a file's name as it can stand in one line of text."""
    return "".join(letter if letter.isprintable() else ascii(letter)[1:-1] for letter in name)
