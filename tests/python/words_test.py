"""Tests what the package says: its docstrings, its part of README, its types."""
import contextlib
import doctest
import inspect
import io
import os
import re
import shutil
import subprocess
import sys

import pytest

import vx
from conftest import PROFILE, SOURCES, sample

PACKAGES = os.path.dirname(os.path.dirname(vx.__file__))


@pytest.fixture
def folder(tmp_path, monkeypatch):
    """Makes a working folder with a drawing in it."""
    shutil.copy(sample("harp"), tmp_path / "harp.vx")
    monkeypatch.chdir(tmp_path)
    return tmp_path


def test_the_examples_of_docstrings_do_what_they_say(folder):
    shutil.copy(PROFILE, folder / "press.icc")
    shutil.copy(sample("text-point"), folder)
    finder, runner = doctest.DocTestFinder(), doctest.DocTestRunner()
    for name in vx.__all__:
        for example in finder.find(getattr(vx, name), f"vx.{name}", module=False, globs={"vx": vx}):
            runner.run(example)
    result = runner.summarize()
    assert result.failed == 0
    assert result.attempted > 15


def blocks(text):
    """Returns the blocks that are indented by four or more."""
    return [inspect.cleandoc("\n" + block) for block in re.findall(r"(?:^ {4}.*\n|^\n)+", text, re.M) if block.strip()]


def test_the_example_of_the_package_runs(folder):
    example, = blocks(vx.__doc__)
    with contextlib.redirect_stdout(io.StringIO()) as printed:
        exec(example, {})
    assert printed.getvalue() == f"{vx.open('harp.vx').header.title} (203.2, 106.3625)\n"
    assert sorted(os.listdir()) == ["harp.pdf", "harp.vx"]


def test_the_example_of_the_readme_runs(folder):
    with open(os.path.join(SOURCES, "README.md"), encoding="utf-8") as file:
        part = file.read().partition("\n## In Python\n")[2].partition("\n## ")[0]
    example = blocks(part)[0]
    with contextlib.redirect_stdout(io.StringIO()) as printed:
        exec(example, {})
    assert printed.getvalue()
    assert (folder / "harp.pdf").read_bytes().startswith(b"%PDF-")


@pytest.mark.parametrize("name", sorted(vx.__all__))
def test_all_that_is_public_has_its_words(name):
    thing = getattr(vx, name)
    assert thing is not None
    if inspect.isclass(thing) or inspect.isfunction(thing):
        assert thing.__module__ == "vx" or not inspect.isclass(thing)
        assert inspect.getdoc(thing)
    if inspect.isclass(thing):
        for member, value in vars(thing).items():
            if not member.startswith("_") and (inspect.isfunction(value) or isinstance(value, property)):
                assert inspect.getdoc(value), member


# ---- Types ----

RIGHT = """
import os
import vx

with vx.open("harp.vx", max_time=5) as drawing:
    png: bytes = drawing.render("png", width=400, box=(0, 0, 1.5, 2), background=None, profile=os.curdir)
    width: int = drawing.picture(progress=print).size[0]
    title: str = drawing.info.title
    words: list[str] = [run.text for text in drawing.texts(layers="all") for line in text.lines for run in line.runs]
    asked: list[str] = [font.asked for font in drawing.fonts]
    drawing.save("harp.pdf", pdf_x="x1a")
library: vx.Library = vx.Library(font_dirs=["fonts"], fonts=[b""], font_map={"A": "B"}, profiles={"press": b""})
library.map_font("A", None)
library.add_profile("press", b"")
mapped: vx.Library = vx.Library(font_map=os.curdir)
names: list[str] = [option.name for option in vx.options() + vx.library_options()]
"""

WRONG = [
    "vx.open(3)", "vx.open('a').render()", "vx.open('a').render('png').size", "vx.open('a').info.titel",
    "vx.open('a').render('png', width=object())", "vx.Library(fonts=3)", "vx.Library(font_map={'A': None})",
    "vx.Library(profiles={'press': ''})", "vx.open('a').picture(progress=3)", "vx.open('a').texts()[0].words",
]


def mypy(*words, **how):
    return subprocess.run([sys.executable, "-m", "mypy", "--strict", "--cache-dir", os.devnull, *words], capture_output=True,
                          text=True, check=False, env={**os.environ, "MYPYPATH": PACKAGES, "PYTHONPATH": ""}, **how)


def test_the_package_passes_a_strict_check_of_types(tmp_path):
    checked = mypy("-p", "vx", cwd=tmp_path)
    assert checked.returncode == 0, checked.stdout + checked.stderr
    assert os.path.exists(os.path.join(PACKAGES, "vx", "py.typed"))


def test_programs_are_checked_against_its_types(tmp_path):
    program = RIGHT + "\n".join(WRONG) + "\n"
    (tmp_path / "program.py").write_text(program, encoding="utf-8")
    told = mypy("program.py", cwd=tmp_path).stdout
    lines = sorted({int(line) for line in re.findall(r"^program\.py:(\d+): error", told, re.M)})
    first = RIGHT.count("\n") + 1
    assert lines == list(range(first, first + len(WRONG))), told
