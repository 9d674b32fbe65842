"""A library: the fonts that drawings are shown with, and what opens them."""

from __future__ import annotations

import functools
import os
import tempfile
from collections.abc import Iterable
from dataclasses import dataclass
from typing import Optional, Union

from vx._choices import Value, c_text
from vx._document import Document, Progress
from vx._isolated import render_isolated
from vx._libvx import call, ffi, lib, record, text_of


@dataclass(frozen=True)
class Font:
    """A font that drawings can be shown with.

        postscript  the name by which drawings ask for it
        family      the name by which people know it
        served_by   PostScript name of the font that stands in for it; empty: it is there itself
        file        empty: it came from memory, or boxes are drawn
        face        in the file, from 0
        variation   its named variation, from 1; 0: none
    """

    postscript: str
    family: str
    served_by: str
    file: str
    face: int
    variation: int


class Library:
    """Opens drawings, with fonts of your choice. vx.open uses one that all share, with those of the system.

        font_dirs     folders of fonts, with all below them
        system_fonts  False: no other fonts than those named here
        temp_dir      the folder in which a PDF is put together; as tempfile.gettempdir() has it, if it is not given
        fonts         the bytes of font files, OpenType or Type 1; they are found before those of files

    Any number of threads may use one library at a time.

    >>> library = vx.Library(system_fonts=False)
    >>> with library.open("harp.vx") as drawing:
    ...     drawing.header.version
    5
    """

    def __init__(
        self,
        *,
        font_dirs: Iterable[Union[str, os.PathLike[str]]] = (),
        system_fonts: bool = True,
        temp_dir: Union[str, os.PathLike[str], None] = None,
        fonts: Iterable[bytes] = (),
    ) -> None:
        handle = ffi.new("vx_library **")
        call(lib.vx_library_create, lib.VX_INTERFACE, handle)
        self._handle = ffi.gc(handle[0], lib.vx_library_free)
        if isinstance(font_dirs, (str, os.PathLike)) or isinstance(fonts, bytes):
            raise TypeError("font_dirs or fonts is a single one: give a list of them")
        for folder in font_dirs:
            self._set("font-dir", os.fspath(folder))
        self._set("system-fonts", "yes" if system_fonts else "no")
        self._set("temp-dir", os.fspath(temp_dir) if temp_dir is not None else temporary_folder())
        for data in fonts:
            call(lib.vx_library_add_font, self._handle, ffi.from_buffer(data), len(data))

    def open(self, source: Union[str, os.PathLike[str], bytes], **options: Value) -> Document:
        """Opens a drawing as vx.open does."""
        return Document(self._handle, source, options)

    def render_isolated(self, source: Union[str, os.PathLike[str], bytes], format: str, *,
                        progress: Optional[Progress] = None, must_be_confined: bool = False, **options: Value) -> bytes:
        """Renders a drawing in a process of its own as vx.render_isolated does. A library with fonts from memory cannot."""
        return render_isolated(self._handle, source, format, progress, must_be_confined, options)

    @property
    def fonts(self) -> tuple[Font, ...]:
        """The fonts that there are, in the order in which they are searched."""
        count = ffi.new("size_t *")
        call(lib.vx_library_font_count, self._handle, count)
        rows = (record("vx_font_entry", lib.vx_library_font_at, self._handle, index) for index in range(count[0]))
        return tuple(Font(text_of(row.postscript), text_of(row.family), text_of(row.served_by), text_of(row.file), row.face,
                          row.variation) for row in rows)

    def _set(self, name: str, value: str) -> None:
        call(lib.vx_library_set, self._handle, name.encode(), c_text(value, name))


def temporary_folder() -> str:
    """Where Python puts temporary files. Drawings that need none are made without it."""
    try:
        return tempfile.gettempdir()
    except OSError:
        return "/"


@functools.lru_cache(maxsize=None)
def shared_library() -> Library:
    """The library of vx.open."""
    return Library()
