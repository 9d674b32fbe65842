"""The C library: where it is, and how its calls are made. Nothing else of the package knows where it comes from."""

from __future__ import annotations

import functools
import os
import re
from typing import Any, NoReturn

try:
    import cffi  # type: ignore[import]
except ModuleNotFoundError as missing:
    raise ModuleNotFoundError("vx needs the package cffi: install python3-cffi, or cffi by pip", name="cffi") from missing

from vx._declarations import DECLARATIONS
from vx._errors import KINDS, Error

SONAME = "libvx.so.0"

ffi: Any = cffi.FFI()
ffi.cdef(DECLARATIONS)


def find(package: str) -> str:
    """Returns what to load for a package in that folder: the file of its own installation, else the loader's choice."""
    # An installation has PREFIX/lib/pythonX/Y-packages/vx beside PREFIX/lib/libvx.so.0. Where folders have other names,
    # a file three floors up may be anybody's.
    packages = os.path.dirname(os.path.abspath(package))
    folder = os.path.dirname(packages)
    beside = os.path.join(os.path.dirname(folder), SONAME)
    is_installed = packages.endswith("-packages") and os.path.basename(folder).startswith("python")
    return beside if is_installed and os.path.exists(beside) else SONAME


def load(path: str) -> Any:
    """Opens the library. Raises ImportError when there is none, or none that fits."""
    try:
        opened = ffi.dlopen(path)
    except OSError as failure:
        raise ImportError(f"vx cannot load {path}, {loader_words(failure, path)}: install vx as a whole, or name the folder "
                          "of the library in LD_LIBRARY_PATH") from None
    check_fits(opened, path)
    return opened


def loader_words(failure: OSError, path: str) -> str:
    """Returns what the loader itself said, without the name that cffi puts before it and the guess that it puts behind."""
    words = str(failure).replace(f"cannot load library '{path}': ", "").split(".  Additionally")[0]
    return words[len(path) + 2:] if words.startswith(f"{path}: ") else words


def check_fits(opened: Any, path: str) -> None:
    """Refuses a library of another release at once: its calls would fail later, and nobody would see why."""
    advice = "install both from one release"
    lacking = [name for name in dir(opened) if not hasattr(opened, name)]
    if lacking:
        raise ImportError(f"{path} is not the library of this package, it has no {lacking[0]}: {advice}")
    error = ffi.new("vx_error *", {"size": ffi.sizeof("vx_error")})
    library = ffi.new("vx_library **")
    if opened.vx_library_create(opened.VX_INTERFACE, library, error) != opened.VX_OK:
        raise ImportError(f"{path} is not the library of this package, {text_of(error.text).partition(': ')[0]}: {advice}")
    opened.vx_library_free(library[0])


def text_of(characters: Any) -> str:
    """Returns a text of C as one of Python. Null is an empty text."""
    return "" if characters == ffi.NULL else str(ffi.string(characters), "utf-8", "replace")


def raise_for(status: int, text: str) -> NoReturn:
    """Raises the error of a status other than VX_OK."""
    raise KINDS.get(ffi.typeof("vx_status").elements.get(status, ""), Error)(text)


def call(procedure: Any, *arguments: Any, about: str = "") -> None:
    """Calls a procedure of C whose last argument is a vx_error. The text of an error begins with about."""
    error = ffi.new("vx_error *", {"size": ffi.sizeof("vx_error")})
    status = procedure(*arguments, error)
    if status != lib.VX_OK:
        text = in_python(text_of(error.text))
        raise_for(status, text if not about or text.startswith(f"{about}: ") else f"{about}: {text}")


def in_python(text: str) -> str:
    """Returns a text of the library with the names of options and calls that Python has for them."""
    def renamed(word: re.Match[str]) -> str:
        return option_names().get(word[0], word[0])

    return re.sub(r"(?<![\w/.-])[a-z]+(?:[-_][a-z]+)+(?![\w/.-])", renamed, text)


@functools.lru_cache(maxsize=None)
def option_names() -> dict[str, str]:
    """Maps the names of all options, and of what else a text of the library may name, to those of Python."""
    tables = [(lib.vx_option_count, lib.vx_option_at), (lib.vx_library_option_count, lib.vx_library_option_at)]
    names = [text_of(record("vx_option", at, index).name) for count, at in tables for index in range(count())]
    return {**{name: name.replace("-", "_") for name in names},
            "font-dir": "font_dirs", "vx_library_font_at": "Library.fonts"}


def record(kind: str, procedure: Any, *arguments: Any) -> Any:
    """Calls a procedure of C that fills a record of that kind, and returns the record."""
    filled = ffi.new(f"{kind} *", {"size": ffi.sizeof(kind)})
    call(procedure, *arguments, filled)
    return filled


lib: Any = load(find(os.path.dirname(__file__)))
