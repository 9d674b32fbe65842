"""The package declares what vx.h declares."""
import os
import re

import pytest

from conftest import SOURCES
from vx import _errors
from vx._declarations import DECLARATIONS
from vx._libvx import ffi, lib


def read(*names):
    with open(os.path.join(SOURCES, *names), encoding="ascii") as file:
        return file.read()


def declarations(text):
    """Returns each declaration and each macro, its words parted by single blanks."""
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.S)
    text = re.sub(r"#ifdef __cplusplus\n.*?#endif\n", "", text, flags=re.S)
    macros = re.findall(r"^#define \w+ .*$", text, re.M)
    found, words, depth = [], [], 0
    for word in re.findall(r"\w+|[^\w\s]", re.sub(r"^#.*$", "", text, flags=re.M)):
        depth += (word in "{(") - (word in "})")
        if word == ";" and depth == 0:
            found.append(" ".join(words))
            words = []
        else:
            words.append(word)
    assert not words, "what follows the last semicolon"
    return macros + found


HEADER = read("include", "vx.h")


def test_they_are_those_of_the_header():
    assert declarations(DECLARATIONS) == declarations(HEADER)


@pytest.mark.parametrize("old, new", [
    ("#define VX_INTERFACE 2", "#define VX_INTERFACE 3"),
    ("VX_BUSY = 11", "VX_BUSY = 14"),
    ("    const char *mime;\n", ""),
    ("uint8_t *top_row;", "uint16_t *top_row;"),
    ("const char *vx_version(void);", "const char *vx_version(void);\nvoid vx_more(void);"),
    ("void vx_document_free(vx_document *document);", ""),
])
def test_a_change_of_the_header_is_seen(old, new):
    assert HEADER.count(old) == 1
    assert declarations(HEADER.replace(old, new)) != declarations(HEADER)


def test_every_call_is_declared():
    declared = {name for name in dir(lib) if re.match("vx_", name)}
    assert declared == set(read("tests", "boundary", "libvx.symbols").split())


def test_every_status_has_its_error():
    statuses = set(ffi.typeof("vx_status").elements.values())
    assert set(_errors.KINDS) == statuses - {"VX_OK"}
