"""A library: the fonts and profiles that drawings are shown with, and what opens them."""

from __future__ import annotations

import functools
import os
import tempfile
from collections.abc import Iterable, Mapping
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
    """Opens drawings, with fonts and press profiles of your choice. vx.open uses one that all share, with the system's fonts.

        font_dirs     folders of fonts, with all below them
        system_fonts  False: no other fonts than those named here
        temp_dir      the folder in which render_isolated keeps what it makes; if it is not given, that of tempfile.gettempdir()
        fonts         the bytes of font files, OpenType or Type 1; they are found before those of files
        font_map      which font serves which name, as map_font says: a dict, or the path of a file of lines "ASKED = FONT"
        profiles      press profiles from memory, as add_profile says: a dict of names and bytes

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
        font_map: Union[Mapping[str, str], str, os.PathLike[str], None] = None,
        profiles: Optional[Mapping[str, bytes]] = None,
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
        for name, data in dict(profiles or {}).items():
            self.add_profile(name, data)
        if isinstance(font_map, (str, os.PathLike)):
            self._set("font-map", os.fspath(font_map))
        else:
            for asked, served in dict(font_map or {}).items():
                self.map_font(asked, served)

    def map_font(self, asked: str, served: Optional[str]) -> None:
        """Lets a font serve a name in all drawings that are opened afterwards, whatever else would.

            asked   the name, as drawings ask for it
            served  the PostScript name of one of .fonts; None: what was said of that name holds no more

        >>> library = vx.Library()
        >>> library.map_font("Bodoni", library.fonts[0].postscript)
        """
        font = ffi.NULL if served is None else c_text(served, "served")
        call(lib.vx_library_map_font, self._handle, c_text(asked, "asked"), font)

    def add_profile(self, name: str, data: bytes) -> None:
        """Adds a press profile: in drawings that are opened afterwards the option profile means it by that name, and no file.

            name  another of the same name is replaced; "fogra39" and "none" are taken
            data  the bytes of an ICC profile of a CMYK press

        >>> import pathlib
        >>> library = vx.Library()
        >>> library.add_profile("our press", pathlib.Path("press.icc").read_bytes())
        >>> png = library.open("harp.vx").render("png", profile="our press")
        """
        call(lib.vx_library_add_profile, self._handle, c_text(name, "name"), ffi.from_buffer(data), len(data))

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
