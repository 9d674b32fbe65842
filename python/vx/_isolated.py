"""Drawings of strangers: rendered in a process of their own, which may crash."""

from __future__ import annotations

import os
import warnings
from collections.abc import Mapping
from typing import Any, Optional, Union

from vx._choices import Value, c_text, check_meant, texts_of
from vx._document import Callbacks, Progress, missing_or, printable
from vx._errors import DrawingWarning, ReadError, StoppedError
from vx._libvx import call, ffi, lib, text_of


def render_isolated(library: Any, source: Union[str, os.PathLike[str], bytes], format: str, progress: Optional[Progress],
                    must_be_confined: bool, options: Mapping[str, Value]) -> bytes:
    """What Library.render_isolated returns, for the library's handle. Its warnings are of the line that called our caller."""
    check_meant(options, format)
    # The request points to these, which have to stay until the call returns.
    name = ffi.new("char[]", c_text(format, "format"))
    words = [ffi.new("char[]", c_text(word, option)) for option, text in texts_of(options).items() for word in (option, text)]
    pairs = ffi.new("const char *[]", words)
    request = ffi.new("vx_isolated *", {"size": ffi.sizeof("vx_isolated"), "format": name, "options": pairs,
                                        "option_count": len(words) // 2, "must_be_confined": int(must_be_confined)})
    if isinstance(source, (str, os.PathLike)):
        about = printable(os.fsdecode(source))
        request.path = drawing = ffi.new("char[]", c_text(os.fsdecode(source), "path"))
    elif isinstance(source, (bytes, bytearray, memoryview)):
        about = "<bytes>"
        request.bytes = drawing = ffi.from_buffer(bytes(source))
        request.byte_count = len(drawing)
    else:
        raise TypeError(f"a drawing is given by its path or as bytes, not as {type(source).__name__}: give one of these, "
                        "such as what read() returns")
    pieces: list[bytes] = []
    told: list[str] = []
    callbacks = Callbacks()
    write = callbacks.make("vx_write", lambda data, size: pieces.append(ffi.buffer(data, size)[:]))
    request.warning = warning = callbacks.make("vx_warning", lambda text: told.append(text_of(text)))
    request.progress = tell = ffi.NULL if progress is None else callbacks.make("vx_progress", progress)
    try:
        call(lib.vx_render_isolated, library, request, write, ffi.NULL, about=about)
    except StoppedError:
        callbacks.raise_again()
        raise
    except ReadError as error:
        if isinstance(source, (str, os.PathLike)):
            raise missing_or(error, source) from None
        raise
    for line in told:
        warnings.warn(f"{about}: {line}", DrawingWarning, stacklevel=3)
    return b"".join(pieces)
