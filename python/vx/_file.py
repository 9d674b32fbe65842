"""Writes files whole or not at all."""

from __future__ import annotations

import contextlib
import os
import secrets
import stat


def write_whole(path: str, data: bytes) -> None:
    """Puts data in the place of what is there. A reader finds the old file or the new one, and never half of it."""
    path = os.path.realpath(path)  # a link stays a link
    try:
        mode = os.stat(path).st_mode
    except FileNotFoundError:
        mode = None
    if mode is not None and not stat.S_ISREG(mode):  # a device or a pipe is written to as it is; a folder is Python's own error
        with open(path, "wb") as file:
            file.write(data)
        return
    folder, name = os.path.split(path)
    part = os.path.join(folder, f".{name[:64]}.{secrets.token_hex(8)}.part")
    try:
        with open(part, "xb") as file:
            file.write(data)
            if mode is not None:
                os.fchmod(file.fileno(), mode & 0o777)
        os.replace(part, path)
    except BaseException as error:
        with contextlib.suppress(FileNotFoundError):
            os.unlink(part)
        if isinstance(error, OSError):
            error.filename = path  # the caller knows no other name
        raise
