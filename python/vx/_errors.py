"""The errors and the warning: a class for each kind."""

from __future__ import annotations

__all__ = [
    "ArgumentError", "BusyError", "DrawingWarning", "Error", "FailedError", "FontMissingError", "LimitError",
    "MalformedError", "MissingFileError", "NotADrawingError", "NotIsolatedError", "OptionError", "OutOfMemoryError", "ReadError",
    "StoppedError", "WriteError",
]


class Error(Exception):
    """The base of all errors of this package. Its text is one line: the drawing, what is wrong, and what to do."""

    def __str__(self) -> str:
        return str(self.args[0]) if self.args else ""


class ArgumentError(Error, ValueError):
    """A call is wrong in itself: a closed document, bytes that are no font."""


class OptionError(Error, ValueError):
    """There is no such option, format or value, or none that goes with the others or with this drawing."""


class ReadError(Error, OSError):
    """A file cannot be opened or read, or changed while it was read."""


class MissingFileError(ReadError, FileNotFoundError):
    """There is no file of that name."""


class NotADrawingError(Error, ValueError):
    """The file or the bytes are something else than a VX drawing."""


class MalformedError(Error, ValueError):
    """A VX drawing, and damaged: it is cut short, or has what no drawing may have."""


class FontMissingError(Error, LookupError):
    """A font is not there, and the option missing_fonts="fail" said not to draw with another."""


class LimitError(Error):
    """It takes more than max_time, max_memory or max_output allow, or the picture is too large."""


class OutOfMemoryError(Error, MemoryError):
    """The system has no more memory."""


class WriteError(Error, OSError):
    """The temporary file of render_isolated cannot be written: see Library(temp_dir=...)."""


class StoppedError(Error):
    """Your progress function may raise it to end the call, out of which it then comes."""


class BusyError(Error, RuntimeError):
    """Another thread, or the call that asks for progress, is at work with this document."""


class FailedError(Error, RuntimeError):
    """Something that should not happen: a fault of the library. Please report it, with the text."""


class NotIsolatedError(Error, RuntimeError):
    """vx.render_isolated has no helper program here, or a kernel that cannot confine it: nothing was read."""


class DrawingWarning(UserWarning):
    """A drawing came out, but not as its author saw it: with other fonts, or without what cannot be shown."""


KINDS = {
    "VX_WRONG_ARGUMENT": ArgumentError,
    "VX_WRONG_OPTION": OptionError,
    "VX_CANNOT_READ": ReadError,
    "VX_NOT_A_DRAWING": NotADrawingError,
    "VX_MALFORMED": MalformedError,
    "VX_FONT_MISSING": FontMissingError,
    "VX_LIMIT": LimitError,
    "VX_OUT_OF_MEMORY": OutOfMemoryError,
    "VX_CANNOT_WRITE": WriteError,
    "VX_STOPPED": StoppedError,
    "VX_BUSY": BusyError,
    "VX_FAILED": FailedError,
    "VX_NOT_ISOLATED": NotIsolatedError,
}
