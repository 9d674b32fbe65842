"""Opens VX drawings, and makes pictures of them.

    import vx

    with vx.open("harp.vx") as drawing:
        print(drawing.info.title, drawing.info.millimetres)
        png = drawing.render("png", width=400)       # bytes, as the command vx writes them
        drawing.save("harp.pdf", text="outlines")    # the name says the format
        picture = drawing.picture(dpi=300)           # pixels for NumPy and Pillow
        words = [str(text) for text in drawing.texts()]

Options are those of the command line, with _ for -: vx.options() lists them with their ranges. All errors are a vx.Error, and
what Python calls the same as well: a file that is not there is a FileNotFoundError, a wrong value a ValueError. Drawings that
have to be shown with other fonts than they name come with a vx.DrawingWarning.

Lengths are points of 1/72 inch, x to the right and y up, as drawings have them; pixels count from the top.

A drawing is read within your process. For those of strangers there is vx.render_isolated, which starts another one.
"""

from __future__ import annotations

import os
from typing import Optional, Union

from vx import _errors
from vx._choices import Format, Option, Value, formats, library_options, options
from vx._document import Document, Progress
from vx._errors import *
from vx._info import Box, FontFile, FontUse, Header, Info, Ink, Layer, Problem, Uses
from vx._isolated import render_isolated as _render_isolated
from vx._libvx import lib as _lib, text_of as _text_of
from vx._library import Font, Library, shared_library as _shared_library
from vx._picture import Picture
from vx._press import Check, Coverage, Finding, InkPixels, Limits, PaintedObject
from vx._text import Text, TextColour, TextLine, TextRun

__all__ = [
    "open", "render_isolated", "formats", "options", "library_options", "Library", "Document", "Picture", "Header", "Info", "FontUse", "FontFile",
    "Uses", "Layer", "Ink", "Problem", "Text", "TextLine", "TextRun", "TextColour", "InkPixels", "PaintedObject",
    "Coverage", "Check", "Finding", "Limits", "Font", "Format", "Option", "Box", "Progress", "Value", *_errors.__all__,
]

__version__: str = _text_of(_lib.vx_version())


def open(source: Union[str, os.PathLike[str], bytes], **options: Value) -> Document:
    """Opens a drawing: a file by its path, or the bytes of one.

        options  hold for all that is made of it, such as missing_fonts="fail" or max_time=5 (seconds)

    Raises FileNotFoundError (vx.MissingFileError), vx.ReadError, and vx.NotADrawingError for a file of another kind. A file
    must not be written to while it is open: one that is cut may end the process.

    >>> with vx.open("harp.vx") as drawing:
    ...     drawing.header.title
    'openclipart-svg harp3_ganson.svg'
    """
    return _shared_library().open(source, **options)


def render_isolated(source: Union[str, os.PathLike[str], bytes], format: str, *, progress: Optional[Progress] = None,
                    must_be_confined: bool = False, **options: Value) -> bytes:
    """Renders a drawing in a process of its own, and returns the bytes of a file: those of vx.open(source).render(format).

        source            a path, or bytes
        format            "png", "svg", "pdf" or "tiff"
        progress          is called some ten times a second with hundredths and 100; what it raises ends the call
        must_be_confined  True: vx.NotIsolatedError where the kernel cannot keep the process from files and the network
        options           those of vx.open and of Document.render; max_time and max_memory hold for all that is done

    For drawings of strangers: your process looks at nothing of them, and a crash or an endless loop there is an error here.
    Raises what vx.open and Document.render raise, and vx.FailedError for a crash.

    >>> vx.render_isolated("harp.vx", "png", width=400, max_time=20)[1:4]
    b'PNG'
    """
    return _render_isolated(_shared_library()._handle, source, format, progress, must_be_confined, options)


for _name in __all__:
    if isinstance(globals()[_name], type):
        globals()[_name].__module__ = __name__  # where people find it
