"""Documents are saved into files."""
import os
import stat
import threading

import pytest

import vx
from conftest import SQUARE


@pytest.fixture
def drawing():
    return vx.open(SQUARE)


@pytest.mark.parametrize("name, form", [("a.png", "png"), ("b.SVG", "svg"), ("c.x.pdf", "pdf")])
def test_the_name_says_the_format(drawing, tmp_path, name, form):
    drawing.save(tmp_path / name)
    assert (tmp_path / name).read_bytes() == drawing.render(form)
    assert os.listdir(tmp_path) == [name]


def test_a_format_may_be_given(drawing, tmp_path):
    drawing.save(str(tmp_path / "a"), "png", width=20)
    assert (tmp_path / "a").read_bytes() == drawing.render("png", width=20)


@pytest.mark.parametrize("name", ["a", "a.gif", ".png"])
def test_a_name_without_a_format_is_told(drawing, tmp_path, name):
    with pytest.raises(vx.OptionError, match=f"/{name}: its name does not end in a format: give one of pdf, svg, png, tiff$"):
        drawing.save(tmp_path / name)
    assert os.listdir(tmp_path) == []


def fails_when_drawn(drawing, path, monkeypatch):
    with pytest.raises(vx.LimitError):
        drawing.save(path, max_time=1e-9)


def fails_when_put_in_place(drawing, path, monkeypatch):
    def refuse(*names):
        raise PermissionError(1, "not permitted", *names)

    monkeypatch.setattr(os, "replace", refuse)
    with pytest.raises(PermissionError) as told:
        drawing.save(path)
    assert told.value.filename == str(path)


@pytest.mark.parametrize("fails", [fails_when_drawn, fails_when_put_in_place])
def test_a_file_stays_as_it_was_when_a_call_fails(drawing, tmp_path, monkeypatch, fails):
    path = tmp_path / "a.png"
    path.write_bytes(b"before")
    fails(drawing, path, monkeypatch)
    assert path.read_bytes() == b"before"
    assert os.listdir(tmp_path) == ["a.png"]


def test_a_folder_that_is_not_there_is_told_by_the_name_of_the_file(drawing, tmp_path):
    with pytest.raises(FileNotFoundError) as told:
        drawing.save(tmp_path / "no-such" / "a.png")
    assert told.value.filename == str(tmp_path / "no-such" / "a.png")


def test_a_new_file_has_the_mode_that_the_mask_leaves(drawing, tmp_path):
    before = os.umask(0o027)
    try:
        drawing.save(tmp_path / "a.png")
    finally:
        os.umask(before)
    assert stat.S_IMODE(os.stat(tmp_path / "a.png").st_mode) == 0o640


def test_an_old_file_keeps_its_mode_and_a_link_stays_one(drawing, tmp_path):
    path, link = tmp_path / "a.png", tmp_path / "link.png"
    path.write_bytes(b"")
    os.chmod(path, 0o604)
    link.symlink_to("a.png")
    drawing.save(link)
    assert link.is_symlink()
    assert path.read_bytes() == drawing.render("png")
    assert stat.S_IMODE(os.stat(path).st_mode) == 0o604


def test_a_pipe_is_written_to(drawing, tmp_path):
    path = tmp_path / "a.png"
    os.mkfifo(path)
    read = []
    reader = threading.Thread(target=lambda: read.append(path.read_bytes()))
    reader.start()
    drawing.save(path)
    reader.join()
    assert read == [drawing.render("png")]
    assert stat.S_ISFIFO(os.stat(path).st_mode)
